#pragma once

#include "config/BarConfig.h"

#include <QList>
#include <QStringList>

/// A ready-made set of keyboard-shortcut buttons for one well-known application.
struct AppPreset
{
    QString bundleID;
    QString name;
    QList<ButtonSpec> buttons;
};

namespace Presets {

/// The built-in presets, in menu order, built once.
const QList<AppPreset>& all();
/// The first preset with exactly this name, or nullptr.
const AppPreset* named(const QString& name);

/// Appends to the preset's application set (created when missing) every preset button that the set does
/// not already hold with the same action and argument, each under a title unique in the document.
/// Returns how many were appended; an unchanged count leaves any created set empty for commit to drop.
int merge(BarConfig& cfg, const AppPreset& preset);
/// Removes from the preset's application set the unlocked buttons that match a preset button, renamed
/// copies ("Reply 2") included. Returns how many were removed.
int strip(BarConfig& cfg, const AppPreset& preset);
/// The presets whose application has a set in the document, so that removing them has something to act on.
QStringList appliedNames(const BarConfig& cfg);

} // namespace Presets

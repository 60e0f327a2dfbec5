#pragma once

#include "actions/Keys.h"

#include <QString>
#include <QStringList>

struct ButtonSpec;
class Platform;

/// Carries out what a button does. Nothing is shown on success; an unknown kind beeps, and every
/// other failure (a missing file, a program that will not start) is silent.
class Actions
{
public:
    explicit Actions(Platform& platform);

    /// Runs the button's action; a missing argument does nothing, except for "newFolder".
    void run(const ButtonSpec& button);
    /// Starts an executable with arguments, detached, without waiting or reporting.
    void launch(const QString& path, const QStringList& arguments);

    Keys& keys() { return m_keys; }

    /// The folder holding the scripts that "shortcut" buttons run by name.
    static QString shortcutsFolder();

private:
    void open(const QString& path);
    void openUrl(const QString& text);
    void runShortcut(const QString& name);
    void makeNewFolder();

    Platform& m_platform;
    Keys m_keys;
};

#pragma once

#include "config/BarConfig.h"

#include <QObject>
#include <QPointer>
#include <optional>

class EditView;
class Launcher;

/// The button editor's one window: opened for a button, a new button or a new stack, or brought
/// forward when it is open already.
class EditorLauncher : public QObject
{
    Q_OBJECT

public:
    explicit EditorLauncher(Launcher& launcher, QObject* parent = nullptr);

    /// `parent` is a stack's title, or "@context" for the set of the application in front; none puts a
    /// new button on the bar.
    void open(const std::optional<ButtonSpec>& editing, const std::optional<QString>& parent, bool newStack);
    bool isShown() const;

Q_SIGNALS:
    /// Save in the editor; `oldTitle` is the button edited, none for a new one.
    void saved(const ButtonSpec& edited, const std::optional<QString>& oldTitle,
               const std::optional<QString>& parent);

private:
    Launcher& m_launcher;
    QPointer<EditView> m_editor;
};

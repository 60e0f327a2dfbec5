#pragma once

#include <QLineEdit>
#include <optional>

class QKeyEvent;

/// A line for a key combination such as "ctrl+shift+t". While it has focus, pressing a combination writes
/// it in the program's key names; plain typing and editing still work, so a name can also be typed.
class KeyField : public QLineEdit
{
    Q_OBJECT

public:
    explicit KeyField(QWidget* parent = nullptr);

    /// The combination a key press stands for, or nothing when the press is typing or editing.
    static std::optional<QString> combination(const QKeyEvent& event);
    /// The program's name for a Qt key, or an empty string for keys it has no name for.
    static QString keyName(int key);

protected:
    bool event(QEvent* event) override;
};

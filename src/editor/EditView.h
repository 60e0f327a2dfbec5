#pragma once

#include "config/BarConfig.h"
#include "editor/EditorServices.h"

#include <QString>
#include <QWidget>

class ArgumentPages;
class ChipPreview;
class ColorSwatches;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class SymbolPalette;

/// The button editor: title, action and argument, colour, symbol or icon file, lock. It edits a copy;
/// nothing changes until Save, which emits the edited button as `saved` (the caller makes its title
/// unique and commits). Cancel and Escape close it without a change.
class EditView : public QWidget
{
    Q_OBJECT

public:
    /// `isNew` with a "group" action is a new stack: its kind is fixed and it has no argument.
    EditView(const ButtonSpec& initial, bool isNew, EditorServices services, QWidget* parent = nullptr);

    /// The button as the fields describe it now.
    ButtonSpec edited() const;
    /// Whether Save is possible: a title, and a key combination that parses for "keys".
    bool canSave() const;

Q_SIGNALS:
    /// Save was pressed; the window closes after this.
    void saved(const ButtonSpec& edited);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QString currentKind() const;
    void refresh();
    void chooseIconFile();
    void save();

    ButtonSpec m_initial;
    bool m_saved = false;
    QLineEdit* m_title = nullptr;
    QComboBox* m_kind = nullptr;
    ArgumentPages* m_argument = nullptr;
    QLabel* m_argumentLabel = nullptr;
    ColorSwatches* m_colors = nullptr;
    QLineEdit* m_symbol = nullptr;
    SymbolPalette* m_palette = nullptr;
    QLineEdit* m_iconPath = nullptr;
    QLabel* m_iconPreview = nullptr;
    QCheckBox* m_locked = nullptr;
    ChipPreview* m_preview = nullptr;
    QPushButton* m_save = nullptr;
};

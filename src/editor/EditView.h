#pragma once

#include "config/BarConfig.h"
#include "editor/EditorServices.h"

#include <QDialog>
#include <QString>

class ArgumentPages;
class ChipPreview;
class ColorSwatches;
class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLayout;
class QLineEdit;
class QPushButton;
class SymbolPalette;

/// The button editor: title, action and argument, colour, symbol or icon file, lock. It edits a copy;
/// nothing changes until Save or Return accepts it, when the caller reads `edited()`, makes its title
/// unique and commits. Cancel and Escape reject it without a change. It deletes itself once closed.
class EditView : public QDialog
{
    Q_OBJECT

public:
    /// `isNew` with a "group" action is a new stack: its kind is fixed and it has no argument.
    EditView(const ButtonSpec& initial, bool isNew, EditorServices services, QWidget* parent = nullptr);

    /// The button as the fields describe it now.
    ButtonSpec edited() const;
    /// Whether Save is possible: a title, and a key combination that parses for "keys".
    bool canSave() const;

private:
    void makeKindFields(const ButtonSpec& initial, bool isNew, bool newStack, EditorServices services);
    QLayout* makeIconRow(const ButtonSpec& initial);
    QDialogButtonBox* makeButtons();
    QString currentKind() const;
    void refresh();
    void chooseIconFile();

    ButtonSpec m_initial;
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

#include "EditView.h"

#include "actions/IconCache.h"
#include "actions/Paths.h"
#include "editor/ArgumentPages.h"
#include "editor/ChipPreview.h"
#include "editor/ColorSwatches.h"
#include "editor/SymbolPalette.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

/// How a kind the list does not offer is shown, so a button that has it can keep it.
QString extraKindName(const QString& kind)
{
    if (ActionKinds::of(kind) == ActionKind::AppleScript)
        return EditView::tr("AppleScript (not available on Linux)");
    if (kind.isEmpty())
        return EditView::tr("(no action)");
    return kind;
}

QString windowTitleFor(bool isNew, bool stack)
{
    if (!isNew)
        return EditView::tr("Edit Button");
    return stack ? EditView::tr("New Stack") : EditView::tr("New Button");
}

} // namespace

EditView::EditView(const ButtonSpec& initial, bool isNew, EditorServices services, QWidget* parent)
    : QDialog(parent, Qt::Window)
    , m_initial(initial)
{
    const bool newStack = isNew && initial.isGroup();
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(windowTitleFor(isNew, newStack));

    m_title = new QLineEdit(initial.title, this);
    m_title->setObjectName(QStringLiteral("title"));
    m_title->setPlaceholderText(tr("Shown on the button"));

    makeKindFields(initial, isNew, newStack, std::move(services));

    m_colors = new ColorSwatches(this);
    m_colors->setColor(initial.color);

    m_symbol = new QLineEdit(initial.symbol, this);
    m_symbol->setObjectName(QStringLiteral("symbol"));
    m_symbol->setPlaceholderText(tr("A symbol name such as “folder”, or an emoji"));
    m_symbol->setClearButtonEnabled(true);
    m_palette = new SymbolPalette(this);
    auto* symbolColumn = new QVBoxLayout;
    symbolColumn->setSpacing(6);
    symbolColumn->addWidget(m_symbol);
    symbolColumn->addWidget(m_palette);

    QLayout* iconRow = makeIconRow(initial);

    m_locked = new QCheckBox(tr("Locked: can't be moved or removed by dragging"), this);
    m_locked->setObjectName(QStringLiteral("locked"));
    m_locked->setChecked(initial.isLocked());

    m_preview = new ChipPreview(this);
    auto* previewRow = new QHBoxLayout;
    previewRow->addWidget(m_preview);
    previewRow->addStretch(1);

    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(10);
    form->addRow(tr("Title:"), m_title);
    form->addRow(tr("Action:"), m_kind);
    form->addRow(m_argument->label(), m_argument);
    m_argumentLabel = qobject_cast<QLabel*>(form->labelForField(m_argument));
    form->addRow(tr("Colour:"), m_colors);
    form->addRow(tr("Symbol:"), symbolColumn);
    form->addRow(tr("Icon file:"), iconRow);
    form->addRow(QString(), m_locked);
    form->addRow(tr("Preview:"), previewRow);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(18, 18, 18, 14);
    column->setSpacing(16);
    column->addLayout(form);
    column->addStretch(1);
    column->addWidget(makeButtons());

    connect(m_title, &QLineEdit::textChanged, this, &EditView::refresh);
    connect(m_kind, &QComboBox::currentIndexChanged, this, [this] {
        m_argument->showKind(currentKind());
        if (isVisible())
            resize(width(), sizeHint().height());
    });
    connect(m_argument, &ArgumentPages::changed, this, &EditView::refresh);
    connect(m_colors, &ColorSwatches::changed, this, &EditView::refresh);
    connect(m_symbol, &QLineEdit::textChanged, this, &EditView::refresh);
    connect(m_palette, &SymbolPalette::picked, m_symbol, &QLineEdit::setText);
    connect(m_iconPath, &QLineEdit::textChanged, this, &EditView::refresh);
    connect(m_locked, &QCheckBox::toggled, this, &EditView::refresh);

    m_title->setFocus();
    refresh();
}

void EditView::makeKindFields(const ButtonSpec& initial, bool isNew, bool newStack, EditorServices services)
{
    m_kind = new QComboBox(this);
    m_kind->setObjectName(QStringLiteral("kind"));
    // The kinds a button can be given here, in the words the window shows.
    for (const ActionKindInfo& kind : ActionKinds::all()) {
        if (kind.label)
            m_kind->addItem(tr(kind.label), QString(kind.name));
    }
    QString startKind = initial.action;
    if (isNew && startKind.isEmpty())
        startKind = ActionKinds::all().constFirst().name;
    if (m_kind->findData(startKind) < 0) {
        m_kind->insertSeparator(m_kind->count());
        m_kind->addItem(extraKindName(startKind), startKind);
    }
    m_kind->setCurrentIndex(m_kind->findData(startKind));
    m_kind->setEnabled(!newStack);

    m_argument = new ArgumentPages(std::move(services), this);
    if (initial.argument)
        m_argument->setText(startKind, *initial.argument);
    m_argument->showKind(startKind);
}

QLayout* EditView::makeIconRow(const ButtonSpec& initial)
{
    m_iconPath = new QLineEdit(initial.iconPath.value_or(QString()), this);
    m_iconPath->setObjectName(QStringLiteral("iconPath"));
    m_iconPath->setPlaceholderText(tr("None: the symbol is shown"));
    m_iconPath->setClearButtonEnabled(true);
    auto* chooseIcon = new QPushButton(tr("Choose…"), this);
    // Return saves, as it does from every field; this button answers a click or Space.
    chooseIcon->setAutoDefault(false);
    m_iconPreview = new QLabel(this);
    m_iconPreview->setFixedSize(16, 16);
    auto* iconRow = new QHBoxLayout;
    iconRow->setSpacing(6);
    iconRow->addWidget(m_iconPreview);
    iconRow->addWidget(m_iconPath, 1);
    iconRow->addWidget(chooseIcon);
    connect(chooseIcon, &QPushButton::clicked, this, &EditView::chooseIconFile);
    return iconRow;
}

QDialogButtonBox* EditView::makeButtons()
{
    auto* buttons = new QDialogButtonBox(this);
    m_save = buttons->addButton(tr("Save"), QDialogButtonBox::AcceptRole);
    m_save->setObjectName(QStringLiteral("save"));
    m_save->setDefault(true);
    // Text-only, like Save: a standard Cancel button would carry an icon on some desktops and not the other.
    QPushButton* cancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    return buttons;
}

QString EditView::currentKind() const
{
    return m_kind->currentData().toString();
}

ButtonSpec EditView::edited() const
{
    // Starting from the original keeps what this window does not show, such as a stack's buttons.
    ButtonSpec spec = m_initial;
    spec.title = m_title->text().trimmed();
    spec.action = currentKind();
    spec.argument = m_argument->argument();
    spec.color = m_colors->color();
    spec.symbol = m_symbol->text().trimmed();
    const QString icon = m_iconPath->text().trimmed();
    spec.iconPath = icon.isEmpty() ? std::nullopt : std::optional<QString>(icon);
    if (m_locked->isChecked())
        spec.locked = true;
    else if (m_initial.locked != std::optional<bool>(false))
        spec.locked.reset();
    return spec;
}

bool EditView::canSave() const
{
    return !edited().title.isEmpty() && m_argument->acceptable();
}

void EditView::refresh()
{
    const ButtonSpec spec = edited();
    if (m_argumentLabel)
        m_argumentLabel->setText(m_argument->label());

    ButtonSpec uncoloured = spec;
    uncoloured.color.reset();
    m_colors->setDefaultColor(uncoloured.tintName());
    m_palette->setCurrent(spec.symbol);

    if (spec.iconPath)
        m_iconPreview->setPixmap(QPixmap::fromImage(IconCache::image(*spec.iconPath)));
    m_iconPreview->setVisible(spec.iconPath.has_value());

    m_preview->setSpec(spec);
    m_save->setEnabled(canSave());
}

void EditView::chooseIconFile()
{
    QString start = QDir::homePath();
    if (const QString current = m_iconPath->text().trimmed(); !current.isEmpty())
        start = QFileInfo(Paths::expandTilde(current)).path();
    const QString chosen = QFileDialog::getOpenFileName(
        this, tr("Choose an Icon"), start, tr("Images (*.png *.svg *.jpg *.jpeg *.gif *.bmp *.ico *.xpm)"));
    if (!chosen.isEmpty())
        m_iconPath->setText(chosen);
}

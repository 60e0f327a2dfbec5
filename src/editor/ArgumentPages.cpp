#include "ArgumentPages.h"

#include "actions/KeyCombo.h"
#include "actions/Paths.h"
#include "config/ActionKind.h"
#include "editor/KeyField.h"

#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLayoutItem>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

namespace {

QHBoxLayout* bareRow(QWidget* page)
{
    auto* row = new QHBoxLayout(page);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    return row;
}

QLabel* noteLabel(const QString& text, QWidget* parent)
{
    auto* note = new QLabel(text, parent);
    // Not wrapped: a wrapping label's height depends on its width, and a stack of pages then reserves
    // the tallest page's height for every kind.
    QFont small = note->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    note->setFont(small);
    note->setForegroundRole(QPalette::PlaceholderText);
    return note;
}

/// Where a file dialog opens: the folder of what the field names, when it exists.
QString startFolder(const QString& current)
{
    if (current.isEmpty())
        return QDir::homePath();
    const QFileInfo info(Paths::expandTilde(current));
    return info.isDir() ? info.filePath() : info.path();
}

} // namespace

ArgumentPages::ArgumentPages(const EditorServices& services, QWidget* parent)
    : QStackedWidget(parent)
{
    m_pages.insert(QStringLiteral("open"), pathPage(true));
    m_pages.insert(QStringLiteral("folder"), pathPage(false));
    m_pages.insert(QStringLiteral("app"), applicationPage(services));
    m_pages.insert(QStringLiteral("url"), urlPage());
    m_pages.insert(QStringLiteral("shortcut"), scriptPage(services));
    m_pages.insert(QStringLiteral("keys"), keysPage());
    m_pages.insert(QStringLiteral("paste"), textPage(tr("Text:"), tr("The text to paste")));
    m_pages.insert(QStringLiteral("shell"),
                   textPage(tr("Command:"), tr("A command line, e.g. notify-send Hello")));
    m_pages.insert(QStringLiteral("newFolder"), notePage(tr("Makes an “untitled folder” on the desktop.")));
    m_pages.insert(QStringLiteral("group"),
                   notePage(tr("Holds other buttons: drop buttons on it to fill it.")));
    for (auto it = m_pages.begin(); it != m_pages.end(); ++it) {
        it->widget->setObjectName(QStringLiteral("argument-") + it.key());
        addWidget(it->widget);
    }
}

// A stack is as large as its largest page; sizing to the shown one keeps a one-line address field from
// sitting in the room a text box needs.
QSize ArgumentPages::sizeHint() const
{
    QWidget* shown = currentWidget();
    return shown ? QWidgetItem(shown).sizeHint() : QStackedWidget::sizeHint();
}

QSize ArgumentPages::minimumSizeHint() const
{
    QWidget* shown = currentWidget();
    return shown ? QWidgetItem(shown).minimumSize() : QStackedWidget::minimumSizeHint();
}

bool ArgumentPages::takesArgument(const QString& kind)
{
    return ActionKinds::info(ActionKinds::of(kind)).takesArgument;
}

ArgumentPages::Page& ArgumentPages::page(const QString& kind)
{
    auto it = m_pages.find(kind);
    if (it == m_pages.end()) {
        it = m_pages.insert(kind, textPage(tr("Argument:"), QString()));
        it->widget->setObjectName(QStringLiteral("argument-other"));
        addWidget(it->widget);
    }
    return *it;
}

void ArgumentPages::showKind(const QString& kind)
{
    m_kind = kind;
    setCurrentWidget(page(kind).widget);
    updateGeometry();
    Q_EMIT changed();
}

void ArgumentPages::setText(const QString& kind, const QString& text)
{
    const Page& target = page(kind);
    if (target.write)
        target.write(text);
}

std::optional<QString> ArgumentPages::argument() const
{
    const auto it = m_pages.constFind(m_kind);
    if (!takesArgument(m_kind) || it == m_pages.constEnd() || !it->read)
        return std::nullopt;
    const QString raw = it->read();
    // Spaces are part of text to paste or a script's body, but never of a path, address or key name.
    const QString text = it->trims ? raw.trimmed() : raw;
    if (text.trimmed().isEmpty())
        return std::nullopt;
    return text;
}

bool ArgumentPages::acceptable() const
{
    if (ActionKinds::of(m_kind) != ActionKind::Keys)
        return true;
    return KeyCombo::parse(m_keys->text()).has_value();
}

QString ArgumentPages::label() const
{
    return m_pages.value(m_kind).label;
}

ArgumentPages::Page ArgumentPages::pathPage(bool files)
{
    auto* widget = new QWidget(this);
    auto* row = bareRow(widget);
    auto* edit = new QLineEdit(widget);
    edit->setPlaceholderText(files ? tr("~/Documents/Report.pdf") : tr("~/Downloads"));
    edit->setClearButtonEnabled(true);
    row->addWidget(edit, 1);
    connect(edit, &QLineEdit::textChanged, this, &ArgumentPages::changed);

    const auto addPicker = [this, widget, row, edit](const QString& text, bool folder) {
        auto* button = new QPushButton(text, widget);
        // Return saves, as it does from the field beside it; the picker answers a click or Space.
        button->setAutoDefault(false);
        row->addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, edit, folder] {
            const QString start = startFolder(edit->text());
            const QString chosen = folder
                                       ? QFileDialog::getExistingDirectory(this, tr("Choose a Folder"), start)
                                       : QFileDialog::getOpenFileName(this, tr("Choose a File"), start);
            if (!chosen.isEmpty())
                edit->setText(chosen);
        });
    };
    if (files)
        addPicker(tr("File…"), false);
    addPicker(tr("Folder…"), true);

    Page result;
    result.widget = widget;
    result.read = [edit] { return edit->text(); };
    result.write = [edit](const QString& text) { edit->setText(text); };
    result.label = files ? tr("Path:") : tr("Folder:");
    return result;
}

ArgumentPages::Page ArgumentPages::applicationPage(const EditorServices& services)
{
    auto* combo = new QComboBox(this);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->lineEdit()->setPlaceholderText(tr("Choose or type an application"));
    QList<ApplicationChoice> choices =
        services.applications ? services.applications() : QList<ApplicationChoice>();
    std::sort(choices.begin(), choices.end(), [](const ApplicationChoice& a, const ApplicationChoice& b) {
        return a.name.localeAwareCompare(b.name) < 0;
    });
    for (const ApplicationChoice& choice : std::as_const(choices))
        combo->addItem(choice.name, choice.id);
    combo->setCurrentIndex(-1);
    connect(combo, &QComboBox::editTextChanged, this, &ArgumentPages::changed);

    Page result;
    result.widget = combo;
    // A name from the list stands for its desktop entry; anything else is kept as typed.
    result.read = [combo] {
        const QString text = combo->currentText();
        const int index = combo->findText(text, Qt::MatchExactly);
        return index >= 0 ? combo->itemData(index).toString() : text;
    };
    result.write = [combo](const QString& text) {
        const int index = combo->findData(text);
        if (index >= 0)
            combo->setCurrentIndex(index);
        else
            combo->setEditText(text);
    };
    result.label = tr("Application:");
    return result;
}

ArgumentPages::Page ArgumentPages::scriptPage(const EditorServices& services)
{
    auto* widget = new QWidget(this);
    auto* column = new QVBoxLayout(widget);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    auto* combo = new QComboBox(widget);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->addItems(services.shortcutNames);
    combo->setCurrentIndex(-1);
    combo->lineEdit()->setPlaceholderText(tr("Script name"));
    column->addWidget(combo);
    auto* note = noteLabel(
        tr("Scripts are the executable files in %1").arg(Paths::abbreviateHome(services.shortcutsFolder)),
        widget);
    note->setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addWidget(note);
    connect(combo, &QComboBox::editTextChanged, this, &ArgumentPages::changed);

    Page result;
    result.widget = widget;
    result.read = [combo] { return combo->currentText(); };
    result.write = [combo](const QString& text) { combo->setEditText(text); };
    result.label = tr("Script:");
    return result;
}

ArgumentPages::Page ArgumentPages::keysPage()
{
    auto* widget = new QWidget(this);
    auto* row = bareRow(widget);
    m_keys = new KeyField(widget);
    m_keys->setObjectName(QStringLiteral("keyField"));
    m_keyStatus = new QLabel(widget);
    m_keyStatus->setObjectName(QStringLiteral("keyStatus"));
    m_keyStatus->setMinimumWidth(m_keyStatus->fontMetrics().horizontalAdvance(tr("Not a key combination")));
    row->addWidget(m_keys, 1);
    row->addWidget(m_keyStatus);
    connect(m_keys, &QLineEdit::textChanged, this, [this] {
        updateKeyStatus();
        Q_EMIT changed();
    });
    updateKeyStatus();

    Page result;
    result.widget = widget;
    result.read = [this] { return m_keys->text(); };
    result.write = [this](const QString& text) { m_keys->setText(text); };
    result.label = tr("Keys:");
    return result;
}

void ArgumentPages::updateKeyStatus()
{
    const bool valid = KeyCombo::parse(m_keys->text()).has_value();
    m_keyStatus->setText(valid ? tr("✓ valid") : tr("Not a key combination"));
    // Green and red carry the verdict; the text says it too for those who cannot tell them apart.
    QPalette palette = m_keyStatus->palette();
    palette.setColor(QPalette::WindowText, valid ? QColor(0x1f, 0x8a, 0x3b) : QColor(0xc0, 0x1c, 0x28));
    m_keyStatus->setPalette(palette);
}

ArgumentPages::Page ArgumentPages::urlPage()
{
    auto* edit = new QLineEdit(this);
    edit->setPlaceholderText(QStringLiteral("https://"));
    edit->setClearButtonEnabled(true);
    connect(edit, &QLineEdit::textChanged, this, &ArgumentPages::changed);

    Page result;
    result.widget = edit;
    result.read = [edit] { return edit->text(); };
    result.write = [edit](const QString& text) { edit->setText(text); };
    result.label = tr("Address:");
    return result;
}

ArgumentPages::Page ArgumentPages::textPage(const QString& label, const QString& placeholder)
{
    auto* edit = new QPlainTextEdit(this);
    edit->setPlaceholderText(placeholder);
    edit->setTabChangesFocus(true);
    // A few lines are enough for a snippet or a one-line command, and keep the window compact.
    edit->setFixedHeight(edit->fontMetrics().lineSpacing() * 4 + 12);
    connect(edit, &QPlainTextEdit::textChanged, this, &ArgumentPages::changed);

    Page result;
    result.widget = edit;
    result.read = [edit] { return edit->toPlainText(); };
    result.write = [edit](const QString& text) { edit->setPlainText(text); };
    result.label = label;
    result.trims = false;
    return result;
}

ArgumentPages::Page ArgumentPages::notePage(const QString& text)
{
    Page result;
    result.widget = noteLabel(text, this);
    return result;
}

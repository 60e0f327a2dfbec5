#include "bar/ChipLabel.h"
#include "editor/EditView.h"
#include "editor/KeyField.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QStandardPaths>
#include <QTest>
#include <QToolButton>

Q_DECLARE_METATYPE(ButtonSpec)

/// The button editor off screen: what it hands back, when it lets the user save, and how it closes.
class TestEditView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void untouchedButtonComesBackUnchanged_data();
    void untouchedButtonComesBackUnchanged();
    void kindsOnlyOfferedWhenTheButtonHasThem();
    void applicationsAreStoredById();

    void saveNeedsTitle();
    void saveNeedsParsableKeys();
    void keyFieldRecordsPressedCombination();

    void swatchesSetAndClearColour();
    void clearedArgumentIsAbsent();
    void lockedCheckBox();
    void symbolPaletteFillsSymbol();
    void previewFollowsEdits();

    void newStackHasFixedKindAndNoArgument();
    void saveHandsOverEditedButtonOnce();
    void escapeClosesWithoutSaving();
};

namespace {

ButtonSpec button(const QString& title, const QString& action, std::optional<QString> argument = {})
{
    ButtonSpec spec;
    spec.title = title;
    spec.action = action;
    spec.symbol = QStringLiteral("folder");
    spec.argument = std::move(argument);
    return spec;
}

EditorServices services()
{
    EditorServices result;
    result.applications = [] {
        return QList<ApplicationChoice>{
            {QStringLiteral("Text Editor"), QStringLiteral("org.gnome.TextEditor")},
            {QStringLiteral("Calculator"), QStringLiteral("org.gnome.Calculator")}};
    };
    result.shortcutNames = {QStringLiteral("backup"), QStringLiteral("deploy")};
    result.shortcutsFolder = QStringLiteral("/home/me/.config/vantril/shortcuts");
    return result;
}

/// An editor kept alive by the test even though it deletes itself on close.
std::unique_ptr<EditView> editor(const ButtonSpec& spec, bool isNew = false)
{
    auto view = std::make_unique<EditView>(spec, isNew, services());
    view->setAttribute(Qt::WA_DeleteOnClose, false);
    return view;
}

template<typename T>
T* child(QWidget& view, const QString& name)
{
    T* found = view.findChild<T*>(name);
    if (!found)
        qFatal("no child named %s", qPrintable(name));
    return found;
}

/// The one-line field of an argument page, whatever wraps it.
QLineEdit* argumentLine(QWidget& view, const QString& kind)
{
    QWidget* page = child<QWidget>(view, QStringLiteral("argument-") + kind);
    if (auto* line = qobject_cast<QLineEdit*>(page))
        return line;
    if (auto* combo = page->findChild<QComboBox*>())
        return combo->lineEdit();
    return page->findChild<QLineEdit*>();
}

void chooseKind(QWidget& view, const QString& kind)
{
    auto* box = child<QComboBox>(view, QStringLiteral("kind"));
    const int index = box->findData(kind);
    QVERIFY(index >= 0);
    box->setCurrentIndex(index);
}

} // namespace

void TestEditView::initTestCase()
{
    // The palette only offers symbols the theme can draw; offscreen has no theme of its own and does
    // not even look in the usual folders.
    QIcon::setThemeSearchPaths(QIcon::themeSearchPaths() +
                               QStandardPaths::locateAll(QStandardPaths::GenericDataLocation,
                                                         QStringLiteral("icons"),
                                                         QStandardPaths::LocateDirectory));
    QIcon::setThemeName(QStringLiteral("Adwaita"));
}

void TestEditView::untouchedButtonComesBackUnchanged_data()
{
    QTest::addColumn<ButtonSpec>("initial");

    ButtonSpec stack = button(QStringLiteral("Work"), QStringLiteral("group"));
    stack.children = QList<ButtonSpec>{
        button(QStringLiteral("Mail"), QStringLiteral("url"), QStringLiteral("https://mail.example.com")),
        button(QStringLiteral("Notes"), QStringLiteral("open"), QStringLiteral("~/notes.txt"))};
    stack.color = QStringLiteral("purple");
    QTest::newRow("stack with children") << stack;

    ButtonSpec unknown = button(QStringLiteral("Odd"), QStringLiteral("teleport"), QStringLiteral("mars"));
    unknown.color = QStringLiteral("magenta");
    QTest::newRow("unknown kind and colour") << unknown;

    ButtonSpec script = button(QStringLiteral("Say"), QStringLiteral("applescript"),
                               QStringLiteral("say \"hi\"\n  beep 2\n"));
    QTest::newRow("applescript keeps its text exactly") << script;

    ButtonSpec paste =
        button(QStringLiteral("Sign"), QStringLiteral("paste"), QStringLiteral("  Regards,\n  Me\n"));
    paste.locked = false;
    paste.iconPath = QStringLiteral("~/icons/sign.png");
    QTest::newRow("paste with spaces, explicit unlocked, icon") << paste;

    ButtonSpec keys = button(QStringLiteral("Close"), QStringLiteral("keys"), QStringLiteral("alt+f4"));
    keys.locked = true;
    QTest::newRow("locked keys") << keys;

    ButtonSpec desktop = button(QStringLiteral("New"), QStringLiteral("newFolder"));
    QTest::newRow("no argument") << desktop;
}

void TestEditView::untouchedButtonComesBackUnchanged()
{
    QFETCH(ButtonSpec, initial);
    const auto view = editor(initial);
    QVERIFY(view->canSave());
    QCOMPARE(view->edited(), initial);
    QCOMPARE(view->windowTitle(), QStringLiteral("Edit Button"));
}

void TestEditView::kindsOnlyOfferedWhenTheButtonHasThem()
{
    const auto fresh = editor(button(QStringLiteral("B"), QStringLiteral("open")), true);
    auto* kinds = child<QComboBox>(*fresh, QStringLiteral("kind"));
    QCOMPARE(kinds->count(), 10);
    QCOMPARE(kinds->findData(QStringLiteral("applescript")), -1);
    QCOMPARE(fresh->windowTitle(), QStringLiteral("New Button"));

    const auto script =
        editor(button(QStringLiteral("S"), QStringLiteral("applescript"), QStringLiteral("beep")));
    kinds = child<QComboBox>(*script, QStringLiteral("kind"));
    QCOMPARE(kinds->currentText(), QStringLiteral("AppleScript (not available on Linux)"));
    auto* text = child<QPlainTextEdit>(*script, QStringLiteral("argument-other"));
    QVERIFY(text);
    QCOMPARE(text->toPlainText(), QStringLiteral("beep"));
    text->setPlainText(QStringLiteral("beep 3"));
    QCOMPARE(script->edited().action, QStringLiteral("applescript"));
    QCOMPARE(script->edited().argument, QStringLiteral("beep 3"));

    const auto odd = editor(button(QStringLiteral("O"), QStringLiteral("teleport")));
    QCOMPARE(child<QComboBox>(*odd, QStringLiteral("kind"))->currentText(), QStringLiteral("teleport"));
}

void TestEditView::applicationsAreStoredById()
{
    const auto view =
        editor(button(QStringLiteral("Edit"), QStringLiteral("app"), QStringLiteral("org.gnome.TextEditor")));
    auto* combo = child<QComboBox>(*view, QStringLiteral("argument-app"));
    QCOMPARE(combo->currentText(), QStringLiteral("Text Editor"));
    QCOMPARE(view->edited().argument, QStringLiteral("org.gnome.TextEditor"));

    combo->setCurrentIndex(combo->findText(QStringLiteral("Calculator")));
    QCOMPARE(view->edited().argument, QStringLiteral("org.gnome.Calculator"));

    combo->setEditText(QStringLiteral("firefox-esr"));
    QCOMPARE(view->edited().argument, QStringLiteral("firefox-esr"));
}

void TestEditView::saveNeedsTitle()
{
    const auto view =
        editor(button(QStringLiteral("Docs"), QStringLiteral("open"), QStringLiteral("~/Documents")));
    auto* title = child<QLineEdit>(*view, QStringLiteral("title"));
    auto* save = child<QPushButton>(*view, QStringLiteral("save"));
    QVERIFY(save->isEnabled());

    title->setText(QStringLiteral("   "));
    QVERIFY(!view->canSave());
    QVERIFY(!save->isEnabled());

    title->setText(QStringLiteral("  Papers "));
    QVERIFY(save->isEnabled());
    QCOMPARE(view->edited().title, QStringLiteral("Papers"));
}

void TestEditView::saveNeedsParsableKeys()
{
    const auto view = editor(button(QStringLiteral("Keys"), QStringLiteral("open")));
    auto* save = child<QPushButton>(*view, QStringLiteral("save"));
    chooseKind(*view, QStringLiteral("keys"));
    auto* field = child<KeyField>(*view, QStringLiteral("keyField"));
    auto* status = child<QLabel>(*view, QStringLiteral("keyStatus"));
    QVERIFY2(!save->isEnabled(), "an empty key combination cannot be saved");

    field->setText(QStringLiteral("ctrl+banana"));
    QVERIFY(!view->canSave());
    QVERIFY(!save->isEnabled());
    QCOMPARE(status->text(), QStringLiteral("Not a key combination"));

    field->setText(QStringLiteral("ctrl+shift+t"));
    QVERIFY(save->isEnabled());
    QCOMPARE(status->text(), QStringLiteral("✓ valid"));
    QCOMPARE(view->edited().argument, QStringLiteral("ctrl+shift+t"));

    // Only the keys kind is checked: the same text as an address is fine.
    field->setText(QStringLiteral("ctrl+banana"));
    chooseKind(*view, QStringLiteral("url"));
    QVERIFY(save->isEnabled());
}

void TestEditView::keyFieldRecordsPressedCombination()
{
    const auto view = editor(button(QStringLiteral("K"), QStringLiteral("keys"), QStringLiteral("cmd+c")));
    auto* field = child<KeyField>(*view, QStringLiteral("keyField"));

    QTest::keyClick(field, Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(field->text(), QStringLiteral("ctrl+shift+t"));
    QCOMPARE(view->edited().argument, QStringLiteral("ctrl+shift+t"));

    QTest::keyClick(field, Qt::Key_Left, Qt::MetaModifier);
    QCOMPARE(field->text(), QStringLiteral("super+left"));

    QTest::keyClick(field, Qt::Key_F4, Qt::AltModifier);
    QCOMPARE(field->text(), QStringLiteral("alt+f4"));

    QTest::keyClick(field, Qt::Key_Delete, Qt::ControlModifier | Qt::AltModifier);
    QCOMPARE(field->text(), QStringLiteral("ctrl+alt+forwarddelete"));

    // With Shift, Qt names the character typed; the key under it is what gets pressed back.
    QTest::keyClick(field, Qt::Key_Exclam, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(field->text(), QStringLiteral("ctrl+shift+1"));

    QTest::keyClick(field, Qt::Key_F5);
    QCOMPARE(field->text(), QStringLiteral("f5"));

    // Plain keys still type and edit, so a combination can be written out.
    field->clear();
    QTest::keyClicks(field, QStringLiteral("cmd+v"));
    QCOMPARE(field->text(), QStringLiteral("cmd+v"));
    QTest::keyClick(field, Qt::Key_Backspace);
    QCOMPARE(field->text(), QStringLiteral("cmd+"));
    QVERIFY(!view->canSave());

    // A modifier alone is not a combination yet.
    QTest::keyClick(field, Qt::Key_Control, Qt::ControlModifier);
    QCOMPARE(field->text(), QStringLiteral("cmd+"));
}

void TestEditView::swatchesSetAndClearColour()
{
    ButtonSpec spec =
        button(QStringLiteral("Paint"), QStringLiteral("url"), QStringLiteral("https://example.com"));
    spec.color = QStringLiteral("magenta");
    const auto view = editor(spec);
    QCOMPARE(view->edited().color, QStringLiteral("magenta"));

    QTest::mouseClick(child<QAbstractButton>(*view, QStringLiteral("swatch-red")), Qt::LeftButton);
    QCOMPARE(view->edited().color, QStringLiteral("red"));
    QTest::mouseClick(child<QAbstractButton>(*view, QStringLiteral("swatch-cyan")), Qt::LeftButton);
    QCOMPARE(view->edited().color, QStringLiteral("cyan"));
    QVERIFY(!child<QAbstractButton>(*view, QStringLiteral("swatch-red"))->isChecked());

    QTest::mouseClick(child<QAbstractButton>(*view, QStringLiteral("swatch-default")), Qt::LeftButton);
    QCOMPARE(view->edited().color, std::nullopt);
    QVERIFY(child<QAbstractButton>(*view, QStringLiteral("swatch-default"))->isChecked());
}

void TestEditView::clearedArgumentIsAbsent()
{
    const auto view =
        editor(button(QStringLiteral("Web"), QStringLiteral("url"), QStringLiteral("https://example.com")));
    QLineEdit* address = argumentLine(*view, QStringLiteral("url"));
    QCOMPARE(address->text(), QStringLiteral("https://example.com"));
    address->setText(QStringLiteral("  "));
    QCOMPARE(view->edited().argument, std::nullopt);

    address->setText(QStringLiteral(" https://example.org "));
    QCOMPARE(view->edited().argument, QStringLiteral("https://example.org"));

    // Kinds that take nothing give nothing, whatever was typed for another kind.
    chooseKind(*view, QStringLiteral("newFolder"));
    QCOMPARE(view->edited().argument, std::nullopt);
    chooseKind(*view, QStringLiteral("url"));
    QCOMPARE(view->edited().argument, QStringLiteral("https://example.org"));

    chooseKind(*view, QStringLiteral("shell"));
    QCOMPARE(view->edited().argument, std::nullopt);
    auto* command = qobject_cast<QPlainTextEdit*>(child<QWidget>(*view, QStringLiteral("argument-shell")));
    QVERIFY(command);
    command->setPlainText(QStringLiteral("notify-send hi"));
    QCOMPARE(view->edited().argument, QStringLiteral("notify-send hi"));
    command->clear();
    QCOMPARE(view->edited().argument, std::nullopt);

    auto* icon = child<QLineEdit>(*view, QStringLiteral("iconPath"));
    icon->setText(QStringLiteral("/tmp/icon.png"));
    QCOMPARE(view->edited().iconPath, QStringLiteral("/tmp/icon.png"));
    icon->clear();
    QCOMPARE(view->edited().iconPath, std::nullopt);
}

void TestEditView::lockedCheckBox()
{
    ButtonSpec spec = button(QStringLiteral("Pin"), QStringLiteral("open"), QStringLiteral("~"));
    spec.locked = false;
    const auto view = editor(spec);
    auto* locked = child<QAbstractButton>(*view, QStringLiteral("locked"));
    QVERIFY(!locked->isChecked());
    locked->setChecked(true);
    QCOMPARE(view->edited().locked, true);
    locked->setChecked(false);
    QCOMPARE(view->edited().locked, false);

    ButtonSpec lockedSpec = spec;
    lockedSpec.locked = true;
    const auto other = editor(lockedSpec);
    child<QAbstractButton>(*other, QStringLiteral("locked"))->setChecked(false);
    QCOMPARE(other->edited().locked, std::nullopt);

    spec.locked.reset();
    const auto plain = editor(spec);
    QCOMPARE(plain->edited().locked, std::nullopt);
}

void TestEditView::symbolPaletteFillsSymbol()
{
    const auto view = editor(button(QStringLiteral("Sym"), QStringLiteral("open"), QStringLiteral("~")));
    auto* terminal = view->findChild<QToolButton*>(QStringLiteral("symbol-terminal"));
    if (!terminal)
        QSKIP("the icon theme has no terminal icon");
    // Each icon is offered once, even where several names share it.
    QVERIFY(view->findChild<QToolButton*>(QStringLiteral("symbol-doc.text")) == nullptr ||
            view->findChild<QToolButton*>(QStringLiteral("symbol-doc")) == nullptr);
    QTest::mouseClick(terminal, Qt::LeftButton);
    QCOMPARE(child<QLineEdit>(*view, QStringLiteral("symbol"))->text(), QStringLiteral("terminal"));
    QCOMPARE(view->edited().symbol, QStringLiteral("terminal"));
    QVERIFY(terminal->isChecked());

    child<QLineEdit>(*view, QStringLiteral("symbol"))->setText(QStringLiteral("🚀"));
    QCOMPARE(view->edited().symbol, QStringLiteral("🚀"));
    QVERIFY(!terminal->isChecked());
}

void TestEditView::previewFollowsEdits()
{
    const auto view =
        editor(button(QStringLiteral("Old"), QStringLiteral("url"), QStringLiteral("https://a.example")));
    const auto preview = [&] { return view->findChild<ChipLabel*>(); };
    QVERIFY(preview());
    QCOMPARE(preview()->spec().title, QStringLiteral("Old"));

    child<QLineEdit>(*view, QStringLiteral("title"))->setText(QStringLiteral("New"));
    QCOMPARE(view->findChildren<ChipLabel*>().size(), 1);
    QCOMPARE(preview()->spec().title, QStringLiteral("New"));

    QTest::mouseClick(child<QAbstractButton>(*view, QStringLiteral("swatch-orange")), Qt::LeftButton);
    QCOMPARE(preview()->spec().tint(), ChipColor::Orange);
    QCOMPARE(preview()->spec(), view->edited());
}

void TestEditView::newStackHasFixedKindAndNoArgument()
{
    ButtonSpec stack = button(QStringLiteral("Stack"), QStringLiteral("group"), QStringLiteral("leftover"));
    const auto view = editor(stack, true);
    QCOMPARE(view->windowTitle(), QStringLiteral("New Stack"));
    auto* kinds = child<QComboBox>(*view, QStringLiteral("kind"));
    QVERIFY(!kinds->isEnabled());
    QCOMPARE(kinds->currentData().toString(), QStringLiteral("group"));
    QCOMPARE(view->edited().action, QStringLiteral("group"));
    QCOMPARE(view->edited().argument, std::nullopt);
    QVERIFY(view->canSave());
}

void TestEditView::saveHandsOverEditedButtonOnce()
{
    auto* view =
        new EditView(button(QStringLiteral("Docs"), QStringLiteral("open"), QStringLiteral("~/Documents")),
                     false, services());
    QPointer<EditView> alive(view);
    QList<ButtonSpec> saved;
    QObject::connect(view, &EditView::saved, [&](const ButtonSpec& spec) { saved << spec; });
    view->show();
    child<QLineEdit>(*view, QStringLiteral("title"))->setText(QStringLiteral("Papers"));
    const ButtonSpec expected = view->edited();

    auto* save = child<QPushButton>(*view, QStringLiteral("save"));
    QTest::mouseClick(save, Qt::LeftButton);
    QCOMPARE(saved.size(), 1);
    QCOMPARE(saved.first(), expected);
    QCOMPARE(saved.first().title, QStringLiteral("Papers"));
    QTRY_VERIFY(alive.isNull());
}

void TestEditView::escapeClosesWithoutSaving()
{
    auto* view =
        new EditView(button(QStringLiteral("Docs"), QStringLiteral("open"), QStringLiteral("~/Documents")),
                     false, services());
    QPointer<EditView> alive(view);
    int calls = 0;
    QObject::connect(view, &EditView::saved, [&] { ++calls; });
    view->show();
    auto* title = child<QLineEdit>(*view, QStringLiteral("title"));
    title->setText(QStringLiteral("Changed"));
    QTest::keyClick(title, Qt::Key_Escape);
    QTRY_VERIFY(alive.isNull());
    QCOMPARE(calls, 0);

    // Return in a one-line field saves, as a dialog's default button would.
    auto* second = new EditView(button(QStringLiteral("Docs"), QStringLiteral("open")), false, services());
    QPointer<EditView> secondAlive(second);
    QObject::connect(second, &EditView::saved, [&] { ++calls; });
    second->show();
    QTest::keyClick(child<QLineEdit>(*second, QStringLiteral("title")), Qt::Key_Return);
    QCOMPARE(calls, 1);
    QTRY_VERIFY(secondAlive.isNull());

    // But Return on a focused Cancel button cancels.
    auto* third = new EditView(button(QStringLiteral("Docs"), QStringLiteral("open")), false, services());
    QPointer<EditView> thirdAlive(third);
    QObject::connect(third, &EditView::saved, [&] { ++calls; });
    third->show();
    QTest::keyClick(child<QPushButton>(*third, QStringLiteral("cancel")), Qt::Key_Return);
    QTRY_VERIFY(thirdAlive.isNull());
    QCOMPARE(calls, 1);
}

QTEST_MAIN(TestEditView)
#include "tst_editview.moc"

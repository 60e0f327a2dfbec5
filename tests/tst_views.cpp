// The program's widgets drawn off screen: the bar and its flyouts, the icons on them, and the button editor
// with what it hands back, when it lets the user save, and how it closes.

#include "TestSupport.h"
#include "actions/IconCache.h"
#include "app/BarPlacement.h"
#include "app/ConfigSession.h"
#include "app/ContextTracker.h"
#include "app/EditorLauncher.h"
#include "bar/BarPanel.h"
#include "bar/BarView.h"
#include "bar/ChipLabel.h"
#include "bar/FlyoutController.h"
#include "bar/FlyoutView.h"
#include "bar/FolderListing.h"
#include "bar/SymbolNames.h"
#include "bar/SymbolStore.h"
#include "bar/SymbolView.h"
#include "config/Config.h"
#include "config/Presets.h"
#include "dragdrop/DragEditing.h"
#include "dragdrop/DragState.h"
#include "editor/EditView.h"
#include "editor/KeyField.h"
#include "platform/fake/FakePlatform.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScopeGuard>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QUrl>
#include <sys/stat.h>

Q_DECLARE_METATYPE(ButtonSpec)

class TestViews : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everySymbolOfTheProgramIsDrawn_data();
    void everySymbolOfTheProgramIsDrawn();
    void rowHoldsGripChipsAndContextAfterSeparator();
    void shortPressTapsLongPressDrags();
    void emptyStackSaysSo();
    void barComesBackOnTheScreenItWasLeftOn_data();
    void barComesBackOnTheScreenItWasLeftOn();

    void editorHandsBackWhatItsFieldsSay_data();
    void editorHandsBackWhatItsFieldsSay();
    void kindsOnlyOfferedWhenTheButtonHasThem();
    void keyFieldRecordsPressedCombination();
    void symbolPaletteFillsSymbol();
    void editorHandsOverOnlyWhatIsSaved_data();
    void editorHandsOverOnlyWhatIsSaved();

    void iconsAreSmallAndNeverMissing();
    void symbolsComeBackOnlyFromTheSameThemes_data();
    void symbolsComeBackOnlyFromTheSameThemes();
    void keptSymbolsAreReadOnlyFromAPlainFile();
};

namespace {

QList<ChipLabel*> chipsOf(QWidget& view)
{
    return view.findChildren<ChipLabel*>(Qt::FindDirectChildrenOnly);
}

void addSymbolRows(const QString& source, const QList<ButtonSpec>& buttons)
{
    for (const ButtonSpec& spec : buttons) {
        QTest::addRow("%s / %s: %s", qPrintable(source), qPrintable(spec.title), qPrintable(spec.symbol))
            << spec.symbol << true;
        addSymbolRows(source, spec.children.value_or(QList<ButtonSpec>()));
    }
}

/// The rows of folder listings, made to show every kind of row: entries, the way up, "more", "empty".
QList<ButtonSpec> listingRows()
{
    QTemporaryDir dir;
    QDir(dir.path()).mkpath(u"top/inner/empty"_s);
    for (int i = 0; i < 30; ++i)
        QFile(dir.filePath(u"top/inner/file%1.txt"_s.arg(i))).open(QIODevice::WriteOnly);
    const QString top = dir.filePath(u"top"_s);
    return FolderListing::items(top + u"/inner"_s, top) +
           FolderListing::items(top + u"/inner/empty"_s, std::nullopt);
}

/// What dropping a folder, a file and a link onto the bar makes.
QList<ButtonSpec> droppedButtons()
{
    QTemporaryDir dir;
    const BarConfig none;
    return {DragEditing::specForFile(dir.path(), none),
            DragEditing::specForFile(dir.filePath(u"missing.txt"_s), none),
            DragEditing::specForLink(QUrl(u"https://example.org"_s), none)};
}

} // namespace

void TestViews::initTestCase()
{
    SymbolView::useIconThemes();
}

void TestViews::everySymbolOfTheProgramIsDrawn_data()
{
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<bool>("drawn");
    addSymbolRows(u"default bar"_s, Config::defaults().buttons);
    for (const AppPreset& preset : Presets::all())
        addSymbolRows(u"preset "_s + preset.name, preset.buttons);
    for (const QString& name : SymbolNames::names())
        QTest::addRow("palette: %s", qPrintable(name)) << name << true;
    for (const QString& name : SymbolNames::chrome())
        QTest::addRow("chip: %s", qPrintable(name)) << name << true;
    addSymbolRows(u"folder listing"_s, listingRows());
    addSymbolRows(u"drop"_s, droppedButtons());
    // What a user types and no theme knows stays text: emoji, words.
    QTest::newRow("typed emoji") << u"👋"_s << false;
    QTest::newRow("typed word") << u"Hello"_s << false;
    QTest::newRow("typed unknown name") << u"no.such.symbol"_s << false;
    QTest::newRow("no symbol") << QString() << false;
}

void TestViews::everySymbolOfTheProgramIsDrawn()
{
    QFETCH(QString, symbol);
    QFETCH(bool, drawn);
    QCOMPARE(!SymbolView::icon(symbol, Qt::white, 16, 1).isNull(), drawn);
}

void TestViews::rowHoldsGripChipsAndContextAfterSeparator()
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    view.rebuild(Config::defaults(), {}, true);
    QCOMPARE(view.height(), BarView::barHeight);
    const QHash<QString, QRectF> frames = drag.barFrames();
    QCOMPARE(frames.size(), 3);
    QVERIFY(frames.value(u"Files"_s).left() >= 12 + 14 + 8); // after the margin and the grip
    QVERIFY(frames.value(u"Files"_s).right() < frames.value(u"Apps"_s).left());
    QVERIFY(frames.value(u"Help"_s).right() <= view.width() - 12);
    const int plain = view.width();

    view.rebuild(Config::defaults(), {button(u"Clear"_s, u"keys"_s)}, true);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(chipsOf(view).size(), 4);
    QVERIFY(view.width() > plain);
    // The separator sits between the last shared chip and the first of the application's.
    const QRectF help = drag.barFrames().value(u"Help"_s);
    const QRectF clear = drag.barFrames().value(u"Clear"_s);
    QCOMPARE(clear.left() - help.right(), 8.0 + 1 + 8);

    // Two chips of one title publish one frame: the later one.
    view.rebuild(barOf({button(u"Twin"_s, u"open"_s), button(u"Twin"_s, u"url"_s)}), {}, true);
    QCOMPARE(drag.barFrames().size(), 1);
    QVERIFY(drag.barFrames().value(u"Twin"_s).left() > 40);

    // Held to less than its width, the bar keeps what fits and ends in the overflow chip with the rest,
    // the front application's chips last.
    const QList<ButtonSpec> context = {button(u"Clear"_s, u"keys"_s)};
    view.rebuild(Config::defaults(), context, true, plain);
    QVERIFY(view.width() <= plain);
    QVERIFY(!view.overflowed().isEmpty());
    QCOMPARE(view.overflowed().last().title, u"Clear"_s);
    QCOMPARE(drag.barFrames().size() + view.overflowed().size(), 4);
    QVERIFY(view.overflowFrame().right() <= view.width() - 12);
    QVERIFY(view.overflowFrame().left() > drag.barFrames().value(u"Files"_s).right());
    view.rebuild(Config::defaults(), context, true, 0);
    QCOMPARE(view.overflowed().size(), 4);
    QVERIFY(drag.barFrames().isEmpty());

    // A stack's chevron points up or down at one width; a link of the same title has none.
    BarConfig stack = barOf({button(u"Stack"_s, u"group"_s)});
    view.rebuild(stack, {}, true);
    const int up = drag.barFrames().value(u"Stack"_s).width();
    view.rebuild(stack, {}, false);
    QCOMPARE(int(drag.barFrames().value(u"Stack"_s).width()), up);
    stack.buttons.first().action = u"url"_s;
    view.rebuild(stack, {}, true);
    QVERIFY(drag.barFrames().value(u"Stack"_s).width() < up);
}

void TestViews::shortPressTapsLongPressDrags()
{
    DragState drag;
    BarHandlers handlers;
    QStringList calls;
    handlers.tap = [&](const ButtonSpec& spec, const QRectF& frame) {
        calls << u"tap %1 %2"_s.arg(spec.title).arg(frame.left());
    };
    handlers.dragMove = [&](const ButtonSpec& spec, const QPointF&) { calls << u"move "_s + spec.title; };
    handlers.dragEnd = [&](const ButtonSpec& spec, const QPointF&) { calls << u"end "_s + spec.title; };
    BarView view(drag, handlers);
    view.rebuild(Config::defaults(), {}, true);
    view.show();
    ChipLabel* files = chipsOf(view).first();

    QTest::mousePress(files, Qt::LeftButton, {}, QPoint(10, 10));
    QTest::mouseMove(files, QPoint(15, 10)); // 5 pixels: still a tap
    QTest::mouseRelease(files, Qt::LeftButton, {}, QPoint(15, 10));
    QCOMPARE(calls, QStringList{u"tap Files %1"_s.arg(drag.barFrames().value(u"Files"_s).left())});

    calls.clear();
    QTest::mousePress(files, Qt::LeftButton, {}, QPoint(10, 10));
    QTest::mouseMove(files, QPoint(16, 10));
    QTest::mouseMove(files, QPoint(30, 12));
    QTest::mouseRelease(files, Qt::LeftButton, {}, QPoint(30, 12));
    QCOMPARE(calls, (QStringList{u"move Files"_s, u"move Files"_s, u"end Files"_s}));
}

void TestViews::emptyStackSaysSo()
{
    BarHandlers handlers;
    FlyoutView empty({}, handlers);
    const QList<QLabel*> labels = empty.findChildren<QLabel*>();
    QCOMPARE(labels.size(), 1);
    QCOMPARE(labels.first()->text(), u"Empty — drag buttons onto this stack"_s);

    FlyoutView full(Config::defaults().buttons.first().children.value(), handlers);
    full.adjustSize();
    const QList<ChipLabel*> rows = chipsOf(full);
    QCOMPARE(rows.size(), 4);
    for (const ChipLabel* row : rows)
        QCOMPARE(row->width(), rows.first()->width()); // every row as wide as the widest
}

namespace {

EditorServices services()
{
    EditorServices result;
    result.applications = [] {
        return QList<ApplicationChoice>{{u"Text Editor"_s, u"org.gnome.TextEditor"_s},
                                        {u"Calculator"_s, u"org.gnome.Calculator"_s}};
    };
    result.shortcutNames = {u"backup"_s, u"deploy"_s};
    result.shortcutsFolder = u"/home/me/.config/vantril/shortcuts"_s;
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

/// What the user does in the editor's fields.
using Edit = std::function<void(EditView&)>;

/// Puts `text` into the field named `name`, whatever kind of field or page it is.
Edit fill(const QString& name, const QString& text)
{
    return [=](EditView& view) {
        QWidget* field = child<QWidget>(view, name);
        if (auto* plain = qobject_cast<QPlainTextEdit*>(field))
            plain->setPlainText(text);
        else if (auto* line = qobject_cast<QLineEdit*>(field))
            line->setText(text);
        else
            field->findChild<QLineEdit*>()->setText(text);
    };
}

Edit click(const QString& name)
{
    return [=](EditView& view) { QTest::mouseClick(child<QAbstractButton>(view, name), Qt::LeftButton); };
}

Edit chooseKind(const QString& kind)
{
    return [=](EditView& view) {
        auto* box = child<QComboBox>(view, u"kind"_s);
        QVERIFY(box->findData(kind) >= 0);
        box->setCurrentIndex(box->findData(kind));
    };
}

Edit steps(const QList<Edit>& edits)
{
    return [=](EditView& view) {
        for (const Edit& edit : edits)
            edit(view);
    };
}

} // namespace

Q_DECLARE_METATYPE(Edit)

void TestViews::editorHandsBackWhatItsFieldsSay_data()
{
    QTest::addColumn<ButtonSpec>("initial");
    QTest::addColumn<Edit>("edit");
    QTest::addColumn<ButtonSpec>("edited");
    QTest::addColumn<bool>("canSave");
    const auto row = [](const char* name, const ButtonSpec& initial, const Edit& edit,
                        const std::function<void(ButtonSpec&)>& change, bool canSave = true) {
        ButtonSpec edited = initial;
        change(edited);
        QTest::newRow(name) << initial << edit << edited << canSave;
    };
    const Edit untouched = [](EditView&) {};
    const auto same = [](ButtonSpec&) {};
    const auto asKind = [](const QString& action, std::optional<QString> argument = {}) {
        return [=](ButtonSpec& b) {
            b.action = action;
            b.argument = argument;
        };
    };

    // Untouched, a button comes back exactly, with what the editor does not show.
    ButtonSpec stack = button(u"Work"_s, u"group"_s);
    stack.children = QList<ButtonSpec>{button(u"Mail"_s, u"url"_s, u"https://mail.example.com"_s),
                                       button(u"Notes"_s, u"open"_s, u"~/notes.txt"_s)};
    stack.color = u"purple"_s;
    row("untouched stack with members", stack, untouched, same);
    ButtonSpec unknown = button(u"Odd"_s, u"teleport"_s, u"mars"_s);
    unknown.color = u"magenta"_s;
    row("untouched unknown kind and colour", unknown, untouched, same);
    const ButtonSpec script = button(u"Say"_s, u"applescript"_s, u"say \"hi\"\n  beep 2\n"_s);
    row("untouched applescript keeps its text exactly", script, untouched, same);
    ButtonSpec paste = button(u"Sign"_s, u"paste"_s, u"  Regards,\n  Me\n"_s);
    paste.locked = false;
    paste.iconPath = u"~/icons/sign.png"_s;
    row("untouched paste with spaces, explicit unlocked, icon", paste, untouched, same);
    ButtonSpec keys = button(u"Close"_s, u"keys"_s, u"alt+f4"_s);
    keys.locked = true;
    row("untouched locked keys", keys, untouched, same);
    row("untouched, no argument", button(u"New"_s, u"newFolder"_s), untouched, same);

    const ButtonSpec web = button(u"Web"_s, u"url"_s, u"https://example.com"_s);
    row("title trimmed", web, fill(u"title"_s, u"  Papers "_s), [](auto& b) { b.title = u"Papers"_s; });
    row(
        "blank title", web, fill(u"title"_s, u"   "_s), [](auto& b) { b.title.clear(); }, false);
    row("address trimmed", web, fill(u"argument-url"_s, u" https://example.org "_s),
        [](auto& b) { b.argument = u"https://example.org"_s; });
    row("blank address is absent", web, fill(u"argument-url"_s, u"  "_s),
        [](auto& b) { b.argument.reset(); });
    // Kinds that take nothing give nothing, whatever was typed for another kind.
    row("kind without argument", web, chooseKind(u"newFolder"_s), asKind(u"newFolder"_s));
    row("back to the kind, back to its argument", web,
        steps({chooseKind(u"newFolder"_s), chooseKind(u"url"_s)}), same);
    row("shell command", web, steps({chooseKind(u"shell"_s), fill(u"argument-shell"_s, u"notify-send hi"_s)}),
        asKind(u"shell"_s, u"notify-send hi"_s));
    row("shell command cleared", web, steps({chooseKind(u"shell"_s), fill(u"argument-shell"_s, QString())}),
        asKind(u"shell"_s));
    row("applescript edited, still offered", script, fill(u"argument-other"_s, u"beep 3"_s),
        [](auto& b) { b.argument = u"beep 3"_s; });
    row("icon file", web, fill(u"iconPath"_s, u"/tmp/icon.png"_s),
        [](auto& b) { b.iconPath = u"/tmp/icon.png"_s; });
    row("icon file cleared", paste, fill(u"iconPath"_s, QString()), [](auto& b) { b.iconPath.reset(); });
    row("symbol typed", web, fill(u"symbol"_s, u"🚀"_s), [](auto& b) { b.symbol = u"🚀"_s; });

    ButtonSpec magenta = web;
    magenta.color = u"magenta"_s;
    row("swatch", magenta, steps({click(u"swatch-red"_s), click(u"swatch-cyan"_s)}),
        [](auto& b) { b.color = u"cyan"_s; });
    row("default swatch clears the colour", magenta, click(u"swatch-default"_s),
        [](auto& b) { b.color.reset(); });

    // "locked": false stays written out as long as the box stays unticked; unticked, true goes away.
    const auto lock = [](bool on) {
        return [on](EditView& view) { child<QAbstractButton>(view, u"locked"_s)->setChecked(on); };
    };
    row("locked ticked", paste, lock(true), [](auto& b) { b.locked = true; });
    row("locked ticked and unticked", paste, steps({lock(true), lock(false)}), same);
    row("locked unticked", keys, lock(false), [](auto& b) { b.locked.reset(); });

    const ButtonSpec app = button(u"Edit"_s, u"app"_s, u"org.gnome.TextEditor"_s);
    row(
        "application chosen by name, stored by id", app,
        [](EditView& view) {
            auto* combo = child<QComboBox>(view, u"argument-app"_s);
            QCOMPARE(combo->currentText(), u"Text Editor"_s);
            combo->setCurrentIndex(combo->findText(u"Calculator"_s));
        },
        [](auto& b) { b.argument = u"org.gnome.Calculator"_s; });
    row("application typed", app, fill(u"argument-app"_s, u"firefox-esr"_s),
        [](auto& b) { b.argument = u"firefox-esr"_s; });

    const auto status = [](const QString& text) {
        return [text](EditView& view) { QCOMPARE(child<QLabel>(view, u"keyStatus"_s)->text(), text); };
    };
    const ButtonSpec plain = button(u"Keys"_s);
    row("keys, empty", plain, chooseKind(u"keys"_s), asKind(u"keys"_s), false);
    row("keys that do not parse", plain,
        steps({chooseKind(u"keys"_s), fill(u"keyField"_s, u"ctrl+banana"_s),
               status(u"Not a key combination"_s)}),
        asKind(u"keys"_s, u"ctrl+banana"_s), false);
    row("keys that parse", plain,
        steps({chooseKind(u"keys"_s), fill(u"keyField"_s, u"ctrl+shift+t"_s), status(u"✓ valid"_s)}),
        asKind(u"keys"_s, u"ctrl+shift+t"_s));
    // Only the keys kind is checked: the same text as an address is fine.
    row("keys text as an address", plain,
        steps({chooseKind(u"keys"_s), fill(u"keyField"_s, u"ctrl+banana"_s), chooseKind(u"url"_s)}),
        [](auto& b) { b.action = u"url"_s; });
}

void TestViews::editorHandsBackWhatItsFieldsSay()
{
    QFETCH(ButtonSpec, initial);
    QFETCH(Edit, edit);
    QFETCH(ButtonSpec, edited);
    QFETCH(bool, canSave);
    const auto view = editor(initial);
    QCOMPARE(view->windowTitle(), u"Edit Button"_s);
    edit(*view);
    QCOMPARE(view->edited(), edited);
    QCOMPARE(view->canSave(), canSave);
    QCOMPARE(child<QPushButton>(*view, u"save"_s)->isEnabled(), canSave);
    // The preview chip shows the button as it would be saved.
    QCOMPARE(view->findChildren<ChipLabel*>().size(), 1);
    QCOMPARE(view->findChild<ChipLabel*>()->spec(), edited);
}

void TestViews::kindsOnlyOfferedWhenTheButtonHasThem()
{
    const auto fresh = editor(button(u"B"_s), true);
    auto* kinds = child<QComboBox>(*fresh, u"kind"_s);
    QCOMPARE(kinds->count(), 10);
    QCOMPARE(kinds->findData(u"applescript"_s), -1);
    QCOMPARE(fresh->windowTitle(), u"New Button"_s);

    const auto script = editor(button(u"S"_s, u"applescript"_s, u"beep"_s));
    QCOMPARE(child<QComboBox>(*script, u"kind"_s)->currentText(), u"AppleScript (not available on Linux)"_s);
    const auto odd = editor(button(u"O"_s, u"teleport"_s));
    QCOMPARE(child<QComboBox>(*odd, u"kind"_s)->currentText(), u"teleport"_s);

    // A new stack has its kind fixed and no argument, whatever it was made with.
    const auto stack = editor(button(u"Stack"_s, u"group"_s, u"leftover"_s), true);
    QCOMPARE(stack->windowTitle(), u"New Stack"_s);
    QVERIFY(!child<QComboBox>(*stack, u"kind"_s)->isEnabled());
    QCOMPARE(stack->edited(), button(u"Stack"_s, u"group"_s));
    QVERIFY(stack->canSave());
}

void TestViews::keyFieldRecordsPressedCombination()
{
    const auto view = editor(button(u"K"_s, u"keys"_s, u"cmd+c"_s));
    auto* field = child<KeyField>(*view, u"keyField"_s);
    const std::tuple<Qt::Key, Qt::KeyboardModifiers, QString> presses[] = {
        {Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier, u"ctrl+shift+t"_s},
        {Qt::Key_Left, Qt::MetaModifier, u"super+left"_s},
        {Qt::Key_F4, Qt::AltModifier, u"alt+f4"_s},
        {Qt::Key_Delete, Qt::ControlModifier | Qt::AltModifier, u"ctrl+alt+forwarddelete"_s},
        // With Shift, Qt names the character typed; the key under it is what gets pressed back.
        {Qt::Key_Exclam, Qt::ControlModifier | Qt::ShiftModifier, u"ctrl+shift+1"_s},
        {Qt::Key_F5, Qt::NoModifier, u"f5"_s},
    };
    for (const auto& [key, modifiers, text] : presses) {
        QTest::keyClick(field, key, modifiers);
        QCOMPARE(field->text(), text);
        QCOMPARE(view->edited().argument, text);
    }

    // Plain keys still type and edit, so a combination can be written out; a modifier alone adds nothing.
    field->clear();
    QTest::keyClicks(field, u"cmd+v"_s);
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClick(field, Qt::Key_Control, Qt::ControlModifier);
    QCOMPARE(field->text(), u"cmd+"_s);
    QVERIFY(!view->canSave());
}

void TestViews::symbolPaletteFillsSymbol()
{
    const auto view = editor(button(u"Sym"_s, u"open"_s, u"~"_s));
    auto* terminal = view->findChild<QToolButton*>(u"symbol-terminal"_s);
    if (!terminal)
        QSKIP("the icon theme has no terminal icon");
    // Each icon is offered once, even where several names share it.
    QVERIFY(!view->findChild<QToolButton*>(u"symbol-doc.text"_s) ||
            !view->findChild<QToolButton*>(u"symbol-doc"_s));
    QTest::mouseClick(terminal, Qt::LeftButton);
    QCOMPARE(child<QLineEdit>(*view, u"symbol"_s)->text(), u"terminal"_s);
    QCOMPARE(view->edited().symbol, u"terminal"_s);
    QVERIFY(terminal->isChecked());
    fill(u"symbol"_s, u"🚀"_s)(*view);
    QVERIFY(!terminal->isChecked());
}

void TestViews::editorHandsOverOnlyWhatIsSaved_data()
{
    QTest::addColumn<QString>("close");
    QTest::addColumn<bool>("saves");
    QTest::newRow("Save clicked") << QStringLiteral("save") << true;
    QTest::newRow("Return in the title") << QStringLiteral("return") << true;
    QTest::newRow("Escape") << QStringLiteral("escape") << false;
}

void TestViews::editorHandsOverOnlyWhatIsSaved()
{
    QFETCH(QString, close);
    QFETCH(bool, saves);
    FakePlatform platform;
    EditorLauncher launcher(platform.launcher());
    QSignalSpy saved(&launcher, &EditorLauncher::saved);
    const ButtonSpec docs = button(u"Docs"_s, u"open"_s, u"~/Documents"_s);
    launcher.open(docs, u"Work"_s, false);
    launcher.open(std::nullopt, std::nullopt, false); // brings the open one forward
    QList<EditView*> editors;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* editor = qobject_cast<EditView*>(window))
            editors << editor;
    }
    QCOMPARE(editors.size(), 1);
    QPointer<EditView> view(editors.first());
    QVERIFY(launcher.isShown());
    auto* title = child<QLineEdit>(*view, QStringLiteral("title"));
    title->setText(QStringLiteral("Papers"));
    const ButtonSpec expected = view->edited();

    if (close == u"save")
        QTest::mouseClick(child<QPushButton>(*view, QStringLiteral("save")), Qt::LeftButton);
    else
        QTest::keyClick(title, close == u"return" ? Qt::Key_Return : Qt::Key_Escape);
    QTRY_VERIFY(view.isNull());
    QVERIFY(!launcher.isShown());
    QCOMPARE(saved.size(), saves ? 1 : 0);
    if (saves) {
        QCOMPARE(saved.first().at(0).value<ButtonSpec>(), expected);
        QCOMPARE(saved.first().at(1).value<std::optional<QString>>(), std::optional(QStringLiteral("Docs")));
        QCOMPARE(saved.first().at(2).value<std::optional<QString>>(), std::optional(QStringLiteral("Work")));
    }
}

void TestViews::iconsAreSmallAndNeverMissing()
{
    QTemporaryDir dir;
    // A FIFO in a folder listing: looking at its type must not wait for a writer.
    const QString fifo = dir.filePath(u"x.desktop"_s);
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0644), 0);
    for (const QString& path : {dir.path(), dir.filePath(u"missing.txt"_s), u"/bin/sh"_s, u""_s, fifo}) {
        const QImage image = IconCache::image(path);
        QVERIFY2(!image.isNull(), qPrintable(path));
        QVERIFY2(image.width() <= 16 && image.height() <= 16, qPrintable(path));
    }
    // "~" and the home folder's path are one entry: the same cached image, not a second lookup.
    QCOMPARE(IconCache::image(u"~"_s).cacheKey(), IconCache::image(QDir::homePath()).cacheKey());
}

void TestViews::symbolsComeBackOnlyFromTheSameThemes_data()
{
    QImage red(24, 24, QImage::Format_ARGB32_Premultiplied);
    red.fill(Qt::red);
    red.setDevicePixelRatio(1.5);
    const QHash<QString, QImage> kept = {{u"no-theme-has-this|#ffffffff|24"_s, red},
                                         {u"🙂|#ffffffff|24"_s, QImage()}};
    const QByteArray file = SymbolStore::encode(kept, "themes as they were");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("stamp");
    QTest::addColumn<bool>("taken");
    QTest::newRow("the same themes") << file << QByteArray("themes as they were") << true;
    QTest::newRow("themes changed since") << file << QByteArray("themes as they are") << false;
    QTest::newRow("cut short") << file.left(file.size() - 7) << QByteArray("themes as they were") << false;
    QTest::newRow("longer than written") << file + "x" << QByteArray("themes as they were") << false;
    QTest::newRow("none yet") << QByteArray() << QByteArray("themes as they were") << false;
    QTest::newRow("not such a file") << QByteArray(4096, '\xff') << QByteArray("themes as they were")
                                     << false;
}

void TestViews::symbolsComeBackOnlyFromTheSameThemes()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, stamp);
    QFETCH(bool, taken);
    const QHash<QString, QImage> pictures = SymbolStore::decode(file, stamp);
    QCOMPARE(pictures.isEmpty(), !taken);
    if (!taken)
        return;
    SymbolView::remember(pictures);
    QVERIFY(!SymbolView::drawn().fresh);
    // Taken as drawn: a name no theme has shows the kept picture, and an emoji stays text.
    const QPixmap kept = SymbolView::icon(u"no-theme-has-this"_s, Qt::white, 16, 1.5);
    QCOMPARE(kept.devicePixelRatio(), 1.5);
    QCOMPARE(kept.toImage().pixelColor(5, 5), QColor(Qt::red));
    QVERIFY(SymbolView::icon(u"🙂"_s, Qt::white, 16, 1.5).isNull());
    QVERIFY(!SymbolView::drawn().fresh);
    SymbolView::icon(u"folder"_s, Qt::white, 16, 1.5);
    QVERIFY(SymbolView::drawn().fresh);
}

void TestViews::keptSymbolsAreReadOnlyFromAPlainFile()
{
    QTemporaryDir cache;
    const std::optional<QByteArray> before =
        qEnvironmentVariableIsSet("XDG_CACHE_HOME") ? std::optional(qgetenv("XDG_CACHE_HOME")) : std::nullopt;
    qputenv("XDG_CACHE_HOME", cache.path().toLocal8Bit());
    const auto restore =
        qScopeGuard([&] { before ? qputenv("XDG_CACHE_HOME", *before) : qunsetenv("XDG_CACHE_HOME"); });
    QCOMPARE(SymbolStore::path(), cache.filePath(u"vantril/symbols"_s));
    SymbolStore::write("kept").wait();
    QCOMPARE(SymbolStore::read(), QByteArray("kept"));
    // A FIFO in its place would hold the bar's start until something wrote to it.
    QVERIFY(QFile::remove(SymbolStore::path()));
    QCOMPARE(::mkfifo(QFile::encodeName(SymbolStore::path()).constData(), 0644), 0);
    QCOMPARE(SymbolStore::read(), QByteArray());
}

void TestViews::barComesBackOnTheScreenItWasLeftOn_data()
{
    QTest::addColumn<int>("saved");
    QTest::addColumn<quint32>("expected");
    QTest::newRow("first start: the first screen") << -1 << 1u;
    QTest::newRow("left on the second screen") << 2 << 2u;
    QTest::newRow("left on the first screen") << 1 << 1u;
    QTest::newRow("left on a screen that is gone: the first") << 7 << 1u;
}

void TestViews::barComesBackOnTheScreenItWasLeftOn()
{
    QFETCH(int, saved);
    QFETCH(quint32, expected);
    TempConfigDir dir;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, dir.path());
    Preferences preferences;
    if (saved >= 0)
        preferences.setBarPosition({quint32(saved), 0.25, 0.1});
    FakePlatform platform;
    platform.screenList = {{1, QRect(0, 0, 1440, 900), QRect(0, 0, 1440, 875)},
                           {2, QRect(1440, 0, 1920, 1080), QRect(1440, 0, 1920, 1080)}};
    ConfigSession session;
    session.load(Config::loadDocument());
    ContextTracker context(platform.frontApplication());
    DragState drag;
    BarHandlers handlers;
    FlyoutController flyouts(platform, handlers, drag);
    BarPlacement placement(platform, preferences, session, context, drag, handlers, flyouts);
    placement.create(false);

    const QRect frame = placement.panel()->frameGeometry();
    const auto screen = platform.screens().screenOf(frame);
    QVERIFY(screen);
    QCOMPARE(screen->number, expected);
    QVERIFY2(screen->available.contains(frame), "the whole bar is on its screen");
    // Moved a little, it is saved on that screen, at the fractions that bring it back there.
    placement.moveBy(QPointF(30, 20));
    placement.savePosition();
    QCOMPARE(preferences.barPosition().value_or(Preferences::BarPosition{}).display, expected);
    QCOMPARE(placement.savedOrigin(placement.panel()->size()),
             std::optional<QPoint>(placement.panel()->pos()));
}

QTEST_MAIN(TestViews)
#include "tst_views.moc"

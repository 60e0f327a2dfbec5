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
#include "bar/SymbolView.h"
#include "config/Config.h"
#include "config/Presets.h"
#include "dragdrop/DragEditing.h"
#include "dragdrop/DragState.h"
#include "editor/EditView.h"
#include "editor/KeyField.h"
#include "platform/fake/FakePlatform.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
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
    void stacksAndFoldersShowTheirDirection();
    void shortPressTapsLongPressDrags();
    void emptyStackSaysSo();
    void barComesBackOnTheScreenItWasLeftOn_data();
    void barComesBackOnTheScreenItWasLeftOn();

private Q_SLOTS:

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
    void editorHandsOverOnlyWhatIsSaved_data();
    void editorHandsOverOnlyWhatIsSaved();

private Q_SLOTS:
    void iconsAreSmallAndNeverMissing();
    void tildeAndFullPathShareOneEntry();
};

namespace {

/// A button with a symbol, as the views draw it.
ButtonSpec shownButton(const QString& title, const QString& action, std::optional<QString> argument = {})
{
    ButtonSpec spec;
    spec.title = title;
    spec.action = action;
    spec.symbol = QStringLiteral("folder");
    spec.argument = std::move(argument);
    return spec;
}

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
    QDir(dir.path()).mkpath(QStringLiteral("top/inner/empty"));
    for (int i = 0; i < 30; ++i)
        QFile(dir.filePath(QStringLiteral("top/inner/file%1.txt").arg(i))).open(QIODevice::WriteOnly);
    const QString top = dir.filePath(QStringLiteral("top"));
    return FolderListing::items(top + QStringLiteral("/inner"), top) +
           FolderListing::items(top + QStringLiteral("/inner/empty"), std::nullopt);
}

/// What dropping a file, a folder, an application and a link onto the bar makes.
QList<ButtonSpec> droppedButtons()
{
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("app.desktop")));
    file.open(QIODevice::WriteOnly);
    file.write("[Desktop Entry]\nType=Application\nName=App\nExec=true\n");
    file.close();
    const BarConfig none;
    return {DragEditing::specForFile(dir.filePath(QStringLiteral("app.desktop")), none),
            DragEditing::specForFile(dir.path(), none),
            DragEditing::specForFile(dir.filePath(QStringLiteral("missing.txt")), none),
            DragEditing::specForLink(QUrl(QStringLiteral("https://example.org")), none)};
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
    addSymbolRows(QStringLiteral("default bar"), Config::defaults().buttons);
    for (const AppPreset& preset : Presets::all())
        addSymbolRows(QStringLiteral("preset ") + preset.name, preset.buttons);
    for (const QString& name : SymbolNames::names())
        QTest::addRow("palette: %s", qPrintable(name)) << name << true;
    for (const QString& name : SymbolNames::chrome())
        QTest::addRow("chip: %s", qPrintable(name)) << name << true;
    addSymbolRows(QStringLiteral("folder listing"), listingRows());
    addSymbolRows(QStringLiteral("drop"), droppedButtons());
    // What a user types and no theme knows stays text: emoji, words.
    QTest::newRow("typed emoji") << QStringLiteral("👋") << false;
    QTest::newRow("typed word") << QStringLiteral("Hello") << false;
    QTest::newRow("typed unknown name") << QStringLiteral("no.such.symbol") << false;
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
    QVERIFY(frames.value(QStringLiteral("Files")).left() >= 12 + 14 + 8); // after the margin and the grip
    QVERIFY(frames.value(QStringLiteral("Files")).right() < frames.value(QStringLiteral("Apps")).left());
    QVERIFY(frames.value(QStringLiteral("Help")).right() <= view.width() - 12);
    const int plain = view.width();

    view.rebuild(Config::defaults(), {shownButton(QStringLiteral("Clear"), QStringLiteral("keys"))}, true);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(chipsOf(view).size(), 4);
    QVERIFY(view.width() > plain);
    // The separator sits between the last shared chip and the first of the application's.
    const QRectF help = drag.barFrames().value(QStringLiteral("Help"));
    const QRectF clear = drag.barFrames().value(QStringLiteral("Clear"));
    QCOMPARE(clear.left() - help.right(), 8.0 + 1 + 8);

    // Two chips of one title publish one frame: the later one.
    BarConfig twins;
    twins.buttons = {shownButton(QStringLiteral("Twin"), QStringLiteral("open")),
                     shownButton(QStringLiteral("Twin"), QStringLiteral("url"))};
    view.rebuild(twins, {}, true);
    QCOMPARE(drag.barFrames().size(), 1);
    QVERIFY(drag.barFrames().value(QStringLiteral("Twin")).left() > 40);

    // Held to less than its width, the bar keeps what fits and ends in the overflow chip with the rest,
    // the front application's chips last.
    const QList<ButtonSpec> context = {shownButton(QStringLiteral("Clear"), QStringLiteral("keys"))};
    view.rebuild(Config::defaults(), context, true, plain);
    QVERIFY(view.width() <= plain);
    QVERIFY(!view.overflowed().isEmpty());
    QCOMPARE(view.overflowed().last().title, QStringLiteral("Clear"));
    QCOMPARE(drag.barFrames().size() + view.overflowed().size(), 4);
    QVERIFY(view.overflowFrame().right() <= view.width() - 12);
    QVERIFY(view.overflowFrame().left() > drag.barFrames().value(QStringLiteral("Files")).right());
    view.rebuild(Config::defaults(), context, true, 0);
    QCOMPARE(view.overflowed().size(), 4);
    QVERIFY(drag.barFrames().isEmpty());
}

void TestViews::stacksAndFoldersShowTheirDirection()
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    BarConfig config;
    config.buttons = {shownButton(QStringLiteral("Stack"), QStringLiteral("group")),
                      shownButton(QStringLiteral("Folder"), QStringLiteral("folder")),
                      shownButton(QStringLiteral("Link"), QStringLiteral("url"))};
    view.rebuild(config, {}, true);
    const int up = drag.barFrames().value(QStringLiteral("Stack")).width();
    view.rebuild(config, {}, false);
    QCOMPARE(int(drag.barFrames().value(QStringLiteral("Stack")).width()), up);
    // Only stacks and folders carry a chevron, so a link is narrower than a stack of the same title length.
    ButtonSpec same = shownButton(QStringLiteral("Stack"), QStringLiteral("url"));
    config.buttons = {same};
    view.rebuild(config, {}, true);
    QVERIFY(drag.barFrames().value(QStringLiteral("Stack")).width() < up);
}

void TestViews::shortPressTapsLongPressDrags()
{
    DragState drag;
    BarHandlers handlers;
    QStringList calls;
    handlers.tap = [&](const ButtonSpec& spec, const QRectF& frame) {
        calls << QStringLiteral("tap %1 %2").arg(spec.title).arg(frame.left());
    };
    handlers.dragMove = [&](const ButtonSpec& spec, const QPointF&) {
        calls << QStringLiteral("move ") + spec.title;
    };
    handlers.dragEnd = [&](const ButtonSpec& spec, const QPointF&) {
        calls << QStringLiteral("end ") + spec.title;
    };
    BarView view(drag, handlers);
    view.rebuild(Config::defaults(), {}, true);
    view.show();
    ChipLabel* files = chipsOf(view).first();

    QTest::mousePress(files, Qt::LeftButton, {}, QPoint(10, 10));
    QTest::mouseMove(files, QPoint(15, 10)); // 5 pixels: still a tap
    QTest::mouseRelease(files, Qt::LeftButton, {}, QPoint(15, 10));
    QCOMPARE(calls,
             QStringList{
                 QStringLiteral("tap Files %1").arg(drag.barFrames().value(QStringLiteral("Files")).left())});

    calls.clear();
    QTest::mousePress(files, Qt::LeftButton, {}, QPoint(10, 10));
    QTest::mouseMove(files, QPoint(16, 10));
    QTest::mouseMove(files, QPoint(30, 12));
    QTest::mouseRelease(files, Qt::LeftButton, {}, QPoint(30, 12));
    QCOMPARE(calls, (QStringList{QStringLiteral("move Files"), QStringLiteral("move Files"),
                                 QStringLiteral("end Files")}));
}

void TestViews::emptyStackSaysSo()
{
    BarHandlers handlers;
    FlyoutView empty({}, handlers);
    const QList<QLabel*> labels = empty.findChildren<QLabel*>();
    QCOMPARE(labels.size(), 1);
    QCOMPARE(labels.first()->text(), QStringLiteral("Empty — drag buttons onto this stack"));

    FlyoutView full(Config::defaults().buttons.first().children.value(), handlers);
    full.adjustSize();
    const QList<ChipLabel*> rows = chipsOf(full);
    QCOMPARE(rows.size(), 4);
    for (const ChipLabel* row : rows)
        QCOMPARE(row->width(), rows.first()->width()); // every row as wide as the widest
    full.grab().save(QStringLiteral("/tmp/flyoutview.png"));
}

namespace {

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

void TestViews::untouchedButtonComesBackUnchanged_data()
{
    QTest::addColumn<ButtonSpec>("initial");

    ButtonSpec stack = shownButton(QStringLiteral("Work"), QStringLiteral("group"));
    stack.children = QList<ButtonSpec>{
        shownButton(QStringLiteral("Mail"), QStringLiteral("url"),
                    QStringLiteral("https://mail.example.com")),
        shownButton(QStringLiteral("Notes"), QStringLiteral("open"), QStringLiteral("~/notes.txt"))};
    stack.color = QStringLiteral("purple");
    QTest::newRow("stack with children") << stack;

    ButtonSpec unknown =
        shownButton(QStringLiteral("Odd"), QStringLiteral("teleport"), QStringLiteral("mars"));
    unknown.color = QStringLiteral("magenta");
    QTest::newRow("unknown kind and colour") << unknown;

    ButtonSpec script = shownButton(QStringLiteral("Say"), QStringLiteral("applescript"),
                                    QStringLiteral("say \"hi\"\n  beep 2\n"));
    QTest::newRow("applescript keeps its text exactly") << script;

    ButtonSpec paste =
        shownButton(QStringLiteral("Sign"), QStringLiteral("paste"), QStringLiteral("  Regards,\n  Me\n"));
    paste.locked = false;
    paste.iconPath = QStringLiteral("~/icons/sign.png");
    QTest::newRow("paste with spaces, explicit unlocked, icon") << paste;

    ButtonSpec keys = shownButton(QStringLiteral("Close"), QStringLiteral("keys"), QStringLiteral("alt+f4"));
    keys.locked = true;
    QTest::newRow("locked keys") << keys;

    ButtonSpec desktop = shownButton(QStringLiteral("New"), QStringLiteral("newFolder"));
    QTest::newRow("no argument") << desktop;
}

void TestViews::untouchedButtonComesBackUnchanged()
{
    QFETCH(ButtonSpec, initial);
    const auto view = editor(initial);
    QVERIFY(view->canSave());
    QCOMPARE(view->edited(), initial);
    QCOMPARE(view->windowTitle(), QStringLiteral("Edit Button"));
}

void TestViews::kindsOnlyOfferedWhenTheButtonHasThem()
{
    const auto fresh = editor(shownButton(QStringLiteral("B"), QStringLiteral("open")), true);
    auto* kinds = child<QComboBox>(*fresh, QStringLiteral("kind"));
    QCOMPARE(kinds->count(), 10);
    QCOMPARE(kinds->findData(QStringLiteral("applescript")), -1);
    QCOMPARE(fresh->windowTitle(), QStringLiteral("New Button"));

    const auto script =
        editor(shownButton(QStringLiteral("S"), QStringLiteral("applescript"), QStringLiteral("beep")));
    kinds = child<QComboBox>(*script, QStringLiteral("kind"));
    QCOMPARE(kinds->currentText(), QStringLiteral("AppleScript (not available on Linux)"));
    auto* text = child<QPlainTextEdit>(*script, QStringLiteral("argument-other"));
    QVERIFY(text);
    QCOMPARE(text->toPlainText(), QStringLiteral("beep"));
    text->setPlainText(QStringLiteral("beep 3"));
    QCOMPARE(script->edited().action, QStringLiteral("applescript"));
    QCOMPARE(script->edited().argument, QStringLiteral("beep 3"));

    const auto odd = editor(shownButton(QStringLiteral("O"), QStringLiteral("teleport")));
    QCOMPARE(child<QComboBox>(*odd, QStringLiteral("kind"))->currentText(), QStringLiteral("teleport"));
}

void TestViews::applicationsAreStoredById()
{
    const auto view = editor(
        shownButton(QStringLiteral("Edit"), QStringLiteral("app"), QStringLiteral("org.gnome.TextEditor")));
    auto* combo = child<QComboBox>(*view, QStringLiteral("argument-app"));
    QCOMPARE(combo->currentText(), QStringLiteral("Text Editor"));
    QCOMPARE(view->edited().argument, QStringLiteral("org.gnome.TextEditor"));

    combo->setCurrentIndex(combo->findText(QStringLiteral("Calculator")));
    QCOMPARE(view->edited().argument, QStringLiteral("org.gnome.Calculator"));

    combo->setEditText(QStringLiteral("firefox-esr"));
    QCOMPARE(view->edited().argument, QStringLiteral("firefox-esr"));
}

void TestViews::saveNeedsTitle()
{
    const auto view =
        editor(shownButton(QStringLiteral("Docs"), QStringLiteral("open"), QStringLiteral("~/Documents")));
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

void TestViews::saveNeedsParsableKeys()
{
    const auto view = editor(shownButton(QStringLiteral("Keys"), QStringLiteral("open")));
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

void TestViews::keyFieldRecordsPressedCombination()
{
    const auto view =
        editor(shownButton(QStringLiteral("K"), QStringLiteral("keys"), QStringLiteral("cmd+c")));
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

void TestViews::swatchesSetAndClearColour()
{
    ButtonSpec spec =
        shownButton(QStringLiteral("Paint"), QStringLiteral("url"), QStringLiteral("https://example.com"));
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

void TestViews::clearedArgumentIsAbsent()
{
    const auto view = editor(
        shownButton(QStringLiteral("Web"), QStringLiteral("url"), QStringLiteral("https://example.com")));
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

void TestViews::lockedCheckBox()
{
    ButtonSpec spec = shownButton(QStringLiteral("Pin"), QStringLiteral("open"), QStringLiteral("~"));
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

void TestViews::symbolPaletteFillsSymbol()
{
    const auto view = editor(shownButton(QStringLiteral("Sym"), QStringLiteral("open"), QStringLiteral("~")));
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

void TestViews::previewFollowsEdits()
{
    const auto view = editor(
        shownButton(QStringLiteral("Old"), QStringLiteral("url"), QStringLiteral("https://a.example")));
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

void TestViews::newStackHasFixedKindAndNoArgument()
{
    ButtonSpec stack =
        shownButton(QStringLiteral("Stack"), QStringLiteral("group"), QStringLiteral("leftover"));
    const auto view = editor(stack, true);
    QCOMPARE(view->windowTitle(), QStringLiteral("New Stack"));
    auto* kinds = child<QComboBox>(*view, QStringLiteral("kind"));
    QVERIFY(!kinds->isEnabled());
    QCOMPARE(kinds->currentData().toString(), QStringLiteral("group"));
    QCOMPARE(view->edited().action, QStringLiteral("group"));
    QCOMPARE(view->edited().argument, std::nullopt);
    QVERIFY(view->canSave());
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
    const ButtonSpec docs =
        shownButton(QStringLiteral("Docs"), QStringLiteral("open"), QStringLiteral("~/Documents"));
    launcher.open(docs, QStringLiteral("Work"), false);
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
    const QString fifo = dir.filePath(QStringLiteral("x.desktop"));
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0644), 0);
    for (const QString& path : {dir.path(), dir.filePath(QStringLiteral("missing.txt")),
                                QStringLiteral("/bin/sh"), QStringLiteral(""), fifo}) {
        const QImage image = IconCache::image(path);
        QVERIFY2(!image.isNull(), qPrintable(path));
        QVERIFY2(image.width() <= 16 && image.height() <= 16, qPrintable(path));
    }
}

void TestViews::tildeAndFullPathShareOneEntry()
{
    const QImage viaTilde = IconCache::image(QStringLiteral("~"));
    const QImage full = IconCache::image(QDir::homePath());
    // The same cached image, not a second lookup that happens to look alike.
    QCOMPARE(viaTilde.cacheKey(), full.cacheKey());
    QVERIFY(IconCache::image(QStringLiteral("/")).cacheKey() != full.cacheKey() ||
            IconCache::image(QStringLiteral("/")) == full);
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

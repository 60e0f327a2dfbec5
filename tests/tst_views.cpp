// The program's widgets drawn off screen: the bar and its flyouts, the icons on them, and the button editor
// with what it hands back, when it lets the user save, and how it closes.

#include "TestSupport.h"
#include "actions/IconCache.h"
#include "app/BarPlacement.h"
#include "app/ConfigSession.h"
#include "app/ContextTracker.h"
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
    void saveHandsOverEditedButtonOnce();
    void escapeClosesWithoutSaving();

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
    spec.symbol = u"folder"_s;
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
    QDir(dir.path()).mkpath(u"top/inner/empty"_s);
    for (int i = 0; i < 30; ++i)
        QFile(dir.filePath(u"top/inner/file%1.txt"_s.arg(i))).open(QIODevice::WriteOnly);
    const QString top = dir.filePath(u"top"_s);
    return FolderListing::items(top + u"/inner"_s, top) +
           FolderListing::items(top + u"/inner/empty"_s, std::nullopt);
}

/// What dropping a file, a folder, an application and a link onto the bar makes.
QList<ButtonSpec> droppedButtons()
{
    QTemporaryDir dir;
    QFile file(dir.filePath(u"app.desktop"_s));
    file.open(QIODevice::WriteOnly);
    file.write("[Desktop Entry]\nType=Application\nName=App\nExec=true\n");
    file.close();
    const BarConfig none;
    return {DragEditing::specForFile(dir.filePath(u"app.desktop"_s), none),
            DragEditing::specForFile(dir.path(), none),
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

    view.rebuild(Config::defaults(), {shownButton(u"Clear"_s, u"keys"_s)}, true);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(chipsOf(view).size(), 4);
    QVERIFY(view.width() > plain);
    // The separator sits between the last shared chip and the first of the application's.
    const QRectF help = drag.barFrames().value(u"Help"_s);
    const QRectF clear = drag.barFrames().value(u"Clear"_s);
    QCOMPARE(clear.left() - help.right(), 8.0 + 1 + 8);

    // Two chips of one title publish one frame: the later one.
    BarConfig twins;
    twins.buttons = {shownButton(u"Twin"_s, u"open"_s), shownButton(u"Twin"_s, u"url"_s)};
    view.rebuild(twins, {}, true);
    QCOMPARE(drag.barFrames().size(), 1);
    QVERIFY(drag.barFrames().value(u"Twin"_s).left() > 40);

    // Held to less than its width, the bar keeps what fits and ends in the overflow chip with the rest,
    // the front application's chips last.
    const QList<ButtonSpec> context = {shownButton(u"Clear"_s, u"keys"_s)};
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
}

void TestViews::stacksAndFoldersShowTheirDirection()
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    BarConfig config;
    config.buttons = {shownButton(u"Stack"_s, u"group"_s), shownButton(u"Folder"_s, u"folder"_s),
                      shownButton(u"Link"_s, u"url"_s)};
    view.rebuild(config, {}, true);
    const int up = drag.barFrames().value(u"Stack"_s).width();
    view.rebuild(config, {}, false);
    QCOMPARE(int(drag.barFrames().value(u"Stack"_s).width()), up);
    // Only stacks and folders carry a chevron, so a link is narrower than a stack of the same title length.
    ButtonSpec same = shownButton(u"Stack"_s, u"url"_s);
    config.buttons = {same};
    view.rebuild(config, {}, true);
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
    full.grab().save(u"/tmp/flyoutview.png"_s);
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

/// The one-line field of an argument page, whatever wraps it.
QLineEdit* argumentLine(QWidget& view, const QString& kind)
{
    QWidget* page = child<QWidget>(view, u"argument-"_s + kind);
    if (auto* line = qobject_cast<QLineEdit*>(page))
        return line;
    if (auto* combo = page->findChild<QComboBox*>())
        return combo->lineEdit();
    return page->findChild<QLineEdit*>();
}

void chooseKind(QWidget& view, const QString& kind)
{
    auto* box = child<QComboBox>(view, u"kind"_s);
    const int index = box->findData(kind);
    QVERIFY(index >= 0);
    box->setCurrentIndex(index);
}

} // namespace

void TestViews::untouchedButtonComesBackUnchanged_data()
{
    QTest::addColumn<ButtonSpec>("initial");

    ButtonSpec stack = shownButton(u"Work"_s, u"group"_s);
    stack.children = QList<ButtonSpec>{shownButton(u"Mail"_s, u"url"_s, u"https://mail.example.com"_s),
                                       shownButton(u"Notes"_s, u"open"_s, u"~/notes.txt"_s)};
    stack.color = u"purple"_s;
    QTest::newRow("stack with children") << stack;

    ButtonSpec unknown = shownButton(u"Odd"_s, u"teleport"_s, u"mars"_s);
    unknown.color = u"magenta"_s;
    QTest::newRow("unknown kind and colour") << unknown;

    ButtonSpec script = shownButton(u"Say"_s, u"applescript"_s, u"say \"hi\"\n  beep 2\n"_s);
    QTest::newRow("applescript keeps its text exactly") << script;

    ButtonSpec paste = shownButton(u"Sign"_s, u"paste"_s, u"  Regards,\n  Me\n"_s);
    paste.locked = false;
    paste.iconPath = u"~/icons/sign.png"_s;
    QTest::newRow("paste with spaces, explicit unlocked, icon") << paste;

    ButtonSpec keys = shownButton(u"Close"_s, u"keys"_s, u"alt+f4"_s);
    keys.locked = true;
    QTest::newRow("locked keys") << keys;

    ButtonSpec desktop = shownButton(u"New"_s, u"newFolder"_s);
    QTest::newRow("no argument") << desktop;
}

void TestViews::untouchedButtonComesBackUnchanged()
{
    QFETCH(ButtonSpec, initial);
    const auto view = editor(initial);
    QVERIFY(view->canSave());
    QCOMPARE(view->edited(), initial);
    QCOMPARE(view->windowTitle(), u"Edit Button"_s);
}

void TestViews::kindsOnlyOfferedWhenTheButtonHasThem()
{
    const auto fresh = editor(shownButton(u"B"_s, u"open"_s), true);
    auto* kinds = child<QComboBox>(*fresh, u"kind"_s);
    QCOMPARE(kinds->count(), 10);
    QCOMPARE(kinds->findData(u"applescript"_s), -1);
    QCOMPARE(fresh->windowTitle(), u"New Button"_s);

    const auto script = editor(shownButton(u"S"_s, u"applescript"_s, u"beep"_s));
    kinds = child<QComboBox>(*script, u"kind"_s);
    QCOMPARE(kinds->currentText(), u"AppleScript (not available on Linux)"_s);
    auto* text = child<QPlainTextEdit>(*script, u"argument-other"_s);
    QVERIFY(text);
    QCOMPARE(text->toPlainText(), u"beep"_s);
    text->setPlainText(u"beep 3"_s);
    QCOMPARE(script->edited().action, u"applescript"_s);
    QCOMPARE(script->edited().argument, u"beep 3"_s);

    const auto odd = editor(shownButton(u"O"_s, u"teleport"_s));
    QCOMPARE(child<QComboBox>(*odd, u"kind"_s)->currentText(), u"teleport"_s);
}

void TestViews::applicationsAreStoredById()
{
    const auto view = editor(shownButton(u"Edit"_s, u"app"_s, u"org.gnome.TextEditor"_s));
    auto* combo = child<QComboBox>(*view, u"argument-app"_s);
    QCOMPARE(combo->currentText(), u"Text Editor"_s);
    QCOMPARE(view->edited().argument, u"org.gnome.TextEditor"_s);

    combo->setCurrentIndex(combo->findText(u"Calculator"_s));
    QCOMPARE(view->edited().argument, u"org.gnome.Calculator"_s);

    combo->setEditText(u"firefox-esr"_s);
    QCOMPARE(view->edited().argument, u"firefox-esr"_s);
}

void TestViews::saveNeedsTitle()
{
    const auto view = editor(shownButton(u"Docs"_s, u"open"_s, u"~/Documents"_s));
    auto* title = child<QLineEdit>(*view, u"title"_s);
    auto* save = child<QPushButton>(*view, u"save"_s);
    QVERIFY(save->isEnabled());

    title->setText(u"   "_s);
    QVERIFY(!view->canSave());
    QVERIFY(!save->isEnabled());

    title->setText(u"  Papers "_s);
    QVERIFY(save->isEnabled());
    QCOMPARE(view->edited().title, u"Papers"_s);
}

void TestViews::saveNeedsParsableKeys()
{
    const auto view = editor(shownButton(u"Keys"_s, u"open"_s));
    auto* save = child<QPushButton>(*view, u"save"_s);
    chooseKind(*view, u"keys"_s);
    auto* field = child<KeyField>(*view, u"keyField"_s);
    auto* status = child<QLabel>(*view, u"keyStatus"_s);
    QVERIFY2(!save->isEnabled(), "an empty key combination cannot be saved");

    field->setText(u"ctrl+banana"_s);
    QVERIFY(!view->canSave());
    QVERIFY(!save->isEnabled());
    QCOMPARE(status->text(), u"Not a key combination"_s);

    field->setText(u"ctrl+shift+t"_s);
    QVERIFY(save->isEnabled());
    QCOMPARE(status->text(), u"✓ valid"_s);
    QCOMPARE(view->edited().argument, u"ctrl+shift+t"_s);

    // Only the keys kind is checked: the same text as an address is fine.
    field->setText(u"ctrl+banana"_s);
    chooseKind(*view, u"url"_s);
    QVERIFY(save->isEnabled());
}

void TestViews::keyFieldRecordsPressedCombination()
{
    const auto view = editor(shownButton(u"K"_s, u"keys"_s, u"cmd+c"_s));
    auto* field = child<KeyField>(*view, u"keyField"_s);

    QTest::keyClick(field, Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(field->text(), u"ctrl+shift+t"_s);
    QCOMPARE(view->edited().argument, u"ctrl+shift+t"_s);

    QTest::keyClick(field, Qt::Key_Left, Qt::MetaModifier);
    QCOMPARE(field->text(), u"super+left"_s);

    QTest::keyClick(field, Qt::Key_F4, Qt::AltModifier);
    QCOMPARE(field->text(), u"alt+f4"_s);

    QTest::keyClick(field, Qt::Key_Delete, Qt::ControlModifier | Qt::AltModifier);
    QCOMPARE(field->text(), u"ctrl+alt+forwarddelete"_s);

    // With Shift, Qt names the character typed; the key under it is what gets pressed back.
    QTest::keyClick(field, Qt::Key_Exclam, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(field->text(), u"ctrl+shift+1"_s);

    QTest::keyClick(field, Qt::Key_F5);
    QCOMPARE(field->text(), u"f5"_s);

    // Plain keys still type and edit, so a combination can be written out.
    field->clear();
    QTest::keyClicks(field, u"cmd+v"_s);
    QCOMPARE(field->text(), u"cmd+v"_s);
    QTest::keyClick(field, Qt::Key_Backspace);
    QCOMPARE(field->text(), u"cmd+"_s);
    QVERIFY(!view->canSave());

    // A modifier alone is not a combination yet.
    QTest::keyClick(field, Qt::Key_Control, Qt::ControlModifier);
    QCOMPARE(field->text(), u"cmd+"_s);
}

void TestViews::swatchesSetAndClearColour()
{
    ButtonSpec spec = shownButton(u"Paint"_s, u"url"_s, u"https://example.com"_s);
    spec.color = u"magenta"_s;
    const auto view = editor(spec);
    QCOMPARE(view->edited().color, u"magenta"_s);

    QTest::mouseClick(child<QAbstractButton>(*view, u"swatch-red"_s), Qt::LeftButton);
    QCOMPARE(view->edited().color, u"red"_s);
    QTest::mouseClick(child<QAbstractButton>(*view, u"swatch-cyan"_s), Qt::LeftButton);
    QCOMPARE(view->edited().color, u"cyan"_s);
    QVERIFY(!child<QAbstractButton>(*view, u"swatch-red"_s)->isChecked());

    QTest::mouseClick(child<QAbstractButton>(*view, u"swatch-default"_s), Qt::LeftButton);
    QCOMPARE(view->edited().color, std::nullopt);
    QVERIFY(child<QAbstractButton>(*view, u"swatch-default"_s)->isChecked());
}

void TestViews::clearedArgumentIsAbsent()
{
    const auto view = editor(shownButton(u"Web"_s, u"url"_s, u"https://example.com"_s));
    QLineEdit* address = argumentLine(*view, u"url"_s);
    QCOMPARE(address->text(), u"https://example.com"_s);
    address->setText(u"  "_s);
    QCOMPARE(view->edited().argument, std::nullopt);

    address->setText(u" https://example.org "_s);
    QCOMPARE(view->edited().argument, u"https://example.org"_s);

    // Kinds that take nothing give nothing, whatever was typed for another kind.
    chooseKind(*view, u"newFolder"_s);
    QCOMPARE(view->edited().argument, std::nullopt);
    chooseKind(*view, u"url"_s);
    QCOMPARE(view->edited().argument, u"https://example.org"_s);

    chooseKind(*view, u"shell"_s);
    QCOMPARE(view->edited().argument, std::nullopt);
    auto* command = qobject_cast<QPlainTextEdit*>(child<QWidget>(*view, u"argument-shell"_s));
    QVERIFY(command);
    command->setPlainText(u"notify-send hi"_s);
    QCOMPARE(view->edited().argument, u"notify-send hi"_s);
    command->clear();
    QCOMPARE(view->edited().argument, std::nullopt);

    auto* icon = child<QLineEdit>(*view, u"iconPath"_s);
    icon->setText(u"/tmp/icon.png"_s);
    QCOMPARE(view->edited().iconPath, u"/tmp/icon.png"_s);
    icon->clear();
    QCOMPARE(view->edited().iconPath, std::nullopt);
}

void TestViews::lockedCheckBox()
{
    ButtonSpec spec = shownButton(u"Pin"_s, u"open"_s, u"~"_s);
    spec.locked = false;
    const auto view = editor(spec);
    auto* locked = child<QAbstractButton>(*view, u"locked"_s);
    QVERIFY(!locked->isChecked());
    locked->setChecked(true);
    QCOMPARE(view->edited().locked, true);
    locked->setChecked(false);
    QCOMPARE(view->edited().locked, false);

    ButtonSpec lockedSpec = spec;
    lockedSpec.locked = true;
    const auto other = editor(lockedSpec);
    child<QAbstractButton>(*other, u"locked"_s)->setChecked(false);
    QCOMPARE(other->edited().locked, std::nullopt);

    spec.locked.reset();
    const auto plain = editor(spec);
    QCOMPARE(plain->edited().locked, std::nullopt);
}

void TestViews::symbolPaletteFillsSymbol()
{
    const auto view = editor(shownButton(u"Sym"_s, u"open"_s, u"~"_s));
    auto* terminal = view->findChild<QToolButton*>(u"symbol-terminal"_s);
    if (!terminal)
        QSKIP("the icon theme has no terminal icon");
    // Each icon is offered once, even where several names share it.
    QVERIFY(view->findChild<QToolButton*>(u"symbol-doc.text"_s) == nullptr ||
            view->findChild<QToolButton*>(u"symbol-doc"_s) == nullptr);
    QTest::mouseClick(terminal, Qt::LeftButton);
    QCOMPARE(child<QLineEdit>(*view, u"symbol"_s)->text(), u"terminal"_s);
    QCOMPARE(view->edited().symbol, u"terminal"_s);
    QVERIFY(terminal->isChecked());

    child<QLineEdit>(*view, u"symbol"_s)->setText(u"🚀"_s);
    QCOMPARE(view->edited().symbol, u"🚀"_s);
    QVERIFY(!terminal->isChecked());
}

void TestViews::previewFollowsEdits()
{
    const auto view = editor(shownButton(u"Old"_s, u"url"_s, u"https://a.example"_s));
    const auto preview = [&] { return view->findChild<ChipLabel*>(); };
    QVERIFY(preview());
    QCOMPARE(preview()->spec().title, u"Old"_s);

    child<QLineEdit>(*view, u"title"_s)->setText(u"New"_s);
    QCOMPARE(view->findChildren<ChipLabel*>().size(), 1);
    QCOMPARE(preview()->spec().title, u"New"_s);

    QTest::mouseClick(child<QAbstractButton>(*view, u"swatch-orange"_s), Qt::LeftButton);
    QCOMPARE(preview()->spec().tint(), ChipColor::Orange);
    QCOMPARE(preview()->spec(), view->edited());
}

void TestViews::newStackHasFixedKindAndNoArgument()
{
    ButtonSpec stack = shownButton(u"Stack"_s, u"group"_s, u"leftover"_s);
    const auto view = editor(stack, true);
    QCOMPARE(view->windowTitle(), u"New Stack"_s);
    auto* kinds = child<QComboBox>(*view, u"kind"_s);
    QVERIFY(!kinds->isEnabled());
    QCOMPARE(kinds->currentData().toString(), u"group"_s);
    QCOMPARE(view->edited().action, u"group"_s);
    QCOMPARE(view->edited().argument, std::nullopt);
    QVERIFY(view->canSave());
}

void TestViews::saveHandsOverEditedButtonOnce()
{
    auto* view = new EditView(shownButton(u"Docs"_s, u"open"_s, u"~/Documents"_s), false, services());
    QPointer<EditView> alive(view);
    QList<ButtonSpec> saved;
    QObject::connect(view, &EditView::saved, [&](const ButtonSpec& spec) { saved << spec; });
    view->show();
    child<QLineEdit>(*view, u"title"_s)->setText(u"Papers"_s);
    const ButtonSpec expected = view->edited();

    auto* save = child<QPushButton>(*view, u"save"_s);
    QTest::mouseClick(save, Qt::LeftButton);
    QCOMPARE(saved.size(), 1);
    QCOMPARE(saved.first(), expected);
    QCOMPARE(saved.first().title, u"Papers"_s);
    QTRY_VERIFY(alive.isNull());
}

void TestViews::escapeClosesWithoutSaving()
{
    auto* view = new EditView(shownButton(u"Docs"_s, u"open"_s, u"~/Documents"_s), false, services());
    QPointer<EditView> alive(view);
    int calls = 0;
    QObject::connect(view, &EditView::saved, [&] { ++calls; });
    view->show();
    auto* title = child<QLineEdit>(*view, u"title"_s);
    title->setText(u"Changed"_s);
    QTest::keyClick(title, Qt::Key_Escape);
    QTRY_VERIFY(alive.isNull());
    QCOMPARE(calls, 0);

    // Return in a one-line field saves, as a dialog's default button would.
    auto* second = new EditView(shownButton(u"Docs"_s, u"open"_s), false, services());
    QPointer<EditView> secondAlive(second);
    QObject::connect(second, &EditView::saved, [&] { ++calls; });
    second->show();
    QTest::keyClick(child<QLineEdit>(*second, u"title"_s), Qt::Key_Return);
    QCOMPARE(calls, 1);
    QTRY_VERIFY(secondAlive.isNull());

    // But Return on a focused Cancel button cancels.
    auto* third = new EditView(shownButton(u"Docs"_s, u"open"_s), false, services());
    QPointer<EditView> thirdAlive(third);
    QObject::connect(third, &EditView::saved, [&] { ++calls; });
    third->show();
    QTest::keyClick(child<QPushButton>(*third, u"cancel"_s), Qt::Key_Return);
    QTRY_VERIFY(thirdAlive.isNull());
    QCOMPARE(calls, 1);
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
}

void TestViews::tildeAndFullPathShareOneEntry()
{
    const QImage viaTilde = IconCache::image(u"~"_s);
    const QImage full = IconCache::image(QDir::homePath());
    // The same cached image, not a second lookup that happens to look alike.
    QCOMPARE(viaTilde.cacheKey(), full.cacheKey());
    QVERIFY(IconCache::image(u"/"_s).cacheKey() != full.cacheKey() || IconCache::image(u"/"_s) == full);
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
    session.load();
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

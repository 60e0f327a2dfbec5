#include "TestSupport.h"
#include "actions/Actions.h"
#include "actions/Paths.h"
#include "actions/ShortcutList.h"
#include "bar/FolderListing.h"
#include "config/BarConfig.h"
#include "dragdrop/DragEditing.h"
#include "platform/fake/FakePlatform.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <sys/stat.h>

class TestActions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatAChipAsksOfTheDesktop_data();
    void whatAChipAsksOfTheDesktop();
    void openExpandsTildeAndRefusesWhatIsNoFile();
    void openingNeverRunsAProgram_data();
    void openingNeverRunsAProgram();
    void runStartsOnlyWhatWasAskedAbout();
    void programsStartDetached();
    void newFolderNeverOverwrites();
    void pressRefusesBadTextAndMissingTrust();
    void pasteRestoresThePlainTextLater();
    void pasteRestoresOnlyWhileItsTextIsThere_data();
    void pasteRestoresOnlyWhileItsTextIsThere();
    void shortcutNamesAreSortedExecutables();
};

namespace {

QStringList run(const ButtonSpec& spec, FakePlatform& platform)
{
    platform.calls.clear();
    Actions(platform, &platform.question()).run(spec);
    return platform.calls;
}

QStringList run(const QString& action, std::optional<QString> argument, FakePlatform* platform = nullptr)
{
    FakePlatform own;
    return run(button(u"t"_s, action, std::move(argument)), platform ? *platform : own);
}

} // namespace

void TestActions::whatAChipAsksOfTheDesktop_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QVariant>("argument"); // invalid: absent
    QTest::addColumn<QStringList>("calls");
    const QStringList beep{u"beep"_s};
    const QVariant none;
    const auto row = [](const char* name, const char* kind, const QVariant& argument,
                        const QStringList& calls) {
        QTest::newRow(name) << QString::fromUtf8(kind) << argument << calls;
    };
    // Kinds are exact; unknown ones beep.
    for (const char* kind : {"Open", "group", "", "URL", "mystery", " open"})
        row(qPrintable(u"kind \"%1\""_s.arg(QString::fromUtf8(kind))), kind, u"x"_s, beep);
    row("stack without argument", "group", none, beep);
    row("keys", "keys", u"cmd+v"_s, {u"post key=9 flags=1048576"_s});
    row("app", "app", u"Firefox"_s, {u"launch Firefox"_s});
    row("applescript", "applescript", u"beep"_s, {});
    // A missing argument does nothing, quietly.
    for (const char* kind :
         {"open", "app", "shortcut", "url", "folder", "keys", "paste", "shell", "applescript"})
        row(qPrintable(u"%1 without argument"_s.arg(QString::fromUtf8(kind))), kind, none, {});
    // Addresses are trimmed of blanks and given a scheme when they have none.
    const auto url = [&](const char* name, const char* argument, const char* opened) {
        row(name, "url", QString::fromUtf8(argument),
            *opened ? QStringList{u"open "_s + QString::fromUtf8(opened)} : QStringList());
    };
    url("bare host with spaces", " \texample.org/docs\t ", "https://example.org/docs");
    url("host and port", "localhost:8080", "localhost:8080");
    url("mail", "mailto:me@example.org", "mailto:me@example.org");
    url("scheme kept", "http://example.org", "http://example.org");
    url("only blanks", " \t ", "");
    url("line breaks are not trimmed", "\nexample.org", "");
    url("space inside", "example.org/a b", "");
}

void TestActions::whatAChipAsksOfTheDesktop()
{
    QFETCH(QString, kind);
    QFETCH(QVariant, argument);
    QFETCH(QStringList, calls);
    StderrCapture log;
    QCOMPARE(run(kind, argument.isValid() ? std::optional(argument.toString()) : std::nullopt), calls);
    const QString said = kind == QLatin1String("applescript") && argument.isValid()
                             ? u"AppleScript error: AppleScript is not available on this system\n"_s
                             : QString();
    QCOMPARE(log.text(), said);
}

void TestActions::openExpandsTildeAndRefusesWhatIsNoFile()
{
    const QString home = QDir::homePath();
    QCOMPARE(run(u"folder"_s, u"~"_s), QStringList{u"open file://"_s + home});
    QTemporaryDir dir;
    const QString odd = dir.filePath(u"a b#c.txt"_s);
    QVERIFY(writeAll(odd, "text"));
    QCOMPARE(run(u"open"_s, odd), QStringList{u"open "_s + QUrl::fromLocalFile(odd).toString()});
    QCOMPARE(Paths::expandTilde(u"~root/x"_s), u"/root/x"_s);
    QCOMPARE(Paths::expandTilde(u"~no-such-user-here/x"_s), u"~no-such-user-here/x"_s);
    QCOMPARE(Paths::expandTilde(u"a/~/b"_s), u"a/~/b"_s);
    // An application's path may begin with "~", as a dropped desktop entry's does.
    QCOMPARE(run(u"app"_s, u"~/Apps/x.desktop"_s), QStringList{u"launch "_s + home + u"/Apps/x.desktop"_s});

    // A device is no document; a missing file is not worth a sound.
    QCOMPARE(run(u"open"_s, u"/dev/null"_s), QStringList{u"beep"_s});
    QCOMPARE(run(u"open"_s, dir.filePath(u"missing"_s)), QStringList());
}

void TestActions::openingNeverRunsAProgram_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("mode");      // 0: a FIFO
    QTest::addColumn<QString>("onRun"); // the request Run makes, after "ask NAME"

    QTest::newRow("script with an execute bit")
        << u"invoice.pdf.sh"_s << QByteArray("#!/bin/sh\ntouch \"$0.ran\"\n") << 0755 << u"start"_s;
    QTest::newRow("ELF at --x--x--x")
        << u"tool"_s << QByteArray::fromHex("7f454c46020101") << 0111 << u"start"_s;
    QTest::newRow("stray desktop entry at 0644")
        << u"stray.desktop"_s
        << QByteArray("[Desktop Entry]\nType=Application\nName=Invoice\nExec=touch /tmp/x.ran\n") << 0644
        << u"launch"_s;
    QTest::newRow("FIFO named x.desktop") << u"x.desktop"_s << QByteArray() << 0 << QString();
    QTest::newRow("document, for comparison") << u"notes.txt"_s << QByteArray("text") << 0644 << QString();
}

void TestActions::openingNeverRunsAProgram()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(int, mode);
    QFETCH(QString, onRun);

    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    if (mode == 0) {
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0644), 0);
    } else {
        QVERIFY(writeAll(path, content));
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode_t(mode)), 0);
    }
    const QString opened = u"open "_s + QUrl::fromLocalFile(path).toString();
    const bool program = !onRun.isEmpty();
    const QString asked = u"ask "_s + name;

    // Dropped, it only becomes a document chip: making one asks nothing of the desktop, and reads no
    // FIFO. A stray desktop entry is no application either: only installed ones are.
    BarConfig dropped;
    DragEditing::dropItems(dropped, {QUrl::fromLocalFile(path)}, DropTarget::insertAt(0));
    QCOMPARE(dropped.buttons.size(), 1);
    QCOMPARE(dropped.buttons.first().action, u"open"_s);

    const QList<ButtonSpec> listing = FolderListing::items(dir.path(), std::nullopt);
    const auto row = std::find_if(listing.begin(), listing.end(),
                                  [&](const ButtonSpec& spec) { return spec.title == name; });
    QVERIFY(row != listing.end());
    const QList<std::pair<const char*, ButtonSpec>> ways = {
        {"an \"open\" chip", button(u"t"_s, u"open"_s, path)},
        {"a \"url\" chip with a file address",
         button(u"t"_s, u"url"_s, QUrl::fromLocalFile(path).toString())},
        {"a folder listing's row", *row},
        {"a chip made by a drop", dropped.buttons.first()},
    };

    FakePlatform platform;
    for (const auto& [way, spec] : ways) {
        platform.answer = RunQuestion::Answer::Cancel;
        const QStringList cancelled = run(spec, platform);
        if (mode == 0)
            QVERIFY2(cancelled == QStringList{u"beep"_s}, way);
        else
            QVERIFY2(cancelled == QStringList{program ? asked : opened}, way);
        if (!program)
            continue;
        platform.answer = RunQuestion::Answer::Open;
        QVERIFY2(run(spec, platform) == (QStringList{asked, opened}), way);
        platform.answer = RunQuestion::Answer::Run;
        QVERIFY2(run(spec, platform) == (QStringList{asked, onRun + QLatin1Char(' ') + path}), way);
    }

    // Nobody to ask: nothing runs either.
    platform.calls.clear();
    Actions(platform).run(button(u"t"_s, u"open"_s, path));
    QCOMPARE(platform.calls, mode == 0 ? QStringList{u"beep"_s}
                             : program ? QStringList()
                                       : QStringList{opened});
}

void TestActions::runStartsOnlyWhatWasAskedAbout()
{
    QTemporaryDir dir;
    const QString script = dir.filePath(u"tool.sh"_s);
    QVERIFY(writeAll(script, "#!/bin/sh\n"));
    QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    FakePlatform platform;
    platform.answer.reset();
    QCOMPARE(run(u"open"_s, script, &platform), QStringList{u"ask tool.sh"_s});

    // While the question is open the program is swapped for a FIFO: Run starts nothing.
    QVERIFY(QFile::remove(script));
    QCOMPARE(::mkfifo(QFile::encodeName(script).constData(), 0755), 0);
    platform.calls.clear();
    platform.unanswered(RunQuestion::Answer::Run);
    QCOMPARE(platform.calls, QStringList{u"beep"_s});
}

void TestActions::programsStartDetached()
{
    TempConfigDir dir;
    FakePlatform platform;
    platform.shell = u"/usr/bin/fish"_s;
    QCOMPARE(run(u"shell"_s, u"echo $HOME > x"_s, &platform),
             QStringList{u"start /usr/bin/fish -lc echo $HOME > x"_s});
    QCOMPARE(run(u"shortcut"_s, u"Backup Photos"_s, &platform),
             QStringList{u"start "_s + dir.path() + u"/shortcuts/Backup Photos"_s});
    // A shortcut name never reaches outside the scripts folder.
    for (const char* name : {"../evil", "/bin/sh", "..", "."})
        QCOMPARE(run(u"shortcut"_s, QString::fromUtf8(name), &platform), QStringList());
    Actions(platform).launch(u"/usr/bin/env"_s, {u"a b"_s});
    QCOMPARE(platform.calls.last(), u"start /usr/bin/env a b"_s);
}

void TestActions::newFolderNeverOverwrites()
{
    QTemporaryDir desktop;
    FakePlatform platform;
    platform.desktop = desktop.path();
    QVERIFY(writeAll(desktop.filePath(u"untitled folder 2"_s), "a file is in the way"));
    QVERIFY(QFile::link(u"/nonexistent"_s, desktop.filePath(u"untitled folder 3"_s)));
    for (int i = 0; i < 3; ++i)
        Actions(platform).run(button(u"t"_s, u"newFolder"_s, std::nullopt));
    const QString base = desktop.filePath(u"untitled folder"_s);
    QCOMPARE(platform.calls, (QStringList{u"reveal "_s + base, u"reveal "_s + base + u" 4"_s,
                                          u"reveal "_s + base + u" 5"_s}));
    QVERIFY(QFileInfo(base + u" 4"_s).isDir());
    QCOMPARE(readAll(desktop.filePath(u"untitled folder 2"_s)), QByteArray("a file is in the way"));

    // An argument is ignored; a folder that cannot be made is not revealed.
    platform.calls.clear();
    platform.desktop = desktop.filePath(u"missing/deeper"_s);
    Actions(platform).run(button(u"t"_s, u"newFolder"_s, u"ignored"_s));
    QCOMPARE(platform.calls, QStringList());
}

void TestActions::pressRefusesBadTextAndMissingTrust()
{
    FakePlatform platform;
    {
        StderrCapture log;
        Actions(platform).keys().press(u"Cmd+Nonsense"_s);
        QCOMPARE(log.text(), u"Bad key combo: Cmd+Nonsense\n"_s);
        QCOMPARE(platform.calls, QStringList{u"beep"_s});
    }
    platform.calls.clear();
    platform.trusted = false;
    platform.clipboardText = u"mine"_s;
    Actions(platform).keys().press(u"ctrl+c"_s);
    Actions(platform).keys().paste(u"text"_s);
    QCOMPARE(platform.calls, (QStringList{u"beep"_s, u"beep"_s}));
    QCOMPARE(platform.clipboardText, std::optional<QString>(u"mine"_s));
    QVERIFY(platform.pending.isEmpty());
}

void TestActions::pasteRestoresThePlainTextLater()
{
    FakePlatform platform;
    platform.clipboardText = u"user text"_s;
    Actions actions(platform);
    actions.run(button(u"t"_s, u"paste"_s, u"Hello"_s));
    QCOMPARE(platform.calls,
             (QStringList{u"clipboard clear"_s, u"clipboard set Hello"_s, u"post key=9 flags=262144"_s}));
    QCOMPARE(platform.clipboardText, std::optional<QString>(u"Hello"_s));
    platform.runPending();
    QCOMPARE(platform.calls.mid(3),
             (QStringList{u"waited 500 ms"_s, u"clipboard clear"_s, u"clipboard set user text"_s}));

    // In a terminal the paste keystroke is ctrl+shift+v; the rest of the sequence stays.
    platform.calls.clear();
    actions.keys().setPasteKeys(u"ctrl+shift+v"_s);
    actions.run(button(u"t"_s, u"paste"_s, u"ls"_s));
    QCOMPARE(platform.calls.last(), u"post key=9 flags=393216"_s);
}

void TestActions::pasteRestoresOnlyWhileItsTextIsThere_data()
{
    // "-" stands for a clipboard without text (empty, or an image); "meanwhile" is what the user copies
    // between the paste and the restore, if anything.
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("pastes");
    QTest::addColumn<QString>("meanwhile");
    QTest::addColumn<QString>("after");
    const auto row = [](const char* name, const char* before, const char* pastes, const char* meanwhile,
                        const char* after) {
        QTest::newRow(name) << QString::fromUtf8(before) << QString::fromUtf8(pastes)
                            << QString::fromUtf8(meanwhile) << QString::fromUtf8(after);
    };
    row("text comes back", "user text", "Hello", "", "user text");
    row("image is not kept", "-", "Hello", "", "-");
    row("text copied meanwhile stays", "user text", "Hello", "copied", "copied");
    row("image copied meanwhile stays", "user text", "Hello", "-", "-");
    row("two pastes: the first's text comes back last", "original", "one,two", "", "one");
    row("same text twice", "original", "x,x", "", "original");
}

void TestActions::pasteRestoresOnlyWhileItsTextIsThere()
{
    QFETCH(QString, before);
    QFETCH(QString, pastes);
    QFETCH(QString, meanwhile);
    QFETCH(QString, after);
    const auto clipboard = [](const QString& text) {
        return text == QLatin1String("-") ? std::nullopt : std::optional<QString>(text);
    };
    FakePlatform platform;
    platform.clipboardText = clipboard(before);
    Actions actions(platform);
    for (const QString& text : pastes.split(QLatin1Char(',')))
        actions.keys().paste(text);
    if (!meanwhile.isEmpty())
        platform.clipboardText = clipboard(meanwhile);
    platform.calls.clear();
    platform.runPending();
    QCOMPARE(platform.clipboardText, clipboard(after));
    if (!meanwhile.isEmpty()) // what the user copied is not even touched
        QCOMPARE(platform.calls, QStringList{u"waited 500 ms"_s});
}

void TestActions::shortcutNamesAreSortedExecutables()
{
    QTemporaryDir dir;
    for (const char* name : {"Zeta", "alpha", "Beta", ".hidden", "notes.txt"}) {
        const QString path = dir.filePath(QString::fromUtf8(name));
        QVERIFY(writeAll(path, "#!/bin/sh\n"));
        if (!path.endsWith(u".txt"_s))
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    QVERIFY(QDir(dir.path()).mkdir(u"folder"_s));
    QCOMPARE(ShortcutList::namesIn(dir.path()), (QStringList{u"alpha"_s, u"Beta"_s, u"Zeta"_s}));
    QVERIFY(ShortcutList::namesIn(dir.filePath(u"missing"_s)).isEmpty());
}

QTEST_GUILESS_MAIN(TestActions)
#include "tst_actions.moc"

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

ButtonSpec acting(const QString& action, std::optional<QString> argument)
{
    ButtonSpec spec;
    spec.title = QStringLiteral("t");
    spec.action = action;
    spec.argument = std::move(argument);
    return spec;
}

QStringList run(const QString& action, std::optional<QString> argument, FakePlatform* platform = nullptr)
{
    FakePlatform own;
    FakePlatform& target = platform ? *platform : own;
    target.calls.clear();
    Actions(target, &target.question()).run(acting(action, std::move(argument)));
    return target.calls;
}

QStringList run(const ButtonSpec& spec, FakePlatform& platform)
{
    platform.calls.clear();
    Actions(platform, &platform.question()).run(spec);
    return platform.calls;
}

} // namespace

void TestActions::whatAChipAsksOfTheDesktop_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QVariant>("argument"); // invalid: absent
    QTest::addColumn<QStringList>("calls");
    const QStringList beep{QStringLiteral("beep")};
    const QVariant none;
    const auto row = [](const char* name, const char* kind, const QVariant& argument,
                        const QStringList& calls) {
        QTest::newRow(name) << QString::fromUtf8(kind) << argument << calls;
    };
    // Kinds are exact; unknown ones beep.
    for (const char* kind : {"Open", "group", "", "URL", "mystery", " open"})
        row(qPrintable(QStringLiteral("kind \"%1\"").arg(QString::fromUtf8(kind))), kind, QStringLiteral("x"),
            beep);
    row("stack without argument", "group", none, beep);
    row("keys", "keys", QStringLiteral("cmd+v"), {QStringLiteral("post key=9 flags=1048576")});
    row("app", "app", QStringLiteral("Firefox"), {QStringLiteral("launch Firefox")});
    row("applescript", "applescript", QStringLiteral("beep"), {});
    // A missing argument does nothing, quietly.
    for (const char* kind :
         {"open", "app", "shortcut", "url", "folder", "keys", "paste", "shell", "applescript"})
        row(qPrintable(QStringLiteral("%1 without argument").arg(QString::fromUtf8(kind))), kind, none, {});
    // Addresses are trimmed of blanks and given a scheme when they have none.
    const auto url = [&](const char* name, const char* argument, const char* opened) {
        row(name, "url", QString::fromUtf8(argument),
            *opened ? QStringList{QStringLiteral("open ") + QString::fromUtf8(opened)} : QStringList());
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
    const QString said =
        kind == QLatin1String("applescript") && argument.isValid()
            ? QStringLiteral("AppleScript error: AppleScript is not available on this system\n")
            : QString();
    QCOMPARE(log.text(), said);
}

void TestActions::openExpandsTildeAndRefusesWhatIsNoFile()
{
    const QString home = QDir::homePath();
    QCOMPARE(run(QStringLiteral("folder"), QStringLiteral("~")),
             QStringList{QStringLiteral("open file://") + home});
    QTemporaryDir dir;
    const QString odd = dir.filePath(QStringLiteral("a b#c.txt"));
    QVERIFY(writeAll(odd, "text"));
    QCOMPARE(run(QStringLiteral("open"), odd),
             QStringList{QStringLiteral("open ") + QUrl::fromLocalFile(odd).toString()});
    QCOMPARE(Paths::expandTilde(QStringLiteral("~root/x")), QStringLiteral("/root/x"));
    QCOMPARE(Paths::expandTilde(QStringLiteral("~no-such-user-here/x")),
             QStringLiteral("~no-such-user-here/x"));
    QCOMPARE(Paths::expandTilde(QStringLiteral("a/~/b")), QStringLiteral("a/~/b"));
    // An application's path may begin with "~", as a dropped desktop entry's does.
    QCOMPARE(run(QStringLiteral("app"), QStringLiteral("~/Apps/x.desktop")),
             QStringList{QStringLiteral("launch ") + home + QStringLiteral("/Apps/x.desktop")});

    // A device is no document; a missing file is not worth a sound.
    QCOMPARE(run(QStringLiteral("open"), QStringLiteral("/dev/null")), QStringList{QStringLiteral("beep")});
    QCOMPARE(run(QStringLiteral("open"), dir.filePath(QStringLiteral("missing"))), QStringList());
}

void TestActions::openingNeverRunsAProgram_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("mode");      // 0: a FIFO
    QTest::addColumn<QString>("onRun"); // the request Run makes, after "ask NAME"

    QTest::newRow("script with an execute bit")
        << QStringLiteral("invoice.pdf.sh") << QByteArray("#!/bin/sh\ntouch \"$0.ran\"\n") << 0755
        << QStringLiteral("start");
    QTest::newRow("ELF at --x--x--x")
        << QStringLiteral("tool") << QByteArray::fromHex("7f454c46020101") << 0111 << QStringLiteral("start");
    QTest::newRow("stray desktop entry at 0644")
        << QStringLiteral("stray.desktop")
        << QByteArray("[Desktop Entry]\nType=Application\nName=Invoice\nExec=touch /tmp/x.ran\n") << 0644
        << QStringLiteral("launch");
    QTest::newRow("FIFO named x.desktop") << QStringLiteral("x.desktop") << QByteArray() << 0 << QString();
    QTest::newRow("document, for comparison")
        << QStringLiteral("notes.txt") << QByteArray("text") << 0644 << QString();
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
    const QString opened = QStringLiteral("open ") + QUrl::fromLocalFile(path).toString();
    const bool program = !onRun.isEmpty();
    const QString asked = QStringLiteral("ask ") + name;

    // Dropped, it only becomes a document chip: making one asks nothing of the desktop, and reads no
    // FIFO. A stray desktop entry is no application either: only installed ones are.
    BarConfig dropped;
    DragEditing::dropItems(dropped, {QUrl::fromLocalFile(path)}, DropTarget::insertAt(0));
    QCOMPARE(dropped.buttons.size(), 1);
    QCOMPARE(dropped.buttons.first().action, QStringLiteral("open"));

    const QList<ButtonSpec> listing = FolderListing::items(dir.path(), std::nullopt);
    const auto row = std::find_if(listing.begin(), listing.end(),
                                  [&](const ButtonSpec& spec) { return spec.title == name; });
    QVERIFY(row != listing.end());
    const QList<std::pair<const char*, ButtonSpec>> ways = {
        {"an \"open\" chip", acting(QStringLiteral("open"), path)},
        {"a \"url\" chip with a file address",
         acting(QStringLiteral("url"), QUrl::fromLocalFile(path).toString())},
        {"a folder listing's row", *row},
        {"a chip made by a drop", dropped.buttons.first()},
    };

    FakePlatform platform;
    for (const auto& [way, spec] : ways) {
        platform.answer = RunQuestion::Answer::Cancel;
        const QStringList cancelled = run(spec, platform);
        if (mode == 0)
            QVERIFY2(cancelled == QStringList{QStringLiteral("beep")}, way);
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
    Actions(platform).run(acting(QStringLiteral("open"), path));
    QCOMPARE(platform.calls, mode == 0 ? QStringList{QStringLiteral("beep")}
                             : program ? QStringList()
                                       : QStringList{opened});
}

void TestActions::runStartsOnlyWhatWasAskedAbout()
{
    QTemporaryDir dir;
    const QString script = dir.filePath(QStringLiteral("tool.sh"));
    QVERIFY(writeAll(script, "#!/bin/sh\n"));
    QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    FakePlatform platform;
    platform.answer.reset();
    QCOMPARE(run(QStringLiteral("open"), script, &platform), QStringList{QStringLiteral("ask tool.sh")});

    // While the question is open the program is swapped for a FIFO: Run starts nothing.
    QVERIFY(QFile::remove(script));
    QCOMPARE(::mkfifo(QFile::encodeName(script).constData(), 0755), 0);
    platform.calls.clear();
    platform.unanswered(RunQuestion::Answer::Run);
    QCOMPARE(platform.calls, QStringList{QStringLiteral("beep")});
}

void TestActions::programsStartDetached()
{
    TempConfigDir dir;
    FakePlatform platform;
    platform.shell = QStringLiteral("/usr/bin/fish");
    QCOMPARE(run(QStringLiteral("shell"), QStringLiteral("echo $HOME > x"), &platform),
             QStringList{QStringLiteral("start /usr/bin/fish -lc echo $HOME > x")});
    QCOMPARE(run(QStringLiteral("shortcut"), QStringLiteral("Backup Photos"), &platform),
             QStringList{QStringLiteral("start ") + dir.path() + QStringLiteral("/shortcuts/Backup Photos")});
    // A shortcut name never reaches outside the scripts folder.
    for (const char* name : {"../evil", "/bin/sh", "..", "."})
        QCOMPARE(run(QStringLiteral("shortcut"), QString::fromUtf8(name), &platform), QStringList());
    Actions(platform).launch(QStringLiteral("/usr/bin/env"), {QStringLiteral("a b")});
    QCOMPARE(platform.calls.last(), QStringLiteral("start /usr/bin/env a b"));
}

void TestActions::newFolderNeverOverwrites()
{
    QTemporaryDir desktop;
    FakePlatform platform;
    platform.desktop = desktop.path();
    QVERIFY(writeAll(desktop.filePath(QStringLiteral("untitled folder 2")), "a file is in the way"));
    QVERIFY(
        QFile::link(QStringLiteral("/nonexistent"), desktop.filePath(QStringLiteral("untitled folder 3"))));
    for (int i = 0; i < 3; ++i)
        Actions(platform).run(acting(QStringLiteral("newFolder"), std::nullopt));
    const QString base = desktop.filePath(QStringLiteral("untitled folder"));
    QCOMPARE(platform.calls, (QStringList{QStringLiteral("reveal ") + base,
                                          QStringLiteral("reveal ") + base + QStringLiteral(" 4"),
                                          QStringLiteral("reveal ") + base + QStringLiteral(" 5")}));
    QVERIFY(QFileInfo(base + QStringLiteral(" 4")).isDir());
    QCOMPARE(readAll(desktop.filePath(QStringLiteral("untitled folder 2"))),
             QByteArray("a file is in the way"));

    // An argument is ignored; a folder that cannot be made is not revealed.
    platform.calls.clear();
    platform.desktop = desktop.filePath(QStringLiteral("missing/deeper"));
    Actions(platform).run(acting(QStringLiteral("newFolder"), QStringLiteral("ignored")));
    QCOMPARE(platform.calls, QStringList());
}

void TestActions::pressRefusesBadTextAndMissingTrust()
{
    FakePlatform platform;
    {
        StderrCapture log;
        Actions(platform).keys().press(QStringLiteral("Cmd+Nonsense"));
        QCOMPARE(log.text(), QStringLiteral("Bad key combo: Cmd+Nonsense\n"));
        QCOMPARE(platform.calls, QStringList{QStringLiteral("beep")});
    }
    platform.calls.clear();
    platform.trusted = false;
    platform.clipboardText = QStringLiteral("mine");
    Actions(platform).keys().press(QStringLiteral("ctrl+c"));
    Actions(platform).keys().paste(QStringLiteral("text"));
    QCOMPARE(platform.calls, (QStringList{QStringLiteral("beep"), QStringLiteral("beep")}));
    QCOMPARE(platform.clipboardText, std::optional<QString>(QStringLiteral("mine")));
    QVERIFY(platform.pending.isEmpty());
}

void TestActions::pasteRestoresThePlainTextLater()
{
    FakePlatform platform;
    platform.clipboardText = QStringLiteral("user text");
    Actions actions(platform);
    actions.run(acting(QStringLiteral("paste"), QStringLiteral("Hello")));
    QCOMPARE(platform.calls,
             (QStringList{QStringLiteral("clipboard clear"), QStringLiteral("clipboard set Hello"),
                          QStringLiteral("post key=9 flags=262144")}));
    QCOMPARE(platform.clipboardText, std::optional<QString>(QStringLiteral("Hello")));
    platform.runPending();
    QCOMPARE(platform.calls.mid(3),
             (QStringList{QStringLiteral("waited 500 ms"), QStringLiteral("clipboard clear"),
                          QStringLiteral("clipboard set user text")}));

    // In a terminal the paste keystroke is ctrl+shift+v; the rest of the sequence stays.
    platform.calls.clear();
    actions.keys().setPasteKeys(QStringLiteral("ctrl+shift+v"));
    actions.run(acting(QStringLiteral("paste"), QStringLiteral("ls")));
    QCOMPARE(platform.calls.last(), QStringLiteral("post key=9 flags=393216"));
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
        QCOMPARE(platform.calls, QStringList{QStringLiteral("waited 500 ms")});
}

void TestActions::shortcutNamesAreSortedExecutables()
{
    QTemporaryDir dir;
    const auto make = [&](const char* name, bool executable) {
        const QString path = dir.filePath(QString::fromUtf8(name));
        QVERIFY(writeAll(path, "#!/bin/sh\n"));
        auto permissions = QFile::ReadOwner | QFile::WriteOwner;
        if (executable)
            permissions |= QFile::ExeOwner;
        QVERIFY(QFile::setPermissions(path, permissions));
    };
    make("Zeta", true);
    make("alpha", true);
    make("Beta", true);
    make("notes.txt", false);
    make(".hidden", true);
    QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("folder")));
    QCOMPARE(ShortcutList::namesIn(dir.path()),
             (QStringList{QStringLiteral("alpha"), QStringLiteral("Beta"), QStringLiteral("Zeta")}));
    QVERIFY(ShortcutList::namesIn(dir.filePath(QStringLiteral("missing"))).isEmpty());
}

QTEST_GUILESS_MAIN(TestActions)
#include "tst_actions.moc"

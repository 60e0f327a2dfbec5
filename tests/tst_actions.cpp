#include "TestSupport.h"
#include "actions/Actions.h"
#include "actions/Paths.h"
#include "actions/ShortcutList.h"
#include "config/BarConfig.h"
#include "platform/fake/FakePlatform.h"

#include <QDir>
#include <QFile>
#include <QTest>

class TestActions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kindsAreExactAndUnknownOnesBeep();
    void missingArgumentDoesNothing();
    void openExpandsTildeAndStartsApplications();
    void urlsAreTrimmedAndPrefixed_data();
    void urlsAreTrimmedAndPrefixed();
    void programsStartDetached();
    void newFolderNeverOverwrites();
    void pressRefusesBadTextAndMissingTrust();
    void pasteRestoresThePlainTextLater();
    void pasteRestoresOnlyWhileItsTextIsThere_data();
    void pasteRestoresOnlyWhileItsTextIsThere();
    void shortcutNamesAreSortedExecutables();
};

namespace {

ButtonSpec button(const QString& action, std::optional<QString> argument)
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
    Actions(target).run(button(action, std::move(argument)));
    return target.calls;
}

} // namespace

void TestActions::kindsAreExactAndUnknownOnesBeep()
{
    const QStringList beep{QStringLiteral("beep")};
    for (const char* kind : {"Open", "group", "", "URL", "mystery", " open"})
        QCOMPARE(run(QString::fromUtf8(kind), QStringLiteral("x")), beep);
    QCOMPARE(run(QStringLiteral("group"), std::nullopt), beep);
    QCOMPARE(run(QStringLiteral("keys"), QStringLiteral("cmd+v")),
             QStringList{QStringLiteral("post key=9 flags=1048576")});
    QCOMPARE(run(QStringLiteral("app"), QStringLiteral("Firefox")),
             QStringList{QStringLiteral("launch Firefox")});

    StderrCapture log;
    QCOMPARE(run(QStringLiteral("applescript"), QStringLiteral("beep")), QStringList());
    QCOMPARE(log.text(), QStringLiteral("AppleScript error: AppleScript is not available on this system\n"));
}

void TestActions::missingArgumentDoesNothing()
{
    StderrCapture log;
    for (const char* kind :
         {"open", "app", "shortcut", "url", "folder", "keys", "paste", "shell", "applescript"})
        QCOMPARE(run(QString::fromUtf8(kind), std::nullopt), QStringList());
    QCOMPARE(log.text(), QString());
}

void TestActions::openExpandsTildeAndStartsApplications()
{
    const QString home = QDir::homePath();
    QCOMPARE(run(QStringLiteral("open"), QStringLiteral("~/Documents")),
             QStringList{QStringLiteral("open file://") + home + QStringLiteral("/Documents")});
    QCOMPARE(run(QStringLiteral("folder"), QStringLiteral("~")),
             QStringList{QStringLiteral("open file://") + home});
    QCOMPARE(run(QStringLiteral("open"), QStringLiteral("/tmp/a b#c")),
             QStringList{QStringLiteral("open file:///tmp/a b%23c")});
    QCOMPARE(Paths::expandTilde(QStringLiteral("~root/x")), QStringLiteral("/root/x"));
    QCOMPARE(Paths::expandTilde(QStringLiteral("~no-such-user-here/x")),
             QStringLiteral("~no-such-user-here/x"));
    QCOMPARE(Paths::expandTilde(QStringLiteral("a/~/b")), QStringLiteral("a/~/b"));

    // Programs and desktop entries are started, not opened as documents.
    QTemporaryDir dir;
    const QString script = dir.filePath(QStringLiteral("tool.sh"));
    QVERIFY(writeAll(script, "#!/bin/sh\n"));
    QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const QString entry = dir.filePath(QStringLiteral("app.desktop"));
    QVERIFY(writeAll(entry, "[Desktop Entry]\n"));
    QCOMPARE(run(QStringLiteral("open"), script), QStringList{QStringLiteral("launch ") + script});
    QCOMPARE(run(QStringLiteral("open"), entry), QStringList{QStringLiteral("launch ") + entry});
    QCOMPARE(run(QStringLiteral("folder"), dir.path()),
             QStringList{QStringLiteral("open file://") + dir.path()});
}

void TestActions::urlsAreTrimmedAndPrefixed_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("opened");
    QTest::newRow("bare host with spaces")
        << QStringLiteral(" \texample.org/docs\t ") << QStringLiteral("open https://example.org/docs");
    QTest::newRow("host and port") << QStringLiteral("localhost:8080")
                                   << QStringLiteral("open localhost:8080");
    QTest::newRow("mail") << QStringLiteral("mailto:me@example.org")
                          << QStringLiteral("open mailto:me@example.org");
    QTest::newRow("scheme kept") << QStringLiteral("http://example.org")
                                 << QStringLiteral("open http://example.org");
    QTest::newRow("only blanks") << QStringLiteral(" \t ") << QString();
    QTest::newRow("line breaks are not trimmed") << QStringLiteral("\nexample.org") << QString();
    QTest::newRow("space inside") << QStringLiteral("example.org/a b") << QString();
}

void TestActions::urlsAreTrimmedAndPrefixed()
{
    QFETCH(QString, argument);
    QFETCH(QString, opened);
    const QStringList calls = run(QStringLiteral("url"), argument);
    QCOMPARE(calls, opened.isEmpty() ? QStringList() : QStringList{opened});
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
        Actions(platform).run(button(QStringLiteral("newFolder"), std::nullopt));
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
    Actions(platform).run(button(QStringLiteral("newFolder"), QStringLiteral("ignored")));
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
    actions.run(button(QStringLiteral("paste"), QStringLiteral("Hello")));
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
    actions.run(button(QStringLiteral("paste"), QStringLiteral("ls")));
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

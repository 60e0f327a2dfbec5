// Key combinations as buttons.json spells them, and the command line that parses and checks them.

#include "TestSupport.h"
#include "actions/KeyCombo.h"
#include "app/BarCommand.h"
#include "app/CommandLine.h"
#include "app/FolderLock.h"
#include "app/InstancePaths.h"
#include "app/InstanceProtocol.h"
#include "config/Config.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSysInfo>
#include <QTest>
#include <unistd.h>

class TestKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyNameParsesAloneToItsCode();

    void modifiersSetBothMasks_data();
    void modifiersSetBothMasks();

    void equivalentSpellings_data();
    void equivalentSpellings();

    void invalidText_data();
    void invalidText();

    void checkReportsWhereTheFileIsWrong();
    void switchesAreAnsweredOrIgnored_data();
    void switchesAreAnsweredOrIgnored();
    void commandWordsForTheBar_data();
    void commandWordsForTheBar();
    void channelLinesDecodeOrAreRefused_data();
    void channelLinesDecodeOrAreRefused();
    void socketIsPrivateAndNamedAfterTheFolder_data();
    void socketIsPrivateAndNamedAfterTheFolder();
    void folderLockHasOneHolderAtATime();
};

namespace {

constexpr quint64 superFlags = 0x100000;
constexpr quint64 shiftFlags = 0x20000;
constexpr quint64 altFlags = 0x80000;
constexpr quint64 controlFlags = 0x40000;
constexpr quint32 superCarbon = 0x100;
constexpr quint32 shiftCarbon = 0x200;
constexpr quint32 altCarbon = 0x800;
constexpr quint32 controlCarbon = 0x1000;

} // namespace

// Lets a failed comparison show what was parsed instead of two opaque values.
char* toString(const KeyCombo& combo)
{
    return QTest::toString(u"key %1 flags 0x%2 carbon 0x%3"_s.arg(combo.keyCode)
                               .arg(combo.flags, 0, 16)
                               .arg(combo.carbon, 0, 16));
}

void TestKeys::everyNameParsesAloneToItsCode()
{
    const auto& codes = KeyCombo::codes();
    QVERIFY(!codes.isEmpty());
    for (auto it = codes.cbegin(); it != codes.cend(); ++it) {
        // Reachable through parse, which lower-cases and splits at "+" and padding; in any case.
        const QString& name = it.key();
        QVERIFY2(!name.isEmpty() && name == name.toLower(), qPrintable(name));
        QVERIFY2(!name.contains(u'+') && !name.contains(u' ') && !name.contains(u'\t'), qPrintable(name));
        for (const QString& spelling : {name, name.toUpper()}) {
            const auto combo = KeyCombo::parse(spelling);
            QVERIFY2(combo, qPrintable(spelling));
            QCOMPARE(combo->keyCode, it.value());
            QCOMPARE(combo->flags, quint64(0));
            QCOMPARE(combo->carbon, quint32(0));
        }
    }
}

void TestKeys::modifiersSetBothMasks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("key");
    QTest::addColumn<quint64>("flags");
    QTest::addColumn<quint32>("carbon");

    QTest::newRow("cmd+v") << u"cmd+v"_s << 9 << quint64(1048576) << quint32(256);
    QTest::newRow("shift") << u"shift+a"_s << 0 << shiftFlags << shiftCarbon;
    QTest::newRow("opt") << u"opt+a"_s << 0 << altFlags << altCarbon;
    QTest::newRow("option") << u"option+a"_s << 0 << altFlags << altCarbon;
    QTest::newRow("alt+f4") << u"alt+f4"_s << 118 << altFlags << altCarbon;
    QTest::newRow("ctrl") << u"ctrl+a"_s << 0 << controlFlags << controlCarbon;
    QTest::newRow("ctrl+opt+space, mixed case")
        << u"Ctrl+Opt+Space"_s << 49 << quint64(786432) << quint32(6144);
    QTest::newRow("all four") << u"ctrl+opt+shift+cmd+z"_s << 6
                              << (superFlags | shiftFlags | altFlags | controlFlags)
                              << (superCarbon | shiftCarbon | altCarbon | controlCarbon);
    QTest::newRow("padded with spaces") << u" shift + tab "_s << 48 << shiftFlags << shiftCarbon;
    QTest::newRow("backslash key") << u"ctrl+\\"_s << 42 << controlFlags << controlCarbon;
    QTest::newRow("minus key") << u"cmd+-"_s << 27 << superFlags << superCarbon;
}

void TestKeys::modifiersSetBothMasks()
{
    QFETCH(QString, text);
    QFETCH(int, key);
    QFETCH(quint64, flags);
    QFETCH(quint32, carbon);

    const auto combo = KeyCombo::parse(text);
    QVERIFY(combo);
    QCOMPARE(int(combo->keyCode), key);
    QCOMPARE(combo->flags, flags);
    QCOMPARE(combo->carbon, carbon);
}

void TestKeys::equivalentSpellings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("same");

    QTest::newRow("key first") << u"v+cmd"_s << u"cmd+v"_s;
    QTest::newRow("key between modifiers") << u"shift+t+cmd"_s << u"cmd+shift+t"_s;
    QTest::newRow("doubled separator") << u"cmd++v"_s << u"cmd+v"_s;
    QTest::newRow("leading and trailing separator") << u"+cmd+v+"_s << u"cmd+v"_s;
    QTest::newRow("super") << u"super+l"_s << u"cmd+l"_s;
    QTest::newRow("meta") << u"meta+l"_s << u"cmd+l"_s;
    QTest::newRow("win") << u"win+l"_s << u"cmd+l"_s;
    QTest::newRow("upper case") << u"CMD+SHIFT+PAGEDOWN"_s << u"cmd+shift+pagedown"_s;
    QTest::newRow("repeated modifiers") << u"ctrl+k+control+ctrl"_s << u"ctrl+k"_s;
    QTest::newRow("every name of super") << u"cmd+super+meta+win+command+k"_s << u"cmd+k"_s;
    QTest::newRow("mixed padding") << u" \t cmd \t+ \tup\t "_s << u"cmd+up"_s;
}

void TestKeys::equivalentSpellings()
{
    QFETCH(QString, text);
    QFETCH(QString, same);

    const auto reference = KeyCombo::parse(same);
    QVERIFY(reference);
    const auto combo = KeyCombo::parse(text);
    QVERIFY(combo);
    QCOMPARE(*combo, *reference);
}

void TestKeys::invalidText_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << QString();
    QTest::newRow("only separators") << u"+++"_s;
    QTest::newRow("only modifiers") << u"ctrl+shift"_s;
    QTest::newRow("two keys") << u"a+b"_s;
    QTest::newRow("same key twice") << u"cmd+a+a"_s;
    // The split drops empty pieces before trimming, so a piece of bare padding is a piece of its own.
    QTest::newRow("blank piece") << u"cmd+ +v"_s;
    QTest::newRow("only padding") << u" "_s;
    QTest::newRow("newline before key") << u"cmd+\nv"_s;
    QTest::newRow("carriage return") << u"\rcmd+v"_s;
    QTest::newRow("non-breaking space") << u"cmd+\u00a0v"_s;
    QTest::newRow("space inside a word") << u"page up"_s;
    QTest::newRow("other separator") << u"cmd-v"_s;
    QTest::newRow("f13") << u"cmd+F13"_s;
    QTest::newRow("plus spelled out") << u"cmd+plus"_s;
    QTest::newRow("non-latin letter") << u"cmd+\u00e9"_s;
}

void TestKeys::invalidText()
{
    QFETCH(QString, text);
    QVERIFY(!KeyCombo::parse(text));
}

namespace {

QStringList words(std::initializer_list<const char*> list)
{
    QStringList result;
    for (const char* word : list)
        result.append(QString::fromUtf8(word));
    return result;
}

std::pair<std::optional<int>, QString> run(const QStringList& arguments)
{
    QString text;
    QTextStream out(&text);
    const auto status = CommandLine::handle(arguments, out);
    out.flush();
    return {status, text};
}

} // namespace

void TestKeys::switchesAreAnsweredOrIgnored_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status"); // -1: not answered here, start-up goes on
    QTest::addColumn<QStringList>("says");
    const auto row = [](const char* name, const QStringList& arguments, int status, const QStringList& says) {
        QTest::newRow(name) << arguments << status << says;
    };
    row("parse keys", words({"--parse-keys", "cmd+v"}), 0, {u"keyCode=9 flags=1048576 carbon=256\n"_s});
    row("parse nonsense", words({"--parse-keys", "nonsense"}), 0, {u"invalid\n"_s});
    // Looked for anywhere, before the other switches; as the last word it is ignored.
    row("parse keys after another switch", words({"--version", "--parse-keys", "f4"}), 0,
        {u"keyCode=118 flags=0 carbon=0\n"_s});
    row("parse keys without text", words({"--parse-keys"}), -1, {});
    row("parse keys last", words({"x", "--parse-keys"}), -1, {});
    row("version", words({"--version"}), 0, {u"vantril "_s});
    row("help", words({"--help"}), 0, {u"--parse-keys"_s, u"--open TITLE"_s});
    row("nothing", {}, -1, {});
    row("unknown switch", words({"--unknown", "file.txt"}), -1, {});
    // The probe switches are for the running program.
    row("probe", words({"--probe"}), -1, {});
}

void TestKeys::switchesAreAnsweredOrIgnored()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QStringList, says);
    const auto [answered, text] = run(arguments);
    QCOMPARE(answered, status < 0 ? std::nullopt : std::optional<int>(status));
    for (const QString& part : says)
        QVERIFY2(text.contains(part), qPrintable(text));
}

void TestKeys::checkReportsWhereTheFileIsWrong()
{
    TempConfigDir dir;
    const QString file = dir.file(u"edited.json"_s);
    QVERIFY(writeAll(file, R"({"buttons":[{"title":"a","symbol":"","action":"open"}]})"));
    QCOMPARE(run({u"--check"_s, file}), std::make_pair(std::optional<int>(0), u"ok\n"_s));

    QVERIFY(writeAll(file, "{\n  \"buttons\": [\n    {\"title\": \"a\",}\n  ]\n}"));
    auto [status, text] = run({u"--check"_s, file});
    QCOMPARE(status, std::optional<int>(1));
    QVERIFY2(text.startsWith(u"line 3, column "_s), qPrintable(text));

    const auto missing = run({u"--check"_s, dir.file(u"nope.json"_s)});
    QCOMPARE(missing.first, std::optional<int>(1));
    QVERIFY(missing.second.contains(u"nope.json: cannot read"_s));

    // Without a file it checks the bar's own document.
    QVERIFY(writeAll(Config::buttonsPath(), Config::encoded(Config::defaults())));
    QCOMPARE(run({u"--check"_s}).second, u"ok\n"_s);
}

void TestKeys::commandWordsForTheBar_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("kind"); // -1: no command, one line instead
    QTest::addColumn<QString>("title");
    using Kind = BarCommand::Kind;
    QTest::newRow("plain start shows") << words({}) << int(Kind::Show) << QString();
    QTest::newRow("unknown words ignored") << words({"--frobnicate", "x"}) << int(Kind::Show) << QString();
    QTest::newRow("toggle") << words({"--toggle"}) << int(Kind::Toggle) << QString();
    QTest::newRow("first command decides") << words({"--hide", "--show"}) << int(Kind::Hide) << QString();
    QTest::newRow("quit after a stray word") << words({"x", "--quit"}) << int(Kind::Quit) << QString();
    QTest::newRow("open a title") << words({"--open", "Files"}) << int(Kind::Open) << u"Files"_s;
    QTest::newRow("title as written") << words({"--open", "--quit"}) << int(Kind::Open) << u"--quit"_s;
    QTest::newRow("open without title") << words({"--toggle=no", "--open"}) << -1 << QString();
    QTest::newRow("open with empty title") << words({"--open", ""}) << -1 << QString();
}

void TestKeys::commandWordsForTheBar()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, kind);
    QFETCH(QString, title);
    const BarCommand::Parsed parsed = BarCommand::parse(arguments);
    if (kind < 0) {
        QVERIFY(!parsed.command);
        QCOMPARE(parsed.error, u"vantril: --open needs the title of a button"_s);
        return;
    }
    QVERIFY2(parsed.command, qPrintable(parsed.error));
    QCOMPARE(*parsed.command, (BarCommand{BarCommand::Kind(kind), title}));
}

void TestKeys::channelLinesDecodeOrAreRefused_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QVariant>("arguments"); // invalid: refused, with a line that says `why`
    QTest::addColumn<QString>("why");
    QTest::addColumn<int>("status"); // -1: not a reply
    QTest::addColumn<QString>("message");
    const QStringList awkward = words({"--open", "Fotos \"2024\"\n\u00e9\U0001F600", ""});
    const QString unreadable = u"could not read"_s;
    const QString titled = u"vantril: no button is titled \"a\nb\""_s;
    using InstanceProtocol::encodeReply;
    using InstanceProtocol::encodeRequest;
    QTest::newRow("request") << encodeRequest(awkward) << QVariant(awkward) << QString() << -1 << QString();
    QTest::newRow("empty request") << encodeRequest({}) << QVariant(QStringList()) << QString() << -1
                                   << QString();
    QTest::newRow("newer version") << QByteArray(R"({"version":2,"arguments":[]})") << QVariant()
                                   << u"not of version 2"_s << -1 << QString();
    QTest::newRow("no version") << QByteArray(R"({"arguments":["--show"]})") << QVariant() << unreadable << -1
                                << QString();
    QTest::newRow("word not text") << QByteArray(R"({"version":1,"arguments":[1]})") << QVariant()
                                   << unreadable << -1 << QString();
    QTest::newRow("not JSON") << QByteArray("--toggle\n") << QVariant() << unreadable << -1 << QString();
    QTest::newRow("too long") << encodeRequest({QString(70000, QLatin1Char('x'))}) << QVariant() << unreadable
                              << -1 << QString();
    QTest::newRow("reply") << encodeReply({1, titled}) << QVariant() << unreadable << 1 << titled;
    QTest::newRow("silent reply") << encodeReply({0, {}}) << QVariant() << unreadable << 0 << QString();
    QTest::newRow("status no shell sees")
        << QByteArray(R"({"status":256})") << QVariant() << unreadable << -1 << QString();
    QTest::newRow("message not text")
        << QByteArray(R"({"status":0,"message":3})") << QVariant() << unreadable << -1 << QString();
}

void TestKeys::channelLinesDecodeOrAreRefused()
{
    QFETCH(QByteArray, line);
    QFETCH(QVariant, arguments);
    QFETCH(QString, why);
    QFETCH(int, status);
    QFETCH(QString, message);
    // What this program sends is one line, whatever it carries: the line break ends the message.
    if (line.endsWith('\n'))
        QCOMPARE(line.count('\n'), 1);
    const InstanceProtocol::Request request = InstanceProtocol::decodeRequest(line);
    if (arguments.isValid()) {
        QCOMPARE(request.arguments, std::optional<QStringList>(arguments.toStringList()));
    } else {
        QVERIFY(!request.arguments);
        QVERIFY2(request.error.startsWith(u"vantril: "_s) && request.error.contains(why),
                 qPrintable(request.error));
    }
    const auto expected = status < 0 ? std::nullopt : std::optional(InstanceProtocol::Reply{status, message});
    QCOMPARE(InstanceProtocol::decodeReply(line), expected);
}

void TestKeys::socketIsPrivateAndNamedAfterTheFolder_data()
{
    QTest::addColumn<QString>("spelling"); // of the folder "cfg", or of another one
    QTest::addColumn<bool>("sameFolder");
    QTest::addColumn<QString>("runtimeDir"); // "@name": that folder of the test's, else as written
    QTest::addColumn<QString>("expectedIn"); // "runtime", "fallback", or empty for no socket
    const QString runtime = u"runtime"_s;
    const QString fallback = u"fallback"_s;
    const QString cfg = u"cfg"_s;
    const QString usable = u"@private"_s;
    QTest::newRow("runtime folder") << cfg << true << usable << runtime;
    QTest::newRow("symlinked folder") << u"link"_s << true << usable << runtime;
    QTest::newRow("spelled with dots") << u"cfg/../cfg/"_s << true << usable << runtime;
    QTest::newRow("another folder") << u"other"_s << false << usable << runtime;
    QTest::newRow("folder not made yet") << u"new"_s << false << usable << runtime;
    QTest::newRow("no runtime folder") << cfg << true << QString() << fallback;
    QTest::newRow("relative runtime folder") << cfg << true << u"private"_s << fallback;
    QTest::newRow("runtime folder open to others") << cfg << true << u"@open"_s << fallback;
    QTest::newRow("runtime folder is a file") << cfg << true << u"@file"_s << fallback;
    QTest::newRow("too deep for a socket") << cfg << true << u"@"_s + QString(90, u'd') << fallback;
    QTest::newRow("fallback is someone's symlink") << cfg << true << QString() << QString();
}

void TestKeys::socketIsPrivateAndNamedAfterTheFolder()
{
    QFETCH(QString, spelling);
    QFETCH(bool, sameFolder);
    QFETCH(QString, runtimeDir);
    QFETCH(QString, expectedIn);
    QTemporaryDir root;
    const QDir at(root.path());
    const auto makePrivate = [&](const QString& name) {
        return at.mkpath(name) &&
               QFile::setPermissions(at.filePath(name),
                                     QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    };
    for (const char* name : {"cfg", "other", "open"})
        QVERIFY(at.mkpath(QString::fromUtf8(name)));
    QVERIFY(QFile::link(at.filePath(u"cfg"_s), at.filePath(u"link"_s)));
    QVERIFY(makePrivate(u"private"_s) && makePrivate(u"tmp"_s));
    QVERIFY(makePrivate(QString(90, u'd')));
    QVERIFY(writeAll(at.filePath(u"file"_s), "x"));
    const QString fallback = at.filePath(u"tmp/vantril-%1"_s.arg(::getuid()));
    if (expectedIn.isEmpty()) // to a folder as private as can be: only the link itself is wrong
        QVERIFY(QFile::link(at.filePath(u"private"_s), fallback));
    const QString runtime = runtimeDir.startsWith(u'@') ? at.filePath(runtimeDir.mid(1)) : runtimeDir;

    const QString tmp = at.filePath(u"tmp"_s);
    const QString path = InstancePaths::socketPath(at.filePath(spelling), runtime, tmp);
    if (expectedIn.isEmpty()) {
        QCOMPARE(path, QString());
        return;
    }
    QCOMPARE(QFileInfo(path).absolutePath(), expectedIn == QLatin1String("runtime") ? runtime : fallback);
    QVERIFY2(QFileInfo(path).fileName().contains(QRegularExpression(u"^vantril-[0-9a-f]{16}$"_s)),
             qPrintable(path));
    QCOMPARE(path == InstancePaths::socketPath(at.filePath(u"cfg"_s), runtime, tmp), sameFolder);
    QVERIFY(QFile::encodeName(path).size() < 108); // fits a socket address
    // Made private at once: a folder others could enter would let them reach the bar.
    constexpr QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                          QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    if (expectedIn == QLatin1String("fallback"))
        QCOMPARE(QFileInfo(fallback).permissions() & others, QFile::Permissions());
    // Every spelling of the folder meets the same lock.
    const QFileInfo lockFolder(QFileInfo(InstancePaths::lockFile(at.filePath(spelling))).absolutePath());
    QCOMPARE(lockFolder.canonicalFilePath() == QFileInfo(at.filePath(u"cfg"_s)).canonicalFilePath(),
             sameFolder);
}

void TestKeys::folderLockHasOneHolderAtATime()
{
    QTemporaryDir root;
    const QString path = InstancePaths::lockFile(root.path());
    FolderLock::Attempt first = FolderLock::take(path);
    QCOMPARE(first.outcome, FolderLock::Outcome::Taken);
    // A second taker, even in this process, finds it held and who holds it.
    QCOMPARE(FolderLock::take(path).outcome, FolderLock::Outcome::Held);
    QCOMPARE(FolderLock::holder(path).pid, qint64(::getpid()));
    QCOMPARE(FolderLock::holder(path).host, QSysInfo::machineHostName());
    // A file left behind holds nothing: only a lock that is held keeps others out.
    first.lock.reset();
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(writeAll(path, "4242\nvantril\nsomewhere\n"));
    FolderLock::Attempt next = FolderLock::take(path);
    QCOMPARE(next.outcome, FolderLock::Outcome::Taken);
    // Where no file can be made, it says why in a few words.
    const FolderLock::Attempt nowhere = FolderLock::take(root.filePath(u"missing/vantril.lock"_s));
    QCOMPARE(nowhere.outcome, FolderLock::Outcome::Failed);
    QCOMPARE(nowhere.error, u"it cannot be created"_s);
}

QTEST_APPLESS_MAIN(TestKeys)
#include "tst_keys.moc"

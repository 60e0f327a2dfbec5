// Key combinations as buttons.json spells them, and the command line that parses and checks them.

#include "TestSupport.h"
#include "actions/KeyCombo.h"
#include "app/BarCommand.h"
#include "app/CommandLine.h"
#include "app/InstancePaths.h"
#include "app/InstanceProtocol.h"
#include "config/Config.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>
#include <unistd.h>

class TestKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyNameParsesAloneToItsCode();

    // Modifiers.
    void modifiersSetBothMasks_data();
    void modifiersSetBothMasks();

    // Spelling freedom that must not change the meaning.
    void equivalentSpellings_data();
    void equivalentSpellings();

    // Text that must not produce a combination.
    void invalidText_data();
    void invalidText();

private Q_SLOTS:
    void checkReportsWhereTheFileIsWrong();
    void switchesAreAnsweredOrIgnored_data();
    void switchesAreAnsweredOrIgnored();
    void commandWordsForTheBar_data();
    void commandWordsForTheBar();
    void channelLinesDecodeOrAreRefused_data();
    void channelLinesDecodeOrAreRefused();
    void socketIsPrivateAndNamedAfterTheFolder_data();
    void socketIsPrivateAndNamedAfterTheFolder();
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
    return QTest::toString(QStringLiteral("key %1 flags 0x%2 carbon 0x%3")
                               .arg(combo.keyCode)
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

    QTest::newRow("cmd+v") << QStringLiteral("cmd+v") << 9 << quint64(1048576) << quint32(256);
    QTest::newRow("command") << QStringLiteral("command+v") << 9 << superFlags << superCarbon;
    QTest::newRow("shift") << QStringLiteral("shift+a") << 0 << shiftFlags << shiftCarbon;
    QTest::newRow("opt") << QStringLiteral("opt+a") << 0 << altFlags << altCarbon;
    QTest::newRow("option") << QStringLiteral("option+a") << 0 << altFlags << altCarbon;
    QTest::newRow("alt+f4") << QStringLiteral("alt+f4") << 118 << altFlags << altCarbon;
    QTest::newRow("ctrl") << QStringLiteral("ctrl+a") << 0 << controlFlags << controlCarbon;
    QTest::newRow("control") << QStringLiteral("control+a") << 0 << controlFlags << controlCarbon;
    QTest::newRow("ctrl+opt+space, mixed case")
        << QStringLiteral("Ctrl+Opt+Space") << 49 << quint64(786432) << quint32(6144);
    QTest::newRow("all four") << QStringLiteral("ctrl+opt+shift+cmd+z") << 6
                              << (superFlags | shiftFlags | altFlags | controlFlags)
                              << (superCarbon | shiftCarbon | altCarbon | controlCarbon);
    QTest::newRow("padded with spaces") << QStringLiteral(" shift + tab ") << 48 << shiftFlags << shiftCarbon;
    QTest::newRow("padded with tabs")
        << QStringLiteral("\tctrl\t+\tc\t") << 8 << controlFlags << controlCarbon;
    QTest::newRow("backslash key") << QStringLiteral("ctrl+\\") << 42 << controlFlags << controlCarbon;
    QTest::newRow("minus key") << QStringLiteral("cmd+-") << 27 << superFlags << superCarbon;
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

    QTest::newRow("key first") << QStringLiteral("v+cmd") << QStringLiteral("cmd+v");
    QTest::newRow("key between modifiers") << QStringLiteral("shift+t+cmd") << QStringLiteral("cmd+shift+t");
    QTest::newRow("doubled separator") << QStringLiteral("cmd++v") << QStringLiteral("cmd+v");
    QTest::newRow("leading and trailing separator") << QStringLiteral("+cmd+v+") << QStringLiteral("cmd+v");
    QTest::newRow("super") << QStringLiteral("super+l") << QStringLiteral("cmd+l");
    QTest::newRow("meta") << QStringLiteral("meta+l") << QStringLiteral("cmd+l");
    QTest::newRow("win") << QStringLiteral("win+l") << QStringLiteral("cmd+l");
    QTest::newRow("upper case") << QStringLiteral("CMD+SHIFT+PAGEDOWN")
                                << QStringLiteral("cmd+shift+pagedown");
    QTest::newRow("repeated modifiers") << QStringLiteral("ctrl+k+control+ctrl") << QStringLiteral("ctrl+k");
    QTest::newRow("every name of super")
        << QStringLiteral("cmd+super+meta+win+command+k") << QStringLiteral("cmd+k");
    QTest::newRow("mixed padding") << QStringLiteral(" \t cmd \t+ \tup\t ") << QStringLiteral("cmd+up");
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
    QTest::newRow("only separators") << QStringLiteral("+++");
    QTest::newRow("lone plus") << QStringLiteral("+");
    QTest::newRow("only a modifier") << QStringLiteral("cmd");
    QTest::newRow("only modifiers") << QStringLiteral("ctrl+shift");
    QTest::newRow("two keys") << QStringLiteral("a+b");
    QTest::newRow("two keys after modifier") << QStringLiteral("cmd+a+b");
    QTest::newRow("same key twice") << QStringLiteral("cmd+a+a");
    // The split drops empty pieces before trimming, so a piece of bare padding is a piece of its own.
    QTest::newRow("blank piece") << QStringLiteral("cmd+ +v");
    QTest::newRow("only padding") << QStringLiteral(" ");
    QTest::newRow("newline before key") << QStringLiteral("cmd+\nv");
    QTest::newRow("newline after key") << QStringLiteral("cmd+v\n");
    QTest::newRow("carriage return") << QStringLiteral("\rcmd+v");
    QTest::newRow("non-breaking space") << QStringLiteral("cmd+\u00a0v");
    QTest::newRow("space inside a word") << QStringLiteral("page up");
    QTest::newRow("other separator") << QStringLiteral("cmd-v");
    QTest::newRow("f13") << QStringLiteral("cmd+F13");
    QTest::newRow("keypad digit") << QStringLiteral("cmd+numpad1");
    QTest::newRow("plus spelled out") << QStringLiteral("cmd+plus");
    QTest::newRow("non-latin letter") << QStringLiteral("cmd+\u00e9");
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
    row("parse keys", words({"--parse-keys", "cmd+v"}), 0,
        {QStringLiteral("keyCode=9 flags=1048576 carbon=256\n")});
    row("parse keys, mixed case", words({"--parse-keys", "Ctrl+Opt+Space"}), 0,
        {QStringLiteral("keyCode=49 flags=786432 carbon=6144\n")});
    row("parse nonsense", words({"--parse-keys", "nonsense"}), 0, {QStringLiteral("invalid\n")});
    // Looked for anywhere, before the other switches; as the last word it is ignored.
    row("parse keys after another switch", words({"--version", "--parse-keys", "f4"}), 0,
        {QStringLiteral("keyCode=118 flags=0 carbon=0\n")});
    row("parse keys without text", words({"--parse-keys"}), -1, {});
    row("parse keys last", words({"x", "--parse-keys"}), -1, {});
    row("version", words({"--version"}), 0, {QStringLiteral("vantril ")});
    row("help", words({"--help"}), 0, {QStringLiteral("--parse-keys"), QStringLiteral("--open TITLE")});
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
    const QString file = dir.file(QStringLiteral("edited.json"));
    QVERIFY(writeAll(file, R"({"buttons":[{"title":"a","symbol":"","action":"open"}]})"));
    QCOMPARE(run({QStringLiteral("--check"), file}),
             std::make_pair(std::optional<int>(0), QStringLiteral("ok\n")));

    QVERIFY(writeAll(file, "{\n  \"buttons\": [\n    {\"title\": \"a\",}\n  ]\n}"));
    auto [status, text] = run({QStringLiteral("--check"), file});
    QCOMPARE(status, std::optional<int>(1));
    QVERIFY2(text.startsWith(QStringLiteral("line 3, column ")), qPrintable(text));

    QVERIFY(writeAll(file, R"({"buttons":[{"title":"a","symbol":"","action":"group","children":[
                              {"title":"b","action":"open"}]}]})"));
    QCOMPARE(run({QStringLiteral("--check"), file}).second,
             QStringLiteral("buttons[0].children[0]: missing required key \"symbol\"\n"));

    const auto missing = run({QStringLiteral("--check"), dir.file(QStringLiteral("nope.json"))});
    QCOMPARE(missing.first, std::optional<int>(1));
    QVERIFY(missing.second.contains(QStringLiteral("nope.json: cannot read")));

    // Without a file it checks the bar's own document.
    QVERIFY(writeAll(Config::buttonsPath(), Config::encoded(Config::defaults())));
    QCOMPARE(run({QStringLiteral("--check")}).second, QStringLiteral("ok\n"));
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
    QTest::newRow("open a title") << words({"--open", "Files"}) << int(Kind::Open) << QStringLiteral("Files");
    QTest::newRow("title as written")
        << words({"--open", "--quit"}) << int(Kind::Open) << QStringLiteral("--quit");
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
        QCOMPARE(parsed.error, QStringLiteral("vantril: --open needs the title of a button"));
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
    const QString unreadable = QStringLiteral("could not read");
    const QString titled = QStringLiteral("vantril: no button is titled \"a\nb\"");
    using InstanceProtocol::encodeReply;
    using InstanceProtocol::encodeRequest;
    QTest::newRow("request") << encodeRequest(awkward) << QVariant(awkward) << QString() << -1 << QString();
    QTest::newRow("empty request") << encodeRequest({}) << QVariant(QStringList()) << QString() << -1
                                   << QString();
    QTest::newRow("newer version") << QByteArray(R"({"version":2,"arguments":[]})") << QVariant()
                                   << QStringLiteral("not of version 2") << -1 << QString();
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
        QVERIFY2(request.error.startsWith(QStringLiteral("vantril: ")) && request.error.contains(why),
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
    const QString runtime = QStringLiteral("runtime");
    const QString fallback = QStringLiteral("fallback");
    const QString cfg = QStringLiteral("cfg");
    const QString usable = QStringLiteral("@private");
    QTest::newRow("runtime folder") << cfg << true << usable << runtime;
    QTest::newRow("symlinked folder") << QStringLiteral("link") << true << usable << runtime;
    QTest::newRow("spelled with dots") << QStringLiteral("cfg/../cfg/") << true << usable << runtime;
    QTest::newRow("another folder") << QStringLiteral("other") << false << usable << runtime;
    QTest::newRow("folder not made yet") << QStringLiteral("new") << false << usable << runtime;
    QTest::newRow("no runtime folder") << cfg << true << QString() << fallback;
    QTest::newRow("relative runtime folder") << cfg << true << QStringLiteral("private") << fallback;
    QTest::newRow("runtime folder open to others") << cfg << true << QStringLiteral("@open") << fallback;
    QTest::newRow("runtime folder is a file") << cfg << true << QStringLiteral("@file") << fallback;
    QTest::newRow("too deep for a socket")
        << cfg << true << QStringLiteral("@") + QString(90, u'd') << fallback;
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
    QVERIFY(QFile::link(at.filePath(QStringLiteral("cfg")), at.filePath(QStringLiteral("link"))));
    QVERIFY(makePrivate(QStringLiteral("private")) && makePrivate(QStringLiteral("tmp")));
    QVERIFY(makePrivate(QString(90, u'd')));
    QVERIFY(writeAll(at.filePath(QStringLiteral("file")), "x"));
    const QString fallback = at.filePath(QStringLiteral("tmp/vantril-%1").arg(::getuid()));
    if (expectedIn.isEmpty()) // to a folder as private as can be: only the link itself is wrong
        QVERIFY(QFile::link(at.filePath(QStringLiteral("private")), fallback));
    const QString runtime = runtimeDir.startsWith(u'@') ? at.filePath(runtimeDir.mid(1)) : runtimeDir;

    const QString tmp = at.filePath(QStringLiteral("tmp"));
    const QString path = InstancePaths::socketPath(at.filePath(spelling), runtime, tmp);
    if (expectedIn.isEmpty()) {
        QCOMPARE(path, QString());
        return;
    }
    QCOMPARE(QFileInfo(path).absolutePath(), expectedIn == QLatin1String("runtime") ? runtime : fallback);
    QVERIFY2(
        QFileInfo(path).fileName().contains(QRegularExpression(QStringLiteral("^vantril-[0-9a-f]{16}$"))),
        qPrintable(path));
    QCOMPARE(path == InstancePaths::socketPath(at.filePath(QStringLiteral("cfg")), runtime, tmp), sameFolder);
    QVERIFY(QFile::encodeName(path).size() < 108); // fits a socket address
    // Made private at once: a folder others could enter would let them reach the bar.
    constexpr QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                          QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    if (expectedIn == QLatin1String("fallback"))
        QCOMPARE(QFileInfo(fallback).permissions() & others, QFile::Permissions());
    // Every spelling of the folder meets the same lock.
    const QFileInfo lockFolder(QFileInfo(InstancePaths::lockFile(at.filePath(spelling))).absolutePath());
    QCOMPARE(lockFolder.canonicalFilePath() ==
                 QFileInfo(at.filePath(QStringLiteral("cfg"))).canonicalFilePath(),
             sameFolder);
}

QTEST_APPLESS_MAIN(TestKeys)
#include "tst_keys.moc"

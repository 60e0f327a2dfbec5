#include "TestSupport.h"
#include "app/CommandLine.h"
#include "config/Config.h"

#include <QTest>

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parseKeysPrintsCodesOrInvalid();
    void checkReportsWhereTheFileIsWrong();
    void switchesAreAnsweredOrIgnored();
};

namespace {

std::pair<std::optional<int>, QString> run(const QStringList& arguments)
{
    QString text;
    QTextStream out(&text);
    const auto status = CommandLine::handle(arguments, out);
    out.flush();
    return {status, text};
}

} // namespace

void TestCommandLine::parseKeysPrintsCodesOrInvalid()
{
    QCOMPARE(run({QStringLiteral("--parse-keys"), QStringLiteral("cmd+v")}),
             std::make_pair(std::optional<int>(0), QStringLiteral("keyCode=9 flags=1048576 carbon=256\n")));
    QCOMPARE(run({QStringLiteral("--parse-keys"), QStringLiteral("Ctrl+Opt+Space")}).second,
             QStringLiteral("keyCode=49 flags=786432 carbon=6144\n"));
    QCOMPARE(run({QStringLiteral("--parse-keys"), QStringLiteral("nonsense")}),
             std::make_pair(std::optional<int>(0), QStringLiteral("invalid\n")));
    // It is looked for anywhere, before the other switches.
    QCOMPARE(run({QStringLiteral("--version"), QStringLiteral("--parse-keys"), QStringLiteral("f4")}).second,
             QStringLiteral("keyCode=118 flags=0 carbon=0\n"));
    // As the last argument it is ignored, and start-up goes on.
    QCOMPARE(run({QStringLiteral("--parse-keys")}).first, std::nullopt);
    QCOMPARE(run({QStringLiteral("x"), QStringLiteral("--parse-keys")}).first, std::nullopt);
}

void TestCommandLine::checkReportsWhereTheFileIsWrong()
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

void TestCommandLine::switchesAreAnsweredOrIgnored()
{
    const auto version = run({QStringLiteral("--version")});
    QCOMPARE(version.first, std::optional<int>(0));
    QVERIFY(version.second.startsWith(QStringLiteral("vantril ")));
    const auto help = run({QStringLiteral("--help")});
    QCOMPARE(help.first, std::optional<int>(0));
    QVERIFY(help.second.contains(QStringLiteral("--parse-keys")));
    QCOMPARE(run({}).first, std::nullopt);
    QCOMPARE(run({QStringLiteral("--unknown"), QStringLiteral("file.txt")}).first, std::nullopt);
    // The probe switches are for the running program, not answered here.
    QCOMPARE(run({QStringLiteral("--probe")}).first, std::nullopt);
}

QTEST_APPLESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"

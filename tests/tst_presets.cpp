#include "config/AppContext.h"
#include "config/Editing.h"
#include "config/Presets.h"

#include <QTest>

class TestPresets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mergeCreatesTheSetAndSkipsWhatIsThere();
    void mergeRenamesTitlesTakenElsewhere();
    void mergeUsesTheFirstSetOfAnApplication();
    void stripRemovesPresetButtonsAndRenamedCopies();
    void appliedNamesFollowTheSets();
    void frontWindowFindsItsSetByAnyName_data();
    void frontWindowFindsItsSetByAnyName();
};

namespace {

ButtonSpec keys(const QString& title, const QString& combo)
{
    ButtonSpec spec;
    spec.title = title;
    spec.symbol = QStringLiteral("s");
    spec.action = QStringLiteral("keys");
    spec.argument = combo;
    return spec;
}

const AppPreset& mail()
{
    return *Presets::named(QStringLiteral("Mail"));
}

QStringList titles(const QList<ButtonSpec>& buttons)
{
    QStringList list;
    for (const ButtonSpec& spec : buttons)
        list.append(spec.title);
    return list;
}

} // namespace

void TestPresets::mergeCreatesTheSetAndSkipsWhatIsThere()
{
    BarConfig config;
    QCOMPARE(Presets::merge(config, mail()), 8);
    QCOMPARE(config.appSets->size(), 1);
    const AppSet& set = config.appSets->first();
    QCOMPARE(set.app, QStringLiteral("com.apple.mail"));
    QCOMPARE(set.name, QStringLiteral("Mail"));
    QCOMPARE(set.buttons, mail().buttons);
    QCOMPARE(Presets::merge(config, mail()), 0);

    // Matching is by what the button does, not by its title.
    BarConfig custom;
    custom.appSets = QList<AppSet>{{QStringLiteral("com.apple.mail"),
                                    QStringLiteral("My Mail"),
                                    {keys(QStringLiteral("Answer"), QStringLiteral("cmd+r"))}}};
    QCOMPARE(Presets::merge(custom, mail()), 7);
    QCOMPARE(custom.appSets->first().name, QStringLiteral("My Mail"));
    QCOMPARE(custom.appSets->first().buttons.first().title, QStringLiteral("Answer"));
    QVERIFY(!titles(custom.appSets->first().buttons).contains(QStringLiteral("Reply")));
}

void TestPresets::mergeRenamesTitlesTakenElsewhere()
{
    BarConfig config;
    config.buttons = {keys(QStringLiteral("Reply"), QStringLiteral("ctrl+r")),
                      keys(QStringLiteral("Flag"), QStringLiteral("ctrl+f"))};
    Presets::merge(config, mail());
    const QStringList setTitles = titles(config.appSets->first().buttons);
    QVERIFY(setTitles.contains(QStringLiteral("Reply 2")));
    QVERIFY(setTitles.contains(QStringLiteral("Flag 2")));
    QVERIFY(setTitles.contains(QStringLiteral("Reply All")));

    // Two presets with shared titles ("New Chat" does not clash, "Search Chats" neither, "Details" is new).
    BarConfig both;
    Presets::merge(both, *Presets::named(QStringLiteral("Safari")));
    Presets::merge(both, *Presets::named(QStringLiteral("Terminal")));
    const QStringList terminal = titles(both.appSets->at(1).buttons);
    QVERIFY(terminal.contains(QStringLiteral("Shell Tab")));
    QCOMPARE(Editing::uniqueTitle(both, QStringLiteral("New Tab")), QStringLiteral("New Tab 2"));
}

void TestPresets::mergeUsesTheFirstSetOfAnApplication()
{
    BarConfig config;
    config.appSets = QList<AppSet>{{QStringLiteral("other"), QStringLiteral("O"), {}},
                                   {QStringLiteral("com.apple.mail"), QStringLiteral("First"), {}},
                                   {QStringLiteral("com.apple.mail"), QStringLiteral("Second"), {}}};
    Presets::merge(config, mail());
    QCOMPARE(config.appSets->size(), 3);
    QCOMPARE(config.appSets->at(1).buttons.size(), 8);
    QVERIFY(config.appSets->at(2).buttons.isEmpty());
}

void TestPresets::stripRemovesPresetButtonsAndRenamedCopies()
{
    BarConfig config;
    config.buttons = {keys(QStringLiteral("Reply"), QStringLiteral("ctrl+r"))};
    Presets::merge(config, mail()); // "Reply" becomes "Reply 2"
    QList<ButtonSpec>& set = config.appSets->first().buttons;
    set.append(keys(QStringLiteral("Reply -3"), QStringLiteral("cmd+r")));   // a numbered copy too
    set.append(keys(QStringLiteral("Reply x"), QStringLiteral("cmd+r")));    // not a numbered copy
    set.append(keys(QStringLiteral("Reply 2 2"), QStringLiteral("cmd+r")));  // two numbers: not a copy
    set.append(keys(QStringLiteral("Junk"), QStringLiteral("shift+cmd+k"))); // does something else
    set.append(keys(QStringLiteral("Mine"), QStringLiteral("cmd+n")));       // another title
    ButtonSpec noArgument = keys(QStringLiteral("Archive"), QString());
    noArgument.argument.reset();
    set.append(noArgument);
    set[5].locked = true; // "Archive" from the preset

    QCOMPARE(Presets::strip(config, mail()), 7 + 1);
    QCOMPARE(titles(config.appSets->first().buttons),
             (QStringList{QStringLiteral("Archive"), QStringLiteral("Reply x"), QStringLiteral("Reply 2 2"),
                          QStringLiteral("Junk"), QStringLiteral("Mine"), QStringLiteral("Archive")}));
    QCOMPARE(Presets::strip(config, mail()), 0);
    // The top-level button of the same title was never part of the set.
    QCOMPARE(config.buttons.size(), 1);

    BarConfig none;
    QCOMPARE(Presets::strip(none, mail()), 0);
    QVERIFY(!none.appSets);
}

void TestPresets::appliedNamesFollowTheSets()
{
    BarConfig config;
    QVERIFY(Presets::appliedNames(config).isEmpty());
    Presets::merge(config, *Presets::named(QStringLiteral("Music")));
    Presets::merge(config, mail());
    // In the presets' own order, whatever the order of the sets.
    QCOMPARE(Presets::appliedNames(config), (QStringList{QStringLiteral("Mail"), QStringLiteral("Music")}));
    QVERIFY(!Presets::named(QStringLiteral("mail")));
}

void TestPresets::frontWindowFindsItsSetByAnyName_data()
{
    QTest::addColumn<QStringList>("sets");
    // own id, class, instance, desktop entry, id
    QTest::addColumn<QStringList>("window");
    QTest::addColumn<int>("shown");

    const QStringList myTool = {QString(), QStringLiteral("MyTool"), QStringLiteral("xterm"),
                                QStringLiteral("debian-xterm"), QStringLiteral("debian-xterm")};
    QTest::newRow("entry of the program") << QStringList{QStringLiteral("debian-xterm")} << myTool << 0;
    QTest::newRow("class, in any case")
        << QStringList{QStringLiteral("other"), QStringLiteral("mytool")} << myTool << 1;
    QTest::newRow("instance") << QStringList{QStringLiteral("XTERM")} << myTool << 0;
    QTest::newRow("class before the program's entry")
        << QStringList{QStringLiteral("debian-xterm"), QStringLiteral("MyTool")} << myTool << 1;
    QTest::newRow("instance before the program's entry")
        << QStringList{QStringLiteral("debian-xterm"), QStringLiteral("xterm")} << myTool << 1;
    QTest::newRow("first of two sets for one name")
        << QStringList{QStringLiteral("MyTool"), QStringLiteral("mytool")} << myTool << 0;
    QTest::newRow("no set names it") << QStringList{QStringLiteral("uxterm")} << myTool << -1;
    QTest::newRow("own id before its class")
        << QStringList{QStringLiteral("Gnome-terminal"), QStringLiteral("org.gnome.Terminal")}
        << QStringList{QStringLiteral("org.gnome.Terminal"), QStringLiteral("Gnome-terminal"),
                       QStringLiteral("gnome-terminal-server"), QStringLiteral("org.gnome.Terminal"),
                       QStringLiteral("org.gnome.Terminal")}
        << 1;
    // VANTRIL_CONTEXT_APP gives an id and nothing else.
    QTest::newRow("fixed id alone") << QStringList{QStringLiteral("x"), QStringLiteral("com.apple.Safari")}
                                    << QStringList{QString(), QString(), QString(), QString(),
                                                   QStringLiteral("com.apple.safari")}
                                    << 1;
}

void TestPresets::frontWindowFindsItsSetByAnyName()
{
    QFETCH(QStringList, sets);
    QFETCH(QStringList, window);
    QFETCH(int, shown);
    BarConfig cfg;
    cfg.appSets.emplace();
    for (qsizetype i = 0; i < sets.size(); ++i)
        cfg.appSets->append(AppSet{sets.at(i), sets.at(i), {keys(QString::number(i), QStringLiteral("a"))}});
    ContextApp app;
    app.ownId = window.at(0);
    app.windowClass = window.at(1);
    app.instance = window.at(2);
    app.desktopEntry = window.at(3);
    app.id = window.at(4);
    app.name = QStringLiteral("Shown");

    QCOMPARE(titles(AppContext::contextButtons(cfg, app)),
             shown < 0 ? QStringList() : QStringList{QString::number(shown)});
    // A button moved into the context goes to the set on show, or to a new one for the application id.
    const qsizetype count = cfg.appSets->size();
    QCOMPARE(AppContext::contextSetIndex(cfg, app, true), shown < 0 ? count : qsizetype(shown));
    if (shown < 0)
        QCOMPARE(cfg.appSets->last().app, app.id);
}

QTEST_APPLESS_MAIN(TestPresets)
#include "tst_presets.moc"

#include "config/Presets.h"
#include "dragdrop/Editing.h"

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

QTEST_APPLESS_MAIN(TestPresets)
#include "tst_presets.moc"

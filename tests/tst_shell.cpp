#include "app/MenuModel.h"
#include "app/Visibility.h"

#include <QTest>

class TestShell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void autoHideWaitsTenIdleTicks();
    void anythingNearbyKeepsTheBar();
    void hiddenBarReturnsAfterTwoRestingTicks();
    void manualHideIgnoresThePointer();
    void menuItemsFollowTheState();
};

namespace {

using Action = Visibility::Action;
const QRect bar(570, 854, 300, 40);

Visibility::Sample away(bool autoHide = true)
{
    Visibility::Sample sample;
    sample.autoHide = autoHide;
    sample.pointer = QPoint(100, 100);
    sample.bar = bar;
    return sample;
}

QStringList titles(const QList<MenuModel::Item>& items)
{
    QStringList out;
    for (const MenuModel::Item& item : items)
        out.append(item.isSeparator() ? QStringLiteral("—") : item.title);
    return out;
}

} // namespace

void TestShell::autoHideWaitsTenIdleTicks()
{
    Visibility visibility;
    for (int tick = 1; tick < 10; ++tick)
        QCOMPARE(visibility.tick(away()), Action::None);
    QCOMPARE(visibility.tick(away()), Action::Hide); // the tenth: 1.5 s
    visibility.hidden(false);
    QCOMPARE(visibility.state(), Visibility::State::HiddenAuto);
    QVERIFY(visibility.needsTicks(true));
    QVERIFY(visibility.needsTicks(false)); // the tick that finds auto-hide off brings it back

    // Auto-hide off: nothing ever hides, so the tick need not run; turned off while hidden, the bar
    // comes back at once.
    Visibility off;
    QVERIFY(!off.needsTicks(false));
    QVERIFY(off.needsTicks(true));
    for (int tick = 0; tick < 50; ++tick)
        QCOMPARE(off.tick(away(false)), Action::None);
    QCOMPARE(visibility.autoHideToggled(false), Action::Show);
    QCOMPARE(visibility.tick(away(false)), Action::Show); // or at the next tick, whichever comes first
}

void TestShell::anythingNearbyKeepsTheBar()
{
    const auto nineIdleThen = [](Visibility::Sample busy) {
        Visibility visibility;
        for (int tick = 0; tick < 9; ++tick)
            visibility.tick(away());
        visibility.tick(busy);
        // The count started again: nine more quiet ticks are not enough.
        for (int tick = 0; tick < 9; ++tick) {
            if (visibility.tick(away()) != Action::None)
                return false;
        }
        return visibility.tick(away()) == Action::Hide;
    };
    Visibility::Sample sample = away();
    sample.pointer = QPoint(bar.left() - 6, bar.top() - 6); // within 6 pixels of the corner
    QVERIFY(nineIdleThen(sample));
    sample = away();
    sample.flyout = QRect(600, 600, 160, 200);
    sample.pointer = QPoint(700, 700);
    QVERIFY(nineIdleThen(sample));
    sample = away();
    sample.editorOpen = true;
    QVERIFY(nineIdleThen(sample));
    sample = away();
    sample.buttonPressed = true;
    QVERIFY(nineIdleThen(sample));

    // Seven pixels away is away.
    Visibility visibility;
    sample = away();
    sample.pointer = QPoint(bar.left() - 7, bar.top());
    for (int tick = 1; tick < 10; ++tick)
        QCOMPARE(visibility.tick(sample), Action::None);
    QCOMPARE(visibility.tick(sample), Action::Hide);
}

void TestShell::hiddenBarReturnsAfterTwoRestingTicks()
{
    Visibility visibility;
    visibility.hidden(false);
    Visibility::Sample resting = away();
    resting.pointer = QPoint(bar.right() + 4, bar.center().y()); // inside the 4-pixel margin
    QCOMPARE(visibility.tick(resting), Action::None);
    QCOMPARE(visibility.tick(away()), Action::None); // passing over for one tick is not resting
    QCOMPARE(visibility.tick(resting), Action::None);
    QCOMPARE(visibility.tick(resting), Action::Show);
    visibility.shown();
    QVERIFY(visibility.isShown());
    for (int tick = 1; tick < 10; ++tick)
        QCOMPARE(visibility.tick(away()), Action::None); // the idle count starts from zero again
}

void TestShell::manualHideIgnoresThePointer()
{
    Visibility visibility;
    visibility.hidden(true);
    Visibility::Sample onTop = away();
    onTop.pointer = bar.center();
    for (const bool autoHide : {true, false}) {
        QVERIFY(!visibility.needsTicks(autoHide));
        onTop.autoHide = autoHide;
        for (int tick = 0; tick < 5; ++tick)
            QCOMPARE(visibility.tick(onTop), Action::None);
    }
    QCOMPARE(visibility.autoHideToggled(false), Action::None);
    QCOMPARE(visibility.state(), Visibility::State::HiddenManual);
}

void TestShell::menuItemsFollowTheState()
{
    MenuModel::State state;
    state.presetNames = {QStringLiteral("Mail"), QStringLiteral("Safari")};
    QList<MenuModel::Item> items = MenuModel::populate(state);
    QCOMPARE(titles(items),
             (QStringList{QStringLiteral("Hide bar"), QStringLiteral("—"), QStringLiteral("Add button…"),
                          QStringLiteral("New stack…"), QStringLiteral("—"), QStringLiteral("Add app preset"),
                          QStringLiteral("Backups"), QStringLiteral("Auto-hide"),
                          QStringLiteral("Show icon in system tray"), QStringLiteral("Launch at Login"),
                          QStringLiteral("Edit config file"), QStringLiteral("Quit Vantril")}));
    QCOMPARE(titles(items.at(5).submenu), state.presetNames);
    QCOMPARE(items.at(5).submenu.at(1).argument, QStringLiteral("Safari"));
    QCOMPARE(titles(items.at(6).submenu),
             (QStringList{QStringLiteral("Back up now"), QStringLiteral("Show backups folder"),
                          QStringLiteral("Restore")}));
    QVERIFY(items.at(6).submenu.at(2).submenu.isEmpty());
    QCOMPARE(items.at(7).checked, std::optional<bool>(false));
    QCOMPARE(items.at(8).checked, std::optional<bool>(true));
    QCOMPARE(items.at(9).checked, std::optional<bool>(false));

    state.barShown = false;
    state.contextName = QStringLiteral("Firefox");
    state.canUndo = true;
    state.appliedPresets = {QStringLiteral("Mail")};
    state.backups = {{QStringLiteral("/b/buttons-2025-03-14-091500.json"),
                      QStringLiteral("14 Mar 2025, 09:15 — 3 buttons")}};
    state.autoHide = true;
    state.trayIcon = false;
    state.launchAtLogin = true;
    state.hasUpdater = true;
    items = MenuModel::populate(state);
    QCOMPARE(titles(items),
             (QStringList{QStringLiteral("Show bar"), QStringLiteral("—"), QStringLiteral("Add button…"),
                          QStringLiteral("New stack…"), QStringLiteral("Add button for Firefox…"),
                          QStringLiteral("Undo last change"), QStringLiteral("—"),
                          QStringLiteral("Add app preset"), QStringLiteral("Remove app preset"),
                          QStringLiteral("Backups"), QStringLiteral("Auto-hide"),
                          QStringLiteral("Show icon in system tray"), QStringLiteral("Launch at Login"),
                          QStringLiteral("Edit config file"), QStringLiteral("Check for Updates…"),
                          QStringLiteral("Quit Vantril")}));
    const MenuModel::Item restore = items.at(9).submenu.at(2).submenu.first();
    QCOMPARE(restore.title, QStringLiteral("14 Mar 2025, 09:15 — 3 buttons"));
    QCOMPARE(restore.command, MenuModel::Command::Restore);
    QCOMPARE(restore.argument, QStringLiteral("/b/buttons-2025-03-14-091500.json"));
    QCOMPARE(items.at(8).submenu.first().command, MenuModel::Command::RemovePreset);
    QCOMPARE(items.at(10).checked, std::optional<bool>(true));
    QCOMPARE(items.at(11).checked, std::optional<bool>(false));
    QCOMPARE(items.at(12).checked, std::optional<bool>(true));
}

QTEST_APPLESS_MAIN(TestShell)
#include "tst_shell.moc"

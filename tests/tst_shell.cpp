#include "TestSupport.h"
#include "app/Hotkey.h"
#include "app/MenuModel.h"
#include "app/UpdateVerdict.h"
#include "app/Visibility.h"
#include "diagnostics/SessionReport.h"
#include "editor/ItemMenuModel.h"
#include "platform/DesktopEntryFile.h"
#include "platform/Session.h"
#include "platform/fake/FakePlatform.h"

#include <QTest>

Q_DECLARE_METATYPE(Visibility::Sample)

class TestShell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void autoHideWaitsTenIdleTicks();
    void anythingNearbyKeepsTheBar_data();
    void anythingNearbyKeepsTheBar();
    void hiddenBarReturnsOnRestUnlessHiddenByHand();
    void menuItemsFollowTheState();
    void buttonMenuFollowsStacksLocksSetsAndHistory();
    void hotKeyHeldElsewhereIsReportedOncePerText();
    void sessionAndReachAreToldAsTheyAre_data();
    void sessionAndReachAreToldAsTheyAre();
    void updateVerdictsShowOnlyWhatIsSafe_data();
    void updateVerdictsShowOnlyWhatIsSafe();
    void autostartEntryFollowsTheInstalledOne_data();
    void autostartEntryFollowsTheInstalledOne();
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

template<typename Item>
QStringList titles(const QList<Item>& items)
{
    QStringList out;
    for (const Item& item : items)
        out.append(item.isSeparator() ? u"—"_s : item.title);
    return out;
}

/// A menu's own titles, and each submenu's, tell its items apart.
template<typename Item>
bool titlesAreUnique(const QList<Item>& items)
{
    QStringList seen;
    for (const Item& item : items) {
        if (item.isSeparator())
            continue;
        if (seen.contains(item.title) || !titlesAreUnique(item.submenu))
            return false;
        seen.append(item.title);
    }
    return true;
}

const ItemMenuModel::Item* find(const QList<ItemMenuModel::Item>& items, ItemMenuModel::Command command)
{
    for (const auto& item : items) {
        if (item.command == command)
            return &item;
    }
    return nullptr;
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

    // While the pointer is on the bar no tick is needed; leaving it starts the count from zero.
    Visibility hovered;
    for (int tick = 1; tick < 10; ++tick)
        hovered.tick(away());
    hovered.pointerOnBar(true);
    QVERIFY(!hovered.needsTicks(true));
    hovered.pointerOnBar(false);
    QVERIFY(hovered.needsTicks(true));
    for (int tick = 1; tick < 10; ++tick)
        QCOMPARE(hovered.tick(away()), Action::None);
    QCOMPARE(hovered.tick(away()), Action::Hide);
}

void TestShell::anythingNearbyKeepsTheBar_data()
{
    QTest::addColumn<Visibility::Sample>("sample");
    QTest::addColumn<bool>("keeps"); // starts the idle count again
    const auto with = [](const std::function<void(Visibility::Sample&)>& change) {
        Visibility::Sample sample = away();
        change(sample);
        return sample;
    };
    QTest::newRow("pointer 6 pixels from the corner")
        << with([](auto& s) { s.pointer = QPoint(bar.left() - 6, bar.top() - 6); }) << true;
    QTest::newRow("pointer over a flyout") << with([](auto& s) {
        s.flyout = QRect(600, 600, 160, 200);
        s.pointer = QPoint(700, 700);
    }) << true;
    QTest::newRow("editor open") << with([](auto& s) { s.editorOpen = true; }) << true;
    QTest::newRow("button held") << with([](auto& s) { s.buttonPressed = true; }) << true;
    QTest::newRow("pointer 7 pixels away")
        << with([](auto& s) { s.pointer = QPoint(bar.left() - 7, bar.top()); }) << false;
}

void TestShell::anythingNearbyKeepsTheBar()
{
    QFETCH(Visibility::Sample, sample);
    QFETCH(bool, keeps);
    Visibility visibility;
    for (int tick = 0; tick < 9; ++tick)
        visibility.tick(away());
    // The tenth idle tick hides, unless the sample kept the bar: then nine more are not enough.
    QCOMPARE(visibility.tick(sample), keeps ? Action::None : Action::Hide);
    if (!keeps)
        return;
    for (int tick = 0; tick < 9; ++tick)
        QCOMPARE(visibility.tick(away()), Action::None);
    QCOMPARE(visibility.tick(away()), Action::Hide);
}

void TestShell::hiddenBarReturnsOnRestUnlessHiddenByHand()
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

    Visibility byHand;
    byHand.hidden(true);
    Visibility::Sample onTop = away();
    onTop.pointer = bar.center();
    for (const bool autoHide : {true, false}) {
        QVERIFY(!byHand.needsTicks(autoHide));
        onTop.autoHide = autoHide;
        for (int tick = 0; tick < 5; ++tick)
            QCOMPARE(byHand.tick(onTop), Action::None);
    }
    QCOMPARE(byHand.autoHideToggled(false), Action::None);
    QCOMPARE(byHand.state(), Visibility::State::HiddenManual);
}

void TestShell::menuItemsFollowTheState()
{
    MenuModel::State state;
    state.presetNames = {u"Mail"_s, u"Safari"_s};
    QList<MenuModel::Item> items = MenuModel::populate(state);
    QVERIFY(titlesAreUnique(items));
    QCOMPARE(items.at(0).title, u"Hide bar"_s);
    QCOMPARE(titles(items.at(5).submenu), state.presetNames);
    QCOMPARE(items.at(5).submenu.at(1).argument, u"Safari"_s);
    QCOMPARE(titles(items.at(6).submenu),
             (QStringList{u"Back up now"_s, u"Show backups folder"_s, u"Restore"_s}));
    QVERIFY(items.at(6).submenu.at(2).submenu.isEmpty());
    QCOMPARE(items.at(7).checked, std::optional<bool>(false));
    QCOMPARE(items.at(8).checked, std::optional<bool>(true));
    QCOMPARE(items.at(9).checked, std::optional<bool>(false));

    state.barShown = false;
    state.contextName = u"Firefox"_s;
    state.canUndo = true;
    state.appliedPresets = {u"Mail"_s};
    state.backups = {{u"/b/buttons-2025-03-14-091500.json"_s, u"14 Mar 2025, 09:15 — 3 buttons"_s}};
    state.autoHide = true;
    state.trayIcon = false;
    state.launchAtLogin = true;
    state.hasUpdater = true;
    items = MenuModel::populate(state);
    QVERIFY(titlesAreUnique(items));
    QCOMPARE(items.at(0).title, u"Show bar"_s);
    QCOMPARE(items.at(4).title, u"Add button for Firefox…"_s);
    QCOMPARE(items.at(5).title, u"Undo last change"_s);
    QCOMPARE(items.at(14).title, u"Check for Updates…"_s);
    const MenuModel::Item restore = items.at(9).submenu.at(2).submenu.first();
    QCOMPARE(restore.title, u"14 Mar 2025, 09:15 — 3 buttons"_s);
    QCOMPARE(restore.command, MenuModel::Command::Restore);
    QCOMPARE(restore.argument, u"/b/buttons-2025-03-14-091500.json"_s);
    QCOMPARE(items.at(8).submenu.first().command, MenuModel::Command::RemovePreset);
    QCOMPARE(items.at(10).checked, std::optional<bool>(true));
    QCOMPARE(items.at(11).checked, std::optional<bool>(false));
    QCOMPARE(items.at(12).checked, std::optional<bool>(true));
}

void TestShell::buttonMenuFollowsStacksLocksSetsAndHistory()
{
    // A plain button on the shared bar, with nothing to undo and no updater.
    using Command = ItemMenuModel::Command;
    ItemMenuModel::State state;
    state.button = button(u"Help"_s);
    state.presetNames = {u"Mail"_s};
    auto items = ItemMenuModel::populate(state);
    QVERIFY(titlesAreUnique(items));
    QCOMPARE(items.at(8).title, u"Add app preset"_s);
    QCOMPARE(items.at(8).submenu.first().argument, u"Mail"_s);
    for (const Command command : {Command::Undo, Command::MoveToContext, Command::MoveToGlobal,
                                  Command::AddToStack, Command::CheckForUpdates})
        QVERIFY(!find(items, command));

    state.button = button(u"Files"_s, u"group"_s);
    state.button.locked = true;
    state.contextName = u"Firefox"_s;
    state.canUndo = true;
    state.appliedPresets = {u"Safari"_s};
    state.backups = {{u"/b/1.json"_s, u"label"_s}};
    state.autoHide = true;
    state.launchAtLogin = true;
    state.hasUpdater = true;
    items = ItemMenuModel::populate(state);
    QVERIFY(titlesAreUnique(items));
    QCOMPARE(items.at(1).title, u"Unlock"_s);
    QCOMPARE(find(items, Command::AddToStack)->argument, u"Files"_s);
    QCOMPARE(find(items, Command::MoveToContext)->title, u"Move to Firefox’s buttons"_s);
    QVERIFY(find(items, Command::Undo));
    QVERIFY(find(items, Command::CheckForUpdates));
    QCOMPARE(find(items, Command::AutoHide)->checked, std::optional<bool>(true));
    QCOMPARE(find(items, Command::LaunchAtLogin)->checked, std::optional<bool>(true));
    const QStringList all = titles(items);
    QVERIFY(all.contains(u"Remove app preset"_s));
    const auto backups = items.at(all.indexOf(u"Backups"_s));
    QCOMPARE(backups.submenu.at(2).submenu.first().command, Command::Restore);
    QCOMPARE(backups.submenu.at(2).submenu.first().argument, u"/b/1.json"_s);

    // A button of the front application's set moves back to the shared bar instead.
    state.inApplicationSet = true;
    items = ItemMenuModel::populate(state);
    QVERIFY(find(items, Command::MoveToGlobal));
    QVERIFY(!find(items, Command::MoveToContext));
}

void TestShell::hotKeyHeldElsewhereIsReportedOncePerText()
{
    FakePlatform platform;
    platform.grabRefused = true;
    Hotkey hotkey(platform.hotkey(), [] {});
    StderrCapture log;
    hotkey.update(std::nullopt);
    hotkey.update(std::nullopt); // a rebuild of the bar, nothing changed: not taken again, not said again
    hotkey.update(u"Cmd+Option+K"_s);
    const QStringList lines = log.text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const QString taken =
        u"Hot key %1 is taken by another program; bind `vantril --toggle` in your desktop's "
        "keyboard settings instead"_s;
    QCOMPARE(lines, (QStringList{taken.arg(u"ctrl+alt+b"_s), taken.arg(u"super+alt+k"_s)}));

    platform.grabRefused = false;
    hotkey.update(u"ctrl+alt+j"_s);
    QCOMPARE(log.text().split(QLatin1Char('\n'), Qt::SkipEmptyParts).size(), 2);
}

void TestShell::sessionAndReachAreToldAsTheyAre_data()
{
    QTest::addColumn<QString>("environment"); // NAME=value|…
    QTest::addColumn<int>("scope");           // what every backend says of itself
    QTest::addColumn<QString>("detail");
    QTest::addColumn<QString>("session");
    QTest::addColumn<QString>("hotkeyLine");  // in the probe
    QTest::addColumn<QString>("startupLine"); // the first of four at start-up; none outside Wayland
    const int x11 = int(FacilityReach::Scope::X11);
    const int unavailable = int(FacilityReach::Scope::Unavailable);
    // Under Wayland both say how far the hot key reaches and where the desktop binds the command instead.
    const auto wayland = [](const char* name, const char* environment, int scope, const QString& detail,
                            const char* session, const QString& reach, const QString& where) {
        const QString instead = u"; instead bind `vantril --toggle` in "_s + where;
        const QString probe = scope == int(FacilityReach::Scope::X11) ? u"X11 windows only"_s
                                                                      : u"not available (%1)"_s.arg(detail);
        QTest::newRow(name) << QString::fromUtf8(environment) << scope << detail << QString::fromUtf8(session)
                            << u"hot key: "_s + probe + instead
                            << u"In this Wayland session the hot key "_s + reach + instead;
    };
    const auto other = [](const char* name, const QString& environment, int scope, const QString& detail,
                          const char* session, const QString& line) {
        QTest::newRow(name) << environment << scope << detail << QString::fromUtf8(session) << line
                            << QString();
    };
    const QString gnome =
        u"GNOME's Settings › Keyboard › Keyboard Shortcuts › View and Customize Shortcuts › "
        "Custom Shortcuts"_s;
    const QString x11Only = u"works in X11 windows only"_s;
    wayland("GNOME on Wayland",
            "XDG_SESSION_TYPE=wayland|WAYLAND_DISPLAY=wayland-0|DISPLAY=:0|XDG_CURRENT_DESKTOP=GNOME", x11,
            {}, "Wayland (GNOME)", x11Only, gnome);
    wayland("Plasma known only from its display",
            "WAYLAND_DISPLAY=wayland-1|DISPLAY=:1|XDG_CURRENT_DESKTOP=KDE", x11, {}, "Wayland (KDE Plasma)",
            x11Only, u"Plasma's System Settings › Shortcuts › Add Command…"_s);
    wayland("declared in odd case, desktop after a vendor's",
            "XDG_SESSION_TYPE= Wayland |XDG_CURRENT_DESKTOP=ubuntu:GNOME", x11, {}, "Wayland (GNOME)",
            x11Only, gnome);
    wayland("a desktop without known settings", "WAYLAND_DISPLAY=wayland-1|XDG_CURRENT_DESKTOP=sway", x11, {},
            "Wayland (sway)", x11Only, u"the desktop's keyboard settings"_s);
    wayland("no XTest under Wayland", "WAYLAND_DISPLAY=wayland-0|XDG_CURRENT_DESKTOP=GNOME", unavailable,
            u"no XTest on this display"_s, "Wayland (GNOME)",
            u"is not available (no XTest on this display)"_s, gnome);
    other("through a portal", u"WAYLAND_DISPLAY=wayland-0|XDG_CURRENT_DESKTOP=KDE"_s,
          int(FacilityReach::Scope::Portal), u"Ctrl+Alt+B"_s, "Wayland (KDE Plasma)",
          u"hot key: through a portal (Ctrl+Alt+B)"_s);
    const QString all = u"hot key: all windows"_s;
    other("Xfce on X11", u"XDG_SESSION_TYPE=x11|DISPLAY=:0|XDG_CURRENT_DESKTOP=XFCE"_s, x11, {}, "X11 (Xfce)",
          all);
    other("an empty Wayland display is none", u"WAYLAND_DISPLAY=|DISPLAY=:1|XDG_CURRENT_DESKTOP=X-Cinnamon"_s,
          x11, {}, "X11 (Cinnamon)", all);
    other("a text console forwarding X",
          u"XDG_SESSION_TYPE=tty|DISPLAY=localhost:10.0|XDG_CURRENT_DESKTOP=mate"_s, x11, {}, "X11 (MATE)",
          all);
    other("no display at all", QString(), unavailable, u"no X display"_s, "unknown",
          u"hot key: not available (no X display)"_s);
    other("names that would break a line are left out",
          u"DISPLAY=:0|XDG_CURRENT_DESKTOP=evil\nname:rm -rf;:"_s + QString(40, u'x'), x11, {}, "X11", all);
}

void TestShell::sessionAndReachAreToldAsTheyAre()
{
    QFETCH(QString, environment);
    QFETCH(int, scope);
    QFETCH(QString, detail);
    QFETCH(QString, session);
    QFETCH(QString, hotkeyLine);
    QFETCH(QString, startupLine);
    QProcessEnvironment variables;
    for (const QString& variable : environment.split(u'|', Qt::SkipEmptyParts))
        variables.insert(variable.section(u'=', 0, 0), variable.section(u'=', 1));
    const Session detected = Session::detect(variables);
    QCOMPARE(detected.describe(), session);

    FakePlatform platform;
    platform.facilityReach = {FacilityReach::Scope(scope), detail};
    const QList<SessionReport::Entry> entries = SessionReport::gather(platform);
    QCOMPARE(SessionReport::probeLine(entries.first(), detected), hotkeyLine);
    const QStringList lines = SessionReport::startupLines(entries, detected);
    QCOMPARE(lines.size(), startupLine.isEmpty() ? 0 : 4);
    QCOMPARE(lines.value(0), startupLine);
}

void TestShell::updateVerdictsShowOnlyWhatIsSafe_data()
{
    QTest::addColumn<QByteArray>("feed");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("link");
    const QString newer = u"Vantril 2.0 is available (you have 1.0)."_s;
    QTest::newRow("newer with a link")
        << QByteArray(R"({"version": "2.0", "url": "https://example.org/v2?a=1&b=2"})")
        << newer + QStringLiteral("<br><a href=\"https://example.org/v2?a=1&amp;b=2\">"
                                  "https://example.org/v2?a=1&amp;b=2</a>")
        << u"https://example.org/v2?a=1&b=2"_s;
    QTest::newRow("same version") << QByteArray(R"({"version": "1.0"})") << u"Vantril 1.0 is up to date."_s
                                  << QString();
    QTest::newRow("no version") << QByteArray(R"({"url": "https://example.org"})")
                                << u"The update feed could not be read."_s << QString();
    // Versions compare by number.
    QTest::newRow("older") << QByteArray(R"({"version": "0.9"})") << u"Vantril 1.0 is up to date."_s
                           << QString();
    QTest::newRow("1.0.1 is newer") << QByteArray(R"({"version": "1.0.1"})")
                                    << u"Vantril 1.0.1 is available (you have 1.0)."_s << QString();
    QTest::newRow("1.10") << QByteArray(R"({"version": "1.10"})")
                          << u"Vantril 1.10 is available (you have 1.0)."_s << QString();
    QTest::newRow("not JSON") << QByteArray("<html>502</html>") << u"The update feed could not be read."_s
                              << QString();
    QTest::newRow("version not text")
        << QByteArray(R"({"version": 2})") << u"The update feed could not be read."_s << QString();
    QTest::newRow("markup after the number is text")
        << QByteArray(R"({"version": "2.0<img src=x onerror=alert(1)>"})")
        << u"Vantril 2.0&lt;img src=x onerror=alert(1)&gt; is available (you have 1.0)."_s << QString();
    QTest::newRow("plain http is no link")
        << QByteArray(R"({"version": "2.0", "url": "http://example.org/v2"})") << newer << QString();
    QTest::newRow("script is no link")
        << QByteArray(R"j({"version": "2.0", "url": "javascript:alert(1)"})j") << newer << QString();
    QTest::newRow("local file is no link")
        << QByteArray(R"({"version": "2.0", "url": "file:///etc/passwd"})") << newer << QString();
    QTest::newRow("markup in the address is no link")
        << QByteArray(R"({"version": "2.0", "url": "https://example.org/\"><b>x</b>"})") << newer
        << QString();
}

void TestShell::updateVerdictsShowOnlyWhatIsSafe()
{
    QFETCH(QByteArray, feed);
    QFETCH(QString, text);
    QFETCH(QString, link);
    QString given;
    QCOMPARE(UpdateVerdict::of(feed, u"1.0"_s, &given), text);
    QCOMPARE(given, link);
}

void TestShell::autostartEntryFollowsTheInstalledOne_data()
{
    QTest::addColumn<QByteArray>("installed");
    QTest::addColumn<QByteArray>("autostart"); // empty: none can be made from it
    const QByteArray on = "X-GNOME-Autostart-enabled=true\n";
    QTest::newRow("keys and translations kept")
        << QByteArray("[Desktop Entry]\nType=Application\nName=Vantril\nName[de]=Vantril\nExec=vantril\n")
        << QByteArray("[Desktop Entry]\nType=Application\nName=Vantril\nName[de]=Vantril\nExec=vantril\n") +
               on;
    QTest::newRow("switched off or hidden there, on here")
        << QByteArray("[Desktop Entry]\nHidden=true\nExec=vantril\nX-GNOME-Autostart-enabled = false\n")
        << QByteArray("[Desktop Entry]\nExec=vantril\n") + on;
    QTest::newRow("other groups left out")
        << QByteArray("# made by hand\n[Desktop Entry]\nExec=vantril\n\n[Desktop Action Quit]\nExec=vantril "
                      "--quit\n")
        << QByteArray("[Desktop Entry]\nExec=vantril\n") + on;
    QTest::newRow("no main group") << QByteArray("[Desktop Action Quit]\nExec=x\n") << QByteArray();
    QTest::newRow("empty file") << QByteArray() << QByteArray();
}

void TestShell::autostartEntryFollowsTheInstalledOne()
{
    QFETCH(QByteArray, installed);
    QFETCH(QByteArray, autostart);
    QCOMPARE(autostartEntryFrom(installed).value_or(QByteArray()), autostart);
}

QTEST_APPLESS_MAIN(TestShell)
#include "tst_shell.moc"

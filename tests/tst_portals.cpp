// The hot key and key chips through the desktop portals, against a stand-in portal on the test's private
// session bus (the test runs under dbus-run-session).
#include "TestSupport.h"
#include "actions/KeyCombo.h"
#include "actions/Keys.h"
#include "app/Hotkey.h"
#include "platform/fake/FakePlatform.h"
#include "platform/portal/PortalHotkeyGrabber.h"
#include "platform/portal/PortalInputSynthesis.h"
#include "platform/portal/PortalSettings.h"
#include "platform/portal/PortalShortcut.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QSettings>
#include <QTest>
#include <QTimer>

namespace {

constexpr int deadlineMs = 10000;
const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;

/// A portal that records every call, in its own connection to the bus, and answers as a desktop would
/// whose user grants everything, unless told otherwise.
class StandInPortal final : public QDBusVirtualObject
{
public:
    QStringList calls;
    bool offersShortcuts = true;
    bool offersRemoteDesktop = true;
    /// The Response code of BindShortcuts and Start: 0 granted, 1 cancelled by the user.
    uint bindAnswer = 0;
    uint startAnswer = 0;
    bool bindsNothing = false;
    uint grantedDevices = 1;
    QString shortcutSession;

    explicit StandInPortal(QDBusConnection bus)
        : m_bus(bus)
    {
        m_bus.registerVirtualObject(portalPath, this, QDBusConnection::SubPath);
    }

    /// Takes the portal's name on the bus, or lets it go so that the session has no portal at all.
    void setPresent(bool present)
    {
        if (present)
            QVERIFY(m_bus.registerService(portalService));
        else
            m_bus.unregisterService(portalService);
    }

    void activate(const QString& session, const QString& id)
    {
        QDBusMessage signal = QDBusMessage::createSignal(
            portalPath, u"org.freedesktop.portal.GlobalShortcuts"_s, u"Activated"_s);
        signal.setArguments(
            {QVariant::fromValue(QDBusObjectPath(session)), id, qulonglong(1), QVariantMap()});
        m_bus.send(signal);
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override
    {
        const QString interface = message.interface().section(QLatin1Char('.'), -1);
        const QString call = interface + QLatin1Char('.') + message.member();
        const QVariantList arguments = message.arguments();
        if ((interface == u"GlobalShortcuts" && !offersShortcuts) ||
            (interface == u"RemoteDesktop" && !offersRemoteDesktop)) {
            m_bus.send(message.createErrorReply(QDBusError::UnknownMethod, u"no such method"_s));
            return true;
        }
        // Maps arrive unread, as they do in any service.
        const QVariant last = arguments.value(arguments.size() - 1);
        const QVariantMap options = last.metaType() == QMetaType::fromType<QDBusArgument>()
                                        ? qdbus_cast<QVariantMap>(last.value<QDBusArgument>())
                                        : QVariantMap();
        QString sender = message.service().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
        const QString request = portalPath + u"/request/"_s + sender + QLatin1Char('/') +
                                options.value(u"handle_token"_s).toString();
        const QString session = portalPath + u"/session/"_s + sender + QLatin1Char('/') +
                                options.value(u"session_handle_token"_s).toString();

        if (call == u"GlobalShortcuts.CreateSession") {
            calls.append(call);
            shortcutSession = session;
            // This interface sends the handle as a string, the other one as an object path.
            answer(message, request, 0, {{u"session_handle"_s, session}});
        } else if (call == u"GlobalShortcuts.BindShortcuts") {
            const PortalShortcutList shortcuts = PortalShortcut::listFrom(arguments.value(1));
            for (const PortalShortcut& shortcut : shortcuts)
                calls.append(call + QLatin1Char(' ') + shortcut.id + QLatin1Char(' ') +
                             shortcut.properties.value(u"preferred_trigger"_s).toString() + u" \"" +
                             shortcut.properties.value(u"description"_s).toString() + u'"');
            PortalShortcutList bound;
            if (!bindsNothing)
                bound.append({u"toggle"_s, {{u"trigger_description"_s, u"Meta+Ctrl+B"_s}}});
            answer(message, request, bindAnswer, {{u"shortcuts"_s, QVariant::fromValue(bound)}});
        } else if (call == u"RemoteDesktop.CreateSession") {
            calls.append(call);
            answer(message, request, 0,
                   {{u"session_handle"_s, QVariant::fromValue(QDBusObjectPath(session))}});
        } else if (call == u"RemoteDesktop.SelectDevices") {
            calls.append(u"%1 types=%2 persist=%3 token=%4"_s.arg(
                call, options.value(u"types"_s).toString(), options.value(u"persist_mode"_s).toString(),
                options.value(u"restore_token"_s, u"none"_s).toString()));
            answer(message, request, 0, {});
        } else if (call == u"RemoteDesktop.Start") {
            calls.append(call);
            answer(message, request, startAnswer,
                   {{u"devices"_s, grantedDevices}, {u"restore_token"_s, u"token-%1"_s.arg(++m_tokens)}});
        } else if (call == u"RemoteDesktop.NotifyKeyboardKeysym") {
            calls.append(u"key %1 %2"_s.arg(arguments.value(2).toInt(), 0, 16)
                             .arg(arguments.value(3).toUInt() ? u"down"_s : u"up"_s));
            m_bus.send(message.createReply());
        } else {
            calls.append(call);
            m_bus.send(message.createReply());
        }
        return true;
    }

private:
    /// Replies with the request's path, then, as a portal does once the user has answered, sends the
    /// request's Response.
    void answer(const QDBusMessage& message, const QString& request, uint code, const QVariantMap& results)
    {
        m_bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        QTimer::singleShot(0, [bus = m_bus, request, code, results]() mutable {
            QDBusMessage response =
                QDBusMessage::createSignal(request, u"org.freedesktop.portal.Request"_s, u"Response"_s);
            response.setArguments({code, results});
            bus.send(response);
        });
    }

    QDBusConnection m_bus;
    int m_tokens = 0;
};

} // namespace

class TestPortals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    // The hot key: bound with the configured trigger, toggling on Activated, bound anew on a change.
    void hotkeyIsBoundWithTheConfiguredTrigger_data();
    void hotkeyIsBoundWithTheConfiguredTrigger();
    void activationTogglesAndAChangeRebinds();
    void hotkeyFallsBackToTheX11Grab_data();
    void hotkeyFallsBackToTheX11Grab();

    // Key and paste chips through the keyboard portal.
    void keysAreTypedAsKeysyms_data();
    void keysAreTypedAsKeysyms();
    void restoreTokenIsKeptAndReused();
    void keysFallBackWithoutThePortal_data();
    void keysFallBackWithoutThePortal();

private:
    QTemporaryDir m_settings;
    std::unique_ptr<StandInPortal> m_portal;
    QDBusConnection m_portalBus{QString()};
};

void TestPortals::initTestCase()
{
    QVERIFY2(QDBusConnection::sessionBus().isConnected(), "needs a session bus: run under dbus-run-session");
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
    m_portalBus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"stand-in portal"_s);
    QVERIFY(m_portalBus.isConnected());
}

void TestPortals::init()
{
    QFile::remove(m_settings.filePath(u"vantril/vantril.ini"_s));
    m_portal = std::make_unique<StandInPortal>(m_portalBus);
    m_portal->setPresent(true);
}

void TestPortals::cleanup()
{
    m_portal->setPresent(false);
    m_portalBus.unregisterObject(portalPath, QDBusConnection::UnregisterTree);
    m_portal.reset();
}

void TestPortals::hotkeyIsBoundWithTheConfiguredTrigger_data()
{
    QTest::addColumn<QString>("configured");
    QTest::addColumn<QString>("trigger");
    QTest::newRow("default") << QString() << u"CTRL+ALT+b"_s;
    QTest::newRow("every modifier") << u"cmd+shift+opt+ctrl+f5"_s << u"CTRL+ALT+SHIFT+LOGO+F5"_s;
    QTest::newRow("named key") << u"ctrl+pageup"_s << u"CTRL+Page_Up"_s;
    QTest::newRow("punctuation") << u"alt+="_s << u"ALT+equal"_s;
    QTest::newRow("digit") << u"super+7"_s << u"LOGO+7"_s;
}

void TestPortals::hotkeyIsBoundWithTheConfiguredTrigger()
{
    QFETCH(QString, configured);
    QFETCH(QString, trigger);
    FakePlatform fallback;
    PortalHotkeyGrabber grabber(fallback.hotkey(), true);
    Hotkey hotkey(grabber, [] {});
    hotkey.update(configured.isEmpty() ? std::nullopt : std::optional<QString>(configured));
    // X11 windows have the key while the desktop is asked.
    QVERIFY(fallback.grabbed);

    QTRY_COMPARE_WITH_TIMEOUT(grabber.status().state, PortalStatus::State::InUse, deadlineMs);
    QCOMPARE(m_portal->calls,
             QStringList({u"GlobalShortcuts.CreateSession"_s, u"GlobalShortcuts.BindShortcuts toggle "_s +
                                                                  trigger + u" \"Show or hide the bar\""_s}));
    QCOMPARE(grabber.status().detail, u"Meta+Ctrl+B"_s);
    QCOMPARE(PortalSettings::assignedTrigger(), u"Meta+Ctrl+B"_s);
    // The desktop holds it now; an X11 grab beside it would answer a key its settings do not show.
    QVERIFY(!fallback.grabbed);
}

void TestPortals::activationTogglesAndAChangeRebinds()
{
    FakePlatform fallback;
    PortalHotkeyGrabber grabber(fallback.hotkey(), true);
    int toggles = 0;
    Hotkey hotkey(grabber, [&toggles] { ++toggles; });
    hotkey.update(std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(grabber.status().state, PortalStatus::State::InUse, deadlineMs);
    const QString first = m_portal->shortcutSession;

    m_portal->activate(first, u"other"_s);
    m_portal->activate(first + u"x"_s, u"toggle"_s);
    m_portal->activate(first, u"toggle"_s);
    QTRY_COMPARE_WITH_TIMEOUT(toggles, 1, deadlineMs);

    // The same text again is not a change; a new one closes the session and binds in a new one, since a
    // session binds once.
    hotkey.update(u"ctrl+opt+b"_s);
    hotkey.update(u"ctrl+shift+f5"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_portal->calls.filter(u"GlobalShortcuts.BindShortcuts"_s).size(), 2,
                              deadlineMs);
    QCOMPARE(m_portal->calls.mid(2), QStringList({u"Session.Close"_s, u"GlobalShortcuts.CreateSession"_s,
                                                  QStringLiteral("GlobalShortcuts.BindShortcuts toggle "
                                                                 "CTRL+SHIFT+F5 \"Show or hide the bar\"")}));
    QTRY_COMPARE_WITH_TIMEOUT(grabber.status().state, PortalStatus::State::InUse, deadlineMs);
    m_portal->activate(first, u"toggle"_s);
    m_portal->activate(m_portal->shortcutSession, u"toggle"_s);
    QTRY_COMPARE_WITH_TIMEOUT(toggles, 2, deadlineMs);
}

void TestPortals::hotkeyFallsBackToTheX11Grab_data()
{
    QTest::addColumn<bool>("wayland");
    QTest::addColumn<QString>("situation");
    QTest::addColumn<PortalStatus::State>("state");
    QTest::newRow("X11 session") << false << QString() << PortalStatus::State::NotNeeded;
    QTest::newRow("no portal service") << true << u"absent"_s << PortalStatus::State::Absent;
    QTest::newRow("portal without shortcuts") << true << u"no interface"_s << PortalStatus::State::Absent;
    QTest::newRow("user cancels") << true << u"cancel"_s << PortalStatus::State::Refused;
    QTest::newRow("nothing bound") << true << u"nothing"_s << PortalStatus::State::Refused;
}

void TestPortals::hotkeyFallsBackToTheX11Grab()
{
    QFETCH(bool, wayland);
    QFETCH(QString, situation);
    QFETCH(PortalStatus::State, state);
    m_portal->setPresent(situation != u"absent");
    m_portal->offersShortcuts = situation != u"no interface";
    m_portal->bindAnswer = situation == u"cancel" ? 1 : 0;
    m_portal->bindsNothing = situation == u"nothing";
    FakePlatform fallback;
    PortalHotkeyGrabber grabber(fallback.hotkey(), wayland);
    int toggles = 0;
    Hotkey hotkey(grabber, [&toggles] { ++toggles; });
    hotkey.update(std::nullopt);

    QTRY_COMPARE_WITH_TIMEOUT(grabber.status().state, state, deadlineMs);
    QCOMPARE(fallback.grabbed, std::optional<KeyStroke>(*KeyCombo::parse(u"ctrl+opt+b")));
    fallback.hotkeyHandler();
    QCOMPARE(toggles, 1);
    if (!wayland)
        QVERIFY(m_portal->calls.isEmpty());
}

void TestPortals::keysAreTypedAsKeysyms_data()
{
    QTest::addColumn<QString>("combo");
    QTest::addColumn<QStringList>("keys");
    QTest::newRow("modifiers in order, released in reverse")
        << u"shift+ctrl+t"_s
        << QStringList({u"key ffe3 down"_s, u"key ffe1 down"_s, u"key 74 down"_s, u"key 74 up"_s,
                        u"key ffe1 up"_s, u"key ffe3 up"_s});
    QTest::newRow("alt and super") << u"cmd+opt+left"_s
                                   << QStringList({u"key ffe9 down"_s, u"key ffeb down"_s, u"key ff51 down"_s,
                                                   u"key ff51 up"_s, u"key ffeb up"_s, u"key ffe9 up"_s});
    QTest::newRow("bare key") << u"f5"_s << QStringList({u"key ffc2 down"_s, u"key ffc2 up"_s});
    // A paste presses its keys the same way and still puts the user's text back afterwards.
    QTest::newRow("paste") << QString()
                           << QStringList(
                                  {u"key ffe3 down"_s, u"key 76 down"_s, u"key 76 up"_s, u"key ffe3 up"_s});
}

void TestPortals::keysAreTypedAsKeysyms()
{
    QFETCH(QString, combo);
    QFETCH(QStringList, keys);
    FakePlatform fake;
    fake.clipboardText = u"the user's"_s;
    PortalInputSynthesis input(
        fake.input(), fake.beeper(), [] { return true; }, true);
    Keys chips(input, fake.clipboard(), fake.beeper(), fake.scheduler());
    for (int press = 0; press < 2; ++press) {
        if (combo.isEmpty())
            chips.paste(u"pasted"_s);
        else
            chips.press(combo);
    }
    QTRY_COMPARE_WITH_TIMEOUT(m_portal->calls.filter(u"key "_s), keys + keys, deadlineMs);
    // One session for every combination, typed by the portal alone.
    QCOMPARE(m_portal->calls.filter(u"RemoteDesktop.CreateSession"_s).size(), 1);
    QCOMPARE(input.status().state, PortalStatus::State::InUse);
    QVERIFY(fake.calls.filter(u"post "_s).isEmpty());
    fake.runPending();
    QCOMPARE(fake.clipboardText, u"the user's"_s);
}

void TestPortals::restoreTokenIsKeptAndReused()
{
    for (const QString& offered : {u"none"_s, u"token-1"_s}) {
        FakePlatform fake;
        PortalInputSynthesis input(
            fake.input(), fake.beeper(), [] { return false; }, true);
        input.post(*KeyCombo::parse(u"f5"));
        QTRY_COMPARE_WITH_TIMEOUT(input.status().state, PortalStatus::State::InUse, deadlineMs);
        // Keyboard only, kept until the user withdraws it, with the token of the last start.
        QVERIFY2(
            m_portal->calls.contains(u"RemoteDesktop.SelectDevices types=1 persist=2 token="_s + offered),
            qPrintable(m_portal->calls.join(u'\n')));
    }
    QCOMPARE(PortalSettings::restoreToken(), u"token-2"_s);
}

void TestPortals::keysFallBackWithoutThePortal_data()
{
    QTest::addColumn<QString>("situation");
    QTest::addColumn<bool>("x11InFront");
    QTest::addColumn<PortalStatus::State>("state");
    QTest::newRow("no portal, X11 window") << u"absent"_s << true << PortalStatus::State::Absent;
    QTest::newRow("no portal, Wayland window") << u"absent"_s << false << PortalStatus::State::Absent;
    QTest::newRow("no interface, Wayland window")
        << u"no interface"_s << false << PortalStatus::State::Absent;
    QTest::newRow("refused, X11 window") << u"cancel"_s << true << PortalStatus::State::Refused;
    QTest::newRow("refused, Wayland window") << u"cancel"_s << false << PortalStatus::State::Refused;
    QTest::newRow("no keyboard granted") << u"no keyboard"_s << false << PortalStatus::State::Refused;
}

void TestPortals::keysFallBackWithoutThePortal()
{
    QFETCH(QString, situation);
    QFETCH(bool, x11InFront);
    QFETCH(PortalStatus::State, state);
    m_portal->setPresent(situation != u"absent");
    m_portal->offersRemoteDesktop = situation != u"no interface";
    m_portal->startAnswer = situation == u"cancel" ? 1 : 0;
    m_portal->grantedDevices = situation == u"no keyboard" ? 2 : 1;
    FakePlatform fake;
    PortalInputSynthesis input(
        fake.input(), fake.beeper(), [x11InFront] { return x11InFront; }, true);
    Keys chips(input, fake.clipboard(), fake.beeper(), fake.scheduler());
    StderrCapture log;

    chips.press(u"ctrl+t"_s);
    QTRY_COMPARE_WITH_TIMEOUT(input.status().state, state, deadlineMs);
    chips.press(u"ctrl+t"_s);
    QVERIFY(m_portal->calls.filter(u"key "_s).isEmpty());
    if (x11InFront) {
        QCOMPARE(fake.calls.filter(u"post "_s).size(), 2);
        QVERIFY(log.text().isEmpty());
    } else {
        QCOMPARE(fake.calls, QStringList({u"beep"_s, u"beep"_s}));
        const QStringList lines = log.text().split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith(u"Key and paste chips cannot type into this window: "_s),
                 qPrintable(lines.first()));
    }
    // The desktop is asked once per run, not at every chip.
    QVERIFY(m_portal->calls.filter(u"RemoteDesktop.CreateSession"_s).size() <= 1);
}

QTEST_GUILESS_MAIN(TestPortals)
#include "tst_portals.moc"

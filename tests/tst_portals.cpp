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
const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

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
        QDBusMessage signal =
            QDBusMessage::createSignal(portalPath, QStringLiteral("org.freedesktop.portal.GlobalShortcuts"),
                                       QStringLiteral("Activated"));
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
            m_bus.send(message.createErrorReply(QDBusError::UnknownMethod, QStringLiteral("no such method")));
            return true;
        }
        // Maps arrive unread, as they do in any service.
        const QVariant last = arguments.value(arguments.size() - 1);
        const QVariantMap options = last.metaType() == QMetaType::fromType<QDBusArgument>()
                                        ? qdbus_cast<QVariantMap>(last.value<QDBusArgument>())
                                        : QVariantMap();
        QString sender = message.service().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
        const QString request = portalPath + QStringLiteral("/request/") + sender + QLatin1Char('/') +
                                options.value(QStringLiteral("handle_token")).toString();
        const QString session = portalPath + QStringLiteral("/session/") + sender + QLatin1Char('/') +
                                options.value(QStringLiteral("session_handle_token")).toString();

        if (call == u"GlobalShortcuts.CreateSession") {
            calls.append(call);
            shortcutSession = session;
            // This interface sends the handle as a string, the other one as an object path.
            answer(message, request, 0, {{QStringLiteral("session_handle"), session}});
        } else if (call == u"GlobalShortcuts.BindShortcuts") {
            const PortalShortcutList shortcuts = PortalShortcut::listFrom(arguments.value(1));
            for (const PortalShortcut& shortcut : shortcuts)
                calls.append(call + QLatin1Char(' ') + shortcut.id + QLatin1Char(' ') +
                             shortcut.properties.value(QStringLiteral("preferred_trigger")).toString() +
                             u" \"" + shortcut.properties.value(QStringLiteral("description")).toString() +
                             u'"');
            PortalShortcutList bound;
            if (!bindsNothing)
                bound.append({QStringLiteral("toggle"),
                              {{QStringLiteral("trigger_description"), QStringLiteral("Meta+Ctrl+B")}}});
            answer(message, request, bindAnswer, {{QStringLiteral("shortcuts"), QVariant::fromValue(bound)}});
        } else if (call == u"RemoteDesktop.CreateSession") {
            calls.append(call);
            answer(message, request, 0,
                   {{QStringLiteral("session_handle"), QVariant::fromValue(QDBusObjectPath(session))}});
        } else if (call == u"RemoteDesktop.SelectDevices") {
            calls.append(
                QStringLiteral("%1 types=%2 persist=%3 token=%4")
                    .arg(call, options.value(QStringLiteral("types")).toString(),
                         options.value(QStringLiteral("persist_mode")).toString(),
                         options.value(QStringLiteral("restore_token"), QStringLiteral("none")).toString()));
            answer(message, request, 0, {});
        } else if (call == u"RemoteDesktop.Start") {
            calls.append(call);
            answer(message, request, startAnswer,
                   {{QStringLiteral("devices"), grantedDevices},
                    {QStringLiteral("restore_token"), QStringLiteral("token-%1").arg(++m_tokens)}});
        } else if (call == u"RemoteDesktop.NotifyKeyboardKeysym") {
            calls.append(
                QStringLiteral("key %1 %2")
                    .arg(arguments.value(2).toInt(), 0, 16)
                    .arg(arguments.value(3).toUInt() ? QStringLiteral("down") : QStringLiteral("up")));
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
            QDBusMessage response = QDBusMessage::createSignal(
                request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
            response.setArguments({code, results});
            bus.send(response);
        });
    }

    QDBusConnection m_bus;
    int m_tokens = 0;
};

QStringList callsStartingWith(const QStringList& calls, const QString& prefix)
{
    QStringList found;
    for (const QString& call : calls) {
        if (call.startsWith(prefix))
            found.append(call);
    }
    return found;
}

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
    m_portalBus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("stand-in portal"));
    QVERIFY(m_portalBus.isConnected());
}

void TestPortals::init()
{
    QFile::remove(m_settings.filePath(QStringLiteral("vantril/vantril.ini")));
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
    QTest::newRow("default") << QString() << QStringLiteral("CTRL+ALT+b");
    QTest::newRow("every modifier") << QStringLiteral("cmd+shift+opt+ctrl+f5")
                                    << QStringLiteral("CTRL+ALT+SHIFT+LOGO+F5");
    QTest::newRow("named key") << QStringLiteral("ctrl+pageup") << QStringLiteral("CTRL+Page_Up");
    QTest::newRow("punctuation") << QStringLiteral("alt+=") << QStringLiteral("ALT+equal");
    QTest::newRow("digit") << QStringLiteral("super+7") << QStringLiteral("LOGO+7");
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
    QCOMPARE(m_portal->calls, QStringList({QStringLiteral("GlobalShortcuts.CreateSession"),
                                           QStringLiteral("GlobalShortcuts.BindShortcuts toggle ") + trigger +
                                               QStringLiteral(" \"Show or hide the bar\"")}));
    QCOMPARE(grabber.status().detail, QStringLiteral("Meta+Ctrl+B"));
    QCOMPARE(PortalSettings::assignedTrigger(), QStringLiteral("Meta+Ctrl+B"));
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

    m_portal->activate(first, QStringLiteral("other"));
    m_portal->activate(first + QStringLiteral("x"), QStringLiteral("toggle"));
    m_portal->activate(first, QStringLiteral("toggle"));
    QTRY_COMPARE_WITH_TIMEOUT(toggles, 1, deadlineMs);

    // The same text again is not a change; a new one closes the session and binds in a new one, since a
    // session binds once.
    hotkey.update(QStringLiteral("ctrl+opt+b"));
    hotkey.update(QStringLiteral("ctrl+shift+f5"));
    QTRY_COMPARE_WITH_TIMEOUT(
        callsStartingWith(m_portal->calls, QStringLiteral("GlobalShortcuts.BindShortcuts")).size(), 2,
        deadlineMs);
    QCOMPARE(m_portal->calls.mid(2),
             QStringList({QStringLiteral("Session.Close"), QStringLiteral("GlobalShortcuts.CreateSession"),
                          QStringLiteral("GlobalShortcuts.BindShortcuts toggle "
                                         "CTRL+SHIFT+F5 \"Show or hide the bar\"")}));
    QTRY_COMPARE_WITH_TIMEOUT(grabber.status().state, PortalStatus::State::InUse, deadlineMs);
    m_portal->activate(first, QStringLiteral("toggle"));
    m_portal->activate(m_portal->shortcutSession, QStringLiteral("toggle"));
    QTRY_COMPARE_WITH_TIMEOUT(toggles, 2, deadlineMs);
    QCOMPARE(toggles, 2);
}

void TestPortals::hotkeyFallsBackToTheX11Grab_data()
{
    QTest::addColumn<bool>("wayland");
    QTest::addColumn<QString>("situation");
    QTest::addColumn<PortalStatus::State>("state");
    QTest::newRow("X11 session") << false << QString() << PortalStatus::State::NotNeeded;
    QTest::newRow("no portal service") << true << QStringLiteral("absent") << PortalStatus::State::Absent;
    QTest::newRow("portal without shortcuts")
        << true << QStringLiteral("no interface") << PortalStatus::State::Absent;
    QTest::newRow("user cancels") << true << QStringLiteral("cancel") << PortalStatus::State::Refused;
    QTest::newRow("nothing bound") << true << QStringLiteral("nothing") << PortalStatus::State::Refused;
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
        << QStringLiteral("shift+ctrl+t")
        << QStringList({QStringLiteral("key ffe3 down"), QStringLiteral("key ffe1 down"),
                        QStringLiteral("key 74 down"), QStringLiteral("key 74 up"),
                        QStringLiteral("key ffe1 up"), QStringLiteral("key ffe3 up")});
    QTest::newRow("alt and super") << QStringLiteral("cmd+opt+left")
                                   << QStringList(
                                          {QStringLiteral("key ffe9 down"), QStringLiteral("key ffeb down"),
                                           QStringLiteral("key ff51 down"), QStringLiteral("key ff51 up"),
                                           QStringLiteral("key ffeb up"), QStringLiteral("key ffe9 up")});
    QTest::newRow("bare key") << QStringLiteral("f5")
                              << QStringList(
                                     {QStringLiteral("key ffc2 down"), QStringLiteral("key ffc2 up")});
    // A paste presses its keys the same way and still puts the user's text back afterwards.
    QTest::newRow("paste") << QString()
                           << QStringList({QStringLiteral("key ffe3 down"), QStringLiteral("key 76 down"),
                                           QStringLiteral("key 76 up"), QStringLiteral("key ffe3 up")});
}

void TestPortals::keysAreTypedAsKeysyms()
{
    QFETCH(QString, combo);
    QFETCH(QStringList, keys);
    FakePlatform fake;
    fake.clipboardText = QStringLiteral("the user's");
    PortalInputSynthesis input(
        fake.input(), fake.beeper(), [] { return true; }, true);
    Keys chips(input, fake.clipboard(), fake.beeper(), fake.scheduler());
    for (int press = 0; press < 2; ++press) {
        if (combo.isEmpty())
            chips.paste(QStringLiteral("pasted"));
        else
            chips.press(combo);
    }
    QTRY_COMPARE_WITH_TIMEOUT(callsStartingWith(m_portal->calls, QStringLiteral("key")), keys + keys,
                              deadlineMs);
    // One session for every combination, typed by the portal alone.
    QCOMPARE(callsStartingWith(m_portal->calls, QStringLiteral("RemoteDesktop.CreateSession")).size(), 1);
    QCOMPARE(input.status().state, PortalStatus::State::InUse);
    QVERIFY(callsStartingWith(fake.calls, QStringLiteral("post")).isEmpty());
    fake.runPending();
    QCOMPARE(fake.clipboardText, QStringLiteral("the user's"));
}

void TestPortals::restoreTokenIsKeptAndReused()
{
    for (const QString& offered : {QStringLiteral("none"), QStringLiteral("token-1")}) {
        FakePlatform fake;
        PortalInputSynthesis input(
            fake.input(), fake.beeper(), [] { return false; }, true);
        input.post(*KeyCombo::parse(u"f5"));
        QTRY_COMPARE_WITH_TIMEOUT(input.status().state, PortalStatus::State::InUse, deadlineMs);
        // Keyboard only, kept until the user withdraws it, with the token of the last start.
        QVERIFY2(m_portal->calls.contains(
                     QStringLiteral("RemoteDesktop.SelectDevices types=1 persist=2 token=") + offered),
                 qPrintable(m_portal->calls.join(u'\n')));
    }
    QCOMPARE(PortalSettings::restoreToken(), QStringLiteral("token-2"));
}

void TestPortals::keysFallBackWithoutThePortal_data()
{
    QTest::addColumn<QString>("situation");
    QTest::addColumn<bool>("x11InFront");
    QTest::addColumn<PortalStatus::State>("state");
    QTest::newRow("no portal, X11 window") << QStringLiteral("absent") << true << PortalStatus::State::Absent;
    QTest::newRow("no portal, Wayland window")
        << QStringLiteral("absent") << false << PortalStatus::State::Absent;
    QTest::newRow("no interface, Wayland window")
        << QStringLiteral("no interface") << false << PortalStatus::State::Absent;
    QTest::newRow("refused, X11 window") << QStringLiteral("cancel") << true << PortalStatus::State::Refused;
    QTest::newRow("refused, Wayland window")
        << QStringLiteral("cancel") << false << PortalStatus::State::Refused;
    QTest::newRow("no keyboard granted")
        << QStringLiteral("no keyboard") << false << PortalStatus::State::Refused;
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

    chips.press(QStringLiteral("ctrl+t"));
    QTRY_COMPARE_WITH_TIMEOUT(input.status().state, state, deadlineMs);
    chips.press(QStringLiteral("ctrl+t"));
    QVERIFY(callsStartingWith(m_portal->calls, QStringLiteral("key")).isEmpty());
    if (x11InFront) {
        QCOMPARE(callsStartingWith(fake.calls, QStringLiteral("post")).size(), 2);
        QVERIFY(log.text().isEmpty());
    } else {
        QCOMPARE(fake.calls, QStringList({QStringLiteral("beep"), QStringLiteral("beep")}));
        const QStringList lines = log.text().split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 1);
        QVERIFY2(
            lines.first().startsWith(QStringLiteral("Key and paste chips cannot type into this window: ")),
            qPrintable(lines.first()));
    }
    // The desktop is asked once per run, not at every chip.
    QVERIFY(callsStartingWith(m_portal->calls, QStringLiteral("RemoteDesktop.CreateSession")).size() <= 1);
}

QTEST_GUILESS_MAIN(TestPortals)
#include "tst_portals.moc"

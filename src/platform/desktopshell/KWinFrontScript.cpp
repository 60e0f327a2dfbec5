#include "KWinFrontScript.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QTimer>

namespace {

Q_LOGGING_CATEGORY(frontLog, "vantril.front", QtWarningMsg)

const auto kwinService = QStringLiteral("org.kde.KWin");
const auto scriptingPath = QStringLiteral("/Scripting");
const auto scriptingInterface = QStringLiteral("org.kde.kwin.Scripting");
const auto relativePath = QStringLiteral("vantril/kwin/front-application.js");

QDBusMessage scriptingCall(const QString& method, const QVariantList& arguments)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(kwinService, scriptingPath, scriptingInterface, method);
    call.setArguments(arguments);
    return call;
}

/// Calls `done` with the reply once it is there, on this object's thread.
template<typename Done>
void whenAnswered(QObject* context, const QDBusMessage& call, Done done)
{
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, done] {
        watcher->deleteLater();
        done(watcher->reply());
    });
}

} // namespace

KWinFrontScript::~KWinFrontScript()
{
    if (!m_inKWin)
        return;
    // Blocking, but briefly: the bar is quitting, and an answer sent later would reach nobody.
    QDBusConnection::sessionBus().call(scriptingCall(QStringLiteral("unloadScript"), {pluginName()}),
                                       QDBus::Block, 500);
}

bool KWinFrontScript::isOffered()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface() && bus.interface()->isServiceRegistered(kwinService).value();
}

QString KWinFrontScript::installedPath()
{
    if (QCoreApplication::instance()) {
        const QString beside =
            QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("../share/") + relativePath);
        if (QFileInfo(beside).isFile())
            return QFileInfo(beside).canonicalFilePath();
    }
    return QStandardPaths::locate(QStandardPaths::GenericDataLocation, relativePath);
}

QString KWinFrontScript::pluginName()
{
    return QStringLiteral("vantril-front-application");
}

void KWinFrontScript::load(const QString& path)
{
    m_path = path;
    m_attempts = 0;
    unloadThenLoad();
}

void KWinFrontScript::unloadThenLoad()
{
    // A bar that crashed left its script behind; a fresh one reports the window in front at once.
    whenAnswered(this, scriptingCall(QStringLiteral("unloadScript"), {pluginName()}),
                 [this](const QDBusMessage&) { loadOnce(); });
}

void KWinFrontScript::loadOnce()
{
    whenAnswered(this, scriptingCall(QStringLiteral("loadScript"), {m_path, pluginName()}),
                 [this](const QDBusMessage& reply) {
                     if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
                         qCInfo(frontLog) << "KWin did not load its script:" << reply.errorMessage();
                         return;
                     }
                     const int id = reply.arguments().constFirst().toInt();
                     // KWin deletes an unloaded script later, and until then refuses its name (-1).
                     if (id < 0 && ++m_attempts < 10) {
                         QTimer::singleShot(100, this, &KWinFrontScript::loadOnce);
                         return;
                     }
                     m_inKWin = id >= 0;
                     if (m_inKWin)
                         run(id, false);
                 });
}

void KWinFrontScript::run(int id, bool kwin6Path)
{
    // KWin 5 exports a loaded script as /<id>, KWin 6 as /Scripting/Script<id>.
    const QString path =
        kwin6Path ? QStringLiteral("/Scripting/Script%1").arg(id) : QStringLiteral("/%1").arg(id);
    const QDBusMessage call = QDBusMessage::createMethodCall(
        kwinService, path, QStringLiteral("org.kde.kwin.Script"), QStringLiteral("run"));
    whenAnswered(this, call, [this, id, kwin6Path](const QDBusMessage& reply) {
        m_loaded = reply.type() == QDBusMessage::ReplyMessage;
        if (!m_loaded && !kwin6Path)
            run(id, true);
        else if (!m_loaded)
            qCInfo(frontLog) << "KWin did not run its script:" << reply.errorMessage();
    });
}

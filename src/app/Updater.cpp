#include "Updater.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>
#include <QNetworkReply>
#include <QVersionNumber>

Updater::Updater(QUrl feed, QObject* parent)
    : QObject(parent)
    , m_feed(std::move(feed))
{}

QString Updater::verdict(const QByteArray& feed, const QString& ownVersion, QString* link)
{
    const QJsonObject object = QJsonDocument::fromJson(feed).object();
    const QString latest = object.value(QStringLiteral("version")).toString();
    const QVersionNumber theirs = QVersionNumber::fromString(latest);
    if (theirs.isNull())
        return QStringLiteral("The update feed could not be read.");
    if (theirs <= QVersionNumber::fromString(ownVersion))
        return QStringLiteral("Vantril %1 is up to date.").arg(ownVersion);
    const QString url = object.value(QStringLiteral("url")).toString();
    if (link)
        *link = url;
    QString text = QStringLiteral("Vantril %1 is available (you have %2).").arg(latest, ownVersion);
    if (!url.isEmpty())
        text += QStringLiteral("<br><a href=\"%1\">%1</a>").arg(url.toHtmlEscaped());
    return text;
}

void Updater::check()
{
    QNetworkRequest request(m_feed);
    request.setTransferTimeout(15000);
    QNetworkReply* reply = m_network.get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        if (reply->error() != QNetworkReply::NoError) {
            show(QStringLiteral("Could not check for updates: %1").arg(reply->errorString().toHtmlEscaped()));
            return;
        }
        show(verdict(reply->readAll(), QCoreApplication::applicationVersion()));
    });
}

void Updater::show(const QString& text)
{
    if (!m_window) {
        m_window = new QMessageBox(QMessageBox::Information, QStringLiteral("Vantril updates"), QString(),
                                   QMessageBox::Ok);
        m_window->setAttribute(Qt::WA_DeleteOnClose);
        m_window->setTextFormat(Qt::RichText);
        m_window->setTextInteractionFlags(Qt::TextBrowserInteraction);
    }
    m_window->setText(text);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

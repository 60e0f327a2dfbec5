#include "Updater.h"

#include "app/UpdateVerdict.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QNetworkReply>

Updater::Updater(QUrl feed, QObject* parent)
    : UpdateCheck(parent)
    , m_feed(std::move(feed))
{}

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
        show(UpdateVerdict::of(reply->readAll(), QCoreApplication::applicationVersion()));
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

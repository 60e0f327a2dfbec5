#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QUrl>

class QMessageBox;

/// Checks an update feed and says what it found in a small window.
///
/// The feed is a JSON document at an address fixed when the program is built:
///   { "version": "1.2.0", "url": "https://example.org/vantril/1.2.0" }
/// "version" is compared with this program's version number by number; "url" is where the newer
/// version can be had, shown as a link.
class Updater : public QObject
{
    Q_OBJECT

public:
    explicit Updater(QUrl feed, QObject* parent = nullptr);

    void check();

    /// "newer", "current" or why it failed; what the window says.
    static QString verdict(const QByteArray& feed, const QString& ownVersion, QString* link = nullptr);

private:
    void show(const QString& text);

    QUrl m_feed;
    QNetworkAccessManager m_network;
    QPointer<QMessageBox> m_window;
};

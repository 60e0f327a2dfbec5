#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QUrl>

class QMessageBox;

/// Checks the update feed, a JSON document at an address fixed when the program is built, and says what
/// it found (UpdateVerdict) in a small window.
class Updater : public QObject
{
    Q_OBJECT

public:
    explicit Updater(QUrl feed, QObject* parent = nullptr);

    void check();

private:
    void show(const QString& text);

    QUrl m_feed;
    QNetworkAccessManager m_network;
    QPointer<QMessageBox> m_window;
};

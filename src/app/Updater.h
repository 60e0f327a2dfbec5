#pragma once

#include "app/UpdateCheck.h"

#include <QNetworkAccessManager>
#include <QPointer>
#include <QUrl>

class QMessageBox;

/// Checks the update feed, a JSON document at an address fixed when the program is built, and says what
/// it found (UpdateVerdict) in a small window.
class Updater final : public UpdateCheck
{
public:
    explicit Updater(QUrl feed, QObject* parent = nullptr);

    void check() override;

private:
    void show(const QString& text);

    QUrl m_feed;
    QNetworkAccessManager m_network;
    QPointer<QMessageBox> m_window;
};

#pragma once

#include <QObject>

/// "Check for Updates…": only in builds made with an update feed, which alone go on the network.
class UpdateCheck : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Fetches the feed and says what it found, in a small window.
    virtual void check() = 0;
};

#include "UpdateFeed.h"

// Compiled into each executable with its own VANTRIL_UPDATE_FEED, so the libraries know no address.
QUrl updateFeed()
{
    return QUrl(QStringLiteral(VANTRIL_UPDATE_FEED));
}

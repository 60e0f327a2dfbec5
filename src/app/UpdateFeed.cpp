#include "UpdateFeed.h"

// Compiled into each executable with its own VANTRIL_UPDATE_FEED, so the libraries know no address, and
// only a build with a feed links Qt's network library.
#ifdef VANTRIL_WITH_UPDATER
#include "app/Updater.h"
#endif

std::unique_ptr<UpdateCheck> updaterOfThisBuild()
{
#ifdef VANTRIL_WITH_UPDATER
    return std::make_unique<Updater>(QUrl(QStringLiteral(VANTRIL_UPDATE_FEED)));
#else
    return nullptr;
#endif
}

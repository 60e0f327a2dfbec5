#pragma once

#include <QUrl>

/// The update feed this program was built with; empty when it has none, and then there is no updater.
QUrl updateFeed();

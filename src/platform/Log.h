#pragma once

#include <QString>

/// The program's fixed diagnostic lines ("Bad key combo: …", "buttons.json was unreadable…"):
/// one line each on standard error, exactly as given, with no prefix of Qt's.
namespace Log {

void line(const QString& text);

} // namespace Log

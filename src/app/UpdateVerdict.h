#pragma once

#include <QByteArray>
#include <QString>

/// What the update window says about a feed:
///   { "version": "1.2.0", "url": "https://example.org/vantril/1.2.0" }
/// "version" is compared with this program's version number by number; "url" is where the newer
/// version can be had, shown as a link.
namespace UpdateVerdict {

/// "newer", "current" or why the feed could not be read, as rich text. The feed's texts appear only
/// escaped, and its address becomes a link (and `link`) only when it is an https address: anything
/// else could run or open something other than a download page when clicked, so it is left out.
QString of(const QByteArray& feed, const QString& ownVersion, QString* link = nullptr);

} // namespace UpdateVerdict

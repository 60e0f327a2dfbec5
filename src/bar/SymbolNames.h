#pragma once

#include <QStringList>

/// The icon-theme names to try for a symbol name used in the configuration ("folder", "terminal",
/// "chevron.up", …): freedesktop names, symbolic variants first, then the name itself in case it is
/// a theme icon already. An empty list means the symbol is drawn as text (an emoji, say).
namespace SymbolNames {

QStringList iconNames(const QString& symbol);
/// The symbol names the program maps, related ones next to each other.
const QStringList& names();

/// The chevron a stack or folder chip shows: pointing the way its flyout opens.
QString chevron(bool up);
/// The mark of a locked chip.
QString lock();
/// The symbols the views draw on their own account (chevrons, lock), beside those of the buttons.
QStringList chrome();

} // namespace SymbolNames

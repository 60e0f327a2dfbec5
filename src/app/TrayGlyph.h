#pragma once

#include <QIcon>

/// The tray icon: a small bar with three chips, drawn rather than shipped so it stays crisp at any size.
namespace TrayGlyph {

QIcon icon();

} // namespace TrayGlyph

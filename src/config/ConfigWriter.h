#pragma once

#include "config/BarConfig.h"

#include <QByteArray>

/// Writes the configuration document in its one canonical layout.
///
/// The layout is that of the pretty printer the format was first written with, so files stay
/// byte-identical when they travel between machines: keys in ascending byte order, two spaces per
/// level, " : " between key and value, "/" escaped as "\/", every array element object on its own
/// line, an empty array as "[", an empty line and "]", and no line break at the end. Text goes out as
/// UTF-8 except for controls, the byte order mark and lone halves of surrogate pairs, which are written as
/// "\u" escapes so that every text reads back exactly as it was.
namespace ConfigWriter {

QByteArray write(const BarConfig& config);

} // namespace ConfigWriter

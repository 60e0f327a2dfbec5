#pragma once

#include <QStringList>
#include <QTextStream>
#include <optional>

/// The switches answered without starting the bar (and without a display).
namespace CommandLine {

/// Handles "--parse-keys TEXT", "--check [FILE]", "--help" and "--version", printing to `out`.
/// Returns the exit status when one of them was handled, nothing when the program should start.
/// Other arguments are ignored, and "--parse-keys" as the last argument too.
std::optional<int> handle(const QStringList& arguments, QTextStream& out);

/// "keyCode=9 flags=1048576 carbon=256" for "cmd+v", "invalid" when the text does not parse.
QString describeKeys(const QString& text);
/// "ok", or where the document at `path` is wrong; the flag tells which.
std::pair<bool, QString> checkFile(const QString& path);

} // namespace CommandLine

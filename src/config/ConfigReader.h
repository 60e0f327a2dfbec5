#pragma once

#include "config/BarConfig.h"

#include <QByteArray>
#include <QString>
#include <optional>

/// Reads the configuration document. All or nothing: one bad value anywhere rejects the whole document.
///
/// Any valid JSON is accepted in any key order and layout; unknown keys are ignored, keys are
/// case-sensitive, a null optional value counts as absent and a null required value is an error.
namespace ConfigReader {

struct Result
{
    std::optional<BarConfig> config;
    /// Where and why the document was rejected, for example
    /// `line 3, column 7: unterminated string` or `buttons[1].children[0]: missing required key "symbol"`.
    QString error;
};

Result read(const QByteArray& bytes);
/// The document, or nothing when it does not decode.
std::optional<BarConfig> decode(const QByteArray& bytes);
/// The document in the file at `path`, or nothing when it cannot be read or does not decode.
std::optional<BarConfig> readFile(const QString& path);

} // namespace ConfigReader

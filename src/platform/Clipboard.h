#pragma once

#include <QString>
#include <optional>

/// The desktop clipboard, as plain text only.
class Clipboard
{
public:
    Clipboard() = default;
    virtual ~Clipboard() = default;
    Q_DISABLE_COPY_MOVE(Clipboard)

    /// The clipboard's plain text, or nothing when it holds none (an image, say, or nothing at all).
    virtual std::optional<QString> text() = 0;
    /// Empties the clipboard.
    virtual void clear() = 0;
    /// Replaces the clipboard's contents with plain text.
    virtual void setText(const QString& text) = 0;
};

#pragma once

#include "platform/Clipboard.h"

/// The CLIPBOARD selection through Qt, which serves it to other clients while the program runs.
class QtClipboard final : public Clipboard
{
public:
    std::optional<QString> text() override;
    void clear() override;
    void setText(const QString& text) override;
};

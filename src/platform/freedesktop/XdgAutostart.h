#pragma once

#include "platform/Autostart.h"

/// An XDG autostart entry, vantril.desktop in $XDG_CONFIG_HOME/autostart. It counts as enabled when it
/// exists and is neither Hidden nor switched off for GNOME, which is how session managers read it.
class XdgAutostart final : public Autostart
{
public:
    bool isEnabled() override;
    std::optional<QString> setEnabled(bool enabled) override;

    static QString entryPath();
};

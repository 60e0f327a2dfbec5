#pragma once

#include <QString>
#include <optional>

/// Starting the program when the user logs in.
class Autostart
{
public:
    Autostart() = default;
    virtual ~Autostart() = default;
    Q_DISABLE_COPY_MOVE(Autostart)

    virtual bool isEnabled() = 0;
    /// Nothing on success, else why it failed.
    virtual std::optional<QString> setEnabled(bool enabled) = 0;
};

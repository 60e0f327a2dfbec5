#include "Preferences.h"

#include <cmath>

namespace {

std::optional<double> number(const QVariant& value)
{
    bool ok = false;
    const double result = value.toDouble(&ok);
    // "nan" and "inf" read as numbers, but no place on a screen is that far.
    return ok && value.isValid() && std::isfinite(result) ? std::optional<double>(result) : std::nullopt;
}

} // namespace

Preferences::Preferences()
    : m_settings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("vantril"),
                 QStringLiteral("vantril"))
{}

std::optional<Preferences::BarPosition> Preferences::barPosition() const
{
    m_settings.beginGroup(QStringLiteral("barPosition"));
    const auto ox = number(m_settings.value(QStringLiteral("ox")));
    const auto oy = number(m_settings.value(QStringLiteral("oy")));
    bool displayOk = false;
    const qlonglong display = m_settings.value(QStringLiteral("display")).toLongLong(&displayOk);
    m_settings.endGroup();
    if (!ox || !oy)
        return std::nullopt;
    const bool displayFits = displayOk && display >= 0 && display <= 0xffffffffLL;
    return BarPosition{displayFits ? static_cast<quint32>(display) : 0u, *ox, *oy};
}

void Preferences::setBarPosition(const BarPosition& position)
{
    m_settings.beginGroup(QStringLiteral("barPosition"));
    m_settings.remove(QString());
    m_settings.setValue(QStringLiteral("display"), static_cast<qlonglong>(position.display));
    m_settings.setValue(QStringLiteral("ox"), position.ox);
    m_settings.setValue(QStringLiteral("oy"), position.oy);
    m_settings.endGroup();
    m_settings.sync();
}

bool Preferences::autoHide() const
{
    return m_settings.value(QStringLiteral("autoHide"), false).toBool();
}

void Preferences::setAutoHide(bool on)
{
    m_settings.setValue(QStringLiteral("autoHide"), on);
}

bool Preferences::showStatusItem() const
{
    return m_settings.value(QStringLiteral("showStatusItem"), true).toBool();
}

void Preferences::setShowStatusItem(bool on)
{
    m_settings.setValue(QStringLiteral("showStatusItem"), on);
}

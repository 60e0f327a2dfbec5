#include "DisplayNumber.h"

namespace {

quint32 fnv1a(const QByteArray& bytes)
{
    quint32 hash = 2166136261u;
    for (const char c : bytes) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 16777619u;
    }
    return hash;
}

} // namespace

quint32 displayNumber(const QString& manufacturer, const QString& model, const QString& serial,
                      const QString& name)
{
    if (!serial.isEmpty())
        return fnv1a((manufacturer + QLatin1Char('|') + model + QLatin1Char('|') + serial).toUtf8());
    return fnv1a((QStringLiteral("name|") + name).toUtf8());
}

#include "UpdateVerdict.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>
#include <QVersionNumber>

namespace UpdateVerdict {

QString of(const QByteArray& feed, const QString& ownVersion, QString* link)
{
    const QJsonObject object = QJsonDocument::fromJson(feed).object();
    const QString latest = object.value(QStringLiteral("version")).toString();
    const QVersionNumber theirs = QVersionNumber::fromString(latest);
    if (theirs.isNull())
        return QStringLiteral("The update feed could not be read.");
    if (theirs <= QVersionNumber::fromString(ownVersion))
        return QStringLiteral("Vantril %1 is up to date.").arg(ownVersion.toHtmlEscaped());
    QString text = QStringLiteral("Vantril %1 is available (you have %2).")
                       .arg(latest.toHtmlEscaped(), ownVersion.toHtmlEscaped());
    const QUrl url(object.value(QStringLiteral("url")).toString(), QUrl::StrictMode);
    if (url.isValid() && url.scheme() == QLatin1String("https") && !url.host().isEmpty()) {
        const QString address = url.toString(QUrl::FullyEncoded);
        if (link)
            *link = address;
        text += QStringLiteral("<br><a href=\"%1\">%1</a>").arg(address.toHtmlEscaped());
    }
    return text;
}

} // namespace UpdateVerdict

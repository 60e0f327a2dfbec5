#include "ConfigReader.h"

#include "config/FileIO.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace {

/// Thrown only inside this file, so that a failure deep in the tree unwinds to `read` in one step.
struct DecodeFailure
{
    QString path;
    QString message;
};

QString describe(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return QStringLiteral("a boolean");
    case QJsonValue::Double:
        return QStringLiteral("a number");
    case QJsonValue::String:
        return QStringLiteral("a string");
    case QJsonValue::Array:
        return QStringLiteral("an array");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("nothing");
}

QString join(const QString& path, const QString& key)
{
    return path.isEmpty() ? key : path + QLatin1Char('.') + key;
}

[[noreturn]] void wrongType(const QString& path, const char* expected, const QJsonValue& found)
{
    throw DecodeFailure{
        path, QStringLiteral("expected %1, found %2").arg(QLatin1String(expected), describe(found))};
}

class Decoder
{
public:
    BarConfig document(const QJsonValue& value) const
    {
        const QJsonObject object = asObject(value, QString());
        BarConfig config;
        config.buttons =
            buttonList(required(object, QString(), QStringLiteral("buttons")), QStringLiteral("buttons"));
        if (const auto sets = optional(object, QStringLiteral("appSets"))) {
            const QString path = QStringLiteral("appSets");
            const QJsonArray array = asArray(*sets, path);
            QList<AppSet> list;
            list.reserve(array.size());
            for (qsizetype i = 0; i < array.size(); ++i)
                list.append(appSet(array.at(i), indexed(path, i)));
            config.appSets = std::move(list);
        }
        config.hotkey = optionalString(object, QString(), QStringLiteral("hotkey"));
        return config;
    }

private:
    static QString indexed(const QString& path, qsizetype index)
    {
        return path + QLatin1Char('[') + QString::number(index) + QLatin1Char(']');
    }

    static QJsonObject asObject(const QJsonValue& value, const QString& path)
    {
        if (!value.isObject())
            wrongType(path.isEmpty() ? QStringLiteral("document") : path, "an object", value);
        return value.toObject();
    }

    static QJsonArray asArray(const QJsonValue& value, const QString& path)
    {
        if (!value.isArray())
            wrongType(path, "an array", value);
        return value.toArray();
    }

    static QJsonValue required(const QJsonObject& object, const QString& path, const QString& key)
    {
        const auto it = object.constFind(key);
        if (it == object.constEnd())
            throw DecodeFailure{path.isEmpty() ? QStringLiteral("document") : path,
                                QStringLiteral("missing required key \"%1\"").arg(key)};
        return it.value();
    }

    /// Absent and null both read as "not there".
    static std::optional<QJsonValue> optional(const QJsonObject& object, const QString& key)
    {
        const auto it = object.constFind(key);
        if (it == object.constEnd() || it.value().isNull())
            return std::nullopt;
        return it.value();
    }

    static QString requiredString(const QJsonObject& object, const QString& path, const QString& key)
    {
        const QJsonValue value = required(object, path, key);
        if (!value.isString())
            wrongType(join(path, key), "a string", value);
        return value.toString();
    }

    static std::optional<QString> optionalString(const QJsonObject& object, const QString& path,
                                                 const QString& key)
    {
        const auto value = optional(object, key);
        if (!value)
            return std::nullopt;
        if (!value->isString())
            wrongType(join(path, key), "a string", *value);
        return value->toString();
    }

    QList<ButtonSpec> buttonList(const QJsonValue& value, const QString& path) const
    {
        const QJsonArray array = asArray(value, path);
        QList<ButtonSpec> list;
        list.reserve(array.size());
        for (qsizetype i = 0; i < array.size(); ++i)
            list.append(button(array.at(i), indexed(path, i)));
        return list;
    }

    ButtonSpec button(const QJsonValue& value, const QString& path) const
    {
        const QJsonObject object = asObject(value, path);
        ButtonSpec spec;
        spec.title = requiredString(object, path, QStringLiteral("title"));
        spec.symbol = requiredString(object, path, QStringLiteral("symbol"));
        spec.action = requiredString(object, path, QStringLiteral("action"));
        spec.argument = optionalString(object, path, QStringLiteral("argument"));
        spec.color = optionalString(object, path, QStringLiteral("color"));
        spec.iconPath = optionalString(object, path, QStringLiteral("iconPath"));
        if (const auto locked = optional(object, QStringLiteral("locked"))) {
            if (!locked->isBool())
                wrongType(join(path, QStringLiteral("locked")), "a boolean", *locked);
            spec.locked = locked->toBool();
        }
        if (const auto children = optional(object, QStringLiteral("children")))
            spec.children = buttonList(*children, join(path, QStringLiteral("children")));
        return spec;
    }

    AppSet appSet(const QJsonValue& value, const QString& path) const
    {
        const QJsonObject object = asObject(value, path);
        AppSet set;
        set.app = requiredString(object, path, QStringLiteral("app"));
        set.name = requiredString(object, path, QStringLiteral("name"));
        set.buttons = buttonList(required(object, path, QStringLiteral("buttons")),
                                 join(path, QStringLiteral("buttons")));
        return set;
    }
};

/// Line and column (both from 1) of a byte offset, counting columns in characters.
QString position(const QByteArray& bytes, qsizetype offset)
{
    offset = qBound<qsizetype>(0, offset, bytes.size());
    const QByteArray before = bytes.left(offset);
    const qsizetype lineStart = before.lastIndexOf('\n') + 1;
    const qsizetype line = before.count('\n') + 1;
    const qsizetype column = QString::fromUtf8(before.mid(lineStart)).size() + 1;
    return QStringLiteral("line %1, column %2").arg(line).arg(column);
}

} // namespace

namespace ConfigReader {

Result read(const QByteArray& bytes)
{
    QJsonParseError parseError;
    // Qt's parser refuses nesting deeper than its own limit with an error, so no input can exhaust the stack.
    const QJsonDocument json = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return {std::nullopt,
                position(bytes, parseError.offset) + QStringLiteral(": ") + parseError.errorString()};
    if (!json.isObject())
        return {std::nullopt,
                QStringLiteral("document: expected an object, found %1")
                    .arg(json.isArray() ? QStringLiteral("an array") : QStringLiteral("nothing"))};
    try {
        return {Decoder().document(json.object()), QString()};
    } catch (const DecodeFailure& failure) {
        return {std::nullopt, failure.path + QStringLiteral(": ") + failure.message};
    }
}

std::optional<BarConfig> decode(const QByteArray& bytes)
{
    return read(bytes).config;
}

std::optional<BarConfig> readFile(const QString& path)
{
    const auto bytes = FileIO::read(path);
    return bytes ? decode(*bytes) : std::nullopt;
}

} // namespace ConfigReader

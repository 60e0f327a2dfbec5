#include "InstanceProtocol.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QByteArray line(const QJsonObject& object)
{
    // Compact JSON escapes every line break inside strings, so the newline ends the message.
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<QJsonObject> object(const QByteArray& line)
{
    if (line.size() > InstanceProtocol::maxLineBytes)
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(line.trimmed());
    if (!document.isObject())
        return std::nullopt;
    return document.object();
}

} // namespace

namespace InstanceProtocol {

QByteArray encodeRequest(const QStringList& arguments)
{
    return line({{QStringLiteral("version"), version},
                 {QStringLiteral("arguments"), QJsonArray::fromStringList(arguments)}});
}

Request decodeRequest(const QByteArray& bytes)
{
    const auto request = object(bytes);
    const auto unreadable = QStringLiteral("vantril: the running bar could not read the request");
    if (!request)
        return {std::nullopt, unreadable};
    const QJsonValue sent = request->value(QStringLiteral("version"));
    if (!sent.isDouble() || sent.toDouble() != sent.toInt())
        return {std::nullopt, unreadable};
    if (sent.toInt() != version) {
        return {std::nullopt, QStringLiteral("vantril: the running bar understands commands of version %1, "
                                             "not of version %2; quit it and start this one")
                                  .arg(version)
                                  .arg(sent.toInt())};
    }
    const QJsonValue words = request->value(QStringLiteral("arguments"));
    if (!words.isArray())
        return {std::nullopt, unreadable};
    QStringList arguments;
    for (const QJsonValue& word : words.toArray()) {
        if (!word.isString())
            return {std::nullopt, unreadable};
        arguments.append(word.toString());
    }
    return {arguments, {}};
}

QByteArray encodeReply(const Reply& reply)
{
    QJsonObject object{{QStringLiteral("status"), reply.status}};
    if (!reply.message.isEmpty())
        object.insert(QStringLiteral("message"), reply.message);
    return line(object);
}

std::optional<Reply> decodeReply(const QByteArray& bytes)
{
    const auto reply = object(bytes);
    if (!reply)
        return std::nullopt;
    const QJsonValue status = reply->value(QStringLiteral("status"));
    const QJsonValue message = reply->value(QStringLiteral("message"));
    // An exit status is what a shell can see: 0 to 255.
    if (!status.isDouble() || status.toDouble() != status.toInt() || status.toInt() < 0 ||
        status.toInt() > 255)
        return std::nullopt;
    if (!message.isUndefined() && !message.isString())
        return std::nullopt;
    return Reply{status.toInt(), message.toString()};
}

} // namespace InstanceProtocol

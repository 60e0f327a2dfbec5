#pragma once

#include <QByteArray>
#include <QStringList>
#include <optional>

/// What a starting copy of the program and the running bar say to each other over the local socket:
/// one request, the starting copy's command line, and one reply, the exit status it is to end with and
/// a line for it to print. Each is one line of compact JSON. The request carries a version, so that a
/// bar of another version can say that it does not understand instead of guessing.
namespace InstanceProtocol {

inline constexpr int version = 1;
/// A command line is short; a peer that sends more than this is not a copy of this program.
inline constexpr qsizetype maxLineBytes = 64 * 1024;

struct Reply
{
    int status = 0;
    QString message; ///< printed by the sender: on standard output after success, else on standard error

    bool operator==(const Reply&) const = default;
};

struct Request
{
    std::optional<QStringList> arguments;
    /// When there are none: the line that tells the sender why its request was not understood.
    QString error;
};

QByteArray encodeRequest(const QStringList& arguments);
Request decodeRequest(const QByteArray& line);
QByteArray encodeReply(const Reply& reply);
/// Nothing when the line is not a reply.
std::optional<Reply> decodeReply(const QByteArray& line);

} // namespace InstanceProtocol

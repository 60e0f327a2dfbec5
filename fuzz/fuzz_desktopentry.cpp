// Desktop entries: any text reads without harm, and what the program writes into one (a value, or the
// program's own path as the argument of "Exec") reads back as exactly what was written, through the
// value escapes and then the quoting and "%%" rules of "Exec".

#include "platform/DesktopEntryFile.h"

#include <QIODevice>
#include <QTextStream>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

[[noreturn]] void fail(const char* what, const QString& text)
{
    std::fprintf(stderr, "%s:\n%s\n", what, text.toUtf8().constData());
    std::abort();
}

std::optional<QString> read(QString text, const QString& key)
{
    QTextStream in(&text, QIODevice::ReadOnly);
    return desktopEntryValue(in, key);
}

/// How a launcher takes one quoted argument apart again, as the desktop entry rules describe it.
std::optional<QString> unquoted(const QString& argument)
{
    if (argument.size() < 2 || !argument.startsWith(u'"') || !argument.endsWith(u'"'))
        return std::nullopt;
    QString result;
    for (qsizetype i = 1; i + 1 < argument.size(); ++i) {
        QChar c = argument.at(i);
        if (c == u'"' || c == u'`' || c == u'$')
            return std::nullopt; // reserved characters must be escaped inside quotes
        if (c == u'\\') {
            if (i + 2 == argument.size())
                return std::nullopt;
            c = argument.at(++i);
            if (c != u'"' && c != u'`' && c != u'$' && c != u'\\')
                return std::nullopt;
        } else if (c == u'%') {
            if (i + 2 == argument.size() || argument.at(++i) != u'%')
                return std::nullopt; // a field code, which would be replaced at launch
        }
        result += c;
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    for (const char* key : {"Name", "Exec", "Hidden"}) {
        QByteArray copy = bytes;
        QTextStream in(&copy, QIODevice::ReadOnly);
        if (const auto value = desktopEntryValue(in, QString::fromLatin1(key)); value && !bytes.contains(key))
            fail("a value for a key the text does not hold", *value);
    }

    QString value(qsizetype(size / 2), Qt::Uninitialized);
    std::memcpy(value.data(), data, size / 2 * 2);
    const QString entry = QStringLiteral("[Desktop Entry]\nType=Application\nName=") +
                          desktopEntryEscaped(value) + QStringLiteral("\nExec=") +
                          desktopEntryExecArgument(value) + QStringLiteral("\n");
    if (read(entry, QStringLiteral("Name")) != value)
        fail("a written value reads back differently", entry);
    const auto exec = read(entry, QStringLiteral("Exec"));
    if (!exec || unquoted(*exec) != value)
        fail("a written program path reads back differently", entry);
    return 0;
}

#include "Log.h"

#include <cstdio>

namespace Log {

void line(const QString& text)
{
    // Not through qWarning: Qt may send its messages to the journal instead of standard error.
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

} // namespace Log

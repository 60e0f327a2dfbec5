#include "FolderLock.h"

#include <QFile>
#include <QSysInfo>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Another copy letting go may remove the file between this one's open and lock; a few tries settle it.
constexpr int tries = 8;

bool sameFile(int descriptor, const QByteArray& path)
{
    struct stat opened
    {};
    struct stat named
    {};
    return ::fstat(descriptor, &opened) == 0 && ::stat(path.constData(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

void nameHolder(int descriptor)
{
    const QByteArray text =
        QByteArray::number(qint64(::getpid())) + "\nvantril\n" + QSysInfo::machineHostName().toUtf8() + '\n';
    // Only for the message of a waiting copy: a short or failed write costs nothing else.
    if (::ftruncate(descriptor, 0) == 0) [[maybe_unused]]
        const auto written = ::pwrite(descriptor, text.constData(), size_t(text.size()), 0);
}

} // namespace

FolderLock::FolderLock(QString path, int descriptor)
    : m_path(std::move(path))
    , m_descriptor(descriptor)
{}

FolderLock::~FolderLock()
{
    ::unlink(QFile::encodeName(m_path).constData());
    ::close(m_descriptor);
}

FolderLock::Attempt FolderLock::take(const QString& path)
{
    const QByteArray encoded = QFile::encodeName(path);
    for (int attempt = 0; attempt < tries; ++attempt) {
        const int descriptor = ::open(encoded.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (descriptor < 0) {
            const bool denied = errno == EACCES || errno == EPERM;
            return {Outcome::Failed, nullptr,
                    denied ? QStringLiteral("permission denied") : QStringLiteral("it cannot be created")};
        }
        if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            const int error = errno;
            ::close(descriptor);
            if (error == EWOULDBLOCK || error == EINTR)
                return {Outcome::Held, nullptr, QString()};
            return {Outcome::Failed, nullptr, QStringLiteral("it cannot be locked")};
        }
        if (!sameFile(descriptor, encoded)) {
            ::close(descriptor);
            continue;
        }
        nameHolder(descriptor);
        return {Outcome::Taken, std::unique_ptr<FolderLock>(new FolderLock(path, descriptor)), QString()};
    }
    return {Outcome::Held, nullptr, QString()};
}

FolderLock::Holder FolderLock::holder(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QList<QByteArray> lines = file.read(4096).split('\n');
    Holder holder;
    holder.pid = lines.value(0).trimmed().toLongLong();
    holder.host = QString::fromUtf8(lines.value(2).trimmed());
    return holder;
}

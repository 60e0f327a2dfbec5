#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <cstdio>
#include <unistd.h>

TempConfigDir::TempConfigDir()
    : m_previous(qgetenv("VANTRIL_CONFIG_DIR"))
    , m_wasSet(qEnvironmentVariableIsSet("VANTRIL_CONFIG_DIR"))
{
    qputenv("VANTRIL_CONFIG_DIR", m_dir.path().toLocal8Bit());
}

TempConfigDir::~TempConfigDir()
{
    if (m_wasSet)
        qputenv("VANTRIL_CONFIG_DIR", m_previous);
    else
        qunsetenv("VANTRIL_CONFIG_DIR");
}

StderrCapture::StderrCapture()
    : m_path(m_dir.filePath(QStringLiteral("stderr.txt")))
{
    std::fflush(stderr);
    m_savedFd = ::dup(STDERR_FILENO);
    if (std::FILE* file = std::fopen(QFile::encodeName(m_path).constData(), "w")) {
        ::dup2(::fileno(file), STDERR_FILENO);
        std::fclose(file);
    }
}

StderrCapture::~StderrCapture()
{
    std::fflush(stderr);
    if (m_savedFd >= 0) {
        ::dup2(m_savedFd, STDERR_FILENO);
        ::close(m_savedFd);
    }
}

QString StderrCapture::text()
{
    std::fflush(stderr);
    return QString::fromUtf8(readAll(m_path));
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

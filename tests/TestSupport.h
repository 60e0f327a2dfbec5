#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// Points VANTRIL_CONFIG_DIR at a fresh temporary folder for the lifetime of the object.
class TempConfigDir
{
public:
    TempConfigDir();
    ~TempConfigDir();
    TempConfigDir(const TempConfigDir&) = delete;
    TempConfigDir& operator=(const TempConfigDir&) = delete;

    QString path() const { return m_dir.path(); }
    QString file(const QString& relative) const { return m_dir.filePath(relative); }
    QString buttonsJson() const { return file(QStringLiteral("buttons.json")); }
    QString backups() const { return file(QStringLiteral("backups")); }

private:
    QTemporaryDir m_dir;
    QByteArray m_previous;
    bool m_wasSet = false;
};

/// Collects everything written to standard error (the program's log lines) while it lives.
class StderrCapture
{
public:
    StderrCapture();
    ~StderrCapture();
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

    /// What was written so far.
    QString text();

private:
    QTemporaryDir m_dir;
    QString m_path;
    int m_savedFd = -1;
};

QByteArray readAll(const QString& path);
bool writeAll(const QString& path, const QByteArray& bytes);
/// Names of the entries in a folder, sorted, empty when it does not exist.
QStringList entries(const QString& folder);

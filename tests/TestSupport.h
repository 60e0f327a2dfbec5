#pragma once

#include "config/BarConfig.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QTemporaryDir>
#include <functional>

// Strings in the tests are written u"…"_s.
using namespace Qt::StringLiterals;

/// Points VANTRIL_CONFIG_DIR at a fresh temporary folder for the lifetime of the object. Folders and
/// files a test made unreadable or read-only are opened up again for the cleanup.
class TempConfigDir
{
public:
    TempConfigDir();
    ~TempConfigDir();
    TempConfigDir(const TempConfigDir&) = delete;
    TempConfigDir& operator=(const TempConfigDir&) = delete;

    QString path() const { return m_dir.path(); }
    QString file(const QString& relative) const { return m_dir.filePath(relative); }
    QString buttonsJson() const { return file(u"buttons.json"_s); }
    QString backups() const { return file(u"backups"_s); }

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
/// Every regular file under a folder, by path relative to it, with its bytes: what a failed save must
/// leave exactly as it was.
QMap<QString, QByteArray> filesUnder(const QString& folder);
/// Gives the owner full access to the folder and everything in it again, so a test can read what a child
/// process left behind whatever modes the test gave it.
void openUp(const QString& folder);

/// Runs `body` in a forked copy of the test and returns its exit code (-1 when it did not exit by itself).
/// The child is held to `fileSizeLimit` bytes per file when that is not negative, which makes writes fail
/// part-way as on a full disk. When the tests run as root, the child first becomes an unprivileged user
/// owning `folder`, so that file modes bind it as they bind any user.
int inChild(const QString& folder, const std::function<int()>& body, qint64 fileSizeLimit = -1);

/// A button of the given kind with every field but title, action and argument absent.
inline ButtonSpec button(const QString& title, const QString& action = u"open"_s,
                         std::optional<QString> argument = {})
{
    return ButtonSpec::make(title, QString(), action, std::move(argument));
}

/// A bar of `buttons`, without sets or hot key.
inline BarConfig barOf(QList<ButtonSpec> buttons)
{
    return {std::move(buttons), std::nullopt, std::nullopt};
}

/// A stack holding `members`.
inline ButtonSpec stackOf(const QString& title, QList<ButtonSpec> members = {})
{
    ButtonSpec spec = button(title, u"group"_s);
    spec.children = std::move(members);
    return spec;
}

/// The titles of `buttons`, in order.
inline QStringList titles(const QList<ButtonSpec>& buttons)
{
    QStringList list;
    for (const ButtonSpec& spec : buttons)
        list.append(spec.title);
    return list;
}

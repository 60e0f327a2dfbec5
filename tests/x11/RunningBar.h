#pragma once

#include "X11Windows.h"

#include <QElapsedTimer>
#include <QMenu>
#include <QProcess>
#include <QTemporaryDir>
#include <utility>

using Variables = QList<std::pair<QString, QString>>;

/// `variables` with the application in front taken to have no buttons of its own, so that the bar and
/// its menus are the same whichever window is active.
inline Variables withoutFrontApp(Variables variables = {})
{
    variables.prepend({QStringLiteral("VANTRIL_CONTEXT_APP"), QStringLiteral("none")});
    return variables;
}

/// Folders of one test: the program's configuration folder and an XDG config home, inside a fresh
/// temporary folder, so that no test sees what another one saved.
class TestHome
{
public:
    TestHome();

    bool isValid() const { return m_dir.isValid(); }
    QString path(const QString& name) const { return m_dir.filePath(name); }
    QString configDir() const { return path(QStringLiteral("vantril")); }
    QString xdgConfigHome() const { return path(QStringLiteral("xdg")); }
    QString buttonsJson() const { return path(QStringLiteral("vantril/buttons.json")); }
    QString backupsDir() const { return path(QStringLiteral("vantril/backups")); }
    QString preferencesFile() const { return path(QStringLiteral("xdg/vantril/vantril.ini")); }
    QString autostartEntry() const { return path(QStringLiteral("xdg/autostart/vantril.desktop")); }
    QByteArray buttons() const;
    /// Writes buttons.json, making its folder first, as it would be before the program starts.
    bool writeButtons(const QByteArray& bytes) const;

    /// The machine's environment with these folders, without its VANTRIL_ variables, or a proxy that
    /// would stand between the program and a feed served here, and with `variables` added.
    QProcessEnvironment environment(const Variables& variables = {}) const;

private:
    QTemporaryDir m_dir;
};

/// A program started for a test. Its standard error is kept; its end, when it goes out of scope, waits
/// until the window manager no longer lists its windows, so that none lingers into the next step.
class TestProcess
{
public:
    TestProcess(const QString& program, const QStringList& arguments,
                const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    virtual ~TestProcess();
    TestProcess(const TestProcess&) = delete;
    TestProcess& operator=(const TestProcess&) = delete;

    QProcess& process() { return m_process; }
    qint64 pid() const { return m_process.processId(); }
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    /// Everything written to standard error so far.
    QString log();

    /// Its window titled `name`, while that is on screen.
    std::optional<quintptr> shownWindow(const QString& name) const;
    /// Waits for its window titled `name` to be on screen and, when `active`, to have the keyboard focus.
    std::optional<quintptr> waitForWindow(const QString& name, bool active = false);
    void stop(bool gently = false);

private:
    QProcess m_process;
    QString m_log;
};

/// The program with the folders of a TestHome. When the test fails, what the program logged and what
/// buttons.json holds are printed as it goes.
class RunningBar : public TestProcess
{
public:
    explicit RunningBar(const TestHome& home, const Variables& variables = {},
                        const QString& program = QStringLiteral(VANTRIL_BINARY),
                        const QStringList& arguments = {});
    ~RunningBar() override;

    /// Waits for the bar to be on screen, and `width` wide when that is given.
    std::optional<quintptr> waitForBar(std::optional<int> width = std::nullopt);
    quintptr bar() const { return m_bar; }
    /// Waits until the bar is `width` wide; frame() is where it then is.
    bool waitForWidth(int width, int timeoutMs = windowTimeoutMs);
    /// Where the bar was when last looked at.
    QRect frame() const { return m_frame; }
    std::optional<quintptr> shownFlyout() const { return shownWindow(QStringLiteral("Vantril flyout")); }
    std::optional<xcb_window_t> shownMenu() const { return ::shownMenu(pid()); }
    /// Right-clicks at `global` and waits for the program's menu.
    std::optional<xcb_window_t> openMenu(const QPoint& global);

private:
    QString m_buttonsJson;
    quintptr m_bar = 0;
    QRect m_frame;
};

/// The keys that choose `title` in a menu of `items` just opened: Down from nothing selected reaches the
/// first item and skips separators. Empty when the menu has no such item.
template<typename Item>
QStringList keysFor(const QList<Item>& items, const QString& title)
{
    QStringList names;
    for (const Item& item : items) {
        if (item.isSeparator())
            continue;
        names.append(QStringLiteral("Down"));
        if (item.title == title) {
            names.append(QStringLiteral("Return"));
            return names;
        }
    }
    return {};
}

#pragma once

#include <QObject>
#include <QString>

/// The script that makes KWin report each window it activates (data/kwin/front-application.js), loaded
/// into KWin over its scripting interface on the session bus while the bar runs.
class KWinFrontScript : public QObject
{
    Q_OBJECT

public:
    KWinFrontScript() = default;
    /// Unloads the script again, so that KWin does not go on calling a bar that is gone.
    ~KWinFrontScript() override;

    /// Whether KWin's scripting interface is on the session bus.
    static bool isOffered();
    /// Where the script is: beside the program (installed, or in the build folder), else in the XDG
    /// data folders; empty when it is nowhere.
    static QString installedPath();
    /// The name KWin knows the script by.
    static QString pluginName();

    /// Loads and runs the script at `path` in the background; isLoaded() tells how it went.
    void load(const QString& path);
    bool isLoaded() const { return m_loaded; }

private:
    void unloadThenLoad();
    void loadOnce();
    void run(int id, bool kwin6Path);

    QString m_path;
    int m_attempts = 0;
    bool m_inKWin = false; ///< loaded, so to be unloaded, even if it did not run
    bool m_loaded = false;
};

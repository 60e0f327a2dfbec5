#pragma once

#include <QObject>
#include <QProcessEnvironment>

class BarPlacement;
class ConfigDocument;
class ContextTracker;
class DragState;
class EditorLauncher;
class TapRunner;
class UpdateCheck;

/// What a script or a test asks of the bar at start-up through VANTRIL_ variables: where the bar comes
/// up, which application counts as in front, the configuration commands, and later a move, a tap, the
/// editor or an update check once the bar has settled. Without such variables it does nothing.
class StartupScript : public QObject
{
    Q_OBJECT

public:
    explicit StartupScript(QProcessEnvironment environment, QObject* parent = nullptr);

    /// VANTRIL_TOP: the bar at the top centre, whatever place was saved.
    bool barAtTop() const;
    /// VANTRIL_CONTEXT_APP ("id|name") fixes the application in front, before the bar is first built; a
    /// value that names none turns the applications' sets off.
    void fixContext(ContextTracker& context) const;
    /// Without VANTRIL_CONTEXT_APP the desktop's front application is followed.
    void followContext(ContextTracker& context) const;
    /// VANTRIL_RESTORE, VANTRIL_REMOVE_PRESET and VANTRIL_PRESET, before the bar shows.
    void applyConfigCommands(ConfigDocument& document) const;

    /// The parts the later steps act on.
    struct Parts
    {
        ConfigDocument& document;
        BarPlacement& placement;
        EditorLauncher& editor;
        TapRunner& taps;
        const DragState& drag;
        UpdateCheck* updater;
    };
    /// VANTRIL_MOVE ("dx,dy"), VANTRIL_OPEN (a button's title), VANTRIL_SHOW_EDITOR (a button's title)
    /// and VANTRIL_CHECK_UPDATES, each once the bar has had time to settle.
    void scheduleLaterSteps(const Parts& parts);

private:
    QString value(const char* name) const;
    bool has(const char* name) const;

    QProcessEnvironment m_environment;
};

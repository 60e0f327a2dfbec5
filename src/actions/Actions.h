#pragma once

#include "actions/Keys.h"

#include <QString>
#include <QStringList>

struct ButtonSpec;
class Platform;
class RunQuestion;

/// Carries out what a button does. Nothing is shown on success; an unknown kind beeps, and every
/// other failure (a missing file, a program that will not start) is silent.
///
/// Opening (an "open" chip, a "folder" chip when run, a file address of a "url" chip, a row of a folder
/// listing) never starts anything by itself: a program or a desktop entry is first put to the user
/// through `question`, and without one it is not started at all. Only "app", "shortcut" and "shell"
/// chips start programs, the ones their user wrote.
class Actions
{
public:
    explicit Actions(Platform& platform, RunQuestion* question = nullptr);

    /// Runs the button's action; a missing argument does nothing, except for "newFolder".
    void run(const ButtonSpec& button);
    /// Starts an executable with arguments, detached, without waiting or reporting.
    void launch(const QString& path, const QStringList& arguments);
    /// Opens a file or folder with its default application without asking, since nothing that opens
    /// documents runs them: for files the program keeps itself, such as buttons.json.
    void openDocument(const QString& path);

    Keys& keys() { return m_keys; }

    /// The folder holding the scripts that "shortcut" buttons run by name.
    static QString shortcutsFolder();

private:
    void open(const QString& path);
    void openUrl(const QString& text);
    void runShortcut(const QString& name);
    void makeNewFolder();

    Platform& m_platform;
    RunQuestion* m_question;
    Keys m_keys;
};

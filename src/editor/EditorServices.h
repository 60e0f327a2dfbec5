#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

/// An installed application the editor offers for "app" buttons.
struct ApplicationChoice
{
    QString name; ///< shown in the list
    QString id;   ///< stored as the button's argument: the desktop-entry id without ".desktop"
};

/// What the editor needs from the rest of the program.
struct EditorServices
{
    std::function<QList<ApplicationChoice>()> applications;
    QStringList shortcutNames;
    QString shortcutsFolder;
};

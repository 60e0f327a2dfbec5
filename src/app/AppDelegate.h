#pragma once

#include "config/ConfigDocument.h"

#include <QProcessEnvironment>
#include <memory>

/// The one owner of the program's run-time state.
///
/// The configuration is read once at launch: the document it starts from is both the one shown and
/// the one last saved, so reading it twice would only repeat the recovery and its log line.
class AppDelegate
{
public:
    AppDelegate() = default;
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// Loads the configuration, keeps a backup of it, and applies the start-up commands.
    void finishLaunching(const QProcessEnvironment& environment);

    ConfigDocument* document() const { return m_document.get(); }

private:
    std::unique_ptr<ConfigDocument> m_document;
};

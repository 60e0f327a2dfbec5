#pragma once

#include <QStringList>
#include <optional>

/// What a command line asks of the bar of its configuration folder, whether that bar runs already or
/// is about to start.
struct BarCommand
{
    enum class Kind
    {
        Show,   ///< a plain start, and "--show"
        Toggle, ///< "--toggle"
        Hide,   ///< "--hide"
        Open,   ///< "--open TITLE": a tap on that button
        Quit,   ///< "--quit"
    };
    Kind kind = Kind::Show;
    QString title; ///< Open: the button's title

    /// Hiding or ending a bar that does not run needs no bar to be started first.
    bool startsBar() const { return kind != Kind::Hide && kind != Kind::Quit; }

    struct Parsed;
    /// The first command word in `arguments` decides. Words the program does not know are ignored, as
    /// they always were, so that without a command word the bar is started, or shown when it runs.
    static Parsed parse(const QStringList& arguments);

    bool operator==(const BarCommand&) const = default;
};

/// The command, or the one line that says why there is none.
struct BarCommand::Parsed
{
    std::optional<BarCommand> command;
    QString error;
};

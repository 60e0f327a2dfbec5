#pragma once

#include <QString>
#include <functional>

/// Asks the user whether a program or desktop entry they opened should run or open as a document,
/// as file managers do: nothing is started on a click alone.
class RunQuestion
{
public:
    enum class Answer
    {
        Run,
        Open,
        Cancel,
    };

    RunQuestion() = default;
    virtual ~RunQuestion() = default;
    Q_DISABLE_COPY_MOVE(RunQuestion)

    /// Asks about the file called `name`; `answered` is called once, at once or later, or never when
    /// the question is abandoned with the program.
    virtual void ask(const QString& name, std::function<void(Answer)> answered) = 0;
};

#pragma once

#include "platform/RunQuestion.h"

#include <QPointer>

class QMessageBox;

/// The question a file manager asks before a program runs: "“name” is a program. Run it, or open it as
/// a document?", with Run, Open and Cancel. Unlike the bar it is an ordinary window that takes the
/// keyboard, so that Escape cancels and Return takes the default, Cancel. One question at a time: a new
/// one cancels the one still open.
class RunQuestionBox final : public RunQuestion
{
public:
    RunQuestionBox() = default;
    ~RunQuestionBox() override;

    void ask(const QString& name, std::function<void(Answer)> answered) override;

private:
    QPointer<QMessageBox> m_box;
};

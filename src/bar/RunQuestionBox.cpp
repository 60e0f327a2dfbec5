#include "RunQuestionBox.h"

#include <QMessageBox>
#include <QPushButton>

RunQuestionBox::~RunQuestionBox()
{
    // Quitting abandons the question: nobody is told, and so nothing runs.
    if (m_box) {
        m_box->disconnect();
        delete m_box;
    }
}

void RunQuestionBox::ask(const QString& name, std::function<void(Answer)> answered)
{
    if (m_box)
        m_box->reject();

    // No title of its own, as a file manager's question has none; Qt puts the program's name there, which
    // says who asks.
    auto* box = new QMessageBox;
    box->setIcon(QMessageBox::Question);
    // Plain text: a file name is no markup, whatever it looks like.
    box->setTextFormat(Qt::PlainText);
    box->setText(QStringLiteral("\u201c%1\u201d is a program. Run it, or open it as a document?").arg(name));
    // No mnemonics: a message box clicks the button whose letter is typed even without Alt, and a
    // keystroke meant for another window must never start a program.
    QPushButton* run = box->addButton(QStringLiteral("Run"), QMessageBox::AcceptRole);
    QPushButton* open = box->addButton(QStringLiteral("Open"), QMessageBox::ActionRole);
    // Not the standard Cancel button, which alone would carry an icon.
    QPushButton* cancel = box->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box->setDefaultButton(cancel);
    box->setEscapeButton(cancel);
    // Closing the window counts as Cancel too: it finishes with no button clicked.
    QObject::connect(box, &QDialog::finished, box, [box, run, open, answered = std::move(answered)] {
        const QAbstractButton* clicked = box->clickedButton();
        box->deleteLater();
        answered(clicked == run ? Answer::Run : clicked == open ? Answer::Open : Answer::Cancel);
    });
    m_box = box;
    box->show();
    box->raise();
    box->activateWindow();
}

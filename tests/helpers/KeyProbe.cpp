// A window that takes the keyboard focus and reports what reaches it, for tests that synthesise input:
//   keyprobe PRESSES_FILE TEXT_FILE
// Every key press appends "press key=Key_Dollar text=$ mods=ctrl,shift" to PRESSES_FILE; the line
// edit's whole text is written to TEXT_FILE whenever it changes. The window is titled "keyprobe".

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMetaEnum>
#include <QSaveFile>
#include <QStringList>
#include <cstdio>

namespace {

QString keyName(int key)
{
    const char* name = QMetaEnum::fromType<Qt::Key>().valueToKey(key);
    return name ? QString::fromLatin1(name) : QString::number(key);
}

QString modifierNames(Qt::KeyboardModifiers modifiers)
{
    QStringList names;
    if (modifiers & Qt::ControlModifier)
        names.append(QStringLiteral("ctrl"));
    if (modifiers & Qt::AltModifier)
        names.append(QStringLiteral("alt"));
    if (modifiers & Qt::ShiftModifier)
        names.append(QStringLiteral("shift"));
    // Qt reports the Super key as Meta on X11.
    if (modifiers & Qt::MetaModifier)
        names.append(QStringLiteral("meta"));
    return names.join(u',');
}

/// Control characters and spaces would break the one-line-per-press format.
QString printable(const QString& text)
{
    QString out;
    for (const QChar c : text)
        out += c.isPrint() && c != u' '
                   ? QString(c)
                   : QStringLiteral("\\x%1").arg(static_cast<int>(c.unicode()), 2, 16, QChar(u'0'));
    return out;
}

class PressLog : public QObject
{
public:
    explicit PressLog(const QString& path)
        : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append))
            std::fprintf(stderr, "keyprobe: cannot write %s\n", qPrintable(path));
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress) {
            const auto* key = static_cast<QKeyEvent*>(event);
            const QString line =
                QStringLiteral("press key=%1 text=%2 mods=%3\n")
                    .arg(keyName(key->key()), printable(key->text()), modifierNames(key->modifiers()));
            m_file.write(line.toUtf8());
            // Flushed at once: the test reads the file while this program keeps running.
            m_file.flush();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QFile m_file;
};

void writeText(const QString& path, const QString& text)
{
    // Replaced in one step, so that a reader never sees a half-written file.
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(text.toUtf8());
    file.commit();
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = QApplication::arguments();
    if (args.size() != 3) {
        std::fprintf(stderr, "usage: keyprobe PRESSES_FILE TEXT_FILE\n");
        return 2;
    }
    const QString textPath = args.at(2);

    QLineEdit edit;
    edit.setWindowTitle(QStringLiteral("keyprobe"));
    edit.resize(400, 40);
    PressLog log(args.at(1));
    edit.installEventFilter(&log);
    QObject::connect(&edit, &QLineEdit::textChanged, &edit,
                     [textPath](const QString& text) { writeText(textPath, text); });

    edit.show();
    edit.raise();
    edit.activateWindow();
    edit.setFocus();
    return QApplication::exec();
}

// The windows the end-to-end tests put beside the bar, one program with a mode for each:
//   testwindow keys LOG TEXT
//     takes the keyboard focus; each key press appends its modifiers and Qt's name for the key to LOG
//     ("ctrl,shift+Key_Dollar", "Key_B"), and the line edit's whole text replaces TEXT when it changes.
//   testwindow clicks LOG X Y WIDTH HEIGHT
//     a borderless window at that place; each mouse press appends "1 at 700,870" to LOG (the button,
//     in screen coordinates).
//   testwindow drag PATH...
//     a left press starts one drag of the files over XDND; standard output gets "started" when it
//     begins and "finished" when it ends, so that a test moves the pointer only once the drag owns it.
//   testwindow app CLASS
//     an ordinary application window.
// Windows are titled "keyprobe", "clickprobe", "dragsource" and CLASS, and carry that as their class too.
// A copy under any other name is a stray program: started, it only writes "ran" into a file named after
// itself with ".ran" added, so that a test sees whether anything started it.

#include <QApplication>
#include <QDrag>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMetaEnum>
#include <QMimeData>
#include <QSaveFile>
#include <QUrl>
#include <algorithm>
#include <climits>
#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

class TestWindow : public QLineEdit
{
public:
    TestWindow(const QString& mode, const QStringList& args)
        : m_mode(mode)
        , m_args(args)
        , m_log(args.value(0))
    {
        if (mode == QLatin1String("keys") || mode == QLatin1String("clicks"))
            m_log.open(QIODevice::WriteOnly | QIODevice::Append);
        if (mode == QLatin1String("keys")) {
            connect(this, &QLineEdit::textChanged, this, [path = args.value(1)](const QString& text) {
                // Replaced in one step, so that a reader never sees a half-written file.
                QSaveFile file(path);
                if (file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) >= 0)
                    file.commit();
            });
        }
        if (mode == QLatin1String("clicks")) {
            setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
            setGeometry(args.value(1).toInt(), args.value(2).toInt(), args.value(3).toInt(),
                        args.value(4).toInt());
        } else {
            resize(320, 160);
        }
    }

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        QStringList mods;
        const std::pair<Qt::KeyboardModifier, const char*> names[] = {{Qt::ControlModifier, "ctrl"},
                                                                      {Qt::AltModifier, "alt"},
                                                                      {Qt::ShiftModifier, "shift"},
                                                                      // Qt reports Super as Meta on X11.
                                                                      {Qt::MetaModifier, "meta"}};
        for (const auto& [modifier, name] : names) {
            if (event->modifiers() & modifier)
                mods.append(QLatin1String(name));
        }
        const char* key = QMetaEnum::fromType<Qt::Key>().valueToKey(event->key());
        note((mods.isEmpty() ? QString() : mods.join(u',') + u'+') +
             (key ? QLatin1String(key) : QString::number(event->key())));
        QLineEdit::keyPressEvent(event);
    }

    void mousePressEvent(QMouseEvent* event) override
    {
        const QPoint at = event->globalPosition().toPoint();
        if (m_mode == QLatin1String("clicks"))
            note(QStringLiteral("%1 at %2,%3").arg(int(event->button())).arg(at.x()).arg(at.y()));
        else if (m_mode == QLatin1String("drag") && event->button() == Qt::LeftButton)
            drag();
        else
            QLineEdit::mousePressEvent(event);
    }

private:
    /// Flushed at once: the test reads the file while this program keeps running.
    void note(const QString& line)
    {
        m_log.write((line + u'\n').toUtf8());
        m_log.flush();
    }

    void drag()
    {
        QList<QUrl> urls;
        for (const QString& path : m_args)
            urls.append(QUrl::fromLocalFile(path));
        auto* data = new QMimeData;
        data->setUrls(urls);
        auto* drag = new QDrag(this);
        drag->setMimeData(data);
        // A transparent picture: the default one would sit under the pointer and hide what the target draws.
        QPixmap picture(1, 1);
        picture.fill(Qt::transparent);
        drag->setPixmap(picture);
        std::printf("started\n");
        std::fflush(stdout);
        drag->exec(Qt::CopyAction | Qt::LinkAction, Qt::CopyAction);
        std::printf("finished\n");
        std::fflush(stdout);
    }

    QString m_mode;
    QStringList m_args;
    QFile m_log;
};

} // namespace

int main(int argc, char** argv)
{
    char self[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    const std::string path(self, std::size_t(std::max<ssize_t>(length, 0)));
    if (path.substr(path.find_last_of('/') + 1) != "testwindow") {
        std::ofstream(path + ".ran") << "ran\n";
        return 0;
    }

    QApplication app(argc, argv);
    const QString mode = QApplication::arguments().value(1);
    const QStringList args = QApplication::arguments().mid(2);
    const QStringList modes = {u"keys"_s, u"clicks"_s, u"drag"_s, u"app"_s};
    if (!modes.contains(mode) || args.isEmpty()) {
        std::fprintf(stderr, "usage: testwindow keys LOG TEXT | clicks LOG X Y WIDTH HEIGHT | drag PATH... | "
                             "app CLASS\n");
        return 2;
    }
    const QString title = mode == QLatin1String("app") ? args.first()
                                                       : QStringList{u"keyprobe"_s, u"clickprobe"_s,
                                                                     u"dragsource"_s}[modes.indexOf(mode)];
    // The xcb plugin reads the window's class from the application name when the first window is created.
    QApplication::setApplicationName(title);
    TestWindow window(mode, args);
    window.setWindowTitle(title);
    window.show();
    if (mode == QLatin1String("keys")) {
        window.raise();
        window.activateWindow();
    }
    return QApplication::exec();
}

// The windows the end-to-end tests put beside the bar, one program with a mode for each:
//   testwindow keys LOG TEXT        takes the keyboard focus; each key press appends its modifiers and
//                                   Qt's name for the key to LOG ("ctrl,shift+Key_Dollar", "Key_B"), and
//                                   the line edit's whole text replaces TEXT when it changes.
//   testwindow drag PATH...         a left press starts one drag of the files over XDND; standard output
//                                   gets "started" when it begins and "finished" when it ends, so that a
//                                   test moves the pointer only once the drag owns it.
//   testwindow app CLASS            an ordinary application window.
// Windows are titled "keyprobe", "dragsource" and CLASS, and carry that as their class too.
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
#include <climits>
#include <cstdio>
#include <fstream>
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
        if (mode == u"keys"_s)
            m_log.open(QIODevice::WriteOnly | QIODevice::Append);
        // Replaced in one step, so that a reader never sees a half-written file.
        connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
            QSaveFile file(m_args.value(1));
            if (m_mode == u"keys"_s && file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) >= 0)
                file.commit();
        });
        resize(320, 160);
    }

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        QStringList mods;
        // Qt reports Super as Meta on X11.
        for (const auto& [modifier, name] : {std::pair{Qt::ControlModifier, "ctrl"},
                                             {Qt::AltModifier, "alt"},
                                             {Qt::ShiftModifier, "shift"},
                                             {Qt::MetaModifier, "meta"}}) {
            if (event->modifiers() & modifier)
                mods.append(QLatin1String(name));
        }
        const char* key = QMetaEnum::fromType<Qt::Key>().valueToKey(event->key());
        note((mods.isEmpty() ? QString() : mods.join(u',') + u'+') + QLatin1String(key ? key : "?"));
        QLineEdit::keyPressEvent(event);
    }

    void mousePressEvent(QMouseEvent* event) override
    {
        if (m_mode == u"drag"_s && event->button() == Qt::LeftButton)
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
        auto* data = new QMimeData;
        QList<QUrl> urls;
        for (const QString& path : m_args)
            urls.append(QUrl::fromLocalFile(path));
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
    char self[PATH_MAX] = {};
    const std::string path = ::readlink("/proc/self/exe", self, sizeof self - 1) > 0 ? self : "";
    if (path.substr(path.rfind('/') + 1) != "testwindow") {
        std::ofstream(path + ".ran") << "ran\n";
        return 0;
    }
    QApplication app(argc, argv);
    const QString mode = QApplication::arguments().value(1);
    const QStringList args = QApplication::arguments().mid(2);
    const QString title = mode == u"app"_s    ? args.value(0)
                          : mode == u"keys"_s ? u"keyprobe"_s
                                              : u"dragsource"_s;
    // The xcb plugin reads the window's class from the application name when the first window is created.
    QApplication::setApplicationName(title);
    TestWindow window(mode, args);
    window.setWindowTitle(title);
    window.show();
    if (mode == u"keys"_s) {
        window.raise();
        window.activateWindow();
    }
    return QApplication::exec();
}

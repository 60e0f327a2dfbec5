// The windows the end-to-end tests put beside the bar, one program with a mode for each:
//   testwindow keys PRESSES_FILE TEXT_FILE
//     takes the keyboard focus; every key press appends "press key=Key_Dollar text=$ mods=ctrl,shift" to
//     PRESSES_FILE, and the line edit's whole text is written to TEXT_FILE whenever it changes.
//   testwindow clicks PRESSES_FILE X Y WIDTH HEIGHT
//     a borderless window at that place; every mouse press appends "press button=1 x=700 y=870" to
//     PRESSES_FILE, in screen coordinates.
//   testwindow drag URL_OR_PATH...
//     a left press starts one drag of all the items over XDND (absolute paths become file URLs); standard
//     output gets "started" when a drag begins and "finished ACTION" when it ends, so that a test moves
//     the pointer only once the drag owns it.
//   testwindow app CLASS
//     an ordinary application window of WM_CLASS class CLASS, for windows of several "applications".
// Windows are titled "keyprobe", "clickprobe", "dragsource" and CLASS, and carry that as their class too.

#include <QApplication>
#include <QDrag>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMetaEnum>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QSaveFile>
#include <QStringList>
#include <QUrl>
#include <QWidget>
#include <cstdio>
#include <memory>

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

class ClickLog : public QWidget
{
public:
    explicit ClickLog(const QString& path)
        : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint)
        , m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append))
            std::fprintf(stderr, "clickprobe: cannot write %s\n", qPrintable(path));
    }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        const QPoint global = event->globalPosition().toPoint();
        const QString line = QStringLiteral("press button=%1 x=%2 y=%3\n")
                                 .arg(static_cast<int>(event->button()))
                                 .arg(global.x())
                                 .arg(global.y());
        m_file.write(line.toUtf8());
        // Flushed at once: the test reads the file while this program keeps running.
        m_file.flush();
    }

    void paintEvent(QPaintEvent*) override
    {
        // A colour of its own, so that screenshots show where the probe is.
        QPainter(this).fillRect(rect(), QColor(0x30, 0x80, 0x30));
    }

private:
    QFile m_file;
};

class Source : public QWidget
{
public:
    explicit Source(QList<QUrl> urls)
        : m_urls(std::move(urls))
    {
        resize(240, 160);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() != Qt::LeftButton)
            return;
        auto* data = new QMimeData;
        data->setUrls(m_urls);
        auto* drag = new QDrag(this);
        drag->setMimeData(data);
        // A transparent picture: the default one would sit under the pointer and hide what the target draws.
        QPixmap picture(1, 1);
        picture.fill(Qt::transparent);
        drag->setPixmap(picture);
        std::printf("started\n");
        std::fflush(stdout);
        const Qt::DropAction action = drag->exec(Qt::CopyAction | Qt::LinkAction, Qt::CopyAction);
        std::printf("finished %d\n", static_cast<int>(action));
        std::fflush(stdout);
    }

    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), QColor(0x40, 0x60, 0x80));
    }

private:
    QList<QUrl> m_urls;
};

/// Numbers from the command line, or nothing when one is not a number.
std::optional<QList<int>> numbers(const QStringList& words)
{
    QList<int> values;
    for (const QString& word : words) {
        bool ok = false;
        values.append(word.toInt(&ok));
        if (!ok)
            return std::nullopt;
    }
    return values;
}

std::unique_ptr<QWidget> keysWindow(const QStringList& args)
{
    if (args.size() != 2)
        return nullptr;
    auto edit = std::make_unique<QLineEdit>();
    auto* log = new PressLog(args.at(0));
    log->setParent(edit.get());
    edit->installEventFilter(log);
    QObject::connect(edit.get(), &QLineEdit::textChanged, edit.get(),
                     [path = args.at(1)](const QString& text) { writeText(path, text); });
    edit->resize(400, 40);
    return edit;
}

std::unique_ptr<QWidget> clicksWindow(const QStringList& args)
{
    const auto place = numbers(args.mid(1));
    if (args.size() != 5 || !place)
        return nullptr;
    auto probe = std::make_unique<ClickLog>(args.at(0));
    probe->setGeometry(place->at(0), place->at(1), place->at(2), place->at(3));
    return probe;
}

std::unique_ptr<QWidget> dragWindow(const QStringList& args)
{
    QList<QUrl> urls;
    for (const QString& argument : args)
        urls.append(argument.startsWith(QLatin1Char('/')) ? QUrl::fromLocalFile(argument) : QUrl(argument));
    return urls.isEmpty() ? nullptr : std::make_unique<Source>(urls);
}

std::unique_ptr<QWidget> appWindow(const QStringList& args)
{
    if (args.size() != 1)
        return nullptr;
    auto window = std::make_unique<QWidget>();
    window->resize(320, 200);
    return window;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = QApplication::arguments().mid(1);
    const QString mode = args.value(0);
    const QStringList rest = args.mid(1);
    // The xcb plugin reads the window's class from the application name when the first window is created.
    const QString title = mode == QLatin1String("app")      ? rest.value(0)
                          : mode == QLatin1String("keys")   ? QStringLiteral("keyprobe")
                          : mode == QLatin1String("clicks") ? QStringLiteral("clickprobe")
                                                            : QStringLiteral("dragsource");
    QApplication::setApplicationName(title);
    std::unique_ptr<QWidget> window = mode == QLatin1String("keys")     ? keysWindow(rest)
                                      : mode == QLatin1String("clicks") ? clicksWindow(rest)
                                      : mode == QLatin1String("drag")   ? dragWindow(rest)
                                      : mode == QLatin1String("app")    ? appWindow(rest)
                                                                        : nullptr;
    if (!window) {
        std::fprintf(stderr, "usage: testwindow keys PRESSES_FILE TEXT_FILE | clicks PRESSES_FILE X Y WIDTH "
                             "HEIGHT | drag URL_OR_PATH... | app CLASS\n");
        return 2;
    }
    window->setWindowTitle(title);
    window->show();
    if (mode == QLatin1String("keys")) {
        window->raise();
        window->activateWindow();
        window->setFocus();
    }
    return QApplication::exec();
}

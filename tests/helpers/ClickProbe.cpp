// A borderless window that reports the mouse presses reaching it, for tests of what lies above it:
//   clickprobe PRESSES_FILE X Y WIDTH HEIGHT
// It asks for the given place on screen; every press appends "press button=1 x=700 y=870" to
// PRESSES_FILE, with the position in screen coordinates. The window is titled "clickprobe".

#include <QApplication>
#include <QFile>
#include <QMouseEvent>
#include <QPainter>
#include <QStringList>
#include <QWidget>
#include <cstdio>

namespace {

class Probe : public QWidget
{
public:
    explicit Probe(const QString& path)
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

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = QApplication::arguments();
    bool ok = args.size() == 6;
    int numbers[4] = {};
    for (int i = 0; ok && i < 4; ++i)
        numbers[i] = args.at(i + 2).toInt(&ok);
    if (!ok) {
        std::fprintf(stderr, "usage: clickprobe PRESSES_FILE X Y WIDTH HEIGHT\n");
        return 2;
    }

    Probe probe(args.at(1));
    probe.setWindowTitle(QStringLiteral("clickprobe"));
    probe.setGeometry(numbers[0], numbers[1], numbers[2], numbers[3]);
    probe.show();
    return QApplication::exec();
}

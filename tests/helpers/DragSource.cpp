// A window that drags files or links into other programs over XDND, for tests of drop targets:
//   dragsource URL_OR_PATH...
// A left press anywhere in the window starts one drag of all the given items (absolute paths become
// file URLs). Standard output gets "started" when a drag begins and "finished ACTION" when it ends, so
// that a test can move the pointer only once the drag owns it. The window is titled "dragsource".

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QUrl>
#include <QWidget>
#include <cstdio>

namespace {

class Source : public QWidget
{
public:
    explicit Source(QList<QUrl> urls)
        : m_urls(std::move(urls))
    {
        setWindowTitle(QStringLiteral("dragsource"));
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

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QList<QUrl> urls;
    for (const QString& argument : QApplication::arguments().mid(1))
        urls.append(argument.startsWith(QLatin1Char('/')) ? QUrl::fromLocalFile(argument) : QUrl(argument));
    if (urls.isEmpty()) {
        std::fprintf(stderr, "usage: dragsource URL_OR_PATH...\n");
        return 2;
    }
    Source window(urls);
    window.show();
    return QApplication::exec();
}

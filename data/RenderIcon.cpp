// Renders the scalable application icon at one of the fixed sizes of the hicolor theme, for desktops
// and menus that do not scale SVG icons themselves: render-icon SVG SIZE PNG.

#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <cstdio>

int main(int argc, char* argv[])
{
    // Drawing an icon needs no display, and the build machine may have none.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    bool ok = false;
    const int size = arguments.size() == 4 ? arguments.at(2).toInt(&ok) : 0;
    if (!ok || size <= 0) {
        std::fprintf(stderr, "usage: render-icon SVG SIZE PNG\n");
        return 2;
    }
    QImageReader reader(arguments.at(1));
    reader.setScaledSize(QSize(size, size));
    const QImage image = reader.read();
    if (image.isNull()) {
        std::fprintf(stderr, "render-icon: %s: %s\n", qPrintable(arguments.at(1)),
                     qPrintable(reader.errorString()));
        return 1;
    }
    if (!image.save(arguments.at(3), "PNG")) {
        std::fprintf(stderr, "render-icon: cannot write %s\n", qPrintable(arguments.at(3)));
        return 1;
    }
    return 0;
}

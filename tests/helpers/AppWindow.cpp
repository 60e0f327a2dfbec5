// An ordinary application window whose WM_CLASS class is chosen on the command line, so that tests can
// put windows of several "applications" on screen:
//   appwindow CLASS
// The window is titled CLASS too.

#include <QApplication>
#include <QWidget>
#include <cstdio>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = QApplication::arguments();
    if (args.size() != 2) {
        std::fprintf(stderr, "usage: appwindow CLASS\n");
        return 2;
    }
    // The xcb plugin reads the class from the application name when the first window is created.
    QApplication::setApplicationName(args.at(1));
    QWidget window;
    window.setWindowTitle(args.at(1));
    window.resize(320, 200);
    window.show();
    return QApplication::exec();
}

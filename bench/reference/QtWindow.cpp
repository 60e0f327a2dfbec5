// The yardstick for start-up, memory and idle cost: the least a Qt Widgets program shows, a frameless
// window that stays above the others, the size of a small bar.

#include <QApplication>
#include <QWidget>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    window.resize(320, 40);
    window.show();
    return QApplication::exec();
}

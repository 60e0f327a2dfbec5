// The yardstick for start-up, memory and idle cost: the least a Qt Widgets bar shows, a frameless window
// that stays above the others, the size of a small bar, with a line of text on it. Text brings in the font
// machinery (fontconfig, FreeType, HarfBuzz), which every bar of labelled buttons needs; a window without
// any would measure Qt without the part a bar cannot do without.

#include <QApplication>
#include <QLabel>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QLabel window(QStringLiteral("Files  Terminal  Browser"));
    window.setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    window.resize(320, 40);
    window.show();
    return QApplication::exec();
}

// The work behind a drag and behind every change, timed in this process: the drop-target search that
// runs on each pointer movement of a drag, and reading, writing and saving the document.
// Prints one line per run and figure, "label<TAB>value", for bench/run.sh to summarise.
// Usage: bench_core [runs]
//        bench_core bar COUNT FILE [TITLE]   writes a bar of COUNT buttons, the first one titled TITLE
//        bench_core defaults FILE            writes the bar a first start makes

#include "config/Config.h"
#include "config/ConfigReader.h"
#include "config/FileIO.h"
#include "dragdrop/DropTarget.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

/// A bar of `count` buttons such as people keep: mostly files, applications and commands, every tenth
/// a stack of three; every button with a colour, some with an icon.
BarConfig barOf(int count)
{
    static const char* const actions[] = {"open", "app", "url", "shell", "keys", "folder", "paste"};
    BarConfig config;
    for (int i = 0; i < count; ++i) {
        const QString title = QStringLiteral("Button %1").arg(i);
        ButtonSpec spec = ButtonSpec::make(title, QStringLiteral("doc"), QString::fromLatin1(actions[i % 7]),
                                           QStringLiteral("~/Documents/Projects/%1/notes.txt").arg(i));
        spec.color = QStringLiteral("green");
        if (i % 5 == 0)
            spec.iconPath = QStringLiteral("/usr/share/icons/hicolor/48x48/apps/app%1.png").arg(i);
        if (i % 10 == 0) {
            spec.action = QStringLiteral("group");
            spec.argument.reset();
            spec.children = QList<ButtonSpec>();
            for (int j = 0; j < 3; ++j)
                spec.children->append(ButtonSpec::make(QStringLiteral("Member %1.%2").arg(i).arg(j),
                                                       QStringLiteral("folder"), QStringLiteral("open"),
                                                       QStringLiteral("~/Member/%1/%2").arg(i).arg(j)));
        }
        config.buttons.append(spec);
    }
    config.hotkey = QStringLiteral("ctrl+alt+b");
    return config;
}

void print(const QByteArray& label, double value)
{
    std::printf("%s\t%.4f\n", label.constData(), value);
}

/// Microseconds per search, over pointer positions swept along the whole bar as a drag would.
double hitTest(int chips)
{
    const BarConfig config = barOf(chips);
    QHash<QString, QRectF> frames;
    for (int i = 0; i < chips; ++i)
        frames.insert(config.buttons.at(i).title, QRectF(40 + 100 * i, 6, 92, 28));
    const QRectF bar(100, 800, 40 + 100 * chips + 12, 40);
    const ButtonSpec& dragged = config.buttons.at(chips / 2 + 1);
    constexpr int searches = 20000;
    volatile qsizetype sink = 0;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < searches; ++i) {
        const QPointF point(bar.left() + bar.width() * (i % 997) / 997.0, bar.top() + 20);
        sink = sink + DropTargets::at(point, bar, dragged, config, frames).index;
    }
    return double(timer.nsecsElapsed()) / 1e3 / searches;
}

} // namespace

int main(int argc, char** argv)
{
    const QByteArray command = argc > 1 ? argv[1] : "";
    if (command == "bar" && argc >= 4) {
        BarConfig config = barOf(std::atoi(argv[2]));
        if (argc > 4 && !config.buttons.isEmpty())
            config.buttons.first().title = QString::fromLocal8Bit(argv[4]);
        return FileIO::write(QString::fromLocal8Bit(argv[3]), Config::encoded(config)) ? 0 : 1;
    }
    if (command == "defaults" && argc == 3)
        return FileIO::write(QString::fromLocal8Bit(argv[2]), Config::encoded(Config::defaults())) ? 0 : 1;

    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    QTemporaryDir folder;
    if (!folder.isValid())
        return 1;
    qputenv("VANTRIL_CONFIG_DIR", folder.path().toUtf8());

    for (int run = 0; run < runs; ++run) {
        print("hit20", hitTest(20));
        print("hit200", hitTest(200));
        print("hit1000", hitTest(1000));
        for (const int count : {10, 1000, 10000}) {
            const BarConfig config = barOf(count);
            const QByteArray label = QByteArray::number(count);
            QElapsedTimer timer;
            timer.start();
            const QByteArray bytes = Config::encoded(config);
            print("encode" + label, double(timer.nsecsElapsed()) / 1e6);
            timer.start();
            const auto decoded = ConfigReader::decode(bytes);
            print("decode" + label, double(timer.nsecsElapsed()) / 1e6);
            timer.start();
            const bool saved = Config::save(config).has_value();
            print("save" + label, double(timer.nsecsElapsed()) / 1e6);
            if (!decoded || !(*decoded == config) || !saved) {
                std::fprintf(stderr, "bench_core: the document of %d buttons did not survive\n", count);
                return 1;
            }
        }
    }
    return 0;
}

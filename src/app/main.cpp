#include "app/AppDelegate.h"
#include "app/CommandLine.h"

#include <QCoreApplication>
#include <QProcessEnvironment>
#include <QTextStream>
#include <cstdio>

int main(int argc, char* argv[])
{
    // The command line is answered before any application object exists, so it needs no display.
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QTextStream out(stdout);
    if (const auto status = CommandLine::handle(arguments, out))
        return *status;

    QCoreApplication application(argc, argv);
    AppDelegate delegate;
    delegate.finishLaunching(QProcessEnvironment::systemEnvironment());
    return 0;
}

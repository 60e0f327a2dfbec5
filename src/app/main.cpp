#include "app/AppDelegate.h"
#include "app/BarCommands.h"
#include "app/CommandLine.h"
#include "app/InstanceClaim.h"
#include "app/InstanceServer.h"
#include "app/TerminationSignals.h"
#include "app/UpdateFeed.h"
#include "bar/SymbolStore.h"
#include "bar/SymbolView.h"
#include "config/Config.h"
#include "config/ConfigDocument.h"
#include "config/Editing.h"
#include "diagnostics/Probe.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Session.h"
#include "platform/Warmup.h"

#include <QApplication>
#include <QProcessEnvironment>
#include <QTextStream>
#include <QTimer>
#include <cstdio>
#include <future>
#include <memory>

namespace {

/// Key synthesis, the hot key and dock windows are X11 facilities; under Wayland, XWayland has them. The
/// choice is for the bar alone: set while the application is made, then the user's own value (or none)
/// comes back, so that Qt programs started from chips run as the session would run them.
std::optional<QByteArray> forceX11()
{
    std::optional<QByteArray> before;
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        before = qgetenv("QT_QPA_PLATFORM");
    qputenv("QT_QPA_PLATFORM", "xcb");
    return before;
}

void restore(const std::optional<QByteArray>& platformChoice)
{
    if (platformChoice)
        qputenv("QT_QPA_PLATFORM", *platformChoice);
    else
        qunsetenv("QT_QPA_PLATFORM");
}

/// "--probe" and "--probe-prompt" report on the session and exit; they need the display only when
/// there is one, so that a missing display is itself reported.
int runProbe(int argc, char* argv[], bool prompt)
{
    const bool display = !desktopUnavailableReason();
    std::unique_ptr<QCoreApplication> application;
    if (display) {
        const std::optional<QByteArray> platformChoice = forceX11();
        application = std::make_unique<QApplication>(argc, argv);
        restore(platformChoice);
    } else {
        application = std::make_unique<QCoreApplication>(argc, argv);
    }
    const std::unique_ptr<Platform> platform = display ? createDesktopPlatform() : nullptr;
    if (!prompt) {
        Probe::publish(Probe::run(platform.get(), Session::detect(QProcessEnvironment::systemEnvironment())));
        return 0;
    }
    // No permission prompt exists on X11: input synthesis is there when XTest is.
    const bool trusted = platform && platform->input().isTrusted();
    QTextStream(stdout) << "AXIsProcessTrustedWithOptions(prompt) → " << (trusted ? "true" : "false")
                        << Qt::endl;
    return 0;
}

/// The bar of the claimed configuration folder, until it quits. Commands of copies started meanwhile are
/// carried out on it; a starting bar is shown anyway, so of its own command only a tap is left to do.
int runBar(InstanceClaim& claim, const BarCommand& command, std::future<Config::Loaded> configuration)
{
    auto delegate = std::make_unique<AppDelegate>(createDesktopPlatform(), updaterOfThisBuild());
    delegate->loadConfiguration(configuration.get());
    const bool opens = command.kind == BarCommand::Kind::Open;
    if (opens && !Editing::button(delegate->document().cfg(), command.title)) {
        Log::line(BarCommands::noSuchButton(command.title));
        return 1;
    }
    InstanceServer server(
        [&delegate](const BarCommand& sent) { return BarCommands::perform(*delegate, sent); });
    server.listen(claim.socketPath());
    delegate->finishLaunching(QProcessEnvironment::systemEnvironment());
    if (opens) // once the bar is laid out, from its chip
        QTimer::singleShot(0, delegate.get(),
                           [&delegate, command] { BarCommands::open(*delegate, command.title); });
    const int status = QApplication::exec();
    server.close();
    delegate.reset(); // nothing may write into the folder once it is free
    claim.release();
    server.answerWaiting();
    return status;
}

} // namespace

int main(int argc, char* argv[])
{
    // The command line is answered before any application object exists, so it needs no display.
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QTextStream out(stdout);
    if (const auto status = CommandLine::handle(arguments, out))
        return *status;
    if (arguments.contains(QStringLiteral("--probe")) || arguments.contains(QStringLiteral("--probe-prompt")))
        return runProbe(argc, argv, !arguments.contains(QStringLiteral("--probe")));
    // One bar per configuration folder: a command for a bar that runs goes to it, with no display needed.
    const BarCommand::Parsed parsed = BarCommand::parse(arguments);
    if (!parsed.command) {
        Log::line(parsed.error);
        return 1;
    }
    InstanceClaim claim = InstanceClaim::take(arguments, *parsed.command);
    if (const auto status = claim.exitStatus())
        return *status;

    if (const auto reason = desktopUnavailableReason()) {
        std::fprintf(stderr, "vantril: %s\n", qPrintable(*reason));
        return 1;
    }
    // Read and decoded while Qt connects to the display, so that a large file hardly delays the bar. The
    // folder is this process's from here on.
    std::future<Config::Loaded> configuration =
        std::async(std::launch::async, [] { return Config::loadDocument(); });
    const std::future<void> fontsRead = Warmup::fonts();
    std::future<QByteArray> symbolsRead = std::async(std::launch::async, &SymbolStore::read);
    const std::optional<QByteArray> platformChoice = forceX11();
    QApplication application(argc, argv);
    restore(platformChoice);
    const std::future<void> busReached = Warmup::sessionBus();
    fontsRead.wait_for(Warmup::fontsWorthWaitingFor); // the first chip measured would read them again
    QApplication::setApplicationName(QStringLiteral("vantril"));
    QApplication::setApplicationVersion(QStringLiteral(VANTRIL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("vantril"));
    QApplication::setQuitOnLastWindowClosed(false);
    TerminationSignals::quitOnThem();
    SymbolView::useIconThemes();
    SymbolView::remember(SymbolStore::decode(symbolsRead.get(), SymbolStore::stamp()));

    return runBar(claim, *parsed.command, std::move(configuration));
}

#include "CommandLine.h"

#include "actions/KeyCombo.h"
#include "config/Config.h"
#include "config/ConfigReader.h"

#include <QFile>

namespace {

const auto usage = QStringLiteral(R"(Usage: vantril [command or option]

A floating bar of buttons for the desktop. Without a command it starts the bar, or shows the bar that
already runs for the same configuration folder.

Commands to the running bar (--toggle, --show and --open start it first when none runs):
  --toggle           hide the bar, or show it when it is hidden
  --show             show the bar
  --hide             hide the bar
  --open TITLE       open the stack or folder titled TITLE, or run that button, as a click on it would
  --quit             end the bar

Options:
  --parse-keys TEXT  print how a key combination such as "ctrl+alt+t" is understood
  --check [FILE]     check a configuration file (default: the bar's buttons.json)
  --probe            report what the program may do in this session
  --help             show this text
  --version          show the version

Other words are ignored, as they always were: the bar starts, or shows, as without them.
Exit status: 0, or 1 when --open names no button or the running bar cannot be reached.

Environment:
  VANTRIL_CONFIG_DIR  the configuration folder (default: $XDG_CONFIG_HOME/vantril)
)");

/// The argument after `flag`, when `flag` is present and not last.
std::optional<QString> valueAfter(const QStringList& arguments, const QString& flag)
{
    const qsizetype at = arguments.indexOf(flag);
    if (at < 0 || at + 1 >= arguments.size())
        return std::nullopt;
    return arguments.at(at + 1);
}

} // namespace

namespace CommandLine {

QString describeKeys(const QString& text)
{
    const auto combo = KeyCombo::parse(text);
    if (!combo)
        return QStringLiteral("invalid");
    return QStringLiteral("keyCode=%1 flags=%2 carbon=%3")
        .arg(combo->keyCode)
        .arg(combo->flags)
        .arg(combo->carbon);
}

std::pair<bool, QString> checkFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {false, QStringLiteral("%1: cannot read: %2").arg(path, file.errorString())};
    const ConfigReader::Result result = ConfigReader::read(file.readAll());
    if (!result.config)
        return {false, result.error};
    return {true, QStringLiteral("ok")};
}

std::optional<int> handle(const QStringList& arguments, QTextStream& out)
{
    if (const auto keys = valueAfter(arguments, QStringLiteral("--parse-keys"))) {
        out << describeKeys(*keys) << Qt::endl;
        return 0;
    }
    if (arguments.contains(QStringLiteral("--help")) || arguments.contains(QStringLiteral("-h"))) {
        out << usage;
        return 0;
    }
    if (arguments.contains(QStringLiteral("--version"))) {
        out << "vantril " << VANTRIL_VERSION << Qt::endl;
        return 0;
    }
    if (const qsizetype at = arguments.indexOf(QStringLiteral("--check")); at >= 0) {
        const QString path = at + 1 < arguments.size() ? arguments.at(at + 1) : Config::buttonsPath();
        const auto [ok, message] = checkFile(path);
        out << message << Qt::endl;
        return ok ? 0 : 1;
    }
    return std::nullopt;
}

} // namespace CommandLine

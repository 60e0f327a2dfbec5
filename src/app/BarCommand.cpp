#include "BarCommand.h"

BarCommand::Parsed BarCommand::parse(const QStringList& arguments)
{
    using Kind = BarCommand::Kind;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& word = arguments.at(i);
        if (word == QLatin1String("--show"))
            return {BarCommand{Kind::Show, {}}, {}};
        if (word == QLatin1String("--toggle"))
            return {BarCommand{Kind::Toggle, {}}, {}};
        if (word == QLatin1String("--hide"))
            return {BarCommand{Kind::Hide, {}}, {}};
        if (word == QLatin1String("--quit"))
            return {BarCommand{Kind::Quit, {}}, {}};
        if (word == QLatin1String("--open")) {
            // Unlike a switch the program does not know, a title left out is a mistake worth a word:
            // quietly showing the bar instead would look as if the title had matched nothing.
            if (i + 1 >= arguments.size() || arguments.at(i + 1).isEmpty())
                return {std::nullopt, QStringLiteral("vantril: --open needs the title of a button")};
            return {BarCommand{Kind::Open, arguments.at(i + 1)}, {}};
        }
    }
    return {BarCommand{}, {}};
}

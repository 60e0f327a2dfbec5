#include "SymbolNames.h"

#include <QHash>

namespace {

struct Mapping
{
    const char16_t* symbol;
    const char16_t* icon;
};

/// The names the program itself uses (defaults, presets, listings, menus), mapped to the closest
/// freedesktop icon, in the order the editor's palette shows them: related symbols side by side. A name
/// without an icon, or whose icon the user's theme and Adwaita both lack, is drawn from the program's
/// own set of pictures.
constexpr Mapping mappings[] = {
    {u"folder", u"folder"},
    {u"folder.badge.plus", u"folder-new"},
    {u"arrow.down.circle", u"folder-download"},
    {u"house", u"user-home"},
    {u"menubar.dock.rectangle", u"user-desktop"},
    {u"doc.text", u"text-x-generic"},
    {u"doc", u"text-x-generic"},
    {u"doc.plaintext", u"text-x-generic"},
    {u"doc.on.doc", u"edit-copy"},
    {u"note.text", u"accessories-text-editor"},
    {u"square.and.pencil", u"document-edit"},
    {u"pencil.and.outline", u"document-edit"},
    {u"pencil", u"document-edit"},
    {u"tablecells", u"x-office-spreadsheet"},
    {u"calendar", u"x-office-calendar"},
    {u"clock", u"document-open-recent"},
    {u"photo", u"image-x-generic"},
    {u"music.note", u"audio-x-generic"},
    {u"waveform", u"audio-x-generic"},
    {u"camera", u"camera-photo"},
    {u"printer", u"printer"},
    {u"terminal", u"utilities-terminal"},
    {u"app", u"application-x-executable"},
    {u"square.grid.2x2", u"view-app-grid"},
    {u"safari", u"web-browser"},
    {u"globe", u"web-browser"},
    {u"link", u"insert-link"},
    {u"envelope", u"mail-unread"},
    {u"tray", u"mail-inbox"},
    {u"tray.and.arrow.down", u"mail-send-receive"},
    {u"arrowshape.turn.up.left", u"mail-reply-sender"},
    {u"arrowshape.turn.up.left.2", u"mail-reply-all"},
    {u"arrowshape.turn.up.right", u"mail-forward"},
    {u"archivebox", u"package-x-generic"},
    {u"xmark.bin", u"mail-mark-junk"},
    {u"flag", u"mail-mark-important"},
    {u"trash", u"user-trash"},
    {u"bookmark", u"bookmark-new"},
    {u"star", u"starred"},
    {u"heart", u"emblem-favorite"},
    {u"face.smiling", u"face-smile"},
    {u"text.bubble", u"user-available"},
    {u"mappin", u"mark-location"},
    {u"magnifyingglass", u"edit-find"},
    {u"info.circle", u"dialog-information"},
    {u"questionmark.circle", u"help-about"},
    {u"gearshape", u"emblem-system"},
    {u"slider.horizontal.3", u"preferences-system"},
    {u"keyboard", u"input-keyboard"},
    {u"cursorarrow", u"input-mouse"},
    {u"sum", u"accessories-calculator"},
    {u"doc.on.clipboard", u"edit-paste"},
    {u"scissors", u"edit-cut"},
    {u"plus.square.on.square", u"edit-copy"},
    {u"square.and.arrow.down", u"document-save"},
    {u"square.and.arrow.down.on.square", u"insert-object"},
    {u"square.and.arrow.up", u"send-to"},
    {u"arrow.up.forward.app", u"document-open"},
    {u"plus.rectangle", u"tab-new"},
    {u"macwindow.badge.plus", u"window-new"},
    {u"plus.rectangle.on.rectangle", u"list-add"},
    {u"rectangle.stack.badge.plus", nullptr},
    {u"rectangle.on.rectangle", u"view-restore"},
    {u"arrow.up.left.and.arrow.down.right", u"view-fullscreen"},
    {u"xmark.rectangle", u"edit-clear"},
    {u"xmark.circle", u"window-close"},
    {u"arrow.uturn.backward", u"edit-undo"},
    {u"arrow.clockwise", u"view-refresh"},
    {u"rotate.right", u"object-rotate-right"},
    {u"arrow.left.arrow.right", u"object-flip-horizontal"},
    {u"arrow.down.to.line", u"go-bottom"},
    {u"arrow.right.to.line", u"go-last"},
    {u"stop.circle", u"process-stop"},
    {u"eye", u"view-reveal"},
    {u"eye.slash", u"view-conceal"},
    {u"list.bullet", u"view-list"},
    {u"list.bullet.indent", u"format-indent-more"},
    {u"line.3.horizontal.decrease.circle", nullptr},
    {u"rectangle.split.3x1", u"view-column"},
    {u"rectangle.split.2x1", u"view-dual"},
    {u"square.split.2x1", nullptr},
    {u"magnet", u"view-grid"},
    {u"bold", u"format-text-bold"},
    {u"italic", u"format-text-italic"},
    {u"underline", u"format-text-underline"},
    {u"textformat", u"format-text-direction-ltr"},
    {u"textformat.size", u"format-text-larger"},
    {u"textformat.size.larger", u"zoom-in"},
    {u"textformat.size.smaller", u"zoom-out"},
    {u"playpause", u"media-playback-start"},
    {u"backward.fill", u"media-skip-backward"},
    {u"forward.fill", u"media-skip-forward"},
    {u"speaker.wave.3", u"audio-volume-high"},
    {u"speaker.wave.1", u"audio-volume-low"},
    {u"shuffle", u"media-playlist-shuffle"},
    {u"repeat", u"media-playlist-repeat"},
    {u"moon", u"weather-clear-night"},
    {u"bolt", u"battery-full-charging"},
    {u"power", u"system-shutdown"},
    {u"lock.fill", u"changes-prevent"},
    {u"ellipsis", u"view-more-horizontal"},
    {u"arrow.up", u"go-up"},
    {u"chevron.up", u"go-up"},
    {u"chevron.down", u"go-down"},
    {u"chevron.backward", u"go-previous"},
    {u"chevron.forward", u"go-next"},
};

const QHash<QString, QString>& table()
{
    static const QHash<QString, QString> names = [] {
        QHash<QString, QString> built;
        for (const Mapping& mapping : mappings) {
            if (mapping.icon)
                built.insert(QString::fromUtf16(mapping.symbol), QString::fromUtf16(mapping.icon));
        }
        return built;
    }();
    return names;
}

/// Icon names are lower-case words joined by "-"; anything else (an emoji, "Hello") is text.
bool looksLikeIconName(const QString& symbol)
{
    if (symbol.isEmpty())
        return false;
    for (const QChar c : symbol) {
        const bool allowed = (c >= QLatin1Char('a') && c <= QLatin1Char('z')) ||
                             (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('-') ||
                             c == QLatin1Char('_') || c == QLatin1Char('.');
        if (!allowed)
            return false;
    }
    return true;
}

} // namespace

namespace SymbolNames {

QString chevron(bool up)
{
    return up ? QStringLiteral("chevron.up") : QStringLiteral("chevron.down");
}

QString lock()
{
    return QStringLiteral("lock.fill");
}

QStringList chrome()
{
    return {chevron(true), chevron(false), lock()};
}

const QStringList& names()
{
    static const QStringList list = [] {
        QStringList built;
        for (const Mapping& mapping : mappings)
            built.append(QString::fromUtf16(mapping.symbol));
        return built;
    }();
    return list;
}

QStringList iconNames(const QString& symbol)
{
    QStringList names;
    if (const auto it = table().constFind(symbol); it != table().constEnd())
        names << it.value() + QStringLiteral("-symbolic") << it.value();
    if (looksLikeIconName(symbol))
        names << symbol + QStringLiteral("-symbolic") << symbol;
    return names;
}

} // namespace SymbolNames

#include "SymbolNames.h"

#include <QHash>

namespace {

/// The names the program itself uses (defaults, presets, listings, menus), mapped to the closest
/// freedesktop icon.
const QHash<QString, QString>& table()
{
    static const QHash<QString, QString> names = {
        {QStringLiteral("folder"), QStringLiteral("folder")},
        {QStringLiteral("arrow.down.circle"), QStringLiteral("folder-download")},
        {QStringLiteral("doc.text"), QStringLiteral("text-x-generic")},
        {QStringLiteral("doc"), QStringLiteral("text-x-generic")},
        {QStringLiteral("doc.plaintext"), QStringLiteral("text-x-generic")},
        {QStringLiteral("menubar.dock.rectangle"), QStringLiteral("user-desktop")},
        {QStringLiteral("folder.badge.plus"), QStringLiteral("folder-new")},
        {QStringLiteral("square.grid.2x2"), QStringLiteral("view-app-grid")},
        {QStringLiteral("safari"), QStringLiteral("web-browser")},
        {QStringLiteral("envelope"), QStringLiteral("mail-unread")},
        {QStringLiteral("note.text"), QStringLiteral("accessories-text-editor")},
        {QStringLiteral("calendar"), QStringLiteral("x-office-calendar")},
        {QStringLiteral("terminal"), QStringLiteral("utilities-terminal")},
        {QStringLiteral("questionmark.circle"), QStringLiteral("help-about")},
        {QStringLiteral("chevron.up"), QStringLiteral("go-up")},
        {QStringLiteral("chevron.down"), QStringLiteral("go-down")},
        {QStringLiteral("chevron.backward"), QStringLiteral("go-previous")},
        {QStringLiteral("chevron.forward"), QStringLiteral("go-next")},
        {QStringLiteral("lock.fill"), QStringLiteral("changes-prevent")},
        {QStringLiteral("arrow.up"), QStringLiteral("go-up")},
        {QStringLiteral("arrow.up.forward.app"), QStringLiteral("document-open")},
        {QStringLiteral("ellipsis"), QStringLiteral("view-more-horizontal")},
        {QStringLiteral("tray"), QStringLiteral("mail-inbox")},
        {QStringLiteral("tray.and.arrow.down"), QStringLiteral("mail-receive")},
        {QStringLiteral("square.and.pencil"), QStringLiteral("document-edit")},
        {QStringLiteral("arrowshape.turn.up.left"), QStringLiteral("mail-reply-sender")},
        {QStringLiteral("arrowshape.turn.up.left.2"), QStringLiteral("mail-reply-all")},
        {QStringLiteral("arrowshape.turn.up.right"), QStringLiteral("mail-forward")},
        {QStringLiteral("archivebox"), QStringLiteral("package-x-generic")},
        {QStringLiteral("xmark.bin"), QStringLiteral("mail-mark-junk")},
        {QStringLiteral("flag"), QStringLiteral("mail-mark-important")},
        {QStringLiteral("plus.rectangle"), QStringLiteral("tab-new")},
        {QStringLiteral("arrow.uturn.backward"), QStringLiteral("edit-undo")},
        {QStringLiteral("eye.slash"), QStringLiteral("view-conceal")},
        {QStringLiteral("eye"), QStringLiteral("view-reveal")},
        {QStringLiteral("arrow.clockwise"), QStringLiteral("view-refresh")},
        {QStringLiteral("magnifyingglass"), QStringLiteral("edit-find")},
        {QStringLiteral("bookmark"), QStringLiteral("bookmark-new")},
        {QStringLiteral("info.circle"), QStringLiteral("dialog-information")},
        {QStringLiteral("plus.square.on.square"), QStringLiteral("edit-copy")},
        {QStringLiteral("trash"), QStringLiteral("user-trash")},
        {QStringLiteral("list.bullet"), QStringLiteral("view-list")},
        {QStringLiteral("list.bullet.indent"), QStringLiteral("format-indent-more")},
        {QStringLiteral("rectangle.split.3x1"), QStringLiteral("view-column")},
        {QStringLiteral("rectangle.split.2x1"), QStringLiteral("view-dual")},
        {QStringLiteral("macwindow.badge.plus"), QStringLiteral("window-new")},
        {QStringLiteral("xmark.rectangle"), QStringLiteral("edit-clear")},
        {QStringLiteral("stop.circle"), QStringLiteral("process-stop")},
        {QStringLiteral("textformat.size.larger"), QStringLiteral("zoom-in")},
        {QStringLiteral("textformat.size.smaller"), QStringLiteral("zoom-out")},
        {QStringLiteral("heart"), QStringLiteral("emblem-favorite")},
        {QStringLiteral("face.smiling"), QStringLiteral("face-smile")},
        {QStringLiteral("square.and.arrow.down"), QStringLiteral("document-save")},
        {QStringLiteral("square.and.arrow.up"), QStringLiteral("send-to")},
        {QStringLiteral("rotate.right"), QStringLiteral("object-rotate-right")},
        {QStringLiteral("slider.horizontal.3"), QStringLiteral("preferences-system")},
        {QStringLiteral("sum"), QStringLiteral("accessories-calculator")},
        {QStringLiteral("tablecells"), QStringLiteral("x-office-spreadsheet")},
        {QStringLiteral("doc.on.clipboard"), QStringLiteral("edit-paste")},
        {QStringLiteral("bold"), QStringLiteral("format-text-bold")},
        {QStringLiteral("italic"), QStringLiteral("format-text-italic")},
        {QStringLiteral("underline"), QStringLiteral("format-text-underline")},
        {QStringLiteral("textformat"), QStringLiteral("format-text-direction-ltr")},
        {QStringLiteral("textformat.size"), QStringLiteral("format-text-larger")},
        {QStringLiteral("pencil.and.outline"), QStringLiteral("document-edit")},
        {QStringLiteral("text.bubble"), QStringLiteral("user-available")},
        {QStringLiteral("scissors"), QStringLiteral("edit-cut")},
        {QStringLiteral("link"), QStringLiteral("insert-link")},
        {QStringLiteral("playpause"), QStringLiteral("media-playback-start")},
        {QStringLiteral("backward.fill"), QStringLiteral("media-skip-backward")},
        {QStringLiteral("forward.fill"), QStringLiteral("media-skip-forward")},
        {QStringLiteral("speaker.wave.3"), QStringLiteral("audio-volume-high")},
        {QStringLiteral("speaker.wave.1"), QStringLiteral("audio-volume-low")},
        {QStringLiteral("shuffle"), QStringLiteral("media-playlist-shuffle")},
        {QStringLiteral("repeat"), QStringLiteral("media-playlist-repeat")},
        {QStringLiteral("waveform"), QStringLiteral("audio-x-generic")},
        {QStringLiteral("magnet"), QStringLiteral("view-grid")},
        {QStringLiteral("cursorarrow"), QStringLiteral("input-mouse")},
        {QStringLiteral("mappin"), QStringLiteral("mark-location")},
        {QStringLiteral("gearshape"), QStringLiteral("emblem-system")},
        {QStringLiteral("star"), QStringLiteral("starred")},
        {QStringLiteral("house"), QStringLiteral("user-home")},
        {QStringLiteral("globe"), QStringLiteral("web-browser")},
        {QStringLiteral("music.note"), QStringLiteral("audio-x-generic")},
        {QStringLiteral("photo"), QStringLiteral("image-x-generic")},
        {QStringLiteral("camera"), QStringLiteral("camera-photo")},
        {QStringLiteral("printer"), QStringLiteral("printer")},
        {QStringLiteral("power"), QStringLiteral("system-shutdown")},
        {QStringLiteral("moon"), QStringLiteral("weather-clear-night")},
        {QStringLiteral("bolt"), QStringLiteral("battery-full-charging")},
        {QStringLiteral("keyboard"), QStringLiteral("input-keyboard")},
        {QStringLiteral("app"), QStringLiteral("application-x-executable")},
    };
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

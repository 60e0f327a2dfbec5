#include "config/Presets.h"

namespace {

// Preset buttons carry no colour, icon or lock of their own so that they look and behave exactly like a
// keys button the user made by hand, and so that merging can recognise them by action and argument alone.
ButtonSpec keysButton(const char16_t* title, const char16_t* symbol, const char16_t* keys)
{
    return ButtonSpec::make(QString::fromUtf16(title), QString::fromUtf16(symbol), QStringLiteral("keys"),
                            QString::fromUtf16(keys));
}

AppPreset preset(const char16_t* name, const char16_t* bundleID, QList<ButtonSpec> buttons)
{
    return AppPreset{QString::fromUtf16(bundleID), QString::fromUtf16(name), std::move(buttons)};
}

} // namespace

const QList<AppPreset>& Presets::all()
{
    // No title repeats across presets: applying several of them to one document should not have to
    // rename one preset's button because another preset got there first.
    static const QList<AppPreset> table = {
        preset(u"Mail", u"com.apple.mail",
               {
                   keysButton(u"New Message", u"square.and.pencil", u"cmd+n"),
                   keysButton(u"Get Mail", u"tray.and.arrow.down", u"shift+cmd+n"),
                   keysButton(u"Reply", u"arrowshape.turn.up.left", u"cmd+r"),
                   keysButton(u"Reply All", u"arrowshape.turn.up.left.2", u"shift+cmd+r"),
                   keysButton(u"Forward", u"arrowshape.turn.up.right", u"shift+cmd+f"),
                   keysButton(u"Archive", u"archivebox", u"ctrl+cmd+a"),
                   keysButton(u"Junk", u"xmark.bin", u"shift+cmd+j"),
                   keysButton(u"Flag", u"flag", u"shift+cmd+l"),
               }),
        preset(u"Safari", u"com.apple.Safari",
               {
                   keysButton(u"New Tab", u"plus.rectangle", u"cmd+t"),
                   keysButton(u"Reopen Tab", u"arrow.uturn.backward", u"shift+cmd+t"),
                   keysButton(u"Private", u"eye.slash", u"shift+cmd+n"),
                   keysButton(u"Reload", u"arrow.clockwise", u"cmd+r"),
                   keysButton(u"Go Back", u"chevron.backward", u"cmd+["),
                   keysButton(u"Go Forward", u"chevron.forward", u"cmd+]"),
                   keysButton(u"Address", u"magnifyingglass", u"cmd+l"),
                   keysButton(u"Reader", u"doc.plaintext", u"shift+cmd+r"),
                   keysButton(u"Bookmark", u"bookmark", u"cmd+d"),
               }),
        preset(u"Finder", u"com.apple.finder",
               {
                   keysButton(u"Make Folder", u"folder.badge.plus", u"shift+cmd+n"),
                   keysButton(u"Get Info", u"info.circle", u"cmd+i"),
                   keysButton(u"Duplicate", u"plus.square.on.square", u"cmd+d"),
                   keysButton(u"Move to Bin", u"trash", u"cmd+delete"),
                   keysButton(u"Go Up", u"arrow.up", u"cmd+up"),
                   keysButton(u"List View", u"list.bullet", u"cmd+2"),
                   keysButton(u"Columns View", u"rectangle.split.3x1", u"cmd+3"),
                   keysButton(u"Quick Look", u"eye", u"cmd+y"),
                   keysButton(u"Hidden Files", u"eye.slash", u"shift+cmd+."),
               }),
        preset(u"Terminal", u"com.apple.Terminal",
               {
                   keysButton(u"Shell Tab", u"plus.rectangle", u"cmd+t"),
                   keysButton(u"Shell Window", u"macwindow.badge.plus", u"cmd+n"),
                   keysButton(u"Split Pane", u"rectangle.split.2x1", u"cmd+d"),
                   keysButton(u"Clear Screen", u"xmark.rectangle", u"cmd+k"),
                   keysButton(u"Ctrl-C", u"stop.circle", u"ctrl+c"),
                   keysButton(u"Bigger", u"textformat.size.larger", u"cmd+="),
                   keysButton(u"Smaller", u"textformat.size.smaller", u"cmd+-"),
               }),
        preset(u"Messages", u"com.apple.MobileSMS",
               {
                   keysButton(u"New Chat", u"square.and.pencil", u"cmd+n"),
                   keysButton(u"Search Chats", u"magnifyingglass", u"cmd+f"),
                   keysButton(u"Tapback", u"heart", u"cmd+t"),
                   keysButton(u"Reply Inline", u"arrowshape.turn.up.left", u"cmd+r"),
                   keysButton(u"Details", u"info.circle", u"cmd+i"),
                   keysButton(u"Emoji", u"face.smiling", u"ctrl+cmd+space"),
               }),
        preset(u"Photos", u"com.apple.Photos",
               {
                   keysButton(u"Import", u"square.and.arrow.down", u"shift+cmd+i"),
                   keysButton(u"New Album", u"rectangle.stack.badge.plus", u"cmd+n"),
                   keysButton(u"Favourite", u"heart", u"cmd+."),
                   keysButton(u"Rotate", u"rotate.right", u"cmd+r"),
                   keysButton(u"Edit Photo", u"slider.horizontal.3", u"return"),
                   keysButton(u"Photo Info", u"info.circle", u"cmd+i"),
                   keysButton(u"Duplicate Photo", u"plus.square.on.square", u"cmd+d"),
                   keysButton(u"Delete Photo", u"trash", u"cmd+delete"),
                   keysButton(u"Search Photos", u"magnifyingglass", u"cmd+f"),
               }),
        preset(u"Excel", u"com.microsoft.Excel",
               {
                   keysButton(u"AutoSum", u"sum", u"shift+cmd+t"),
                   keysButton(u"Fill Down", u"arrow.down.to.line", u"cmd+d"),
                   keysButton(u"Fill Right", u"arrow.right.to.line", u"cmd+r"),
                   keysButton(u"Format Cells", u"tablecells", u"cmd+1"),
                   keysButton(u"Filter", u"line.3.horizontal.decrease.circle", u"shift+cmd+f"),
                   keysButton(u"Paste Special", u"doc.on.clipboard", u"ctrl+cmd+v"),
                   keysButton(u"Find in Sheet", u"magnifyingglass", u"cmd+f"),
                   keysButton(u"Cell Bold", u"bold", u"cmd+b"),
               }),
        preset(u"Word", u"com.microsoft.Word",
               {
                   keysButton(u"Bold", u"bold", u"cmd+b"),
                   keysButton(u"Italic", u"italic", u"cmd+i"),
                   keysButton(u"Underline", u"underline", u"cmd+u"),
                   keysButton(u"Heading 1", u"textformat.size", u"opt+cmd+1"),
                   keysButton(u"Normal Style", u"textformat", u"shift+cmd+n"),
                   keysButton(u"Bullets", u"list.bullet", u"shift+cmd+l"),
                   keysButton(u"Track Changes", u"pencil.and.outline", u"shift+cmd+e"),
                   keysButton(u"New Comment", u"text.bubble", u"opt+cmd+a"),
               }),
        preset(u"Final Cut Pro", u"com.apple.FinalCut",
               {
                   keysButton(u"Select Tool", u"cursorarrow", u"a"),
                   keysButton(u"Blade Tool", u"scissors", u"b"),
                   keysButton(u"Split Clip", u"square.split.2x1", u"cmd+b"),
                   keysButton(u"Trim Tool", u"arrow.left.arrow.right", u"t"),
                   keysButton(u"Add Marker", u"mappin", u"m"),
                   keysButton(u"Append Clip", u"plus.rectangle.on.rectangle", u"e"),
                   keysButton(u"Connect Clip", u"link", u"q"),
                   keysButton(u"Insert Clip", u"square.and.arrow.down.on.square", u"w"),
                   keysButton(u"Skimming", u"waveform", u"s"),
                   keysButton(u"Snapping", u"magnet", u"n"),
                   keysButton(u"Add Transition", u"rectangle.on.rectangle", u"cmd+t"),
                   keysButton(u"Share", u"square.and.arrow.up", u"cmd+e"),
               }),
        preset(u"Music", u"com.apple.Music",
               {
                   keysButton(u"Play/Pause", u"playpause", u"space"),
                   keysButton(u"Prev Track", u"backward.fill", u"cmd+left"),
                   keysButton(u"Next Track", u"forward.fill", u"cmd+right"),
                   keysButton(u"Vol Up", u"speaker.wave.3", u"cmd+up"),
                   keysButton(u"Vol Down", u"speaker.wave.1", u"cmd+down"),
                   keysButton(u"Shuffle", u"shuffle", u"cmd+s"),
                   keysButton(u"Repeat", u"repeat", u"cmd+r"),
                   keysButton(u"Up Next", u"list.bullet.indent", u"opt+cmd+u"),
               }),
    };
    return table;
}

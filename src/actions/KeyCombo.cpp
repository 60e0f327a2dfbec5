#include "KeyCombo.h"

#include <QList>
#include <iterator>

namespace {

struct ModifierBits
{
    quint64 flags;
    quint32 carbon;
};

// Only spaces and tabs count as padding: a stray newline or non-breaking space is a typo worth refusing
// rather than a key name to guess at.
QStringView trimmedPadding(QStringView part)
{
    const auto isPadding = [](QChar c) { return c == u' ' || c == u'\t'; };
    while (!part.isEmpty() && isPadding(part.front()))
        part = part.sliced(1);
    while (!part.isEmpty() && isPadding(part.back()))
        part.chop(1);
    return part;
}

std::optional<ModifierBits> modifierNamed(QStringView word)
{
    // "super", "meta" and "win" are what Linux users call the key the configuration knows as "cmd".
    if (word == u"cmd" || word == u"command" || word == u"super" || word == u"meta" || word == u"win")
        return ModifierBits{KeyCombo::SuperFlag, KeyCombo::SuperModifier};
    if (word == u"shift")
        return ModifierBits{KeyCombo::ShiftFlag, KeyCombo::ShiftModifier};
    if (word == u"opt" || word == u"option" || word == u"alt")
        return ModifierBits{KeyCombo::AltFlag, KeyCombo::AltModifier};
    if (word == u"ctrl" || word == u"control")
        return ModifierBits{KeyCombo::ControlFlag, KeyCombo::ControlModifier};
    return std::nullopt;
}

} // namespace

std::optional<KeyCombo> KeyCombo::parse(QStringView text)
{
    const QString lowered = text.toString().toLower();
    // Empty pieces are dropped before trimming, so "cmd++v" still reads as cmd and v, while a piece of
    // bare padding such as the middle of "cmd+ +v" survives the split and is refused below.
    const QList<QStringView> parts = QStringView(lowered).split(u'+', Qt::SkipEmptyParts);

    KeyCombo combo;
    bool haveKey = false;
    for (QStringView raw : parts) {
        const QStringView part = trimmedPadding(raw);
        if (const auto bits = modifierNamed(part)) {
            combo.flags |= bits->flags;
            combo.carbon |= bits->carbon;
            continue;
        }
        if (haveKey)
            return std::nullopt;
        const auto found = codes().constFind(part.toString());
        if (found == codes().constEnd())
            return std::nullopt;
        combo.keyCode = found.value();
        haveKey = true;
    }
    if (!haveKey)
        return std::nullopt;
    return combo;
}

const QHash<QString, quint16>& KeyCombo::codes()
{
    static const QHash<QString, quint16> table = [] {
        struct Entry
        {
            const char16_t* name;
            quint16 code;
        };
        // The codes are positions on the original platform's keyboard, not characters, hence the
        // seemingly scrambled order of letters and digits.
        static constexpr Entry entries[] = {
            {u"a", 0},          {u"s", 1},       {u"d", 2},
            {u"f", 3},          {u"h", 4},       {u"g", 5},
            {u"z", 6},          {u"x", 7},       {u"c", 8},
            {u"v", 9},          {u"b", 11},      {u"q", 12},
            {u"w", 13},         {u"e", 14},      {u"r", 15},
            {u"y", 16},         {u"t", 17},      {u"o", 31},
            {u"u", 32},         {u"i", 34},      {u"p", 35},
            {u"l", 37},         {u"j", 38},      {u"k", 40},
            {u"n", 45},         {u"m", 46},

            {u"1", 18},         {u"2", 19},      {u"3", 20},
            {u"4", 21},         {u"6", 22},      {u"5", 23},
            {u"9", 25},         {u"7", 26},      {u"8", 28},
            {u"0", 29},

            {u"=", 24},         {u"-", 27},      {u"]", 30},
            {u"[", 33},         {u"'", 39},      {u";", 41},
            {u"\\", 42},        {u",", 43},      {u"/", 44},
            {u".", 47},         {u"`", 50},

            {u"return", 36},    {u"enter", 36},  {u"tab", 48},
            {u"space", 49},     {u"delete", 51}, {u"backspace", 51},
            {u"escape", 53},    {u"esc", 53},    {u"forwarddelete", 117},
            {u"home", 115},     {u"end", 119},   {u"pageup", 116},
            {u"pagedown", 121}, {u"left", 123},  {u"right", 124},
            {u"down", 125},     {u"up", 126},

            {u"f1", 122},       {u"f2", 120},    {u"f3", 99},
            {u"f4", 118},       {u"f5", 96},     {u"f6", 97},
            {u"f7", 98},        {u"f8", 100},    {u"f9", 101},
            {u"f10", 109},      {u"f11", 103},   {u"f12", 111},
        };
        QHash<QString, quint16> built;
        built.reserve(std::size(entries));
        for (const Entry& entry : entries)
            built.insert(QString::fromUtf16(entry.name), entry.code);
        return built;
    }();
    return table;
}

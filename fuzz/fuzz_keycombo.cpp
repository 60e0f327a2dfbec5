// Key combinations as users type them: whatever parses names a known key, sets each modifier in both of
// its masks, and reads the same when written back in the plain "modifiers+key" form.

#include "actions/KeyCombo.h"

#include <QStringList>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void fail(const char* what, const QString& text)
{
    std::fprintf(stderr, "%s: \"%s\"\n", what, text.toUtf8().constData());
    std::abort();
}

void check(const QString& text)
{
    const auto combo = KeyCombo::parse(text);
    if (!combo)
        return;
    const struct
    {
        const char16_t* word;
        quint64 flag;
        quint32 modifier;
    } modifiers[] = {
        {u"ctrl", KeyCombo::ControlFlag, KeyCombo::ControlModifier},
        {u"alt", KeyCombo::AltFlag, KeyCombo::AltModifier},
        {u"shift", KeyCombo::ShiftFlag, KeyCombo::ShiftModifier},
        {u"cmd", KeyCombo::SuperFlag, KeyCombo::SuperModifier},
    };
    QStringList words;
    quint64 flags = 0;
    quint32 carbon = 0;
    for (const auto& modifier : modifiers) {
        const bool inFlags = combo->flags & modifier.flag;
        if (inFlags != bool(combo->carbon & modifier.modifier))
            fail("a modifier is in one mask but not the other", text);
        if (inFlags) {
            words << QString::fromUtf16(modifier.word);
            flags |= modifier.flag;
            carbon |= modifier.modifier;
        }
    }
    if (flags != combo->flags || carbon != combo->carbon)
        fail("bits outside the four modifiers", text);
    const QList<QString> names = KeyCombo::codes().keys(combo->keyCode);
    if (names.isEmpty())
        fail("a key code no name has", text);
    for (const QString& name : names) {
        if (KeyCombo::parse((QStringList(words) << name).join(u'+')) != combo)
            fail("the plain form reads differently", text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    check(QString::fromUtf8(bytes));
    check(QString::fromLatin1(bytes));
    return 0;
}

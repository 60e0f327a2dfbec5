// The configuration document: whatever the reader accepts, the writer writes back in a form the reader
// accepts again and that reads as the same document; writing that again gives the same bytes.

#include "config/ConfigReader.h"
#include "config/ConfigWriter.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

[[noreturn]] void fail(const char* what, const QByteArray& text)
{
    std::fprintf(stderr, "%s:\n%s\n", what, text.constData());
    std::abort();
}

void roundTrip(const BarConfig& config)
{
    const QByteArray written = ConfigWriter::write(config);
    const ConfigReader::Result again = ConfigReader::read(written);
    if (!again.config)
        fail("the reader rejects what the writer wrote", again.error.toUtf8() + '\n' + written);
    if (!(*again.config == config))
        fail("the written document reads back as another one", written);
    if (ConfigWriter::write(*again.config) != written)
        fail("writing the document read back gives other bytes", written);
}

/// A document built straight from the input's 16-bit units, so that texts the JSON reader never
/// produces from valid input (any lone surrogate, any control) reach the writer too. Texts are
/// separated by U+001E; each four make a button, every third button goes into the one before it, and
/// every fifth into an application set.
BarConfig fromCodeUnits(const std::uint8_t* data, std::size_t size)
{
    QString units(qsizetype(size / 2), Qt::Uninitialized);
    std::memcpy(units.data(), data, size / 2 * 2);
    const QStringList texts = units.split(QChar(0x1e));
    BarConfig config;
    if (texts.size() % 2 == 1)
        config.hotkey = texts.last();
    for (qsizetype i = 0; i + 3 < texts.size(); i += 4) {
        ButtonSpec spec = ButtonSpec::make(texts[i], texts[i + 1], texts[i + 2], texts[i + 3]);
        const qsizetype n = i / 4;
        if (n % 3 == 2 && !config.buttons.isEmpty()) {
            ButtonSpec& parent = config.buttons.last();
            parent.locked = n % 2 == 0;
            parent.children = parent.children.value_or(QList<ButtonSpec>()) << spec;
        } else if (n % 5 == 4) {
            config.appSets = config.appSets.value_or(QList<AppSet>())
                             << AppSet{texts[i + 1], texts[i], {spec}};
        } else {
            spec.color = texts[i + 3];
            config.buttons.append(spec);
        }
    }
    return config;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    if (const auto config = ConfigReader::decode(bytes))
        roundTrip(*config);
    roundTrip(fromCodeUnits(data, size));
    return 0;
}

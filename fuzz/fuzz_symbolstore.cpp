// The symbols kept in the user's cache folder: whatever file is found there, reading it never crashes,
// takes nothing unless it is whole, and what it takes reads the same when written back.

#include "bar/SymbolStore.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

const QByteArray stamp = QByteArrayLiteral("x");

bool same(const QHash<QString, QImage>& a, const QHash<QString, QImage>& b)
{
    if (a.size() != b.size())
        return false;
    for (auto it = a.cbegin(); it != a.cend(); ++it) {
        const auto other = b.constFind(it.key());
        if (other == b.cend() || *other != it.value() ||
            other->devicePixelRatio() != it.value().devicePixelRatio())
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray file(reinterpret_cast<const char*>(data), qsizetype(size));
    const QHash<QString, QImage> pictures = SymbolStore::decode(file, stamp);
    if (!same(SymbolStore::decode(SymbolStore::encode(pictures, stamp), stamp), pictures)) {
        std::fprintf(stderr, "kept symbols read differently when written back\n");
        std::abort();
    }
    return 0;
}

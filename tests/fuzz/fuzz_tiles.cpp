#include "fuzz.h"
#include "maptiles.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    TileSettings settings;
    settings.address = QString::fromUtf8(bytesOf(data, size));
    if (settings.address.isEmpty() || !settings.complaint().isEmpty())
        return 0;
    const QUrl first = settings.url({1, 0, 1});
    const QUrl second = settings.url({19, 524287, 1});
    expect(first.isValid() && second.isValid() && first != second, "each tile has an address of its own");
    expect(first.scheme() == second.scheme() && first.host() == second.host(), "they all come from the same place");
    expect(first.scheme() == QLatin1String("https") || first.isLocalFile(), "which is the file system or encrypted");
    return 0;
}

#pragma once

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

/**
 * What every target defines: it hands the bytes to what it tests and calls expect() on what holds after any input.
 * Built by scripts/fuzz it is called with ever new bytes; in the tests with those of its corpus.
 */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size));
}

/** The first byte of the input, which is taken off it: a choice. 0 where there is none. */
inline unsigned takeByte(const std::uint8_t*& data, std::size_t& size)
{
    if (size == 0)
        return 0;
    --size;
    return *data++;
}

inline void expect(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

#pragma once

#include <QtGlobal>

#include <cstddef>

/** The register of CRC_CCITT that stood at @p checksum (16 bits), after @p size more bytes. */
unsigned crcCcitt(const char* bytes, std::size_t size, unsigned checksum);

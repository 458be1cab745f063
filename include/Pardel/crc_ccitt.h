#pragma once

#include <Pardel/pardel_export.h>

#include <QByteArray>

#include <cstddef>

/** @file
 * The checksum of the packets on the terminal link.
 */

/**
 * The 16-bit checksum of the terminal link over all bytes of @p data.
 *
 * CRC on the CCITT polynomial x^16 + x^12 + x^5 + 1 (0x1021), most significant bit first, nothing reflected, no final
 * XOR. @p zeroInit chooses the start of the register and with it the published variant (names and check values as in
 * the "Catalogue of parametrised CRC algorithms"):
 *
 * | zeroInit | start  | variant            | "123456789" | no bytes |
 * |----------|--------|--------------------|-------------|----------|
 * | false    | 0xFFFF | CRC-16/CCITT-FALSE | 0x29B1      | 0xFFFF   |
 * | true     | 0x0000 | CRC-16/XMODEM      | 0x31C3      | 0x0000   |
 *
 * Table-driven, one look-up a byte (the "slicing" of M. E. Kounavis and F. L. Berry, "Novel table lookup-based
 * algorithms for high-performance CRC generation", 2008).
 */
PARDEL_EXPORT quint16 CRC_CCITT(QByteArray data, bool zeroInit);

/**
 * The same in pieces, and of bytes that are in no array: the register that stood at @p checksum, after @p size more
 * bytes.
 *
 * Begins with 0xFFFF or 0x0000, the start of the variant, and goes on with what the piece before gave; the last value
 * is the checksum. Of a short packet it takes a third of the time of the form above, which counts an array's reference.
 *
 * @code
 * quint16 checksum = 0xFFFF;
 * for (const QByteArray& piece : pieces)
 *     checksum = CRC_CCITT(piece.constData(), std::size_t(piece.size()), checksum);
 * @endcode
 *
 * @param bytes the next piece; may be null if it is empty
 * @param size of the piece, in bytes
 * @param checksum 0xFFFF or 0x0000 at first, then what the piece before gave
 * @return the register behind the piece
 */
PARDEL_EXPORT quint16 CRC_CCITT(const char* bytes, std::size_t size, quint16 checksum);

/**
 * Seals a packet: appends CRC_CCITT(@p data, @p zeroInit), taken over the array as it stands, high byte first.
 *
 * With @p zeroInit true the checksum of a sealed packet, its two checksum bytes included, is 0.
 */
PARDEL_EXPORT void Append_CRC_CCITT(QByteArray& data, bool zeroInit);

#pragma once

#include "packetwriter.h"

#include <QByteArray>

#include <cstddef>
#include <string>
#include <string_view>

class Output;
struct MobData;

/**
 * An aligned table for people: a heading, then one line a report, further reports indented under their packet's.
 *
 * Sensors stand in short as type=value, with "!" behind a status other than 0; raw records only as their number and
 * size. A rejected packet shows its object number, as far as one was read, and nothing else.
 */
class TableWriter : public PacketWriter
{
public:
    /** @param headed whether the heading is already there */
    TableWriter(Output& output, std::size_t heldSize, bool headed)
        : m_output(output), m_heldSize(static_cast<int>(heldSize)), m_headed(headed)
    {}

    void write(const DecodedPacket& packet) override;
    void flush() override;

private:
    void writeReport(const std::string& indent, const MobData& report, std::string_view checksum);
    void writeWithoutPlace(std::string_view what, const MobData& report, std::string_view checksum);
    void endLine();

    Output& m_output;
    const int m_heldSize;
    QByteArray m_text;
    bool m_headed;
};

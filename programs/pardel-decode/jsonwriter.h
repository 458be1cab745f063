#pragma once

#include "packetwriter.h"

#include <cstddef>
#include <memory>

class Output;

/** One JSON object a line for every packet. */
class JsonWriter : public PacketWriter
{
public:
    JsonWriter(Output& output, std::size_t heldSize);
    ~JsonWriter() override;

    void write(const DecodedPacket& packet) override;
    void flush() override;

private:
    class Document;
    std::unique_ptr<Document> m_document;
};

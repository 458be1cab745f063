#include "jsonwriter.h"

#include "decodedpacket.h"
#include "numbertext.h"
#include "output.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cmath>
#include <cstring>

namespace {

constexpr std::size_t flushSize = 1 << 16;

/// RapidJSON's writer, with the parts that need no escaping written as they stand. Prefix and os_ are what
/// RapidJSON 1.1 leaves to derived writers: the comma or colon before a value, and the buffer.
class FastWriter : public rapidjson::Writer<rapidjson::StringBuffer>
{
public:
    using Writer::Writer;

    /// A member's name, with its quotes.
    template <std::size_t Size>
    void name(const char (&quoted)[Size])
    {
        Prefix(rapidjson::kStringType);
        std::memcpy(os_->Push(Size - 1), quoted, Size - 1);
    }

    void hex(const QByteArray& bytes)
    {
        constexpr char digits[] = "0123456789abcdef";
        Prefix(rapidjson::kStringType);
        char* text = os_->Push(2 * static_cast<std::size_t>(bytes.size()) + 2);
        *text++ = '"';
        for (const char byte : bytes) {
            *text++ = digits[static_cast<uchar>(byte) >> 4];
            *text++ = digits[static_cast<uchar>(byte) & 0x0F];
        }
        *text = '"';
    }

    void number(float value)
    {
        constexpr float exact = 1 << 24; // below it a whole float is written best as an integer
        if (std::abs(value) < exact && value == std::trunc(value) && !(value == 0 && std::signbit(value))) {
            Int(static_cast<int>(value));
            return;
        }
        const FloatText shortest(value);
        const std::string_view text = value == 0 ? "-0.0" : shortest.view();
        if (std::isfinite(value))
            RawValue(text.data(), text.size(), rapidjson::kNumberType);
        else
            String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }
};

} // namespace

class JsonWriter::Document
{
public:
    explicit Document(Output& output) : m_output(output) {}

    void writePacket(const DecodedPacket& packet);
    void flush();

private:
    void writeReport(const MobData& report);
    void writeRaw(const QList<QByteArray>& list);
    /// A hostile packet holds tens of thousands of reports: their text must not pile up.
    void flushIfLarge()
    {
        if (m_text.GetSize() >= flushSize)
            flush();
    }

    Output& m_output;
    rapidjson::StringBuffer m_text;
    FastWriter m_writer{m_text};
};

void JsonWriter::Document::writePacket(const DecodedPacket& packet)
{
    m_writer.Reset(m_text);
    m_writer.StartObject();
    m_writer.name("\"offset\"");
    m_writer.Int64(packet.place);
    m_writer.name("\"size\"");
    m_writer.Int(packet.size);
    m_writer.name("\"accepted\"");
    m_writer.Bool(packet.accepted());
    m_writer.name("\"result\"");
    m_writer.Uint(packet.result);
    m_writer.name("\"statusBit\"");
    if (packet.hasStatus())
        m_writer.Bool(packet.statusBit);
    else
        m_writer.Null();
    m_writer.name("\"crc\"");
    m_writer.String(packet.checksumMatches ? "ok" : "bad");
    m_writer.name("\"report\"");
    writeReport(packet.report);
    m_writer.name("\"reports\"");
    m_writer.StartArray();
    for (const MobData& report : packet.reports)
        writeReport(report);
    m_writer.EndArray();
    m_writer.name("\"rawRecords\"");
    writeRaw(packet.rawRecords);
    m_writer.name("\"rawExtra\"");
    writeRaw(packet.rawExtra);
    m_writer.EndObject();
    m_text.Put('\n');
    flushIfLarge();
}

void JsonWriter::Document::writeReport(const MobData& report)
{
    m_writer.StartObject();
    m_writer.name("\"idObject\"");
    m_writer.Int(report.idObject);
    m_writer.name("\"latitude\"");
    m_writer.Int(report.latitude);
    m_writer.name("\"longitude\"");
    m_writer.Int(report.longitude);
    m_writer.name("\"speed\"");
    m_writer.Int(report.speed);
    m_writer.name("\"course\"");
    m_writer.Int(report.course);
    m_writer.name("\"timeUnix\"");
    m_writer.Int(report.timeUnix);
    m_writer.name("\"sensors\"");
    m_writer.StartArray();
    for (const Sensor& sensor : report.sensors) {
        m_writer.StartObject();
        m_writer.name("\"number\"");
        m_writer.Int(sensor.number);
        m_writer.name("\"type\"");
        m_writer.Int(sensor.type);
        m_writer.name("\"value\"");
        m_writer.number(sensor.value);
        m_writer.name("\"status\"");
        m_writer.Int(sensor.status);
        m_writer.EndObject();
        flushIfLarge();
    }
    m_writer.EndArray();
    m_writer.EndObject();
}

void JsonWriter::Document::writeRaw(const QList<QByteArray>& list)
{
    m_writer.StartArray();
    for (const QByteArray& bytes : list)
        m_writer.hex(bytes);
    m_writer.EndArray();
}

void JsonWriter::Document::flush()
{
    m_output.write(m_text.GetString(), m_text.GetSize());
    m_text.Clear();
}

JsonWriter::JsonWriter(Output& output) : m_document(std::make_unique<Document>(output)) {}

JsonWriter::~JsonWriter() = default;

void JsonWriter::write(const DecodedPacket& packet)
{
    m_document->writePacket(packet);
}

void JsonWriter::flush()
{
    m_document->flush();
}

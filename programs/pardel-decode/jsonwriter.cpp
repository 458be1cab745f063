#include "jsonwriter.h"

#include "decodedpacket.h"
#include "numbertext.h"
#include "output.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
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

    /// Most of the text by far: written in one go, in front of a bound that no reading reaches.
    void sensor(const Sensor& sensor)
    {
        constexpr std::size_t longest = 128;
        Prefix(rapidjson::kObjectType);
        char* const begin = os_->Push(longest);
        char* end = text(begin, "{\"number\":");
        end = integer(end, sensor.number);
        end = text(end, ",\"type\":");
        end = integer(end, sensor.type);
        end = text(end, ",\"value\":");
        end = number(end, sensor.value);
        end = text(end, ",\"status\":");
        end = integer(end, sensor.status);
        *end++ = '}';
        os_->Pop(longest - static_cast<std::size_t>(end - begin));
    }

private:
    template <std::size_t Size>
    static char* text(char* to, const char (&characters)[Size])
    {
        std::memcpy(to, characters, Size - 1);
        return to + Size - 1;
    }

    static char* integer(char* to, int value) { return rapidjson::internal::i32toa(value, to); }

    static char* number(char* to, float value)
    {
        constexpr float exact = 1 << 24; // below it a whole float is written best as an integer
        if (std::abs(value) < exact && value == static_cast<float>(static_cast<int>(value)) &&
            !(value == 0 && std::signbit(value)))
            return integer(to, static_cast<int>(value));
        if (value == 0)
            return text(to, "-0.0");
        const FloatText shortest(value);
        const std::string_view digits = shortest.view();
        const bool quoted = !std::isfinite(value);
        if (quoted)
            *to++ = '"';
        to = std::copy(digits.begin(), digits.end(), to);
        if (quoted)
            *to++ = '"';
        return to;
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
        m_writer.sensor(sensor);
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

#include "jsonwriter.h"

#include "decodedpacket.h"
#include "numbertext.h"
#include "output.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr std::size_t longestPart = 512; // more than all that stands between two items of lists
constexpr std::size_t longestSensor = 128;

} // namespace

/// The names and their order are the same for every packet and no text needs escaping, so that the text is put together
/// from literals and digits: the bookkeeping of a general JSON writer takes as long as the digits.
class JsonWriter::Document
{
public:
    Document(Output& output, std::size_t heldSize) : m_output(output), m_heldSize(heldSize) {}

    void writePacket(const DecodedPacket& packet);
    void flush();

private:
    void writeReport(const MobData& report);
    void writeSensor(const Sensor& sensor);
    void writeRaw(const QByteArray& bytes);

    std::size_t size() const { return static_cast<std::size_t>(m_end - m_text.data()); }
    /// Every item of a list makes room for itself and for what follows up to the next one.
    void makeRoom(std::size_t characters);
    template <typename Item>
    void list(const QList<Item>& items, void (Document::*write)(const Item&))
    {
        text("[");
        for (auto item = items.cbegin(); item != items.cend(); ++item) {
            if (item != items.cbegin())
                text(",");
            (this->*write)(*item);
        }
        text("]");
    }
    template <std::size_t Size>
    void text(const char (&literal)[Size])
    {
        std::memcpy(m_end, literal, Size - 1);
        m_end += Size - 1;
    }
    template <typename Integer>
    void integer(Integer value)
    {
        m_end = std::to_chars(m_end, m_text.data() + m_text.size(), value).ptr;
    }
    void boolean(bool value) { value ? text("true") : text("false"); }
    void number(float value);

    Output& m_output;
    const std::size_t m_heldSize;
    std::vector<char> m_text = std::vector<char>(longestPart);
    char* m_end = m_text.data(); ///< Of what is written.
};

void JsonWriter::Document::writePacket(const DecodedPacket& packet)
{
    makeRoom(longestPart);
    text("{\"offset\":");
    integer(packet.place);
    text(",\"size\":");
    integer(packet.size);
    text(",\"accepted\":");
    boolean(packet.accepted());
    text(",\"result\":");
    integer(packet.result);
    text(",\"statusBit\":");
    if (packet.hasStatus())
        boolean(packet.statusBit);
    else
        text("null");
    if (packet.checksumMatches)
        text(",\"crc\":\"ok\",\"report\":");
    else
        text(",\"crc\":\"bad\",\"report\":");
    writeReport(packet.report);
    text(",\"reports\":");
    list(packet.reports, &Document::writeReport);
    text(",\"rawRecords\":");
    list(packet.rawRecords, &Document::writeRaw);
    text(",\"rawExtra\":");
    list(packet.rawExtra, &Document::writeRaw);
    text("}\n");
    makeRoom(0);
}

void JsonWriter::Document::writeReport(const MobData& report)
{
    makeRoom(longestPart);
    text("{\"idObject\":");
    integer(report.idObject);
    text(",\"latitude\":");
    integer(report.latitude);
    text(",\"longitude\":");
    integer(report.longitude);
    text(",\"speed\":");
    integer(report.speed);
    text(",\"course\":");
    integer(report.course);
    text(",\"timeUnix\":");
    integer(report.timeUnix);
    text(",\"sensors\":");
    list(report.sensors, &Document::writeSensor);
    text("}");
}

void JsonWriter::Document::writeSensor(const Sensor& sensor)
{
    makeRoom(longestSensor + longestPart);
    text("{\"number\":");
    integer(sensor.number);
    text(",\"type\":");
    integer(sensor.type);
    text(",\"value\":");
    number(sensor.value);
    text(",\"status\":");
    integer(int{sensor.status});
    text("}");
}

void JsonWriter::Document::writeRaw(const QByteArray& bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    makeRoom(2 * static_cast<std::size_t>(bytes.size()) + longestPart);
    text("\"");
    for (const char byte : bytes) {
        *m_end++ = digits[static_cast<uchar>(byte) >> 4];
        *m_end++ = digits[static_cast<uchar>(byte) & 0x0F];
    }
    text("\"");
}

void JsonWriter::Document::makeRoom(std::size_t characters)
{
    // A hostile packet holds tens of thousands of reports: their text must not pile up.
    if (size() >= m_heldSize)
        flush();
    const std::size_t used = size();
    if (m_text.size() < used + characters) {
        m_text.resize(2 * (used + characters));
        m_end = m_text.data() + used;
    }
}

void JsonWriter::Document::number(float value)
{
    constexpr float exact = 1 << 24; // below it a whole float is written best as an integer
    if (std::abs(value) < exact && value == static_cast<float>(static_cast<int>(value)) &&
        !(value == 0 && std::signbit(value)))
        return integer(static_cast<int>(value));
    if (value == 0)
        return text("-0.0");
    const FloatText shortest(value);
    const std::string_view digits = shortest.view();
    const bool quoted = !std::isfinite(value);
    if (quoted)
        text("\"");
    m_end = std::copy(digits.begin(), digits.end(), m_end);
    if (quoted)
        text("\"");
}

void JsonWriter::Document::flush()
{
    m_output.write(m_text.data(), size());
    m_end = m_text.data();
}

JsonWriter::JsonWriter(Output& output, std::size_t heldSize) : m_document(std::make_unique<Document>(output, heldSize))
{}

JsonWriter::~JsonWriter() = default;

void JsonWriter::write(const DecodedPacket& packet)
{
    m_document->writePacket(packet);
}

void JsonWriter::flush()
{
    m_document->flush();
}

#include "tablewriter.h"

#include "decodedpacket.h"
#include "numbertext.h"
#include "output.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <string>
#include <string_view>

namespace {

struct Column
{
    std::string_view heading;
    int width;
    bool left;
};

constexpr Column columns[] = {
    {"TIME (UTC)", 21, true}, {"OBJECT", 6, false}, {"LATITUDE", 11, false}, {"LONGITUDE", 12, false},
    {"KM/H", 5, false},       {"COURSE", 6, false}, {"CRC", 3, true},
};
constexpr std::string_view sensorsHeading = "SENSORS (! raised)";

using Cells = std::array<std::string_view, std::size(columns)>;

void appendText(QByteArray& line, std::string_view text)
{
    line.append(text.data(), static_cast<int>(text.size()));
}

void appendRow(QByteArray& line, const Cells& cells)
{
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const Column& column = columns[i];
        const QByteArray padding(qMax(0, column.width - static_cast<int>(cells[i].size())), ' ');
        if (!column.left)
            line.append(padding);
        appendText(line, cells[i]);
        if (column.left)
            line.append(padding);
        line.append(' ');
    }
}

std::string timeText(qint32 timeUnix)
{
    if (timeUnix == MobData::noTime)
        return "no time";
    const std::time_t time = static_cast<quint32>(timeUnix);
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts));
}

std::string degreesText(qint32 coordinate)
{
    char text[16];
    return std::string(text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%.7f", coordinate / 1e7)));
}

} // namespace

void TableWriter::write(const DecodedPacket& packet)
{
    if (!m_headed) {
        Cells headings;
        for (std::size_t i = 0; i < headings.size(); ++i)
            headings[i] = columns[i].heading;
        appendRow(m_text, headings);
        appendText(m_text, sensorsHeading);
        m_text.append('\n');
        m_headed = true;
    }
    const std::string_view checksum = packet.checksumMatches ? "ok" : "bad";
    if (!packet.accepted())
        writeWithoutPlace("rejected", packet.report, checksum);
    else if (packet.report.timeUnix == MobData::noTime)
        writeWithoutPlace("no time", packet.report, checksum);
    else
        writeReport("", packet.report, checksum);
    if (!packet.rawRecords.isEmpty()) {
        qint64 bytes = 0;
        for (const QByteArray& record : packet.rawRecords)
            bytes += record.size();
        appendText(m_text,
                   " raw: " + std::to_string(packet.rawRecords.size()) + ", " + std::to_string(bytes) + " bytes");
    }
    endLine();
    for (const MobData& report : packet.reports) {
        writeReport("  ", report, "");
        endLine();
    }
}

void TableWriter::writeReport(const std::string& indent, const MobData& report, std::string_view checksum)
{
    const std::string time = indent + timeText(report.timeUnix);
    const std::string object = std::to_string(report.idObject);
    const std::string latitude = degreesText(report.latitude);
    const std::string longitude = degreesText(report.longitude);
    const std::string speed = std::to_string(report.speed);
    const std::string course = std::to_string(report.course);
    appendRow(m_text, {time, object, latitude, longitude, speed, course, checksum});
    for (const Sensor& sensor : report.sensors) {
        m_text.append(' ');
        appendText(m_text, std::to_string(sensor.type));
        m_text.append('=');
        appendText(m_text, FloatText(sensor.value).view());
        if (sensor.status != 0)
            m_text.append('!');
        if (m_text.size() >= m_heldSize)
            flush();
    }
}

void TableWriter::writeWithoutPlace(std::string_view what, const MobData& report, std::string_view checksum)
{
    const std::string object = std::to_string(report.idObject);
    appendRow(m_text, {what, object, "-", "-", "-", "-", checksum});
}

void TableWriter::endLine()
{
    m_text.append('\n');
    if (m_text.size() >= m_heldSize)
        flush();
}

void TableWriter::flush()
{
    m_output.write(m_text);
    m_text.resize(0);
}

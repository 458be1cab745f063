#include <Pardel/tutils.h>

#include <QtEndian>

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

namespace {

constexpr int packedEpochYear = 2000;
constexpr int degreeUnits = 10'000'000; // of a coordinate, packed or decimal, in one degree

constexpr bool isBcd(quint8 byte)
{
    return (byte >> 4) < 10 && (byte & 0x0F) < 10;
}

constexpr int fromBcd(quint8 byte)
{
    return (byte >> 4) * 10 + (byte & 0x0F);
}

/// The byte at @p index, 0 behind the end.
quint8 byteAt(const QByteArray& bytes, int index)
{
    return index < bytes.size() ? static_cast<quint8>(bytes.at(index)) : quint8(0);
}

/// Degrees in one byte and six BCD digits of minutes from @p index on, in units of degrees times 10 000 000 plus
/// minutes times 100 000.
quint32 packedCoordinate(const QByteArray& bytes, int index)
{
    quint32 minutes = 0;
    for (int i = index + 1; i <= index + 3; ++i) {
        const quint8 digits = byteAt(bytes, i);
        if (!isBcd(digits)) {
            minutes = 0;
            break;
        }
        minutes = minutes * 100 + static_cast<quint32>(fromBcd(digits));
    }
    return (byteAt(bytes, index) * 1'000'000U + minutes) * 10U;
}

void storeCoordinate(quint32 packed, bool convert, bool keepOnInvalid, uint& target)
{
    constexpr std::array<quint32, 3> noPosition = {2'550'000'000U, 1'270'000'000U, 0xFFFFFFFFU};
    const quint32 value =
        convert ? static_cast<quint32>(TUtils::ConvertCoordinates(static_cast<qint32>(packed))) : packed;
    const bool invalid = std::find(noPosition.begin(), noPosition.end(), value) != noPosition.end();
    if (!(keepOnInvalid && invalid))
        target = value;
}

} // namespace

TUtils::TUtils(QObject* parent) : QObject(parent) {}

QDateTime TUtils::getDateTime(QByteArray b)
{
    const auto field = [&b](int index) {
        const quint8 byte = byteAt(b, index);
        return isBcd(byte) ? fromBcd(byte) : 0;
    };
    QDateTime time;
    time.setDate(QDate(field(2) + packedEpochYear, field(1), field(0)));
    time.setTime(QTime(field(3), field(4), field(5)));
    return time;
}

QByteArray TUtils::dateTimeToHex(QDateTime t)
{
    const QDate date = t.date();
    const QTime time = t.time();
    const int year = date.year() - packedEpochYear;
    const bool yearFits = year >= 0 && year <= std::numeric_limits<qint8>::max();
    return intToBinDec(date.day()) + intToBinDec(date.month()) + intToBinDec(yearFits ? year : 0) +
           intToBinDec(time.hour()) + intToBinDec(time.minute()) + intToBinDec(time.second());
}

QByteArray TUtils::intToBinDec(int v)
{
    const unsigned byte = (static_cast<unsigned>(v / 10) << 4) | static_cast<unsigned>(v % 10);
    return QByteArray(1, static_cast<char>(byte & 0xFF));
}

void TUtils::getCoords(QByteArray b, uint& lat, uint& lon, bool convert, bool keepOnInvalid)
{
    storeCoordinate(packedCoordinate(b, 0), convert, keepOnInvalid, lat);
    storeCoordinate(packedCoordinate(b, 4), convert, keepOnInvalid, lon);
}

int TUtils::ConvertCoordinates(int v)
{
    const qint64 degrees = v / degreeUnits;
    const qint64 minutes = v % degreeUnits;                              // times 100 000
    const qint64 converted = degrees * degreeUnits + minutes * 100 / 60; // both truncate alike, their signs agree
    return static_cast<int>(
        std::clamp<qint64>(converted, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

bool TUtils::GetVersion(QByteArray& b, uint& version)
{
    constexpr int replySize = 8;
    if (b.size() != replySize || !b.startsWith('R') || !b.endsWith("555"))
        return false;
    version = qFromLittleEndian<quint32>(b.constData() + 1);
    return true;
}

QString TUtils::TypeToString(short)
{
    return tr("Unknow");
}

bool TUtils::ParceAnswer(QByteArray&)
{
    return false;
}

int GetExternalSupplyValue(int code)
{
    struct Step
    {
        int last; // code
        int volts;
    };
    static constexpr Step steps[] = {
        {12, 0},   {34, 0},   {56, 6},   {63, 7},   {70, 8},   {85, 10},  {99, 12},
        {113, 14}, {128, 16}, {143, 18}, {156, 20}, {172, 22}, {255, 24},
    };
    const int byte = code & 0xFF;
    return std::find_if(std::begin(steps), std::end(steps), [byte](const Step& step) { return byte <= step.last; })
        ->volts;
}

#include <Pardel/packetframer.h>

#include "crc_ccitt_p.h"
#include "packetsums_p.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <optional>
#include <queue>
#include <utility>
#include <vector>

namespace {

constexpr char packetStart = '\xA4';
constexpr char shortForm = '\xD5';
constexpr char longForm = '\xD6';
constexpr int startSize = 2;
constexpr int lengthOffset = 5;
constexpr int leastHeader = lengthOffset + 2; // bytes from which the size is known
constexpr int leastLength = 13;
constexpr int longFormSize = 545;

bool isStart(const char* bytes)
{
    return bytes[0] == packetStart && (bytes[1] == shortForm || bytes[1] == longForm);
}

/// Numbers with the least one first.
template <typename Number>
using LeastFirst = std::priority_queue<Number, std::vector<Number>, std::greater<>>;

} // namespace

/// All places are offsets of the input, but for those that are called positions, which lie in m_buffer.
class PacketFramer::Private
{
public:
    explicit Private(unsigned start) : m_start(start) {}

    void feed(const QByteArray& bytes);
    void addStop(bool isEnd);
    bool next(Frame& frame);
    qint64 pendingBytes() const { return m_skipped + m_base + m_buffer.size() - m_place; }

    int largestPacket = maximumPacketSize;

private:
    /// A place up to which the input is judged as if nothing came behind it.
    struct Stop
    {
        qint64 place;
        bool isEnd; // of the input, else a pause
    };

    struct Verdict
    {
        enum
        {
            Wait,
            Skip,
            Take,
        } action;
        qint64 size = 0;
        Frame::Kind kind = Frame::Packet;
    };

    /// What can be told of a start by its first bytes.
    struct Start
    {
        enum
        {
            None,    // no start after all
            Unknown, // more has to come
            Short,
            Long,
        } form;
        int size = 0;
    };

    const char* at(qint64 place) const { return m_buffer.constData() + (place - m_base); }
    qint64 findStart(qint64 from, qint64 end) const;
    Start startAt(qint64 place) const;
    bool checksumMatches(qint64 place, int size);
    bool laterMatches(qint64 place, int size);
    bool nextIsGood(Frame& frame);
    Verdict judge();
    Verdict judgeLong(int size);
    Verdict findGoodInside(int size, Frame::Kind otherwise);
    Verdict settleAtStop(int size, Frame::Kind otherwise);
    std::optional<qint64> firstGoodBehind(qint64 place);
    void compact();

    const unsigned m_start; // of the checksum's register
    QByteArray m_buffer;
    qint64 m_base = 0;    // place of the buffer's first byte
    qint64 m_place = 0;   // from here on nothing is settled
    qint64 m_limit = 0;   // what lies behind is not looked at yet: the next stop, or the buffer's end
    qint64 m_skipped = 0; // bytes skipped right before m_place and not told yet
    std::optional<Verdict> m_found;
    std::deque<Stop> m_stops;
    PacketSums m_sums;

    // Starts between m_place and m_ruledOut lead to no good packet; that at m_ruledOut waits or is good. Of no meaning
    // once it lies before m_place.
    qint64 m_ruledOut = 0;

    // What stops look at behind m_place; each start is entered once.
    qint64 m_entered = 0;                            // starts before are in one of these
    LeastFirst<std::pair<qint64, qint64>> m_awaited; // end and place of starts that were not whole
    LeastFirst<qint64> m_good;                       // places of good packets
};

void PacketFramer::Private::feed(const QByteArray& bytes)
{
    if (m_place == m_base + m_buffer.size()) {
        m_base = m_place;
        m_buffer = bytes;
    } else {
        compact();
        m_buffer.append(bytes);
    }
}

void PacketFramer::Private::addStop(bool isEnd)
{
    const qint64 place = m_base + m_buffer.size();
    if (isEnd || m_stops.empty() || m_stops.back().place != place)
        m_stops.push_back({place, isEnd});
}

/// Lets go of what is settled, which may be a large piece of which a few bytes are left.
void PacketFramer::Private::compact()
{
    const auto settled = static_cast<int>(m_place - m_base);
    if (settled < m_buffer.size() / 2)
        return;
    m_buffer = m_buffer.mid(settled);
    m_base = m_place;
}

/// The usual case by the shortest way: the next thing is a good packet.
bool PacketFramer::Private::nextIsGood(Frame& frame)
{
    const qint64 present = m_limit - m_place;
    if (m_skipped > 0 || present < leastLength)
        return false;
    const char* const bytes = at(m_place);
    const int size = qFromLittleEndian<quint16>(bytes + lengthOffset);
    if (bytes[0] != packetStart || bytes[1] != shortForm || size < leastLength || size > largestPacket ||
        size > present || !checksumMatches(m_place, size))
        return false;
    frame = {Frame::Packet, m_place, size, bytes};
    m_place += size;
    return true;
}

bool PacketFramer::Private::next(Frame& frame)
{
    for (;;) {
        m_limit = m_stops.empty() ? m_base + m_buffer.size() : m_stops.front().place;
        if (!m_found && nextIsGood(frame))
            return true;
        if (!m_found) {
            const Verdict verdict = judge();
            if (verdict.action == Verdict::Skip) {
                m_skipped += verdict.size;
                m_place += verdict.size;
                continue;
            }
            if (verdict.action == Verdict::Take)
                m_found = verdict;
        }
        const bool runEnds = m_found || (!m_stops.empty() && m_stops.front().isEnd);
        if (runEnds && m_skipped > 0) {
            frame = {Frame::Skipped, m_place - m_skipped, std::exchange(m_skipped, 0), nullptr};
            return true;
        }
        if (m_found) {
            frame = {m_found->kind, m_place, m_found->size, at(m_place)};
            m_place += m_found->size;
            m_found.reset();
            return true;
        }
        if (m_stops.empty()) {
            compact();
            return false;
        }
        m_stops.pop_front();
    }
}

/// Where the next A4 D5 or A4 D6 begins, or a last A4 of which the second byte is still to come; @p end if nowhere.
qint64 PacketFramer::Private::findStart(qint64 from, qint64 end) const
{
    if (from + 1 < m_limit && from < end && isStart(at(from))) // nearly always, and memchr is not for one byte
        return from;
    while (from < end) {
        const void* const found = std::memchr(at(from), packetStart, static_cast<std::size_t>(end - from));
        if (!found)
            return end;
        from = m_base + (static_cast<const char*>(found) - m_buffer.constData());
        if (from + 1 == m_limit || isStart(at(from)))
            return from;
        ++from;
    }
    return end;
}

PacketFramer::Private::Start PacketFramer::Private::startAt(qint64 place) const
{
    const qint64 present = m_limit - place;
    if (present >= startSize && *at(place + 1) == longForm)
        return {Start::Long, longFormSize};
    if (present < leastHeader)
        return {Start::Unknown};
    const int size = qFromLittleEndian<quint16>(at(place) + lengthOffset);
    return size < leastLength || size > largestPacket ? Start{Start::None} : Start{Start::Short, size};
}

/// Of the start at m_place. Bytes that have been summed up are not read again, as starts may overlap without end.
bool PacketFramer::Private::checksumMatches(qint64 place, int size)
{
    if (m_sums.reaches(place))
        return laterMatches(place, size);
    if (crcCcitt(at(place), static_cast<std::size_t>(size), m_start) == 0)
        return true;
    m_sums.restart(place);
    m_sums.extend(at(place), place + size);
    return false;
}

/// Of a start behind m_place, by sums.
bool PacketFramer::Private::laterMatches(qint64 place, int size)
{
    if (m_sums.reaches(m_place))
        m_sums.forgetBefore(m_place);
    else
        m_sums.restart(m_place);
    m_sums.extend(at(m_sums.end()), place + size);
    return m_sums.match(place, size, m_start);
}

/// What becomes of the bytes from m_place on.
PacketFramer::Private::Verdict PacketFramer::Private::judge()
{
    if (const qint64 start = findStart(m_place, m_limit); start > m_place)
        return {Verdict::Skip, start - m_place};
    if (m_place == m_limit)
        return {Verdict::Wait};
    const Start start = startAt(m_place);
    if (start.form == Start::None)
        return {Verdict::Skip, startSize};
    if (start.form == Start::Unknown || m_place + start.size > m_limit)
        return settleAtStop(0, Frame::Damaged);
    if (start.form == Start::Long)
        return judgeLong(start.size);
    if (checksumMatches(m_place, start.size))
        return {Verdict::Take, start.size, Frame::Packet};
    return findGoodInside(start.size, Frame::Damaged);
}

PacketFramer::Private::Verdict PacketFramer::Private::judgeLong(int size)
{
    const qint64 behind = m_place + size;
    const qint64 present = m_limit - behind;
    const bool stopFollows = present == 0 && !m_stops.empty();
    if (stopFollows || (present > 1 && isStart(at(behind))))
        return {Verdict::Take, size, Frame::Packet};
    const bool startMayFollow = present == 0 || (present == 1 && *at(behind) == packetStart);
    const Verdict verdict = findGoodInside(size, Frame::Packet);
    return startMayFollow && verdict.action == Verdict::Skip ? settleAtStop(size, Frame::Packet) : verdict;
}

/// Of a whole start: goes on at the first good packet that begins inside its bytes; without one, it is taken.
PacketFramer::Private::Verdict PacketFramer::Private::findGoodInside(int size, Frame::Kind otherwise)
{
    const qint64 end = m_place + size;
    m_ruledOut = std::max(m_ruledOut, m_place + 1);
    while ((m_ruledOut = findStart(m_ruledOut, end)) < end) {
        const Start start = startAt(m_ruledOut);
        if (start.form == Start::Unknown || (start.form == Start::Short && m_ruledOut + start.size > m_limit))
            return settleAtStop(size, otherwise);
        if (start.form == Start::Short && laterMatches(m_ruledOut, start.size))
            return {Verdict::Skip, m_ruledOut - m_place};
        ++m_ruledOut;
    }
    return {Verdict::Take, size, otherwise};
}

/// Of a start that is not whole (size 0), or of which another one inside its bytes is not: waits, but for stops.
PacketFramer::Private::Verdict PacketFramer::Private::settleAtStop(int size, Frame::Kind otherwise)
{
    if (m_stops.empty())
        return {Verdict::Wait};
    const std::optional<qint64> good = firstGoodBehind(m_place);
    if (!good && !m_stops.front().isEnd)
        return {Verdict::Wait};
    if (good && (size == 0 || *good < m_place + size))
        return {Verdict::Skip, *good - m_place};
    if (size > 0)
        return {Verdict::Take, size, otherwise};
    return {Verdict::Skip, std::min<qint64>(startSize, m_limit - m_place)};
}

/// The first good packet that begins behind a place and is whole at the stop.
std::optional<qint64> PacketFramer::Private::firstGoodBehind(qint64 place)
{
    qint64 entry = std::max(m_entered, place + 1);
    for (; (entry = findStart(entry, m_limit)) < m_limit; ++entry) {
        const Start start = startAt(entry);
        if (start.form == Start::Unknown)
            break; // looked at again at the next stop, like the few bytes behind it
        if (start.form == Start::Short)
            m_awaited.push({entry + start.size, entry});
    }
    m_entered = entry;
    while (!m_awaited.empty() && m_awaited.top().first <= m_limit) {
        const auto [end, begin] = m_awaited.top();
        m_awaited.pop();
        if (begin > place && laterMatches(begin, static_cast<int>(end - begin)))
            m_good.push(begin);
    }
    while (!m_good.empty() && m_good.top() <= place)
        m_good.pop();
    return m_good.empty() ? std::nullopt : std::optional<qint64>(m_good.top());
}

PacketFramer::PacketFramer(bool zeroInit) : d(std::make_unique<Private>(zeroInit ? 0x0000 : 0xFFFF)) {}

PacketFramer::~PacketFramer() = default;

void PacketFramer::setLargestPacket(int size)
{
    d->largestPacket = std::clamp(size, leastLength, maximumPacketSize);
}

void PacketFramer::feed(const QByteArray& bytes)
{
    d->feed(bytes);
}

void PacketFramer::pause()
{
    d->addStop(false);
}

void PacketFramer::finish()
{
    d->addStop(true);
}

bool PacketFramer::next(Frame& frame)
{
    return d->next(frame);
}

qint64 PacketFramer::pendingBytes() const
{
    return d->pendingBytes();
}

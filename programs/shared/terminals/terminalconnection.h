#pragma once

#include "descriptors.h"
#include "packetdecoder.h"

#include <QHostAddress>
#include <QString>

#include <list>
#include <optional>

/** The connection of a TerminalServer to one terminal: its socket, its decoder, and what the server notes of it. */
struct TerminalConnection
{
    /** How it has ended of itself. */
    enum End
    {
        Ended,   ///< By the other side, between two packets.
        CutOff,  ///< By the other side, in the middle of a packet or of rubbish.
        Drained, ///< What was to be read of it has been read.
    };

    /** @param rate bytes that are read a second, and at once, at the most; 0: as many as come */
    TerminalConnection(Descriptor s, const QHostAddress& from, const QString& n, const DecodeSettings& settings,
                       int rate);

    /** Feeds the decoder with the next bytes, if there are any, or with their end. */
    void refill();
    /** It may have something to be read, which has to wait until time has passed. */
    bool isHeldBack() const;
    void letTimePass(qint64 milliseconds);
    /** From now on, no more is read than it holds at this moment, however fast. */
    void beginToDrain();

    const Descriptor socket;
    const QHostAddress source;
    const QString name;
    DecodeCounts counts;
    PacketDecoder decoder;

    std::optional<End> end;     ///< Once the decoder knows that no more comes.
    QString reason;             ///< Of that, a sentence's part.
    std::optional<int> toDrain; ///< Bytes.
    bool readable = true;       ///< There may be bytes, or an end, to be read.
    bool hungUp = false;        ///< There is an end to be read.

    // The server's:
    std::list<TerminalConnection>::iterator self;  ///< Where it stands.
    std::list<TerminalConnection*>::iterator turn; ///< If it is queued.
    bool queued = false;                           ///< To be served.
    bool known = false;                            ///< Has sent a good packet.
    bool slowed = false;                           ///< Was held back once.
    qint64 held = 0;                               ///< Bytes that wait for more, when its turn was over.
    qint64 packetsBefore = 0;                      ///< Its present turn began; and found, by the one before:
    qint64 foundBefore = 0;
    // Milliseconds, without those for which it waited to be served:
    qint64 silence = 0; ///< Since a good packet.
    qint64 stuck = 0;   ///< Since anything was found in its bytes, or since the last pause.

private:
    void finish(End how, const QString& why);

    const qint64 m_rate;
    qint64 m_allowance; // thousandths of a byte, as a tick may be worth less than one
};

#pragma once

#include "captureframer.h"
#include "decodedpacket.h"

#include <QHostAddress>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include <chrono>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

/**
 * How terminals are served and their packets decoded: the group "Terminals" of a desk's INI file, or "Receiver" of a
 * receiver's.
 *
 * | Key                | Default      | Range          | Meaning                                                       |
 * |--------------------|--------------|----------------|---------------------------------------------------------------|
 * | MaximumConnections | 2000 (10000) | 1 to 30000     | at a time; further ones take the place of the most silent     |
 * | MaximumBuffer      | 131072       | 1024 to 2^24   | bytes without a good packet that end a connection             |
 * | IdleSeconds        | 300          | 0.001 to 86400 | without a good packet that end a connection                   |
 * | PerAddress         | 256          | 0 to 30000     | connections of one source address at a time; 0: as many as come |
 * | AllowFrom          |              | networks       | let in, as 10.0.0.0/8, 192.168.0.0/16; empty: all             |
 * | BytesPerSecond     | 0 (262144)   | 0 to 2^30      | read of a connection at the most; 0: as many as come          |
 *
 * Of the group "Terminals" alone:
 *
 * | Address            | 127.0.0.1    | an IP address  | where to listen; 0.0.0.0 lets other machines in, :: also IPv6 |
 * | Port               | 20545        | 0 to 65535     | 0: any that is free                                           |
 * | Convert            | true         |                | coordinates come as packed degrees and minutes                |
 * | ChecksumFromZero   | false        |                | the checksum's register starts at 0 instead of 0xFFFF         |
 *
 * Of the group "Receiver" alone, whose defaults are the ones in brackets:
 *
 * | Listen             | 127.0.0.1:20545 | ADDRESS:PORT | as Address and Port; IPv6 as [::1]:20545                     |
 * | NoConvert          | false        |                | coordinates come as decimal degrees                           |
 * | CrcInit            | ffff         | 0 or ffff      | where the checksum's register starts                          |
 *
 * IPv4 addresses that come as IPv6 (::ffff:10.0.0.1) count as IPv4 in PerAddress and AllowFrom.
 */
struct TerminalSettings
{
    using Network = QPair<QHostAddress, int>; ///< Address and length of its prefix; a null address is no one's.

    QString address = QStringLiteral("127.0.0.1");
    quint16 port = 20545;
    int maximumConnections = 2000;
    int maximumBuffer = 1 << 17;
    std::chrono::milliseconds idle = std::chrono::minutes(5);
    int perAddress = 256;
    QList<Network> allowFrom;
    int bytesPerSecond = 0;
    DecodeSettings decode{true};

    /** As idle, of connections that never sent a good packet, if it is less. No key of the file. */
    std::chrono::milliseconds newcomer = std::chrono::seconds(20);
    /** How long the rest of a packet is waited for while good ones behind it wait too. No key of the file. */
    std::chrono::milliseconds pause{pauseMilliseconds};
    /** Bytes that all connections together may have waiting for the rest of packets. No key of the file. */
    qint64 maximumHeld = 1 << 25;

    QStringList complaints; ///< A sentence for every value that was wrong in the file, for the log.

    /**
     * Reads the group "Terminals"; a value that is none or out of its range counts as its default, but a network in
     * AllowFrom that is none lets nobody in.
     */
    static TerminalSettings read(QSettings& ini);
    /** The same of the group "Receiver". */
    static TerminalSettings readReceiver(QSettings& ini);

    /** Takes address and port from ADDRESS:PORT. @return empty, or, with nothing taken, a sentence that says why */
    QString setPlace(const QString& place);
};

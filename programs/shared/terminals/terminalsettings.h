#pragma once

#include "captureframer.h"
#include "decodedpacket.h"

#include <QString>
#include <QStringList>

#include <chrono>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

/**
 * How terminals are served and their packets decoded: the group "Terminals" of an INI file.
 *
 * | Key                | Default   | Range          | Meaning                                                         |
 * |--------------------|-----------|----------------|-----------------------------------------------------------------|
 * | Address            | 127.0.0.1 | an IP address  | where to listen; 0.0.0.0 lets other machines in                 |
 * | Port               | 20545     | 0 to 65535     | 0: any that is free                                             |
 * | MaximumConnections | 2000      | 1 to 30000     | at a time; further ones are refused                             |
 * | MaximumBuffer      | 131072    | 1024 to 2^24   | bytes without a good packet that end a connection               |
 * | IdleSeconds        | 300       | 0.001 to 86400 | without a good packet that end a connection                     |
 * | Convert            | true      |                | coordinates come as packed degrees and minutes                  |
 * | ChecksumFromZero   | false     |                | the checksum's register starts at 0 instead of 0xFFFF           |
 */
struct TerminalSettings
{
    QString address = QStringLiteral("127.0.0.1");
    quint16 port = 20545;
    int maximumConnections = 2000;
    int maximumBuffer = 1 << 17;
    std::chrono::milliseconds idle = std::chrono::minutes(5);
    DecodeSettings decode{true};

    /** How long the rest of a packet is waited for while good ones behind it wait too. No key of the file. */
    std::chrono::milliseconds pause{pauseMilliseconds};

    QStringList complaints; ///< A sentence for every value that was wrong in the file, for the log.

    /** Reads the group; a number that is none or out of its range counts as its default. */
    static TerminalSettings read(QSettings& ini);
};

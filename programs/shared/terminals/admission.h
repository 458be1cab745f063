#pragma once

#include "terminalsettings.h"

#include <QHash>
#include <QHostAddress>

/** Who may connect: by the networks of TerminalSettings::allowFrom, and by TerminalSettings::perAddress. */
class Admission
{
public:
    enum Answer
    {
        Admitted,
        WrongNetwork,
        TooMany, ///< Of this address.
    };

    explicit Admission(const TerminalSettings& settings)
        : m_allowFrom(settings.allowFrom), m_perAddress(settings.perAddress)
    {}

    /** Whether one more connection from a source may be open. */
    Answer ask(const QHostAddress& source) const;
    void enter(const QHostAddress& source) { ++m_open[source]; }
    void leave(const QHostAddress& source);

private:
    const QList<TerminalSettings::Network> m_allowFrom;
    const int m_perAddress;
    QHash<QHostAddress, int> m_open;
};

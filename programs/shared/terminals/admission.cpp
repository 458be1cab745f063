#include "admission.h"

#include <algorithm>

Admission::Answer Admission::ask(const QHostAddress& source) const
{
    const auto holds = [&](const TerminalSettings::Network& network) { return source.isInSubnet(network); };
    if (!m_allowFrom.isEmpty() && std::none_of(m_allowFrom.begin(), m_allowFrom.end(), holds))
        return WrongNetwork;
    return m_perAddress > 0 && m_open.value(source) >= m_perAddress ? TooMany : Admitted;
}

void Admission::leave(const QHostAddress& source)
{
    const auto found = m_open.find(source);
    if (found != m_open.end() && --*found == 0)
        m_open.erase(found);
}

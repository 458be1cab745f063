#pragma once

#include <charconv>
#include <cmath>
#include <string_view>

/** The shortest text that reads back to the same float, or "nan", "inf", "-inf". */
class FloatText
{
public:
    explicit FloatText(float value)
    {
        // The sign of a NaN says nothing.
        const float shown = std::isnan(value) ? std::abs(value) : value;
        m_end = std::to_chars(m_text, m_text + sizeof m_text, shown).ptr;
    }

    std::string_view view() const { return {m_text, static_cast<std::size_t>(m_end - m_text)}; }

private:
    char m_text[24];
    char* m_end;
};

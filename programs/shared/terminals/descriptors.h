#pragma once

#include <utility>

/** A file descriptor that is closed when this ends; -1 if it has none. */
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }

    int get() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

private:
    int m_number;
};

/**
 * Raises this process's limit of open descriptors, as far as the system lets it, to a number of connections and some
 * others beside them. @return for how many connections there is room, at most @p count
 */
int allowDescriptors(int count);

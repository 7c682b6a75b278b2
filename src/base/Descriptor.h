#pragma once

#include <utility>

#include <unistd.h>

/// An open file, socket or the like, closed with this object; -1 stands for none.
class Descriptor
{
public:
    explicit Descriptor(int number = -1)
        : m_number(number)
    {
    }
    Descriptor(Descriptor &&other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {
    }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        Descriptor former(std::exchange(m_number, std::exchange(other.m_number, -1)));
        return *this;
    }
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }

    explicit operator bool() const { return m_number >= 0; }
    int number() const { return m_number; }

private:
    int m_number;
};

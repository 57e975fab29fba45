/// @file
#pragma once

#include <unistd.h>

#include <utility>

namespace audit
{

/// Owns a file descriptor, or none.
class descriptor_t
{
public:
    descriptor_t() = default;
    /// A negative number means no descriptor, so the result of open() needs no check before.
    explicit descriptor_t(int number) : m_number(number) {}
    descriptor_t(const descriptor_t&) = delete;
    descriptor_t& operator=(const descriptor_t&) = delete;
    descriptor_t(descriptor_t&& other) noexcept : m_number(other.release()) {}
    descriptor_t& operator=(descriptor_t&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~descriptor_t()
    {
        if (is_open())
            ::close(m_number);
    }

    bool is_open() const { return m_number >= 0; }
    int get() const { return m_number; }
    int release() { return std::exchange(m_number, -1); }

private:
    int m_number = -1;
};

} // namespace audit

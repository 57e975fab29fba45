/// @file
#pragma once

#include <cstddef>
#include <string>
#include <system_error>

namespace audit
{

/// Writes to a file descriptor: at once if it is a terminal, else in large buffers. The first
/// failure stays; nothing is written after it.
class output_t
{
public:
    /// The descriptor is borrowed.
    explicit output_t(int descriptor);

    void write(const std::string& text);

    /// Writes the buffered text. The destructor writes nothing, since a failure there would be
    /// lost.
    void flush();

    std::error_code error() const { return m_error; }

private:
    std::size_t write_some(std::size_t begin);

    const int m_descriptor;
    const std::size_t m_max_buffered;
    std::string m_buffer;
    std::error_code m_error;
};

} // namespace audit

#pragma once

#include <streambuf>
#include <system_error>
#include <vector>

namespace velmolog
{

/// The output cannot be written.
class output_error_t : public std::system_error
{
public:
    using std::system_error::system_error;

    /// Returns whether the reader of a pipe has ended, which is not worth a message.
    bool is_closed_pipe() const;
};

/// Writes to a descriptor, which it does not own, in large chunks. Throws output_error_t, which a
/// stream passes on if its exceptions() has `badbit`.
class output_buffer_t : public std::streambuf
{
public:
    explicit output_buffer_t(int descriptor);

protected:
    int_type overflow(int_type byte) override;
    int sync() override;

private:
    void write_all();

    int m_descriptor;
    std::vector<char> m_bytes;
};

} // namespace velmolog

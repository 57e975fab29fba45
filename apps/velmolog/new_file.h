#pragma once

#include "output_buffer.h"

#include <ostream>
#include <string>

namespace velmolog
{

/// A file that appears with its whole content. Until then it has a temporary name in the same
/// folder, which the destructor removes.
class new_file_t
{
public:
    /// Throws usage_error_t if the path exists, std::system_error if the folder refuses the file.
    explicit new_file_t(const std::string& path);
    new_file_t(const new_file_t&) = delete;
    new_file_t& operator=(const new_file_t&) = delete;
    ~new_file_t();

    /// Returns the content to be written. Throws output_error_t.
    std::ostream& stream() { return m_stream; }

    /// Gives the file its name. Throws usage_error_t if the path exists meanwhile, output_error_t
    /// if the content cannot be written.
    void finish();

private:
    std::string m_path;
    std::string m_temporary_path;
    int m_descriptor;
    output_buffer_t m_buffer;
    std::ostream m_stream;
};

} // namespace velmolog

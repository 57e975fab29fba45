#pragma once

#include <string>

namespace velmolint
{

/// A temporary file with the given content, removed with this object. Throws std::runtime_error on
/// failure.
class scratch_file_t
{
public:
    explicit scratch_file_t(const std::string& content);
    scratch_file_t(const scratch_file_t&) = delete;
    scratch_file_t& operator=(const scratch_file_t&) = delete;
    ~scratch_file_t();

    const std::string& name() const { return m_name; }

private:
    std::string m_name;
};

} // namespace velmolint

#include "scratch_file.h"

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include <unistd.h>

namespace velmolint
{
namespace
{

bool write_all(int descriptor, const std::string& content)
{
    std::size_t written = 0;
    while (written != content.size()) {
        const ssize_t count = write(descriptor, &content[written], content.size() - written);
        if (count <= 0)
            return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

scratch_file_t::scratch_file_t(const std::string& content)
    : m_name((std::filesystem::temp_directory_path() / "velmolint-XXXXXX").string())
{
    const int descriptor = mkstemp(m_name.data());
    if (descriptor < 0)
        throw std::runtime_error("cannot create a temporary file in " +
                                 std::filesystem::temp_directory_path().string());
    const bool is_written = write_all(descriptor, content);
    close(descriptor);
    if (!is_written) {
        unlink(m_name.c_str());
        throw std::runtime_error("cannot write the temporary file " + m_name);
    }
}

scratch_file_t::~scratch_file_t()
{
    unlink(m_name.c_str());
}

} // namespace velmolint

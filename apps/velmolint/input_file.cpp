#include "input_file.h"

#include <cerrno>
#include <cstddef>
#include <fstream>
#include <system_error>

namespace velmolint
{
namespace
{

constexpr std::size_t max_file_bytes = std::size_t{16} << 20U;
constexpr std::size_t chunk_bytes = 65536;

} // namespace

std::optional<std::string> read_input(const std::filesystem::path& file, std::string& reason)
{
    std::error_code error;
    // Opening a pipe or a device could wait forever.
    if (!std::filesystem::is_regular_file(file, error)) {
        reason = error ? error.message() : "not a regular file";
        return std::nullopt;
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        reason = std::generic_category().message(errno);
        return std::nullopt;
    }
    std::string bytes;
    std::string chunk(chunk_bytes, '\0');
    while (stream && bytes.size() <= max_file_bytes) {
        stream.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        bytes.append(chunk, 0, static_cast<std::size_t>(stream.gcount()));
    }
    if (stream.bad()) {
        reason = "a read failed";
        return std::nullopt;
    }
    if (bytes.size() > max_file_bytes) {
        reason = "larger than 16 MiB";
        return std::nullopt;
    }
    return bytes;
}

} // namespace velmolint

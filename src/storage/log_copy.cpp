#include "storage/log_copy.h"

#include <basekit2/file.h>
#include <rova/strings.h>

#include <boost/crc.hpp>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <locale>
#include <new>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace velmoext_1_4_8
{
namespace
{

using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;

const std::wstring ending = L".tmp";
// Leaves room for a checksum and the ending on file systems with names of at most 143 bytes.
const std::size_t max_shortened_bytes = 100;

bool is_continuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::wstring short_leaf(const std::wstring& leaf)
{
    const std::string name = utf16_to_utf8(leaf);
    std::size_t size = max_shortened_bytes;
    while (size > 0 && size < name.size() && is_continuation(name[size]))
        --size;
    boost::crc_32_type checksum;
    checksum.process_bytes(name.data(), name.size());
    std::wostringstream text;
    text.imbue(std::locale::classic());
    text << std::hex << checksum.checksum();
    return utf8_to_utf16(name.substr(0, size)) + L"." + text.str();
}

basekit2::path_t make_sibling_path(const basekit2::path_t& log, const std::wstring& leaf)
{
    basekit2::path_t path(log.get_branch());
    path.append(basekit2::path_t(leaf + ending));
    return path;
}

basekit2::path_t make_copy_path(const basekit2::path_t& log)
{
    const std::wstring leaf = log.get_leaf();
    basekit2::path_t path = make_sibling_path(log, leaf);
    struct stat status = {};
    const bool is_too_long =
        lstat(native_name(path).c_str(), &status) != 0 && errno == ENAMETOOLONG;
    return is_too_long ? make_sibling_path(log, short_leaf(leaf)) : path;
}

} // namespace

log_copy_t::log_copy_t(const basekit2::path_t& log) : m_log(log), m_path(make_copy_path(log)) {}

log_copy_t::~log_copy_t()
{
    try {
        if (m_is_temporary)
            basekit2::remove_file(m_path);
    } catch (const std::bad_alloc&) {
        // The next start finds the copy, which is the same as the log.
    }
}

log_copy_t::state_t log_copy_t::state() const
{
    struct stat status = {};
    if (lstat(native_name(m_path).c_str(), &status) != 0)
        return state_t::missing;
    if (!S_ISREG(status.st_mode) || status.st_uid != geteuid())
        return state_t::foreign;
    file_descriptor_t file;
    const bool is_recorded = file.open(true, m_path) && !file.share(m_path);
    return is_recorded ? state_t::foreign : state_t::left;
}

bool log_copy_t::make()
{
    m_is_temporary = basekit2::copy_file(m_log, m_path);
    return m_is_temporary;
}

bool log_copy_t::open()
{
    if (m_file.open(true, m_path) && !m_file.share(m_path))
        m_file.close();
    return is_open();
}

bool log_copy_t::remove()
{
    m_is_temporary = false;
    return basekit2::remove_file(m_path);
}

} // namespace velmoext_1_4_8

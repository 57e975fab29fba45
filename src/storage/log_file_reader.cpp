#include "storage/log_file_reader.h"

#include "storage/file_descriptor.h"

#include <rova/strings.h>

#include <boost/container/vector.hpp>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

const std::size_t chunk_bytes = 262144;

} // namespace

log_file_reader::log_file_reader(std::string file_name) : m_file_name(std::move(file_name)) {}

void log_file_reader::set_callback(const log_sax_reader::message_callback_t& callback)
{
    m_sax.set_callback(callback);
}

void log_file_reader::set_lines_callback(const log_walker_t::lines_callback_t& callback)
{
    m_lines_callback = callback;
}

bool log_file_reader::parse()
{
    m_refusal = refusal_t::none;
    file_descriptor_t file;
    return file.open(true, basekit2::path_t(ROVA_2_18::strings::utf8_to_utf16(m_file_name))) &&
           parse(file);
}

bool log_file_reader::parse(const file_descriptor_t& file)
{
    m_refusal = refusal_t::none;
    const std::int64_t begin = m_position;
    const std::int64_t end = file.size();
    if (end <= begin)
        return false;
    m_position = end;
    return parse_between(file, begin, end);
}

// Returns whether there was a tag.
bool log_file_reader::parse_between(const file_descriptor_t& file, std::int64_t begin,
                                    std::int64_t end)
{
    log_walker_t walker(m_sax, m_lines_callback);
    boost::container::vector<char> read; // but not walked
    bool has_tag = false;
    bool is_last = false;
    while (!is_last && !walker.is_finished()) {
        // Doubles what was not enough, so that an element of any size is scanned a few times only.
        const auto left = static_cast<std::size_t>(end - begin);
        const std::size_t requested = std::min(std::max(chunk_bytes, read.size()), left);
        const std::size_t unread = read.size();
        read.resize(unread + requested, boost::container::default_init);
        const std::size_t size = file.read(begin, read.data() + unread, requested);
        begin += static_cast<std::int64_t>(size);
        if (size < requested)
            m_position = begin;
        // A zero ends the text.
        std::string_view text(read.data(), unread + size);
        const std::size_t zero = text.find('\0', unread);
        is_last = size < requested || begin == end || zero != std::string_view::npos;
        if (is_last) {
            text = text.substr(0, zero);
            text = text.substr(0, text.rfind('>') + 1);
        }
        has_tag = has_tag || text.find('>') != std::string_view::npos;
        const std::size_t walked = walker.walk(text, is_last);
        read.erase(read.begin(), read.begin() + static_cast<std::ptrdiff_t>(walked));
    }
    m_refusal = walker.refusal();
    return has_tag;
}

} // namespace velmoext_1_4_8

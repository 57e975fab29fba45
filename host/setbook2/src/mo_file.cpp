#include "mo_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace setbook2
{
namespace
{

const std::uint32_t magic = 0x950412DE;
const std::size_t head_size = 28;
const std::size_t word_size = 4;
const std::size_t descriptor_size = 8; // length, offset

std::string_view first_string(std::string_view strings)
{
    return strings.substr(0, strings.find('\0'));
}

bool has_smaller_id(const mo_file_t::entry_t& left, const mo_file_t::entry_t& right)
{
    return left.id < right.id;
}

} // namespace

std::optional<mo_file_t> mo_file_t::parse(std::vector<char> bytes)
{
    mo_file_t file(std::move(bytes));
    if (!file.read())
        return std::nullopt;
    return file;
}

bool mo_file_t::read()
{
    if (m_bytes.size() < head_size)
        return false;
    m_is_swapped = word(0) != magic;
    const std::uint64_t revision = word(4);
    const std::uint64_t count = word(8);
    const std::uint64_t ids = word(12);
    const std::uint64_t texts = word(16);
    if (word(0) != magic || revision >> 16U > 1 || (revision & 0xFFFFU) > 1 || count == 0 ||
        std::max(ids, texts) + count * descriptor_size > m_bytes.size())
        return false;
    m_entries.reserve(count);
    // The comparisons of a search take as long as the ids: overlapping ones could have any length.
    std::size_t size_of_ids = 0;
    for (std::uint64_t at = 0; at != count * descriptor_size; at += descriptor_size) {
        std::string_view id;
        std::string_view text;
        if (!read_string(ids + at, id) || !read_string(texts + at, text))
            return false;
        size_of_ids += id.size() + 1;
        if (size_of_ids > m_bytes.size())
            return false;
        const std::string_view singular = first_string(id);
        m_entries.push_back({singular, text, singular.size() != id.size()});
    }
    if (!std::is_sorted(m_entries.begin(), m_entries.end(), has_smaller_id))
        std::stable_sort(m_entries.begin(), m_entries.end(), has_smaller_id);
    return true;
}

// Requires an offset within the file: four bytes are read there.
std::uint64_t mo_file_t::word(std::uint64_t offset) const
{
    std::uint32_t value = 0;
    std::memcpy(&value, m_bytes.data() + offset, word_size);
    return m_is_swapped ? __builtin_bswap32(value) : value;
}

// A zero ends the string in the file.
bool mo_file_t::read_string(std::uint64_t descriptor, std::string_view& string) const
{
    const std::uint64_t size = word(descriptor);
    const std::uint64_t begin = word(descriptor + word_size);
    if (begin + size >= m_bytes.size() || m_bytes[begin + size] != '\0')
        return false;
    string = std::string_view(m_bytes.data() + begin, size);
    return true;
}

std::string_view mo_file_t::find(std::string_view id) const
{
    const auto found = std::lower_bound(m_entries.begin(), m_entries.end(), entry_t{id, {}, false},
                                        has_smaller_id);
    return found != m_entries.end() && found->id == id ? first_string(found->text)
                                                       : std::string_view();
}

std::string mo_file_t::charset() const
{
    static constexpr std::string_view name = "charset=";
    const std::string_view header = find("");
    const std::size_t found = header.find(name);
    if (found == std::string_view::npos)
        return std::string();
    const std::string_view rest = header.substr(found + name.size());
    return std::string(rest.substr(0, rest.find_first_of(" \t\r\n;")));
}

} // namespace setbook2

#include "mo_check.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>

namespace setbook2
{
namespace
{

const std::uint32_t magic = 0x950412DE;
const std::size_t head_size = 28;
const std::size_t word_size = 4;
const std::size_t string_entry_size = 8; // length, offset
const std::uint64_t empty_slot = 0;

// The parser of plural forms recurses as deep as the expression. The longest one of a real language
// has about 300 characters.
const std::size_t longest_plural = 1000;

class mo_bytes_t
{
public:
    explicit mo_bytes_t(const std::vector<char>& bytes) : m_bytes(bytes) {}

    bool is_valid();

private:
    bool read_head();
    std::uint64_t word(std::uint64_t offset) const;
    bool has_table(std::uint64_t offset, std::uint64_t count, std::size_t entry_size) const;
    bool has_string(std::uint64_t entry) const;
    bool has_strings(std::uint64_t table) const;
    bool have_keys_possible_sizes() const;
    bool has_hash_table() const;
    bool is_header_usable() const;
    std::string header_field(const char* name, const char* ends) const;

    const std::vector<char>& m_bytes;
    bool m_is_swapped = false;
    std::uint64_t m_count = 0;
    std::uint64_t m_keys = 0;
    std::uint64_t m_texts = 0;
    std::uint64_t m_hash_size = 0;
    std::uint64_t m_hash = 0;
};

bool mo_bytes_t::is_valid()
{
    return read_head() && has_strings(m_keys) && has_strings(m_texts) &&
           have_keys_possible_sizes() && has_hash_table() && is_header_usable();
}

bool mo_bytes_t::read_head()
{
    if (m_bytes.size() < head_size)
        return false;
    m_is_swapped = word(0) != magic;
    m_count = word(8);
    m_keys = word(12);
    m_texts = word(16);
    m_hash_size = word(20);
    m_hash = word(24);
    const std::uint64_t revision = word(4);
    const bool is_known = word(0) == magic && revision >> 16U <= 1;
    // A minor revision permits strings that depend on the system.
    return is_known && (revision & 0xFFFFU) == 0 && m_count != 0;
}

// Requires an offset that was checked: four bytes are read there.
std::uint64_t mo_bytes_t::word(std::uint64_t offset) const
{
    std::uint32_t value = 0;
    std::memcpy(&value, m_bytes.data() + offset, word_size);
    return m_is_swapped ? __builtin_bswap32(value) : value;
}

bool mo_bytes_t::has_table(std::uint64_t offset, std::uint64_t count, std::size_t entry_size) const
{
    return offset + count * entry_size <= m_bytes.size();
}

bool mo_bytes_t::has_string(std::uint64_t entry) const
{
    const std::uint64_t end = word(entry + word_size) + word(entry);
    return end < m_bytes.size() && m_bytes[end] == '\0';
}

bool mo_bytes_t::has_strings(std::uint64_t table) const
{
    if (!has_table(table, m_count, string_entry_size))
        return false;
    std::uint64_t at = table;
    const std::uint64_t end = table + m_count * string_entry_size;
    while (at != end && has_string(at))
        at += string_entry_size;
    return at == end;
}

// A search may compare with every key. The total length of overlapping keys could exceed that of
// any file.
bool mo_bytes_t::have_keys_possible_sizes() const
{
    std::uint64_t sum = 0;
    for (std::uint64_t key = 0; key != m_count; ++key)
        sum += word(m_keys + key * string_entry_size) + 1;
    return sum <= m_bytes.size();
}

// A probe's step is reduced modulo the size less two, which must not be zero. The probe continues
// to a free slot, and would compare with a key as often as the table names it.
bool mo_bytes_t::has_hash_table() const
{
    if (m_hash_size <= 2 || !has_table(m_hash, m_hash_size, word_size))
        return false;
    std::vector<bool> is_named(m_count + 1);
    std::uint64_t at = m_hash;
    const std::uint64_t end = m_hash + m_hash_size * word_size;
    for (; at != end && word(at) <= m_count && !is_named[word(at)]; at += word_size)
        is_named[word(at)] = word(at) != empty_slot;
    return at == end;
}

bool mo_bytes_t::is_header_usable() const
{
    std::string charset = header_field("charset=", " \r\n;");
    std::transform(charset.begin(), charset.end(), charset.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? letter + 32 : letter;
    });
    return charset == "utf-8" && header_field("plural=", "\r\n;").size() <= longest_plural;
}

// Reads the header, which is the first text whatever its key is.
std::string mo_bytes_t::header_field(const char* name, const char* ends) const
{
    const std::string header(m_bytes.data() + word(m_texts + word_size));
    const std::size_t found = header.find(name);
    if (found == std::string::npos)
        return std::string();
    const std::size_t begin = found + std::strlen(name);
    return header.substr(begin, header.find_first_of(ends, begin) - begin);
}

} // namespace

bool is_valid_mo(const std::vector<char>& bytes)
{
    return mo_bytes_t(bytes).is_valid();
}

} // namespace setbook2

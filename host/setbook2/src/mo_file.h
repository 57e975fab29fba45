#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace setbook2
{

/// The strings of a compiled catalog (`.mo` file), in the file's charset.
///
/// The hash table of the file is not used: many tools write none. The strings that depend on the
/// system, which the minor revision 1 adds, are left out.
class mo_file_t
{
public:
    struct entry_t
    {
        std::string_view id;   ///< with its context before it, separated by '\x04', if it has one
        std::string_view text; ///< with all plural forms, separated by zeros
        bool has_plural;
    };

    /// Returns nothing if there is no string, if one is not completely in the file, or if the ids
    /// overlap.
    static std::optional<mo_file_t> parse(std::vector<char> bytes);

    /// Returns the text of the id, an empty one if there is none.
    std::string_view find(std::string_view id) const;

    /// Returns all entries, sorted by their ids. The header has the empty id.
    const std::vector<entry_t>& entries() const { return m_entries; }

    /// Returns the charset that the header declares, an empty text if it declares none.
    std::string charset() const;

private:
    explicit mo_file_t(std::vector<char> bytes) : m_bytes(std::move(bytes)) {}

    bool read();
    std::uint64_t word(std::uint64_t offset) const;
    bool read_string(std::uint64_t descriptor, std::string_view& string) const;

    std::vector<char> m_bytes;
    bool m_is_swapped = false;
    std::vector<entry_t> m_entries; ///< views of m_bytes
};

} // namespace setbook2

// Every string of a compiled catalog is in the file, and each id is found with its first text, as a
// search from the beginning finds it. Texts are converted from any charset, or refused.
//
// An input is a `.mo` file.
#include "fuzz_target.h"
#include "require.h"

#include "charset.h"
#include "mo_file.h"

#include <string>
#include <string_view>
#include <vector>

namespace
{

// A run with more entries is slow.
const std::size_t max_entries = 64;

std::string_view find_first(const setbook2::mo_file_t& file, std::string_view id)
{
    for (const auto& entry : file.entries())
        if (entry.id == id)
            return entry.text.substr(0, entry.text.find('\0'));
    return std::string_view();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto file = setbook2::mo_file_t::parse(std::vector<char>(data, data + size));
    if (!file || file->entries().size() > max_entries)
        return 0;
    const auto charset = setbook2::charset_t::open(file->charset());
    for (const auto& entry : file->entries()) {
        const std::string id(entry.id);
        require(id.find('\0') == std::string::npos, "an id ends at a zero");
        require(file->find(id) == find_first(*file, id), "the first text of the id");
        require(file->find(id + "x") == find_first(*file, id + "x"), "another id");
        if (charset)
            if (const auto text = charset->to_utf8(entry.text))
                charset->from_utf8(*text);
    }
    return 0;
}

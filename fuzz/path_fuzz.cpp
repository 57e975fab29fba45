// The parts of any path add up to the path. Joining and order are those of plain texts. A path
// exists if the system reports that it does.
//
// An input has one path per line.
#include "fuzz_target.h"
#include "input_text.h"
#include "require.h"

#include <basekit2/path.h>

#include <rova/strings.h>

#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

using basekit2::path_t;

const wchar_t separator = L'/';

std::wstring joined(std::wstring above, std::wstring below)
{
    if (above.empty() || below.empty())
        return above + below;
    while (!above.empty() && above.back() == separator)
        above.pop_back();
    while (!below.empty() && below.front() == separator)
        below.erase(0, 1);
    return above + separator + below;
}

void require_parts(const std::wstring& text)
{
    const path_t path(text);
    const std::wstring branch = path.get_branch();
    const std::wstring leaf = path.get_leaf();
    require(leaf.find(separator) == std::wstring::npos, "a leaf is one component");
    require(branch.size() + leaf.size() <= text.size(), "the parts do not overlap");
    require(text.compare(0, branch.size(), branch) == 0, "a path begins with its branch");
    require(text.compare(text.size() - leaf.size(), leaf.size(), leaf) == 0,
            "a path ends with its leaf");

    const std::wstring between =
        text.substr(branch.size(), text.size() - branch.size() - leaf.size());
    require(std::all_of(between.begin(), between.end(), [](wchar_t c) { return c == separator; }),
            "only separators are omitted");
    require(branch == L"/" || branch.empty() || branch.back() != separator,
            "a branch ends without a separator");
    require(text.find(separator) != std::wstring::npos || branch.empty(), "a name has no branch");
    require(between.empty() ? branch.empty() || branch == L"/" : !branch.empty(),
            "a separator is between a branch and a leaf");
    const std::size_t min_separators = branch.empty() || branch == L"/" ? 0 : 1;
    if (!leaf.empty() && between.size() == min_separators)
        require(path_t(branch).append(leaf) == path, "the parts make up the path");
}

void require_text(const std::wstring& text)
{
    const path_t path(text);
    require(path.as_string() == text && path.as_string(true) == text, "a path is its text");
    require(path.is_empty() == text.empty(), "an empty text is an empty path");
    require(path_t().assign(path) == path, "a copy is the same");
}

void require_pair(const std::wstring& left, const std::wstring& right)
{
    path_t path(left);
    require(path.append(right).as_string() == joined(left, right), "both texts, joined");
    const bool is_less =
        std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end());
    require((path_t(left) < path_t(right)) == is_less, "the order of the texts");
    require((path_t(left) == path_t(right)) == (left == right), "the same path, the same text");
}

void require_existence(const std::wstring& text)
{
    const std::string name = ROVA_2_18::strings::utf16_to_utf8(text);
    struct stat status = {};
    const bool is_there =
        text.find(L'\0') == std::wstring::npos && stat(name.c_str(), &status) == 0;
    require(path_t::exists(text) == is_there, "a path exists if the system finds it");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::wstring last;
    for (const std::string& line : split(std::string(data, data + size), '\n')) {
        const std::wstring text = to_wide(line);
        require_text(text);
        require_parts(text);
        require_existence(text);
        require_pair(last, text);
        require_pair(text, last);
        last = text;
    }
    return 0;
}

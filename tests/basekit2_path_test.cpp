#include <basekit2/path.h>

#include "scratch_folder.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>

namespace
{

using basekit2::path_t;
using namespace std::string_literals;

struct joined_row_t
{
    std::wstring left;
    std::wstring right;
    std::wstring joined;
};

struct parts_row_t
{
    std::wstring text;
    std::wstring branch;
    std::wstring leaf;
};

struct name_row_t
{
    std::wstring wide;
    std::string bytes;
};

/// Sets the process's locale to "C" while in scope.
class c_locale_scope_t
{
public:
    c_locale_scope_t() : m_former(std::setlocale(LC_ALL, nullptr)) { std::setlocale(LC_ALL, "C"); }
    c_locale_scope_t(const c_locale_scope_t&) = delete;
    c_locale_scope_t& operator=(const c_locale_scope_t&) = delete;
    ~c_locale_scope_t() { std::setlocale(LC_ALL, m_former.c_str()); }

private:
    std::string m_former;
};

const name_row_t names[] = {
    {L"plain"s, "plain"s},
    {L"with space \\ and : signs"s, "with space \\ and : signs"s},
    {L"\xE4\xDF\x20AC"s, "\xC3\xA4\xC3\x9F\xE2\x82\xAC"s},
    {L"\x6F22\x5B57"s, "\xE6\xBC\xA2\xE5\xAD\x97"s},
    // Beyond the BMP, as a pair and as one native element; then values that are not characters.
    {L"pair \xD83D\xDE00"s, "pair \xF0\x9F\x98\x80"s},
    {L"native \x1F600"s, "native \xF0\x9F\x98\x80"s},
    {L"half \xD83D"s, "half \xEF\xBF\xBD"s},
};

TEST(basekit2_path_test, a_default_path_is_empty)
{
    const path_t path;
    EXPECT_TRUE(path.is_empty());
    EXPECT_EQ(path.as_string(), L"");
}

TEST(basekit2_path_test, a_null_pointer_gives_an_empty_path)
{
    const wchar_t* const none = nullptr;
    EXPECT_TRUE(path_t(none).is_empty());
}

TEST(basekit2_path_test, the_text_is_kept_as_it_was_given)
{
    const std::wstring texts[] = {L""s,     L"/"s,      L"a//b/"s,        L"./../a"s,   L"a\\b"s,
                                  L"a\0b"s, L"\xD800"s, L"\xD83D\xDE00"s, L"\x1F600/x"s};
    for (const auto& text : texts) {
        EXPECT_EQ(path_t(text).as_string(), text) << testing::PrintToString(text);
        EXPECT_EQ(path_t(text).as_string(true), text) << testing::PrintToString(text);
        EXPECT_EQ(path_t(text).is_empty(), text.empty()) << testing::PrintToString(text);
    }
    EXPECT_EQ(path_t(L"from a pointer").as_string(), L"from a pointer");
}

TEST(basekit2_path_test, a_copy_is_independent_of_its_original)
{
    path_t original(L"a");
    const path_t copy(original);
    path_t assigned;
    assigned = original;
    original.append(L"b");
    EXPECT_EQ(copy.as_string(), L"a");
    EXPECT_EQ(assigned.as_string(), L"a");
}

TEST(basekit2_path_test, assign_takes_a_path_or_a_text_and_returns_the_path)
{
    path_t path(L"old");
    EXPECT_EQ(&path.assign(path_t(L"path")), &path);
    EXPECT_EQ(path.as_string(), L"path");
    EXPECT_EQ(path.assign(L"wide\0text"s).as_string(), L"wide\0text"s);
    EXPECT_EQ(path.assign(L"pointer").as_string(), L"pointer");
    EXPECT_EQ(path.assign(path).as_string(), L"pointer");
}

TEST(basekit2_path_test, append_joins_with_exactly_one_separator)
{
    const joined_row_t rows[] = {
        {L"a", L"b", L"a/b"},
        {L"a/", L"b", L"a/b"},
        {L"a", L"/b", L"a/b"},
        {L"a/", L"/b", L"a/b"},
        {L"a//", L"///b", L"a/b"},
        {L"/", L"b", L"/b"},
        {L"/", L"/b", L"/b"},
        {L"a", L"/", L"a/"},
        {L"a/", L"//", L"a/"},
        {L"/", L"/", L"/"},
        {L"a//b", L"c//d/", L"a//b/c//d/"},
        {L"..", L".", L"../."},
        {L"a\\", L"\\b", L"a\\/\\b"},
        {L"\xD83D", L"\xDE00", L"\xD83D/\xDE00"},
        {L"a\0"s, L"\0b"s, L"a\0/\0b"s},
        // An empty side adds no separator.
        {L"", L"b", L"b"},
        {L"", L"/b", L"/b"},
        {L"a", L"", L"a"},
        {L"a/", L"", L"a/"},
        {L"", L"", L""},
    };
    for (const auto& row : rows) {
        path_t path(row.left);
        EXPECT_EQ(&path.append(row.right), &path);
        EXPECT_EQ(path.as_string(), row.joined)
            << testing::PrintToString(row.left) << " " << testing::PrintToString(row.right);
    }
}

TEST(basekit2_path_test, a_path_can_be_appended_to_itself)
{
    path_t path(L"/a/");
    EXPECT_EQ(path.append(path).as_string(), L"/a/a/");
}

TEST(basekit2_path_test, branch_and_leaf_are_the_parts_around_the_last_separators)
{
    const parts_row_t rows[] = {
        {L"", L"", L""},
        {L"x", L"", L"x"},
        {L"/", L"/", L""},
        {L"//", L"/", L""},
        {L"/x", L"/", L"x"},
        {L"//x", L"/", L"x"},
        {L"a/b", L"a", L"b"},
        {L"/a/b", L"/a", L"b"},
        {L"a//b", L"a", L"b"},
        {L"a//b/c", L"a//b", L"c"},
        {L"a/", L"a", L""},
        {L"a//", L"a", L""},
        {L"/a/", L"/a", L""},
        {L".", L"", L"."},
        {L"..", L"", L".."},
        {L"a/.", L"a", L"."},
        {L"a/..", L"a", L".."},
        {L"a\\b", L"", L"a\\b"},
        {L"\x1F600/\xD800", L"\x1F600", L"\xD800"},
        {L"a\0/\0b"s, L"a\0"s, L"\0b"s},
    };
    for (const auto& row : rows) {
        const path_t path(row.text);
        EXPECT_EQ(path.get_branch(), row.branch) << testing::PrintToString(row.text);
        EXPECT_EQ(path.get_leaf(), row.leaf) << testing::PrintToString(row.text);
    }
}

TEST(basekit2_path_test, branch_and_leaf_joined_give_the_path_again)
{
    for (const std::wstring text : {L"x", L"/x", L"a/b", L"/a/b", L"a/", L"/a/b/"}) {
        const path_t path(text);
        std::wstring expected = text;
        if (path.get_leaf().empty())
            expected.pop_back();
        EXPECT_EQ(path_t(path.get_branch()).append(path.get_leaf()).as_string(), expected) << text;
    }
}

TEST(basekit2_path_test, paths_are_equal_if_their_texts_are)
{
    EXPECT_TRUE(path_t() == path_t(L""));
    EXPECT_TRUE(path_t(L"a/b") == path_t(L"a/b"));
    const std::wstring others[] = {L""s, L"a/B"s, L"a//b"s, L"./a/b"s, L"a/b/"s, L"a/b\0"s};
    for (const auto& other : others) {
        EXPECT_FALSE(path_t(L"a/b") == path_t(other)) << testing::PrintToString(other);
    }
}

TEST(basekit2_path_test, the_order_is_that_of_the_code_units)
{
    // '.' comes before '/' and '/' before '0'; a pair's surrogates come before U+E000.
    const std::wstring sorted[] = {
        L""s,       L"\0"s,     L"A"s,  L"B"s, L"a"s,    L"a\0"s,          L"a."s,
        L"a/"s,     L"a/b"s,    L"a0"s, L"b"s, L"\xE4"s, L"\xD83D\xDE00"s, L"\xE000"s,
        L"\xFFFF"s, L"\x1F600"s};
    for (std::size_t i = 0; i != std::size(sorted); ++i) {
        for (std::size_t j = 0; j != std::size(sorted); ++j) {
            EXPECT_EQ(path_t(sorted[i]) < path_t(sorted[j]), i < j)
                << testing::PrintToString(sorted[i]) << " " << testing::PrintToString(sorted[j]);
        }
    }
}

TEST(basekit2_path_test, files_directories_and_links_exist)
{
    const scratch_folder_t folder;
    folder.write("file", "x");
    std::filesystem::create_directory(folder.name("directory"));
    std::filesystem::create_symlink("file", folder.name("link"));
    for (const std::wstring name :
         {L"", L"file", L"directory", L"directory/", L"link", L"./file"}) {
        EXPECT_TRUE(path_t::exists(folder.wide_name("") + name)) << name;
    }
}

TEST(basekit2_path_test, missing_files_and_broken_links_do_not_exist)
{
    const scratch_folder_t folder;
    folder.write("file", "x");
    std::filesystem::create_symlink("nothing", folder.name("dangling"));
    std::filesystem::create_symlink("loop", folder.name("loop"));
    const std::wstring texts[] = {L"nothing"s,
                                  L"dangling"s,
                                  L"loop"s,
                                  L"file/"s,
                                  L"file/below"s,
                                  L"no/file"s,
                                  L"FILE"s,
                                  std::wstring(300, L'n'),
                                  std::wstring(10000, L'n')};
    for (const auto& text : texts) {
        EXPECT_FALSE(path_t::exists(folder.wide_name("") + text)) << testing::PrintToString(text);
    }
}

TEST(basekit2_path_test, a_text_that_names_nothing_does_not_exist)
{
    const scratch_folder_t folder;
    folder.write("file", "x");
    const std::wstring texts[] = {L""s,
                                  L"\0"s,
                                  L"\0/"s,
                                  L"/\0"s,
                                  folder.wide_name("") + L"file\0"s,
                                  folder.wide_name("") + L"file\0tail"s};
    for (const auto& text : texts) {
        EXPECT_FALSE(path_t::exists(text)) << testing::PrintToString(text);
    }
}

TEST(basekit2_path_test, any_name_is_found_by_its_utf8_bytes_in_the_c_locale)
{
    const c_locale_scope_t locale;
    for (const auto& name : names) {
        const scratch_folder_t folder;
        EXPECT_FALSE(path_t::exists(folder.wide_name("") + name.wide))
            << testing::PrintToString(name.wide);
        folder.write(name.bytes, "x");
        EXPECT_TRUE(path_t::exists(folder.wide_name("") + name.wide))
            << testing::PrintToString(name.wide);
    }
}

} // namespace

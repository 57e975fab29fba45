#include "catalogs.h"

#include "library_names.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

namespace audit
{
namespace
{

typedef std::map<std::string, std::string> variables_t;

const std::wstring directory = rova::strings::utf8_to_utf16(SHARE "/locale");

std::string language_of(const variables_t& variables)
{
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"})
        ::unsetenv(name);
    for (const auto& [name, value] : variables)
        ::setenv(name.c_str(), value.c_str(), 1);
    return environment_language();
}

TEST(catalogs_test, the_language_comes_from_lc_all_then_lc_messages_then_lang)
{
    EXPECT_EQ(language_of({{"LC_ALL", "a"}, {"LC_MESSAGES", "b"}, {"LANG", "c"}}), "a");
    EXPECT_EQ(language_of({{"LC_MESSAGES", "b"}, {"LANG", "c"}}), "b");
    EXPECT_EQ(language_of({{"LANG", "c"}}), "c");
    EXPECT_EQ(language_of({}), "");
}

TEST(catalogs_test, an_empty_variable_is_ignored)
{
    EXPECT_EQ(language_of({{"LC_ALL", ""}, {"LC_MESSAGES", ""}, {"LANG", "c"}}), "c");
}

TEST(catalogs_test, the_texts_are_those_of_the_bound_language)
{
    EXPECT_TRUE(bind_catalogs(directory, "de_AT.UTF-8"));
    EXPECT_EQ(catalog_text(L"severity_warning"), L"Warnung");
    EXPECT_TRUE(bind_catalogs(directory, "en_GB"));
    EXPECT_EQ(catalog_text(L"severity_warning"), L"warning");
}

TEST(catalogs_test, a_language_without_texts_cannot_be_chosen)
{
    for (const char* const language : {"tlh", "C", "POSIX", "", "../en", "1"}) {
        bind_catalogs(directory, "en");
        EXPECT_FALSE(bind_catalogs(directory, language)) << language;
    }
}

TEST(catalogs_test, english_is_used_for_a_language_without_texts)
{
    for (const char* const language : {"tlh", "C", "C.UTF-8", "POSIX", "", "en", "../de", "1"}) {
        bind_catalogs_or_english(directory, language);
        EXPECT_EQ(catalog_text(L"severity_warning"), L"warning") << language;
    }
}

TEST(catalogs_test, without_files_there_are_no_texts)
{
    EXPECT_FALSE(bind_catalogs(directory + L"/none", "de"));
    EXPECT_EQ(catalog_text(L"severity_warning"), L"");
}

TEST(catalogs_test, an_unknown_id_has_no_text)
{
    EXPECT_TRUE(bind_catalogs(directory, "de"));
    EXPECT_EQ(catalog_text(L"severity_0"), L"");
    EXPECT_EQ(catalog_text(L""), L"");
}

} // namespace
} // namespace audit

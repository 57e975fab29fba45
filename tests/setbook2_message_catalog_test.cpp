#include <setbook2/message_catalog.h>

#include "catalog_support.h"
#include "run_threads.h"
#include "support.h"
#include "usage.h"

#include <gtest/gtest.h>

#include <chrono>
#include <clocale>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <locale>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{

using setbook2::bindCatalogDirectory;
using setbook2::getMessageCatalog;
using setbook2::registerMessageCatalog;
using std::chrono::steady_clock;
using velmoext_1_4_8::units;

typedef ROVA_2_18::i18n::catalog_t catalog_t;
typedef ROVA_2_18::i18n::message_t message_t;

const wchar_t no_catalog[] = L"(none)";
const std::size_t max_file_bytes = 16U << 20U;

/// Returns one text for every id.
class fixed_catalog_t : public catalog_t
{
public:
    explicit fixed_catalog_t(const std::wstring& text) : m_text(text) {}
    message_t message(const std::wstring& /*id*/) const override { return message_t(m_text); }

private:
    std::wstring m_text;
};

/// Unregisters another catalog in its destructor, and counts if both are no longer found.
class unregistering_catalog_t : public fixed_catalog_t
{
public:
    explicit unregistering_catalog_t(int& count) : fixed_catalog_t(L"returning"), m_count(count) {}
    unregistering_catalog_t(const unregistering_catalog_t&) = delete;
    unregistering_catalog_t& operator=(const unregistering_catalog_t&) = delete;
    ~unregistering_catalog_t() override
    {
        registerMessageCatalog(L"other", nullptr);
        const bool are_unregistered =
            getMessageCatalog(L"own") != this && !getMessageCatalog(L"other");
        m_count += are_unregistered ? 1 : 0;
    }

private:
    int& m_count;
};

boost::shared_ptr<const catalog_t> fixed(const std::wstring& text)
{
    return boost::make_shared<fixed_catalog_t>(text);
}

std::wstring text_of(const std::wstring& id = L"t", const std::wstring& name = L"cat")
{
    const catalog_t* const catalog = getMessageCatalog(name);
    return catalog ? catalog->message(id).as_ustring({}) : no_catalog;
}

/// Tries for some seconds, because a missing file is looked for only once a second.
std::wstring text_after_a_while()
{
    const auto end = steady_clock::now() + std::chrono::seconds(20);
    std::wstring text = text_of();
    while (text == no_catalog && steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        text = text_of();
    }
    return text;
}

std::wstring number_of(const std::wstring& number)
{
    ROVA_2_18::generic::varg_list arguments;
    arguments.push_back({"n", number});
    return getMessageCatalog(L"cat")->message(L"t").as_ustring(arguments);
}

class setbook2_message_catalog_test : public testing::Test
{
protected:
    /// Creates a catalog whose id "t" has that text.
    void make(const std::string& locale, const std::string& text,
              const std::string& name = "cat") const
    {
        m_catalogs.make(locale, name, po_of({{"t", text}}));
    }

    void remove(const std::string& locale) const
    {
        std::filesystem::remove(m_catalogs.file(locale, "cat"));
    }

    /// Returns the text of id "t" in a file of those bytes.
    std::wstring text_in(const std::string& bytes) const
    {
        m_catalogs.write("de", "cat", bytes);
        m_catalogs.bind(L"de");
        return text_of();
    }

    std::string bytes_of(const std::string& po, const std::vector<std::string>& options = {}) const
    {
        m_catalogs.make("en", "source", po, options);
        return m_catalogs.read("en", "source");
    }

    /// Returns a file in that charset. The id "t" has the text "text " and the bytes, "id " and the
    /// bytes has the text "found".
    ///
    /// The charset and the bytes are replaced in a file, since msgfmt 0.22 and later converts all
    /// texts to UTF-8.
    std::string in_charset(const std::string& charset, const std::string& bytes) const
    {
        const std::string blanks(20, ' ');
        const std::string marks(bytes.size(), 'Z');
        std::string file = bytes_of(po_of("Content-Type: text/plain; charset=UTF-8" + blanks + "\n",
                                          {{"t", "text " + marks}, {"id " + marks, "found"}}));
        file.replace(file.find("UTF-8"), charset.size(), charset);
        const std::size_t end = file.find("charset=") + 8 + charset.size();
        file.replace(end, 5, blanks, 0, 5);
        for (std::size_t at = file.find(marks); at != std::string::npos; at = file.find(marks))
            file.replace(at, bytes.size(), bytes);
        return file;
    }

    catalogs_t m_catalogs;
};

/// An environment variable while in scope.
class environment_scope_t
{
public:
    environment_scope_t(const char* name, const char* value) : m_name(name)
    {
        const char* const former = std::getenv(name);
        m_was_set = former != nullptr;
        m_former = former ? former : "";
        setenv(name, value, 1);
    }
    ~environment_scope_t()
    {
        if (m_was_set)
            setenv(m_name, m_former.c_str(), 1);
        else
            unsetenv(m_name);
    }
    environment_scope_t(const environment_scope_t&) = delete;
    environment_scope_t& operator=(const environment_scope_t&) = delete;

private:
    const char* m_name;
    bool m_was_set = false;
    std::string m_former;
};

/// Both of the process's locales while in scope.
class process_locale_scope_t
{
public:
    explicit process_locale_scope_t(const std::locale& locale)
        : m_former(std::locale::global(locale)), m_former_name(std::setlocale(LC_ALL, nullptr))
    {
        std::setlocale(LC_ALL, "C");
    }
    ~process_locale_scope_t()
    {
        std::setlocale(LC_ALL, m_former_name.c_str());
        std::locale::global(m_former);
    }
    process_locale_scope_t(const process_locale_scope_t&) = delete;
    process_locale_scope_t& operator=(const process_locale_scope_t&) = delete;

private:
    std::locale m_former;
    std::string m_former_name;
};

struct grouping_t : std::numpunct<char>
{
    std::string do_grouping() const override { return "\1"; }
    char do_thousands_sep() const override { return '.'; }
};

std::string with_word(std::string bytes, std::size_t offset, std::uint32_t word)
{
    std::memcpy(&bytes.at(offset), &word, sizeof(word));
    return bytes;
}

std::uint32_t word_at(const std::string& bytes, std::size_t offset)
{
    std::uint32_t word = 0;
    std::memcpy(&word, &bytes.at(offset), sizeof(word));
    return word;
}

// Offsets of the fields in a `.mo` file's header.
enum header_field_t : std::size_t
{
    revision = 4,
    count = 8,
    keys = 12,
    texts = 16,
    hash_size = 20,
    hash_table = 24
};

} // namespace

// ---- files

TEST(setbook2_message_catalog_process_test, without_a_directory_there_is_no_catalog)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(std::_Exit(getMessageCatalog(L"cat") ? 1 : 0), testing::ExitedWithCode(0), "");
}

TEST_F(setbook2_message_catalog_test, a_file_of_the_bound_locale_is_found)
{
    make("de", "deutsch");
    EXPECT_TRUE(m_catalogs.bind(L"de"));
    EXPECT_EQ(text_of(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, a_directory_need_not_exist_when_it_is_bound)
{
    EXPECT_TRUE(m_catalogs.bind(L"de"));
    make("de", "deutsch");
    EXPECT_EQ(text_of(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, a_catalog_without_a_file_is_not_found)
{
    make("de", "deutsch", "other");
    m_catalogs.bind(L"de");
    EXPECT_EQ(getMessageCatalog(L"cat"), nullptr);
    EXPECT_EQ(getMessageCatalog(L""), nullptr);
}

TEST_F(setbook2_message_catalog_test, a_file_that_is_created_later_is_found)
{
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(), no_catalog);
    make("de", "deutsch");
    EXPECT_EQ(text_after_a_while(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, a_missing_file_is_looked_for_once_a_second)
{
    m_catalogs.bind(L"de");
    const auto begin = steady_clock::now();
    EXPECT_EQ(text_of(), no_catalog);
    make("de", "deutsch");
    make("de", "other", "other");
    const std::wstring text = text_of();
    const bool is_within_pause = steady_clock::now() - begin < std::chrono::milliseconds(900);
    EXPECT_TRUE(text == no_catalog || !is_within_pause);
    EXPECT_EQ(text_of(L"t", L"other"), L"other");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, any_number_of_missing_files_can_be_looked_for)
{
    m_catalogs.bind(L"de");
    for (int i = 0; i < 3000; ++i)
        EXPECT_EQ(text_of(L"t", std::to_wstring(i)), no_catalog);
    make("de", "deutsch");
    EXPECT_EQ(text_of(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, a_file_that_was_found_is_kept)
{
    make("de", "deutsch");
    m_catalogs.bind(L"de");
    const catalog_t* const found = getMessageCatalog(L"cat");
    remove("de");
    EXPECT_EQ(getMessageCatalog(L"cat"), found);
    EXPECT_EQ(text_of(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test,
       a_better_file_that_is_created_later_does_not_replace_one_that_was_found)
{
    make("de", "deutsch");
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(text_of(), L"deutsch");
    make("de_AT", "austrian");
    EXPECT_EQ(text_of(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, binding_again_discards_the_catalogs_that_were_read)
{
    make("de", "old");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(), L"old");
    make("de", "new");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(), L"new");
}

TEST_F(setbook2_message_catalog_test, a_catalogs_language_is_that_of_the_last_binding)
{
    make("de", "deutsch");
    make("en", "english");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(), L"deutsch");
    m_catalogs.bind(L"en");
    EXPECT_EQ(text_of(), L"english");
}

TEST_F(setbook2_message_catalog_test, names_may_have_dots)
{
    make("de", "bare", "audit");
    make("de", "prefixed", "p.audit");
    make("de", "dot", ".audit");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(L"t", L"audit"), L"bare");
    EXPECT_EQ(text_of(L"t", L"p.audit"), L"prefixed");
    EXPECT_EQ(text_of(L"t", L".audit"), L"dot");
}

TEST_F(setbook2_message_catalog_test, a_name_that_leaves_the_directory_has_no_file)
{
    make("de", "deutsch");
    make("de", "below", "cat/UTF-8");
    m_catalogs.bind(L"de");
    const std::wstring names[] = {L"../LC_MESSAGES/cat",
                                  L"./cat",
                                  L"/cat",
                                  L"cat/",
                                  L"cat/UTF-8",
                                  L"../../de/LC_MESSAGES/cat",
                                  L"..",
                                  L".",
                                  L"cat" + units({0}),
                                  L"cat.mo" + units({0})};
    for (const std::wstring& name : names)
        EXPECT_EQ(text_of(L"t", name), no_catalog) << testing::PrintToString(name);
}

TEST_F(setbook2_message_catalog_test, names_are_case_sensitive)
{
    make("de", "deutsch");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(L"t", L"CAT"), no_catalog);
}

TEST_F(setbook2_message_catalog_test, any_unicode_name_and_directory_work_in_any_locale)
{
    const std::string leaf = "k\xC3\xA4se \xF0\x9F\x98\x80";
    const std::wstring wide_leaf = ROVA_2_18::strings::utf8_to_utf16(leaf);
    const process_locale_scope_t plain(std::locale::classic());
    make(leaf + "/de", "deutsch", leaf);
    EXPECT_TRUE(bindCatalogDirectory(m_catalogs.directory() + L"/" + wide_leaf, L"de"));
    EXPECT_EQ(text_of(L"t", wide_leaf), L"deutsch");
}

// ---- locales

TEST_F(setbook2_message_catalog_test, a_locale_falls_back_step_by_step)
{
    const char* const folders[] = {"de@euro", "de_AT", "de"};
    for (const char* folder : folders)
        make(folder, folder);
    for (const char* folder : folders) {
        m_catalogs.bind(L"de_AT@euro");
        EXPECT_EQ(text_of(), ROVA_2_18::strings::utf8_to_utf16(folder));
        remove(folder);
    }
    m_catalogs.bind(L"de_AT@euro");
    EXPECT_EQ(text_of(), no_catalog);
}

TEST_F(setbook2_message_catalog_test, a_missing_text_comes_from_the_next_fall_back)
{
    m_catalogs.make("de_AT", "cat",
                    po_of({{"t", "austrian"}, {"empty", ""}}) +
                        "\n#, fuzzy\nmsgid \"fuzzy\"\nmsgstr \"guessed\"\n");
    m_catalogs.make("de", "cat",
                    po_of({{"t", "deutsch"}, {"empty", "voll"}, {"fuzzy", "{n, number}"}}));
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(text_of(), L"austrian");
    EXPECT_EQ(text_of(L"empty"), L"voll");
    EXPECT_EQ(text_of(L"fuzzy"), L"{n}");
    EXPECT_EQ(text_of(L"unknown"), L"");
}

TEST_F(setbook2_message_catalog_test, each_text_has_the_numbers_of_its_own_file)
{
    m_catalogs.make("de_AT", "cat", po_of({{"u", "{n, number}"}}));
    make("de", "{n, number}");
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(number_of(L"12345.5"), L"12.345,5");
}

TEST_F(setbook2_message_catalog_test, scripts_and_regions_count)
{
    const std::pair<const wchar_t*, std::vector<const char*>> rows[] = {
        {L"zh_Hant_TW", {"zh_Hant_TW", "zh_TW", "zh_Hant", "zh"}},
        {L"zh-Hant-TW", {"zh_Hant_TW", "zh_TW", "zh_Hant", "zh"}},
        {L"zh_Hant", {"zh_Hant", "zh_TW", "zh"}},
        {L"zh_TW", {"zh_TW", "zh_Hant_TW", "zh_Hant", "zh"}},
        {L"zh_Hans", {"zh_Hans", "zh_CN", "zh"}},
        {L"zh_CN", {"zh_CN", "zh_Hans_CN", "zh_Hans", "zh"}},
        {L"yue_HK", {"yue_HK", "yue_Hant", "yue"}},
        {L"sr_Latn_RS", {"sr_Latn_RS", "sr_RS@latin", "sr_Latn", "sr@latin", "sr"}},
        {L"sr_RS@latin", {"sr_Latn_RS", "sr_RS@latin", "sr_Latn", "sr@latin", "sr"}},
        {L"sr@latin", {"sr_Latn", "sr@latin", "sr"}},
        {L"uz@cyrillic", {"uz_Cyrl", "uz@cyrillic", "uz"}},
        {L"es_419", {"es_419", "es"}},
        {L"ES-mx", {"es_MX", "es"}},
        {L"ca_ES@valencia", {"ca_ES@valencia", "ca@valencia", "ca_ES", "ca"}},
        {L"ca-ES-valencia", {"ca_ES@valencia", "ca@valencia", "ca_ES", "ca"}},
        {L"de_DE.UTF-8@euro", {"de_DE@euro", "de@euro", "de_DE", "de"}},
    };
    for (const auto& [locale, folders] : rows) {
        for (const char* const folder : folders)
            make(folder, folder);
        for (const char* const folder : folders) {
            m_catalogs.bind(locale);
            EXPECT_EQ(text_of(), ROVA_2_18::strings::utf8_to_utf16(folder))
                << testing::PrintToString(locale);
            remove(folder);
        }
        m_catalogs.bind(locale);
        EXPECT_EQ(text_of(), no_catalog) << testing::PrintToString(locale);
    }
}

TEST_F(setbook2_message_catalog_test, a_locale_does_not_fall_back_to_another_script_or_country)
{
    make("zh_CN", "simplified");
    make("sr_RS", "cyrillic");
    make("ru_RU", "of another country");
    make("ar_EG", "of another country");
    for (const wchar_t* locale : {L"ru_UA", L"ar_MA", L"zh_SG"}) {
        m_catalogs.bind(locale);
        EXPECT_EQ(text_of(), no_catalog) << testing::PrintToString(locale);
    }
    m_catalogs.bind(L"zh_Hant_TW");
    EXPECT_EQ(text_of(), no_catalog);
    m_catalogs.bind(L"sr_Latn");
    EXPECT_EQ(text_of(), no_catalog);
}

TEST_F(setbook2_message_catalog_test, a_file_of_the_whole_locale_comes_first)
{
    for (const char* folder : {"de_AT@euro", "de@euro", "de_AT", "de"})
        make(folder, folder);
    m_catalogs.bind(L"de_AT@euro");
    EXPECT_EQ(text_of(), L"de_AT@euro");
}

TEST_F(setbook2_message_catalog_test, each_catalog_falls_back_by_itself)
{
    make("de", "deutsch");
    make("de_AT", "austrian", "other");
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(text_of(), L"deutsch");
    EXPECT_EQ(text_of(L"t", L"other"), L"austrian");
}

TEST_F(setbook2_message_catalog_test, a_locale_does_not_fall_back_to_one_of_another_language)
{
    make("en", "english");
    make("c", "none");
    make("de_DE", "german");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(), no_catalog);
}

TEST_F(setbook2_message_catalog_test, the_encoding_of_a_locale_is_ignored)
{
    make("de_AT", "austrian");
    for (const wchar_t* locale :
         {L"de_AT.UTF-8", L"de_AT.utf8", L"de_AT.ISO-8859-1", L"de_AT.ISO-8859-15@euro"}) {
        EXPECT_TRUE(m_catalogs.bind(locale)) << testing::PrintToString(locale);
        EXPECT_EQ(text_of(), L"austrian") << testing::PrintToString(locale);
    }
}

TEST_F(setbook2_message_catalog_test, locales_without_a_language_have_a_folder_too)
{
    make("c", "none");
    make("posix", "posix");
    EXPECT_TRUE(m_catalogs.bind(L"C"));
    EXPECT_EQ(text_of(), L"none");
    EXPECT_TRUE(m_catalogs.bind(L"C.UTF-8"));
    EXPECT_EQ(text_of(), L"none");
    EXPECT_TRUE(m_catalogs.bind(L"POSIX"));
    EXPECT_EQ(text_of(), L"posix");
}

TEST_F(setbook2_message_catalog_test, numbers_look_as_in_the_locale_of_the_files_folder)
{
    make("en", "{n, number}");
    make("de", "{n, number}");
    make("de_AT", "{n, number}");
    m_catalogs.bind(L"en");
    EXPECT_EQ(number_of(L"12345.5"), L"12,345.5");
    m_catalogs.bind(L"de");
    EXPECT_EQ(number_of(L"12345.5"), L"12.345,5");
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(number_of(L"12345.5"), L"12" + units({0xA0}) + L"345,5");
}

TEST_F(setbook2_message_catalog_test, numbers_of_a_fall_back_look_as_in_the_locale_that_was_found)
{
    make("de", "{n, number}");
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(number_of(L"12345.5"), L"12.345,5");
}

TEST_F(setbook2_message_catalog_test, the_process_s_locale_and_environment_have_no_influence)
{
    make("de", "{n, number} \xE2\x82\xAC");
    make("en", "english");
    const environment_scope_t lang("LANG", "en_US.UTF-8");
    const environment_scope_t all("LC_ALL", "C");
    const environment_scope_t language("LANGUAGE", "en");
    const process_locale_scope_t grouping(std::locale(std::locale::classic(), new grouping_t));
    m_catalogs.bind(L"de");
    EXPECT_EQ(number_of(L"12345.5"), L"12.345,5 " + units({0x20AC}));
}

TEST_F(setbook2_message_catalog_test, an_invalid_directory_or_locale_is_refused_and_changes_nothing)
{
    make("de", "deutsch");
    m_catalogs.bind(L"de");
    const std::wstring directory = m_catalogs.directory();
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"", L"de"},
        {directory + units({0}), L"de"},
        {directory, L""},
        {directory, L"."},
        {directory, L"_"},
        {directory, L"@"},
        {directory, L".UTF-8"},
        {directory, L"_AT"},
        {directory, L".."},
        {directory, L"../de"},
        {directory, L"de/../de"},
        {directory, L"/de"},
        {directory, L"de/"},
        {directory, L"de" + units({0})},
        {directory, L"d e"},
        {directory, L"12"},
        {directory, L"d"},
        {directory, L"deutschland"},
        {directory, L"-AT"},
        {directory, L"d" + units({0xE4})},
        {directory, L"de_A/T"},
        {directory, L"de_../de"},
        {directory, L"de@../de"},
        {directory, L"de@eu ro"},
        {directory, L"de_AT@euro/x"},
    };
    for (const auto& [refused, locale] : rows) {
        EXPECT_FALSE(bindCatalogDirectory(refused, locale)) << testing::PrintToString(locale);
        EXPECT_EQ(text_of(), L"deutsch") << testing::PrintToString(locale);
    }
}

TEST_F(setbook2_message_catalog_test, a_refused_binding_keeps_the_catalogs_and_the_directory)
{
    make("de", "deutsch");
    m_catalogs.bind(L"de");
    const catalog_t* const found = getMessageCatalog(L"cat");
    EXPECT_FALSE(bindCatalogDirectory(L"", L"en"));
    EXPECT_FALSE(m_catalogs.bind(L""));
    EXPECT_EQ(getMessageCatalog(L"cat"), found);
    make("de", "later", "other");
    EXPECT_EQ(text_of(L"t", L"other"), L"later");
}

// ---- messages

TEST_F(setbook2_message_catalog_test, an_empty_id_is_an_empty_message_never_the_header)
{
    make("de", "deutsch");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(L""), L"");
}

TEST_F(setbook2_message_catalog_test, an_unknown_id_is_an_empty_message)
{
    make("de", "deutsch");
    m_catalogs.bind(L"de");
    for (const std::wstring& id :
         {std::wstring(L"u"), std::wstring(L"T"), std::wstring(L"t "), units({'t', 0}),
          units({'t', 0, 'x'}), units({0}), units({0, 't'}), std::wstring(100000, L't')})
        EXPECT_EQ(text_of(id), L"") << testing::PrintToString(id.substr(0, 10));
}

TEST_F(setbook2_message_catalog_test, an_id_that_is_not_valid_utf_16_is_an_empty_message)
{
    make("de", "deutsch");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(units({0xD800})), L"");
    EXPECT_EQ(text_of(units({'t', 0xDC00})), L"");
}

TEST_F(setbook2_message_catalog_test, fuzzy_and_untranslated_entries_are_empty_messages)
{
    m_catalogs.make("de", "cat",
                    po_of({{"t", "deutsch"}, {"empty", ""}}) +
                        "\n#, fuzzy\nmsgid \"fuzzy\"\nmsgstr \"guessed\"\n" +
                        "\n#~ msgid \"old\"\n#~ msgstr \"obsolete\"\n");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(L"t"), L"deutsch");
    for (const wchar_t* id : {L"empty", L"fuzzy", L"old"})
        EXPECT_EQ(text_of(id), L"") << testing::PrintToString(id);
}

TEST_F(setbook2_message_catalog_test, ids_and_texts_may_have_any_characters)
{
    const std::string odd = "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80 \"\\\n";
    m_catalogs.make("de", "cat", po_of({{odd, odd}}));
    m_catalogs.bind(L"de");
    const std::wstring wide_odd = ROVA_2_18::strings::utf8_to_utf16(odd);
    EXPECT_EQ(text_of(wide_odd), wide_odd);
}

TEST_F(setbook2_message_catalog_test, every_one_of_many_ids_is_found)
{
    po_entries_t entries;
    for (int i = 0; i < 2000; ++i)
        entries.emplace_back("id" + std::to_string(i), "text" + std::to_string(i));
    m_catalogs.make("de", "cat", po_of(entries));
    m_catalogs.bind(L"de");
    for (int i = 0; i < 2000; ++i)
        EXPECT_EQ(text_of(L"id" + std::to_wstring(i)), L"text" + std::to_wstring(i));
    EXPECT_EQ(text_of(L"id2000"), L"");
}

TEST_F(setbook2_message_catalog_test, a_message_is_the_same_each_time_it_is_requested)
{
    make("de", "{n, plural, one {# Datei} other {# Dateien}}");
    m_catalogs.bind(L"de");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(number_of(L"1"), L"1 Datei");
        EXPECT_EQ(number_of(L"2"), L"2 Dateien");
    }
}

// ---- catalogs of the application's own

TEST_F(setbook2_message_catalog_test, a_registered_catalog_is_found_by_its_name)
{
    const auto catalog = fixed(L"own");
    m_catalogs.add(L"own", catalog);
    EXPECT_EQ(getMessageCatalog(L"own"), catalog.get());
    EXPECT_EQ(getMessageCatalog(L"OWN"), nullptr);
}

TEST_F(setbook2_message_catalog_test, a_registered_catalog_is_owned_until_it_is_unregistered)
{
    auto catalog = fixed(L"own");
    const boost::weak_ptr<const catalog_t> watched = catalog;
    m_catalogs.add(L"own", catalog);
    catalog.reset();
    EXPECT_FALSE(watched.expired());
    registerMessageCatalog(L"own", nullptr);
    EXPECT_TRUE(watched.expired());
}

TEST(setbook2_message_catalog_process_test, a_catalog_may_call_the_registry_from_its_destructor)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto register_and_unregister = [] {
        alarm(60); // ends a call that never returns
        int count = 0;
        registerMessageCatalog(L"other", fixed(L"other"));
        registerMessageCatalog(L"own", boost::make_shared<unregistering_catalog_t>(count));
        registerMessageCatalog(L"own", boost::make_shared<unregistering_catalog_t>(count));
        registerMessageCatalog(L"own", nullptr);
        return count;
    };
    EXPECT_EXIT(std::_Exit(register_and_unregister()), testing::ExitedWithCode(2), "");
}

TEST_F(setbook2_message_catalog_test, a_later_catalog_replaces_the_former_one)
{
    m_catalogs.add(L"own", fixed(L"old"));
    m_catalogs.add(L"own", fixed(L"new"));
    EXPECT_EQ(text_of(L"t", L"own"), L"new");
    registerMessageCatalog(L"own", nullptr);
    EXPECT_EQ(text_of(L"t", L"own"), no_catalog);
}

TEST_F(setbook2_message_catalog_test,
       a_registered_catalog_replaces_the_file_until_it_is_unregistered)
{
    make("de", "file");
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(), L"file");
    m_catalogs.add(L"cat", fixed(L"own"));
    EXPECT_EQ(text_of(), L"own");
    registerMessageCatalog(L"cat", nullptr);
    EXPECT_EQ(text_of(), L"file");
}

TEST_F(setbook2_message_catalog_test, binding_a_directory_leaves_registered_catalogs_alone)
{
    m_catalogs.add(L"own", fixed(L"own"));
    m_catalogs.bind(L"de");
    EXPECT_EQ(text_of(L"t", L"own"), L"own");
}

TEST_F(setbook2_message_catalog_test, a_registered_catalog_may_have_any_name)
{
    for (const std::wstring& name : {std::wstring(), std::wstring(L"a/b"), units({0})}) {
        m_catalogs.add(name, fixed(L"own"));
        EXPECT_EQ(text_of(L"t", name), L"own") << testing::PrintToString(name);
    }
}

TEST_F(setbook2_message_catalog_test, unregistering_an_unknown_catalog_changes_nothing)
{
    m_catalogs.add(L"own", fixed(L"own"));
    registerMessageCatalog(L"other", nullptr);
    EXPECT_EQ(text_of(L"t", L"own"), L"own");
}

// ---- untrusted files

TEST_F(setbook2_message_catalog_test, a_file_truncated_at_any_byte_is_passed_over)
{
    make("de", "deutsch");
    const std::string whole = bytes_of(po_of({{"t", "text"}, {"u", "other"}}));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        m_catalogs.write("de_AT", "cat", whole.substr(0, size));
        m_catalogs.bind(L"de_AT");
        EXPECT_EQ(text_of(), L"deutsch") << size;
    }
    m_catalogs.write("de_AT", "cat", whole);
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(text_of(), L"text");
}

TEST_F(setbook2_message_catalog_test, a_file_with_any_byte_replaced_does_no_harm)
{
    const std::string whole = bytes_of(
        po_of({{"t", "text"}, {"u", "{n, plural, one {#} other {# \xE2\x82\xAC}}"}, {"v", "w"}}));
    int refused = 0;
    int whole_texts = 0;
    for (std::size_t at = 0; at < whole.size(); ++at)
        for (const char byte : {'\xFF', '\0', '\x7F'}) {
            std::string damaged = whole;
            damaged[at] = byte;
            const std::wstring text = text_in(damaged);
            for (const wchar_t* id : {L"u", L"v", L"", L"unknown"})
                text_of(id);
            refused += text == no_catalog ? 1 : 0;
            whole_texts += text == L"text" ? 1 : 0;
        }
    EXPECT_GT(refused, 100);
    EXPECT_GT(whole_texts, 100);
}

TEST_F(setbook2_message_catalog_test, a_file_whose_header_is_out_of_range_is_passed_over)
{
    const std::string whole = bytes_of(po_of({{"t", "text"}, {"u", "other"}}));
    ASSERT_EQ(text_in(whole), L"text");
    const auto size = static_cast<std::uint32_t>(whole.size());
    const std::pair<std::size_t, std::uint32_t> rows[] = {
        {0, 0},
        {revision, 0x00000002},
        {revision, 0x0000FFFF},
        {revision, 0x00020000},
        {revision, 0xFFFFFFFF},
        {count, 0},
        {count, 0x20000000},
        {count, 0x20000001},
        {count, 0x1FFFFFFF},
        {count, 0xFFFFFFFF},
        {keys, size},
        {keys, size - 8},
        {keys, 0xFFFFFFF8},
        {keys, 0xFFFFFFFF},
        {texts, size},
        {texts, 0xFFFFFFE8},
        {texts, 0xFFFFFFFF},
    };
    for (const auto& [offset, word] : rows)
        EXPECT_EQ(text_in(with_word(whole, offset, word)), no_catalog) << offset << ": " << word;
}

TEST_F(setbook2_message_catalog_test, a_file_of_either_major_revision_is_read)
{
    const std::string whole = bytes_of(po_of({{"t", "text"}}));
    ASSERT_EQ(word_at(whole, revision), 0U);
    EXPECT_EQ(text_in(with_word(whole, revision, 0x00010000)), L"text");
}

TEST_F(setbook2_message_catalog_test, a_file_whose_strings_are_out_of_range_is_passed_over)
{
    const std::string whole = bytes_of(po_of({{"t", "text"}, {"u", "other"}}));
    const auto size = static_cast<std::uint32_t>(whole.size());
    for (const header_field_t table : {keys, texts})
        for (std::size_t entry = 0; entry < 3; ++entry) {
            const std::size_t length = word_at(whole, table) + entry * 8;
            const std::size_t offset = length + 4;
            const std::uint32_t wrapping = 0 - word_at(whole, offset);
            for (const std::uint32_t word : {size, wrapping, wrapping + 28, 0xFFFFFFFFU})
                EXPECT_EQ(text_in(with_word(whole, length, word)), no_catalog)
                    << length << ": " << word;
            for (const std::uint32_t word : {size, 0xFFFFFFFFU, 0 - word_at(whole, length)})
                EXPECT_EQ(text_in(with_word(whole, offset, word)), no_catalog)
                    << offset << ": " << word;
        }
}

TEST_F(setbook2_message_catalog_test, a_file_whose_keys_overlap_is_passed_over)
{
    const std::string whole = bytes_of(po_of({{"t", "text"}, {std::string(1000, 'u'), "other"}}));
    ASSERT_EQ(text_in(whole), L"text");
    const std::uint32_t long_key = word_at(whole, keys) + 16;
    ASSERT_EQ(word_at(whole, long_key), 1000U);
    std::string covered = whole;
    for (const std::uint32_t key : {word_at(whole, keys), word_at(whole, keys) + 8}) {
        covered = with_word(covered, key, word_at(whole, long_key));
        covered = with_word(covered, key + 4, word_at(whole, long_key + 4));
    }
    EXPECT_EQ(text_in(covered), no_catalog);
}

TEST_F(setbook2_message_catalog_test, a_file_of_more_than_16_mib_is_passed_over)
{
    std::string bytes = bytes_of(po_of({{"t", "text"}}));
    bytes.resize(max_file_bytes);
    EXPECT_EQ(text_in(bytes), L"text");
    bytes.push_back('\0');
    EXPECT_EQ(text_in(bytes), no_catalog);
}

TEST_F(setbook2_message_catalog_test, a_path_that_is_not_a_regular_file_is_passed_over_at_once)
{
    make("de", "deutsch");
    ASSERT_EQ(mkfifo(m_catalogs.file("de_AT", "cat").c_str(), 0600), 0);
    std::filesystem::create_directory(m_catalogs.file("de@euro", "cat"));
    std::filesystem::create_symlink("/dev/zero", m_catalogs.file("de_AT@euro", "cat"));
    m_catalogs.bind(L"de_AT@euro");
    EXPECT_EQ(text_of(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, a_file_without_any_string_is_passed_over)
{
    const std::string bytes = bytes_of(po_of({{"t", "text"}}));
    EXPECT_EQ(text_in(with_word(bytes, count, 0)), no_catalog);
}

TEST_F(setbook2_message_catalog_test, overlapping_strings_take_linear_time)
{
    const std::uint32_t strings = 200000;
    const std::uint32_t table = 28;
    const std::uint32_t end = table + strings * 8;
    std::string bytes = bytes_of(po_of({{"t", "text"}})).substr(0, table);
    bytes = with_word(with_word(with_word(bytes, count, strings), keys, table), texts, table);
    bytes.resize(max_file_bytes, 'x');
    bytes.back() = '\0';
    for (std::uint32_t string = 0; string < strings; ++string) {
        bytes = with_word(std::move(bytes), table + string * 8, max_file_bytes - 1 - end);
        bytes = with_word(std::move(bytes), table + string * 8 + 4, end);
    }
    const velmoext_1_4_8::usage_t usage;
    EXPECT_EQ(text_in(bytes), no_catalog);
    EXPECT_LT(usage.seconds(), 5);
}

TEST_F(setbook2_message_catalog_test, strings_that_depend_on_the_system_are_left_out)
{
    const std::string number = "\n#, c-format\nmsgid \"%<PRIu64>\"\nmsgstr \"n %<PRIu64>\"\n";
    const std::string bytes = bytes_of(po_of({{"t", "text"}}) + number);
    ASSERT_EQ(word_at(bytes, revision), 1U);
    EXPECT_EQ(text_in(bytes), L"text");
    EXPECT_EQ(text_of(L"%lu"), L"");
}

TEST_F(setbook2_message_catalog_test, a_hash_table_is_not_required_and_not_used)
{
    const std::string po = po_of({{"t", "text"}, {"u", "other"}});
    EXPECT_EQ(text_in(bytes_of(po, {"--no-hash"})), L"text");
    EXPECT_EQ(text_of(L"u"), L"other");
    std::string bytes = bytes_of(po);
    for (const std::uint32_t size : {1U, 0x40000003U, 0xFFFFFFFFU}) {
        bytes = with_word(with_word(bytes, hash_size, size), hash_table, 0xFFFFFFFC);
        EXPECT_EQ(text_in(bytes), L"text");
    }
}

TEST_F(setbook2_message_catalog_test, strings_in_any_order_are_found)
{
    const std::string sorted = bytes_of(po_of({{"t", "text"}, {"u", "other"}}), {"--no-hash"});
    std::string bytes = sorted;
    for (const header_field_t table : {keys, texts})
        for (std::uint32_t word = 0; word < 6; ++word) {
            const std::uint32_t entry = word_at(sorted, table);
            const std::uint32_t other = entry + (2 - word / 2) * 8 + word % 2 * 4;
            bytes = with_word(bytes, entry + word * 4, word_at(sorted, other));
        }
    ASSERT_NE(bytes, sorted);
    EXPECT_EQ(text_in(bytes), L"text");
    EXPECT_EQ(text_of(L"u"), L"other");
    EXPECT_EQ(text_of(L"v"), L"");
}

TEST_F(setbook2_message_catalog_test, of_two_translations_of_one_id_the_first_is_used)
{
    std::string bytes = bytes_of(po_of({{"t", "text"}, {"u", "other"}}), {"--no-hash"});
    bytes.replace(bytes.find(std::string("u\0", 2)), 1, "t");
    EXPECT_EQ(text_in(bytes), L"text");
}

TEST_F(setbook2_message_catalog_test, the_first_form_of_a_plural_is_used)
{
    const std::string plural = "\nmsgid \"file\"\nmsgid_plural \"files\"\n"
                               "msgstr[0] \"Datei\"\nmsgstr[1] \"Dateien\"\n";
    const std::string header = "Content-Type: text/plain; charset=UTF-8\n"
                               "Plural-Forms: nplurals=2; plural=n != 1;\n";
    EXPECT_EQ(text_in(bytes_of(po_of(header, {{"t", "text"}}) + plural)), L"text");
    EXPECT_EQ(text_of(L"file"), L"Datei");
    EXPECT_EQ(text_of(L"files"), L"");
}

TEST_F(setbook2_message_catalog_test, a_text_with_a_context_is_not_found_by_its_id)
{
    const std::string entry = "\nmsgctxt \"menu\"\nmsgid \"Open\"\nmsgstr \"Auf\"\n";
    EXPECT_EQ(text_in(bytes_of(po_of({{"t", "text"}}) + entry)), L"text");
    EXPECT_EQ(text_of(L"Open"), L"");
    EXPECT_EQ(text_of(L"menu\x04Open"), L"");
}

TEST_F(setbook2_message_catalog_test, a_file_in_a_declared_charset_is_read)
{
    const struct
    {
        const char* charset;
        std::string bytes;
        std::wstring text;
    } rows[] = {
        {"ISO-8859-2", "\xBE\xB3", L"\u017E\u0142"},
        {"ISO-8859-15", "\xA4\xBD", L"\u20AC\u0153"},
        {"windows-1251", "\xFF\xE6", L"\u044F\u0436"},
        {"KOI8-R", "\xD1\xD6", L"\u044F\u0436"},
        {"EUC-JP", "\xC6\xFC", L"\u65E5"},
        {"GB18030", "\xD6\xD0", L"\u4E2D"},
        {"Shift_JIS", "\x93\xFA", L"\u65E5"},
        {"CP437", "\x81\x82", L"\u00FC\u00E9"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(text_in(in_charset(row.charset, row.bytes)), L"text " + row.text) << row.charset;
        EXPECT_EQ(text_of(L"id " + row.text), L"found") << row.charset;
        EXPECT_EQ(text_of(L"id \u0E01"), L"") << row.charset;
    }
}

TEST_F(setbook2_message_catalog_test, a_text_that_its_charset_does_not_allow_is_missing)
{
    make("de", "deutsch");
    m_catalogs.write("de_AT", "cat", in_charset("EUC-JP", "\xC6\x20"));
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(text_of(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, an_id_with_a_character_that_the_charset_lacks_is_not_found)
{
    EXPECT_EQ(text_in(in_charset("ISO-8859-2", "\xBE")), L"text \u017E");
    EXPECT_EQ(text_of(L"t\u200B"), L"");
    EXPECT_EQ(text_of(L"\u200B"), L"");
}

TEST_F(setbook2_message_catalog_test, a_file_in_an_unknown_charset_is_passed_over)
{
    for (const char* charset : {"CHARSET", "x-unknown", "UTF-99"})
        EXPECT_EQ(text_in(in_charset(charset, "ab")), no_catalog) << charset;
}

TEST_F(setbook2_message_catalog_test, a_file_without_a_declared_charset_is_in_utf_8)
{
    EXPECT_EQ(text_in(bytes_of("msgid \"t\"\nmsgstr \"text\"\n")), L"text");
    EXPECT_EQ(text_in(bytes_of(po_of("Language: de\n", {{"t", "text"}}))), L"text");
}

TEST_F(setbook2_message_catalog_test, files_of_babel_and_polib_are_read)
{
    for (const char* const tool : {"babel", "polib"}) {
        std::filesystem::copy_file(CATALOGS "/" + std::string(tool) + ".mo",
                                   m_catalogs.file("de", "cat"),
                                   std::filesystem::copy_options::overwrite_existing);
        m_catalogs.bind(L"de");
        EXPECT_EQ(text_of(), L"Text \u20AC") << tool;
        EXPECT_EQ(text_of(L"u"), L"anderer") << tool;
        EXPECT_EQ(text_of(L"missing"), L"") << tool;
    }
}

TEST_F(setbook2_message_catalog_test, encoding_names_are_case_insensitive)
{
    EXPECT_EQ(
        text_in(bytes_of(po_of("Content-Type: text/plain; charset=utf-8\n", {{"t", "text"}}))),
        L"text");
}

TEST_F(setbook2_message_catalog_test, a_file_of_either_byte_order_is_read)
{
    const po_entries_t entries = {{"t", "text"}, {"u", "other"}};
    for (const char* order : {"little", "big"}) {
        EXPECT_EQ(text_in(bytes_of(po_of(entries), {std::string("--endianness=") + order})),
                  L"text")
            << order;
        EXPECT_EQ(text_of(L"u"), L"other") << order;
        EXPECT_EQ(text_of(L"v"), L"") << order;
    }
}

TEST_F(setbook2_message_catalog_test, a_damaged_file_falls_back_to_the_next_locale)
{
    make("de", "deutsch");
    m_catalogs.write("de_AT", "cat", "no catalog");
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(text_of(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, numbers_look_as_in_the_locale_after_a_damaged_file)
{
    make("de", "{n, number}");
    m_catalogs.write("de_AT", "cat", "no catalog");
    m_catalogs.bind(L"de_AT");
    EXPECT_EQ(number_of(L"12345.5"), L"12.345,5");
}

TEST_F(setbook2_message_catalog_test, a_damaged_file_that_is_repaired_is_found)
{
    EXPECT_EQ(text_in("no catalog"), no_catalog);
    make("de", "deutsch");
    EXPECT_EQ(text_after_a_while(), L"deutsch");
}

TEST_F(setbook2_message_catalog_test, nothing_is_printed)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    text_in("no catalog");
    text_of(L"t", L"missing");
    bindCatalogDirectory(L"", L"");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// ---- threads

TEST_F(setbook2_message_catalog_test, catalogs_and_messages_can_be_used_by_all_threads)
{
    for (const char* name : {"0", "1", "2"})
        m_catalogs.make("de", name, po_of({{"t", name}, {"u", "{n} \xE2\x82\xAC"}}));
    m_catalogs.add(L"own", fixed(L"own"));
    m_catalogs.bind(L"de_AT");
    run_threads(8, [](int thread) {
        for (int i = 0; i < 200; ++i) {
            const std::wstring name = std::to_wstring((thread + i) % 3);
            EXPECT_EQ(text_of(L"t", name), name);
            EXPECT_EQ(text_of(L"u", name), L"{n} " + units({0x20AC}));
            EXPECT_EQ(text_of(L"t", L"own"), L"own");
            EXPECT_EQ(text_of(L"t", L"missing"), no_catalog);
        }
    });
}

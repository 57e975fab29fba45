// Configuration, titles and texts while memory runs out.

#include "catalog_support.h"
#include "failing_allocations.h"
#include "support.h"

#include <velmoext1/config_reader.h>
#include <velmoext1/extended_message.h>

#include <setbook2/message_catalog.h>

#include <rova/strings.h>

#include <memory>

using namespace velmoext_1_4_8;

namespace
{

using ROVA_2_18::strings::utf16_to_utf8;

const std::string configuration =
    "<?xml version='1.0' encoding='ISO-8859-1'?>\n<bag><!-- about it -->"
    "<message_type id='another type'/>"
    "<message_type id='t' prefix='a prefix of some length'>"
    "<title_msgid>the title&apos;s id</title_msgid>"
    "<p>a value of some length with an \xE9</p></message_type></bag>";

const std::wstring catalog_name = L"a prefix of some length.src";

const std::string catalog =
    po_of({{"the title's id", "Title of {a} and {b}"},
           {"t", "{n, plural, one {# file} other {# files}} of {a}, named {b}, in {n, number}"}});

// The files that each attempt reads again. Created once.
class files_t
{
public:
    files_t()
    {
        m_folder.write("src.xml", configuration);
        m_catalogs.make("en", utf16_to_utf8(catalog_name), catalog);
        // Creates the host's static catalogs, so that they are destroyed after these.
        make_reader();
    }

    boost::shared_ptr<config_reader_t> make_reader() const
    {
        m_catalogs.bind(L"en");
        // On allocation failure the standard library forgets a facet that it installs. So the
        // file is read with enough memory; its messages are created when they are requested.
        setbook2::getMessageCatalog(catalog_name);
        const auto reader = config_reader_t::get();
        reader->set_cfg_dir(basekit2::path_t(m_folder.wide_name(".")));
        return reader;
    }

private:
    scratch_folder_t m_folder;
    catalogs_t m_catalogs;
};

const files_t& files()
{
    static const files_t all;
    return all;
}

boost::shared_ptr<velmo_ex_t> make_ex()
{
    return velmo_ex_t::get(velmo_ex_t::generate_id(L"allocation_config_test."),
                           L"a prefix of some length");
}

message_ptr_t make_source_message()
{
    const message_ptr_t message = make_message(make_content(
        {}, {{L"a", L"the first one, of some length"}, {L"b", L"the other"}, {L"n", L"3"}}));
    message->set_type(L"t");
    message->set_source(L"src");
    return message;
}

// ---- the operations, each ready to run

// If the first call returns nothing because memory ran out, a second one must succeed: the failure
// must not be cached.
template <typename Call>
attempt_t attempt_with_retry(const Call& call)
{
    const auto result = std::make_shared<std::wstring>();
    return {[=] { *result = call(); },
            [=]() -> std::string {
                if (!result->empty())
                    return utf16_to_utf8(*result);
                const std::wstring next = call();
                return next.empty() ? "nothing from the second call either" : "";
            }};
}

attempt_t read_property()
{
    const auto reader = files().make_reader();
    const auto ex = make_ex();
    const message_ptr_t message = make_source_message();
    return attempt_with_retry([=] { return reader->read_property(ex, message, L"p"); });
}

std::function<attempt_t()> get(std::wstring (extended_message_t::*get_one)())
{
    return [=]() -> attempt_t {
        const auto reader = files().make_reader();
        const auto message = std::make_shared<extended_message_t>(make_ex(), make_source_message());
        return attempt_with_retry([=, owned = reader] { return (*message.*get_one)(); });
    };
}

// ---- the table

const std::vector<operation_t> operations = {
    {"read_property",
     {memory_t::cxx, memory_t::libxml2},
     read_property,
     "a value of some length with an \xC3\xA9"},
    {"get_title",
     {memory_t::cxx, memory_t::libxml2, memory_t::icu},
     get(&extended_message_t::get_title),
     "Title of the first one, of some length and the other"},
    // No failing allocations in ICU: if it runs out of memory in number formatting, it crashes or
    // silently uses other rules.
    {"get_text",
     {memory_t::cxx},
     get(&extended_message_t::get_text),
     "3 files of the first one, of some length, named the other, in 3"},
};

} // namespace

TEST_P(allocation_test, a_failed_allocation_never_gives_a_wrong_result)
{
    fail_each_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(configuration, allocation_test, testing::ValuesIn(cases_of(operations)),
                         name_of_case);

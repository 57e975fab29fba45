// Title and text of messages whose catalog was read before.
//
// "velmoext1" requests them of existing extended messages, again. "velmoext1_first" creates an
// extended message each time, as for a message that is shown once. "velmoext1_bare_name" does the
// same with a prefix that has no catalog, so that the catalog of the source's bare name is used.

#include "runner.h"
#include "scratch_folder.h"

#include <velmoext1/config_reader.h>
#include <velmoext1/extended_message.h>

#include <rova/strings.h>
#include <setbook2/message_catalog.h>

#include <boost/container/static_vector.hpp>

#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/strenum.h>

#include <iterator>
#include <map>
#include <memory>

namespace
{

using bench::message_ptr_t;
using bench::workload_t;
using ROVA_2_18::strings::utf8_to_utf16;
using velmoext_1_4_8::config_reader_t;
using velmoext_1_4_8::extended_message_t;
using velmoext_1_4_8::velmo_ex_t;

typedef std::wstring (extended_message_t::*part_t)();
typedef boost::shared_ptr<velmo_ex_t> ex_ptr_t;

// Only the known prefix has its own catalog.
const wchar_t qualified[] = L"console.bench";
const wchar_t known_prefix[] = L"console";
const wchar_t other_prefix[] = L"window";

const char configuration[] =
    "<bag>\n"
    "  <message_type id='file_large' title_msgid='title_file'/>\n"
    "  <message_type id='file_unreadable' title_msgid='title_file'/>\n"
    "  <message_type id='transfer_finished' title_msgid='title_transfer'/>\n"
    "  <message_type id='host_silent' title_msgid='title_host'/>\n"
    "</bag>\n";

// Keeps the process's reader, and with it the files that were read.
class configuration_t
{
public:
    configuration_t()
    {
        m_folder.write(bench::tool + std::string(".xml"), configuration);
        m_reader->set_cfg_dir(m_folder.wide_name(""));
    }

private:
    scratch_folder_t m_folder;
    boost::shared_ptr<config_reader_t> m_reader = config_reader_t::get();
};

icu::UnicodeString wide_to_unicode(const std::wstring& text)
{
    const auto length = static_cast<std::int32_t>(text.size());
    icu::UnicodeString result;
    char16_t* const units = result.getBuffer(length);
    for (std::size_t i = 0; i < text.size(); ++i)
        units[i] = static_cast<char16_t>(text[i]);
    result.releaseBuffer(length);
    return result;
}

std::wstring unicode_to_wide(const icu::UnicodeString& text)
{
    const char16_t* const units = text.getBuffer();
    return std::wstring(units, units + text.length());
}

// A parsed pattern with its argument names.
class bare_format_t
{
public:
    explicit bare_format_t(const std::wstring& pattern)
        : m_format(wide_to_unicode(pattern), icu::Locale("en"), m_status)
    {
        const std::unique_ptr<icu::StringEnumeration> names(m_format.getFormatNames(m_status));
        while (const icu::UnicodeString* const name = names->snext(m_status))
            m_names.push_back(*name);
        bench::require(U_SUCCESS(m_status) && m_names.size() <= max_arguments, "no such pattern");
    }

    std::vector<std::wstring> names() const
    {
        std::vector<std::wstring> names;
        std::transform(m_names.begin(), m_names.end(), std::back_inserter(names), unicode_to_wide);
        return names;
    }

    std::wstring format(const std::vector<std::wstring>& texts) const
    {
        boost::container::static_vector<icu::Formattable, max_arguments> values;
        for (const std::wstring& text : texts)
            values.emplace_back(wide_to_unicode(text));
        icu::UnicodeString result;
        UErrorCode status = U_ZERO_ERROR;
        m_format.format(m_names.data(), values.data(), static_cast<std::int32_t>(texts.size()),
                        result, status);
        return unicode_to_wide(result);
    }

private:
    static const std::size_t max_arguments = 6;

    UErrorCode m_status = U_ZERO_ERROR;
    icu::MessageFormat m_format;
    std::vector<icu::UnicodeString> m_names;
};

struct bare_text_t
{
    std::shared_ptr<const bare_format_t> format;
    std::vector<std::wstring> values;
};

// Returns the pattern: a missing argument keeps its placeholder, and all arguments are missing.
std::wstring pattern_of(const std::wstring& id)
{
    return setbook2::getMessageCatalog(qualified)->message(id).as_ustring({});
}

std::vector<bare_text_t> make_bare_texts(const workload_t& workload, part_t part)
{
    const configuration_t reader;
    const ex_ptr_t ex = velmo_ex_t::get(L"floor", known_prefix);
    std::map<std::wstring, std::shared_ptr<const bare_format_t>> formats;
    std::vector<bare_text_t> texts;
    for (const message_ptr_t& message : workload.messages()) {
        const bool is_title = part == &extended_message_t::get_title;
        const std::wstring id = is_title
                                    ? extended_message_t(ex, message).get_cfg_prop(L"title_msgid")
                                    : message->get_type();
        auto& format = formats[id];
        if (!format)
            format = std::make_shared<const bare_format_t>(pattern_of(id));
        texts.push_back({format, {}});
        for (const std::wstring& name : format->names())
            texts.back().values.push_back(message->get_content().args.at(name));
    }
    return texts;
}

bench::candidate_t floor(const workload_t& workload, part_t part)
{
    return {"floor", [&workload, part](std::size_t) -> bench::work_t {
                const auto texts =
                    std::make_shared<std::vector<bare_text_t>>(make_bare_texts(workload, part));
                return [texts](std::size_t count) {
                    std::size_t size = 0;
                    for (std::size_t i = 0; i < count; ++i)
                        size += (*texts)[i].format->format((*texts)[i].values).size();
                    return size;
                };
            }};
}

bench::candidate_t velmoext1_first(const workload_t& workload, part_t part, const std::string& name,
                                   const wchar_t* prefix)
{
    return {name, [&workload, part, prefix](std::size_t) -> bench::work_t {
                const auto reader = std::make_shared<configuration_t>();
                const ex_ptr_t ex = velmo_ex_t::get(prefix, prefix);
                const auto compose = [ex, part](const message_ptr_t& message) {
                    return (extended_message_t(ex, message).*part)();
                };
                // Loads the catalog and the configuration.
                for (std::size_t i = 0; i < std::min<std::size_t>(workload.size(), 4); ++i)
                    bench::require(!compose(workload.messages()[i]).empty(), "no text");
                return [&workload, reader, compose](std::size_t count) {
                    std::size_t size = 0;
                    for (std::size_t i = 0; i < count; ++i)
                        size += compose(workload.messages()[i]).size();
                    return size;
                };
            }};
}

bench::candidate_t velmoext1(const workload_t& workload, part_t part)
{
    return {"velmoext1", [&workload, part](std::size_t all) -> bench::work_t {
                const configuration_t reader;
                const ex_ptr_t ex = velmo_ex_t::get(known_prefix, known_prefix);
                const auto shown = std::make_shared<std::vector<extended_message_t>>();
                shown->reserve(all); // a copy would be at another position in the heap
                for (std::size_t i = 0; i < all; ++i) {
                    shown->emplace_back(ex, workload.messages()[i]);
                    (shown->back().*part)();
                }
                return [shown, part](std::size_t count) {
                    std::size_t size = 0;
                    for (std::size_t i = 0; i < count; ++i)
                        size += ((*shown)[i].*part)().size();
                    return size;
                };
            }};
}

bench::subject_t make_subject(const std::string& name, const workload_t& workload, part_t part)
{
    // No title and no text is shorter than this one.
    const auto min_output = [](std::size_t count) {
        return count * std::string("Host beta").size();
    };
    return {name,
            {floor(workload, part),
             velmoext1_first(workload, part, "velmoext1_first", known_prefix),
             velmoext1(workload, part),
             velmoext1_first(workload, part, "velmoext1_bare_name", other_prefix)},
            min_output,
            8};
}

std::vector<bench::subject_t> make_subjects(const workload_t& workload)
{
    bench::require(setbook2::bindCatalogDirectory(utf8_to_utf16(LOCALE_DIRECTORY), L"en") &&
                       setbook2::getMessageCatalog(qualified),
                   "no catalog is in " LOCALE_DIRECTORY);
    return {make_subject("title", workload, &extended_message_t::get_title),
            make_subject("text", workload, &extended_message_t::get_text)};
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}

// Writes a page of generated messages to standard output: make_page sample|hostile|large|plain
#include "html_page.h"
#include "html_report.h"
#include "presenter.h"

#include <velmoext1/message.h>
#include <velmoext1/readable_text.h>

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>

namespace
{

using namespace velmolog;
using velmoext_1_4_8::message_t;

const char log_name[] = "/var/log/nightly/audit.xml";

/// Creates the messages of one log, at positions as in a real one.
class generator_t
{
public:
    explicit generator_t(html_report_t& report) : m_report(report) {}

    void add(message_t::severity_t severity, const std::wstring& source, const std::wstring& type,
             const message_t::message_content_t& content)
    {
        const auto message = boost::make_shared<message_t>();
        message->set_severity(severity);
        message->set_type(type);
        message->set_content(content);
        if (!source.empty())
            message->set_source(source);
        m_report.add({m_log, m_position, message, "", ""});
        m_position.offset += 240;
        m_position.line += 9;
    }

    void set_log(const std::string& log)
    {
        m_log = log;
        m_position = {73, 4};
    }

private:
    html_report_t& m_report;
    std::string m_log = log_name;
    velmoext_1_4_8::log_reader_t::position_t m_position = {73, 4};
};

std::wstring number(std::size_t value)
{
    return std::to_wstring(value);
}

/// Adds message number i of a varied log.
void add_message(generator_t& generator, std::size_t i)
{
    const std::wstring path = L"/srv/archive/" + number(i * 7919 % 100003) + L"/report.txt";
    const std::wstring time = L"2026-11-21T14:" + number(10 + i / 60 % 50) + L":07Z";
    if (i % 97 == 5)
        generator.add(message_t::critical, L"disk", L"disk_full", {{{L"path", path}}, {}, {}, 1});
    else if (i % 23 == 3)
        generator.add(message_t::error, L"net.proxy", L"connection_lost",
                      {{{L"host", L"mirror" + number(i % 12)}, {L"port", L"8080"}},
                       {},
                       {{L"timestamp", time}},
                       1});
    else if (i % 7 == 2)
        generator.add(
            message_t::warning, L"audit", L"file_large",
            {{{L"path", path}, {L"size", number(i * 4096)}}, {}, {{L"timestamp", time}}, 1});
    else if (i % 11 == 1)
        generator.add(message_t::none, L"", L"trace" + number(i % 40), {});
    else
        generator.add(message_t::info, L"audit", L"file_scanned",
                      {{{L"path", path}, {L"seconds", L"0." + number(i % 90)}}, {}, {}, 1});
}

void add_messages(generator_t& generator, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (i == count / 2)
            generator.set_log("/var/log/nightly/second.xml");
        add_message(generator, i);
    }
}

/// Adds texts that could end an element, begin one, reverse a line, hide, or be malformed.
void add_hostile(generator_t& generator)
{
    const std::wstring texts[] = {
        L"</script><script>document.title='run'</script>",
        L"<img src=x onerror=\"document.title='run'\">",
        L"<!-- <script> ]]> --!> </style></bdi></template>",
        L"&lt;b&gt; &amp; \\u003c \\\" \\",
        L"abc\u202Etxt.exe\u202C \u2066\u2069\u200B\uFEFF",
        std::wstring(L"zero\0end", 8),
        L"high \xD83D low \xDE00 pair \xD83D\xDE00",
        L"line one\nline two\r\n\u2028three\x1B[31m\x7F\u0085",
        L"\x7F\x61\x7F \x7F~\x7F \x7F\x1",
        L"javascript:document.title='run'",
        L"__proto__",
        L"{{constructor}} ${alert(1)} %s @DATA@ @SCRIPT@",
        std::wstring(100000, L'x'),
    };
    for (const std::wstring& text : texts)
        generator.add(message_t::warning, text, text,
                      {{{text, text}, {L"", text}}, {{L"note", text}}, {{text, text}}, 1});
    generator.add(message_t::none, L"", L"", {});
}

/// Presents messages in two languages without catalogs.
class translator_t
{
public:
    void select(const std::string& language) { m_language = language; }

    texts_t present(const entry_t& entry) const
    {
        const std::string plain =
            ROVA_2_18::strings::utf16_to_utf8(velmoext_1_4_8::plain_text(*entry.message));
        const bool is_large = entry.message->get_type() == L"file_large";
        if (entry.message->get_type() == L"disk_full")
            return {"", m_language.empty() ? plain : "No space left."};
        if (m_language == "de")
            return {is_large ? "Größe" : "", "Übersetzt: " + plain};
        if (m_language == "ar")
            return {is_large ? "حجم" : "", "رسالة " + plain};
        return {is_large ? "Size" : "", is_large ? "Too large: " + plain : plain};
    }

private:
    std::string m_language;
};

void write_page(const std::vector<std::string>& languages, const std::string& title,
                const std::function<void(generator_t&)>& add)
{
    translator_t translator;
    html_page_t page(std::cout, languages, title);
    if (languages.size() > 1)
        page.set_first_language(1);
    html_report_t report(
        page, languages, [&](const std::string& language) { translator.select(language); },
        [&](const entry_t& entry) { return translator.present(entry); });
    generator_t generator(report);
    add(generator);
    report.finish();
}

bool write_kind(const std::string& kind)
{
    const std::vector<std::string> languages = {"de", "en", "ar"};
    if (kind == "sample")
        write_page(languages, "audit.xml", [](generator_t& to) { add_messages(to, 1000); });
    else if (kind == "plain")
        write_page({}, "audit.xml", [](generator_t& to) { add_messages(to, 1000); });
    else if (kind == "large")
        write_page({"de", "en"}, "audit.xml", [](generator_t& to) { add_messages(to, 100000); });
    else if (kind == "huge")
        write_page({}, "audit.xml", [](generator_t& to) { add_messages(to, 1000000); });
    else if (kind == "hostile")
        write_page({"en", "de", "</select>"}, "</title><script>document.title='run'</script>\xFF",
                   add_hostile);
    else if (kind == "empty")
        write_page({}, "empty.xml", [](generator_t&) {});
    else
        return false;
    return true;
}

} // namespace

int main(int count, char** arguments)
{
    const bool is_known = count == 2 && write_kind(arguments[1]);
    std::cout.flush();
    return is_known && std::cout ? EXIT_SUCCESS : EXIT_FAILURE;
}

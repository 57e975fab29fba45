#include "random_documents.h"

#include "random_messages.h"
#include "writer_oracle.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

using velmoext_1_4_8::message_t;

namespace
{

typedef std::array<const char*, 12> words_t;

const std::array<const char*, 14> encodings = {
    "UTF-8",     "UTF-8", "UTF-8",  "utf-8", "ISO-8859-1", "windows-1252", "US-ASCII",
    "Shift_JIS", "GBK",   "UTF-16", "UTF-7", "x-unknown",  "ISO-8859-15",  "KOI8-R"};

const std::array<const char*, 14> fragments = {
    "<",    ">",      "&",     "]]>", "<!--",           "-->", "<![CDATA[", "&u;",
    "&#0;", "</msg>", "<msg>", "\"",  "<type>x</type>", "\x01"};

std::string repeated(const std::string& text, std::size_t count)
{
    std::string result;
    for (; count != 0; --count)
        result += text;
    return result;
}

// Writes one document, part by part.
class document_t
{
public:
    document_t(random_source_t& random, bool is_log) : m_random(random), m_is_log(is_log) {}

    std::string make()
    {
        if (m_random.one_in(30))
            add("\xEF\xBB\xBF");
        if (m_random.one_in(200))
            add("\xEF\xBB\xBF");
        if (!m_random.one_in(3))
            add_declaration();
        add_misc();
        if (m_random.one_in(m_is_log ? 8 : 3))
            add_document_type();
        add_misc();
        if (m_is_log)
            add_log();
        else
            add_root();
        add_misc();
        if (m_random.one_in(30))
            add_element("msg", 1);
        return std::move(m_text);
    }

private:
    void add(const std::string& text) { m_text += text; }

    void add_space()
    {
        static const words_t spaces = {"",   "",  "",     "\n",   "\n ", " ",
                                       "\t", " ", "\r\n", "\n  ", "\r",  "    "};
        add(m_random.pick(spaces));
    }

    void add_some_space()
    {
        static const words_t spaces = {" ", " ",  " ",  " ",  " ",    " ",
                                       " ", "\n", "\t", "  ", "\r\n", " \n "};
        add(m_random.pick(spaces));
    }

    std::string quoted(std::string text)
    {
        const char quote = m_random.one_in(3) ? '\'' : '"';
        text.erase(std::remove(text.begin(), text.end(), quote), text.end());
        return quote + text + quote;
    }

    // ---- before and after the root

    void add_declaration()
    {
        add(m_random.one_in(40) ? "<?xml version='1.1'" : "<?xml version=\"1.0\"");
        if (!m_random.one_in(3)) {
            add_some_space();
            const bool is_usual = m_is_log && !m_random.one_in(6);
            add("encoding=" + quoted(is_usual ? "UTF-8" : m_random.pick(encodings)));
        }
        if (m_random.one_in(6))
            add(m_random.one_in(2) ? " standalone='yes'" : " standalone=\"no\"");
        add("?>");
        add_space();
    }

    void add_misc()
    {
        while (m_random.one_in(4)) {
            if (m_random.one_in(2))
                add_comment();
            else
                add_instruction();
            add_space();
        }
    }

    std::string remark()
    {
        static const words_t remarks = {"",
                                        " c ",
                                        "<msg>",
                                        " a='b' ",
                                        "<!DOCTYPE x [%a;]>",
                                        "]]>",
                                        "&e;",
                                        "<row k='v' l=\"w\"",
                                        "- ",
                                        "\xC3\xA9",
                                        "]>",
                                        "it's"};
        return repeated(m_random.pick(remarks), m_random.one_in(50) ? 300 : 1);
    }

    void add_comment() { add("<!--" + remark() + "-->"); }

    void add_instruction()
    {
        static const words_t targets = {"p",        "p",   "xml-s", "pi", "x", "p:q",
                                        "\xC3\xA9", "php", "p",     "a",  "b", "msg"};
        add(std::string("<?") + m_random.pick(targets) + " " + remark() + "?>");
    }

    // ---- the document type

    void add_document_type()
    {
        add("<!DOCTYPE ");
        add(m_is_log ? "log" : "msg");
        if (m_random.one_in(6))
            add(m_random.one_in(2) ? " SYSTEM 'nowhere.dtd'" : R"( PUBLIC "p" "nowhere.dtd")");
        if (!m_random.one_in(6)) {
            add_space();
            add("[");
            for (std::size_t count = m_random.below(6); count != 0; --count) {
                add_space();
                add_markup_declaration();
            }
            add_space();
            add("]");
        }
        add_space();
        add(">");
        add_space();
    }

    void add_markup_declaration()
    {
        switch (m_random.below(10)) {
        case 0:
            return add_comment();
        case 1:
            return add_instruction();
        case 2:
            return add("<!ELEMENT msg ANY>");
        case 3:
            return add(m_random.one_in(3) ? "<!NOTATION n SYSTEM 'x'>"
                                          : "<!ELEMENT e (#PCDATA|a)*>");
        case 4:
            if (m_random.one_in(4))
                add("%q;");
            return add("<!ENTITY % q ''>");
        case 5:
        case 6:
            return add_attribute_list();
        default:
            add_entity();
        }
    }

    void add_attribute_list()
    {
        static const words_t elements = {"arg", "arg", "arg",  "msg", "msg",   "e",
                                         "e",   "log", "type", "p:e", "p:arg", "severity"};
        static const words_t names = {"name", "name",  "name",    "a",        "b",      "tool",
                                      "p:a",  "xmlns", "xmlns:p", "xml:lang", "source", "p:name"};
        static const words_t defaults = {
            "CDATA 'd'",       "CDATA \"d &lt; e\"", "CDATA ''",          "CDATA #IMPLIED",
            "CDATA #REQUIRED", "CDATA #FIXED 'f'",   "(x|y) 'x'",         "NMTOKEN 'n'",
            "ID #IMPLIED",     "CDATA '  d  d '",    "NMTOKENS ' n  m '", "CDATA '\xC3\xA9'"};
        add(std::string("<!ATTLIST ") + m_random.pick(elements));
        for (std::size_t count = m_random.between(1, 3); count != 0; --count)
            add(std::string(" ") + m_random.pick(names) + " " + m_random.pick(defaults));
        add(">");
    }

    void add_entity()
    {
        static const words_t values = {"x",
                                       "",
                                       "a &lt; b",
                                       "<b>y</b>z",
                                       "&#38;amp;",
                                       "\xC3\xA9 ",
                                       "&amp;",
                                       "]>",
                                       "<p:e>t</p:e>",
                                       "a\r\nb",
                                       "x<!-- c --><?p q?>y",
                                       "<arg name='i'>j</arg>"};
        std::string value = m_random.pick(values);
        if (m_entities != 0 && m_random.one_in(3))
            value += reference();
        if (m_random.one_in(50))
            value = repeated(value, 200);
        const std::string name = "e" + std::to_string(m_entities);
        if (m_random.one_in(15)) {
            add("<!ENTITY " + name + " SYSTEM 'nowhere.ent'>");
        } else {
            const char* const quote = value.find('\'') == std::string::npos ? "'" : "\"";
            add("<!ENTITY " + name + " " + quote + value + quote + ">");
        }
        ++m_entities;
    }

    std::string reference() { return "&e" + std::to_string(m_random.below(m_entities)) + ";"; }

    // ---- elements

    void add_root()
    {
        switch (m_random.below(20)) {
        case 0:
            return add_element("other", 2);
        case 1:
            return add_element("log", 3);
        case 2:
            return add_element("p:msg", 2);
        default:
            add_element("msg", 2);
        }
    }

    void add_log()
    {
        const std::string root = m_random.one_in(15) ? "other" : "log";
        add("<" + root);
        if (m_random.one_in(10))
            add_attributes();
        add(">");
        for (std::size_t count = m_random.below(6); count != 0; --count) {
            add_log_space();
            add_log_part();
        }
        add_log_space();
        if (!m_random.one_in(12))
            add("</" + root + ">");
        add_space();
        if (m_random.one_in(40))
            add("<log>");
    }

    void add_log_space()
    {
        if (m_random.one_in(12))
            add_content(0);
        else
            add_space();
    }

    void add_log_part()
    {
        switch (m_random.below(14)) {
        case 0:
            return add_comment();
        case 1:
            return add_instruction();
        case 2:
            return add_child(1);
        case 3:
            return add_element(m_random.one_in(2) ? "log" : "list", 3);
        case 4:
        case 5:
        case 6:
        case 7:
            return add_written_message();
        default:
            add_element("msg", 2);
        }
    }

    void add_written_message()
    {
        const std::string log = written_log({random_message(m_random)});
        const std::size_t begin = log.find("\n <msg");
        add(log.substr(begin, log.rfind("</log>") - begin));
    }

    void add_element(const std::string& name, int depth)
    {
        add("<" + name);
        add_attributes();
        add_space();
        if (m_random.one_in(12))
            return add("/>");
        add(">");
        for (std::size_t count = m_random.below(7); count != 0; --count) {
            add_space();
            add_child(depth);
        }
        add_space();
        add("</" + name);
        add_space();
        add(">");
    }

    void add_child(int depth)
    {
        static const words_t names = {"arg",      "arg",      "arg", "arg", "type", "type",
                                      "severity", "severity", "e",   "e",   "p:e",  "timestamp"};
        static const words_t rare_names = {"msg",   "log", "p:arg", "p:type", "\xC3\xA9", "f",
                                           "a:b:c", "Arg", "name",  "xml:e",  "q:e",      "a-1"};
        const std::string name =
            m_random.one_in(10) ? m_random.pick(rare_names) : m_random.pick(names);
        add("<" + name);
        if (name == "arg" && !m_random.one_in(8)) {
            add_some_space();
            add("name=" + quoted(m_random.one_in(10) ? value() : arg_name()));
        } else if (m_random.one_in(6)) {
            add_attributes();
        }
        if (m_random.one_in(10))
            return add("/>");
        add(">");
        if (name == "severity" && !m_random.one_in(4))
            add(severity());
        else
            add_content(depth);
        add("</" + name + ">");
    }

    std::string arg_name() { return std::string(1, static_cast<char>('a' + m_random.below(5))); }

    std::string severity()
    {
        static const words_t texts = {"INFO", "WARNING", "ERROR", "CRITICAL",
                                      "info", "Error",   "0",     "1",
                                      "2",    " ERROR",  "3",     "war\xC3\xAFning"};
        return m_random.pick(texts);
    }

    void add_attributes()
    {
        static const words_t names = {"a", "b",        "tool",   "source", "p:a",     "q:a",
                                      "c", "xml:lang", "xml:id", "xmlns",  "xmlns:p", "\xC3\xA9"};
        std::set<std::string> used;
        for (std::size_t count = m_random.below(4); count != 0; --count) {
            const std::string name = m_random.pick(names);
            if (!used.insert(name).second && !m_random.one_in(20))
                continue;
            add_some_space();
            add(name);
            if (m_random.one_in(10))
                add_some_space();
            add("=");
            if (m_random.one_in(10))
                add_some_space();
            add(quoted(value()));
        }
    }

    std::string value()
    {
        static const words_t values = {
            "",           "v",           "u",           "a b",   "a &amp; b",  "&lt;",
            "\xC3\xA9 x", "&#233;&#10;", "a\n\tb\r\nc", "x > y", "http://a/b", "&quot;&apos;"};
        std::string result = m_random.pick(values);
        if (m_entities != 0 && m_random.one_in(4))
            result += reference();
        if (m_random.one_in(60))
            result += repeated("\xE4\xB8\xAD", m_random.between(100, 500));
        return result;
    }

    void add_content(int depth)
    {
        for (std::size_t count = m_random.below(4); count != 0; --count)
            add_content_part(depth);
    }

    void add_content_part(int depth)
    {
        switch (m_random.below(14)) {
        case 0:
            return add("<![CDATA[" + section() + "]]>");
        case 1:
            return add_comment();
        case 2:
            return add_instruction();
        case 3:
            if (depth > 0)
                add_child(depth - 1);
            return;
        case 4:
            if (m_entities != 0)
                add(reference());
            return;
        case 5:
        case 6:
            return add(escape());
        case 7:
            return add(long_run());
        default:
            add(plain());
        }
    }

    std::string section()
    {
        static const words_t texts = {"",          "x",        "a < b & c",         "]]",
                                      "]",         "<msg>",    "<row k='v'",        "&amp;",
                                      "a\r\nb\rc", "\xC3\xA9", "<!DOCTYPE x %p; ]", "%a;"};
        return m_random.pick(texts);
    }

    std::string escape()
    {
        static const words_t escapes = {"&amp;",    "&lt;",  "&gt;",      "&quot;",
                                        "&apos;",   "&#65;", "&#13;",     "&#xE9;",
                                        "&#x4E2D;", "&#10;", "&#x1F600;", "&#38;"};
        return m_random.pick(escapes);
    }

    std::string long_run()
    {
        static const words_t characters = {
            "\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "x",        "\xC3\xA9 ",    "x\xC3\xA9",
            "\xD0\xB6", "ab ",          "\xE4\xB8\xADx",    "\xC2\x85", "\r\n\xC3\xA9", "&#233;"};
        const std::string unit = m_random.pick(characters);
        return repeated(unit, m_random.one_in(3) ? m_random.between(90, 450) : m_random.below(30));
    }

    std::string plain()
    {
        static const words_t texts = {
            "text", " ",     "a b",  "\n",    "\r\n",       "50%off; really]",
            "]",    "a > b", "it's", "\"q\"", "\xC3\xA4 b", "plain \xC3\xA4"};
        return m_random.pick(texts);
    }

    random_source_t& m_random;
    bool m_is_log;
    std::size_t m_entities = 0;
    std::string m_text;
};

// ---- damage

void damage(random_source_t& random, std::string& text)
{
    if (text.empty())
        return;
    const std::size_t at = random.below(text.size());
    switch (random.below(6)) {
    case 0:
        text.resize(at);
        return;
    case 1:
        text.erase(at, 1);
        return;
    case 2:
        text.insert(at, text.substr(random.below(text.size()), random.below(60)));
        return;
    case 3:
        text[at] = static_cast<char>(random.below(256));
        return;
    default:
        text.insert(at, random.pick(fragments));
    }
}

std::string damaged(random_source_t& random, std::string text)
{
    if (random.one_in(3))
        for (std::size_t count = random.between(1, 3); count != 0; --count)
            damage(random, text);
    return text;
}

std::vector<message_t> random_messages(random_source_t& random)
{
    std::vector<message_t> messages;
    for (std::size_t count = random.below(5); count != 0; --count)
        messages.push_back(random_message(random));
    return messages;
}

} // namespace

std::string random_document(random_source_t& random)
{
    if (random.one_in(4))
        return damaged(random, written_document(random_message(random)));
    return damaged(random, document_t(random, false).make());
}

std::string random_log(random_source_t& random)
{
    if (random.one_in(4))
        return damaged(random, written_log(random_messages(random)));
    return damaged(random, document_t(random, true).make());
}

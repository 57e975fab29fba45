#include "options.h"

#include "log.h"
#include "quoted.h"
#include "severity_name.h"

#include <velmoext1/version.h>

#include <charconv>
#include <cstddef>
#include <limits>
#include <optional>
#include <system_error>

namespace audit
{
namespace
{

velmoext::message_t::severity_t parse_severity(const std::string& name)
{
    const auto severity = named_severity(name);
    if (!severity)
        throw usage_error_t("--severity takes info, warning, error or critical, not " +
                            quoted(name));
    return *severity;
}

std::optional<unsigned> parse_suffix(const std::string& suffix)
{
    if (suffix.empty())
        return 0U;
    if (suffix == "K" || suffix == "k")
        return 10U;
    if (suffix == "M" || suffix == "m")
        return 20U;
    return suffix == "G" || suffix == "g" ? std::make_optional(30U) : std::nullopt;
}

std::uint64_t parse_size(const std::string& text)
{
    const char* const end = text.data() + text.size();
    std::uint64_t number = 0;
    const std::from_chars_result digits = std::from_chars(text.data(), end, number);
    const std::optional<unsigned> shift = parse_suffix(std::string(digits.ptr, end));
    if (digits.ec == std::errc::invalid_argument || !shift)
        throw usage_error_t("--large takes a number of bytes, as in 512, 64K, 10M or 2G, not " +
                            quoted(text));
    if (digits.ec != std::errc() || number > std::numeric_limits<std::uint64_t>::max() >> *shift)
        throw usage_error_t("--large takes no number as large as " + quoted(text));
    return number << *shift;
}

std::string parse_log(const std::string& option, const std::string& name)
{
    if (!can_name_log(name))
        throw usage_error_t(option + " takes a name in UTF-8, not " + quoted(name));
    return name;
}

/// Parses the arguments once, from left to right.
class parser_t
{
public:
    explicit parser_t(const std::vector<std::string>& arguments)
        : m_next(arguments.begin()), m_end(arguments.end())
    {}

    options_t parse()
    {
        while (m_next != m_end && !is_help_or_version())
            read(*m_next++);
        if (m_options.action == options_t::replay)
            check_replay();
        return m_options;
    }

private:
    bool is_help_or_version() const
    {
        return m_options.action == options_t::help || m_options.action == options_t::version;
    }

    void check_replay() const
    {
        if (m_options.log)
            throw usage_error_t("either --log or --replay");
        if (m_has_directory)
            throw usage_error_t("--replay walks no directory, so not also " +
                                quoted(m_options.directory));
    }

    void read(const std::string& argument)
    {
        if (m_is_past_options || argument.size() < 2 || argument.front() != '-')
            read_directory(argument);
        else if (argument == "--")
            m_is_past_options = true;
        else if (!read_switch(argument))
            read_setting(argument);
    }

    void read_directory(const std::string& argument)
    {
        if (m_has_directory)
            throw usage_error_t("one directory at a time, not also " + quoted(argument));
        m_options.directory = argument;
        m_has_directory = true;
    }

    bool read_switch(const std::string& argument)
    {
        if (argument == "--help")
            m_options.action = options_t::help;
        else if (argument == "--version")
            m_options.action = options_t::version;
        else if (argument == "--progress")
            m_options.progress = true;
        else if (argument == "--plain")
            m_options.plain = true;
        else
            return false;
        return true;
    }

    void read_setting(const std::string& argument)
    {
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (name == "--severity")
            m_options.severity = parse_severity(value_of(argument, equals));
        else if (name == "--large")
            m_options.large = parse_size(value_of(argument, equals));
        else if (name == "--log")
            m_options.log = parse_log(name, value_of(argument, equals));
        else if (name == "--lang")
            m_options.language = value_of(argument, equals);
        else if (name == "--replay")
            read_replay(parse_log(name, value_of(argument, equals)));
        else
            throw usage_error_t("unknown option " + quoted(argument));
    }

    void read_replay(const std::string& name)
    {
        m_options.action = options_t::replay;
        m_options.replayed_log = name;
    }

    std::string value_of(const std::string& argument, std::size_t equals)
    {
        if (equals != std::string::npos)
            return argument.substr(equals + 1);
        if (m_next == m_end)
            throw usage_error_t(argument + " needs a value");
        return *m_next++;
    }

    options_t m_options;
    std::vector<std::string>::const_iterator m_next;
    std::vector<std::string>::const_iterator m_end;
    bool m_is_past_options = false;
    bool m_has_directory = false;
};

} // namespace

options_t parse_options(const std::vector<std::string>& arguments)
{
    return parser_t(arguments).parse();
}

std::string usage_text()
{
    return "Usage: audit [OPTION]... [DIR]\n"
           "       audit [OPTION]... --replay FILE\n"
           "Walks the directory tree DIR (by default " +
           options_t().directory +
           ") and prints a line for\n"
           "each finding.\n"
           "\n"
           "  --severity LEVEL  the least severity that is shown: info, warning (the default),\n"
           "                    error or critical; info shows every file\n"
           "  --large BYTES     report files of BYTES and more, with K, M or G after the number\n"
           "                    for the powers of 1024 (by default 100M)\n"
           "  --log FILE        record all findings into the log FILE, shown or not, after the\n"
           "                    findings of earlier walks; any other FILE is overwritten\n"
           "  --replay FILE     walk nothing, and print the messages of the log FILE\n"
           "  --lang LANG       show the texts in that language, as in de or en_GB, instead of\n"
           "                    that of the environment (LC_ALL, LC_MESSAGES, LANG)\n"
           "  --plain           show the messages as they are, without texts\n"
           "  --progress        show how far the walk is, and counts at its end, even if\n"
           "                    standard error is not a terminal\n"
           "  --help            print this text\n"
           "  --version         print the version\n"
           "  --                end the options: the next argument is DIR\n"
           "\n"
           "A line has the severity, the title and the text of one message, in English if\n"
           "there are no texts in the language. With --plain, and if a message has no text,\n"
           "it has the severity, the type, the source and the named values.\n"
           "In paths, \\xHH stands for a byte that cannot be shown, and \\\\ for a backslash.\n"
           "\n"
           "A replay shows plain ASCII unchanged. A value with &, <, >, \" or a character\n"
           "beyond ASCII is shown changed or in parts.\n"
           "\n"
           "Exit status: 0 the walk or the replay is complete, 1 wrong usage, 2 DIR cannot\n"
           "be read or FILE cannot be recorded into or replayed, 3 standard output cannot be "
           "written,\n"
           "130 the walk was interrupted.\n";
}

std::string version_text()
{
    return "audit " VELMOEXT1_VERSION "\n";
}

} // namespace audit

#include "workload.h"

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <iterator>
#include <map>
#include <random>

namespace bench
{
namespace
{

using ROVA_2_18::strings::utf8_to_utf16;
using velmoext_1_4_8::message_t;

const int worth_recording = 1;
const std::mt19937::result_type seed = 5;

const char* const severities[] = {"INFO", "WARNING", "ERROR", "CRITICAL"};
const char* const reasons[] = {"Permission denied", "No such file or directory",
                               "Input/output error", "Too many levels of symbolic links"};
const char* const folders[] = {"/srv/data/", "/var/lib/archive/", "/home/shared/projects/"};
const char* const hosts[] = {"alpha", "beta.example.org", "gamma-17"};

const char markup[] = " <a href=\"x\"> & more";
const char non_ascii[] = " \u00dcbergr\u00f6\u00dfe \u0416\u0443\u043a";
const char beyond_bmp[] = " \U0001F4C1\U00010348";

class maker_t
{
public:
    plain_message_t make(std::size_t place)
    {
        plain_message_t message = make_shape(place);
        message.severity = pick(severities);
        message.attributes = {{"tool", tool}};
        add_odd_characters(message.args.back().second);
        return message;
    }

private:
    // The names stand in the order of a message's maps.
    plain_message_t make_shape(std::size_t place)
    {
        switch (place % 4) {
        case 0:
            return {"file_large", "", {}, {{"path", path()}, {"size", number()}}, {}};
        case 1:
            return {"file_unreadable", "", {}, {{"error", pick(reasons)}, {"path", path()}}, {}};
        case 2:
            return {"transfer_finished",
                    "",
                    {},
                    {{"bytes", number()},
                     {"from", path()},
                     {"host", pick(hosts)},
                     {"seconds", number()},
                     {"to", path()},
                     {"user", "u" + number()}},
                    {}};
        default:
            return {"host_silent", "", {}, {{"host", pick(hosts)}}, {{"since", number()}}};
        }
    }

    void add_odd_characters(std::string& text)
    {
        const auto chance = m_random() % 100;
        if (chance < 5)
            text += markup;
        else if (chance < 10)
            text += non_ascii;
        if (chance == 9)
            text += beyond_bmp;
    }

    template <std::size_t Count>
    std::string pick(const char* const (&choices)[Count])
    {
        return choices[m_random() % Count];
    }

    std::string number() { return std::to_string(m_random() % 10000000); }
    std::string path() { return pick(folders) + number() + "/file_" + number(); }

    std::mt19937 m_random{seed}; // NOLINT(cert-msc32-c,cert-msc51-cpp): always the same
};

std::map<std::wstring, std::wstring> wide(const texts_t& texts)
{
    std::map<std::wstring, std::wstring> result;
    for (const auto& [name, text] : texts)
        result.emplace(utf8_to_utf16(name), utf8_to_utf16(text));
    return result;
}

void add(const texts_t& texts, std::string& line)
{
    for (const auto& [name, text] : texts)
        line.append(1, ' ').append(name).append(1, '=').append(text);
}

std::size_t size_of(const texts_t& texts)
{
    std::size_t size = 0;
    for (const auto& text : texts)
        size += text.second.size();
    return size;
}

} // namespace

const char* const tool = "bench";

message_ptr make_message(const plain_message_t& plain)
{
    message_t::message_content_t content;
    content.attributes = wide(plain.attributes);
    content.args = wide(plain.args);
    content.elements = wide(plain.elements);
    const auto* const severity =
        std::find(std::begin(severities), std::end(severities), plain.severity);
    auto message = boost::make_shared<message_t>();
    message->set_type(utf8_to_utf16(plain.type));
    message->set_severity(
        static_cast<message_t::severity_t>(severity - std::begin(severities) + message_t::info));
    message->set_flags(worth_recording);
    message->set_content(content);
    return message;
}

workload_t::workload_t(std::size_t size)
{
    maker_t maker;
    m_plain.reserve(size);
    m_messages.reserve(size);
    for (std::size_t place = 0; place < size; ++place) {
        m_plain.push_back(maker.make(place));
        m_messages.push_back(make_message(m_plain.back()));
    }
}

std::vector<std::string> workload_t::lines() const
{
    std::vector<std::string> lines;
    lines.reserve(size());
    for (const plain_message_t& message : m_plain) {
        std::string line = message.type + ' ' + message.severity;
        add(message.attributes, line);
        add(message.args, line);
        add(message.elements, line);
        lines.push_back(std::move(line));
    }
    return lines;
}

std::size_t workload_t::text_size(std::size_t count) const
{
    std::size_t size = 0;
    for (std::size_t place = 0; place < count; ++place) {
        const plain_message_t& message = m_plain[place];
        size += message.type.size() + size_of(message.attributes) + size_of(message.args) +
                size_of(message.elements);
    }
    return size;
}

} // namespace bench

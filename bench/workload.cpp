#include "workload.h"

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <numeric>
#include <random>

namespace bench
{
namespace
{

using ROVA_2_18::strings::utf8_to_utf16;
using velmoext_1_4_8::message_t;

const int worth_recording = 1;

// The content of a message depends only on its number, so that it is the same in each heap.
const std::uint32_t message_seed = 5;
const std::uint32_t other_seed = 1000000007;
const std::mt19937::result_type order_seed = 11;

const char* const severities[] = {"INFO", "WARNING", "ERROR", "CRITICAL"};
const char* const reasons[] = {"Permission denied", "No such file or directory",
                               "Input/output error", "Too many levels of symbolic links"};
const char* const folders[] = {"/srv/data/", "/var/lib/archive/", "/home/shared/projects/"};
const char* const hosts[] = {"alpha", "beta.example.org", "gamma-17"};

const char markup[] = " <a href=\"x\"> & more";
const char non_ascii[] = " \u00dcbergr\u00f6\u00dfe \u0416\u0443\u043a";
const char beyond_bmp[] = " \U0001F4C1\U00010348";

class message_maker_t
{
public:
    explicit message_maker_t(std::uint32_t seed) : m_random(seed) {}

    plain_message_t make(std::size_t index)
    {
        plain_message_t message = make_shape(index);
        message.severity = pick(severities);
        message.attributes = {{"tool", tool}};
        add_odd_characters(message.args.back().second);
        return message;
    }

private:
    // The names are in the order of a message's maps.
    plain_message_t make_shape(std::size_t index)
    {
        switch (index % 4) {
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

    std::minstd_rand m_random; ///< cheap to seed
};

plain_message_t make_plain(std::size_t index, std::uint32_t seed)
{
    const std::uint32_t spread_seeds = 2654435761;
    return message_maker_t((static_cast<std::uint32_t>(index) + seed) * spread_seeds).make(index);
}

std::map<std::wstring, std::wstring> wide(const string_pairs_t& texts)
{
    std::map<std::wstring, std::wstring> result;
    for (const auto& [name, text] : texts)
        result.emplace(utf8_to_utf16(name), utf8_to_utf16(text));
    return result;
}

std::size_t size_of(const string_pairs_t& texts)
{
    std::size_t size = 0;
    for (const auto& text : texts)
        size += text.second.size();
    return size;
}

} // namespace

const char* const tool = "bench";

message_ptr_t make_message(const plain_message_t& plain)
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

workload_t::workload_t(std::size_t size, heap_t heap)
    : m_heap(heap), m_plain(size), m_messages(size)
{
    for (const std::size_t index : creation_order(size)) {
        m_plain[index] = std::make_unique<plain_message_t>(make_plain(index, message_seed));
        m_messages[index] = make_message(*m_plain[index]);
        if (heap == heap_t::spread)
            m_others.push_back(make_message(make_plain(index, other_seed)));
    }
}

std::vector<std::size_t> workload_t::creation_order(std::size_t count) const
{
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), 0);
    if (m_heap == heap_t::spread) {
        std::mt19937 random(order_seed); // NOLINT(cert-msc32-c,cert-msc51-cpp): always the same
        std::shuffle(order.begin(), order.end(), random);
    }
    return order;
}

std::size_t workload_t::text_size(std::size_t count) const
{
    std::size_t size = 0;
    for (std::size_t index = 0; index < count; ++index) {
        const plain_message_t& message = *m_plain[index];
        size += message.type.size() + size_of(message.attributes) + size_of(message.args) +
                size_of(message.elements);
    }
    return size;
}

} // namespace bench

#include "message_key.h"

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>

namespace velmolog
{
namespace
{

using namespace velmoext_1_4_8;
using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;

typedef std::map<std::wstring, std::wstring> string_map_t;

void append_number(std::string& key, std::uint64_t number)
{
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    key.append(bytes, sizeof bytes);
}

// The size before each text keeps apart which texts there are.
void append_text(std::string& key, const std::wstring& text)
{
    const std::string bytes = utf16_to_utf8(text);
    append_number(key, bytes.size());
    key += bytes;
}

void append_texts(std::string& key, const string_map_t& texts)
{
    append_number(key, texts.size());
    for (const auto& [name, text] : texts) {
        append_text(key, name);
        append_text(key, text);
    }
}

class key_reader_t
{
public:
    explicit key_reader_t(const std::string& key) : m_key(key) {}

    std::uint64_t number()
    {
        std::uint64_t number = 0;
        std::memcpy(&number, m_key.data() + m_next, sizeof number);
        m_next += sizeof number;
        return number;
    }

    std::wstring text()
    {
        const std::size_t size = number();
        m_next += size;
        return utf8_to_utf16(m_key.substr(m_next - size, size));
    }

    string_map_t texts()
    {
        string_map_t texts;
        for (std::uint64_t count = number(); count != 0; --count) {
            const std::wstring name = text();
            texts[name] = text();
        }
        return texts;
    }

private:
    const std::string& m_key;
    std::size_t m_next = 0;
};

} // namespace

std::string key_of(const message_t& message)
{
    const auto content = message.get_content();
    std::string key;
    append_number(key, static_cast<std::uint64_t>(message.get_severity()));
    append_text(key, message.get_type());
    append_texts(key, content.args);
    append_texts(key, content.attributes);
    append_texts(key, content.elements);
    return key;
}

boost::shared_ptr<message_t> message_of(const std::string& key)
{
    key_reader_t reader(key);
    auto message = boost::make_shared<message_t>();
    message->set_severity(static_cast<message_t::severity_t>(reader.number()));
    message->set_type(reader.text());
    message_t::message_content_t content;
    content.args = reader.texts();
    content.attributes = reader.texts();
    content.elements = reader.texts();
    message->set_content(content);
    return message;
}

} // namespace velmolog

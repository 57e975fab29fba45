#include "input_text.h"

#include <rova/strings.h>

#include <algorithm>
#include <charconv>

namespace
{

// Returns the number of digits of the escape at this position, 0 if there is none.
std::size_t escape_digits(const std::string& bytes, std::size_t at)
{
    if (bytes[at] != '\\' || at + 1 == bytes.size())
        return 0;
    return bytes[at + 1] == 'u' ? 4 : bytes[at + 1] == 'U' ? 8 : 0;
}

bool read_element(const std::string& bytes, std::size_t at, std::size_t digits, wchar_t& element)
{
    const char* const begin = bytes.data() + at + 2;
    const char* const end = bytes.data() + std::min(bytes.size(), at + 2 + digits);
    std::uint32_t number = 0;
    const auto result = std::from_chars(begin, end, number, 16);
    element = static_cast<wchar_t>(number);
    return result.ptr == begin + digits;
}

} // namespace

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts(1);
    for (const char character : text)
        if (character == separator)
            parts.emplace_back();
        else
            parts.back().push_back(character);
    return parts;
}

std::pair<std::string, std::string> split_once(const std::string& text, char separator)
{
    const std::size_t end = std::min(text.find(separator), text.size());
    return {text.substr(0, end), text.substr(std::min(end + 1, text.size()))};
}

std::wstring to_wide(const std::string& bytes)
{
    std::wstring wide;
    std::string plain;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const std::size_t digits = escape_digits(bytes, at);
        wchar_t element = 0;
        if (digits == 0 || !read_element(bytes, at, digits, element)) {
            plain.push_back(bytes[at]);
            continue;
        }
        wide += ROVA_2_18::strings::utf8_to_utf16(plain);
        wide.push_back(element);
        plain.clear();
        at += 1 + digits;
    }
    return wide + ROVA_2_18::strings::utf8_to_utf16(plain);
}

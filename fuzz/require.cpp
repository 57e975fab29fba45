#include "require.h"

#include <rova/strings.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

namespace
{

using velmoext_1_4_8::message_t;

void print(const std::wstring& text)
{
    std::cerr << '[' << ROVA_2_18::strings::utf16_to_utf8(text) << ']';
}

void print(const char* what, const std::map<std::wstring, std::wstring>& texts)
{
    for (const auto& text : texts) {
        std::cerr << "  " << what << ' ';
        print(text.first);
        print(text.second);
        std::cerr << '\n';
    }
}

void print(const char* what, const message_t& message)
{
    const message_t::message_content_t content = message.get_content();
    std::cerr << what << ":\n  type ";
    print(message.get_type());
    std::cerr << "\n  severity " << message.get_severity() << ", next argument "
              << content.next_arg_number << '\n';
    print("attribute", content.attributes);
    print("argument", content.args);
    print("element", content.elements);
}

} // namespace

void require(bool condition, const char* what)
{
    if (condition)
        return;
    std::cerr << "does not hold: " << what << '\n';
    std::abort();
}

bool is_same(const message_t& left, const message_t& right)
{
    const message_t::message_content_t one = left.get_content();
    const message_t::message_content_t other = right.get_content();
    return left.get_type() == right.get_type() && left.get_severity() == right.get_severity() &&
           one.args == other.args && one.attributes == other.attributes &&
           one.elements == other.elements && one.next_arg_number == other.next_arg_number;
}

void require_same(const message_t& message, const message_t& expected)
{
    if (is_same(message, expected))
        return;
    print("message", message);
    print("expected", expected);
    require(false, "the same message");
}

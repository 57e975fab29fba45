#include <rova/variant.h>

#include <rova/strings.h>

namespace ROVA_2_18
{
namespace types
{

variant::variant(const std::wstring& text) : m_text(text) {}

std::string variant::as_string() const
{
    return strings::utf16_to_utf8(m_text);
}

} // namespace types
} // namespace ROVA_2_18

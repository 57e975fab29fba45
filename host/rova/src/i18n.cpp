#include <rova/i18n.h>

#include "message_pattern.h"

namespace ROVA_2_18
{
namespace i18n
{

message_t::message_t(const std::wstring& pattern, const std::string& locale)
    : m_pattern(std::make_shared<const pattern_t>(pattern, locale))
{}

std::wstring message_t::as_ustring(const generic::varg_list& arguments) const
{
    return m_pattern ? m_pattern->format(arguments) : std::wstring();
}

catalog_t::catalog_t() = default;
catalog_t::~catalog_t() = default;

} // namespace i18n
} // namespace ROVA_2_18

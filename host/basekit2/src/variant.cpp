#include <basekit2/variant_bag.h>

#include <rova/debug.h>

namespace basekit2
{
namespace
{

void report(const char* condition)
{
    ROVA_2_18::debug::_private::____________________ASSERT____________________(
        condition, __FILE__, __LINE__, "variant_t::get");
}

template <typename T, typename Kinds>
T get_or_report(const Kinds& kinds, const char* condition)
{
    const T* const value = std::get_if<T>(&kinds);
    if (!value)
        report(condition);
    return value ? *value : T();
}

} // namespace

variant_t::variant_t(const wchar_t* text) : m_value(std::wstring(text ? text : L"")) {}

variant_t::variant_t(const std::wstring& text) : m_value(text) {}

variant_t::variant_t(bool truth) : m_value(truth) {}

variant_t::variant_t(std::int64_t number) : m_value(number) {}

variant_t::variant_t(double number) : m_value(number) {}

// Assigns instead of initializing. In some releases of the standard library, a copy that runs out
// of memory destroys an object that was never constructed.
variant_t::variant_t(const variant_t& other) : variant_t()
{
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer)
    m_value = other.m_value;
}

variant_t::variant_t(variant_t&&) noexcept = default;
variant_t& variant_t::operator=(const variant_t&) = default;
variant_t& variant_t::operator=(variant_t&&) noexcept = default;
variant_t::~variant_t() = default;

template <>
bool variant_t::can_get<const wchar_t*>() const
{
    return std::holds_alternative<std::wstring>(m_value);
}

template <>
bool variant_t::can_get<std::wstring>() const
{
    return std::holds_alternative<std::wstring>(m_value);
}

template <>
bool variant_t::can_get<bool>() const
{
    return std::holds_alternative<bool>(m_value);
}

template <>
bool variant_t::can_get<std::int64_t>() const
{
    return std::holds_alternative<std::int64_t>(m_value);
}

template <>
bool variant_t::can_get<double>() const
{
    return std::holds_alternative<double>(m_value);
}

template <>
const wchar_t* variant_t::get<const wchar_t*>() const
{
    const auto* const text = std::get_if<std::wstring>(&m_value);
    if (!text)
        report("can_get<const wchar_t*>()");
    return text ? text->c_str() : L"";
}

template <>
std::wstring variant_t::get<std::wstring>() const
{
    return get_or_report<std::wstring>(m_value, "can_get<std::wstring>()");
}

template <>
bool variant_t::get<bool>() const
{
    return get_or_report<bool>(m_value, "can_get<bool>()");
}

template <>
std::int64_t variant_t::get<std::int64_t>() const
{
    return get_or_report<std::int64_t>(m_value, "can_get<std::int64_t>()");
}

template <>
double variant_t::get<double>() const
{
    return get_or_report<double>(m_value, "can_get<double>()");
}

} // namespace basekit2

#include <basekit2/path.h>

#include "native_name.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>

namespace basekit2
{

namespace
{

constexpr wchar_t separator = L'/';

} // namespace

path_t::path_t(const wchar_t* text) : m_text(text != nullptr ? text : L"") {}

path_t::path_t(const std::wstring& text) : m_text(text) {}

path_t& path_t::assign(const path_t& other)
{
    return *this = other;
}

path_t& path_t::append(const path_t& right)
{
    if (right.is_empty())
        return *this;
    if (is_empty())
        return assign(right);
    const std::wstring& added = right.m_text;
    const std::size_t begin = std::min(added.find_first_not_of(separator), added.size());
    std::wstring joined = m_text.substr(0, m_text.find_last_not_of(separator) + 1);
    joined.push_back(separator);
    joined.append(added, begin);
    m_text.swap(joined);
    return *this;
}

// Does not use std::filesystem: its conversion to UTF-8 loses elements that are not characters.
std::wstring path_t::get_branch() const
{
    const std::size_t last = m_text.rfind(separator);
    if (last == std::wstring::npos)
        return std::wstring();
    const std::size_t end = m_text.find_last_not_of(separator, last);
    return end == std::wstring::npos ? std::wstring(1, separator) : m_text.substr(0, end + 1);
}

std::wstring path_t::get_leaf() const
{
    return m_text.substr(m_text.rfind(separator) + 1);
}

std::wstring path_t::as_string(bool /*generic*/) const
{
    return m_text;
}

bool path_t::exists(const std::wstring& text)
{
    std::error_code error;
    return std::filesystem::exists(native_name(text), error);
}

} // namespace basekit2

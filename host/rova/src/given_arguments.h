#pragma once

#include <unicode/fmtable.h>
#include <unicode/unistr.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ROVA_2_18
{
namespace i18n
{

/// What ICU asks for by one name.
struct slot_t
{
    std::size_t argument; ///< its place among the names that the pattern uses
    bool is_number;
    std::size_t text_places; ///< how often its text is written at most
    /// For an argument that is not there; without one ICU writes the name in braces.
    icu::UnicodeString stand_in;
};

/// What ICU is given: a name and a value for each argument that has one.
class given_arguments_t
{
public:
    /// The names that ICU asks by, in the order in which the arguments are added. They have to
    /// outlive this: most often all are given, and they are handed on as they are.
    explicit given_arguments_t(const std::vector<icu::UnicodeString>& names);

    const icu::UnicodeString* names() const
    {
        return m_is_complete ? m_all_names.data() : m_names.data();
    }
    const icu::Formattable* values() const { return m_values.data(); }
    std::int32_t size() const { return static_cast<std::int32_t>(m_values.size()); }

    /// The text may be none.
    void add(const slot_t& slot, const std::wstring* text);

private:
    void add_value(const slot_t& slot, const std::wstring* text);
    void add_number(const std::string& text);

    const std::vector<icu::UnicodeString>& m_all_names;
    std::size_t m_asked = 0;
    bool m_is_complete = true;
    std::vector<icu::UnicodeString> m_names; ///< of the values, where one is missing
    std::vector<icu::Formattable> m_values;
};

} // namespace i18n
} // namespace ROVA_2_18

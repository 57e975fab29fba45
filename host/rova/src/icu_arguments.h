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

/// One value that ICU requests by name.
struct slot_t
{
    std::size_t argument; ///< its index among the names that the pattern uses
    bool is_number;
    bool is_date;          ///< whether a number can also be a date of ISO 8601
    std::size_t text_uses; ///< how often its text is written at most
    /// Value for a missing argument. If it is empty, ICU writes the name in braces.
    icu::UnicodeString fallback;
};

/// The arguments for ICU: a name and a value for each argument that has a value.
class icu_arguments_t
{
public:
    /// Takes ICU's names in the order in which the arguments are added. The names must outlive this
    /// object: if no value is missing, which is most common, they are used without a copy. Dates
    /// without an offset are in the time zone.
    icu_arguments_t(const std::vector<icu::UnicodeString>& names, const std::string& time_zone);

    const icu::UnicodeString* names() const
    {
        return m_is_complete ? m_all_names.data() : m_names.data();
    }
    const icu::Formattable* values() const { return m_values.data(); }
    /// Returns whether all arguments have a value.
    bool is_complete() const { return m_is_complete; }
    std::int32_t size() const { return static_cast<std::int32_t>(m_values.size()); }

    /// Adds the next argument. The text may be null.
    void add(const slot_t& slot, const std::wstring* text);

private:
    void add_value(const slot_t& slot, const std::wstring* text);
    void add_number(const slot_t& slot, const std::string& text);

    const std::vector<icu::UnicodeString>& m_all_names;
    const std::string& m_time_zone;
    std::size_t m_next_name = 0;
    bool m_is_complete = true;
    std::vector<icu::UnicodeString> m_names; ///< names of the values, if one is missing
    std::vector<icu::Formattable> m_values;
};

} // namespace i18n
} // namespace ROVA_2_18

#pragma once

#include <unicode/fmtable.h>
#include <unicode/unistr.h>

#include <cstddef>
#include <string>
#include <vector>

namespace ROVA_2_18
{
namespace i18n
{

/// A name by which ICU asks for an argument.
struct slot_t
{
    icu::UnicodeString name;
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
    explicit given_arguments_t(std::size_t most);

    const std::vector<icu::UnicodeString>& names() const { return m_names; }
    const std::vector<icu::Formattable>& values() const { return m_values; }

    /// The text may be none.
    void add(const slot_t& slot, const std::wstring* text);

private:
    void add_number(const std::string& text);

    std::vector<icu::UnicodeString> m_names;
    std::vector<icu::Formattable> m_values;
};

} // namespace i18n
} // namespace ROVA_2_18

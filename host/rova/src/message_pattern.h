#pragma once

#include "icu_arguments.h"

#include <rova/varg_list.h>

#include <unicode/fmtable.h>
#include <unicode/locid.h>
#include <unicode/messagepattern.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ROVA_2_18
{
namespace i18n
{

class argument_names_t;
struct argument_uses_t;

/// A parsed pattern. Any thread may format at any time.
class pattern_t
{
public:
    pattern_t(const std::wstring& pattern, const std::string& locale);
    pattern_t(const pattern_t&) = delete;
    pattern_t& operator=(const pattern_t&) = delete;
    ~pattern_t();

    std::wstring format(const generic::varg_list& arguments) const;

private:
    typedef std::vector<const std::wstring*> texts_t;

    /// A literal text of a pattern, and the argument after it.
    struct segment_t
    {
        std::wstring literal;
        std::size_t argument;       ///< its index in m_arguments; their count in the last segment
        std::wstring fallback_text; ///< if the argument is missing
    };

    void add_slots(const argument_names_t& names);
    void add_slots(const icu::UnicodeString& name, const argument_uses_t& uses);
    void add_slot(const icu::UnicodeString& name, const slot_t& slot);
    void split(const icu::MessagePattern& parsed, const argument_names_t& names);
    void make_format(const icu::UnicodeString& pattern, const icu::Locale& locale);
    std::size_t find_argument(const std::string& name, std::size_t expected) const;
    texts_t find_texts(const generic::varg_list& arguments) const;
    bool fit(const texts_t& texts) const;
    std::wstring join(const texts_t& texts) const;
    icu::UnicodeString format(const icu_arguments_t& given, UErrorCode& status) const;

    std::wstring m_text; ///< the pattern; also the result if formatting fails
    std::string m_time_zone;
    std::map<icu::UnicodeString, icu::UnicodeString> m_original_names; ///< of renamed placeholders
    std::vector<std::string> m_arguments; ///< the names that the pattern uses, sorted
    std::vector<slot_t> m_slots;
    std::vector<icu::UnicodeString> m_names; ///< ICU's names of the slots
    std::size_t m_length = 0;          ///< maximum length of a result without the arguments' texts
    std::vector<segment_t> m_segments; ///< empty if ICU formats the pattern
    std::unique_ptr<const icu::MessageFormat> m_format; ///< null if ICU does not format the pattern
    mutable std::mutex m_mutex; ///< guards m_format, which creates parts of itself on formatting
};

} // namespace i18n
} // namespace ROVA_2_18

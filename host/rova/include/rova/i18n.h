/// @file
/// Texts for the user: patterns in the user's language, filled with named arguments.
#pragma once

#include <rova/export.h>
#include <rova/strings.h>
#include <rova/varg_list.h>

#include <memory>
#include <string>

namespace ROVA_2_18
{
namespace i18n
{

class pattern_t;

/// One text of a catalog: a pattern of ICU's MessageFormat, `{name}` standing for the argument of
/// that name, plurals and selects included.
///
/// A value: copies share the pattern, which is parsed when the message is made and never again. One
/// object may be used by several threads at once, unless one of them assigns to it.
class ROVA_API message_t
{
public:
    /// An empty text.
    message_t() = default;
    /// The locale decides plural forms and how numbers look, for example "de_AT"; an empty one is
    /// the root locale. The process's locale never does: a language that ICU knows nothing of gives
    /// the root locale, and so does one whose words for numbers it does not know where the pattern
    /// asks for such. Nor does the process's time zone: dates and times are those of GMT, wherever
    /// they stand in the pattern.
    explicit message_t(const std::wstring& pattern, const std::string& locale = std::string());

    /// The pattern with its placeholders filled.
    ///
    /// An argument is a text, and stands there as it is. Where the pattern asks for a number
    /// (plural, selectordinal, choice, a typed argument), a text that is a decimal number counts as
    /// that number: minus sign, digits, fraction and exponent as in "-12", "0.5" or "1e6", nothing
    /// around them and no plus sign before them. Up to 100 characters without an exponent keep all
    /// their digits, else the nearest double counts, as it does for a plural with an offset. As a
    /// date it counts milliseconds from the beginning of 1970. An argument that is not there, or is
    /// no number where the pattern asks for one, leaves `{name}` in its place. Of several arguments
    /// of one name the first counts.
    ///
    /// A pattern that is none gives its own text, unformatted; so does one that cannot be
    /// formatted, and one past a limit:
    /// - 1,048,576 characters
    /// - braces 100 deep in each other, texts 50 deep; behind an apostrophe, which may quote them,
    ///   closing braces do not count as such
    /// - 1,000 different names
    /// - 1,000 typed arguments as in `{name, number}`
    /// - 10,000 places where something is written: each argument, each `#` of a plural, and each
    ///   character of a typed argument's style
    /// - 2,000,000 as the number of its names times that of its places
    /// - a power of ten beyond 99, such as 1E100, in a skeleton for numbers
    ///
    /// It does so, too, where the result might have more than 16,777,216 characters: those of the
    /// pattern, those of each argument's text as often as the pattern has a place for it, and 1,000
    /// at every other place.
    std::wstring as_ustring(const generic::varg_list& arguments) const;

private:
    std::shared_ptr<const pattern_t> m_pattern;
};

/// The texts of one subject in one language, by their ids.
class ROVA_API catalog_t
{
public:
    catalog_t();
    catalog_t(const catalog_t&) = delete;
    catalog_t& operator=(const catalog_t&) = delete;
    virtual ~catalog_t();

    /// The text of that id, an empty one where there is none. May be called by several threads at
    /// once.
    virtual message_t message(const strings::ustring16& id) const = 0;
};

} // namespace i18n
} // namespace ROVA_2_18

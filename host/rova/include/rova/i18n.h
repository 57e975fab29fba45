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

/// Sets the time zone for the dates and times of the texts that are created from now on, such as
/// "Europe/Berlin" or "GMT+02:00". It is "GMT" at first. Returns false, with nothing changed, if
/// ICU does not know the zone. Any thread may call it at any time. A host calls it before it binds
/// catalogs, whose texts are kept.
ROVA_API bool set_time_zone(const std::string& id);

/// A text of a catalog: a pattern of ICU's MessageFormat with named arguments, such as `{name}`,
/// plurals and selects. Copies share the pattern, which is parsed once.
///
/// Thread safety: any number of threads may use an object if none assigns to it.
class ROVA_API message_t
{
public:
    /// Creates an empty text.
    message_t() = default;
    /// Creates a text. The locale, such as "de_AT", determines plural forms and the format of
    /// numbers. The root locale is used if it is empty or unknown to ICU, or if the pattern spells
    /// out numbers and ICU has no rules for its language. A modifier as in "sr_RS@latin" or
    /// "ca_ES@valencia" counts as a script or a variant; any other is ignored. Dates and times are
    /// in the zone of set_time_zone(). The locale and the time zone of the process have no effect.
    explicit message_t(const std::wstring& pattern, const std::string& locale = std::string());

    /// Returns the pattern with its placeholders filled.
    ///
    /// An argument is inserted unchanged. If the pattern requires a number (plural, selectordinal,
    /// choice, a typed argument), the argument must be a decimal number, such as "-12", "0.5" or
    /// "1e6", without blanks and without a plus sign. A number of up to 100 characters without an
    /// exponent keeps all its digits. Any other, and one for a plural with an offset, is converted
    /// to the nearest double.
    ///
    /// A date or a time must be in milliseconds since the beginning of 1970, or as in ISO 8601:
    /// "2026-11-21", "2026-11-21T14:05" or "2026-11-21T14:05:07.25", a time also with "Z" or an
    /// offset such as "+01:00". Without an offset it is in the zone of the text. The year is at
    /// least 1583.
    ///
    /// A placeholder's name extends to the next comma or brace, without the blanks around it. It
    /// has no apostrophe.
    ///
    /// A placeholder remains as `{name}` if there is no such argument, or if it is not a required
    /// number. The first of several arguments with one name is used.
    ///
    /// Returns the pattern itself, unformatted, if it is invalid, cannot be formatted, or exceeds a
    /// limit:
    /// - 1,048,576 characters
    /// - braces nested 100 deep, texts nested 50 deep; closing braces after an apostrophe are not
    ///   counted, since it can quote them
    /// - 1,000 different names
    /// - 1,000 typed arguments as in `{name, number}`
    /// - 10,000 insertions: each argument, each `#` of a plural, and each character of a typed
    ///   argument's style
    /// - 2,000,000 as the number of names times the number of insertions
    /// - a power of ten beyond 99, such as 1E100, in a skeleton for numbers
    ///
    /// So does a result that can have more than 16,777,216 characters: those of the pattern, those
    /// of each inserted argument, and 1,000 for each other insertion.
    std::wstring as_ustring(const generic::varg_list& arguments) const;

private:
    std::shared_ptr<const pattern_t> m_pattern;
};

/// A message catalog: texts by their ids.
class ROVA_API catalog_t
{
public:
    catalog_t();
    catalog_t(const catalog_t&) = delete;
    catalog_t& operator=(const catalog_t&) = delete;
    virtual ~catalog_t();

    /// Returns the text with this id, or an empty one if there is none. Several threads may call it
    /// at once.
    virtual message_t message(const strings::ustring16& id) const = 0;
};

} // namespace i18n
} // namespace ROVA_2_18

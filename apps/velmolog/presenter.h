#pragma once

#include "entry.h"
#include "options.h"

#include <velmoext1/config_reader.h>
#include <velmoext1/velmo_ex.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace velmolog
{

/// The title and the text of a message, in UTF-8 and not escaped.
struct texts_t
{
    std::string title;     ///< may be empty
    std::string text;      ///< is never empty
    bool is_plain = false; ///< whether the text is plain_text()
};

/// Returns the type of the message and its arguments, such as `file_large path=/a`. Quotes an empty
/// value, and one with a blank or a quotation mark, as `path="/a b"`.
std::string plain_text(const velmoext_1_4_8::message_t& message);

/// Returns titles and texts of messages, in the user's language if there are catalogs.
///
/// The catalogs and their language are those of the process: the last presenter that was created,
/// or the last call of select_language(), determines them.
class presenter_t
{
public:
    /// Throws usage_error_t if the directory or the language cannot be used.
    explicit presenter_t(const catalog_options_t& options);

    /// Uses the catalogs of another language from now on. Throws usage_error_t if it is not the
    /// name of a language. Reads the catalogs again, so a caller presents many entries in between.
    void select_language(const std::string& language);

    /// Returns the language that the constructor selected, empty without catalogs.
    const std::string& first_language() const { return m_first_language; }

    /// Returns the texts, or plain_text() if there are no catalogs or they have none.
    texts_t present(const entry_t& entry) const;

private:
    bool bind(const std::string& language) const;

    bool has_catalogs() const { return m_ex != nullptr; }

    std::string m_locale_directory;
    std::string m_first_language;
    boost::shared_ptr<velmoext_1_4_8::config_reader_t> m_config;
    boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> m_ex; ///< null without catalogs
};

} // namespace velmolog

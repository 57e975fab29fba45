/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>
#include <velmoext1/velmo_ex.h>

#include <rova/varg_list.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

namespace velmoext_1_4_8
{

/// A message with a title and a text in the user's language, from the host's message catalogs
/// (`setbook2::getMessageCatalog`).
///
/// The text has the message's type as its id in the catalog. The id of the title is configured as
/// the property "title_msgid" of that type, see config_reader_t. The arguments of the message fill
/// the placeholders with their names.
///
/// The catalog is "PREFIX.SOURCE": the prefix of the extension object and the source of the
/// message. With an empty prefix, it is ".SOURCE". If it gives an empty text, "SOURCE" is used,
/// also by later calls. Title and text fall back separately.
///
/// Shares the message and the extension object. The first get_title() and the first get_text() read
/// type, prefix, source, configuration and arguments. Later changes have no effect, except that the
/// fall-back uses the message's source at that time.
///
/// Thread safety: not synchronized; an object is used by one thread at a time.
class VELMOEXT1_API extended_message_t
{
public:
    /// Stores both pointers, which must not be null.
    extended_message_t(boost::shared_ptr<velmo_ex_t> velmo_ex,
                       boost::shared_ptr<message_t> message);
    extended_message_t(const extended_message_t& other);
    extended_message_t& operator=(const extended_message_t& other);
    ~extended_message_t();

    /// Returns the title. Returns an empty text if neither catalog has one. If no "title_msgid" is
    /// configured, uses an empty id.
    std::wstring get_title();
    /// Returns the text. Returns an empty text if neither catalog has one; see readable_text().
    std::wstring get_text();

    /// Returns a property of the message, as config_reader_t::read_property() does.
    std::wstring get_cfg_prop(const std::wstring& name) const;
    /// Returns an empty vector: no property has several values.
    std::vector<std::wstring> get_cfg_props(const std::wstring& name) const;

    boost::shared_ptr<message_t> get_message() const;

protected:
    /// Reads the catalog's name, the id and the arguments for the title. A second call adds the
    /// arguments again.
    void update_title();
    /// Reads the same for the text.
    void update_text();

    /// Returns the name of the catalog, "PREFIX.SOURCE" or "SOURCE".
    std::wstring generate_filename(bool with_prefix) const;

private:
    struct catalog_ref_t
    {
        std::wstring catalog;
        std::wstring msgid;
        ROVA_2_18::generic::varg_list arguments;
        bool is_filled = false; ///< even with both names empty
    };

    VELMOEXT1_LOCAL static void append_arguments(catalog_ref_t& ref,
                                                 const message_t::message_content_t& content);
    VELMOEXT1_LOCAL static std::wstring compose(const catalog_ref_t& ref);

    VELMOEXT1_LOCAL void fill(catalog_ref_t& ref, const std::wstring& msgid) const;
    VELMOEXT1_LOCAL std::wstring compose_or_fall_back(catalog_ref_t& ref) const;

    boost::shared_ptr<velmo_ex_t> m_velmo_ex;
    boost::shared_ptr<message_t> m_message;
    catalog_ref_t m_text;
    catalog_ref_t m_title;
};

} // namespace velmoext_1_4_8

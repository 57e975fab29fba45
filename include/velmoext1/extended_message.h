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

/// A message as the user reads it: with a title and a text in the language of the host's message
/// catalogs, `setbook2::getMessageCatalog`.
///
/// The text is the catalog's message with the message's type as its id, the title the one whose id
/// is configured for that type as "title_msgid" (see config_reader_t). The message's arguments fill
/// the placeholders of their names. The catalog is "PREFIX.SOURCE", of the extension object's
/// prefix and the message's source; where that gives an empty text it is "SOURCE", and stays so for
/// this object.
///
/// Shares the message and the extension object. What is asked for is looked up at the first call:
/// type, prefix, source, configuration and arguments count as they are then, for the title and the
/// text each; the source is asked anew for "SOURCE". A copy takes along what was looked up.
/// Different objects may be used by different threads, one object by one thread at a time.
class VELMOEXT1_API extended_message_t
{
public:
    /// Looks nothing up. Neither may be null.
    extended_message_t(boost::shared_ptr<velmo_ex_t> velmo_ex,
                       boost::shared_ptr<message_t> message);
    extended_message_t(const extended_message_t& other);
    extended_message_t& operator=(const extended_message_t& other);
    ~extended_message_t();

    /// The title, composed anew at each call. Empty where neither catalog has one. Where no
    /// "title_msgid" is configured it is what the catalogs give for an empty id.
    std::wstring get_title();
    /// The text, composed anew at each call. Empty where neither catalog has one.
    std::wstring get_text();

    /// The property configured for the message, as config_reader_t::read_property() gives it.
    std::wstring get_cfg_prop(const std::wstring& name) const;
    /// Always empty: nothing gives a property several values.
    std::vector<std::wstring> get_cfg_props(const std::wstring& name) const;

    boost::shared_ptr<message_t> get_message() const;

protected:
    /// Look up the title's and the text's catalog, id and arguments, as the first call of
    /// get_title() or get_text() does. A second call adds the arguments once more.
    void update_title();
    void update_text();

    /// The name of the message's catalog, despite its own: "PREFIX.SOURCE" or "SOURCE".
    std::wstring generate_filename(bool with_prefix) const;

private:
    struct catalog_ref_t
    {
        std::wstring catalog;
        std::wstring msgid;
        ROVA_2_18::generic::varg_list arguments;
        bool is_filled = false; ///< both names can be empty then, too
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

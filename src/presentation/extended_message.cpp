#include <velmoext1/extended_message.h>

#include "core/message_access.h"
#include "encoding/element_composer.h"

#include <velmoext1/config_reader.h>

#include <setbook2/message_catalog.h>

#include <rova/strings.h>

#include <utility>

namespace velmoext_1_4_8
{

extended_message_t::extended_message_t(boost::shared_ptr<velmo_ex_t> velmo_ex,
                                       boost::shared_ptr<message_t> message)
    : m_velmo_ex(std::move(velmo_ex)), m_message(std::move(message))
{}

extended_message_t::extended_message_t(const extended_message_t& other) = default;
extended_message_t& extended_message_t::operator=(const extended_message_t& other) = default;
extended_message_t::~extended_message_t() = default;

std::wstring extended_message_t::get_title()
{
    if (!m_title.is_filled)
        update_title();
    return compose_or_fall_back(m_title);
}

std::wstring extended_message_t::get_text()
{
    if (!m_text.is_filled)
        update_text();
    return compose_or_fall_back(m_text);
}

std::wstring extended_message_t::get_cfg_prop(const std::wstring& name) const
{
    return config_reader_t::get()->read_property(m_velmo_ex, m_message, name);
}

std::vector<std::wstring> extended_message_t::get_cfg_props(const std::wstring& /*name*/) const
{
    return {};
}

boost::shared_ptr<message_t> extended_message_t::get_message() const
{
    return m_message;
}

void extended_message_t::update_title()
{
    prefetch_message(*m_message);
    fill(m_title, get_cfg_prop(L"title_msgid"));
}

void extended_message_t::update_text()
{
    prefetch_message(*m_message);
    fill(m_text, m_message->get_type());
}

std::wstring extended_message_t::generate_filename(bool with_prefix) const
{
    const std::wstring source = m_message->get_source();
    return with_prefix ? m_velmo_ex->get_prefix() + L'.' + source : source;
}

void extended_message_t::append_arguments(catalog_ref_t& ref,
                                          const message_t::message_content_t& content)
{
    for (const auto& [name, value] : content.args)
        ref.arguments.push_back({ROVA_2_18::strings::utf16_to_utf8(name), value});
}

std::wstring extended_message_t::compose(const catalog_ref_t& ref)
{
    const ROVA_2_18::i18n::catalog_t* const catalog = setbook2::getMessageCatalog(ref.catalog);
    return catalog ? catalog->message(ref.msgid).as_ustring(ref.arguments) : std::wstring();
}

// Changed as a whole or not at all: one that is filled in part would lose arguments for good.
void extended_message_t::fill(catalog_ref_t& ref, const std::wstring& msgid) const
{
    catalog_ref_t filled = {generate_filename(true), msgid, ref.arguments, true};
    append_arguments(filled, message_access_t::content(*m_message));
    ref = std::move(filled);
}

std::wstring extended_message_t::compose_or_fall_back(catalog_ref_t& ref) const
{
    std::wstring text = compose(ref);
    if (!text.empty())
        return text;
    ref.catalog = generate_filename(false);
    return compose(ref);
}

} // namespace velmoext_1_4_8

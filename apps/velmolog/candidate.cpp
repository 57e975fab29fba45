#include "candidate.h"

#include <rova/strings.h>

#include <cstddef>

namespace velmolog
{

using namespace velmoext_1_4_8;
using ROVA_2_18::strings::utf16_to_utf8;

candidate_t::candidate_t(const std::string& log, log_reader_t& reader, const presenter_t& presenter)
    : m_presenter(presenter), m_log(&log), m_reader(&reader), m_severity(reader.get_severity()),
      m_type(reader.get_type()), m_source(reader.get_source())
{}

candidate_t::candidate_t(const entry_t& entry, const presenter_t& presenter)
    : m_presenter(presenter), m_severity(entry.message->get_severity()),
      m_own_type(utf16_to_utf8(entry.message->get_type())),
      m_own_source(utf16_to_utf8(entry.message->get_source())), m_type(m_own_type),
      m_source(m_own_source), m_entry(&entry)
{}

log_reader_t::position_t candidate_t::begin() const
{
    return m_entry ? m_entry->begin : m_reader->get_begin();
}

const entry_t& candidate_t::entry()
{
    if (m_entry)
        return *m_entry;
    if (!m_own_entry)
        m_own_entry = {*m_log, m_reader->get_begin(), m_reader->get_message(), m_observed, ""};
    return *m_own_entry;
}

const texts_t& candidate_t::texts()
{
    if (!m_texts)
        m_texts = m_presenter.present(entry());
    return *m_texts;
}

boost::shared_ptr<message_t> message_of_element(std::string_view element)
{
    log_reader_t reader([&element](char* bytes, std::size_t size) {
        const std::size_t count = element.copy(bytes, size);
        element.remove_prefix(count);
        return count;
    });
    reader.next();
    return reader.get_message();
}

} // namespace velmolog

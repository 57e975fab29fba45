#pragma once

#include "entry.h"
#include "presenter.h"

#include <velmoext1/log_reader.h>

#include <optional>
#include <string>
#include <string_view>

namespace velmolog
{

/// A message that the filters can want. Each of its parts is created on the first use only.
class candidate_t
{
public:
    /// The message at which the reader is. All parameters must outlive the object.
    candidate_t(const std::string& log, velmoext_1_4_8::log_reader_t& reader,
                const presenter_t& presenter);
    /// A message that was read before. All parameters must outlive the object.
    candidate_t(const entry_t& entry, const presenter_t& presenter);

    velmoext_1_4_8::message_t::severity_t severity() const { return m_severity; }
    std::string_view type() const { return m_type; }
    std::string_view source() const { return m_source; }
    const std::string& log() const { return m_entry ? m_entry->log : *m_log; }
    velmoext_1_4_8::log_reader_t::position_t begin() const;
    const entry_t& entry();
    /// Sets the time at which the message was read. Has no effect on an entry that was read before.
    void set_observed(const std::string& time) { m_observed = time; }
    const std::string& observed() const { return m_entry ? m_entry->observed : m_observed; }
    const texts_t& texts();
    /// Returns the element as it is in the log.
    std::string_view element() const { return m_reader ? m_reader->get_text() : m_entry->element; }

private:
    const presenter_t& m_presenter;
    const std::string* m_log = nullptr;
    velmoext_1_4_8::log_reader_t* m_reader = nullptr; ///< null if there is an entry from the start
    velmoext_1_4_8::message_t::severity_t m_severity;
    std::string m_own_type; ///< what the views refer to without a reader
    std::string m_own_source;
    std::string_view m_type;
    std::string_view m_source;
    const entry_t* m_entry = nullptr;
    std::optional<entry_t> m_own_entry;
    std::string m_observed;
    std::optional<texts_t> m_texts;
};

/// Returns the message in an element of a log, or null if it is not a message.
boost::shared_ptr<velmoext_1_4_8::message_t> message_of_element(std::string_view element);

} // namespace velmolog

/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>

#include <velmo2/progress.h>

#include <boost/shared_ptr.hpp>

namespace velmoext_1_4_8
{

/// Describes a running operation: a message, the host's progress object, and whether the user may
/// cancel it.
///
/// It has no XML form and is not delivered to an extension object. The reporting component passes
/// it to base_handler_t::on_message() of a handler that it knows. Copies share the message and the
/// progress object.
///
/// Thread safety: not synchronized; an object is used by one thread at a time.
class VELMOEXT1_API progress_message_t
{
public:
    /// Creates a cancelable object without message and progress object.
    progress_message_t();
    progress_message_t(const progress_message_t& other);
    progress_message_t& operator=(const progress_message_t& other);
    virtual ~progress_message_t();

    /// Returns the message, or null if none was set.
    boost::shared_ptr<message_t> get_message();
    /// Sets the message, or null for none.
    void set_message(boost::shared_ptr<message_t> message);

    /// Returns the progress object. If none was set, reports an assertion to the host, and returns
    /// null if the assertion handler returns.
    boost::shared_ptr<velmo2::IProgress> get_progress();
    /// Sets the progress object, or null for none.
    void set_progress(boost::shared_ptr<velmo2::IProgress> progress);

    void set_cancelable(bool cancelable);
    bool is_cancelable() const;

private:
    boost::shared_ptr<message_t> m_message;
    boost::shared_ptr<velmo2::IProgress> m_progress;
    bool m_cancelable = true;
};

} // namespace velmoext_1_4_8

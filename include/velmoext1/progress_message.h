/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>

#include <velmo2/progress.h>

#include <boost/shared_ptr.hpp>

namespace velmoext_1_4_8
{

/// Tells a handler that an operation is going on: a message that describes it, the host's progress
/// object, and whether the user may cancel it.
///
/// Copies share the message and the progress object. Nothing is locked: one object belongs to one
/// thread at a time. It has no XML form and is never delivered down a handler stack; a caller hands
/// it to base_handler_t::on_message() of a handler that it knows.
class VELMOEXT1_API progress_message_t
{
public:
    /// No message, no progress object, cancelable.
    progress_message_t();
    progress_message_t(const progress_message_t& other);
    progress_message_t& operator=(const progress_message_t& other);
    virtual ~progress_message_t();

    /// The message, null where none was set.
    boost::shared_ptr<message_t> get_message();
    /// Null is accepted.
    void set_message(boost::shared_ptr<message_t> message);

    /// The progress object. Asking where none was set is a fault of the caller: it is reported
    /// through the host's assertion, and the answer is null where that returns.
    boost::shared_ptr<velmo2::IProgress> get_progress();
    /// Null is accepted.
    void set_progress(boost::shared_ptr<velmo2::IProgress> progress);

    void set_cancelable(bool cancelable);
    bool is_cancelable() const;

private:
    boost::shared_ptr<message_t> m_message;
    boost::shared_ptr<velmo2::IProgress> m_progress;
    bool m_cancelable = true;
};

} // namespace velmoext_1_4_8

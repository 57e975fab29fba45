#pragma once

#include "open_file.h"

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

namespace velmolog
{

/// Returns the first message of a log, null if there is none.
boost::shared_ptr<velmoext_1_4_8::message_t> first_message(const descriptor_t& file);

/// Returns whether the message can be the other one as a recorder's start has rewritten it: it has
/// all that is not changed then, see docs/fidelity.md.
bool is_carried_form(const velmoext_1_4_8::message_t& message,
                     const velmoext_1_4_8::message_t& rewritten);

} // namespace velmolog

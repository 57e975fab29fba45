/// @file
/// All public headers but testing.h.
///
/// Every operation throws std::bad_alloc if it runs out of memory, and then leaves its objects
/// unchanged. Requirements are not checked: violating one is undefined behaviour. Exceptions to
/// both are documented at the operation.
///
/// Exceptions of handlers and of the host propagate. docs/errors.md has the details.
#pragma once

#include <velmoext1/base_handler.h>
#include <velmoext1/config_reader.h>
#include <velmoext1/extended_message.h>
#include <velmoext1/handlers.h>
#include <velmoext1/log_reader.h>
#include <velmoext1/message.h>
#include <velmoext1/message_builder.h>
#include <velmoext1/messages_storage.h>
#include <velmoext1/progress_message.h>
#include <velmoext1/readable_text.h>
#include <velmoext1/string_message_serializer.h>
#include <velmoext1/velmo_adapter.h>
#include <velmoext1/velmo_ex.h>
#include <velmoext1/version.h>

/// The namespace of this release, for code that is built with one release only.
namespace velmoext1 = velmoext_1_4_8;

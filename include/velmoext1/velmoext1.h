/// @file
/// All public headers but testing.h.
///
/// Where memory is lacking, every operation throws std::bad_alloc and leaves what it works on as it
/// was, unless it tells otherwise; where it is libxml2 that lacks it, the operation tells what it
/// answers. Otherwise only what handlers and the host throw passes out.
#pragma once

#include <velmoext1/base_handler.h>
#include <velmoext1/config_reader.h>
#include <velmoext1/extended_message.h>
#include <velmoext1/handlers.h>
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

#include "xml_library.h"

#include <libxml/parser.h>

namespace velmoext_1_4_8
{

void initialize_xml_library()
{
    static const bool is_initialized = (xmlInitParser(), true);
    static_cast<void>(is_initialized);
}

} // namespace velmoext_1_4_8

#include "quoted.h"

#include "path_text.h"
#include "terminal_text.h"

namespace audit
{

std::string quoted(const std::string& argument)
{
    return "'" + terminal_text(path_text(argument)) + "'";
}

} // namespace audit

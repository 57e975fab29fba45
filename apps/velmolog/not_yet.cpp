#include "commands.h"

namespace velmolog
{

exit_status_t follow(const options_t& /*options*/, std::ostream& /*output*/)
{
    throw usage_error_t("--follow is not available yet");
}

} // namespace velmolog

#include "log.h"

#include "flagger.h"

#include <rova/strings.h>

#include <basekit2/path.h>

#include <boost/make_shared.hpp>

namespace audit
{

using velmoext::messages_storage_t;

bool can_name_log(const std::string& name)
{
    using namespace rova::strings;
    return utf16_to_utf8(utf8_to_utf16(name)) == name;
}

boost::shared_ptr<messages_storage_t> open_log(const std::string& name)
{
    return messages_storage_t::get(basekit2::path_t(rova::strings::utf8_to_utf16(name)));
}

recording_t::~recording_t()
{
    stop();
}

bool recording_t::start(const std::string& name, velmoext::velmo_ex_t& ex)
{
    const auto storage = open_log(name);
    if (!storage->start_recording())
        return false;
    m_storage = storage;
    ex.push_handler(storage);
    ex.push_handler(boost::make_shared<flagger_t>()); // called first
    return true;
}

void recording_t::stop()
{
    if (m_storage)
        m_storage->stop_recording();
}

} // namespace audit

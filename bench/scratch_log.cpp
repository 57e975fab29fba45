#include "scratch_log.h"

#include "runner.h"

#include <filesystem>

namespace bench
{

using namespace velmoext_1_4_8;

std::size_t scratch_log_t::size() const
{
    return std::filesystem::file_size(name());
}

boost::shared_ptr<messages_storage_t> scratch_log_t::storage() const
{
    return messages_storage_t::get(m_folder.wide_name("log.xml"));
}

void scratch_log_t::record(const workload_t& workload, std::size_t count) const
{
    const auto recording = storage();
    require(recording->start_recording(), "the log cannot be recorded into");
    for (std::size_t i = 0; i < count; ++i)
        recording->on_message(boost::shared_ptr<velmo_ex_t>(), workload.messages()[i]);
    recording->stop_recording();
}

std::shared_ptr<scratch_log_t> make_log(const workload_t& workload, std::size_t count)
{
    auto log = std::make_shared<scratch_log_t>();
    log->record(workload, count);
    return log;
}

} // namespace bench

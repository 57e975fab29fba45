// Messages go into one file, from its beginning to its end.

#include "peers.h"
#include "plain_writer.h"
#include "runner.h"
#include "scratch_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <memory>

namespace
{

using bench::scratch_log_t;
using bench::workload_t;

std::size_t record_plain(const workload_t& workload, std::size_t count, const scratch_log_t& log)
{
    const int descriptor = ::open(log.name().c_str(), O_WRONLY | O_CREAT, S_IRUSR | S_IWUSR);
    xmlTextWriter* const writer = xmlNewTextWriter(xmlOutputBufferCreateFd(descriptor, nullptr));
    xmlTextWriterSetIndent(writer, 1);
    xmlTextWriterStartDocument(writer, nullptr, "UTF-8", nullptr);
    xmlTextWriterStartElement(writer, bench::to_xml("log"));
    for (std::size_t i = 0; i < count; ++i)
        bench::write_plain(writer, workload.plain()[i]);
    xmlTextWriterEndElement(writer);
    xmlTextWriterEndDocument(writer);
    xmlFreeTextWriter(writer);
    ::close(descriptor);
    return log.size();
}

bench::candidate_t floor(const workload_t& workload)
{
    return {"floor", [&](std::size_t) -> bench::work_t {
                return [&, log = std::make_shared<scratch_log_t>()](std::size_t count) {
                    return record_plain(workload, count, *log);
                };
            }};
}

bench::candidate_t velmoext1(const workload_t& workload)
{
    return {"velmoext1", [&](std::size_t) -> bench::work_t {
                return [&, log = std::make_shared<scratch_log_t>()](std::size_t count) {
                    log->record(workload, count);
                    return log->size();
                };
            }};
}

std::vector<bench::subject_t> make_subjects(const workload_t& workload)
{
    const auto least = [&](std::size_t count) {
        return workload.text_size(count);
    };
    bench::subject_t subject = {"record", {floor(workload), velmoext1(workload)}, least};
    add_peers(subject, workload);
    return {subject};
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}

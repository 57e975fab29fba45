// Writes a document of each message. The library returns a wide string, all others UTF-8.

#include "documents.h"
#include "peers.h"
#include "plain_writer.h"
#include "runner.h"

#include <velmoext1/string_message_serializer.h>

#include <benchmark/benchmark.h>

namespace
{

using bench::workload_t;
using velmoext_1_4_8::string_message_serializer_t;

std::size_t encode_plain(const bench::plain_message_t& message)
{
    xmlBuffer* const buffer = xmlBufferCreate();
    xmlTextWriter* const writer = xmlNewTextWriterMemory(buffer, 0);
    xmlTextWriterSetIndent(writer, 1);
    xmlTextWriterStartDocument(writer, nullptr, "UTF-8", nullptr);
    bench::write_plain(writer, message);
    xmlTextWriterFlush(writer);
    benchmark::DoNotOptimize(xmlBufferContent(buffer));
    const auto size = static_cast<std::size_t>(xmlBufferLength(buffer));
    xmlFreeTextWriter(writer);
    xmlBufferFree(buffer);
    return size;
}

std::size_t encode(const bench::message_ptr_t& message)
{
    return string_message_serializer_t::message_to_xml_string(message).size();
}

bench::candidate_t velmoext1(const workload_t& workload)
{
    return {"velmoext1", [&](std::size_t) -> bench::work_t {
                return [&](std::size_t count) {
                    return bench::sum_over(workload.messages(), count, encode);
                };
            }};
}

std::vector<bench::subject_t> make_subjects(const workload_t& workload)
{
    const auto min_output = [&](std::size_t count) {
        return workload.text_size(count) / 2;
    };
    const auto floor = bench::make_encoder("floor", workload, encode_plain);
    bench::subject_t subject = {"encode", {floor, velmoext1(workload)}, min_output};
    add_peers(subject, workload);
    return {subject};
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}

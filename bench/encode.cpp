// A message becomes a document of its own: the library in a wide string, all others in UTF-8.

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

bench::candidate_t floor(const workload_t& workload)
{
    return {"floor", [&](std::size_t) -> bench::work_t {
                return [&](std::size_t count) {
                    std::size_t size = 0;
                    for (std::size_t i = 0; i < count; ++i)
                        size += encode_plain(workload.plain()[i]);
                    return size;
                };
            }};
}

bench::candidate_t velmoext1(const workload_t& workload)
{
    return {"velmoext1", [&](std::size_t) -> bench::work_t {
                return [&](std::size_t count) {
                    std::size_t size = 0;
                    for (std::size_t i = 0; i < count; ++i)
                        size += string_message_serializer_t::message_to_xml_string(
                                    workload.messages()[i])
                                    .size();
                    return size;
                };
            }};
}

std::vector<bench::subject_t> make_subjects(const workload_t& workload)
{
    const auto least = [&](std::size_t count) {
        return workload.text_size(count) / 2;
    };
    bench::subject_t subject = {"encode", {floor(workload), velmoext1(workload)}, least};
    add_peers(subject, workload);
    return {subject};
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}

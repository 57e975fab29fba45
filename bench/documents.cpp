#include "documents.h"

#include <velmoext1/string_message_serializer.h>

#include <rova/strings.h>

namespace bench
{

std::vector<std::string> make_documents(const workload_t& workload, std::size_t count)
{
    return workload.make_items(count, [&](std::size_t index) {
        return ROVA_2_18::strings::utf16_to_utf8(
            velmoext_1_4_8::string_message_serializer_t::message_to_xml_string(
                workload.messages()[index]));
    });
}

candidate_t make_encoder(const std::string& name, const workload_t& workload,
                         std::size_t (*encode)(const plain_message_t& message))
{
    return {name, [&workload, encode](std::size_t) -> work_t {
                return [&workload, encode](std::size_t count) {
                    return sum_over(workload.plain(), count,
                                    [encode](const auto& message) { return encode(*message); });
                };
            }};
}

candidate_t make_decoder(const std::string& name, const workload_t& workload,
                         std::size_t (*decode)(const std::string& document))
{
    return {name, [&workload, decode](std::size_t all) -> work_t {
                return [documents = make_documents(workload, all), decode](std::size_t count) {
                    return sum_over(documents, count, decode);
                };
            }};
}

} // namespace bench

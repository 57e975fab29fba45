// Reads a message from a document. The library takes it as a wide string, all others as UTF-8.

#include "documents.h"
#include "peers.h"
#include "runner.h"

#include <velmoext1/string_message_serializer.h>

#include <libxml/xmlreader.h>

#include <memory>

namespace
{

using bench::message_ptr_t;
using bench::workload_t;
using velmoext_1_4_8::string_message_serializer_t;

const int reader_options = XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

std::size_t decode_bare(const std::string& document)
{
    xmlTextReader* const reader = xmlReaderForMemory(
        document.data(), static_cast<int>(document.size()), nullptr, "UTF-8", reader_options);
    xmlTextReaderNext(reader);
    const xmlNode* const node = xmlTextReaderExpand(reader);
    const std::size_t found = node && node->children ? 1 : 0;
    xmlFreeTextReader(reader);
    return found;
}

std::vector<std::wstring> make_wide_documents(const workload_t& workload, std::size_t count)
{
    return workload.make_items(count, [&](std::size_t index) {
        return string_message_serializer_t::message_to_xml_string(workload.messages()[index]);
    });
}

void require_same(const message_ptr_t& left, const message_ptr_t& right)
{
    const auto left_content = left->get_content();
    const auto right_content = right->get_content();
    bench::require(left->equal_to(right) && left_content.args == right_content.args &&
                       left_content.attributes == right_content.attributes &&
                       left_content.elements == right_content.elements,
                   "decoded something else");
}

std::size_t decode(const std::wstring& document)
{
    return string_message_serializer_t::xml_string_to_message(document)->empty() ? 0 : 1;
}

bench::candidate_t velmoext1(const workload_t& workload)
{
    return {"velmoext1", [&](std::size_t all) -> bench::work_t {
                auto documents = make_wide_documents(workload, all);
                require_same(string_message_serializer_t::xml_string_to_message(documents.front()),
                             workload.messages().front());
                return [documents = std::move(documents)](std::size_t count) {
                    return bench::sum_over(documents, count, decode);
                };
            }};
}

std::vector<bench::subject_t> make_subjects(const workload_t& workload)
{
    const auto min_output = [](std::size_t count) {
        return count;
    };
    const auto floor = bench::make_decoder("floor", workload, decode_bare);
    bench::subject_t subject = {"decode", {floor, velmoext1(workload)}, min_output};
    add_peers(subject, workload);
    return {subject};
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}

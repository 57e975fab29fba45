// A reader of a log returns the same results whatever its source's chunks are, and each message as
// the channel has it. It finds no damage in a log that libxml2 finds well-formed, and finds some in
// any other log, or that it is unfinished.
//
// An input is a log. Chunks have as many bytes as the size of the input says.
#include "fuzz_target.h"
#include "message_fields.h"
#include "quiet_xml.h"
#include "require.h"

#include <velmoext1/log_reader.h>
#include <velmoext1/string_message_serializer.h>

#include <rova/strings.h>

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <memory>
#include <string>

namespace
{

using namespace velmoext_1_4_8;

typedef log_reader_t::result_t result_t;

const std::size_t max_small_chunk = 64;

struct reading_t
{
    std::string results; ///< a line for each
    std::size_t messages = 0;
    bool has_damage = false;
    bool exceeds_limit = false;
    bool has_end = false;
};

bool has_encoding(const std::string& log)
{
    return log.find("encoding") != std::string::npos;
}

log_reader_t::source_t make_source(const std::string& log, std::size_t chunk)
{
    return [&log, chunk, offset = std::size_t()](char* bytes, std::size_t size) mutable {
        const std::size_t count = std::min({size, chunk, log.size() - offset});
        log.copy(bytes, count, offset);
        offset += count;
        return count;
    };
}

void require_message(log_reader_t& reader, const std::string& log)
{
    using namespace ROVA_2_18::strings;
    const auto message = reader.get_message();
    require(message != nullptr, "a message");
    const std::string text(reader.get_text());
    const auto begin = static_cast<std::size_t>(reader.get_begin().offset);
    const auto end = static_cast<std::size_t>(reader.get_end().offset);
    // Positions in another encoding are those of its text in UTF-8.
    require(has_encoding(log) || log.substr(begin, end - begin) == text,
            "its element is in the log");
    require(fields_of(string_message_serializer_t::xml_string_to_message(utf8_to_utf16(text))) ==
                fields_of(message),
            "the message as the channel has it");
    require(utf16_to_utf8(message->get_type()) == reader.get_type(), "its type");
    require(utf16_to_utf8(message->get_source()) == reader.get_source(), "its source");
    require(message->get_severity() == reader.get_severity(), "its severity");
}

std::string text_of(log_reader_t::position_t position)
{
    return std::to_string(position.offset) + " " + std::to_string(position.line) + " ";
}

reading_t read(const std::string& log, std::size_t chunk)
{
    reading_t reading;
    log_reader_t reader(make_source(log, chunk));
    std::int64_t former = 0;
    for (bool is_over = false; !is_over;) {
        const result_t result = reader.next();
        reading.results += std::to_string(static_cast<int>(result)) + " " +
                           text_of(reader.get_begin()) + text_of(reader.get_end()) +
                           std::to_string(static_cast<int>(reader.get_damage())) + "\n";
        is_over = result == result_t::end ||
                  (result == result_t::unfinished && reader.get_text().empty());
        if (result == result_t::message) {
            require(former <= reader.get_begin().offset, "messages are in their order");
            former = reader.get_end().offset;
            require_message(reader, log);
            ++reading.messages;
        }
        reading.has_damage = reading.has_damage || result == result_t::damage ||
                             (result == result_t::unfinished && !reader.get_text().empty());
        reading.exceeds_limit =
            reading.exceeds_limit || reader.get_damage() == log_reader_t::damage_t::limit;
        reading.has_end = result == result_t::end;
        reader.skip_unfinished();
    }
    return reading;
}

// Of elements "msg" that are not in others.
std::size_t count_messages(const xmlNode* node)
{
    std::size_t count = 0;
    for (; node != nullptr; node = node->next) {
        if (node->type != XML_ELEMENT_NODE)
            continue;
        const bool is_message = xmlStrEqual(node->name, BAD_CAST "msg") != 0;
        count += is_message ? 1 : count_messages(node->children);
    }
    return count;
}

// The library reads other encodings as a whole, and ignores what a document type declares. Its
// limits are lower than libxml2's.
bool is_comparable(const std::string& log, const reading_t& reading)
{
    return !reading.exceeds_limit && !has_encoding(log) &&
           log.find("<!DOCTYPE") == std::string::npos && log.substr(0, 2) != "\xFE\xFF" &&
           log.substr(0, 2) != "\xFF\xFE" && log.find('\0') == std::string::npos;
}

void require_as_by_libxml2(const std::string& log, const reading_t& reading)
{
    const int options = XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET | XML_PARSE_HUGE;
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(log.data(), static_cast<int>(log.size()), nullptr, nullptr, options),
        xmlFreeDoc);
    const bool is_whole = reading.has_end && !reading.has_damage;
    require(is_whole == (document != nullptr), "a log is whole if it is well-formed");
    if (document)
        require(reading.messages == count_messages(document->children), "all messages");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    forbid_xml_output();
    const std::string log(data, data + size);
    const reading_t reading = read(log, log.size() + 1);
    require(reading.results == read(log, size % max_small_chunk + 1).results,
            "the same results from other chunks");
    if (is_comparable(log, reading))
        require_as_by_libxml2(log, reading);
    return 0;
}

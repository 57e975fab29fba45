// pugixml: builds a tree of each message, or of a whole log. Writes UTF-8 from UTF-8, and reads
// into maps of wide strings.

#include "documents.h"
#include "peers.h"
#include "scratch_log.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <string_view>

namespace
{

using bench::plain_message_t;
using bench::workload_t;

typedef std::map<std::wstring, std::wstring> string_map_t;

struct read_message_t
{
    std::wstring type;
    int severity = 0;
    string_map_t attributes;
    string_map_t args;
    string_map_t elements;
};

class string_writer_t : public pugi::xml_writer
{
public:
    void write(const void* bytes, std::size_t size) override
    {
        m_text.append(static_cast<const char*>(bytes), size);
    }
    const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

void add_text(pugi::xml_node parent, const std::string& name, const std::string& text)
{
    parent.append_child(name.c_str()).text().set(text.c_str());
}

std::size_t encode(const plain_message_t& message)
{
    pugi::xml_document document;
    pugi::xml_node element = document.append_child("msg");
    for (const auto& [name, text] : message.attributes)
        element.append_attribute(name.c_str()).set_value(text.c_str());
    for (const auto& [name, text] : message.args) {
        pugi::xml_node arg = element.append_child("arg");
        arg.append_attribute("name").set_value(name.c_str());
        arg.text().set(text.c_str());
    }
    for (const auto& [name, text] : message.elements)
        add_text(element, name, text);
    add_text(element, "type", message.type);
    add_text(element, "severity", message.severity);
    string_writer_t writer;
    document.save(writer, " ", pugi::format_indent, pugi::encoding_utf8);
    benchmark::DoNotOptimize(writer.text().data());
    return writer.text().size();
}

int parse_severity(const char* text)
{
    const std::string_view names[] = {"INFO", "WARNING", "ERROR", "CRITICAL"};
    const auto* const found = std::find(std::begin(names), std::end(names), text);
    return found == std::end(names) ? 0 : static_cast<int>(found - std::begin(names)) + 1;
}

// The hint suits most keys, which come in the order of the map.
void add(string_map_t& texts, const char* name, const char* text)
{
    texts.emplace_hint(texts.end(), pugi::as_wide(name), pugi::as_wide(text));
}

read_message_t read(pugi::xml_node element)
{
    read_message_t message;
    for (const pugi::xml_attribute attribute : element.attributes())
        add(message.attributes, attribute.name(), attribute.value());
    for (const pugi::xml_node child : element.children()) {
        const std::string_view name = child.name();
        const char* const text = child.text().get();
        if (name == "type")
            message.type = pugi::as_wide(text);
        else if (name == "severity")
            message.severity = parse_severity(text);
        else if (name == "arg")
            add(message.args, child.attribute("name").value(), text);
        else
            add(message.elements, child.name(), text);
    }
    return message;
}

std::size_t decode(const std::string& text)
{
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size());
    return read(document.child("msg")).type.empty() ? 0 : 1;
}

std::size_t replay(const std::string& file,
                   const std::function<void(const read_message_t&)>& on_message)
{
    std::size_t count = 0;
    pugi::xml_document document;
    document.load_file(file.c_str());
    for (const pugi::xml_node element : document.child("log").children("msg")) {
        on_message(read(element));
        ++count;
    }
    return count;
}

bench::candidate_t make_encode(const workload_t& workload)
{
    return bench::make_encoder("pugixml", workload, encode);
}

bench::candidate_t make_decode(const workload_t& workload)
{
    return bench::make_decoder("pugixml", workload, decode);
}

bench::candidate_t make_replay(const workload_t& workload)
{
    return {"pugixml", [&](std::size_t all) -> bench::work_t {
                return [log = bench::make_log(workload, all)](std::size_t) {
                    std::size_t typed = 0;
                    return replay(log->name(), [&](const read_message_t& message) {
                        typed += message.type.empty() ? 0 : 1;
                    });
                };
            }};
}

const bool is_registered = bench::register_peer("encode", make_encode) &&
                           bench::register_peer("decode", make_decode) &&
                           bench::register_peer("replay", make_replay);

} // namespace

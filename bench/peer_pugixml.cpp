// pugixml: a tree is built for each message, or of a whole log.

#include "documents.h"
#include "peers.h"
#include "scratch_log.h"

#include <pugixml.hpp>

#include <functional>
#include <map>

namespace
{

using bench::plain_message_t;
using bench::workload_t;

struct read_message_t
{
    std::string type;
    std::string severity;
    std::map<std::string, std::string> attributes;
    std::map<std::string, std::string> args;
    std::map<std::string, std::string> elements;
};

class counting_writer_t : public pugi::xml_writer
{
public:
    void write(const void* /*bytes*/, std::size_t size) override { m_size += size; }
    std::size_t size() const { return m_size; }

private:
    std::size_t m_size = 0;
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
    counting_writer_t writer;
    document.save(writer, " ", pugi::format_indent, pugi::encoding_utf8);
    return writer.size();
}

read_message_t read(pugi::xml_node element)
{
    read_message_t message;
    for (const pugi::xml_attribute attribute : element.attributes())
        message.attributes.emplace(attribute.name(), attribute.value());
    for (const pugi::xml_node child : element.children()) {
        const std::string name = child.name();
        if (name == "type")
            message.type = child.text().get();
        else if (name == "severity")
            message.severity = child.text().get();
        else if (name == "arg")
            message.args.emplace(child.attribute("name").value(), child.text().get());
        else
            message.elements.emplace(name, child.text().get());
    }
    return message;
}

std::size_t decode(const std::string& text)
{
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size());
    return read(document.child("msg")).type.empty() ? 0 : 1;
}

std::size_t replay(const std::string& text, const std::function<void(const read_message_t&)>& see)
{
    std::size_t seen = 0;
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size());
    for (const pugi::xml_node element : document.child("log").children("msg")) {
        see(read(element));
        ++seen;
    }
    return seen;
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
                const bench::scratch_log_t log;
                log.record(workload, all);
                return [text = log.read()](std::size_t) {
                    std::size_t typed = 0;
                    return replay(text, [&](const read_message_t& message) {
                        typed += message.type.empty() ? 0 : 1;
                    });
                };
            }};
}

const bool is_registered = bench::register_peer("encode", make_encode) &&
                           bench::register_peer("decode", make_decode) &&
                           bench::register_peer("replay", make_replay);

} // namespace

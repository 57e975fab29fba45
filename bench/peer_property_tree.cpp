// Boost.PropertyTree: builds a tree of each message, with its texts in UTF-8. It is not measured
// with a whole log, since that is not a realistic use.

#include "documents.h"
#include "peers.h"

#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>

#include <map>
#include <sstream>

namespace
{

namespace property_tree = boost::property_tree;

using bench::plain_message_t;
using bench::workload_t;
using property_tree::ptree;

const char attributes[] = "<xmlattr>";

void put_attributes(ptree& element, const bench::string_pairs_t& texts)
{
    ptree& node = element.push_back({attributes, ptree()})->second;
    for (const auto& [name, text] : texts)
        node.push_back({name, ptree(text)});
}

std::size_t encode(const plain_message_t& message)
{
    ptree document;
    ptree& element = document.push_back({"msg", ptree()})->second;
    put_attributes(element, message.attributes);
    for (const auto& [name, text] : message.args)
        put_attributes(element.push_back({"arg", ptree(text)})->second, {{"name", name}});
    for (const auto& [name, text] : message.elements)
        element.push_back({name, ptree(text)});
    element.push_back({"type", ptree(message.type)});
    element.push_back({"severity", ptree(message.severity)});
    std::ostringstream stream;
    property_tree::write_xml(stream, document,
                             property_tree::xml_writer_make_settings<std::string>(' ', 1));
    return stream.str().size();
}

std::size_t decode(const std::string& text)
{
    ptree document;
    std::istringstream stream(text);
    property_tree::read_xml(stream, document, property_tree::xml_parser::trim_whitespace);
    std::string type;
    std::string severity;
    std::map<std::string, std::string> args;
    std::map<std::string, std::string> elements;
    std::map<std::string, std::string> attribute_values;
    for (const auto& [name, child] : document.get_child("msg")) {
        if (name == attributes)
            for (const auto& [key, value] : child)
                attribute_values.emplace(key, value.data());
        else if (name == "type")
            type = child.data();
        else if (name == "severity")
            severity = child.data();
        else if (name == "arg")
            args.emplace(child.get("<xmlattr>.name", std::string()), child.data());
        else
            elements.emplace(name, child.data());
    }
    return type.empty() || severity.empty() ? 0 : 1;
}

bench::candidate_t make_encode(const workload_t& workload)
{
    return bench::make_encoder("PropertyTree", workload, encode);
}

bench::candidate_t make_decode(const workload_t& workload)
{
    return bench::make_decoder("PropertyTree", workload, decode);
}

const bool is_registered =
    bench::register_peer("encode", make_encode) && bench::register_peer("decode", make_decode);

} // namespace

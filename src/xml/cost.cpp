#include "xml/cost.h"

#include "xml/scanner.h"

#include <array>
#include <cstddef>
#include <unordered_set>

namespace velmoext_1_4_8
{
namespace
{

// libxml2 refuses deeper elements by itself.
const std::size_t max_depth = 256;

bool declares_namespace(std::string_view name)
{
    return name.substr(0, 5) == "xmlns" && (name.size() == 5 || name[5] == ':');
}

class cost_t
{
public:
    explicit cost_t(parse_t parse) : m_is_tree(parse == parse_t::tree) {}

    markup_t measure(std::string_view document)
    {
        scanner_t scanner(document);
        for (auto token = scanner.next();
             token != scanner_t::token_t::end && m_refusal == refusal_t::none;
             token = scanner.next())
            add(token, scanner);
        if (m_names > limits::max_names)
            require(count_different_names(document) <= limits::max_names, refusal_t::names);
        return {m_refusal, static_cast<std::size_t>(scanner.position() - document.data())};
    }

private:
    void add(scanner_t::token_t token, scanner_t& scanner)
    {
        switch (token) {
        case scanner_t::token_t::start_tag:
            add_start_tag(scanner);
            break;
        case scanner_t::token_t::instruction:
            ++m_names;
            break;
        case scanner_t::token_t::end_tag:
            m_depth -= m_depth > 0 ? 1 : 0;
            break;
        case scanner_t::token_t::document_type:
        case scanner_t::token_t::unfinished:
            add_document_type(scanner.token());
            break;
        default:
            break;
        }
    }

    // It counts also when it does not end: libxml2 parses it all the same.
    void add_document_type(std::string_view token)
    {
        static constexpr std::string_view beginning = "<!DOCTYPE";
        if (token.substr(0, beginning.size()) != beginning)
            return;
        const document_type_facts_t facts = scan_document_type(token);
        m_defaults = facts.defaults;
        require_of_tree(facts.declared_ids * facts.declared_attributes <= limits::max_id_checks,
                        refusal_t::document_type_size);
        require_of_tree(!facts.has_parameter_entity_references, refusal_t::parameter_entities);
        require(token.size() <= limits::max_document_type_bytes, refusal_t::document_type_size);
    }

    void add_start_tag(scanner_t& scanner)
    {
        std::size_t attributes = 0;
        std::size_t namespaces = 0;
        for (attribute_t attribute; scanner.next_attribute(attribute); ++attributes) {
            m_ids += attribute.name == "xml:id" ? 1 : 0;
            namespaces += declares_namespace(attribute.name) ? 1 : 0;
        }
        scanner.finish_start_tag();
        const std::size_t in_scope = m_in_scope[m_depth] + namespaces;
        if (!scanner.is_empty_element() && m_depth + 1 < m_in_scope.size())
            m_in_scope[++m_depth] = in_scope;
        m_names += attributes + 1;
        m_attribute_checks += attributes * attributes / 2;
        m_namespace_checks += (attributes + 1) * in_scope;
        m_default_checks += m_defaults * (attributes + m_defaults);
        require(m_attribute_checks <= limits::max_attribute_checks, refusal_t::attributes);
        require_of_tree(m_ids <= limits::max_ids, refusal_t::names);
        require_of_tree(m_namespace_checks <= limits::max_namespace_checks, refusal_t::namespaces);
        require_of_tree(m_default_checks <= limits::max_default_checks, refusal_t::defaults);
    }

    void require_of_tree(bool is_within_limits, refusal_t refusal)
    {
        require(is_within_limits || !m_is_tree, refusal);
    }

    void require(bool is_within_limits, refusal_t refusal)
    {
        if (!is_within_limits && m_refusal == refusal_t::none)
            m_refusal = refusal;
    }

    static std::size_t count_different_names(std::string_view document)
    {
        std::unordered_set<std::string_view> names;
        scanner_t scanner(document);
        for (auto token = scanner.next();
             token != scanner_t::token_t::end && names.size() <= limits::max_names;
             token = scanner.next()) {
            if (token == scanner_t::token_t::start_tag || token == scanner_t::token_t::instruction)
                names.insert(scanner.name());
            for (attribute_t attribute; scanner.next_attribute(attribute);)
                names.insert(attribute.name);
        }
        return names.size();
    }

    const bool m_is_tree;
    refusal_t m_refusal = refusal_t::none;
    std::size_t m_names = 0; ///< the same ones included
    std::size_t m_ids = 0;
    std::size_t m_defaults = 0;
    std::size_t m_attribute_checks = 0;
    std::size_t m_namespace_checks = 0;
    std::size_t m_default_checks = 0;
    std::array<std::size_t, max_depth + 2> m_in_scope = {}; ///< namespaces, by depth
    std::size_t m_depth = 0;
};

} // namespace

markup_t inspect_markup(std::string_view document, parse_t parse)
{
    return cost_t(parse).measure(document);
}

} // namespace velmoext_1_4_8

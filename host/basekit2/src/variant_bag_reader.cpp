#include <basekit2/variant_bag.h>

#include "file_content.h"
#include "xml_errors.h"

#include <rova/strings.h>

#include <libxml/dict.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>

#include <exception>
#include <memory>
#include <new>
#include <utility>

namespace basekit2
{

namespace
{

using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;

constexpr std::size_t most_bytes = std::size_t{16} << 20U;
constexpr std::size_t most_text_bytes = 10000000;
constexpr std::size_t most_depth = 256;
// libxml2 compares each attribute of a tag with all before it. How many one tag may have is known
// only when it is read, so one such tag must be bearable with as many as there can be names.
constexpr std::size_t most_attributes = 256;
constexpr std::size_t most_name_bytes = 65536;
constexpr std::size_t thread_bytes = 4096; // more than libxml2 asks for

const char* from_xml(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

struct parser_deleter_t
{
    void operator()(xmlParserCtxt* parser) const
    {
        xmlFreeDoc(parser->myDoc);
        xmlFreeParserCtxt(parser);
    }
};

/// Behind the root, libxml2 takes a zero character, or what its encoding does not admit, for the
/// end.
bool is_used_up(const xmlParserInput& input)
{
    const bool has_undecoded =
        input.buf != nullptr && input.buf->raw != nullptr && xmlBufUse(input.buf->raw) != 0;
    return input.cur == input.end && !has_undecoded;
}

/// Builds the tree of one document from the events of its parse.
class tree_reader_t
{
public:
    /// A null root stands for any name.
    explicit tree_reader_t(const wchar_t* root)
        : m_has_root(root != nullptr), m_root(root != nullptr ? utf16_to_utf8(root) : std::string())
    {}

    bool read(const std::string& bytes);

    /// What read() has built where it succeeded.
    variant_bag_t& tree() { return m_tree; }

private:
    struct open_bag_t
    {
        variant_bag_t* bag;
        std::string text;
    };

    bool parse(const std::string& bytes);
    bool has_too_many_names() const;

    static xmlSAXHandler make_table();

    static void on_document_type(void* reader, const xmlChar* name, const xmlChar* public_id,
                                 const xmlChar* system_id);
    static void on_start(void* reader, const xmlChar* name, const xmlChar** attributes);
    static void on_end(void* reader, const xmlChar* name);
    static void on_text(void* reader, const xmlChar* text, int length);

    template <typename Step>
    void guard(const Step& step) noexcept;

    bool start(const std::string& name, const xmlChar** attributes);
    bool end();
    bool add_text(const xmlChar* text, std::size_t length);
    variant_bag_t* open_bag(const std::string& name);

    std::unique_ptr<xmlParserCtxt, parser_deleter_t> m_parser;
    bool m_has_root;
    std::string m_root;
    variant_bag_t m_tree;
    /// From the root down. A bag is moved only by one that is added beside it, and none is as long
    /// as it is open.
    std::vector<open_bag_t> m_open;
    bool m_has_refused = false;
    std::exception_ptr m_failure; ///< what was thrown first
};

bool tree_reader_t::read(const std::string& bytes)
{
    xml_errors_t errors;
    const bool is_parsed = parse(bytes);
    if (m_failure)
        std::rethrow_exception(m_failure);
    if (errors.has_lacked_memory() && !has_too_many_names())
        throw std::bad_alloc();
    return is_parsed && !errors.has_failed();
}

bool tree_reader_t::parse(const std::string& bytes)
{
    m_parser.reset(xmlCreateMemoryParserCtxt(bytes.data(), static_cast<int>(bytes.size())));
    if (!m_parser)
        return false;
    // XML_PARSE_NOENT: without it the references to "&" stay written out in attributes. There are
    // no entities but XML's own, as a document type declaration ends the parse.
    xmlCtxtUseOptions(m_parser.get(), XML_PARSE_NONET | XML_PARSE_NOENT);
    *m_parser->sax = make_table();
    m_parser->userData = this;
    xmlDictSetLimit(m_parser->dict, most_name_bytes);
    xmlParseDocument(m_parser.get());
    return m_parser->wellFormed != 0 && !m_has_refused && is_used_up(*m_parser->input);
}

// libxml2 tells of them as of a lack of memory.
bool tree_reader_t::has_too_many_names() const
{
    return m_parser && xmlDictGetUsage(m_parser->dict) > most_name_bytes;
}

xmlSAXHandler tree_reader_t::make_table()
{
    xmlSAXHandler table = {};
    table.internalSubset = on_document_type;
    table.startElement = on_start;
    table.endElement = on_end;
    table.characters = on_text;
    table.ignorableWhitespace = on_text;
    table.cdataBlock = on_text;
    // Marked as a table of the first SAX: names then arrive as they are written.
    table.initialized = 1;
    return table;
}

void tree_reader_t::on_document_type(void* reader, const xmlChar* /*name*/,
                                     const xmlChar* /*public_id*/, const xmlChar* /*system_id*/)
{
    static_cast<tree_reader_t*>(reader)->guard([] { return false; });
}

void tree_reader_t::on_start(void* reader, const xmlChar* name, const xmlChar** attributes)
{
    auto& self = *static_cast<tree_reader_t*>(reader);
    self.guard([&] { return self.start(from_xml(name), attributes); });
}

void tree_reader_t::on_end(void* reader, const xmlChar* /*name*/)
{
    auto& self = *static_cast<tree_reader_t*>(reader);
    self.guard([&] { return self.end(); });
}

void tree_reader_t::on_text(void* reader, const xmlChar* text, int length)
{
    auto& self = *static_cast<tree_reader_t*>(reader);
    self.guard([&] { return self.add_text(text, static_cast<std::size_t>(length)); });
}

// libxml2's frames know nothing of exceptions: none may fly through them. Behind an error it still
// tells of texts, though no longer of the elements that they are in.
template <typename Step>
void tree_reader_t::guard(const Step& step) noexcept
{
    if (m_parser->disableSAX != 0)
        return;
    try {
        m_has_refused = !step();
    } catch (...) {
        m_failure = std::current_exception();
    }
    if (m_has_refused || m_failure)
        stop_parser(*m_parser);
}

bool tree_reader_t::start(const std::string& name, const xmlChar** attributes)
{
    variant_bag_t* const bag = open_bag(name);
    if (bag == nullptr)
        return false;
    std::size_t count = 0;
    for (const xmlChar** at = attributes; at != nullptr && at[0] != nullptr; at += 2) {
        if (++count > most_attributes || at[1] == nullptr)
            return false;
        bag->add_value(utf8_to_utf16(from_xml(at[0])), utf8_to_utf16(from_xml(at[1])));
    }
    return true;
}

variant_bag_t* tree_reader_t::open_bag(const std::string& name)
{
    const bool is_root = m_open.empty();
    if (m_open.size() == most_depth || (is_root && m_has_root && name != m_root))
        return nullptr;
    variant_bag_t* const bag = is_root ? &m_tree : &m_open.back().bag->add_bag(utf8_to_utf16(name));
    m_open.push_back({bag, std::string()});
    return bag;
}

bool tree_reader_t::end()
{
    const open_bag_t& closed = m_open.back();
    if (closed.text.find_first_not_of(" \t\r\n") != std::string::npos)
        closed.bag->add_value(std::wstring(), utf8_to_utf16(closed.text));
    m_open.pop_back();
    return true;
}

bool tree_reader_t::add_text(const xmlChar* text, std::size_t length)
{
    std::string& joined = m_open.back().text;
    joined.append(from_xml(text), length);
    return joined.size() <= most_text_bytes;
}

// libxml2 keeps something of each thread from its first use on, and ends the process where there is
// no memory for that. Asked for here, its lack is told, and what is given back is there for it.
void require_memory_for_thread()
{
    ::operator delete(::operator new(thread_bytes));
}

/// libxml2 would do so by itself, but not safely in two threads at once.
void initialize_xml_library()
{
    thread_local bool is_ready = false;
    if (is_ready)
        return;
    require_memory_for_thread();
    static const bool is_initialized = (xmlInitParser(), true);
    static_cast<void>(is_initialized);
    // Has libxml2 make what it keeps of this thread.
    const xml_errors_t errors;
    is_ready = true;
}

} // namespace

std::uint32_t load_variant_bag2(variant_bag_t& bag, const std::wstring& file, const wchar_t* root,
                                bool allow_missing)
{
    initialize_xml_library();
    std::string bytes;
    const content_t content = read_content(file, most_bytes, bytes);
    tree_reader_t reader(root);
    const bool is_loaded = content == content_t::missing
                               ? allow_missing
                               : content == content_t::read && reader.read(bytes);
    if (!is_loaded)
        return load_failed;
    bag = std::move(reader.tree());
    return 0;
}

} // namespace basekit2

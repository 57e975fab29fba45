#include <basekit2/variant_bag.h>

#include "bag_limits.h"
#include "file_content.h"
#include "xml_errors.h"

#include <rova/strings.h>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace basekit2
{

namespace
{

using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;

constexpr std::size_t thread_bytes = 4096; // more than libxml2 allocates per thread

const char* from_xml(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

struct parser_deleter_t
{
    void operator()(xmlParserCtxt* parser) const
    {
        // Also frees the document that libxml2 creates at an entity's declaration.
        xmlCtxtReset(parser);
        xmlFreeParserCtxt(parser);
    }
};

/// Builds the tree of one document from the events of its parse.
class tree_reader_t
{
public:
    /// A null root accepts any root name.
    explicit tree_reader_t(const wchar_t* root)
        : m_has_root(root != nullptr), m_root(root != nullptr ? utf16_to_utf8(root) : std::string())
    {}

    bool read(const std::string& bytes);

    /// Returns the tree: empty before read(), incomplete if it failed.
    variant_bag_t& tree() { return m_tree; }

private:
    struct open_bag_t
    {
        variant_bag_t* bag;
        std::string text;
    };

    bool parse(const std::string& bytes);
    bool has_ended() const;
    bool has_too_many_names() const;

    static xmlSAXHandler make_table();

    static int on_read(void* reader, char* buffer, int size);
    static void on_document(void* reader);
    static void on_document_type(void* reader, const xmlChar* name, const xmlChar* public_id,
                                 const xmlChar* system_id);
    static void on_start(void* reader, const xmlChar* name, const xmlChar** attributes);
    static void on_end(void* reader, const xmlChar* name);
    static void on_text(void* reader, const xmlChar* text, int length);
    static void on_comment(void* reader, const xmlChar* text);
    static void on_instruction(void* reader, const xmlChar* target, const xmlChar* data);

    template <typename Step>
    void guard(const Step& step) noexcept;

    bool start(const std::string& name, const xmlChar** attributes);
    bool end();
    bool add_text(const xmlChar* text, std::size_t length);
    variant_bag_t* open_bag(const std::string& name);

    xml_errors_t m_errors;
    std::unique_ptr<xmlParserCtxt, parser_deleter_t> m_parser;
    std::string_view m_unread;
    std::size_t m_equals_since_event = 0; ///< equals signs that were read since the last event
    std::size_t m_compared_bytes = 0;
    bool m_has_root;
    std::string m_root;
    variant_bag_t m_tree;
    /// From the root down. The pointers stay valid: only adding a sibling moves a bag, and an open
    /// bag gets no sibling.
    std::vector<open_bag_t> m_open;
    bool m_has_refused = false;
    std::exception_ptr m_failure; ///< the first exception of a callback
};

bool tree_reader_t::read(const std::string& bytes)
{
    const bool is_parsed = parse(bytes);
    if (m_failure)
        std::rethrow_exception(m_failure);
    if (m_errors.has_run_out_of_memory() && !has_too_many_names())
        throw std::bad_alloc();
    return is_parsed && !m_errors.has_failed() && !m_has_refused;
}

bool tree_reader_t::parse(const std::string& bytes)
{
    m_unread = bytes;
    xmlSAXHandler table = make_table();
    m_parser.reset(
        xmlCreateIOParserCtxt(&table, this, on_read, nullptr, this, XML_CHAR_ENCODING_NONE));
    if (!m_parser)
        throw std::bad_alloc();
    // Without XML_PARSE_NOENT, references to "&" are not replaced in attributes. Only XML's
    // predefined entities exist, as the table has no function that looks others up.
    xmlCtxtUseOptions(m_parser.get(), XML_PARSE_NONET | XML_PARSE_NOENT);
    return xmlParseDocument(m_parser.get()) == 0 && is_used_up(*m_parser, bytes.size());
}

// libxml2 reports too many names as an allocation failure.
bool tree_reader_t::has_too_many_names() const
{
    return xmlDictGetUsage(dictionary_of(*m_parser)) > limits::max_name_bytes;
}

bool tree_reader_t::has_ended() const
{
    return m_has_refused || m_failure || m_errors.has_failed();
}

// Ends the input at the first fault. Otherwise libxml2 would compare each repeat of an attribute
// with all attributes of its tag. Ends it also in a tag with too many attributes, of which each has
// an equals sign: libxml2 reports them only at the end of the tag. xmlStopParser() cannot be used:
// before 2.14, it frees the input, which libxml2 still reads after some errors.
int tree_reader_t::on_read(void* reader, char* buffer, int size)
{
    auto& self = *static_cast<tree_reader_t*>(reader);
    if (self.has_ended())
        return 0;
    if (self.m_equals_since_event > limits::max_element_attributes) {
        self.m_has_refused = true;
        return 0;
    }
    const std::size_t count = self.m_unread.copy(buffer, static_cast<std::size_t>(size));
    self.m_unread.remove_prefix(count);
    self.m_equals_since_event += static_cast<std::size_t>(std::count(buffer, buffer + count, '='));
    return static_cast<int>(count);
}

// Sets the limit here and not earlier: since 2.13, each parse begins with libxml2's own limit.
void tree_reader_t::on_document(void* reader)
{
    const auto& self = *static_cast<tree_reader_t*>(reader);
    xmlDictSetLimit(dictionary_of(*self.m_parser), limits::max_name_bytes);
}

xmlSAXHandler tree_reader_t::make_table()
{
    xmlSAXHandler table = {};
    table.startDocument = on_document;
    table.internalSubset = on_document_type;
    table.startElement = on_start;
    table.endElement = on_end;
    table.characters = on_text;
    table.ignorableWhitespace = on_text;
    table.cdataBlock = on_text;
    table.comment = on_comment;
    table.processingInstruction = on_instruction;
    // Marks the table as SAX1, which reports names as they are written.
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

// Comments and instructions are ignored; they only end a series of equals signs.
void tree_reader_t::on_comment(void* reader, const xmlChar* /*text*/)
{
    static_cast<tree_reader_t*>(reader)->m_equals_since_event = 0;
}

void tree_reader_t::on_instruction(void* reader, const xmlChar* /*target*/, const xmlChar* /*data*/)
{
    static_cast<tree_reader_t*>(reader)->m_equals_since_event = 0;
}

// Keeps exceptions out of libxml2's frames. Ignores events after an error: libxml2 still reports
// texts then, but no longer the elements that contain them.
template <typename Step>
void tree_reader_t::guard(const Step& step) noexcept
{
    if (has_ended())
        return;
    m_equals_since_event = 0;
    try {
        m_has_refused = !step();
    } catch (...) {
        m_failure = std::current_exception();
    }
}

bool tree_reader_t::start(const std::string& name, const xmlChar** attributes)
{
    variant_bag_t* const bag = open_bag(name);
    if (bag == nullptr)
        return false;
    std::size_t count = 0;
    std::size_t name_bytes = 0;
    for (const xmlChar** at = attributes; at != nullptr && at[0] != nullptr; at += 2) {
        if (++count > limits::max_element_attributes || at[1] == nullptr)
            return false;
        name_bytes += std::strlen(from_xml(at[0]));
        bag->add_value(utf8_to_utf16(from_xml(at[0])), utf8_to_utf16(from_xml(at[1])));
    }
    m_compared_bytes += count * name_bytes / 2;
    return m_compared_bytes <= limits::max_compared_bytes;
}

variant_bag_t* tree_reader_t::open_bag(const std::string& name)
{
    const bool is_root = m_open.empty();
    if (m_open.size() == limits::max_element_depth || (is_root && m_has_root && name != m_root))
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
    return joined.size() <= limits::max_value_bytes;
}

// libxml2 allocates data per thread on first use, and ends the process if that fails. An allocation
// here throws std::bad_alloc instead, and leaves its memory free for libxml2.
void require_memory_for_thread()
{
    ::operator delete(::operator new(thread_bytes));
}

// Initialized on loading, when a program seldom has other threads: libxml2 reads without a lock
// whether it is initialized, and another user of it can do the same at that time.
[[maybe_unused]] const bool is_initialized = (xmlInitParser(), true);

/// Lets libxml2 allocate its data of this thread.
void initialize_thread()
{
    thread_local bool is_ready = false;
    if (is_ready)
        return;
    require_memory_for_thread();
    const xml_errors_t errors;
    is_ready = true;
}

} // namespace

std::uint32_t load_variant_bag2(variant_bag_t& bag, const std::wstring& file, const wchar_t* root,
                                bool allow_missing)
{
    initialize_thread();
    std::string bytes;
    const content_t content = read_content(file, limits::max_file_bytes, bytes);
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

#include "storage/log_file_reader.h"

#include "storage/file_descriptor.h"
#include "xml/declared_encoding.h"
#include "xml/document_type.h"
#include "xml/start_tags.h"

#include <rova/strings.h>

#include <algorithm>
#include <climits>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

// libxml2 looks ahead by 250 bytes. Where the text ends within them it looks back as well, and
// gives up when the last tag with a long attribute lies behind the first 10,000,000 bytes. White
// space behind the text, which no message notices, keeps it from looking.
const std::size_t lookahead = 300;
const std::size_t first_bytes = 9000000;

const std::size_t longest_text = INT_MAX;

// A zero ends the text, as does the last tag: what follows it is not complete.
void cut(std::string& text)
{
    text.resize(std::min(text.find('\0'), text.size()));
    text.resize(text.rfind('>') + 1);
}

} // namespace

log_file_reader::log_file_reader(std::string file_name) : m_file_name(std::move(file_name)) {}

void log_file_reader::set_callback(const log_sax_reader::message_callback_t& callback)
{
    m_sax.set_callback(callback);
}

bool log_file_reader::parse()
{
    std::string text = read_new_text();
    cut(text);
    cut_hidden_markup(text);
    leave_out_excess_attributes(text);
    cut_long_document_type(text);
    if (text.size() > first_bytes && text.size() <= longest_text - lookahead)
        text.append(lookahead, '\n');
    return m_sax.parse(text) >= 0;
}

std::string log_file_reader::read_new_text()
{
    file_descriptor_t file;
    if (!file.open(true, basekit2::path_t(ROVA_2_18::strings::utf8_to_utf16(m_file_name))))
        return std::string();
    const std::int64_t count = file.size() - m_position;
    if (count <= 0 || count > static_cast<std::int64_t>(longest_text))
        return std::string();
    std::string text;
    text.reserve(static_cast<std::size_t>(count) + lookahead);
    file.read(m_position, static_cast<std::size_t>(count), text);
    m_position += static_cast<std::int64_t>(text.size());
    return text;
}

} // namespace velmoext_1_4_8

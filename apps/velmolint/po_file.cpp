#include "po_file.h"

#include "catalog_header.h"
#include "charset.h"
#include "output_text.h"
#include "po_scan.h"
#include "scratch_file.h"

#include <gettext-po.h>

#include <algorithm>
#include <csetjmp>
#include <cstddef>
#include <cstring>
#include <exception>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace velmolint
{
namespace
{

const char byte_order_mark[] = "\xEF\xBB\xBF";

struct po_deleter_t
{
    void operator()(po_file* file) const { po_file_free(file); }
};
typedef std::unique_ptr<po_file, po_deleter_t> po_owner_t;

struct iterator_deleter_t
{
    void operator()(po_message_iterator_t iterator) const { po_message_iterator_free(iterator); }
};
typedef std::unique_ptr<std::remove_pointer_t<po_message_iterator_t>, iterator_deleter_t>
    iterator_owner_t;

/// The errors of one read. gettext's handlers have no parameter for it.
struct po_errors_t
{
    const std::string* file = nullptr;
    findings_t* findings = nullptr;
    bool has_failed = false;
    std::exception_ptr failure;
    std::jmp_buf on_fatal = {};
};

po_errors_t* current_errors = nullptr;

std::string one_line(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    return trimmed(text);
}

position_t to_position(std::size_t line, std::size_t column)
{
    const auto unknown = static_cast<std::size_t>(-1);
    if (line == unknown || line == 0)
        return {};
    return {line, column == unknown ? 0 : column};
}

/// Keeps exceptions out of gettext's frames. Its warnings are about charsets, which are checked
/// elsewhere.
void add_error(int severity, const char* file, std::size_t line, std::size_t column,
               const char* text) noexcept
{
    po_errors_t& errors = *current_errors;
    if (severity == PO_SEVERITY_WARNING)
        return;
    errors.has_failed = true;
    try {
        errors.findings->error(
            {*errors.file, file != nullptr ? to_position(line, column) : position_t()}, "po-syntax",
            "msgfmt would fail: " + one_line(text) + ".");
    } catch (...) {
        errors.failure = std::current_exception();
    }
}

// gettext ends the process if the handler returns from a fatal error. No frame between here and
// setjmp has a destructor.
void end_if_fatal(int severity)
{
    if (severity == PO_SEVERITY_FATAL_ERROR)
        std::longjmp(current_errors->on_fatal, 1); // NOLINT(cert-err52-cpp)
}

void on_error(int severity, po_message_t /*message*/, const char* file, std::size_t line,
              std::size_t column, int /*is_multiline*/, const char* text)
{
    add_error(severity, file, line, column, text);
    end_if_fatal(severity);
}

void on_error_pair(int severity, po_message_t message, const char* file, std::size_t line,
                   std::size_t column, int is_multiline, const char* text,
                   po_message_t /*other_message*/, const char* /*other_file*/,
                   std::size_t /*other_line*/, std::size_t /*other_column*/,
                   int /*is_other_multiline*/, const char* /*other_text*/)
{
    on_error(severity, message, file, line, column, is_multiline, text);
}

po_file* read_until_fatal(const char* name, po_errors_t& errors)
{
    static const po_xerror_handler handler = {on_error, on_error_pair};
    if (setjmp(errors.on_fatal) != 0) // NOLINT(cert-err52-cpp)
        return nullptr;
    return po_file_read(name, &handler);
}

/// Returns null, with findings, if the file has an error.
po_owner_t parse(const std::string& file, const std::string& text, findings_t& findings)
{
    const scratch_file_t scratch(text);
    po_errors_t errors;
    errors.file = &file;
    errors.findings = &findings;
    current_errors = &errors;
    po_owner_t parsed(read_until_fatal(scratch.name().c_str(), errors));
    current_errors = nullptr;
    if (errors.failure)
        std::rethrow_exception(errors.failure);
    if (!parsed && !errors.has_failed)
        findings.error({file, {}}, "po-syntax", "gettext cannot read the file.");
    return errors.has_failed ? nullptr : std::move(parsed);
}

std::string to_string(const char* text)
{
    return text != nullptr ? text : "";
}

text_t to_text(po_message_t message)
{
    text_t text;
    text.id = to_string(po_message_msgid(message));
    text.has_context = po_message_msgctxt(message) != nullptr;
    text.is_plural = po_message_msgid_plural(message) != nullptr;
    text.is_fuzzy = po_message_is_fuzzy(message) != 0;
    text.text = to_string(text.is_plural ? po_message_msgstr_plural(message, 0)
                                         : po_message_msgstr(message));
    return text;
}

void add_texts(std::vector<text_t>& texts, po_file* file, const char* domain)
{
    const iterator_owner_t iterator(po_message_iterator(file, domain));
    while (po_message_t message = po_next_message(iterator.get()))
        if (po_message_is_obsolete(message) == 0)
            texts.push_back(to_text(message));
}

/// Returns the texts of all domains: msgfmt ignores the domains if it is given an output file.
std::vector<text_t> all_texts(po_file* file)
{
    std::vector<text_t> texts;
    for (const char* const* domain = po_file_domains(file); *domain != nullptr; ++domain)
        add_texts(texts, file, *domain);
    return texts;
}

void add_positions(std::vector<text_t>& texts, const std::vector<po_scan_t::entry_t>& entries)
{
    if (texts.size() != entries.size())
        return; // a domain occurs twice
    for (std::size_t i = 0; i != texts.size(); ++i) {
        texts[i].id_position = entries[i].id;
        texts[i].text_position = entries[i].text;
    }
}

catalog_content_t split_header(std::vector<text_t> texts)
{
    catalog_content_t content;
    const auto header = std::find_if(texts.begin(), texts.end(), [](const text_t& text) {
        return text.id.empty() && !text.has_context;
    });
    if (header != texts.end()) {
        content.header_language = find_language(header->text);
        content.header_position = header->id_position;
        texts.erase(header);
    }
    content.texts = std::move(texts);
    return content;
}

/// Replaces the charset of the header, since the text was converted.
std::string with_utf8_header(const po_scan_t& scan, const std::string& charset)
{
    const std::string field = "charset=" + charset;
    const std::size_t found = scan.text.find(field);
    std::string result = scan.text;
    return found < scan.header_size ? result.replace(found, field.size(), "charset=UTF-8") : result;
}

std::string header_of(const po_scan_t& scan)
{
    return scan.text.substr(0, scan.header_size);
}

position_t header_position(const po_scan_t& scan)
{
    return scan.entries.empty() ? position_t() : scan.entries.front().id;
}

/// Returns why gettext could not read the bytes, null if their encoding is not the reason.
const char* wrong_encoding(const std::string& bytes)
{
    if (bytes.find('\0') != std::string::npos)
        return "The file has zero bytes, so it is no .po file in UTF-8. Save it in UTF-8.";
    if (bytes.compare(0, std::strlen(byte_order_mark), byte_order_mark) == 0)
        return "The file begins with a byte order mark, and msgfmt would fail. Save it without "
               "one.";
    return nullptr;
}

} // namespace

std::optional<catalog_content_t> read_po(const std::string& file, const std::string& bytes,
                                         findings_t& findings)
{
    const char* const reason = wrong_encoding(bytes);
    if (reason != nullptr) {
        findings.error({file, {}}, "po-syntax", reason);
        return std::nullopt;
    }
    const po_scan_t unconverted = scan_po(bytes);
    const std::string charset = find_charset(header_of(unconverted));
    const std::optional<std::string> text =
        to_utf8(bytes, charset, {file, header_position(unconverted)}, findings);
    if (!text)
        return std::nullopt;
    const po_scan_t scan = scan_po(*text);
    const po_owner_t parsed = parse(file, with_utf8_header(scan, charset), findings);
    if (!parsed)
        return std::nullopt;
    std::vector<text_t> texts = all_texts(parsed.get());
    add_positions(texts, scan.entries);
    return split_header(std::move(texts));
}

} // namespace velmolint

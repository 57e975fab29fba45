#include "catalog_support.h"

#include <setbook2/message_catalog.h>

#include <filesystem>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

std::string quoted(const std::string& text)
{
    std::string quoted_text;
    for (const char letter : text) {
        if (letter == '"' || letter == '\\')
            quoted_text += '\\';
        quoted_text += letter == '\n' ? "\\n" : std::string(1, letter);
    }
    return '"' + quoted_text + '"';
}

// Runs the program. Returns whether it exited with success.
bool run(std::vector<std::string> words)
{
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t child = 0;
    int status = 0;
    return posix_spawn(&child, arguments.front(), nullptr, nullptr, arguments.data(), environ) ==
               0 &&
           waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

std::string po_of(const po_entries_t& entries)
{
    return po_of("Content-Type: text/plain; charset=UTF-8\n", entries);
}

std::string po_of(const std::string& header, const po_entries_t& entries)
{
    std::string po = "msgid \"\"\nmsgstr " + quoted(header) + "\n";
    for (const auto& [id, text] : entries)
        po += "\nmsgid " + quoted(id) + "\nmsgstr " + quoted(text) + "\n";
    return po;
}

catalogs_t::~catalogs_t()
{
    for (const std::wstring& name : m_names)
        setbook2::registerMessageCatalog(name, nullptr);
    bind(L"c"); // the directory is removed later, its catalogs are released now
}

void catalogs_t::make(const std::string& locale, const std::string& name, const std::string& po,
                      const std::vector<std::string>& options) const
{
    m_folder.write("source.po", po);
    std::vector<std::string> words = {MSGFMT, "-o", file(locale, name), m_folder.name("source.po")};
    words.insert(words.end(), options.begin(), options.end());
    if (!run(words))
        throw std::runtime_error("msgfmt cannot create a catalog from:\n" + po);
}

std::string catalogs_t::read(const std::string& locale, const std::string& name) const
{
    return m_folder.read("catalogs/" + locale + "/LC_MESSAGES/" + name + ".mo");
}

void catalogs_t::write(const std::string& locale, const std::string& name,
                       const std::string& bytes) const
{
    file(locale, name);
    m_folder.write("catalogs/" + locale + "/LC_MESSAGES/" + name + ".mo", bytes);
}

bool catalogs_t::bind(const std::wstring& locale) const
{
    return setbook2::bindCatalogDirectory(directory(), locale);
}

void catalogs_t::add(const std::wstring& name,
                     const boost::shared_ptr<const ROVA_2_18::i18n::catalog_t>& catalog)
{
    setbook2::registerMessageCatalog(name, catalog);
    m_names.push_back(name);
}

std::string catalogs_t::file(const std::string& locale, const std::string& name) const
{
    std::string path = m_folder.name("catalogs/" + locale + "/LC_MESSAGES/" + name + ".mo");
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    return path;
}

#pragma once

#include "scratch_folder.h"

#include <rova/i18n.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <utility>
#include <vector>

/// Ids and texts, in the order of a `.po` file.
typedef std::vector<std::pair<std::string, std::string>> po_entries_t;

/// Returns a `.po` file in UTF-8.
std::string po_of(const po_entries_t& entries);
/// Returns the same with this header. Its lines end with newlines.
std::string po_of(const std::string& header, const po_entries_t& entries);

/// A directory of message catalogs, and the catalogs that are registered through it. After its
/// destruction none of them is found any more.
class catalogs_t
{
public:
    catalogs_t() = default;
    ~catalogs_t();
    catalogs_t(const catalogs_t&) = delete;
    catalogs_t& operator=(const catalogs_t&) = delete;

    /// Creates LOCALE/LC_MESSAGES/NAME.mo from a `.po` text. Throws if msgfmt fails.
    void make(const std::string& locale, const std::string& name, const std::string& po,
              const std::vector<std::string>& options = {}) const;

    /// Reads the file's bytes unchanged, and replaces them.
    std::string read(const std::string& locale, const std::string& name) const;
    void write(const std::string& locale, const std::string& name, const std::string& bytes) const;

    /// Binds the directory with that locale. Catalogs that were read before are forgotten.
    bool bind(const std::wstring& locale) const;
    /// Registers a catalog under a name until this object is destroyed.
    void add(const std::wstring& name,
             const boost::shared_ptr<const ROVA_2_18::i18n::catalog_t>& catalog);

    /// Returns the name of that file. Creates its directory.
    std::string file(const std::string& locale, const std::string& name) const;
    std::wstring directory() const { return m_folder.wide_name("catalogs"); }

private:
    scratch_folder_t m_folder;
    std::vector<std::wstring> m_names;
};

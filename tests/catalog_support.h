#pragma once

#include "scratch_folder.h"

#include <rova/i18n.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <utility>
#include <vector>

/// Ids and texts, as a `.po` file has them in this order.
typedef std::vector<std::pair<std::string, std::string>> po_entries_t;

/// A `.po` file in UTF-8.
std::string po_of(const po_entries_t& entries);
/// The same with a header of one's own, its lines ended by newlines.
std::string po_of(const std::string& header, const po_entries_t& entries);

/// A directory of message catalogs, and the catalogs that are registered through it. Nothing of it
/// is found any more when it is gone.
class catalogs_t
{
public:
    catalogs_t() = default;
    ~catalogs_t();
    catalogs_t(const catalogs_t&) = delete;
    catalogs_t& operator=(const catalogs_t&) = delete;

    /// Makes LOCALE/LC_MESSAGES/NAME.mo of a `.po` text; throws where msgfmt does not.
    void make(const std::string& locale, const std::string& name, const std::string& po,
              const std::vector<std::string>& options = {}) const;

    /// The file's bytes as they are, and other bytes in its place.
    std::string read(const std::string& locale, const std::string& name) const;
    void write(const std::string& locale, const std::string& name, const std::string& bytes) const;

    /// Looks for the files of that locale from now on; those read so far are forgotten.
    bool bind(const std::wstring& locale) const;
    /// Puts a catalog under a name until this object goes.
    void add(const std::wstring& name,
             const boost::shared_ptr<const ROVA_2_18::i18n::catalog_t>& catalog);

    /// Where that file is; its directory is made.
    std::string file(const std::string& locale, const std::string& name) const;
    std::wstring directory() const { return m_folder.wide_name("catalogs"); }

private:
    scratch_folder_t m_folder;
    std::vector<std::wstring> m_names;
};

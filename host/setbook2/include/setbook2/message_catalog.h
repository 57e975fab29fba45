/// @file
/// The product's message catalogs, by name: catalogs that the application registers, and gettext's
/// `.mo` files in a directory. Operations throw std::bad_alloc only.
///
/// Thread safety: any thread may call getMessageCatalog() at any time. No thread may use a catalog
/// while one is registered or a directory is bound: the returned pointer does not own it.
#pragma once

#include <setbook2/export.h>

#include <rova/i18n.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace setbook2
{

/// Returns the registered catalog with this name, or the one in the file `NAME.mo` of the bound
/// directory. Returns null if there is none; the next call tries again.
///
/// The file is `DIRECTORY/LOCALE/LC_MESSAGES/NAME.mo`, for the bound locale or its first fall-back
/// with such a file: for "de_AT@euro" these are "de@euro", "de_AT" and "de". It is read once.
/// Message ids are compared exactly. A translation is a pattern of ICU's MessageFormat, in the
/// locale of the file. An empty id, and one without a translation, gives an empty text.
///
/// Ignores a file that is not a regular file, has more than 16 MiB, is damaged, or is not as
/// `msgfmt` writes it from a UTF-8 file: with a hash table and without system-dependent strings. A
/// name with a `/` or a zero character has no file.
SETBOOK2_API const ROVA_2_18::i18n::catalog_t* getMessageCatalog(const std::wstring& name);

/// Registers a catalog with this name, or removes it if the pointer is null. The previous catalog
/// is released afterwards; its destructor may call these functions.
SETBOOK2_API void
registerMessageCatalog(const std::wstring& name,
                       boost::shared_ptr<const ROVA_2_18::i18n::catalog_t> catalog);

/// Sets the directory and the locale for files, and forgets the files that were read. The locale is
/// `language[_COUNTRY][.encoding][@variant]`, as in the environment; its encoding is ignored.
/// Returns true even if there is no file for the locale: see getMessageCatalog().
///
/// Returns false, with nothing changed, if the directory is empty or has a zero character, or if
/// the locale has no language or has characters other than ASCII letters, digits, `_`, `-`, `.` and
/// `@`. Files for the locales "C" and "POSIX" are in `c` and `posix`.
SETBOOK2_API bool bindCatalogDirectory(const std::wstring& directory, const std::wstring& locale);

} // namespace setbook2

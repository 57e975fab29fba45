/// @file
/// The product's message catalogs, by name: catalogs that the application registers, and gettext's
/// `.mo` files in a directory. Operations throw std::bad_alloc only.
///
/// Thread safety: any thread may call getMessageCatalog() at any time. No thread may use a catalog
/// while one is registered or a directory is bound: a returned pointer is valid until then.
#pragma once

#include <setbook2/export.h>

#include <rova/i18n.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace setbook2
{

/// Returns the registered catalog with this name, or the one in the files `NAME.mo` of the bound
/// directory. Returns null if there is none. A missing file is looked for once a second at most.
///
/// The files are `DIRECTORY/FOLDER/LC_MESSAGES/NAME.mo`, in the folders of the bound locale and its
/// fall-backs: for "de_AT@euro" these are "de_AT@euro", "de@euro", "de_AT" and "de". They are read
/// once. Each text is that of the first file that has it, as a pattern of ICU's MessageFormat in
/// the locale of that folder. Ids are compared exactly. An empty id, and one without a translation,
/// gives an empty text.
///
/// A file can be in any charset that its header declares and ICU knows; without a declaration it is
/// in UTF-8. Of plural forms the first is used. Texts with a context, and strings that depend on
/// the system, are not found.
///
/// Ignores a file that is not a regular file, has more than 16 MiB or is damaged. A name with a `/`
/// or a zero character has no file.
SETBOOK2_API const ROVA_2_18::i18n::catalog_t* getMessageCatalog(const std::wstring& name);

/// Registers a catalog with this name, or removes it if the pointer is null. The previous catalog
/// is released afterwards; its destructor may call these functions.
SETBOOK2_API void
registerMessageCatalog(const std::wstring& name,
                       boost::shared_ptr<const ROVA_2_18::i18n::catalog_t> catalog);

/// Sets the directory and the locale for files, and forgets the files that were read. The locale is
/// `language[_Script][_COUNTRY][.encoding][@modifier]`, as in the environment, or with `-` instead
/// of
/// `_`. Its encoding is ignored. A modifier that names a script, as in "sr@latin", is the script. A
/// script is spelled as in ICU or, in a folder, also as in gettext: "sr_Latn" or "sr@latin", and
/// "zh_Hant" or "zh_TW".
///
/// Returns true even if no file exists for the locale: see getMessageCatalog(). Returns false, with
/// nothing changed, if the directory is empty or has a zero character, or if the locale has no
/// language of 2 to 8 letters, or has characters other than ASCII letters, digits, `_`, `-`, `.`
/// and
/// `@`. Files for the locales "C" and "POSIX" are in `c` and `posix`.
SETBOOK2_API bool bindCatalogDirectory(const std::wstring& directory, const std::wstring& locale);

} // namespace setbook2

/// @file
/// The product's message catalogs by their names: those that the application registered, and
/// gettext's `.mo` files in a directory.
///
/// Any thread may ask for a catalog at any time. Catalogs are registered, taken back and bound to a
/// directory while nobody uses one: a pointer that was handed out does not own what it points to.
/// Nothing here throws but for lack of memory, and nothing is printed.
#pragma once

#include <setbook2/export.h>

#include <rova/i18n.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace setbook2
{

/// The catalog of that name: the registered one, else the file `NAME.mo` of the bound directory.
/// Null where there is neither; the next call looks again.
///
/// The file is `DIRECTORY/LOCALE/LC_MESSAGES/NAME.mo`, for the bound locale or, where that has
/// none, the next of its fall-backs: for "de_AT@euro" these are "de@euro", "de_AT" and "de". It is
/// read once. Its message ids are looked up exactly; a translation is an ICU MessageFormat pattern
/// in the locale that the file was found for. An empty id, and one without a translation, is an
/// empty message.
///
/// A file is passed over, as if it were not there, where it is no regular file, has more than
/// 16 MiB, is damaged, or is not as `msgfmt` writes it from a UTF-8 file: with a hash table and
/// without strings that depend on the system. A name that holds a `/` or a zero character has no
/// file.
SETBOOK2_API const ROVA_2_18::i18n::catalog_t* getMessageCatalog(const std::wstring& name);

/// Puts a catalog under that name, in place of any other; an empty pointer takes it back. The
/// former one is let go when that is done, and may call these functions from its destructor.
SETBOOK2_API void
registerMessageCatalog(const std::wstring& name,
                       boost::shared_ptr<const ROVA_2_18::i18n::catalog_t> catalog);

/// Looks for files in this directory and locale from now on, and forgets the files that were read.
/// The locale is `language[_COUNTRY][.encoding][@variant]`, as the environment has it; its encoding
/// does not count, nor does what is none of these. True where that was done; neither need be there
/// yet. False, with nothing changed, where the directory is empty or holds a zero character, or the
/// locale has no language or other characters than ASCII letters, digits, `_`, `-`, `.` and `@`.
///
/// "C" and "POSIX" are no languages, but files for them are looked for under `c` and `posix`: what
/// is shown there is the application's choice.
SETBOOK2_API bool bindCatalogDirectory(const std::wstring& directory, const std::wstring& locale);

} // namespace setbook2

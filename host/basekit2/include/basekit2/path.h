/// @file
#pragma once

#include <basekit2/export.h>

#include <string>

namespace basekit2
{

/// The name of a file or directory: a wide text in UTF-16 code units, kept as it was given. The
/// system sees it in UTF-8, whatever the process's locale is. The separator is `/`.
///
/// A text may hold a zero character; no file has such a name, so every operation on files fails
/// with it. Nothing here throws but for lack of memory. Different objects may be used by different
/// threads, one object by one thread at a time unless all of them only read.
class BASEKIT2_API path_t
{
public:
    /// An empty path.
    path_t() = default;
    /// A null pointer gives an empty path. Not explicit: a text is a path wherever one is asked
    /// for.
    path_t(const wchar_t* text); // NOLINT(google-explicit-constructor)
    /// Not explicit, for the same reason.
    path_t(const std::wstring& text); // NOLINT(google-explicit-constructor)

    path_t& assign(const path_t& other);

    /// Joins both texts with exactly one separator in place of all that stand where they meet; an
    /// absolute right side goes below the left one too. Where one side is empty the other is the
    /// result, as it is.
    path_t& append(const path_t& right);

    /// What stands before the last component, without the separators between: empty for a bare
    /// name, `/` for `/x`. A text that ends with a separator has an empty last component, so `a/b/`
    /// gives `a/b`.
    std::wstring get_branch() const;
    /// The last component: what follows the last separator.
    std::wstring get_leaf() const;
    /// Both forms are the same where `/` is the system's own separator.
    std::wstring as_string(bool generic = false) const;

    bool is_empty() const { return m_text.empty(); }

    /// Whether something of that name is there; a link is followed, so one that leads nowhere does
    /// not exist. False too for a text that names nothing, and where the system does not let the
    /// process look.
    static bool exists(const std::wstring& text);

    /// The texts are compared, not the files they name.
    friend bool operator==(const path_t& left, const path_t& right)
    {
        return left.m_text == right.m_text;
    }

    /// The order of the texts' code units.
    friend bool operator<(const path_t& left, const path_t& right)
    {
        return left.m_text < right.m_text;
    }

private:
    std::wstring m_text;
};

} // namespace basekit2

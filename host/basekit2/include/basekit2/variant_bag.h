/// @file
/// Trees of named values, and how they are loaded from XML.
#pragma once

#include <basekit2/export.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace basekit2
{

/// One value: nothing, a wide text, a truth, a whole number or a real one.
///
/// The types T to ask for are `const wchar_t*`, `std::wstring`, `bool`, `std::int64_t` and
/// `double`. Different objects may be used by different threads, one object by several threads that
/// only read.
class BASEKIT2_API variant_t
{
public:
    /// Holds nothing.
    variant_t() = default;
    // Not explicit: each of these is a value wherever one is asked for.
    /// A null pointer gives an empty text.
    variant_t(const wchar_t* text);      // NOLINT(google-explicit-constructor)
    variant_t(const std::wstring& text); // NOLINT(google-explicit-constructor)
    variant_t(bool truth);               // NOLINT(google-explicit-constructor)
    variant_t(std::int64_t number);      // NOLINT(google-explicit-constructor)
    variant_t(double number);            // NOLINT(google-explicit-constructor)
    variant_t(const variant_t& other);
    variant_t(variant_t&& other) noexcept;
    variant_t& operator=(const variant_t& other);
    variant_t& operator=(variant_t&& other) noexcept;
    ~variant_t();

    /// Whether get() has that to give. No kind is taken for another, but a text is there in both
    /// forms.
    template <typename T>
    bool can_get() const;

    /// The value. Where it is of another kind that is the caller's fault: it is reported to the
    /// host's assertion with the text "can_get<T>()", and the answer is an empty text, false or
    /// zero. A pointer stays valid as long as this object lives unchanged.
    template <typename T>
    T get() const;

private:
    std::variant<std::monostate, std::wstring, bool, std::int64_t, double> m_value;
};

/// A tree: named values and named bags below, each in its order; a name may stand there more than
/// once. The one value without a name is the bag's text. Copies are deep.
///
/// Several threads may read one bag, but nobody may read or write it while another thread writes.
/// Walking iterators, and what they refer to, stay valid as long as the bag lives unchanged.
class BASEKIT2_API variant_bag_t
{
public:
    class value_iterator;
    class const_iterator;

    variant_bag_t();
    variant_bag_t(const variant_bag_t& other);
    variant_bag_t(variant_bag_t&& other) noexcept;
    variant_bag_t& operator=(const variant_bag_t& other);
    variant_bag_t& operator=(variant_bag_t&& other) noexcept;
    ~variant_bag_t();

    /// Puts a value behind the others; an empty name makes it the bag's text.
    void add_value(const std::wstring& name, const variant_t& value);
    /// Puts an empty bag behind the others. The reference stays valid until the next bag is added
    /// to this one.
    variant_bag_t& add_bag(const std::wstring& name);

    /// Whether there is a value of that name.
    bool has(const std::wstring& name) const;
    /// The first value of that name, valid as long as the bag lives unchanged. Where there is none,
    /// the default itself: one that is made for the call is gone with the expression of the call.
    const variant_t& get_variant(const std::wstring& name, const variant_t& default_value) const;

    /// Walks over the values.
    value_iterator begin_values() const;
    /// Walks over all bags directly below.
    const_iterator begin_bags() const;
    /// Walks over the bags of that name directly below.
    const_iterator begin_by_name(const std::wstring& name) const;

private:
    struct named_value_t;
    struct named_bag_t;

    std::vector<named_value_t> m_values;
    std::vector<named_bag_t> m_bags;
};

/// A walk over a bag's values, in their order. Past the end, only at_end() may be asked.
class BASEKIT2_API variant_bag_t::value_iterator
{
public:
    bool at_end() const;
    void next();
    const std::wstring& get_name() const;
    const variant_t& get_value() const;

private:
    friend class variant_bag_t;
    explicit value_iterator(const variant_bag_t& bag);

    const variant_bag_t* m_bag;
    std::size_t m_at = 0;
};

/// A walk over the bags directly below a bag, in their order. Past the end, only at_end() may be
/// asked.
class BASEKIT2_API variant_bag_t::const_iterator
{
public:
    bool at_end() const;
    void next();
    const std::wstring& get_name() const;
    const variant_bag_t& get_value() const;

private:
    friend class variant_bag_t;
    const_iterator(const variant_bag_t& bag, const std::wstring* name);

    void skip_others();

    const variant_bag_t* m_bag;
    std::optional<std::wstring> m_name; ///< of the bags to stop at; nothing for all
    std::size_t m_at = 0;
};

/// The bit of load_variant_bag2()'s status that is set when nothing was loaded.
constexpr std::uint32_t load_failed = std::uint32_t{1} << 30U;

/// Loads a tree from an XML file. An element is a bag named after its tag, an attribute a named
/// value, an element's own text its value without a name, behind the attributes; all values are
/// wide texts. The root element is `bag` itself. The pieces of a text between child elements,
/// CDATA sections and character references included, are joined; text that is white space only is
/// left out, any other stays as it is. Comments and processing instructions are left out; names
/// with a colon and `xmlns` attributes are names like any other.
///
/// Answers 0 where that was done. Otherwise the bit load_failed is set and `bag` is unchanged:
/// - the file is missing, may not be read, is no regular file or has more than 16 MiB;
/// - it is no well-formed XML, or is beyond libxml2's limits: elements deeper than 256, a value or
///   a stretch without elements of more than 10,000,000 bytes;
/// - an element has more than 256 attributes, or the file's names take more than about 64 KiB
///   together, each different name counted once: libxml2 needs the square of them;
/// - it has a document type declaration;
/// - its root has another name than `root`; null stands for any name.
///
/// With `allow_missing`, a file that is not there is an empty bag: `bag` is emptied and the answer
/// is 0. Nothing is fetched, nothing printed, and nothing thrown but for lack of memory. Any thread
/// may call at any time, for different bags.
BASEKIT2_API std::uint32_t load_variant_bag2(variant_bag_t& bag, const std::wstring& file,
                                             const wchar_t* root, bool allow_missing);

} // namespace basekit2

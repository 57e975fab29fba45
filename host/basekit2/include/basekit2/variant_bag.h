/// @file
/// Trees of named values, and a loader from XML.
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

/// A value: none, a wide text, a boolean, an integer or a floating-point number. The types T of
/// can_get() and get() are `const wchar_t*`, `std::wstring`, `bool`, `std::int64_t` and `double`.
///
/// Thread safety: not synchronized. Any number of threads may read an object if none modifies it.
class BASEKIT2_API variant_t
{
public:
    /// Creates an object without a value.
    variant_t() = default;
    // Not explicit: each of these types converts to a value.
    /// Null is an empty text.
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

    /// Returns whether the value has this type. There are no conversions, except between the two
    /// types of texts.
    template <typename T>
    bool can_get() const;

    /// Returns the value. If it has another type, reports the assertion "can_get<T>()" and returns
    /// an empty text, false or zero. A returned pointer is valid until the object is modified or
    /// destroyed.
    template <typename T>
    T get() const;

private:
    std::variant<std::monostate, std::wstring, bool, std::int64_t, double> m_value;
};

/// A tree: an ordered list of named values and one of named child bags. Names can repeat. The value
/// without a name is the text of the bag. Copies are independent.
///
/// Iterators, and references from them, are valid until the bag is modified or destroyed.
///
/// Thread safety: not synchronized. Any number of threads may read a bag if none modifies it.
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

    /// Appends a value. A value with an empty name is the text of the bag.
    void add_value(const std::wstring& name, const variant_t& value);
    /// Appends an empty child bag and returns it. The reference is valid until the next bag is
    /// appended to this one.
    variant_bag_t& add_bag(const std::wstring& name);

    /// Returns whether there is a value with this name.
    bool has(const std::wstring& name) const;
    /// Returns the first value with this name, valid until the bag is modified or destroyed. If
    /// there is none, returns `default_value` itself: a temporary is destroyed with the full
    /// expression of the call.
    const variant_t& get_variant(const std::wstring& name, const variant_t& default_value) const;

    /// Returns an iterator over the values.
    value_iterator begin_values() const;
    /// Returns an iterator over the child bags.
    const_iterator begin_bags() const;
    /// Returns an iterator over the child bags with this name.
    const_iterator begin_by_name(const std::wstring& name) const;

private:
    struct named_value_t;
    struct named_bag_t;

    std::vector<named_value_t> m_values;
    std::vector<named_bag_t> m_bags;
};

/// Iterator over the values of a bag, in their order. At the end, only at_end() may be called.
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

/// Iterator over the child bags of a bag, in their order. At the end, only at_end() may be called.
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
    std::optional<std::wstring> m_name; ///< of the bags; all if it is not set
    std::size_t m_at = 0;
};

/// The bit in the status of load_variant_bag2() that reports a failure.
constexpr std::uint32_t load_failed = std::uint32_t{1} << 30U;

/// Loads a tree from an XML file. The root element is `bag` itself, a child element is a bag named
/// after its tag, an attribute is a named value. The text of an element is its value without a
/// name, after the attributes: all text between child elements, joined. White space alone is
/// dropped. Comments and processing instructions are ignored. Names with a colon and `xmlns`
/// attributes are ordinary names. All values are wide texts.
///
/// Returns 0 on success. Otherwise returns a status with the bit load_failed, and `bag` is
/// unchanged:
/// - the file is missing, cannot be read, is not a regular file or has more than 16 MiB;
/// - it is not well-formed XML;
/// - it exceeds a limit of libxml2: elements deeper than 256, or a value or text of more than
///   10,000,000 bytes between elements;
/// - it has more than 10,000 equals signs in one tag, comment, instruction or section; or its names
///   exceed the limits of docs/limits.md, in which libxml2's time is quadratic;
/// - it has a document type declaration;
/// - its root element is not named `root`; null accepts any name.
///
/// If `allow_missing` is true and the file does not exist, clears `bag` and returns 0. Opens no
/// other file. Throws std::bad_alloc only. Any thread may call it at any time, for different bags.
BASEKIT2_API std::uint32_t load_variant_bag2(variant_bag_t& bag, const std::wstring& file,
                                             const wchar_t* root, bool allow_missing);

} // namespace basekit2

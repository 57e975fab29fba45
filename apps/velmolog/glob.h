#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmolog
{

/// A pattern for texts: `*` is any text, `?` any character, `[a-z]` one of these characters and
/// `[!a-z]` any other one. A backslash makes the next character an ordinary one.
///
/// Upper and lower case differ. Takes time in proportion to the text and to the pattern.
class glob_t
{
public:
    explicit glob_t(std::string_view pattern);

    /// Returns whether the whole text is as in the pattern.
    bool matches(std::string_view text) const;

    /// Returns whether the pattern is an ordinary text.
    bool is_literal() const;
    /// Returns that text, without the backslashes.
    std::string literal() const;

private:
    struct range_t
    {
        char32_t first;
        char32_t last;
    };
    /// An element of the pattern.
    struct element_t
    {
        enum class kind_t
        {
            any_text,
            character, ///< that of its only range
            set
        };
        kind_t kind;
        bool is_negated;
        std::vector<range_t> ranges;

        bool accepts(char32_t character) const;
    };

    static element_t read_set(const std::u32string& pattern, std::size_t& next);
    static element_t single(char32_t character);

    std::vector<element_t> m_elements;
};

/// Returns the characters of a text in UTF-8. Malformed bytes become U+FFFD.
std::u32string characters_of(std::string_view text);

} // namespace velmolog

#include <basekit2/variant_bag.h>

#include <algorithm>
#include <utility>

namespace basekit2
{

struct variant_bag_t::named_value_t
{
    std::wstring name;
    variant_t value;
};

struct variant_bag_t::named_bag_t
{
    std::wstring name;
    variant_bag_t bag;
};

variant_bag_t::variant_bag_t() = default;
variant_bag_t::variant_bag_t(const variant_bag_t&) = default;
variant_bag_t::variant_bag_t(variant_bag_t&&) noexcept = default;
variant_bag_t::~variant_bag_t() = default;

variant_bag_t& variant_bag_t::operator=(const variant_bag_t& other)
{
    variant_bag_t copy(other);
    return *this = std::move(copy);
}

// Moves the other bag out first: it may be a descendant of this one, and would be destroyed with
// this one's former content.
variant_bag_t& variant_bag_t::operator=(variant_bag_t&& other) noexcept
{
    variant_bag_t taken(std::move(other));
    m_values.swap(taken.m_values);
    m_bags.swap(taken.m_bags);
    return *this;
}

void variant_bag_t::add_value(const std::wstring& name, const variant_t& value)
{
    m_values.push_back({name, value});
}

variant_bag_t& variant_bag_t::add_bag(const std::wstring& name)
{
    m_bags.push_back({name, variant_bag_t()});
    return m_bags.back().bag;
}

bool variant_bag_t::has(const std::wstring& name) const
{
    return std::any_of(m_values.begin(), m_values.end(),
                       [&](const named_value_t& value) { return value.name == name; });
}

const variant_t& variant_bag_t::get_variant(const std::wstring& name,
                                            const variant_t& default_value) const
{
    const auto found = std::find_if(m_values.begin(), m_values.end(),
                                    [&](const named_value_t& value) { return value.name == name; });
    return found != m_values.end() ? found->value : default_value;
}

variant_bag_t::value_iterator variant_bag_t::begin_values() const
{
    return value_iterator(*this);
}

variant_bag_t::const_iterator variant_bag_t::begin_bags() const
{
    return const_iterator(*this, nullptr);
}

variant_bag_t::const_iterator variant_bag_t::begin_by_name(const std::wstring& name) const
{
    return const_iterator(*this, &name);
}

variant_bag_t::value_iterator::value_iterator(const variant_bag_t& bag) : m_bag(&bag) {}

bool variant_bag_t::value_iterator::at_end() const
{
    return m_at == m_bag->m_values.size();
}

void variant_bag_t::value_iterator::next()
{
    ++m_at;
}

const std::wstring& variant_bag_t::value_iterator::get_name() const
{
    return m_bag->m_values[m_at].name;
}

const variant_t& variant_bag_t::value_iterator::get_value() const
{
    return m_bag->m_values[m_at].value;
}

variant_bag_t::const_iterator::const_iterator(const variant_bag_t& bag, const std::wstring* name)
    : m_bag(&bag)
{
    if (name != nullptr)
        m_name = *name;
    skip_others();
}

bool variant_bag_t::const_iterator::at_end() const
{
    return m_at == m_bag->m_bags.size();
}

void variant_bag_t::const_iterator::next()
{
    ++m_at;
    skip_others();
}

const std::wstring& variant_bag_t::const_iterator::get_name() const
{
    return m_bag->m_bags[m_at].name;
}

const variant_bag_t& variant_bag_t::const_iterator::get_value() const
{
    return m_bag->m_bags[m_at].bag;
}

void variant_bag_t::const_iterator::skip_others()
{
    while (m_name && !at_end() && get_name() != *m_name)
        ++m_at;
}

} // namespace basekit2

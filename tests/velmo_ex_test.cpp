#include <velmoext1/velmo_ex.h>

#include "support.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <functional>
#include <locale>
#include <memory>
#include <type_traits>

using namespace velmoext_1_4_8;

namespace
{

typedef boost::shared_ptr<velmo_ex_t> ex_ptr_t;

// Runs a step in its destructor. On the stack of an object that is being destroyed, the registry
// still has the object's entry then, which has expired.
class destruction_handler_t : public base_handler_t
{
public:
    explicit destruction_handler_t(std::function<void()> step) : m_step(std::move(step)) {}
    destruction_handler_t(const destruction_handler_t&) = delete;
    destruction_handler_t& operator=(const destruction_handler_t&) = delete;
    ~destruction_handler_t() override { m_step(); }

private:
    std::function<void()> m_step;
};

ex_ptr_t make_ex(const std::wstring& prefix = L"")
{
    return velmo_ex_t::get(velmo_ex_t::generate_id(L"velmo_ex_test."), prefix);
}

void run_on_destruction(const ex_ptr_t& ex, std::function<void()> step)
{
    ex->push_handler(boost::make_shared<destruction_handler_t>(std::move(step)));
}

long generate_number()
{
    return std::wcstol(velmo_ex_t::generate_id(L"").c_str(), nullptr, 10);
}

} // namespace

TEST(velmo_ex_test, the_same_id_gives_the_same_object_with_its_first_prefix)
{
    const std::wstring id = velmo_ex_t::generate_id(L"a");
    const ex_ptr_t first = velmo_ex_t::get(id, L"p1");
    EXPECT_EQ(velmo_ex_t::get(id, L"p2"), first);
    EXPECT_EQ(first->get_prefix(), L"p1");
}

TEST(velmo_ex_test, an_id_is_free_again_when_its_object_is_destroyed)
{
    const std::wstring id = velmo_ex_t::generate_id(L"a");
    ex_ptr_t ex = velmo_ex_t::get(id, L"p1");
    ex->push_handler(boost::make_shared<recording_handler_t>());
    ex.reset();
    ex = velmo_ex_t::get(id, L"p2");
    ASSERT_TRUE(ex);
    EXPECT_EQ(ex->get_prefix(), L"p2");
    EXPECT_FALSE(ex->pop_handler());
}

TEST(velmo_ex_test, ids_that_differ_in_case_are_different)
{
    const std::wstring base = velmo_ex_t::generate_id(L"");
    EXPECT_NE(velmo_ex_t::get(L"a" + base, L""), velmo_ex_t::get(L"A" + base, L""));
}

TEST(velmo_ex_test, the_empty_text_is_an_id)
{
    const ex_ptr_t ex = velmo_ex_t::get(L"", L"p");
    ASSERT_TRUE(ex);
    EXPECT_EQ(velmo_ex_t::get(L"", L""), ex);
}

TEST(velmo_ex_test, ids_with_a_zero_inside_are_compared_whole)
{
    const std::wstring base = velmo_ex_t::generate_id(L"z");
    EXPECT_NE(velmo_ex_t::get(base + units({0, 'a'}), L""),
              velmo_ex_t::get(base + units({0, 'b'}), L""));
}

TEST(velmo_ex_test, the_prefix_can_be_replaced)
{
    const ex_ptr_t ex = make_ex(L"before");
    ex->set_prefix(L"after");
    EXPECT_EQ(ex->get_prefix(), L"after");
}

TEST(velmo_ex_test, an_object_returns_shared_pointers_to_itself)
{
    const ex_ptr_t ex = make_ex();
    EXPECT_EQ(ex->shared_from_this(), ex);
    const velmo_ex_t& constant = *ex;
    EXPECT_EQ(constant.shared_from_this(), ex);
}

TEST(velmo_ex_test, objects_come_only_from_get)
{
    EXPECT_FALSE(std::is_default_constructible<velmo_ex_t>::value);
    EXPECT_FALSE(std::is_copy_constructible<velmo_ex_t>::value);
    EXPECT_FALSE(std::is_copy_assignable<velmo_ex_t>::value);
}

TEST(velmo_ex_test, get_returns_null_while_the_object_is_being_destroyed)
{
    const std::wstring id = velmo_ex_t::generate_id(L"a");
    ex_ptr_t ex = velmo_ex_t::get(id, L"");
    ex_ptr_t found = make_ex();
    run_on_destruction(ex, [&] { found = velmo_ex_t::get(id, L"p"); });
    ex.reset();
    EXPECT_FALSE(found);
}

TEST(velmo_ex_test, an_object_that_is_being_destroyed_has_no_shared_pointer_to_itself)
{
    ex_ptr_t ex = make_ex();
    velmo_ex_t* const destroyed = ex.get();
    bool has_thrown = false;
    run_on_destruction(ex, [&] {
        try {
            destroyed->shared_from_this();
        } catch (const boost::bad_weak_ptr&) {
            has_thrown = true;
        }
    });
    ex.reset();
    EXPECT_TRUE(has_thrown);
}

TEST(velmo_ex_test, the_destruction_of_one_object_frees_the_ids_of_others_being_destroyed)
{
    const std::wstring id = velmo_ex_t::generate_id(L"a");
    ex_ptr_t destroyed = velmo_ex_t::get(id, L"old");
    ex_ptr_t other = make_ex();
    ex_ptr_t successor;
    run_on_destruction(destroyed, [&] {
        other.reset();
        successor = velmo_ex_t::get(id, L"new");
    });
    destroyed.reset();
    ASSERT_TRUE(successor);
    EXPECT_EQ(successor->get_prefix(), L"new");
    EXPECT_EQ(velmo_ex_t::get(id, L""), successor) << "the former object removed the entry";
}

TEST(velmo_ex_test, an_object_being_destroyed_releases_its_handlers_in_the_order_of_their_push)
{
    std::wstring order;
    ex_ptr_t ex = make_ex();
    for (const wchar_t name : {L'a', L'b', L'c'})
        run_on_destruction(ex, [&order, name] { order += name; });
    ex.reset();
    EXPECT_EQ(order, L"abc");
}

TEST(velmo_ex_test, an_object_owned_only_by_a_handler_of_another_is_destroyed_with_it)
{
    const std::wstring id = velmo_ex_t::generate_id(L"inner");
    ex_ptr_t inner = velmo_ex_t::get(id, L"");
    boost::weak_ptr<velmo_ex_t> watched = inner;
    ex_ptr_t outer = make_ex();
    run_on_destruction(outer, [inner] {});
    inner.reset();
    EXPECT_FALSE(watched.expired());
    outer.reset();
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(velmo_ex_t::get(id, L""));
}

TEST(velmo_ex_test, the_first_generated_id_of_a_process_has_number_zero)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(std::_Exit(velmo_ex_t::generate_id(L"") == L"0" ? 0 : 1),
                testing::ExitedWithCode(0), "");
}

TEST(velmo_ex_test, the_number_follows_the_base_without_a_separator)
{
    const long number = generate_number();
    EXPECT_EQ(velmo_ex_t::generate_id(L"job"), L"job" + std::to_wstring(number + 1));
}

TEST(velmo_ex_test, all_bases_share_one_counter)
{
    const long number = generate_number();
    EXPECT_EQ(velmo_ex_t::generate_id(L"task"), L"task" + std::to_wstring(number + 1));
    EXPECT_EQ(velmo_ex_t::generate_id(L"job"), L"job" + std::to_wstring(number + 2));
}

TEST(velmo_ex_test, an_id_that_is_in_use_is_not_generated)
{
    const long number = generate_number();
    const ex_ptr_t taken = velmo_ex_t::get(L"job" + std::to_wstring(number + 1), L"");
    EXPECT_EQ(velmo_ex_t::generate_id(L"job"), L"job" + std::to_wstring(number + 2));
    EXPECT_EQ(generate_number(), number + 3);
}

TEST(velmo_ex_test, the_id_of_an_object_being_destroyed_is_not_generated)
{
    const long number = generate_number();
    ex_ptr_t ex = velmo_ex_t::get(L"job" + std::to_wstring(number + 1), L"");
    std::wstring generated;
    run_on_destruction(ex, [&] { generated = velmo_ex_t::generate_id(L"job"); });
    ex.reset();
    EXPECT_EQ(generated, L"job" + std::to_wstring(number + 2));
}

TEST(velmo_ex_test, generating_an_id_does_not_reserve_it)
{
    const std::wstring id = velmo_ex_t::generate_id(L"a");
    EXPECT_EQ(velmo_ex_t::get(id, L"mine")->get_prefix(), L"mine");
}

TEST(velmo_ex_test, a_number_is_plain_digits_in_any_global_locale)
{
    struct grouping_t : std::numpunct<wchar_t>
    {
        std::string do_grouping() const override { return "\1"; }
        wchar_t do_thousands_sep() const override { return L'.'; }
    };
    const std::locale former = std::locale::global(std::locale(std::locale(), new grouping_t));
    std::wstring id;
    for (int i = 0; i < 12; ++i)
        id = velmo_ex_t::generate_id(L"");
    std::locale::global(former);
    EXPECT_GE(id.size(), 2U);
    EXPECT_EQ(id.find_first_not_of(L"0123456789"), std::wstring::npos)
        << testing::PrintToString(id);
}

TEST(velmo_ex_test, the_destruction_of_many_objects_takes_linear_time)
{
    const std::clock_t before = std::clock();
    std::vector<ex_ptr_t> exs;
    for (int i = 0; i < 100000; ++i)
        exs.push_back(make_ex());
    while (!exs.empty())
        exs.pop_back();
    EXPECT_LT((std::clock() - before) / CLOCKS_PER_SEC, 30) << "seconds";
}

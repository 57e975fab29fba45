#include "tree_walker.h"

#include "library_names.h"
#include "scratch_tree.h"

#include <rova/strings.h>
#include <velmoext1/string_message_serializer.h>
#include <velmoext1/velmo_adapter.h>

#include <velmo2/messenger.h>
#include <velmo2/progress.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace audit
{
namespace
{

using rova::strings::utf16_to_utf8;
using velmoext::message_t;

/// The other end of the channel: keeps each message, and lets the test act during the walk, right
/// after the message was sent.
class receiver_t : public velmo2::IMessenger
{
public:
    void say(velmo2::ESeverity /*severity*/, const wchar_t* text) override
    {
        messages.push_back(velmoext::string_message_serializer_t::xml_string_to_message(text));
        if (on_message)
            on_message(*messages.back());
    }

    std::vector<boost::shared_ptr<message_t>> messages;
    std::function<void(const message_t&)> on_message;
};

class progress_stub_t : public velmo2::IProgress
{
public:
    void set_percent(int /*percent*/) override {}
    bool is_canceled() const override { return canceled; }

    bool canceled = false;
};

class progress_recorder_t : public velmoext::base_handler_t
{
public:
    using velmoext::base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmoext::velmo_ex_t> /*ex*/,
                    boost::shared_ptr<velmoext::progress_message_t> msg) override
    {
        percents.push_back(utf16_to_utf8(msg->get_message()->get_content().args[L"percent"]));
        return true;
    }

    std::vector<std::string> percents;
};

std::string arg(const message_t& message, const std::wstring& name)
{
    return utf16_to_utf8(message.get_content().args[name]);
}

class tree_walker_test : public testing::Test
{
protected:
    tree_walker_test() { m_channel.set_output_velmo(&m_receiver); }

    std::error_code walk() { return m_walker.walk(m_tree.path()); }

    /// Returns the argument's value in each message of a type, in their order.
    std::vector<std::string> args_of(const std::wstring& type, const std::wstring& name) const
    {
        std::vector<std::string> values;
        for (const auto& message : m_receiver.messages)
            if (message->get_type() == type)
                values.push_back(arg(*message, name));
        return values;
    }

    std::string summary(const std::wstring& name) const
    {
        return arg(*m_receiver.messages.back(), name);
    }

    /// Sets the action that runs when the walk reaches this file.
    void on_visit(const std::string& name, const std::function<void()>& action)
    {
        m_receiver.on_message = [this, name, action](const message_t& message) {
            if (message.get_type() == L"file_seen" && arg(message, L"path") == m_tree.path(name))
                action();
        };
    }

    std::vector<std::string> paths(std::vector<std::string> names) const
    {
        std::transform(names.begin(), names.end(), names.begin(),
                       [this](const std::string& name) { return m_tree.path(name); });
        return names;
    }

    const scratch_tree_t m_tree;
    receiver_t m_receiver;
    boost::shared_ptr<progress_stub_t> m_progress = boost::make_shared<progress_stub_t>();
    boost::shared_ptr<progress_recorder_t> m_recorder = boost::make_shared<progress_recorder_t>();
    velmoext::velmo_adapter_t m_channel;
    reporter_t m_reporter{m_channel};
    progress_reporter_t m_progress_reporter{nullptr, m_recorder, m_progress};
    tree_walker_t m_walker{m_reporter, m_progress_reporter,
                           std::numeric_limits<std::uint64_t>::max()};
};

// Returns the path of the last directory that make_depth() creates.
std::string depth(std::size_t levels)
{
    std::string path = "d";
    for (; levels > 1; --levels)
        path += "/d";
    return path;
}

TEST_F(tree_walker_test, names_are_visited_in_the_order_of_their_bytes)
{
    for (const char* const name : {"b", "\xc3\xa4", "B", "a", "c"})
        m_tree.make_file(name);
    m_tree.make_directory("aa");
    m_tree.make_file("aa/z");
    EXPECT_FALSE(walk());
    EXPECT_EQ(args_of(L"file_seen", L"path"), paths({"B", "a", "aa/z", "b", "c", "\xc3\xa4"}));
}

TEST_F(tree_walker_test, the_source_is_the_program)
{
    m_tree.make_file("a");
    walk();
    ASSERT_EQ(m_receiver.messages.size(), 2U);
    for (const auto& message : m_receiver.messages)
        EXPECT_EQ(message->get_source(), L"audit");
}

TEST_F(tree_walker_test, the_summary_counts_what_was_seen)
{
    m_tree.make_file("file", 1000);
    m_tree.make_file("empty", 0);
    m_tree.make_directory("dir");
    m_tree.make_link("link", "dir");
    m_tree.make_fifo("fifo");
    EXPECT_FALSE(walk());
    EXPECT_EQ(m_receiver.messages.back()->get_type(), L"tree_summary");
    EXPECT_EQ(summary(L"path"), m_tree.path());
    EXPECT_EQ(summary(L"complete"), "yes");
    EXPECT_EQ(summary(L"directories"), "2");
    EXPECT_EQ(summary(L"files"), "2");
    EXPECT_EQ(summary(L"links"), "1");
    EXPECT_EQ(summary(L"others"), "1");
    EXPECT_EQ(summary(L"bytes"), "1000");
    EXPECT_EQ(summary(L"findings"), "1");
}

TEST_F(tree_walker_test, the_summary_has_the_highest_severity_of_all_findings)
{
    m_tree.make_link("a", "nowhere");
    m_tree.make_file("b");
    m_tree.set_mode("b", 0666);
    m_tree.make_link("c", "nowhere");
    EXPECT_FALSE(walk());
    EXPECT_EQ(m_receiver.messages.back()->get_severity(), message_t::error);
}

TEST_F(tree_walker_test, the_summary_of_a_tree_without_findings_is_an_info)
{
    EXPECT_FALSE(walk());
    ASSERT_EQ(m_receiver.messages.size(), 1U);
    EXPECT_EQ(m_receiver.messages.back()->get_severity(), message_t::info);
}

TEST_F(tree_walker_test, nothing_is_sent_if_the_top_cannot_be_read)
{
    EXPECT_EQ(m_walker.walk(m_tree.path("none")), std::errc::no_such_file_or_directory);
    m_tree.make_file("file");
    EXPECT_EQ(m_walker.walk(m_tree.path("file")), std::errc::not_a_directory);
    EXPECT_TRUE(m_receiver.messages.empty());
    EXPECT_TRUE(m_recorder->percents.empty());
}

TEST_F(tree_walker_test, a_slash_after_the_top_is_not_doubled)
{
    m_tree.make_file("a");
    EXPECT_FALSE(m_walker.walk(m_tree.path() + '/'));
    EXPECT_EQ(args_of(L"file_seen", L"path"), paths({"a"}));
}

TEST_F(tree_walker_test, the_top_may_be_a_link_but_no_other_link_is_followed)
{
    m_tree.make_directory("dir");
    m_tree.make_file("dir/a");
    m_tree.make_link("dir/again", ".");
    m_tree.make_link("link", "dir");
    EXPECT_FALSE(m_walker.walk(m_tree.path("link")));
    EXPECT_EQ(args_of(L"file_seen", L"path"), paths({"link/a"}));
    EXPECT_EQ(summary(L"links"), "1");
}

TEST_F(tree_walker_test, progress_is_the_share_of_the_topmost_entries)
{
    for (const char* const name : {"a", "b", "d"})
        m_tree.make_file(name);
    m_tree.make_directory("c");
    m_tree.make_file("c/x");
    m_tree.make_file("c/y");
    EXPECT_FALSE(walk());
    EXPECT_EQ(m_recorder->percents, (std::vector<std::string>{"0", "25", "50", "75", "100"}));
}

TEST_F(tree_walker_test, an_empty_tree_is_done_at_once)
{
    EXPECT_FALSE(walk());
    EXPECT_EQ(m_recorder->percents, std::vector<std::string>{"100"});
}

TEST_F(tree_walker_test, each_percentage_is_reported_once)
{
    for (int number = 0; number < 250; ++number)
        m_tree.make_file(std::to_string(number));
    EXPECT_FALSE(walk());
    EXPECT_EQ(m_recorder->percents.size(), 101U);
}

TEST_F(tree_walker_test, a_canceled_walk_ends_with_an_incomplete_summary)
{
    for (const char* const name : {"a", "b", "c"})
        m_tree.make_file(name);
    on_visit("b", [this] { m_progress->canceled = true; });
    EXPECT_FALSE(walk());
    EXPECT_FALSE(m_walker.is_complete());
    EXPECT_EQ(args_of(L"file_seen", L"path"), paths({"a", "b"}));
    EXPECT_EQ(m_receiver.messages.back()->get_severity(), message_t::warning);
    EXPECT_EQ(summary(L"complete"), "no");
}

TEST_F(tree_walker_test, a_file_that_vanishes_during_the_walk_is_not_a_finding)
{
    for (const char* const name : {"a", "b", "c"})
        m_tree.make_file(name);
    on_visit("a", [this] { m_tree.remove_file("b"); });
    EXPECT_FALSE(walk());
    EXPECT_EQ(args_of(L"file_seen", L"path"), paths({"a", "c"}));
    EXPECT_EQ(summary(L"findings"), "0");
}

TEST_F(tree_walker_test, a_file_that_vanishes_during_its_audit_is_not_a_finding)
{
    m_tree.make_file("a");
    on_visit("a", [this] { m_tree.remove_file("a"); });
    EXPECT_FALSE(walk());
    EXPECT_EQ(summary(L"findings"), "0");
}

TEST_F(tree_walker_test, an_unprintable_name_that_vanishes_is_not_a_finding)
{
    m_tree.make_file("a");
    m_tree.make_file("b\n");
    on_visit("a", [this] { m_tree.remove_file("b\n"); });
    EXPECT_FALSE(walk());
    EXPECT_EQ(summary(L"findings"), "0");
}

TEST_F(tree_walker_test, a_directory_whose_parents_are_moved_meanwhile_is_walked_to_its_end)
{
    m_tree.make_depth(40);
    m_tree.make_file(depth(4) + "/last");
    on_visit(depth(40) + "/bottom", [this] { m_tree.move(depth(3), "elsewhere"); });
    EXPECT_FALSE(walk());
    EXPECT_EQ(args_of(L"file_seen", L"path"), paths({depth(40) + "/bottom", depth(4) + "/last"}));
    EXPECT_EQ(summary(L"findings"), "0");
}

TEST_F(tree_walker_test, a_directory_that_is_moved_away_meanwhile_is_walked_to_its_end)
{
    m_tree.make_depth(40);
    m_tree.make_file(depth(4) + "/last");
    on_visit(depth(40) + "/bottom", [this] { m_tree.move(depth(5), "elsewhere"); });
    EXPECT_FALSE(walk());
    EXPECT_EQ(args_of(L"file_seen", L"path"), paths({depth(40) + "/bottom", depth(4) + "/last"}));
    EXPECT_EQ(summary(L"findings"), "0");
    EXPECT_EQ(summary(L"complete"), "yes");
}

TEST_F(tree_walker_test, a_directory_that_becomes_unreachable_is_reported_and_its_parent_is_walked)
{
    m_tree.make_depth(40);
    m_tree.make_file(depth(4) + "/last");
    m_tree.make_file(depth(3) + "/last");
    on_visit(depth(40) + "/bottom", [this] {
        m_tree.move(depth(5), "elsewhere");
        m_tree.move(depth(4), "lost");
    });
    EXPECT_FALSE(walk());
    EXPECT_EQ(args_of(L"directory_unreadable", L"path"), paths({depth(4)}));
    EXPECT_EQ(args_of(L"directory_unreadable", L"error"), std::vector<std::string>{"ESTALE"});
    EXPECT_EQ(summary(L"findings"), "1");
    EXPECT_EQ(args_of(L"file_seen", L"path"), paths({depth(40) + "/bottom", depth(3) + "/last"}));
}

TEST_F(tree_walker_test, a_directory_that_replaces_a_moved_one_is_not_walked)
{
    m_tree.make_depth(40);
    m_tree.make_file(depth(4) + "/last");
    on_visit(depth(40) + "/bottom", [this] {
        m_tree.move(depth(5), "elsewhere");
        m_tree.move(depth(4), "lost");
        m_tree.make_directory(depth(4));
        m_tree.make_file(depth(4) + "/last");
    });
    EXPECT_FALSE(walk());
    EXPECT_EQ(args_of(L"directory_unreadable", L"path"), paths({depth(4)}));
    EXPECT_EQ(args_of(L"file_seen", L"path"), paths({depth(40) + "/bottom"}));
}

TEST_F(tree_walker_test, an_unreachable_directory_without_names_left_is_not_a_finding)
{
    m_tree.make_depth(40);
    on_visit(depth(40) + "/bottom", [this] {
        m_tree.move(depth(5), "elsewhere");
        m_tree.move(depth(4), "lost");
    });
    EXPECT_FALSE(walk());
    EXPECT_EQ(summary(L"findings"), "0");
    EXPECT_TRUE(m_walker.is_complete());
}

} // namespace
} // namespace audit

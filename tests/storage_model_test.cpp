// Random sequences of events for a log, checked against a model of the messages that must be in it.

#include "storage_model_support.h"

#include <sys/prctl.h>
#include <sys/wait.h>

#include <cstdlib>

using namespace velmoext_1_4_8;

namespace
{

// Uses scratch folders in memory unless the environment sets a directory, since a disk is slow.
[[maybe_unused]] const bool is_in_memory =
    setenv("TMPDIR", "/dev/shm", 0) == 0; // NOLINT(concurrency-mt-unsafe)

class storage_model_test : public storage_model_test_t
{
protected:
    // Becomes the parent of its children's children, so that it can wait for their end.
    storage_model_test() { prctl(PR_SET_CHILD_SUBREAPER, 1); }

    void run(std::uint64_t seed)
    {
        m_random = random_source_t(seed);
        m_number = m_random.below(1000);
        make_empty_folder();
        for (std::size_t left = m_random.between(2, 12); left > 0 && !HasFailure(); --left) {
            step();
            expect_model();
        }
    }

private:
    typedef void (storage_model_test::*step_t)();

    void step()
    {
        typedef storage_model_test self_t;
        static const std::array<step_t, 17> steps = {
            &self_t::record_here,       &self_t::record_here,       &self_t::record_here,
            &self_t::record_in_process, &self_t::record_in_process, &self_t::record_in_process,
            &self_t::record_in_process, &self_t::record_in_daemon,  &self_t::record_in_daemon,
            &self_t::rename_log,        &self_t::remove_log,        &self_t::restore_log,
            &self_t::write_foreign_log, &self_t::leave_copy,        &self_t::remove_copy,
            &self_t::record_into_copy,  &self_t::replay_log};
        (this->*m_random.pick(steps))();
    }

    void record_here()
    {
        const start_t start = pick_start();
        add_to_history("record through " + start.spelling);
        storage_ptr_t storage = get(start.spelling);
        if (!storage->start_recording())
            return expect_refused(start);
        EXPECT_FALSE(m_folder.has(start.copy_name));
        const types_t types = new_types();
        record_types(storage, types);
        add_to_history(text_of(types));
        if (m_random.one_in(3))
            expect_no_other_recorder(start.spelling, storage);
        const bool is_renamed = m_random.one_in(5);
        if (is_renamed)
            rename("log.xml", "renamed.xml");
        end_recording(storage);
        if (is_renamed)
            rename("renamed.xml", "log.xml");
        expect_recorded(start, types, types.size());
    }

    // Stops the storage or releases it. Some storages are kept for later recordings.
    void end_recording(storage_ptr_t& storage)
    {
        if (m_random.one_in(3))
            m_kept.push_back(storage);
        else if (m_random.one_in(3))
            m_kept.clear();
        if (m_random.one_in(2) || storage.use_count() != 1)
            storage->stop_recording();
        storage.reset();
    }

    // While this process records, other processes must not.
    void expect_no_other_recorder(const std::string& spelling, const storage_ptr_t& storage)
    {
        const std::string other = m_random.pick(spellings);
        add_to_history("disturbed through " + other);
        EXPECT_EQ(get(other)->start_recording(), other == spelling);
        const bool is_stopped = m_random.one_in(2);
        const int status = status_of_child([&] {
            if (is_stopped)
                storage->stop_recording();
            else
                record_types(storage, {"0"});
            return get(other)->start_recording() ? 1 : 0;
        });
        EXPECT_TRUE(has_exited_with(status, other == spelling && !is_stopped ? 1 : 0));
    }

    void record_in_process()
    {
        const start_t start = pick_start();
        recorder_t recorder = {new_types(), new_types()};
        recorder.is_stopped = m_random.one_in(2);
        recorder.has_links = !m_random.one_in(4);
        recorder.max_written = m_random.one_in(2) ? SIZE_MAX : m_random.between(20, 2000);
        if (!m_random.one_in(3))
            recorder.last_call = static_cast<int>(m_random.below(40));
        m_certain.set(0);
        const int status =
            status_of_child([&] { return recorder.run(get(start.spelling), m_certain); });
        add_to_history("process through " + start.spelling + ", last call " +
                       std::to_string(recorder.last_call) + ", status " + std::to_string(status) +
                       "\n" + text_of(recorder.first) + " " + text_of(recorder.second));
        if (has_exited_with(status, refused_exit_code))
            return expect_refused(start);
        EXPECT_TRUE(was_killed(status) || has_exited_with(status, 0));
        expect_recorded(start, recorder.all(), m_certain.get());
    }

    void record_in_daemon()
    {
        const start_t start = pick_start();
        m_kept.clear();
        daemon_t daemon = {new_types(), new_types(), new_types(), new_types(), new_types()};
        daemon.forks_twice = m_random.one_in(2);
        daemon.is_stopped = m_random.one_in(2);
        if (m_random.one_in(2))
            daemon.last_call = static_cast<int>(m_random.below(6));
        daemon_gates_t gates;
        const int status = status_of_child([&] { return daemon.run(get(start.spelling), gates); });
        add_to_history("daemon through " + start.spelling + ", last call " +
                       std::to_string(daemon.last_call) + ", status " + std::to_string(status) +
                       "\n" + text_of(daemon.before_fork) + " " + text_of(daemon.after_fork) + " " +
                       text_of(daemon.of_children()));
        if (has_exited_with(status, refused_exit_code))
            return expect_refused(start);
        EXPECT_TRUE(start.can_succeed);
        m_copies.erase(start.copy_name);
        expect_continued(start, daemon, was_killed(status), gates);
    }

    // Others record or the log is renamed before the child continues.
    void expect_continued(const start_t& start, const daemon_t& daemon, bool is_killed,
                          daemon_gates_t& gates)
    {
        const bool is_renamed = m_random.one_in(3);
        const types_t others = m_random.one_in(2) ? new_types() : types_t();
        add_to_history((is_renamed ? "renamed, others " : "others ") + text_of(others));
        if (is_renamed)
            rename("log.xml", "archive.xml");
        run_child_beside(others, start.spelling, gates);
        m_log = types_in_file("log.xml");
        if (is_renamed)
            m_archive = types_in_file("archive.xml");
        const bool is_closed = daemon.is_stopped && !is_killed;
        expect_parts(is_renamed ? join(*m_archive, m_log) : m_log, start.old, daemon.of_parent(),
                     is_closed ? daemon.of_parent().size() : daemon.before_fork.size(),
                     join(others, daemon.of_children()));
    }

    void run_child_beside(const types_t& others, const std::string& spelling, daemon_gates_t& gates)
    {
        const storage_ptr_t storage = get(spelling);
        EXPECT_TRUE(others.empty() || storage->start_recording());
        record_types(storage, others);
        gates.end_of_parent.open();
        gates.has_tried.wait();
        storage->stop_recording();
        gates.end_of_others.open();
        while (wait(nullptr) != -1) {
        }
    }

    // Expects these messages. The last ones in the middle can be missing.
    static void expect_parts(const types_t& found, const types_t& first, types_t middle,
                             std::size_t certain, const types_t& last)
    {
        const std::size_t size = found.size() - first.size() - last.size();
        EXPECT_TRUE(size >= certain && size <= middle.size()) << text_of(found);
        middle.resize(std::min(middle.size(), size));
        EXPECT_EQ(text_of(found), text_of(join(join(first, middle), last)));
    }

    void rename_log()
    {
        if (!m_folder.has("log.xml"))
            return;
        add_to_history("rename the log");
        rename("log.xml", "archive.xml");
        m_archive = std::exchange(m_log, {});
    }

    void remove_log()
    {
        add_to_history("remove the log");
        std::filesystem::remove(m_folder.name("log.xml"));
        m_log.clear();
    }

    void restore_log()
    {
        if (!m_archive)
            return;
        add_to_history("restore the log");
        m_folder.write("log.xml", m_folder.read("archive.xml"));
        m_log = *m_archive;
    }

    void write_foreign_log()
    {
        if (m_random.one_in(3))
            m_log = new_types();
        const std::size_t form = m_random.below(foreign_form_count);
        add_to_history("foreign log " + std::to_string(form) + "\n" + text_of(m_log));
        m_folder.write("log.xml", foreign_log(m_log, form));
    }

    // Leaves a copy as a killed start does, or together with a truncated log.
    void leave_copy()
    {
        const std::string copy = m_random.pick(copies);
        const std::string log = m_folder.read("log.xml");
        const std::size_t size = m_random.one_in(3) ? 0 : m_random.below(log.size() + 1);
        add_to_history("leave a copy at " + copy + ", log of size " + std::to_string(size));
        m_folder.write(copy, log);
        m_copies[copy] = m_log;
        m_interrupted.erase(copy);
        m_folder.write("log.xml", log.substr(0, size));
        m_log = types_in_file("log.xml");
    }

    void remove_copy()
    {
        const std::string copy = m_random.pick(copies);
        add_to_history("remove " + copy);
        std::filesystem::remove(m_folder.name(copy));
        m_copies.erase(copy);
    }

    // Records into a log with the name of a copy. No start may take it for a copy meanwhile.
    void record_into_copy()
    {
        const start_t start = pick_start();
        add_to_history("record " + start.copy_name);
        const storage_ptr_t storage = get(start.copy_name);
        EXPECT_TRUE(storage->start_recording());
        const types_t types = new_types();
        record_types(storage, types);
        EXPECT_FALSE(get(start.spelling)->start_recording());
        EXPECT_EQ(bytes_of("log.xml"), start.log);
        storage->stop_recording();
        m_copies[start.copy_name] = join(m_copies[start.copy_name], types);
        m_interrupted.erase(start.copy_name);
    }

    void replay_log()
    {
        add_to_history("replay");
        m_kept.clear();
        const std::wstring types = replay(get(m_random.pick(spellings)));
        EXPECT_EQ(std::string(types.begin(), types.end()), text_of(m_log));
    }
};

} // namespace

TEST_F(storage_model_test, a_log_has_the_messages_that_must_be_in_it)
{
    const random_seeds_t seeds(100);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        run(seed);
        ASSERT_FALSE(HasFailure()) << "seed " << seed << "\n" << m_history;
    }
}

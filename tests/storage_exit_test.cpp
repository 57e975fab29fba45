// Messages that are recorded while the process or a thread ends.

#include "process_support.h"
#include "storage_support.h"

using namespace velmoext_1_4_8;

namespace
{

class storage_exit_test : public storage_test_t, public testing::WithParamInterface<const char*>
{
protected:
    int run(const std::string& object) const
    {
        const std::string log = m_folder.name("log.xml");
        return status_of_child([&] {
            execl(LAST_RECORDER, LAST_RECORDER, object.c_str(), log.c_str(),
                  static_cast<const char*>(nullptr));
            return 127;
        });
    }
};

} // namespace

TEST_P(storage_exit_test, a_message_from_a_destructor_is_recorded)
{
    const int status = run(GetParam());
    EXPECT_TRUE(has_exited_with(status, 0)) << status;
    EXPECT_EQ(types_in(), L"first;last;last;last;");
}

INSTANTIATE_TEST_SUITE_P(object, storage_exit_test,
                         testing::Values("static_object_created_first",
                                         "static_object_created_last",
                                         "static_object_of_other_thread_created_first",
                                         "static_object_of_other_thread_created_last",
                                         "thread_local_object_created_first",
                                         "thread_local_object_created_last",
                                         "thread_local_object_of_other_thread_created_first",
                                         "thread_local_object_of_other_thread_created_last"),
                         [](const auto& object) { return std::string(object.param); });

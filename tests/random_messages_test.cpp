// Random messages, written by the library and by the calls of libxml2's writer.

#include "document_oracle.h"
#include "message_fields.h"
#include "random_messages.h"
#include "storage_support.h"
#include "writer_oracle.h"

#include <rova/strings.h>

#include <cstdlib>

using namespace velmoext_1_4_8;

namespace
{

// Uses scratch folders in memory unless the environment sets a directory, since a disk is slow.
[[maybe_unused]] const bool is_in_memory =
    setenv("TMPDIR", "/dev/shm", 0) == 0; // NOLINT(concurrency-mt-unsafe)

typedef storage_test_t random_messages_test;

} // namespace

TEST_F(random_messages_test, a_document_equals_the_output_of_libxml2s_writer)
{
    const random_seeds_t seeds(8000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const auto message = boost::make_shared<message_t>(random_message(random));
        const std::wstring written = string_message_serializer_t::message_to_xml_string(message);
        ASSERT_EQ(ROVA_2_18::strings::utf16_to_utf8(written), written_document(*message))
            << "seed " << seed;
        const message_ptr_t read = string_message_serializer_t::xml_string_to_message(written);
        ASSERT_EQ(document_oracle_t(written).difference(read), "") << "seed " << seed;
        ASSERT_TRUE(read) << "seed " << seed;
    }
}

TEST_F(random_messages_test, a_log_equals_the_output_of_libxml2s_writer)
{
    const random_seeds_t seeds(2500);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        std::vector<message_t> messages;
        const storage_ptr_t storage = get();
        ASSERT_TRUE(storage->start_recording());
        for (std::size_t count = random.below(6); count != 0; --count) {
            messages.push_back(random_message(random));
            storage->on_message(boost::shared_ptr<velmo_ex_t>(),
                                boost::make_shared<message_t>(messages.back()));
        }
        ASSERT_TRUE(storage->stop_recording());
        ASSERT_EQ(m_folder.read("log.xml"), written_log(messages)) << "seed " << seed;
        std::filesystem::remove(m_folder.name("log.xml"));
    }
}

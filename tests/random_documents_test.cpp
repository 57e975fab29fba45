// Random documents, read by the library and by plain calls of libxml2.

#include "document_oracle.h"
#include "random_documents.h"
#include "random_messages.h"
#include "support.h"
#include "writer_oracle.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

using namespace velmoext_1_4_8;

namespace
{

std::string difference(const std::wstring& text)
{
    return document_oracle_t(text).difference(
        string_message_serializer_t::xml_string_to_message(text));
}

} // namespace

TEST(random_documents_test, a_document_gives_the_message_that_libxml2_finds_in_it)
{
    const random_seeds_t seeds(20000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string document = random_document(random);
        ASSERT_EQ(difference(ROVA_2_18::strings::utf8_to_utf16(document)), "")
            << "seed " << seed << "\n"
            << document;
    }
}

TEST(random_documents_test,
     a_document_that_is_cut_anywhere_gives_the_message_that_libxml2_finds_in_it)
{
    const random_seeds_t seeds(12);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::wstring document = ROVA_2_18::strings::utf8_to_utf16(
            seed % 2 == 0 ? random_document(random) : written_document(random_message(random)));
        for (std::size_t size = 0; size <= document.size(); ++size)
            ASSERT_EQ(difference(document.substr(0, size)), "")
                << "seed " << seed << ", size " << size;
    }
}

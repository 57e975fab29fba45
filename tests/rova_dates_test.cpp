#include <rova/i18n.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using ROVA_2_18::i18n::message_t;
using ROVA_2_18::i18n::set_time_zone;

const wchar_t full[] = L"{d, date,yyyy-MM-dd HH:mm:ss.SSS}";

std::wstring format(const std::wstring& pattern, const std::wstring& value,
                    const std::string& locale = "en")
{
    ROVA_2_18::generic::varg_list arguments;
    arguments.push_back({"d", value});
    return message_t(pattern, locale).as_ustring(arguments);
}

class rova_dates_test : public testing::Test
{
protected:
    void TearDown() override { EXPECT_TRUE(set_time_zone("GMT")); }
};

TEST_F(rova_dates_test, a_date_of_iso_8601_is_formatted)
{
    EXPECT_EQ(format(L"{d, date}", L"2026-11-21"), L"Nov 21, 2026");
    EXPECT_EQ(format(full, L"2026-11-21"), L"2026-11-21 00:00:00.000");
    EXPECT_EQ(format(full, L"1969-12-31"), L"1969-12-31 00:00:00.000");
    EXPECT_EQ(format(full, L"1583-01-01"), L"1583-01-01 00:00:00.000");
    EXPECT_EQ(format(full, L"9999-12-31"), L"9999-12-31 00:00:00.000");
}

TEST_F(rova_dates_test, a_time_of_iso_8601_is_formatted)
{
    EXPECT_EQ(format(L"{d, time,HH:mm}", L"2026-11-21T14:05"), L"14:05");
    EXPECT_EQ(format(full, L"2026-11-21T14:05"), L"2026-11-21 14:05:00.000");
    EXPECT_EQ(format(full, L"2026-11-21 14:05:07"), L"2026-11-21 14:05:07.000");
    EXPECT_EQ(format(full, L"2026-11-21T14:05:07.25"), L"2026-11-21 14:05:07.250");
    EXPECT_EQ(format(full, L"2026-11-21T14:05:07,123456789"), L"2026-11-21 14:05:07.123");
}

TEST_F(rova_dates_test, an_offset_is_subtracted)
{
    EXPECT_EQ(format(full, L"2026-11-21T14:05Z"), L"2026-11-21 14:05:00.000");
    EXPECT_EQ(format(full, L"2026-11-21T14:05:00+01:00"), L"2026-11-21 13:05:00.000");
    EXPECT_EQ(format(full, L"2026-11-21T14:05:00-0530"), L"2026-11-21 19:35:00.000");
    EXPECT_EQ(format(full, L"2026-11-21T00:30+02"), L"2026-11-20 22:30:00.000");
}

TEST_F(rova_dates_test, a_text_that_is_not_a_date_leaves_the_placeholder)
{
    for (const wchar_t* const text : {L"2026-13-01",
                                      L"2026-02-30",
                                      L"2026-11-21T25:00",
                                      L"2026-11-21T14:60",
                                      L"2026-11-21T",
                                      L"2026-11-21T14",
                                      L"2026-1-1",
                                      L"26-11-21",
                                      L"2026-11-21x",
                                      L" 2026-11-21",
                                      L"2026-11-21Z",
                                      L"2026-11-21T14:05:07.",
                                      L"2026-11-21T14:05+1",
                                      L"2026-11-21T14:05+24:00",
                                      L"2026-11-21T14:05-12:60",
                                      L"2026-11-21T14:05+99:99",
                                      L"1582-10-10",
                                      L"0001-01-01",
                                      L"2026\u201311-21",
                                      L"\u0662026-11-21",
                                      L"202\u0666-11-21"})
        EXPECT_EQ(format(full, text), L"{d}");
    EXPECT_EQ(format(full, L"2026-11-21T14:05:07." + std::wstring(100000, L'1')), L"{d}");
}

TEST_F(rova_dates_test, a_date_is_not_a_number)
{
    EXPECT_EQ(format(L"{d, number}", L"2026-11-21"), L"{d}");
    EXPECT_EQ(format(L"{d, date} {d, number}", L"2026-11-21"), L"{d} {d}");
    EXPECT_EQ(format(L"{d, date} {d, time,HH} {d}", L"2026-11-21"), L"Nov 21, 2026 00 2026-11-21");
}

TEST_F(rova_dates_test, the_host_sets_the_time_zone)
{
    const message_t before(full, "en");
    ASSERT_TRUE(set_time_zone("Europe/Berlin"));
    EXPECT_EQ(format(L"{d, time,HH:mm z}", L"0"), L"01:00 GMT+1");
    EXPECT_EQ(format(full, L"2026-07-01T12:00Z"), L"2026-07-01 14:00:00.000");
    EXPECT_EQ(format(L"{n, plural, other{{d, time,HH:mm}}}", L"0"), L"{n}");
    ROVA_2_18::generic::varg_list arguments;
    arguments.push_back({"d", std::wstring(L"0")});
    EXPECT_EQ(before.as_ustring(arguments), L"1970-01-01 00:00:00.000");
}

TEST_F(rova_dates_test, a_date_without_an_offset_is_in_the_time_zone)
{
    ASSERT_TRUE(set_time_zone("Europe/Berlin"));
    EXPECT_EQ(format(full, L"2026-11-21"), L"2026-11-21 00:00:00.000");
    EXPECT_EQ(format(full, L"2026-07-01T12:00:01"), L"2026-07-01 12:00:01.000");
}

TEST_F(rova_dates_test, a_time_that_the_zone_skips_is_the_next_one)
{
    ASSERT_TRUE(set_time_zone("America/Sao_Paulo"));
    EXPECT_EQ(format(full, L"2018-11-04"), L"2018-11-04 01:00:00.000");
    ASSERT_TRUE(set_time_zone("Europe/Berlin"));
    EXPECT_EQ(format(full, L"2026-03-29T02:30"), L"2026-03-29 03:00:00.000");
}

TEST_F(rova_dates_test, the_case_of_a_type_does_not_count)
{
    EXPECT_EQ(format(L"{d, DATE, short}", L"2026-11-21"),
              format(L"{d, date, short}", L"2026-11-21"));
    EXPECT_NE(format(L"{d, DATE, short}", L"2026-11-21"), L"{d}");
    EXPECT_EQ(format(L"{d, NUMBER}", L"1234567.5", "eu"), L"1.234.567,5");
}

TEST_F(rova_dates_test, an_offset_is_a_time_zone)
{
    ASSERT_TRUE(set_time_zone("GMT+02:00"));
    EXPECT_EQ(format(L"{d, time,HH:mm}", L"0"), L"02:00");
    EXPECT_EQ(format(L"{d, time,HH:mm}", L"2026-07-01T12:00"), L"12:00");
}

TEST_F(rova_dates_test, an_unknown_time_zone_is_refused_and_changes_nothing)
{
    ASSERT_TRUE(set_time_zone("Asia/Tokyo"));
    for (const char* const zone : {"", "Etc/Unknown", "Nowhere/Land", "Europe/Berlin ", "\xFF"})
        EXPECT_FALSE(set_time_zone(zone)) << zone;
    EXPECT_EQ(format(L"{d, time,HH:mm}", L"0"), L"09:00");
}

TEST(rova_locale_test, a_modifier_that_names_a_script_counts)
{
    EXPECT_EQ(format(L"{d, date,MMMM}", L"0", "sr@latin"), L"januar");
    EXPECT_EQ(format(L"{d, date,MMMM}", L"0", "sr_RS.UTF-8@latin"), L"januar");
    EXPECT_EQ(format(L"{d, date,MMMM}", L"0", "sr_RS"), L"\u0458\u0430\u043D\u0443\u0430\u0440");
    EXPECT_EQ(format(L"{d, date,MMMM}", L"0", "uz@cyrillic"), L"\u044F\u043D\u0432\u0430\u0440");
    EXPECT_EQ(format(L"{d, plural, one{fajl} few{fajla} other{fajlova}}", L"1", "sr@latin"),
              L"fajl");
}

TEST(rova_locale_test, a_modifier_that_names_a_variant_counts)
{
    EXPECT_EQ(format(L"{d, number}", L"1234.5", "ca_ES@valencia"), L"1.234,5");
    EXPECT_EQ(format(L"{d, number}", L"1234.5", "ca@valencia"), L"1.234,5");
}

TEST(rova_locale_test, a_variant_keeps_the_country)
{
    EXPECT_EQ(format(L"{d, number}", L"1234567.5", "es_MX@modern"), L"1,234,567.5");
    EXPECT_EQ(format(L"{d, number}", L"1234567.5", "pt_PT@ao1990"),
              format(L"{d, number}", L"1234567.5", "pt_PT"));
}

TEST(rova_locale_test, a_script_without_data_and_a_replaced_name_are_not_the_root_locale)
{
    EXPECT_EQ(
        format(L"{d, plural, one{one} few{few} many{many} other{other}}", L"5", "be_BY@latin"),
        L"many");
    EXPECT_EQ(format(L"{d, date, MMMM}", L"0", "cmn_TW"),
              format(L"{d, date, MMMM}", L"0", "zh_TW"));
}

TEST(rova_locale_test, any_other_modifier_and_an_encoding_do_not_count)
{
    for (const char* const locale :
         {"de_DE@euro", "de_DE.UTF-8", "de_DE.UTF-8@euro", "de.@x", "de@"})
        EXPECT_EQ(format(L"{d, number}", L"1234.5", locale), L"1.234,5") << locale;
}

TEST(rova_locale_test, a_keyword_of_icu_is_kept)
{
    EXPECT_EQ(format(L"{d, number}", L"12", "ar_EG@numbers=latn"), L"12");
}

} // namespace

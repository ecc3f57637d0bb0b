// Reading the date data of a language.
#include "support/data_home.h"

#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using support::changed;
using Strings = std::vector<std::string>;

class DateSection : public testing::Test {
protected:
    // Reads the section "datetime" of a file with this content.
    int read(const std::string &content) {
        const std::string path = directory_.path_of("common.loc");
        support::write_file(path, content);
        INTL_LOCFILE file;
        EXPECT_EQ(intl_open(path.c_str(), &file), INTL_OK);
        int status = 0;
        while (const char *section = intl_nextsection(&file, &status))
            if (std::strcmp(section, "datetime") == 0)
                break;
        info_ = {};
        const int result = intl_datetime(&file, &info_);
        line_ = file.linenum;
        intl_close(&file);
        return result;
    }
    int read(const std::string &from, const std::string &to) {
        return read(changed(support::us_english_common(), from, to));
    }
    template <int Count, int Size>
    static Strings texts(const char (&names)[Count][Size]) {
        return Strings(names, names + Count);
    }

    support::TempDirectory directory_;
    intl_dateinfo info_ = {};
    int line_ = 0;
};

TEST_F(DateSection, FillsTheRecord) {
    ASSERT_EQ(read(support::german_common()), INTL_OK);
    EXPECT_EQ(texts(info_.months), (Strings{"Januar", "Februar", "M\xC3\xA4rz", "April", "Mai", "Juni", "Juli",
                                            "August", "September", "Oktober", "November", "Dezember"}));
    EXPECT_EQ(texts(info_.shortmonths),
              (Strings{"Jan", "Feb", "M\xC3\xA4r", "Apr", "Mai", "Jun", "Jul", "Aug", "Sep", "Okt", "Nov", "Dez"}));
    EXPECT_EQ(texts(info_.days),
              (Strings{"Sonntag", "Montag", "Dienstag", "Mittwoch", "Donnerstag", "Freitag", "Samstag"}))
        << "from Sunday on, whatever the first day of the week";
    EXPECT_EQ(info_.firstday, 2);
    EXPECT_STREQ(info_.dateorder, "dmy");
    EXPECT_EQ(info_.is12hour, 0);
    ASSERT_EQ(read(support::us_english_common()), INTL_OK);
    EXPECT_EQ(info_.is12hour, 1);
}

TEST_F(DateSection, KeysStandInAnyOrder) {
    EXPECT_EQ(read("[datetime]\nis12hour = false\ndateorder = ymd\nfirstday = 7\ndays = a,b,c,d,e,f,g\n"
                   "shortmonths = 1,2,3,4,5,6,7,8,9,10,11,12\nmonths = 1,2,3,4,5,6,7,8,9,10,11,12\n"),
              INTL_OK);
    EXPECT_EQ(texts(info_.days), (Strings{"a", "b", "c", "d", "e", "f", "g"}));
    EXPECT_EQ(info_.firstday, 7);
}

TEST_F(DateSection, OtherKeysAreSkipped) {
    EXPECT_EQ(read("firstday", "era = Reiwa, Heisei\nempty =\nfirstday"), INTL_OK);
}

TEST_F(DateSection, SectionsBehindItDoNotCount) {
    EXPECT_EQ(read(support::us_english_common() + "[more]\nfirstday = 3\n"), INTL_OK);
    EXPECT_EQ(info_.firstday, 1);
    EXPECT_EQ(read(changed(support::us_english_common(), "firstday = 1", "") + "[more]\nfirstday = 3\n"),
              INTL_EBADDATE);
}

TEST_F(DateSection, LastOneOfAKeyCounts) {
    EXPECT_EQ(read("firstday = 1", "firstday = 1\nfirstday = 5"), INTL_OK);
    EXPECT_EQ(info_.firstday, 5);
}

TEST_F(DateSection, EachKeyIsNeeded) {
    for (const std::string key : {"\nmonths", "\nshortmonths", "\ndays", "\nfirstday", "\ndateorder", "\nis12hour"})
        EXPECT_EQ(read(key + " =", "\nother ="), INTL_EBADDATE) << key;
    EXPECT_EQ(read("[datetime]\n"), INTL_EBADDATE);
}

TEST_F(DateSection, EachListHasItsLength) {
    EXPECT_EQ(read("January, ", ""), INTL_EBADDATE);
    EXPECT_EQ(read("January, ", "January, Sol, "), INTL_EBADDATE);
    EXPECT_EQ(read("Jan, ", ""), INTL_EBADDATE);
    EXPECT_EQ(read("Jan, ", "Jan, Sol, "), INTL_EBADDATE);
    EXPECT_EQ(read("Sunday, ", ""), INTL_EBADDATE);
    EXPECT_EQ(read("Sunday, ", "Sunday, Sunday, "), INTL_EBADDATE);
    EXPECT_EQ(read("firstday = 1", "firstday = 1, 2"), INTL_EBADDATE);
    EXPECT_EQ(read("firstday = 1", "firstday ="), INTL_EBADDATE);
    EXPECT_EQ(read("= mdy", "= mdy, dmy"), INTL_EBADDATE);
    EXPECT_EQ(read("= mdy", "="), INTL_EBADDATE);
    EXPECT_EQ(read("= true", "= true, true"), INTL_EBADDATE);
    EXPECT_EQ(read("= true", "="), INTL_EBADDATE);
}

TEST_F(DateSection, LongestNamesFit) {
    EXPECT_EQ(read("January", std::string(20, 'x')), INTL_OK);
    EXPECT_EQ(info_.months[0], std::string(20, 'x'));
    EXPECT_EQ(read("January", std::string(21, 'x')), INTL_EBADDATE);
    EXPECT_EQ(read("Dec\n", std::string(9, 'x') + "\n"), INTL_OK);
    EXPECT_EQ(info_.shortmonths[11], std::string(9, 'x'));
    EXPECT_EQ(read("Dec\n", std::string(10, 'x') + "\n"), INTL_EBADDATE);
    EXPECT_EQ(read("Saturday", std::string(30, 'x')), INTL_OK);
    EXPECT_EQ(info_.days[6], std::string(30, 'x'));
    EXPECT_EQ(read("Saturday", std::string(31, 'x')), INTL_EBADDATE);
}

TEST_F(DateSection, NamesMayBeEmpty) {
    EXPECT_EQ(read("January", "\"\""), INTL_OK);
    EXPECT_STREQ(info_.months[0], "");
}

TEST_F(DateSection, FirstDayIsOneToSeven) {
    for (int day = 1; day <= 7; ++day) {
        EXPECT_EQ(read("firstday = 1", "firstday = " + std::to_string(day)), INTL_OK);
        EXPECT_EQ(info_.firstday, day);
    }
    for (const char *day : {"0", "8", "-1", "01", "1x", "x", "\"\"", "Monday"})
        EXPECT_EQ(read("firstday = 1", std::string("firstday = ") + day), INTL_EBADDATE) << day;
}

TEST_F(DateSection, OrderHasUpToThreeLetters) {
    EXPECT_EQ(read("= mdy", "= yyy"), INTL_OK);
    EXPECT_STREQ(info_.dateorder, "yyy");
    EXPECT_EQ(read("= mdy", "= md"), INTL_OK);
    EXPECT_EQ(read("= mdy", "= mdyh"), INTL_EBADDATE);
}

TEST_F(DateSection, ClockIsAWord) {
    for (const char *word : {"True", "yes", "1", "\"\"", "tru", "truee", "falsee"})
        EXPECT_EQ(read("= true", std::string("= ") + word), INTL_EBADDATE) << word;
}

TEST_F(DateSection, TroubleOfTheReaderIsToldWithItsLine) {
    EXPECT_EQ(read("firstday = 1", "firstday"), INTL_ENOEQUALS);
    EXPECT_EQ(line_, 5);
    EXPECT_EQ(read("Sunday", "\"Sunday"), INTL_EUNTERMINATED);
    EXPECT_EQ(line_, 4);
    EXPECT_EQ(read("= true", "= \\xZ"), INTL_EBADESCAPE);
    EXPECT_EQ(line_, 7);
    EXPECT_EQ(read("= mdy", "= mdy\n;" + std::string(1023, 'x')), INTL_ELINETOOLONG);
}

} // namespace

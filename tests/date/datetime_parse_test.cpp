// What a date text means: each step of the resolver, every style and order, each part that can be wanted.

#include "support/date_comparison.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <ostream>
#include <string>
#include <vector>

namespace {

using namespace support;

// A text's code, and the fields that it sets where the code is 0 or 99.
struct Reading {
    int code;
    std::array<CS_INT, 3> date = {}; // year, month from 1, day
    std::array<CS_INT, 4> time = {}; // down to the millisecond
    bool operator==(const Reading &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Reading &reading) {
    out << "code " << reading.code;
    for (const CS_INT field : reading.date)
        out << " " << field;
    for (const CS_INT field : reading.time)
        out << " " << field;
    return out;
}

struct How {
    int style = 0;
    int order = DATEORDER_MDY;
    int partonly = DATEWANT_ALL;
    int type = CS_DATETIME_TYPE;
    char **months = com__get_months();
    char **shortmonths = com__get_shortmonths();
};

struct Outcome {
    int code;
    CS_DATEREC record;
    CS_BOOL truncated;
};
Outcome outcome(std::string_view text, const How &how = {}) {
    const ExactText exact(text);
    Outcome result = {0, untouched_record(), UNTOUCHED};
    result.code = xdaterecfromchar(&result.record, exact.get(), exact.length(), how.partonly, how.style, how.order,
                                   how.months, how.shortmonths, nullptr, how.type, &result.truncated);
    return result;
}

Reading read(std::string_view text, const How &how = {}) {
    const auto [code, record, truncated] = outcome(text, how);
    if (code != 0 && code != 99)
        return {code};
    return {code,
            {record.dateyear, record.datemonth + 1, record.datedmonth},
            {record.datehour, record.dateminute, record.datesecond, record.datemsecond}};
}
int code(std::string_view text, const How &how = {}) { return outcome(text, how).code; }

Reading date(int year, int month, int day) { return {0, {year, month, day}, {}}; }
Reading at(Reading reading, int hour, int minute, int second = 0, int millisecond = 0) {
    reading.time = {hour, minute, second, millisecond};
    return reading;
}
// With no date the month and day are those of January 1, and the year is left alone.
Reading time(int hour, int minute, int second = 0, int millisecond = 0) {
    return {99, {UNTOUCHED, 1, 1}, {hour, minute, second, millisecond}};
}

constexpr Reading SYNTAX = {DATE_SYNTAX};
constexpr Reading LEFTOVER = {DATE_LEFTOVER};
constexpr Reading BAD_YEAR = {DATE_YEAR2};
constexpr Reading BAD_HOUR = {DATE_AMPM};

const How STYLE_101 = {.style = 101};

// ---- What the record holds ----

TEST(DateRecord, NothingIsATimeAtMidnight) {
    for (const char *text : {"", " ", "                                        "})
        EXPECT_EQ(read(text), time(0, 0)) << "\"" << text << "\"";
}
TEST(DateRecord, NegativeLengthIsAnEmptyText) {
    char text[] = "1/2/03";
    for (int length : {0, -1, -100}) {
        CS_DATEREC record = untouched_record();
        CS_BOOL truncated = CS_TRUE;
        EXPECT_EQ(
            xdaterecfromchar(&record, text, length, 0, 0, 1, nullptr, nullptr, nullptr, CS_DATETIME_TYPE, &truncated),
            99);
        EXPECT_EQ(truncated, CS_FALSE);
    }
}
TEST(DateRecord, FieldsThatAreNotReadStay) {
    for (const char *text : {"10:30", "1/2/03", "Jan 2003", "20030102 3PM"}) {
        const CS_DATEREC record = outcome(text).record;
        EXPECT_EQ(record.datedyear, UNTOUCHED);
        EXPECT_EQ(record.datedweek, UNTOUCHED);
        EXPECT_EQ(record.datetzone, UNTOUCHED);
        EXPECT_EQ(record.datesecfrac, 0);
        EXPECT_EQ(record.datesecprec, 0);
    }
    EXPECT_EQ(outcome("10:30").record.dateyear, UNTOUCHED);
}
TEST(DateRecord, TruncatedIsClearedByEveryText) {
    for (const char *text : {"", "1/2/03", "#", "1:2:3.123", "1/2", "13AM", "1/2/100"})
        EXPECT_EQ(outcome(text).truncated, CS_FALSE) << text;
}

// ---- Tokens ----

TEST(DateText, TwentyTokensAreRead) {
    EXPECT_EQ(code("1/2/03" + std::string(15, ',')), DATE_LEFTOVER);
    EXPECT_EQ(read("1/2/03" + std::string(15, ','), {.partonly = DATEWANT_DATE}), date(2003, 1, 2));
}
TEST(DateText, TwentyOneTokensAreNoDate) {
    EXPECT_EQ(code("1/2/03" + std::string(16, ',')), DATE_SYNTAX);
    EXPECT_EQ(code("1/2/03" + std::string(16, ','), {.partonly = DATEWANT_DATE}), DATE_SYNTAX);
    EXPECT_EQ(code(std::string(100000, ',')), DATE_SYNTAX);
}
TEST(DateText, BlanksAreNoTokens) {
    EXPECT_EQ(read("1/2/03" + std::string(5000, ' ')), date(2003, 1, 2));
    EXPECT_EQ(read(std::string(5000, ' ') + "1 / 2 / 03"), date(2003, 1, 2));
}
TEST(DateText, AnyTextWithATabIsNoDate) {
    for (const char *text : {"\t", "1/2/03\t", "\t1/2/03", "Jan\t2 2003", "10:30\tPM"})
        EXPECT_EQ(read(text), SYNTAX) << text;
}
TEST(DateText, AWordThatIsNoMonthIsNoDate) {
    for (const char *text : {"Sat", "Sat 1/2/03", "1/2/03 noon", "Janu 2 2003", "10:30 Z", "10:30 A"})
        EXPECT_EQ(read(text), SYNTAX) << text;
}
TEST(DateText, WithoutListsMonthsAreNoWords) {
    EXPECT_EQ(read("Jan 2 2003", {.months = nullptr}), SYNTAX);
    EXPECT_EQ(read("Jan 2 2003", {.shortmonths = nullptr}), SYNTAX);
    EXPECT_EQ(read("1/2/2003 3PM", {.months = nullptr, .shortmonths = nullptr}), at(date(2003, 1, 2), 15, 0));
}

// ---- Time ----

TEST(TimeText, HourAndMinute) {
    EXPECT_EQ(read("10:30"), time(10, 30));
    EXPECT_EQ(read("0:0"), time(0, 0));
    EXPECT_EQ(read("010:007"), time(10, 7));
    EXPECT_EQ(read("10 : 30"), time(10, 30));
}
TEST(TimeText, HoursAndMinutesAreNotJudgedHere) { EXPECT_EQ(read("999:998:997"), time(999, 998, 997)); }
TEST(TimeText, AColonNeedsNumbersOnBothSides) {
    for (const char *text : {"10:", "10:PM", "10::30", "10:1030", "1030:10", "10:Jan", "Jan:10", "10,:30", "10:,30",
                             "10:.5", "10:-5", "103059:10", "10:10305"})
        EXPECT_EQ(read(text), SYNTAX) << text;
}
TEST(TimeText, AColonInFrontOfAllIsLeftOver) {
    EXPECT_EQ(read(":30"), LEFTOVER);
    EXPECT_EQ(read(":"), LEFTOVER);
    EXPECT_EQ(read(":10:30"), LEFTOVER) << "only the first colon counts";
    EXPECT_EQ(read(":10:30", {.partonly = DATEWANT_TIME}), LEFTOVER);
    EXPECT_EQ(read(":30 Jan 2003"), LEFTOVER);
    EXPECT_EQ(read(":30 Jan 2003", {.partonly = DATEWANT_DATE}), date(2003, 1, 30));
}
TEST(TimeText, ALeadingColonDoesNotKeepFromReadingAmAndPm) { EXPECT_EQ(read(": 3PM"), LEFTOVER); }
TEST(TimeText, Seconds) {
    EXPECT_EQ(read("10:30:15"), time(10, 30, 15));
    EXPECT_EQ(read("10:30:"), SYNTAX);
    EXPECT_EQ(read("10:30:PM"), SYNTAX);
    EXPECT_EQ(read("10:30:1500"), SYNTAX);
}
TEST(TimeText, ANumberBehindAColonIsMillisecondsAsItStands) {
    EXPECT_EQ(read("12:30:15:5"), time(12, 30, 15, 5));
    EXPECT_EQ(read("12:30:15:50"), time(12, 30, 15, 50));
    EXPECT_EQ(read("12:30:15:123"), time(12, 30, 15, 123));
    EXPECT_EQ(read("12:30:15:005"), time(12, 30, 15, 5));
    EXPECT_EQ(read("12:30:15:"), SYNTAX);
    EXPECT_EQ(read("12:30:15:1234"), SYNTAX);
}
TEST(TimeText, MillisecondsBehindAColonOfBigTypesStandInTheMilliseconds) {
    for (const int type : {CS_BIGDATETIME_TYPE, CS_BIGTIME_TYPE}) {
        const CS_DATEREC record = outcome("12:30:15:5", {.type = type}).record;
        EXPECT_EQ(record.datemsecond, 5);
        EXPECT_EQ(record.datesecfrac, 0);
        EXPECT_EQ(record.datesecprec, 0);
    }
}
TEST(TimeText, AFifthNumberIsLeftOver) {
    EXPECT_EQ(read("12:30:15:5:7"), LEFTOVER);
    EXPECT_EQ(read("12:30:15:5.7"), SYNTAX) << "no fraction behind milliseconds, but the one separator of a date";
    EXPECT_EQ(read("12:30:15.5:7"), LEFTOVER);
}
TEST(TimeText, APointBeginsAFraction) {
    EXPECT_EQ(read("12:30:15.5"), time(12, 30, 15, 500));
    EXPECT_EQ(read("12:30:15.05"), time(12, 30, 15, 50));
    EXPECT_EQ(read("12:30:15.123"), time(12, 30, 15, 123));
    EXPECT_EQ(read("12:30:15.1230"), time(12, 30, 15, 123));
    EXPECT_EQ(read("12:30:15.12300"), time(12, 30, 15, 123));
    EXPECT_EQ(read("12:30:15.123000"), time(12, 30, 15, 123));
    EXPECT_EQ(read("12:30:15 . 5"), time(12, 30, 15, 500));
}
TEST(TimeText, AFractionMayStandBehindTheMinute) { EXPECT_EQ(read("12:30.5"), time(12, 30, 0, 500)); }
TEST(TimeText, APointNeedsDigits) {
    for (const char *text : {"12:30:15.", "12:30:15.PM", "12:30:15./", "12:30:15.T", "12:30:15.1234567",
                             "12:30:15.123456789", "12:30:15. Jan"})
        EXPECT_EQ(read(text), SYNTAX) << text;
}
TEST(TimeText, OtherSeparatorsBeginNoFraction) {
    EXPECT_EQ(read("12:30:15/5"), SYNTAX) << "a date with one separator";
    EXPECT_EQ(read("12:30:15-5"), SYNTAX);
    EXPECT_EQ(read("12:30:15,5"), LEFTOVER);
}
TEST(TimeText, FractionsBelowAMillisecondAreRoundedAndTold) {
    const struct {
        const char *text;
        int milliseconds;
        bool truncated;
    } cases[] = {
        {".1", 100, false},     {".1234", 123, true},   {".1235", 124, true},   {".12345", 123, true},
        {".12350", 124, true},  {".123499", 123, true}, {".123500", 124, true}, {".123000", 123, false},
        {".0004", 0, true},     {".0005", 1, true},     {".000499", 0, true},   {".000500", 1, true},
        {".9994", 999, true},   {".9996", 999, true},   {".99950", 999, true},  {".999500", 999, true},
        {".999999", 999, true}, {".999", 999, false},   {".000000", 0, false},
    };
    for (const auto &[fraction, milliseconds, truncated] : cases) {
        const std::string text = std::string("10:30:15") + fraction;
        EXPECT_EQ(read(text), time(10, 30, 15, milliseconds)) << text;
        EXPECT_EQ(outcome(text).truncated, truncated ? CS_TRUE : CS_FALSE) << text;
    }
}
TEST(TimeText, EightDigitsOfAFractionAreTakenAsMicroseconds) {
    EXPECT_EQ(read("1:2:3.00000500"), time(1, 2, 3, 1));
    EXPECT_EQ(read("1:2:3.00123000"), time(1, 2, 3, 123));
    EXPECT_EQ(read("1:2:3.00999999"), time(1, 2, 3, 999));
}
TEST(TimeText, AThousandMillisecondsBecome999AndMoreAreNoTime) {
    EXPECT_EQ(read("1:2:3.01000000"), time(1, 2, 3, 999));
    EXPECT_EQ(read("1:2:3.01000499"), time(1, 2, 3, 999));
    EXPECT_EQ(read("1:2:3.01000500"), SYNTAX);
    EXPECT_EQ(outcome("1:2:3.01000500").truncated, CS_TRUE);
    EXPECT_EQ(read("1:2:3.01001000"), SYNTAX);
    EXPECT_EQ(outcome("1:2:3.01001000").truncated, CS_FALSE);
    EXPECT_EQ(read("1:2:3.99999999"), SYNTAX);
}
TEST(TimeText, BigTypesKeepMicroseconds) {
    const struct {
        const char *fraction;
        int microseconds;
    } cases[] = {{".5", 500000},         {".05", 50000},         {".123", 123000},    {".1234", 123400},
                 {".12345", 123450},     {".123456", 123456},    {".999999", 999999}, {".000001", 1},
                 {".01000500", 1000500}, {".99999999", 99999999}};
    for (const int type : {CS_BIGDATETIME_TYPE, CS_BIGTIME_TYPE})
        for (const auto &[fraction, microseconds] : cases) {
            const auto [code, record, truncated] = outcome(std::string("10:30:15") + fraction, {.type = type});
            EXPECT_EQ(code, 99);
            EXPECT_EQ(truncated, CS_FALSE);
            EXPECT_EQ(record.datesecprec, 1000000);
            EXPECT_EQ(record.datesecfrac, microseconds);
            EXPECT_EQ(record.datemsecond, 0);
        }
    EXPECT_EQ(outcome("10:30:15", {.type = CS_BIGDATETIME_TYPE}).record.datesecprec, 0) << "no fraction, no precision";
}
TEST(TimeText, AmAndPmBehindAClock) {
    EXPECT_EQ(read("10:30AM"), time(10, 30));
    EXPECT_EQ(read("10:30 PM"), time(22, 30));
    EXPECT_EQ(read("12:30AM"), time(0, 30));
    EXPECT_EQ(read("12:30PM"), time(12, 30));
    EXPECT_EQ(read("10:30:15 pm"), time(22, 30, 15));
    EXPECT_EQ(read("10:30:15:123PM"), time(22, 30, 15, 123));
    EXPECT_EQ(read("10:30:15.123PM"), time(22, 30, 15, 123));
    EXPECT_EQ(read("10:30.5PM"), time(22, 30, 0, 500));
    EXPECT_EQ(read("13:30PM"), time(13, 30));
    EXPECT_EQ(read("13:30AM"), BAD_HOUR);
    EXPECT_EQ(read("0:30PM"), BAD_HOUR);
    EXPECT_EQ(read("0:30AM"), time(0, 30));
}
TEST(TimeText, AmAndPmMustStandRightBehindTheClock) {
    EXPECT_EQ(read("10:30,PM"), LEFTOVER);
    EXPECT_EQ(read("PM 10:30"), LEFTOVER);
    EXPECT_EQ(read("10:30AMPM"), SYNTAX) << "which is one word";
    EXPECT_EQ(read("10:30AM PM"), LEFTOVER);
}
TEST(TimeText, AmAndPmBehindANumberAlone) {
    EXPECT_EQ(read("3PM"), time(15, 0));
    EXPECT_EQ(read("3 PM"), time(15, 0));
    EXPECT_EQ(read("12AM"), time(0, 0));
    EXPECT_EQ(read("12PM"), time(12, 0));
    EXPECT_EQ(read("13PM"), time(13, 0));
    EXPECT_EQ(read("13AM"), BAD_HOUR);
    EXPECT_EQ(read("0PM"), BAD_HOUR);
    EXPECT_EQ(read("0AM"), time(0, 0));
    EXPECT_EQ(read("999PM"), time(999, 0));
}
TEST(TimeText, AmAndPmNeedANumberInFront) {
    for (const char *text : {"2003PM", "/PM", "Jan PM", "103059AM", "10305AM", "T AM", "3,PM"})
        EXPECT_EQ(read(text), SYNTAX) << text;
}
TEST(TimeText, AmAndPmInFrontOfAllAreLeftOver) {
    EXPECT_EQ(read("PM"), LEFTOVER);
    EXPECT_EQ(read("PM 3"), LEFTOVER);
    EXPECT_EQ(read("AM 3PM"), LEFTOVER) << "only the first word counts";
}
TEST(TimeText, TheFirstOfTwoTimesIsTaken) {
    EXPECT_EQ(read("10:30 11:45"), LEFTOVER);
    EXPECT_EQ(read("3PM 4PM"), LEFTOVER);
    EXPECT_EQ(read("3PM 10:30"), LEFTOVER);
}
TEST(TimeText, ATimeMayStandAnywhere) {
    EXPECT_EQ(read("10:30 1/2/03"), at(date(2003, 1, 2), 10, 30));
    EXPECT_EQ(read("1/2/03 10:30"), at(date(2003, 1, 2), 10, 30));
    EXPECT_EQ(read("Jan 2 10:30 2003"), at(date(2003, 1, 2), 10, 30));
    EXPECT_EQ(read("3PM Jan 2 2003"), at(date(2003, 1, 2), 15, 0));
    EXPECT_EQ(read("Jan 2 2003 3PM"), at(date(2003, 1, 2), 15, 0));
    EXPECT_EQ(read("20030102 10:30:15.5"), at(date(2003, 1, 2), 10, 30, 15, 500));
    EXPECT_EQ(read("Jan 2 2003 10:30:15.123456PM"), at(date(2003, 1, 2), 22, 30, 15, 123));
}
TEST(TimeText, TheNumberInFrontOfTheColonIsTheHourWhateverItWas) {
    EXPECT_EQ(read("1/2/03:10"), SYNTAX) << "the year went to the clock";
    EXPECT_EQ(read("2003:10 Jan 2"), SYNTAX);
}

// ---- T ----

TEST(DateTextT, OnlyATimeMayFollow) {
    EXPECT_EQ(read("2003-01-02T10:30:15"), at(date(2003, 1, 2), 10, 30, 15));
    EXPECT_EQ(read("2003-01-02 t 10:30"), at(date(2003, 1, 2), 10, 30));
    EXPECT_EQ(read("2003-01-02T3PM"), at(date(2003, 1, 2), 15, 0));
    EXPECT_EQ(read("20030102T10:30:15.5"), at(date(2003, 1, 2), 10, 30, 15, 500));
    EXPECT_EQ(read("Jan 2 2003T10:30"), at(date(2003, 1, 2), 10, 30));
}
TEST(DateTextT, ATextThatEndsInTIsADate) {
    EXPECT_EQ(read("2003-01-02T"), date(2003, 1, 2));
    EXPECT_EQ(read("T"), time(0, 0));
    EXPECT_EQ(read("T10:30"), time(10, 30));
    EXPECT_EQ(read("10:30T"), time(10, 30));
}
TEST(DateTextT, AnythingElseBehindItIsNoDate) {
    for (const char *text : {"2003-01-02T10", "T 1/2/03", "2003-01-02TT10:30", "2003-01-02T10:30,", "TJan 2 2003",
                             "2003-01-02T10:30T", "T2003", "2003-01-02T10:30 PM PM", "2003-01-02Tue"})
        EXPECT_EQ(read(text), SYNTAX) << text;
}
TEST(DateTextT, LeftoversInFrontOfItAreLeftOver) { EXPECT_EQ(read(",20030102T10:30"), LEFTOVER); }
TEST(DateTextT, ItIsLeftOverWhereOnlyATimeIsWanted) {
    EXPECT_EQ(read("T10:30", {.partonly = DATEWANT_TIMEONLY}), LEFTOVER);
}

// ---- A month's name ----

TEST(NamedMonth, TheFormsPeopleWrite) {
    for (const char *text :
         {"Jan 2 2003", "2 Jan 2003",     "2-Jan-2003", "January 2, 2003", "jan 2 03",   "2/Jan/2003",
          "2.Jan.2003", "2 January 2003", "Jan 2, 03",  "2003 Jan 2",      "2003 2 Jan", "2003-Jan-2",
          "Jan 2003 2", "JANUARY 2,2003", "Jan,2,2003", "2Jan2003",        "2 Jan 03",   "2-Jan-03",
          "2-Jan,2003", "2 Jan, 2003",    "Jan, 2 2003"})
        EXPECT_EQ(read(text), date(2003, 1, 2)) << text;
    EXPECT_EQ(read("2 Jan 0003"), date(3, 1, 2));
}
TEST(NamedMonth, EveryMonthByBothNames) {
    for (int month = 0; month < 12; ++month)
        for (char **names : {com__get_months(), com__get_shortmonths()})
            EXPECT_EQ(read(std::string(names[month]) + " 2 2003"), date(2003, month + 1, 2));
}
TEST(NamedMonth, TheOrderAndTheStylePlayNoPart) {
    for (int order = -1; order <= 8; ++order)
        for (int style = -1; style <= 150; ++style)
            ASSERT_EQ(read("3 Jan 04", {.style = style, .order = order}), date(2004, 1, 3)) << style << " " << order;
}
TEST(NamedMonth, WithoutADayItIsTheFirst) {
    EXPECT_EQ(read("Jan 2003"), date(2003, 1, 1));
    EXPECT_EQ(read("2003 Feb"), date(2003, 2, 1));
    EXPECT_EQ(read("Feb, 2003"), date(2003, 2, 1));
}
TEST(NamedMonth, WithoutAYearOfFourDigitsTwoNumbersAreNeeded) {
    EXPECT_EQ(read("Jan 2"), SYNTAX);
    EXPECT_EQ(read("2 Jan"), SYNTAX);
    EXPECT_EQ(read("Jan"), SYNTAX);
    EXPECT_EQ(read("Jan 20030102"), SYNTAX);
    EXPECT_EQ(read("Jan 2 10:30"), SYNTAX) << "those of a time do not count";
    EXPECT_EQ(read("Jan 2 3PM"), SYNTAX);
}
TEST(NamedMonth, TheFirstNumberIsTheDayTheSecondTheYear) {
    EXPECT_EQ(read("3 Jan 4"), date(2004, 1, 3));
    EXPECT_EQ(read("Jan 3 4"), date(2004, 1, 3));
    EXPECT_EQ(read("3 4 Jan"), date(2004, 1, 3));
    EXPECT_EQ(read("Jan 100 99"), date(1999, 1, 100)) << "which the make judges";
}
TEST(NamedMonth, ShortYears) {
    EXPECT_EQ(read("Jan 2 0"), date(2000, 1, 2));
    EXPECT_EQ(read("Jan 2 49"), date(2049, 1, 2));
    EXPECT_EQ(read("Jan 2 50"), date(1950, 1, 2));
    EXPECT_EQ(read("Jan 2 099"), date(1999, 1, 2));
    EXPECT_EQ(read("Jan 2 100"), BAD_YEAR);
    EXPECT_EQ(read("Jan 2 100 , ,"), BAD_YEAR) << "before what is left over";
    EXPECT_EQ(read("Jan 2 999", {.partonly = DATEWANT_DATE}), BAD_YEAR);
}
TEST(NamedMonth, SeparatorsAroundTheNameAreConsumed) {
    EXPECT_EQ(read("2-Jan/2003"), date(2003, 1, 2));
    EXPECT_EQ(read("2.Jan,2003"), date(2003, 1, 2));
    EXPECT_EQ(read("-Jan 2 2003"), date(2003, 1, 2));
    EXPECT_EQ(read("2 Jan-2003"), LEFTOVER) << "one behind the name only where one stands in front";
    EXPECT_EQ(read("2--Jan-2003"), LEFTOVER);
    EXPECT_EQ(read("2-Jan--2003"), LEFTOVER);
    EXPECT_EQ(read("2-Jan-,2003"), LEFTOVER);
}
TEST(NamedMonth, CommasBehindTheNameAndBehindTheDayAreConsumed) {
    EXPECT_EQ(read("Jan, 2, 2003"), date(2003, 1, 2));
    EXPECT_EQ(read("2, Jan, 2003"), date(2003, 1, 2));
    EXPECT_EQ(read("2, Jan, 03"), date(2003, 1, 2));
    EXPECT_EQ(read("Jan 2 2003,"), LEFTOVER);
    EXPECT_EQ(read("Jan 2 03,"), LEFTOVER);
    EXPECT_EQ(read("Jan 2,, 2003"), LEFTOVER);
    EXPECT_EQ(read("Jan,, 2 2003"), LEFTOVER);
    EXPECT_EQ(read(",Jan 2 2003"), LEFTOVER);
    EXPECT_EQ(read("2003, Jan 2"), LEFTOVER);
}
TEST(NamedMonth, ASecondNameOrNumberIsLeftOver) {
    EXPECT_EQ(read("Jan Feb 2 2003"), LEFTOVER);
    EXPECT_EQ(read("Jan 2 3 2003"), LEFTOVER);
    EXPECT_EQ(read("Jan 2 3 4"), LEFTOVER);
    EXPECT_EQ(read("Jan 2 2003 2004"), LEFTOVER);
    EXPECT_EQ(read("Jan Feb 2 2003", {.partonly = DATEWANT_DATE}), date(2003, 1, 2));
}

// ---- Numbers around separators ----

TEST(SeparatedDate, EveryOrder) {
    const struct {
        int order;
        Reading reading;
    } cases[] = {{DATEORDER_MDY, date(2003, 1, 2)}, {DATEORDER_DMY, date(2003, 2, 1)},
                 {DATEORDER_YMD, date(2001, 2, 3)}, {DATEORDER_YDM, date(2001, 3, 2)},
                 {DATEORDER_MYD, date(2002, 1, 3)}, {DATEORDER_DYM, date(2002, 3, 1)}};
    for (const auto &[order, reading] : cases)
        for (const int style : {0, 9})
            for (const char *text : {"1/2/03", "1-2-03", "1.2.03", "1/2-03", "01 / 02 / 003"})
                EXPECT_EQ(read(text, {.style = style, .order = order}), reading) << text << " order " << order;
}
TEST(SeparatedDate, OrdersOutsideOneToSix) {
    for (const int order : {0, 7, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(read("1/2/03", {.order = order}), SYNTAX);
        EXPECT_EQ(read("1/2/2003", {.order = order}), SYNTAX);
        EXPECT_EQ(read("1/2/100", {.order = order}), SYNTAX) << "before the year is read";
        EXPECT_EQ(read("2003/1/2", {.order = order}), date(2003, 1, 2)) << "a year in front settles it";
        EXPECT_EQ(read("1/2/03", {.style = 3, .order = order}), date(2003, 2, 1)) << "as a style does";
    }
}
TEST(SeparatedDate, AYearOfFourDigitsStandsAnywhere) {
    const struct {
        int order;
        Reading reading;
    } cases[] = {{DATEORDER_MDY, date(1999, 1, 2)}, {DATEORDER_DMY, date(1999, 2, 1)},
                 {DATEORDER_YMD, date(1999, 1, 2)}, {DATEORDER_YDM, date(1999, 2, 1)},
                 {DATEORDER_MYD, date(1999, 1, 2)}, {DATEORDER_DYM, date(1999, 2, 1)}};
    for (const auto &[order, reading] : cases) {
        EXPECT_EQ(read("01-02-1999", {.order = order}), reading) << order;
        EXPECT_EQ(read("01-1999-02", {.order = order}), reading) << order;
    }
}
TEST(SeparatedDate, AYearInFrontMeansYmdExceptUnderYdm) {
    for (int order = 1; order <= 6; ++order)
        EXPECT_EQ(read("1999/01/02", {.order = order}), order == DATEORDER_YDM ? date(1999, 2, 1) : date(1999, 1, 2))
            << order;
    EXPECT_EQ(read("10:30 1999/02/01", {.order = DATEORDER_DMY}), at(date(1999, 1, 2), 10, 30))
        << "behind a time it is not in front";
}
TEST(SeparatedDate, ShortYears) {
    EXPECT_EQ(read("1/2/0"), date(2000, 1, 2));
    EXPECT_EQ(read("1/2/49"), date(2049, 1, 2));
    EXPECT_EQ(read("1/2/50"), date(1950, 1, 2));
    EXPECT_EQ(read("1/2/99"), date(1999, 1, 2));
    EXPECT_EQ(read("1/2/099"), date(1999, 1, 2));
    EXPECT_EQ(read("1/2/100"), BAD_YEAR);
    EXPECT_EQ(read("1/2/999,"), BAD_YEAR);
}
TEST(SeparatedDate, FailuresComeInTheOrderOfThePlaces) {
    EXPECT_EQ(read("1/100/", {.order = DATEORDER_MYD}), BAD_YEAR) << "before the day is missed";
    EXPECT_EQ(read("1/100/", {.order = DATEORDER_MDY}), SYNTAX);
    EXPECT_EQ(read("100//", {.order = DATEORDER_YMD}), BAD_YEAR);
    EXPECT_EQ(read("100/", {.order = DATEORDER_YMD}), SYNTAX) << "the separators come first";
}
TEST(SeparatedDate, FieldsAreNotJudgedHere) {
    EXPECT_EQ(read("0/0/0"), date(2000, 0, 0));
    EXPECT_EQ(read("999/999/99"), date(1999, 999, 999));
    EXPECT_EQ(read("1/2/0000"), date(0, 1, 2));
}
TEST(SeparatedDate, TwoSeparatorsAreNeeded) {
    EXPECT_EQ(read("1/2"), SYNTAX);
    EXPECT_EQ(read("1/2 03"), SYNTAX);
    EXPECT_EQ(read("1/"), SYNTAX);
    EXPECT_EQ(read("2003/1"), SYNTAX);
    EXPECT_EQ(read("20030102/"), SYNTAX);
    EXPECT_EQ(read("1/2 10:30:15.5"), SYNTAX) << "the point of a fraction is none";
}
TEST(SeparatedDate, WhereTheSeparatorsStandDoesNotMatter) {
    EXPECT_EQ(read("1//2 03"), date(2003, 1, 2));
    EXPECT_EQ(read("1 2/03/"), date(2003, 1, 2));
    EXPECT_EQ(read("1 2 03--"), date(2003, 1, 2));
}
TEST(SeparatedDate, ASeparatorInFrontOfAllIsNone) {
    EXPECT_EQ(read("/1/2/03"), LEFTOVER) << "only the first counts";
    EXPECT_EQ(read("-1/2/03", {.partonly = DATEWANT_DATE}), LEFTOVER);
    EXPECT_EQ(read("/2003"), LEFTOVER);
    EXPECT_EQ(read("/2003", {.partonly = DATEWANT_DATE}), date(2003, 1, 1));
    EXPECT_EQ(read("-20030102", {.partonly = DATEWANT_DATE}), date(2003, 1, 2));
}
TEST(SeparatedDate, NumbersMayBeMissedOrLeftOver) {
    EXPECT_EQ(read("1/2/"), SYNTAX);
    EXPECT_EQ(read("1//"), SYNTAX);
    EXPECT_EQ(read("2003/1/"), SYNTAX);
    EXPECT_EQ(read("1/2/3/4"), LEFTOVER);
    EXPECT_EQ(read("1/2/3 4"), LEFTOVER);
    EXPECT_EQ(read("1/2/3,"), LEFTOVER);
    EXPECT_EQ(read("1/2/2003 2004"), LEFTOVER);
    EXPECT_EQ(read("1/2/20030102"), SYNTAX);
    EXPECT_EQ(read("1/2/12345"), SYNTAX);
}

// ---- Styles ----

enum class Century { ANYWHERE, NEVER, ALWAYS };
struct Style {
    int style;
    int order; // 0 the caller's
    Century century;
};
constexpr Style READABLE[] = {
    {0, 0, Century::ANYWHERE}, {9, 0, Century::ANYWHERE}, {1, 1, Century::NEVER},    {10, 1, Century::NEVER},
    {2, 3, Century::NEVER},    {11, 3, Century::NEVER},   {21, 3, Century::NEVER},   {22, 3, Century::NEVER},
    {23, 3, Century::NEVER},   {40, 3, Century::NEVER},   {3, 2, Century::NEVER},    {4, 2, Century::NEVER},
    {5, 2, Century::NEVER},    {101, 1, Century::ALWAYS}, {110, 1, Century::ALWAYS}, {102, 3, Century::ALWAYS},
    {111, 3, Century::ALWAYS}, {121, 3, Century::ALWAYS}, {122, 3, Century::ALWAYS}, {140, 3, Century::ALWAYS},
    {103, 2, Century::ALWAYS}, {104, 2, Century::ALWAYS}, {105, 2, Century::ALWAYS},
};
constexpr const char *PLACES[] = {"", "mdy", "dmy", "ymd", "ydm", "myd", "dym"};

// The date 4 May (20)07 as an order writes it.
std::string written(int order, const char *year) {
    std::string text;
    for (const char *place = PLACES[order]; *place != '\0'; ++place) {
        text += text.empty() ? "" : "/";
        text += *place == 'y' ? year : *place == 'm' ? "5" : "4";
    }
    return text;
}

TEST(DateStyle, EachStyleWithEachOrderReadsItsOwn) {
    for (const auto &[style, fixed, century] : READABLE)
        for (int order = 1; order <= 6; ++order)
            for (const int partonly : {DATEWANT_ALL, DATEWANT_DATE, DATEWANT_TIME}) {
                const How how = {.style = style, .order = order, .partonly = partonly};
                const int used = fixed != 0 ? fixed : order;
                EXPECT_EQ(read(written(used, "07"), how), century == Century::ALWAYS ? SYNTAX : date(2007, 5, 4))
                    << style << " " << order;
                EXPECT_EQ(read(written(used, "07") + " 1:30PM", how),
                          century == Century::ALWAYS ? SYNTAX : at(date(2007, 5, 4), 13, 30))
                    << style << " " << order;
                // A year in front is ymd; behind the month or the day the order decides.
                EXPECT_EQ(read(written(used, "2007"), how), century == Century::NEVER ? SYNTAX : date(2007, 5, 4))
                    << style << " " << order;
            }
}
TEST(DateStyle, NothingOfADateIsReadWhereOnlyATimeIsWanted) {
    for (const auto &style : READABLE)
        for (int order = 1; order <= 6; ++order) {
            const How how = {.style = style.style, .order = order, .partonly = DATEWANT_TIMEONLY};
            EXPECT_EQ(read(written(1, "2007") + " 1:30PM", how), LEFTOVER);
            EXPECT_EQ(read("1:30PM", how), time(13, 30));
        }
}
TEST(DateStyle, StylesWithACenturyTakeTheYearFromAnyPlace) {
    for (const auto &[style, order, century] : READABLE)
        if (century == Century::ALWAYS) {
            const Reading reading = order == 2 ? date(2007, 5, 4) : date(2007, 4, 5);
            for (const char *text : {"2007/4/5", "4/2007/5", "4/5/2007", "4//5 2007"})
                EXPECT_EQ(read(text, {.style = style}), reading) << style << " " << text;
        }
}
TEST(DateStyle, Styles23And40RefuseTheYearOfFourDigitsTheyPrint) {
    EXPECT_EQ(read("2003-01-02T10:30:15", {.style = 23}), SYNTAX);
    EXPECT_EQ(read("03-01-02T10:30:15", {.style = 23}), at(date(2003, 1, 2), 10, 30, 15));
    EXPECT_EQ(read("2003-01-02 10:30:15.5", {.style = 40}), SYNTAX);
    EXPECT_EQ(read("03-01-02 10:30:15.5", {.style = 40}), at(date(2003, 1, 2), 10, 30, 15, 500));
}
TEST(DateStyle, AllOtherStylesReadNoSeparatedDate) {
    std::vector<int> styles = {INT_MIN, -100, -1, 1000, INT_MAX};
    for (int style = 0; style <= 300; ++style)
        styles.push_back(style);
    for (const Style &readable : READABLE)
        std::erase(styles, readable.style);
    for (const int style : styles)
        for (const char *text : {"1/2/03", "1/2/2003", "2003/1/2"})
            ASSERT_EQ(read(text, {.style = style}), SYNTAX) << style << " " << text;
}
TEST(DateStyle, OtherDatesAreReadInAnyStyle) {
    for (int style = -5; style <= 300; ++style) {
        ASSERT_EQ(read("Jan 2 2003", {.style = style}), date(2003, 1, 2)) << style;
        ASSERT_EQ(read("20030102", {.style = style}), date(2003, 1, 2)) << style;
        ASSERT_EQ(read("2003", {.style = style}), date(2003, 1, 1)) << style;
        ASSERT_EQ(read("10:30", {.style = style}), time(10, 30)) << style;
    }
}
TEST(DateStyle, TheMissingCenturyIsFoundBeforeTheOrder) {
    EXPECT_EQ(read("1/2/100", STYLE_101), SYNTAX);
    EXPECT_EQ(read("1/2/03", STYLE_101), SYNTAX);
    EXPECT_EQ(read("1/2/2003", STYLE_101), date(2003, 1, 2));
}

// ---- Digits run together, a year alone, nothing ----

TEST(RunTogetherDate, SixAndEightDigits) {
    EXPECT_EQ(read("20030102"), date(2003, 1, 2));
    EXPECT_EQ(read("030102"), date(2003, 1, 2));
    EXPECT_EQ(read("490102"), date(2049, 1, 2));
    EXPECT_EQ(read("500102"), date(1950, 1, 2));
    EXPECT_EQ(read("00010203"), date(1, 2, 3)) << "eight digits stand as they are";
    EXPECT_EQ(read("00000000"), date(0, 0, 0)) << "for the make to judge";
    EXPECT_EQ(read("999999"), date(1999, 99, 99));
    EXPECT_EQ(read("99999999"), date(9999, 99, 99));
}
TEST(RunTogetherDate, TheOrderPlaysNoPart) {
    for (int order = -1; order <= 8; ++order)
        EXPECT_EQ(read("030405", {.order = order}), date(2003, 4, 5));
}
TEST(RunTogetherDate, OtherCountsOfDigitsAreNoDate) {
    EXPECT_EQ(read("12345"), LEFTOVER);
    EXPECT_EQ(read("1234567"), SYNTAX);
    EXPECT_EQ(read("123456789"), SYNTAX);
}
TEST(RunTogetherDate, WhatStandsBesideIsLeftOver) {
    EXPECT_EQ(read("20030102 20030103"), LEFTOVER);
    EXPECT_EQ(read("20030102 5"), LEFTOVER);
    EXPECT_EQ(read("2003 20030102"), LEFTOVER);
    EXPECT_EQ(read("2003 20040102", {.partonly = DATEWANT_DATE}), date(2004, 1, 2));
}
TEST(YearAlone, IsItsFirstDay) {
    EXPECT_EQ(read("2003"), date(2003, 1, 1));
    EXPECT_EQ(read("0000"), date(0, 1, 1));
    EXPECT_EQ(read("2003 10:30"), at(date(2003, 1, 1), 10, 30));
    EXPECT_EQ(read("10:30 2003"), at(date(2003, 1, 1), 10, 30));
}
TEST(YearAlone, ForgivesWhatIsLeftOverWhereAPartIsWanted) {
    for (const char *text : {"2003 5", "2003,", "2003 2004", "2003 12345", ":2003", "AM 2003"}) {
        EXPECT_EQ(read(text), LEFTOVER) << text;
        EXPECT_EQ(read(text, {.partonly = DATEWANT_DATE}), date(2003, 1, 1)) << text;
        EXPECT_EQ(read(text, {.partonly = DATEWANT_TIME}), date(2003, 1, 1)) << text;
        EXPECT_EQ(read(text, {.partonly = DATEWANT_TIMEONLY}), LEFTOVER) << text;
    }
}
TEST(NoDate, LeftoversAreNotForgiven) {
    for (const char *text : {"5", "5 6", ",", "/", ":", "12345", "10:30 5", "10:30,", "PM", "3PM 5"})
        for (const int partonly : {DATEWANT_ALL, DATEWANT_DATE, DATEWANT_TIME, DATEWANT_TIMEONLY})
            EXPECT_EQ(read(text, {.partonly = partonly}), LEFTOVER) << text << " " << partonly;
}

// ---- What is wanted ----

TEST(WantedPart, DateAndTimeForgiveWhatIsLeftOverBesideADate) {
    for (const char *text : {"1/2/03,", "1/2/03 10:30,", "1/2/03 4", "Jan 2 2003 4 5", "20030102 7"}) {
        EXPECT_EQ(code(text), DATE_LEFTOVER) << text;
        EXPECT_EQ(code(text, {.partonly = DATEWANT_DATE}), 0) << text;
        EXPECT_EQ(code(text, {.partonly = DATEWANT_TIME}), 0) << text;
        EXPECT_EQ(code(text, {.partonly = DATEWANT_TIMEONLY}), DATE_LEFTOVER) << text;
    }
}
TEST(WantedPart, FailuresAreNotForgiven) {
    for (const int partonly : {DATEWANT_DATE, DATEWANT_TIME}) {
        EXPECT_EQ(read("1/2", {.partonly = partonly}), SYNTAX);
        EXPECT_EQ(read("1/2/100", {.partonly = partonly}), BAD_YEAR);
        EXPECT_EQ(read("13AM", {.partonly = partonly}), BAD_HOUR);
        EXPECT_EQ(read("2003-01-02T10", {.partonly = partonly}), SYNTAX);
        EXPECT_EQ(read("1/2/03" + std::string(16, ','), {.partonly = partonly}), SYNTAX);
    }
}
TEST(WantedPart, TimeOnlyTakesNothingOfADate) {
    const How how = {.partonly = DATEWANT_TIMEONLY};
    EXPECT_EQ(read("10:30:15.5PM", how), time(22, 30, 15, 500));
    EXPECT_EQ(read("3PM", how), time(15, 0));
    EXPECT_EQ(read("", how), time(0, 0));
    EXPECT_EQ(read("1/2/03 10:30", how), LEFTOVER);
    EXPECT_EQ(read("Jan 2 2003 10:30", how), LEFTOVER);
    EXPECT_EQ(read("2003", how), LEFTOVER);
    EXPECT_EQ(read("20030102", how), LEFTOVER);
    EXPECT_EQ(read("10:30:", how), SYNTAX);
    EXPECT_EQ(read("13AM", how), BAD_HOUR);
}

} // namespace

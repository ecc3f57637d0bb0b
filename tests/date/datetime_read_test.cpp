// The functions that read a value of each type: what each makes of one text, its range, its codes, and what a failure
// leaves behind.

#include "support/date_comparison.h"
#include "support/date_texts.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using namespace support;

constexpr int ORDER = DATEORDER_MDY;
constexpr int STYLE = 0;
constexpr int TICKS_A_HOUR = 1080000;
constexpr int TICKS_A_MINUTE = 18000;
constexpr CS_BIGDATETIME MICROS_A_DAY = 86400000000;
constexpr CS_BIGDATETIME MICROS_A_MINUTE = 60000000;
constexpr CS_BIGDATETIME YEAR_ONE = 31622400000000;
constexpr CS_INT JAN_2_2003 = 37621; // as a day number
constexpr CS_BIGDATETIME BIG_JAN_2_2003 = YEAR_ONE + (JAN_2_2003 + 693595ULL) * MICROS_A_DAY;

// A code with what stands in the result afterwards.
template <class Value>
struct Read {
    int code;
    Value value;
    bool operator==(const Read &) const = default;
};
template <class Value>
std::ostream &operator<<(std::ostream &out, const Read<Value> &read) {
    return out << "code " << read.code << " value " << read.value;
}
struct DayAndTicks {
    CS_INT days, ticks;
    bool operator==(const DayAndTicks &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const DayAndTicks &value) {
        return out << value.days << ":" << value.ticks;
    }
};
using ReadDateTime = Read<DayAndTicks>;
using ReadBig = Read<CS_BIGDATETIME>;
using ReadInt = Read<CS_INT>;

constexpr CS_BIGDATETIME BIG_UNTOUCHED = 77;

ReadDateTime datetime(std::string_view text, CS_BOOL *truncated = nullptr, int style = STYLE, int order = ORDER) {
    const ExactText exact(text);
    CS_DATETIME value = {UNTOUCHED, UNTOUCHED};
    CS_BOOL lost = UNTOUCHED;
    const int code = com__datefromchar_mb(&value, exact.get(), exact.length(), style, order, com__get_months(),
                                          com__get_shortmonths(), nullptr, &lost);
    if (truncated != nullptr)
        *truncated = lost;
    return {code, {value.dtdays, value.dttime}};
}
ReadDateTime xdate(std::string_view text, int partonly = DATEWANT_ALL) {
    const ExactText exact(text);
    CS_DATETIME value = {UNTOUCHED, UNTOUCHED};
    CS_BOOL truncated;
    const int code = xdatefromchar(&value, exact.get(), exact.length(), partonly, STYLE, ORDER, com__get_months(),
                                   com__get_shortmonths(), nullptr, &truncated);
    return {code, {value.dtdays, value.dttime}};
}
ReadBig big(std::string_view text) {
    const ExactText exact(text);
    CS_BIGDATETIME value = BIG_UNTOUCHED;
    const int code = com__bigdatetimefromchar_mb(&value, exact.get(), exact.length(), STYLE, ORDER, com__get_months(),
                                                 com__get_shortmonths(), nullptr);
    return {code, value};
}
ReadBig xbig(std::string_view text, int partonly = DATEWANT_ALL) {
    const ExactText exact(text);
    CS_BIGDATETIME value = BIG_UNTOUCHED;
    const int code = xbigdatetimefromchar(&value, exact.get(), exact.length(), partonly, STYLE, ORDER,
                                          com__get_months(), com__get_shortmonths(), nullptr);
    return {code, value};
}
ReadDateTime time_alone(std::string_view text, CS_BOOL *truncated = nullptr) {
    const ExactText exact(text);
    CS_DATETIME value = {UNTOUCHED, UNTOUCHED};
    CS_BOOL lost = UNTOUCHED;
    const int code = com__timefromchar_mb(&value, exact.get(), exact.length(), STYLE, nullptr, &lost);
    if (truncated != nullptr)
        *truncated = lost;
    return {code, {value.dtdays, value.dttime}};
}
ReadInt date(std::string_view text) {
    const ExactText exact(text);
    CS_DATE value = UNTOUCHED;
    const int code = com__dateafromchar_mb(&value, exact.get(), exact.length(), STYLE, ORDER, com__get_months(),
                                           com__get_shortmonths(), nullptr);
    return {code, value};
}
ReadInt time(std::string_view text, CS_BOOL *truncated = nullptr) {
    const ExactText exact(text);
    CS_TIME value = UNTOUCHED;
    CS_BOOL lost = UNTOUCHED;
    const int code = com__timeafromchar_mb(&value, exact.get(), exact.length(), STYLE, ORDER, com__get_months(),
                                           com__get_shortmonths(), nullptr, &lost);
    if (truncated != nullptr)
        *truncated = lost;
    return {code, value};
}
ReadBig bigtime(std::string_view text) {
    const ExactText exact(text);
    CS_BIGTIME value = BIG_UNTOUCHED;
    const int code = com__bigtimefromchar_mb(&value, exact.get(), exact.length(), STYLE, ORDER, com__get_months(),
                                             com__get_shortmonths(), nullptr);
    return {code, value};
}
// Days and minutes.
ReadDateTime date4(std::string_view text) {
    const ExactText exact(text);
    CS_DATETIME4 value = {7777, 7777};
    const int code = com__date4fromchar_mb(&value, exact.get(), exact.length(), STYLE, ORDER, com__get_months(),
                                           com__get_shortmonths(), nullptr);
    return {code, {value.days, value.minutes}};
}
constexpr DayAndTicks DATE4_UNTOUCHED = {7777, 7777};

// ---- CS_DATETIME ----

TEST(ReadDateTime, DateAndTime) {
    EXPECT_EQ(datetime("1/2/03"), (ReadDateTime{0, {JAN_2_2003, 0}}));
    EXPECT_EQ(datetime("Jan 2 2003 10:30"), (ReadDateTime{0, {JAN_2_2003, 10 * TICKS_A_HOUR + 30 * TICKS_A_MINUTE}}));
    EXPECT_EQ(datetime("2003-01-02 10:30:15.123"),
              (ReadDateTime{0, {JAN_2_2003, 10 * TICKS_A_HOUR + 30 * TICKS_A_MINUTE + 15 * 300 + 37}}));
}
TEST(ReadDateTime, ATimeAloneIsOnTheFirstDayOf1900) {
    EXPECT_EQ(datetime("10:30"), (ReadDateTime{0, {0, 10 * TICKS_A_HOUR + 30 * TICKS_A_MINUTE}}));
    EXPECT_EQ(datetime("12AM"), (ReadDateTime{0, {0, 0}}));
    EXPECT_EQ(datetime("12PM"), (ReadDateTime{0, {0, 12 * TICKS_A_HOUR}}));
}
TEST(ReadDateTime, AnEmptyTextIsMidnightOfIt) {
    EXPECT_EQ(datetime(""), (ReadDateTime{0, {0, 0}}));
    EXPECT_EQ(datetime("    "), (ReadDateTime{0, {0, 0}}));
}
TEST(ReadDateTime, StyleAndOrderArePassedOn) {
    EXPECT_EQ(datetime("2/1/03", nullptr, 0, DATEORDER_DMY), (ReadDateTime{0, {JAN_2_2003, 0}}));
    EXPECT_EQ(datetime("2/1/03", nullptr, 3, DATEORDER_MDY), (ReadDateTime{0, {JAN_2_2003, 0}}));
    EXPECT_EQ(datetime("2/1/03", nullptr, 103, DATEORDER_MDY), (ReadDateTime{DATE_SYNTAX, {0, 0}}));
}
TEST(ReadDateTime, MillisecondsAreRoundedToTicksAndNeverIntoTheNextSecond) {
    const struct {
        const char *text;
        int ticks;
    } cases[] = {{"0:0:0.000", 0}, {"0:0:0.001", 0},   {"0:0:0.002", 1},   {"0:0:0.003", 1},   {"0:0:0.007", 2},
                 {"0:0:0.010", 3}, {"0:0:0.996", 299}, {"0:0:0.998", 299}, {"0:0:0.999", 299}, {"0:0:0.9999", 299}};
    for (const auto &[text, ticks] : cases)
        EXPECT_EQ(datetime(text), (ReadDateTime{0, {0, ticks}})) << text;
    EXPECT_EQ(datetime("23:59:59.999"), (ReadDateTime{0, {0, 25919999}}));
}
TEST(ReadDateTime, TruncatedTellsOfLostMicroseconds) {
    CS_BOOL truncated;
    datetime("1/2/03 10:30:15.123", &truncated);
    EXPECT_EQ(truncated, CS_FALSE);
    datetime("1/2/03 10:30:15.1234", &truncated);
    EXPECT_EQ(truncated, CS_TRUE);
    datetime("1/2/03 10:30:15:123", &truncated);
    EXPECT_EQ(truncated, CS_FALSE);
    datetime("x", &truncated);
    EXPECT_EQ(truncated, CS_FALSE);
}
TEST(ReadDateTime, BeginsIn1753) {
    EXPECT_EQ(datetime("1/1/1753"), (ReadDateTime{0, {-53690, 0}}));
    EXPECT_EQ(datetime("12/31/1752 1:00"), (ReadDateTime{1, {-53691, TICKS_A_HOUR}})) << "which holds the value";
    EXPECT_EQ(datetime("1/1/0001"), (ReadDateTime{1, {-693595, 0}}));
    EXPECT_EQ(datetime("12/31/9999"), (ReadDateTime{0, {2958463, 0}}));
    EXPECT_EQ(xdate("12/31/1752"), (ReadDateTime{0, {-53691, 0}})) << "without a range";
    EXPECT_EQ(xdate("1/1/0001"), (ReadDateTime{0, {-693595, 0}}));
}
TEST(ReadDateTime, CodesOfTheDateAreThoseOfTheMake) {
    EXPECT_EQ(datetime("1/2/0000"), (ReadDateTime{DATE_BADYEAR, {0, 0}}));
    EXPECT_EQ(datetime("0/2/2003"), (ReadDateTime{DATE_BADMONTH, {0, 0}}));
    EXPECT_EQ(datetime("13/2/2003"), (ReadDateTime{DATE_BADMONTH, {0, 0}}));
    EXPECT_EQ(datetime("1/0/2003"), (ReadDateTime{DATE_BADDAY, {0, 0}}));
    EXPECT_EQ(datetime("1/32/2003"), (ReadDateTime{DATE_BADDAY, {0, 0}}));
    EXPECT_EQ(datetime("2/29/2003"), (ReadDateTime{DATE_BADDAY, {0, 0}}));
    EXPECT_EQ(datetime("2/29/1900"), (ReadDateTime{DATE_BADDAY, {0, 0}}));
    EXPECT_EQ(datetime("2/29/2000").code, 0);
    EXPECT_EQ(datetime("20031301"), (ReadDateTime{DATE_BADMONTH, {0, 0}}));
    EXPECT_EQ(datetime("0000"), (ReadDateTime{DATE_BADYEAR, {0, 0}}));
}
TEST(ReadDateTime, ABadDateLeavesTheTimeThatWasMade) {
    EXPECT_EQ(datetime("2/30/2003 1:00"), (ReadDateTime{DATE_BADDAY, {0, TICKS_A_HOUR}}));
    EXPECT_EQ(xdate("2/30/2003 1:00"), (ReadDateTime{DATE_BADDAY, {0, TICKS_A_HOUR}}));
}
TEST(ReadDateTime, ABadTimeIsOneWithAndWithoutADate) {
    for (const char *text : {"24:00", "10:60", "10:30:60", "1/2/03 24:00", "1/2/03 10:60", "1/2/03 10:30:60",
                             "Jan 2 2003 999PM", "2/30/2003 24:00"}) {
        EXPECT_EQ(datetime(text), (ReadDateTime{1, {0, 0}})) << text;
        EXPECT_EQ(xdate(text), (ReadDateTime{1, {0, 0}})) << text;
    }
}
TEST(ReadDateTime, CodesOfTheTextLeaveAClearedValue) {
    EXPECT_EQ(datetime("1/2"), (ReadDateTime{DATE_SYNTAX, {0, 0}}));
    EXPECT_EQ(datetime("1/2/3/4"), (ReadDateTime{DATE_LEFTOVER, {0, 0}}));
    EXPECT_EQ(datetime("1/2/100"), (ReadDateTime{DATE_YEAR2, {0, 0}}));
    EXPECT_EQ(datetime("13AM"), (ReadDateTime{DATE_AMPM, {0, 0}}));
}
TEST(ReadDateTime, PartsThatAreWanted) {
    EXPECT_EQ(xdate("1/2/03 1:00,", DATEWANT_ALL).code, DATE_LEFTOVER);
    EXPECT_EQ(xdate("1/2/03 1:00,", DATEWANT_DATE), (ReadDateTime{0, {JAN_2_2003, TICKS_A_HOUR}}));
    EXPECT_EQ(xdate("1/2/03 1:00,", DATEWANT_TIME), (ReadDateTime{0, {JAN_2_2003, TICKS_A_HOUR}}));
    EXPECT_EQ(xdate("1/2/03 1:00", DATEWANT_TIMEONLY).code, DATE_LEFTOVER);
    EXPECT_EQ(xdate("1:00", DATEWANT_TIMEONLY), (ReadDateTime{0, {0, TICKS_A_HOUR}}));
}

// ---- CS_BIGDATETIME ----

TEST(ReadBigDateTime, DateAndTime) {
    EXPECT_EQ(big("1/2/03"), (ReadBig{0, BIG_JAN_2_2003}));
    EXPECT_EQ(big("2003-01-02 10:30:15.123456"), (ReadBig{0, BIG_JAN_2_2003 + 630 * MICROS_A_MINUTE + 15123456}));
    EXPECT_EQ(big("1/2/03 0:0:0.5"), (ReadBig{0, BIG_JAN_2_2003 + 500000}));
    EXPECT_EQ(big("1/2/03 0:0:0.12345"), (ReadBig{0, BIG_JAN_2_2003 + 123450}));
    EXPECT_EQ(big("1/2/03 0:0:0:5"), (ReadBig{0, BIG_JAN_2_2003 + 5000}));
    EXPECT_EQ(big("1/2/03 0:0:0:999"), (ReadBig{0, BIG_JAN_2_2003 + 999000}));
}
TEST(ReadBigDateTime, ATimeAloneIsOnTheFirstDayOfTheYearOne) {
    EXPECT_EQ(big("10:30"), (ReadBig{0, YEAR_ONE + 630 * MICROS_A_MINUTE}));
    EXPECT_EQ(big(""), (ReadBig{0, YEAR_ONE}));
    EXPECT_EQ(xbig("10:30"), (ReadBig{0, YEAR_ONE + 630 * MICROS_A_MINUTE}));
    EXPECT_EQ(xbig("10:30", DATEWANT_TIMEONLY), (ReadBig{0, YEAR_ONE + 630 * MICROS_A_MINUTE}));
}
TEST(ReadBigDateTime, ReachesFromTheYearOneTo9999) {
    EXPECT_EQ(big("1/1/0001"), (ReadBig{0, YEAR_ONE}));
    EXPECT_EQ(big("12/31/1752"), (ReadBig{0, YEAR_ONE + (693595ULL - 53691) * MICROS_A_DAY}));
    EXPECT_EQ(big("12/31/9999 23:59:59.999999"), (ReadBig{0, 315569519999999999}));
    EXPECT_EQ(big("1/1/0000"), (ReadBig{DATE_BADYEAR, 0}));
}
TEST(ReadBigDateTime, CodesOfTheMakesWithTheTimeFirst) {
    EXPECT_EQ(big("13/2/2003"), (ReadBig{DATE_BADMONTH, 0}));
    EXPECT_EQ(big("2/29/2003"), (ReadBig{DATE_BADDAY, 0}));
    EXPECT_EQ(big("1/2/03 24:00"), (ReadBig{DATE_BADHOUR, 0}));
    EXPECT_EQ(big("1/2/03 10:60"), (ReadBig{DATE_BADMINUTE, 0}));
    EXPECT_EQ(big("1/2/03 10:30:60"), (ReadBig{DATE_BADSECOND, 0}));
    EXPECT_EQ(big("1/2/03 10:30:59.01000000"), (ReadBig{DATE_BADFRACTION, 0})) << "eight digits reach past a second";
    EXPECT_EQ(big("2/29/2003 24:00"), (ReadBig{DATE_BADHOUR, 0}));
    EXPECT_EQ(xbig("2/29/2003 10:00"), (ReadBig{DATE_BADDAY, 0})) << "nothing is kept of the time";
}
TEST(ReadBigDateTime, ABadTimeWithoutADateIsOne) {
    for (const char *text : {"24:00", "10:60", "10:30:60", "10:30:59.01000000", "999PM"}) {
        EXPECT_EQ(big(text), (ReadBig{1, 0})) << text;
        EXPECT_EQ(xbig(text, DATEWANT_TIMEONLY), (ReadBig{1, 0})) << text;
    }
}
TEST(ReadBigDateTime, CodesOfTheText) {
    EXPECT_EQ(big("1/2"), (ReadBig{DATE_SYNTAX, 0}));
    EXPECT_EQ(big("1/2/3/4"), (ReadBig{DATE_LEFTOVER, 0}));
    EXPECT_EQ(big("1/2/100"), (ReadBig{DATE_YEAR2, 0}));
    EXPECT_EQ(big("13AM"), (ReadBig{DATE_AMPM, 0}));
    EXPECT_EQ(xbig("1/2/03,", DATEWANT_DATE), (ReadBig{0, BIG_JAN_2_2003}));
    EXPECT_EQ(xbig("1/2/03", DATEWANT_TIMEONLY), (ReadBig{DATE_LEFTOVER, 0}));
}

// ---- A time and nothing else ----

TEST(ReadTimeAlone, OnTheFirstDayOf1900) {
    EXPECT_EQ(time_alone("10:30"), (ReadDateTime{0, {0, 10 * TICKS_A_HOUR + 30 * TICKS_A_MINUTE}}));
    EXPECT_EQ(time_alone("3PM"), (ReadDateTime{0, {0, 15 * TICKS_A_HOUR}}));
    EXPECT_EQ(time_alone(""), (ReadDateTime{0, {0, 0}}));
}
TEST(ReadTimeAlone, DatesAreLeftOverAndMonthsAreNoWords) {
    EXPECT_EQ(time_alone("1/2/03 10:30"), (ReadDateTime{DATE_LEFTOVER, {0, 0}}));
    EXPECT_EQ(time_alone("20030102"), (ReadDateTime{DATE_LEFTOVER, {0, 0}}));
    EXPECT_EQ(time_alone("T10:30"), (ReadDateTime{DATE_LEFTOVER, {0, 0}}));
    EXPECT_EQ(time_alone("Jan 2 2003 10:30"), (ReadDateTime{DATE_SYNTAX, {0, 0}}));
    EXPECT_EQ(time_alone("24:00"), (ReadDateTime{1, {0, 0}}));
    EXPECT_EQ(time_alone("13AM"), (ReadDateTime{DATE_AMPM, {0, 0}}));
}
TEST(ReadTimeAlone, Truncated) {
    CS_BOOL truncated;
    time_alone("1:2:3.4567", &truncated);
    EXPECT_EQ(truncated, CS_TRUE);
    time_alone("1:2:3.456", &truncated);
    EXPECT_EQ(truncated, CS_FALSE);
}

// ---- CS_DATE and CS_TIME ----

TEST(ReadDate, TakesTheDay) {
    EXPECT_EQ(date("1/2/03"), (ReadInt{0, JAN_2_2003}));
    EXPECT_EQ(date("Jan 2 2003 10:30PM"), (ReadInt{0, JAN_2_2003}));
    EXPECT_EQ(date("1/2/03, and"), (ReadInt{DATE_SYNTAX, UNTOUCHED}));
    EXPECT_EQ(date("1/2/03 ,,"), (ReadInt{0, JAN_2_2003})) << "what is left over is forgiven";
    EXPECT_EQ(date("10:30"), (ReadInt{0, 0}));
    EXPECT_EQ(date(""), (ReadInt{0, 0}));
}
TEST(ReadDate, ReachesFromTheYearOneTo9999) {
    EXPECT_EQ(date("1/1/0001"), (ReadInt{0, -693595}));
    EXPECT_EQ(date("12/31/1752"), (ReadInt{0, -53691}));
    EXPECT_EQ(date("12/31/9999"), (ReadInt{0, 2958463}));
}
TEST(ReadDate, FailuresLeaveTheValue) {
    EXPECT_EQ(date("1/1/0000"), (ReadInt{DATE_BADYEAR, UNTOUCHED}));
    EXPECT_EQ(date("13/1/2003"), (ReadInt{DATE_BADMONTH, UNTOUCHED}));
    EXPECT_EQ(date("2/30/2003"), (ReadInt{DATE_BADDAY, UNTOUCHED}));
    EXPECT_EQ(date("1/2/03 24:00"), (ReadInt{1, UNTOUCHED})) << "a bad time, too, though only the day is wanted";
    EXPECT_EQ(date("1/2"), (ReadInt{DATE_SYNTAX, UNTOUCHED}));
    EXPECT_EQ(date("10:30,"), (ReadInt{DATE_LEFTOVER, UNTOUCHED}));
    EXPECT_EQ(date("1/2/100"), (ReadInt{DATE_YEAR2, UNTOUCHED}));
    EXPECT_EQ(date("1/2/03 13AM"), (ReadInt{DATE_AMPM, UNTOUCHED}));
}
TEST(ReadTime, TakesTheTime) {
    EXPECT_EQ(time("10:30"), (ReadInt{0, 10 * TICKS_A_HOUR + 30 * TICKS_A_MINUTE}));
    EXPECT_EQ(time("Jan 2 2003 3PM"), (ReadInt{0, 15 * TICKS_A_HOUR}));
    EXPECT_EQ(time("1/2/03 ,,"), (ReadInt{0, 0})) << "what is left over is forgiven";
    EXPECT_EQ(time("1/1/0001 23:59:59.999"), (ReadInt{0, 25919999}));
    EXPECT_EQ(time(""), (ReadInt{0, 0}));
}
TEST(ReadTime, FailuresLeaveTheValue) {
    EXPECT_EQ(time("24:00"), (ReadInt{1, UNTOUCHED}));
    EXPECT_EQ(time("2/30/2003 1:00"), (ReadInt{DATE_BADDAY, UNTOUCHED})) << "though only the time is wanted";
    EXPECT_EQ(time("1/1/0000 1:00"), (ReadInt{DATE_BADYEAR, UNTOUCHED}));
    EXPECT_EQ(time("1:"), (ReadInt{DATE_SYNTAX, UNTOUCHED}));
    EXPECT_EQ(time("1:00,"), (ReadInt{DATE_LEFTOVER, UNTOUCHED}));
    EXPECT_EQ(time("1/2/100"), (ReadInt{DATE_YEAR2, UNTOUCHED}));
    EXPECT_EQ(time("13AM"), (ReadInt{DATE_AMPM, UNTOUCHED}));
}
TEST(ReadTime, Truncated) {
    CS_BOOL truncated;
    time("1:2:3.4567", &truncated);
    EXPECT_EQ(truncated, CS_TRUE);
    time("1:2:3.456", &truncated);
    EXPECT_EQ(truncated, CS_FALSE);
}

// ---- CS_BIGTIME ----

TEST(ReadBigTime, TakesTheTime) {
    EXPECT_EQ(bigtime("10:30"), (ReadBig{0, 630 * MICROS_A_MINUTE}));
    EXPECT_EQ(bigtime("Jan 2 2003 3PM"), (ReadBig{0, 900 * MICROS_A_MINUTE}));
    EXPECT_EQ(bigtime("10:30:15.123456"), (ReadBig{0, 630 * MICROS_A_MINUTE + 15123456}));
    EXPECT_EQ(bigtime("10:30:15:5"), (ReadBig{0, 630 * MICROS_A_MINUTE + 15005000}));
    EXPECT_EQ(bigtime("23:59:59.999999"), (ReadBig{0, 86399999999}));
    EXPECT_EQ(bigtime("1/2/03 ,,"), (ReadBig{0, 0}));
    EXPECT_EQ(bigtime(""), (ReadBig{0, 0}));
}
TEST(ReadBigTime, ADateBesideMustBeOne) {
    EXPECT_EQ(bigtime("1/1/0001 1:00"), (ReadBig{0, 60 * MICROS_A_MINUTE}));
    EXPECT_EQ(bigtime("1/1/0000 1:00"), (ReadBig{DATE_BADYEAR, BIG_UNTOUCHED}));
    EXPECT_EQ(bigtime("13/1/2003 1:00"), (ReadBig{DATE_BADMONTH, BIG_UNTOUCHED}));
    EXPECT_EQ(bigtime("2/29/2003 1:00"), (ReadBig{DATE_BADDAY, BIG_UNTOUCHED}));
    EXPECT_EQ(bigtime("2/29/2003 24:00"), (ReadBig{DATE_BADDAY, BIG_UNTOUCHED})) << "the date is judged first";
}
TEST(ReadBigTime, FailuresOfTheTimeHaveTheirOwnCodesWithAndWithoutADate) {
    for (const std::string date : {"", "1/2/03 "}) {
        EXPECT_EQ(bigtime(date + "24:00"), (ReadBig{DATE_BADHOUR, BIG_UNTOUCHED}));
        EXPECT_EQ(bigtime(date + "10:60"), (ReadBig{DATE_BADMINUTE, BIG_UNTOUCHED}));
        EXPECT_EQ(bigtime(date + "10:30:60"), (ReadBig{DATE_BADSECOND, BIG_UNTOUCHED}));
        EXPECT_EQ(bigtime(date + "10:30:59.01000000"), (ReadBig{DATE_BADFRACTION, BIG_UNTOUCHED}));
    }
}
TEST(ReadBigTime, CodesOfTheText) {
    EXPECT_EQ(bigtime("1:"), (ReadBig{DATE_SYNTAX, BIG_UNTOUCHED}));
    EXPECT_EQ(bigtime("1:00,"), (ReadBig{DATE_LEFTOVER, BIG_UNTOUCHED}));
    EXPECT_EQ(bigtime("1/2/100"), (ReadBig{DATE_YEAR2, BIG_UNTOUCHED}));
    EXPECT_EQ(bigtime("13AM"), (ReadBig{DATE_AMPM, BIG_UNTOUCHED}));
}

// ---- CS_DATETIME4 ----

TEST(ReadDateTime4, DaysAndMinutes) {
    EXPECT_EQ(date4("1/2/03 10:30"), (ReadDateTime{0, {JAN_2_2003, 630}}));
    EXPECT_EQ(date4("10:30"), (ReadDateTime{0, {0, 630}}));
    EXPECT_EQ(date4(""), (ReadDateTime{0, {0, 0}}));
}
TEST(ReadDateTime4, HalfAMinuteRoundsUpIntoTheNextDay) {
    EXPECT_EQ(date4("1/2/03 10:30:29.999"), (ReadDateTime{0, {JAN_2_2003, 630}}));
    EXPECT_EQ(date4("1/2/03 10:30:30"), (ReadDateTime{0, {JAN_2_2003, 631}}));
    EXPECT_EQ(date4("1/2/03 23:59:30"), (ReadDateTime{0, {JAN_2_2003 + 1, 0}}));
}
TEST(ReadDateTime4, ReachesFrom1900To2079) {
    EXPECT_EQ(date4("1/1/1900"), (ReadDateTime{0, {0, 0}}));
    EXPECT_EQ(date4("12/31/1899 23:59:59"), (ReadDateTime{1, DATE4_UNTOUCHED}));
    EXPECT_EQ(date4("6/6/2079 23:59:29"), (ReadDateTime{0, {65535, 1439}}));
    EXPECT_EQ(date4("6/6/2079 23:59:30"), (ReadDateTime{1, DATE4_UNTOUCHED}));
    EXPECT_EQ(date4("6/7/2079"), (ReadDateTime{1, DATE4_UNTOUCHED}));
}
TEST(ReadDateTime4, FailuresLeaveTheValue) {
    EXPECT_EQ(date4("1/2/03,"), (ReadDateTime{DATE_LEFTOVER, DATE4_UNTOUCHED}));
    EXPECT_EQ(date4("1/2"), (ReadDateTime{DATE_SYNTAX, DATE4_UNTOUCHED}));
    EXPECT_EQ(date4("1/2/100"), (ReadDateTime{DATE_YEAR2, DATE4_UNTOUCHED}));
    EXPECT_EQ(date4("13AM"), (ReadDateTime{DATE_AMPM, DATE4_UNTOUCHED}));
    EXPECT_EQ(date4("2/30/2003"), (ReadDateTime{DATE_BADDAY, DATE4_UNTOUCHED}));
    EXPECT_EQ(date4("24:00"), (ReadDateTime{1, DATE4_UNTOUCHED}));
}

// ---- Every type in every kind of character set ----

TEST(ReadDates, WideText) {
    Folding<DoubleByteSet> set;
    const std::string text = wide("2 jan 2003 10:30:15.123456pm");
    for (const std::string &whole : {text, text + wide(" ")}) {
        const ExactText exact(whole);
        CS_BIGDATETIME big = 0;
        EXPECT_EQ(com__bigdatetimefromchar_mb(&big, exact.get(), exact.length(), STYLE, ORDER, com__get_months(),
                                              com__get_shortmonths(), set.get()),
                  0);
        EXPECT_EQ(big, BIG_JAN_2_2003 + (22 * 60 + 30) * MICROS_A_MINUTE + 15123456);
    }
    // The same without the last byte of its last character.
    const ExactText cut(std::string_view(text).substr(0, text.size() - 1));
    CS_BIGDATETIME big = BIG_UNTOUCHED;
    EXPECT_EQ(com__bigdatetimefromchar_mb(&big, cut.get(), cut.length(), STYLE, ORDER, com__get_months(),
                                          com__get_shortmonths(), set.get()),
              DATE_SYNTAX);
}
TEST(ReadDates, EveryPrefixOfAText) {
    const auto sets = date_sets();
    for (const std::string text : {"January 2, 2003 10:30:15.123456 PM", "2003-01-02T10:30:15:123AM", "20030102 3 pm"})
        for (std::size_t length = 0; length <= text.size(); ++length)
            for (const auto &set : sets)
                for (const std::string &form :
                     {text.substr(0, length), wide(text).substr(0, 2 * length), wide(text).substr(0, 2 * length + 1)})
                    for (int partonly = 0; partonly <= 3; ++partonly) {
                        naive::DateRules rules;
                        rules.partonly = partonly;
                        rules.months = com__get_months();
                        rules.shortmonths = com__get_shortmonths();
                        rules.set = set ? set->get() : nullptr;
                        ASSERT_STREQ(DateComparison(form, rules).any_difference(), nullptr) << form;
                    }
}

} // namespace

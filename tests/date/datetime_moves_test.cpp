// Moves of a value between the six types: each boundary, each tick and each millisecond of a day.
#include "support/naive_calendar.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <ostream>

namespace {

using namespace support::calendar;

constexpr CS_INT PAST = 123456789; // what a result holds before

struct Narrow {
    int code;
    int days;
    int minutes;
    bool operator==(const Narrow &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Narrow &narrow) {
        return out << "code " << narrow.code << " day " << narrow.days << " minute " << narrow.minutes;
    }
};
constexpr Narrow NOT_NARROW = {1, 111, 222};

struct Ticks {
    int code;
    CS_INT days;
    CS_INT ticks;
    bool operator==(const Ticks &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Ticks &value) {
        return out << "code " << value.code << " day " << value.days << " ticks " << value.ticks;
    }
};

struct Big {
    int code;
    CS_UBIGINT value;
    bool operator==(const Big &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Big &big) {
        return out << "code " << big.code << " value " << big.value;
    }
};
constexpr Big FAILED_BIG = {1, PAST};

Narrow to_narrow(CS_INT day, CS_INT ticks) {
    CS_DATETIME from = {day, ticks};
    CS_DATETIME4 to = {111, 222};
    const int code = com__dttodate4(&from, &to);
    return {code, to.days, to.minutes};
}

Narrow big_to_narrow(CS_BIGDATETIME from) {
    CS_DATETIME4 to = {111, 222};
    const int code = com__bigdttodate4(&from, &to);
    return {code, to.days, to.minutes};
}

// `minutes` of a day, of which the last may be the next day's first.
Narrow narrow_of(int day, CS_INT minutes) {
    if (day < 0 || day > 65535 || (minutes == 1440 && day == 65535))
        return NOT_NARROW;
    return minutes == 1440 ? Narrow{0, day + 1, 0} : Narrow{0, day, minutes};
}

// ---- The narrow type ----

TEST(ToDatetime4, EveryTickOfADay) {
    CS_INT wrong = -1;
    for (CS_INT ticks = 0; ticks < TICKS_A_DAY; ++ticks) {
        // Minutes count from their half on.
        const int minutes = ticks / 9000 % 2 == 1 ? ticks / 18000 + 1 : ticks / 18000;
        if (wrong < 0 && to_narrow(1000, ticks) != narrow_of(1000, minutes))
            wrong = ticks;
    }
    EXPECT_EQ(wrong, -1);
}

TEST(ToDatetime4, EveryDayAndItsSurroundings) {
    for (int day = -70000; day <= 140000; ++day) {
        ASSERT_EQ(to_narrow(day, 0), narrow_of(day, 0)) << day;
        ASSERT_EQ(to_narrow(day, 25919999), narrow_of(day, 1440)) << day;
        ASSERT_EQ(big_to_narrow(midnight(day)), narrow_of(day, 0)) << day;
        ASSERT_EQ(big_to_narrow(midnight(day) + 86399999999), narrow_of(day, 1440)) << day;
    }
    for (const CS_INT day : {INT_MIN, -693595, 2958463, INT_MAX})
        EXPECT_EQ(to_narrow(day, 0), NOT_NARROW);
    for (const CS_BIGDATETIME value : {CS_UBIGINT(0), FIRST_BIG, LAST_BIG, CS_UBIGINT(ULLONG_MAX)})
        EXPECT_EQ(big_to_narrow(value), NOT_NARROW);
}

TEST(ToDatetime4, HalfAMinuteRoundsUpAtMidnightIntoTheNextDay) {
    const CS_INT half = (86399 - 29) * 300; // 23:59:30
    EXPECT_EQ(to_narrow(10, half), (Narrow{0, 11, 0}));
    EXPECT_EQ(to_narrow(10, half - 1), (Narrow{0, 10, 1439}));
    EXPECT_EQ(to_narrow(65535, half), NOT_NARROW);
    EXPECT_EQ(to_narrow(65535, half - 1), (Narrow{0, 65535, 1439}));
    EXPECT_EQ(to_narrow(-1, half), NOT_NARROW); // though 0 would be the next day
}

TEST(ToDatetime4, SecondsOfBigValuesAreRoundedOnTheirMicrosecondsFirst) {
    const CS_BIGDATETIME day = midnight(10), last = midnight(65535);
    EXPECT_EQ(big_to_narrow(day + 29499999), (Narrow{0, 10, 0}));
    EXPECT_EQ(big_to_narrow(day + 29500000), (Narrow{0, 10, 1}));
    EXPECT_EQ(big_to_narrow(day + 30000000), (Narrow{0, 10, 1}));
    EXPECT_EQ(big_to_narrow(day + 59999999), (Narrow{0, 10, 1}));
    EXPECT_EQ(big_to_narrow(day + 86369499999), (Narrow{0, 10, 1439}));
    EXPECT_EQ(big_to_narrow(day + 86369500000), (Narrow{0, 11, 0}));
    EXPECT_EQ(big_to_narrow(last + 86369499999), (Narrow{0, 65535, 1439}));
    EXPECT_EQ(big_to_narrow(last + 86369500000), NOT_NARROW);
    EXPECT_EQ(big_to_narrow(midnight(-1) + 86369500000), NOT_NARROW);
}

TEST(ToDatetime4, RandomBigValuesByTheirFields) {
    Draw draw(91);
    for (int i = 0; i < 200000; ++i) {
        const int day = static_cast<int>(draw.between(-3, 65538));
        CS_UBIGINT time = draw.micros_of_day();
        if (i % 2 == 0) // at a half of a second
            time = time / 1000000 * 1000000 + 499999 + draw.below(3);
        if (i % 4 == 0) // and of a minute
            time = time / 60000000 * 60000000 + 29000000 + draw.below(2) * 1000000 + 499999 + draw.below(3);
        CS_INT minutes = static_cast<CS_INT>(time / 60000000);
        int second = static_cast<int>(time / 1000000 % 60);
        if (time % 1000000 >= 500000)
            ++second;
        if (second >= 30)
            ++minutes;
        ASSERT_EQ(big_to_narrow(midnight(day) + time), narrow_of(day, minutes)) << day << ' ' << time;
    }
}

TEST(FromDatetime4, EveryMinuteAndDay) {
    for (int i = 0; i < 65536; ++i) {
        CS_DATETIME4 from = {static_cast<CS_USHORT>(i), static_cast<CS_USHORT>(i % 1440)};
        CS_DATETIME to = {PAST, PAST};
        CS_BIGDATETIME big = PAST;
        CS_BIGTIME time = PAST;
        com__date4todt(&from, &to);
        com__date4tobigdatetime(&from, &big);
        com__date4tobigtime(&from, &time);
        ASSERT_EQ(to.dtdays, i);
        ASSERT_EQ(to.dttime, i % 1440 * 18000);
        ASSERT_EQ(big, midnight(i) + static_cast<CS_UBIGINT>(i % 1440) * 60000000);
        ASSERT_EQ(time, static_cast<CS_UBIGINT>(i % 1440) * 60000000);
        ASSERT_EQ(to_narrow(to.dtdays, to.dttime), (Narrow{0, i, i % 1440}));
        ASSERT_EQ(big_to_narrow(big), (Narrow{0, i, i % 1440}));
    }
    CS_DATETIME4 largest = {65535, 65535};
    CS_DATETIME to;
    CS_BIGDATETIME big;
    com__date4todt(&largest, &to);
    com__date4tobigdatetime(&largest, &big);
    EXPECT_EQ(to.dttime, 1179630000);
    EXPECT_EQ(big, midnight(65535) + 65535ull * 60000000);
}

// ---- From CS_DATETIME ----

TEST(FromDatetime, DayAndTimeWords) {
    for (const CS_INT day : {INT_MIN, -693595, -1, 0, 1, INT_MAX})
        for (const CS_INT ticks : {INT_MIN, -1, 0, 25919999, 25920000, INT_MAX}) {
            CS_DATETIME from = {day, ticks};
            CS_DATE date = PAST;
            CS_TIME time = PAST;
            com__datetodatea(&from, &date);
            com__datetotimea(&from, &time);
            EXPECT_EQ(date, day);
            EXPECT_EQ(time, ticks);
        }
}

Big datetime_to_big(CS_INT day, CS_INT ticks) {
    CS_DATETIME from = {day, ticks};
    CS_BIGDATETIME to = PAST;
    const int code = com__datetobigdatetime(&from, &to);
    return {code, to};
}

Big datetime_to_big_time(CS_INT day, CS_INT ticks) {
    CS_DATETIME from = {day, ticks};
    CS_BIGTIME to = PAST;
    const int code = com__datetobigtime(&from, &to);
    return {code, to};
}

// The whole milliseconds of a time in ticks, as microseconds.
CS_UBIGINT cut_micros(CS_INT ticks) { return static_cast<CS_UBIGINT>(ticks) * 10 / 3 * 1000; }

TEST(FromDatetime, EveryTickOfADayAsCrackedMilliseconds) {
    CS_INT wrong = -1;
    for (CS_INT ticks = 0; ticks < TICKS_A_DAY; ++ticks) {
        const CS_UBIGINT time = cut_micros(ticks);
        if (wrong < 0 && (datetime_to_big_time(7, ticks) != Big{0, time} ||
                          datetime_to_big(45349, ticks) != Big{0, midnight(45349) + time}))
            wrong = ticks;
    }
    EXPECT_EQ(wrong, -1);
    EXPECT_EQ(datetime_to_big_time(0, 1), (Big{0, 3000}));
    EXPECT_EQ(datetime_to_big_time(0, 299), (Big{0, 996000}));
    EXPECT_EQ(datetime_to_big_time(0, 25919999), (Big{0, 86399996000}));
}

TEST(FromDatetime, EveryDay) {
    std::int64_t wrong = INT_MAX;
    for_each_day([&](std::int64_t day, const Date &) {
        if (datetime_to_big(static_cast<CS_INT>(day), 1) != Big{0, midnight(day) + 3000})
            wrong = std::min(wrong, day);
    });
    EXPECT_EQ(wrong, INT_MAX);
}

TEST(FromDatetime, DaysAndTimesThatCannotBeMadeLeaveTheResult) {
    for (const CS_INT day : {INT_MIN, -693596, 2958464, INT_MAX})
        EXPECT_EQ(datetime_to_big(day, 0), FAILED_BIG) << day;
    EXPECT_EQ(datetime_to_big(0, TICKS_A_DAY), (Big{4, PAST})); // cracks to hour 24
    EXPECT_EQ(datetime_to_big_time(0, TICKS_A_DAY), (Big{4, PAST}));
    EXPECT_EQ(datetime_to_big_time(0, -1), (Big{4, PAST})); // of which 25 bits count
    EXPECT_EQ(datetime_to_big(2958464, -1), FAILED_BIG);    // the date is judged first
    EXPECT_EQ(datetime_to_big_time(INT_MAX, 3), (Big{0, 10000}));
}

// ---- From the big types ----

Ticks big_to_datetime(CS_BIGDATETIME from) {
    CS_DATETIME to = {PAST, PAST};
    const int code = com__bigdatetimetodate(&from, &to);
    return {code, to.dtdays, to.dttime};
}

Ticks big_to_time(CS_BIGDATETIME from) {
    CS_TIME to = PAST;
    const int code = com__bigdatetimetotimea(&from, &to);
    return {code, 0, to};
}

Ticks big_time_to_time(CS_BIGTIME from) {
    CS_TIME to = PAST;
    const int code = com__bigtimetotimea(&from, &to);
    return {code, 0, to};
}

Ticks big_time_to_datetime(CS_BIGTIME from) {
    CS_DATETIME to = {PAST, PAST};
    const int code = com__bigtimetodate(&from, &to);
    return {code, to.dtdays, to.dttime};
}

// Ticks of a second's milliseconds as a record is made of them: never the next second.
CS_INT capped_ticks(CS_INT milliseconds) {
    return milliseconds / 1000 * 300 + (milliseconds % 1000 == 999 ? 299 : (3 * (milliseconds % 1000) + 5) / 10);
}

// Ticks of the milliseconds of a day: never the next day.
CS_INT rounded_ticks(CS_INT milliseconds) {
    return milliseconds == 86399999 ? 25919999 : static_cast<CS_INT>((3LL * milliseconds + 5) / 10);
}

TEST(FromBig, EveryMillisecondOfADay) {
    CS_INT wrong = -1;
    for (CS_INT millisecond = 0; millisecond < 86400000; ++millisecond) {
        const CS_UBIGINT time = millisecond * 1000ull;
        const CS_INT rounded = rounded_ticks(millisecond);
        if (wrong < 0 &&
            (big_to_datetime(midnight(45349) + time) != Ticks{CS_SUCCEED, 45349, capped_ticks(millisecond)} ||
             big_to_time(midnight(45349) + time) != Ticks{CS_SUCCEED, 0, rounded} ||
             big_time_to_time(time) != Ticks{CS_SUCCEED, 0, rounded} ||
             big_time_to_datetime(time) != Ticks{CS_SUCCEED, 0, rounded}))
            wrong = millisecond;
    }
    EXPECT_EQ(wrong, -1);
}

TEST(FromBig, Millisecond999StaysInItsSecondAsADatetimeAndLeavesItAsATime) {
    EXPECT_EQ(big_to_datetime(midnight(5) + 999000), (Ticks{CS_SUCCEED, 5, 299}));
    EXPECT_EQ(big_to_time(midnight(5) + 999000), (Ticks{CS_SUCCEED, 0, 300}));
    EXPECT_EQ(big_time_to_time(999000), (Ticks{CS_SUCCEED, 0, 300}));
    EXPECT_EQ(big_time_to_datetime(999000), (Ticks{CS_SUCCEED, 0, 300}));
    EXPECT_EQ(big_to_time(midnight(5) + 86399999000), (Ticks{CS_SUCCEED, 0, 25919999}));
    EXPECT_EQ(big_time_to_time(86399999999), (Ticks{CS_ETRUNCATED, 0, 25919999}));
}

TEST(FromBig, MicrosecondsBelowAMillisecondAreTruncatedWithTheValueStored) {
    Draw draw(92);
    for (int i = 0; i < 100000; ++i) {
        const CS_INT day = static_cast<CS_INT>(draw.between(FIRST_DATETIME_DAY, LAST_DAY));
        const CS_UBIGINT time = draw.micros_of_day();
        const CS_INT milliseconds = static_cast<CS_INT>(time / 1000), rounded = rounded_ticks(milliseconds);
        const int code = time % 1000 == 0 ? CS_SUCCEED : CS_ETRUNCATED;
        ASSERT_EQ(big_to_datetime(midnight(day) + time), (Ticks{code, day, capped_ticks(milliseconds)}));
        ASSERT_EQ(big_to_time(midnight(day) + time), (Ticks{code, 0, rounded}));
        ASSERT_EQ(big_time_to_time(time), (Ticks{code, 0, rounded}));
        ASSERT_EQ(big_time_to_datetime(time), (Ticks{code, 0, rounded}));
    }
    for (CS_UBIGINT micros = 0; micros < 5000; ++micros) {
        const int code = micros % 1000 == 0 ? CS_SUCCEED : CS_ETRUNCATED;
        ASSERT_EQ(big_to_datetime(midnight(9) + micros).code, code) << micros;
        ASSERT_EQ(big_to_time(midnight(9) + micros).code, code) << micros;
        ASSERT_EQ(big_time_to_time(micros).code, code) << micros;
        ASSERT_EQ(big_time_to_datetime(micros).code, code) << micros;
    }
}

TEST(FromBig, DaysBefore1753AreAnUnderflowButStored) {
    const CS_BIGDATETIME first = midnight(-53690);
    EXPECT_EQ(big_to_datetime(first), (Ticks{CS_SUCCEED, -53690, 0}));
    EXPECT_EQ(big_to_datetime(first - 1), (Ticks{CS_EUNDERFLOW, -53691, 25919999}));
    EXPECT_EQ(big_to_datetime(first - 1000), (Ticks{CS_EUNDERFLOW, -53691, 25919999}));
    EXPECT_EQ(big_to_datetime(FIRST_BIG), (Ticks{CS_EUNDERFLOW, -693595, 0}));
    EXPECT_EQ(big_to_datetime(FIRST_BIG + 1), (Ticks{CS_EUNDERFLOW, -693595, 0})); // before it is truncated
}

TEST(FromBig, ValuesThatCannotBeMadeAreAnOverflow) {
    for (const CS_BIGDATETIME value : {CS_UBIGINT(0), FIRST_BIG - 1, LAST_BIG + 1, CS_UBIGINT(ULLONG_MAX)}) {
        const Ticks made = big_to_datetime(value);
        EXPECT_EQ(made.code, CS_EOVERFLOW) << value;
        EXPECT_EQ(made.days, 0) << value;
        EXPECT_EQ(made.ticks, PAST) << value;
    }
    EXPECT_EQ(big_to_datetime(LAST_BIG), (Ticks{CS_ETRUNCATED, 2958463, 25919999}));
}

TEST(FromBig, DayAndTimeOfEveryDay) {
    std::int64_t wrong = INT_MAX;
    for_each_day([&](std::int64_t day, const Date &) {
        for (const CS_UBIGINT time : {CS_UBIGINT(0), MICROS_A_DAY - 1}) {
            CS_BIGDATETIME value = midnight(day) + time;
            CS_DATE date = PAST;
            CS_BIGTIME rest = PAST;
            com__bigdatetimetodatea(&value, &date);
            com__bigdatetimetobigtime(&value, &rest);
            if (date != day || rest != time)
                wrong = std::min(wrong, day);
        }
    });
    EXPECT_EQ(wrong, INT_MAX);
}

TEST(FromBig, DayAndTimeOutsideTheRange) {
    Draw draw(93);
    for (int i = 0; i < 20000; ++i) {
        CS_BIGDATETIME value = i == 0 ? 0 : i == 1 ? ULLONG_MAX : draw.below(ULLONG_MAX);
        CS_DATE date = PAST;
        CS_BIGTIME time = PAST;
        com__bigdatetimetodatea(&value, &date);
        com__bigdatetimetobigtime(&value, &time);
        ASSERT_EQ(date, static_cast<std::int64_t>(value / MICROS_A_DAY) - 366 - 693595) << value;
        ASSERT_EQ(time, value % MICROS_A_DAY) << value;
    }
}

// ---- From a date or a time alone ----

Ticks date_to_datetime(CS_DATE from) {
    CS_DATETIME to = {PAST, PAST};
    const int code = com__dateatodate(&from, &to);
    return {code, to.dtdays, to.dttime};
}

Big date_to_big(CS_DATE from) {
    CS_BIGDATETIME to = PAST;
    const int code = com__dateatobigdatetime(&from, &to);
    return {code, to};
}

TEST(FromDate, EveryDay) {
    std::int64_t wrong = INT_MAX;
    for_each_day([&](std::int64_t number, const Date &) {
        const CS_INT day = static_cast<CS_INT>(number);
        const Ticks expected = number < FIRST_DATETIME_DAY ? Ticks{1, 0, 0} : Ticks{0, day, 0};
        if (date_to_datetime(day) != expected || date_to_big(day) != Big{0, midnight(number)})
            wrong = std::min(wrong, number);
    });
    EXPECT_EQ(wrong, INT_MAX);
}

TEST(FromDate, FailureClearsTheDay) {
    for (const CS_INT day : {INT_MIN, -693595, -53691})
        EXPECT_EQ(date_to_datetime(day), (Ticks{1, 0, 0})) << day;
    EXPECT_EQ(date_to_datetime(-53690), (Ticks{0, -53690, 0}));
    EXPECT_EQ(date_to_datetime(INT_MAX), (Ticks{0, INT_MAX, 0})); // only days before 1753 are tested
    for (const CS_INT day : {INT_MIN, INT_MIN + 1, -693961, -693596, 2958464, INT_MAX})
        EXPECT_EQ(date_to_big(day), (Big{1, 0})) << day;
}

Big time_to_big_time(CS_TIME from) {
    CS_BIGTIME to = PAST;
    const int code = com__timeatobigtime(&from, &to);
    return {code, to};
}

Big time_to_big(CS_TIME from) {
    CS_BIGDATETIME to = PAST;
    const int code = com__timeatobigdatetime(&from, &to);
    return {code, to};
}

TEST(FromTime, EveryTickOfADayIsCutToMilliseconds) {
    CS_INT wrong = -1;
    for (CS_INT ticks = 0; ticks < TICKS_A_DAY; ++ticks) {
        const CS_UBIGINT time = cut_micros(ticks);
        if (wrong < 0 && (time_to_big_time(ticks) != Big{0, time} || time_to_big(ticks) != Big{0, FIRST_BIG + time}))
            wrong = ticks;
    }
    EXPECT_EQ(wrong, -1);
    EXPECT_EQ(time_to_big_time(1), (Big{0, 3000}));
    EXPECT_EQ(time_to_big_time(25919999), (Big{0, 86399996000}));
}

TEST(FromTime, OutsideADayIsAFailure) {
    for (const CS_TIME ticks : {INT_MIN, -25920000, -300, -1, 25920000, 25920001, INT_MAX}) {
        EXPECT_EQ(time_to_big_time(ticks), FAILED_BIG) << ticks;
        EXPECT_EQ(time_to_big(ticks), FAILED_BIG) << ticks;
    }
}

TEST(FromTime, ATimeAloneIsOn1900AsADatetimeAndOnTheYear1AsABigValue) {
    for (CS_TIME ticks : {INT_MIN, -1, 0, 300, 25919999, 25920000, INT_MAX}) {
        CS_DATETIME to = {PAST, PAST};
        com__timeatodate(&ticks, &to);
        EXPECT_EQ(to.dtdays, 0);
        EXPECT_EQ(to.dttime, ticks);
    }
    EXPECT_EQ(time_to_big(300), (Big{0, FIRST_BIG + 1000000}));
}

// ---- There and back ----

TEST(Moves, DatetimesSurviveTheWayThroughBigValues) {
    Draw draw(94);
    for (int i = 0; i < 100000; ++i) {
        const CS_INT day = static_cast<CS_INT>(draw.between(FIRST_DATETIME_DAY, LAST_DAY)), ticks = draw.ticks();
        const Big big = datetime_to_big(day, ticks);
        ASSERT_EQ(big_to_datetime(big.value), (Ticks{CS_SUCCEED, day, ticks}));
        ASSERT_EQ(big_to_time(big.value), (Ticks{CS_SUCCEED, 0, ticks}));
        ASSERT_EQ(big_time_to_time(time_to_big_time(ticks).value), (Ticks{CS_SUCCEED, 0, ticks}));
    }
}

} // namespace

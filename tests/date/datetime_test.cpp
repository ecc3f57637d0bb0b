// Values cracked into records and made from them, the order and the ranges of the types, and the public forms on short
// records.
#include "support/naive_calendar.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace {

using namespace support::calendar;

constexpr CS_INT EACH_INT[] = {INT_MIN, INT_MIN + 1, -2, -1, 0, 1, 2, INT_MAX - 1, INT_MAX};

CS_DATEREC cracked(CS_INT day) {
    CS_DATETIME value = {day, 0};
    CS_DATEREC record = untouched_record();
    com__datecrack(&value, &record);
    return record;
}

CS_DATEREC cracked_time(CS_INT ticks) {
    CS_DATETIME value = {0, ticks};
    CS_DATEREC record = untouched_record();
    com__timecrack(&value, &record);
    return record;
}

CS_DATEREC cracked_big_time(CS_BIGDATETIME value) {
    CS_DATEREC record = untouched_record();
    com__bigtimecrack(&value, &record);
    return record;
}

// The record of a date that nothing else is known of.
Fields fields_of_date(const Date &date) {
    CS_DATEREC record = record_of_date(static_cast<CS_INT>(date.year), date.month, date.day);
    record.datedyear = date.day_of_year;
    record.datedweek = date.weekday;
    return fields_of(record);
}

struct Made {
    int code;
    CS_INT value;
    bool operator==(const Made &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Made &made) {
        return out << "code " << made.code << " value " << made.value;
    }
};

constexpr CS_INT PAST = 123456789; // what a result holds before

Made made_date(CS_DATEREC record) {
    CS_DATETIME value = {PAST, PAST};
    const int code = com__datemake(&value, &record);
    EXPECT_EQ(value.dttime, PAST);
    return {code, value.dtdays};
}

Made made_date(CS_INT year, CS_INT month, CS_INT day) { return made_date(record_of_date(year, month, day)); }

Made made_time(CS_DATEREC record) {
    CS_DATETIME value = {PAST, PAST};
    const int code = com__timemake(&value, &record);
    EXPECT_EQ(value.dtdays, PAST);
    return {code, value.dttime};
}

Made made_time(CS_INT hour, CS_INT minute, CS_INT second, CS_INT millisecond) {
    return made_time(record_of_time(hour, minute, second, millisecond));
}

struct MadeBig {
    int code;
    CS_UBIGINT value;
    bool operator==(const MadeBig &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const MadeBig &made) {
        return out << "code " << made.code << " value " << made.value;
    }
};

MadeBig made_big_date(CS_DATEREC record) {
    CS_BIGDATETIME value = PAST;
    const int code = com__bigdatemake(&value, &record);
    return {code, value};
}

MadeBig made_big_time(CS_DATEREC record) {
    CS_BIGTIME value = PAST;
    const int code = com__bigtimemake(&value, &record);
    return {code, value};
}

// ---- Calendar ----

TEST(Calendar, LeapyearSpeaksOfTheYearAfterItsArgument) {
    EXPECT_EQ(leapyear(1899), 0); // 1900
    EXPECT_EQ(leapyear(1999), 1); // 2000
    EXPECT_EQ(leapyear(2023), 1);
    EXPECT_EQ(leapyear(2024), 0);
    EXPECT_EQ(leapyear(0), 0);
    EXPECT_EQ(leapyear(3), 1);
    for (int year = -4000; year <= 12000; ++year)
        ASSERT_EQ(leapyear(year - 1), is_leap(year) ? 1 : 0) << year;
    for (const int year : EACH_INT)
        EXPECT_EQ(leapyear(year), is_leap(std::int64_t(year) + 1) ? 1 : 0) << year;
}

TEST(Calendar, LeapcntCountsLeapYears) {
    int count = 0;
    EXPECT_EQ(com__leapcnt(0), 0);
    for (int year = 1; year <= 40000; ++year) {
        count += is_leap(year) ? 1 : 0;
        ASSERT_EQ(com__leapcnt(year), count) << year;
    }
    EXPECT_EQ(com__leapcnt(INT_MAX), INT_MAX / 4 - INT_MAX / 100 + INT_MAX / 400);
}

TEST(Calendar, LeapcntOfANegativeArgumentIsZero) {
    for (const int year : {-1, -4, -400, -2000, INT_MIN + 1, INT_MIN})
        EXPECT_EQ(com__leapcnt(year), 0) << year;
}

// ---- Dates ----

TEST(DateCrack, EveryDayOfTheCalendarIsCrackedAndMadeAgain) {
    std::int64_t count = 0;
    bool good = true;
    for_each_day([&](std::int64_t number, const Date &date) {
        ++count;
        if (!good)
            return;
        const CS_INT day = static_cast<CS_INT>(number);
        const Fields expected = fields_of_date(date);
        const CS_DATEREC record = cracked(day);
        CS_BIGDATETIME big = midnight(number) + (number % 2 == 0 ? 0 : MICROS_A_DAY - 1);
        CS_DATEREC big_record = untouched_record();
        com__bigdatecrack(&big, &big_record);
        good = fields_of(record) == expected && fields_of(big_record) == expected &&
               made_date(record) == Made{0, day} && made_big_date(record) == MadeBig{0, midnight(number)};
        if (!good) {
            EXPECT_EQ(fields_of(record), expected) << date;
            EXPECT_EQ(fields_of(big_record), expected) << date;
            EXPECT_EQ(made_date(record), (Made{0, day})) << date;
            EXPECT_EQ(made_big_date(record), (MadeBig{0, midnight(number)})) << date;
        }
    });
    EXPECT_EQ(count, 3652059);
}

TEST(DateCrack, KnownDays) {
    EXPECT_EQ(fields_of(cracked(0)), fields_of_date({1900, 0, 1, 1, 1})); // a Monday
    EXPECT_EQ(fields_of(cracked(-53690)), fields_of_date({1753, 0, 1, 1, 1}));
    EXPECT_EQ(fields_of(cracked(-53691)), fields_of_date({1752, 11, 31, 366, 0}));
    EXPECT_EQ(fields_of(cracked(-693595)), fields_of_date({1, 0, 1, 1, 1}));
    EXPECT_EQ(fields_of(cracked(2958463)), fields_of_date({9999, 11, 31, 365, 5}));
    EXPECT_EQ(fields_of(cracked(65535)), fields_of_date({2079, 5, 6, 157, 2}));
    EXPECT_EQ(fields_of(cracked(45349)), fields_of_date({2024, 1, 29, 60, 4}));
}

TEST(DateCrack, DaysFarOutsideTheCalendarCrackAsByLoops) {
    std::vector<CS_INT> days(std::begin(EACH_INT), std::end(EACH_INT));
    for (CS_INT away = 0; away < 3000; ++away) {
        days.push_back(static_cast<CS_INT>(FIRST_DAY) - 1 - away);
        days.push_back(static_cast<CS_INT>(LAST_DAY) + 1 + away);
        days.push_back(INT_MIN + away);
        days.push_back(INT_MAX - away);
    }
    Draw draw(51);
    for (int i = 0; i < 20000; ++i)
        days.push_back(draw.any_day());
    for (const CS_INT day : days)
        ASSERT_EQ(fields_of(cracked(day)), fields_of_date(crack_by_loops(day))) << day;
}

TEST(DateCrack, LoopsAgreeWithCountingWithinTheCalendar) {
    Date wrong = {};
    for_each_day([&](std::int64_t number, const Date &date) {
        if (number % 7 == 3 && wrong == Date{} && crack_by_loops(number) != date)
            wrong = date;
    });
    EXPECT_EQ(wrong, Date{});
}

TEST(DateCrack, YearsBeforeTheFirstAllHave365DaysAlsoLeapOnes) {
    EXPECT_EQ(fields_of(cracked(-693596)), fields_of_date({0, 11, 30, 365, 0})); // the year 0 counts as leap
    EXPECT_EQ(fields_of(cracked(-693595 - 365)), fields_of_date({0, 0, 1, 1, 0}));
    EXPECT_EQ(fields_of(cracked(-693595 - 366)), fields_of_date({-1, 11, 31, 365, 6}));
}

TEST(DateCrack, BigValuesOutsideTheCalendarCrackByTheirDayNumber) {
    std::vector<CS_BIGDATETIME> values = {
        0, 1, FIRST_BIG - 1, FIRST_BIG, LAST_BIG, LAST_BIG + 1, ULLONG_MAX, ULLONG_MAX - 1};
    Draw draw(52);
    for (int i = 0; i < 5000; ++i) {
        values.push_back(draw.below(FIRST_BIG));
        values.push_back(draw.between(LAST_BIG, LLONG_MAX));
        values.push_back(ULLONG_MAX - draw.below(1ull << 62));
    }
    for (CS_BIGDATETIME value : values) {
        CS_DATEREC record = untouched_record();
        com__bigdatecrack(&value, &record);
        const Date expected = crack_by_loops(static_cast<std::int64_t>(value / MICROS_A_DAY) - 366 - 693595);
        ASSERT_EQ(fields_of(record), fields_of_date(expected)) << value;
    }
}

TEST(DateMake, FieldsOutsideTheirRangeInOrder) {
    for (const CS_INT year : {INT_MIN, -1, 0, 10000, INT_MAX}) {
        EXPECT_EQ(made_date(year, 0, 1), (Made{1, 0})) << year;
        EXPECT_EQ(made_date(year, 12, 32), (Made{1, 0})) << year;
        EXPECT_EQ(made_big_date(record_of_date(year, 12, 32)), (MadeBig{1, PAST})) << year;
    }
    for (const CS_INT month : {INT_MIN, -1, 12, INT_MAX}) {
        EXPECT_EQ(made_date(2000, month, 1), (Made{2, 0})) << month;
        EXPECT_EQ(made_date(2000, month, 32), (Made{2, 0})) << month;
        EXPECT_EQ(made_big_date(record_of_date(2000, month, 0)), (MadeBig{2, PAST})) << month;
    }
    for (const CS_INT day : {INT_MIN, -1, 0, 32, INT_MAX}) {
        EXPECT_EQ(made_date(2000, 0, day), (Made{3, 0})) << day;
        EXPECT_EQ(made_big_date(record_of_date(2000, 0, day)), (MadeBig{3, PAST})) << day;
    }
}

TEST(DateMake, DaysOfEachMonthEndWithIt) {
    for (const CS_INT year : {1, 4, 100, 400, 1752, 1899, 1900, 1904, 2000, 2023, 2024, 2100, 9996, 9999})
        for (int month = 0; month < 12; ++month) {
            const int length = month_length(year, month);
            for (CS_INT day = 1; day <= length; ++day)
                ASSERT_EQ(made_date(year, month, day), (Made{0, CS_INT(DayNumbers::of(year, month, day))}));
            EXPECT_EQ(made_date(year, month, length + 1), (Made{3, 0})) << year << ' ' << month;
            EXPECT_EQ(made_big_date(record_of_date(year, month, length + 1)), (MadeBig{3, PAST}));
        }
}

TEST(DateMake, February29Of1900IsNoDayAndOf2000Is) {
    EXPECT_EQ(made_date(1900, 1, 29), (Made{3, 0}));
    EXPECT_EQ(made_date(2000, 1, 29), (Made{0, 36583}));
}

TEST(DateMake, FailureClearsTheDaysOfADatetimeButLeavesABigValue) {
    CS_DATETIME value = {77, 88};
    CS_DATEREC record = record_of_date(2023, 1, 29);
    EXPECT_EQ(com__datemake(&value, &record), DATE_BADDAY);
    EXPECT_EQ(value.dtdays, 0);
    EXPECT_EQ(value.dttime, 88);
    CS_BIGDATETIME big = 99;
    EXPECT_EQ(com__bigdatemake(&big, &record), DATE_BADDAY);
    EXPECT_EQ(big, 99u);
}

TEST(DateMake, RangesOfTheTypesAreNotChecked) {
    EXPECT_EQ(made_date(1, 0, 1), (Made{0, -693595})); // no CS_DATETIME has it
    EXPECT_EQ(made_date(9999, 11, 31), (Made{0, 2958463}));
    EXPECT_EQ(made_big_date(record_of_date(1, 0, 1)), (MadeBig{0, 31622400000000}));
    EXPECT_EQ(made_big_date(record_of_date(9999, 11, 31)), (MadeBig{0, 315569433600000000}));
}

TEST(DateMake, OtherFieldsAreNotLookedAt) {
    CS_DATEREC record = record_of_date(2024, 0, 31);
    for (const CS_INT other : EACH_INT) {
        record.datedyear = record.datedweek = record.datehour = record.dateminute = other;
        record.datesecond = record.datemsecond = record.datetzone = record.datesecfrac = record.datesecprec = other;
        EXPECT_EQ(made_date(record), (Made{0, 45320}));
        EXPECT_EQ(made_big_date(record), (MadeBig{0, midnight(45320)}));
    }
}

// ---- Times ----

CS_DATEREC tick_record(CS_INT hour, CS_INT minute, CS_INT second, CS_INT millisecond) {
    CS_DATEREC record = record_of_time(hour, minute, second, millisecond);
    record.datesecfrac = 0;
    record.datesecprec = 300;
    return record;
}

TEST(TimeCrack, EveryTickOfADay) {
    CS_INT ticks = 0;
    for (CS_INT hour = 0; hour < 24; ++hour)
        for (CS_INT minute = 0; minute < 60; ++minute)
            for (CS_INT second = 0; second < 60; ++second)
                for (CS_INT part = 0; part < 300; ++part, ++ticks) {
                    const Fields expected = fields_of(tick_record(hour, minute, second, part * 1000 / 300));
                    ASSERT_EQ(fields_of(cracked_time(ticks)), expected) << ticks;
                }
    EXPECT_EQ(ticks, TICKS_A_DAY);
}

TEST(TimeCrack, MillisecondsAreCutOff) {
    EXPECT_EQ(cracked_time(1).datemsecond, 3);
    EXPECT_EQ(cracked_time(2).datemsecond, 6);
    EXPECT_EQ(cracked_time(3).datemsecond, 10);
    EXPECT_EQ(cracked_time(299).datemsecond, 996);
    EXPECT_EQ(cracked_time(300).datemsecond, 0);
}

TEST(TimeCrack, OnlyTheLow25BitsCount) {
    EXPECT_EQ(fields_of(cracked_time(TICKS_A_DAY)), fields_of(tick_record(24, 0, 0, 0)));
    EXPECT_EQ(fields_of(cracked_time(0x1FFFFFF)), fields_of(tick_record(31, 4, 8, 103)));
    EXPECT_EQ(fields_of(cracked_time(0x2000000)), fields_of(tick_record(0, 0, 0, 0)));
    EXPECT_EQ(fields_of(cracked_time(-1)), fields_of(cracked_time(0x1FFFFFF)));
    Draw draw(53);
    for (int i = 0; i < 50000; ++i) {
        const CS_INT ticks = draw.any_ticks();
        const CS_INT low = static_cast<CS_INT>(static_cast<CS_UINT>(ticks) % (1u << 25));
        const CS_INT part = low % 300;
        ASSERT_EQ(fields_of(cracked_time(ticks)),
                  fields_of(tick_record(low / 1080000, low / 18000 % 60, low / 300 % 60, part * 1000 / 300)))
            << ticks;
    }
}

TEST(TimeCrack, MicrosecondsOfBigValues) {
    Draw draw(54);
    for (int i = 0; i < 200000; ++i) {
        const CS_UBIGINT time = draw.micros_of_day();
        CS_BIGDATETIME value = time;
        if (i % 3 == 1)
            value = midnight(draw.day()) + time;
        else if (i % 3 == 2)
            value = draw.below(ULLONG_MAX / MICROS_A_DAY) * MICROS_A_DAY + time;
        CS_DATEREC expected =
            record_of_big_time(static_cast<CS_INT>(time / 3600000000), static_cast<CS_INT>(time / 60000000 % 60),
                               static_cast<CS_INT>(time / 1000000 % 60), static_cast<CS_INT>(time % 1000000));
        expected.datemsecond = 0;
        ASSERT_EQ(fields_of(cracked_big_time(value)), fields_of(expected)) << value;
    }
}

TEST(TimeMake, EveryMillisecondOfASecondIsRoundedToTicks) {
    for (CS_INT millisecond = 0; millisecond < 1000; ++millisecond) {
        // To the nearest tick of 10/3 ms; half a tick is met by no millisecond.
        const CS_INT nearest = static_cast<CS_INT>((millisecond * 3 + 5) / 10);
        const CS_INT ticks = millisecond == 999 ? 299 : nearest;
        EXPECT_EQ(made_time(0, 0, 0, millisecond), (Made{0, ticks})) << millisecond;
        EXPECT_EQ(made_time(record_of_big_time(0, 0, 0, millisecond * 1000 + 999)), (Made{0, ticks})) << millisecond;
        EXPECT_EQ(made_big_time(record_of_time(0, 0, 0, millisecond)), (MadeBig{0, millisecond * 1000u}));
    }
    EXPECT_EQ(made_time(0, 0, 0, 2), (Made{0, 1}));
    EXPECT_EQ(made_time(0, 0, 0, 3), (Made{0, 1}));
    EXPECT_EQ(made_time(0, 0, 0, 7), (Made{0, 2}));
    EXPECT_EQ(made_time(0, 0, 0, 10), (Made{0, 3}));
}

TEST(TimeMake, Millisecond999NeverGoesIntoTheNextSecond) {
    EXPECT_EQ(made_time(23, 59, 59, 999), (Made{0, 25919999}));
    EXPECT_EQ(made_time(0, 0, 0, 999), (Made{0, 299}));
    EXPECT_EQ(made_time(0, 0, 0, 998), (Made{0, 299}));
    EXPECT_EQ(made_time(record_of_big_time(23, 59, 59, 999999)), (Made{0, 25919999}));
}

TEST(TimeMake, EveryTickIsMadeAgainFromItsMilliseconds) {
    for (CS_INT ticks = 0; ticks < TICKS_A_DAY; ++ticks)
        ASSERT_EQ(made_time(cracked_time(ticks)), (Made{0, ticks}));
}

TEST(TimeMake, EverySecondOfADay) {
    for (CS_INT second = 0; second < 86400; ++second) {
        const CS_INT hour = second / 3600, minute = second / 60 % 60, rest = second % 60;
        ASSERT_EQ(made_time(hour, minute, rest, 0), (Made{0, second * 300}));
        ASSERT_EQ(made_big_time(record_of_big_time(hour, minute, rest, 999999)),
                  (MadeBig{0, second * 1000000ull + 999999}));
    }
}

TEST(TimeMake, FieldsAboveTheirRangeInOrderAndNothingStored) {
    for (const CS_INT big : {60, 1000, INT_MAX}) {
        EXPECT_EQ(made_time(big, big, big, big), (Made{4, PAST}));
        EXPECT_EQ(made_time(23, big, big, big), (Made{5, PAST}));
        EXPECT_EQ(made_time(23, 59, big, big), (Made{6, PAST}));
        EXPECT_EQ(made_big_time(record_of_time(big, big, big, big)), (MadeBig{4, PAST}));
        EXPECT_EQ(made_big_time(record_of_time(23, big, big, big)), (MadeBig{5, PAST}));
        EXPECT_EQ(made_big_time(record_of_time(23, 59, big, big)), (MadeBig{6, PAST}));
    }
    EXPECT_EQ(made_time(24, 0, 0, 0), (Made{4, PAST}));
    for (const CS_INT millisecond : {1000, INT_MAX}) {
        EXPECT_EQ(made_time(23, 59, 59, millisecond), (Made{7, PAST}));
        EXPECT_EQ(made_big_time(record_of_time(23, 59, 59, millisecond)), (MadeBig{7, PAST}));
    }
    for (const CS_INT micros : {1000000, INT_MAX}) {
        EXPECT_EQ(made_time(record_of_big_time(0, 0, 0, micros)), (Made{7, PAST}));
        EXPECT_EQ(made_big_time(record_of_big_time(0, 0, 0, micros)), (MadeBig{7, PAST}));
    }
}

TEST(TimeMake, NegativeFieldsAreNotTested) {
    EXPECT_EQ(made_time(-1, 0, 0, 0), (Made{0, -1080000}));
    EXPECT_EQ(made_time(0, -1, 0, 0), (Made{0, -18000}));
    EXPECT_EQ(made_time(0, 0, -1, 0), (Made{0, -300}));
    EXPECT_EQ(made_time(1, -1, -1, 0), (Made{0, 1080000 - 18000 - 300}));
    EXPECT_EQ(made_time(0, 0, 0, -1), (Made{0, 0}));  // (-3 + 5) / 10
    EXPECT_EQ(made_time(0, 0, 0, -5), (Made{0, -1})); // (-15 + 5) / 10
    EXPECT_EQ(made_time(record_of_big_time(0, 0, 0, -5000)), (Made{0, -1}));
    EXPECT_EQ(made_big_time(record_of_time(0, 0, 1, -1)), (MadeBig{0, 999000}));
    EXPECT_EQ(made_big_time(record_of_big_time(0, 0, 1, -1)), (MadeBig{0, 999999}));
    for (const CS_INT low : {INT_MIN, INT_MIN + 1}) { // what is stored has no meaning, but the code has
        EXPECT_EQ(made_time(low, low, low, low).code, 0);
        EXPECT_EQ(made_big_time(record_of_time(low, low, low, low)).code, 0);
        EXPECT_EQ(made_big_time(record_of_big_time(low, low, low, low)).code, 0);
    }
}

TEST(TimeMake, FractionComesFromSecfracOnlyForMicroseconds) {
    CS_DATEREC record = record_of_time(0, 0, 0, 500);
    record.datesecfrac = 250000;
    for (const CS_INT precision : {0, 1, 300, 1000, 999999, 1000001, INT_MIN, INT_MAX}) {
        record.datesecprec = precision;
        EXPECT_EQ(made_time(record), (Made{0, 150})) << precision;
        EXPECT_EQ(made_big_time(record), (MadeBig{0, 500000})) << precision;
    }
    record.datesecprec = 1000000;
    EXPECT_EQ(made_time(record), (Made{0, 75}));
    EXPECT_EQ(made_big_time(record), (MadeBig{0, 250000}));
}

TEST(TimeMake, BigTimesAreMadeAgain) {
    Draw draw(55);
    for (int i = 0; i < 100000; ++i) {
        const CS_UBIGINT time = draw.micros_of_day();
        ASSERT_EQ(made_big_time(cracked_big_time(time)), (MadeBig{0, time}));
    }
}

// ---- Order ----

int sign(int value) { return (value > 0) - (value < 0); }

template <class T>
int order(T a, T b) {
    return (a > b) - (a < b);
}

TEST(Order, ComparesDaysAndThenTimes) {
    for (const CS_INT day1 : EACH_INT)
        for (const CS_INT day2 : EACH_INT)
            for (const CS_INT time1 : EACH_INT)
                for (const CS_INT time2 : EACH_INT) {
                    CS_DATETIME a = {day1, time1}, b = {day2, time2};
                    const int expected = day1 != day2 ? order(day1, day2) : order(time1, time2);
                    ASSERT_EQ(sign(com__datecmp(&a, &b)), expected) << day1 << ' ' << day2;
                    ASSERT_EQ(com_datecmp(&a, &b), com__datecmp(&a, &b));
                }
}

TEST(Order, DatecmpAnswersTheDifferenceWhereItFits) {
    CS_DATETIME a = {100, 7}, b = {-50, 900}, c = {100, 1000}, low = {INT_MIN, 0}, high = {INT_MAX, 0};
    EXPECT_EQ(com__datecmp(&a, &b), 150);
    EXPECT_EQ(com__datecmp(&b, &a), -150);
    EXPECT_EQ(com__datecmp(&a, &c), -993);
    EXPECT_EQ(com__datecmp(&a, &a), 0);
    EXPECT_EQ(com__datecmp(&low, &high), INT_MIN);
    EXPECT_EQ(com__datecmp(&high, &low), INT_MAX);
}

TEST(Order, DateAndTimeAlone) {
    for (CS_INT a : EACH_INT)
        for (CS_INT b : EACH_INT) {
            EXPECT_EQ(sign(com_dateacmp(&a, &b)), order(a, b)) << a << ' ' << b;
            EXPECT_EQ(sign(com_timeacmp(&a, &b)), order(a, b)) << a << ' ' << b;
        }
}

TEST(Order, NarrowAndBigValues) {
    const CS_USHORT shorts[] = {0, 1, 32767, 32768, 65534, 65535};
    for (const CS_USHORT day1 : shorts)
        for (const CS_USHORT day2 : shorts)
            for (const CS_USHORT time1 : shorts)
                for (const CS_USHORT time2 : shorts) {
                    CS_DATETIME4 a = {day1, time1}, b = {day2, time2};
                    ASSERT_EQ(sign(com_date4cmp(&a, &b)), day1 != day2 ? order(day1, day2) : order(time1, time2));
                }
    const CS_BIGDATETIME bigs[] = {0, 1, FIRST_BIG, LAST_BIG, 1ull << 31, 1ull << 32, 1ull << 63, ULLONG_MAX};
    for (CS_BIGDATETIME a : bigs)
        for (CS_BIGDATETIME b : bigs)
            EXPECT_EQ(sign(com_bigdatetimecmp(&a, &b)), order(a, b)) << a << ' ' << b;
}

TEST(Order, ZeroAndSet) {
    CS_DATETIME value = {1, 2};
    com_datezero(&value);
    EXPECT_EQ(value.dtdays, 0);
    EXPECT_EQ(value.dttime, 0);
    com_setdatetime(&value, -53690, 25919999);
    EXPECT_EQ(value.dtdays, -53690);
    EXPECT_EQ(value.dttime, 25919999);
    CS_DATETIME4 narrow = {1, 2};
    com_date4zero(&narrow);
    EXPECT_EQ(narrow.days, 0);
    EXPECT_EQ(narrow.minutes, 0);
}

// ---- Ranges ----

TEST(Range, DatetimeIsOnlyTestedForDaysBefore1753) {
    for (const CS_INT ticks : EACH_INT) {
        for (const CS_INT day : {-53690, -53689, 0, 2958463, 2958464, INT_MAX}) {
            CS_DATETIME value = {day, ticks};
            EXPECT_EQ(com__datetime_check_range(&value), 0) << day;
        }
        for (const CS_INT day : {-53691, -693595, INT_MIN}) {
            CS_DATETIME value = {day, ticks};
            EXPECT_EQ(com__datetime_check_range(&value), 1) << day;
        }
    }
}

TEST(Range, OtherTypesAreTestedOnBothSides) {
    for (CS_BIGDATETIME value : {CS_UBIGINT(0), FIRST_BIG - 1, LAST_BIG + 1, CS_UBIGINT(ULLONG_MAX)})
        EXPECT_EQ(com__bigdatetime_check_range(&value), 1) << value;
    for (CS_BIGDATETIME value : {FIRST_BIG, FIRST_BIG + 1, LAST_BIG - 1, LAST_BIG})
        EXPECT_EQ(com__bigdatetime_check_range(&value), 0) << value;
    for (CS_DATE value : {INT_MIN, -693596, 2958464, INT_MAX})
        EXPECT_EQ(com__datea_check_range(&value), 1) << value;
    for (CS_DATE value : {-693595, -53691, 0, 2958463})
        EXPECT_EQ(com__datea_check_range(&value), 0) << value;
    for (CS_TIME value : {INT_MIN, -1, 25920000, INT_MAX})
        EXPECT_EQ(com__timea_check_range(&value), 1) << value;
    for (CS_TIME value : {0, 1, 25919999})
        EXPECT_EQ(com__timea_check_range(&value), 0) << value;
    for (CS_BIGTIME value : {MICROS_A_DAY, MICROS_A_DAY + 1, FIRST_BIG, CS_UBIGINT(ULLONG_MAX)})
        EXPECT_EQ(com__bigtime_check_range(&value), 1) << value;
    for (CS_BIGTIME value : {CS_UBIGINT(0), CS_UBIGINT(1), MICROS_A_DAY - 1})
        EXPECT_EQ(com__bigtime_check_range(&value), 0) << value;
}

// ---- Public forms ----

// A record that ends behind datetzone, at the very end of what may be touched.
class ShortRecord {
public:
    static constexpr std::size_t SIZE = 10 * sizeof(CS_INT);

    ShortRecord() : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        memory_ =
            static_cast<char *>(mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (memory_ == MAP_FAILED || mprotect(memory_ + page_, page_, PROT_NONE) != 0)
            std::abort();
        put(untouched_record());
    }
    ~ShortRecord() { munmap(memory_, 2 * page_); }
    ShortRecord(const ShortRecord &) = delete;
    ShortRecord &operator=(const ShortRecord &) = delete;

    CS_DATEREC *get() { return reinterpret_cast<CS_DATEREC *>(memory_ + page_ - SIZE); }
    void put(const CS_DATEREC &record) { std::memcpy(static_cast<void *>(get()), &record, SIZE); }
    // Its ten fields, with two untouched ones.
    Fields fields() {
        CS_DATEREC record = untouched_record();
        std::memcpy(&record, static_cast<void *>(get()), SIZE);
        return fields_of(record);
    }

private:
    std::size_t page_;
    char *memory_;
};

TEST(PublicForms, CracksOfADatetimeEndWithTheTenthField) {
    Draw draw(56);
    for (int i = 0; i < 200; ++i) {
        CS_DATETIME value = {draw.day(), draw.ticks()};
        CS_DATEREC expected = untouched_record();
        com__datecrack(&value, &expected);
        ShortRecord record;
        com_datecrack(&value, record.get());
        ASSERT_EQ(record.fields(), fields_of(expected));
        com_timecrack(&value, record.get());
        com__timecrack(&value, &expected);
        expected.datesecfrac = expected.datesecprec = UNTOUCHED;
        ASSERT_EQ(record.fields(), fields_of(expected));
    }
}

TEST(PublicForms, MakesOfADatetimeReadTheTenFirstFields) {
    ShortRecord record;
    record.put(record_of_date(2024, 1, 29));
    CS_DATETIME value = {PAST, PAST};
    EXPECT_EQ(com_datemake(&value, record.get()), 0);
    EXPECT_EQ(value.dtdays, 45349);
    EXPECT_EQ(value.dttime, PAST);
    record.put(record_of_date(2023, 1, 29));
    EXPECT_EQ(com_datemake(&value, record.get()), DATE_BADDAY);
    EXPECT_EQ(value.dtdays, 0);
    record.put(record_of_time(23, 59, 59, 999));
    value.dtdays = PAST;
    EXPECT_EQ(com_timemake(&value, record.get()), 0);
    EXPECT_EQ(value.dttime, 25919999);
    record.put(record_of_time(23, 59, 59, 1000));
    EXPECT_EQ(com_timemake(&value, record.get()), DATE_BADFRACTION);
    EXPECT_EQ(value.dttime, 25919999);
    EXPECT_EQ(value.dtdays, PAST);
}

TEST(PublicForms, TimemakeTakesMillisecondsAlsoWhereMicrosecondsFollow) {
    CS_DATEREC record = record_of_big_time(0, 0, 0, 250000);
    record.datemsecond = 500;
    CS_DATETIME value = {0, 0};
    EXPECT_EQ(com_timemake(&value, &record), 0);
    EXPECT_EQ(value.dttime, 150);
    EXPECT_EQ(com__timemake(&value, &record), 0);
    EXPECT_EQ(value.dttime, 75);
}

TEST(PublicForms, BigOnesHaveAllTwelveFields) {
    CS_BIGDATETIME value = midnight(45349) + 12345678901;
    CS_DATEREC record = untouched_record(), expected = untouched_record();
    com_bigdatecrack(&value, &record);
    com__bigdatecrack(&value, &expected);
    EXPECT_EQ(fields_of(record), fields_of(expected));
    com_bigtimecrack(&value, &record);
    com__bigtimecrack(&value, &expected);
    EXPECT_EQ(fields_of(record), fields_of(expected));
    EXPECT_EQ(record.datesecfrac, 678901);
    CS_BIGDATETIME date = PAST;
    EXPECT_EQ(com_bigdatemake(&date, &record), 0);
    EXPECT_EQ(date, midnight(45349));
    CS_BIGTIME time = PAST;
    EXPECT_EQ(com_bigtimemake(&time, &record), 0);
    EXPECT_EQ(time, 12345678901u);
    record.datesecfrac = 1000000;
    EXPECT_EQ(com_bigtimemake(&time, &record), DATE_BADFRACTION);
    EXPECT_EQ(time, 12345678901u);
    record.dateyear = 0;
    EXPECT_EQ(com_bigdatemake(&date, &record), DATE_BADYEAR);
    EXPECT_EQ(date, midnight(45349));
}

TEST(PublicForms, DtrecCpCopiesTheLastTwoFieldsForBigTypesOnly) {
    CS_DATEREC from;
    for (int type = -1; type <= 45; ++type) {
        Fields numbers;
        for (std::size_t i = 0; i < numbers.size(); ++i)
            numbers[i] = static_cast<CS_INT>(100 + i);
        std::memcpy(&from, numbers.data(), sizeof from);
        CS_DATEREC to = untouched_record();
        com__dtrec_cp(&from, &to, type);
        if (type != CS_BIGDATETIME_TYPE && type != CS_BIGTIME_TYPE)
            numbers[10] = numbers[11] = UNTOUCHED;
        EXPECT_EQ(fields_of(to), numbers) << type;
    }
}

TEST(PublicForms, DtrecCpOfOtherTypesStaysWithinShortRecords) {
    ShortRecord from, to;
    from.put(record_of_date(2024, 1, 29));
    com__dtrec_cp(from.get(), to.get(), CS_DATETIME_TYPE);
    EXPECT_EQ(to.fields(), from.fields());
}

} // namespace

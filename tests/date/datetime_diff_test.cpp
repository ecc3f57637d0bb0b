// Differences of dates in every part, against the rules written out in 128 bits.
#include "support/naive_calendar.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <ostream>

namespace {

using namespace support::calendar;

constexpr CS_INT PAST = 123456789; // what a result holds before
constexpr int NOT_A_PART[] = {INT_MIN, -1, 15, 16, 256, INT_MAX};

struct Answer {
    int code;
    std::int64_t diff;
    bool operator==(const Answer &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Answer &answer) {
        return out << "code " << answer.code << " diff " << answer.diff;
    }
};

constexpr Answer NOTHING = {0, PAST};
constexpr Answer OVERFLOWED = {1, PAST};

Answer difference(int part, CS_DATETIME from, CS_DATETIME to) {
    CS_INT diff = PAST;
    const int code = com__datediff(part, &from, &to, &diff);
    return {code, diff};
}

Answer big_difference(int part, CS_BIGDATETIME from, CS_BIGDATETIME to) {
    CS_BIGINT diff = PAST;
    const int code = com__bigdatediff(part, &from, &to, &diff);
    return {code, diff};
}

// ---- The rules ----

std::int64_t iso_year(std::int64_t day) { return crack_by_loops(day - (weekday_of(day) + 6) % 7 + 3).year; }

// The parts that are measured on days.
std::optional<Wide> difference_of_days(int part, std::int64_t from, std::int64_t to) {
    const Date a = crack_by_loops(from), b = crack_by_loops(to);
    const Wide d = Wide(to) - from;
    switch (part) {
    case 0:
        return b.year - a.year;
    case 1:
        return (b.month / 3 - a.month / 3) + 4 * Wide(b.year - a.year);
    case 2:
        return (b.month - a.month) + 12 * Wide(b.year - a.year);
    case 3:
    case 13:
        return d / 7;
    case 4:
    case 5:
        return d;
    case 10:
    case 12:
        return d >= 0 ? (d + a.weekday) / 7 : (d - b.weekday) / 7;
    case 11:
        return iso_year(to) - iso_year(from);
    default:
        return std::nullopt;
    }
}

Answer stored(Wide diff) { return fits(diff) ? Answer{0, static_cast<std::int64_t>(diff)} : OVERFLOWED; }

// Whole units of days and ticks, with a day borrowed where the signs differ, and the limits of that.
Answer difference_in_units(Wide d, Wide t, int ticks_a_unit, int units_a_day, int most_days) {
    const bool opposite = (d > 0 && t < 0) || (d < 0 && t > 0);
    if (opposite && (d > most_days || d < -most_days))
        return OVERFLOWED;
    if (opposite && d > 0)
        return stored((t + TICKS_A_DAY) / ticks_a_unit + (d - 1) * units_a_day);
    if (opposite)
        return stored((t - TICKS_A_DAY) / ticks_a_unit + (d + 1) * units_a_day);
    return stored(d * units_a_day + t / ticks_a_unit);
}

Answer expected_difference(int part, const CS_DATETIME &from, const CS_DATETIME &to) {
    if (const auto days = difference_of_days(part, from.dtdays, to.dtdays))
        return stored(*days);
    const Wide d = Wide(to.dtdays) - from.dtdays;
    const Wide t = Wide(to.dttime) - from.dttime;
    switch (part) {
    case 6:
        if (d == 0)
            return stored(t / 1080000);
        if (d > 0)
            return stored((t + 25920000) / 1080000 + (d - 1) * 24);
        return stored((t - 25920000) / 1080000 + (d + 1) * 24);
    case 7:
        return difference_in_units(d, t, 18000, 1440, 1491308);
    case 8:
        return difference_in_units(d, t, 300, 86400, 24855);
    case 9:
        if (((d > 0 && t < 0) || (d < 0 && t > 0)) && (d > 24 || d < -24))
            return OVERFLOWED;
        return stored(d * 86400000 + (t * 10) / 3);
    default:
        return NOTHING;
    }
}

Answer expected_big_difference(int part, CS_BIGDATETIME from, CS_BIGDATETIME to) {
    const auto day_of = [](CS_BIGDATETIME value) { return static_cast<std::int64_t>(value / MICROS_A_DAY) - 693961; };
    if (const auto days = difference_of_days(part, day_of(from), day_of(to)))
        return {0, static_cast<std::int64_t>(*days)};
    const Wide plain = Wide(to) - Wide(from);
    const auto in = [plain](std::int64_t unit) { return Answer{0, static_cast<std::int64_t>(plain / unit)}; };
    switch (part) {
    case 6:
        return in(3600000000);
    case 7:
        return in(60000000);
    case 8:
        return in(1000000);
    case 9:
        return in(1000);
    case 14:
        return in(1);
    default:
        return NOTHING;
    }
}

// ---- Random pairs ----

void compare(const CS_DATETIME &from, const CS_DATETIME &to, bool with_iso_year = true) {
    for (int part = -1; part <= 15; ++part)
        if (part != DATEPART_ISOYEAR || with_iso_year) {
            ASSERT_EQ(difference(part, from, to), expected_difference(part, from, to))
                << "part " << part << " from " << from.dtdays << ' ' << from.dttime << " to " << to.dtdays << ' '
                << to.dttime;
        }
}

TEST(DateDiff, RandomPairsOfTheCalendar) {
    Draw draw(71);
    for (int i = 0; i < 60000 && !testing::Test::HasFatalFailure(); ++i)
        compare({draw.day(), draw.ticks()}, {draw.day(), draw.ticks()});
}

TEST(DateDiff, RandomPairsCloseToEachOther) {
    Draw draw(72);
    for (int i = 0; i < 60000 && !testing::Test::HasFatalFailure(); ++i) {
        const CS_DATETIME from = {draw.day(), draw.ticks()};
        const CS_INT day = static_cast<CS_INT>(from.dtdays + draw.between(-40, 40));
        const CS_INT ticks = i % 3 == 0 ? from.dttime + static_cast<CS_INT>(draw.between(-3, 3)) : draw.ticks();
        compare(from, {day, ticks}, day >= FIRST_DAY);
    }
}

// As many days apart as each part can have, and a time before, at and behind.
TEST(DateDiff, EveryTimeAtTheLimitsOfOverflow) {
    const std::int64_t limits[] = {24, 24855, 1491308, 89478485, 2147483647};
    const CS_INT times[] = {
        0, 1, 299, 300, 301, 17999, 18000, 18001, TICKS_A_DAY / 2, TICKS_A_DAY - 300, TICKS_A_DAY - 1};
    for (const std::int64_t limit : limits)
        for (std::int64_t days = limit - 2; days <= limit + 2; ++days)
            for (const CS_INT time1 : times)
                for (const CS_INT time2 : times)
                    for (const std::int64_t start : {std::int64_t(-693595), std::int64_t(0), -days / 2}) {
                        const std::int64_t end = start + days;
                        if (!fits(end) || testing::Test::HasFatalFailure())
                            continue;
                        const CS_DATETIME a = {static_cast<CS_INT>(start), time1};
                        const CS_DATETIME b = {static_cast<CS_INT>(end), time2};
                        compare(a, b, start >= FIRST_DAY);
                        compare(b, a, start >= FIRST_DAY);
                    }
}

// Every second and minute around the limits of CS_INT.
TEST(DateDiff, ResultsAroundTheLimitsOfCsInt) {
    Draw draw(73);
    for (int i = 0; i < 60000 && !testing::Test::HasFatalFailure(); ++i) {
        const std::int64_t ticks_a_unit = draw.one_of(std::initializer_list<std::int64_t>{300, 18000, 1080000});
        const std::int64_t units = (draw.below(2) == 0 ? 2147483647 : -2147483648LL) + draw.between(-3, 3);
        Wide ticks = Wide(units) * ticks_a_unit + draw.between(-ticks_a_unit, ticks_a_unit);
        const CS_INT start = draw.ticks();
        ticks += start;
        Wide day = ticks / TICKS_A_DAY, time = ticks % TICKS_A_DAY;
        if (time < 0) {
            time += TICKS_A_DAY;
            --day;
        }
        compare({0, start}, {static_cast<CS_INT>(day), static_cast<CS_INT>(time)}, day >= FIRST_DAY);
    }
}

TEST(DateDiff, DaysAndTimesOfAnyValue) {
    Draw draw(74);
    for (int i = 0; i < 15000 && !testing::Test::HasFatalFailure(); ++i) {
        const CS_DATETIME from = {draw.any_day(), draw.any_ticks()};
        const CS_DATETIME to = {draw.any_day(), draw.any_ticks()};
        compare(from, to, from.dtdays >= FIRST_DAY && to.dtdays >= FIRST_DAY);
        compare({draw.day(), draw.any_ticks()}, {draw.day(), draw.any_ticks()});
        const CS_INT day = static_cast<CS_INT>(draw.between(-30, 30));
        compare({0, draw.any_ticks()}, {day, draw.any_ticks()});
    }
}

TEST(DateDiff, EveryPairOfLimits) {
    const CS_INT days[] = {INT_MIN, -693596, -693595, -53690, -1, 0, 1, 2958463, 2958464, INT_MAX};
    const CS_INT times[] = {INT_MIN, -1, 0, 1, 25919999, 25920000, INT_MAX};
    for (const CS_INT day1 : days)
        for (const CS_INT day2 : days)
            for (const CS_INT time1 : times)
                for (const CS_INT time2 : times)
                    compare({day1, time1}, {day2, time2}, day1 >= FIRST_DAY && day2 >= FIRST_DAY);
}

// ---- Named ----

CS_DATETIME at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    return {static_cast<CS_INT>(DayNumbers::of(year, month - 1, day)), ((hour * 60 + minute) * 60 + second) * 300};
}

TEST(DateDiff, YearsAndMonthsCountBoundaries) {
    EXPECT_EQ(difference(DATEPART_MONTH, at(2024, 1, 31), at(2024, 2, 1)), (Answer{0, 1}));
    EXPECT_EQ(difference(DATEPART_YEAR, at(2023, 12, 31), at(2024, 1, 1)), (Answer{0, 1}));
    EXPECT_EQ(difference(DATEPART_YEAR, at(2024, 1, 1), at(2023, 12, 31)), (Answer{0, -1}));
    EXPECT_EQ(difference(DATEPART_QUARTER, at(2023, 12, 31), at(2024, 4, 1)), (Answer{0, 2}));
    EXPECT_EQ(difference(DATEPART_MONTH, at(1, 1, 1), at(9999, 12, 31)), (Answer{0, 119987}));
    EXPECT_EQ(difference(DATEPART_ISOYEAR, at(2021, 1, 1), at(2021, 1, 4)), (Answer{0, 1}));
    EXPECT_EQ(difference(DATEPART_ISOYEAR, at(2021, 1, 1), at(2020, 12, 31)), (Answer{0, 0}));
}

TEST(DateDiff, WeeksCountSundaysAndWeekdaysWholeWeeks) {
    const CS_DATETIME saturday = at(2024, 6, 1), sunday = at(2024, 6, 2);
    EXPECT_EQ(difference(DATEPART_WEEK, saturday, sunday), (Answer{0, 1}));
    EXPECT_EQ(difference(DATEPART_ISOWEEK, saturday, sunday), (Answer{0, 1})); // also starts on Sunday here
    EXPECT_EQ(difference(DATEPART_WEEK, sunday, saturday), (Answer{0, -1}));
    EXPECT_EQ(difference(DATEPART_WEEKDAY, saturday, at(2024, 6, 7)), (Answer{0, 0}));
    EXPECT_EQ(difference(DATEPART_WEEKDAY, saturday, at(2024, 6, 8)), (Answer{0, 1}));
    EXPECT_EQ(difference(DATEPART_ISOWEEKDAY, saturday, at(2024, 5, 25)), (Answer{0, -1}));
}

TEST(DateDiff, HoursAcrossMidnightBorrowADay) {
    EXPECT_EQ(difference(DATEPART_HOUR, at(2024, 2, 28, 23), at(2024, 2, 29, 1)), (Answer{0, 2}));
    EXPECT_EQ(difference(DATEPART_HOUR, at(2024, 2, 29, 1), at(2024, 2, 28, 23)), (Answer{0, -2}));
    EXPECT_EQ(difference(DATEPART_HOUR, at(2024, 2, 28, 23), at(2024, 3, 1, 1)), (Answer{0, 26}));
    EXPECT_EQ(difference(DATEPART_HOUR, at(2024, 1, 1, 23, 59), at(2024, 1, 2, 0, 58)), (Answer{0, 0}));
    EXPECT_EQ(difference(DATEPART_MINUTE, at(2024, 1, 1, 23, 59, 30), at(2024, 1, 2, 0, 0, 29)), (Answer{0, 0}));
    EXPECT_EQ(difference(DATEPART_MINUTE, at(2024, 1, 2, 0, 0, 30), at(2024, 1, 1, 23, 59, 30)), (Answer{0, -1}));
    EXPECT_EQ(difference(DATEPART_SECOND, at(2024, 1, 1, 23, 59, 59), at(2024, 1, 2)), (Answer{0, 1}));
}

TEST(DateDiff, MillisecondsOfDaysAndTimesAreCutEachByItself) {
    EXPECT_EQ(difference(DATEPART_MILLISECOND, {0, 0}, {0, 1}), (Answer{0, 3}));
    EXPECT_EQ(difference(DATEPART_MILLISECOND, {0, 0}, {1, 1}), (Answer{0, 86400003}));
    EXPECT_EQ(difference(DATEPART_MILLISECOND, {0, 1}, {1, 0}), (Answer{0, 86399997})); // 86399996 with a borrow
    EXPECT_EQ(difference(DATEPART_MILLISECOND, {1, 0}, {0, 1}), (Answer{0, -86399997}));
}

TEST(DateDiff, CoarseLimitsRefuseResultsThatFitWhereTheSignsDiffer) {
    // 1491309 days less 23:59: 2147483521 minutes.
    EXPECT_EQ(difference(DATEPART_MINUTE, {0, 1439 * 18000}, {1491309, 0}), OVERFLOWED);
    EXPECT_EQ(difference(DATEPART_MINUTE, {1491309, 0}, {0, 1439 * 18000}), OVERFLOWED);
    EXPECT_EQ(difference(DATEPART_MINUTE, {0, 0}, {1491308, 127 * 18000}), (Answer{0, INT_MAX}));
    EXPECT_EQ(difference(DATEPART_MINUTE, {0, 0}, {1491308, 128 * 18000}), OVERFLOWED);
    // 24856 days less 23:59:59.
    EXPECT_EQ(difference(DATEPART_SECOND, {0, 86399 * 300}, {24856, 0}), OVERFLOWED);
    EXPECT_EQ(difference(DATEPART_SECOND, {24856, 0}, {0, 86399 * 300}), OVERFLOWED);
    EXPECT_EQ(difference(DATEPART_SECOND, {0, 0}, {24855, 11647 * 300}), (Answer{0, INT_MAX}));
    EXPECT_EQ(difference(DATEPART_SECOND, {0, 0}, {24855, 11648 * 300}), OVERFLOWED);
    // 25 days less 23:59:59.
    EXPECT_EQ(difference(DATEPART_MILLISECOND, {0, 86399 * 300}, {25, 0}), OVERFLOWED);
    EXPECT_EQ(difference(DATEPART_MILLISECOND, {25, 0}, {0, 86399 * 300}), OVERFLOWED);
    EXPECT_EQ(difference(DATEPART_MILLISECOND, {0, 0}, {24, 73883 * 300 + 194}), (Answer{0, 2147483646}));
    EXPECT_EQ(difference(DATEPART_MILLISECOND, {0, 0}, {24, 73883 * 300 + 195}), OVERFLOWED);
}

TEST(DateDiff, SmallestCsIntIsGood) {
    EXPECT_EQ(difference(DATEPART_MINUTE, {1491308, 128 * 18000}, {0, 0}), (Answer{0, INT_MIN}));
    EXPECT_EQ(difference(DATEPART_MINUTE, {1491308, 129 * 18000}, {0, 0}), OVERFLOWED);
    EXPECT_EQ(difference(DATEPART_SECOND, {24855, 11648 * 300}, {0, 0}), (Answer{0, INT_MIN}));
    EXPECT_EQ(difference(DATEPART_SECOND, {24855, 11649 * 300}, {0, 0}), OVERFLOWED);
    EXPECT_EQ(difference(DATEPART_DAY, {0, 0}, {INT_MIN, 0}), (Answer{0, INT_MIN}));
    EXPECT_EQ(difference(DATEPART_DAY, {1, 0}, {INT_MIN, 0}), OVERFLOWED);
    EXPECT_EQ(difference(DATEPART_DAY, {-1, 0}, {INT_MAX, 0}), OVERFLOWED);
}

TEST(DateDiff, MicrosecondsAndPartsThatAreNoneStoreNothing) {
    EXPECT_EQ(difference(DATEPART_MICROSECOND, at(2024, 1, 1), at(2024, 1, 2)), NOTHING);
    for (const int part : NOT_A_PART)
        EXPECT_EQ(difference(part, at(2024, 1, 1), at(2024, 1, 2)), NOTHING) << part;
}

TEST(DateDiff, OperandsMayBeTheSame) {
    CS_DATETIME value = {45349, 12345};
    for (int part = 0; part <= 13; ++part) {
        CS_INT diff = PAST;
        EXPECT_EQ(com__datediff(part, &value, &value, &diff), 0);
        EXPECT_EQ(diff, part == DATEPART_WEEK || part == DATEPART_ISOWEEK ? weekday_of(45349) / 7 : 0) << part;
    }
}

// ---- Big values ----

void compare_big(CS_BIGDATETIME from, CS_BIGDATETIME to, bool with_iso_year = true) {
    for (int part = -1; part <= 15; ++part)
        if (part != DATEPART_ISOYEAR || with_iso_year) {
            ASSERT_EQ(big_difference(part, from, to), expected_big_difference(part, from, to))
                << "part " << part << " from " << from << " to " << to;
        }
}

TEST(BigDateDiff, RandomPairsOfTheCalendar) {
    Draw draw(75);
    for (int i = 0; i < 60000 && !testing::Test::HasFatalFailure(); ++i)
        compare_big(draw.big(), draw.big());
}

TEST(BigDateDiff, RandomPairsCloseToEachOther) {
    Draw draw(76);
    for (int i = 0; i < 60000 && !testing::Test::HasFatalFailure(); ++i) {
        const CS_BIGDATETIME from = draw.big();
        const std::int64_t unit = draw.one_of(
            std::initializer_list<std::int64_t>{1, 1000, 1000000, 60000000, 3600000000, 86400000000, 604800000000});
        const CS_BIGDATETIME to = from + static_cast<CS_UBIGINT>(draw.between(-20, 20) * unit + draw.between(-1, 1));
        compare_big(from, to, to >= FIRST_BIG);
    }
}

TEST(BigDateDiff, ValuesOutsideTheRange) {
    Draw draw(77);
    for (int i = 0; i < 10000 && !testing::Test::HasFatalFailure(); ++i) {
        const CS_BIGDATETIME from = draw.below(1ull << 63),
                             to = draw.below(2) == 0 ? draw.below(FIRST_BIG) : draw.big();
        compare_big(from, to, from >= FIRST_BIG && to >= FIRST_BIG);
    }
    compare_big(FIRST_BIG, LAST_BIG);
    compare_big(LAST_BIG, FIRST_BIG);
    compare_big(0, LLONG_MAX, false);
    compare_big(LLONG_MAX, 0, false);
}

TEST(BigDateDiff, MicrosecondsHaveAPlace) {
    EXPECT_EQ(big_difference(DATEPART_MICROSECOND, FIRST_BIG, LAST_BIG), (Answer{0, 315537897599999999}));
    EXPECT_EQ(big_difference(DATEPART_MICROSECOND, LAST_BIG, FIRST_BIG), (Answer{0, -315537897599999999}));
    EXPECT_EQ(big_difference(DATEPART_MILLISECOND, FIRST_BIG + 999, FIRST_BIG), (Answer{0, 0}));
    EXPECT_EQ(big_difference(DATEPART_MILLISECOND, FIRST_BIG + 1000, FIRST_BIG), (Answer{0, -1}));
}

TEST(BigDateDiff, TimesThatBeginADayAreNotRoundedBack) {
    const CS_BIGDATETIME midnight_of_leap_day = midnight(45349);
    EXPECT_EQ(big_difference(DATEPART_DAY, midnight_of_leap_day - 1, midnight_of_leap_day), (Answer{0, 1}));
    EXPECT_EQ(big_difference(DATEPART_HOUR, midnight_of_leap_day - 1, midnight_of_leap_day), (Answer{0, 0}));
    EXPECT_EQ(big_difference(DATEPART_MICROSECOND, midnight_of_leap_day - 1, midnight_of_leap_day), (Answer{0, 1}));
}

TEST(BigDateDiff, PartsThatAreNoneStoreNothing) {
    for (const int part : NOT_A_PART)
        EXPECT_EQ(big_difference(part, FIRST_BIG, LAST_BIG), NOTHING) << part;
}

TEST(BigDateDiff, AgreesWithTheNarrowOneOnWholeDays) {
    Draw draw(78);
    for (int i = 0; i < 20000; ++i) {
        const CS_INT from = draw.day(), to = draw.day();
        for (const int part : {0, 1, 2, 3, 4, 5, 6, 10, 11, 12, 13})
            ASSERT_EQ(big_difference(part, midnight(from), midnight(to)), difference(part, {from, 0}, {to, 0}))
                << part << ' ' << from << ' ' << to;
    }
}

} // namespace

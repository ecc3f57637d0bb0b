// Additions to dates in every part, against the rules written out in 128 bits.
#include "support/assertions.h"
#include "support/naive_calendar.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <climits>
#include <ostream>

namespace {

using namespace support::calendar;

constexpr int NOT_A_PART[] = {INT_MIN, -101, -1, 15, 16, 256, INT_MAX};
constexpr CS_BYTE BIG_DATETIME = 187, BIG_TIME = 188;
constexpr int CALENDAR_PARTS[] = {0, 1, 2, 11};
constexpr int DAY_PARTS[] = {3, 4, 5, 13};
constexpr int WEEK_PARTS[] = {10, 12};

// ---- The rules ----

struct Sum {
    int code;
    std::int64_t day;
    std::int64_t ticks;
    bool operator==(const Sum &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Sum &sum) {
        return out << "code " << sum.code << " day " << sum.day << " ticks " << sum.ticks;
    }
};

struct BigSum {
    int code;
    CS_UBIGINT value;
    bool operator==(const BigSum &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const BigSum &sum) {
        return out << "code " << sum.code << " value " << sum.value;
    }
};

// A date moved by years or months, which may be none of the calendar.
struct Moved {
    Wide year;
    int month;
    int day;
    bool is_of_calendar() const { return year >= 1 && year <= 9999; }
    std::int64_t number() const { return DayNumbers::of(static_cast<std::int64_t>(year), month, day); }
};

Moved moved(int part, CS_INT value, const Date &date) {
    Wide year = date.year;
    Wide month = date.month;
    if (part == 1 || part == 2) {
        month += Wide(value) * (part == 1 ? 3 : 1);
        if (month < 0 || month > 11) {
            year += month / 12;
            month %= 12;
            if (month < 0) {
                month += 12;
                year -= 1;
            }
        }
    } else {
        year += value;
    }
    const int length = month_length(static_cast<std::int64_t>(year), static_cast<int>(month));
    return {year, static_cast<int>(month), date.day > length ? length : date.day};
}

Sum expected_sum(int part, CS_INT value, CS_INT day, CS_INT ticks) {
    const auto with_days = [ticks](Wide from, Wide days, Wide time) {
        const Wide sum = from + days;
        if (sum < FIRST_DAY || sum > LAST_DAY)
            return Sum{1, static_cast<std::int64_t>(from), static_cast<std::int64_t>(time)};
        return Sum{0, static_cast<std::int64_t>(sum), static_cast<std::int64_t>(time)};
    };
    const auto with_time = [=](std::int64_t a_day, auto ticks_of) {
        if (ticks >= TICKS_A_DAY)
            return Sum{1, day, ticks};
        std::int64_t carry = 0, count = value;
        if (count > a_day || count < -a_day) {
            carry = count / a_day;
            count %= a_day;
        }
        std::int64_t time = ticks + ticks_of(count);
        if (time < 0) {
            time += TICKS_A_DAY;
            --carry;
        } else if (time >= TICKS_A_DAY) {
            time -= TICKS_A_DAY;
            ++carry;
        }
        return with_days(day, carry, time);
    };
    switch (part) {
    case 0:
    case 1:
    case 2:
    case 11: {
        const Date date = crack_by_loops(day);
        if (part % 11 == 0 && !fits(Wide(date.year) + value))
            return {1, day, ticks};
        const Moved to = moved(part, value, date);
        return to.is_of_calendar() ? Sum{0, to.number(), ticks} : Sum{1, 0, ticks};
    }
    case 10:
    case 12:
        return with_days(day, Wide(value) * 7, ticks);
    case 6:
        return with_time(24, [](std::int64_t count) { return count * 1080000; });
    case 7:
        return with_time(1440, [](std::int64_t count) { return count * 18000; });
    case 8:
        return with_time(86400, [](std::int64_t count) { return count * 300; });
    case 9:
        return with_time(86400000, [](std::int64_t count) { return (count * 3 + (count < 0 ? -5 : 5)) / 10; });
    default: // 3, 4, 5, 13
        return with_days(day, value, ticks);
    }
}

Wide micros_of(int part) {
    switch (part) {
    case 10:
    case 12:
        return Wide(86400000000) * 7;
    case 6:
        return 3600000000;
    case 7:
        return 60000000;
    case 8:
        return 1000000;
    case 9:
        return 1000;
    case 14:
        return 1;
    default: // 3, 4, 5, 13
        return 86400000000;
    }
}

BigSum expected_big_sum(int part, CS_INT value, CS_BIGDATETIME from, CS_BYTE type) {
    Wide sum;
    if (part == 0 || part == 1 || part == 2 || part == 11) {
        const Moved to = moved(part, value, crack_by_loops(static_cast<std::int64_t>(from / MICROS_A_DAY) - 693961));
        if (!to.is_of_calendar())
            return {1, from};
        sum = Wide(midnight(to.number())) + from % MICROS_A_DAY;
    } else {
        sum = Wide(from) + micros_of(part) * value;
    }
    const bool good = type == BIG_DATETIME ? sum >= FIRST_BIG && sum <= LAST_BIG : sum >= 0 && sum < MICROS_A_DAY;
    return good ? BigSum{0, static_cast<CS_UBIGINT>(sum)} : BigSum{1, from};
}

Sum sum_of(int part, CS_INT value, CS_INT day, CS_INT ticks = 0) {
    CS_DATETIME to = {day, ticks};
    const int code = com__date_add(part, value, &to);
    return {code, to.dtdays, to.dttime};
}

BigSum big_sum_of(int part, CS_INT value, CS_BIGDATETIME from, CS_BYTE type = BIG_DATETIME) {
    const int code = com__bigdate_add(part, value, &from, type);
    return {code, from};
}

CS_INT at(int year, int month, int day) { return static_cast<CS_INT>(DayNumbers::of(year, month - 1, day)); }

// ---- Random sums ----

void compare(CS_INT value, CS_INT day, CS_INT ticks) {
    for (int part = 0; part <= 13; ++part)
        ASSERT_EQ(sum_of(part, value, day, ticks), expected_sum(part, value, day, ticks))
            << "part " << part << " value " << value << " to " << day << ' ' << ticks;
}

TEST(DateAdd, RandomSums) {
    Draw draw(81);
    for (int i = 0; i < 60000 && !testing::Test::HasFatalFailure(); ++i)
        compare(draw.amount(), draw.day(), draw.ticks());
}

TEST(DateAdd, DaysAndTimesOfAnyValue) {
    Draw draw(82);
    for (int i = 0; i < 10000 && !testing::Test::HasFatalFailure(); ++i) {
        compare(draw.amount(), draw.any_day(), draw.any_ticks());
        compare(draw.amount(), draw.day(), draw.any_ticks());
        compare(draw.amount(), draw.any_day(), draw.ticks());
    }
}

// Sums that end within a few units of both ends of the calendar, and of a day.
TEST(DateAdd, SumsAroundTheEndsOfTheCalendar) {
    Draw draw(83);
    for (int i = 0; i < 30000 && !testing::Test::HasFatalFailure(); ++i) {
        const CS_INT day = draw.day(), ticks = draw.ticks();
        const std::int64_t end = draw.below(2) == 0 ? FIRST_DAY : LAST_DAY;
        const std::int64_t days = end - day;
        const std::int64_t counts[] = {days,         days / 7,   days * 24, days * 1440,
                                       days * 86400, days / 365, days / 91, days / 30};
        for (const std::int64_t count : counts) {
            const std::int64_t value = count + draw.between(-3, 3);
            if (fits(value))
                compare(static_cast<CS_INT>(value), day, ticks);
        }
    }
}

TEST(DateAdd, EveryPairOfLimits) {
    const CS_INT days[] = {INT_MIN, -693596, -693595, -53691, -53690, -1, 0, 1, 59, 2958463, 2958464, INT_MAX};
    const CS_INT times[] = {INT_MIN, -25920001, -25920000, -1, 0, 1, 25919999, 25920000, INT_MAX};
    const CS_INT values[] = {INT_MIN, INT_MIN + 1, -86400001, -86400000, -1441, -1440, -25,      -24,      -1,     0, 1,
                             24,      25,          1440,      1441,      86400, 86401, 86400000, 86400001, INT_MAX};
    for (const CS_INT day : days)
        for (const CS_INT time : times)
            for (const CS_INT value : values)
                compare(value, day, time);
}

TEST(DateAdd, EveryMillisecondOfADayIsRoundedAwayFromZero) {
    std::int64_t wrong = -1;
    for (std::int64_t millisecond = 0; millisecond <= 86400000; ++millisecond) {
        // The nearest tick; half a tick is met by no millisecond.
        const std::int64_t ticks = (millisecond * 300 * 2 + 1000) / 2000;
        const std::int64_t before = ticks == 0 ? 0 : TICKS_A_DAY - ticks;
        const CS_INT value = static_cast<CS_INT>(millisecond);
        if (wrong < 0 && (sum_of(9, value, 0) != Sum{0, ticks / TICKS_A_DAY, ticks % TICKS_A_DAY} ||
                          sum_of(9, -value, 0) != Sum{0, ticks == 0 ? 0 : -1, before}))
            wrong = millisecond;
    }
    EXPECT_EQ(wrong, -1);
}

// ---- Named ----

TEST(DateAdd, MonthsTakeTheLastDayOfAShorterOne) {
    EXPECT_EQ(sum_of(DATEPART_MONTH, 1, at(2024, 1, 31), 7), (Sum{0, at(2024, 2, 29), 7}));
    EXPECT_EQ(sum_of(DATEPART_MONTH, 1, at(2023, 1, 31), 7), (Sum{0, at(2023, 2, 28), 7}));
    EXPECT_EQ(sum_of(DATEPART_MONTH, 13, at(2023, 1, 31)), (Sum{0, at(2024, 2, 29), 0}));
    EXPECT_EQ(sum_of(DATEPART_QUARTER, 1, at(2023, 8, 31)), (Sum{0, at(2023, 11, 30), 0}));
    EXPECT_EQ(sum_of(DATEPART_YEAR, 1, at(2024, 2, 29)), (Sum{0, at(2025, 2, 28), 0}));
    EXPECT_EQ(sum_of(DATEPART_YEAR, 4, at(2024, 2, 29)), (Sum{0, at(2028, 2, 29), 0}));
    EXPECT_EQ(sum_of(DATEPART_YEAR, -124, at(2024, 2, 29)), (Sum{0, at(1900, 2, 28), 0}));
}

TEST(DateAdd, MonthsGoThroughNewYear) {
    EXPECT_EQ(sum_of(DATEPART_MONTH, -1, at(2024, 1, 15)), (Sum{0, at(2023, 12, 15), 0}));
    EXPECT_EQ(sum_of(DATEPART_MONTH, -12, at(2024, 1, 15)), (Sum{0, at(2023, 1, 15), 0}));
    EXPECT_EQ(sum_of(DATEPART_MONTH, -13, at(2024, 1, 15)), (Sum{0, at(2022, 12, 15), 0}));
    EXPECT_EQ(sum_of(DATEPART_MONTH, 1, at(2023, 12, 31)), (Sum{0, at(2024, 1, 31), 0}));
    EXPECT_EQ(sum_of(DATEPART_QUARTER, -1, at(2024, 3, 31)), (Sum{0, at(2023, 12, 31), 0}));
    EXPECT_EQ(sum_of(DATEPART_QUARTER, 4, at(2024, 2, 29)), (Sum{0, at(2025, 2, 28), 0}));
}

TEST(DateAdd, EveryMonthOfEveryDayOfAYear) {
    for (const int year : {1900, 1999, 2000, 2023, 2024})
        for (CS_INT day = at(year, 1, 1); day <= at(year, 12, 31); ++day)
            for (CS_INT months = -30; months <= 30; ++months)
                ASSERT_EQ(sum_of(DATEPART_MONTH, months, day, 1), expected_sum(2, months, day, 1));
}

TEST(DateAdd, IsoYearsAreYears) { EXPECT_EQ(sum_of(DATEPART_ISOYEAR, 1, at(2021, 1, 1)), (Sum{0, at(2022, 1, 1), 0})); }

TEST(DateAdd, YearsOutsideTheCalendarClearTheDay) {
    for (const int part : CALENDAR_PARTS)
        for (const CS_INT value : {-2024 * 12, 7976 * 12, 1000000})
            EXPECT_EQ(sum_of(part, value, at(2024, 2, 29), 77), (Sum{1, 0, 77})) << part << ' ' << value;
    EXPECT_EQ(sum_of(DATEPART_YEAR, -2024, at(2024, 2, 29)), (Sum{1, 0, 0}));
    EXPECT_EQ(sum_of(DATEPART_YEAR, -2023, at(2024, 2, 29)), (Sum{0, at(1, 2, 28), 0}));
    EXPECT_EQ(sum_of(DATEPART_YEAR, 7975, at(2024, 2, 29)), (Sum{0, at(9999, 2, 28), 0}));
    EXPECT_EQ(sum_of(DATEPART_YEAR, 7976, at(2024, 2, 29)), (Sum{1, 0, 0}));
    EXPECT_EQ(sum_of(DATEPART_MONTH, 1, at(9999, 12, 31)), (Sum{1, 0, 0}));
    EXPECT_EQ(sum_of(DATEPART_MONTH, -1, at(1, 1, 1)), (Sum{1, 0, 0}));
    EXPECT_EQ(sum_of(DATEPART_MONTH, INT_MIN, 0), (Sum{1, 0, 0}));
    EXPECT_EQ(sum_of(DATEPART_QUARTER, INT_MAX, 0), (Sum{1, 0, 0}));
}

TEST(DateAdd, YearBeyondCsIntIsRefusedBeforeTheDayIsCleared) {
    EXPECT_EQ(sum_of(DATEPART_YEAR, INT_MAX, at(2024, 2, 29), 77), (Sum{1, at(2024, 2, 29), 77}));
    EXPECT_EQ(sum_of(DATEPART_ISOYEAR, INT_MAX - 2023, at(2024, 2, 29), 77), (Sum{1, at(2024, 2, 29), 77}));
    EXPECT_EQ(sum_of(DATEPART_YEAR, INT_MAX - 2024, at(2024, 2, 29), 77), (Sum{1, 0, 77}));
    EXPECT_EQ(sum_of(DATEPART_YEAR, INT_MIN, at(2024, 2, 29), 77), (Sum{1, 0, 77}));
}

TEST(DateAdd, DaysOutsideTheCalendarStay) {
    for (const int part : DAY_PARTS) {
        EXPECT_EQ(sum_of(part, 1, 2958462, 5), (Sum{0, 2958463, 5}));
        EXPECT_EQ(sum_of(part, 1, 2958463, 5), (Sum{1, 2958463, 5}));
        EXPECT_EQ(sum_of(part, -1, -693594, 5), (Sum{0, -693595, 5}));
        EXPECT_EQ(sum_of(part, -1, -693595, 5), (Sum{1, -693595, 5}));
        EXPECT_EQ(sum_of(part, INT_MAX, 2958463, 5), (Sum{1, 2958463, 5}));
        EXPECT_EQ(sum_of(part, INT_MIN, -693595, 5), (Sum{1, -693595, 5}));
        EXPECT_EQ(sum_of(part, 0, INT_MAX, 5), (Sum{1, INT_MAX, 5}));
    }
    for (const int part : WEEK_PARTS) {
        EXPECT_EQ(sum_of(part, 1, 2958456, 5), (Sum{0, 2958463, 5}));
        EXPECT_EQ(sum_of(part, 1, 2958457, 5), (Sum{1, 2958457, 5}));
        EXPECT_EQ(sum_of(part, INT_MAX, 0, 5), (Sum{1, 0, 5}));
        EXPECT_EQ(sum_of(part, 613566757, 0, 5), (Sum{1, 0, 5})); // times 7 is 3 above 2^32
    }
}

TEST(DateAdd, RangeIsThatOfCsDateAndNotOfCsDatetime) {
    EXPECT_EQ(sum_of(DATEPART_DAY, -1, -53690), (Sum{0, -53691, 0}));
    EXPECT_EQ(sum_of(DATEPART_YEAR, -1752, -53690), (Sum{0, -693595, 0}));
    EXPECT_EQ(sum_of(DATEPART_HOUR, -1, -53690), (Sum{0, -53691, 23 * 1080000}));
}

TEST(DateAdd, HoursCarryIntoDays) {
    EXPECT_EQ(sum_of(DATEPART_HOUR, 25, 10, 500), (Sum{0, 11, 500 + 1080000}));
    EXPECT_EQ(sum_of(DATEPART_HOUR, 24, 10, 500), (Sum{0, 11, 500}));
    EXPECT_EQ(sum_of(DATEPART_HOUR, -24, 10, 500), (Sum{0, 9, 500}));
    EXPECT_EQ(sum_of(DATEPART_HOUR, -25, 10, 500), (Sum{0, 8, 500 + 23 * 1080000}));
    EXPECT_EQ(sum_of(DATEPART_MINUTE, -1, 10, 0), (Sum{0, 9, 1439 * 18000}));
    EXPECT_EQ(sum_of(DATEPART_SECOND, 86400 * 3 + 1, 10, 25919999), (Sum{0, 14, 299}));
    EXPECT_EQ(sum_of(DATEPART_MILLISECOND, 1, 10, 25919999), (Sum{0, 10, 25919999}));
    EXPECT_EQ(sum_of(DATEPART_MILLISECOND, 2, 10, 25919999), (Sum{0, 11, 0}));
    EXPECT_EQ(sum_of(DATEPART_MILLISECOND, -2, 10, 0), (Sum{0, 9, 25919999}));
}

TEST(DateAdd, FailedDayLeavesTheTimeMoved) {
    EXPECT_EQ(sum_of(DATEPART_HOUR, 2, 2958463, 23 * 1080000), (Sum{1, 2958463, 1080000}));
    EXPECT_EQ(sum_of(DATEPART_SECOND, -1, -693595, 0), (Sum{1, -693595, 86399 * 300}));
    EXPECT_EQ(sum_of(DATEPART_MINUTE, 0, 2958464, 5), (Sum{1, 2958464, 5}));
}

TEST(DateAdd, TimeOfADayOrMoreIsRefusedInTimePartsOnly) {
    for (const CS_INT ticks : {25920000, 25920001, INT_MAX}) {
        for (const int part : {6, 7, 8, 9})
            for (const CS_INT value : {-1, 0, 1})
                EXPECT_EQ(sum_of(part, value, 10, ticks), (Sum{1, 10, ticks}));
        for (const int part : DAY_PARTS)
            EXPECT_EQ(sum_of(part, 1, 10, ticks), (Sum{0, 11, ticks}));
        EXPECT_EQ(sum_of(DATEPART_MONTH, 1, 10, ticks), (Sum{0, 41, ticks}));
    }
}

TEST(DateAdd, NegativeTimeBorrowsOneDay) {
    EXPECT_EQ(sum_of(DATEPART_MINUTE, 0, 10, -1), (Sum{0, 9, 25919999}));
    EXPECT_EQ(sum_of(DATEPART_HOUR, 0, 10, -25920001), (Sum{0, 9, -1}));
    EXPECT_EQ(sum_of(DATEPART_HOUR, -24, 10, INT_MIN), (Sum{0, 9, INT_MIN}));
}

// ---- Big values ----

void compare_big(CS_INT value, CS_BIGDATETIME from, CS_BYTE type) {
    for (int part = 0; part <= 14; ++part)
        ASSERT_EQ(big_sum_of(part, value, from, type), expected_big_sum(part, value, from, type))
            << "part " << part << " value " << value << " to " << from << " type " << int(type);
}

TEST(BigDateAdd, RandomSums) {
    Draw draw(84);
    for (int i = 0; i < 60000 && !testing::Test::HasFatalFailure(); ++i) {
        compare_big(draw.amount(), draw.big(), BIG_DATETIME);
        compare_big(draw.amount(), draw.micros_of_day(), BIG_TIME);
    }
}

TEST(BigDateAdd, ValuesOutsideTheRange) {
    Draw draw(85);
    for (int i = 0; i < 5000 && !testing::Test::HasFatalFailure(); ++i)
        for (const CS_BYTE type : {BIG_DATETIME, BIG_TIME}) {
            compare_big(draw.amount(), draw.below(2 * FIRST_BIG), type);
            compare_big(draw.amount(), LAST_BIG + draw.below(LAST_BIG), type);
            compare_big(draw.amount(), draw.below(2 * MICROS_A_DAY), type);
            compare_big(draw.amount(), ULLONG_MAX - draw.below(1ull << 62), type);
        }
}

TEST(BigDateAdd, EveryPairOfLimits) {
    for (const CS_BIGDATETIME value :
         {CS_UBIGINT(0), CS_UBIGINT(1), MICROS_A_DAY - 1, MICROS_A_DAY, FIRST_BIG - 1, FIRST_BIG, LAST_BIG,
          LAST_BIG + 1, CS_UBIGINT(LLONG_MAX), CS_UBIGINT(ULLONG_MAX)})
        for (const CS_INT amount : {INT_MIN, INT_MIN + 1, -1000, -1, 0, 1, 1000, INT_MAX})
            for (const CS_BYTE type : {BIG_DATETIME, BIG_TIME})
                compare_big(amount, value, type);
}

TEST(BigDateAdd, KeepsMicroseconds) {
    const CS_BIGDATETIME leap_day = midnight(at(2024, 2, 29)) + 86399999999;
    EXPECT_EQ(big_sum_of(DATEPART_YEAR, 1, leap_day), (BigSum{0, midnight(at(2025, 2, 28)) + 86399999999}));
    EXPECT_EQ(big_sum_of(DATEPART_MONTH, -1, leap_day), (BigSum{0, midnight(at(2024, 1, 29)) + 86399999999}));
    EXPECT_EQ(big_sum_of(DATEPART_MILLISECOND, 1, leap_day), (BigSum{0, midnight(at(2024, 3, 1)) + 999}));
}

TEST(BigDateAdd, MicrosecondsArePart14) {
    EXPECT_EQ(big_sum_of(DATEPART_MICROSECOND, 1, midnight(0) - 1), (BigSum{0, midnight(0)}));
    EXPECT_EQ(big_sum_of(DATEPART_MICROSECOND, -1, FIRST_BIG), (BigSum{1, FIRST_BIG}));
    EXPECT_EQ(big_sum_of(DATEPART_MICROSECOND, 1, LAST_BIG), (BigSum{1, LAST_BIG}));
}

TEST(BigDateAdd, FailuresLeaveTheValue) {
    for (const int part : CALENDAR_PARTS) {
        EXPECT_EQ(big_sum_of(part, 1, LAST_BIG), (BigSum{1, LAST_BIG}));
        EXPECT_EQ(big_sum_of(part, -1, FIRST_BIG), (BigSum{1, FIRST_BIG}));
        EXPECT_EQ(big_sum_of(part, INT_MAX, LAST_BIG), (BigSum{1, LAST_BIG}));
    }
    for (const int part : {3, 4, 5, 6, 7, 8, 9, 10, 12, 13, 14}) {
        EXPECT_EQ(big_sum_of(part, 1, LAST_BIG), (BigSum{1, LAST_BIG}));
        EXPECT_EQ(big_sum_of(part, -1, FIRST_BIG), (BigSum{1, FIRST_BIG}));
    }
}

TEST(BigDateAdd, TimesHaveARangeAndNoCalendar) {
    EXPECT_EQ(big_sum_of(DATEPART_HOUR, 23, 0, BIG_TIME), (BigSum{0, 82800000000}));
    EXPECT_EQ(big_sum_of(DATEPART_HOUR, 24, 0, BIG_TIME), (BigSum{1, 0}));
    EXPECT_EQ(big_sum_of(DATEPART_MICROSECOND, 1, 86399999999, BIG_TIME), (BigSum{1, 86399999999}));
    EXPECT_EQ(big_sum_of(DATEPART_MICROSECOND, -1, 0, BIG_TIME), (BigSum{1, 0}));
    EXPECT_EQ(big_sum_of(DATEPART_DAY, 0, 5, BIG_TIME), (BigSum{0, 5}));
    for (const int part : CALENDAR_PARTS)
        for (const CS_INT value : {0, 1, 2, 100})
            EXPECT_EQ(big_sum_of(part, value, 5, BIG_TIME), (BigSum{1, 5}));
}

// ---- Broken contracts ----

TEST(DateAddDeathTest, PartThatIsNone) {
    static CS_DATETIME value = {10, 20};
    static CS_BIGDATETIME big = FIRST_BIG;
    for (const int part : {-1, 15, INT_MAX}) {
        EXPECT_BOMB(com__date_add(part, 1, &value), "datetime_add");
        EXPECT_BOMB(com__bigdate_add(part, 1, &big, BIG_DATETIME), "datetime_add");
    }
}

TEST(DateAddDeathTest, MicrosecondsOfADatetime) {
    static CS_DATETIME value = {10, 20};
    EXPECT_BOMB(com__date_add(DATEPART_MICROSECOND, 1, &value), "datetime_add");
}

TEST(DateAdd, PartThatIsNoneIsMinus101WhereAssertionsReturn) {
    for (const int part : NOT_A_PART) {
        const support::ReturningAssertions returning;
        EXPECT_EQ(sum_of(part, 1, 10, 20), (Sum{-101, 10, 20}));
        EXPECT_EQ(big_sum_of(part, 1, FIRST_BIG), (BigSum{-101, FIRST_BIG}));
        EXPECT_EQ(big_sum_of(part, 1, 5, BIG_TIME), (BigSum{-101, 5}));
        EXPECT_EQ(returning.count(), 3);
    }
    const support::ReturningAssertions returning;
    EXPECT_EQ(sum_of(DATEPART_MICROSECOND, 1, 10, 20), (Sum{-101, 10, 20}));
    EXPECT_EQ(returning.count(), 1);
}

} // namespace

// The calendar once more, by counting: what the library's closed forms are held against.
//
// Days are day numbers (days since 1900-01-01) in 64 bits, sums of microseconds and the like are 128-bit integers.
// Nothing here is shared with the library, neither code nor constants.
#ifndef TESTS_SUPPORT_NAIVE_CALENDAR_H
#define TESTS_SUPPORT_NAIVE_CALENDAR_H

#include <dlxcomn/datetime.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <random>
#include <utility>
#include <vector>

namespace support::calendar {

using Wide = __int128;

constexpr std::int64_t FIRST_DAY = -693595;         // 0001-01-01
constexpr std::int64_t LAST_DAY = 2958463;          // 9999-12-31
constexpr std::int64_t FIRST_DATETIME_DAY = -53690; // 1753-01-01
constexpr std::int64_t DAYS = LAST_DAY - FIRST_DAY + 1;
constexpr CS_INT TICKS_A_DAY = 25920000;
constexpr CS_UBIGINT MICROS_A_DAY = 86400000000;
constexpr CS_UBIGINT FIRST_BIG = 31622400000000;    // 0001-01-01 00:00:00
constexpr CS_UBIGINT LAST_BIG = 315569519999999999; // 9999-12-31 23:59:59.999999

constexpr bool is_leap(std::int64_t year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

// Of month 0 to 11.
constexpr int month_length(std::int64_t year, int month) {
    constexpr int LENGTHS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return LENGTHS[month] + (month == 1 && is_leap(year) ? 1 : 0);
}

// A day as the date fields of CS_DATEREC have it: months from 0, weekdays from 0 (Sunday).
struct Date {
    std::int64_t year;
    int month;
    int day;
    int day_of_year;
    int weekday;

    bool operator==(const Date &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Date &date) {
        return out << date.year << '-' << date.month + 1 << '-' << date.day << " day " << date.day_of_year
                   << " weekday " << date.weekday;
    }
};

constexpr Date FIRST_DATE = {1, 0, 1, 1, 1}; // 0001-01-01, a Monday

constexpr void step(Date &date) {
    date.weekday = (date.weekday + 1) % 7;
    ++date.day_of_year;
    if (++date.day <= month_length(date.year, date.month))
        return;
    date.day = 1;
    if (++date.month < 12)
        return;
    date.month = 0;
    date.day_of_year = 1;
    ++date.year;
}

// Every day from 0001-01-01 to 9999-12-31, with its number.
template <class Visit>
void for_each_day(Visit visit) {
    Date date = FIRST_DATE;
    for (std::int64_t number = FIRST_DAY; number <= LAST_DAY; ++number, step(date))
        visit(number, std::as_const(date));
}

// Numbers of the days, counted once.
class DayNumbers {
public:
    static std::int64_t of(std::int64_t year, int month, int day) {
        static const DayNumbers numbers;
        return numbers.months_[static_cast<std::size_t>((year - 1) * 12 + month)] + day - 1;
    }

private:
    DayNumbers() {
        for_each_day([this](std::int64_t number, const Date &date) {
            if (date.day == 1)
                months_.push_back(number);
        });
    }
    std::vector<std::int64_t> months_;
};

// Midnight of a day from 0001 to 9999 as a big value.
inline CS_BIGDATETIME midnight(std::int64_t day) {
    return static_cast<CS_UBIGINT>(day - FIRST_DAY) * MICROS_A_DAY + FIRST_BIG;
}

constexpr int weekday_of(std::int64_t day) { return static_cast<int>((((day + 693596) % 7) + 7) % 7); }

constexpr std::int64_t leap_years(std::int64_t year) { return year < 0 ? 0 : year / 4 - year / 100 + year / 400; }

// Any day, by the loops that define what days far from the calendar crack to.
inline Date crack_by_loops(std::int64_t day) {
    const std::int64_t n = day + 693595;
    std::int64_t y = n / 365;
    while (n - (y * 365 + leap_years(y)) < 0)
        --y;
    int rest = static_cast<int>(n - (y * 365 + leap_years(y))) + 1;
    Date date = {y + 1, 0, 0, rest, weekday_of(day)};
    for (; rest > month_length(y + 1, date.month); ++date.month)
        rest -= month_length(y + 1, date.month);
    date.day = rest;
    return date;
}

// Whether a value fits CS_INT.
constexpr bool fits(Wide value) { return value >= -2147483648LL && value <= 2147483647; }

// The fields of a record, to be compared and shown.
using Fields = std::array<CS_INT, 12>;
static_assert(sizeof(Fields) == sizeof(CS_DATEREC));

constexpr CS_INT UNTOUCHED = -77777777;

inline Fields fields_of(const CS_DATEREC &record) {
    Fields fields;
    std::memcpy(fields.data(), &record, sizeof record);
    return fields;
}

inline CS_DATEREC untouched_record() {
    Fields fields;
    fields.fill(UNTOUCHED);
    CS_DATEREC record;
    std::memcpy(&record, fields.data(), sizeof record);
    return record;
}

inline CS_DATEREC record_of_date(CS_INT year, CS_INT month, CS_INT day) {
    CS_DATEREC record = untouched_record();
    record.dateyear = year;
    record.datemonth = month;
    record.datedmonth = day;
    return record;
}

// With datemsecond; the fraction is not looked at.
inline CS_DATEREC record_of_time(CS_INT hour, CS_INT minute, CS_INT second, CS_INT millisecond) {
    CS_DATEREC record = untouched_record();
    record.datehour = hour;
    record.dateminute = minute;
    record.datesecond = second;
    record.datemsecond = millisecond;
    return record;
}

// With datesecfrac in microseconds.
inline CS_DATEREC record_of_big_time(CS_INT hour, CS_INT minute, CS_INT second, CS_INT micros) {
    CS_DATEREC record = record_of_time(hour, minute, second, UNTOUCHED);
    record.datesecfrac = micros;
    record.datesecprec = 1000000;
    return record;
}

// The same days, times and amounts in every run: limits and what lies around them, and anything else.
class Draw {
public:
    explicit Draw(std::uint64_t seed) : random_(seed) {}

    std::uint64_t below(std::uint64_t limit) { return random_() % limit; }
    std::int64_t between(std::int64_t low, std::int64_t high) {
        return low + static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(high - low + 1));
    }
    template <class Container>
    auto one_of(const Container &values) {
        return *(std::begin(values) + below(std::size(values)));
    }

    // A day of the calendar: the ends of years, months and February among them.
    CS_INT day() {
        switch (below(6)) {
        case 0:
            return near({FIRST_DAY, LAST_DAY, FIRST_DATETIME_DAY, 0, 65535}, 400, FIRST_DAY, LAST_DAY);
        case 1: // around New Year
            return clamp(DayNumbers::of(between(1, 9999), 0, 1) + between(-8, 8));
        case 2: // around the end of a month
            return clamp(DayNumbers::of(between(1, 9999), static_cast<int>(below(12)), 1) + between(-4, 2));
        case 3: // of our times
            return static_cast<CS_INT>(between(0, 65535));
        default:
            return static_cast<CS_INT>(between(FIRST_DAY, LAST_DAY));
        }
    }
    // Any CS_INT for a day: far outside, and at the limits of the type.
    CS_INT any_day() {
        switch (below(4)) {
        case 0:
            return near({FIRST_DAY, LAST_DAY, -2147483648LL, 2147483647}, 800, -2147483648LL, 2147483647);
        case 1:
            return static_cast<CS_INT>(between(-4000000, 4000000));
        default:
            return static_cast<CS_INT>(random_());
        }
    }
    CS_INT ticks() {
        return below(3) == 0 ? near({0, TICKS_A_DAY / 2, TICKS_A_DAY - 1}, 20000, 0, TICKS_A_DAY - 1)
                             : static_cast<CS_INT>(below(TICKS_A_DAY));
    }
    CS_INT any_ticks() {
        return below(2) == 0
                   ? near({0, TICKS_A_DAY, -TICKS_A_DAY, -2147483648LL, 2147483647}, 5, -2147483648LL, 2147483647)
                   : static_cast<CS_INT>(random_());
    }
    CS_UBIGINT micros_of_day() {
        const CS_UBIGINT time = below(MICROS_A_DAY);
        switch (below(6)) {
        case 0:
            return below(3);
        case 1:
            return MICROS_A_DAY - 1 - below(3);
        case 2:
            return time / 1000000 * 1000000 + (below(2) == 0 ? 0 : 999999);
        case 3:
            return time / 1000 * 1000;
        default:
            return time;
        }
    }
    CS_BIGDATETIME big() { return midnight(day()) + micros_of_day(); }
    // How much to add: small, a day's count of some unit, as much as CS_INT holds.
    CS_INT amount() {
        switch (below(7)) {
        case 0:
            return near({0, 24, -24, 1440, -1440, 86400, -86400, 86400000, -86400000}, 2, -2147483648LL, 2147483647);
        case 1:
            return near({-2147483648LL, 2147483647}, 3, -2147483648LL, 2147483647);
        case 2:
            return static_cast<CS_INT>(between(-130, 130));
        case 3:
            return static_cast<CS_INT>(between(-12000, 12000));
        case 4:
            return static_cast<CS_INT>(between(-4000000, 4000000));
        case 5:
            return static_cast<CS_INT>(between(-100000000, 100000000));
        default:
            return static_cast<CS_INT>(random_());
        }
    }

private:
    CS_INT near(std::initializer_list<std::int64_t> places, std::int64_t room, std::int64_t low, std::int64_t high) {
        const std::int64_t value = *(places.begin() + below(places.size())) + between(-room, room);
        return static_cast<CS_INT>(value < low ? low : value > high ? high : value);
    }
    static CS_INT clamp(std::int64_t day) {
        return static_cast<CS_INT>(day < FIRST_DAY ? FIRST_DAY : day > LAST_DAY ? LAST_DAY : day);
    }
    std::mt19937_64 random_;
};

} // namespace support::calendar

#endif

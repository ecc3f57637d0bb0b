// The proleptic Gregorian calendar and the units of the date types, inline.
//
// A date is a day number (days since 1900-01-01) or, inside, a count of days since 0001-01-01. Everything is closed
// arithmetic: no loop walks years or months.
#ifndef DLX_DATE_CALENDAR_H
#define DLX_DATE_CALENDAR_H

#include <dlxcomn/datetime.h>

#include <cstdint>

namespace dlx {

// ---- Units ----

constexpr CS_INT FIRST_DAY = -693595;          // 0001-01-01
constexpr CS_INT LAST_DAY = 2958463;           // 9999-12-31
constexpr CS_INT FIRST_DATETIME_DAY = -53690;  // 1753-01-01
constexpr CS_INT FIRST_YEAR = 1;
constexpr CS_INT LAST_YEAR = 9999;
constexpr CS_INT MONTHS_A_YEAR = 12;
constexpr CS_INT DAYS_A_WEEK = 7;
constexpr CS_INT HOURS_A_DAY = 24;
constexpr CS_INT MINUTES_A_DAY = 1440;
constexpr CS_INT SECONDS_A_DAY = 86400;
constexpr CS_INT MILLISECONDS_A_DAY = 86400000;
constexpr CS_INT MILLISECONDS_A_SECOND = 1000;

constexpr CS_INT TICKS_A_SECOND = 300;
constexpr CS_INT TICKS_A_MINUTE = 60 * TICKS_A_SECOND;
constexpr CS_INT TICKS_AN_HOUR = 60 * TICKS_A_MINUTE;
constexpr CS_INT TICKS_A_DAY = 24 * TICKS_AN_HOUR;

constexpr CS_BIGINT MICROS_A_MILLISECOND = 1000;
constexpr CS_BIGINT MICROS_A_SECOND = 1000000;
constexpr CS_BIGINT MICROS_A_MINUTE = 60 * MICROS_A_SECOND;
constexpr CS_BIGINT MICROS_AN_HOUR = 60 * MICROS_A_MINUTE;
constexpr CS_BIGINT MICROS_A_DAY = 24 * MICROS_AN_HOUR;

constexpr CS_INT BIG_EPOCH_DAY = FIRST_DAY - 366; // the day number of 0000-01-01, where big values count from
constexpr CS_UBIGINT FIRST_BIGDATETIME = 366 * static_cast<CS_UBIGINT>(MICROS_A_DAY);
constexpr CS_UBIGINT LAST_BIGDATETIME =
    static_cast<CS_UBIGINT>(LAST_DAY - BIG_EPOCH_DAY + 1) * static_cast<CS_UBIGINT>(MICROS_A_DAY) - 1;
static_assert(FIRST_BIGDATETIME == 31622400000000 && LAST_BIGDATETIME == 315569519999999999);

constexpr CS_INT TICK_PRECISION = TICKS_A_SECOND; // datesecprec of a value in ticks
constexpr CS_INT MICRO_PRECISION = 1000000;       // datesecprec of a big value

constexpr bool is_big(CS_INT datatype) { return datatype == CS_BIGDATETIME_TYPE || datatype == CS_BIGTIME_TYPE; }

// ---- Years and months ----

// A year that 25 divides is leap only if 16 divides it: the centuries that 400 divides.
constexpr bool is_leap_year(std::int64_t year) { return (year & (year % 25 == 0 ? 15 : 3)) == 0; }

constexpr std::int64_t days_in_year(std::int64_t year) { return is_leap_year(year) ? 366 : 365; }

// Leap years among the years 1 to `year`; there are none before.
constexpr std::int64_t leap_years_until(std::int64_t year) {
    return year < 0 ? 0 : year / 4 - year / 100 + year / 400;
}

struct monthcnt {
    short daysinmonth;
    short daysum; // days before the month
};

constexpr monthcnt monthdays[MONTHS_A_YEAR] = {{31, 0},   {28, 31},  {31, 59},  {30, 90},  {31, 120}, {30, 151},
                                               {31, 181}, {31, 212}, {30, 243}, {31, 273}, {30, 304}, {31, 334}};
constexpr monthcnt lmonthdays[MONTHS_A_YEAR] = {{31, 0},   {29, 31},  {31, 60},  {30, 91},  {31, 121}, {30, 152},
                                                {31, 182}, {31, 213}, {30, 244}, {31, 274}, {30, 305}, {31, 335}};

constexpr const monthcnt *months_of(std::int64_t year) { return is_leap_year(year) ? lmonthdays : monthdays; }

// ---- Days ----

// 0 for Sunday, also of days before the year 1.
constexpr CS_INT weekday_of(std::int64_t day) {
    const std::int64_t rest = (day - FIRST_DAY + 1) % DAYS_A_WEEK;
    return static_cast<CS_INT>(rest < 0 ? rest + DAYS_A_WEEK : rest);
}

// The day number of a day of the year 1 or later.
constexpr CS_INT day_number(CS_INT year, CS_INT month, CS_INT day_of_month) {
    const CS_UINT past = static_cast<CS_UINT>(year) - 1;
    const CS_UINT centuries = past / 100;
    return static_cast<CS_INT>(past * 365 + past / 4 - centuries + centuries / 4) + months_of(year)[month].daysum +
           day_of_month + FIRST_DAY - 1;
}

// ---- Big values ----

// The day number, and the time of that day.
constexpr CS_INT day_of(CS_BIGDATETIME value) { return static_cast<CS_INT>(value / MICROS_A_DAY) + BIG_EPOCH_DAY; }
constexpr CS_BIGTIME time_of(CS_BIGDATETIME value) { return value % MICROS_A_DAY; }

constexpr CS_BIGDATETIME midnight_of(CS_INT day) {
    return static_cast<CS_BIGDATETIME>(day - BIG_EPOCH_DAY) * static_cast<CS_BIGDATETIME>(MICROS_A_DAY);
}

} // namespace dlx

#endif

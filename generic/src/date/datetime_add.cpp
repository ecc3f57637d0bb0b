// Differences and sums of dates, and sums of server constants.
//
// Both widths of value share the rules of years and months on cracked records. Units of a fixed length are plain
// divisions and products: of ticks and days with a borrow for a CS_DATETIME, of microseconds for the big types.

#include "bytes/memory.h"
#include "date/calendar.h"
#include "diag/check.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace dlx {
namespace {

using Int = std::numeric_limits<CS_INT>;
using Wide = __int128; // holds every sum of products here

constexpr int DONE = 0;
constexpr int OVERFLOWED = 1;
constexpr int NO_PART = -101; // answered for a part that is none, where assertions return

// ---- Difference ----

bool is_calendar_part(int part) {
    return part == DATEPART_YEAR || part == DATEPART_QUARTER || part == DATEPART_MONTH || part == DATEPART_ISOYEAR;
}

// Boundaries of years, quarters, months or ISO years between two days.
CS_BIGINT calendar_difference(int part, CS_INT from, CS_INT to) {
    CS_DATETIME day_from = {from, 0};
    CS_DATETIME day_to = {to, 0};
    if (part == DATEPART_ISOYEAR)
        return static_cast<CS_BIGINT>(com__datepart(part, &day_to, 0)) - com__datepart(part, &day_from, 0);
    CS_DATEREC first, last;
    com__datecrack(&day_from, &first);
    com__datecrack(&day_to, &last);
    const CS_BIGINT years = static_cast<CS_BIGINT>(last.dateyear) - first.dateyear;
    switch (part) {
    case DATEPART_QUARTER:
        return years * 4 + (last.datemonth / 3 - first.datemonth / 3);
    case DATEPART_MONTH:
        return years * MONTHS_A_YEAR + (last.datemonth - first.datemonth);
    default:
        return years;
    }
}

// Sundays between two days: the weekday of the day to count from makes up the first week.
CS_BIGINT week_difference(CS_INT from, CS_INT to) {
    const CS_BIGINT days = static_cast<CS_BIGINT>(to) - from;
    return (days >= 0 ? days + weekday_of(from) : days - weekday_of(to)) / DAYS_A_WEEK;
}

// The parts that both widths measure on days; false for any other.
bool difference_in_days(int part, CS_INT from, CS_INT to, CS_BIGINT &difference) {
    switch (part) {
    case DATEPART_WEEKDAY:
    case DATEPART_ISOWEEKDAY:
        difference = (static_cast<CS_BIGINT>(to) - from) / DAYS_A_WEEK;
        return true;
    case DATEPART_DAY:
    case DATEPART_DAYOFYEAR:
        difference = static_cast<CS_BIGINT>(to) - from;
        return true;
    case DATEPART_WEEK:
    case DATEPART_ISOWEEK:
        difference = week_difference(from, to);
        return true;
    default:
        if (!is_calendar_part(part))
            return false;
        difference = calendar_difference(part, from, to);
        return true;
    }
}

// Days and ticks between two values, each with a sign of its own.
struct Span {
    CS_BIGINT days;
    CS_BIGINT ticks;

    bool is_mixed() const { return (days > 0 && ticks < 0) || (days < 0 && ticks > 0); }

    // Whole units of `unit` ticks, with a day borrowed where the signs differ.
    CS_BIGINT units(CS_BIGINT unit) const {
        const CS_BIGINT borrowed = !is_mixed() ? 0 : days > 0 ? 1 : -1;
        return (ticks + borrowed * TICKS_A_DAY) / unit + (days - borrowed) * (TICKS_A_DAY / unit);
    }
    CS_BIGINT milliseconds() const { return days * MILLISECONDS_A_DAY + ticks * 10 / 3; }
};

// Minutes, seconds and milliseconds of more days than these are refused where the signs differ, although the borrow
// might bring the result back into range: callers have always seen the overflow there.
constexpr CS_BIGINT MOST_DAYS_IN_MINUTES = 1491308;
constexpr CS_BIGINT MOST_DAYS_IN_SECONDS = 24855;
constexpr CS_BIGINT MOST_DAYS_IN_MILLISECONDS = 24;

int store_difference(CS_BIGINT difference, CS_INT *diff) {
    if (difference < Int::min() || difference > Int::max())
        return OVERFLOWED;
    *diff = static_cast<CS_INT>(difference);
    return DONE;
}

int store_limited(const Span &span, CS_BIGINT most_days, CS_BIGINT difference, CS_INT *diff) {
    return span.is_mixed() && std::abs(span.days) > most_days ? OVERFLOWED : store_difference(difference, diff);
}

// ---- Addition ----

// Adds years or months to the date of a record, and brings the day back into a month that is shorter. A year that
// is no CS_INT leaves the record.
int add_to_record(int part, CS_INT value, CS_DATEREC &record) {
    CS_BIGINT year = record.dateyear;
    CS_BIGINT month = record.datemonth;
    if (part == DATEPART_QUARTER || part == DATEPART_MONTH) {
        month += part == DATEPART_QUARTER ? static_cast<CS_BIGINT>(value) * 3 : value;
        year += month / MONTHS_A_YEAR;
        month %= MONTHS_A_YEAR;
        if (month < 0) {
            month += MONTHS_A_YEAR;
            --year;
        }
    } else {
        year += value;
    }
    if (year < Int::min() || year > Int::max())
        return DATE_BADYEAR;
    record.dateyear = static_cast<CS_INT>(year);
    record.datemonth = static_cast<CS_INT>(month);
    record.datedmonth = std::min<CS_INT>(record.datedmonth, months_of(year)[month].daysinmonth);
    return DATE_OK;
}

int add_to_calendar(int part, CS_INT value, CS_DATETIME &to) {
    CS_DATEREC record;
    com__datecrack(&to, &record);
    const int code = add_to_record(part, value, record);
    return code == DATE_OK ? com__datemake(&to, &record) : code;
}

// Moves the day if the result is one of the years 1 to 9999.
int add_days(CS_BIGINT days, CS_DATETIME &to) {
    days += to.dtdays;
    if (days < FIRST_DAY || days > LAST_DAY)
        return DATE_BADYEAR;
    to.dtdays = static_cast<CS_INT>(days);
    return DATE_OK;
}

// A unit of the time of day: how many make a day, and their ticks.
struct TimeUnit {
    CS_INT a_day;
    CS_BIGINT (*ticks)(CS_BIGINT count);
};

constexpr TimeUnit HOUR = {HOURS_A_DAY, [](CS_BIGINT hours) { return hours * TICKS_AN_HOUR; }};
constexpr TimeUnit MINUTE = {MINUTES_A_DAY, [](CS_BIGINT minutes) { return minutes * TICKS_A_MINUTE; }};
constexpr TimeUnit SECOND = {SECONDS_A_DAY, [](CS_BIGINT seconds) { return seconds * TICKS_A_SECOND; }};
constexpr TimeUnit MILLISECOND = {MILLISECONDS_A_DAY, [](CS_BIGINT milliseconds) {
                                      return (3 * milliseconds + (milliseconds < 0 ? -5 : 5)) / 10;
                                  }};

// The time moves even where the day then cannot: callers see that on failure.
int add_time(const TimeUnit &unit, CS_INT value, CS_DATETIME &to) {
    if (to.dttime >= TICKS_A_DAY)
        return DATE_BADYEAR;
    CS_BIGINT carry = 0;
    CS_BIGINT count = value;
    if (std::abs(count) > unit.a_day) {
        carry = count / unit.a_day;
        count %= unit.a_day;
    }
    CS_BIGINT ticks = to.dttime + unit.ticks(count);
    if (ticks < 0) {
        ticks += TICKS_A_DAY;
        --carry;
    } else if (ticks >= TICKS_A_DAY) {
        ticks -= TICKS_A_DAY;
        ++carry;
    }
    to.dttime = static_cast<CS_INT>(ticks);
    return add_days(carry, to);
}

// Microseconds of one unit, or 0 for a part that is none of a fixed length.
CS_BIGINT micros_of(int part) {
    switch (part) {
    case DATEPART_WEEKDAY:
    case DATEPART_DAY:
    case DATEPART_DAYOFYEAR:
    case DATEPART_ISOWEEKDAY:
        return MICROS_A_DAY;
    case DATEPART_WEEK:
    case DATEPART_ISOWEEK:
        return MICROS_A_DAY * DAYS_A_WEEK;
    case DATEPART_HOUR:
        return MICROS_AN_HOUR;
    case DATEPART_MINUTE:
        return MICROS_A_MINUTE;
    case DATEPART_SECOND:
        return MICROS_A_SECOND;
    case DATEPART_MILLISECOND:
        return MICROS_A_MILLISECOND;
    case DATEPART_MICROSECOND:
        return 1;
    default:
        return 0;
    }
}

bool is_big_part(int part) { return part >= DATEPART_YEAR && part <= DATEPART_MICROSECOND; }

bool is_in_range(CS_BIGDATETIME value, CS_BYTE type) {
    switch (type) {
    case TDS_BIGDATETIME:
        return com__bigdatetime_check_range(&value) == 0;
    case TDS_BIGTIME:
        return com__bigtime_check_range(&value) == 0;
    default:
        return true;
    }
}

int add_to_big_calendar(int part, CS_INT value, CS_BIGDATETIME &sum) {
    CS_DATEREC record;
    com__bigdatecrack(&sum, &record);
    CS_BIGDATETIME date;
    int code = add_to_record(part, value, record);
    if (code == DATE_OK)
        code = com__bigdatemake(&date, &record);
    if (code == DATE_OK)
        sum = date + time_of(sum);
    return code;
}

int add_micros(Wide micros, CS_BIGDATETIME &sum) {
    micros += sum;
    if (micros < 0 || micros > std::numeric_limits<CS_BIGDATETIME>::max())
        return DATE_BADYEAR;
    sum = static_cast<CS_BIGDATETIME>(micros);
    return DATE_OK;
}

// ---- Server constants ----

int load_constant(const __CONSTANT &from, CS_DATETIME &value) {
    if (from.len == sizeof(CS_DATETIME)) {
        value = load<CS_DATETIME>(from.value);
        return DONE;
    }
    if (from.len != sizeof(CS_DATETIME4))
        return OVERFLOWED;
    value = {};
    switch (from.type) {
    case TDS_DATE:
        value.dtdays = load<CS_DATE>(from.value);
        break;
    case TDS_TIME:
        value.dttime = load<CS_TIME>(from.value);
        break;
    default: {
        CS_DATETIME4 narrow = load<CS_DATETIME4>(from.value);
        com__date4todt(&narrow, &value);
    }
    }
    return DONE;
}

template <class Value>
int store_constant(const Value &value, __CONSTANT &to) {
    store(to.value, value);
    to.len = sizeof value;
    return DONE;
}

int store_datetime(CS_DATETIME &value, __CONSTANT &to) {
    if (to.maxlen == sizeof(CS_DATETIME))
        return com__datetime_check_range(&value) == 0 ? store_constant(value, to) : OVERFLOWED;
    if (to.maxlen != sizeof(CS_DATETIME4))
        return OVERFLOWED;
    switch (to.type) {
    case TDS_DATE:
        return store_constant(value.dtdays, to);
    case TDS_TIME:
        return store_constant(value.dttime, to);
    default:
        CS_DATETIME4 narrow;
        return com__dttodate4(&value, &narrow) == 0 ? store_constant(narrow, to) : OVERFLOWED;
    }
}

// A time of day has no date: years and months leave it, and everything else goes round the clock.
CS_BIGTIME add_round_the_clock(int part, CS_INT value, CS_BIGTIME time) {
    const Wide sum = (static_cast<Wide>(micros_of(part)) * value + time) % MICROS_A_DAY;
    return static_cast<CS_BIGTIME>(sum < 0 ? sum + MICROS_A_DAY : sum);
}

} // namespace
} // namespace dlx

using namespace dlx;

int com__datediff(int part, CS_DATETIME *from, CS_DATETIME *to, CS_INT *diff) {
    CS_BIGINT in_days;
    if (difference_in_days(part, from->dtdays, to->dtdays, in_days))
        return store_difference(in_days, diff);
    const Span span = {static_cast<CS_BIGINT>(to->dtdays) - from->dtdays,
                       static_cast<CS_BIGINT>(to->dttime) - from->dttime};
    switch (part) {
    case DATEPART_HOUR:
        return store_difference(span.units(TICKS_AN_HOUR), diff);
    case DATEPART_MINUTE:
        return store_limited(span, MOST_DAYS_IN_MINUTES, span.units(TICKS_A_MINUTE), diff);
    case DATEPART_SECOND:
        return store_limited(span, MOST_DAYS_IN_SECONDS, span.units(TICKS_A_SECOND), diff);
    case DATEPART_MILLISECOND:
        return store_limited(span, MOST_DAYS_IN_MILLISECONDS, span.milliseconds(), diff);
    default:
        return DONE;
    }
}

int com__bigdatediff(int part, CS_BIGDATETIME *from, CS_BIGDATETIME *to, CS_BIGINT *diff) {
    using BigInt = std::numeric_limits<CS_BIGINT>;
    if (difference_in_days(part, day_of(*from), day_of(*to), *diff))
        return DONE;
    if (const CS_BIGINT unit = micros_of(part)) {
        const Wide units = (static_cast<Wide>(*to) - *from) / unit;
        *diff = static_cast<CS_BIGINT>(std::clamp<Wide>(units, BigInt::min(), BigInt::max()));
    }
    return DONE;
}

int com__date_add(int part, CS_INT value, CS_DATETIME *to) {
    switch (part) {
    case DATEPART_YEAR:
    case DATEPART_QUARTER:
    case DATEPART_MONTH:
    case DATEPART_ISOYEAR:
        return add_to_calendar(part, value, *to);
    case DATEPART_WEEKDAY:
    case DATEPART_DAY:
    case DATEPART_DAYOFYEAR:
    case DATEPART_ISOWEEKDAY:
        return add_days(value, *to);
    case DATEPART_WEEK:
    case DATEPART_ISOWEEK:
        return add_days(static_cast<CS_BIGINT>(value) * DAYS_A_WEEK, *to);
    case DATEPART_HOUR:
        return add_time(HOUR, value, *to);
    case DATEPART_MINUTE:
        return add_time(MINUTE, value, *to);
    case DATEPART_SECOND:
        return add_time(SECOND, value, *to);
    case DATEPART_MILLISECOND:
        return add_time(MILLISECOND, value, *to);
    default:
        COM_REQUIRE(false, NO_PART);
        return NO_PART;
    }
}

int com__bigdate_add(int part, CS_INT value, CS_BIGDATETIME *to, CS_BYTE type) {
    COM_REQUIRE(is_big_part(part), NO_PART);
    CS_BIGDATETIME sum = *to;
    const int code = is_calendar_part(part) ? add_to_big_calendar(part, value, sum)
                                            : add_micros(static_cast<Wide>(micros_of(part)) * value, sum);
    if (code != DATE_OK)
        return code;
    if (!is_in_range(sum, type))
        return DATE_BADYEAR;
    *to = sum;
    return DATE_OK;
}

int com__dateadd_both(int part, CS_INT value, __CONSTANT *src, __CONSTANT *result) {
    CS_DATETIME sum;
    if (load_constant(*src, sum) != DONE)
        return OVERFLOWED;
    const int code = com__date_add(part, value, &sum);
    return code == DATE_OK ? store_datetime(sum, *result) : code;
}

int com__bigdateadd_both(int part, CS_INT value, __CONSTANT *src, __CONSTANT *result) {
    COM_REQUIRE(is_big_part(part), NO_PART);
    if (src->len != sizeof(CS_BIGDATETIME) || result->maxlen != sizeof(CS_BIGDATETIME))
        return OVERFLOWED;
    CS_BIGDATETIME sum = load<CS_BIGDATETIME>(src->value);
    if (src->type == TDS_BIGTIME) {
        sum = add_round_the_clock(part, value, sum);
    } else if (const int code = com__bigdate_add(part, value, &sum, TDS_BIGDATETIME); code != DATE_OK) {
        return code;
    }
    return store_constant(sum, *result);
}

int com__valid_datetime(__CONSTANT *src, CS_BYTE *cast_buf) {
    __CONSTANT result = *src;
    result.maxlen = src->len;
    result.value = cast_buf;
    return com__dateadd_both(DATEPART_DAYOFYEAR, 0, src, &result) == DATE_OK &&
           com__dateadd_both(DATEPART_MINUTE, 0, src, &result) == DATE_OK;
}

// Dates and times broken down into records and made from them, their order and their ranges.

#include "date/calendar.h"
#include "diag/check.h"

#include <algorithm>
#include <limits>

namespace dlx {
namespace {

// Fills the date of a day from the year 1 on, `days` after 0001-01-01.
//
// Leap days count as the last of their year here, so that years lie on a straight line in their century, and centuries
// in 400 years. So do months once February has 30 days: m months have (367 m + 5) / 12. Divisions by constants are
// done by multiplying with a scaled inverse, whose fraction gives the rest; each is exact over its range. There are no
// branches: over mixed dates a processor would guess them wrong time and again.
void crack_common_day(CS_UINT days, CS_DATEREC &record) {
    constexpr CS_UINT DAYS_IN_400_YEARS = 146097;
    constexpr CS_UINT YEAR_INVERSE = 2939745;   // 2^32 / 1461, rounded up
    constexpr CS_UINT MONTH_INVERSE = 2143;     // 2^16 months in about so many days
    constexpr CS_UINT MONTH_OFFSET = 1146;      // which makes the line pass between the days
    constexpr CS_UINT WEEK_INVERSE = 613566757; // 2^32 / 7, rounded up
    constexpr CS_UINT DAYS_TO_MARCH = 59;       // without a leap day

    const CS_UINT quarters = 4 * days + 3;
    const CS_UINT century = quarters / DAYS_IN_400_YEARS;
    const CS_UINT quarters_of_century = quarters % DAYS_IN_400_YEARS | 3;
    const CS_UBIGINT scaled = static_cast<CS_UBIGINT>(YEAR_INVERSE) * quarters_of_century;
    const CS_UINT year_of_century = static_cast<CS_UINT>(scaled >> 32);
    const CS_UINT day_of_year = static_cast<CS_UINT>(scaled) / (YEAR_INVERSE * 4);
    const CS_UINT leap = ((year_of_century == 99 ? century : year_of_century) & 3) == 3;

    const CS_UINT after_february = day_of_year >= DAYS_TO_MARCH + leap;
    const CS_UINT day_of_even_year = day_of_year + ((2 - leap) & (0 - after_february));
    const CS_UINT month_and_day = MONTH_INVERSE * day_of_even_year + MONTH_OFFSET; // the month, and 65536ths of it
    const CS_UINT week_fraction = (days + 1) * WEEK_INVERSE;                       // 0001-01-01 is a Monday

    record.dateyear = static_cast<CS_INT>(100 * century + year_of_century + 1);
    record.datemonth = static_cast<CS_INT>(month_and_day >> 16);
    record.datedmonth = static_cast<CS_INT>((month_and_day & 0xFFFF) / MONTH_INVERSE + 1);
    record.datedyear = static_cast<CS_INT>(day_of_year + 1);
    record.datedweek = static_cast<CS_INT>(static_cast<CS_UBIGINT>(week_fraction) * DAYS_A_WEEK >> 32);
}

// Years from 0001-01-01 to a day behind it. Years come in groups of 4, 100 and 400, the last of each the longer or
// the shorter one; taking those days off leaves years of 365.
std::int64_t years_past(std::int64_t days) {
    constexpr std::int64_t DAYS_IN_400_YEARS = 146097;
    const std::int64_t rest = days % DAYS_IN_400_YEARS;
    return days / DAYS_IN_400_YEARS * 400 + (rest - rest / 1460 + rest / 36524 - rest / 146096) / 365;
}

// The same of any day. Years before 1 have 365 days each.
void crack_any_day(std::int64_t days, CS_DATEREC &record) {
    const std::int64_t past = days < 0 ? (days - 364) / 365 : years_past(days);
    CS_INT rest = static_cast<CS_INT>(days - past * 365 - leap_years_until(past)) + 1;
    record.dateyear = static_cast<CS_INT>(past + 1);
    record.datedyear = rest;
    const monthcnt *const months = months_of(past + 1);
    CS_INT month = 0;
    while (rest > months[month].daysinmonth)
        rest -= months[month++].daysinmonth;
    record.datemonth = month;
    record.datedmonth = rest;
    record.datedweek = weekday_of(days + FIRST_DAY);
}

void crack_day(CS_INT day, CS_DATEREC &record) {
    if (day >= FIRST_DAY && day <= LAST_DAY) [[likely]]
        crack_common_day(static_cast<CS_UINT>(day - FIRST_DAY), record);
    else
        crack_any_day(static_cast<std::int64_t>(day) - FIRST_DAY, record);
}

int check_date(const CS_DATEREC &record) {
    if (record.dateyear < FIRST_YEAR || record.dateyear > LAST_YEAR)
        return DATE_BADYEAR;
    if (record.datemonth < 0 || record.datemonth >= MONTHS_A_YEAR)
        return DATE_BADMONTH;
    if (record.datedmonth < 1 || record.datedmonth > months_of(record.dateyear)[record.datemonth].daysinmonth)
        return DATE_BADDAY;
    return DATE_OK;
}

// Negative fields pass.
int check_time(const CS_DATEREC &record, CS_BIGINT fraction, CS_BIGINT largest_fraction) {
    if (record.datehour > 23)
        return DATE_BADHOUR;
    if (record.dateminute > 59)
        return DATE_BADMINUTE;
    if (record.datesecond > 59)
        return DATE_BADSECOND;
    return fraction > largest_fraction ? DATE_BADFRACTION : DATE_OK;
}

CS_BIGINT whole_seconds(const CS_DATEREC &record) {
    return (static_cast<CS_BIGINT>(record.datehour) * 60 + record.dateminute) * 60 + record.datesecond;
}

// Milliseconds to the nearest tick, but never to the next second.
CS_BIGINT ticks_of_milliseconds(CS_BIGINT milliseconds) {
    return milliseconds == 999 ? TICKS_A_SECOND - 1 : (3 * milliseconds + 5) / 10;
}

// The difference of two values, of which callers see the sign where it does not fit.
int difference(CS_BIGINT a, CS_BIGINT b) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<CS_BIGINT>(a - b, Limits::min(), Limits::max()));
}

} // namespace
} // namespace dlx

using namespace dlx;

// ---- Calendar ----

int leapyear(int year) { return is_leap_year(static_cast<std::int64_t>(year) + 1); }

int com__leapcnt(int year) { return static_cast<int>(leap_years_until(year)); }

// ---- Crack ----

void com__datecrack(CS_DATETIME *dtp, CS_DATEREC *pp) { crack_day(dtp->dtdays, *pp); }

void com__bigdatecrack(CS_BIGDATETIME *bdt, CS_DATEREC *pp) { crack_day(day_of(*bdt), *pp); }

void com__timecrack(CS_DATETIME *dtp, CS_DATEREC *pp) {
    constexpr CS_INT TIME_BITS = 0x1FFFFFF;
    const CS_UINT ticks = static_cast<CS_UINT>(dtp->dttime & TIME_BITS);
    const CS_UINT seconds = ticks / TICKS_A_SECOND;
    pp->datehour = static_cast<CS_INT>(seconds / 3600);
    pp->dateminute = static_cast<CS_INT>(seconds / 60 % 60);
    pp->datesecond = static_cast<CS_INT>(seconds % 60);
    pp->datemsecond = static_cast<CS_INT>(ticks % TICKS_A_SECOND * 10 / 3);
    pp->datesecfrac = 0;
    pp->datesecprec = TICK_PRECISION;
}

void com__bigtimecrack(CS_BIGDATETIME *bdt, CS_DATEREC *pp) {
    const CS_BIGTIME micros = time_of(*bdt);
    const CS_UINT seconds = static_cast<CS_UINT>(micros / MICROS_A_SECOND);
    pp->datehour = static_cast<CS_INT>(seconds / 3600);
    pp->dateminute = static_cast<CS_INT>(seconds / 60 % 60);
    pp->datesecond = static_cast<CS_INT>(seconds % 60);
    pp->datemsecond = 0;
    pp->datesecfrac = static_cast<CS_INT>(micros % MICROS_A_SECOND);
    pp->datesecprec = MICRO_PRECISION;
}

// ---- Make ----

int com__datemake(CS_DATETIME *dtp, CS_DATEREC *pp) {
    const int code = check_date(*pp);
    dtp->dtdays = code == DATE_OK ? day_number(pp->dateyear, pp->datemonth, pp->datedmonth) : 0;
    return code;
}

int com__bigdatemake(CS_BIGDATETIME *bdt, CS_DATEREC *pp) {
    const int code = check_date(*pp);
    if (code == DATE_OK)
        *bdt = midnight_of(day_number(pp->dateyear, pp->datemonth, pp->datedmonth));
    return code;
}

int com__timemake(CS_DATETIME *dtp, CS_DATEREC *pp) {
    const CS_INT milliseconds = pp->datesecprec == MICRO_PRECISION ? pp->datesecfrac / 1000 : pp->datemsecond;
    const int code = check_time(*pp, milliseconds, 999);
    if (code == DATE_OK)
        dtp->dttime =
            static_cast<CS_INT>(whole_seconds(*pp) * TICKS_A_SECOND + ticks_of_milliseconds(milliseconds));
    return code;
}

int com__bigtimemake(CS_BIGTIME *bt, CS_DATEREC *pp) {
    const CS_BIGINT micros = pp->datesecprec == MICRO_PRECISION
                                 ? pp->datesecfrac
                                 : static_cast<CS_BIGINT>(pp->datemsecond) * MICROS_A_MILLISECOND;
    const int code = check_time(*pp, micros, MICROS_A_SECOND - 1);
    if (code == DATE_OK)
        *bt = static_cast<CS_BIGTIME>(whole_seconds(*pp) * MICROS_A_SECOND + micros);
    return code;
}

// ---- Order and range ----

int com__datecmp(CS_DATETIME *date1, CS_DATETIME *date2) {
    return date1->dtdays != date2->dtdays ? difference(date1->dtdays, date2->dtdays)
                                          : difference(date1->dttime, date2->dttime);
}

int com__datetime_check_range(CS_DATETIME *dtp) { return dtp->dtdays < FIRST_DATETIME_DAY; }

int com__bigdatetime_check_range(CS_BIGDATETIME *bdt) { return *bdt < FIRST_BIGDATETIME || *bdt > LAST_BIGDATETIME; }

int com__datea_check_range(CS_DATE *dp) { return *dp < FIRST_DAY || *dp > LAST_DAY; }

int com__timea_check_range(CS_TIME *tp) { return *tp < 0 || *tp >= TICKS_A_DAY; }

int com__bigtime_check_range(CS_BIGTIME *bt) { return *bt >= static_cast<CS_BIGTIME>(MICROS_A_DAY); }

// ---- The public forms ----
//
// A caller's record may end behind datetzone, so these work on a record of their own.

void com__dtrec_cp(CS_DATEREC *from, CS_DATEREC *to, CS_INT type) {
    to->dateyear = from->dateyear;
    to->datemonth = from->datemonth;
    to->datedmonth = from->datedmonth;
    to->datedyear = from->datedyear;
    to->datedweek = from->datedweek;
    to->datehour = from->datehour;
    to->dateminute = from->dateminute;
    to->datesecond = from->datesecond;
    to->datemsecond = from->datemsecond;
    to->datetzone = from->datetzone;
    if (is_big(type)) {
        to->datesecfrac = from->datesecfrac;
        to->datesecprec = from->datesecprec;
    }
}

namespace dlx {
namespace {

template <class Value>
void crack_public(void (*crack)(Value *, CS_DATEREC *), Value *value, CS_DATEREC *pp, CS_INT type) {
    CS_DATEREC record = {};
    com__dtrec_cp(pp, &record, type); // the fields that are not cracked stay
    crack(value, &record);
    com__dtrec_cp(&record, pp, type);
}

template <class Value>
int make_public(int (*make)(Value *, CS_DATEREC *), Value *value, CS_DATEREC *pp, CS_INT type) {
    CS_DATEREC record = {};
    com__dtrec_cp(pp, &record, type);
    return make(value, &record);
}

} // namespace
} // namespace dlx

void com_datecrack(CS_DATETIME *dtp, CS_DATEREC *pp) { crack_public(com__datecrack, dtp, pp, CS_DATETIME_TYPE); }
void com_timecrack(CS_DATETIME *dtp, CS_DATEREC *pp) { crack_public(com__timecrack, dtp, pp, CS_DATETIME_TYPE); }
void com_bigdatecrack(CS_BIGDATETIME *bdt, CS_DATEREC *pp) {
    crack_public(com__bigdatecrack, bdt, pp, CS_BIGDATETIME_TYPE);
}
void com_bigtimecrack(CS_BIGDATETIME *bdt, CS_DATEREC *pp) {
    crack_public(com__bigtimecrack, bdt, pp, CS_BIGDATETIME_TYPE);
}

int com_datemake(CS_DATETIME *dtp, CS_DATEREC *pp) { return make_public(com__datemake, dtp, pp, CS_DATETIME_TYPE); }
int com_timemake(CS_DATETIME *dtp, CS_DATEREC *pp) { return make_public(com__timemake, dtp, pp, CS_DATETIME_TYPE); }
int com_bigdatemake(CS_BIGDATETIME *bdt, CS_DATEREC *pp) {
    return make_public(com__bigdatemake, bdt, pp, CS_BIGDATETIME_TYPE);
}
int com_bigtimemake(CS_BIGTIME *bt, CS_DATEREC *pp) { return make_public(com__bigtimemake, bt, pp, CS_BIGTIME_TYPE); }

int com_datepart(int part, CS_DATETIME *to, int firstday) { return com__datepart(part, to, firstday); }
int com_datename(int part, CS_DATETIME *dtp, char *cp, char **months, char **days) {
    return com__datename(part, dtp, cp, months, days);
}

int com_datecmp(CS_DATETIME *date1, CS_DATETIME *date2) { return com__datecmp(date1, date2); }
int com_date4cmp(CS_DATETIME4 *date1, CS_DATETIME4 *date2) {
    return date1->days != date2->days ? date1->days - date2->days : date1->minutes - date2->minutes;
}
int com_dateacmp(CS_DATE *date1, CS_DATE *date2) { return difference(*date1, *date2); }
int com_timeacmp(CS_TIME *time1, CS_TIME *time2) { return difference(*time1, *time2); }
int com_bigdatetimecmp(CS_BIGDATETIME *date1, CS_BIGDATETIME *date2) { return (*date1 > *date2) - (*date1 < *date2); }

void com_datezero(CS_DATETIME *dtp) { *dtp = {}; }
void com_date4zero(CS_DATETIME4 *dtp4) { *dtp4 = {}; }
void com_setdatetime(CS_DATETIME *dtp, CS_INT days, CS_INT ticks) { *dtp = {days, ticks}; }

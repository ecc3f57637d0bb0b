// Parts of a date, as numbers and by name.

#include "date/calendar.h"
#include "diag/check.h"

#include <dlxcomn/datetext.h>

namespace dlx {
namespace {

constexpr int NO_PART = -101; // answered for a part that is none, where assertions return
constexpr int NUMBER_WIDTH = 4;
constexpr int MICROSECOND_WIDTH = 6;
constexpr int NAME_WIDTH = 30;
constexpr char NO_PAD = '\0';

// From January 1 to the Monday of ISO week 1, by the weekday of January 1: week 1 is the one with January 4 in it.
constexpr int week_one_offset[DAYS_A_WEEK] = {1, 0, -1, -2, -3, 3, 2};

std::int64_t week_one(std::int64_t january_first) { return january_first + week_one_offset[weekday_of(january_first)]; }

struct IsoWeek {
    int year;
    int week;
};

IsoWeek iso_week(int year, int day_of_year, std::int64_t day) {
    constexpr std::int64_t SHORTEST_YEAR = 51; // a week above it may belong to the next year
    const std::int64_t january_first = day - day_of_year + 1;
    std::int64_t first = week_one(january_first);
    if (day < first) {
        --year;
        first = week_one(january_first - days_in_year(year));
    } else if ((day - first) / DAYS_A_WEEK + 1 > SHORTEST_YEAR) {
        const std::int64_t next = week_one(january_first + days_in_year(year));
        if (day >= next)
            return {year + 1, 1};
    }
    return {year, static_cast<int>((day - first) / DAYS_A_WEEK + 1)};
}

} // namespace
} // namespace dlx

using namespace dlx;

int com__daterecpart(int part, CS_DATEREC *t, int firstday, int dayselapsed, CS_INT odatetype) {
    switch (part) {
    case DATEPART_YEAR:
        return t->dateyear;
    case DATEPART_QUARTER:
        return t->datemonth / 3 + 1;
    case DATEPART_MONTH:
        return t->datemonth + 1;
    case DATEPART_WEEKDAY: {
        const int weekday = t->datedweek + 2 - firstday;
        return weekday < 1 ? weekday + DAYS_A_WEEK : weekday;
    }
    case DATEPART_DAY:
        return t->datedmonth;
    case DATEPART_DAYOFYEAR:
        return t->datedyear;
    case DATEPART_HOUR:
        return t->datehour;
    case DATEPART_MINUTE:
        return t->dateminute;
    case DATEPART_SECOND:
        return t->datesecond;
    case DATEPART_MILLISECOND:
        return is_big(odatetype) ? t->datesecfrac / 1000 : t->datemsecond;
    case DATEPART_WEEK:
        return (t->datedyear + weekday_of(static_cast<std::int64_t>(dayselapsed) - t->datedyear + 1) + 6) / DAYS_A_WEEK;
    case DATEPART_ISOYEAR:
        return iso_week(t->dateyear, t->datedyear, dayselapsed).year;
    case DATEPART_ISOWEEK:
        return iso_week(t->dateyear, t->datedyear, dayselapsed).week;
    case DATEPART_ISOWEEKDAY:
        return t->datedweek == 0 ? DAYS_A_WEEK : t->datedweek;
    case DATEPART_MICROSECOND:
        return is_big(odatetype) ? t->datesecfrac : 0;
    default:
        COM_REQUIRE(false, NO_PART);
        return NO_PART;
    }
}

int com__datepart(int part, CS_DATETIME *to, int firstday) {
    CS_DATEREC record;
    com__datecrack(to, &record);
    com__timecrack(to, &record);
    return com__daterecpart(part, &record, firstday, to->dtdays, CS_DATETIME_TYPE);
}

int com__bigdatepart(int part, CS_BIGDATETIME *bdt, int firstday) {
    CS_DATEREC record;
    com__bigdatecrack(bdt, &record);
    com__bigtimecrack(bdt, &record);
    return com__daterecpart(part, &record, firstday, day_of(*bdt), CS_BIGDATETIME_TYPE);
}

int com__datenameval(int part, char *cp, char **months, char **days, int value, int dayselapsed) {
    switch (part) {
    case DATEPART_MONTH:
        return months != nullptr ? com__cpchar(cp, months[value - 1], NO_PAD, NAME_WIDTH) : 0;
    case DATEPART_WEEKDAY:
    case DATEPART_ISOWEEKDAY:
        return days != nullptr ? com__cpchar(cp, days[weekday_of(dayselapsed)], NO_PAD, NAME_WIDTH) : 0;
    case DATEPART_MICROSECOND:
        return com__itochar(value, cp, MICROSECOND_WIDTH);
    default:
        return part >= DATEPART_YEAR && part < DATEPART_MICROSECOND ? com__itochar(value, cp, NUMBER_WIDTH) : 0;
    }
}

namespace dlx {
namespace {

// A weekday's name depends on the day alone; anything else is named by its value.
bool is_weekday(int part) { return part == DATEPART_WEEKDAY || part == DATEPART_ISOWEEKDAY; }

} // namespace
} // namespace dlx

int com__datename(int part, CS_DATETIME *dtp, char *cp, char **months, char **days) {
    const int value = is_weekday(part) ? 0 : com__datepart(part, dtp, 0);
    return com__datenameval(part, cp, months, days, value, dtp->dtdays);
}

int com__bigdatename(int part, CS_BIGDATETIME *bdt, char *cp, char **months, char **days) {
    const int value = is_weekday(part) ? 0 : com__bigdatepart(part, bdt, 0);
    return com__datenameval(part, cp, months, days, value, day_of(*bdt));
}

// Moves of a value between the six types.

#include "date/calendar.h"

namespace dlx {
namespace {

constexpr int DONE = 0;
constexpr int NO_PLACE = 1; // in the other type

// Minutes of a day's time, of which 1440 are the next day's first.
int narrow(CS_INT day, CS_INT minutes, CS_DATETIME4 &to) {
    constexpr CS_INT LAST_NARROW_DAY = 65535;
    if (day < 0 || day > LAST_NARROW_DAY)
        return NO_PLACE;
    if (minutes >= MINUTES_A_DAY) {
        if (day == LAST_NARROW_DAY)
            return NO_PLACE;
        ++day;
        minutes -= MINUTES_A_DAY;
    }
    to = {static_cast<CS_USHORT>(day), static_cast<CS_USHORT>(minutes)};
    return DONE;
}

// A time of day in ticks, from its whole milliseconds.
CS_RETCODE ticks_of(CS_BIGTIME time, CS_TIME &ticks) {
    const CS_INT milliseconds = static_cast<CS_INT>(time / MICROS_A_MILLISECOND);
    ticks = milliseconds == MILLISECONDS_A_DAY - 1
                ? TICKS_A_DAY - 1
                : static_cast<CS_TIME>((static_cast<CS_BIGINT>(milliseconds) * 3 + 5) / 10);
    return time % MICROS_A_MILLISECOND == 0 ? CS_SUCCEED : CS_ETRUNCATED;
}

// Whole milliseconds of a time in ticks, as microseconds. A negative time becomes one that no type holds.
CS_BIGTIME micros_of(CS_TIME ticks) {
    return static_cast<CS_BIGTIME>(static_cast<CS_BIGINT>(ticks) * 1000 / TICKS_A_SECOND * MICROS_A_MILLISECOND);
}

} // namespace
} // namespace dlx

using namespace dlx;

// ---- The narrow type ----

int com__dttodate4(CS_DATETIME *dtp, CS_DATETIME4 *dtp4) {
    constexpr CS_BIGINT HALF_A_MINUTE = TICKS_A_MINUTE / 2;
    return narrow(dtp->dtdays, static_cast<CS_INT>((dtp->dttime + HALF_A_MINUTE) / TICKS_A_MINUTE), *dtp4);
}

int com__bigdttodate4(CS_BIGDATETIME *bdt, CS_DATETIME4 *dtp4) {
    const CS_BIGTIME time = time_of(*bdt);
    const CS_BIGTIME seconds = (time + MICROS_A_SECOND / 2) / MICROS_A_SECOND;
    return narrow(day_of(*bdt), static_cast<CS_INT>((seconds + 30) / 60), *dtp4);
}

void com__date4todt(CS_DATETIME4 *dtp4, CS_DATETIME *dtp) {
    *dtp = {dtp4->days, static_cast<CS_INT>(dtp4->minutes) * TICKS_A_MINUTE};
}

void com__date4tobigdatetime(CS_DATETIME4 *dtp4, CS_BIGDATETIME *bdt) {
    *bdt = midnight_of(dtp4->days) + static_cast<CS_BIGTIME>(dtp4->minutes) * MICROS_A_MINUTE;
}

void com__date4tobigtime(CS_DATETIME4 *dtp4, CS_BIGTIME *bt) {
    *bt = static_cast<CS_BIGTIME>(dtp4->minutes) * MICROS_A_MINUTE;
}

// ---- From CS_DATETIME ----

void com__datetodatea(CS_DATETIME *dtp, CS_DATE *dp) { *dp = dtp->dtdays; }

void com__datetotimea(CS_DATETIME *dtp, CS_TIME *tp) { *tp = dtp->dttime; }

int com__datetobigdatetime(CS_DATETIME *dtp, CS_BIGDATETIME *bdt) {
    CS_DATEREC record;
    CS_BIGDATETIME date;
    CS_BIGTIME time;
    com__datecrack(dtp, &record);
    com__timecrack(dtp, &record);
    if (const int code = com__bigdatemake(&date, &record))
        return code;
    if (const int code = com__bigtimemake(&time, &record))
        return code;
    *bdt = date + time;
    return DONE;
}

int com__datetobigtime(CS_DATETIME *dtp, CS_BIGTIME *bt) {
    CS_DATEREC record;
    com__timecrack(dtp, &record);
    return com__bigtimemake(bt, &record);
}

// ---- From the big types ----

void com__bigdatetimetodatea(CS_BIGDATETIME *bdt, CS_DATE *dp) { *dp = day_of(*bdt); }

CS_RETCODE com__bigdatetimetodate(CS_BIGDATETIME *bdt, CS_DATETIME *dtp) {
    CS_DATEREC record;
    com__bigdatecrack(bdt, &record);
    com__bigtimecrack(bdt, &record);
    if (com__datemake(dtp, &record) != DATE_OK || com__timemake(dtp, &record) != DATE_OK)
        return CS_EOVERFLOW;
    if (com__datetime_check_range(dtp) != 0)
        return CS_EUNDERFLOW;
    return record.datesecfrac % MICROS_A_MILLISECOND == 0 ? CS_SUCCEED : CS_ETRUNCATED;
}

CS_RETCODE com__bigdatetimetotimea(CS_BIGDATETIME *bdt, CS_TIME *tp) { return ticks_of(time_of(*bdt), *tp); }

CS_RETCODE com__bigtimetotimea(CS_BIGTIME *bt, CS_TIME *tp) { return ticks_of(time_of(*bt), *tp); }

CS_RETCODE com__bigtimetodate(CS_BIGTIME *bt, CS_DATETIME *dtp) {
    dtp->dtdays = 0;
    return ticks_of(time_of(*bt), dtp->dttime);
}

void com__bigdatetimetobigtime(CS_BIGDATETIME *bdt, CS_BIGTIME *bt) { *bt = time_of(*bdt); }

// ---- From a date or a time alone ----

int com__dateatodate(CS_DATE *dp, CS_DATETIME *dtp) {
    *dtp = {*dp, 0};
    if (com__datetime_check_range(dtp) == 0)
        return DONE;
    dtp->dtdays = 0;
    return NO_PLACE;
}

int com__dateatobigdatetime(CS_DATE *dp, CS_BIGDATETIME *bdt) {
    if (com__datea_check_range(dp) != 0) {
        *bdt = 0;
        return NO_PLACE;
    }
    *bdt = midnight_of(*dp);
    return DONE;
}

void com__timeatodate(CS_TIME *tp, CS_DATETIME *dtp) { *dtp = {0, *tp}; }

int com__timeatobigtime(CS_TIME *tp, CS_BIGTIME *bt) {
    CS_BIGTIME time = micros_of(*tp);
    if (com__bigtime_check_range(&time) != 0)
        return NO_PLACE;
    *bt = time;
    return DONE;
}

int com__timeatobigdatetime(CS_TIME *tp, CS_BIGDATETIME *bdt) {
    CS_BIGTIME time;
    if (com__timeatobigtime(tp, &time) != DONE)
        return NO_PLACE;
    *bdt = FIRST_BIGDATETIME + time;
    return DONE;
}

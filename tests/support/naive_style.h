// A second writer of the styles of dates: each style as its pattern, written piece by piece with snprintf.
#ifndef TESTS_SUPPORT_NAIVE_STYLE_H
#define TESTS_SUPPORT_NAIVE_STYLE_H

#include <dlxcomn/dlxcomn.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

namespace support {

enum class Engine { date, time };

// Pieces of the patterns: Mon, dd and _d (day, zeros or blanks in front), mm, yy, yyyy and _yyy, HH, _h (of 12
// hours), mi, ss, mmm, ffffff, AM. All else stands for itself.
inline const std::map<int, std::string_view> &date_patterns() {
    static const std::map<int, std::string_view> patterns = {
        {0, "Mon _d yyyy _h:miAM"},
        {1, "mm/dd/yy"},
        {2, "yy.mm.dd"},
        {3, "dd/mm/yy"},
        {4, "dd.mm.yy"},
        {5, "dd-mm-yy"},
        {6, "dd Mon yy"},
        {7, "Mon dd, yy"},
        {8, "HH:mi:ss"},
        {9, "Mon _d yyyy _h:mi:ss:mmmAM"},
        {10, "mm-dd-yy"},
        {11, "yy/mm/dd"},
        {12, "yymmdd"},
        {13, "yy/dd/mm"},
        {14, "mm/yy/dd"},
        {15, "dd/yy/mm"},
        {16, "Mon _d yyyy HH:mi:ss"},
        {17, "_h:miAM"},
        {18, "HH:mi"},
        {19, "_h:mi:ss:mmmAM"},
        {20, "HH:mi:ss:mmm"},
        {21, "yy/mm/dd HH:mi:ss"},
        {22, "yy/mm/dd _h:miAM"},
        {23, "yyyy-mm-ddTHH:mi:ss"},
        {36, "_h:mi:ss.ffffffAM"},
        {37, "HH:mi:ss.ffffff"},
        {38, "Mon _d yy _h:mi:ss.ffffffAM"},
        {39, "Mon _d yy HH:mi:ss.ffffff"},
        {40, "yy-mm-dd HH:mi:ss.ffffff"},
        {100, "Mon _d yyyy _h:miAM"},
        {101, "mm/dd/yyyy"},
        {102, "yyyy.mm.dd"},
        {103, "dd/mm/yyyy"},
        {104, "dd.mm.yyyy"},
        {105, "dd-mm-yyyy"},
        {106, "dd Mon yyyy"},
        {107, "Mon dd, yyyy"},
        {108, "HH:mi:ss"},
        {109, "Mon _d yyyy _h:mi:ss:mmmAM"},
        {110, "mm-dd-yyyy"},
        {111, "yyyy/mm/dd"},
        {112, "yyyymmdd"},
        {113, "yyyy/dd/mm"},
        {114, "mm/yyyy/dd"},
        {115, "dd/yyyy/mm"},
        {116, "Mon _d yyyy HH:mi:ss"},
        {117, "_h:miAM"},
        {118, "HH:mi"},
        {121, "yyyy/mm/dd HH:mi:ss"},
        {122, "yyyy/mm/dd _h:miAM"},
        {136, "_h:mi:ss.ffffffAM"},
        {137, "HH:mi:ss.ffffff"},
        {138, "Mon _d yyyy _h:mi:ss.ffffffAM"},
        {139, "Mon _d yyyy HH:mi:ss.ffffff"},
        {140, "yyyy-mm-dd HH:mi:ss.ffffff"},
    };
    return patterns;
}

// Where values without a date differ. The styles of a date alone have nothing to print.
inline const std::map<int, std::string_view> &time_patterns() {
    static const std::map<int, std::string_view> patterns = [] {
        std::map<int, std::string_view> result = date_patterns();
        result[0] = "_h:miAM";
        result[9] = "_h:mi:ss:mmmAM";
        result[100] = "Mon _d _yyy _h:miAM";
        result[109] = "Mon _d _yyy _h:mi:ss:mmmAM";
        result[21] = "yy/dd/mm HH:mi:ss";
        result[22] = "yy/dd/mm _h:miAM";
        result[121] = "yyyy/dd/mm HH:mi:ss";
        result[122] = "yyyy/dd/mm _h:miAM";
        for (const int century : {0, 100}) {
            for (int style = 1; style <= 7; ++style)
                result[century + style] = "";
            for (int style = 10; style <= 15; ++style)
                result[century + style] = "";
        }
        return result;
    }();
    return patterns;
}

inline const std::map<int, std::string_view> &patterns_of(Engine engine) {
    return engine == Engine::date ? date_patterns() : time_patterns();
}

// The last `width` digits of a magnitude, filled up in front.
inline std::string naive_digits(std::int64_t value, int width, char fill) {
    char text[64];
    std::snprintf(text, sizeof text, fill == '0' ? "%0*lld" : "%*lld", width,
                  std::llabs(static_cast<long long>(value)));
    const std::string digits = text;
    return digits.substr(digits.size() - static_cast<std::size_t>(width));
}

inline std::string naive_pattern(std::string_view pattern, const CS_DATEREC &record, char **shortmths, CS_INT secprec) {
    const bool is_big = secprec == 1000000;
    const std::int64_t month = std::int64_t{record.datemonth} + 1;
    const std::int64_t micros = is_big ? record.datesecfrac : std::int64_t{record.datemsecond} * 1000;
    const std::int64_t millis = is_big ? (std::int64_t{record.datesecfrac} + 500) / 1000 : record.datemsecond;
    const std::int64_t hour12 = record.datehour >= 13  ? record.datehour - 12
                                : record.datehour == 0 ? 12
                                                       : record.datehour;
    std::string text;
    while (!pattern.empty()) {
        const auto is_next = [&pattern](std::string_view piece) {
            const bool yes = pattern.starts_with(piece);
            if (yes)
                pattern.remove_prefix(piece.size());
            return yes;
        };
        if (is_next("Mon"))
            text += std::string(shortmths[record.datemonth]).substr(0, 9);
        else if (is_next("dd"))
            text += naive_digits(record.datedmonth, 2, '0');
        else if (is_next("_d"))
            text += naive_digits(record.datedmonth, 2, ' ');
        else if (is_next("mmm"))
            text += naive_digits(millis, 3, '0');
        else if (is_next("mm"))
            text += naive_digits(month, 2, '0');
        else if (is_next("yyyy"))
            text += naive_digits(record.dateyear, 4, '0');
        else if (is_next("_yyy"))
            text += naive_digits(record.dateyear, 4, ' ');
        else if (is_next("yy"))
            text += naive_digits(record.dateyear, 2, '0');
        else if (is_next("HH"))
            text += naive_digits(record.datehour, 2, '0');
        else if (is_next("_h"))
            text += naive_digits(hour12, 2, ' ');
        else if (is_next("mi"))
            text += naive_digits(record.dateminute, 2, '0');
        else if (is_next("ss"))
            text += naive_digits(record.datesecond, 2, '0');
        else if (is_next("ffffff"))
            text += naive_digits(micros, 6, '0');
        else if (is_next("AM"))
            text += record.datehour < 12 ? "AM" : "PM";
        else {
            text += pattern.front();
            pattern.remove_prefix(1);
        }
    }
    return text;
}

// What a printing function leaves behind, whatever its room.
struct Printed {
    int status = 0; // below 0: nothing is printed
    std::string text;
    bool is_nothing = false; // a NUL that counts as one byte, however small the room is

    static Printed failure(int status) { return {status, {}, false}; }
    static Printed nothing() { return {0, std::string(1, '\0'), true}; }

    std::string written(int len) const { return len < 0 ? text : text.substr(0, static_cast<std::size_t>(len)); }
    int answer(int len) const {
        if (status < 0)
            return status;
        const int size = static_cast<int>(text.size());
        return is_nothing || len < 0 || len >= size ? size : 0;
    }
};

inline Printed naive_style(Engine engine, const CS_DATEREC &record, int style, char **shortmths, CS_INT secprec) {
    const auto found = patterns_of(engine).find(style);
    if (found == patterns_of(engine).end())
        return Printed::failure(DATESTYLE_UNKNOWN);
    if (found->second.empty())
        return Printed::nothing();
    if (shortmths == nullptr && found->second.find("Mon") != std::string_view::npos)
        return Printed::failure(DATESTYLE_NO_MONTHS);
    return {0, naive_pattern(found->second, record, shortmths, secprec), false};
}

// ---- Records of values, by the calendar of the standard library ----

inline CS_DATEREC naive_day(std::int64_t days_since_1900) {
    using namespace std::chrono;
    const sys_days day = sys_days{January / 1 / 1900} + days{days_since_1900};
    const year_month_day date{day};
    CS_DATEREC record = {};
    record.dateyear = static_cast<int>(date.year());
    record.datemonth = static_cast<CS_INT>(static_cast<unsigned>(date.month())) - 1;
    record.datedmonth = static_cast<CS_INT>(static_cast<unsigned>(date.day()));
    return record;
}

inline CS_DATEREC naive_time_of_ticks(CS_DATEREC record, CS_INT ticks) {
    ticks &= 0x1FFFFFF;
    record.datehour = ticks / (300 * 60 * 60);
    record.dateminute = ticks / (300 * 60) % 60;
    record.datesecond = ticks / 300 % 60;
    record.datemsecond = ticks % 300 * 1000 / 300;
    return record;
}

inline CS_DATEREC naive_time_of_micros(CS_DATEREC record, std::uint64_t micros) {
    using namespace std::chrono;
    const hh_mm_ss time{microseconds{static_cast<std::int64_t>(micros % 86400000000)}};
    record.datehour = static_cast<CS_INT>(time.hours().count());
    record.dateminute = static_cast<CS_INT>(time.minutes().count());
    record.datesecond = static_cast<CS_INT>(time.seconds().count());
    record.datesecfrac = static_cast<CS_INT>(time.subseconds().count());
    return record;
}

} // namespace support

#endif

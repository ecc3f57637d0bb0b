// Printing of dates and times: every style of every type in every room, against a second writer of the styles.
#include "support/naive_style.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using support::Engine;
using support::naive_day;
using support::naive_style;
using support::naive_time_of_micros;
using support::naive_time_of_ticks;
using support::Printed;

constexpr CS_INT SECOND = 300;
constexpr CS_INT MINUTE = 60 * SECOND;
constexpr CS_INT HOUR = 60 * MINUTE;
constexpr CS_INT DAY_2024_01_05 = 45294;
constexpr CS_INT TICKS_13_07_08_5 = 13 * HOUR + 7 * MINUTE + 8 * SECOND + 150;
constexpr CS_BIGDATETIME BIG_DAY = 86400000000;
constexpr CS_BIGDATETIME DAYS_TO_1900 = 693595 + 366;
constexpr CS_BIGTIME MICROS_13_07_08_5 = ((13 * 60 + 7) * 60 + 8) * 1000000ULL + 500000;

char **names() { return com__get_shortmonths(); }

CS_BIGDATETIME big(CS_INT day, CS_BIGTIME micros) {
    return static_cast<CS_BIGDATETIME>(static_cast<std::int64_t>(DAYS_TO_1900) + day) * BIG_DAY + micros;
}

// A call of a printing function with the room that it is given.
using Print = std::function<int(char *buf, int len)>;

// Room with guards on both sides.
class Sheet {
public:
    Sheet() { bytes_.fill(BLANK); }
    char *room() { return bytes_.data() + GUARD; }
    // Whether exactly this was written, and at the start of the room.
    bool holds(std::string_view text) const {
        std::array<char, SIZE> expected;
        expected.fill(BLANK);
        std::memcpy(expected.data() + GUARD, text.data(), text.size());
        return expected == bytes_;
    }
    std::string_view first(std::size_t count) const { return {bytes_.data() + GUARD, count}; }

private:
    static constexpr std::size_t GUARD = 16, SIZE = 128;
    static constexpr char BLANK = '\x5A';
    std::array<char, SIZE> bytes_;
};

void expect_print(const Print &print, const Printed &expected, int len) {
    Sheet sheet;
    const int answer = print(sheet.room(), len);
    if (answer != expected.answer(len) || !sheet.holds(expected.written(len)))
        ADD_FAILURE() << "room " << len << ": answered " << answer << ", not " << expected.answer(len) << "; wrote \""
                      << sheet.first(expected.text.size() + 2) << "\" for \"" << expected.written(len) << "\"";
}

// In every room from -1 to past the text, and in the largest and the most negative one.
void expect_in_every_room(const Print &print, const Printed &expected) {
    const int past = static_cast<int>(expected.text.size()) + 3;
    for (int len = -1; len <= past; ++len)
        expect_print(print, expected, len);
    for (const int len : {INT_MIN, -2, INT_MAX})
        expect_print(print, expected, len);
}

std::string printed(const Print &print, int len = -1) {
    Sheet sheet;
    const int answer = print(sheet.room(), len);
    if (answer < 0)
        return "answer " + std::to_string(answer);
    return std::string(sheet.first(static_cast<std::size_t>(answer)));
}

// ---- The functions as calls of a room ----

Print record_print(Engine engine, CS_DATEREC record, int style, char **months, CS_INT secprec) {
    return [=](char *buf, int len) mutable {
        return engine == Engine::date ? com__daterectochar(&record, buf, len, style, months, secprec)
                                      : com__timerectochar(&record, buf, len, style, months, secprec);
    };
}
Print datetime_print(CS_DATETIME value, int style, char **months) {
    return [=](char *buf, int len) mutable { return com__datetochar(&value, buf, len, style, months); };
}
Print public_datetime_print(CS_DATETIME value, int style, char **months) {
    return [=](char *buf, int len) mutable { return com_cvtdatetochar(&value, buf, len, style, months); };
}
Print datetime4_print(CS_DATETIME4 value, int style, char **months) {
    return [=](char *buf, int len) mutable { return com__date4tochar(&value, buf, len, style, months); };
}
Print public_datetime4_print(CS_DATETIME4 value, int style, char **months) {
    return [=](char *buf, int len) mutable { return com_cvtdate4tochar(&value, buf, len, style, months); };
}
Print date_print(CS_DATE value, int style, char **months) {
    return [=](char *buf, int len) mutable { return com__dateatochar(&value, buf, len, style, months); };
}
Print time_print(CS_TIME value, int style, char **months) {
    return [=](char *buf, int len) mutable { return com__timeatochar(&value, buf, len, style, months); };
}
Print bigdatetime_print(CS_BIGDATETIME value, int style, char **months) {
    return [=](char *buf, int len) mutable { return com__bigdatetimetochar(&value, buf, len, style, months); };
}
Print bigtime_print(CS_BIGTIME value, int style, char **months) {
    return [=](char *buf, int len) mutable { return com__bigtimetochar(&value, buf, len, style, months); };
}

// ---- What they are to print ----

Printed expected_datetime(CS_DATETIME value, int style, char **months) {
    return naive_style(Engine::date, naive_time_of_ticks(naive_day(value.dtdays), value.dttime), style, months, 300);
}
Printed expected_datetime4(CS_DATETIME4 value, int style, char **months) {
    return expected_datetime({value.days, value.minutes * MINUTE}, style, months);
}
Printed expected_date(CS_DATE value, int style, char **months) {
    if (style != 0 && style != 9)
        return expected_datetime({value, 0}, style, months);
    if (months == nullptr)
        return Printed::failure(DATESTYLE_NO_MONTHS);
    return {0, support::naive_pattern("Mon _d yyyy", naive_day(value), months, 300), false};
}
Printed expected_time(CS_TIME value, int style, char **months) {
    return naive_style(Engine::time, naive_time_of_ticks(naive_day(0), value), style, months, 300);
}
Printed expected_bigdatetime(CS_BIGDATETIME value, int style, char **months) {
    const auto day = static_cast<std::int64_t>(value / BIG_DAY) - static_cast<std::int64_t>(DAYS_TO_1900);
    return naive_style(Engine::date, naive_time_of_micros(naive_day(day), value), style, months, 1000000);
}
Printed expected_bigtime(CS_BIGTIME value, int style, char **months) {
    return naive_style(Engine::time, naive_time_of_micros(naive_day(-693595), value), style, months, 1000000);
}

// ---- The table, row by row ----

struct Row {
    int style;
    const char *of_date; // 2024-01-05 13:07:08.5
    const char *of_time; // 13:07:08.5 as a CS_TIME; null where only a date could be printed
};

constexpr Row ROWS[] = {
    {0, "Jan  5 2024  1:07PM", " 1:07PM"},
    {1, "01/05/24", nullptr},
    {2, "24.01.05", nullptr},
    {3, "05/01/24", nullptr},
    {4, "05.01.24", nullptr},
    {5, "05-01-24", nullptr},
    {6, "05 Jan 24", nullptr},
    {7, "Jan 05, 24", nullptr},
    {8, "13:07:08", "13:07:08"},
    {9, "Jan  5 2024  1:07:08:500PM", " 1:07:08:500PM"},
    {10, "01-05-24", nullptr},
    {11, "24/01/05", nullptr},
    {12, "240105", nullptr},
    {13, "24/05/01", nullptr},
    {14, "01/24/05", nullptr},
    {15, "05/24/01", nullptr},
    {16, "Jan  5 2024 13:07:08", "Jan  1 1900 13:07:08"},
    {17, " 1:07PM", " 1:07PM"},
    {18, "13:07", "13:07"},
    {19, " 1:07:08:500PM", " 1:07:08:500PM"},
    {20, "13:07:08:500", "13:07:08:500"},
    {21, "24/01/05 13:07:08", "00/01/01 13:07:08"},
    {22, "24/01/05  1:07PM", "00/01/01  1:07PM"},
    {23, "2024-01-05T13:07:08", "1900-01-01T13:07:08"},
    {36, " 1:07:08.500000PM", " 1:07:08.500000PM"},
    {37, "13:07:08.500000", "13:07:08.500000"},
    {38, "Jan  5 24  1:07:08.500000PM", "Jan  1 00  1:07:08.500000PM"},
    {39, "Jan  5 24 13:07:08.500000", "Jan  1 00 13:07:08.500000"},
    {40, "24-01-05 13:07:08.500000", "00-01-01 13:07:08.500000"},
    {100, "Jan  5 2024  1:07PM", "Jan  1 1900  1:07PM"},
    {101, "01/05/2024", nullptr},
    {102, "2024.01.05", nullptr},
    {103, "05/01/2024", nullptr},
    {104, "05.01.2024", nullptr},
    {105, "05-01-2024", nullptr},
    {106, "05 Jan 2024", nullptr},
    {107, "Jan 05, 2024", nullptr},
    {108, "13:07:08", "13:07:08"},
    {109, "Jan  5 2024  1:07:08:500PM", "Jan  1 1900  1:07:08:500PM"},
    {110, "01-05-2024", nullptr},
    {111, "2024/01/05", nullptr},
    {112, "20240105", nullptr},
    {113, "2024/05/01", nullptr},
    {114, "01/2024/05", nullptr},
    {115, "05/2024/01", nullptr},
    {116, "Jan  5 2024 13:07:08", "Jan  1 1900 13:07:08"},
    {117, " 1:07PM", " 1:07PM"},
    {118, "13:07", "13:07"},
    {121, "2024/01/05 13:07:08", "1900/01/01 13:07:08"},
    {122, "2024/01/05  1:07PM", "1900/01/01  1:07PM"},
    {136, " 1:07:08.500000PM", " 1:07:08.500000PM"},
    {137, "13:07:08.500000", "13:07:08.500000"},
    {138, "Jan  5 2024  1:07:08.500000PM", "Jan  1 1900  1:07:08.500000PM"},
    {139, "Jan  5 2024 13:07:08.500000", "Jan  1 1900 13:07:08.500000"},
    {140, "2024-01-05 13:07:08.500000", "1900-01-01 13:07:08.500000"},
};

TEST(DateStyles, EachPrintsItsPattern) {
    for (const Row &row : ROWS) {
        SCOPED_TRACE("style " + std::to_string(row.style));
        const Printed expected = {0, row.of_date, false};
        expect_in_every_room(datetime_print({DAY_2024_01_05, TICKS_13_07_08_5}, row.style, names()), expected);
        expect_in_every_room(bigdatetime_print(big(DAY_2024_01_05, MICROS_13_07_08_5), row.style, names()), expected);
    }
}

TEST(DateStyles, EachPrintsTheTimeOfAValueWithoutADate) {
    for (const Row &row : ROWS) {
        SCOPED_TRACE("style " + std::to_string(row.style));
        const Printed expected = row.of_time == nullptr ? Printed::nothing() : Printed{0, row.of_time, false};
        expect_in_every_room(time_print(TICKS_13_07_08_5, row.style, names()), expected);
    }
}

TEST(DateStyles, TheReferenceKnowsTheSameOnes) {
    std::size_t count = 0;
    for (const Row &row : ROWS)
        count += support::date_patterns().count(row.style);
    EXPECT_EQ(count, std::size(ROWS));
    EXPECT_EQ(count, support::date_patterns().size());
    EXPECT_EQ(count, support::time_patterns().size());
}

// Every style number around the table, known or not, with names and without, of every type in every room.
TEST(DateStyles, EveryTypeInEveryRoom) {
    std::vector<int> styles = {INT_MIN, INT_MIN + 100, -140, -100, 240, 256, 512, 65536, 65676, INT_MAX - 100, INT_MAX};
    for (int style = -3; style <= 170; ++style)
        styles.push_back(style);
    for (char **months : {names(), static_cast<char **>(nullptr)})
        for (const int style : styles) {
            SCOPED_TRACE("style " + std::to_string(style) + (months == nullptr ? " without names" : ""));
            const CS_DATETIME datetime = {-53690, 86399 * SECOND + 299};
            const CS_DATETIME4 datetime4 = {65535, 9 * 60 + 5};
            const CS_DATE date = -693595;
            const CS_TIME time = 7 * SECOND + 1;
            const CS_BIGDATETIME bigdatetime = big(2958463, 12 * 3600000000ULL + 999499);
            const CS_BIGTIME bigtime = 86399999999;
            expect_in_every_room(datetime_print(datetime, style, months), expected_datetime(datetime, style, months));
            expect_in_every_room(public_datetime_print(datetime, style, months),
                                 expected_datetime(datetime, style, months));
            expect_in_every_room(datetime4_print(datetime4, style, months),
                                 expected_datetime4(datetime4, style, months));
            expect_in_every_room(public_datetime4_print(datetime4, style, months),
                                 expected_datetime4(datetime4, style, months));
            expect_in_every_room(date_print(date, style, months), expected_date(date, style, months));
            expect_in_every_room(time_print(time, style, months), expected_time(time, style, months));
            expect_in_every_room(bigdatetime_print(bigdatetime, style, months),
                                 expected_bigdatetime(bigdatetime, style, months));
            expect_in_every_room(bigtime_print(bigtime, style, months), expected_bigtime(bigtime, style, months));
        }
}

TEST(DateStyles, UnknownOnesLeaveTheRoomAlone) {
    for (const int style : {-1, 24, 30, 35, 41, 99, 119, 120, 123, 135, 141, 1000})
        for (const Engine engine : {Engine::date, Engine::time}) {
            Sheet sheet;
            CS_DATEREC record = naive_day(0);
            EXPECT_EQ(record_print(engine, record, style, names(), 300)(sheet.room(), -1), DATESTYLE_UNKNOWN) << style;
            EXPECT_TRUE(sheet.holds("")) << style;
        }
}

// ---- Random records ----

using Random = std::mt19937_64;

CS_INT any_number(Random &random) {
    static constexpr CS_INT EDGES[] = {INT_MIN, INT_MIN + 1, -2147483, -1000, -500, -499,  -12,       -1,
                                       0,       9,           10,       11,    12,   13,    23,        24,
                                       99,      100,         999,      1000,  9999, 10000, 123456789, INT_MAX - 499,
                                       INT_MAX};
    switch (random() % 3) {
    case 0:
        return EDGES[random() % std::size(EDGES)];
    case 1:
        return static_cast<CS_INT>(random() % 200) - 100;
    default:
        return static_cast<CS_INT>(random());
    }
}

CS_INT usual_or_any(Random &random, CS_INT bound) {
    return random() % 4 != 0 ? static_cast<CS_INT>(random() % static_cast<std::uint64_t>(bound)) : any_number(random);
}

int any_style(Random &random) {
    if (random() % 8 != 0)
        return ROWS[random() % std::size(ROWS)].style;
    return random() % 2 == 0 ? static_cast<int>(random() % 150) : any_number(random);
}

// Names of 0 to 14 bytes, with more entries on both sides of the twelve than a calendar has.
class Names {
public:
    explicit Names(Random &random) {
        for (std::size_t i = 0; i < texts_.size(); ++i) {
            const std::size_t length = random() % (random() % 2 == 0 ? 4 : 15);
            for (std::size_t at = 0; at < length; ++at)
                texts_[i] += static_cast<char>(1 + random() % 255);
            list_[i] = texts_[i].data();
        }
    }
    Names(const Names &) = delete;
    Names &operator=(const Names &) = delete;

    static constexpr CS_INT LOWEST = -8, COUNT = 32;
    char **list() { return list_.data() - LOWEST; }

private:
    std::array<std::string, COUNT> texts_;
    std::array<char *, COUNT> list_;
};

TEST(DateRecords, PrintLikeTheReferenceWhateverTheyHold) {
    Random random(0x5A17E);
    for (int round = 0; round < 300; ++round) {
        Names months(random);
        for (int i = 0; i < 400; ++i) {
            const int style = any_style(random);
            const Engine engine = random() % 2 == 0 ? Engine::date : Engine::time;
            CS_DATEREC record = {};
            record.dateyear = usual_or_any(random, 10000);
            record.datedmonth = usual_or_any(random, 32);
            record.datedyear = any_number(random);
            record.datedweek = any_number(random);
            record.datehour = usual_or_any(random, 24);
            record.dateminute = usual_or_any(random, 60);
            record.datesecond = usual_or_any(random, 60);
            record.datemsecond = usual_or_any(random, 1000);
            record.datetzone = any_number(random);
            record.datesecfrac = usual_or_any(random, 1000000);
            record.datesecprec = any_number(random);
            const auto pattern = support::patterns_of(engine).find(style);
            const bool has_name =
                pattern != support::patterns_of(engine).end() && pattern->second.find("Mon") != std::string_view::npos;
            record.datemonth =
                has_name ? Names::LOWEST + static_cast<CS_INT>(random() % Names::COUNT) : usual_or_any(random, 12);
            const CS_INT secprec = random() % 2 == 0 ? 1000000 : random() % 2 == 0 ? 300 : any_number(random);
            char **list = random() % 8 == 0 ? nullptr : months.list();
            const Printed expected = naive_style(engine, record, style, list, secprec);
            const int len = random() % 2 == 0 ? -1 : static_cast<int>(random() % 48);
            expect_print(record_print(engine, record, style, list, secprec), expected, len);
            if (HasFailure()) {
                FAIL() << "style " << style << " of " << record.dateyear << " " << record.datemonth << " "
                       << record.datedmonth << " " << record.datehour << ":" << record.dateminute << ":"
                       << record.datesecond << " ms " << record.datemsecond << " frac " << record.datesecfrac
                       << " secprec " << secprec << (engine == Engine::time ? ", as a time" : "");
            }
        }
    }
}

TEST(DateValues, PrintLikeTheReferenceOverTheirRanges) {
    Random random(0xDA7E);
    const auto between = [&random](std::int64_t low, std::int64_t high) {
        return low + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(high - low + 1));
    };
    for (int i = 0; i < 40000 && !HasFailure(); ++i) {
        const int style = any_style(random);
        const int len = random() % 4 != 0 ? -1 : static_cast<int>(random() % 40);
        const auto date = static_cast<CS_DATE>(between(-693595, 2958463));
        const auto ticks = static_cast<CS_TIME>(between(0, 25919999));
        const CS_DATETIME4 date4 = {static_cast<CS_USHORT>(random()), static_cast<CS_USHORT>(between(0, 1439))};
        const CS_BIGDATETIME stamp = static_cast<CS_BIGDATETIME>(between(31622400000000, 315569519999999999));
        const CS_BIGTIME micros = static_cast<CS_BIGTIME>(between(0, 86399999999));
        SCOPED_TRACE("style " + std::to_string(style) + ", " + std::to_string(date) + " " + std::to_string(ticks) +
                     ", " + std::to_string(stamp));
        expect_print(datetime_print({date, ticks}, style, names()), expected_datetime({date, ticks}, style, names()),
                     len);
        expect_print(datetime4_print(date4, style, names()), expected_datetime4(date4, style, names()), len);
        expect_print(date_print(date, style, names()), expected_date(date, style, names()), len);
        expect_print(time_print(ticks, style, names()), expected_time(ticks, style, names()), len);
        expect_print(bigdatetime_print(stamp, style, names()), expected_bigdatetime(stamp, style, names()), len);
        expect_print(bigtime_print(micros, style, names()), expected_bigtime(micros, style, names()), len);
    }
}

// ---- Edge cases ----

CS_DATETIME on_2024_01_05(CS_INT hour, CS_INT minute, CS_INT second = 0, CS_INT ticks = 0) {
    return {DAY_2024_01_05, hour * HOUR + minute * MINUTE + second * SECOND + ticks};
}

TEST(DateEdges, Style0PadsDayAndHourWithBlanks) {
    EXPECT_EQ(printed(datetime_print(on_2024_01_05(13, 7), 0, names())), "Jan  5 2024  1:07PM");
    EXPECT_EQ(printed(datetime_print({DAY_2024_01_05 + 10, 22 * HOUR}, 0, names())), "Jan 15 2024 10:00PM");
}

TEST(DateEdges, Style9ShowsTheMillisecondsOfTheTicks) {
    EXPECT_EQ(printed(datetime_print(on_2024_01_05(0, 7, 8, 150), 9, names())), "Jan  5 2024 12:07:08:500AM");
    EXPECT_EQ(printed(datetime_print(on_2024_01_05(0, 7, 8, 1), 9, names())), "Jan  5 2024 12:07:08:003AM");
    EXPECT_EQ(printed(datetime_print(on_2024_01_05(0, 7, 8, 299), 9, names())), "Jan  5 2024 12:07:08:996AM");
}

TEST(DateEdges, YearsOfTwoAndFourDigits) {
    EXPECT_EQ(printed(datetime_print(on_2024_01_05(0, 0), 101, names())), "01/05/2024");
    EXPECT_EQ(printed(datetime_print(on_2024_01_05(0, 0), 1, names())), "01/05/24");
    EXPECT_EQ(printed(date_print(-693595, 101, names())), "01/01/0001");
    EXPECT_EQ(printed(date_print(-693595, 1, names())), "01/01/01");
    EXPECT_EQ(printed(date_print(2958463, 112, names())), "99991231");
}

TEST(DateEdges, Style23IsIsoWithT) {
    EXPECT_EQ(printed(datetime_print(on_2024_01_05(13, 7, 8), 23, names())), "2024-01-05T13:07:08");
}

TEST(DateEdges, Style112RunsTogether) {
    EXPECT_EQ(printed(datetime_print(on_2024_01_05(13, 7, 8), 112, names())), "20240105");
}

TEST(DateEdges, NoNamesMatterOnlyWhereTheMonthIsNamed) {
    const CS_DATETIME value = on_2024_01_05(13, 7);
    for (const int style : {0, 6, 7, 9, 16, 38, 39, 100, 106, 107, 109, 116, 138, 139})
        EXPECT_EQ(printed(datetime_print(value, style, nullptr)), "answer -2") << style;
    EXPECT_EQ(printed(datetime_print(value, 101, nullptr)), "01/05/2024");
    EXPECT_EQ(printed(datetime_print(value, 17, nullptr)), " 1:07PM");
    EXPECT_EQ(printed(datetime_print(value, 24, nullptr)), "answer -1");
}

TEST(DateEdges, NoNamesAreNeededForTheTimeThatStandsAlone) {
    for (const int style : {0, 9, 17})
        EXPECT_EQ(printed(time_print(0, style, nullptr)).substr(0, 5), "12:00") << style;
    for (const int style : {16, 38, 39, 100, 109, 116, 138, 139})
        EXPECT_EQ(printed(time_print(0, style, nullptr)), "answer -2") << style;
    for (const int style : {6, 7, 106, 107}) // name a month, but print nothing
        EXPECT_EQ(printed(time_print(0, style, nullptr)), std::string(1, '\0')) << style;
}

TEST(DateEdges, TextThatIsCutAnswersZeroAndLeavesItsStart) {
    Sheet sheet;
    CS_DATETIME value = on_2024_01_05(13, 7);
    EXPECT_EQ(com__datetochar(&value, sheet.room(), 3, 1, names()), 0);
    EXPECT_TRUE(sheet.holds("01/"));
}

TEST(DateEdges, TextThatJustFitsAnswersItsLength) {
    Sheet sheet;
    CS_DATETIME value = on_2024_01_05(13, 7);
    EXPECT_EQ(com__datetochar(&value, sheet.room(), 8, 1, names()), 8);
    EXPECT_TRUE(sheet.holds("01/05/24"));
}

TEST(DateEdges, NoRoomAtAllIsNotTouched) {
    Sheet sheet;
    CS_DATETIME value = on_2024_01_05(13, 7);
    CS_TIME time = 0;
    EXPECT_EQ(com__datetochar(&value, sheet.room(), 0, 1, names()), 0);
    EXPECT_EQ(com__timeatochar(&time, sheet.room(), 0, 1, names()), 1);
    EXPECT_TRUE(sheet.holds(""));
}

TEST(DateEdges, TwelveIsTheHourOfMidnightAndOfNoon) {
    EXPECT_EQ(printed(time_print(0, 17, names())), "12:00AM");
    EXPECT_EQ(printed(time_print(HOUR - 1, 17, names())), "12:59AM");
    EXPECT_EQ(printed(time_print(HOUR, 17, names())), " 1:00AM");
    EXPECT_EQ(printed(time_print(12 * HOUR - 1, 17, names())), "11:59AM");
    EXPECT_EQ(printed(time_print(12 * HOUR, 17, names())), "12:00PM");
    EXPECT_EQ(printed(time_print(13 * HOUR, 17, names())), " 1:00PM");
    EXPECT_EQ(printed(time_print(24 * HOUR - 1, 17, names())), "11:59PM");
}

TEST(DateEdges, DateAloneHasNoTimeInStyles0And9ButMidnightInTheirLongForms) {
    for (const int style : {0, 9})
        expect_in_every_room(date_print(DAY_2024_01_05, style, names()), {0, "Jan  5 2024", false});
    expect_in_every_room(date_print(DAY_2024_01_05, 100, names()), {0, "Jan  5 2024 12:00AM", false});
    expect_in_every_room(date_print(DAY_2024_01_05, 109, names()), {0, "Jan  5 2024 12:00:00:000AM", false});
    expect_in_every_room(date_print(DAY_2024_01_05, 0, nullptr), Printed::failure(DATESTYLE_NO_MONTHS));
    expect_in_every_room(date_print(DAY_2024_01_05, 9, nullptr), Printed::failure(DATESTYLE_NO_MONTHS));
}

TEST(DateEdges, TimeAloneIsAnEmptyTextOfOneByteInStylesOfADate) {
    expect_in_every_room(time_print(HOUR, 1, names()), Printed::nothing());
    Sheet sheet;
    CS_BIGTIME value = 1;
    EXPECT_EQ(com__bigtimetochar(&value, sheet.room(), 1, 112, names()), 1);
    EXPECT_TRUE(sheet.holds(std::string_view("\0", 1)));
}

TEST(DateEdges, BigTimeLiesInTheYear1AndTimeIn1900) {
    EXPECT_EQ(printed(bigtime_print(HOUR, 140, names())), "0001-01-01 00:00:01.080000");
    EXPECT_EQ(printed(time_print(HOUR, 140, names())), "1900-01-01 01:00:00.000000");
    EXPECT_EQ(printed(bigtime_print(0, 139, names())), "Jan  1 0001 00:00:00.000000");
}

TEST(DateEdges, BigTimePadsItsYearWithBlanksInStyles100And109) {
    EXPECT_EQ(printed(bigtime_print(0, 100, names())), "Jan  1    1 12:00AM");
    EXPECT_EQ(printed(bigtime_print(0, 109, names())), "Jan  1    1 12:00:00:000AM");
    EXPECT_EQ(printed(bigtime_print(0, 116, names())), "Jan  1 0001 00:00:00");
}

TEST(DateEdges, MonthsOfADateStandInOrder) {
    static constexpr const char *SHORT[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (CS_INT month = 0; month < 12; ++month) {
        CS_DATEREC record = naive_day(0);
        record.datemonth = month;
        EXPECT_EQ(printed(record_print(Engine::date, record, 106, names(), 300)),
                  "01 " + std::string(SHORT[month]) + " 1900");
    }
}

TEST(DateEdges, LongMonthsAreCutBehindNineBytes) {
    CS_DATEREC record = naive_day(DAY_2024_01_05);
    char nine[] = "Septembre", ten[] = "Septembre.", none[] = "";
    char *months[12] = {nine};
    EXPECT_EQ(printed(record_print(Engine::date, record, 6, months, 300)), "05 Septembre 24");
    months[0] = ten;
    EXPECT_EQ(printed(record_print(Engine::date, record, 6, months, 300)), "05 Septembre 24");
    EXPECT_EQ(printed(record_print(Engine::date, record, 138, months, 300)),
              "Septembre  5 2024 12:00:00.000000AM"); // the longest text there is
    months[0] = none;
    EXPECT_EQ(printed(record_print(Engine::date, record, 7, months, 300)), " 05, 24");
}

TEST(DateEdges, NamesWithMultiByteCharactersAreCutAtBytes) {
    CS_DATEREC record = naive_day(DAY_2024_01_05);
    char utf8[] = "\xD1\x8F\xD0\xBD\xD0\xB2\xD0\xB0\xD1\x80\xD1\x8C";
    char *months[12] = {utf8};
    EXPECT_EQ(printed(record_print(Engine::date, record, 6, months, 300)),
              "05 \xD1\x8F\xD0\xBD\xD0\xB2\xD0\xB0\xD1 24");
}

TEST(DateEdges, BigDatesShowMicrosecondsAsTheyStandAndTicksTheirMilliseconds) {
    EXPECT_EQ(printed(bigdatetime_print(big(DAY_2024_01_05, 123456), 140, names())), "2024-01-05 00:00:00.123456");
    EXPECT_EQ(printed(bigdatetime_print(big(DAY_2024_01_05, 7), 37, names())), "00:00:00.000007");
    EXPECT_EQ(printed(datetime_print({DAY_2024_01_05, 1}, 140, names())), "2024-01-05 00:00:00.003000");
}

TEST(DateEdges, DaytimeOfADatetime4HasNoSeconds) {
    EXPECT_EQ(printed(datetime4_print({0, 0}, 109, names())), "Jan  1 1900 12:00:00:000AM");
    EXPECT_EQ(printed(datetime4_print({65535, 1439}, 140, names())), "2079-06-06 23:59:00.000000");
}

// ---- Oddities that callers know ----

TEST(DateOddities, MillisecondsOfABigDateAreRoundedWithoutACarry) {
    const CS_BIGDATETIME value = big(DAY_2024_01_05, 999600);
    EXPECT_EQ(printed(bigdatetime_print(value, 9, names())), "Jan  5 2024 12:00:00:000AM");
    EXPECT_EQ(printed(bigdatetime_print(value, 39, names())), "Jan  5 24 00:00:00.999600");
    EXPECT_EQ(printed(bigdatetime_print(value - 100 - 1, 9, names())), "Jan  5 2024 12:00:00:999AM");
    EXPECT_EQ(printed(bigtime_print(500, 20, names())), "00:00:00:001");
    EXPECT_EQ(printed(bigtime_print(499, 20, names())), "00:00:00:000");
}

TEST(DateOddities, TimeEngineHasTheDayInFrontOfTheMonth) {
    CS_DATEREC record = naive_day(DAY_2024_01_05);
    for (const auto &[style, text] : {std::pair{21, "24/05/01 00:00:00"},
                                      {22, "24/05/01 12:00AM"},
                                      {121, "2024/05/01 00:00:00"},
                                      {122, "2024/05/01 12:00AM"}})
        EXPECT_EQ(printed(record_print(Engine::time, record, style, names(), 300)), text);
    EXPECT_EQ(printed(record_print(Engine::time, record, 40, names(), 300)), "24-01-05 00:00:00.000000");
    EXPECT_EQ(printed(record_print(Engine::time, record, 23, names(), 300)), "2024-01-05T00:00:00");
}

TEST(DateOddities, FieldsLoseTheirHighDigitsAndTheirSign) {
    CS_DATEREC record = {};
    record.dateyear = -12345;
    record.datemonth = 122;
    record.datedmonth = -7;
    EXPECT_EQ(printed(record_print(Engine::date, record, 111, names(), 300)), "2345/23/07");
    EXPECT_EQ(printed(record_print(Engine::date, record, 11, names(), 300)), "45/23/07");
}

TEST(DateOddities, HoursOutOfRangeKeepTheirMeridian) {
    CS_DATEREC record = {};
    record.datehour = 31;
    EXPECT_EQ(printed(record_print(Engine::date, record, 17, names(), 300)), "19:00PM");
    record.datehour = -5;
    EXPECT_EQ(printed(record_print(Engine::date, record, 17, names(), 300)), " 5:00AM");
    // The low 25 bits of dttime count, which reach beyond a day.
    EXPECT_EQ(printed(datetime_print({0, 0x1FFFFFF}, 20, names())), "31:04:08:103");
    EXPECT_EQ(printed(datetime_print({0, -1}, 20, names())), "31:04:08:103");
}

TEST(DateOddities, MonthIndexesTheNamesUnchecked) {
    char before[] = "Undecember", first[] = "One", last[] = "Twelve", after[] = "Thirteen";
    std::array<char *, 14> names_with_neighbours;
    names_with_neighbours.fill(first);
    names_with_neighbours[0] = before;
    names_with_neighbours[12] = last;
    names_with_neighbours[13] = after;
    CS_DATEREC record = naive_day(0);
    for (const auto &[month, text] : {std::pair{-1, "01 Undecembe 00"}, {11, "01 Twelve 00"}, {12, "01 Thirteen 00"}}) {
        record.datemonth = month;
        EXPECT_EQ(printed(record_print(Engine::date, record, 6, names_with_neighbours.data() + 1, 300)), text);
    }
}

TEST(DateOddities, PrecisionComesWithTheCallAndNotWithTheRecord) {
    CS_DATEREC record = naive_day(0);
    record.datemsecond = 111;
    record.datesecfrac = 222222;
    record.datesecprec = 1000000;
    EXPECT_EQ(printed(record_print(Engine::date, record, 37, names(), 300)), "00:00:00.111000");
    record.datesecprec = 300;
    EXPECT_EQ(printed(record_print(Engine::date, record, 37, names(), 1000000)), "00:00:00.222222");
    EXPECT_EQ(printed(record_print(Engine::time, record, 20, names(), 1000000)), "00:00:00:222");
    EXPECT_EQ(printed(record_print(Engine::time, record, 20, names(), 0)), "00:00:00:111");
}

// ---- com__cpint ----

TEST(CpInt, FillsWithBlanksOrZeros) {
    Sheet sheet;
    EXPECT_EQ(com__cpint(sheet.room(), 7, '\0', 2), 2);
    EXPECT_TRUE(sheet.holds(" 7"));
    EXPECT_EQ(com__cpint(sheet.room(), 7, '\0', -2), 2);
    EXPECT_TRUE(sheet.holds("07"));
    EXPECT_EQ(com__cpint(sheet.room(), 0, '\0', 4), 4);
    EXPECT_TRUE(sheet.holds("   0"));
}

TEST(CpInt, WritesThePadCharacterBehindTheField) {
    Sheet sheet;
    EXPECT_EQ(com__cpint(sheet.room(), 12, ':', 4), 5);
    EXPECT_TRUE(sheet.holds("  12:"));
}

TEST(CpInt, LosesExcessDigitsOnTheLeft) {
    Sheet sheet;
    EXPECT_EQ(com__cpint(sheet.room(), 2024, '/', -2), 3);
    EXPECT_TRUE(sheet.holds("24/"));
}

TEST(CpInt, OddlyKeepsZerosOfTheDigitsThatRemain) {
    Sheet sheet; // 2005 in two places is 05, with blanks too: the zero is a digit of it
    EXPECT_EQ(com__cpint(sheet.room(), 2005, '\0', 2), 2);
    EXPECT_TRUE(sheet.holds("05"));
}

TEST(CpInt, WithoutWidthIsThePadCharacterAlone) {
    Sheet sheet;
    EXPECT_EQ(com__cpint(sheet.room(), 5, '\0', 0), 0);
    EXPECT_TRUE(sheet.holds(""));
    EXPECT_EQ(com__cpint(sheet.room(), 5, ',', 0), 1);
    EXPECT_TRUE(sheet.holds(","));
}

TEST(CpInt, PrintsLikeTheReferenceInAllWidths) {
    Random random(0xC11);
    std::vector<CS_INT> values;
    for (CS_INT value = -1100; value <= 1100; ++value)
        values.push_back(value);
    for (int i = 0; i < 3000; ++i)
        values.push_back(any_number(random));
    for (const CS_INT value : values)
        for (int width = 1; width <= 14; ++width)
            for (const char pad : {'\0', ' ', 'T'})
                for (const bool zeros : {false, true}) {
                    std::string expected = support::naive_digits(value, width, zeros ? '0' : ' ');
                    if (pad != '\0')
                        expected += pad;
                    Sheet sheet;
                    const int answer = com__cpint(sheet.room(), value, pad, zeros ? -width : width);
                    if (answer != static_cast<int>(expected.size()) || !sheet.holds(expected))
                        FAIL() << value << " in width " << width << (zeros ? " with zeros" : "") << ": " << answer
                               << " \"" << sheet.first(expected.size()) << "\" for \"" << expected << "\"";
                }
}

// ---- com__cpchar ----

TEST(CpChar, CopiesUpToTheEndOrTheLimit) {
    char text[] = "January", empty[] = "";
    const auto copy = [](char *str, char pad, int most) {
        Sheet sheet;
        const int count = com__cpchar(sheet.room(), str, pad, most);
        const std::string copied(sheet.first(static_cast<std::size_t>(count)));
        EXPECT_TRUE(sheet.holds(copied));
        return copied;
    };
    EXPECT_EQ(copy(text, '\0', 9), "January");
    EXPECT_EQ(copy(text, ' ', 9), "January ");
    EXPECT_EQ(copy(text, ' ', 7), "January ");
    EXPECT_EQ(copy(text, ' ', 3), "Jan ");
    EXPECT_EQ(copy(text, '\0', 1), "J");
    EXPECT_EQ(copy(text, '\0', 0), "");
    EXPECT_EQ(copy(text, ',', 0), ",");
    EXPECT_EQ(copy(empty, '\0', 9), "");
    EXPECT_EQ(copy(empty, ',', 9), ",");
}

TEST(CpChar, ReadsNothingBehindItsLimit) {
    const std::vector<char> unterminated = {'M', 'a', 'y'};
    Sheet sheet;
    EXPECT_EQ(com__cpchar(sheet.room(), const_cast<char *>(unterminated.data()), '.', 3), 4);
    EXPECT_TRUE(sheet.holds("May."));
}

// ---- com__itochar ----

TEST(IToChar, PrintsDecimals) {
    for (const CS_INT value : {0, 7, -7, 10, 99999, INT_MAX, INT_MIN}) {
        const std::string text = std::to_string(value);
        for (const int len : {-1, 0, 11, 20, static_cast<int>(text.size())}) {
            Sheet sheet;
            EXPECT_EQ(com__itochar(value, sheet.room(), len), static_cast<int>(text.size())) << value << " in " << len;
            EXPECT_TRUE(sheet.holds(text)) << value << " in " << len;
        }
    }
}

TEST(IToChar, WritesAStarWhereTheRoomIsTooSmall) {
    for (const auto &[value, len] : {std::pair{12345, 4}, {12345, 1}, {-1, 1}, {INT_MIN, 10}, {10, 1}}) {
        Sheet sheet;
        EXPECT_EQ(com__itochar(value, sheet.room(), len), 1) << value << " in " << len;
        EXPECT_TRUE(sheet.holds("*")) << value << " in " << len;
    }
}

TEST(IToChar, PrintsLikeTheReferenceInAllWidths) {
    Random random(0x170C);
    for (int i = 0; i < 30000; ++i) {
        const CS_INT value = any_number(random);
        char text[16];
        std::snprintf(text, sizeof text, "%d", value);
        for (int len = -1; len <= 13; ++len) {
            const std::string expected = len > 0 && std::strlen(text) > static_cast<std::size_t>(len) ? "*" : text;
            Sheet sheet;
            const int answer = com__itochar(value, sheet.room(), len);
            if (answer != static_cast<int>(expected.size()) || !sheet.holds(expected))
                FAIL() << value << " in " << len << ": " << answer;
        }
    }
}

} // namespace

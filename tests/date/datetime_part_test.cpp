// Parts of dates as numbers and by name.
#include "support/assertions.h"
#include "support/naive_calendar.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <string>
#include <string_view>

namespace {

using namespace support::calendar;

constexpr int FIRST_PART = 0, LAST_PART = 14;
constexpr int NOT_A_PART[] = {INT_MIN, -101, -1, 15, 16, 255, 256, INT_MAX};

int part_of(int part, CS_INT day, CS_INT ticks = 0, int firstday = 1) {
    CS_DATETIME value = {day, ticks};
    return com__datepart(part, &value, firstday);
}

int big_part_of(int part, CS_BIGDATETIME value, int firstday = 1) { return com__bigdatepart(part, &value, firstday); }

CS_INT day_of(int year, int month, int day) { return static_cast<CS_INT>(DayNumbers::of(year, month - 1, day)); }

// ---- Days ----

// The parts of a date that its fields tell.
int plain_part(int part, const Date &date) {
    switch (part) {
    case 0:
        return static_cast<int>(date.year);
    case 1:
        return date.month < 3 ? 1 : date.month < 6 ? 2 : date.month < 9 ? 3 : 4;
    case 2:
        return date.month + 1;
    case 4:
        return date.day;
    case 5:
        return date.day_of_year;
    default:
        return date.weekday == 0 ? 7 : date.weekday; // 13
    }
}

TEST(DatePart, FieldsOfEveryDay) {
    std::map<int, int> wrong; // part to day number
    for_each_day([&](std::int64_t number, const Date &date) {
        const CS_INT day = static_cast<CS_INT>(number);
        for (const int part : {0, 1, 2, 4, 5, 13}) {
            const int expected = plain_part(part, date);
            if (part_of(part, day) != expected || big_part_of(part, midnight(number)) != expected)
                wrong.emplace(part, day);
        }
    });
    EXPECT_EQ(wrong, (std::map<int, int>{}));
}

TEST(DatePart, WeekdayOfEveryDayFromEachFirstDay) {
    std::map<int, int> wrong; // first day to day number
    for_each_day([&](std::int64_t number, const Date &date) {
        const CS_INT day = static_cast<CS_INT>(number);
        const int firstday = static_cast<int>((number - FIRST_DAY) / 7 % 7) + 1;
        // The first day of the week has 1.
        const int expected = (date.weekday - (firstday - 1) + 7) % 7 + 1;
        if (part_of(3, day, 0, firstday) != expected || big_part_of(3, midnight(number), firstday) != expected)
            wrong.emplace(firstday, day);
    });
    EXPECT_EQ(wrong, (std::map<int, int>{}));
}

TEST(DatePart, SundayIs1WithFirstday1AndSaturdayIs1WithFirstday7) {
    const CS_INT sunday = day_of(2024, 6, 2), saturday = day_of(2024, 6, 1);
    EXPECT_EQ(part_of(3, sunday, 0, 1), 1);
    EXPECT_EQ(part_of(3, saturday, 0, 1), 7);
    EXPECT_EQ(part_of(3, saturday, 0, 7), 1);
    EXPECT_EQ(part_of(3, sunday, 0, 7), 2);
}

TEST(DatePart, WeeksStartOnSundayAndJanuaryFirstIsInWeekOne) {
    int week = 0;
    int wrong = INT_MAX;
    for_each_day([&](std::int64_t number, const Date &date) {
        if (date.day_of_year == 1)
            week = 1;
        else if (date.weekday == 0)
            ++week;
        const CS_INT day = static_cast<CS_INT>(number);
        if (part_of(10, day) != week || big_part_of(10, midnight(number) + MICROS_A_DAY - 1) != week)
            wrong = std::min(wrong, day);
    });
    EXPECT_EQ(wrong, INT_MAX);
    EXPECT_EQ(part_of(10, day_of(2000, 12, 31)), 54); // a leap year from Saturday on
    EXPECT_EQ(part_of(10, day_of(2023, 1, 1)), 1);
    EXPECT_EQ(part_of(10, day_of(2023, 1, 7)), 1);
    EXPECT_EQ(part_of(10, day_of(2023, 1, 8)), 2);
}

// ---- ISO weeks ----

struct IsoDay {
    int year, week, weekday;
    bool operator==(const IsoDay &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const IsoDay &day) {
        return out << day.year << "-W" << day.week << '-' << day.weekday;
    }
};

IsoDay iso_day(CS_INT day) { return {part_of(11, day), part_of(12, day), part_of(13, day)}; }

IsoDay big_iso_day(CS_INT day) {
    const CS_BIGDATETIME value = midnight(day) + MICROS_A_DAY - 1;
    return {big_part_of(11, value), big_part_of(12, value), big_part_of(13, value)};
}

int digits(const char *text, int count) {
    int number = 0;
    while (count-- > 0)
        number = number * 10 + (*text++ - '0');
    return number;
}

TEST(IsoWeek, EveryDayAsTheCLibraryTellsIt) {
    int wrong = INT_MAX;
    for_each_day([&](std::int64_t number, const Date &date) {
        std::tm time = {};
        time.tm_year = static_cast<int>(date.year) - 1900;
        time.tm_mon = date.month;
        time.tm_mday = date.day;
        time.tm_yday = date.day_of_year - 1;
        time.tm_wday = date.weekday;
        char text[32];
        const std::size_t length = std::strftime(text, sizeof text, "%G %V %u", &time);
        const int width = static_cast<int>(length) - 5; // of the year
        const IsoDay expected = {digits(text, width), digits(text + width + 1, 2), digits(text + width + 4, 1)};
        const CS_INT day = static_cast<CS_INT>(number);
        if (iso_day(day) != expected || big_iso_day(day) != expected)
            wrong = std::min(wrong, day);
    });
    EXPECT_EQ(wrong, INT_MAX);
}

// A week belongs to the year of its Thursday, and is counted by the Thursdays of that year.
TEST(IsoWeek, EveryDayByItsThursday) {
    std::int64_t monday = FIRST_DAY; // of the week at hand
    int year = 1, week = 0, wrong = INT_MAX;
    Date thursday = FIRST_DATE;
    for (int i = 0; i < 3; ++i)
        step(thursday);
    for_each_day([&](std::int64_t number, const Date &) {
        if ((number - FIRST_DAY) % 7 == 0) {
            monday = number;
            if (number != FIRST_DAY)
                for (int i = 0; i < 7; ++i)
                    step(thursday);
            week = thursday.year == year ? week + 1 : 1;
            year = static_cast<int>(thursday.year);
        }
        const IsoDay expected = {year, week, static_cast<int>(number - monday) + 1};
        if (iso_day(static_cast<CS_INT>(number)) != expected)
            wrong = std::min(wrong, static_cast<int>(number));
    });
    EXPECT_EQ(wrong, INT_MAX);
}

TEST(IsoWeek, KnownDays) {
    EXPECT_EQ(iso_day(day_of(2021, 1, 1)), (IsoDay{2020, 53, 5}));
    EXPECT_EQ(iso_day(day_of(2018, 12, 31)), (IsoDay{2019, 1, 1}));
    EXPECT_EQ(iso_day(day_of(2017, 1, 1)), (IsoDay{2016, 52, 7}));
    EXPECT_EQ(iso_day(day_of(2020, 12, 31)), (IsoDay{2020, 53, 4}));
    EXPECT_EQ(iso_day(day_of(2022, 1, 2)), (IsoDay{2021, 52, 7}));
    EXPECT_EQ(iso_day(0), (IsoDay{1900, 1, 1}));
    EXPECT_EQ(iso_day(-693595), (IsoDay{1, 1, 1}));
    EXPECT_EQ(iso_day(2958463), (IsoDay{9999, 52, 5}));
}

// ---- Times ----

TEST(DatePart, TimesOfDay) {
    Draw draw(61);
    for (int i = 0; i < 100000; ++i) {
        const CS_INT day = draw.day(), ticks = draw.ticks();
        ASSERT_EQ(part_of(6, day, ticks), ticks / 300 / 60 / 60);
        ASSERT_EQ(part_of(7, day, ticks), ticks / 300 / 60 % 60);
        ASSERT_EQ(part_of(8, day, ticks), ticks / 300 % 60);
        ASSERT_EQ(part_of(9, day, ticks), ticks % 300 * 1000 / 300);
        ASSERT_EQ(part_of(14, day, ticks), 0);
        const CS_UBIGINT time = draw.micros_of_day();
        const CS_BIGDATETIME value = midnight(day) + time;
        ASSERT_EQ(big_part_of(6, value), static_cast<int>(time / 1000000 / 60 / 60));
        ASSERT_EQ(big_part_of(7, value), static_cast<int>(time / 1000000 / 60 % 60));
        ASSERT_EQ(big_part_of(8, value), static_cast<int>(time / 1000000 % 60));
        ASSERT_EQ(big_part_of(9, value), static_cast<int>(time / 1000 % 1000));
        ASSERT_EQ(big_part_of(14, value), static_cast<int>(time % 1000000));
    }
}

TEST(DatePart, MicrosecondOfADatetimeIsZero) {
    EXPECT_EQ(part_of(DATEPART_MICROSECOND, 0, 299), 0);
    EXPECT_EQ(part_of(DATEPART_MILLISECOND, 0, 299), 996);
    EXPECT_EQ(big_part_of(DATEPART_MICROSECOND, midnight(0) + 999999), 999999);
    EXPECT_EQ(big_part_of(DATEPART_MILLISECOND, midnight(0) + 999999), 999);
}

TEST(DatePart, PublicFormIsTheSame) {
    Draw draw(62);
    for (int i = 0; i < 2000; ++i) {
        CS_DATETIME value = {draw.day(), draw.ticks()};
        for (int part = FIRST_PART; part <= LAST_PART; ++part)
            for (int firstday = 1; firstday <= 7; ++firstday)
                ASSERT_EQ(com_datepart(part, &value, firstday), com__datepart(part, &value, firstday)) << part;
    }
}

TEST(DatePart, LeavesTheValue) {
    for (int part = FIRST_PART; part <= LAST_PART; ++part) {
        CS_DATETIME value = {1234, 5678};
        CS_BIGDATETIME big = 9876543210123456;
        com__datepart(part, &value, 1);
        com__bigdatepart(part, &big, 1);
        EXPECT_EQ(value.dtdays, 1234);
        EXPECT_EQ(value.dttime, 5678);
        EXPECT_EQ(big, 9876543210123456u);
    }
}

// ---- Records ----

// A record of 2021-03-04 05:06:07.089012, in which milliseconds and fraction differ.
CS_DATEREC odd_record() {
    CS_DATEREC record = record_of_date(2021, 2, 4);
    record.datedyear = 63;
    record.datedweek = 4;
    record.datehour = 5;
    record.dateminute = 6;
    record.datesecond = 7;
    record.datemsecond = 123;
    record.datesecfrac = 89012;
    record.datesecprec = 1000000;
    return record;
}

TEST(DaterecPart, EachPartOfARecord) {
    const CS_INT day = day_of(2021, 3, 4);
    const int expected[] = {2021, 1, 3, 5, 4, 63, 5, 6, 7, 123, 10, 2021, 9, 4, 0};
    for (int part = FIRST_PART; part <= LAST_PART; ++part) {
        CS_DATEREC record = odd_record();
        EXPECT_EQ(com__daterecpart(part, &record, 1, day, CS_DATETIME_TYPE), expected[part]) << part;
        EXPECT_EQ(fields_of(record), fields_of(odd_record()));
    }
}

TEST(DaterecPart, FractionCountsForBigTypesOnly) {
    CS_DATEREC record = odd_record();
    for (int type = -1; type <= 45; ++type) {
        const bool big = type == CS_BIGDATETIME_TYPE || type == CS_BIGTIME_TYPE;
        EXPECT_EQ(com__daterecpart(9, &record, 1, 0, type), big ? 89 : 123) << type;
        EXPECT_EQ(com__daterecpart(14, &record, 1, 0, type), big ? 89012 : 0) << type;
    }
}

TEST(DaterecPart, DaysFarOutsideTheCalendarHaveParts) {
    Draw draw(63);
    for (int i = 0; i < 20000; ++i) {
        const CS_INT day = draw.any_day();
        const Date date = crack_by_loops(day);
        for (const int part : {0, 1, 2, 4, 5, 13})
            ASSERT_EQ(part_of(part, day), plain_part(part, date)) << part << ' ' << day;
        ASSERT_EQ(part_of(3, day, 0, 1), date.weekday + 1) << day;
        if (day > LAST_DAY) {
            const Date thursday = crack_by_loops(std::int64_t(day) - (date.weekday + 6) % 7 + 3);
            ASSERT_EQ(part_of(11, day), thursday.year) << day;
            ASSERT_EQ(part_of(12, day), (thursday.day_of_year - 1) / 7 + 1) << day;
        }
        const int week = part_of(10, day);
        ASSERT_TRUE(week >= 1 && week <= 54) << day;
    }
}

// ---- Names ----

char JANUARY[] = "January", FEBRUARY[] = "February", MARCH[] = "March", APRIL[] = "April", MAY[] = "May",
     JUNE[] = "June", JULY[] = "July", AUGUST[] = "August", SEPTEMBER[] = "September", OCTOBER[] = "October",
     NOVEMBER[] = "November", DECEMBER[] = "December";
char *MONTHS[] = {JANUARY, FEBRUARY, MARCH, APRIL, MAY, JUNE, JULY, AUGUST, SEPTEMBER, OCTOBER, NOVEMBER, DECEMBER};
char SUNDAY[] = "Sunday", MONDAY[] = "Monday", TUESDAY[] = "Tuesday", WEDNESDAY[] = "Wednesday",
     THURSDAY[] = "Thursday", FRIDAY[] = "Friday", SATURDAY[] = "Saturday";
char *WEEKDAYS[] = {SUNDAY, MONDAY, TUESDAY, WEDNESDAY, THURSDAY, FRIDAY, SATURDAY};

// Text in a room that shows each byte that was written.
class NameRoom {
public:
    NameRoom() { std::memset(bytes_, FILL, sizeof bytes_); }
    char *at() { return bytes_; }
    // The text, if exactly `length` bytes were written.
    std::string text(int length) const {
        const std::string_view all(bytes_, sizeof bytes_);
        const std::size_t end = all.find_last_not_of(FILL) + 1;
        return end == static_cast<std::size_t>(length)
                   ? std::string(all.substr(0, end))
                   : "length " + std::to_string(length) + " of " + std::string(all.substr(0, end));
    }

private:
    static constexpr char FILL = '\x7F';
    char bytes_[64];
};

std::string name_of(int part, CS_INT day, CS_INT ticks = 0, char **months = MONTHS, char **days = WEEKDAYS) {
    CS_DATETIME value = {day, ticks};
    NameRoom room, other;
    const std::string text = room.text(com__datename(part, &value, room.at(), months, days));
    EXPECT_EQ(other.text(com_datename(part, &value, other.at(), months, days)), text);
    return text;
}

std::string big_name_of(int part, CS_BIGDATETIME value, char **months = MONTHS, char **days = WEEKDAYS) {
    NameRoom room;
    return room.text(com__bigdatename(part, &value, room.at(), months, days));
}

std::string name_of_value(int part, int value, int day = 0, char **months = MONTHS, char **days = WEEKDAYS) {
    NameRoom room;
    return room.text(com__datenameval(part, room.at(), months, days, value, day));
}

// What "%d" prints, or a star where it is too long.
std::string number(int value, int width) {
    const std::string text = std::to_string(value);
    return text.size() > static_cast<std::size_t>(width) ? "*" : text;
}

TEST(DateName, EveryPartOfADay) {
    const CS_INT day = day_of(2021, 1, 1);
    const CS_INT ticks = (13 * 3600 + 4 * 60 + 59) * 300 + 299;
    const char *expected[] = {"2021", "1",   "January", "Friday", "1",  "1",      "13", "4",
                              "59",   "996", "1",       "2020",   "53", "Friday", "0"};
    for (int part = FIRST_PART; part <= LAST_PART; ++part)
        EXPECT_EQ(name_of(part, day, ticks), expected[part]) << part;
    const char *big[] = {"2021", "1",   "January", "Friday", "1",  "1",      "13",    "4",
                         "59",   "987", "1",       "2020",   "53", "Friday", "987654"};
    const CS_BIGDATETIME value = midnight(day) + (13 * 3600 + 4 * 60 + 59) * 1000000ull + 987654;
    for (int part = FIRST_PART; part <= LAST_PART; ++part)
        EXPECT_EQ(big_name_of(part, value), big[part]) << part;
}

TEST(DateName, RandomDaysByTheirParts) {
    Draw draw(64);
    for (int i = 0; i < 20000; ++i) {
        const CS_INT day = draw.day(), ticks = draw.ticks();
        const CS_BIGDATETIME value = midnight(day) + draw.micros_of_day();
        const Date date = crack_by_loops(day);
        for (int part = FIRST_PART; part <= LAST_PART; ++part) {
            if (part == DATEPART_MONTH) {
                ASSERT_EQ(name_of(part, day, ticks), MONTHS[date.month]);
                ASSERT_EQ(big_name_of(part, value), MONTHS[date.month]);
            } else if (part == DATEPART_WEEKDAY || part == DATEPART_ISOWEEKDAY) {
                ASSERT_EQ(name_of(part, day, ticks), WEEKDAYS[date.weekday]);
                ASSERT_EQ(big_name_of(part, value), WEEKDAYS[date.weekday]);
            } else {
                const int width = part == DATEPART_MICROSECOND ? 6 : 4;
                ASSERT_EQ(name_of(part, day, ticks), number(part_of(part, day, ticks), width)) << part;
                ASSERT_EQ(big_name_of(part, value), number(big_part_of(part, value), width)) << part;
            }
        }
    }
}

TEST(DateName, NumbersThatAreTooLongAreAStar) {
    for (const int part : {0, 1, 4, 5, 6, 7, 8, 9, 10, 11, 12}) {
        EXPECT_EQ(name_of_value(part, 9999), "9999");
        EXPECT_EQ(name_of_value(part, 10000), "*");
        EXPECT_EQ(name_of_value(part, -999), "-999");
        EXPECT_EQ(name_of_value(part, -1000), "*");
        EXPECT_EQ(name_of_value(part, INT_MIN), "*");
        EXPECT_EQ(name_of_value(part, 0), "0");
    }
    EXPECT_EQ(name_of_value(14, 999999), "999999");
    EXPECT_EQ(name_of_value(14, 1000000), "*");
    EXPECT_EQ(name_of_value(14, INT_MAX), "*");
    EXPECT_EQ(name_of(DATEPART_YEAR, 2958464), "*"); // the year 10000
    EXPECT_EQ(name_of(DATEPART_ISOYEAR, 2958464 + 10), "*");
}

TEST(DateName, MonthsByValue) {
    for (int month = 1; month <= 12; ++month)
        for (const int day : {INT_MIN, 0, 12345, INT_MAX})
            EXPECT_EQ(name_of_value(2, month, day), MONTHS[month - 1]);
}

TEST(DateName, WeekdaysGoByTheDayAndNotByTheValue) {
    for (const int part : {3, 13})
        for (const int value : {INT_MIN, 0, 1, 7, INT_MAX}) {
            for (int day = -20; day <= 20; ++day)
                EXPECT_EQ(name_of_value(part, value, day), WEEKDAYS[weekday_of(day)]) << day;
            for (const int day : {INT_MIN, -693602, -693597, -693596, -693595, 2958463, INT_MAX})
                EXPECT_EQ(name_of_value(part, value, day), WEEKDAYS[weekday_of(day)]) << day;
        }
    EXPECT_EQ(name_of(3, 0), "Monday");
    EXPECT_EQ(name_of(13, 0), "Monday");
    EXPECT_EQ(name_of(3, -1), "Sunday");
    EXPECT_EQ(name_of(13, -1), "Sunday");
}

TEST(DateName, NamesEndWithThirtyBytes) {
    std::string names[3] = {std::string(29, 'a'), std::string(30, 'b'), std::string(40, 'c')};
    char *list[12];
    for (int i = 0; i < 12; ++i)
        list[i] = names[i % 3].data();
    for (int i = 0; i < 7; ++i) {
        const std::string expected = names[i % 3].substr(0, 30);
        EXPECT_EQ(name_of_value(2, i + 1, 0, list, list), expected);
        EXPECT_EQ(name_of_value(3, 0, i - 1, list, list), expected);
        EXPECT_EQ(name_of_value(13, 0, i - 1, list, list), expected);
    }
    char empty[] = "";
    list[0] = empty;
    EXPECT_EQ(name_of_value(2, 1, 0, list, list), "");
}

TEST(DateName, NullListOfThePartIsZeroAndWritesNothing) {
    for (const int day : {0, 45349}) {
        EXPECT_EQ(name_of(2, day, 0, nullptr, WEEKDAYS), "");
        EXPECT_EQ(name_of(3, day, 0, MONTHS, nullptr), "");
        EXPECT_EQ(name_of(13, day, 0, MONTHS, nullptr), "");
        EXPECT_EQ(big_name_of(2, midnight(day), nullptr, WEEKDAYS), "");
        EXPECT_EQ(big_name_of(3, midnight(day), MONTHS, nullptr), "");
        EXPECT_EQ(big_name_of(13, midnight(day), MONTHS, nullptr), "");
    }
    EXPECT_EQ(name_of_value(2, 1, 0, nullptr, WEEKDAYS), "");
    EXPECT_EQ(name_of_value(3, 1, 0, MONTHS, nullptr), "");
    EXPECT_EQ(name_of_value(13, 1, 0, MONTHS, nullptr), "");
}

TEST(DateName, PartsWithoutAListNeedNone) {
    EXPECT_EQ(name_of(2, 0, 0, MONTHS, nullptr), "January");
    EXPECT_EQ(name_of(3, 0, 0, nullptr, WEEKDAYS), "Monday");
    for (const int part : {0, 1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 14})
        EXPECT_EQ(name_of_value(part, 42, 0, nullptr, nullptr), "42");
}

TEST(DateName, ValueOfAPartThatIsNoneIsZeroWithoutAReport) {
    for (const int part : NOT_A_PART)
        EXPECT_EQ(name_of_value(part, 1), "") << part;
}

// ---- Broken contracts ----

TEST(DatePartDeathTest, PartThatIsNone) {
    static CS_DATETIME value = {0, 0};
    static CS_BIGDATETIME big = FIRST_BIG;
    static CS_DATEREC record = odd_record();
    static char text[64];
    for (const int part : {-1, 15, INT_MIN}) {
        EXPECT_BOMB(com__daterecpart(part, &record, 1, 0, CS_DATETIME_TYPE), "datetime_part");
        EXPECT_BOMB(com__datepart(part, &value, 1), "datetime_part");
        EXPECT_BOMB(com__bigdatepart(part, &big, 1), "datetime_part");
    }
    EXPECT_BOMB(com_datepart(15, &value, 1), "datetime_part");
    EXPECT_BOMB(com__datename(15, &value, text, MONTHS, WEEKDAYS), "datetime_part");
    EXPECT_BOMB(com__bigdatename(15, &big, text, MONTHS, WEEKDAYS), "datetime_part");
    EXPECT_BOMB(com_datename(-1, &value, text, MONTHS, WEEKDAYS), "datetime_part");
}

TEST(DatePart, PartThatIsNoneIsMinus101WhereAssertionsReturn) {
    for (const int part : NOT_A_PART) {
        CS_DATEREC record = odd_record();
        const support::ReturningAssertions returning;
        EXPECT_EQ(com__daterecpart(part, &record, 1, 0, CS_DATETIME_TYPE), -101);
        EXPECT_EQ(com__daterecpart(part, &record, 1, 0, CS_BIGDATETIME_TYPE), -101);
        EXPECT_EQ(part_of(part, 0), -101);
        EXPECT_EQ(big_part_of(part, FIRST_BIG), -101);
        EXPECT_EQ(returning.count(), 4);
        EXPECT_EQ(fields_of(record), fields_of(odd_record()));
    }
}

TEST(DateName, PartThatIsNoneHasNoNameWhereAssertionsReturn) {
    for (const int part : NOT_A_PART) {
        const support::ReturningAssertions returning;
        EXPECT_EQ(name_of(part, 0), ""); // by both forms
        EXPECT_EQ(big_name_of(part, FIRST_BIG), "");
        EXPECT_EQ(returning.count(), 3);
    }
}

} // namespace

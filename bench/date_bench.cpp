// Dates: day numbers to and from the calendar, text to value, value to text, and arithmetic by months.
//
// The moments of a row lie between 1753 and 9999 and count whole ticks. Each contender has them in its own form; what
// it makes of them is compared with the calendar fields that they were made from.
#include "contest.h"
#include "data.h"

#include <dlxcomn/dlxcomn.h>

#define ONLY_C_LOCALE 1 // without its own names of AM and PM the date library does not read them

#include <absl/time/civil_time.h>
#include <date/date.h>
#include <fmt/chrono.h>
#include <fmt/compile.h>

// Both libraries want the name: as a type, and as a namespace.
#define date pgtypes_day
extern "C" {
#include <pgtypes.h>
#include <pgtypes_date.h>
#include <pgtypes_timestamp.h>
}
#undef date

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sstream>
#include <string>
#include <vector>

namespace bench {
namespace {

// ---- Moments --------------------------------------------------------------------------------------------------

constexpr std::int64_t MICROS_A_DAY = 86'400'000'000;
constexpr std::int64_t DAYS_0000_TO_1900 = 693'961;
constexpr std::int64_t DAYS_1900_TO_1970 = 25'567;
constexpr std::int64_t DAYS_1900_TO_2000 = 36'524;

bool is_leap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int length_of(int year, int month) {
    static constexpr int LENGTHS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return LENGTHS[month - 1] + (month == 2 && is_leap(year) ? 1 : 0);
}

struct Moment {
    int year, month, day, hour, minute, second, ticks;

    std::int64_t days() const { // since 1900-01-01
        const std::int64_t past = year - 1;
        std::int64_t result = past * 365 + past / 4 - past / 100 + past / 400 - 693'595;
        for (int earlier = 1; earlier < month; ++earlier)
            result += length_of(year, earlier);
        return result + day - 1;
    }
    int millis() const { return ticks * 10 / 3; }
    std::int64_t seconds_of_day() const { return (hour * 60 + minute) * 60 + second; }
    std::int64_t micros_of_day() const { return seconds_of_day() * 1'000'000 + millis() * 1000; }

    CS_DATETIME datetime() const {
        return {static_cast<CS_INT>(days()), static_cast<CS_INT>(seconds_of_day() * 300 + ticks)};
    }
    CS_BIGDATETIME bigdatetime() const {
        return static_cast<CS_BIGDATETIME>((days() + DAYS_0000_TO_1900) * MICROS_A_DAY + micros_of_day());
    }
    timestamp pgtypes() const { return (days() - DAYS_1900_TO_2000) * MICROS_A_DAY + micros_of_day(); }
    std::time_t unix_time() const { return (days() - DAYS_1900_TO_1970) * 86'400 + seconds_of_day(); }
    std::tm broken_down() const {
        std::tm result = {};
        result.tm_year = year - 1900;
        result.tm_mon = month - 1;
        result.tm_mday = day;
        result.tm_hour = hour;
        result.tm_min = minute;
        result.tm_sec = second;
        return result;
    }
    absl::CivilSecond civil() const { return absl::CivilSecond(year, month, day, hour, minute, second); }

    bool is_day(std::int64_t of_year, std::int64_t of_month, std::int64_t of_day) const {
        return of_year == year && of_month == month && of_day == day;
    }
    bool is_second(const std::tm &tm) const {
        return is_day(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday) && tm.tm_hour == hour && tm.tm_min == minute &&
               tm.tm_sec == second;
    }
};

using Moments = std::vector<Moment>;

Moments moments(std::uint64_t seed) {
    Random random(seed);
    Moments values(VALUES);
    const auto number = [&random](int bound) { return static_cast<int>(below(random, static_cast<unsigned>(bound))); };
    for (Moment &value : values) {
        value.year = 1753 + number(8247);
        value.month = 1 + number(12);
        value.day = 1 + number(length_of(value.year, value.month));
        value.hour = number(24);
        value.minute = number(60);
        value.second = number(60);
        value.ticks = number(300);
    }
    return values;
}

template <class Convert>
auto all(const Moments &moments, Convert convert) {
    std::vector<decltype(convert(moments[0]))> result;
    result.reserve(moments.size());
    for (const Moment &moment : moments)
        result.push_back(convert(moment));
    return result;
}

// A contender that makes Out of In, each its own form of a moment.
template <class In, class Out>
class Maker {
public:
    template <class Convert>
    Maker(const Moments &moments, Convert convert) : moments_(moments), in(all(moments, convert)) {}

protected:
    const Moment &moment(std::size_t i) const { return moments_[i]; }

private:
    const Moments &moments_;

protected:
    std::vector<In> in;
    Out out = {};
};

// ---- A day number into the calendar ---------------------------------------------------------------------------

struct LibraryCrack : Maker<CS_DATETIME, CS_DATEREC> {
    explicit LibraryCrack(const Moments &data) : Maker(data, [](const Moment &m) { return m.datetime(); }) {}
    void work(std::size_t i) { com__datecrack(&in[i], &out); }
    bool right(std::size_t i) const { return moment(i).is_day(out.dateyear, out.datemonth + 1, out.datedmonth); }
};

struct LibraryBigCrack : Maker<CS_BIGDATETIME, CS_DATEREC> {
    explicit LibraryBigCrack(const Moments &data) : Maker(data, [](const Moment &m) { return m.bigdatetime(); }) {}
    void work(std::size_t i) { com__bigdatecrack(&in[i], &out); }
    bool right(std::size_t i) const { return moment(i).is_day(out.dateyear, out.datemonth + 1, out.datedmonth); }
};

// The calendars of <chrono> and of the library that it was made from, which have the same interface.
#define CHRONO_CALENDAR(name, library)                                                                                 \
    struct name {                                                                                                      \
        using Day = library::sys_days;                                                                                 \
        using Date = library::year_month_day;                                                                          \
        static Day floor(std::chrono::sys_time<std::chrono::microseconds> time) {                                      \
            return library::floor<library::days>(time);                                                                \
        }                                                                                                              \
        static Day day(std::int64_t since_1970) { return Day(library::days(since_1970)); }                             \
        static Date date(const Moment &moment) { return library::year(moment.year) / moment.month / moment.day; }      \
    }
CHRONO_CALENDAR(StandardCalendar, std::chrono);
CHRONO_CALENDAR(HinnantCalendar, ::date);
#undef CHRONO_CALENDAR

template <class Date>
bool is_date(const Moment &moment, const Date &date) {
    return moment.is_day(static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                         static_cast<unsigned>(date.day()));
}

std::chrono::sys_time<std::chrono::microseconds> system_time(const Moment &moment) {
    return std::chrono::sys_time<std::chrono::microseconds>(
        std::chrono::microseconds((moment.days() - DAYS_1900_TO_1970) * MICROS_A_DAY + moment.micros_of_day()));
}

template <class Calendar>
struct ChronoCrack : Maker<typename Calendar::Day, typename Calendar::Date> {
    explicit ChronoCrack(const Moments &data)
        : ChronoCrack::Maker(data, [](const Moment &m) { return Calendar::day(m.days() - DAYS_1900_TO_1970); }) {}
    void work(std::size_t i) { this->out = typename Calendar::Date(this->in[i]); }
    bool right(std::size_t i) const { return is_date(this->moment(i), this->out); }
};

template <class Calendar>
struct ChronoBigCrack : Maker<std::chrono::sys_time<std::chrono::microseconds>, typename Calendar::Date> {
    explicit ChronoBigCrack(const Moments &data) : ChronoBigCrack::Maker(data, system_time) {}
    void work(std::size_t i) { this->out = typename Calendar::Date(Calendar::floor(this->in[i])); }
    bool right(std::size_t i) const { return is_date(this->moment(i), this->out); }
};

struct Mdy {
    int fields[3];
    bool is_day_of(const Moment &moment) const { return moment.is_day(fields[2], fields[0], fields[1]); }
};

struct PgtypesCrack : Maker<pgtypes_day, Mdy> {
    explicit PgtypesCrack(const Moments &data)
        : Maker(data, [](const Moment &m) { return m.days() - DAYS_1900_TO_2000; }) {}
    void work(std::size_t i) { PGTYPESdate_julmdy(in[i], out.fields); }
    bool right(std::size_t i) const { return out.is_day_of(moment(i)); }
};

struct PgtypesBigCrack : Maker<timestamp, Mdy> {
    explicit PgtypesBigCrack(const Moments &data) : Maker(data, [](const Moment &m) { return m.pgtypes(); }) {}
    void work(std::size_t i) { // its own PGTYPESdate_from_timestamp goes wrong before the year 2000
        const timestamp rest = in[i] % MICROS_A_DAY;
        PGTYPESdate_julmdy(in[i] / MICROS_A_DAY - (rest < 0 ? 1 : 0), out.fields);
    }
    bool right(std::size_t i) const { return out.is_day_of(moment(i)); }
};

struct GlibcCrack : Maker<std::time_t, std::tm> {
    explicit GlibcCrack(const Moments &data) : Maker(data, [](const Moment &m) { return m.unix_time(); }) {}
    void work(std::size_t i) { gmtime_r(&in[i], &out); }
    bool right(std::size_t i) const { return moment(i).is_second(out); }
};

// ---- The calendar into a day number ---------------------------------------------------------------------------

struct LibraryMake : Maker<CS_DATEREC, CS_DATETIME> {
    explicit LibraryMake(const Moments &data)
        : Maker(data, [](const Moment &m) {
              CS_DATEREC record = {};
              record.dateyear = m.year;
              record.datemonth = m.month - 1;
              record.datedmonth = m.day;
              return record;
          }) {}
    void work(std::size_t i) { com__datemake(&out, &in[i]); }
    bool right(std::size_t i) const { return out.dtdays == moment(i).days(); }
};

template <class Calendar>
struct ChronoMake : Maker<typename Calendar::Date, typename Calendar::Day> {
    explicit ChronoMake(const Moments &data) : ChronoMake::Maker(data, Calendar::date) {}
    void work(std::size_t i) { this->out = typename Calendar::Day(this->in[i]); }
    bool right(std::size_t i) const {
        return this->out.time_since_epoch().count() == this->moment(i).days() - DAYS_1900_TO_1970;
    }
};

struct PgtypesMake : Maker<Mdy, pgtypes_day> {
    explicit PgtypesMake(const Moments &data)
        : Maker(data, [](const Moment &m) {
              return Mdy{{m.month, m.day, m.year}};
          }) {}
    void work(std::size_t i) { PGTYPESdate_mdyjul(in[i].fields, &out); }
    bool right(std::size_t i) const { return out == moment(i).days() - DAYS_1900_TO_2000; }
};

struct GlibcMake : Maker<std::tm, std::time_t> {
    explicit GlibcMake(const Moments &data) : Maker(data, [](const Moment &m) { return m.broken_down(); }) {}
    void work(std::size_t i) { out = timegm(&in[i]); }
    bool right(std::size_t i) const { return out == moment(i).unix_time(); }
};

// ---- Text -----------------------------------------------------------------------------------------------------

constexpr const char *MONTHS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

template <class... Values>
std::string formatted(const char *format, Values... values) {
    char text[80];
    return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, format, values...))};
}

int clock_hour(const Moment &m) { return m.hour % 12 == 0 ? 12 : m.hour % 12; }
const char *meridian(const Moment &m) { return m.hour < 12 ? "AM" : "PM"; }

// ---- Text to value --------------------------------------------------------------------------------------------

// 2003-01-02 10:30:15.123
struct Iso {
    static constexpr const char *STRPTIME = "%Y-%m-%d %H:%M:%S"; // which leaves the fraction
    static constexpr const char *DATE = "%F %T";
    using Unit = std::chrono::milliseconds;
    static std::string text(const Moment &m) {
        return formatted("%d-%02d-%02d %02d:%02d:%02d.%03d", m.year, m.month, m.day, m.hour, m.minute, m.second,
                         m.millis());
    }
    static Moment rounded(const Moment &m) { return m; }
};

// Jan 2 2003 10:30AM
struct Usual {
    static constexpr const char *STRPTIME = "%b %d %Y %I:%M%p";
    static constexpr const char *DATE = "%b %d %Y %I:%M%p";
    using Unit = std::chrono::minutes;
    static std::string text(const Moment &m) {
        return formatted("%s %d %d %d:%02d%s", MONTHS[m.month - 1], m.day, m.year, clock_hour(m), m.minute,
                         meridian(m));
    }
    static Moment rounded(const Moment &m) { return {m.year, m.month, m.day, m.hour, m.minute, 0, 0}; }
};

template <class Form>
struct LibraryParse : Maker<std::string, CS_DATETIME> {
    explicit LibraryParse(const Moments &data) : Maker(data, Form::text) {}
    void work(std::size_t i) {
        CS_BOOL truncated;
        com__datefromchar_mb(&out, in[i].data(), static_cast<int>(in[i].size()), 0, DATEORDER_MDY, com__get_months(),
                             com__get_shortmonths(), nullptr, &truncated);
    }
    bool right(std::size_t i) const {
        const CS_DATETIME expected = Form::rounded(moment(i)).datetime();
        return out.dtdays == expected.dtdays && out.dttime == expected.dttime;
    }
};

template <class Form>
struct PgtypesParse : Maker<std::string, timestamp> {
    explicit PgtypesParse(const Moments &data) : Maker(data, Form::text) {}
    void work(std::size_t i) { out = PGTYPEStimestamp_from_asc(in[i].data(), nullptr); }
    bool right(std::size_t i) const { return out == Form::rounded(moment(i)).pgtypes(); }
};

template <class Form>
struct Strptime : Maker<std::string, std::tm> {
    explicit Strptime(const Moments &data) : Maker(data, Form::text) {}
    void work(std::size_t i) { strptime(in[i].c_str(), Form::STRPTIME, &out); }
    bool right(std::size_t i) const { return Form::rounded(moment(i)).is_second(out); }
};

template <class Form>
struct HinnantParse : Maker<std::string, ::date::sys_time<typename Form::Unit>> {
    explicit HinnantParse(const Moments &data) : HinnantParse::Maker(data, Form::text) {}
    void work(std::size_t i) {
        stream.clear();
        stream.str(this->in[i]);
        stream >> ::date::parse(Form::DATE, this->out);
    }
    bool right(std::size_t i) const { return this->out == system_time(Form::rounded(this->moment(i))); }
    std::istringstream stream;
};

// Reads one form only, with a T and without a fraction.
struct AbslParse : Maker<std::string, absl::CivilSecond> {
    explicit AbslParse(const Moments &data)
        : Maker(data, [](const Moment &m) {
              return formatted("%d-%02d-%02dT%02d:%02d:%02d", m.year, m.month, m.day, m.hour, m.minute, m.second);
          }) {}
    void work(std::size_t i) { absl::ParseCivilTime(in[i], &out); }
    bool right(std::size_t i) const { return out == moment(i).civil(); }
};

// ---- Value to text --------------------------------------------------------------------------------------------

struct Text {
    char bytes[80];
    std::size_t length;
    bool is(const std::string &expected) const { return expected == std::string_view(bytes, length); }
};

void put_digits(char *end, int value, int count) {
    for (; count > 0; --count, value /= 10)
        *--end = static_cast<char>('0' + value % 10);
}

// A moment as strftime and fmt take it.
struct Broken {
    std::tm tm;
    int millis;
};

// Each style for the contenders that have a format: strftime writes what a struct tm holds and leaves the rest to
// be written by hand; fmt has no hour of a 12-hour clock but with a zero in front.
struct Style0 {
    static constexpr int STYLE = 0;
    static std::string expected(const Moment &m, const char *hour = "%2d") {
        return formatted("%s %2d %d ", MONTHS[m.month - 1], m.day, m.year) + formatted(hour, clock_hour(m)) +
               formatted(":%02d%s", m.minute, meridian(m));
    }
    static void strftime(Text &out, const Broken &value) {
        out.length = std::strftime(out.bytes, sizeof out.bytes, "%b %e %Y %l:%M%p", &value.tm);
    }
    static char *fmt(char *to, const Broken &value) {
        return fmt::format_to(to, FMT_COMPILE("{:%b %e %Y %I:%M%p}"), value.tm);
    }
};

struct Style23 {
    static constexpr int STYLE = 23;
    static std::string expected(const Moment &m, const char * = nullptr) {
        return formatted("%d-%02d-%02dT%02d:%02d:%02d", m.year, m.month, m.day, m.hour, m.minute, m.second);
    }
    static void strftime(Text &out, const Broken &value) {
        out.length = std::strftime(out.bytes, sizeof out.bytes, "%Y-%m-%dT%H:%M:%S", &value.tm);
    }
    static char *fmt(char *to, const Broken &value) {
        return fmt::format_to(to, FMT_COMPILE("{:%Y-%m-%dT%H:%M:%S}"), value.tm);
    }
};

struct Style109 {
    static constexpr int STYLE = 109;
    static std::string expected(const Moment &m, const char *hour = "%2d") {
        return formatted("%s %2d %d ", MONTHS[m.month - 1], m.day, m.year) + formatted(hour, clock_hour(m)) +
               formatted(":%02d:%02d:%03d%s", m.minute, m.second, m.millis(), meridian(m));
    }
    static void strftime(Text &out, const Broken &value) {
        const std::size_t length = std::strftime(out.bytes, sizeof out.bytes, "%b %e %Y %l:%M:%S:...%p", &value.tm);
        put_digits(out.bytes + length - 2, value.millis, 3);
        out.length = length;
    }
    static char *fmt(char *to, const Broken &value) {
        return fmt::format_to(to, FMT_COMPILE("{:%b %e %Y %I:%M:%S}:{:03}{:%p}"), value.tm, value.millis, value.tm);
    }
};

struct Style140 {
    static constexpr int STYLE = 140;
    static std::string expected(const Moment &m, const char * = nullptr) {
        return formatted("%d-%02d-%02d %02d:%02d:%02d.%03d000", m.year, m.month, m.day, m.hour, m.minute, m.second,
                         m.millis());
    }
    static void strftime(Text &out, const Broken &value) {
        const std::size_t length = std::strftime(out.bytes, sizeof out.bytes, "%Y-%m-%d %H:%M:%S.", &value.tm);
        put_digits(out.bytes + length + 6, value.millis * 1000, 6);
        out.length = length + 6;
    }
    static char *fmt(char *to, const Broken &value) {
        return fmt::format_to(to, FMT_COMPILE("{:%Y-%m-%d %H:%M:%S}.{:06}"), value.tm, value.millis * 1000);
    }
};

template <class Style>
struct LibraryPrint : Maker<CS_DATETIME, Text> {
    explicit LibraryPrint(const Moments &data) : Maker(data, [](const Moment &m) { return m.datetime(); }) {}
    void work(std::size_t i) {
        out.length = static_cast<std::size_t>(
            com__datetochar(&in[i], out.bytes, sizeof out.bytes, Style::STYLE, com__get_shortmonths()));
    }
    bool right(std::size_t i) const { return out.is(Style::expected(moment(i))); }
};

Broken broken(const Moment &moment) {
    Broken result = {moment.broken_down(), moment.millis()};
    timegm(&result.tm);
    return result;
}

template <class Style>
struct Strftime : Maker<Broken, Text> {
    explicit Strftime(const Moments &data) : Maker(data, broken) {}
    void work(std::size_t i) { Style::strftime(out, in[i]); }
    bool right(std::size_t i) const { return out.is(Style::expected(moment(i))); }
};

// From the seconds, as the library starts from days and ticks.
template <class Style>
struct GmtimeStrftime : Maker<Moment, Text> {
    explicit GmtimeStrftime(const Moments &data)
        : Maker(data, [](const Moment &m) { return m; }),
          times(all(data, [](const Moment &m) { return m.unix_time(); })) {}
    void work(std::size_t i) {
        Broken value;
        gmtime_r(&times[i], &value.tm);
        value.millis = in[i].millis();
        Style::strftime(out, value);
    }
    bool right(std::size_t i) const { return out.is(Style::expected(moment(i))); }
    std::vector<std::time_t> times;
};

template <class Style>
struct FmtPrint : Maker<Broken, Text> {
    explicit FmtPrint(const Moments &data) : Maker(data, broken) {}
    void work(std::size_t i) { out.length = static_cast<std::size_t>(Style::fmt(out.bytes, in[i]) - out.bytes); }
    bool right(std::size_t i) const { return out.is(Style::expected(moment(i), "%02d")); }
};

// Has one form, which is close to that of style 140, and allocates it.
struct PgtypesPrint : Maker<timestamp, std::string> {
    explicit PgtypesPrint(const Moments &data) : Maker(data, [](const Moment &m) { return m.pgtypes(); }) {}
    void work(std::size_t i) {
        char *text = PGTYPEStimestamp_to_asc(in[i]);
        benchmark::DoNotOptimize(text);
        first = text[0];
        PGTYPESchar_free(text);
    }
    bool right(std::size_t i) const {
        char *text = PGTYPEStimestamp_to_asc(in[i]);
        std::string expected = Iso::text(moment(i));
        if (moment(i).millis() == 0)
            expected.resize(expected.size() - 4);
        else if (expected.back() == '0') // two digits of a fraction are the fewest that it shows
            expected.pop_back();
        const bool is_right = text == expected && first == expected[0];
        PGTYPESchar_free(text);
        return is_right;
    }
    char first = 0;
};

// Has the form of style 23 alone.
struct AbslPrint : Maker<absl::CivilSecond, std::string> {
    explicit AbslPrint(const Moments &data) : Maker(data, [](const Moment &m) { return m.civil(); }) {}
    void work(std::size_t i) { out = absl::FormatCivilTime(in[i]); }
    bool right(std::size_t i) const { return out == Style23::expected(moment(i)); }
};

// ---- Arithmetic by months -------------------------------------------------------------------------------------

// The months that are added to the i-th value: years back and forth, that no value leaves its range.
int months_to_add(const Moment &moment, std::size_t i) {
    const int months = static_cast<int>(i * 7 % 401) - 200;
    return moment.year < 1800 ? 200 + months : moment.year > 9900 ? months - 200 : months;
}

Moment moved(const Moment &moment, std::size_t i) {
    const int months = moment.year * 12 + moment.month - 1 + months_to_add(moment, i);
    Moment result = moment;
    result.year = months / 12;
    result.month = months % 12 + 1;
    result.day = std::min(moment.day, length_of(result.year, result.month));
    return result;
}

std::vector<int> all_months_to_add(const Moments &data) {
    std::vector<int> result;
    for (std::size_t i = 0; i < data.size(); ++i)
        result.push_back(months_to_add(data[i], i));
    return result;
}

struct LibraryAdd : Maker<CS_DATETIME, CS_DATETIME> {
    explicit LibraryAdd(const Moments &data)
        : Maker(data, [](const Moment &m) { return m.datetime(); }), months(all_months_to_add(data)) {}
    void work(std::size_t i) {
        out = in[i];
        com__date_add(DATEPART_MONTH, months[i], &out);
    }
    bool right(std::size_t i) const {
        const CS_DATETIME expected = moved(moment(i), i).datetime();
        return out.dtdays == expected.dtdays && out.dttime == expected.dttime;
    }
    std::vector<int> months;
};

// The day of the month that a civil day of that month can have: abseil itself goes on into the next month.
absl::CivilDay clamped(absl::CivilMonth month, int day) {
    const absl::CivilDay last = absl::CivilDay(month + 1) - 1;
    return std::min(absl::CivilDay(month) + (day - 1), last);
}

constexpr absl::CivilDay ABSL_1900(1900, 1, 1);

// From a day number to a day number, as the library does it.
struct AbslDaysAdd : Maker<std::int64_t, std::int64_t> {
    explicit AbslDaysAdd(const Moments &data)
        : Maker(data, [](const Moment &m) { return m.days(); }), months(all_months_to_add(data)) {}
    void work(std::size_t i) {
        const absl::CivilDay day = ABSL_1900 + in[i];
        out = clamped(absl::CivilMonth(day) + months[i], day.day()) - ABSL_1900;
    }
    bool right(std::size_t i) const { return out == moved(moment(i), i).days(); }
    std::vector<int> months;
};

// The calendar fields are the value, before and after.
struct AbslFieldsAdd : Maker<absl::CivilDay, absl::CivilDay> {
    explicit AbslFieldsAdd(const Moments &data)
        : Maker(data, [](const Moment &m) { return absl::CivilDay(m.year, m.month, m.day); }),
          months(all_months_to_add(data)) {}
    void work(std::size_t i) { out = clamped(absl::CivilMonth(in[i]) + months[i], in[i].day()); }
    bool right(std::size_t i) const { return moved(moment(i), i).is_day(out.year(), out.month(), out.day()); }
    std::vector<int> months;
};

// The second operand of a difference: the next moment of the row.
std::size_t other(std::size_t i) { return (i + 1) % VALUES; }

struct LibraryDiff : Maker<CS_DATETIME, CS_INT> {
    explicit LibraryDiff(const Moments &data) : Maker(data, [](const Moment &m) { return m.datetime(); }) {}
    void work(std::size_t i) { com__datediff(DATEPART_MONTH, &in[i], &in[other(i)], &out); }
    bool right(std::size_t i) const {
        const Moment &from = moment(i), &to = moment(other(i));
        return out == (to.year - from.year) * 12 + to.month - from.month;
    }
};

struct AbslDaysDiff : Maker<std::int64_t, std::int64_t> {
    explicit AbslDaysDiff(const Moments &data) : Maker(data, [](const Moment &m) { return m.days(); }) {}
    void work(std::size_t i) { out = absl::CivilMonth(ABSL_1900 + in[other(i)]) - absl::CivilMonth(ABSL_1900 + in[i]); }
    bool right(std::size_t i) const {
        const Moment &from = moment(i), &to = moment(other(i));
        return out == (to.year - from.year) * 12 + to.month - from.month;
    }
};

// ---- Rows -----------------------------------------------------------------------------------------------------

template <class Style>
void enter_print_row(const Moments &data) {
    const std::string row = "com__datetochar style " + std::to_string(Style::STYLE);
    enter<LibraryPrint<Style>>(row, LIBRARY, data);
    enter<Strftime<Style>>(row, "strftime", data);
    enter<GmtimeStrftime<Style>>(row, "gmtime_r, strftime", data);
    enter<FmtPrint<Style>>(row, "fmt", data);
    enter<PgtypesPrint>(row, "pgtypes", data);
    if (Style::STYLE == Style23::STYLE)
        enter<AbslPrint>(row, "absl", data);
}

template <class Form>
void enter_parse_row(const char *row, const Moments &data) {
    enter<LibraryParse<Form>>(row, LIBRARY, data);
    enter<PgtypesParse<Form>>(row, "pgtypes", data);
    enter<Strptime<Form>>(row, "strptime", data);
    enter<HinnantParse<Form>>(row, "Hinnant date", data);
}

} // namespace

void enter_date_rows() {
    static const Moments data = moments(80);
    enter<LibraryCrack>("com__datecrack", LIBRARY, data);
    enter<ChronoCrack<StandardCalendar>>("com__datecrack", "libstdc++", data);
    enter<ChronoCrack<HinnantCalendar>>("com__datecrack", "Hinnant date", data);
    enter<PgtypesCrack>("com__datecrack", "pgtypes", data);
    enter<GlibcCrack>("com__datecrack", "glibc", data);
    enter<LibraryBigCrack>("com__bigdatecrack", LIBRARY, data);
    enter<ChronoBigCrack<StandardCalendar>>("com__bigdatecrack", "libstdc++", data);
    enter<ChronoBigCrack<HinnantCalendar>>("com__bigdatecrack", "Hinnant date", data);
    enter<PgtypesBigCrack>("com__bigdatecrack", "pgtypes", data);
    enter<GlibcCrack>("com__bigdatecrack", "glibc", data);
    enter<LibraryMake>("com__datemake", LIBRARY, data);
    enter<ChronoMake<StandardCalendar>>("com__datemake", "libstdc++", data);
    enter<ChronoMake<HinnantCalendar>>("com__datemake", "Hinnant date", data);
    enter<PgtypesMake>("com__datemake", "pgtypes", data);
    enter<GlibcMake>("com__datemake", "glibc", data);

    enter_parse_row<Iso>("com__datefromchar_mb 2003-01-02 10:30:15.123", data);
    enter<AbslParse>("com__datefromchar_mb 2003-01-02 10:30:15.123", "absl", data);
    enter_parse_row<Usual>("com__datefromchar_mb Jan 2 2003 10:30AM", data);

    enter_print_row<Style0>(data);
    enter_print_row<Style23>(data);
    enter_print_row<Style109>(data);
    enter_print_row<Style140>(data);

    enter<LibraryAdd>("com__date_add months", LIBRARY, data);
    enter<AbslDaysAdd>("com__date_add months", "absl on day numbers", data);
    enter<AbslFieldsAdd>("com__date_add months", "absl on fields", data);
    enter<LibraryDiff>("com__datediff months", LIBRARY, data);
    enter<AbslDaysDiff>("com__datediff months", "absl on day numbers", data);
}

} // namespace bench

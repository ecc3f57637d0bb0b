// The reading of date texts again, written down one statement of its rules after the other: what the tests and the
// fuzz target compare with. It takes text, and shares nothing with the library but the types. A set is given by its
// record; null means iso_1.
#ifndef TESTS_SUPPORT_NAIVE_DATES_H
#define TESTS_SUPPORT_NAIVE_DATES_H

#include "support/naive_walk.h"

#include <dlxcomn/dlxcomn.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace support::naive {

// ---- Characters and words ----

struct DateCharacter {
    std::size_t bytes = 0; // to the next character
    bool cut = false;      // the text ends inside it
    int ascii = 0;         // the normalized code, 0 for none
    bool digit = false;
    bool identifier = false;
};

// The first character of a text that is not empty. A rule that looks at a second byte finds a zero behind the text.
inline DateCharacter date_character(std::string_view text, const CHAR_ATTRIB *set) {
    const CS_BYTE bytes[2] = {static_cast<CS_BYTE>(text[0]), static_cast<CS_BYTE>(text.size() > 1 ? text[1] : 0)};
    DateCharacter character;
    character.bytes = static_cast<std::size_t>(step(set, bytes));
    character.cut = character.bytes > text.size();
    character.ascii = to_ascii(set, bytes);
    character.digit = (entry(set, bytes).char_type & 0x04) != 0;
    character.identifier = (entry(set, bytes).char_lex & 0x01) != 0;
    return character;
}

// Normalized character by character; one with no normal form is copied as it stands. Nothing where the end cuts one.
inline std::optional<std::string> date_word(std::string_view text, const CHAR_ATTRIB *set) {
    std::string normal;
    while (!text.empty()) {
        const DateCharacter character = date_character(text, set);
        if (character.cut)
            return std::nullopt;
        if (character.ascii != 0)
            normal += static_cast<char>(character.ascii);
        else
            normal += text.substr(0, character.bytes);
        text.remove_prefix(character.bytes);
    }
    return normal;
}

inline int date_lookup(std::string_view word, const char *const *list, int count, const CHAR_ATTRIB *set) {
    if (word.size() > 30)
        return -1;
    const std::optional<std::string> wanted = date_word(word, set);
    for (int i = 0; wanted && i < count; ++i)
        if (std::strlen(list[i]) <= 30 && date_word(list[i], set) == wanted)
            return i;
    return -1;
}

// ---- Tokens ----

// How a text is to be read.
struct DateRules {
    int partonly = 0;
    int style = 0;
    int order = 1;
    const char *const *months = nullptr;
    const char *const *shortmonths = nullptr;
    const CHAR_ATTRIB *set = nullptr;
    int type = CS_DATETIME_TYPE;
};

struct DateToken {
    int token = DT_END;
    int length = 0;
    int value = 0;
    std::size_t taken = 0; // bytes of the text up to the token's end
};

inline DateToken date_token(std::string_view text, const DateRules &rules) {
    const auto at = [&](std::size_t position) { return date_character(text.substr(position), rules.set); };
    static constexpr const char *AMPM[] = {"AM", "PM"};
    std::size_t position = 0;
    while (position < text.size() && at(position).ascii == ' ' && !at(position).cut)
        position += at(position).bytes;
    if (position == text.size())
        return {DT_END, 0, 0, position};

    const DateCharacter first = at(position);
    if (first.cut)
        return {DT_ERROR, 0, 0, text.size()};
    const std::size_t behind = position + first.bytes;
    switch (first.ascii) {
    case '/':
    case '-':
        return {DT_SEP, 0, 0, behind};
    case '.':
        return {DT_SEP, 0, -1, behind};
    case ',':
        return {DT_COMMA, 0, 0, behind};
    case ':':
        return {DT_COLON, 0, 0, behind};
    case 'T':
    case 't':
        return {DT_T, 0, 0, behind};
    }

    if (first.digit) {
        int count = 0;
        int value = 0;
        bool all_have_digits = true;
        while (position < text.size() && at(position).digit && !at(position).cut) {
            const int ascii = at(position).ascii;
            if (ascii < '0' || ascii > '9')
                all_have_digits = false;
            else if (count < 8)
                value = 10 * value + (ascii - '0');
            ++count;
            position += at(position).bytes;
        }
        if (!all_have_digits || count == 7 || count > 8)
            return {DT_ERROR, 0, 0, position};
        return {count <= 3   ? DT_NUMBER
                : count == 4 ? DT_YEAR4
                : count == 5 ? DT_DIGITS5
                             : DT_DIGITS68,
                count, value, position};
    }

    if (first.identifier) {
        const std::size_t start = position;
        int characters = 0;
        while (position < text.size() && at(position).identifier && !at(position).cut) {
            position += at(position).bytes;
            ++characters;
        }
        const std::string_view word = text.substr(start, position - start);
        if (characters == 2) {
            const int half = date_lookup(word, AMPM, 2, rules.set);
            if (half >= 0)
                return {DT_AMPM, 0, half, position};
        }
        if (rules.months == nullptr || rules.shortmonths == nullptr)
            return {DT_ERROR, 0, 0, position};
        int month = date_lookup(word, rules.months, 12, rules.set);
        if (month < 0)
            month = date_lookup(word, rules.shortmonths, 12, rules.set);
        if (month < 0)
            return {DT_ERROR, 0, 0, position};
        return {DT_MONTH, 0, month, position};
    }
    return {DT_ERROR, 0, 0, behind};
}

// ---- Text to record ----

// 1 where the year is none.
inline int two_digit_year(int year) {
    if (year >= 0 && year <= 49)
        return 2000 + year;
    if (year >= 50 && year <= 99)
        return 1900 + year;
    return 1;
}

// False where the word contradicts the hour.
inline bool twelve_hour_clock(CS_INT &hour, bool afternoon) {
    if (afternoon) {
        if (hour == 0)
            return false;
        if (hour < 12)
            hour += 12;
    } else {
        if (hour > 12)
            return false;
        if (hour == 12)
            hour = 0;
    }
    return true;
}

class DateReading {
public:
    // `record` holds what stood there before.
    DateReading(std::string_view text, const DateRules &rules, const CS_DATEREC &record)
        : record_(record), rules_(rules) {
        code_ = tokenize(text) ? resolve() : -1;
    }
    int code() const { return code_; }
    bool truncated() const { return truncated_; }
    // Settled where the code is 0 or 99.
    const CS_DATEREC &record() const { return record_; }
    // Tokens in front of the end; -1 where the text has an error or too many.
    int count() const { return count_; }

private:
    bool tokenize(std::string_view text) {
        for (DateToken &token : tokens_) {
            token = date_token(text, rules_);
            text.remove_prefix(token.taken);
            if (token.token == DT_ERROR)
                return false;
            if (token.token == DT_END) {
                count_ = static_cast<int>(&token - tokens_.data());
                return true;
            }
        }
        return false;
    }

    bool is(int index, int token) const { return index >= 0 && tokens_[index].token == token; }
    int value(int index) const { return tokens_[index].value; }
    void use(int index) { tokens_[index].token = DT_USED; }
    void use_if(int index, int token) {
        if (is(index, token))
            use(index);
    }
    int first(int token) const {
        for (int i = 0; i < count_; ++i)
            if (is(i, token))
                return i;
        return -1;
    }
    bool all_used(int from = 0) const {
        for (int i = from; i < count_; ++i)
            if (!is(i, DT_USED))
                return false;
        return true;
    }

    int resolve() {
        record_.datehour = record_.dateminute = record_.datesecond = record_.datemsecond = 0;
        record_.datesecfrac = record_.datesecprec = record_.datemonth = 0;
        record_.datedmonth = 1;
        if (const int failure = read_time(); failure != 0)
            return failure;
        if (rules_.partonly == 3)
            return without_date();

        const int t = first(DT_T);
        if (t >= 0) {
            use(t);
            if (!all_used(t))
                return -1;
        }
        const int month = first(DT_MONTH);
        const int separator = first(DT_SEP);
        if (month >= 0) {
            if (const int failure = read_named(month); failure != 0)
                return failure;
        } else if (separator > 0) {
            if (const int failure = read_separated(separator); failure != 0)
                return failure;
        } else if (const int digits = first(DT_DIGITS68); digits >= 0) {
            const int together = value(digits);
            record_.datedmonth = together % 100;
            record_.datemonth = together / 100 % 100 - 1;
            record_.dateyear = together / 10000;
            if (tokens_[digits].length == 6) {
                record_.dateyear = two_digit_year(record_.dateyear);
                if (record_.dateyear == 1)
                    return 1;
            }
            use(digits);
        } else if (const int year = first(DT_YEAR4); year >= 0) {
            record_.dateyear = value(year);
            use(year);
        } else {
            return without_date();
        }
        return rules_.partonly != 0 || all_used() ? 0 : -2;
    }
    int without_date() const { return all_used() ? 99 : -2; }

    int read_time() {
        const int colon = first(DT_COLON);
        if (colon > 0) {
            if (!is(colon - 1, DT_NUMBER) || !is(colon + 1, DT_NUMBER))
                return -1;
            record_.datehour = value(colon - 1);
            record_.dateminute = value(colon + 1);
            use(colon - 1);
            use(colon);
            use(colon + 1);
            int next = colon + 2;
            bool milliseconds_by_colon = false;
            if (is(next, DT_COLON)) {
                if (!is(next + 1, DT_NUMBER))
                    return -1;
                record_.datesecond = value(next + 1);
                use(next);
                use(next + 1);
                next += 2;
                if (is(next, DT_COLON)) {
                    if (!is(next + 1, DT_NUMBER))
                        return -1;
                    record_.datemsecond = value(next + 1);
                    use(next);
                    use(next + 1);
                    next += 2;
                    milliseconds_by_colon = true;
                }
            }
            if (!milliseconds_by_colon && is(next, DT_SEP) && value(next) == -1) {
                if (!read_fraction(next + 1))
                    return -1;
                use(next);
                use(next + 1);
                next += 2;
            }
            if (is(next, DT_AMPM)) {
                use(next);
                if (!twelve_hour_clock(record_.datehour, value(next) == 1))
                    return 9;
            }
            return 0;
        }
        const int word = first(DT_AMPM);
        if (word > 0) {
            if (!is(word - 1, DT_NUMBER))
                return -1;
            record_.datehour = value(word - 1);
            use(word - 1);
            use(word);
            if (!twelve_hour_clock(record_.datehour, value(word) == 1))
                return 9;
        }
        return 0;
    }

    bool read_fraction(int index) {
        if (!is(index, DT_NUMBER) && !is(index, DT_YEAR4) && !is(index, DT_DIGITS5) && !is(index, DT_DIGITS68))
            return false;
        static constexpr int FACTORS[] = {0, 100000, 10000, 1000, 100, 10, 1, 0, 1};
        const int microseconds = value(index) * FACTORS[tokens_[index].length];
        if (rules_.type == 35 || rules_.type == 36) {
            record_.datesecprec = 1000000;
            record_.datesecfrac = microseconds;
            return true;
        }
        if (microseconds % 1000 != 0)
            truncated_ = true;
        int milliseconds = (microseconds + 500) / 1000;
        if (milliseconds == 1000)
            milliseconds = 999;
        record_.datemsecond = milliseconds;
        return milliseconds <= 999;
    }

    int read_named(int month) {
        record_.datemonth = value(month);
        use(month);
        if (is(month - 1, DT_SEP)) {
            use(month - 1);
            use_if(month + 1, DT_SEP);
        }
        use_if(month + 1, DT_COMMA);

        const int year = first(DT_YEAR4);
        const int day = first(DT_NUMBER);
        if (year < 0 && day < 0)
            return -1;
        if (day >= 0) {
            record_.datedmonth = value(day);
            use(day);
            use_if(day + 1, DT_COMMA);
        }
        if (year >= 0) {
            record_.dateyear = value(year);
            use(year);
            return 0;
        }
        const int short_year = first(DT_NUMBER);
        if (short_year < 0)
            return -1;
        record_.dateyear = two_digit_year(value(short_year));
        use(short_year);
        return record_.dateyear == 1 ? 1 : 0;
    }

    int read_separated(int separator) {
        use(separator);
        const int second = first(DT_SEP);
        if (second < 0)
            return -1;
        use(second);

        int order = rules_.order;
        const int year = first(DT_YEAR4);
        bool takes_year4 = false, needs_year4 = false;
        switch (rules_.style) {
        case 0:
        case 9:
            takes_year4 = true;
            if (year == 0 && order != 4)
                order = 3;
            break;
        case 1:
        case 10:
            order = 1;
            break;
        case 2:
        case 11:
        case 21:
        case 22:
        case 23:
        case 40:
            order = 3;
            break;
        case 3:
        case 4:
        case 5:
            order = 2;
            break;
        case 101:
        case 110:
            needs_year4 = true;
            order = 1;
            break;
        case 102:
        case 111:
        case 121:
        case 122:
        case 140:
            needs_year4 = true;
            order = 3;
            break;
        case 103:
        case 104:
        case 105:
            needs_year4 = true;
            order = 2;
            break;
        default:
            return -1;
        }
        if (needs_year4 && year < 0)
            return -1;
        const bool has_year = (takes_year4 || needs_year4) && year >= 0;
        if (has_year) {
            record_.dateyear = value(year);
            use(year);
        }

        static constexpr std::string_view ORDERS[] = {"mdy", "dmy", "ymd", "ydm", "myd", "dym"};
        if (order < 1 || order > 6)
            return -1;
        for (const char place : ORDERS[order - 1]) {
            if (place == 'y' && has_year)
                continue;
            const int number = first(DT_NUMBER);
            if (number < 0)
                return -1;
            const int told = value(number);
            use(number);
            if (place == 'm') {
                record_.datemonth = told - 1;
            } else if (place == 'd') {
                record_.datedmonth = told;
            } else {
                record_.dateyear = two_digit_year(told);
                if (record_.dateyear == 1)
                    return 1;
            }
        }
        return 0;
    }

    CS_DATEREC record_;
    DateRules rules_;
    std::array<DateToken, 21> tokens_;
    int count_ = -1;
    bool truncated_ = false;
    int code_ = -1;
};

// ---- Record to value ----

constexpr std::int64_t MICROSECONDS_OF_A_DAY = 86400000000;
constexpr std::int64_t FIRST_BIG_DAY = 31622400000000;
constexpr int DAYS_BEFORE_1900 = 693595;

// What a make answers: its code, and the value where the code is 0.
struct Made {
    int code = 0;
    std::int64_t value = 0;
};

// Days since 1900-01-01.
inline Made make_days(const CS_DATEREC &record) {
    static constexpr int LENGTHS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const int year = record.dateyear;
    if (year < 1 || year > 9999)
        return {1};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (record.datemonth < 0 || record.datemonth > 11)
        return {2};
    if (record.datedmonth < 1 || record.datedmonth > LENGTHS[record.datemonth] + (leap && record.datemonth == 1))
        return {3};
    const int before = year - 1;
    int days = before * 365 + before / 4 - before / 100 + before / 400;
    for (int month = 0; month < record.datemonth; ++month)
        days += LENGTHS[month] + (leap && month == 1);
    return {0, days + record.datedmonth - 1 - DAYS_BEFORE_1900};
}

inline int time_failure(const CS_DATEREC &record) {
    return record.datehour > 23 ? 4 : record.dateminute > 59 ? 5 : record.datesecond > 59 ? 6 : 0;
}

inline Made make_ticks(const CS_DATEREC &record) {
    if (const int failure = time_failure(record); failure != 0)
        return {failure};
    const int milliseconds = record.datesecprec == 1000000 ? record.datesecfrac / 1000 : record.datemsecond;
    if (milliseconds > 999)
        return {7};
    const int ticks = milliseconds == 999 ? 299 : (3 * milliseconds + 5) / 10;
    return {0, record.datehour * 1080000 + record.dateminute * 18000 + record.datesecond * 300 + ticks};
}

inline Made make_microseconds(const CS_DATEREC &record) {
    if (const int failure = time_failure(record); failure != 0)
        return {failure};
    const int fraction = record.datesecprec == 1000000 ? record.datesecfrac : record.datemsecond * 1000;
    if (fraction > 999999)
        return {7};
    return {0,
            ((record.datehour * 60 + record.dateminute) * 60 + record.datesecond) * std::int64_t{1000000} + fraction};
}

// ---- Text to value ----

struct ReadDateTime {
    int code = 0;
    CS_DATETIME value = {0, 0};
    bool truncated = false;
};

inline ReadDateTime read_datetime(std::string_view text, DateRules rules) {
    rules.type = CS_DATETIME_TYPE;
    const DateReading reading(text, rules, CS_DATEREC{});
    ReadDateTime result{reading.code(), {0, 0}, reading.truncated()};
    if (reading.code() != 0 && reading.code() != 99)
        return result;
    const Made time = make_ticks(reading.record());
    if (time.code != 0) {
        result.code = 1;
        return result;
    }
    result.value.dttime = static_cast<CS_INT>(time.value);
    const Made date = reading.code() == 0 ? make_days(reading.record()) : Made{0, 0};
    result.code = date.code;
    result.value.dtdays = static_cast<CS_INT>(date.value);
    return result;
}

// 1 where the value is good but lies before 1753.
inline ReadDateTime read_ranged_datetime(std::string_view text, const DateRules &rules) {
    ReadDateTime result = read_datetime(text, rules);
    if (result.code == 0 && result.value.dtdays < -53690)
        result.code = 1;
    return result;
}

inline Made read_big(std::string_view text, DateRules rules) {
    rules.type = CS_BIGDATETIME_TYPE;
    const DateReading reading(text, rules, CS_DATEREC{});
    if (reading.code() != 0 && reading.code() != 99)
        return {reading.code()};
    const Made time = make_microseconds(reading.record());
    if (reading.code() == 99)
        return time.code != 0 ? Made{1} : Made{0, FIRST_BIG_DAY + time.value};
    if (time.code != 0)
        return {time.code};
    const Made date = make_days(reading.record());
    if (date.code != 0)
        return {date.code};
    return {0, FIRST_BIG_DAY + (date.value + DAYS_BEFORE_1900) * MICROSECONDS_OF_A_DAY + time.value};
}

inline Made read_date(std::string_view text, DateRules rules) {
    rules.partonly = 1;
    const ReadDateTime whole = read_datetime(text, rules);
    return {whole.code, whole.value.dtdays};
}

inline ReadDateTime read_time(std::string_view text, DateRules rules) {
    rules.partonly = 2;
    return read_datetime(text, rules);
}

inline ReadDateTime read_time_alone(std::string_view text, DateRules rules) {
    rules.partonly = 3;
    rules.order = 0;
    rules.months = rules.shortmonths = nullptr;
    return read_datetime(text, rules);
}

inline Made read_bigtime(std::string_view text, DateRules rules) {
    rules.partonly = 2;
    rules.type = CS_BIGDATETIME_TYPE;
    const DateReading reading(text, rules, CS_DATEREC{});
    if (reading.code() != 0 && reading.code() != 99)
        return {reading.code()};
    if (reading.code() == 0)
        if (const Made date = make_days(reading.record()); date.code != 0)
            return {date.code};
    return make_microseconds(reading.record());
}

// The days above, and the minutes below 65536.
inline Made read_date4(std::string_view text, DateRules rules) {
    rules.partonly = 0;
    const ReadDateTime whole = read_datetime(text, rules);
    if (whole.code != 0)
        return {whole.code};
    if (whole.value.dtdays < 0 || whole.value.dtdays > 65535)
        return {1};
    const int minutes = (whole.value.dttime + 9000) / 18000;
    const int days = whole.value.dtdays + minutes / 1440;
    if (days > 65535)
        return {1};
    return {0, std::int64_t{days} << 16 | minutes % 1440};
}

} // namespace support::naive

#endif

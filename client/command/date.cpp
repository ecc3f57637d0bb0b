// dlxcomn date: what the library makes of the text of a date.
#include "date.h"

#include "names.h"
#include "text.h"

#include <climits>
#include <optional>

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn date [OPTION...] TEXT...

Reads each TEXT as a date or time and prints what the library makes of it: the value as it stands in
memory, every date part, and the value in every style, those from 100 up on the right. Names are
English, weeks start on Sunday. Of a text that cannot be read the tokens are shown, each with its
class and value, and the one that stopped the reading.

  --type TYPE    datetime (default), datetime4, date, time, bigdatetime or bigtime
  --order ORDER  how the numbers of a date are arranged: mdy (default), dmy, ymd, ydm, myd or dym
  --style N      the style that the text is written in (default 0: by the order)

A dash stands for a part that the type does not have, and for a style that prints nothing of it.

Exit status: 0 all read; 1 a text could not be read; 2 there is no such option, type or order.

  dlxcomn date "Jan 2 2003 10:30AM"
  dlxcomn date --type date --order dmy 1/2/03 31.12.99
)";

constexpr std::string_view ORDERS[] = {"mdy", "dmy", "ymd", "ydm", "myd", "dym"}; // DATEORDER_MDY is the first

// ---- The six types ----

struct Text {
    char *start;
    int length;
};

struct Field {
    const char *name;
    CS_BIGINT value;
};

struct Kind {
    CS_INT datatype;
    bool has_date;
    bool has_time;
    int (*read)(Text text, const DateRules &rules, DateValue &value, CS_BOOL *truncated);
    std::vector<Field> (*fields)(const DateValue &value);
    int (*print)(DateValue &value, char *buf, int len, int style);
    int (*part)(DateValue &value, int part);
    int (*name)(DateValue &value, int part, char *buf);
};

// Parts and their names are those of a value that counts ticks, or of a big one.
int part_of(CS_DATETIME value, int part) { return com__datepart(part, &value, com__get_firstday()); }
int part_of(CS_BIGDATETIME value, int part) { return com__bigdatepart(part, &value, com__get_firstday()); }
int name_of(CS_DATETIME value, int part, char *buf) {
    return com__datename(part, &value, buf, com__get_months(), com__get_days());
}
int name_of(CS_BIGDATETIME value, int part, char *buf) {
    return com__bigdatename(part, &value, buf, com__get_months(), com__get_days());
}

CS_DATETIME widened(CS_DATETIME4 value) {
    CS_DATETIME result = {};
    com__date4todt(&value, &result);
    return result;
}

constexpr Kind KINDS[] = {
    {CS_DATETIME_TYPE, true, true,
     [](Text text, const DateRules &rules, DateValue &value, CS_BOOL *truncated) {
         return com__datefromchar_mb(&value.datetime, text.start, text.length, rules.style, rules.order,
                                     com__get_months(), com__get_shortmonths(), nullptr, truncated);
     },
     [](const DateValue &value) {
         return std::vector<Field>{{"dtdays", value.datetime.dtdays}, {"dttime", value.datetime.dttime}};
     },
     [](DateValue &value, char *buf, int len, int style) {
         return com__datetochar(&value.datetime, buf, len, style, com__get_shortmonths());
     },
     [](DateValue &value, int part) { return part_of(value.datetime, part); },
     [](DateValue &value, int part, char *buf) { return name_of(value.datetime, part, buf); }},
    {CS_DATETIME4_TYPE, true, true,
     [](Text text, const DateRules &rules, DateValue &value, CS_BOOL * /*truncated*/) {
         return com__date4fromchar_mb(&value.datetime4, text.start, text.length, rules.style, rules.order,
                                      com__get_months(), com__get_shortmonths(), nullptr);
     },
     [](const DateValue &value) {
         return std::vector<Field>{{"days", value.datetime4.days}, {"minutes", value.datetime4.minutes}};
     },
     [](DateValue &value, char *buf, int len, int style) {
         return com__date4tochar(&value.datetime4, buf, len, style, com__get_shortmonths());
     },
     [](DateValue &value, int part) { return part_of(widened(value.datetime4), part); },
     [](DateValue &value, int part, char *buf) { return name_of(widened(value.datetime4), part, buf); }},
    {CS_DATE_TYPE, true, false,
     [](Text text, const DateRules &rules, DateValue &value, CS_BOOL * /*truncated*/) {
         return com__dateafromchar_mb(&value.date, text.start, text.length, rules.style, rules.order, com__get_months(),
                                      com__get_shortmonths(), nullptr);
     },
     [](const DateValue &value) {
         return std::vector<Field>{{"days", value.date}};
     },
     [](DateValue &value, char *buf, int len, int style) {
         return com__dateatochar(&value.date, buf, len, style, com__get_shortmonths());
     },
     [](DateValue &value, int part) {
         return part_of(CS_DATETIME{value.date, 0}, part);
     },
     [](DateValue &value, int part, char *buf) {
         return name_of(CS_DATETIME{value.date, 0}, part, buf);
     }},
    {CS_TIME_TYPE, false, true,
     [](Text text, const DateRules &rules, DateValue &value, CS_BOOL *truncated) {
         return com__timeafromchar_mb(&value.time, text.start, text.length, rules.style, rules.order, com__get_months(),
                                      com__get_shortmonths(), nullptr, truncated);
     },
     [](const DateValue &value) {
         return std::vector<Field>{{"ticks", value.time}};
     },
     [](DateValue &value, char *buf, int len, int style) {
         return com__timeatochar(&value.time, buf, len, style, com__get_shortmonths());
     },
     [](DateValue &value, int part) {
         return part_of(CS_DATETIME{0, value.time}, part);
     },
     [](DateValue &value, int part, char *buf) {
         return name_of(CS_DATETIME{0, value.time}, part, buf);
     }},
    {CS_BIGDATETIME_TYPE, true, true,
     [](Text text, const DateRules &rules, DateValue &value, CS_BOOL * /*truncated*/) {
         return com__bigdatetimefromchar_mb(&value.bigdatetime, text.start, text.length, rules.style, rules.order,
                                            com__get_months(), com__get_shortmonths(), nullptr);
     },
     [](const DateValue &value) {
         return std::vector<Field>{{"microseconds", static_cast<CS_BIGINT>(value.bigdatetime)}};
     },
     [](DateValue &value, char *buf, int len, int style) {
         return com__bigdatetimetochar(&value.bigdatetime, buf, len, style, com__get_shortmonths());
     },
     [](DateValue &value, int part) { return part_of(value.bigdatetime, part); },
     [](DateValue &value, int part, char *buf) { return name_of(value.bigdatetime, part, buf); }},
    {CS_BIGTIME_TYPE, false, true,
     [](Text text, const DateRules &rules, DateValue &value, CS_BOOL * /*truncated*/) {
         return com__bigtimefromchar_mb(&value.bigtime, text.start, text.length, rules.style, rules.order,
                                        com__get_months(), com__get_shortmonths(), nullptr);
     },
     [](const DateValue &value) {
         return std::vector<Field>{{"microseconds", static_cast<CS_BIGINT>(value.bigtime)}};
     },
     [](DateValue &value, char *buf, int len, int style) {
         return com__bigtimetochar(&value.bigtime, buf, len, style, com__get_shortmonths());
     },
     [](DateValue &value, int part) { return part_of(value.bigtime, part); },
     [](DateValue &value, int part, char *buf) { return name_of(value.bigtime, part, buf); }},
};

const Kind *find_kind(CS_INT type) {
    for (const Kind &kind : KINDS)
        if (kind.datatype == type)
            return &kind;
    return nullptr;
}

// ---- A value ----

struct Part {
    int id;
    const char *name;
    bool is_of_day;
    bool has_name;
};

constexpr Part PARTS[] = {
    {DATEPART_YEAR, "year", true, false},
    {DATEPART_QUARTER, "quarter", true, false},
    {DATEPART_MONTH, "month", true, true},
    {DATEPART_WEEKDAY, "weekday", true, true},
    {DATEPART_DAY, "day", true, false},
    {DATEPART_DAYOFYEAR, "day of year", true, false},
    {DATEPART_HOUR, "hour", false, false},
    {DATEPART_MINUTE, "minute", false, false},
    {DATEPART_SECOND, "second", false, false},
    {DATEPART_MILLISECOND, "millisecond", false, false},
    {DATEPART_WEEK, "week", true, false},
    {DATEPART_ISOYEAR, "ISO year", true, false},
    {DATEPART_ISOWEEK, "ISO week", true, false},
    {DATEPART_ISOWEEKDAY, "ISO weekday", true, true},
    {DATEPART_MICROSECOND, "microsecond", false, false},
};

constexpr size_t NAME_WIDTH = 13;
constexpr size_t STYLE_WIDTH = 38; // the longest text of a style in quotes, and two blanks
constexpr int ROOM = 64;           // no text of a style is longer

void print_parts(const Kind &kind, DateValue &value) {
    for (const Part &part : PARTS) {
        std::string line = "  " + left(part.name, NAME_WIDTH);
        if (part.is_of_day ? !kind.has_date : !kind.has_time) {
            line += "-";
        } else {
            line += std::to_string(kind.part(value, part.id));
            if (part.has_name) {
                char name[ROOM];
                const int length = kind.name(value, part.id, name);
                line += "  " + std::string(name, static_cast<size_t>(length));
            }
        }
        print(line + "\n");
    }
}

// Nothing for an unknown style.
std::optional<std::string> styled(const Kind &kind, DateValue &value, int style) {
    char text[ROOM];
    const int length = kind.print(value, text, ROOM, style);
    if (length == DATESTYLE_UNKNOWN)
        return std::nullopt;
    const bool is_nothing = length == 1 && text[0] == '\0';
    return is_nothing ? "-" : quoted({text, static_cast<size_t>(length)});
}

void print_styles(const Kind &kind, DateValue &value) {
    constexpr int CENTURY = 100;
    for (int style = 0; style < CENTURY; ++style) {
        const std::optional<std::string> text = styled(kind, value, style);
        const std::optional<std::string> long_text = styled(kind, value, style + CENTURY);
        if (!text && !long_text)
            continue;
        std::string line = text ? left(right(std::to_string(style), 5) + "  " + *text, STYLE_WIDTH + 7) : "";
        if (long_text)
            line = left(line, STYLE_WIDTH + 7) + std::to_string(style + CENTURY) + "  " + *long_text;
        line.erase(line.find_last_not_of(' ') + 1);
        print(line + "\n");
    }
}

void print_value(const Kind &kind, std::string_view text, DateReading reading) {
    print(quoted(text) + " is a " + std::string(datatype(kind.datatype).name) +
          (reading.truncated ? "; digits of its fraction were lost" : "") + "\n");
    for (const Field &field : kind.fields(reading.value))
        print("  " + left(field.name, NAME_WIDTH) + std::to_string(field.value) + "\n");
    print("\n");
    print_parts(kind, reading.value);
    print("\n");
    print_styles(kind, reading.value);
}

// ---- A text that is none ----

const char *meaning(int code) {
    switch (code) {
    case DATE_SYNTAX:
        return "its tokens make no date";
    case DATE_LEFTOVER:
        return "tokens are left over";
    case DATE_YEAR2: // also DATE_BADYEAR
        return "the year or the time, or the whole value, is out of range";
    case DATE_BADMONTH:
        return "the month is out of range";
    case DATE_BADDAY:
        return "the day is out of range";
    case DATE_BADHOUR:
        return "the hour is out of range";
    case DATE_BADMINUTE:
        return "the minute is out of range";
    case DATE_BADSECOND:
        return "the second is out of range";
    case DATE_BADFRACTION:
        return "the fraction is out of range";
    case DATE_AMPM:
        return "AM or PM contradicts the hour";
    default:
        return "it cannot be read";
    }
}

std::string class_name(int token) {
    static constexpr std::string_view NAMES[] = {"DT_NUMBER",   "DT_YEAR4", "DT_COLON",  "DT_AMPM",  "DT_MONTH",
                                                 "DT_COMMA",    "DT_SEP",   "DT_END",    "DT_ERROR", "DT_USED",
                                                 "DT_DIGITS68", "DT_T",     "DT_DIGITS5"};
    return std::string(NAMES[token]);
}

bool has_value(const struct com__datecrack &token) {
    switch (token.dctoken) {
    case DT_NUMBER:
    case DT_YEAR4:
    case DT_AMPM:
    case DT_MONTH:
    case DT_DIGITS68:
    case DT_DIGITS5:
        return true;
    default:
        return false;
    }
}

void print_tokens(std::string_view text, const DateRules &rules, int code) {
    const std::vector<DateToken> tokens = date_tokens(text);
    const size_t stop = stopping_token(tokens, text, rules);
    print(quoted(text) + " is no " + std::string(datatype(rules.datatype).name) + ": " + meaning(code) + " (" +
          std::to_string(code) + ")\n");
    for (size_t i = 0; i < tokens.size(); ++i) {
        const struct com__datecrack &token = tokens[i].token;
        std::string line = "  " + left(quoted(tokens[i].text), NAME_WIDTH) +
                           left(class_name(token.dctoken), NAME_WIDTH) +
                           left(has_value(token) ? std::to_string(token.dcvalue) : "", NAME_WIDTH);
        if (i == stop)
            line += "stops it";
        line.erase(line.find_last_not_of(' ') + 1);
        print(line + "\n");
    }
    if (stop == tokens.size())
        print("  the end of the text stops it: something is missing\n");
}

// Whether the text reads, or would if something stood behind it. What can be missing is the rest of a time, the
// rest of a date, or both; the numbers may be any of day, month and leap year, and so serve for all orders.
bool is_beginning(std::string_view text, const DateRules &rules) {
    static constexpr std::string_view TIMES[] = {"", "0", ":0", ":0:0", "AM", "PM", "0AM", "0PM", ":0AM", ":0PM"};
    static constexpr std::string_view DATES[] = {
        "",           "01",       "2004",     "-01",    "-2004",     "01-04",    "01-2004",  "2004-01", "-01-04",
        "-01-2004",   "-2004-01", "01 2004",  "01 04",  "1/2/04",    "1/2/2004", "2004/1/2", "Jan",     "Jan 2004",
        "Jan 1 2004", "Jan 04",   "Jan-2004", "Jan-04", "-Jan-2004", "-Jan-04",  "-Jan",     "20040102"};
    for (const std::string_view time : TIMES)
        for (const std::string_view date : DATES) {
            std::string whole(text);
            whole.append(" ").append(time).append(" ").append(date);
            if (read_date(whole, rules).code == DATE_OK)
                return true;
        }
    return false;
}

} // namespace

DateReading read_date(std::string_view text, const DateRules &rules) {
    std::string bytes(text);
    DateReading reading;
    CS_BOOL truncated = CS_FALSE;
    reading.code = find_kind(rules.datatype)
                       ->read({bytes.data(), static_cast<int>(bytes.size())}, rules, reading.value, &truncated);
    reading.truncated = truncated != CS_FALSE;
    return reading;
}

std::vector<DateToken> date_tokens(std::string_view text) {
    std::string bytes(text);
    char *next = bytes.data();
    int left_over = static_cast<int>(bytes.size());
    std::vector<DateToken> tokens;
    while (tokens.size() <= DATE_MAXTOKENS) {
        const size_t start = bytes.find_first_not_of(' ', static_cast<size_t>(next - bytes.data()));
        struct com__datecrack token = {};
        if (datetoken(&next, &left_over, &token, com__get_months(), com__get_shortmonths(), nullptr) == DT_END)
            break;
        const auto end = static_cast<size_t>(next - bytes.data());
        tokens.push_back({text.substr(start, end > start ? end - start : 1), token});
        if (token.dctoken == DT_ERROR)
            break;
    }
    return tokens;
}

size_t stopping_token(const std::vector<DateToken> &tokens, std::string_view text, const DateRules &rules) {
    size_t reads = 0; // tokens of the longest beginning that reads
    for (size_t i = 0; i < tokens.size(); ++i) {
        const auto length = static_cast<size_t>(tokens[i].text.data() + tokens[i].text.size() - text.data());
        const std::string_view beginning = text.substr(0, length);
        if (!is_beginning(beginning, rules))
            return i;
        if (read_date(beginning, rules).code == DATE_OK)
            reads = i + 1;
    }
    return read_date(text, rules).code == DATE_LEFTOVER ? reads : tokens.size();
}

int run_date(const Arguments &arguments) {
    std::vector<Option> options = {{"type"}, {"order"}, {"style"}};
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "date");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    DateRules rules;
    if (const std::optional<std::string> &name = options[0].value) {
        const Maybe<const Datatype *> type = find_datatype(*name);
        if (!type)
            return misused(type.sentence(), "date");
        rules.datatype = (*type)->id;
        if (find_kind(rules.datatype) == nullptr)
            return misused("--type takes datetime, datetime4, date, time, bigdatetime or bigtime, not " + *name,
                           "date");
    }
    if (const std::optional<std::string> &order = options[1].value) {
        rules.order = 0;
        for (size_t i = 0; i < std::size(ORDERS); ++i)
            if (lowercase(*order) == ORDERS[i])
                rules.order = DATEORDER_MDY + static_cast<int>(i);
        if (rules.order == 0)
            return misused("no order " + quoted(*order) + "; there are " +
                               enumerate({std::begin(ORDERS), std::end(ORDERS)}, "and"),
                           "date");
    }
    if (const std::optional<std::string> &number = options[2].value) {
        const std::optional<CS_INT> style = parse_number(*number, INT_MIN, INT_MAX);
        if (!style) // any number is handed on: that an unknown one is refused is the library's to show
            return misused("--style takes a whole number, not " + quoted(*number), "date");
        rules.style = *style;
    }
    if (line->operands.empty())
        return misused("date wants a TEXT", "date");

    int code = DONE;
    for (size_t i = 0; i < line->operands.size(); ++i) {
        const std::string &text = line->operands[i];
        if (i != 0)
            print("\n");
        const DateReading reading = read_date(text, rules);
        if (reading.code == DATE_OK) {
            print_value(*find_kind(rules.datatype), text, reading);
        } else {
            print_tokens(text, rules, reading.code);
            code = FAILED;
        }
    }
    return code;
}

} // namespace client

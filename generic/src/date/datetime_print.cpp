// Dates and times as text: the table of styles, and the two engines that print by it.
//
// A style is written down as people write it, "Mon _d yyyy _h:miAM", and compiled into a row of pieces: a byte below
// PIECES stands for itself, any other for a field of the record. Printing walks the row.

#include "date/calendar.h"

#include <dlxcomn/datetext.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <string_view>

namespace dlx {
namespace {

constexpr char NO_PAD = '\0';
constexpr int MONTH_WIDTH = 9;
constexpr int AMPM_WIDTH = 2;
constexpr int MOST_TEXT = 64; // no style makes more

// ---- Styles ----

enum Piece : unsigned char {
    PIECES = 0x80,
    MONTH_NAME = PIECES, // and a blank
    DAY,
    DAY_BLANK,
    MONTH,
    YEAR2,
    YEAR4,
    YEAR4_BLANK,
    HOUR,
    HOUR12_BLANK,
    MINUTE,
    SECOND,
    MILLISECOND,
    MICROSECOND,
    AMPM
};

struct Notation {
    std::string_view text;
    Piece piece;
};

// What is written in a pattern; a longer notation stands before one that begins it.
constexpr Notation NOTATIONS[] = {
    {"Mon ", MONTH_NAME}, {"ffffff", MICROSECOND}, {"yyyy", YEAR4}, {"__yy", YEAR4_BLANK}, {"mmm", MILLISECOND},
    {"dd", DAY},          {"_d", DAY_BLANK},       {"mm", MONTH},   {"mi", MINUTE},        {"yy", YEAR2},
    {"HH", HOUR},         {"_h", HOUR12_BLANK},    {"ss", SECOND},  {"AM", AMPM},
};

struct Pattern {
    unsigned char length = 0; // 0 for a style that there is not
    bool has_month_name = false;
    bool is_date_alone = false;
    std::array<unsigned char, 16> pieces = {};
};

constexpr Pattern compile(std::string_view text) {
    Pattern pattern;
    pattern.is_date_alone = true;
    while (!text.empty()) {
        unsigned char piece = static_cast<unsigned char>(text[0]);
        std::size_t taken = 1;
        for (const Notation &notation : NOTATIONS) {
            if (text.starts_with(notation.text)) {
                piece = notation.piece;
                taken = notation.text.size();
                break;
            }
        }
        if (piece == MONTH_NAME)
            pattern.has_month_name = true;
        if (piece >= HOUR)
            pattern.is_date_alone = false;
        pattern.pieces[pattern.length++] = piece;
        text.remove_prefix(taken);
    }
    return pattern;
}

constexpr int STYLES = 141; // 0 to 140
using StyleTable = std::array<Pattern, STYLES>;

struct Style {
    int number;
    std::string_view pattern;
};

constexpr void set_styles(StyleTable &table, std::initializer_list<Style> styles) {
    for (const Style &style : styles)
        table[static_cast<std::size_t>(style.number)] = compile(style.pattern);
}

constexpr StyleTable date_styles() {
    StyleTable table = {};
    set_styles(table, {
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
    });
    return table;
}

// What differs for a value without a date. The day stands in front of the month in 21 and its like, which nobody
// sees: both are 1.
constexpr StyleTable time_styles() {
    StyleTable table = date_styles();
    set_styles(table, {
        {0, "_h:miAM"},
        {9, "_h:mi:ss:mmmAM"},
        {21, "yy/dd/mm HH:mi:ss"},
        {22, "yy/dd/mm _h:miAM"},
        {100, "Mon _d __yy _h:miAM"},
        {109, "Mon _d __yy _h:mi:ss:mmmAM"},
        {121, "yyyy/dd/mm HH:mi:ss"},
        {122, "yyyy/dd/mm _h:miAM"},
    });
    return table;
}

constexpr StyleTable DATE_STYLES = date_styles();
constexpr StyleTable TIME_STYLES = time_styles();
constexpr Pattern DATE_ONLY = compile("Mon _d yyyy"); // styles 0 and 9 of a CS_DATE

const Pattern *find_style(const StyleTable &table, int style) {
    if (style < 0 || style >= STYLES || table[static_cast<std::size_t>(style)].length == 0)
        return nullptr;
    return &table[static_cast<std::size_t>(style)];
}

// ---- Pieces ----

struct DigitPairs {
    char text[200];
};

constexpr DigitPairs digit_pairs() {
    DigitPairs pairs = {};
    for (int i = 0; i < 100; ++i) {
        pairs.text[2 * i] = static_cast<char>('0' + i / 10);
        pairs.text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr DigitPairs PAIRS = digit_pairs();

// Of a field of a record, or one more than that.
CS_UINT magnitude(CS_BIGINT value) { return static_cast<CS_UINT>(value < 0 ? -value : value); }

// The lowest digits of `value`, as many as fit, behind zeros.
template <int Width>
char *put_zero_padded(char *to, CS_BIGINT value) {
    CS_UINT rest = magnitude(value);
    int at = Width;
    for (; at >= 2; at -= 2, rest /= 100)
        std::memcpy(to + at - 2, PAIRS.text + rest % 100 * 2, 2);
    if (at == 1)
        *to = static_cast<char>('0' + rest % 10);
    return to + Width;
}

char *put_blank_padded2(char *to, int value) {
    const CS_UINT low = magnitude(value) % 100;
    to[0] = magnitude(value) >= 10 ? PAIRS.text[low * 2] : ' ';
    to[1] = PAIRS.text[low * 2 + 1];
    return to + 2;
}

int hour_of_clock(int hour) { return hour > 12 ? hour - 12 : hour == 0 ? 12 : hour; }

int milliseconds_of(const CS_DATEREC &record, bool is_micro) {
    return is_micro ? static_cast<int>((static_cast<CS_BIGINT>(record.datesecfrac) + 500) / 1000) : record.datemsecond;
}

// The six digits that are shown of them: of milliseconds only three reach them.
CS_INT micros_of(const CS_DATEREC &record, bool is_micro) {
    return is_micro ? record.datesecfrac : record.datemsecond % 1000 * 1000;
}

char *put_piece(char *to, unsigned char piece, const CS_DATEREC &record, char **shortmths, bool is_micro) {
    switch (piece) {
    case MONTH_NAME:
        return to + com__cpchar(to, shortmths[record.datemonth], ' ', MONTH_WIDTH);
    case DAY:
        return put_zero_padded<2>(to, record.datedmonth);
    case DAY_BLANK:
        return put_blank_padded2(to, record.datedmonth);
    case MONTH:
        return put_zero_padded<2>(to, static_cast<CS_BIGINT>(record.datemonth) + 1);
    case YEAR2:
        return put_zero_padded<2>(to, record.dateyear);
    case YEAR4:
        return put_zero_padded<4>(to, record.dateyear);
    case YEAR4_BLANK:
        return to + com__cpint(to, record.dateyear, NO_PAD, 4);
    case HOUR:
        return put_zero_padded<2>(to, record.datehour);
    case HOUR12_BLANK:
        return put_blank_padded2(to, hour_of_clock(record.datehour));
    case MINUTE:
        return put_zero_padded<2>(to, record.dateminute);
    case SECOND:
        return put_zero_padded<2>(to, record.datesecond);
    case MILLISECOND:
        return put_zero_padded<3>(to, milliseconds_of(record, is_micro));
    case MICROSECOND:
        return put_zero_padded<6>(to, micros_of(record, is_micro));
    case AMPM:
        return to + com__cpchar(to, com__get_ampm()[record.datehour >= 12], NO_PAD, AMPM_WIDTH);
    default:
        *to = static_cast<char>(piece);
        return to + 1;
    }
}

int print(const Pattern &pattern, const CS_DATEREC &record, char *buf, int len, char **shortmths, CS_INT secprec) {
    if (pattern.has_month_name && shortmths == nullptr)
        return DATESTYLE_NO_MONTHS;
    char text[MOST_TEXT];
    char *end = text;
    const bool is_micro = secprec == MICRO_PRECISION;
    for (int i = 0; i < pattern.length; ++i)
        end = put_piece(end, pattern.pieces[static_cast<std::size_t>(i)], record, shortmths, is_micro);
    const int length = static_cast<int>(end - text);
    if (len >= 0 && len < length) {
        std::memcpy(buf, text, static_cast<std::size_t>(len));
        return 0;
    }
    std::memcpy(buf, text, static_cast<std::size_t>(length));
    return length;
}

} // namespace
} // namespace dlx

using namespace dlx;

// ---- Pieces for callers ----

int com__cpint(char *cp, int value, char padchar, int len) {
    const char fill = len < 0 ? '0' : ' ';
    const CS_BIGINT width = len < 0 ? -static_cast<CS_BIGINT>(len) : len;
    CS_UINT rest = magnitude(value);
    char *const end = cp + width;
    char *at = end;
    while (at > cp && (at == end || rest != 0)) {
        *--at = static_cast<char>('0' + rest % 10);
        rest /= 10;
    }
    std::memset(cp, fill, static_cast<std::size_t>(at - cp));
    if (padchar == NO_PAD)
        return static_cast<int>(width);
    *end = padchar;
    return static_cast<int>(width + 1);
}

int com__cpchar(char *cp, char *str, char padchar, int maxlen) {
    int copied = 0;
    for (; copied < maxlen && str[copied] != '\0'; ++copied)
        cp[copied] = str[copied];
    if (padchar != NO_PAD)
        cp[copied++] = padchar;
    return copied;
}

int com__itochar(CS_INT val, char *buf, int len) {
    constexpr int MOST_DIGITS = 11; // of -2147483648
    char text[MOST_DIGITS];
    const int digits = static_cast<int>(std::to_chars(text, text + sizeof text, val).ptr - text);
    if (len > 0 && digits > len) {
        *buf = '*';
        return 1;
    }
    std::memcpy(buf, text, static_cast<std::size_t>(digits));
    return digits;
}

// ---- Engines ----

int com__daterectochar(CS_DATEREC *trparts, char *buf, int len, int style, char **shortmths, CS_INT secprec) {
    const Pattern *pattern = find_style(DATE_STYLES, style);
    return pattern != nullptr ? print(*pattern, *trparts, buf, len, shortmths, secprec) : DATESTYLE_UNKNOWN;
}

int com__timerectochar(CS_DATEREC *trparts, char *buf, int len, int style, char **shortmths, CS_INT secprec) {
    const Pattern *pattern = find_style(TIME_STYLES, style);
    if (pattern == nullptr)
        return DATESTYLE_UNKNOWN;
    if (!pattern->is_date_alone)
        return print(*pattern, *trparts, buf, len, shortmths, secprec);
    if (len != 0)
        *buf = '\0';
    return 1;
}

// ---- Types ----

int com__datetochar(CS_DATETIME *dtp, char *buf, int len, int style, char **shortmths) {
    CS_DATEREC record;
    com__datecrack(dtp, &record);
    com__timecrack(dtp, &record);
    return com__daterectochar(&record, buf, len, style, shortmths, TICK_PRECISION);
}

int com__bigdatetimetochar(CS_BIGDATETIME *bdt, char *buf, int len, int style, char **shortmths) {
    CS_DATEREC record;
    com__bigdatecrack(bdt, &record);
    com__bigtimecrack(bdt, &record);
    return com__daterectochar(&record, buf, len, style, shortmths, MICRO_PRECISION);
}

int com__date4tochar(CS_DATETIME4 *dtp4, char *buf, int len, int style, char **shortmths) {
    CS_DATETIME wide;
    com__date4todt(dtp4, &wide);
    return com__datetochar(&wide, buf, len, style, shortmths);
}

int com__dateatochar(CS_DATE *dp, char *buf, int len, int style, char **shortmths) {
    CS_DATETIME midnight = {*dp, 0};
    if (style != 0 && style != 9)
        return com__datetochar(&midnight, buf, len, style, shortmths);
    CS_DATEREC record = {};
    com__datecrack(&midnight, &record);
    return print(DATE_ONLY, record, buf, len, shortmths, TICK_PRECISION);
}

int com__timeatochar(CS_TIME *tp, char *buf, int len, int style, char **shortmths) {
    CS_DATETIME first_day = {0, *tp};
    CS_DATEREC record;
    com__datecrack(&first_day, &record);
    com__timecrack(&first_day, &record);
    return com__timerectochar(&record, buf, len, style, shortmths, TICK_PRECISION);
}

int com__bigtimetochar(CS_BIGTIME *bt, char *buf, int len, int style, char **shortmths) {
    CS_DATEREC record = {};
    record.dateyear = 1;
    record.datedmonth = 1;
    com__bigtimecrack(bt, &record);
    return com__timerectochar(&record, buf, len, style, shortmths, MICRO_PRECISION);
}

int com_cvtdatetochar(CS_DATETIME *dtp, char *buf, int len, int style, char **shortmths) {
    return com__datetochar(dtp, buf, len, style, shortmths);
}

int com_cvtdate4tochar(CS_DATETIME4 *dtp4, char *buf, int len, int style, char **shortmths) {
    return com__date4tochar(dtp4, buf, len, style, shortmths);
}

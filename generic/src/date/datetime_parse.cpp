// Text of a date into tokens, and tokens into a date.
//
// The tokenizer knows no grammar: it classes numbers by their count of digits, words by the lists of names, and marks.
// The resolver takes the tokens of the time out of the list by their shape, and then gives what is left the meaning of
// a date. A token that has its meaning becomes DT_USED, and what is left unused at the end tells a text that says more
// than a date.

#include "charset/walk.h"
#include "date/calendar.h"

#include <dlxcomn/datetext.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace dlx {
namespace {

using Token = struct com__datecrack;

// ---- Tokens ----

constexpr int LONGEST_WORD = 30;   // bytes
constexpr int LONGEST_NUMBER = 8;  // digits
constexpr CS_INT POINT = -1;       // the dcvalue of a separator that is a point

constexpr int NUMBER_CLASS[LONGEST_NUMBER + 1] = {DT_ERROR,   DT_NUMBER,   DT_NUMBER, DT_NUMBER,  DT_YEAR4,
                                                  DT_DIGITS5, DT_DIGITS68, DT_ERROR,  DT_DIGITS68};

// The text that is left, and the rules of its character set. With SIMPLE that is a set of Walker::simple_types().
template <bool SIMPLE>
class Text {
public:
    Text(const Walker &walker, const CS_BYTE *at, CS_INT left)
        : walker_(walker), types_(walker.simple_types()), at_(at), end_(at + left) {}

    bool is_iso_1() const { return SIMPLE && types_ == ISO_1_type_map.chmap; }
    bool is_at_end() const { return at_ >= end_; }
    const CS_BYTE *position() const { return at_; }
    CS_INT left() const { return static_cast<CS_INT>(end_ - at_); }

    // The end of the text cuts the character: its second byte must not be looked at.
    bool is_cut() const {
        return !SIMPLE && !walker_.is_one_byte(*at_) && (left() < 2 || walker_.width(at_) > left());
    }
    CS_BYTE ascii() const { return SIMPLE ? types_[*at_].char_lower : walker_.to_ascii(at_); }
    bool is_digit() const { return (type().char_type & CS_CT_DIGIT) != 0; }
    bool is_word_character() const { return (type().char_lex & CS_LEX_IDENT) != 0; }
    CS_INT width() const { return SIMPLE ? 1 : walker_.step(at_); }
    void step() { at_ += width(); }
    // The normal form of a character that is this byte alone.
    CS_BYTE folded(CS_BYTE c) const {
        const CS_BYTE ascii = SIMPLE ? types_[c].char_lower : walker_.single_byte_to_ascii(c);
        return ascii != 0 ? ascii : c;
    }
    // The name begins with a character of one byte that the word does not begin with.
    bool begins_otherwise(const char *name, CS_BYTE word) const {
        const CS_BYTE first = static_cast<CS_BYTE>(*name);
        return (SIMPLE || walker_.is_one_byte(first)) && folded(first) != word;
    }

private:
    // The class of a one-byte character, too, may hang on a second byte. Behind the last byte of the text a zero byte
    // stands for it.
    const CHAR_MAP &type() const {
        if (SIMPLE && (types_[*at_].char_type & CS_CT_ROW) == 0)
            return types_[*at_];
        if (left() > 1)
            return walker_.type(at_);
        const CS_BYTE last[2] = {*at_, 0};
        return walker_.type(last);
    }

    const Walker &walker_;
    const CHAR_MAP *types_;
    const CS_BYTE *at_;
    const CS_BYTE *end_;
};

bool is_ascii_digit(CS_BYTE c) { return c >= '0' && c <= '9'; }

// Takes all digits, also those behind the longest number there is.
template <class Text>
int take_number(Text &text, Token &token) {
    CS_UINT value = 0; // of too many digits it is not looked at
    int digits = 0;
    bool is_number = true;
    for (; !text.is_at_end() && !text.is_cut() && text.is_digit(); text.step()) {
        const CS_BYTE c = text.ascii();
        is_number &= is_ascii_digit(c);
        value = value * 10 + static_cast<CS_UINT>(c - '0');
        ++digits;
    }
    if (!is_number || digits > LONGEST_NUMBER)
        return DT_ERROR;
    token.dclength = digits;
    token.dcvalue = static_cast<CS_INT>(value);
    return NUMBER_CLASS[digits];
}

// A word in normal form.
struct Word {
    CS_BYTE bytes[LONGEST_WORD];
    CS_INT length;
};

// False for what is in no list: a word that is too long, or whose last character the length cuts.
bool normalize_word(const Walker &walker, const char *word, int length, Word &normal) {
    if (length > LONGEST_WORD)
        return false;
    length = std::max(length, 0);
    CS_BYTE padded[LONGEST_WORD + 1] = {}; // a width may hang on a second byte, which is not looked for behind the word
    std::memcpy(padded, word, static_cast<std::size_t>(length));
    if (whole_characters(walker, padded, padded + length).before_end != 0)
        return false;
    normal.length = normalize(walker, padded, length, normal.bytes);
    return true;
}

// The character ends in front of the name's NUL.
bool is_whole(const CS_BYTE *at, CS_INT bytes) {
    for (CS_INT i = 1; i < bytes; ++i)
        if (at[i] == '\0')
            return false;
    return true;
}

// Compares while it normalizes: most names differ in their first character. A name that is too long for a word, or
// that ends inside a character, matches none.
bool is_name(const Walker &walker, const CS_BYTE *name, const Word &word) {
    const CS_BYTE *at = name;
    CS_INT matched = 0;
    while (*at != '\0') {
        const CS_INT bytes = walker.step(at);
        if (matched == word.length || !is_whole(at, bytes))
            return false;
        if (const CS_BYTE ascii = walker.to_ascii(at)) {
            if (word.bytes[matched++] != ascii)
                return false;
        } else {
            for (CS_INT i = 0; i < bytes; ++i)
                if (matched == word.length || word.bytes[matched++] != at[i])
                    return false;
        }
        at += bytes;
    }
    return matched == word.length && at - name <= LONGEST_WORD;
}

int find_name(const Walker &walker, const Word &word, char **list, int count) {
    for (int i = 0; i < count; ++i)
        if (is_name(walker, reinterpret_cast<const CS_BYTE *>(list[i]), word))
            return i;
    return -1;
}

// The same for a word of the text, which has a first character. Most names are told apart by theirs.
template <class Text>
int find_name(const Walker &walker, const Text &text, const Word &word, char **list, int count) {
    const CS_BYTE first = word.bytes[0];
    for (int i = 0; i < count; ++i)
        if (!text.begins_otherwise(list[i], first) &&
            is_name(walker, reinterpret_cast<const CS_BYTE *>(list[i]), word))
            return i;
    return -1;
}

// The English month that three letters begin, if they begin one: found by their product with a number that gives each
// month a place of its own.
constexpr CS_UINT MONTH_HASH = 0x3B6FE507;
constexpr int MONTH_LETTERS = 3;

constexpr unsigned month_place(CS_BYTE first, CS_BYTE second, CS_BYTE third) {
    return ((first | static_cast<CS_UINT>(second) << 8 | static_cast<CS_UINT>(third) << 16) * MONTH_HASH) >> 28;
}

constexpr std::array<CS_BYTE, 16> month_places() {
    constexpr const char *LETTERS = "janfebmaraprmayjunjulaugsepoctnovdec";
    std::array<CS_BYTE, 16> places = {};
    for (int month = 0; month < MONTHS_A_YEAR; ++month) {
        const char *const at = LETTERS + month * MONTH_LETTERS;
        places[month_place(static_cast<CS_BYTE>(at[0]), static_cast<CS_BYTE>(at[1]), static_cast<CS_BYTE>(at[2]))] =
            static_cast<CS_BYTE>(month);
    }
    return places;
}

// The month of a word. In iso_1 the English names are guessed from three letters before the lists are gone through; a
// guess counts only if the lists bear it out. (In another set two of the names may be alike, and the first one counts.)
template <class Text>
int find_month(const Walker &walker, const Text &text, const Word &word, char **mths, char **shortmths) {
    static constexpr std::array<CS_BYTE, 16> PLACES = month_places();
    const bool is_english = mths == com__get_months() && shortmths == com__get_shortmonths();
    if (is_english && text.is_iso_1() && word.length >= MONTH_LETTERS) {
        const int month = PLACES[month_place(word.bytes[0], word.bytes[1], word.bytes[2])];
        char *const name = word.length == MONTH_LETTERS ? shortmths[month] : mths[month];
        if (is_name(walker, reinterpret_cast<const CS_BYTE *>(name), word))
            return month;
    }
    const int month = find_name(walker, text, word, mths, MONTHS_A_YEAR);
    return month >= 0 ? month : find_name(walker, text, word, shortmths, MONTHS_A_YEAR);
}

template <class Text>
int take_word(const Walker &walker, Text &text, Token &token, char **mths, char **shortmths) {
    const CS_BYTE *const start = text.position();
    Word word;
    word.length = 0;
    int characters = 0;
    for (; !text.is_at_end() && !text.is_cut() && text.is_word_character(); text.step()) {
        ++characters;
        const CS_INT bytes = text.width();
        if (text.position() + bytes - start > LONGEST_WORD)
            continue; // in no list: only its end is looked for
        if (const CS_BYTE ascii = text.ascii()) {
            word.bytes[word.length++] = ascii;
        } else {
            std::memcpy(word.bytes + word.length, text.position(), static_cast<std::size_t>(bytes));
            word.length += bytes;
        }
    }
    if (text.position() - start > LONGEST_WORD)
        return DT_ERROR;
    if (characters == 2) {
        token.dcvalue = find_name(walker, text, word, com__get_ampm(), 2);
        if (token.dcvalue >= 0)
            return DT_AMPM;
    }
    token.dcvalue = mths != nullptr && shortmths != nullptr ? find_month(walker, text, word, mths, shortmths) : -1;
    if (token.dcvalue >= 0)
        return DT_MONTH;
    token.dcvalue = 0;
    return DT_ERROR;
}

template <class Text>
int take_token(const Walker &walker, Text &text, Token &token, char **mths, char **shortmths) {
    token = {DT_ERROR, 0, 0};
    while (!text.is_at_end() && !text.is_cut()) {
        const CS_BYTE c = text.ascii();
        if (c == ' ') {
            text.step();
            continue;
        }
        if (is_ascii_digit(c) && text.is_digit())
            return token.dctoken = take_number(text, token);
        switch (c) {
        case '/':
        case '-':
            text.step();
            return token.dctoken = DT_SEP;
        case '.':
            text.step();
            token.dcvalue = POINT;
            return token.dctoken = DT_SEP;
        case ',':
            text.step();
            return token.dctoken = DT_COMMA;
        case ':':
            text.step();
            return token.dctoken = DT_COLON;
        case 'T':
        case 't':
            text.step();
            return token.dctoken = DT_T;
        default:
            if (text.is_digit())
                return token.dctoken = take_number(text, token);
            if (text.is_word_character())
                return token.dctoken = take_word(walker, text, token, mths, shortmths);
            return DT_ERROR;
        }
    }
    return token.dctoken = text.is_at_end() ? DT_END : DT_ERROR;
}

// ---- Resolver ----

// The tokens of a text, with a bit for each at its index: of each class, and of all that are not used. An index is
// always that of a token before DT_END, so the one behind it can be looked at.
class TokenList {
public:
    // False for a text with a word that is none, or with too many tokens.
    template <class Text>
    bool read(const Walker &walker, Text text, char **mths, char **shortmths) {
        unsigned bit = 1;
        for (Token &token : tokens_) {
            const int kind = take_token(walker, text, token, mths, shortmths);
            if (kind == DT_END) {
                unused_ = bit - 1;
                return true;
            }
            if (kind == DT_ERROR)
                return false;
            of_class_[kind] |= bit;
            bit <<= 1;
        }
        return false;
    }

    int find(int token) const { return of_class_[token] != 0 ? std::countr_zero(of_class_[token]) : -1; }
    // An index above 0 of the first token of a class, else -1: what stands in front of all has nothing before it.
    int find_inside(int token) const {
        const int index = find(token);
        return index > 0 ? index : -1;
    }
    const Token &operator[](int index) const { return tokens_[index]; }
    bool is(int index, int token) const { return tokens_[index].dctoken == token; }

    CS_INT take(int index) {
        const unsigned bit = 1u << index;
        of_class_[tokens_[index].dctoken] &= ~bit;
        unused_ &= ~bit;
        tokens_[index].dctoken = DT_USED;
        return tokens_[index].dcvalue;
    }
    bool take_if(int index, int token) {
        if (!is(index, token))
            return false;
        take(index);
        return true;
    }
    bool all_used() const { return unused_ == 0; }
    bool all_used_from(int index) const { return unused_ >> index == 0; }

private:
    Token tokens_[DATE_MAXTOKENS + 1];
    unsigned of_class_[DT_DIGITS5 + 1] = {};
    unsigned unused_ = 0;
};

constexpr int RESOLVED = 0;

// Microseconds of a fraction of so many digits; eight digits are taken as they stand.
CS_INT micros_of_fraction(const Token &fraction) {
    constexpr CS_INT SCALE[] = {1, 100000, 10000, 1000, 100, 10};
    return fraction.dclength < 6 ? fraction.dcvalue * SCALE[fraction.dclength] : fraction.dcvalue;
}

bool is_fraction(const Token &token) {
    return token.dctoken == DT_NUMBER || token.dctoken == DT_YEAR4 || token.dctoken == DT_DIGITS5 ||
           token.dctoken == DT_DIGITS68;
}

int set_fraction(CS_INT micros, CS_INT dt_type, CS_DATEREC &parts, CS_BOOL &truncated) {
    if (is_big(dt_type)) {
        parts.datesecprec = MICRO_PRECISION;
        parts.datesecfrac = micros;
        return RESOLVED;
    }
    if (micros % MICROS_A_MILLISECOND != 0)
        truncated = CS_TRUE;
    const CS_INT milliseconds = static_cast<CS_INT>((micros + MICROS_A_MILLISECOND / 2) / MICROS_A_MILLISECOND);
    if (milliseconds > MILLISECONDS_A_SECOND)
        return DATE_SYNTAX;
    // One microsecond short of a second must not become the next.
    parts.datemsecond = milliseconds == MILLISECONDS_A_SECOND ? MILLISECONDS_A_SECOND - 1 : milliseconds;
    return RESOLVED;
}

int resolve_ampm(TokenList &tokens, int index, CS_DATEREC &parts) {
    return com__amcheck(&parts, tokens.take(index)) == 0 ? RESOLVED : DATE_AMPM;
}

// hour : minute, then : second, then : millisecond or a point and a fraction, then AM or PM.
int resolve_clock(TokenList &tokens, int colon, CS_INT dt_type, CS_DATEREC &parts, CS_BOOL &truncated) {
    if (!tokens.is(colon - 1, DT_NUMBER) || !tokens.is(colon + 1, DT_NUMBER))
        return DATE_SYNTAX;
    parts.datehour = tokens.take(colon - 1);
    tokens.take(colon);
    parts.dateminute = tokens.take(colon + 1);

    int next = colon + 2;
    bool has_millisecond = false;
    if (tokens.take_if(next, DT_COLON)) {
        if (!tokens.is(next + 1, DT_NUMBER))
            return DATE_SYNTAX;
        parts.datesecond = tokens.take(next + 1);
        next += 2;
        if (tokens.take_if(next, DT_COLON)) {
            if (!tokens.is(next + 1, DT_NUMBER))
                return DATE_SYNTAX;
            parts.datemsecond = tokens.take(next + 1);
            next += 2;
            has_millisecond = true;
        }
    }
    if (!has_millisecond && tokens.is(next, DT_SEP) && tokens[next].dcvalue == POINT) {
        tokens.take(next);
        if (!is_fraction(tokens[next + 1]))
            return DATE_SYNTAX;
        const CS_INT micros = micros_of_fraction(tokens[next + 1]);
        tokens.take(next + 1);
        if (const int code = set_fraction(micros, dt_type, parts, truncated))
            return code;
        next += 2;
    }
    return tokens.is(next, DT_AMPM) ? resolve_ampm(tokens, next, parts) : RESOLVED;
}

int resolve_time(TokenList &tokens, CS_INT dt_type, CS_DATEREC &parts, CS_BOOL &truncated) {
    if (const int colon = tokens.find_inside(DT_COLON); colon > 0)
        return resolve_clock(tokens, colon, dt_type, parts, truncated);
    const int ampm = tokens.find_inside(DT_AMPM);
    if (ampm < 0)
        return RESOLVED;
    if (!tokens.is(ampm - 1, DT_NUMBER))
        return DATE_SYNTAX;
    parts.datehour = tokens.take(ampm - 1);
    return resolve_ampm(tokens, ampm, parts);
}

int set_year(CS_INT two_digits, CS_DATEREC &parts) {
    constexpr int NO_YEAR = 1;
    parts.dateyear = com__year2digit(two_digits);
    return parts.dateyear == NO_YEAR ? DATE_YEAR2 : RESOLVED;
}

// With a month's name the places of the numbers do not matter, and the order of dates plays no part.
int resolve_named_month(TokenList &tokens, int month, CS_DATEREC &parts) {
    parts.datemonth = tokens.take(month);
    const bool has_separator = month > 0 && tokens.take_if(month - 1, DT_SEP);
    if (!has_separator || !tokens.take_if(month + 1, DT_SEP))
        tokens.take_if(month + 1, DT_COMMA);

    const int year = tokens.find(DT_YEAR4);
    if (year >= 0)
        parts.dateyear = tokens.take(year);
    const int day = tokens.find(DT_NUMBER);
    if (day < 0)
        return year >= 0 ? RESOLVED : DATE_SYNTAX;
    const CS_INT day_of_month = tokens.take(day);
    const int short_year = year < 0 ? tokens.find(DT_NUMBER) : -1;
    if (year < 0 && short_year < 0)
        return DATE_SYNTAX;
    parts.datedmonth = day_of_month;
    tokens.take_if(day + 1, DT_COMMA);
    return year < 0 ? set_year(tokens.take(short_year), parts) : RESOLVED;
}

// What a style says of the numbers of a date.
struct StyleRule {
    int order;          // 0 for the caller's, UNREADABLE for a style that does not read
    bool needs_century; // a year of four digits
};

constexpr int CALLERS_ORDER = 0;
constexpr int UNREADABLE = -1;

StyleRule rule_of(int style) {
    constexpr int CENTURY = 100;
    switch (style) {
    case 0:
    case 9:
        return {CALLERS_ORDER, false};
    case 1:
    case 10:
    case CENTURY + 1:
    case CENTURY + 10:
        return {DATEORDER_MDY, style > CENTURY};
    case 23: // prints a year of four digits, but reads none
    case 2:
    case 11:
    case 21:
    case 22:
    case 40:
    case CENTURY + 2:
    case CENTURY + 11:
    case CENTURY + 21:
    case CENTURY + 22:
    case CENTURY + 40:
        return {DATEORDER_YMD, style > CENTURY};
    case 3:
    case 4:
    case 5:
    case CENTURY + 3:
    case CENTURY + 4:
    case CENTURY + 5:
        return {DATEORDER_DMY, style > CENTURY};
    default:
        return {UNREADABLE, false};
    }
}

// The places of an order.
const char *places_of(int order) {
    constexpr const char *PLACES[] = {"", "mdy", "dmy", "ymd", "ydm", "myd", "dym"};
    return order >= DATEORDER_MDY && order <= DATEORDER_DYM ? PLACES[order] : nullptr;
}

int assign_numbers(TokenList &tokens, int order, bool has_year, CS_DATEREC &parts) {
    const char *places = places_of(order);
    if (places == nullptr)
        return DATE_SYNTAX;
    for (; *places != '\0'; ++places) {
        if (*places == 'y' && has_year)
            continue;
        const int number = tokens.find(DT_NUMBER);
        if (number < 0)
            return DATE_SYNTAX;
        const CS_INT value = tokens.take(number);
        if (*places == 'm')
            parts.datemonth = value - 1;
        else if (*places == 'd')
            parts.datedmonth = value;
        else if (const int code = set_year(value, parts))
            return code;
    }
    return RESOLVED;
}

int resolve_separated(TokenList &tokens, int separator, int style, int order, CS_DATEREC &parts) {
    tokens.take(separator);
    const int second = tokens.find(DT_SEP);
    if (second < 0)
        return DATE_SYNTAX;
    tokens.take(second);

    const StyleRule rule = rule_of(style);
    if (rule.order == UNREADABLE)
        return DATE_SYNTAX;
    const bool may_have_century = rule.order == CALLERS_ORDER || rule.needs_century;
    const int year = may_have_century ? tokens.find(DT_YEAR4) : -1;
    if (rule.needs_century && year < 0)
        return DATE_SYNTAX;
    if (year >= 0)
        parts.dateyear = tokens.take(year);
    if (rule.order != CALLERS_ORDER)
        order = rule.order;
    else if (year == 0 && order != DATEORDER_YDM)
        order = DATEORDER_YMD; // a year of four digits in front settles it, but for those who have the day second
    return assign_numbers(tokens, order, year >= 0, parts);
}

int resolve_run_together(TokenList &tokens, int digits, CS_DATEREC &parts) {
    constexpr int WITHOUT_CENTURY = 6;
    const bool is_short = tokens[digits].dclength == WITHOUT_CENTURY;
    const CS_INT value = tokens.take(digits);
    parts.datedmonth = value % 100;
    parts.datemonth = value / 100 % 100 - 1;
    if (is_short)
        return set_year(value / 10000, parts);
    parts.dateyear = value / 10000;
    return RESOLVED;
}

// ---- The form of programs ----
//
// 2003-01-02 10:30:15.123, with "/" for "-" or with a T, is what programs write. Its tokens need no classing: they mean
// the same whatever the order, but for the one that has the day in front of the month.

// The value of so many ASCII digits, or -1.
template <int DIGITS>
CS_INT number_at(const CS_BYTE *at) {
    CS_INT value = 0;
    bool is_number = true;
    for (int i = 0; i < DIGITS; ++i) {
        is_number &= is_ascii_digit(at[i]);
        value = value * 10 + (at[i] - '0');
    }
    return is_number ? value : -1;
}

bool is_date_mark(CS_BYTE c) { return c == '-' || c == '/'; }

// The digits and marks of the form are themselves in this set.
bool has_ascii_marks(const Walker &walker) {
    if (walker.simple_types() == ISO_1_type_map.chmap)
        return true;
    for (const CS_BYTE mark : {'-', '/', ' ', ':', '.'})
        if (!walker.stands_for_itself(mark))
            return false;
    for (CS_BYTE digit = '0'; digit <= '9'; ++digit) {
        const CS_BYTE text[2] = {digit, 0};
        if (!walker.stands_for_itself(digit) || walker.has_second_level(text) ||
            walker.type_bits(text, CS_CT_DIGIT) == 0)
            return false;
    }
    const CS_BYTE t = walker.single_byte_to_ascii('T');
    return walker.is_one_byte('T') && (t == 'T' || t == 't');
}

// Whether the text has the form; then the record is that of xdaterecfromchar.
bool read_program_form(const Walker &walker, const CS_BYTE *at, CS_INT length, CS_INT dt_type, CS_DATEREC &parts,
                       CS_BOOL &truncated) {
    constexpr CS_INT WITHOUT_FRACTION = 19;
    constexpr CS_INT MOST_DECIMALS = 6;
    const CS_INT decimals = length - WITHOUT_FRACTION - 1;
    if (length < WITHOUT_FRACTION || decimals == 0 || decimals > MOST_DECIMALS)
        return false;
    if (!is_date_mark(at[4]) || !is_date_mark(at[7]) || (at[10] != ' ' && at[10] != 'T') || at[13] != ':' ||
        at[16] != ':')
        return false;
    const CS_INT year = number_at<4>(at), month = number_at<2>(at + 5), day = number_at<2>(at + 8);
    const CS_INT hour = number_at<2>(at + 11), minute = number_at<2>(at + 14), second = number_at<2>(at + 17);
    if ((year | month | day | hour | minute | second) < 0)
        return false;
    Token fraction = {DT_NUMBER, 0, 0};
    if (decimals > 0) {
        if (at[WITHOUT_FRACTION] != '.')
            return false;
        for (CS_INT i = WITHOUT_FRACTION + 1; i < length; ++i) {
            if (!is_ascii_digit(at[i]))
                return false;
            fraction.dcvalue = fraction.dcvalue * 10 + (at[i] - '0');
        }
        fraction.dclength = decimals;
    }
    if (!has_ascii_marks(walker))
        return false;
    parts.dateyear = year;
    parts.datemonth = month - 1;
    parts.datedmonth = day;
    parts.datehour = hour;
    parts.dateminute = minute;
    parts.datesecond = second;
    if (decimals > 0)
        set_fraction(micros_of_fraction(fraction), dt_type, parts, truncated); // of six digits it never fails
    return true;
}

// ---- Dates ----

int no_date(TokenList &tokens) { return tokens.all_used() ? DATE_TIMEONLY : DATE_LEFTOVER; }

int resolve_date(TokenList &tokens, int partonly, int style, int order, CS_DATEREC &parts) {
    if (const int t = tokens.find(DT_T); t >= 0) {
        tokens.take(t);
        if (!tokens.all_used_from(t))
            return DATE_SYNTAX; // only a time may follow
    }
    int code;
    if (const int month = tokens.find(DT_MONTH); month >= 0) {
        code = resolve_named_month(tokens, month, parts);
    } else if (const int separator = tokens.find_inside(DT_SEP); separator > 0) {
        code = resolve_separated(tokens, separator, style, order, parts);
    } else if (const int digits = tokens.find(DT_DIGITS68); digits >= 0) {
        code = resolve_run_together(tokens, digits, parts);
    } else if (const int year = tokens.find(DT_YEAR4); year >= 0) {
        parts.dateyear = tokens.take(year);
        code = RESOLVED;
    } else {
        return no_date(tokens);
    }
    if (code != RESOLVED)
        return code;
    return partonly != DATEWANT_ALL || tokens.all_used() ? RESOLVED : DATE_LEFTOVER;
}

} // namespace
} // namespace dlx

using namespace dlx;

int com__year2digit(int year) {
    constexpr int FIRST_OF_1900S = 50;
    if (year < 0 || year > 99)
        return 1;
    return year < FIRST_OF_1900S ? 2000 + year : 1900 + year;
}

int com__amcheck(CS_DATEREC *pp, int pmflag) {
    constexpr int NOON = 12;
    constexpr int CONTRADICTION = 1;
    if (pmflag != 0) {
        if (pp->datehour == 0)
            return CONTRADICTION;
        if (pp->datehour < NOON)
            pp->datehour += NOON;
        return 0;
    }
    if (pp->datehour > NOON)
        return CONTRADICTION;
    if (pp->datehour == NOON)
        pp->datehour = 0;
    return 0;
}

int datelookup(char *cp, int len, char **list, int cnt, CHAR_ATTRIB *chatr) {
    const Walker walker(chatr);
    Word word;
    return normalize_word(walker, cp, len, word) ? find_name(walker, word, list, cnt) : -1;
}

int findtoken(struct com__datecrack *dc, int token) {
    for (int i = 0; dc[i].dctoken != DT_END; ++i)
        if (token < 0 ? dc[i].dctoken != -token : dc[i].dctoken == token)
            return i;
    return -1;
}

int datetoken(char **cpp, int *lenp, struct com__datecrack *dc, char **mths, char **shortmths, CHAR_ATTRIB *chatr) {
    const Walker walker(chatr);
    Text<false> text(walker, reinterpret_cast<const CS_BYTE *>(*cpp), *lenp);
    const int token = take_token(walker, text, *dc, mths, shortmths);
    *cpp += text.position() - reinterpret_cast<const CS_BYTE *>(*cpp);
    *lenp = text.left();
    return token;
}

int xdaterecfromchar(CS_DATEREC *parts, char *origcp, int origlen, int partonly, int style, int order, char **mths,
                     char **shortmths, CHAR_ATTRIB *chatr, CS_INT dt_type, CS_BOOL *truncated) {
    *truncated = CS_FALSE;
    const Walker walker(chatr);
    const CS_BYTE *const start = reinterpret_cast<const CS_BYTE *>(origcp);
    parts->datehour = parts->dateminute = parts->datesecond = parts->datemsecond = 0;
    parts->datesecfrac = parts->datesecprec = 0;
    parts->datemonth = 0;
    parts->datedmonth = 1;
    const bool by_order = rule_of(style).order == CALLERS_ORDER && places_of(order) != nullptr;
    if (by_order && order != DATEORDER_YDM && partonly != DATEWANT_TIMEONLY &&
        read_program_form(walker, start, origlen, dt_type, *parts, *truncated))
        return RESOLVED;

    TokenList tokens;
    const bool is_read = walker.simple_types() != nullptr
                             ? tokens.read(walker, Text<true>(walker, start, origlen), mths, shortmths)
                             : tokens.read(walker, Text<false>(walker, start, origlen), mths, shortmths);
    if (!is_read)
        return DATE_SYNTAX;
    if (const int code = resolve_time(tokens, dt_type, *parts, *truncated))
        return code;
    return partonly == DATEWANT_TIMEONLY ? no_date(tokens) : resolve_date(tokens, partonly, style, order, *parts);
}

// ---- Values ----

int xdatefromchar(CS_DATETIME *dtp, char *origcp, int origlen, int partonly, int style, int order, char **mths,
                  char **shortmths, CHAR_ATTRIB *chatr, CS_BOOL *truncated) {
    *dtp = {};
    CS_DATEREC parts;
    const int code = xdaterecfromchar(&parts, origcp, origlen, partonly, style, order, mths, shortmths, chatr,
                                      CS_DATETIME_TYPE, truncated);
    if (code != RESOLVED && code != DATE_TIMEONLY)
        return code;
    if (com__timemake(dtp, &parts) != DATE_OK)
        return DATE_BADYEAR;
    return code == DATE_TIMEONLY ? DATE_OK : com__datemake(dtp, &parts);
}

int xbigdatetimefromchar(CS_BIGDATETIME *bdt, char *origcp, int origlen, int partonly, int style, int order,
                         char **mths, char **shortmths, CHAR_ATTRIB *chatr) {
    *bdt = 0;
    CS_DATEREC parts;
    CS_BOOL truncated;
    const int code = xdaterecfromchar(&parts, origcp, origlen, partonly, style, order, mths, shortmths, chatr,
                                      CS_BIGDATETIME_TYPE, &truncated);
    if (code != RESOLVED && code != DATE_TIMEONLY)
        return code;
    CS_BIGTIME time = 0;
    if (const int made = com__bigtimemake(&time, &parts))
        return code == DATE_TIMEONLY ? DATE_BADYEAR : made;
    CS_BIGDATETIME date = FIRST_BIGDATETIME;
    if (code == RESOLVED)
        if (const int made = com__bigdatemake(&date, &parts))
            return made;
    *bdt = date + time;
    return DATE_OK;
}

int com__datefromchar_mb(CS_DATETIME *dtp, char *origcp, int origlen, int style, int order, char **mths,
                         char **shortmths, CHAR_ATTRIB *chatr, CS_BOOL *truncated) {
    const int code =
        xdatefromchar(dtp, origcp, origlen, DATEWANT_ALL, style, order, mths, shortmths, chatr, truncated);
    return code == DATE_OK ? com__datetime_check_range(dtp) : code;
}

int com__bigdatetimefromchar_mb(CS_BIGDATETIME *bdt, char *origcp, int origlen, int style, int order, char **mths,
                                char **shortmths, CHAR_ATTRIB *chatr) {
    const int code = xbigdatetimefromchar(bdt, origcp, origlen, DATEWANT_ALL, style, order, mths, shortmths, chatr);
    return code == DATE_OK ? com__bigdatetime_check_range(bdt) : code;
}

int com__timefromchar_mb(CS_DATETIME *dtp, char *origcp, int origlen, int style, CHAR_ATTRIB *chatr,
                         CS_BOOL *truncated) {
    constexpr int NO_ORDER = 0;
    return xdatefromchar(dtp, origcp, origlen, DATEWANT_TIMEONLY, style, NO_ORDER, nullptr, nullptr, chatr, truncated);
}

int com__dateafromchar_mb(CS_DATE *dp, char *origcp, int origlen, int style, int order, char **mths, char **shortmths,
                          CHAR_ATTRIB *chatr) {
    CS_DATETIME value;
    CS_BOOL truncated;
    const int code =
        xdatefromchar(&value, origcp, origlen, DATEWANT_DATE, style, order, mths, shortmths, chatr, &truncated);
    if (code == DATE_OK)
        *dp = value.dtdays;
    return code;
}

int com__timeafromchar_mb(CS_TIME *tp, char *origcp, int origlen, int style, int order, char **mths, char **shortmths,
                          CHAR_ATTRIB *chatr, CS_BOOL *truncated) {
    CS_DATETIME value;
    const int code =
        xdatefromchar(&value, origcp, origlen, DATEWANT_TIME, style, order, mths, shortmths, chatr, truncated);
    if (code == DATE_OK)
        *tp = value.dttime;
    return code;
}

int com__bigtimefromchar_mb(CS_BIGTIME *bt, char *origcp, int origlen, int style, int order, char **mths,
                            char **shortmths, CHAR_ATTRIB *chatr) {
    CS_DATEREC parts;
    CS_BOOL truncated;
    const int code = xdaterecfromchar(&parts, origcp, origlen, DATEWANT_TIME, style, order, mths, shortmths, chatr,
                                      CS_BIGDATETIME_TYPE, &truncated);
    if (code != RESOLVED && code != DATE_TIMEONLY)
        return code;
    CS_BIGDATETIME scratch; // the date only has to be one
    if (code == RESOLVED)
        if (const int made = com__bigdatemake(&scratch, &parts))
            return made;
    return com__bigtimemake(bt, &parts);
}

int com__date4fromchar_mb(CS_DATETIME4 *dtp4, char *origcp, int origlen, int style, int order, char **mths,
                          char **shortmths, CHAR_ATTRIB *chatr) {
    CS_DATETIME value;
    CS_BOOL truncated;
    const int code =
        xdatefromchar(&value, origcp, origlen, DATEWANT_ALL, style, order, mths, shortmths, chatr, &truncated);
    return code == DATE_OK ? com__dttodate4(&value, dtp4) : code;
}

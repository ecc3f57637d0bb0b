// The tokens of date texts: every class, each kind of character set, the end of the text inside a character, words at
// the limit of their length; and the small pieces around them.

#include "support/date_comparison.h"
#include "support/date_texts.h"

#include <gtest/gtest.h>

#include <climits>
#include <ostream>
#include <string>
#include <vector>

namespace {

using namespace support;

struct Token {
    int token;
    int length = 0;
    CS_INT value = 0;
    bool operator==(const Token &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Token &token) {
    return out << token.token << "(" << token.length << ", " << token.value << ")";
}

constexpr Token END = {DT_END};

// How words are read.
struct Names {
    char **months = com__get_months();
    char **shortmonths = com__get_shortmonths();
};

// All tokens up to the end or the first error, whose other fields mean nothing.
std::vector<Token> tokens(std::string_view text, CHAR_ATTRIB *set = nullptr, Names names = {}) {
    const ExactText exact(text);
    char *at = exact.get();
    int left = exact.length();
    std::vector<Token> result;
    for (;;) {
        struct com__datecrack dc = {UNTOUCHED, UNTOUCHED, UNTOUCHED};
        const int token = datetoken(&at, &left, &dc, names.months, names.shortmonths, set);
        EXPECT_EQ(token, dc.dctoken);
        EXPECT_EQ(at + left, exact.get() + exact.length());
        if (token == DT_ERROR) {
            result.push_back({DT_ERROR});
            return result;
        }
        result.push_back({token, dc.dclength, dc.dcvalue});
        if (token == DT_END)
            return result;
    }
}
using Tokens = std::vector<Token>;

// ---- Classes ----

TEST(DateTokens, EmptyTextEnds) {
    EXPECT_EQ(tokens(""), Tokens{END});
    char text[] = "5";
    char *at = text;
    for (int length : {0, -1, INT_MIN}) {
        int left = length;
        struct com__datecrack dc = {UNTOUCHED, UNTOUCHED, UNTOUCHED};
        EXPECT_EQ(datetoken(&at, &left, &dc, nullptr, nullptr, nullptr), DT_END);
        EXPECT_EQ(at, text);
        EXPECT_EQ(dc.dctoken, DT_END);
        EXPECT_EQ(dc.dclength, 0);
        EXPECT_EQ(dc.dcvalue, 0);
    }
}
TEST(DateTokens, BlanksAreSkipped) {
    EXPECT_EQ(tokens(" "), Tokens{END});
    EXPECT_EQ(tokens("      "), Tokens{END});
    EXPECT_EQ(tokens("  5   :  "), (Tokens{{DT_NUMBER, 1, 5}, {DT_COLON}, END}));
}
TEST(DateTokens, EndIsAnsweredAgain) {
    char text[] = "  ";
    char *at = text;
    int left = 2;
    for (int i = 0; i < 3; ++i) {
        struct com__datecrack dc;
        EXPECT_EQ(datetoken(&at, &left, &dc, nullptr, nullptr, nullptr), DT_END);
        EXPECT_EQ(at, text + 2);
        EXPECT_EQ(left, 0);
    }
}
TEST(DateTokens, OtherWhiteSpaceIsAnError) {
    for (const char *text : {"\t", "\n", "\r", "\v", "\f", "\xA0", " \t", "\x1F"})
        EXPECT_EQ(tokens(text), Tokens{{DT_ERROR}}) << text;
}
TEST(DateTokens, Marks) {
    EXPECT_EQ(tokens("/"), (Tokens{{DT_SEP}, END}));
    EXPECT_EQ(tokens("-"), (Tokens{{DT_SEP}, END}));
    EXPECT_EQ(tokens("."), (Tokens{{DT_SEP, 0, -1}, END}));
    EXPECT_EQ(tokens(","), (Tokens{{DT_COMMA}, END}));
    EXPECT_EQ(tokens(":"), (Tokens{{DT_COLON}, END}));
    EXPECT_EQ(tokens("/-.,::"), (Tokens{{DT_SEP}, {DT_SEP}, {DT_SEP, 0, -1}, {DT_COMMA}, {DT_COLON}, {DT_COLON}, END}));
}
TEST(DateTokens, NumbersByTheirDigits) {
    EXPECT_EQ(tokens("7"), (Tokens{{DT_NUMBER, 1, 7}, END}));
    EXPECT_EQ(tokens("42"), (Tokens{{DT_NUMBER, 2, 42}, END}));
    EXPECT_EQ(tokens("999"), (Tokens{{DT_NUMBER, 3, 999}, END}));
    EXPECT_EQ(tokens("2003"), (Tokens{{DT_YEAR4, 4, 2003}, END}));
    EXPECT_EQ(tokens("54321"), (Tokens{{DT_DIGITS5, 5, 54321}, END}));
    EXPECT_EQ(tokens("654321"), (Tokens{{DT_DIGITS68, 6, 654321}, END}));
    EXPECT_EQ(tokens("87654321"), (Tokens{{DT_DIGITS68, 8, 87654321}, END}));
}
TEST(DateTokens, LeadingZerosCountAsDigits) {
    EXPECT_EQ(tokens("007"), (Tokens{{DT_NUMBER, 3, 7}, END}));
    EXPECT_EQ(tokens("0007"), (Tokens{{DT_YEAR4, 4, 7}, END}));
    EXPECT_EQ(tokens("00000"), (Tokens{{DT_DIGITS5, 5, 0}, END}));
    EXPECT_EQ(tokens("000001"), (Tokens{{DT_DIGITS68, 6, 1}, END}));
    EXPECT_EQ(tokens("00000000"), (Tokens{{DT_DIGITS68, 8, 0}, END}));
}
TEST(DateTokens, SevenDigitsAndMoreThanEightAreErrors) {
    for (const char *text : {"1234567", "0000000", "123456789", "000000000", "1234567890123456789012345678901234567"})
        EXPECT_EQ(tokens(text), Tokens{{DT_ERROR}}) << text;
}
TEST(DateTokens, DigitsBeyondEightAreConsumed) {
    const ExactText exact("99999999999999999999/1");
    char *at = exact.get();
    int left = exact.length();
    struct com__datecrack dc;
    EXPECT_EQ(datetoken(&at, &left, &dc, nullptr, nullptr, nullptr), DT_ERROR);
    EXPECT_EQ(at, exact.get() + 20);
    EXPECT_EQ(left, 2);
    EXPECT_EQ(datetoken(&at, &left, &dc, nullptr, nullptr, nullptr), DT_SEP);
}
TEST(DateTokens, TBreaksEveryWordThatBeginsWithIt) {
    EXPECT_EQ(tokens("T"), (Tokens{{DT_T}, END}));
    EXPECT_EQ(tokens("t"), (Tokens{{DT_T}, END}));
    EXPECT_EQ(tokens("TJan"), (Tokens{{DT_T}, {DT_MONTH, 0, 0}, END}));
    EXPECT_EQ(tokens("TtT5"), (Tokens{{DT_T}, {DT_T}, {DT_T}, {DT_NUMBER, 1, 5}, END}));
    EXPECT_EQ(tokens("Tue"), (Tokens{{DT_T}, {DT_ERROR}}));
    char *names[] = {const_cast<char *>("Tishri"), const_cast<char *>("Tevet"), const_cast<char *>("t"),
                     const_cast<char *>(""),       const_cast<char *>(""),      const_cast<char *>(""),
                     const_cast<char *>(""),       const_cast<char *>(""),      const_cast<char *>(""),
                     const_cast<char *>(""),       const_cast<char *>(""),      const_cast<char *>("")};
    EXPECT_EQ(tokens("Tishri", nullptr, {names, names}), (Tokens{{DT_T}, {DT_ERROR}}));
}
TEST(DateTokens, TInsideAWordBelongsToIt) {
    EXPECT_EQ(tokens("Oct"), (Tokens{{DT_MONTH, 0, 9}, END}));
    EXPECT_EQ(tokens("August"), (Tokens{{DT_MONTH, 0, 7}, END}));
    EXPECT_EQ(tokens("5T"), (Tokens{{DT_NUMBER, 1, 5}, {DT_T}, END}));
}
TEST(DateTokens, MonthsByFullAndShortName) {
    for (int month = 0; month < 12; ++month) {
        EXPECT_EQ(tokens(com__get_months()[month]), (Tokens{{DT_MONTH, 0, month}, END}));
        EXPECT_EQ(tokens(com__get_shortmonths()[month]), (Tokens{{DT_MONTH, 0, month}, END}));
    }
}
TEST(DateTokens, WordsAreReadWithoutCase) {
    EXPECT_EQ(tokens("january"), (Tokens{{DT_MONTH, 0, 0}, END}));
    EXPECT_EQ(tokens("JANUARY"), (Tokens{{DT_MONTH, 0, 0}, END}));
    EXPECT_EQ(tokens("sEPTEMBEr"), (Tokens{{DT_MONTH, 0, 8}, END}));
    for (const char *am : {"AM", "am", "Am", "aM"})
        EXPECT_EQ(tokens(am), (Tokens{{DT_AMPM, 0, 0}, END}));
    for (const char *pm : {"PM", "pm", "Pm", "pM"})
        EXPECT_EQ(tokens(pm), (Tokens{{DT_AMPM, 0, 1}, END}));
}
TEST(DateTokens, AbbreviationsAreOnlyThoseOfTheLists) {
    for (const char *text : {"Janu", "Sept", "Ja", "J", "A", "P", "AMP", "Januaryy", "Sat", "Monday", "noon", "Z"})
        EXPECT_EQ(tokens(text), Tokens{{DT_ERROR}}) << text;
}
TEST(DateTokens, FullNamesComeBeforeShortOnes) {
    char *full[12];
    char *shorter[12];
    for (int i = 0; i < 12; ++i) {
        full[i] = com__get_months()[11 - i];
        shorter[i] = com__get_months()[i];
    }
    EXPECT_EQ(tokens("March", nullptr, {full, shorter}), (Tokens{{DT_MONTH, 0, 9}, END}));
    EXPECT_EQ(tokens("March", nullptr, {shorter, full}), (Tokens{{DT_MONTH, 0, 2}, END}));
}
TEST(DateTokens, AmAndPmComeBeforeMonths) {
    char *names[12];
    for (char *&name : names)
        name = const_cast<char *>("pm");
    EXPECT_EQ(tokens("PM", nullptr, {names, names}), (Tokens{{DT_AMPM, 0, 1}, END}));
}
TEST(DateTokens, TwoLetterMonths) {
    char *names[12];
    for (char *&name : names)
        name = const_cast<char *>("xx");
    EXPECT_EQ(tokens("XX", nullptr, {names, names}), (Tokens{{DT_MONTH, 0, 0}, END}));
}
TEST(DateTokens, WithoutEitherListOnlyAmAndPmAreWords) {
    char **const months = com__get_months();
    for (const Names &names : {Names{nullptr, nullptr}, Names{months, nullptr}, Names{nullptr, months}}) {
        EXPECT_EQ(tokens("January", nullptr, names), Tokens{{DT_ERROR}});
        EXPECT_EQ(tokens("May", nullptr, names), Tokens{{DT_ERROR}});
        EXPECT_EQ(tokens("pm", nullptr, names), (Tokens{{DT_AMPM, 0, 1}, END}));
        EXPECT_EQ(tokens("12", nullptr, names), (Tokens{{DT_NUMBER, 2, 12}, END}));
    }
}
TEST(DateTokens, WordsTakeIdentifierCharactersOnly) {
    EXPECT_EQ(tokens("Jan5"), (Tokens{{DT_MONTH, 0, 0}, {DT_NUMBER, 1, 5}, END}));
    EXPECT_EQ(tokens("5Jan"), (Tokens{{DT_NUMBER, 1, 5}, {DT_MONTH, 0, 0}, END}));
    EXPECT_EQ(tokens("Jan-Feb,Mar"),
              (Tokens{{DT_MONTH, 0, 0}, {DT_SEP}, {DT_MONTH, 0, 1}, {DT_COMMA}, {DT_MONTH, 0, 2}, END}));
    EXPECT_EQ(tokens("Jan_"), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("Jan\xE9"), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("#Jan"), Tokens{{DT_ERROR}});
}
TEST(DateTokens, EveryOtherByteIsAnError) {
    for (int code = 0; code < 256; ++code) {
        const std::string text(1, static_cast<char>(code));
        Tokens expected{{DT_ERROR}};
        switch (code) {
        case ' ':
            expected = {END};
            break;
        case '/':
        case '-':
            expected = {{DT_SEP}, END};
            break;
        case '.':
            expected = {{DT_SEP, 0, -1}, END};
            break;
        case ',':
            expected = {{DT_COMMA}, END};
            break;
        case ':':
            expected = {{DT_COLON}, END};
            break;
        case 'T':
        case 't':
            expected = {{DT_T}, END};
            break;
        }
        if (code >= '0' && code <= '9')
            expected = {{DT_NUMBER, 1, code - '0'}, END};
        EXPECT_EQ(tokens(text), expected) << code;
    }
}
TEST(DateTokens, NulIsAnErrorLikeAnyOther) {
    EXPECT_EQ(tokens(std::string_view("5\0", 2)), (Tokens{{DT_NUMBER, 1, 5}, {DT_ERROR}}));
    EXPECT_EQ(tokens(std::string_view("Jan\0", 4)), (Tokens{{DT_MONTH, 0, 0}, {DT_ERROR}}));
}

// ---- Words at the limit ----

struct LongNames {
    explicit LongNames(std::string text) : name(std::move(text)) {
        for (char *&entry : list)
            entry = name.data();
    }
    std::string name;
    char *list[12];
};

TEST(DateTokens, AWordOfThirtyBytesIsRead) {
    LongNames names(std::string(30, 'q'));
    EXPECT_EQ(tokens(std::string(30, 'Q'), nullptr, {names.list, names.list}), (Tokens{{DT_MONTH, 0, 0}, END}));
    EXPECT_EQ(datelookup(names.name.data(), 30, names.list, 12, nullptr), 0);
}
TEST(DateTokens, AWordOfThirtyOneBytesIsInNoList) {
    LongNames names(std::string(31, 'q'));
    EXPECT_EQ(tokens(names.name, nullptr, {names.list, names.list}), Tokens{{DT_ERROR}});
    EXPECT_EQ(datelookup(names.name.data(), 31, names.list, 12, nullptr), -1);
    // Nor does a name that long match by its first thirty.
    EXPECT_EQ(tokens(std::string(30, 'q'), nullptr, {names.list, names.list}), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens(std::string(100000, 'q'), nullptr, {names.list, names.list}), Tokens{{DT_ERROR}});
}
TEST(DateTokens, TheLimitIsInBytesNotInCharacters) {
    Folding<DoubleByteSet> set;
    LongNames fifteen(std::string(15, 'q'));
    EXPECT_EQ(tokens(wide(fifteen.name), set.get(), {fifteen.list, fifteen.list}), (Tokens{{DT_MONTH, 0, 0}, END}));
    LongNames sixteen(std::string(16, 'q'));
    EXPECT_EQ(tokens(wide(sixteen.name), set.get(), {sixteen.list, sixteen.list}), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens(sixteen.name, set.get(), {sixteen.list, sixteen.list}), (Tokens{{DT_MONTH, 0, 0}, END}));
    LongNames wide_sixteen(wide(sixteen.name));
    EXPECT_EQ(tokens(sixteen.name, set.get(), {wide_sixteen.list, wide_sixteen.list}), Tokens{{DT_ERROR}});
}

// ---- Character sets of several bytes ----

TEST(DateTokens, WideCharactersReadLikeTheirNarrowForms) {
    Folding<DoubleByteSet> double_byte;
    Folding<ThreeByteSet> three_byte;
    Folding<FourByteSet> four_byte;
    for (ConstructedSet *set : std::initializer_list<ConstructedSet *>{&double_byte, &three_byte, &four_byte}) {
        EXPECT_EQ(tokens(wide("12/2003"), set->get()),
                  (Tokens{{DT_NUMBER, 2, 12}, {DT_SEP}, {DT_YEAR4, 4, 2003}, END}));
        EXPECT_EQ(tokens(wide("  .,:-Tt"), set->get()),
                  (Tokens{{DT_SEP, 0, -1}, {DT_COMMA}, {DT_COLON}, {DT_SEP}, {DT_T}, {DT_T}, END}));
        EXPECT_EQ(tokens(wide("JANUARY"), set->get()), (Tokens{{DT_MONTH, 0, 0}, END}));
        EXPECT_EQ(tokens(wide("pM"), set->get()), (Tokens{{DT_AMPM, 0, 1}, END}));
        EXPECT_EQ(tokens("1" + wide("2") + "3" + wide("4"), set->get()), (Tokens{{DT_YEAR4, 4, 1234}, END}));
        EXPECT_EQ(tokens("J" + wide("a") + "N", set->get()), (Tokens{{DT_MONTH, 0, 0}, END}));
        EXPECT_EQ(tokens("A" + wide("m"), set->get()), (Tokens{{DT_AMPM, 0, 0}, END}));
        EXPECT_EQ(tokens(wide("87654321"), set->get()), (Tokens{{DT_DIGITS68, 8, 87654321}, END}));
        EXPECT_EQ(tokens(wide("7654321"), set->get()), Tokens{{DT_ERROR}});
    }
}
TEST(DateTokens, NamesInTheListsMayBeWide) {
    Folding<DoubleByteSet> set;
    LongNames names(wide("Nisan"));
    EXPECT_EQ(tokens("nisan", set.get(), {names.list, names.list}), (Tokens{{DT_MONTH, 0, 0}, END}));
    EXPECT_EQ(tokens(wide("NISAN"), set.get(), {names.list, names.list}), (Tokens{{DT_MONTH, 0, 0}, END}));
}
TEST(DateTokens, CaseIsThatOfTheNormalForms) {
    DoubleByteSet set; // in which each character is its own normal form
    EXPECT_EQ(tokens("Jan", set.get()), (Tokens{{DT_MONTH, 0, 0}, END}));
    EXPECT_EQ(tokens("jan", set.get()), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("AM", set.get()), (Tokens{{DT_AMPM, 0, 0}, END}));
    EXPECT_EQ(tokens("am", set.get()), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("t", set.get()), (Tokens{{DT_T}, END}));
}
TEST(DateTokens, CharactersWithoutAsciiFormStandAsTheyAre) {
    Folding<DoubleByteSet> set;
    const CHAR_MAP letter = {0, 0, CS_LEX_IDENT, CS_CT_LOWER};
    set.type_row(0xB0, 0);
    set.type(0, 0xB0, letter); // a whole page of letters, without normal forms
    LongNames names("\xB0\x41\xB0\x42");
    EXPECT_EQ(tokens("\xB0\x41\xB0\x42", set.get(), {names.list, names.list}), (Tokens{{DT_MONTH, 0, 0}, END}));
    EXPECT_EQ(tokens("\xB0\x61\xB0\x42", set.get(), {names.list, names.list}), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("\xB0\x42\xB0\x41", set.get(), {names.list, names.list}), Tokens{{DT_ERROR}});
}
TEST(DateTokens, TwoCharactersOfAmAndPmAreCountedAsCharacters) {
    Folding<DoubleByteSet> set;
    // Two bytes, but one character.
    LongNames names("\xA3\xC1");
    EXPECT_EQ(tokens(wide("A"), set.get(), {names.list, names.list}), (Tokens{{DT_MONTH, 0, 0}, END}));
    // Four bytes, two characters.
    EXPECT_EQ(tokens(wide("AM"), set.get(), {nullptr, nullptr}), (Tokens{{DT_AMPM, 0, 0}, END}));
    // The two bytes of the list, but one character.
    ConstructedSet joined(1, 1);
    joined.width('A', 'A', 2, 2).norm(0, 'A', 0);
    EXPECT_EQ(tokens("AM", joined.get()), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("PM", joined.get()), (Tokens{{DT_AMPM, 0, 1}, END}));
}
TEST(DateTokens, DigitsWithoutAsciiFormAreErrors) {
    WideWithoutForms set;
    EXPECT_EQ(tokens(wide("5"), set.get()), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("1" + wide("5"), set.get()), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens(wide("5") + "1/", set.get()), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("15/", set.get()), (Tokens{{DT_NUMBER, 2, 15}, {DT_SEP}, END}));
}
TEST(DateTokens, NormalizedSingleBytes) {
    NormalizedBytes set;
    // 0xB0 to 0xB9 read as digits but have no digit bit; the comma, point and minus sign need none.
    EXPECT_EQ(tokens("\xAC\xAE\xAD", set.get()), (Tokens{{DT_COMMA}, {DT_SEP, 0, -1}, {DT_SEP}, END}));
    EXPECT_EQ(tokens("\xB5", set.get()), Tokens{{DT_ERROR}});
}
TEST(DateTokens, WithoutTypePagesThereAreOnlyMarks) {
    BareBytes set;
    EXPECT_EQ(tokens(" /-.,:Tt", set.get()),
              (Tokens{{DT_SEP}, {DT_SEP}, {DT_SEP, 0, -1}, {DT_COMMA}, {DT_COLON}, {DT_T}, {DT_T}, END}));
    EXPECT_EQ(tokens("5", set.get()), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("Jan", set.get()), Tokens{{DT_ERROR}});
}

// ---- The end of the text inside a character ----

TEST(DateTokens, ACharacterThatTheEndCutsIsAnError) {
    Folding<DoubleByteSet> double_byte;
    EXPECT_EQ(tokens("\xA3", double_byte.get()), Tokens{{DT_ERROR}});
    EXPECT_EQ(tokens("1\xA3", double_byte.get()), (Tokens{{DT_NUMBER, 1, 1}, {DT_ERROR}}));
    EXPECT_EQ(tokens("Jan\xA3", double_byte.get()), (Tokens{{DT_MONTH, 0, 0}, {DT_ERROR}}));
    EXPECT_EQ(tokens("AM\xA3", double_byte.get()), (Tokens{{DT_AMPM, 0, 0}, {DT_ERROR}}));
    EXPECT_EQ(tokens(" \xA3", double_byte.get()), Tokens{{DT_ERROR}});
}
TEST(DateTokens, CutCharactersOfThreeAndFourBytes) {
    Folding<ThreeByteSet> three_byte;
    EXPECT_EQ(tokens("1\x8F", three_byte.get()), (Tokens{{DT_NUMBER, 1, 1}, {DT_ERROR}}));
    EXPECT_EQ(tokens("1\x8F\xA1", three_byte.get()), (Tokens{{DT_NUMBER, 1, 1}, {DT_ERROR}}));
    Folding<FourByteSet> four_byte;
    EXPECT_EQ(tokens("1\x81", four_byte.get()), (Tokens{{DT_NUMBER, 1, 1}, {DT_ERROR}}));
    EXPECT_EQ(tokens("1\x81\x35", four_byte.get()), (Tokens{{DT_NUMBER, 1, 1}, {DT_ERROR}}));
    EXPECT_EQ(tokens("1\x81\x35\x81", four_byte.get()), (Tokens{{DT_NUMBER, 1, 1}, {DT_ERROR}}));
}
TEST(DateTokens, ACutDigitDoesNotCount) {
    // Widths alone: a digit of two bytes whose second one the text does not have.
    ConstructedSet set(1, 0);
    set.width('5', '5', 2, 1);
    EXPECT_EQ(tokens("15", set.get()), (Tokens{{DT_NUMBER, 1, 1}, {DT_ERROR}}));
    EXPECT_EQ(tokens("15x", set.get()), (Tokens{{DT_NUMBER, 2, 15}, END}));
}
TEST(DateTokens, WidthOfZeroStepsOverOneByte) {
    ConstructedSet set(1, 0);
    set.width('5', '5', 0, 1).width('/', '/', 0, 1).width('a', 'a', 0, 1);
    EXPECT_EQ(tokens("55/Jan", set.get()), (Tokens{{DT_NUMBER, 2, 55}, {DT_SEP}, {DT_MONTH, 0, 0}, END}));
}
TEST(DateTokens, NamesThatEndInsideACharacterAreNotReadBeyondTheirEnd) {
    Folding<DoubleByteSet> set;
    char *names[12];
    std::vector<ExactText> ends;
    for (char *&name : names) {
        ends.emplace_back(std::string_view("Jan\xA3\0", 5));
        name = ends.back().get();
    }
    EXPECT_EQ(tokens("Jan", set.get(), {names, names}), Tokens{{DT_ERROR}});
    Folding<ThreeByteSet> three;
    for (std::size_t i = 0; i < 12; ++i)
        names[i] = (ends[i] = ExactText(std::string_view("Jan\x8F\0", 5))).get();
    EXPECT_EQ(tokens("Jan", three.get(), {names, names}), Tokens{{DT_ERROR}});
    // Not even by a word that is cut in the same place, or where a zero byte makes the name a whole one.
    for (std::size_t i = 0; i < 12; ++i)
        names[i] = (ends[i] = ExactText(std::string_view("Jan\xA3\0", 5))).get();
    const ExactText cut("Jan\xA3");
    EXPECT_EQ(datelookup(cut.get(), 4, names, 12, set.get()), -1);
    set.norm(1, 0, 's');
    EXPECT_EQ(tokens("Jans", set.get(), {names, names}), Tokens{{DT_ERROR}});
}

// ---- Finding tokens ----

TEST(FindToken, FirstOfItsClass) {
    struct com__datecrack list[] = {
        {DT_NUMBER, 1, 1}, {DT_SEP, 0, 0}, {DT_NUMBER, 1, 2}, {DT_SEP, 0, -1}, {DT_END, 0, 0}};
    EXPECT_EQ(findtoken(list, DT_NUMBER), 0);
    EXPECT_EQ(findtoken(list, DT_SEP), 1);
    EXPECT_EQ(findtoken(list, DT_COLON), -1);
}
TEST(FindToken, NothingBehindTheEndAndNotTheEndItself) {
    struct com__datecrack list[] = {{DT_USED, 0, 0}, {DT_END, 0, 0}, {DT_COLON, 0, 0}, {DT_END, 0, 0}};
    EXPECT_EQ(findtoken(list, DT_COLON), -1);
    EXPECT_EQ(findtoken(list, DT_END), -1);
    EXPECT_EQ(findtoken(list + 1, DT_COLON), -1);
    EXPECT_EQ(findtoken(list + 1, -DT_USED), -1);
}
TEST(FindToken, NegativeFindsTheFirstOfAnotherClass) {
    struct com__datecrack list[] = {{DT_USED, 0, 0}, {DT_USED, 0, 0}, {DT_COMMA, 0, 0}, {DT_END, 0, 0}};
    EXPECT_EQ(findtoken(list, -DT_USED), 2);
    EXPECT_EQ(findtoken(list, -DT_COMMA), 0);
    EXPECT_EQ(findtoken(list + 2, -DT_COMMA), -1);
    EXPECT_EQ(findtoken(list + 3, -DT_USED), -1);
}

// ---- Looking up words ----

TEST(DateLookup, WholeWordsWithoutCase) {
    char february[] = "fEBRUARY";
    EXPECT_EQ(datelookup(february, 8, com__get_months(), 12, nullptr), 1);
    EXPECT_EQ(datelookup(february, 7, com__get_months(), 12, nullptr), -1);
    EXPECT_EQ(datelookup(february, 3, com__get_months(), 12, nullptr), -1);
    EXPECT_EQ(datelookup(february, 3, com__get_shortmonths(), 12, nullptr), 1);
    EXPECT_EQ(datelookup(february, 8, com__get_months(), 1, nullptr), -1);
    EXPECT_EQ(datelookup(february, 8, com__get_months(), 2, nullptr), 1);
    EXPECT_EQ(datelookup(february, 8, com__get_months(), 0, nullptr), -1);
}
TEST(DateLookup, LettersOutsideAsciiFoldInIso1) {
    LongNames names("M\xC4rz");
    char text[] = "m\xE4RZ";
    EXPECT_EQ(datelookup(text, 4, names.list, 12, nullptr), 0);
}
TEST(DateLookup, AnEmptyWordMatchesAnEmptyName) {
    LongNames names("");
    char text[] = "x";
    EXPECT_EQ(datelookup(text, 0, names.list, 12, nullptr), 0);
    EXPECT_EQ(datelookup(text, 0, com__get_months(), 12, nullptr), -1);
    EXPECT_EQ(datelookup(text, 1, names.list, 12, nullptr), -1);
}
TEST(DateLookup, WeekdaysAndOtherLists) {
    char text[] = "saturday";
    EXPECT_EQ(datelookup(text, 8, com__get_days(), 7, nullptr), 6);
}
TEST(DateLookup, AWordThatTheLengthCutsIsNotReadBeyondIt) {
    Folding<DoubleByteSet> set;
    const ExactText word("Jan\xA3");
    EXPECT_EQ(datelookup(word.get(), 4, com__get_shortmonths(), 12, set.get()), -1);
    // Nor does what it would be with a zero byte match.
    set.norm(1, 0, 'n');
    const ExactText cut_n("Ja\xA3");
    EXPECT_EQ(datelookup(cut_n.get(), 3, com__get_shortmonths(), 12, set.get()), -1);
    char whole_n[] = "Ja\xA3";
    EXPECT_EQ(datelookup(whole_n, 4, com__get_shortmonths(), 12, set.get()), 0);
}
TEST(DateLookup, AgainstTheNaiveReading) {
    DateTexts texts(7);
    auto sets = date_sets();
    for (int i = 0; i < 50000; ++i) {
        const auto &set = sets[texts.random()() % sets.size()];
        CS_ATTRIB *const ca = set ? set->get() : nullptr;
        char **const list = texts.random()() % 2 != 0 ? com__get_months() : com__get_shortmonths();
        std::string word = list[texts.random()() % 12];
        for (char &c : word)
            if (texts.random()() % 16 == 0)
                c = static_cast<char>(c ^ 0x20);
        if (texts.random()() % 4 == 0)
            word += random_text(texts.random(), texts.random()() % 28);
        word = texts.widened(word);
        const ExactText exact(word);
        ASSERT_EQ(datelookup(exact.get(), exact.length(), list, 12, ca), naive::date_lookup(word, list, 12, ca))
            << word;
    }
}

// ---- Hours of a 12-hour clock, years of two digits ----

TEST(AmCheck, Morning) {
    for (int hour = 0; hour <= 999; ++hour) {
        CS_DATEREC record = untouched_record();
        record.datehour = hour;
        EXPECT_EQ(com__amcheck(&record, 0), hour > 12 ? 1 : 0) << hour;
        EXPECT_EQ(record.datehour, hour == 12 ? 0 : hour) << "which stays where it contradicts";
        EXPECT_EQ(record.dateminute, UNTOUCHED);
    }
}
TEST(AmCheck, Afternoon) {
    for (int hour = 0; hour <= 999; ++hour) {
        CS_DATEREC record = untouched_record();
        record.datehour = hour;
        EXPECT_EQ(com__amcheck(&record, 1), hour == 0 ? 1 : 0) << hour;
        EXPECT_EQ(record.datehour, hour > 0 && hour < 12 ? hour + 12 : hour) << "13 PM is 13";
    }
}
TEST(YearOfTwoDigits, NinetyNineOfTheTwoCenturies) {
    for (int year = -200; year <= 2100; ++year) {
        const int expected = year >= 0 && year <= 49 ? 2000 + year : year >= 50 && year <= 99 ? 1900 + year : 1;
        EXPECT_EQ(com__year2digit(year), expected) << year;
    }
    EXPECT_EQ(com__year2digit(INT_MIN), 1);
    EXPECT_EQ(com__year2digit(INT_MAX), 1);
}

// ---- The built-in English data ----

TEST(EnglishDates, Names) {
    static constexpr const char *MONTHS[] = {"January", "February", "March",     "April",   "May",      "June",
                                             "July",    "August",   "September", "October", "November", "December"};
    static constexpr const char *DAYS[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                           "Thursday", "Friday", "Saturday"};
    for (int month = 0; month < 12; ++month) {
        EXPECT_STREQ(com__get_months()[month], MONTHS[month]);
        EXPECT_EQ(com__get_shortmonths()[month], std::string(MONTHS[month]).substr(0, 3));
    }
    for (int day = 0; day < 7; ++day)
        EXPECT_STREQ(com__get_days()[day], DAYS[day]);
    EXPECT_STREQ(com__get_ampm()[0], "AM");
    EXPECT_STREQ(com__get_ampm()[1], "PM");
}
TEST(EnglishDates, Conventions) {
    EXPECT_EQ(com__get_firstday(), 1);
    EXPECT_STREQ(com__get_date_order(), "mdy");
    EXPECT_EQ(com__get_date_order_id(), DATEORDER_MDY);
}
TEST(EnglishDates, TablesAreTheSameEachTime) {
    EXPECT_EQ(com__get_months(), com__get_months());
    EXPECT_EQ(com__get_shortmonths(), com__get_shortmonths());
    EXPECT_EQ(com__get_days(), com__get_days());
    EXPECT_EQ(com__get_date_order(), com__get_date_order());
    EXPECT_EQ(com__get_ampm(), com__get_ampm());
}

} // namespace

// Money text both ways. The oracle restates the told steps one by one; texts are held against it in every kind of
// character set, at every room, and at the edge of a page behind which nothing may be read.

#include "support/money.h"
#include "support/money_text.h"
#include "support/null_calls.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace {

using namespace support;

constexpr int CASES = 150000;

// Text that ends where readable memory ends.
class EdgeOfMemory {
public:
    EdgeOfMemory() : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        base_ =
            static_cast<char *>(mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(base_ + page_, page_, PROT_NONE);
    }
    ~EdgeOfMemory() { munmap(base_, 2 * page_); }
    EdgeOfMemory(const EdgeOfMemory &) = delete;

    char *place(std::string_view text) {
        char *const start = base_ + page_ - text.size();
        std::memcpy(start, text.data(), text.size());
        return start;
    }

private:
    std::size_t page_;
    char *base_;
};

Answer read(std::string_view text, CHAR_ATTRIB *set = nullptr) {
    static EdgeOfMemory edge;
    CS_MONEY value = money(UNWRITTEN);
    const int code = com__mnyfromchar_mb(&value, edge.place(text), static_cast<int>(text.size()), 0, set);
    return {code, count_of(value)};
}
Answer read4(std::string_view text, CHAR_ATTRIB *set = nullptr) {
    static EdgeOfMemory edge;
    CS_MONEY4 value = money4(0x5A5A5A5A);
    const int code = com__mny4fromchar_mb(&value, edge.place(text), static_cast<int>(text.size()), 0, set);
    return {code, value.mny4};
}

// ---- Reading: the edge cases ----

TEST(MoneyRead, EmptyTextIsZero) {
    EXPECT_EQ(read(""), (Answer{0, 0}));
    CS_MONEY value = money(UNWRITTEN);
    char text[] = "5";
    EXPECT_EQ(com__mnyfromchar_mb(&value, text, -1, 0, nullptr), 0);
    EXPECT_EQ(count_of(value), 0);
}
TEST(MoneyRead, TextWithoutDigitsIsZero) {
    for (const char *text : {" ", "   ", "+", "-", "$", "- $", "$ -", ".", ",", " -$., "})
        EXPECT_EQ(read(text), (Answer{0, 0})) << text;
}
TEST(MoneyRead, PlainNumbers) {
    EXPECT_EQ(read("0"), (Answer{0, 0}));
    EXPECT_EQ(read("-0"), (Answer{0, 0}));
    EXPECT_EQ(read("1"), (Answer{0, 10000}));
    EXPECT_EQ(read("1."), (Answer{0, 10000}));
    EXPECT_EQ(read("1.2"), (Answer{0, 12000}));
    EXPECT_EQ(read("1.23"), (Answer{0, 12300}));
    EXPECT_EQ(read("1.234"), (Answer{0, 12340}));
    EXPECT_EQ(read("1.2345"), (Answer{0, 12345}));
    EXPECT_EQ(read(".5"), (Answer{0, 5000}));
    EXPECT_EQ(read("-.5"), (Answer{0, -5000}));
    EXPECT_EQ(read("000000000000000000000000000000012"), (Answer{0, 120000}));
}
TEST(MoneyRead, OneSignAndASecondIsSyntax) {
    EXPECT_EQ(read("+1"), (Answer{0, 10000}));
    EXPECT_EQ(read("-1"), (Answer{0, -10000}));
    EXPECT_EQ(read("--1"), (Answer{2, 0}));
    EXPECT_EQ(read("+-1"), (Answer{2, 0}));
    EXPECT_EQ(read("- -1"), (Answer{2, 0}));
    EXPECT_EQ(read("1-"), (Answer{2, 1}));
}
TEST(MoneyRead, CurrencyOnBothSidesOfTheSignAndASecondIsSyntax) {
    EXPECT_EQ(read("$1"), (Answer{0, 10000}));
    EXPECT_EQ(read("-$1"), (Answer{0, -10000}));
    EXPECT_EQ(read("$-1"), (Answer{0, -10000}));
    EXPECT_EQ(read(" - $ 1"), (Answer{0, -10000}));
    EXPECT_EQ(read(" $ - 1"), (Answer{0, -10000}));
    EXPECT_EQ(read("$$1"), (Answer{2, 0}));
    EXPECT_EQ(read("$-$1"), (Answer{2, 0}));
    EXPECT_EQ(read("1$"), (Answer{2, 1}));
}
TEST(MoneyRead, EveryCurrencyCodeOfTheBuiltInSet) {
    for (int code = 1; code < 256; ++code) {
        const std::string text = std::string(1, static_cast<char>(code)) + "7";
        const bool currency = code == 0x24 || (code >= 0xA3 && code <= 0xA5);
        if (currency) {
            EXPECT_EQ(read(text), (Answer{0, 70000})) << code;
        } else if (!std::strchr("+- .,0123456789", code)) {
            EXPECT_EQ(read(text).code, 2) << code;
        }
    }
}
TEST(MoneyRead, OnlyTheBlankIsSkippedInFrontAndAnySpaceBehind) {
    EXPECT_EQ(read("   12"), (Answer{0, 120000}));
    EXPECT_EQ(read("\t12"), (Answer{2, 0}));
    EXPECT_EQ(read("12 \t\n\r\v\f "), (Answer{0, 120000}));
    EXPECT_EQ(read("12\xA0\xAD\x8E\x8F\x0E\x0F"), (Answer{0, 120000})); // space in this set, all of them
    EXPECT_EQ(read("12 3"), (Answer{2, 12}));
    EXPECT_EQ(read("12x"), (Answer{2, 12}));
    EXPECT_EQ(read(std::string_view("12\0", 3)), (Answer{2, 12}));
}
TEST(MoneyRead, TheSmallest) {
    EXPECT_EQ(read("-922337203685477.5808"), (Answer{0, SMALLEST}));
    EXPECT_EQ(read("-922337203685477.5809").code, 1);
    EXPECT_EQ(read("-922337203685477.58080"), (Answer{0, SMALLEST}));
    EXPECT_EQ(read("-922337203685477.58081").code, 1);
    EXPECT_EQ(read("-922337203685477.58085").code, 1);
    EXPECT_EQ(read("-922337203685477.580809"), (Answer{0, SMALLEST}));
    EXPECT_EQ(read("-$922,337,203,685,477.5808 "), (Answer{0, SMALLEST}));
}
TEST(MoneyRead, TheSmallestByRounding) {
    EXPECT_EQ(read("-922337203685477.58075"), (Answer{0, SMALLEST}));
    EXPECT_EQ(read("-922337203685477.58074"), (Answer{0, -LARGEST}));
}
TEST(MoneyRead, TheDigitsOfTheSmallestTooFarLeftAreOverflow) {
    EXPECT_EQ(read("-92233720368547758.08"), (Answer{1, SMALLEST}));
    EXPECT_EQ(read("-9223372036854775808"), (Answer{1, SMALLEST}));
    EXPECT_EQ(read("-9223372036854775808.1"), (Answer{1, SMALLEST}));
    EXPECT_EQ(read("-922337203685477580.8"), (Answer{1, SMALLEST}));
}
TEST(MoneyRead, TheLargest) {
    EXPECT_EQ(read("922337203685477.5807"), (Answer{0, LARGEST}));
    EXPECT_EQ(read("922337203685477.5808").code, 1);
    EXPECT_EQ(read("922337203685477.58074"), (Answer{0, LARGEST}));
    EXPECT_EQ(read("922337203685477.58075"), (Answer{1, SMALLEST})); // what was read, one past the largest
    EXPECT_EQ(read("922337203685478").code, 1);
    EXPECT_EQ(read("99999999999999999999999999").code, 1);
}
TEST(MoneyRead, OnlyTheFifthDecimalRounds) {
    EXPECT_EQ(read("1.23455"), (Answer{0, 12346}));
    EXPECT_EQ(read("1.234549"), (Answer{0, 12345}));
    EXPECT_EQ(read("-1.23455"), (Answer{0, -12346}));
    EXPECT_EQ(read("1.99995"), (Answer{0, 20000}));
    EXPECT_EQ(read("0.00005"), (Answer{0, 1}));
    EXPECT_EQ(read("1.2345000000000000000000000000000009"), (Answer{0, 12345}));
}
TEST(MoneyRead, Separators) {
    EXPECT_EQ(read("1,234.50"), (Answer{0, 12345000}));
    EXPECT_EQ(read("1,234,567"), (Answer{0, 12345670000}));
    EXPECT_EQ(read("12,345"), (Answer{0, 123450000}));
    EXPECT_EQ(read("123,456"), (Answer{0, 1234560000}));
    EXPECT_EQ(read("1,23,456"), (Answer{2, 123}));
    EXPECT_EQ(read("1234,567"), (Answer{2, 1234}));
    EXPECT_EQ(read("1,2345,678"), (Answer{2, 12345}));
}
TEST(MoneyRead, TheLastGroupIsNotCounted) {
    EXPECT_EQ(read("1,23"), (Answer{0, 1230000}));
    EXPECT_EQ(read("1,"), (Answer{0, 10000}));
    EXPECT_EQ(read("1,2345"), (Answer{0, 123450000}));
}
TEST(MoneyRead, ASeparatorMayStandInFrontOfAllDigitsAndOnce) {
    EXPECT_EQ(read(",5"), (Answer{0, 50000}));
    EXPECT_EQ(read(",,5"), (Answer{2, 0}));
}
TEST(MoneyRead, ASeparatorMayFollowSevenDigits) {
    EXPECT_EQ(read("1234567,890"), (Answer{0, 12345678900000}));
    EXPECT_EQ(read("123456,890"), (Answer{2, 123456}));
    EXPECT_EQ(read("12345678,890"), (Answer{2, 12345678}));
}
TEST(MoneyRead, ASeparatorMayStandAmongTheFirstDecimals) {
    EXPECT_EQ(read("1.2,3"), (Answer{0, 12300}));
    EXPECT_EQ(read("1.,2"), (Answer{0, 12000}));
    EXPECT_EQ(read("1,234.,5"), (Answer{0, 12345000}));
    EXPECT_EQ(read("1,234.5,6"), (Answer{2, 12345}));
}
TEST(MoneyRead, GroupsCountOnlyTheDigitsThatAreTaken) {
    EXPECT_EQ(read("1.2345,"), (Answer{2, 12345}));
    // With the digits past the fourth decimal, three would stand before the last separator, or seven.
    EXPECT_EQ(read(",.123,441,"), (Answer{2, 1234}));
    EXPECT_EQ(read(".1234000,"), (Answer{2, 1234}));
}
TEST(MoneyRead, ASecondPointIsSyntax) {
    EXPECT_EQ(read("1.2.3"), (Answer{2, 12}));
    EXPECT_EQ(read(".."), (Answer{2, 0}));
}
TEST(MoneyRead, OverflowAmongTheDigitsComesBeforeSyntaxBehindThem) {
    EXPECT_EQ(read("99999999999999999999x").code, 1);
    EXPECT_EQ(read("999999999999999999x"), (Answer{2, 999999999999999999}));
    EXPECT_EQ(read("999999999999999999"), (Answer{1, 999999999999999999}));
}
TEST(MoneyRead, StyleIsIgnored) {
    for (const int style : {0, 1, -1, 0x401, INT_MAX}) {
        CS_MONEY value = money(UNWRITTEN);
        char text[] = "1,234.5";
        EXPECT_EQ(com__mnyfromchar_mb(&value, text, 7, style, nullptr), 0);
        EXPECT_EQ(count_of(value), 12345000);
    }
}

TEST(MoneyRead, PlainTextOfEveryLength) {
    // Around the sixteen bytes that are read at once, with the point at every place.
    RandomCounts random(36);
    for (int size = 0; size <= 22; ++size)
        for (int point = -1; point < size; ++point)
            for (const char *sign : {"", "-", "+"})
                for (int i = 0; i < 20; ++i) {
                    std::string text = sign;
                    for (int k = 0; k < size; ++k)
                        text += k == point ? '.' : static_cast<char>('0' + (i == 0 ? 9 : random.below(10)));
                    ASSERT_EQ(read(text), told_read(text, nullptr)) << text;
                    if (text.size() > 1 && i > 1) {
                        text[random.below(text.size())] = "./:,-\xB5\x10 "[random.below(8)];
                        ASSERT_EQ(read(text), told_read(text, nullptr)) << text;
                    }
                }
}

// ---- Reading in other sets ----

TEST(MoneyReadSets, ANullSetIsTheBuiltInOne) {
    for (const char *text : {"$1,234.5 ", "\xA3\x35", "5\xA0", "\xA4-1x"})
        EXPECT_EQ(read(text), read(text, com_get_charattrib())) << text;
}
TEST(MoneyReadSets, LowerCaseFormsReadAsWhatTheyAre) {
    LettersAsDigits set;
    EXPECT_EQ(read("~-BCD.E~", set.get()), (Answer{0, -1234000}));
}
TEST(MoneyReadSets, NormalizedBytesReadAsWhatTheyAre) {
    NormalizedBytes set;
    EXPECT_EQ(read("\xAD\xB1\xAC\xB2\xB3\xB4\xAE\xB5", set.get()), (Answer{0, -12345000}));
    EXPECT_EQ(read("\xB1\xC0", set.get()), (Answer{2, 1}));
}
TEST(MoneyReadSets, WithoutTablesNothingIsSpaceOrCurrency) {
    BareBytes set;
    EXPECT_EQ(read(" -12.5", set.get()), (Answer{0, -125000}));
    EXPECT_EQ(read("12.5 ", set.get()), (Answer{2, 125}));
    EXPECT_EQ(read("$12.5", set.get()), (Answer{2, 0}));
}
TEST(MoneyReadSets, WideFormsReadAsWhatTheyAre) {
    DoubleByteSet set;
    EXPECT_EQ(read(wide("12"), set.get()), (Answer{0, 120000}));
    EXPECT_EQ(read(wide(" $-12.5 "), set.get()), (Answer{0, -125000}));
    EXPECT_EQ(read(wide("$") + "$1", set.get()), (Answer{2, 0}));
    EXPECT_EQ(read(wide("1,") + "234" + wide("."), set.get()), (Answer{0, 12340000}));
    EXPECT_EQ(read("1\xA4\x32", set.get()), (Answer{2, 1})); // a lead byte without a normal form
}
TEST(MoneyReadSets, ACharacterThatTheEndCutsIsSyntax) {
    UnevenWidths set;
    EXPECT_EQ(read("12\xA3", set.get()), (Answer{2, 12}));
    EXPECT_EQ(read("\xA3", set.get()), (Answer{2, 0}));
    EXPECT_EQ(read("12\xFD", set.get()), (Answer{2, 12}));
    EXPECT_EQ(read("12\xFD ", set.get()), (Answer{2, 12}));
    FourByteSet four;
    four.norm(1, '2', '9');
    EXPECT_EQ(read("1\xA3\x32"
                   "5",
                   four.get()),
              (Answer{2, 1}));
    EXPECT_EQ(read("1\xA3\x32"
                   "5x",
                   four.get()),
              (Answer{0, 190000}));
}
TEST(MoneyReadSets, NothingBehindTheLengthCounts) {
    DoubleByteSet set;
    std::string text = wide("12").substr(2).insert(0, 1, '1'); // the length ends inside the second character
    CS_MONEY value = money(UNWRITTEN);
    EXPECT_EQ(com__mnyfromchar_mb(&value, text.data(), 2, 0, set.get()), 2);
    EXPECT_EQ(count_of(value), 1);
    RowsWithoutWidth rows;
    char last[] = "7\x81x"; // as if a zero byte stood behind
    EXPECT_EQ(com__mnyfromchar_mb(&value, last, 2, 0, rows.get()), 0);
    EXPECT_EQ(count_of(value), 70000);
}
TEST(MoneyReadSets, DigitsOfAnotherMeaningHaveThatMeaning) {
    ConstructedSet set(1, 1);
    set.norm(0, '1', '7').norm(0, '.', 0);
    EXPECT_EQ(read("12", set.get()), (Answer{0, 720000}));
    EXPECT_EQ(read("2.5", set.get()), (Answer{2, 2}));
    ConstructedSet pairs(1, 1);
    pairs.width('2', '2', 2, 1).norm(0, '2', 0);
    EXPECT_EQ(read("123", pairs.get()), (Answer{2, 1}));
    EXPECT_EQ(read("12", pairs.get()), (Answer{2, 1}));
}
TEST(MoneyReadSets, ADigitThatIsCurrencyIsTakenAsThatInFront) {
    ConstructedSet set(1, 0);
    set.type(0, '1', {'1', '1', CS_LEX_CURRENCY, 0});
    EXPECT_EQ(read("12", set.get()), (Answer{0, 20000}));
    EXPECT_EQ(read("-12", set.get()), (Answer{0, -20000}));
    EXPECT_EQ(read("1-12", set.get()), (Answer{2, 0}));
    EXPECT_EQ(read("21", set.get()), (Answer{0, 210000}));
    EXPECT_EQ(read("1", set.get()), (Answer{0, 0}));
}
TEST(MoneyReadSets, AByteOfWidthZeroCountsAsOne) {
    UnevenWidths set;
    set.type(0, 0x80, {0, 0, 0, CS_CT_SPACE}).norm(0, 0x80, '5');
    EXPECT_EQ(read("1\x80", set.get()), (Answer{0, 150000}));
    EXPECT_EQ(read("1 \x80", set.get()), (Answer{0, 10000}));
}

// ---- Reading: money4 ----

TEST(Money4Read, NarrowsWhatWasRead) {
    EXPECT_EQ(read4("-1.5"), (Answer{0, -15000}));
    EXPECT_EQ(read4("214748.3647"), (Answer{0, INT_MAX}));
    EXPECT_EQ(read4("-214748.3648"), (Answer{0, INT_MIN}));
    EXPECT_EQ(read4("214748.36475"), (Answer{1, INT_MAX}));
}
TEST(Money4Read, OutOfRangeIsOverflowAndTheBound) {
    EXPECT_EQ(read4("214748.3648"), (Answer{1, INT_MAX}));
    EXPECT_EQ(read4("-214748.3649"), (Answer{1, INT_MIN}));
}
TEST(Money4Read, AFailureToReadIsItsCodeAndZero) {
    EXPECT_EQ(read4("12x"), (Answer{2, 0}));
    EXPECT_EQ(read4("99999999999999999999"), (Answer{1, 0}));
}

// ---- Reading: differential ----

// Text that is near to money in a set: a few pieces in a likely order, then sometimes a few bytes changed.
std::string likely_text(RandomCounts &random) {
    std::string text;
    const auto maybe = [&](const char *piece, unsigned one_in) {
        if (random.below(one_in) == 0)
            text += piece;
    };
    maybe(" ", 4);
    maybe("$", 5);
    maybe("-", 2);
    maybe("+", 9);
    maybe(" ", 6);
    maybe("$", 6);
    maybe(",", 30);
    static const char *const STARTS[] = {"922337203685477.580", "92233720368547758", "922,337,203,685,477.",
                                         "214748.36", "0.000"};
    if (random.below(4) == 0)
        text += STARTS[random.below(std::size(STARTS))];
    const std::size_t digits = random.below(random.below(8) ? 8 : 24);
    const std::size_t point = random.below(digits + 2);
    for (std::size_t i = 0; i < digits; ++i) {
        if (i == point)
            text += '.';
        else if (i > 0 && (digits - i) % 3 == 0 && random.below(3) == 0)
            text += ',';
        text += static_cast<char>('0' + random.below(10));
    }
    maybe(" ", 5);
    maybe("\t\r", 9);
    if (random.below(4) == 0) {
        static const char BYTES[] = "+-,.$ 0589ABJ~\t\x80\x81\x8F\xA3\xA0\xAC\xAD\xAE\xB5\xB9\xE0\xE2\xC3\xFD\xFFxe";
        for (std::size_t changes = 1 + random.below(3); changes > 0; --changes)
            text.insert(random.below(text.size() + 1), 1, BYTES[random.below(sizeof BYTES)]);
    }
    return text;
}

TEST(MoneyRead, DifferentialInEverySet) {
    const auto sets = text_sets();
    RandomCounts random(31);
    int codes[3] = {};
    for (int i = 0; i < CASES; ++i) {
        const std::string text = likely_text(random);
        for (const auto &set : sets) {
            const Answer told = told_read(text, set->get());
            ASSERT_EQ(read(text, set->get()), told) << '"' << text << '"';
            ++codes[told.code];
            const Answer told4 = told.code != 0         ? Answer{told.code, 0}
                                 : told.count > INT_MAX ? Answer{1, INT_MAX}
                                 : told.count < INT_MIN ? Answer{1, INT_MIN}
                                                        : told;
            ASSERT_EQ(read4(text, set->get()), told4) << '"' << text << '"';
        }
        ASSERT_EQ(read(text), told_read(text, nullptr)) << '"' << text << '"';
    }
    for (const int code : codes)
        EXPECT_GT(code, CASES / 20);
}
TEST(MoneyRead, DifferentialInRandomSets) {
    std::mt19937_64 tables(34);
    RandomCounts random(35);
    for (int i = 0; i < 400; ++i) {
        RandomSet set(tables);
        // ASCII text keeps a meaning where the tables leave it one.
        for (const char c : std::string_view("+-., 0123456789"))
            if (set.get()->cs_norm_map != nullptr && random.below(3) != 0)
                set.width(c, c, 1, 1).norm(0, c, c);
        for (int k = 0; k < 300; ++k) {
            const std::string text = likely_text(random);
            ASSERT_EQ(read(text, set.get()), told_read(text, set.get())) << '"' << text << '"';
        }
    }
}
TEST(MoneyRead, EveryTextOfUpToFourBytesOfTheAlphabet) {
    const std::string_view alphabet("+-., $05\t\xA3\xB5");
    DoubleByteSet set;
    std::string text;
    for (int size = 1; size <= 4; ++size) {
        int combinations = 1;
        for (int i = 0; i < size; ++i)
            combinations *= static_cast<int>(alphabet.size());
        for (int number = 0; number < combinations; ++number) {
            text.clear();
            for (int i = 0, rest = number; i < size; ++i, rest /= static_cast<int>(alphabet.size()))
                text += alphabet[static_cast<std::size_t>(rest) % alphabet.size()];
            ASSERT_EQ(read(text), told_read(text, nullptr)) << '"' << text << '"';
            ASSERT_EQ(read(text, set.get()), told_read(text, set.get())) << '"' << text << '"';
        }
    }
}

// ---- Writing ----

constexpr char FILLER = '#';

using Writer = char *(*)(std::int64_t count, char *cp, int len, int style);

char *write8(std::int64_t count, char *cp, int len, int style) {
    CS_MONEY value = money(count);
    return com__mnytochar(&value, cp, len, style);
}
char *write8_forwarded(std::int64_t count, char *cp, int len, int style) {
    CS_MONEY value = money(count);
    return com_cvtmnytochar(&value, cp, len, style);
}
char *write4(std::int64_t count, char *cp, int len, int style) {
    CS_MONEY4 value = money4(static_cast<CS_INT>(count));
    return com__mny4tochar(&value, cp, len, style);
}
char *write4_forwarded(std::int64_t count, char *cp, int len, int style) {
    CS_MONEY4 value = money4(static_cast<CS_INT>(count));
    return com_cvtmny4tochar(&value, cp, len, style);
}

// The text in a room of `len`, or "(null)"; nothing around the room may have been written.
std::string text_of(std::int64_t count, int style = 0, int len = 40, Writer writer = write8) {
    std::string room(64, FILLER);
    char *const cp = room.data() + 8;
    char *const text = writer(count, cp, len, style);
    const auto end = 8 + static_cast<std::size_t>(std::max(len, 0));
    EXPECT_EQ(room.substr(0, 8), std::string(8, FILLER));
    EXPECT_EQ(room.substr(end), std::string(room.size() - end, FILLER));
    return text == nullptr ? "(null)" : std::string(text, static_cast<std::size_t>(cp + len - text));
}
constexpr int style_of(int decimals, bool separated = false) { return decimals << 8 | (separated ? 1 : 0); }

TEST(MoneyWrite, TwoDecimalsUnlessAskedFor) {
    EXPECT_EQ(text_of(12345678), "1234.57");
    EXPECT_EQ(text_of(12345678, style_of(2)), "1234.57");
    EXPECT_EQ(text_of(12345678, style_of(1)), "1234.6");
    EXPECT_EQ(text_of(12345678, style_of(3)), "1234.568");
    EXPECT_EQ(text_of(12345678, style_of(4)), "1234.5678");
}
TEST(MoneyWrite, FourDecimalsAndMoreShowAllFour) {
    for (const int decimals : {5, 6, 100, INT_MAX >> 8})
        EXPECT_EQ(text_of(-12345678, style_of(decimals)), "-1234.5678");
}
TEST(MoneyWrite, ANegativeCountOfDecimalsIsNone) {
    EXPECT_EQ(text_of(12345678, -256), "1234.57");
    EXPECT_EQ(text_of(12345678, INT_MIN), "1234.57");
    EXPECT_EQ(text_of(12345678, INT_MIN | 1), "1,234.57");
}
TEST(MoneyWrite, RoundsHalfAwayFromZeroByTheLastDroppedDigit) {
    EXPECT_EQ(text_of(12350, style_of(2)), "1.24");
    EXPECT_EQ(text_of(-12350, style_of(2)), "-1.24");
    EXPECT_EQ(text_of(12349, style_of(2)), "1.23");
    EXPECT_EQ(text_of(14999, style_of(1)), "1.5");
    EXPECT_EQ(text_of(10499, style_of(1)), "1.0");
    EXPECT_EQ(text_of(99999999, style_of(2)), "10000.00");
}
TEST(MoneyWrite, ASmallNegativeValueKeepsItsSign) {
    EXPECT_EQ(text_of(-40), "-0.00");
    EXPECT_EQ(text_of(-1, style_of(3)), "-0.000");
    EXPECT_EQ(text_of(0), "0.00");
}
TEST(MoneyWrite, AtLeastOneIntegerDigit) {
    EXPECT_EQ(text_of(1, style_of(4)), "0.0001");
    EXPECT_EQ(text_of(9999, style_of(4)), "0.9999");
    EXPECT_EQ(text_of(9999, style_of(1)), "1.0");
}
TEST(MoneyWrite, Bounds) {
    EXPECT_EQ(text_of(LARGEST, style_of(4)), "922337203685477.5807");
    EXPECT_EQ(text_of(SMALLEST, style_of(4)), "-922337203685477.5808");
    EXPECT_EQ(text_of(SMALLEST, style_of(4, true)), "-922,337,203,685,477.5808");
    EXPECT_EQ(text_of(LARGEST, style_of(0, true)), "922,337,203,685,477.58");
}
TEST(MoneyWrite, OnlyALowByteOfOneAsksForSeparators) {
    EXPECT_EQ(text_of(12345678, 1), "1,234.57");
    EXPECT_EQ(text_of(12345678, 2), "1234.57");
    EXPECT_EQ(text_of(12345678, 0xFF), "1234.57");
    EXPECT_EQ(text_of(12345678, 0x401), "1,234.5678");
}
TEST(MoneyWrite, SeparatorsStandBetweenGroups) {
    EXPECT_EQ(text_of(10000, 1), "1.00");
    EXPECT_EQ(text_of(1230000, 1), "123.00");
    EXPECT_EQ(text_of(-1230000, 1), "-123.00");
    EXPECT_EQ(text_of(12340000, 1), "1,234.00");
    EXPECT_EQ(text_of(1234560000, 1), "123,456.00");
    EXPECT_EQ(text_of(-1234560000, 1), "-123,456.00");
    EXPECT_EQ(text_of(12345670000, 1), "1,234,567.00");
}
TEST(MoneyWrite, TheSeparatorThatIsBlankedNeedsNoRoom) {
    EXPECT_EQ(text_of(1230000, 1, 6), "123.00");
    EXPECT_EQ(text_of(-1230000, 1, 7), "-123.00");
    EXPECT_EQ(text_of(1230000, 1, 5), "(null)");
}
TEST(MoneyWrite, TheSeparatorThatIsBlankedIsABlankBeforeTheText) {
    char room[] = "########";
    CS_MONEY value = money(1230000);
    EXPECT_EQ(com__mnytochar(&value, room, 8, 1), room + 2);
    EXPECT_STREQ(room, "# 123.00");
}
TEST(MoneyWrite, WhatDoesNotFitIsNullWithNothingWritten) {
    for (const int len : {INT_MIN, -1, 0, 1, 3, 6}) {
        char room[] = "########";
        CS_MONEY value = money(12345678);
        EXPECT_EQ(com__mnytochar(&value, room, len, 0), nullptr) << len;
        EXPECT_STREQ(room, "########");
    }
    EXPECT_EQ(text_of(12345678, 0, 7), "1234.57");
}
TEST(MoneyWrite, NoNulBehindTheText) {
    char room[] = "########";
    CS_MONEY value = money(12345678);
    EXPECT_EQ(com__mnytochar(&value, room, 7, 0), room);
    EXPECT_STREQ(room, "1234.57#");
}
TEST(MoneyWrite, ThePrecisionJoinsTheStyle) {
    const auto precise = [](int style, int prec) {
        CS_MONEY value = money(-12345678);
        char room[40];
        char *const text = com_precmnytochar(&value, room, sizeof room, style, prec);
        return text == nullptr ? "(null)" : std::string(text, static_cast<std::size_t>(room + sizeof room - text));
    };
    EXPECT_EQ(precise(0, 0), "-1234.57");
    EXPECT_EQ(precise(0, 1), "-1234.6");
    EXPECT_EQ(precise(1, 3), "-1,234.568");
    EXPECT_EQ(precise(0x100, 2), "-1234.568"); // bit by bit: 1 and 2 are 3
    EXPECT_EQ(precise(1, 4), "-1,234.5678");
    EXPECT_EQ(precise(0, -1), "-1234.57");
    EXPECT_EQ(precise(0, INT_MAX), "-1234.57");
}

// Values at every count of digits, with and without all kinds of carry.
std::vector<std::int64_t> written_values() {
    std::vector<std::int64_t> values = {0,   1,    4,    5,    49,      50,       499,
                                        500, 9994, 9995, 9999, LARGEST, SMALLEST, SMALLEST + 1};
    for (std::int64_t power = 10; power <= 1000000000000000000; power *= 10) {
        for (const std::int64_t step : {-51, -50, -6, -5, -1, 0, 1, 5, 50, 500, 4999, 5000})
            if (power + step > 0)
                values.push_back(power + step);
        if (power == 1000000000000000000)
            break;
    }
    const std::size_t positive = values.size();
    for (std::size_t i = 0; i < positive; ++i)
        if (values[i] != SMALLEST)
            values.push_back(-values[i]);
    return values;
}

void expect_written_as_told(std::int64_t count, int len, int style, Writer writer) {
    const ToldText told = told_write(count, len, style, FILLER);
    std::string room(static_cast<std::size_t>(len) + 16, FILLER);
    char *const cp = room.data() + 8;
    char *const text = writer(count, cp, len, style);
    ASSERT_EQ(text != nullptr, told.start.has_value()) << count << " room " << len << " style " << style;
    if (text != nullptr) {
        ASSERT_EQ(static_cast<std::size_t>(text - cp), *told.start) << count << " room " << len << " style " << style;
    }
    ASSERT_EQ(room, std::string(8, FILLER) + told.buffer + std::string(8, FILLER)) << count << " style " << style;
}

TEST(MoneyWrite, EveryCountOfDecimalsAndStyleAtEveryRoom) {
    for (const std::int64_t count : written_values())
        for (int decimals = 0; decimals <= 6; ++decimals)
            for (const int low : {0, 1})
                for (int len = 0; len <= 30; ++len) {
                    const int style = decimals << 8 | low;
                    ASSERT_NO_FATAL_FAILURE(expect_written_as_told(count, len, style, write8));
                    if (count >= INT_MIN && count <= INT_MAX) {
                        ASSERT_NO_FATAL_FAILURE(expect_written_as_told(count, len, style, write4));
                    }
                }
}
TEST(MoneyWrite, Differential) {
    RandomCounts random(32);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t count = random.count();
        const std::int32_t word = random.word();
        const int style = static_cast<int>(random.below(7) << 8 | random.below(3));
        const int len = static_cast<int>(random.below(3) ? 30 : random.below(30));
        ASSERT_NO_FATAL_FAILURE(expect_written_as_told(count, len, style, write8));
        ASSERT_NO_FATAL_FAILURE(expect_written_as_told(count, len, style, write8_forwarded));
        ASSERT_NO_FATAL_FAILURE(expect_written_as_told(word, len, style, write4));
        ASSERT_NO_FATAL_FAILURE(expect_written_as_told(word, len, style, write4_forwarded));
    }
}
TEST(MoneyText, WhatIsWrittenWithAllDecimalsReadsBack) {
    RandomCounts random(33);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t count = random.count();
        const std::string text = text_of(count, style_of(4, random.below(2) != 0));
        ASSERT_EQ(read(text), (Answer{0, count})) << text;
    }
}

// ---- Missing operands ----

CS_MONEY A;
CS_MONEY4 A4;
char ROOM[40];

NullCalls null_calls() {
    NullCalls calls;
    calls.add(
        "com__mnytochar", [] { return com__mnytochar(nullptr, ROOM, 40, 0) != nullptr; }, 0);
    calls.add(
        "com__mnytochar", [] { return com__mnytochar(&A, nullptr, 40, 0) != nullptr; }, 0);
    calls.add(
        "com__mny4tochar", [] { return com__mny4tochar(nullptr, ROOM, 40, 0) != nullptr; }, 0);
    calls.add(
        "com__mny4tochar", [] { return com__mny4tochar(&A4, nullptr, 40, 0) != nullptr; }, 0);
    calls.add(
        "com_cvtmnytochar", [] { return com_cvtmnytochar(nullptr, ROOM, 40, 0) != nullptr; }, 0);
    calls.add(
        "com_cvtmnytochar", [] { return com_cvtmnytochar(&A, nullptr, 40, 0) != nullptr; }, 0);
    calls.add(
        "com_cvtmny4tochar", [] { return com_cvtmny4tochar(nullptr, ROOM, 40, 0) != nullptr; }, 0);
    calls.add(
        "com_cvtmny4tochar", [] { return com_cvtmny4tochar(&A4, nullptr, 40, 0) != nullptr; }, 0);
    calls.add(
        "com_precmnytochar", [] { return com_precmnytochar(nullptr, ROOM, 40, 0, 2) != nullptr; }, 0);
    calls.add(
        "com_precmnytochar", [] { return com_precmnytochar(&A, nullptr, 40, 0, 2) != nullptr; }, 0);
    calls.add(
        "com__mnyfromchar_mb", [] { return com__mnyfromchar_mb(nullptr, ROOM, 1, 0, nullptr); }, 1);
    calls.add(
        "com__mnyfromchar_mb", [] { return com__mnyfromchar_mb(&A, nullptr, 1, 0, nullptr); }, 1);
    calls.add(
        "com__mny4fromchar_mb", [] { return com__mny4fromchar_mb(nullptr, ROOM, 1, 0, nullptr); }, 1);
    calls.add(
        "com__mny4fromchar_mb", [] { return com__mny4fromchar_mb(&A4, nullptr, 1, 0, nullptr); }, 1);
    return calls;
}

TEST(MoneyTextDeathTest, AMissingOperandIsReported) { null_calls().expect_reports("mnycnvt_text"); }

TEST(MoneyTextReturning, AMissingOperandChangesNothing) {
    null_calls().expect_answers(
        [] {
            A = money(UNWRITTEN);
            A4 = money4(0x5A5A5A5A);
            std::memset(ROOM, FILLER, sizeof ROOM);
        },
        [] {
            EXPECT_EQ(count_of(A), UNWRITTEN);
            EXPECT_EQ(A4.mny4, 0x5A5A5A5A);
            EXPECT_EQ(std::string(ROOM, sizeof ROOM), std::string(sizeof ROOM, FILLER));
        });
}

} // namespace

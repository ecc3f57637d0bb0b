// Comparison by a sort order: each rule by name, and all pairs of generated texts under generated orders against a
// second comparer that reads a weight at a time from the beginning.
#include "support/assertions.h"
#include "support/naive_sort.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace {

using support::ReturningAssertions;
using support::naive::Ligature;
using support::naive::SortOrder;

// The text in memory of its own, so that the address sanitizer sees a byte too many.
struct Exact {
    explicit Exact(const std::string &text) : bytes(text.begin(), text.end()), length(static_cast<int>(text.size())) {}
    std::vector<char> bytes;
    int length;
};

int compare(SO_1CLASS &table, const std::string &text1, const std::string &text2) {
    Exact one(text1), other(text2);
    return com__ps_dl_sqlhilo(&table, one.bytes.data(), one.length, other.bytes.data(), other.length);
}
int compare_tertiary(SO_1CLASS &table, const std::string &text1, const std::string &text2) {
    Exact one(text1), other(text2);
    return com__spec_tord(&table, one.bytes.data(), one.length, other.bytes.data(), other.length);
}

SO_1CLASS made(const SortOrder &order) {
    const auto table = support::naive::table_of(order);
    EXPECT_TRUE(table.has_value());
    return table.value_or(SO_1CLASS{});
}

// Blank, then a with an accented form, b, c, ch as a letter of its own, the rest; cases are tertiary. 0xC6 and 0xE6 are
// ae behind the letters, 0x8C is ss.
SortOrder latin() {
    SortOrder order;
    order.ligatures = {{{"\xE6\xC6"}, true, 'a', 'e'}, {{"\x8C"}, false, 's', 's'}};
    order.characters = {{{" "}},
                        {{"a", "A"}, {"\xE1", "\xC1"}, {"\xE2"}},
                        {{"b", "B"}},
                        {{"c", "C"}, {"\xE7"}},
                        {{"ch", "Ch", "CH"}},
                        {{"d", "D"}},
                        {{"e", "E"}, {"\xE9", "\xC9"}},
                        {{"s", "S"}}};
    return order.fill();
}

class Latin : public testing::Test {
protected:
    int compared(const std::string &text1, const std::string &text2) { return compare(table_, text1, text2); }
    int tertiary(const std::string &text1, const std::string &text2) { return compare_tertiary(table_, text1, text2); }
    SO_1CLASS table_ = made(latin());
};

TEST_F(Latin, PrimaryWeightsDecideByTheirDifference) {
    EXPECT_EQ(compared("a", "b"), -1);
    EXPECT_EQ(compared("d", "a"), 4); // the entries between them
    EXPECT_EQ(compared("ab", "ad"), -3);
    EXPECT_EQ(compared("ab", "ab"), 0);
}

TEST_F(Latin, CaseDoesNotCountButOnTheTertiaryLevel) {
    EXPECT_EQ(compared("ABBA", "abba"), 0);
    EXPECT_EQ(tertiary("aBba", "abba"), 1);
    EXPECT_EQ(tertiary("abba", "aBba"), -1);
    EXPECT_EQ(tertiary("abbA", "aBba"), -1); // the leftmost one
}

TEST_F(Latin, LeftmostSecondaryDifferenceWins) {
    EXPECT_LT(compared("ab\xE1", "\xE1"
                                 "ba"),
              0);
    EXPECT_GT(compared("\xE1"
                       "ba",
                       "ab\xE1"),
              0);
    // a is the letter of one ligature that sorts behind it: the accent is two away.
    EXPECT_EQ(compared("a", "\xE1"), -2);
    EXPECT_EQ(compared("\xE2", "a"), 3);
}

TEST_F(Latin, PrimaryDifferenceFurtherRightBeatsSecondaryOne) {
    EXPECT_LT(compared("\xE1"
                       "b",
                       "ad"),
              0);
    EXPECT_GT(compared("ad", "\xE1"
                             "b"),
              0);
}

TEST_F(Latin, TrailingBlanksDoNotCount) {
    EXPECT_EQ(compared("ab", "ab   "), 0);
    EXPECT_EQ(compared("ab  ", "ab"), 0);
    EXPECT_EQ(compared("", "   "), 0);
    EXPECT_EQ(compared("   ", ""), 0);
    EXPECT_EQ(compared("", ""), 0);
    EXPECT_EQ(compared("\xE1  ", "a"), 2); // nor do they hide a secondary difference
    EXPECT_EQ(compared("a", "\xE1  "), -2);
}

TEST_F(Latin, WhatFollowsABlankCounts) {
    EXPECT_EQ(compared("ab", "ab c"), -1);
    EXPECT_EQ(compared("ab c", "ab"), 1);
    EXPECT_EQ(compared("ab", "ab\t"), -1);
    EXPECT_EQ(compared("", "a"), -1);
    EXPECT_EQ(compared("a", ""), 1);
}

TEST_F(Latin, OddityOnlyTheBlankItselfIsPassedOverAtTheEnd) {
    SortOrder order;
    order.characters = {{{" ", "\t"}}, {{"a"}}};
    SO_1CLASS table = made(order.fill());
    EXPECT_EQ(compare(table, "a ", "a\t"), 0); // of equal weight
    EXPECT_EQ(compare(table, "a\t", "a"), 1);
    EXPECT_EQ(compare(table, "a", "a\t"), -1);
}

TEST_F(Latin, PairCountsAsOneCharacter) {
    EXPECT_LT(compared("cz", "ch"), 0);
    EXPECT_LT(compared("ch", "d"), 0);
    EXPECT_EQ(compared("CH", "ch"), 0);
    EXPECT_EQ(tertiary("CH", "ch"), 2);
    EXPECT_EQ(tertiary("ch", "Ch"), -1);
    EXPECT_LT(compared("cH", "ch"), 0); // which is no pair here
}

TEST_F(Latin, FirstByteOfAPairAtTheEndHasItsOwnWeight) {
    EXPECT_EQ(compared("c", "C"), 0);
    EXPECT_EQ(compared("c", "\xE7"), -1);
    EXPECT_LT(compared("c", "ch"), 0);
    EXPECT_LT(compared("ac", "ach"), 0);
    EXPECT_EQ(compared("ac", "ac "), 0);
}

TEST_F(Latin, PairThatTheCommonBeginningCutsIsReadWhole) {
    EXPECT_LT(compared("ccz", "cch"), 0);
    EXPECT_GT(compared("abcdefgch", "abcdefgcz"), 0);
    EXPECT_LT(compared("abcdefgc", "abcdefgch"), 0);
    EXPECT_EQ(tertiary("abcdefgch", "abcdefgCH"), -2);
}

TEST_F(Latin, LigatureIsItsLettersOnThePrimaryLevel) {
    EXPECT_LT(compared("ae", "\xE6"), 0); // and behind them on the secondary one
    EXPECT_EQ(compared("ae", "\xE6"), -1);
    EXPECT_EQ(compared("\xC6", "\xE6"), 0);
    EXPECT_EQ(tertiary("\xE6", "\xC6"), -1);
    EXPECT_EQ(compared("ss", "\x8C"), 0);
    EXPECT_LT(compared("\xE6", "af"), 0);
    EXPECT_GT(compared("\xE6", "ad"), 0);
    EXPECT_LT(compared("\xE6", "\xE1"
                               "e"),
              0);
}

TEST_F(Latin, TextThatEndsWithinALigatureIsTheLesser) {
    EXPECT_EQ(compared("a", "\xE6"), -1); // of the weight that is held
    EXPECT_EQ(compared("\xE6", "a"), 1);
    EXPECT_EQ(compared("s", "\x8C"), -1);
    EXPECT_EQ(compared("\x8C", "s"), 1);
    EXPECT_EQ(compared("\x8C", "s "), compared("ss", "s "));
}

TEST_F(Latin, TertiaryComparisonEndsWithTheShorterText) {
    EXPECT_EQ(tertiary("ab", "abc"), 0);
    EXPECT_EQ(tertiary("abc", "ab"), 0);
    EXPECT_EQ(tertiary("ab", "aBc"), -1);
    EXPECT_EQ(tertiary("", "A"), 0);
    EXPECT_EQ(tertiary("ab", "db"), 0); // primary weights play no part
}

TEST_F(Latin, NulIsACharacterBeforeAllOthers) {
    EXPECT_LT(compared(std::string("a\0", 2), "a "), 0);
    EXPECT_LT(compared("a", std::string("a\0", 2)), 0);
    EXPECT_LT(compared(std::string("a\0z", 3), std::string("ab", 2)), 0);
}

TEST_F(Latin, NegativeLengthsAreNoText) {
    char text[] = "  ab";
    EXPECT_EQ(com__ps_dl_sqlhilo(&table_, text + 2, -1, text + 2, -1), 0);
    EXPECT_EQ(com__ps_dl_sqlhilo(&table_, text + 2, -2, text + 2, 0), 0);
    EXPECT_EQ(com__ps_dl_sqlhilo(&table_, text + 2, 0, text + 2, -2), 0);
    EXPECT_EQ(com__ps_dl_sqlhilo(&table_, text + 2, 2, text + 2, -2), 1);
    EXPECT_EQ(com__ps_dl_sqlhilo(&table_, text + 2, -2, text + 2, 2), -1);
    EXPECT_EQ(com__spec_tord(&table_, text + 2, -2, text + 2, 2), 0);
}

TEST(SortOrdersDeathTest, ANullTableIsReported) {
    char text[] = "ab";
    EXPECT_NULL_REPORT(com__ps_dl_sqlhilo(nullptr, text, 2, text, 2), "sortord");
    EXPECT_NULL_REPORT(com__spec_tord(nullptr, text, 2, text, 2), "sortord");
}

TEST(SortOrders, ANullTableTellsNoDifferenceWhereAssertionsReturn) {
    const ReturningAssertions returning;
    char text[] = "ab";
    EXPECT_EQ(com__ps_dl_sqlhilo(nullptr, text, 1, text + 1, 1), 0);
    EXPECT_EQ(com__spec_tord(nullptr, text, 1, text + 1, 1), 0);
    EXPECT_EQ(returning.count(), 2);
}

// ---- All pairs ----------------------------------------------------------------------------------------------

using Random = std::mt19937_64;

std::string byte(unsigned code) { return {static_cast<char>(code)}; }

// An order over few bytes that say much: pairs, ligatures, and groups on every level.
SortOrder random_order(Random &random) {
    std::string letters = "abcdefgh \t=\x80\xC0\xFF"
                          "ABCDE";
    std::shuffle(letters.begin(), letters.end(), random);
    SortOrder order;
    order.preference = random() % 2 == 0;
    const std::size_t ligatures = random() % 4;
    for (std::size_t i = 0; i < ligatures; ++i) {
        Ligature ligature;
        for (auto lists = 1 + random() % 2; lists > 0; --lists) {
            std::string list;
            for (auto forms = 1 + random() % 2; forms > 0; --forms) {
                // "=" and blanks are no forms
                const auto at = letters.find_first_not_of("= ");
                list += letters[at];
                letters.erase(at, 1);
            }
            ligature.lists.push_back(list);
        }
        ligature.is_after = random() % 2 == 0;
        order.ligatures.push_back(ligature);
    }
    for (Ligature &ligature : order.ligatures) {
        ligature.first = letters[random() % letters.size()];
        ligature.second = letters[random() % letters.size()];
    }
    std::set<std::string> pairs;
    const auto add_pairs = [&](std::vector<std::vector<std::string>> &entry) {
        std::vector<std::string> value;
        for (auto count = 1 + random() % 2; count > 0; --count) {
            const std::string pair = {letters[random() % letters.size()], letters[random() % letters.size()]};
            if (pair[1] != ' ' && pair[1] != '=' && pairs.insert(pair).second)
                value.push_back(pair);
        }
        if (!value.empty())
            entry.push_back(value);
    };
    for (std::size_t at = 0; at < letters.size();) {
        std::vector<std::vector<std::string>> entry;
        for (auto values = 1 + random() % 3; values > 0 && at < letters.size(); --values) {
            std::vector<std::string> value;
            for (auto items = 1 + random() % 3; items > 0 && at < letters.size(); --items)
                value.push_back({letters[at++]});
            entry.push_back(value);
            if (random() % 4 == 0)
                add_pairs(entry);
        }
        order.characters.push_back(entry);
    }
    if (random() % 2 == 0) {
        order.characters.emplace_back();
        add_pairs(order.characters.back());
        if (order.characters.back().empty())
            order.characters.pop_back();
    }
    return order.fill(1 + random() % 3);
}

std::vector<std::string> random_texts(Random &random, std::size_t count) {
    const std::string alphabet = "abcdefgh   \t=\x80\xC0\xFF"
                                 "ABCDE";
    std::vector<std::string> texts = {"", " ", "  ", std::string(1, '\0')};
    while (texts.size() < count) {
        std::string text;
        // Most begin as another one does.
        if (random() % 4 != 0) {
            text = texts[random() % texts.size()];
            text.resize(random() % (text.size() + 1));
        }
        for (auto more = random() % (random() % 6 == 0 ? 20 : 4); more > 0; --more)
            text += alphabet[random() % alphabet.size()];
        if (random() % 4 == 0)
            text += std::string(random() % 3, ' ');
        if (random() % 20 == 0)
            text += byte(static_cast<unsigned>(random() % 256));
        texts.push_back(text);
    }
    return texts;
}

TEST(SortOrders, AllPairsOfGeneratedTextsUnderGeneratedOrders) {
    Random random(20260104);
    int exceptions = 0;
    for (int round = 0; round < 10; ++round) {
        SO_1CLASS table = made(random_order(random));
        exceptions += table.nsmels;
        const auto texts = random_texts(random, round < 2 ? 1500 : 400);
        for (const std::string &text1 : texts) {
            Exact one(text1);
            for (const std::string &text2 : texts) {
                char *const other = const_cast<char *>(text2.data());
                const int length = static_cast<int>(text2.size());
                ASSERT_EQ(com__ps_dl_sqlhilo(&table, one.bytes.data(), one.length, other, length),
                          support::naive::compare(table, text1, text2))
                    << '"' << text1 << "\" \"" << text2 << "\" " << round;
                ASSERT_EQ(com__spec_tord(&table, one.bytes.data(), one.length, other, length),
                          support::naive::compare_tertiary(table, text1, text2))
                    << '"' << text1 << "\" \"" << text2 << "\" " << round;
            }
        }
    }
    EXPECT_GT(exceptions, 40);
}

TEST(SortOrders, ShortTextsUnderManyOrders) {
    Random random(20260105);
    for (int round = 0; round < 300; ++round) {
        SO_1CLASS table = made(random_order(random));
        const auto texts = random_texts(random, 50);
        for (const std::string &text1 : texts)
            for (const std::string &text2 : texts) {
                ASSERT_EQ(compare(table, text1, text2), support::naive::compare(table, text1, text2));
                ASSERT_EQ(compare_tertiary(table, text1, text2), support::naive::compare_tertiary(table, text1, text2));
            }
    }
}

// ---- Chains -------------------------------------------------------------------------------------------------

struct Resolved {
    CS_UINT lsc = 0x5A5A5A5A;
    CS_UINT hold = 0x5A5A5A5A;
    std::ptrdiff_t steps = 0;
    bool operator==(const Resolved &) const = default;
};

class Chains : public testing::Test {
protected:
    Chains() {
        table_.smels[0] = {SMEL_END, SMEL_OWN, 0, 0, {}};
        table_.smels[0].smel_types.sm_0type.lsc1.lsclong = 0x01010101;
        table_.smels[1] = {2, SMEL_PAIR, 1, 0, {}};
        table_.smels[1].smel_types.sm_1type.xtraw = 'x';
        table_.smels[1].smel_types.sm_1type.lsc1.lsclong = 0x02020202;
        table_.smels[2] = {0, SMEL_PAIR, 1, 0, {}};
        table_.smels[2].smel_types.sm_1type.xtraw = 0xE9;
        table_.smels[2].smel_types.sm_1type.lsc1.lsclong = 0x03030303;
        table_.smels[3] = {SMEL_END, SMEL_EXPAND, 0, 0, {}};
        table_.smels[3].smel_types.sm_3type.lsc1.lsclong = 0x04040404;
        table_.smels[3].smel_types.sm_3type.lsc2.lsclong = 0x05050505;
        table_.smels[4] = {SMEL_END, SMEL_PAIR, 1, 0, {}}; // broken: no end
        table_.smels[5] = {SMEL_END, 2, 0, 0, {}};         // broken: a kind that is not made
    }

    Resolved resolve(int head, std::string text, bool has_end = true) {
        Resolved result;
        LSC lsc = {result.lsc}, hold = {result.hold};
        char *at = text.data();
        com__smel_lsc(table_.smels, head, &at, has_end ? text.data() + text.size() : nullptr, &lsc, &hold);
        return {lsc.lsclong, hold.lsclong, at - text.data()};
    }

    SO_1CLASS table_ = {};
};

TEST_F(Chains, EachKindOfElement) {
    EXPECT_EQ(resolve(0, "x"), (Resolved{0x01010101, 0, 0}));
    EXPECT_EQ(resolve(3, "x"), (Resolved{0x04040404, 0x05050505, 0}));
    EXPECT_EQ(resolve(1, "xy"), (Resolved{0x02020202, 0, 1}));
    EXPECT_EQ(resolve(1, "\xE9"), (Resolved{0x03030303, 0, 1}));
    EXPECT_EQ(resolve(1, "y"), (Resolved{0x01010101, 0, 0}));
}

TEST_F(Chains, PairNeedsItsSecondByteBeforeTheEnd) { EXPECT_EQ(resolve(1, ""), (Resolved{0x01010101, 0, 0})); }

TEST_F(Chains, NoEndIsNoLimit) {
    EXPECT_EQ(resolve(1, "x", false), (Resolved{0x02020202, 0, 1}));
    EXPECT_EQ(resolve(1, "y", false), (Resolved{0x01010101, 0, 0}));
}

using ChainsDeathTest = Chains;

TEST_F(ChainsDeathTest, BrokenChainsAreReported) {
    EXPECT_BOMB(resolve(SMEL_END, "x"), "sortord");
    EXPECT_BOMB(resolve(4, "x"), "sortord");
    EXPECT_BOMB(resolve(5, "x"), "sortord");
}

TEST_F(Chains, BrokenChainsHaveNoWeightWhereAssertionsReturn) {
    const ReturningAssertions returning;
    for (const int head : {SMEL_END, 4, 5})
        EXPECT_EQ(resolve(head, "x"), (Resolved{0, 0, 0})) << head;
    EXPECT_EQ(returning.count(), 3);
    // A comparison by such a table comes to its end.
    table_.lscs['a'].pst.smelist = 4;
    EXPECT_EQ(compare(table_, "aa", "aa"), 0);
    EXPECT_GT(returning.count(), 3);
}

void smel_lsc_without(SMEL *smels, int missing) {
    char text[] = "x", *at = text;
    LSC lsc = {7}, hold = {7};
    com__smel_lsc(missing == 0 ? nullptr : smels, 0, missing == 1 ? nullptr : &at, text + 1,
                  missing == 2 ? nullptr : &lsc, missing == 3 ? nullptr : &hold);
    EXPECT_EQ(at, text);
    EXPECT_EQ(lsc.lsclong, 7u);
    EXPECT_EQ(hold.lsclong, 7u);
}

TEST_F(ChainsDeathTest, NullPointersAreReported) {
    for (int missing = 0; missing < 4; ++missing)
        EXPECT_NULL_REPORT(smel_lsc_without(table_.smels, missing), "sortord");
}

TEST_F(Chains, NullPointersChangeNothingWhereAssertionsReturn) {
    const ReturningAssertions returning;
    for (int missing = 0; missing < 4; ++missing)
        smel_lsc_without(table_.smels, missing);
    EXPECT_EQ(returning.count(), 4);
}

// ---- The order by byte --------------------------------------------------------------------------------------

CS_INT memhilo(std::string text1, std::string text2) {
    return com_memhilo(reinterpret_cast<CS_BYTE *>(text1.data()), static_cast<CS_INT>(text1.size()),
                       reinterpret_cast<CS_BYTE *>(text2.data()), static_cast<CS_INT>(text2.size()));
}

TEST(MemHiLo, BytesThenLengths) {
    EXPECT_EQ(memhilo("", ""), 0);
    EXPECT_EQ(memhilo("", "a"), -1);
    EXPECT_EQ(memhilo("a", ""), 1);
    EXPECT_EQ(memhilo("abc", "abc"), 0);
    EXPECT_EQ(memhilo("abc", "abd"), -1);
    EXPECT_EQ(memhilo("b", "abc"), 1);
    EXPECT_EQ(memhilo("ab", "abc"), -1);
    EXPECT_EQ(memhilo("ab ", "ab"), 1); // blanks count
    EXPECT_EQ(memhilo("\xFF", "a"), 1); // bytes have no sign
    EXPECT_EQ(memhilo(std::string("a\0b", 3), std::string("a\0c", 3)), -1);
    EXPECT_EQ(com_memhilo(nullptr, 0, nullptr, 0), 0);
}

TEST(MemHiLo, RandomTexts) {
    Random random(20260106);
    for (int round = 0; round < 50'000; ++round) {
        std::string text1(random() % 12, '\0'), text2(random() % 12, '\0');
        for (char &c : text1)
            c = static_cast<char>(random() % 3 * 127);
        for (char &c : text2)
            c = static_cast<char>(random() % 3 * 127);
        const std::basic_string<unsigned char> bytes1(text1.begin(), text1.end()), bytes2(text2.begin(), text2.end());
        ASSERT_EQ(memhilo(text1, text2), (bytes1 > bytes2) - (bytes1 < bytes2));
    }
}

TEST(MemHiLoDeathTest, NegativeLengthIsAnAssertion) {
    CS_BYTE text[] = "a";
    EXPECT_BOMB(com_memhilo(text, -1, text, 1), "sortord");
    EXPECT_BOMB(com_memhilo(text, 1, text, -1), "sortord");
}

TEST(MemHiLo, NegativeLengthIsEqualWhereAssertionsReturn) {
    const ReturningAssertions returning;
    CS_BYTE text[] = "a";
    EXPECT_EQ(com_memhilo(text, -1, text, 1), 0);
    EXPECT_EQ(com_memhilo(text, 1, text, -1), 0);
    EXPECT_EQ(returning.count(), 2);
}

// ---- The order of a locale ----------------------------------------------------------------------------------

class SortOrderOfALocale : public testing::Test {
protected:
    SortOrderOfALocale() {
        order_.char_sort_class = &table_;
        set_.sort_order = &other_;
        cache_.locchardesc = &set_;
        cache_.locsortorder = &order_;
        locale_.collateptr = &cache_;
    }
    CS_RETCODE ask() {
        result_ = &result_;
        return com_intl_sortorder(&locale_, &result_);
    }

    SO_1CLASS table_ = {};
    CsSortDesc other_ = {};
    CsSortDesc order_ = {};
    CsCharDesc set_ = {};
    CsLocCache cache_ = {};
    CsLocale locale_ = {};
    CS_VOID *result_ = nullptr;
};

TEST_F(SortOrderOfALocale, IsTheCachesOwnAndNotTheSetsFirst) {
    EXPECT_EQ(ask(), CS_SUCCEED);
    EXPECT_EQ(result_, &table_);
}

TEST_F(SortOrderOfALocale, IsNullForAnOrderByByte) {
    order_.char_sort_class = nullptr;
    EXPECT_EQ(ask(), CS_SUCCEED);
    EXPECT_EQ(result_, nullptr);
}

TEST_F(SortOrderOfALocale, FailsWithoutCollationWithoutSetAndWithoutOrders) {
    set_.sort_order = nullptr;
    EXPECT_EQ(ask(), CS_FAIL);
    EXPECT_EQ(result_, &result_);
    cache_.locchardesc = nullptr;
    EXPECT_EQ(ask(), CS_FAIL);
    locale_.collateptr = nullptr;
    EXPECT_EQ(ask(), CS_FAIL);
    EXPECT_EQ(result_, &result_);
}

using SortOrderOfALocaleDeathTest = SortOrderOfALocale;

TEST_F(SortOrderOfALocaleDeathTest, NullPointersAreReported) {
    EXPECT_NULL_REPORT(com_intl_sortorder(nullptr, &result_), "sortord");
    EXPECT_NULL_REPORT(com_intl_sortorder(&locale_, nullptr), "sortord");
    cache_.locsortorder = nullptr;
    EXPECT_NULL_REPORT(ask(), "sortord");
}

TEST_F(SortOrderOfALocale, NullPointersFailWhereAssertionsReturn) {
    const ReturningAssertions returning;
    EXPECT_EQ(com_intl_sortorder(nullptr, &result_), CS_FAIL);
    EXPECT_EQ(com_intl_sortorder(&locale_, nullptr), CS_FAIL);
    cache_.locsortorder = nullptr;
    EXPECT_EQ(ask(), CS_FAIL);
    EXPECT_EQ(result_, &result_);
    EXPECT_EQ(returning.count(), 3);
}

} // namespace

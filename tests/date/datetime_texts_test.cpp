// Two million date texts, good and broken, read by the library and by the naive reading.

#include "support/date_comparison.h"
#include "support/date_texts.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using namespace support;

#if defined(__SANITIZE_ADDRESS__)
constexpr int SHARE = 4; // one text in so many, each of which costs ten times as much
#else
constexpr int SHARE = 1;
#endif
constexpr int TEXTS = 2000000 / SHARE;

// Rules of each kind: every style that reads, others, every order, every part that can be wanted.
class AnyRules {
public:
    naive::DateRules next(Random &random) const {
        static constexpr int STYLES[] = {1,   2,   3,   4,   5,   9,   10,  11,  21,  22,  23,  40, 101,
                                         102, 103, 104, 105, 110, 111, 121, 122, 140, 109, 123, 12, 6};
        naive::DateRules rules;
        rules.style = random() % 2 != 0 ? 0 : STYLES[random() % std::size(STYLES)];
        if (random() % 64 == 0)
            rules.style = pick(random, -5, 160);
        rules.order = random() % 32 == 0 ? pick(random, -2, 9) : pick(random, 1, 6);
        rules.partonly = random() % 2 != 0 ? 0 : pick(random, 0, 3);
        rules.type = std::array<int, 4>{CS_DATETIME_TYPE, CS_BIGDATETIME_TYPE, CS_BIGTIME_TYPE, 51}[random() % 4];
        const auto names = random() % 64;
        rules.months = names == 0 ? nullptr : com__get_months();
        rules.shortmonths = names == 1 ? nullptr : com__get_shortmonths();
        return rules;
    }
};

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02X", static_cast<CS_BYTE>(c));
        result += c >= ' ' && c < 0x7F ? std::string(1, c) : hex;
    }
    return result;
}

std::string described(std::string_view text, const naive::DateRules &rules) {
    return "\"" + escaped(text) + "\" style " + std::to_string(rules.style) + " order " + std::to_string(rules.order) +
           " partonly " + std::to_string(rules.partonly) + " type " + std::to_string(rules.type);
}

// The codes that came out, so that a change of the generator does not make the comparison hollow.
class Codes {
public:
    void add(std::string_view text, const naive::DateRules &rules) {
        ++counts_[naive::DateReading(text, rules, CS_DATEREC{}).code()];
        ++texts_;
    }
    void expect_share(int code, double at_least) {
        EXPECT_GE(static_cast<double>(counts_[code]) / texts_, at_least) << "code " << code;
    }

private:
    std::map<int, int> counts_;
    int texts_ = 0;
};

TEST(GeneratedDateTexts, OneByteACharacter) {
    DateTexts texts(1);
    const AnyRules any;
    Codes codes;
    for (int i = 0; i < TEXTS / 2; ++i) {
        const naive::DateRules rules = any.next(texts.random());
        const std::string text = texts.next();
        const DateComparison comparison(text, rules);
        ASSERT_STREQ(comparison.difference(1), nullptr) << described(text, rules);
        const int function = pick(texts.random(), 0, DateComparison::FUNCTIONS - 1);
        ASSERT_STREQ(comparison.difference(function), nullptr) << described(text, rules);
        if (i % 16 == 0)
            codes.add(text, rules);
    }
    codes.expect_share(0, 0.3);
    codes.expect_share(99, 0.02);
    codes.expect_share(-1, 0.1);
    codes.expect_share(-2, 0.05);
    codes.expect_share(1, 0.002);
    codes.expect_share(9, 0.005);
}

TEST(GeneratedDateTexts, EveryCharacterSet) {
    DateTexts texts(2);
    const AnyRules any;
    const auto sets = date_sets();
    for (int i = 0; i < TEXTS / 4; ++i) {
        naive::DateRules rules = any.next(texts.random());
        const auto number = static_cast<std::size_t>(i) % sets.size();
        rules.set = sets[number] ? sets[number]->get() : nullptr;
        std::string text = texts.next();
        if (i % 3 != 0)
            text = texts.widened(text);
        const DateComparison comparison(text, rules);
        const int function = pick(texts.random(), 0, DateComparison::FUNCTIONS - 1);
        ASSERT_STREQ(comparison.difference(function), nullptr) << described(text, rules) << " set " << number;
    }
}

TEST(GeneratedDateTexts, RandomCharacterSets) {
    DateTexts texts(3);
    const AnyRules any;
    constexpr int TEXTS_OF_A_SET = 50;
    for (int i = 0; i < TEXTS / 20 / TEXTS_OF_A_SET; ++i) {
        RandomSet set(texts.random());
        for (int j = 0; j < TEXTS_OF_A_SET; ++j) {
            naive::DateRules rules = any.next(texts.random());
            rules.set = set.get();
            const std::string text = texts.widened(texts.next());
            const DateComparison comparison(text, rules);
            ASSERT_STREQ(comparison.any_difference(), nullptr) << described(text, rules) << " set " << i;
        }
    }
}

// Nothing but marks, numbers and names, in any order: few are dates, but all paths to a failure are gone.
TEST(GeneratedDateTexts, AnyTokens) {
    static constexpr const char *TOKENS[] = {"1", "12", "30", "100", "2003", "10305", "030102", "20030102", ":",
                                             ":", "AM", "PM", "Jan", "May",  ",",     "/",      "-",        ".",
                                             "T", " ",  ".5", ":15", "/5",   " 7 ",   "0",      "13"};
    DateTexts texts(4);
    Random &random = texts.random();
    const AnyRules any;
    Codes codes;
    for (int i = 0; i < TEXTS / 5; ++i) {
        const naive::DateRules rules = any.next(random);
        std::string text;
        for (int count = random() % 8 == 0 ? pick(random, 15, 22) : pick(random, 0, 9); count > 0; --count)
            text += TOKENS[random() % std::size(TOKENS)];
        const DateComparison comparison(text, rules);
        const int function = pick(random, 0, DateComparison::FUNCTIONS - 1);
        ASSERT_STREQ(comparison.difference(function), nullptr) << described(text, rules);
        codes.add(text, rules);
    }
    codes.expect_share(0, 0.02);
    codes.expect_share(99, 0.01);
    codes.expect_share(-2, 0.05);
    codes.expect_share(1, 0.0005);
}

} // namespace

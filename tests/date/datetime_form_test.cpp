// The form that programs write, 2003-01-02 10:30:15.123, which the library reads at a glance: held against the naive
// reading, which knows no form, with one byte or none gone wrong.

#include "support/date_comparison.h"
#include "support/date_texts.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace support;

naive::DateRules rules_of(int style, int order, int partonly, int type, const CHAR_ATTRIB *set = nullptr) {
    naive::DateRules rules;
    rules.style = style;
    rules.order = order;
    rules.partonly = partonly;
    rules.type = type;
    rules.months = com__get_months();
    rules.shortmonths = com__get_shortmonths();
    rules.set = set;
    return rules;
}

void expect_agreement(const std::string &text, const naive::DateRules &rules) {
    const DateComparison comparison(text, rules);
    for (int function = 0; function < DateComparison::FUNCTIONS; ++function)
        if (const char *name = comparison.difference(function))
            ADD_FAILURE() << name << " of \"" << text << "\", style " << rules.style << " order " << rules.order
                          << " partonly " << rules.partonly << " type " << rules.type;
}

std::string form(std::mt19937_64 &random) {
    const auto number = [&random](unsigned bound) { return static_cast<unsigned>(random() % bound); };
    const char mark = "-/"[number(2)];
    char text[64];
    std::snprintf(text, sizeof text, "%04u%c%02u%c%02u%c%02u:%02u:%02u",
                  number(8) == 0 ? number(10000) : 1753 + number(300), mark, number(14), mark, number(33),
                  " T"[number(2)], number(26), number(62), number(62));
    std::string result = text;
    if (number(4) != 0) {
        result += '.';
        for (unsigned digits = number(9); digits > 0; --digits)
            result += static_cast<char>(number(3) == 0 ? '9' : '0' + number(10));
    }
    return result;
}

TEST(ProgramForm, ReadsLikeEveryOtherText) {
    static constexpr char BYTES[] = "0123456789-/.:,TtAMJ \0\xA3\xFF";
    std::vector<std::shared_ptr<ConstructedSet>> sets = date_sets();
    std::mt19937_64 random(0xF0A1);
    for (int i = 0; i < 40000 && !testing::Test::HasFailure(); ++i) {
        std::string text = form(random);
        switch (random() % 6) {
        case 0:
            text[random() % text.size()] = BYTES[random() % (sizeof BYTES - 1)];
            break;
        case 1:
            text.erase(random() % text.size(), 1);
            break;
        case 2:
            text.insert(random() % (text.size() + 1), 1, BYTES[random() % (sizeof BYTES - 1)]);
            break;
        default:
            break;
        }
        static constexpr int STYLES[] = {0, 0, 0, 9, 1, 23, 111, 140, 24};
        static constexpr int TYPES[] = {CS_DATETIME_TYPE, CS_BIGDATETIME_TYPE, CS_BIGTIME_TYPE};
        const std::size_t which = random() % (2 * sets.size());
        expect_agreement(text, rules_of(STYLES[random() % std::size(STYLES)], static_cast<int>(random() % 8),
                                        static_cast<int>(random() % 4), TYPES[random() % std::size(TYPES)],
                                        which < sets.size() && sets[which] ? sets[which]->get() : nullptr));
    }
}

TEST(ProgramForm, HasItsMeaningInEveryOrderButOne) {
    for (int order = DATEORDER_MDY; order <= DATEORDER_DYM; ++order) {
        char text[] = "2003-01-02 10:30:15.123";
        CS_DATETIME value;
        CS_BOOL truncated;
        ASSERT_EQ(com__datefromchar_mb(&value, text, 23, 0, order, com__get_months(), com__get_shortmonths(), nullptr,
                                       &truncated),
                  DATE_OK);
        EXPECT_EQ(value.dtdays, order == DATEORDER_YDM ? 37651 : 37621) << order; // February 1, or January 2
        EXPECT_EQ(value.dttime, 11344537);
        EXPECT_EQ(truncated, CS_FALSE);
    }
}

TEST(ProgramForm, TellsThatDigitsWereLost) {
    char text[] = "2003-01-02T10:30:15.123456";
    CS_DATETIME value;
    CS_BOOL truncated = CS_FALSE;
    EXPECT_EQ(com__datefromchar_mb(&value, text, 26, 0, DATEORDER_MDY, com__get_months(), com__get_shortmonths(),
                                   nullptr, &truncated),
              DATE_OK);
    EXPECT_EQ(truncated, CS_TRUE);
}

// Sets in which a byte of the form is something else than it looks.
TEST(ProgramForm, IsNotSeenWhereItsBytesMeanSomethingElse) {
    const std::string text = "2003-01-02T10:30:15.123";
    for (const bool has_norms : {false, true})
        for (const char byte : {'0', '1', '5', '-', ':', '.', 'T', ' ', '/'}) {
            const auto code = static_cast<CS_BYTE>(byte);
            ConstructedSet classless(1, has_norms), other_case(1, has_norms), wide(1, 2 * has_norms), paged(2, has_norms);
            classless.type(0, code, CHAR_MAP{code, code, 0, 0});
            other_case.type(0, code, CHAR_MAP{'7', '7', CS_LEX_IDENT, CS_CT_DIGIT});
            if (has_norms)
                other_case.norm(0, code, '7'), wide.norm_row(code, 1);
            wide.width(code, code, 2, 2);
            paged.type_row(code, 1);
            for (ConstructedSet *set : {&classless, &other_case, &wide, &paged})
                for (const int type : {CS_DATETIME_TYPE, CS_BIGDATETIME_TYPE}) {
                    expect_agreement(text, rules_of(0, DATEORDER_MDY, 0, type, set->get()));
                    expect_agreement("2003/01/02 10:30:15", rules_of(0, DATEORDER_MDY, 0, type, set->get()));
                    set->without_width_map();
                    expect_agreement(text, rules_of(0, DATEORDER_MDY, 0, type, set->get()));
                }
        }
}

} // namespace

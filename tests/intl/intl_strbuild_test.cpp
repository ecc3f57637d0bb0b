// Message templates, against a builder that works on whole strings.
#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int ROOM = 64;

struct Built {
    int result;
    std::string buffer;
};

// What a call writes into a buffer of guards.
template <class... Parameter>
Built build(int length, const char *text, const char *format, Parameter... parameters) {
    std::string buffer(ROOM, '~');
    const int result = intl_strbuild(0, buffer.data(), length, text, format, parameters...);
    EXPECT_EQ(buffer.substr(static_cast<size_t>(length < 0 ? 0 : length)),
              std::string(static_cast<size_t>(ROOM - (length < 0 ? 0 : length)), '~'))
        << "nothing behind the room";
    return {result, buffer};
}

// The text that was built; its length and its NUL have to be right.
template <class... Parameter>
std::string text_of(const char *text, const char *format, Parameter... parameters) {
    const Built built = build(ROOM, text, format, parameters...);
    if (built.result < 0)
        return "code " + std::to_string(built.result);
    EXPECT_EQ(built.buffer[static_cast<size_t>(built.result)], '\0');
    return built.buffer.substr(0, static_cast<size_t>(built.result));
}

const std::string FAILS = "code " + std::to_string(INTL_EBADTEMPLATE);

TEST(MessageTemplate, PlainTextStands) {
    EXPECT_EQ(text_of("a text", ""), "a text");
    EXPECT_EQ(text_of("", ""), "");
}

TEST(MessageTemplate, PlaceholdersAreNumberedFromOne) {
    EXPECT_EQ(text_of("%1!", "%s", "one"), "one");
    EXPECT_EQ(text_of("<%1!|%2!>", "%s %s", "one", "two"), "<one|two>");
    EXPECT_EQ(text_of("%2! before %1!, %2!", "%s %s", "one", "two"), "two before one, two");
    EXPECT_EQ(text_of("%9!%1!", "%d %d %d %d %d %d %d %d %d", 1, 2, 3, 4, 5, 6, 7, 8, 9), "91");
}

TEST(MessageTemplate, NumbersAreDecimal) {
    EXPECT_EQ(text_of("%1! %2! %3!", "%d %d %d", 0, INT_MAX, INT_MIN), "0 2147483647 -2147483648");
    EXPECT_EQ(text_of("%1!%2!%3!", "%s %d %s", "a", -7, "b"), "a-7b");
}

TEST(MessageTemplate, ListNeedsNoBlanks) {
    EXPECT_EQ(text_of("%2!%1!", "%s%d", "a", 5), "5a");
    EXPECT_EQ(text_of("%2!%1!", "  %s   %d ", "a", 5), "5a");
}

TEST(MessageTemplate, ParametersThatNobodyWantsAreFine) { EXPECT_EQ(text_of("x", "%s %d", "a", 5), "x"); }

TEST(MessageTemplate, TwoPercentSignsAreOne) {
    EXPECT_EQ(text_of("100%%", ""), "100%");
    EXPECT_EQ(text_of("%%%%", ""), "%%");
    EXPECT_EQ(text_of("%%1!", "%s", "one"), "%1!") << "and begin no placeholder";
    EXPECT_EQ(text_of("%%%1!", "%s", "one"), "%one");
}

TEST(MessageTemplate, AnythingElseStands) {
    for (const char *text : {"%", "a%", "%1", "%1 !", "%s", "%n", "%d%x", "%0!", "%a!", "%!", "1!", "%-1!", "%1%"})
        EXPECT_EQ(text_of(text, "%s", "one"), text);
    EXPECT_EQ(text_of("%10!", "%s", "one"), "%10!");
}

TEST(MessageTemplate, ParametersStandAsTheyAre) {
    EXPECT_EQ(text_of("%1!", "%s %s", "%2!", "two"), "%2!");
    EXPECT_EQ(text_of("%1!", "%s", "100%% %n%s"), "100%% %n%s");
    EXPECT_EQ(text_of("<%1!>", "%s", ""), "<>");
    EXPECT_EQ(text_of("<%1!>", "%s", "\xC3\xA4"), "<\xC3\xA4>");
}

TEST(MessageTemplate, MissingTextIsEmpty) {
    EXPECT_EQ(text_of("<%1!%2!>", "%s %s", static_cast<const char *>(nullptr), "two"), "<two>");
}

TEST(MessageTemplate, PlaceholderWithoutAParameterFails) {
    EXPECT_EQ(text_of("%1!", ""), FAILS);
    EXPECT_EQ(text_of("%2!", "%s", "one"), FAILS);
    EXPECT_EQ(text_of("%1! %3!", "%s %s", "one", "two"), FAILS);
}

TEST(MessageTemplate, ListThatIsNoneFails) {
    for (const char *list : {"%", "%s %", "s", "%x", "%ld", ", %s", "%s,%s", "%%"})
        EXPECT_EQ(text_of("x", list, "one", "two"), FAILS) << list;
    EXPECT_EQ(text_of("x", "%d%d%d%d%d%d%d%d%d%d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10), FAILS) << "more than nine";
}

TEST(MessageTemplate, FitsWithItsNul) {
    EXPECT_EQ(build(8, "%1! two", "%s", "one").result, 7);
    EXPECT_EQ(build(7, "%1! two", "%s", "one").result, INTL_EBADTEMPLATE);
    EXPECT_EQ(build(4, "%1!", "%s", "one").result, 3);
    EXPECT_EQ(build(3, "%1!", "%s", "one").result, INTL_EBADTEMPLATE);
    EXPECT_EQ(build(1, "", "").result, 0);
    EXPECT_EQ(build(1, "a", "").result, INTL_EBADTEMPLATE);
    EXPECT_EQ(build(1, "%%", "").result, INTL_EBADTEMPLATE);
}

TEST(MessageTemplate, WithoutRoomItFails) {
    EXPECT_EQ(build(0, "", "").result, INTL_EBADTEMPLATE);
    EXPECT_EQ(build(-1, "", "").result, INTL_EBADTEMPLATE);
}

// The template filled from its front, a piece at a time.
std::optional<std::string> filled(std::string rest, const std::vector<std::string> &parameters) {
    std::string text;
    while (!rest.empty()) {
        size_t taken = 1;
        if (rest.rfind("%%", 0) == 0) {
            text += '%';
            taken = 2;
        } else if (rest.size() > 2 && rest[0] == '%' && rest[1] > '0' && rest[1] <= '9' && rest[2] == '!') {
            const auto number = static_cast<size_t>(rest[1] - '0');
            if (number > parameters.size())
                return std::nullopt;
            text += parameters[number - 1];
            taken = 3;
        } else {
            text += rest[0];
        }
        rest.erase(0, taken);
    }
    return text;
}

TEST(MessageTemplate, RandomTemplatesAsANaiveBuilderFillsThem) {
    std::mt19937_64 random(20260106);
    static constexpr char BYTES[] = "%%%%!!!123049ab";
    int failures = 0;
    for (int round = 0; round < 100'000; ++round) {
        std::string text(random() % 12, ' ');
        for (char &c : text)
            c = BYTES[random() % (sizeof BYTES - 1)];
        std::string first(random() % 6, 'x');
        if (!first.empty())
            first[0] = BYTES[random() % (sizeof BYTES - 1)];
        const int second = static_cast<int>(random() >> random() % 64);
        const int room = 1 + static_cast<int>(random() % 24);
        const std::optional<std::string> expected = filled(text, {first, std::to_string(second), "z"});
        const Built built = build(room, text.c_str(), "%s %d %s", first.c_str(), second, "z");
        if (!expected || static_cast<int>(expected->size()) >= room) {
            ASSERT_EQ(built.result, INTL_EBADTEMPLATE) << text;
            ++failures;
        } else {
            ASSERT_EQ(built.result, static_cast<int>(expected->size())) << text;
            ASSERT_EQ(built.buffer.substr(0, expected->size() + 1), *expected + '\0') << text;
        }
    }
    EXPECT_GT(failures, 1000);
    EXPECT_LT(failures, 90'000);
}

} // namespace

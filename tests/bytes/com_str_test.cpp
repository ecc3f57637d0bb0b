// Comparison of byte strings: every pair of bytes, terminators, and random strings against a model on vectors.
#include "support/assertions.h"

#include <dlxcomn/services.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <random>
#include <string>

namespace {

int weight(char c, bool fold) {
    const int byte = static_cast<unsigned char>(c);
    return fold && byte >= 'A' && byte <= 'Z' ? byte + 32 : byte; // the C locale's tolower
}

int model(const std::string &a, const std::string &b, bool fold) {
    for (size_t i = 0; i < a.size(); ++i)
        if (weight(a[i], fold) != weight(b[i], fold))
            return weight(a[i], fold) - weight(b[i], fold);
    return 0;
}
// With the terminators, up to the shorter one's.
int model_terminated(std::string a, std::string b, bool fold) {
    a += '\0';
    b += '\0';
    const size_t count = std::min(a.size(), b.size());
    return model(a.substr(0, count), b.substr(0, count), fold);
}

int compare(const std::string &a, const std::string &b, bool fold) {
    std::string left = a, right = b;
    return fold ? com_unsignstricmp(left.data(), right.data()) : com_unsignstrcmp(left.data(), right.data());
}
// On buffers without a byte behind the length.
int compare_counted(const std::string &a, const std::string &b, bool fold) {
    const std::unique_ptr<char[]> left(new char[a.size()]), right(new char[b.size()]);
    std::memcpy(left.get(), a.data(), a.size());
    std::memcpy(right.get(), b.data(), b.size());
    const auto len = static_cast<CS_INT>(a.size());
    return fold ? com_unsignstrnicmp(left.get(), right.get(), len) : com_unsignstrncmp(left.get(), right.get(), len);
}

TEST(ComStr, EveryPairOfBytesComparesUnsigned) {
    for (int a = 0; a < 256; ++a)
        for (int b = 0; b < 256; ++b)
            for (const bool fold : {false, true}) {
                const std::string left(1, static_cast<char>(a)), right(1, static_cast<char>(b));
                ASSERT_EQ(compare_counted(left, right, fold), model(left, right, fold)) << a << " " << b;
                const std::string in_text_a = "x" + left + "y", in_text_b = "x" + right + "y";
                ASSERT_EQ(compare(in_text_a, in_text_b, fold),
                          model_terminated(in_text_a.c_str(), in_text_b.c_str(), fold))
                    << a << " " << b;
            }
}

TEST(ComStr, AnswerIsTheDifferenceOfTheFirstPairThatDiffers) {
    EXPECT_EQ(compare("abc", "abz", false), 'c' - 'z');
    EXPECT_EQ(compare("b", "aZZ", false), 1);
    EXPECT_EQ(compare("\xFF", "\x01", false), 254);
    EXPECT_EQ(compare("ab", "abc", false), -'c');
    EXPECT_EQ(compare("abc", "ab", false), 'c');
    EXPECT_EQ(compare("", "", false), 0);
    EXPECT_EQ(compare("aBc", "AbC", true), 0);
    EXPECT_EQ(compare("aB", "AC", true), -1);
    EXPECT_EQ(compare("_", "A", true), '_' - 'a') << "folded to lower case, not upper";
}

TEST(ComStr, TerminatedFormsStopAtTheCommonEnd) {
    EXPECT_EQ(compare(std::string("ab\0x", 4), std::string("ab\0y", 4), false), 0);
    EXPECT_EQ(compare(std::string("ab\0x", 4), std::string("AB\0y", 4), true), 0);
}

TEST(ComStr, OddityCountedFormsGoOnBehindATerminator) {
    EXPECT_EQ(compare_counted(std::string("ab\0x", 4), std::string("ab\0y", 4), false), -1);
    EXPECT_EQ(compare_counted(std::string("ab\0X", 4), std::string("AB\0y", 4), true), -1);
}

TEST(ComStr, CountedFormsStopAtTheirLength) {
    CS_CHAR a[] = "abX", b[] = "abY";
    EXPECT_EQ(com_unsignstrncmp(a, b, 2), 0);
    EXPECT_EQ(com_unsignstrncmp(a, b, 3), -1);
    EXPECT_EQ(com_unsignstrnicmp(a, b, 2), 0);
    EXPECT_EQ(com_unsignstrnicmp(a, b, 3), -1);
    for (const CS_INT none : {0, -1, -9}) {
        EXPECT_EQ(com_unsignstrncmp(a, b, none), 0);
        EXPECT_EQ(com_unsignstrnicmp(a, b, none), 0);
    }
}

TEST(ComStr, RandomStringsFollowTheModel) {
    std::mt19937_64 random(11);
    const std::string alphabet("aAbB\0\xE4\xC4z", 8);
    for (int round = 0; round < 100000; ++round) {
        std::string a(random() % 12, ' '), b;
        for (char &c : a)
            c = alphabet[random() % alphabet.size()];
        b = a;
        for (char &c : b)
            if (random() % 8 == 0)
                c = alphabet[random() % alphabet.size()];
            else if (random() % 4 == 0)
                c = static_cast<char>(std::isalpha(static_cast<unsigned char>(c)) != 0 ? c ^ 0x20 : c);
        for (const bool fold : {false, true}) {
            ASSERT_EQ(compare_counted(a, b, fold), model(a, b, fold)) << round;
            ASSERT_EQ(compare(a, b, fold), model_terminated(a.c_str(), b.c_str(), fold)) << round;
        }
    }
}

TEST(ComStrDeathTest, NullStrings) {
    CS_CHAR text[] = "a";
    EXPECT_NULL_REPORT(com_unsignstrcmp(nullptr, text), "com_str");
    EXPECT_NULL_REPORT(com_unsignstrcmp(text, nullptr), "com_str");
    EXPECT_NULL_REPORT(com_unsignstrncmp(nullptr, text, 1), "com_str");
    EXPECT_NULL_REPORT(com_unsignstrncmp(text, nullptr, 1), "com_str");
    EXPECT_NULL_REPORT(com_unsignstricmp(nullptr, text), "com_str");
    EXPECT_NULL_REPORT(com_unsignstricmp(text, nullptr), "com_str");
    EXPECT_NULL_REPORT(com_unsignstrnicmp(nullptr, text, 1), "com_str");
    EXPECT_NULL_REPORT(com_unsignstrnicmp(text, nullptr, 1), "com_str");
}

TEST(ComStr, NullStringsThatComeBackAreEqual) {
    const support::ReturningAssertions assertions;
    CS_CHAR text[] = "a";
    EXPECT_EQ(com_unsignstrcmp(nullptr, text), 0);
    EXPECT_EQ(com_unsignstrcmp(text, nullptr), 0);
    EXPECT_EQ(com_unsignstrncmp(nullptr, text, 1), 0);
    EXPECT_EQ(com_unsignstrncmp(text, nullptr, 1), 0);
    EXPECT_EQ(com_unsignstricmp(nullptr, text), 0);
    EXPECT_EQ(com_unsignstricmp(text, nullptr), 0);
    EXPECT_EQ(com_unsignstrnicmp(nullptr, text, 1), 0);
    EXPECT_EQ(com_unsignstrnicmp(text, nullptr, 1), 0);
    EXPECT_EQ(assertions.count(), 8);
}

} // namespace

// The Japanese routines of the older matrix, against a second version that takes one rule after the other, and against
// what the C library's iconv says of good pairs.
#include "support/assertions.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <iconv.h>

namespace {

using support::ReturningAssertions;

constexpr CS_BYTE GROUND = 0xEE;
using Bytes = std::vector<CS_BYTE>;

struct Result {
    int flags = -5;
    int sused = -5;
    int dused = -5;
    Bytes src; // as the routine left it
    Bytes dest;
    bool operator==(const Result &) const = default;
};

void PrintTo(const Result &result, std::ostream *out) {
    *out << "flags " << result.flags << " used " << result.sused << '/' << result.dused << std::hex << " source";
    for (const CS_BYTE byte : result.src)
        *out << ' ' << int(byte);
    *out << " destination";
    for (const CS_BYTE byte : result.dest)
        *out << ' ' << int(byte);
    *out << std::dec;
}

Result call(CS_XLATE_FUNC function, const Bytes &text, int dlen) {
    Result result;
    result.src = text;
    result.dest.assign(static_cast<std::size_t>(dlen), GROUND);
    result.flags = function(result.src.data(), static_cast<int>(text.size()), result.dest.data(), dlen, &result.sused,
                            &result.dused);
    return result;
}

// ---- The naive version --------------------------------------------------------------------------------------

enum Kind {
    DECKANJI_TO_ASCII8,
    DECKANJI_TO_EUCJIS,
    DECKANJI_TO_SJIS,
    EUCJIS_TO_ASCII8,
    EUCJIS_TO_DECKANJI,
    EUCJIS_TO_SJIS,
    SJIS_TO_ASCII8,
    SJIS_TO_EUCJIS_DECKANJ
};

struct Routine {
    Kind kind;
    const char *name;
    CS_XLATE_FUNC function;
};

constexpr Routine ROUTINES[] = {
    {DECKANJI_TO_ASCII8, "deckanji_to_ascii8", com__fou_deckanji_to_ascii8},
    {DECKANJI_TO_EUCJIS, "deckanji_to_eucjis", com__fou_deckanji_to_eucjis},
    {DECKANJI_TO_SJIS, "deckanji_to_sjis", com__fou_deckanji_to_sjis},
    {EUCJIS_TO_ASCII8, "eucjis_to_ascii8", com__fou_eucjis_to_ascii8},
    {EUCJIS_TO_DECKANJI, "eucjis_to_deckanji", com__fou_eucjis_to_deckanji},
    {EUCJIS_TO_SJIS, "eucjis_to_sjis", com__fou_eucjis_to_sjis},
    {SJIS_TO_ASCII8, "sjis_to_ascii8", com__fou_sjis_to_ascii8},
    {SJIS_TO_EUCJIS_DECKANJ, "sjis_to_eucjis_deckanj", com__fou_sjis_to_eucjis_deckanj},
};

void naive_euc_to_sjis(int c1, int c2, Bytes &out) {
    int h = (c1 + 1) / 2;
    if (h > 111)
        out.push_back(static_cast<CS_BYTE>(h + 0x70));
    else
        out.push_back(static_cast<CS_BYTE>(h + 0x30));
    if (c1 % 2 == 0)
        out.push_back(static_cast<CS_BYTE>(c2 - 2));
    else if (c2 > 223)
        out.push_back(static_cast<CS_BYTE>(c2 - 0x60));
    else
        out.push_back(static_cast<CS_BYTE>(c2 - 0x61));
}

void naive_sjis_to_euc(int c1, int c2, Bytes &out) {
    if (c1 > 223)
        c1 -= 0x40;
    out.push_back(static_cast<CS_BYTE>(c2 < 0x9F ? 2 * c1 - 0x60 - 1 : 2 * c1 - 0x60));
    if (c2 >= 0x9F)
        out.push_back(static_cast<CS_BYTE>(c2 + 2));
    else if (c2 >= 0x7F)
        out.push_back(static_cast<CS_BYTE>(c2 + 0x60));
    else
        out.push_back(static_cast<CS_BYTE>(c2 + 0x61));
}

Result naive(Kind kind, const Bytes &text, int dlen) {
    const int slen = static_cast<int>(text.size());
    const bool from_euc = kind == EUCJIS_TO_ASCII8 || kind == EUCJIS_TO_DECKANJI || kind == EUCJIS_TO_SJIS;
    const bool from_sjis = kind == SJIS_TO_ASCII8 || kind == SJIS_TO_EUCJIS_DECKANJ;
    const int n = std::min(slen, dlen);
    Result result;
    result.flags = dlen < slen ? 2 : 0;
    result.src = text;
    Bytes out;
    std::size_t at = 0;
    int left = n;
    const auto question_marks = [&](int count) {
        out.insert(out.end(), static_cast<std::size_t>(count), CS_BYTE('?'));
        result.flags |= 1;
    };
    while (left > 0) {
        const int c1 = result.src[at];
        if (c1 < 0x80) {
            out.push_back(static_cast<CS_BYTE>(c1));
            ++at;
            --left;
            continue;
        }
        if (from_euc && c1 == 0x8F) {
            if (left < 3)
                break;
            question_marks(3);
            ++at;
            --left;
            result.src[at] = static_cast<CS_BYTE>(result.src[at] + 2);
            left -= 2;
            continue;
        }
        bool is_pair;
        if (from_sjis)
            is_pair = (c1 >= 0x81 && c1 <= 0x9F) || (c1 >= 0xE0 && c1 <= 0xFC);
        else
            is_pair = (c1 >= 0xA1 && c1 <= 0xFE) || (from_euc && c1 == 0x8E);
        if (!is_pair) {
            question_marks(1);
            ++at;
            --left;
            continue;
        }
        if (left < 2)
            break;
        const int c2 = result.src[at + 1];
        const bool is_good_euc = c1 >= 0xA1 && c2 >= 0xA1 && c2 <= 0xFE;
        const bool is_good_sjis = c1 <= 0xEF && c2 >= 0x40 && c2 <= 0xFC && c2 != 0x7F;
        if ((kind == DECKANJI_TO_EUCJIS || kind == EUCJIS_TO_DECKANJI) && is_good_euc) {
            out.push_back(static_cast<CS_BYTE>(c1));
            out.push_back(static_cast<CS_BYTE>(c2));
        } else if ((kind == DECKANJI_TO_SJIS || kind == EUCJIS_TO_SJIS) && is_good_euc) {
            naive_euc_to_sjis(c1, c2, out);
        } else if (kind == SJIS_TO_EUCJIS_DECKANJ && is_good_sjis) {
            naive_sjis_to_euc(c1, c2, out);
        } else {
            question_marks(2);
        }
        at += 2;
        left -= 2;
    }
    result.sused = result.dused = n - left;
    result.dest = out;
    result.dest.resize(static_cast<std::size_t>(dlen), GROUND);
    return result;
}

// ---- Differential -------------------------------------------------------------------------------------------

TEST(JapaneseRoutines, EveryByteAndEveryPairOfBytes) {
    for (const auto &[kind, name, function] : ROUTINES) {
        SCOPED_TRACE(name);
        for (int first = 0; first < 256; ++first) {
            const Bytes single = {static_cast<CS_BYTE>(first)};
            EXPECT_EQ(call(function, single, 1), naive(kind, single, 1)) << std::hex << first;
            for (int second = 0; second < 256; ++second) {
                const Bytes pair = {static_cast<CS_BYTE>(first), static_cast<CS_BYTE>(second)};
                ASSERT_EQ(call(function, pair, 2), naive(kind, pair, 2)) << std::hex << first << ' ' << second;
            }
        }
    }
}

TEST(JapaneseRoutines, RandomTextAtEveryPairOfLengths) {
    std::mt19937_64 random(20260101);
    constexpr CS_BYTE FAVOURITES[] = {'a', 0x7F, 0x80, 0x81, 0x8E, 0x8F, 0x8F, 0x9F, 0xA0, 0xA1,
                                      0xDF, 0xE0, 0xEF, 0xF0, 0xFC, 0xFD, 0xFE, 0xFF, 0x40};
    for (int round = 0; round < 150; ++round)
        for (std::size_t slen = 0; slen <= 14; ++slen) {
            Bytes text(slen);
            for (CS_BYTE &byte : text)
                byte = random() % 2 == 0 ? FAVOURITES[random() % std::size(FAVOURITES)] : static_cast<CS_BYTE>(random());
            for (int dlen = 0; dlen <= 16; ++dlen)
                for (const auto &[kind, name, function] : ROUTINES)
                    ASSERT_EQ(call(function, text, dlen), naive(kind, text, dlen)) << name << ' ' << round;
        }
}

// ---- Good pairs against iconv -------------------------------------------------------------------------------

std::string recoded(const char *from, const char *to, const Bytes &text) {
    const iconv_t converter = iconv_open(to, from);
    EXPECT_NE(converter, iconv_t(-1)) << from << ' ' << to;
    std::string in(text.begin(), text.end());
    char out[8];
    char *source = in.data(), *dest = out;
    std::size_t left = in.size(), room = sizeof out;
    const bool is_good = iconv(converter, &source, &left, &dest, &room) == 0;
    iconv_close(converter);
    return is_good ? std::string(out, dest) : std::string();
}

TEST(JapaneseRoutines, CharactersOfTheStandardAreWhatIconvMakesOfThem) {
    int compared = 0;
    for (int c1 = 0xA1; c1 <= 0xFE; ++c1)
        for (int c2 = 0xA1; c2 <= 0xFE; ++c2) {
            const Bytes euc = {static_cast<CS_BYTE>(c1), static_cast<CS_BYTE>(c2)};
            const std::string sjis = recoded("EUC-JP", "SHIFT_JIS", euc);
            // 0xA1C0 is the wide backslash, which iconv knows in one of the two sets only.
            if (sjis.size() != 2)
                continue;
            ++compared;
            const Bytes made(sjis.begin(), sjis.end());
            EXPECT_EQ(call(com__fou_eucjis_to_sjis, euc, 2).dest, made) << std::hex << c1 << ' ' << c2;
            EXPECT_EQ(call(com__fou_deckanji_to_sjis, euc, 2).dest, made) << std::hex << c1 << ' ' << c2;
            EXPECT_EQ(call(com__fou_sjis_to_eucjis_deckanj, made, 2).dest, euc) << std::hex << c1 << ' ' << c2;
        }
    EXPECT_GE(compared, 6870); // of the 6879 characters of the standard
}

TEST(JapaneseRoutines, EveryGoodPairComesBack) {
    for (int c1 = 0xA1; c1 <= 0xFE; ++c1)
        for (int c2 = 0xA1; c2 <= 0xFE; ++c2) {
            const Bytes euc = {static_cast<CS_BYTE>(c1), static_cast<CS_BYTE>(c2)};
            const Bytes sjis = call(com__fou_eucjis_to_sjis, euc, 2).dest;
            EXPECT_EQ(call(com__fou_sjis_to_eucjis_deckanj, sjis, 2).dest, euc) << std::hex << c1 << ' ' << c2;
        }
}

// ---- By name ------------------------------------------------------------------------------------------------

TEST(JapaneseRoutines, ACharacterThatDoesNotFitIsCountedOnNeitherSide) {
    const Bytes text = {'a', 0xB0, 0xA1, 'b'};
    const Result result = call(com__fou_eucjis_to_sjis, text, 2);
    EXPECT_EQ(result.flags, CS_XLATE_FULL_DEST);
    EXPECT_EQ(result.sused, 1);
    EXPECT_EQ(result.dused, 1);
    EXPECT_EQ(result.dest, (Bytes{'a', GROUND}));
}

TEST(JapaneseRoutines, ACharacterCutByTheEndOfTheSourceIsLeftWithoutAFlag) {
    const Result result = call(com__fou_eucjis_to_deckanji, {'a', 0xB0}, 5);
    EXPECT_EQ(result.flags, 0);
    EXPECT_EQ(result.sused, 1);
    EXPECT_EQ(result.dused, 1);
}

TEST(JapaneseRoutines, OddityThreeByteCharacterChangesTheSourceAndReadsOnInItsMiddle) {
    for (const CS_XLATE_FUNC function :
         {com__fou_eucjis_to_ascii8, com__fou_eucjis_to_deckanji, com__fou_eucjis_to_sjis}) {
        // 0x8F, then '1' becomes '3' in the caller's buffer, and is the character that follows.
        const Result result = call(function, {0x8F, '1', 'x', 'y'}, 4);
        EXPECT_EQ(result.flags, CS_XLATE_UNMAPPED);
        EXPECT_EQ(result.sused, 4);
        EXPECT_EQ(result.dused, 4);
        EXPECT_EQ(result.src, (Bytes{0x8F, '3', 'x', 'y'}));
        EXPECT_EQ(result.dest, (Bytes{'?', '?', '?', '3'}));
    }
}

TEST(JapaneseRoutines, OddityAByteRaisedPastTheLastBeginsAgainAtZero) {
    const Result result = call(com__fou_eucjis_to_sjis, {0x8F, 0xFE, 'x', 'y'}, 4);
    EXPECT_EQ(result.src[1], 0);
    EXPECT_EQ(result.dest, (Bytes{'?', '?', '?', 0}));
}

TEST(JapaneseRoutines, OddityThreeByteCharacterThatDoesNotFitLeavesTheSourceAlone) {
    const Result result = call(com__fou_eucjis_to_sjis, {0x8F, 0xB0, 0xA1}, 2);
    EXPECT_EQ(result.src, (Bytes{0x8F, 0xB0, 0xA1}));
    EXPECT_EQ(result.sused, 0);
    EXPECT_EQ(result.flags, CS_XLATE_FULL_DEST);
}

TEST(JapaneseRoutines, SingleShiftIsNothingSpecialToDeckanjiAndShiftJis) {
    EXPECT_EQ(call(com__fou_deckanji_to_eucjis, {0x8F, 'x'}, 2).dest, (Bytes{'?', 'x'}));
    EXPECT_EQ(call(com__fou_deckanji_to_eucjis, {0x8E, 'x'}, 2).dest, (Bytes{'?', 'x'}));
    EXPECT_EQ(call(com__fou_sjis_to_ascii8, {0x8F, 'x'}, 2).dest, (Bytes{'?', '?'}));
}

// ---- Broken contracts ---------------------------------------------------------------------------------------

TEST(JapaneseRoutinesDeathTest, NullPointersAreReported) {
    CS_BYTE text[4] = "abc";
    int used = 0;
    for (const Routine &routine : ROUTINES) {
        EXPECT_NULL_REPORT(routine.function(nullptr, 3, text, 3, &used, &used), "com_fou_japan");
        EXPECT_NULL_REPORT(routine.function(text, 3, nullptr, 3, &used, &used), "com_fou_japan");
        EXPECT_NULL_REPORT(routine.function(text, 3, text, 3, nullptr, &used), "com_fou_japan");
        EXPECT_NULL_REPORT(routine.function(text, 3, text, 3, &used, nullptr), "com_fou_japan");
    }
}

TEST(JapaneseRoutines, NullPointersAreInvalidTextWhereAssertionsReturn) {
    const ReturningAssertions returning;
    CS_BYTE text[4] = "abc";
    int used = -5;
    for (const Routine &routine : ROUTINES) {
        EXPECT_EQ(routine.function(nullptr, 3, text, 3, &used, &used), CS_XLATE_INVALID);
        EXPECT_EQ(routine.function(text, 3, nullptr, 3, &used, &used), CS_XLATE_INVALID);
        EXPECT_EQ(routine.function(text, 3, text, 3, nullptr, &used), CS_XLATE_INVALID);
        EXPECT_EQ(routine.function(text, 3, text, 3, &used, nullptr), CS_XLATE_INVALID);
    }
    EXPECT_EQ(used, -5);
    EXPECT_STREQ(reinterpret_cast<char *>(text), "abc");
    EXPECT_EQ(returning.count(), 4 * static_cast<int>(std::size(ROUTINES)));
}

} // namespace

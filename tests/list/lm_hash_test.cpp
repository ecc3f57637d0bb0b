// The key hash and the two functions on it.
#include "support/lists.h"
#include "support/naive_key_hash.h"

#include <algorithm>
#include <random>
#include <vector>

using namespace support;

namespace {

constexpr const char *STEM = "lm_hash";

CS_UINT hash_of(std::string_view key) {
    CS_UINT hash = 1234567;
    EXPECT_EQ(lm___api_key_to_uint(const_cast<char *>(key.data()), static_cast<CS_INT>(key.size()), &hash), CS_SUCCEED);
    return hash;
}

using HashFunction = CS_RETCODE (*)(CS_VOID *, CS_INT, CS_INT, CS_INT *);

CS_INT slot_of(HashFunction function, std::string_view key, CS_INT range) {
    CS_INT slot = -1;
    EXPECT_EQ(function(const_cast<char *>(key.data()), static_cast<CS_INT>(key.size()), range, &slot), CS_SUCCEED);
    return slot;
}

TEST(LmKeyHash, OneByteIsFilledUpWithZ) { EXPECT_EQ(hash_of("A"), 0x415A5A5Au); }

TEST(LmKeyHash, NoBytesGiveZero) {
    EXPECT_EQ(hash_of(""), 0u);
    CS_UINT hash = 55;
    EXPECT_EQ(lm___api_key_to_uint(nullptr, 0, &hash), CS_SUCCEED);
    EXPECT_EQ(hash, 0u);
}

TEST(LmKeyHash, FourZeroBytesGiveZero) { EXPECT_EQ(hash_of(std::string(4, '\0')), 0u); }

TEST(LmKeyHash, WordsByHand) {
    EXPECT_EQ(hash_of("ABCD"), 0x41424344u);
    EXPECT_EQ(hash_of("ABCDEFGH"), 0x41424344u * 37 + 0x45464748u);
    EXPECT_EQ(hash_of("ABCDEFGHIJKL"), (0x41424344u * 37 + 0x45464748u) * 37 + 0x494A4B4Cu);
    EXPECT_EQ(hash_of("AB"), 0x41425A5Au);
    EXPECT_EQ(hash_of("ABC"), 0x4142435Au);
    EXPECT_EQ(hash_of("ABCDE"), 0x41424344u * 37 + 0x455A5A5Au);
    EXPECT_EQ(hash_of("ABCDEFGHI"), (0x41424344u * 37 + 0x45464748u) * 37 + 0x495A5A5Au);
}

TEST(LmKeyHash, OddityAWordOfZeroThatWouldWaitIsDropped) {
    const std::string zero(4, '\0');
    EXPECT_EQ(hash_of(zero + "ABCD"), hash_of("ABCD"));
    EXPECT_EQ(hash_of(zero + zero + zero + "ABC"), hash_of("ABC"));
    EXPECT_EQ(hash_of("ABCDEFGH" + zero), hash_of("ABCDEFGH"));
    EXPECT_EQ(hash_of("ABCD" + zero), hash_of("ABCD") * 37) << "behind a pending word it counts";
}

TEST(LmKeyHash, OddityABytesSignFillsTheBitsAboveIt) {
    EXPECT_EQ(hash_of("\x80"), 0x805A5A5Au);
    EXPECT_EQ(hash_of("A\x80"), 0xFF805A5Au | 0x41000000u);
    EXPECT_EQ(hash_of("AB\x80"), 0xFFFF805Au);
    EXPECT_EQ(hash_of("ABC\xF0"), 0xFFFFFFF0u);
    EXPECT_EQ(hash_of("ABC\xF0"), hash_of("XYZ\xF0")) << "so that what stands before it does not count";
    EXPECT_EQ(hash_of("AB\x80Q"), 0xFFFF8051u);
}

TEST(LmKeyHash, EightByteKeysThatDifferInASignDiverge) {
    EXPECT_NE(hash_of("ABCDEFGH") >> 8, hash_of("ABCDEFG\xC8") >> 8);
    EXPECT_EQ(hash_of("\xC1" "BCDEFGH"), 0xC1424344u * 37 + 0x45464748u);
    EXPECT_EQ(hash_of("ABCD\xC5" "FGH"), 0x41424344u * 37 + 0xC5464748u);
}

TEST(LmKeyHash, EveryOneAndTwoByteKeyAgainstTheRestatement) {
    for (int a = 0; a < 256; ++a) {
        const std::string one(1, static_cast<char>(a));
        ASSERT_EQ(hash_of(one), naive_key_hash(one)) << a;
        for (int b = 0; b < 256; ++b) {
            const std::string two = one + static_cast<char>(b);
            ASSERT_EQ(hash_of(two), naive_key_hash(two)) << a << ' ' << b;
        }
    }
}

// Keys of any length and alignment; a third of them of zeroes and bytes around the sign.
TEST(LmKeyHash, RandomKeysAgainstTheRestatement) {
    std::mt19937_64 random(82001);
    const char edges[] = {'\0', '\0', '\x7F', '\x80', '\xFF', 'Z'};
    for (int i = 0; i < 200000; ++i) {
        const std::size_t offset = random() % 8;
        std::string room(offset + random() % 41, '\0');
        const bool edgy = random() % 3 == 0;
        for (char &byte : room)
            byte = edgy ? edges[random() % sizeof edges] : static_cast<char>(random());
        const std::string_view key = std::string_view(room).substr(offset);
        ASSERT_EQ(hash_of(key), naive_key_hash(key)) << i;
        const CS_INT range = 2 + static_cast<CS_INT>(random() % (i % 2 == 0 ? 100 : 2147483645));
        const auto wide = static_cast<std::uint32_t>(range);
        ASSERT_EQ(static_cast<std::uint32_t>(slot_of(lm__api_key_to_hash, key, range)), naive_slot(key, wide));
        ASSERT_EQ(static_cast<std::uint32_t>(slot_of(lm__api_key_to_hash2, key, range)), naive_increment(key, wide));
    }
}

TEST(LmKeyHash, TheSlotIsTheValueTakenUnsigned) {
    EXPECT_EQ(slot_of(lm__api_key_to_hash, "\xFF\xFF\xFF\xFF", 1000), static_cast<CS_INT>(0xFFFFFFFFu % 1000));
    EXPECT_EQ(slot_of(lm__api_key_to_hash, "A", 1), 0);
    EXPECT_EQ(slot_of(lm__api_key_to_hash, "A", 2147483647), 0x415A5A5A);
}

TEST(LmKeyHash, TheSecondHashIsOneAtLeast) {
    EXPECT_EQ(slot_of(lm__api_key_to_hash2, "", 10), 1);
    EXPECT_EQ(slot_of(lm__api_key_to_hash2, "A", 2), 1) << "the only value of a range of 2";
    EXPECT_EQ(slot_of(lm__api_key_to_hash2, "A", 10), static_cast<CS_INT>(0x415A5A5Au * 7u % 9 + 1));
}

TEST(LmKeyHash, ARangeOfNoneStoresZeroAndFails) {
    for (const HashFunction function : {lm__api_key_to_hash, lm__api_key_to_hash2}) {
        for (const CS_INT range : {0, -1, static_cast<CS_INT>(-2147483647 - 1)}) {
            CS_INT slot = 55;
            EXPECT_EQ(function(text("A"), 1, range, &slot), CS_FAIL);
            EXPECT_EQ(slot, 0);
        }
    }
}

TEST(LmKeyHashDeathTest, TheSecondHashHasNoRangeOfOne) {
    CS_INT slot = 55;
    expect_broken(STEM, [&] { return lm__api_key_to_hash2(text("A"), 1, 1, &slot); });
    EXPECT_EQ(slot, 0);
}

TEST(LmKeyHashDeathTest, BrokenKeys) {
    CS_UINT hash = 55;
    CS_INT slot = 55;
    for (const CS_INT size : {-1, LM_NULLTERM, LM_UNUSED})
        expect_broken(STEM, [&] { return lm___api_key_to_uint(text("A"), size, &hash); });
    expect_broken(STEM, [&] { return lm___api_key_to_uint(nullptr, 1, &hash); });
    EXPECT_EQ(hash, 55u);
    expect_broken(STEM, [&] { return lm___api_key_to_uint(text("A"), 1, nullptr); });
    for (const HashFunction function : {lm__api_key_to_hash, lm__api_key_to_hash2}) {
        expect_broken(STEM, [&] { return function(nullptr, 1, 10, &slot); });
        expect_broken(STEM, [&] { return function(text("A"), 1, 10, nullptr); });
    }
    EXPECT_EQ(slot, 0);
}

} // namespace

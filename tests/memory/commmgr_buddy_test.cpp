// Buddy pools: header words to the bit, orders, splits, lazy merging, oversized blocks, realloc.
#include "support/assertions.h"
#include "support/child.h"
#include "support/pools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <random>

using namespace support;

namespace {

constexpr CS_UINT OVERSIZED = 0x80000000;
constexpr CS_UINT FREE = 0x40000000;

CS_UINT region_bits(const char *region) {
    return static_cast<CS_UINT>((reinterpret_cast<std::uintptr_t>(region) & 0x7FFFC) * 4);
}
// The first header of the region that a chunk of its own holds.
char *region_of(const MmHeap *chunk) {
    return reinterpret_cast<char *>(const_cast<MmHeap *>(chunk)) + CHUNK_RECORD + BLOCK_LINK;
}
char *newest_region(const SourcedPool &pool) { return region_of(pool->mmh_head->mph_heap); }

// The smallest order with room for the size and its header, and none below 1.
CS_INT naive_order(CS_INT size) {
    CS_INT order = 1;
    while ((16LL << order) < static_cast<long long>(size) + 8)
        ++order;
    return order;
}

// ---- Geometry -------------------------------------------------------------------------------------------------------

TEST(BuddyPoolTest, TheFirstAllocationRoundsTheBlockSizeUpToAPowerOfTwo) {
    const struct {
        CS_INT blocksize, bpmax, rewritten;
    } rows[] = {{1, -3, 10},         {2, -3, 10},       {3, -2, 12},        {16, 0, 24},         {17, 1, 40},
                {32, 1, 40},         {33, 2, 72},       {4095, 8, 4104},    {4096, 8, 4104},     {4097, 9, 8200},
                {65536, 12, 65544},  {524288, 15, 524296}};
    for (const auto &row : rows) {
        SourcedPool pool(MM_BUDDY, row.blocksize);
        ASSERT_NE(pool.allocate(1), nullptr);
        EXPECT_EQ(pool->mmh_pool.af.bpmax, row.bpmax) << row.blocksize;
        EXPECT_EQ(pool->mmh_blocksize, row.rewritten) << row.blocksize;
        for (CS_INT order = std::max(row.bpmax + 1, 0); order < MM_BUDDY_ORDERS; ++order)
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pool->mmh_pool.af.free[order]), UINTPTR_MAX);
    }
}

TEST(BuddyPoolTest, EverySizeTakesTheSmallestBlockOfOrderOneOrMore) {
    SourcedPool pool(MM_BUDDY, 65536, 1'000'000);
    for (CS_INT size = 0; size <= 65528; size += size < 5000 ? 1 : 97) {
        char *block = pool.allocate(size);
        ASSERT_NE(block, nullptr);
        ASSERT_EQ(header_word(block) & 0xF, static_cast<CS_UINT>(naive_order(size))) << size;
        ASSERT_EQ(header_word(block) & (FREE | OVERSIZED), 0U);
        std::memset(block, 0xEE, static_cast<std::size_t>(size));
        ASSERT_EQ(comn_mmfree(pool, block), CS_SUCCEED);
    }
    EXPECT_TRUE(pool.source.memory.is_intact());
}

TEST(BuddyPoolTest, BoundariesOfOrders) {
    SourcedPool pool;
    for (const auto &[size, order] : {std::pair{0, 1U}, {1, 1U}, {12, 1U}, {24, 1U}, {25, 2U}, {56, 2U}, {57, 3U},
                                      {2040, 7U}, {2041, 8U}, {4088, 8U}})
        EXPECT_EQ(header_word(pool.allocate(size)) & 0xF, order) << size;
    EXPECT_EQ(header_word(pool.allocate(4089)), 4089U | OVERSIZED);
}

TEST(BuddyPoolTest, SplitsServeTheLowerHalfFirst) {
    SourcedPool pool;
    char *first = pool.allocate(20);
    char *region = newest_region(pool);
    EXPECT_EQ(first, region + 8);
    EXPECT_EQ(header_word(first), 1U | region_bits(region));
    // What was split off stands in the upper halves, one of each order.
    for (CS_INT order = 1; order < 8; ++order) {
        const MmDList *upper = pool->mmh_pool.af.free[order];
        ASSERT_NE(upper, nullptr);
        EXPECT_EQ(reinterpret_cast<const char *>(upper), region + (16 << order));
        EXPECT_EQ(upper->size, static_cast<CS_UINT>(order) | region_bits(region) | FREE);
        EXPECT_EQ(upper->next, nullptr);
        EXPECT_EQ(upper->prev, nullptr);
    }
    EXPECT_EQ(pool->mmh_pool.af.free[0], nullptr) << "order 0 is never used";
    EXPECT_EQ(pool->mmh_pool.af.free[8], nullptr);
    EXPECT_EQ(pool.allocate(20), region + 32 + 8);
    EXPECT_EQ(pool.allocate(20), region + 64 + 8);
    EXPECT_EQ(pool.allocate(20), region + 96 + 8);
}

TEST(BuddyPoolTest, AFreeOnlyPushesAndTheLastFreedIsServedFirst) {
    SourcedPool pool;
    char *a = pool.allocate(20);
    char *b = pool.allocate(20);
    ASSERT_EQ(free_count(pool, 1), 0U);
    EXPECT_EQ(comn_mmfree(pool, a), CS_SUCCEED);
    EXPECT_EQ(comn_mmfree(pool, b), CS_SUCCEED);
    EXPECT_EQ(free_count(pool, 1), 2U) << "buddies, and not merged";
    EXPECT_EQ(header_word(a), 1U | FREE | region_bits(newest_region(pool)));
    EXPECT_EQ(pool.allocate(20), b);
    EXPECT_EQ(pool.allocate(20), a);
}

TEST(BuddyPoolTest, MergingDeliversABlockBeforeANewRegionIsTaken) {
    SourcedPool pool;
    std::vector<char *> blocks;
    for (int i = 0; i < 128; ++i)
        blocks.push_back(pool.allocate(20));
    ASSERT_EQ(pool.source.sizes.size(), 1U);
    std::shuffle(blocks.begin(), blocks.end(), std::mt19937_64(8103));
    for (char *block : blocks)
        ASSERT_EQ(comn_mmfree(pool, block), CS_SUCCEED);
    EXPECT_EQ(free_count(pool, 1), 128U);
    EXPECT_EQ(pool.allocate(4088), newest_region(pool) + 8);
    EXPECT_EQ(pool.source.sizes.size(), 1U);
    EXPECT_EQ(free_count(pool, 1), 0U);
}

TEST(BuddyPoolTest, OnlyAMergeIntoTheWantedOrderCounts) {
    SourcedPool pool(MM_BUDDY, 128);
    char *blocks[4];
    for (char *&block : blocks)
        block = pool.allocate(20);
    comn_mmfree(pool, blocks[0]);
    comn_mmfree(pool, blocks[1]);
    EXPECT_EQ(com___buddy_compact(pool, 3), CS_FAIL) << "the pair is one block of order 2 now, and its buddy is in use";
    EXPECT_EQ(free_count(pool, 1), 0U);
    EXPECT_EQ(free_count(pool, 2), 1U);
    EXPECT_EQ(com___buddy_compact(pool, 2), CS_FAIL) << "the flag is of this call's last order alone";
    comn_mmfree(pool, blocks[2]);
    comn_mmfree(pool, blocks[3]);
    EXPECT_EQ(com___buddy_compact(pool, 3), CS_SUCCEED);
    EXPECT_EQ(free_count(pool, 3), 1U);
    EXPECT_EQ(pool->mmh_pool.af.free[3]->size, 3U | FREE | region_bits(newest_region(pool)));
}

TEST(BuddyPoolTest, CompactionToOrderZeroFailsAtOnce) {
    SourcedPool pool;
    ASSERT_NE(pool.allocate(1), nullptr);
    EXPECT_EQ(com___buddy_compact(pool, 0), CS_FAIL);
}

TEST(BuddyPoolTest, AMergedBlockGoesToTheFrontAndItsListKeepsItsOrder) {
    SourcedPool pool(MM_BUDDY, 256);
    char *blocks[8];
    for (char *&block : blocks)
        block = pool.allocate(20);
    // Free list of order 1, front to back: 7 6 2 5 4; 4 and 5 merge, 6 and 7 merge, 2 stays.
    for (const int i : {4, 5, 2, 6, 7})
        comn_mmfree(pool, blocks[i]);
    EXPECT_EQ(com___buddy_compact(pool, 2), CS_SUCCEED);
    const MmDList *merged = pool->mmh_pool.af.free[2];
    EXPECT_EQ(reinterpret_cast<const char *>(merged), blocks[4] - 8);
    EXPECT_EQ(reinterpret_cast<const char *>(merged->next), blocks[6] - 8);
    EXPECT_EQ(merged->next->prev, merged);
    EXPECT_EQ(merged->next->next, nullptr);
    EXPECT_EQ(reinterpret_cast<const char *>(pool->mmh_pool.af.free[1]), blocks[2] - 8);
    EXPECT_EQ(pool->mmh_pool.af.free[1]->next, nullptr);
    EXPECT_EQ(pool->mmh_pool.af.free[1]->prev, nullptr);
}

TEST(BuddyPoolTest, SplitHasNothingToSplitInAnEmptyPool) {
    SourcedPool pool;
    ASSERT_NE(pool.allocate(4088), nullptr);
    for (CS_INT order = 0; order <= 8; ++order)
        EXPECT_EQ(com___buddy_split(pool, order), CS_FAIL);
}

TEST(BuddyPoolTest, RegionsAcrossEveryAddressBoundaryFindTheirBuddies) {
    // Regions at all offsets of 8 around the place where the address bits of a header wrap.
    constexpr std::uintptr_t WRAP = 0x80000;
    std::vector<char> memory(3 * WRAP);
    const auto base = reinterpret_cast<std::uintptr_t>(memory.data());
    char *boundary = memory.data() + ((base + WRAP) / WRAP * WRAP + WRAP - base);
    for (int back = 0; back < 2200; back += 8) {
        SourcedPool pool(MM_BUDDY, 1024);
        pool.source.refusal = {1, true};
        ASSERT_EQ(com___addheap(pool, boundary - back, 1032 + 8 + 32, MM_HEAP_CALLER), CS_SUCCEED);
        std::vector<char *> blocks;
        while (char *block = pool.allocate(20))
            blocks.push_back(block);
        ASSERT_EQ(blocks.size(), 32U);
        for (char *block : blocks)
            ASSERT_EQ(comn_mmfree(pool, block), CS_SUCCEED);
        ASSERT_NE(pool.allocate(1016), nullptr) << back;
    }
}

TEST(BuddyPoolTest, AnOversizedBlockCarriesItsSizeAndGoesBackToTheStore) {
    SourcedPool pool;
    char *block = pool.allocate(5001);
    EXPECT_EQ(header_word(block), 5001U | OVERSIZED);
    EXPECT_EQ(pool.source.sizes, std::vector<CS_INT>({5024 + 32})); // 5001 + header + link, rounded
    EXPECT_EQ(block_count(pool), 1U);
    EXPECT_EQ(comn_mmfree(pool, block), CS_SUCCEED);
    EXPECT_EQ(pool->mmh_blocks, nullptr);
    EXPECT_EQ(pool.source.returned, 1);
}

TEST(BuddyPoolTest, OddityEachFailedFirstAllocationDoublesTheBlockSize) {
    SourcedPool pool;
    pool.source.refusal = {1, true};
    for (const CS_INT expected : {4104, 8200, 16392}) {
        EXPECT_EQ(pool.allocate(10), nullptr);
        EXPECT_EQ(pool->mmh_blocksize, expected);
    }
    pool.source.refusal = {};
    EXPECT_NE(pool.allocate(10), nullptr);
    EXPECT_EQ(pool->mmh_pool.af.bpmax, 11);
}

TEST(BuddyPoolTest, AnOversizedFirstAllocationMakesThePoolLive) {
    SourcedPool pool;
    ASSERT_NE(pool.allocate(10'000), nullptr);
    EXPECT_EQ(pool->mmh_blocksize, 4104);
    ASSERT_NE(pool.allocate(10), nullptr);
    EXPECT_EQ(pool->mmh_blocksize, 4104);
}

// ---- Realloc --------------------------------------------------------------------------------------------------------

TEST(BuddyPoolTest, OddityReallocTakesTheHeaderForCapacity) {
    SourcedPool pool;
    CS_VOID *block = pool.allocate(100); // order 3: 128 bytes, 120 of them the caller's
    CS_VOID *const before = block;
    for (const CS_INT size : {0, 1, 100, 120, 121, 128}) {
        EXPECT_EQ(comn_mmrealloc(pool, size, &block), CS_SUCCEED);
        EXPECT_EQ(block, before) << size;
    }
    EXPECT_EQ(comn_mmrealloc(pool, 129, &block), CS_SUCCEED);
    EXPECT_NE(block, before);
    EXPECT_EQ(header_word(before) & FREE, FREE);
}

TEST(BuddyPoolTest, OddityAMoveCopiesTheNextBlocksHeaderToo) {
    SourcedPool pool;
    char *block = pool.allocate(20);
    char *next = pool.allocate(20);
    ASSERT_EQ(next, block + 32);
    for (int i = 0; i < 24; ++i)
        block[i] = static_cast<char>(i);
    std::memcpy(next - 4, "\x99\x99\x99\x99", 4); // padding of the header
    CS_VOID *moved = block;
    ASSERT_EQ(comn_mmrealloc(pool, 200, &moved), CS_SUCCEED);
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(static_cast<char *>(moved)[i], i);
    EXPECT_EQ(word_at(static_cast<char *>(moved) + 24), header_word(next));
    EXPECT_EQ(word_at(static_cast<char *>(moved) + 28), 0x99999999U);
}

TEST(BuddyPoolTest, ReallocOfTheLastBlockStaysInsideItsRegion) {
    SourcedPool pool;
    CS_VOID *whole = pool.allocate(4088);
    std::memset(whole, 7, 4088);
    ASSERT_EQ(comn_mmrealloc(pool, 4097, &whole), CS_SUCCEED);
    EXPECT_EQ(header_word(whole), 4097U | OVERSIZED);
    EXPECT_EQ(static_cast<char *>(whole)[4087], 7);
    EXPECT_TRUE(pool.source.memory.is_intact());
}

TEST(BuddyPoolTest, ReallocOfAnOversizedBlock) {
    SourcedPool pool;
    CS_VOID *block = pool.allocate(6000);
    CS_VOID *const before = block;
    std::memset(block, 9, 6000);
    EXPECT_EQ(comn_mmrealloc(pool, 6000, &block), CS_SUCCEED);
    EXPECT_EQ(comn_mmrealloc(pool, 10, &block), CS_SUCCEED);
    EXPECT_EQ(block, before);
    EXPECT_EQ(header_word(block), 6000U | OVERSIZED) << "it does not shrink";
    EXPECT_EQ(comn_mmrealloc(pool, 6001, &block), CS_SUCCEED);
    EXPECT_NE(block, before);
    EXPECT_EQ(header_word(block), 6001U | OVERSIZED);
    EXPECT_EQ(std::count(static_cast<char *>(block), static_cast<char *>(block) + 6000, 9), 6000);
    EXPECT_EQ(pool.source.returned, 1);
}

TEST(BuddyPoolTest, AFailedReallocKeepsTheBlock) {
    SourcedPool pool;
    CS_VOID *block = pool.allocate(20);
    CS_VOID *const before = block;
    pool.source.refusal = {1, true};
    for (const CS_INT size : {5000, INT32_MAX}) {
        EXPECT_EQ(comn_mmrealloc(pool, size, &block), CS_MEM_ERROR);
        EXPECT_EQ(block, before);
        EXPECT_EQ(header_word(block) & FREE, 0U);
    }
}

// ---- Broken contracts -------------------------------------------------------------------------------------------

TEST(BuddyPoolDeathTest, FreeingTwice) {
    alignas(8) char lent[20'000];
    SourcedPool pool;
    com___addheap(pool, lent, sizeof lent, MM_HEAP_CALLER);
    char *small = pool.allocate(20);
    char *large = pool.allocate(8'000);
    comn_mmfree(pool, small);
    comn_mmfree(pool, large);
    EXPECT_BOMB(comn_mmfree(pool, small), "commmgr_buddy");
    EXPECT_BOMB(comn_mmfree(pool, large), "commmgr_buddy");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_mmfree(pool, small), CS_FAIL);
    EXPECT_EQ(comn_mmfree(pool, large), CS_FAIL);
    EXPECT_EQ(returning.count(), 2);
    EXPECT_EQ(free_count(pool, 1), 2U);
    EXPECT_TRUE(is_store_sound(pool));
}

TEST(BuddyPoolDeathTest, AnOversizedBlockWhoseChunkIsGone) {
    SourcedPool pool;
    ASSERT_NE(pool.allocate(20), nullptr);
    char *large = pool.allocate(8'000);
    comn_mmfree(pool, large);
    EXPECT_BOMB(comn_mmfree(pool, large), "commmgr");
}

TEST(BuddyPoolDeathTest, AnOversizedBlockOfAnotherHandle) {
    SourcedPool pool;
    ASSERT_NE(pool.allocate(20), nullptr);
    MM_HANDLE *child = pool;
    ASSERT_EQ(com___subpool(pool, 1, &child), CS_SUCCEED);
    CS_VOID *large = nullptr;
    ASSERT_EQ(comn_mmalloc(child, 9'000, &large), CS_SUCCEED);
    EXPECT_BOMB(comn_mmfree(pool, large), "commmgr_store");
    {
        const ReturningAssertions returning;
        EXPECT_EQ(comn_mmfree(pool, large), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
    }
    EXPECT_EQ(header_word(large), 9'000U | OVERSIZED);
    EXPECT_EQ(comn_mmfree(child, large), CS_SUCCEED);
}

TEST(BuddyPoolDeathTest, AnOrderAboveThePools) {
    SourcedPool pool(MM_BUDDY, 256);
    char *block = pool.allocate(20);
    block[-8] = static_cast<char>(block[-8] | 0xF);
    EXPECT_BOMB(comn_mmfree(pool, block), "commmgr_buddy");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_mmfree(pool, block), CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
    EXPECT_EQ(header_word(block) & FREE, 0U);
}

TEST(BuddyPoolDeathTest, ABrokenPair) {
    SourcedPool pool(MM_BUDDY, 64);
    char *lower = pool.allocate(20);
    char *upper = pool.allocate(20);
    comn_mmfree(pool, lower);
    const CS_UINT good = header_word(upper);
    for (const CS_UINT bad : {good ^ 0x10U, good ^ 0x20000000U, good + 1}) {
        std::memcpy(upper - 8, &bad, sizeof bad);
        EXPECT_BOMB(com___buddy_compact(pool, 2), "commmgr_buddy");
        const ReturningAssertions returning;
        EXPECT_EQ(com___buddy_compact(pool, 2), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(free_count(pool, 1), 1U);
    }
}

TEST(BuddyPoolDeathTest, Arguments) {
    SourcedPool pool;
    SourcedPool untouched;
    SourcedPool uniform(MM_UNIFORM);
    CS_VOID *result = nullptr;
    char *block = pool.allocate(20);
    char *node = uniform.allocate(20);
    CS_VOID *present = block;
    const struct {
        bool is_null;
        std::function<CS_RETCODE()> run;
    } misuses[] = {
        {true, [&] { return com___buddy_malloc(nullptr, 1, &result); }},
        {true, [&] { return com___buddy_malloc(pool, 1, nullptr); }},
        {false, [&] { return com___buddy_malloc(pool, -1, &result); }},
        {true, [&] { return com___buddy_free(nullptr, block); }},
        {true, [&] { return com___buddy_free(pool, nullptr); }},
        {false, [&] { return com___buddy_free(untouched, block); }},
        {false, [&] { return com___buddy_free(uniform, node); }},
        {true, [&] { return com___buddy_realloc(nullptr, 1, &present); }},
        {true, [&] { return com___buddy_realloc(pool, 1, nullptr); }},
        {true, [&] { return com___buddy_realloc(pool, 1, &result); }},
        {false, [&] { return com___buddy_realloc(untouched, 1, &present); }},
        {true, [&] { return com___buddy_split(nullptr, 1); }},
        {false, [&] { return com___buddy_split(pool, -1); }},
        {false, [&] { return com___buddy_split(pool, 9); }},
        {false, [&] { return com___buddy_split(pool, 3); }}, // its list is not empty
        {true, [&] { return com___buddy_compact(nullptr, 1); }},
        {false, [&] { return com___buddy_compact(pool, 9); }},
    };
    int reports = 0;
    for (const auto &misuse : misuses) {
        if (misuse.is_null)
            EXPECT_NULL_REPORT(misuse.run(), "commmgr_buddy");
        else
            EXPECT_BOMB(misuse.run(), "commmgr_buddy");
        const ReturningAssertions returning;
        EXPECT_EQ(misuse.run(), CS_FAIL) << reports;
        EXPECT_EQ(returning.count(), 1) << reports;
        ++reports;
    }
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(present, block);
}

// ---- The order that does not fit --------------------------------------------------------------------------------

TEST(BuddyPoolTest, OddityOrderSixteenOverlapsTheAddressBits) {
    const Ending ending = in_child([](int notes) {
        SourcedPool pool(MM_BUDDY, 524289);
        char *small = pool.allocate(20);
        if (pool->mmh_pool.af.bpmax != 16 || pool->mmh_blocksize != (1 << 20) + 8)
            _exit(1);
        // The 16 stands on the lowest address bit: the region seems to begin four bytes late.
        if (header_word(small) != (1U | region_bits(newest_region(pool)) | 16U))
            _exit(2);
        // A block of the full order reads as one of order 0. It holds what it should, but a realloc believes in
        // 16 bytes and moves no more than those.
        SourcedPool second(MM_BUDDY, 524289);
        CS_VOID *large = second.allocate(1'000'000);
        if ((header_word(large) & 0xF) != 0)
            _exit(3);
        std::memset(large, 5, 1'000'000);
        CS_VOID *moved = large;
        if (comn_mmrealloc(second, 17, &moved) != CS_SUCCEED || moved == large)
            _exit(4);
        if (static_cast<char *>(moved)[15] != 5 || static_cast<char *>(moved)[16] == 5)
            _exit(5);
        // Freed, it went on the list of order 0: its region serves nothing large any more.
        if (second->mmh_pool.af.free[0] == nullptr || second.source.sizes.size() != 2)
            _exit(6);
        note(notes, "so far");
        // Merging pairs the wrong neighbours, and finds that their headers do not agree.
        second.allocate(1'000'000);
        second.allocate(1'000'000);
        second.allocate(1'000'000);
        _exit(7);
    });
    EXPECT_EQ(ending.notes, "so far") << ending.status;
    EXPECT_TRUE(ending.killed(SIGABRT)) << ending.status;
    EXPECT_NE(ending.err.find("assertion failed, file 'generic/src/commmgr_buddy.cpp'"), std::string::npos);
}

} // namespace

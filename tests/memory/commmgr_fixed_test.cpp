// Uniform and alloc-only pools.
#include "support/assertions.h"
#include "support/pools.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

using namespace support;

namespace {

CS_INT round_8(CS_INT size) { return (size + 7) / 8 * 8; }

// ---- Uniform -------------------------------------------------------------------------------------------------------

TEST(UniformPoolTest, TheFirstAllocationSettlesTheGeometry) {
    for (const CS_INT blocksize : {1, 8, 100, 1000, 4096}) {
        for (CS_INT size = 1; size < 300; ++size) {
            SourcedPool pool(MM_UNIFORM, blocksize);
            char *node = pool.allocate(size);
            ASSERT_NE(node, nullptr);
            const CS_INT step = round_8(size) + 8;
            EXPECT_EQ(pool->mmh_pool.u.uniform_size, size);
            EXPECT_EQ(pool->mmh_pool.u.node_size, step);
            EXPECT_EQ(pool->mmh_blocksize, blocksize < step ? step : blocksize / step * step);
            EXPECT_EQ(header_word(node), static_cast<CS_UINT>(step));
            EXPECT_EQ(length_of(pool->mmh_pool.u.free, &MmList::link),
                      static_cast<std::size_t>(pool->mmh_blocksize / step - 1));
            EXPECT_TRUE(pool.source.memory.is_intact());
        }
    }
}

TEST(UniformPoolTest, NodesFollowEachOtherThroughTheBlock) {
    SourcedPool pool(MM_UNIFORM, 1000);
    char *first = pool.allocate(40);
    EXPECT_EQ(first, reinterpret_cast<char *>(pool.head()->mph_heap) + CHUNK_RECORD + BLOCK_LINK + 8);
    for (int i = 1; i < 20; ++i) {
        char *node = pool.allocate(40);
        EXPECT_EQ(node, first + i * 48);
        EXPECT_EQ(header_word(node), 48U);
    }
    EXPECT_EQ(pool->mmh_pool.u.free, nullptr);
    EXPECT_EQ(block_count(pool), 1U);
    ASSERT_NE(pool.allocate(40), nullptr);
    EXPECT_EQ(block_count(pool), 2U);
}

TEST(UniformPoolTest, AnotherSizeFails) {
    SourcedPool pool(MM_UNIFORM);
    ASSERT_NE(pool.allocate(40), nullptr);
    CS_VOID *result = nullptr;
    for (const CS_INT size : {0, 39, 41, 48, INT32_MAX}) {
        EXPECT_EQ(comn_mmalloc(pool, size, &result), CS_FAIL);
        EXPECT_EQ(result, nullptr);
    }
    EXPECT_NE(pool.allocate(40), nullptr);
}

TEST(UniformPoolTest, OddityARefillForASizeThatIsNoMultipleOfEightThreadsOneNodeMore) {
    for (CS_INT size = 1; size <= 64; ++size) {
        SourcedPool pool(MM_UNIFORM, 1000);
        const CS_INT nodes = 1000 / (round_8(size) + 8);
        for (CS_INT i = 0; i < nodes; ++i)
            ASSERT_NE(pool.allocate(size), nullptr);
        ASSERT_EQ(pool->mmh_pool.u.free, nullptr) << "the first block holds just what fits";
        for (int refill = 0; refill < 3; ++refill) {
            std::memset(pool.allocate(size), 1, static_cast<std::size_t>(size));
            const CS_INT left = nodes - 1 + (size % 8 != 0 ? 1 : 0);
            ASSERT_EQ(length_of(pool->mmh_pool.u.free, &MmList::link), static_cast<std::size_t>(left)) << size;
            for (CS_INT i = 0; i < left; ++i)
                std::memset(pool.allocate(size), 1, static_cast<std::size_t>(size));
            ASSERT_EQ(pool->mmh_pool.u.free, nullptr);
        }
        EXPECT_TRUE(is_store_sound(pool)) << "the node more has room of its own";
        EXPECT_TRUE(pool.source.memory.is_intact());
    }
}

TEST(UniformPoolTest, AFreedNodeIsTheNextOneServedAndNeverLeaves) {
    SourcedPool pool(MM_UNIFORM);
    char *a = pool.allocate(40);
    char *b = pool.allocate(40);
    EXPECT_EQ(comn_mmfree(pool, a), CS_SUCCEED);
    EXPECT_EQ(comn_mmfree(pool, b), CS_SUCCEED);
    EXPECT_EQ(pool.source.returned, 0);
    EXPECT_EQ(pool.allocate(40), b);
    EXPECT_EQ(pool.allocate(40), a);
}

TEST(UniformPoolTest, AFailedRefillLeavesThePoolUsable) {
    SourcedPool pool(MM_UNIFORM, 500);
    pool.source.refusal = {1, false};
    CS_VOID *result = nullptr;
    EXPECT_EQ(comn_mmalloc(pool, 40, &result), CS_MEM_ERROR);
    EXPECT_NE(pool.allocate(56), nullptr) << "the first success settles the size";
    EXPECT_EQ(pool->mmh_pool.u.uniform_size, 56);
    pool.source.refusal = {3, false};
    int served = 0;
    while (comn_mmalloc(pool, 56, &result) == CS_SUCCEED)
        ++served;
    EXPECT_GT(served, 10);
    EXPECT_EQ(comn_mmalloc(pool, 56, &result), CS_SUCCEED);
}

TEST(UniformPoolDeathTest, BrokenContracts) {
    SourcedPool pool(MM_UNIFORM);
    SourcedPool buddy;
    SourcedPool untouched(MM_UNIFORM);
    CS_VOID *result = nullptr;
    char *node = pool.allocate(40);
    char *block = buddy.allocate(40);
    EXPECT_NULL_REPORT(com___uniform_malloc(nullptr, 1, &result), "commmgr_fixed");
    EXPECT_NULL_REPORT(com___uniform_malloc(pool, 1, nullptr), "commmgr_fixed");
    EXPECT_BOMB(com___uniform_malloc(pool, -1, &result), "commmgr_fixed");
    EXPECT_NULL_REPORT(com___uniform_free(nullptr, node), "commmgr_fixed");
    EXPECT_NULL_REPORT(com___uniform_free(pool, nullptr), "commmgr_fixed");
    EXPECT_BOMB(com___uniform_free(untouched, node), "commmgr_fixed");
    EXPECT_BOMB(com___uniform_free(buddy, block), "commmgr_fixed");
    const ReturningAssertions returning;
    const MmList *before = pool->mmh_pool.u.free;
    EXPECT_EQ(com___uniform_malloc(nullptr, 1, &result), CS_FAIL);
    EXPECT_EQ(com___uniform_malloc(pool, 1, nullptr), CS_FAIL);
    EXPECT_EQ(com___uniform_malloc(pool, -1, &result), CS_FAIL);
    EXPECT_EQ(com___uniform_free(nullptr, node), CS_FAIL);
    EXPECT_EQ(com___uniform_free(pool, nullptr), CS_FAIL);
    EXPECT_EQ(com___uniform_free(untouched, node), CS_FAIL);
    EXPECT_EQ(com___uniform_free(buddy, block), CS_FAIL);
    EXPECT_EQ(returning.count(), 7);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(pool->mmh_pool.u.free, before);
}

// ---- Alloc-only ----------------------------------------------------------------------------------------------------

TEST(AllocOnlyPoolTest, AnAreaIsLaidOutInItsBlock) {
    SourcedPool pool(MM_ALLOCONLY, 1000);
    char *first = pool.allocate(20);
    const MmHeap *area = pool->mmh_pool.a.free;
    const char *at = reinterpret_cast<const char *>(area);
    EXPECT_EQ(at, reinterpret_cast<char *>(pool.head()->mph_heap) + CHUNK_RECORD + BLOCK_LINK);
    EXPECT_EQ(area->size, 1000);
    EXPECT_EQ(area->next, nullptr);
    EXPECT_EQ(reinterpret_cast<const char *>(area->free), at + 24);
    EXPECT_EQ(first, at + 40);
    EXPECT_EQ(area->free->size, 1000U - 40 - 24);
    EXPECT_EQ(reinterpret_cast<char *>(area->free->link), first + 24);
    EXPECT_EQ(pool.allocate(1), first + 24);
    EXPECT_EQ(pool.allocate(8), first + 32);
    EXPECT_EQ(pool.allocate(0), first + 40);
    EXPECT_EQ(pool.allocate(9), first + 40);
    EXPECT_EQ(pool->mmh_blocksize, 1000) << "this kind rewrites nothing";
}

TEST(AllocOnlyPoolTest, ALargeRequestGetsAnAreaOfItsOwn) {
    SourcedPool pool(MM_ALLOCONLY, 1000);
    ASSERT_NE(pool.allocate(960), nullptr);
    EXPECT_EQ(pool->mmh_pool.a.free->size, 1000);
    EXPECT_EQ(pool->mmh_pool.a.free->free->size, 0U);
    ASSERT_NE(pool.allocate(961), nullptr);
    EXPECT_EQ(pool->mmh_pool.a.free->size, 968 + 40);
    EXPECT_EQ(pool->mmh_pool.a.free->free->size, 0U);
}

TEST(AllocOnlyPoolTest, AreasAreSearchedFromTheNewest) {
    std::mt19937_64 random(8102);
    struct Area {
        char *next;
        CS_INT left;
    };
    for (const CS_INT blocksize : {41, 500, 1001, 4096}) {
        SourcedPool pool(MM_ALLOCONLY, blocksize, 3000);
        std::vector<Area> areas; // oldest first
        for (int i = 0; i < 5000; ++i) {
            const CS_INT size = static_cast<CS_INT>(random() % (random() % 20 == 0 ? 2000 : 1 + random() % 90));
            const CS_INT r = round_8(size);
            auto area = areas.rbegin();
            while (area != areas.rend() && area->left < r)
                ++area;
            char *block = pool.allocate(size);
            ASSERT_NE(block, nullptr);
            if (area == areas.rend()) {
                ASSERT_EQ(block, reinterpret_cast<char *>(pool->mmh_pool.a.free) + 40);
                areas.push_back({block + r, std::max(r + 40, blocksize) - 40 - r});
            } else {
                ASSERT_EQ(block, area->next);
                area->next += r;
                area->left -= r;
            }
            std::memset(block, 0xAB, static_cast<std::size_t>(size));
            ASSERT_EQ(block_count(pool), areas.size());
        }
        EXPECT_TRUE(pool.source.memory.is_intact());
        EXPECT_TRUE(is_store_sound(pool));
    }
}

TEST(AllocOnlyPoolTest, AFailedAreaLeavesTheOldOnes) {
    SourcedPool pool(MM_ALLOCONLY, 500, 540);
    char *first = pool.allocate(100);
    pool.source.refusal = {1, true};
    CS_VOID *result = nullptr;
    EXPECT_EQ(comn_mmalloc(pool, 400, &result), CS_MEM_ERROR);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(pool.allocate(100), first + 104);
}

TEST(AllocOnlyPoolDeathTest, BrokenContracts) {
    SourcedPool pool(MM_ALLOCONLY);
    CS_VOID *result = nullptr;
    EXPECT_NULL_REPORT(com___alloconly_malloc(nullptr, 1, &result), "commmgr_fixed");
    EXPECT_NULL_REPORT(com___alloconly_malloc(pool, 1, nullptr), "commmgr_fixed");
    EXPECT_BOMB(com___alloconly_malloc(pool, -1, &result), "commmgr_fixed");
    const ReturningAssertions returning;
    EXPECT_EQ(com___alloconly_malloc(nullptr, 1, &result), CS_FAIL);
    EXPECT_EQ(com___alloconly_malloc(pool, 1, nullptr), CS_FAIL);
    EXPECT_EQ(com___alloconly_malloc(pool, -1, &result), CS_FAIL);
    EXPECT_EQ(returning.count(), 3);
    EXPECT_EQ(result, nullptr);
}

} // namespace

// The store: the layout of chunks, first fit, splitting and merging of blocks, what goes back to the source.
#include "support/assertions.h"
#include "support/pools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <utility>

using namespace support;

namespace {

char *get(MM_HANDLE *mmh, CS_INT size) {
    CS_VOID *memory = nullptr;
    return com___getheap(mmh, size, &memory) == CS_SUCCEED ? static_cast<char *>(memory) : nullptr;
}

char *first_payload(const MmHeap *chunk) {
    return reinterpret_cast<char *>(const_cast<MmHeap *>(chunk)) + CHUNK_RECORD;
}

// The payload sizes of the free blocks of the newest chunk.
std::vector<CS_UINT> free_sizes(const MM_HANDLE *mmh) {
    std::vector<CS_UINT> sizes;
    for (const MmList *block = mmh->mmh_head->mph_heap->free; block != nullptr; block = block->link)
        sizes.push_back(block->size);
    return sizes;
}

TEST(PoolStoreTest, RecordsLieAsTheyAlwaysHave) {
    EXPECT_EQ(offsetof(MmHeap, size), 0U);
    EXPECT_EQ(offsetof(MmHeap, status), 4U);
    EXPECT_EQ(offsetof(MmHeap, next), 8U);
    EXPECT_EQ(offsetof(MmHeap, free), 16U);
    EXPECT_EQ(offsetof(MmHeap, buffer), 24U);
    EXPECT_EQ(offsetof(MmList, size), 0U);
    EXPECT_EQ(offsetof(MmList, link), 8U);
    EXPECT_EQ(offsetof(MmBlock, next), 0U);
    EXPECT_EQ(offsetof(MmDList, size), 0U);
    EXPECT_EQ(offsetof(MmDList, next), 8U);
    EXPECT_EQ(offsetof(MmDList, prev), 16U);
}

TEST(PoolStoreTest, AChunkBeginsWithItsRecordAndOneFreeBlock) {
    alignas(8) char memory[200];
    SourcedPool pool;
    std::memset(memory, 0x11, sizeof memory);
    ASSERT_EQ(com___addheap(pool, memory, 200, MM_HEAP_SBREAK), CS_SUCCEED);
    const CS_INT begin[2] = {200, 1};
    EXPECT_EQ(std::memcmp(memory, begin, sizeof begin), 0);
    EXPECT_TRUE(is_zero(memory + 8, 8)) << "no next chunk";
    const char *free = memory + 24;
    EXPECT_EQ(std::memcmp(memory + 16, &free, sizeof free), 0);
    EXPECT_EQ(word_at(memory + 24), 168U);
    EXPECT_TRUE(is_zero(memory + 32, 8)) << "no next block";
    EXPECT_EQ(word_at(memory + 40), 0x11111111U) << "nothing else is written";
    EXPECT_EQ(pool.head()->mph_totalsize, 200);
    pool.head()->mph_heap = nullptr; // it did not come from the source
}

TEST(PoolStoreTest, ChunksStandNewestFirst) {
    alignas(8) char memory[3][96];
    SourcedPool pool;
    for (char *chunk : {memory[0], memory[1], memory[2]})
        ASSERT_EQ(com___addheap(pool, chunk, 96, MM_HEAP_CALLER), CS_SUCCEED);
    const MmHeap *chunk = pool.head()->mph_heap;
    for (const char *expected : {memory[2], memory[1], memory[0]}) {
        EXPECT_EQ(reinterpret_cast<const char *>(chunk), expected);
        chunk = chunk->next;
    }
    EXPECT_EQ(chunk, nullptr);
    EXPECT_EQ(pool.head()->mph_totalsize, 288);
}

TEST(PoolStoreTest, LentMemoryOfAnyLengthAndAlignmentIsUsedToItsLastWholeWord) {
    for (std::size_t shift = 0; shift < 8; ++shift) {
        for (CS_INT length = 17; length < 160; ++length) {
            GuardedMemory guarded;
            SourcedPool pool;
            pool.source.refusal = {1, true};
            char *memory = guarded.obtain(static_cast<CS_UINT>(length), shift);
            const CS_INT skipped = static_cast<CS_INT>(-reinterpret_cast<std::uintptr_t>(memory) & 7);
            const CS_INT usable = (length - skipped) & ~7;
            const CS_RETCODE status = comn_mmproperty(pool, MM_SET, MM_PROP_ADDHEAP, memory, length, nullptr);
            ASSERT_EQ(status, usable < 40 ? CS_FAIL : CS_SUCCEED) << length << " at " << shift;
            EXPECT_EQ(pool.head()->mph_totalsize, usable < 40 ? 0 : length);
            if (usable >= 40) {
                char *block = get(pool, usable - CHUNK_RECORD);
                ASSERT_NE(block, nullptr);
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 8, 0U);
                std::memset(block, 1, static_cast<std::size_t>(usable - CHUNK_RECORD));
                EXPECT_EQ(get(pool, 1), nullptr);
            }
            ASSERT_TRUE(guarded.is_intact()) << length << " at " << shift;
        }
    }
}

TEST(PoolStoreTest, ChunkSizesThatAreNoMultipleOfEightServeEveryRequest) {
    for (CS_INT chunksize = 1; chunksize < 200; ++chunksize) {
        SourcedPool pool(MM_BUDDY, 4096, chunksize);
        for (CS_INT size = 0; size < 180; size += 7) {
            char *block = get(pool, size);
            ASSERT_NE(block, nullptr);
            std::memset(block, 0x77, static_cast<std::size_t>(size));
        }
        EXPECT_TRUE(pool.source.memory.is_intact());
        EXPECT_TRUE(is_store_sound(pool));
    }
}

TEST(PoolStoreTest, ARequestIsRoundedAndSplitFromTheFront) {
    SourcedPool pool(MM_BUDDY, 4096, 4136);
    char *first = get(pool, 1);
    const MmHeap *chunk = pool.head()->mph_heap;
    EXPECT_EQ(first, first_payload(chunk));
    EXPECT_EQ(header_word(first), 8U);
    EXPECT_EQ(free_sizes(pool), std::vector<CS_UINT>({4136 - 32 - 16}));
    char *second = get(pool, 9);
    EXPECT_EQ(second, first + 8 + 8);
    EXPECT_EQ(header_word(second), 16U);
    char *third = get(pool, 16);
    EXPECT_EQ(third, second + 16 + 8);
    EXPECT_EQ(header_word(third), 16U);
    EXPECT_EQ(free_sizes(pool), std::vector<CS_UINT>({4136 - 32 - 16 - 24 - 24}));
}

TEST(PoolStoreTest, ABlockWithoutRoomForARemainderIsHandedOutWhole) {
    for (const CS_INT left : {0, 8, 16, 24}) {
        SourcedPool pool(MM_BUDDY, 4096, 32 + 100 / 8 * 8 + left);
        char *block = get(pool, 96);
        const CS_UINT handed = left == 8 ? 104 : 96;
        EXPECT_EQ(header_word(block), handed);
        EXPECT_EQ(free_sizes(pool),
                  left < 16 ? std::vector<CS_UINT>() : std::vector<CS_UINT>({static_cast<CS_UINT>(left - 8)}));
        EXPECT_EQ(com___putheap(pool, block), CS_SUCCEED);
        EXPECT_EQ(pool.source.memory.count(), 0U) << "whole again, so it went back";
    }
}

TEST(PoolStoreTest, FirstFitFollowsChunksThenAddresses) {
    alignas(8) char lent[100];
    SourcedPool pool(MM_BUDDY, 4096, 1000);
    char *a = get(pool, 200);
    char *b = get(pool, 8);
    char *c = get(pool, 100);
    get(pool, 8);
    EXPECT_EQ(c, b + 8 + 8);
    com___putheap(pool, a);
    com___putheap(pool, c);
    EXPECT_EQ(get(pool, 64), a) << "the lowest that is large enough, not the best";
    EXPECT_EQ(get(pool, 150), c + 104 + 8 + 8 + 8) << "behind all blocks";
    EXPECT_EQ(get(pool, 104), a + 64 + 8);
    // A newer chunk is searched first.
    get(pool, 5000);
    const MmHeap *newest = pool.head()->mph_heap;
    EXPECT_EQ(newest->size, 5032);
    ASSERT_EQ(com___addheap(pool, lent, 100, MM_HEAP_CALLER), CS_SUCCEED);
    EXPECT_EQ(get(pool, 8), lent + CHUNK_RECORD);
}

TEST(PoolStoreTest, TheSourceIsAskedForTheRequestWithItsHeadersOrForAChunk) {
    SourcedPool pool(MM_BUDDY, 4096, 1000);
    for (const CS_INT size : {1, 968, 969, 5000, 960})
        ASSERT_NE(get(pool, size), nullptr);
    EXPECT_EQ(pool.source.sizes, std::vector<CS_INT>({1000, 1000, 1008, 5032, 1000}));
}

TEST(PoolStoreTest, FreedNeighboursMergeInEveryOrder) {
    std::vector<int> order = {0, 1, 2, 3, 4};
    do {
        SourcedPool pool(MM_BUDDY, 4096, 32 + 5 * 48 - 8);
        char *blocks[5];
        for (char *&block : blocks)
            block = get(pool, 40);
        ASSERT_EQ(pool.source.sizes.size(), 1U);
        bool is_free[5] = {};
        for (int step = 0; step < 4; ++step) {
            ASSERT_EQ(com___putheap(pool, blocks[order[step]]), CS_SUCCEED);
            is_free[order[step]] = true;
            std::vector<CS_UINT> expected;
            for (int i = 0; i < 5; ++i) {
                if (!is_free[i])
                    continue;
                if (i > 0 && is_free[i - 1])
                    expected.back() += 48;
                else
                    expected.push_back(40);
            }
            EXPECT_EQ(free_sizes(pool), expected);
            EXPECT_TRUE(is_store_sound(pool));
        }
        ASSERT_EQ(com___putheap(pool, blocks[order[4]]), CS_SUCCEED);
        EXPECT_EQ(pool.source.returned, 1);
        EXPECT_EQ(pool.head()->mph_heap, nullptr);
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(PoolStoreTest, AChunkGoesBackWithItsLastBlockFromAnyPlaceOfTheList) {
    for (int which = 0; which < 3; ++which) {
        SourcedPool pool(MM_BUDDY, 4096, 100);
        char *blocks[3];
        for (char *&block : blocks)
            block = get(pool, 500);
        EXPECT_EQ(com___putheap(pool, blocks[which]), CS_SUCCEED);
        EXPECT_EQ(pool.source.returned, 1);
        EXPECT_EQ(pool.source.bad_returns, 0);
        EXPECT_EQ(chunk_count(pool), 2U);
        EXPECT_EQ(pool.head()->mph_totalsize, 3 * 536);
    }
}

TEST(PoolStoreTest, ALentChunkNeverGoesBack) {
    alignas(8) char lent[400];
    SourcedPool pool;
    com___addheap(pool, lent, sizeof lent, MM_HEAP_CALLER);
    EXPECT_EQ(com___putheap(pool, get(pool, 100)), CS_SUCCEED);
    EXPECT_EQ(pool.source.returned, 0);
    EXPECT_EQ(chunk_count(pool), 1U);
}

TEST(PoolStoreTest, AChunkStaysWhereTheSourceDoesNotTakeIt) {
    SourcedPool pool;
    char *block = get(pool, 100);
    pool.source.unsbreak_status = CS_FAIL;
    EXPECT_EQ(com___putheap(pool, block), CS_SUCCEED);
    EXPECT_EQ(chunk_count(pool), 1U);
    EXPECT_EQ(get(pool, 100), block);
    pool.head()->mph_unsbreak = nullptr;
    EXPECT_EQ(com___putheap(pool, block), CS_SUCCEED);
    EXPECT_EQ(get(pool, 100), block) << "without a function it stays too";
    pool.head()->mph_unsbreak = ChunkSource::give_back;
    pool.source.unsbreak_status = CS_SUCCEED;
}

TEST(PoolStoreTest, SbreakHasItsThreeRefusals) {
    SourcedPool pool;
    set_integer(pool, MM_PROP_MAXSIZE, 1000);
    EXPECT_EQ(com___sbreak(pool, 1001), CS_FAIL);
    EXPECT_EQ(com___sbreak(pool, INT32_MAX), CS_FAIL);
    EXPECT_TRUE(pool.source.sizes.empty());
    pool.source.refusal = {1, false};
    EXPECT_EQ(com___sbreak(pool, 600), CS_FAIL);
    EXPECT_EQ(com___sbreak(pool, 600), CS_SUCCEED);
    EXPECT_EQ(com___sbreak(pool, 401), CS_FAIL) << "with what is held it is above the maximum";
    EXPECT_EQ(com___sbreak(pool, 400), CS_SUCCEED) << "exactly the maximum";
    EXPECT_EQ(pool.head()->mph_totalsize, 1000);
    pool.head()->mph_sbreak = nullptr;
    EXPECT_EQ(com___sbreak(pool, 40), CS_FAIL);
}

TEST(PoolStoreTest, AChunkTooSmallToUseGoesBackAtOnce) {
    SourcedPool pool;
    EXPECT_EQ(com___sbreak(pool, 39), CS_FAIL);
    EXPECT_EQ(pool.source.returned, 1);
    EXPECT_EQ(pool.head()->mph_totalsize, 0);
}

TEST(PoolStoreTest, TheCountOfBytesStopsAtItsEnd) {
    SourcedPool pool;
    pool.head()->mph_totalsize = INT32_MAX - 100;
    ASSERT_NE(get(pool, 1), nullptr);
    EXPECT_EQ(pool.head()->mph_totalsize, INT32_MAX);
    ASSERT_NE(get(pool, 10'000), nullptr);
    EXPECT_EQ(pool.head()->mph_totalsize, INT32_MAX);
}

TEST(PoolStoreTest, AHandlesBlocksAreChainedNewestFirst) {
    SourcedPool pool;
    CS_VOID *blocks[3];
    for (CS_VOID *&block : blocks)
        ASSERT_EQ(com___getblock(pool, 100, &block), CS_SUCCEED);
    const MmBlock *link = pool->mmh_blocks;
    for (int i = 2; i >= 0; --i) {
        EXPECT_EQ(reinterpret_cast<const char *>(link), static_cast<char *>(blocks[i]) - BLOCK_LINK);
        EXPECT_EQ(word_at(reinterpret_cast<const char *>(link) - BLOCK_HEADER), 112U); // 108 rounded
        link = link->next;
    }
    EXPECT_EQ(link, nullptr);
    EXPECT_EQ(com___putblock(pool, blocks[1]), CS_SUCCEED);
    EXPECT_EQ(block_count(pool), 2U);
    EXPECT_EQ(com___putblock(pool, blocks[2]), CS_SUCCEED);
    EXPECT_EQ(com___putblock(pool, blocks[0]), CS_SUCCEED);
    EXPECT_EQ(pool->mmh_blocks, nullptr);
    EXPECT_EQ(pool.source.memory.count(), 0U);
}

TEST(PoolStoreTest, FailedRequestsLeaveTheResultAlone) {
    SourcedPool pool;
    pool.source.refusal = {1, true};
    CS_VOID *result = &pool;
    EXPECT_EQ(com___getheap(pool, 10, &result), CS_MEM_ERROR);
    EXPECT_EQ(com___getblock(pool, 10, &result), CS_MEM_ERROR);
    EXPECT_EQ(com___getheap(pool, INT32_MAX, &result), CS_MEM_ERROR);
    EXPECT_EQ(com___getblock(pool, INT32_MAX, &result), CS_MEM_ERROR);
    EXPECT_EQ(result, &pool);
    EXPECT_EQ(pool->mmh_blocks, nullptr);
}

// Chunks at the ends of the address space, in an order that no distance of 32 bits reaches across.
TEST(PoolStoreTest, BlocksAreFoundInChunksFarFromEachOther) {
    constexpr int COUNT = 64;
    std::mt19937_64 random(8110);
    SourcedPool pool(MM_UNIFORM, 8, 72);
    pool.source.refusal = {1, true};
    alignas(8) static char near_code[COUNT][72];
    alignas(8) char on_stack[COUNT][72];
    std::vector<std::unique_ptr<char[]>> on_heap;
    std::vector<char *> chunks;
    for (int i = 0; i < COUNT; ++i) {
        on_heap.push_back(std::make_unique<char[]>(72));
        chunks.insert(chunks.end(), {near_code[i], on_stack[i], on_heap.back().get()});
    }
    std::shuffle(chunks.begin(), chunks.end(), random);
    for (char *chunk : chunks)
        ASSERT_EQ(comn_mmproperty(pool, MM_SET, MM_PROP_ADDHEAP, chunk, 72, nullptr), CS_SUCCEED);
    std::vector<char *> nodes;
    while (char *node = pool.allocate(16))
        nodes.push_back(node);
    ASSERT_EQ(nodes.size(), chunks.size());
    std::shuffle(nodes.begin(), nodes.end(), random);
    for (char *node : nodes)
        ASSERT_EQ(comn_mmfree(pool, node), CS_SUCCEED);
    EXPECT_EQ(pool.drop(), CS_SUCCEED) << "while the lent memory is there";
}

// A later chunk may begin just below where the first one, long given back, began.
TEST(PoolStoreTest, AChunkEightBytesBelowTheFirstOneIsFound) {
    struct Source {
        alignas(8) char memory[1024];
        int offset = 8;
        static CS_VOID *obtain(MM_HANDLE *, CS_VOID *param, CS_INT) {
            auto *source = static_cast<Source *>(param);
            return source->memory + source->offset;
        }
        static CS_RETCODE give_back(MM_HANDLE *, CS_VOID *param, CS_VOID *chunk) {
            auto *source = static_cast<Source *>(param);
            EXPECT_EQ(chunk, source->memory + source->offset);
            source->offset -= 8;
            return CS_SUCCEED;
        }
    } source;
    alignas(8) char records[sizeof(MmPoolHead) + sizeof(MM_HANDLE)];
    auto *pool = reinterpret_cast<MM_HANDLE *>(records);
    ASSERT_EQ(comn_mmmanage(nullptr, 0, &pool), CS_SUCCEED);
    const auto set = [&](CS_INT property, CS_VOID *value) {
        ASSERT_EQ(comn_mmproperty(pool, MM_SET, property, value, MM_OPT_UNUSED, nullptr), CS_SUCCEED);
    };
    set(MM_PROP_SBREAK, reinterpret_cast<CS_VOID *>(Source::obtain));
    set(MM_PROP_UNSBREAK, reinterpret_cast<CS_VOID *>(Source::give_back));
    set(MM_PROP_PARAM, &source);
    CS_INT chunk_size = 512;
    set(MM_PROP_CHUNKSIZE, &chunk_size);
    for (int offset : {8, 0}) {
        ASSERT_EQ(source.offset, offset);
        CS_VOID *block = nullptr;
        ASSERT_EQ(com___getheap(pool, 100, &block), CS_SUCCEED);
        EXPECT_EQ(block, source.memory + offset + sizeof(MmHeap));
        ASSERT_EQ(com___putheap(pool, block), CS_SUCCEED);
    }
    EXPECT_EQ(source.offset, -8) << "both went back";
    EXPECT_EQ(comn_mmdrop(pool, MM_DROP_FORCE), CS_SUCCEED);
}

// The source's chunks and lent ones of every distance share chains; each removal must keep the others in reach.
TEST(PoolStoreTest, ChunksThatGoBackLeaveTheOthersFound) {
    std::mt19937_64 random(8111);
    alignas(8) static char near_code[100][64];
    SourcedPool pool(MM_BUDDY, 4096, 64);
    alignas(8) char on_stack[100][64];
    std::vector<char *> live;
    for (int i = 0; i < 20'000; ++i) {
        if (live.size() < 300 || random() % 2 == 0) {
            if (i % 100 == 0 && i / 100 < 100) {
                ASSERT_EQ(com___addheap(pool, near_code[i / 100], 64, MM_HEAP_CALLER), CS_SUCCEED);
                ASSERT_EQ(com___addheap(pool, on_stack[i / 100], 64, MM_HEAP_CALLER), CS_SUCCEED);
            }
            live.push_back(get(pool, static_cast<CS_INT>(random() % 10 == 0 ? 20'000 : 24)));
            ASSERT_NE(live.back(), nullptr);
        } else {
            std::swap(live[random() % live.size()], live.back());
            ASSERT_EQ(com___putheap(pool, live.back()), CS_SUCCEED);
            live.pop_back();
        }
        if (random() % 50 == 0)
            pool.source.unsbreak_status = pool.source.unsbreak_status == CS_SUCCEED ? CS_FAIL : CS_SUCCEED;
    }
    pool.source.unsbreak_status = CS_SUCCEED;
    for (char *block : live)
        ASSERT_EQ(com___putheap(pool, block), CS_SUCCEED);
    EXPECT_EQ(pool.drop(), CS_SUCCEED) << "while the lent memory is there";
    EXPECT_EQ(pool.source.memory.count(), 0U);
    EXPECT_EQ(pool.source.bad_returns, 0);
}

// ---- Broken contracts -----------------------------------------------------------------------------------------------

// Misuses of the store, each with whether a null pointer is reported.
struct Misuse {
    const char *what;
    bool is_null;
    CS_RETCODE (*run)(SourcedPool &pool, char *block);
};

MmList *list_at(char *payload) { return reinterpret_cast<MmList *>(payload - BLOCK_HEADER); }

const Misuse MISUSES[] = {
    {"addheap without a handle", true, [](SourcedPool &, char *b) { return com___addheap(nullptr, b, 64, 2); }},
    {"addheap of nothing", true, [](SourcedPool &p, char *) { return com___addheap(p, nullptr, 64, 2); }},
    {"addheap of 16 bytes", false, [](SourcedPool &p, char *b) { return com___addheap(p, b, 16, 2); }},
    {"addheap of less than nothing", false, [](SourcedPool &p, char *b) { return com___addheap(p, b, -64, 2); }},
    {"sbreak of 16 bytes", false, [](SourcedPool &p, char *) { return com___sbreak(p, 16); }},
    {"getheap without a handle", true,
     [](SourcedPool &, char *) { CS_VOID *r; return com___getheap(nullptr, 8, &r); }},
    {"getheap without a result", true, [](SourcedPool &p, char *) { return com___getheap(p, 8, nullptr); }},
    {"getheap of less than nothing", false,
     [](SourcedPool &p, char *) { CS_VOID *r; return com___getheap(p, -1, &r); }},
    {"getblock without a handle", true,
     [](SourcedPool &, char *) { CS_VOID *r; return com___getblock(nullptr, 8, &r); }},
    {"getblock without a result", true, [](SourcedPool &p, char *) { return com___getblock(p, 8, nullptr); }},
    {"putheap without a handle", true, [](SourcedPool &, char *b) { return com___putheap(nullptr, b); }},
    {"putheap of nothing", true, [](SourcedPool &p, char *) { return com___putheap(p, nullptr); }},
    {"putheap of foreign memory", false,
     [](SourcedPool &p, char *) { CS_BIGINT local[4] = {}; return com___putheap(p, local + 2); }},
    {"putheap of a chunk's record", false,
     [](SourcedPool &p, char *) { return com___putheap(p, reinterpret_cast<char *>(p.head()->mph_heap) + 24); }},
    {"putheap of a free block", false,
     [](SourcedPool &p, char *) { return com___putheap(p, &p.head()->mph_heap->free->link); }},
    {"putheap into a free block", false,
     [](SourcedPool &p, char *) {
         MmList *inside = p.head()->mph_heap->free + 1;
         inside->size = 16;
         return com___putheap(p, &inside->link);
     }},
    {"putheap of a block that reaches into a free one", false,
     [](SourcedPool &p, char *b) {
         list_at(b)->size += 8;
         const CS_RETCODE status = com___putheap(p, b);
         list_at(b)->size -= 8;
         return status;
     }},
    {"putheap of a block that leaves its chunk", false,
     [](SourcedPool &p, char *b) {
         const CS_UINT size = list_at(b)->size;
         list_at(b)->size = 0xFFFFFFF8;
         const CS_RETCODE status = com___putheap(p, b);
         list_at(b)->size = size;
         return status;
     }},
    {"insert without a chunk", true, [](SourcedPool &, char *b) { return com___insert_block(nullptr, list_at(b)); }},
    {"insert of nothing", true,
     [](SourcedPool &p, char *) { return com___insert_block(p.head()->mph_heap, nullptr); }},
    {"putblock without a handle", true, [](SourcedPool &, char *b) { return com___putblock(nullptr, b); }},
    {"putblock of nothing", true, [](SourcedPool &p, char *) { return com___putblock(p, nullptr); }},
    {"putblock of what is no handle's", false, [](SourcedPool &p, char *b) { return com___putblock(p, b + 8); }},
    {"sbreak without a handle", true, [](SourcedPool &, char *) { return com___sbreak(nullptr, 100); }},
    {"unsbreak without a handle", true, [](SourcedPool &, char *b) { return com___unsbreak(nullptr, b); }},
    {"a source that minds no alignment", false,
     [](SourcedPool &p, char *) { p.source.misaligned = 4; return com___sbreak(p, 100); }},
};

class PoolMisuseTest : public testing::TestWithParam<Misuse> {
protected:
    PoolMisuseTest() : block_(get(pool_, 100)) {}
    SourcedPool pool_;
    char *block_;
};
using PoolMisuseDeathTest = PoolMisuseTest;

TEST_P(PoolMisuseDeathTest, EndsTheProcess) {
    if (GetParam().is_null)
        EXPECT_NULL_REPORT(GetParam().run(pool_, block_), "commmgr_store");
    else
        EXPECT_BOMB(GetParam().run(pool_, block_), "commmgr_store");
}

TEST_P(PoolMisuseTest, FailsAndLeavesTheStoreAsItWas) {
    const MmPoolHead head = *pool_.head();
    const std::vector<CS_UINT> sizes = free_sizes(pool_);
    {
        const ReturningAssertions returning;
        EXPECT_EQ(GetParam().run(pool_, block_), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
    }
    EXPECT_EQ(std::memcmp(&head, pool_.head(), sizeof head), 0);
    EXPECT_EQ(free_sizes(pool_), sizes);
    EXPECT_TRUE(is_store_sound(pool_));
    EXPECT_EQ(com___putheap(pool_, block_), CS_SUCCEED);
    EXPECT_EQ(pool_.source.memory.count(), 0U);
    EXPECT_EQ(pool_.source.bad_returns, 0);
}

std::string misuse_name(const testing::TestParamInfo<Misuse> &info) {
    std::string name = info.param.what;
    std::replace_if(name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Store, PoolMisuseTest, testing::ValuesIn(MISUSES), misuse_name);
INSTANTIATE_TEST_SUITE_P(Store, PoolMisuseDeathTest, testing::ValuesIn(MISUSES), misuse_name);

// ---- Against a naive model ------------------------------------------------------------------------------------------

TEST(PoolStoreTest, RandomBlocksFollowFirstFitOverEveryFreeByte) {
    // The model: the chunks newest first, and which of their eight-byte words are taken by blocks.
    struct Chunk {
        char *memory;
        std::vector<bool> taken; // by word behind the record
    };
    std::mt19937_64 random(8101);
    SourcedPool pool(MM_BUDDY, 4096, 2000);
    std::vector<Chunk> chunks; // newest first
    std::vector<std::pair<char *, CS_INT>> live;
    for (int step = 0; step < 60'000; ++step) {
        if (live.size() < 40 || (live.size() < 120 && random() % 2 == 0)) {
            const CS_INT size = static_cast<CS_INT>(random() % (random() % 10 == 0 ? 3000 : 200));
            const std::size_t words = static_cast<std::size_t>(std::max((size + 7) / 8, 1)) + 1;
            char *expected = nullptr;
            std::size_t used = 0;
            for (Chunk &chunk : chunks) {
                for (std::size_t at = 0; at < chunk.taken.size() && expected == nullptr;) {
                    std::size_t end = at;
                    while (end < chunk.taken.size() && !chunk.taken[end])
                        ++end;
                    if (end - at >= words) {
                        used = end - at - words <= 1 ? end - at : words;
                        expected = chunk.memory + 24 + at * 8 + 8;
                        std::fill_n(chunk.taken.begin() + static_cast<std::ptrdiff_t>(at), used, true);
                    }
                    at = end == at ? at + 1 : end;
                }
                if (expected != nullptr)
                    break;
            }
            const std::size_t asked = pool.source.sizes.size();
            char *block = get(pool, size);
            ASSERT_NE(block, nullptr);
            if (expected == nullptr) {
                ASSERT_EQ(pool.source.sizes.size(), asked + 1);
                Chunk chunk = {block - CHUNK_RECORD, {}};
                const std::size_t total = (pool.source.memory.size_at(chunk.memory) - 24) / 8;
                used = total - words <= 1 ? total : words;
                chunk.taken.resize(total);
                std::fill_n(chunk.taken.begin(), used, true);
                chunks.insert(chunks.begin(), chunk);
            } else {
                ASSERT_EQ(block, expected);
                ASSERT_EQ(pool.source.sizes.size(), asked);
            }
            ASSERT_EQ(header_word(block), (used - 1) * 8);
            live.emplace_back(block, static_cast<CS_INT>((used - 1) * 8));
        } else {
            const std::size_t which = random() % live.size();
            const auto [block, size] = live[which];
            live[which] = live.back();
            live.pop_back();
            const auto chunk = std::find_if(chunks.begin(), chunks.end(), [block = block](const Chunk &c) {
                return block > c.memory && block < c.memory + 24 + c.taken.size() * 8;
            });
            ASSERT_NE(chunk, chunks.end());
            std::fill_n(chunk->taken.begin() + (block - 8 - chunk->memory - 24) / 8, size / 8 + 1, false);
            ASSERT_EQ(com___putheap(pool, block), CS_SUCCEED);
            if (std::find(chunk->taken.begin(), chunk->taken.end(), true) == chunk->taken.end())
                chunks.erase(chunk);
            ASSERT_EQ(pool.source.memory.count(), chunks.size());
        }
        if (step % 64 == 0) {
            ASSERT_TRUE(is_store_sound(pool));
            ASSERT_TRUE(pool.source.memory.is_intact());
        }
    }
    EXPECT_EQ(pool.source.bad_returns, 0);
}

} // namespace

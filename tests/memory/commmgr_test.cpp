// Pools as a whole: creation on a context and in memory of the caller, the front ends, sub-pools, removal, and
// what each does when memory runs out.
#include "support/assertions.h"
#include "support/pools.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace support;

namespace {

constexpr CS_INT RECORDS = sizeof(MmPoolHead) + sizeof(MM_HANDLE);

void expect_defaults(const MM_HANDLE *mmh, CS_INT status) {
    const MmPoolHead *head = mmh->mmh_head;
    EXPECT_EQ(mmh->mmh_type, MM_BUDDY);
    EXPECT_EQ(mmh->mmh_blocksize, 4096);
    EXPECT_EQ(mmh->mmh_status, status);
    EXPECT_EQ(mmh->mmh_tagid, 0);
    EXPECT_EQ(mmh->mmh_blocks, nullptr);
    EXPECT_EQ(mmh->mmh_parent, nullptr);
    EXPECT_EQ(mmh->mmh_child, nullptr);
    EXPECT_EQ(mmh->mmh_sibling, nullptr);
    EXPECT_EQ(head->mph_chunksize, 4136);
    EXPECT_EQ(head->mph_maxsize, MM_NOLIMIT);
    EXPECT_EQ(head->mph_status & ~MM_STAT_MUTEX, status);
}

// ---- On a context -----------------------------------------------------------------------------------------------

TEST(PoolOnContextTest, RecordsComeFromTheContext) {
    PoolContext context;
    MM_HANDLE *mmh = nullptr;
    ASSERT_EQ(comn_mminit(context, &mmh), CS_SUCCEED);
    expect_defaults(mmh, MM_STAT_OWNED);
    const MmPoolHead *head = mmh->mmh_head;
    EXPECT_EQ(head->mph_sbreak, com___sbreak_ctx);
    EXPECT_EQ(head->mph_unsbreak, com___unsbreak_ctx);
    EXPECT_EQ(head->mph_param, static_cast<CS_CONTEXT *>(context));
    EXPECT_EQ(head->mph_ctx, static_cast<CS_CONTEXT *>(context));
    EXPECT_EQ(head->mph_totalsize, 0);
    EXPECT_EQ(head->mph_heap, nullptr);
    EXPECT_EQ(head->mph_lock, nullptr);
    EXPECT_EQ(head->mph_unlock, nullptr);
    EXPECT_EQ(head->mph_lockarg, nullptr);
    EXPECT_EQ(context.memory.count(), 2U);
    EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(context.memory.count(), 0U);
    EXPECT_EQ(context.bad_frees, 0);
}

TEST(PoolOnContextTest, RecordsLieInTheCallersArea) {
    PoolContext context;
    RecordArea area;
    MM_HANDLE *mmh = area.address();
    ASSERT_EQ(comn_mminit(context, &mmh), CS_SUCCEED);
    EXPECT_EQ(mmh, area.handle());
    EXPECT_EQ(mmh->mmh_head, area.head());
    expect_defaults(mmh, MM_STAT_CALLER);
    CS_VOID *block = nullptr;
    ASSERT_EQ(comn_mmalloc(mmh, 100, &block), CS_SUCCEED);
    EXPECT_EQ(context.sizes, std::vector<CS_UINT>({4144}));
    EXPECT_TRUE(context.memory.holds(block, 100));
    EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(context.freed, 1);
    EXPECT_EQ(context.bad_frees, 0);
    EXPECT_TRUE(is_zero(area.bytes, sizeof area.bytes)) << "wiped, so that a stale handle trips an assertion";
}

TEST(PoolOnContextTest, PlainAllocatorServesAContextWithoutOne) {
    PoolContext context;
    context->ctxmalloc = nullptr;
    context->ctxfree = nullptr;
    MM_HANDLE *mmh = nullptr;
    ASSERT_EQ(comn_mminit(context, &mmh), CS_SUCCEED);
    CS_VOID *block = nullptr;
    EXPECT_EQ(comn_mmalloc(mmh, 5000, &block), CS_SUCCEED);
    EXPECT_EQ(comn_mmfree(mmh, block), CS_SUCCEED);
    EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_TRUE(context.sizes.empty());
}

TEST(PoolOnContextTest, ContextFunctionsWithoutAContext) {
    SourcedPool pool;
    EXPECT_EQ(com___sbreak_ctx(pool, nullptr, 100), nullptr);
    char memory[8];
    EXPECT_EQ(com___unsbreak_ctx(pool, nullptr, memory), CS_FAIL);
}

// Callbacks of a context's lock, which have no argument but the resource.
struct ContextLock {
    static inline std::string calls;
    static inline CS_RETCODE create_status;
    static inline CS_RETCODE take_status;
    static CS_THRDRES *resource() { return reinterpret_cast<CS_THRDRES *>(&calls); }

    static CS_RETCODE create(CS_THRDRES **result) {
        calls += "create ";
        if (create_status == CS_SUCCEED)
            *result = resource();
        return create_status;
    }
    static CS_RETCODE note(const char *call, const CS_THRDRES *given) {
        calls += call;
        if (given != resource())
            calls += given == nullptr ? "null " : "other ";
        return CS_SUCCEED;
    }
    static CS_RETCODE remove(CS_THRDRES *given) { return note("delete ", given); }
    static CS_RETCODE take(CS_THRDRES *given) {
        note("take ", given);
        return take_status;
    }
    static CS_RETCODE give(CS_THRDRES *given) { return note("give ", given); }
    static std::string taken() { return std::exchange(calls, ""); }

    ContextLock() {
        calls.clear();
        create_status = take_status = CS_SUCCEED;
        callbacks.create_mutex_fn = create;
        callbacks.delete_mutex_fn = remove;
        callbacks.take_mutex_fn = take;
        callbacks.release_mutex_fn = give;
    }
    CS_THREAD callbacks = {};
};

TEST(PoolOnContextTest, TheContextsMutexGuardsThePoolAndGoesWithIt) {
    PoolContext context;
    ContextLock lock;
    context->ctxthread = &lock.callbacks;
    MM_HANDLE *mmh = nullptr;
    ASSERT_EQ(comn_mminit(context, &mmh), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "create ");
    EXPECT_EQ(mmh->mmh_head->mph_status, MM_STAT_OWNED | MM_STAT_MUTEX);
    EXPECT_EQ(mmh->mmh_head->mph_lockarg, ContextLock::resource());
    EXPECT_EQ(mmh->mmh_head->mph_lock, com___lock_ctx);
    EXPECT_EQ(mmh->mmh_head->mph_unlock, com___unlock_ctx);
    CS_VOID *block = nullptr;
    EXPECT_EQ(comn_mmalloc(mmh, 1, &block), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give ");
    ContextLock::take_status = CS_TIMED_OUT;
    EXPECT_EQ(comn_mmalloc(mmh, 1, &block), CS_TIMED_OUT);
    ContextLock::take_status = CS_SUCCEED;
    lock.taken();
    EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give delete ");
    EXPECT_EQ(context.memory.count(), 0U);
}

TEST(PoolOnContextTest, MissingCallbacksMeanSuccess) {
    PoolContext context;
    CS_THREAD none = {};
    context->ctxthread = &none;
    MM_HANDLE *mmh = nullptr;
    ASSERT_EQ(comn_mminit(context, &mmh), CS_SUCCEED);
    EXPECT_EQ(mmh->mmh_head->mph_status, MM_STAT_OWNED);
    EXPECT_EQ(mmh->mmh_head->mph_lockarg, nullptr);
    EXPECT_EQ(mmh->mmh_head->mph_lock, com___lock_ctx);
    EXPECT_EQ(com___lock_ctx(mmh, nullptr), CS_SUCCEED);
    EXPECT_EQ(com___unlock_ctx(mmh, nullptr), CS_SUCCEED);
    CS_VOID *block = nullptr;
    EXPECT_EQ(comn_mmalloc(mmh, 1, &block), CS_SUCCEED);
    EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
}

TEST(PoolOnContextTest, AMutexThatNothingTakesOrDeletesIsFine) {
    PoolContext context;
    ContextLock lock;
    lock.callbacks.take_mutex_fn = lock.callbacks.release_mutex_fn = lock.callbacks.delete_mutex_fn = nullptr;
    context->ctxthread = &lock.callbacks;
    MM_HANDLE *mmh = nullptr;
    ASSERT_EQ(comn_mminit(context, &mmh), CS_SUCCEED);
    EXPECT_EQ(mmh->mmh_head->mph_status, MM_STAT_OWNED | MM_STAT_MUTEX);
    CS_VOID *block = nullptr;
    EXPECT_EQ(comn_mmalloc(mmh, 1, &block), CS_SUCCEED);
    EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "create ");
    EXPECT_EQ(context.memory.count(), 0U);
}

TEST(PoolOnContextTest, OddityTheHeadStaysWhenTheMutexCannotBeMade) {
    PoolContext context; // releases what is left at its own end
    ContextLock lock;
    context->ctxthread = &lock.callbacks;
    ContextLock::create_status = CS_BUSY;
    MM_HANDLE *mmh = nullptr;
    EXPECT_EQ(comn_mminit(context, &mmh), CS_BUSY);
    EXPECT_EQ(mmh, nullptr);
    EXPECT_EQ(context.sizes, std::vector<CS_UINT>({sizeof(MmPoolHead), sizeof(MM_HANDLE)}));
    EXPECT_EQ(context.freed, 1);
    EXPECT_EQ(context.memory.count(), 1U);
}

TEST(PoolOnContextTest, AMutexThatCannotBeMadeReleasesNothingOfTheCallers) {
    PoolContext context;
    ContextLock lock;
    context->ctxthread = &lock.callbacks;
    ContextLock::create_status = CS_FAIL;
    RecordArea area;
    MM_HANDLE *mmh = area.address();
    EXPECT_EQ(comn_mminit(context, &mmh), CS_FAIL);
    EXPECT_EQ(mmh, area.address());
    EXPECT_EQ(context.freed, 0);
}

TEST(PoolOnContextTest, OddityAClearedLockKeepsTheMutexBitAndTheMutexIsDeletedWithNull) {
    PoolContext context;
    ContextLock lock;
    context->ctxthread = &lock.callbacks;
    MM_HANDLE *mmh = nullptr;
    ASSERT_EQ(comn_mminit(context, &mmh), CS_SUCCEED);
    mmh->mmh_status |= MM_STAT_MUTEX; // where the clear looks for it
    lock.taken();
    EXPECT_EQ(comn_mmproperty(mmh, MM_CLEAR, MM_PROP_LOCK, nullptr, MM_OPT_UNUSED, nullptr), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(mmh->mmh_status, MM_STAT_OWNED);
    EXPECT_EQ(mmh->mmh_head->mph_status, MM_STAT_OWNED | MM_STAT_MUTEX);
    EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "delete null ");
}

// ---- In memory of the caller ------------------------------------------------------------------------------------

TEST(ManagedPoolTest, CallersAreaWithoutMemory) {
    RecordArea area;
    MM_HANDLE *mmh = area.address();
    ASSERT_EQ(comn_mmmanage(nullptr, 0, &mmh), CS_SUCCEED);
    EXPECT_EQ(mmh, area.handle());
    expect_defaults(mmh, MM_STAT_CALLER);
    const MmPoolHead *head = area.head();
    EXPECT_EQ(head->mph_ctx, nullptr);
    EXPECT_EQ(head->mph_sbreak, nullptr);
    EXPECT_EQ(head->mph_unsbreak, nullptr);
    EXPECT_EQ(head->mph_param, nullptr);
    EXPECT_EQ(head->mph_lock, nullptr);
    EXPECT_EQ(head->mph_unlock, nullptr);
    EXPECT_EQ(head->mph_lockarg, nullptr);
    CS_VOID *block = nullptr;
    EXPECT_EQ(comn_mmalloc(mmh, 10, &block), CS_MEM_ERROR) << "a missing source counts as exhausted";
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_TRUE(is_zero(area.bytes, sizeof area.bytes));
}

TEST(ManagedPoolTest, CallersAreaWithMemoryOfEveryLength) {
    GuardedMemory guarded;
    char *memory = guarded.obtain(300);
    for (CS_INT length = 17; length <= 300; ++length) {
        RecordArea area;
        MM_HANDLE *mmh = area.address();
        const CS_RETCODE status = comn_mmmanage(memory, length, &mmh);
        ASSERT_EQ(status, length < 40 ? CS_FAIL : CS_SUCCEED) << length;
        if (status != CS_SUCCEED) {
            EXPECT_EQ(mmh, area.address());
            continue;
        }
        const MmHeap *chunk = area.head()->mph_heap;
        EXPECT_EQ(chunk->size, length & ~7);
        EXPECT_EQ(chunk->status, MM_HEAP_CALLER);
        EXPECT_EQ(chunk->free->size, static_cast<CS_UINT>((length & ~7) - CHUNK_RECORD));
        EXPECT_EQ(area.head()->mph_totalsize, length);
        CS_VOID *block = nullptr;
        EXPECT_EQ(com___getheap(mmh, (length & ~7) - CHUNK_RECORD, &block), CS_SUCCEED);
        EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
        EXPECT_TRUE(guarded.is_intact());
    }
}

TEST(ManagedPoolTest, CarvedFromTheBufferAtEveryLengthAndAlignment) {
    for (CS_INT shift = 0; shift < 8; ++shift) {
        for (CS_INT length = 0; length <= RECORDS + 200; ++length) {
            GuardedMemory guarded;
            char *buffer = guarded.obtain(static_cast<CS_UINT>(length), static_cast<std::size_t>(shift));
            const CS_INT skipped = static_cast<CS_INT>(-reinterpret_cast<std::uintptr_t>(buffer) & 7);
            MM_HANDLE *mmh = nullptr;
            const CS_RETCODE status = comn_mmmanage(buffer, length, &mmh);
            const CS_INT rest = (length - skipped - RECORDS) & ~7;
            ASSERT_EQ(status, length - skipped < RECORDS ? CS_FAIL : CS_SUCCEED) << length << " at " << shift;
            if (status == CS_SUCCEED) {
                EXPECT_EQ(mmh->mmh_head, reinterpret_cast<MmPoolHead *>(buffer + skipped));
                EXPECT_EQ(mmh, reinterpret_cast<MM_HANDLE *>(mmh->mmh_head + 1));
                expect_defaults(mmh, MM_STAT_OWNED);
                CS_VOID *block = nullptr;
                if (rest < CHUNK_RECORD + 8) {
                    EXPECT_EQ(mmh->mmh_head->mph_heap, nullptr);
                    EXPECT_EQ(com___getheap(mmh, 8, &block), CS_MEM_ERROR);
                } else {
                    EXPECT_EQ(com___getheap(mmh, rest - CHUNK_RECORD, &block), CS_SUCCEED);
                    std::memset(block, 1, static_cast<std::size_t>(rest - CHUNK_RECORD));
                }
                // No allocator to call: the buffer is the caller's, and the records are wiped.
                EXPECT_EQ(comn_mmdrop(mmh, MM_OPT_UNUSED), CS_SUCCEED);
                EXPECT_TRUE(is_zero(buffer + skipped, RECORDS));
            } else {
                EXPECT_EQ(mmh, nullptr);
            }
            ASSERT_TRUE(guarded.is_intact()) << length << " at " << shift;
        }
    }
}

TEST(ManagedPoolTest, ServesFromTheBufferUntilItIsFull) {
    alignas(8) static char buffer[20'000];
    MM_HANDLE *mmh = nullptr;
    ASSERT_EQ(comn_mmmanage(buffer, sizeof buffer, &mmh), CS_SUCCEED);
    CS_VOID *block = nullptr;
    int served = 0;
    while (comn_mmalloc(mmh, 1000, &block) == CS_SUCCEED) {
        EXPECT_TRUE(block > buffer && block < buffer + sizeof buffer);
        ++served;
    }
    EXPECT_EQ(served, 16);
    EXPECT_EQ(comn_mmfree(mmh, block), CS_SUCCEED);
    EXPECT_EQ(comn_mmalloc(mmh, 1000, &block), CS_SUCCEED) << "the pool stays usable";
    EXPECT_EQ(comn_mmdrop(mmh, MM_DROP_FORCE), CS_SUCCEED);
}

// ---- Front ends -------------------------------------------------------------------------------------------------

TEST(PoolFrontTest, ABlockIsClearedInAllKinds) {
    for (const CS_INT type : {MM_BUDDY, MM_UNIFORM, MM_ALLOCONLY}) {
        SourcedPool pool(type);
        for (int i = 0; i < 100; ++i) {
            char *block = pool.allocate(123);
            ASSERT_NE(block, nullptr);
            EXPECT_TRUE(is_zero(block, 123));
            std::memset(block, 0xEE, 123);
            if (type != MM_ALLOCONLY && i % 2 == 0) {
                EXPECT_EQ(comn_mmfree(pool, block), CS_SUCCEED);
            }
        }
        EXPECT_TRUE(pool.source.memory.is_intact());
    }
}

TEST(PoolFrontTest, SizeZeroIsServed) {
    for (const CS_INT type : {MM_BUDDY, MM_UNIFORM, MM_ALLOCONLY}) {
        SourcedPool pool(type);
        for (int i = 0; i < 1000; ++i)
            ASSERT_NE(pool.allocate(0), nullptr);
        EXPECT_TRUE(is_store_sound(pool));
        EXPECT_TRUE(pool.source.memory.is_intact());
    }
}

TEST(PoolFrontTest, HugeSizesAreRefusedAndThePoolStaysUsable) {
    for (const CS_INT type : {MM_BUDDY, MM_UNIFORM, MM_ALLOCONLY}) {
        for (CS_INT below = 0; below < 8300; below += below < 64 ? 1 : 409) {
            SourcedPool pool(type);
            pool.source.refusal = {1, true};
            CS_VOID *block = nullptr;
            EXPECT_EQ(comn_mmalloc(pool, INT32_MAX - below, &block), CS_MEM_ERROR);
            EXPECT_EQ(block, nullptr);
            EXPECT_EQ(pool->mmh_status & MM_STAT_LIVE, 0);
        }
    }
    SourcedPool pool;
    ASSERT_NE(pool.allocate(1), nullptr);
    CS_VOID *block = nullptr;
    EXPECT_EQ(comn_mmalloc(pool, INT32_MAX, &block), CS_MEM_ERROR);
    EXPECT_NE(pool.allocate(1), nullptr);
}

TEST(PoolFrontTest, ReallocAndFreeOnTheOtherKinds) {
    SourcedPool uniform(MM_UNIFORM);
    CS_VOID *block = uniform.allocate(10);
    CS_VOID *same = block;
    EXPECT_EQ(comn_mmrealloc(uniform, 20, &same), CS_FAIL);
    EXPECT_EQ(same, block);
    EXPECT_EQ(comn_mmfree(uniform, block), CS_SUCCEED);

    SourcedPool bump(MM_ALLOCONLY);
    block = same = bump.allocate(10);
    EXPECT_EQ(comn_mmrealloc(bump, 20, &same), CS_FAIL);
    EXPECT_EQ(same, block);
    EXPECT_EQ(comn_mmfree(bump, block), CS_FAIL);
}

TEST(PoolFrontDeathTest, BrokenContractsEndTheProcess) {
    SourcedPool pool;
    CS_VOID *block = nullptr;
    int local[8] = {};
    EXPECT_NULL_REPORT(comn_mmalloc(nullptr, 1, &block), "commmgr");
    EXPECT_NULL_REPORT(comn_mmalloc(pool, 1, nullptr), "commmgr");
    EXPECT_BOMB(comn_mmalloc(pool, -1, &block), "commmgr");
    EXPECT_NULL_REPORT(comn_mmrealloc(nullptr, 1, &block), "commmgr");
    EXPECT_NULL_REPORT(comn_mmrealloc(pool, 1, nullptr), "commmgr");
    EXPECT_BOMB(comn_mmrealloc(pool, -1, &block), "commmgr");
    EXPECT_NULL_REPORT(comn_mmrealloc(pool, 1, &block), "commmgr_buddy");
    block = local + 4;
    EXPECT_BOMB(comn_mmrealloc(pool, 1, &block), "commmgr_buddy"); // nothing was ever allocated
    EXPECT_BOMB(comn_mmfree(pool, local + 4), "commmgr");
    EXPECT_NULL_REPORT(comn_mmfree(nullptr, local), "commmgr");
    EXPECT_NULL_REPORT(comn_mmfree(pool, nullptr), "commmgr");
    EXPECT_BOMB(comn_mmdiag(pool), "commmgr");
    EXPECT_BOMB(comn_mmdiag(nullptr), "commmgr");

    char *mine = pool.allocate(100);
    EXPECT_BOMB(comn_mmfree(pool, local + 4), "commmgr");
    EXPECT_BOMB(comn_mmfree(pool, mine + 1), "commmgr");
    EXPECT_BOMB(comn_mmfree(pool, pool->mmh_head->mph_heap), "commmgr"); // a chunk's record
}

TEST(PoolFrontDeathTest, NoKindServesNoneAndStrangeTypes) {
    SourcedPool pool(MM_TYPE_NONE);
    CS_VOID *block = nullptr;
    EXPECT_BOMB(comn_mmalloc(pool, 1, &block), "commmgr");
    EXPECT_BOMB(comn_mmrealloc(pool, 1, &block), "commmgr");
    SourcedPool changed;
    block = changed.allocate(10);
    changed->mmh_type = 77;
    EXPECT_BOMB(comn_mmfree(changed, block), "commmgr");
}

TEST(PoolFrontDeathTest, CreationChecksItsArguments) {
    PoolContext context;
    MM_HANDLE *mmh = nullptr;
    EXPECT_NULL_REPORT(comn_mminit(nullptr, &mmh), "commmgr");
    EXPECT_NULL_REPORT(comn_mminit(context, nullptr), "commmgr");
    context->ctxversion = 113;
    EXPECT_BOMB(comn_mminit(context, &mmh), "commmgr");
    char memory[16];
    EXPECT_NULL_REPORT(comn_mmmanage(memory, 16, nullptr), "commmgr");
    EXPECT_NULL_REPORT(comn_mmmanage(nullptr, 5000, &mmh), "commmgr");
    EXPECT_BOMB(comn_mmmanage(memory, -1, &mmh), "commmgr");
    RecordArea area;
    mmh = area.address();
    EXPECT_BOMB(comn_mmmanage(memory, 16, &mmh), "commmgr_store");
    EXPECT_NULL_REPORT(comn_mmmanage(nullptr, 100, &mmh), "commmgr_store");
}

TEST(PoolFrontDeathTest, LockFunctionsOfAContextNeedOne) {
    SourcedPool pool;
    EXPECT_NULL_REPORT(com___lock_ctx(pool, nullptr), "commmgr_store");
    EXPECT_NULL_REPORT(com___unlock_ctx(pool, nullptr), "commmgr_store");
    EXPECT_NULL_REPORT(com___lock_ctx(nullptr, nullptr), "commmgr_store");
    EXPECT_NULL_REPORT(com___unlock_ctx(nullptr, nullptr), "commmgr_store");
    EXPECT_NULL_REPORT(com___sbreak_ctx(nullptr, nullptr, 1), "commmgr_store");
    EXPECT_NULL_REPORT(com___unsbreak_ctx(nullptr, nullptr, nullptr), "commmgr_store");
}

TEST(PoolFrontTest, ReturningAssertionsAnswerFailAndWriteNothing) {
    SourcedPool pool;
    char *mine = pool.allocate(100);
    const CS_UINT word = header_word(mine);
    PoolContext context;
    PoolContext old_context;
    old_context->ctxversion = 113;
    RecordArea area;
    int local[8] = {};
    char memory[16];
    MM_HANDLE *none = nullptr;
    MM_HANDLE *lying = area.address();
    CS_VOID *block = nullptr;
    CS_VOID *not_mine = local + 4;
    SourcedPool untouched;
    SourcedPool typeless(MM_TYPE_NONE);
    int reports = 0;
    const ReturningAssertions returning;
    const auto expect_fail = [&](CS_RETCODE status) {
        EXPECT_EQ(status, CS_FAIL);
        EXPECT_EQ(returning.count(), ++reports);
    };
    expect_fail(comn_mmalloc(nullptr, 1, &block));
    expect_fail(comn_mmalloc(pool, 1, nullptr));
    expect_fail(comn_mmalloc(pool, -1, &block));
    expect_fail(comn_mmalloc(typeless, 1, &block));
    expect_fail(comn_mmrealloc(nullptr, 1, &block));
    expect_fail(comn_mmrealloc(pool, 1, nullptr));
    expect_fail(comn_mmrealloc(pool, -1, &block));
    expect_fail(comn_mmrealloc(pool, 1, &block));
    expect_fail(comn_mmrealloc(untouched, 1, &not_mine));
    expect_fail(comn_mmrealloc(typeless, 1, &not_mine));
    expect_fail(comn_mmfree(nullptr, local));
    expect_fail(comn_mmfree(pool, nullptr));
    expect_fail(comn_mmfree(untouched, local + 4));
    expect_fail(comn_mmfree(pool, local + 4));
    expect_fail(comn_mmfree(pool, mine + 1));
    expect_fail(comn_mmfree(pool, pool->mmh_head->mph_heap));
    expect_fail(comn_mmdiag(pool));
    expect_fail(comn_mminit(nullptr, &none));
    expect_fail(comn_mminit(context, nullptr));
    expect_fail(comn_mminit(old_context, &none));
    expect_fail(comn_mmmanage(memory, 16, nullptr));
    expect_fail(comn_mmmanage(nullptr, 5000, &none));
    expect_fail(comn_mmmanage(memory, -1, &none));
    expect_fail(comn_mmmanage(memory, 16, &lying));
    expect_fail(comn_mmmanage(nullptr, 100, &lying));
    expect_fail(com___lock_ctx(pool, nullptr));
    expect_fail(com___unlock_ctx(pool, nullptr));
    expect_fail(com___unsbreak_ctx(nullptr, nullptr, nullptr));
    expect_fail(com___lock_ctx(nullptr, nullptr));
    expect_fail(com___unlock_ctx(nullptr, nullptr));
    EXPECT_EQ(com___sbreak_ctx(nullptr, nullptr, 1), nullptr);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(not_mine, local + 4);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(lying, area.address());
    EXPECT_TRUE(is_zero(local, sizeof local));
    EXPECT_EQ(header_word(mine), word);
    EXPECT_TRUE(context.sizes.empty());
    EXPECT_TRUE(old_context.sizes.empty());
}

// ---- Sub-pools and removal ----------------------------------------------------------------------------------------

MM_HANDLE *make_subpool(MM_HANDLE *parent, CS_INT tag) {
    MM_HANDLE *child = parent; // not null on entry, as the call demands
    return com___subpool(parent, tag, &child) == CS_SUCCEED ? child : nullptr;
}

TEST(SubpoolTest, StartsItsOwnFirstAllocationOnTheSharedStore) {
    SourcedPool pool(MM_UNIFORM, 1000);
    ASSERT_NE(pool.allocate(40), nullptr);
    MM_HANDLE *first = make_subpool(pool, 5);
    MM_HANDLE *second = make_subpool(pool, 6);
    ASSERT_TRUE(first != nullptr && second != nullptr);
    EXPECT_EQ(second->mmh_head, pool.head());
    EXPECT_EQ(second->mmh_type, MM_UNIFORM);
    EXPECT_EQ(second->mmh_blocksize, 960) << "as the parent's first allocation left it";
    EXPECT_EQ(second->mmh_status, MM_STAT_OWNED);
    EXPECT_EQ(second->mmh_tagid, 6);
    EXPECT_EQ(second->mmh_blocks, nullptr);
    EXPECT_EQ(second->mmh_parent, static_cast<MM_HANDLE *>(pool));
    EXPECT_EQ(second->mmh_child, nullptr);
    EXPECT_EQ(pool->mmh_child, second) << "children are pushed on the front";
    EXPECT_EQ(second->mmh_sibling, first);
    EXPECT_EQ(first->mmh_sibling, nullptr);
    EXPECT_EQ(set_integer(second, MM_PROP_TYPE, MM_BUDDY), CS_SUCCEED);
    CS_VOID *block = nullptr;
    EXPECT_EQ(comn_mmalloc(second, 100, &block), CS_SUCCEED);
    EXPECT_EQ(second->mmh_status, MM_STAT_OWNED | MM_STAT_LIVE);
    EXPECT_EQ(block_count(second), 1U);
    EXPECT_EQ(block_count(pool), 1U);
}

TEST(SubpoolTest, ADropWithSubpoolsRemainingIsBusyAndChangesNothing) {
    SourcedPool pool;
    char *block = pool.allocate(10);
    MM_HANDLE *child = make_subpool(pool, 1);
    MM_HANDLE *grandchild = make_subpool(child, 1);
    EXPECT_EQ(comn_mmdrop(pool, MM_OPT_UNUSED), CS_BUSY);
    EXPECT_EQ(comn_mmdrop(child, MM_OPT_UNUSED), CS_BUSY);
    EXPECT_EQ(comn_mmfree(pool, block), CS_SUCCEED);
    EXPECT_NE(pool.allocate(10), nullptr);
    EXPECT_EQ(comn_mmdrop(grandchild, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(comn_mmdrop(child, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(pool->mmh_child, nullptr);
}

TEST(SubpoolTest, ADropGivesItsBlocksAndItsHandleBackToTheStore) {
    SourcedPool pool(MM_BUDDY, 4096, 50'000);
    MM_HANDLE *children[3];
    for (int i = 0; i < 3; ++i)
        children[i] = make_subpool(pool, i);
    for (MM_HANDLE *child : children) {
        CS_VOID *block = nullptr;
        for (int i = 0; i < 3; ++i)
            ASSERT_EQ(comn_mmalloc(child, 4000, &block), CS_SUCCEED);
        ASSERT_EQ(comn_mmalloc(child, 9000, &block), CS_SUCCEED);
    }
    // The middle one, the last of the list, the first.
    EXPECT_EQ(comn_mmdrop(children[1], MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(pool->mmh_child, children[2]);
    EXPECT_EQ(children[2]->mmh_sibling, children[0]);
    EXPECT_EQ(comn_mmdrop(children[0], MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(children[2]->mmh_sibling, nullptr);
    EXPECT_TRUE(is_store_sound(pool));
    EXPECT_EQ(comn_mmdrop(children[2], MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(pool.source.memory.count(), 0U) << "nothing is left of them, so every chunk went back";
    EXPECT_EQ(pool.source.bad_returns, 0);
}

TEST(SubpoolTest, AForcedDropOfAnyHandleTakesTheWholeTreeDown) {
    PoolContext context;
    for (int which = 0; which < 3; ++which) {
        MM_HANDLE *mmh = nullptr;
        ASSERT_EQ(comn_mminit(context, &mmh), CS_SUCCEED);
        MM_HANDLE *child = make_subpool(mmh, 1);
        MM_HANDLE *grandchild = make_subpool(child, 2);
        CS_VOID *block = nullptr;
        for (MM_HANDLE *handle : {mmh, child, grandchild})
            for (int i = 0; i < 100; ++i)
                ASSERT_EQ(comn_mmalloc(handle, 500, &block), CS_SUCCEED);
        MM_HANDLE *const handles[] = {mmh, child, grandchild};
        EXPECT_EQ(comn_mmdrop(handles[which], MM_DROP_FORCE), CS_SUCCEED);
        EXPECT_EQ(context.memory.count(), 0U);
        EXPECT_EQ(context.bad_frees, 0) << "no address inside a chunk went to ctxfree";
    }
}

TEST(SubpoolTest, NoMemoryForAHandle) {
    SourcedPool pool;
    pool.source.refusal = {1, true};
    MM_HANDLE *child = pool;
    EXPECT_EQ(com___subpool(pool, 1, &child), CS_MEM_ERROR);
    EXPECT_EQ(child, static_cast<MM_HANDLE *>(pool));
    EXPECT_EQ(pool->mmh_child, nullptr);
}

TEST(PoolDropTest, ChunksOfTheSourceGoBackAndLentOnesStay) {
    alignas(8) char lent[5000];
    SourcedPool pool;
    ASSERT_EQ(comn_mmproperty(pool, MM_SET, MM_PROP_ADDHEAP, lent, sizeof lent, nullptr), CS_SUCCEED);
    for (int i = 0; i < 20; ++i)
        ASSERT_NE(pool.allocate(4000), nullptr);
    EXPECT_EQ(pool.source.memory.count(), 19U);
    MM_HANDLE *root = pool;
    pool.source.handles.clear();
    EXPECT_EQ(comn_mmdrop(pool, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(pool.source.returned, 19);
    EXPECT_EQ(pool.source.bad_returns, 0);
    EXPECT_EQ(pool.source.memory.count(), 0U);
    EXPECT_EQ(pool.source.handles, std::vector<MM_HANDLE *>(19, root));
}

TEST(PoolDropTest, ChunksStayWithoutAFunctionToGiveThemBack) {
    alignas(8) char area_memory[64];
    SourcedPool pool;
    ASSERT_NE(pool.allocate(4000), nullptr);
    pool.head()->mph_unsbreak = nullptr;
    EXPECT_EQ(com___unsbreak(pool, area_memory), CS_FAIL);
    EXPECT_EQ(comn_mmdrop(pool, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(pool.source.memory.count(), 1U);
}

TEST(PoolDropDeathTest, StaleHandlesAndStrangeOptionsEndTheProcess) {
    SourcedPool pool;
    EXPECT_NULL_REPORT(comn_mmdrop(nullptr, MM_DROP_FORCE), "commmgr");
    EXPECT_BOMB(comn_mmdrop(pool, 0), "commmgr");
    EXPECT_BOMB(comn_mmdrop(pool, 301), "commmgr");
}

TEST(PoolDropDeathTest, ADroppedHandleTripsAnAssertionInEveryCall) {
    SourcedPool pool;
    char *block = pool.allocate(10);
    ASSERT_EQ(pool.drop(), CS_SUCCEED);
    CS_VOID *result = nullptr;
    CS_VOID *old = block;
    EXPECT_BOMB(comn_mmdrop(pool, MM_DROP_FORCE), "commmgr");
    EXPECT_NULL_REPORT(comn_mmalloc(pool, 1, &result), "commmgr");
    EXPECT_NULL_REPORT(comn_mmrealloc(pool, 1, &old), "commmgr");
    EXPECT_BOMB(comn_mmfree(pool, block), "commmgr");
    EXPECT_NULL_REPORT(comn_mmproperty(pool, MM_GET, MM_PROP_TYPE, &result, 4, nullptr), "commmgr");
    const ReturningAssertions returning;
    EXPECT_EQ(comn_mmdrop(pool, MM_DROP_FORCE), CS_FAIL);
    EXPECT_EQ(comn_mmalloc(pool, 1, &result), CS_FAIL);
    EXPECT_EQ(comn_mmrealloc(pool, 1, &old), CS_FAIL);
    EXPECT_EQ(comn_mmfree(pool, block), CS_FAIL);
    EXPECT_EQ(comn_mmproperty(pool, MM_GET, MM_PROP_TYPE, &result, 4, nullptr), CS_FAIL);
    EXPECT_EQ(returning.count(), 5);
    EXPECT_EQ(result, nullptr);
}

TEST(PoolDropDeathTest, SubpoolCallsCheckTheTree) {
    SourcedPool pool;
    MM_HANDLE *none = nullptr;
    MM_HANDLE *child = make_subpool(pool, 1);
    MM_HANDLE *grandchild = make_subpool(child, 2);
    ASSERT_NE(grandchild, nullptr);
    EXPECT_NULL_REPORT(com___subpool(nullptr, 1, &child), "commmgr");
    EXPECT_NULL_REPORT(com___subpool(pool, 1, nullptr), "commmgr");
    EXPECT_NULL_REPORT(com___subpool(pool, 1, &none), "commmgr");
    EXPECT_NULL_REPORT(com___remove_pool(nullptr), "commmgr");
    EXPECT_NULL_REPORT(com___remove_subpool(nullptr), "commmgr");
    EXPECT_NULL_REPORT(com___remove_subpool(pool), "commmgr"); // a root has no parent
    EXPECT_BOMB(com___remove_subpool(child), "commmgr");       // it has a child
    MM_HANDLE stray = *grandchild;
    EXPECT_BOMB(com___remove_subpool(&stray), "commmgr"); // not among the children
    MM_HANDLE *kept = child->mmh_child;
    child->mmh_child = nullptr;
    EXPECT_BOMB(com___remove_subpool(grandchild), "commmgr"); // the parent has none
    child->mmh_child = kept;

    const ReturningAssertions returning;
    EXPECT_EQ(com___subpool(nullptr, 1, &child), CS_FAIL);
    EXPECT_EQ(com___subpool(pool, 1, nullptr), CS_FAIL);
    EXPECT_EQ(com___subpool(pool, 1, &none), CS_FAIL);
    EXPECT_EQ(com___remove_pool(nullptr), CS_FAIL);
    EXPECT_EQ(com___remove_subpool(nullptr), CS_FAIL);
    EXPECT_EQ(com___remove_subpool(pool), CS_FAIL);
    EXPECT_EQ(com___remove_subpool(child), CS_FAIL);
    EXPECT_EQ(com___remove_subpool(&stray), CS_FAIL);
    EXPECT_EQ(comn_mmdrop(pool, 0), CS_FAIL);
    EXPECT_EQ(comn_mmdrop(nullptr, MM_DROP_FORCE), CS_FAIL);
    EXPECT_EQ(returning.count(), 10);
    EXPECT_EQ(child->mmh_child, grandchild);
    EXPECT_EQ(pool->mmh_child, child);
}

// ---- Out of memory ------------------------------------------------------------------------------------------------

// A life of a pool on a context; answers the first status that is not a success.
CS_RETCODE live(CS_CONTEXT *context, CS_INT type) {
    MM_HANDLE *mmh = nullptr;
    CS_RETCODE first = comn_mminit(context, &mmh);
    if (first != CS_SUCCEED) {
        EXPECT_EQ(mmh, nullptr);
        return first;
    }
    set_integer(mmh, MM_PROP_TYPE, type);
    set_integer(mmh, MM_PROP_BLOCKSIZE, 1000);
    set_integer(mmh, MM_PROP_CHUNKSIZE, 1200);
    std::vector<CS_VOID *> blocks;
    for (int i = 0; i < 60; ++i) {
        CS_VOID *block = nullptr;
        const CS_INT size = type == MM_UNIFORM ? 100 : 40 + i * 37;
        const CS_RETCODE status = comn_mmalloc(mmh, size, &block);
        if (status == CS_SUCCEED) {
            EXPECT_TRUE(is_zero(block, static_cast<std::size_t>(size)));
            std::memset(block, i, static_cast<std::size_t>(size));
            blocks.push_back(block);
        } else {
            EXPECT_EQ(block, nullptr);
            first = first == CS_SUCCEED ? status : first;
        }
        EXPECT_TRUE(is_store_sound(mmh));
        if (i % 3 == 2 && type != MM_ALLOCONLY && !blocks.empty()) {
            EXPECT_EQ(comn_mmfree(mmh, blocks.back()), CS_SUCCEED);
            blocks.pop_back();
        }
        if (i % 7 == 6 && type == MM_BUDDY && !blocks.empty()) {
            const CS_VOID *before = blocks.back();
            const CS_RETCODE moved = comn_mmrealloc(mmh, 3000, &blocks.back());
            if (moved != CS_SUCCEED) {
                EXPECT_EQ(blocks.back(), before);
                first = first == CS_SUCCEED ? moved : first;
            }
        }
    }
    MM_HANDLE *child = mmh;
    const CS_RETCODE status = com___subpool(mmh, 1, &child);
    if (status != CS_SUCCEED) {
        EXPECT_EQ(mmh->mmh_child, nullptr);
        first = first == CS_SUCCEED ? status : first;
    }
    EXPECT_EQ(comn_mmdrop(mmh, MM_DROP_FORCE), CS_SUCCEED);
    return first;
}

TEST(PoolOutOfMemoryTest, EveryAllocationOfTheContextFailsOnceAndForGood) {
    for (const CS_INT type : {MM_BUDDY, MM_UNIFORM, MM_ALLOCONLY}) {
        PoolContext whole;
        ASSERT_EQ(live(whole, type), CS_SUCCEED);
        const int requests = static_cast<int>(whole.sizes.size());
        ASSERT_GT(requests, 5);
        for (const bool lasting : {false, true}) {
            for (int n = 1; n <= requests; ++n) {
                PoolContext context;
                context.refusal = {n, lasting};
                EXPECT_EQ(live(context, type), CS_MEM_ERROR) << type << ' ' << n << ' ' << lasting;
                EXPECT_EQ(context.memory.count(), 0U) << type << ' ' << n << ' ' << lasting;
                EXPECT_EQ(context.bad_frees, 0);
            }
        }
    }
}

TEST(PoolOutOfMemoryTest, TheMaximumBoundsWhatIsObtainedOverTheLifeOfThePool) {
    SourcedPool pool(MM_BUDDY, 4096, 4144);
    ASSERT_EQ(set_integer(pool, MM_PROP_MAXSIZE, 3 * 5040), CS_SUCCEED);
    CS_VOID *block = nullptr;
    for (int i = 1; i <= 3; ++i) {
        ASSERT_EQ(comn_mmalloc(pool, 4992, &block), CS_SUCCEED); // a chunk of 5040 of its own
        EXPECT_EQ(pool.head()->mph_totalsize, i * 5040);
        ASSERT_EQ(comn_mmfree(pool, block), CS_SUCCEED);
        EXPECT_EQ(pool.source.returned, i) << "the chunk went back with its last block";
        EXPECT_EQ(pool.head()->mph_totalsize, i * 5040) << "and still counts";
    }
    block = nullptr;
    EXPECT_EQ(comn_mmalloc(pool, 4992, &block), CS_MEM_ERROR);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(pool.source.sizes.size(), 3U) << "the source is not asked";
    EXPECT_EQ(set_integer(pool, MM_PROP_MAXSIZE, 4 * 5040), CS_SUCCEED);
    EXPECT_EQ(comn_mmalloc(pool, 4992, &block), CS_SUCCEED);
}

} // namespace

// The properties of a pool, row by row, and when its lock is taken and given back.
#include "support/assertions.h"
#include "support/pools.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace support;

namespace {

constexpr CS_INT FIRST = MM_PROP_TYPE;
constexpr CS_INT LAST = MM_PROP_BLOCKSIZE;
constexpr CS_INT UNWRITTEN = -77;

// What a get answers in a buffer of 16 known bytes.
struct Answer {
    CS_RETCODE status;
    CS_INT outlen = UNWRITTEN;
    unsigned char bytes[16];

    Answer(MM_HANDLE *mmh, CS_INT property, CS_INT buflen = MM_OPT_UNUSED) {
        std::memset(bytes, 0xC3, sizeof bytes);
        status = comn_mmproperty(mmh, MM_GET, property, bytes, buflen, &outlen);
    }
    CS_INT integer() const { return static_cast<CS_INT>(word_at(bytes)); }
    const void *pointer() const {
        const void *value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    // Bytes from the start that are not as they were.
    int written() const {
        int count = 16;
        while (count > 0 && bytes[count - 1] == 0xC3)
            --count;
        return count;
    }
};

void expect_integer(const Answer &answer, CS_INT value) {
    EXPECT_EQ(answer.status, CS_SUCCEED);
    EXPECT_EQ(answer.outlen, 4);
    EXPECT_EQ(answer.integer(), value);
    EXPECT_LE(answer.written(), 4);
}

void expect_pointer(const Answer &answer, const void *value) {
    EXPECT_EQ(answer.status, CS_SUCCEED);
    EXPECT_EQ(answer.outlen, 8);
    EXPECT_EQ(answer.pointer(), value);
    EXPECT_LE(answer.written(), 8);
}

CS_RETCODE clear(MM_HANDLE *mmh, CS_INT property) {
    return comn_mmproperty(mmh, MM_CLEAR, property, nullptr, MM_OPT_UNUSED, nullptr);
}

// ---- Values -----------------------------------------------------------------------------------------------------

TEST(PoolPropertyTest, NumbersAreTheSystemsOwn) {
    EXPECT_EQ(MM_TYPE_NONE, 2235);
    EXPECT_EQ(MM_BUDDY, 2236);
    EXPECT_EQ(MM_ALLOCONLY, 2237);
    EXPECT_EQ(MM_UNIFORM, 2238);
    EXPECT_EQ(MM_NOLIMIT, -9999);
    EXPECT_EQ(MM_DROP_FORCE, 300);
    EXPECT_EQ(MM_OPT_UNUSED, -99999);
    EXPECT_EQ(MM_EBADPROP, -214);
    EXPECT_EQ(MM_GET, 33);
    EXPECT_EQ(MM_SET, 34);
    EXPECT_EQ(MM_CLEAR, 35);
    const CS_INT properties[] = {MM_PROP_TYPE,      MM_PROP_SBREAK,  MM_PROP_PARAM,   MM_PROP_UNSBREAK,
                                 MM_PROP_LOCK,      MM_PROP_LOCKARG, MM_PROP_UNLOCK,  MM_PROP_CHUNKSIZE,
                                 MM_PROP_MAXSIZE,   MM_PROP_ADDHEAP, MM_PROP_HANDLESIZE, MM_PROP_SUBPOOL,
                                 MM_PROP_BLOCKSIZE};
    CS_INT expected = 1235;
    for (const CS_INT property : properties)
        EXPECT_EQ(property, expected++);
}

TEST(PoolPropertyTest, TypeIsSetUntilTheFirstAllocation) {
    SourcedPool pool;
    expect_integer(Answer(pool, MM_PROP_TYPE), MM_BUDDY);
    for (const CS_INT type : {MM_TYPE_NONE, MM_ALLOCONLY, MM_UNIFORM, MM_BUDDY}) {
        EXPECT_EQ(set_integer(pool, MM_PROP_TYPE, type), CS_SUCCEED);
        expect_integer(Answer(pool, MM_PROP_TYPE), type);
    }
    ASSERT_NE(pool.allocate(1), nullptr);
    EXPECT_EQ(set_integer(pool, MM_PROP_TYPE, MM_UNIFORM), CS_FAIL);
    expect_integer(Answer(pool, MM_PROP_TYPE), MM_BUDDY);
}

TEST(PoolPropertyTest, AFailedAllocationFreezesNothing) {
    SourcedPool pool;
    pool.source.refusal = {1, true};
    EXPECT_EQ(pool.allocate(1), nullptr);
    EXPECT_EQ(set_integer(pool, MM_PROP_TYPE, MM_UNIFORM), CS_SUCCEED);
    EXPECT_EQ(set_integer(pool, MM_PROP_BLOCKSIZE, 512), CS_SUCCEED);
}

TEST(PoolPropertyTest, SourceFunctionsAreSetAndTold) {
    SourcedPool pool;
    expect_pointer(Answer(pool, MM_PROP_SBREAK), as_buffer(ChunkSource::obtain));
    expect_pointer(Answer(pool, MM_PROP_UNSBREAK), as_buffer(ChunkSource::give_back));
    ASSERT_NE(pool.allocate(1), nullptr);
    EXPECT_EQ(set_pointer(pool, MM_PROP_SBREAK, as_buffer(com___sbreak_ctx)), CS_SUCCEED);
    expect_pointer(Answer(pool, MM_PROP_SBREAK), as_buffer(com___sbreak_ctx));
    EXPECT_EQ(set_pointer(pool, MM_PROP_UNSBREAK, as_buffer(com___unsbreak_ctx)), CS_SUCCEED);
    expect_pointer(Answer(pool, MM_PROP_UNSBREAK), as_buffer(com___unsbreak_ctx));
    set_pointer(pool, MM_PROP_UNSBREAK, as_buffer(ChunkSource::give_back));
}

TEST(PoolPropertyTest, ParamAndLockargAreStoredEvenNull) {
    SourcedPool pool;
    int argument = 0;
    EXPECT_EQ(set_pointer(pool, MM_PROP_LOCKARG, &argument), CS_SUCCEED);
    EXPECT_EQ(pool.head()->mph_lockarg, &argument);
    EXPECT_EQ(set_pointer(pool, MM_PROP_LOCKARG, nullptr), CS_SUCCEED);
    EXPECT_EQ(pool.head()->mph_lockarg, nullptr);
    EXPECT_EQ(pool.head()->mph_param, &pool.source);
    EXPECT_EQ(set_pointer(pool, MM_PROP_PARAM, nullptr), CS_SUCCEED);
    EXPECT_EQ(pool.head()->mph_param, nullptr);
}

TEST(PoolPropertyTest, OddityGetOfParamAndLockargWritesNothingButTheLength) {
    SourcedPool pool;
    int argument = 0;
    set_pointer(pool, MM_PROP_LOCKARG, &argument);
    for (const CS_INT property : {MM_PROP_PARAM, MM_PROP_LOCKARG}) {
        const Answer answer(pool, property);
        EXPECT_EQ(answer.status, CS_SUCCEED);
        EXPECT_EQ(answer.outlen, 8);
        EXPECT_EQ(answer.written(), 0);
        EXPECT_EQ(comn_mmproperty(pool, MM_GET, property, nullptr, 0, nullptr), CS_SUCCEED);
    }
}

TEST(PoolPropertyTest, ChunkSizeAndMaximumStaySettable) {
    SourcedPool pool;
    expect_integer(Answer(pool, MM_PROP_CHUNKSIZE), 4136);
    expect_integer(Answer(pool, MM_PROP_MAXSIZE), MM_NOLIMIT);
    ASSERT_NE(pool.allocate(1), nullptr);
    for (const CS_INT value : {1, 100'000, INT32_MAX}) {
        EXPECT_EQ(set_integer(pool, MM_PROP_CHUNKSIZE, value), CS_SUCCEED);
        expect_integer(Answer(pool, MM_PROP_CHUNKSIZE), value);
        EXPECT_EQ(set_integer(pool, MM_PROP_MAXSIZE, value), CS_SUCCEED);
        expect_integer(Answer(pool, MM_PROP_MAXSIZE), value);
    }
}

TEST(PoolPropertyTest, BlockSizeIsSetUntilTheFirstAllocation) {
    SourcedPool pool;
    expect_integer(Answer(pool, MM_PROP_BLOCKSIZE), 4096);
    EXPECT_EQ(set_integer(pool, MM_PROP_BLOCKSIZE, 1), CS_SUCCEED);
    EXPECT_EQ(set_integer(pool, MM_PROP_BLOCKSIZE, 1000), CS_SUCCEED);
    expect_integer(Answer(pool, MM_PROP_BLOCKSIZE), 1000);
    ASSERT_NE(pool.allocate(1), nullptr);
    EXPECT_EQ(set_integer(pool, MM_PROP_BLOCKSIZE, 2000), CS_FAIL);
    expect_integer(Answer(pool, MM_PROP_BLOCKSIZE), 1024 + 8);
}

TEST(PoolPropertyTest, AddheapLendsMemory) {
    alignas(8) char memory[5000];
    SourcedPool pool;
    EXPECT_EQ(comn_mmproperty(pool, MM_SET, MM_PROP_ADDHEAP, memory, sizeof memory, nullptr), CS_SUCCEED);
    EXPECT_EQ(pool.head()->mph_totalsize, 5000);
    EXPECT_EQ(pool.head()->mph_heap->status, MM_HEAP_CALLER);
    const char *block = pool.allocate(4000);
    EXPECT_TRUE(block > memory && block < memory + sizeof memory);
    EXPECT_TRUE(pool.source.sizes.empty());
}

TEST(PoolPropertyTest, HandleSizeNeedsNoHandle) {
    const Answer answer(nullptr, MM_PROP_HANDLESIZE);
    expect_integer(answer, static_cast<CS_INT>(sizeof(MmPoolHead) + sizeof(MM_HANDLE)));
    SourcedPool pool;
    EXPECT_EQ(set_integer(pool, MM_PROP_HANDLESIZE, 1), CS_FAIL);
    EXPECT_EQ(set_integer(nullptr, MM_PROP_HANDLESIZE, 1), CS_FAIL);
}

TEST(PoolPropertyTest, SubpoolIsFoundByItsTagAndNeverSet) {
    SourcedPool pool;
    MM_HANDLE *seven = pool; // not null on entry, as the call demands
    ASSERT_EQ(com___subpool(pool, 7, &seven), CS_SUCCEED);
    MM_HANDLE *eight = pool;
    ASSERT_EQ(com___subpool(pool, 8, &eight), CS_SUCCEED);
    expect_pointer(Answer(pool, MM_PROP_SUBPOOL, 7), seven);
    expect_pointer(Answer(pool, MM_PROP_SUBPOOL, 8), eight);
    CS_VOID *value = seven;
    EXPECT_EQ(comn_mmproperty(pool, MM_SET, MM_PROP_SUBPOOL, value, 7, nullptr), CS_FAIL);
}

TEST(PoolPropertyTest, OutlenMayBeNull) {
    SourcedPool pool;
    CS_INT value = 0;
    EXPECT_EQ(comn_mmproperty(pool, MM_GET, MM_PROP_CHUNKSIZE, &value, 4, nullptr), CS_SUCCEED);
    EXPECT_EQ(value, 4136);
    CS_VOID *function = nullptr;
    EXPECT_EQ(comn_mmproperty(pool, MM_GET, MM_PROP_SBREAK, &function, 8, nullptr), CS_SUCCEED);
    EXPECT_EQ(function, as_buffer(ChunkSource::obtain));
}

TEST(PoolPropertyTest, IntegersNeedNoAlignment) {
    SourcedPool pool;
    char bytes[9];
    const CS_INT value = 5000;
    std::memcpy(bytes + 1, &value, sizeof value);
    EXPECT_EQ(comn_mmproperty(pool, MM_SET, MM_PROP_CHUNKSIZE, bytes + 1, 4, nullptr), CS_SUCCEED);
    EXPECT_EQ(pool.head()->mph_chunksize, 5000);
    EXPECT_EQ(comn_mmproperty(pool, MM_GET, MM_PROP_CHUNKSIZE, bytes + 3, 4, nullptr), CS_SUCCEED);
    EXPECT_EQ(word_at(bytes + 3), 5000U);
}

// ---- Broken contracts ---------------------------------------------------------------------------------------------

TEST(PoolPropertyDeathTest, UnknownActionsAndPropertiesEndTheProcess) {
    SourcedPool pool;
    CS_INT value = 1;
    EXPECT_BOMB(comn_mmproperty(pool, 32, MM_PROP_TYPE, &value, 4, nullptr), "commmgr");
    EXPECT_BOMB(comn_mmproperty(pool, 36, MM_PROP_TYPE, &value, 4, nullptr), "commmgr");
    EXPECT_BOMB(comn_mmproperty(pool, MM_GET, FIRST - 1, &value, 4, nullptr), "commmgr");
    EXPECT_BOMB(comn_mmproperty(pool, MM_GET, LAST + 1, &value, 4, nullptr), "commmgr");
    EXPECT_BOMB(comn_mmproperty(pool, MM_CLEAR, MM_PROP_PARAM, nullptr, 0, nullptr), "commmgr");
    EXPECT_BOMB(comn_mmproperty(pool, MM_CLEAR, MM_PROP_HANDLESIZE, nullptr, 0, nullptr), "commmgr");
    EXPECT_BOMB(comn_mmproperty(pool, MM_GET, MM_PROP_ADDHEAP, &value, 4, nullptr), "commmgr");
    EXPECT_NULL_REPORT(comn_mmproperty(nullptr, MM_GET, MM_PROP_TYPE, &value, 4, nullptr), "commmgr");
    EXPECT_NULL_REPORT(comn_mmproperty(pool, MM_GET, MM_PROP_TYPE, nullptr, 4, nullptr), "commmgr");
    EXPECT_NULL_REPORT(comn_mmproperty(nullptr, MM_GET, MM_PROP_HANDLESIZE, nullptr, 4, nullptr), "commmgr");
}

TEST(PoolPropertyDeathTest, ValuesOutOfRangeEndTheProcess) {
    SourcedPool pool;
    EXPECT_BOMB(set_integer(pool, MM_PROP_TYPE, 2234), "commmgr");
    EXPECT_BOMB(set_integer(pool, MM_PROP_TYPE, 2239), "commmgr");
    for (const CS_INT property : {MM_PROP_CHUNKSIZE, MM_PROP_MAXSIZE, MM_PROP_BLOCKSIZE}) {
        EXPECT_BOMB(set_integer(pool, property, 0), "commmgr");
        EXPECT_BOMB(set_integer(pool, property, MM_NOLIMIT), "commmgr");
    }
    for (const CS_INT property : {MM_PROP_TYPE, MM_PROP_SBREAK, MM_PROP_UNSBREAK, MM_PROP_LOCK, MM_PROP_UNLOCK,
                                  MM_PROP_CHUNKSIZE, MM_PROP_MAXSIZE, MM_PROP_BLOCKSIZE})
        EXPECT_NULL_REPORT(set_pointer(pool, property, nullptr), "commmgr");
    char memory[16];
    EXPECT_BOMB(comn_mmproperty(pool, MM_SET, MM_PROP_ADDHEAP, memory, 16, nullptr), "commmgr_store");
    EXPECT_NULL_REPORT(comn_mmproperty(pool, MM_SET, MM_PROP_ADDHEAP, nullptr, 100, nullptr), "commmgr_store");
}

TEST(PoolPropertyDeathTest, OddityAskingForASubpoolThatIsNotThereEndsInANullReport) {
    SourcedPool pool;
    CS_VOID *value = nullptr;
    EXPECT_NULL_REPORT(comn_mmproperty(pool, MM_GET, MM_PROP_SUBPOOL, &value, 7, nullptr), "commmgr");
}

TEST(PoolPropertyTest, ReturningAssertionsAnswerAndChangeNothing) {
    SourcedPool pool;
    const MmPoolHead head = *pool.head();
    char handle[sizeof(MM_HANDLE)];
    std::memcpy(handle, static_cast<MM_HANDLE *>(pool), sizeof handle);
    int reports = 0;
    const ReturningAssertions returning;
    const auto expect = [&](CS_RETCODE status, CS_RETCODE expected) {
        EXPECT_EQ(status, expected);
        EXPECT_EQ(returning.count(), ++reports);
    };
    CS_INT value = 1;
    expect(comn_mmproperty(pool, 32, MM_PROP_TYPE, &value, 4, nullptr), CS_FAIL);
    expect(comn_mmproperty(pool, MM_GET, FIRST - 1, &value, 4, nullptr), CS_FAIL);
    expect(comn_mmproperty(pool, MM_GET, LAST + 1, &value, 4, nullptr), CS_FAIL);
    expect(comn_mmproperty(pool, MM_CLEAR, MM_PROP_PARAM, nullptr, 0, nullptr), CS_FAIL);
    expect(comn_mmproperty(pool, MM_CLEAR, MM_PROP_HANDLESIZE, nullptr, 0, nullptr), CS_FAIL);
    expect(comn_mmproperty(pool, MM_GET, MM_PROP_ADDHEAP, &value, 4, nullptr), CS_FAIL);
    expect(comn_mmproperty(nullptr, MM_GET, MM_PROP_TYPE, &value, 4, nullptr), CS_FAIL);
    expect(comn_mmproperty(pool, MM_GET, MM_PROP_TYPE, nullptr, 4, nullptr), CS_FAIL);
    expect(comn_mmproperty(pool, MM_GET, MM_PROP_SUBPOOL, &value, 7, nullptr), CS_FAIL);
    expect(comn_mmproperty(pool, MM_SET, MM_PROP_ADDHEAP, nullptr, 100, nullptr), CS_FAIL);
    expect(comn_mmproperty(pool, MM_SET, MM_PROP_ADDHEAP, &value, 16, nullptr), CS_FAIL);
    EXPECT_EQ(value, 1);
    for (const CS_INT property : {MM_PROP_TYPE, MM_PROP_CHUNKSIZE, MM_PROP_MAXSIZE, MM_PROP_BLOCKSIZE})
        expect(set_integer(pool, property, -1), MM_EBADPROP);
    expect(set_integer(pool, MM_PROP_TYPE, 2239), MM_EBADPROP);
    for (const CS_INT property : {MM_PROP_TYPE, MM_PROP_SBREAK, MM_PROP_UNSBREAK, MM_PROP_LOCK, MM_PROP_UNLOCK,
                                  MM_PROP_CHUNKSIZE, MM_PROP_MAXSIZE, MM_PROP_BLOCKSIZE})
        expect(set_pointer(pool, property, nullptr), MM_EBADPROP);
    EXPECT_EQ(std::memcmp(&head, pool.head(), sizeof head), 0);
    EXPECT_EQ(std::memcmp(handle, static_cast<MM_HANDLE *>(pool), sizeof handle), 0);
}

// ---- The lock ------------------------------------------------------------------------------------------------------

// Writes down every call: "take", "give", and what else the test notes.
struct Lock {
    std::string calls;
    CS_RETCODE take_status = CS_SUCCEED;
    CS_RETCODE give_status = CS_SUCCEED;
    const MM_HANDLE *last = nullptr;
    const char *block = nullptr; // looked at when the lock is given back
    bool block_was_zero = false;

    static CS_RETCODE take(MM_HANDLE *mmh, CS_VOID *argument) {
        auto *self = static_cast<Lock *>(argument);
        self->last = mmh;
        self->calls += "take ";
        return self->take_status;
    }
    static CS_RETCODE give(MM_HANDLE *mmh, CS_VOID *argument) {
        auto *self = static_cast<Lock *>(argument);
        self->last = mmh;
        self->calls += "give ";
        if (self->block != nullptr)
            self->block_was_zero = is_zero(self->block, 16);
        return self->give_status;
    }
    std::string taken() { return std::exchange(calls, ""); }
    void install(MM_HANDLE *mmh) {
        set_pointer(mmh, MM_PROP_LOCKARG, this);
        set_pointer(mmh, MM_PROP_UNLOCK, as_buffer(give));
        set_pointer(mmh, MM_PROP_LOCK, as_buffer(take));
    }
};

TEST(PoolLockTest, SettingTheLockLastCallsNeitherFunction) {
    SourcedPool pool;
    Lock lock;
    lock.install(pool);
    EXPECT_EQ(lock.taken(), "");
    expect_pointer(Answer(pool, MM_PROP_LOCK), as_buffer(Lock::take));
    EXPECT_EQ(lock.taken(), "take give ");
    expect_pointer(Answer(pool, MM_PROP_UNLOCK), as_buffer(Lock::give));
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(lock.last, static_cast<MM_HANDLE *>(pool));
    clear(pool, MM_PROP_LOCK);
}

TEST(PoolLockTest, OddityTheUnlockSetLastIsCalledWithoutALock) {
    SourcedPool pool;
    Lock lock;
    set_pointer(pool, MM_PROP_LOCKARG, &lock);
    set_pointer(pool, MM_PROP_LOCK, as_buffer(Lock::take));
    EXPECT_EQ(lock.taken(), "");
    set_pointer(pool, MM_PROP_UNLOCK, as_buffer(Lock::give));
    EXPECT_EQ(lock.taken(), "give ");
    clear(pool, MM_PROP_LOCK);
}

TEST(PoolLockTest, ALoneLockOrUnlockIsNeverCalled) {
    for (const CS_INT property : {MM_PROP_LOCK, MM_PROP_UNLOCK}) {
        SourcedPool pool;
        Lock lock;
        set_pointer(pool, MM_PROP_LOCKARG, &lock);
        set_pointer(pool, property, as_buffer(property == MM_PROP_LOCK ? Lock::take : Lock::give));
        EXPECT_NE(pool.allocate(10), nullptr);
        EXPECT_EQ(pool.drop(), CS_SUCCEED);
        EXPECT_EQ(lock.taken(), "");
    }
}

TEST(PoolLockTest, ASecondLockIsRefused) {
    SourcedPool pool;
    Lock lock;
    lock.install(pool);
    EXPECT_EQ(set_pointer(pool, MM_PROP_LOCK, as_buffer(com___lock_ctx)), CS_FAIL);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(pool.head()->mph_lock, Lock::take);
    clear(pool, MM_PROP_LOCK);
}

TEST(PoolLockTest, EveryOperationButTheHandleSizeTakesItOnceAndGivesItBack) {
    SourcedPool pool;
    Lock lock;
    lock.install(pool);
    CS_VOID *block = nullptr;
    EXPECT_EQ(comn_mmalloc(pool, 30, &block), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(comn_mmrealloc(pool, 300, &block), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(comn_mmrealloc(pool, 6000, &block), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(comn_mmfree(pool, block), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(set_integer(pool, MM_PROP_CHUNKSIZE, 10'000), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(set_integer(pool, MM_PROP_BLOCKSIZE, 10'000), CS_FAIL);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(Answer(pool, MM_PROP_HANDLESIZE).status, CS_SUCCEED);
    EXPECT_EQ(set_integer(pool, MM_PROP_HANDLESIZE, 1), CS_FAIL);
    EXPECT_EQ(lock.taken(), "") << "the size of a handle is no pool's";
    pool.source.refusal = {1, true};
    EXPECT_EQ(comn_mmalloc(pool, 100'000, &block), CS_MEM_ERROR);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(pool.drop(), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give "); // one take, before bit 32; the give looks at no bit
}

TEST(PoolLockTest, WhileThePoolIsBeingRemovedNothingTakesItButItIsGivenBack) {
    SourcedPool pool;
    Lock lock;
    lock.install(pool);
    pool.head()->mph_status |= MM_STAT_REMOVING;
    EXPECT_NE(pool.allocate(10), nullptr);
    EXPECT_EQ(lock.taken(), "give ");
    pool.head()->mph_status &= ~MM_STAT_REMOVING;
    clear(pool, MM_PROP_LOCK);
}

TEST(PoolLockTest, ABlockIsClearedAfterTheLockIsGivenBack) {
    SourcedPool pool;
    char *block = pool.allocate(100);
    std::memset(block, 0x33, 100);
    comn_mmfree(pool, block);
    Lock lock;
    lock.install(pool);
    lock.block = block + 32; // behind the words of the free list
    ASSERT_EQ(pool.allocate(100), block);
    EXPECT_FALSE(lock.block_was_zero);
    EXPECT_TRUE(is_zero(block, 100));
    lock.block = nullptr;
    clear(pool, MM_PROP_LOCK);
}

TEST(PoolLockTest, AFailingLockChangesNothingAndItsStatusReturns) {
    SourcedPool pool;
    char *block = pool.allocate(100);
    Lock lock;
    lock.install(pool);
    const MmPoolHead head = *pool.head();
    const CS_INT order = static_cast<CS_INT>(header_word(block));
    lock.take_status = CS_CANCELED;
    CS_VOID *result = nullptr;
    EXPECT_EQ(comn_mmalloc(pool, 10, &result), CS_CANCELED);
    EXPECT_EQ(result, nullptr);
    result = block;
    EXPECT_EQ(comn_mmrealloc(pool, 1000, &result), CS_CANCELED);
    EXPECT_EQ(result, block);
    EXPECT_EQ(set_integer(pool, MM_PROP_CHUNKSIZE, 1), CS_CANCELED);
    EXPECT_EQ(Answer(pool, MM_PROP_CHUNKSIZE).status, CS_CANCELED);
    EXPECT_EQ(clear(pool, MM_PROP_LOCK), CS_CANCELED);
    EXPECT_EQ(comn_mmdrop(pool, MM_DROP_FORCE), CS_CANCELED);
    EXPECT_EQ(comn_mmdrop(pool, MM_OPT_UNUSED), CS_CANCELED);
    EXPECT_EQ(lock.taken(), "take take take take take take take ");
    EXPECT_EQ(std::memcmp(&head, pool.head(), sizeof head), 0);
    EXPECT_EQ(static_cast<CS_INT>(header_word(block)), order);
    {
        const ReturningAssertions returning;
        EXPECT_EQ(comn_mmfree(pool, block), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(static_cast<CS_INT>(header_word(block)), order);
    }
    lock.take_status = CS_SUCCEED;
    clear(pool, MM_PROP_LOCK);
}

TEST(PoolLockDeathTest, AFailingLockInAFreeEndsTheProcess) {
    SourcedPool pool;
    char *block = pool.allocate(100);
    Lock lock;
    lock.install(pool);
    lock.take_status = CS_BUSY;
    EXPECT_BOMB(comn_mmfree(pool, block), "commmgr");
    lock.take_status = CS_SUCCEED;
    clear(pool, MM_PROP_LOCK);
}

TEST(PoolLockTest, AnyOfTheThreeClearsTheWholeLockAndAnswersTheUnlock) {
    for (const CS_INT property : {MM_PROP_LOCK, MM_PROP_LOCKARG, MM_PROP_UNLOCK}) {
        SourcedPool pool;
        Lock lock;
        lock.install(pool);
        lock.give_status = CS_INTERRUPT;
        EXPECT_EQ(clear(pool, property), CS_INTERRUPT);
        EXPECT_EQ(lock.taken(), "take give ");
        EXPECT_EQ(pool.head()->mph_lock, nullptr);
        EXPECT_EQ(pool.head()->mph_unlock, nullptr);
        EXPECT_EQ(pool.head()->mph_lockarg, nullptr);
        EXPECT_EQ(clear(pool, property), CS_SUCCEED);
        EXPECT_NE(pool.allocate(10), nullptr);
        EXPECT_EQ(lock.taken(), "");
    }
}

TEST(PoolLockTest, OddityAClearCallsALoneUnlockThatNoLockPreceded) {
    SourcedPool pool;
    Lock lock;
    set_pointer(pool, MM_PROP_LOCKARG, &lock);
    set_pointer(pool, MM_PROP_UNLOCK, as_buffer(Lock::give));
    EXPECT_EQ(clear(pool, MM_PROP_LOCK), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "give ");
}

TEST(PoolLockTest, SubpoolsShareTheLockAndPassTheirOwnHandle) {
    SourcedPool pool;
    Lock lock;
    MM_HANDLE *child = pool;
    ASSERT_EQ(com___subpool(pool, 1, &child), CS_SUCCEED);
    lock.install(pool);
    CS_VOID *block = nullptr;
    EXPECT_EQ(comn_mmalloc(child, 10, &block), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(lock.last, child);
    EXPECT_EQ(comn_mmdrop(pool, MM_OPT_UNUSED), CS_BUSY);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(comn_mmdrop(child, MM_OPT_UNUSED), CS_SUCCEED);
    EXPECT_EQ(lock.taken(), "take give ");
    EXPECT_EQ(lock.last, static_cast<MM_HANDLE *>(pool)) << "the child's handle is gone when the lock goes back";
    clear(pool, MM_PROP_LOCK);
}

} // namespace

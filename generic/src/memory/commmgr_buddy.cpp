// The buddy pool.
//
// A region of 1 << (bpmax + 4) bytes is taken from the store and split in halves down to the order that a request
// needs; a block of order n takes 1 << (n + 4) bytes with its 8-byte header. Regions are not aligned to their
// size, so each header carries the low address bits of its region's start: the offset from there tells which of
// two neighbours is a block's buddy.
//
// Merging is lazy. A free only puts its block on the list of its order; com___buddy_compact merges when an
// allocation would otherwise take a new region.
#include "diag/check.h"
#include "memory/store.h"

#include <algorithm>
#include <cstring>

using namespace dlx;

namespace {

constexpr CS_UINT OVERSIZED = 0x80000000; // served from the store; the low 31 bits are the size
constexpr CS_UINT FREE = 0x40000000;
constexpr CS_UINT REGION = 0x1FFFF0;      // address bits 2 to 18 of the region's start
constexpr CS_UINT ORDER = 0xF;
constexpr CS_UINT ADDRESS = 0x7FFFC;      // those bits in an address
constexpr CS_UINT SAME_PAIR = 0xBFFFFFF0; // all that two buddies share, free or not
constexpr CS_INT HEADER = offsetof(MmDList, next);
constexpr CS_INT MAX_ORDER = MM_BUDDY_ORDERS - 1;

CS_UINT address_bits(const void *p) { return static_cast<CS_UINT>(reinterpret_cast<std::uintptr_t>(p)) & ADDRESS; }
CS_INT order_of(const MmDList *block) { return static_cast<CS_INT>(block->size & ORDER); }
CS_INT block_bytes(CS_INT order) { return 1 << (order + 4); }

MmDList *header_of(CS_VOID *memory) { return reinterpret_cast<MmDList *>(bytes_of(memory) - HEADER); }
CS_VOID *memory_of(MmDList *block) { return bytes_of(block) + HEADER; }

void push(MmBuddyPool &pool, CS_INT order, MmDList *block) {
    block->prev = nullptr;
    block->next = pool.free[order];
    if (block->next != nullptr)
        block->next->prev = block;
    pool.free[order] = block;
}

void unlink(MmBuddyPool &pool, CS_INT order, MmDList *block) {
    if (block->prev != nullptr)
        block->prev->next = block->next;
    else
        pool.free[order] = block->next;
    if (block->next != nullptr)
        block->next->prev = block->prev;
}

// Four less than the bit length of x, which is not negative; -3 for 0.
CS_INT order_for(CS_INT x) { return x == 0 ? -3 : 28 - __builtin_clz(static_cast<unsigned>(x)); }

// Runs for each allocation until one has succeeded: a pool whose first allocation fails starts the next one
// with the block size that this one has set.
//
// A block size above 512 KB gives the order 16, which lands on the lowest address bit of a header. What a caller
// sees: blocks are served and hold what they should, but one of the full order reads as order 0, so a realloc moves
// only 16 bytes of it and a free loses its region; and merging looks for buddies four bytes off, which ends in an
// assertion once memory runs short. Block sizes up to 512 KB are sound.
void begin_pool(MM_HANDLE *mmh) {
    MmBuddyPool &pool = mmh->mmh_pool.af;
    pool.bpmax = order_for(mmh->mmh_blocksize - 1);
    if (pool.bpmax > 15)
        pool.bpmax = MAX_ORDER; // kept although it does not fit the order field of a header
    mmh->mmh_blocksize = block_bytes(pool.bpmax) + HEADER;
    for (CS_INT order = 0; order < MM_BUDDY_ORDERS; ++order)
        pool.free[order] = order <= pool.bpmax ? nullptr : reinterpret_cast<MmDList *>(~std::uintptr_t{0});
}

CS_RETCODE add_region(MM_HANDLE *mmh) {
    MmBuddyPool &pool = mmh->mmh_pool.af;
    CS_VOID *memory = nullptr;
    const CS_RETCODE status = com___getblock(mmh, mmh->mmh_blocksize, &memory);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    auto *region = static_cast<MmDList *>(memory);
    region->size = static_cast<CS_UINT>(pool.bpmax) | address_bits(region) << 2 | FREE;
    push(pool, pool.bpmax, region);
    return CS_SUCCEED;
}

// Makes a block of the order free: by a split, else by merging, else from a new region.
CS_RETCODE provide(MM_HANDLE *mmh, CS_INT order) {
    if (com___buddy_split(mmh, order) == CS_SUCCEED || com___buddy_compact(mmh, order) == CS_SUCCEED)
        return CS_SUCCEED;
    const CS_RETCODE status = add_region(mmh);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    if (mmh->mmh_pool.af.bpmax > order)
        COM_REQUIRE(com___buddy_split(mmh, order) == CS_SUCCEED, CS_FAIL);
    return CS_SUCCEED;
}

CS_RETCODE allocate_oversized(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    CS_VOID *memory = nullptr;
    const CS_RETCODE status = com___getblock(mmh, size + HEADER, &memory);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    auto *block = static_cast<MmDList *>(memory);
    block->size = static_cast<CS_UINT>(size) | OVERSIZED;
    *buffer = memory_of(block);
    return CS_SUCCEED;
}

// Which of the two neighbours of its size a block of order o was split from.
MmDList *buddy_of(MmDList *block, CS_INT o) {
    const CS_INT bytes = block_bytes(o);
    const auto offset = static_cast<CS_INT>(address_bits(block) - ((block->size & REGION) >> 2));
    const bool upper = (offset / bytes & 1) != 0;
    return reinterpret_cast<MmDList *>(bytes_of(block) + (upper ? -bytes : bytes));
}

// The bytes that a block is taken to hold. Its header counts among them, so a request up to 8 bytes beyond the
// payload still counts as held: callers see it stay in place.
CS_INT capacity_of(const MmDList *block) {
    if ((block->size & OVERSIZED) != 0)
        return static_cast<CS_INT>(block->size & ~OVERSIZED);
    return block_bytes(order_of(block));
}

} // namespace

CS_RETCODE com___buddy_split(MM_HANDLE *mmh, CS_INT index) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    MmBuddyPool &pool = mmh->mmh_pool.af;
    COM_REQUIRE(index >= 0 && index <= pool.bpmax, CS_FAIL);
    COM_REQUIRE(pool.free[index] == nullptr, CS_FAIL);
    CS_INT order = index + 1;
    while (order <= pool.bpmax && pool.free[order] == nullptr)
        ++order;
    if (order > pool.bpmax)
        return CS_FAIL; // an everyday answer, so it is not traced

    for (--order; order >= index; --order) {
        MmDList *lower = pool.free[order + 1];
        unlink(pool, order + 1, lower);
        auto *upper = reinterpret_cast<MmDList *>(bytes_of(lower) + block_bytes(order));
        lower->size = (lower->size & ~ORDER) | static_cast<CS_UINT>(order);
        upper->size = lower->size;
        push(pool, order, upper);
        push(pool, order, lower); // the lower half is served first
    }
    return CS_SUCCEED;
}

CS_RETCODE com___buddy_compact(MM_HANDLE *mmh, CS_INT size_index) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    MmBuddyPool &pool = mmh->mmh_pool.af;
    COM_REQUIRE(size_index <= pool.bpmax, CS_FAIL);
    bool merged = false;
    for (CS_INT order = 0; order < size_index; ++order) {
        merged = false; // only a merge into the wanted order counts
        MmDList *block = pool.free[order];
        while (block != nullptr) {
            MmDList *buddy = buddy_of(block, order);
            COM_REQUIRE((block->size & SAME_PAIR) == (buddy->size & SAME_PAIR), CS_FAIL);
            COM_REQUIRE(order_of(block) >= order_of(buddy), CS_FAIL);
            if (block->size != buddy->size) {
                block = block->next;
                continue;
            }
            // The walk goes on behind the block's predecessor, whatever now follows it.
            MmDList *before = block->prev == buddy ? buddy->prev : block->prev;
            unlink(pool, order, block);
            unlink(pool, order, buddy);
            MmDList *lower = std::min(block, buddy);
            lower->size = (lower->size & ~ORDER) | static_cast<CS_UINT>(order + 1);
            push(pool, order + 1, lower);
            merged = true;
            block = before != nullptr ? before->next : pool.free[order];
        }
    }
    return merged ? CS_SUCCEED : CS_FAIL;
}

CS_RETCODE com___buddy_malloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE(size >= 0, CS_FAIL);
    if (!is_live(mmh))
        begin_pool(mmh);
    if (size > MAX_REQUEST)
        return COM_TRACE(CS_MEM_ERROR);
    MmBuddyPool &pool = mmh->mmh_pool.af;

    constexpr CS_INT SMALLEST = 12; // no block is below order 1
    const CS_INT order = order_for(std::max(size, SMALLEST) + HEADER - 1);
    if (order > pool.bpmax)
        return allocate_oversized(mmh, size, buffer);
    if (pool.free[order] == nullptr) {
        const CS_RETCODE status = provide(mmh, order);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
    MmDList *block = pool.free[order];
    unlink(pool, order, block);
    block->size &= ~FREE;
    *buffer = memory_of(block);
    return CS_SUCCEED;
}

CS_RETCODE com___buddy_free(MM_HANDLE *mmh, CS_VOID *buf) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buf, CS_FAIL);
    COM_REQUIRE(is_live(mmh), CS_FAIL);
    COM_REQUIRE(mmh->mmh_type == MM_BUDDY, CS_FAIL);
    MmDList *block = header_of(buf);
    if ((block->size & OVERSIZED) != 0) {
        const CS_UINT word = block->size;
        block->size = (word & ~OVERSIZED) | FREE; // a second free of it would pass for one of a small block
        const CS_RETCODE status = com___putblock(mmh, block);
        if (status != CS_SUCCEED)
            block->size = word;
        return status;
    }
    COM_REQUIRE((block->size & FREE) == 0, CS_FAIL); // freed twice
    COM_REQUIRE(order_of(block) <= mmh->mmh_pool.af.bpmax, CS_FAIL);
    block->size |= FREE;
    push(mmh->mmh_pool.af, order_of(block), block);
    return CS_SUCCEED;
}

CS_RETCODE com___buddy_realloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE_PTR(*buffer, CS_FAIL);
    COM_REQUIRE(is_live(mmh), CS_FAIL);
    const CS_INT capacity = capacity_of(header_of(*buffer));
    if (size <= capacity)
        return CS_SUCCEED;
    CS_VOID *moved = nullptr;
    const CS_RETCODE status = com___buddy_malloc(mmh, size, &moved);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    // A region has eight bytes behind its last block, so this stays inside whatever the block was.
    std::memcpy(moved, *buffer, static_cast<std::size_t>(capacity));
    CS_VOID *old = *buffer;
    *buffer = moved;
    return com___buddy_free(mmh, old);
}

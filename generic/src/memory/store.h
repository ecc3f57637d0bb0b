// The lower level of a pool: chunks from the source, and blocks from the chunks. commmgr_store.cpp tells how.
#ifndef DLX_MEMORY_STORE_H
#define DLX_MEMORY_STORE_H

#include <dlxcomn/pool.h>

#include <cstddef>
#include <cstdint>

namespace dlx {

constexpr CS_INT POOL_ALIGNMENT = 8;
constexpr CS_INT BLOCK_HEADER = offsetof(MmList, link);                        // in front of a block of the store
constexpr CS_INT CHUNK_HEADER = offsetof(MmHeap, buffer) + BLOCK_HEADER;       // in front of a chunk's first payload
constexpr CS_INT MIN_CHUNK = CHUNK_HEADER + static_cast<CS_INT>(sizeof(MmList *)); // room for one block's link
constexpr CS_INT MAX_REQUEST = INT32_MAX - 4096; // sums with headers stay in a CS_INT

constexpr CS_INT round_up_8(CS_INT size) { return ((size - 1) & ~7) + 8; }

inline CS_BYTE *bytes_of(void *p) { return static_cast<CS_BYTE *>(p); }

// The link word of a block is what callers of the store hold.
inline CS_VOID *payload_of(MmList *block) { return &block->link; }
inline MmList *block_of(CS_VOID *payload) {
    return reinterpret_cast<MmList *>(bytes_of(payload) - BLOCK_HEADER);
}

inline bool is_aligned(const void *address) { return reinterpret_cast<std::uintptr_t>(address) % POOL_ALIGNMENT == 0; }

inline bool is_live(const MM_HANDLE *mmh) { return (mmh->mmh_status & MM_STAT_LIVE) != 0; }

// ---- Chunks by address -----------------------------------------------------------------------------------------
// A block that is freed is looked for among the chunks. Walking all of them is slow in a pool of hundreds, so the
// head keeps them in chains by the address range that they begin in. The chains may miss a chunk, and know only
// the first ranges of a large one: an address that they do not find is still searched for in the list of all.

constexpr unsigned RANGE_BITS = 13; // a chunk of the default size touches two ranges at most

inline std::uintptr_t range_of(const void *address) { return reinterpret_cast<std::uintptr_t>(address) >> RANGE_BITS; }
inline MmHeap *&chain_of(MmPoolHead *head, std::uintptr_t range) { return head->mph_chains[range % MM_CHUNK_CHAINS]; }

// The next chunk of a chain, as its distance in units of 8 bytes: it stands in the four bytes of the first block's
// header that nothing else uses, so that it costs no room.
inline std::int32_t &chain_link(MmHeap *chunk) {
    return *reinterpret_cast<std::int32_t *>(reinterpret_cast<CS_BYTE *>(&chunk->buffer) + sizeof(CS_UINT));
}
inline MmHeap *next_of_chain(MmHeap *chunk) {
    const std::int32_t distance = chain_link(chunk);
    return distance == 0 ? nullptr
                         : reinterpret_cast<MmHeap *>(bytes_of(chunk) + std::ptrdiff_t{distance} * POOL_ALIGNMENT);
}

inline bool is_inside(const void *address, const MmHeap *chunk) {
    return reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(chunk) <
           static_cast<std::uintptr_t>(chunk->size);
}

// The chunk that holds an address, or null.
inline MmHeap *find_chunk(const MM_HANDLE *mmh, const void *address) {
    MmHeap *newest = mmh->mmh_head->mph_heap; // in many a pool with large chunks the only one
    if (newest != nullptr && is_inside(address, newest))
        return newest;
    for (std::uintptr_t range = range_of(address), tries = 0; tries < 2; --range, ++tries)
        for (MmHeap *chunk = chain_of(mmh->mmh_head, range); chunk != nullptr; chunk = next_of_chain(chunk))
            if (is_inside(address, chunk))
                return chunk;
    for (MmHeap *chunk = mmh->mmh_head->mph_heap; chunk != nullptr; chunk = chunk->next)
        if (is_inside(address, chunk))
            return chunk;
    return nullptr;
}

// ---- What needs neither the store nor a check ------------------------------------------------------------------
// The everyday half of each kind's allocation. Null where there is more to do, with nothing changed.

inline CS_VOID *take_node(MM_HANDLE *mmh, CS_INT size) {
    MmUniformPool &pool = mmh->mmh_pool.u;
    if (!is_live(mmh) || size != pool.uniform_size || pool.free == nullptr)
        return nullptr;
    MmList *node = pool.free;
    pool.free = node->link;
    return payload_of(node);
}

inline void put_node(MM_HANDLE *mmh, CS_VOID *memory) {
    MmList *node = block_of(memory);
    node->link = mmh->mmh_pool.u.free;
    mmh->mmh_pool.u.free = node;
}

inline CS_VOID *take_from_area(MmList *area, CS_INT r) {
    CS_VOID *memory = area->link;
    area->size -= static_cast<CS_UINT>(r);
    area->link = reinterpret_cast<MmList *>(bytes_of(memory) + r);
    return memory;
}

inline CS_VOID *take_from_newest_area(MM_HANDLE *mmh, CS_INT size) {
    const MmHeap *newest = mmh->mmh_pool.a.free;
    if (!is_live(mmh) || size > MAX_REQUEST || newest->free->size < static_cast<CS_UINT>(round_up_8(size)))
        return nullptr;
    return take_from_area(newest->free, round_up_8(size));
}

} // namespace dlx

#endif

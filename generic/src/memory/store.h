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
//
// A chunk stands in a chain as its place: its distance from mph_origin in units of 8 bytes, which is never 0. The
// place of the next one stands in the four bytes of the first block's header that nothing else uses, so that it
// costs no room.

constexpr unsigned RANGE_BITS = 12;          // two chunks of the default size never begin in the same range,
constexpr std::uintptr_t RANGES_TOUCHED = 3; // and each touches three ranges at most, mostly two

inline std::uintptr_t address_of(const void *p) { return reinterpret_cast<std::uintptr_t>(p); }
inline std::uintptr_t range_of(const void *address) { return address_of(address) >> RANGE_BITS; }
inline CS_INT &chain_of(MmPoolHead *head, std::uintptr_t range) { return head->mph_chains[range % MM_CHUNK_CHAINS]; }
inline CS_INT &chain_link(MmHeap *chunk) {
    return *reinterpret_cast<CS_INT *>(bytes_of(&chunk->buffer) + sizeof(CS_UINT));
}
inline MmHeap *chunk_at(const MmPoolHead *head, CS_INT place) {
    return reinterpret_cast<MmHeap *>(address_of(head->mph_origin) +
                                      static_cast<std::uintptr_t>(CS_BIGINT{place} * POOL_ALIGNMENT));
}

inline bool is_inside(const void *address, const MmHeap *chunk) {
    return reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(chunk) <
           static_cast<std::uintptr_t>(chunk->size);
}

// The chunk that holds an address, or null: the first looks at all of them.
MmHeap *search_chunk(const MM_HANDLE *mmh, const void *address);
inline MmHeap *find_chunk(const MM_HANDLE *mmh, const void *address) {
    MmHeap *newest = mmh->mmh_head->mph_heap; // in many a pool with large chunks the only one
    if (newest != nullptr && is_inside(address, newest))
        return newest;
    MmPoolHead *head = mmh->mmh_head;
    const std::uintptr_t range = range_of(address);
    // Blocks are freed in any order, so a branch on where in its chunk one lies would go wrong half the time.
    // Here it only selects: the chunk that begins in this range below the address, or else in the range before.
    const CS_INT here = chain_of(head, range);
    const bool begins_before = (here == 0) | (address_of(chunk_at(head, here)) > address_of(address));
    const CS_INT first = chain_of(head, range - begins_before);
    if (first != 0 && is_inside(address, chunk_at(head, first))) [[likely]]
        return chunk_at(head, first);
    return search_chunk(mmh, address);
}

// ---- What needs neither the store nor a check ------------------------------------------------------------------
// The everyday half of each kind's allocation in a live pool. Null where there is more to do, with nothing changed.

inline CS_VOID *take_node(MM_HANDLE *mmh, CS_INT size) {
    MmUniformPool &pool = mmh->mmh_pool.u;
    if (size != pool.uniform_size || pool.free == nullptr)
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

inline CS_VOID *take_from_area(MmList *area, CS_UINT r) {
    CS_VOID *memory = area->link;
    area->size -= r;
    area->link = reinterpret_cast<MmList *>(bytes_of(memory) + r);
    return memory;
}

inline CS_VOID *take_from_newest_area(MM_HANDLE *mmh, CS_INT size) {
    MmList *area = mmh->mmh_pool.a.free->free;
    const CS_UINT r = ((static_cast<CS_UINT>(size) - 1) & ~7U) + 8; // above any area for a size near the largest
    return area->size >= r ? take_from_area(area, r) : nullptr;
}

} // namespace dlx

#endif

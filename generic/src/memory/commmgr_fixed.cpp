// The uniform pool, whose nodes are all of one size, and the alloc-only pool, which frees with the pool alone.
#include "diag/check.h"
#include "memory/store.h"

#include <algorithm>

using namespace dlx;

namespace {

// Threads a block of the store into nodes. `step` is the payload that the loop reckons with.
//
// The first block is reckoned with the rounded size, each further one with the size as passed. For a size that
// is no multiple of 8 the further ones thus get a node more, which is why such a block is taken larger.
CS_RETCODE add_nodes(MM_HANDLE *mmh, CS_INT step) {
    MmUniformPool &pool = mmh->mmh_pool.u;
    const CS_INT last = mmh->mmh_blocksize - pool.node_size; // the last node that the block size has room for
    const bool one_more = mmh->mmh_blocksize > last + step + BLOCK_HEADER;
    CS_VOID *memory = nullptr;
    const CS_RETCODE status = com___getblock(mmh, mmh->mmh_blocksize + (one_more ? pool.node_size : 0), &memory);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);

    CS_BYTE *block = bytes_of(memory);
    MmList *node = nullptr;
    for (CS_INT offset = one_more ? last + pool.node_size : last; offset >= 0; offset -= pool.node_size) {
        auto *lower = reinterpret_cast<MmList *>(block + offset);
        lower->size = static_cast<CS_UINT>(pool.node_size);
        lower->link = node;
        node = lower;
    }
    pool.free = node;
    return CS_SUCCEED;
}

void begin_uniform(MM_HANDLE *mmh, CS_INT size) {
    MmUniformPool &pool = mmh->mmh_pool.u;
    pool.uniform_size = size;
    pool.node_size = std::max(round_up_8(size), POOL_ALIGNMENT) + BLOCK_HEADER;
    mmh->mmh_blocksize = std::max(mmh->mmh_blocksize / pool.node_size, 1) * pool.node_size;
    pool.free = nullptr;
}

constexpr CS_INT AREA_HEADER = offsetof(MmHeap, buffer) + sizeof(MmList);

MmList *area_list(MmHeap *area) { return reinterpret_cast<MmList *>(&area->buffer); }

// The newest area with enough left, or null. Older areas are mostly full: `largest` spares the walk.
MmList *find_area(MmAllocOnlyPool &pool, CS_INT r) {
    if (pool.free == nullptr)
        return nullptr;
    const auto wanted = static_cast<CS_UINT>(r);
    if (pool.free->free->size >= wanted)
        return pool.free->free;
    if (pool.largest < r)
        return nullptr;
    CS_INT largest = 0;
    for (MmHeap *area = pool.free->next; area != nullptr; area = area->next) {
        if (area->free->size >= wanted)
            return area->free;
        largest = std::max(largest, static_cast<CS_INT>(area->free->size));
    }
    pool.largest = largest;
    return nullptr;
}

CS_RETCODE add_area(MM_HANDLE *mmh, CS_INT r) {
    MmAllocOnlyPool &pool = mmh->mmh_pool.a;
    const CS_INT size = std::max(r + AREA_HEADER, mmh->mmh_blocksize);
    CS_VOID *memory = nullptr;
    const CS_RETCODE status = com___getblock(mmh, size, &memory);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    if (pool.free != nullptr)
        pool.largest = std::max(pool.largest, static_cast<CS_INT>(pool.free->free->size));
    auto *area = static_cast<MmHeap *>(memory);
    area->size = size;
    area->status = 0;
    area->next = pool.free;
    area->free = area_list(area);
    area->free->size = static_cast<CS_UINT>(size - AREA_HEADER);
    area->free->link = area->free + 1;
    pool.free = area;
    return CS_SUCCEED;
}

} // namespace

CS_RETCODE com___uniform_malloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE(size >= 0, CS_FAIL);
    MmUniformPool &pool = mmh->mmh_pool.u;
    const bool first = !is_live(mmh);
    if (!first && size != pool.uniform_size)
        return COM_TRACE(CS_FAIL);
    if (size > MAX_REQUEST)
        return COM_TRACE(CS_MEM_ERROR);
    if (first)
        begin_uniform(mmh, size);
    if (pool.free == nullptr) {
        const CS_RETCODE status = add_nodes(mmh, first ? pool.node_size - BLOCK_HEADER : size);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
    MmList *node = pool.free;
    pool.free = node->link;
    *buffer = payload_of(node);
    return CS_SUCCEED;
}

CS_RETCODE com___uniform_free(MM_HANDLE *mmh, CS_VOID *buf) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buf, CS_FAIL);
    COM_REQUIRE(is_live(mmh), CS_FAIL);
    COM_REQUIRE(mmh->mmh_type == MM_UNIFORM, CS_FAIL);
    put_node(mmh, buf);
    return CS_SUCCEED;
}

CS_RETCODE com___alloconly_malloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE(size >= 0, CS_FAIL);
    if (size > MAX_REQUEST)
        return COM_TRACE(CS_MEM_ERROR);
    MmAllocOnlyPool &pool = mmh->mmh_pool.a;
    if (!is_live(mmh)) {
        pool.free = nullptr;
        pool.largest = 0;
    }
    const CS_INT r = round_up_8(size);
    MmList *area = find_area(pool, r);
    if (area == nullptr) {
        const CS_RETCODE status = add_area(mmh, r);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
        area = pool.free->free;
    }
    *buffer = take_from_area(area, static_cast<CS_UINT>(r));
    return CS_SUCCEED;
}

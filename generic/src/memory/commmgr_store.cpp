// The store under the three kinds of pool.
//
// A chunk begins with its MmHeap record and is otherwise blocks, each an 8-byte header with its payload size and
// then the payload. A free block keeps its link in the first word of the payload. The free list of a chunk is
// strictly ascending by address and never holds two touching blocks. Sizes are multiples of 8, so every payload
// is aligned to 8 bytes.
//
//     | MmHeap: size status next free | size | payload ... | size | payload ... |
//                                     ^ buffer
//
// A block that a pool takes for itself is preceded by one more word, which chains it on mmh_blocks.
#include "diag/check.h"
#include "memory/store.h"

#include <algorithm>
#include <cstdlib>

using namespace dlx;

namespace {

MmList *end_of(MmList *block) {
    return reinterpret_cast<MmList *>(bytes_of(block) + block->size + BLOCK_HEADER);
}

// Takes r bytes of a free block: its remainder takes its place on the list, or what follows it does. A
// remainder without room for its link goes with the block.
CS_VOID *take_block(MmList **link, CS_INT r) {
    MmList *block = *link;
    const CS_INT rest = static_cast<CS_INT>(block->size) - r;
    if (rest > BLOCK_HEADER) {
        auto *remainder = reinterpret_cast<MmList *>(bytes_of(block) + r + BLOCK_HEADER);
        remainder->size = static_cast<CS_UINT>(rest - BLOCK_HEADER);
        remainder->link = block->link;
        *link = remainder;
        block->size = static_cast<CS_UINT>(r);
    } else {
        *link = block->link;
    }
    return payload_of(block);
}

// First fit, in the order of chunks and addresses. Null when no block is large enough.
CS_VOID *first_fit(MM_HANDLE *mmh, CS_INT r) {
    for (MmHeap *chunk = mmh->mmh_head->mph_heap; chunk != nullptr; chunk = chunk->next) {
        if (chunk->size < r)
            continue;
        for (MmList **link = &chunk->free; *link != nullptr; link = &(*link)->link)
            if ((*link)->size >= static_cast<CS_UINT>(r))
                return take_block(link, r);
    }
    return nullptr;
}

std::ptrdiff_t place_of(const MmPoolHead *head, const MmHeap *chunk) {
    return static_cast<std::ptrdiff_t>(address_of(chunk) - address_of(head->mph_origin)) / POOL_ALIGNMENT;
}

void enter_in_chain(MmPoolHead *head, MmHeap *chunk) {
    if (head->mph_origin == nullptr)
        head->mph_origin = bytes_of(chunk) - POOL_ALIGNMENT; // so that this chunk stands at 1
    const std::ptrdiff_t place = place_of(head, chunk);
    if (place == 0 || place != static_cast<CS_INT>(place))
        return; // a place that means none, or too far from the others
    CS_INT &first = chain_of(head, range_of(chunk));
    chain_link(chunk) = first;
    first = static_cast<CS_INT>(place);
}

void remove_from_chain(MmPoolHead *head, MmHeap *chunk) {
    const std::ptrdiff_t place = place_of(head, chunk);
    for (CS_INT *link = &chain_of(head, range_of(chunk)); *link != 0; link = &chain_link(chunk_at(head, *link))) {
        if (*link == place) {
            *link = chain_link(chunk);
            return;
        }
    }
}

// Gives a wholly free chunk back to the source. The record is not read any more once it is gone.
void release_if_free(MM_HANDLE *mmh, MmHeap *chunk) {
    if ((chunk->status & MM_HEAP_SBREAK) == 0 || chunk->free->size + CHUNK_HEADER != static_cast<CS_UINT>(chunk->size))
        return;
    MmPoolHead *head = mmh->mmh_head;
    MmHeap **link = &head->mph_heap;
    while (*link != chunk)
        link = &(*link)->next;
    MmHeap *next = chunk->next;
    remove_from_chain(head, chunk);
    // mph_totalsize stays: mph_maxsize bounds what is obtained over the life of the pool.
    if (com___unsbreak(mmh, chunk) == CS_SUCCEED)
        *link = next;
    else
        enter_in_chain(head, chunk);
}

} // namespace

MmHeap *dlx::search_chunk(const MM_HANDLE *mmh, const void *address) {
    MmPoolHead *head = mmh->mmh_head;
    const std::uintptr_t range = range_of(address);
    for (std::uintptr_t back = 0; back < RANGES_TOUCHED; ++back)
        for (CS_INT place = chain_of(head, range - back); place != 0; place = chain_link(chunk_at(head, place)))
            if (is_inside(address, chunk_at(head, place)))
                return chunk_at(head, place);
    for (MmHeap *chunk = head->mph_heap; chunk != nullptr; chunk = chunk->next)
        if (is_inside(address, chunk))
            return chunk;
    return nullptr;
}

CS_RETCODE com___addheap(MM_HANDLE *mmh, CS_VOID *buffer, CS_INT buflen, CS_INT status) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE(buflen >= 17, CS_FAIL);
    const auto address = reinterpret_cast<std::uintptr_t>(buffer);
    const auto skipped = static_cast<CS_INT>(-address & (POOL_ALIGNMENT - 1));
    const CS_INT usable = (buflen - skipped) & ~(POOL_ALIGNMENT - 1);
    if (usable < MIN_CHUNK)
        return COM_TRACE(CS_FAIL);

    MmPoolHead *head = mmh->mmh_head;
    // A pool that turns its chunks over for long enough reaches the end of the count: there it stays.
    head->mph_totalsize = std::min(head->mph_totalsize, INT32_MAX - buflen) + buflen;
    auto *chunk = reinterpret_cast<MmHeap *>(bytes_of(buffer) + skipped);
    chunk->size = usable;
    chunk->status = status;
    chunk->next = head->mph_heap;
    chunk->free = nullptr;
    head->mph_heap = chunk;
    enter_in_chain(head, chunk);
    auto *block = reinterpret_cast<MmList *>(&chunk->buffer);
    block->size = static_cast<CS_UINT>(usable - CHUNK_HEADER);
    return com___insert_block(chunk, block);
}

CS_RETCODE com___insert_block(MmHeap *heap, MmList *ml) {
    COM_REQUIRE_PTR(heap, CS_FAIL);
    COM_REQUIRE_PTR(ml, CS_FAIL);
    const CS_BYTE *chunk_end = bytes_of(heap) + heap->size;
    COM_REQUIRE(bytes_of(ml) >= bytes_of(&heap->buffer) && bytes_of(ml) + BLOCK_HEADER <= chunk_end, CS_FAIL);
    COM_REQUIRE(ml->size <= static_cast<CS_UINT>(chunk_end - bytes_of(ml) - BLOCK_HEADER), CS_FAIL);

    MmList *before = nullptr;
    MmList *after = heap->free;
    while (after != nullptr && after < ml) {
        before = after;
        after = after->link;
    }
    COM_REQUIRE(after != ml, CS_FAIL); // freed twice
    COM_REQUIRE(before == nullptr || end_of(before) <= ml, CS_FAIL);
    COM_REQUIRE(after == nullptr || end_of(ml) <= after, CS_FAIL);

    if (after != nullptr && end_of(ml) == after) {
        ml->size += after->size + BLOCK_HEADER;
        ml->link = after->link;
    } else {
        ml->link = after;
    }
    if (before != nullptr && end_of(before) == ml) {
        before->size += ml->size + BLOCK_HEADER;
        before->link = ml->link;
    } else if (before != nullptr) {
        before->link = ml;
    } else {
        heap->free = ml;
    }
    return CS_SUCCEED;
}

CS_RETCODE com___getheap(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE(size >= 0, CS_FAIL);
    if (size > MAX_REQUEST)
        return COM_TRACE(CS_MEM_ERROR);
    const CS_INT r = std::max(round_up_8(size), POOL_ALIGNMENT); // a block must hold its link when it is free
    for (;;) {
        if (CS_VOID *block = first_fit(mmh, r)) {
            *buffer = block;
            return CS_SUCCEED;
        }
        if (com___sbreak(mmh, std::max(r + CHUNK_HEADER, mmh->mmh_head->mph_chunksize)) != CS_SUCCEED)
            return COM_TRACE(CS_MEM_ERROR);
    }
}

CS_RETCODE com___putheap(MM_HANDLE *mmh, CS_VOID *buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    MmList *block = block_of(buffer);
    MmHeap *chunk = find_chunk(mmh, block);
    COM_REQUIRE(chunk != nullptr, CS_FAIL);
    const CS_RETCODE status = com___insert_block(chunk, block);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    release_if_free(mmh, chunk);
    return CS_SUCCEED;
}

CS_RETCODE com___getblock(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    constexpr CS_INT LINK = sizeof(MmBlock *);
    if (size > MAX_REQUEST - LINK)
        return COM_TRACE(CS_MEM_ERROR);
    CS_VOID *memory = nullptr;
    const CS_RETCODE status = com___getheap(mmh, size + LINK, &memory);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    auto *block = static_cast<MmBlock *>(memory);
    block->next = mmh->mmh_blocks;
    mmh->mmh_blocks = block;
    *buffer = bytes_of(memory) + LINK;
    return CS_SUCCEED;
}

CS_RETCODE com___putblock(MM_HANDLE *mmh, CS_VOID *buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    auto *block = reinterpret_cast<MmBlock *>(bytes_of(buffer) - sizeof(MmBlock *));
    MmBlock **link = &mmh->mmh_blocks;
    while (*link != nullptr && *link != block)
        link = &(*link)->next;
    COM_REQUIRE(*link != nullptr, CS_FAIL);
    *link = block->next;
    return com___putheap(mmh, block);
}

CS_RETCODE com___sbreak(MM_HANDLE *mmh, CS_INT size) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    MmPoolHead *head = mmh->mmh_head;
    if (head->mph_sbreak == nullptr)
        return COM_TRACE(CS_FAIL);
    if (head->mph_maxsize != MM_NOLIMIT && CS_BIGINT{head->mph_totalsize} + size > head->mph_maxsize)
        return COM_TRACE(CS_FAIL);
    CS_VOID *chunk = head->mph_sbreak(mmh, head->mph_param, size);
    if (chunk == nullptr)
        return COM_TRACE(CS_FAIL);
    // The address goes back to the source as it came, so it cannot be moved up to a boundary.
    const CS_RETCODE status = is_aligned(chunk) ? com___addheap(mmh, chunk, size, MM_HEAP_SBREAK) : CS_FAIL;
    if (status != CS_SUCCEED)
        com___unsbreak(mmh, chunk);
    COM_REQUIRE(is_aligned(chunk), CS_FAIL);
    return status;
}

CS_RETCODE com___unsbreak(MM_HANDLE *mmh, CS_VOID *buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    MmPoolHead *head = mmh->mmh_head;
    if (head->mph_unsbreak == nullptr)
        return COM_TRACE(CS_FAIL);
    return head->mph_unsbreak(mmh, head->mph_param, buffer);
}

// ---- The source and the lock of a pool on a context ------------------------------------------------------------

CS_VOID *com___sbreak_ctx(MM_HANDLE *mmh, CS_VOID *param, CS_INT size) {
    COM_REQUIRE_PTR(mmh, nullptr);
    const CS_CONTEXT *context = mmh->mmh_head->mph_ctx;
    if (context == nullptr)
        return nullptr;
    if (context->ctxmalloc == nullptr)
        return std::malloc(static_cast<std::size_t>(size));
    return context->ctxmalloc(static_cast<CS_CONTEXT *>(param), static_cast<CS_UINT>(size));
}

CS_RETCODE com___unsbreak_ctx(MM_HANDLE *mmh, CS_VOID *param, CS_VOID *buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    const CS_CONTEXT *context = mmh->mmh_head->mph_ctx;
    if (context == nullptr)
        return COM_TRACE(CS_FAIL);
    if (context->ctxfree != nullptr)
        return context->ctxfree(static_cast<CS_CONTEXT *>(param), buffer);
    std::free(buffer);
    return CS_SUCCEED;
}

CS_RETCODE com___lock_ctx(MM_HANDLE *mmh, CS_VOID *lock_arg) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(mmh->mmh_head->mph_ctx, CS_FAIL);
    const CS_THREAD *callbacks = mmh->mmh_head->mph_ctx->ctxthread;
    if (callbacks == nullptr || callbacks->take_mutex_fn == nullptr)
        return CS_SUCCEED;
    return callbacks->take_mutex_fn(static_cast<CS_THRDRES *>(lock_arg));
}

CS_RETCODE com___unlock_ctx(MM_HANDLE *mmh, CS_VOID *lock_arg) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(mmh->mmh_head->mph_ctx, CS_FAIL);
    const CS_THREAD *callbacks = mmh->mmh_head->mph_ctx->ctxthread;
    if (callbacks == nullptr || callbacks->release_mutex_fn == nullptr)
        return CS_SUCCEED;
    return callbacks->release_mutex_fn(static_cast<CS_THRDRES *>(lock_arg));
}

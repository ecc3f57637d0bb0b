// Pools: creation, the front ends of allocation, properties, sub-pools and removal. The store and the kinds of
// pool are in the other files of the stem.
//
// One lock guards a whole tree of handles. It is taken where both lock functions are set and the pool is not
// being removed, and given back where both are set. No path takes it twice.
#include "diag/check.h"
#include "memory/store.h"

#include <cstdlib>
#include <cstring>

using namespace dlx;

namespace {

constexpr CS_INT OLDEST_VERSION = 114; // of a context that can own a pool
constexpr CS_INT DEFAULT_CHUNK_SIZE = 4136;
constexpr CS_INT DEFAULT_BLOCK_SIZE = 4096;
constexpr CS_INT RECORDS_SIZE = sizeof(MmPoolHead) + sizeof(MM_HANDLE);

static_assert(sizeof(MmPoolHead) % POOL_ALIGNMENT == 0 && sizeof(MM_HANDLE) % POOL_ALIGNMENT == 0);

CS_RETCODE lock(MM_HANDLE *mmh) {
    const MmPoolHead *head = mmh->mmh_head;
    COM_REQUIRE_PTR(head, CS_FAIL); // the handle of a pool that was dropped
    if (head->mph_lock == nullptr || head->mph_unlock == nullptr || (head->mph_status & MM_STAT_REMOVING) != 0)
        return CS_SUCCEED;
    return head->mph_lock(mmh, head->mph_lockarg);
}

CS_RETCODE unlock(MM_HANDLE *mmh) {
    const MmPoolHead *head = mmh->mmh_head;
    if (head->mph_lock == nullptr || head->mph_unlock == nullptr)
        return CS_SUCCEED;
    return head->mph_unlock(mmh, head->mph_lockarg);
}

void set_defaults(MmPoolHead *head, MM_HANDLE *handle, CS_INT status) {
    *head = {};
    head->mph_chunksize = DEFAULT_CHUNK_SIZE;
    head->mph_maxsize = MM_NOLIMIT;
    head->mph_status = status;
    std::memset(static_cast<void *>(handle), 0, sizeof *handle);
    handle->mmh_head = head;
    handle->mmh_type = MM_BUDDY;
    handle->mmh_blocksize = DEFAULT_BLOCK_SIZE;
    handle->mmh_status = status;
}

CS_VOID *context_malloc(CS_CONTEXT *context, std::size_t size) {
    return context->ctxmalloc != nullptr ? context->ctxmalloc(context, static_cast<CS_UINT>(size)) : std::malloc(size);
}

void context_free(CS_CONTEXT *context, CS_VOID *memory) {
    if (context->ctxfree != nullptr)
        context->ctxfree(context, memory);
    else
        std::free(memory);
}

} // namespace

// ---- Creation --------------------------------------------------------------------------------------------------

CS_RETCODE comn_mminit(CS_CONTEXT *ctx, MM_HANDLE **mmh) {
    COM_REQUIRE_PTR(ctx, CS_FAIL);
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE(ctx->ctxversion >= OLDEST_VERSION, CS_FAIL);
    MmPoolHead *head;
    MM_HANDLE *handle;
    const CS_INT status = *mmh != nullptr ? MM_STAT_CALLER : MM_STAT_OWNED;
    if (status == MM_STAT_CALLER) {
        head = reinterpret_cast<MmPoolHead *>(*mmh);
        handle = reinterpret_cast<MM_HANDLE *>(head + 1);
    } else {
        head = static_cast<MmPoolHead *>(context_malloc(ctx, sizeof *head));
        if (head == nullptr)
            return COM_TRACE(CS_MEM_ERROR);
        handle = static_cast<MM_HANDLE *>(context_malloc(ctx, sizeof *handle));
        if (handle == nullptr) {
            context_free(ctx, head);
            return COM_TRACE(CS_MEM_ERROR);
        }
    }
    set_defaults(head, handle, status);
    head->mph_sbreak = com___sbreak_ctx;
    head->mph_unsbreak = com___unsbreak_ctx;
    head->mph_param = ctx;
    head->mph_ctx = ctx;
    if (ctx->ctxthread != nullptr) {
        if (ctx->ctxthread->create_mutex_fn != nullptr) {
            auto **lockarg = reinterpret_cast<CS_THRDRES **>(&head->mph_lockarg);
            const CS_RETCODE created = ctx->ctxthread->create_mutex_fn(lockarg);
            if (created != CS_SUCCEED) {
                if (status == MM_STAT_OWNED)
                    context_free(ctx, handle); // the head stays with the context, as it always has
                return COM_TRACE(created);
            }
            head->mph_status |= MM_STAT_MUTEX;
        }
        head->mph_lock = com___lock_ctx;
        head->mph_unlock = com___unlock_ctx;
    }
    *mmh = handle;
    return CS_SUCCEED;
}

CS_RETCODE comn_mmmanage(CS_VOID *buffer, CS_INT buflen, MM_HANDLE **mmh) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE(buflen >= 0, CS_FAIL);
    if (*mmh != nullptr) {
        auto *head = reinterpret_cast<MmPoolHead *>(*mmh);
        auto *handle = reinterpret_cast<MM_HANDLE *>(head + 1);
        set_defaults(head, handle, MM_STAT_CALLER);
        if (buflen != 0) {
            const CS_RETCODE status = com___addheap(handle, buffer, buflen, MM_HEAP_CALLER);
            if (status != CS_SUCCEED)
                return COM_TRACE(status);
        }
        *mmh = handle;
        return CS_SUCCEED;
    }

    COM_REQUIRE_PTR(buffer, CS_FAIL);
    const auto skipped = static_cast<CS_INT>(-reinterpret_cast<std::uintptr_t>(buffer) & (POOL_ALIGNMENT - 1));
    if (buflen - skipped < RECORDS_SIZE)
        return COM_TRACE(CS_FAIL);
    auto *head = reinterpret_cast<MmPoolHead *>(bytes_of(buffer) + skipped);
    auto *handle = reinterpret_cast<MM_HANDLE *>(head + 1);
    set_defaults(head, handle, MM_STAT_OWNED);
    const CS_INT rest = buflen - skipped - RECORDS_SIZE;
    if (rest >= MIN_CHUNK)
        com___addheap(handle, handle + 1, rest, MM_HEAP_CALLER);
    *mmh = handle;
    return CS_SUCCEED;
}

// ---- Allocation ------------------------------------------------------------------------------------------------

namespace {

// The end of a pool whose kind nobody serves.
[[gnu::noinline]] CS_RETCODE wrong_type() {
    com_bomb(__FILE__, __LINE__);
    return COM_TRACE(CS_FAIL);
}

// What a live pool of these kinds serves without asking its store; null for all else.
CS_VOID *take_at_once(MM_HANDLE *mmh, CS_INT size) {
    if (mmh->mmh_type == MM_ALLOCONLY)
        return take_from_newest_area(mmh, size);
    return mmh->mmh_type == MM_UNIFORM ? take_node(mmh, size) : nullptr;
}

CS_RETCODE allocate(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    switch (mmh->mmh_type) {
    case MM_BUDDY:
        return com___buddy_malloc(mmh, size, buffer);
    case MM_UNIFORM:
        return com___uniform_malloc(mmh, size, buffer);
    case MM_ALLOCONLY:
        return com___alloconly_malloc(mmh, size, buffer);
    default:
        return wrong_type();
    }
}

CS_RETCODE reallocate(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    switch (mmh->mmh_type) {
    case MM_BUDDY:
        return com___buddy_realloc(mmh, size, buffer);
    case MM_UNIFORM:
    case MM_ALLOCONLY:
        return COM_TRACE(CS_FAIL);
    default:
        return wrong_type();
    }
}

inline CS_RETCODE release(MM_HANDLE *mmh, CS_VOID *buf) {
    const MmHeap *chunk = find_chunk(mmh, buf);
    COM_REQUIRE(chunk != nullptr && is_aligned(buf), CS_FAIL);
    // No block begins in the chunk's record.
    COM_REQUIRE(buf >= reinterpret_cast<const CS_BYTE *>(chunk) + CHUNK_HEADER, CS_FAIL);
    switch (mmh->mmh_type) {
    case MM_BUDDY:
        return com___buddy_free(mmh, buf);
    case MM_UNIFORM:
        put_node(mmh, buf);
        return CS_SUCCEED;
    case MM_ALLOCONLY:
        return COM_TRACE(CS_FAIL); // its memory goes with the pool
    default:
        return wrong_type();
    }
}

// Its own end of an allocation, so that those that need no call keep no stack for one.
[[gnu::noinline]] CS_RETCODE clear_large(CS_VOID *memory, CS_INT size) {
    std::memset(memory, 0, static_cast<std::size_t>(size));
    return CS_SUCCEED;
}

// A block holds at least 8 bytes. Most are small, and a call of memset would take longer than their zeros.
inline CS_RETCODE clear(CS_VOID *memory, CS_INT size) {
    constexpr int WORD = 16;
    CS_BYTE *end = bytes_of(memory) + size;
    if (size > 8 * WORD) {
        return clear_large(memory, size);
    } else if (size > 4 * WORD) {
        std::memset(memory, 0, 4 * WORD);
        std::memset(end - 4 * WORD, 0, 4 * WORD);
    } else if (size > 2 * WORD) {
        std::memset(memory, 0, 2 * WORD);
        std::memset(end - 2 * WORD, 0, 2 * WORD);
    } else if (size >= WORD) {
        std::memset(memory, 0, WORD);
        std::memset(end - WORD, 0, WORD);
    } else if (size >= WORD / 2) {
        std::memset(memory, 0, WORD / 2);
        std::memset(end - WORD / 2, 0, WORD / 2);
    } else if (size > 0) {
        std::memset(memory, 0, WORD / 2);
    }
    return CS_SUCCEED;
}

[[gnu::noinline]] CS_RETCODE allocate_locked(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    const CS_RETCODE locked = lock(mmh);
    if (locked != CS_SUCCEED)
        return COM_TRACE(locked);
    const CS_RETCODE status = allocate(mmh, size, buffer);
    if (status == CS_SUCCEED)
        mmh->mmh_status |= MM_STAT_LIVE;
    unlock(mmh);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    // Outside the lock: the block is the caller's already, and clearing it takes the longest.
    return clear(*buffer, size);
}

[[gnu::noinline]] CS_RETCODE release_locked(MM_HANDLE *mmh, CS_VOID *buf) {
    COM_REQUIRE(lock(mmh) == CS_SUCCEED, CS_FAIL);
    const CS_RETCODE status = release(mmh, buf);
    unlock(mmh);
    return status;
}

} // namespace

CS_RETCODE comn_mmalloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE(size >= 0, CS_FAIL);
    CS_VOID *memory = is_live(mmh) && mmh->mmh_head->mph_lock == nullptr ? take_at_once(mmh, size) : nullptr;
    if (memory == nullptr) [[unlikely]]
        return allocate_locked(mmh, size, buffer);
    *buffer = memory;
    return clear(memory, size);
}

CS_RETCODE comn_mmrealloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    COM_REQUIRE(size >= 0, CS_FAIL);
    const CS_RETCODE locked = lock(mmh);
    if (locked != CS_SUCCEED)
        return COM_TRACE(locked);
    const CS_RETCODE status = reallocate(mmh, size, buffer);
    unlock(mmh);
    return status;
}

CS_RETCODE comn_mmfree(MM_HANDLE *mmh, CS_VOID *buf) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(buf, CS_FAIL);
    COM_REQUIRE(is_live(mmh), CS_FAIL);
    return mmh->mmh_head->mph_lock == nullptr ? release(mmh, buf) : release_locked(mmh, buf);
}

CS_RETCODE comn_mmdiag(MM_HANDLE * /*mmh*/) {
    com_bomb(__FILE__, __LINE__);
    return COM_TRACE(CS_FAIL);
}

// ---- Properties ------------------------------------------------------------------------------------------------

namespace {

template <class Value>
CS_RETCODE answer(const Value &value, CS_VOID *buffer, CS_INT *outlen) {
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    std::memcpy(buffer, &value, sizeof value);
    if (outlen != nullptr)
        *outlen = sizeof value;
    return CS_SUCCEED;
}

// Two properties tell their width and leave the buffer alone.
CS_RETCODE answer_width_only(CS_INT *outlen) {
    if (outlen != nullptr)
        *outlen = sizeof(CS_VOID *);
    return CS_SUCCEED;
}

CS_RETCODE get_subpool(MM_HANDLE *mmh, CS_INT tagid, CS_VOID *buffer, CS_INT *outlen) {
    MM_HANDLE *child = mmh->mmh_child;
    while (child != nullptr && child->mmh_tagid != tagid)
        child = child->mmh_sibling;
    if (child == nullptr) {
        // Asserts a child that is there already, so asking for a new tag ends in its report.
        const CS_RETCODE status = com___subpool(mmh, tagid, &child);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
    return answer(child, buffer, outlen);
}

CS_RETCODE get_property(MM_HANDLE *mmh, CS_INT property, CS_VOID *buffer, CS_INT buflen, CS_INT *outlen) {
    const MmPoolHead *head = mmh->mmh_head;
    switch (property) {
    case MM_PROP_TYPE:
        return answer(mmh->mmh_type, buffer, outlen);
    case MM_PROP_SBREAK:
        return answer(head->mph_sbreak, buffer, outlen);
    case MM_PROP_PARAM:
    case MM_PROP_LOCKARG:
        return answer_width_only(outlen);
    case MM_PROP_UNSBREAK:
        return answer(head->mph_unsbreak, buffer, outlen);
    case MM_PROP_LOCK:
        return answer(head->mph_lock, buffer, outlen);
    case MM_PROP_UNLOCK:
        return answer(head->mph_unlock, buffer, outlen);
    case MM_PROP_CHUNKSIZE:
        return answer(head->mph_chunksize, buffer, outlen);
    case MM_PROP_MAXSIZE:
        return answer(head->mph_maxsize, buffer, outlen);
    case MM_PROP_SUBPOOL:
        return get_subpool(mmh, buflen, buffer, outlen);
    case MM_PROP_BLOCKSIZE:
        return answer(mmh->mmh_blocksize, buffer, outlen);
    default: // MM_PROP_ADDHEAP
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

CS_INT integer_at(const CS_VOID *buffer) {
    CS_INT value;
    std::memcpy(&value, buffer, sizeof value);
    return value;
}

CS_RETCODE set_positive(CS_INT &field, const CS_VOID *buffer) {
    COM_REQUIRE_PTR(buffer, MM_EBADPROP);
    COM_REQUIRE(integer_at(buffer) > 0, MM_EBADPROP);
    field = integer_at(buffer);
    return CS_SUCCEED;
}

template <class Function>
CS_RETCODE set_function(Function &field, CS_VOID *buffer) {
    COM_REQUIRE_PTR(buffer, MM_EBADPROP);
    field = reinterpret_cast<Function>(buffer);
    return CS_SUCCEED;
}

CS_RETCODE set_type(MM_HANDLE *mmh, const CS_VOID *buffer) {
    if (is_live(mmh))
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE_PTR(buffer, MM_EBADPROP);
    const CS_INT type = integer_at(buffer);
    COM_REQUIRE(type >= MM_TYPE_NONE && type <= MM_UNIFORM, MM_EBADPROP);
    mmh->mmh_type = type;
    return CS_SUCCEED;
}

CS_RETCODE set_property(MM_HANDLE *mmh, CS_INT property, CS_VOID *buffer, CS_INT buflen) {
    MmPoolHead *head = mmh->mmh_head;
    switch (property) {
    case MM_PROP_TYPE:
        return set_type(mmh, buffer);
    case MM_PROP_SBREAK:
        return set_function(head->mph_sbreak, buffer);
    case MM_PROP_PARAM:
        head->mph_param = buffer;
        return CS_SUCCEED;
    case MM_PROP_UNSBREAK:
        return set_function(head->mph_unsbreak, buffer);
    case MM_PROP_LOCK:
        return head->mph_lock != nullptr ? COM_TRACE(CS_FAIL) : set_function(head->mph_lock, buffer);
    case MM_PROP_LOCKARG:
        head->mph_lockarg = buffer;
        return CS_SUCCEED;
    case MM_PROP_UNLOCK:
        return set_function(head->mph_unlock, buffer);
    case MM_PROP_CHUNKSIZE:
        return set_positive(head->mph_chunksize, buffer);
    case MM_PROP_MAXSIZE:
        return set_positive(head->mph_maxsize, buffer);
    case MM_PROP_ADDHEAP:
        return com___addheap(mmh, buffer, buflen, MM_HEAP_CALLER);
    case MM_PROP_BLOCKSIZE:
        return is_live(mmh) ? COM_TRACE(CS_FAIL) : set_positive(mmh->mmh_blocksize, buffer);
    default: // MM_PROP_HANDLESIZE, MM_PROP_SUBPOOL
        return COM_TRACE(CS_FAIL);
    }
}

// Any of the three lock properties takes the whole lock away. The bit that tells of a mutex of the context's is
// cleared in the handle although it stands in the head: the mutex is deleted with a null argument at removal.
CS_RETCODE clear_lock(MM_HANDLE *mmh) {
    MmPoolHead *head = mmh->mmh_head;
    const MM_UNLOCK_FUNC old_unlock = head->mph_unlock;
    CS_VOID *old_argument = head->mph_lockarg;
    head->mph_lock = nullptr;
    head->mph_unlock = nullptr;
    const CS_RETCODE status = old_unlock != nullptr ? old_unlock(mmh, old_argument) : CS_SUCCEED;
    head->mph_lockarg = nullptr;
    mmh->mmh_status &= ~MM_STAT_MUTEX;
    return status;
}

bool is_lock_property(CS_INT property) { return property >= MM_PROP_LOCK && property <= MM_PROP_UNLOCK; }

} // namespace

CS_RETCODE comn_mmproperty(MM_HANDLE *mmh, CS_INT action, CS_INT property, CS_VOID *buffer, CS_INT buflen,
                           CS_INT *outlen) {
    COM_REQUIRE(action == MM_GET || action == MM_SET || action == MM_CLEAR, CS_FAIL);
    COM_REQUIRE(property >= MM_PROP_TYPE && property <= MM_PROP_BLOCKSIZE, CS_FAIL);
    COM_REQUIRE(action != MM_CLEAR || is_lock_property(property), CS_FAIL);
    if (property == MM_PROP_HANDLESIZE)
        return action == MM_GET ? answer(RECORDS_SIZE, buffer, outlen) : COM_TRACE(CS_FAIL);

    COM_REQUIRE_PTR(mmh, CS_FAIL);
    const CS_RETCODE locked = lock(mmh);
    if (locked != CS_SUCCEED)
        return COM_TRACE(locked);
    if (action == MM_CLEAR)
        return clear_lock(mmh); // which has unlocked
    const CS_RETCODE status = action == MM_GET ? get_property(mmh, property, buffer, buflen, outlen)
                                               : set_property(mmh, property, buffer, buflen);
    // No lock was held when a lock function was installed.
    if (action == MM_SET && property == MM_PROP_LOCK && status == CS_SUCCEED)
        return CS_SUCCEED;
    unlock(mmh);
    return status;
}

// ---- Sub-pools and removal -------------------------------------------------------------------------------------

CS_RETCODE com___subpool(MM_HANDLE *mmh, CS_INT tagid, MM_HANDLE **subpool) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE_PTR(subpool, CS_FAIL);
    COM_REQUIRE_PTR(*subpool, CS_FAIL);
    CS_VOID *memory = nullptr;
    const CS_RETCODE status = com___getheap(mmh, sizeof(MM_HANDLE), &memory);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    std::memset(memory, 0, sizeof(MM_HANDLE));
    auto *handle = static_cast<MM_HANDLE *>(memory);
    handle->mmh_head = mmh->mmh_head;
    handle->mmh_type = mmh->mmh_type;
    handle->mmh_blocksize = mmh->mmh_blocksize;
    handle->mmh_status = MM_STAT_OWNED;
    handle->mmh_tagid = tagid;
    handle->mmh_parent = mmh;
    handle->mmh_sibling = mmh->mmh_child;
    mmh->mmh_child = handle;
    *subpool = handle;
    return CS_SUCCEED;
}

CS_RETCODE com___remove_subpool(MM_HANDLE *mmh) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    MM_HANDLE *parent = mmh->mmh_parent;
    COM_REQUIRE_PTR(parent, CS_FAIL);
    COM_REQUIRE(parent->mmh_child != nullptr, CS_FAIL);
    COM_REQUIRE(mmh->mmh_child == nullptr, CS_FAIL);
    MM_HANDLE **link = &parent->mmh_child;
    while (*link != nullptr && *link != mmh)
        link = &(*link)->mmh_sibling;
    COM_REQUIRE(*link != nullptr, CS_FAIL);
    *link = mmh->mmh_sibling;

    while (MmBlock *block = mmh->mmh_blocks) {
        mmh->mmh_blocks = block->next;
        com___putheap(parent, block);
    }
    return com___putheap(parent, mmh);
}

CS_RETCODE com___remove_pool(MM_HANDLE *mmh) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    // The records that end the pool are the root's: a sub-pool's handle goes with its chunk.
    MM_HANDLE *root = mmh;
    while (root->mmh_parent != nullptr)
        root = root->mmh_parent;
    MmPoolHead *head = root->mmh_head;
    head->mph_status |= MM_STAT_REMOVING;

    for (MmHeap *chunk = head->mph_heap; chunk != nullptr;) {
        MmHeap *next = chunk->next;
        if ((chunk->status & MM_HEAP_SBREAK) != 0)
            com___unsbreak(root, chunk);
        chunk = next;
    }
    head->mph_heap = nullptr;
    unlock(root);
    CS_CONTEXT *context = head->mph_ctx;
    if ((head->mph_status & MM_STAT_MUTEX) != 0 && context->ctxthread != nullptr &&
        context->ctxthread->delete_mutex_fn != nullptr)
        context->ctxthread->delete_mutex_fn(static_cast<CS_THRDRES *>(head->mph_lockarg));

    // Wiped, so that a stale handle trips an assertion and not a wild read.
    const bool owned_handle = context != nullptr && (root->mmh_status & MM_STAT_OWNED) != 0;
    const bool owned_head = context != nullptr && (head->mph_status & MM_STAT_OWNED) != 0;
    std::memset(static_cast<void *>(root), 0, sizeof *root);
    std::memset(static_cast<void *>(head), 0, sizeof *head);
    if (owned_handle)
        context_free(context, root);
    if (owned_head)
        context_free(context, head);
    return CS_SUCCEED;
}

CS_RETCODE comn_mmdrop(MM_HANDLE *mmh, CS_INT option) {
    COM_REQUIRE_PTR(mmh, CS_FAIL);
    COM_REQUIRE((mmh->mmh_status & (MM_STAT_OWNED | MM_STAT_CALLER)) != 0, CS_FAIL);
    COM_REQUIRE(option == MM_DROP_FORCE || option == MM_OPT_UNUSED, CS_FAIL);
    const CS_RETCODE locked = lock(mmh);
    if (locked != CS_SUCCEED)
        return COM_TRACE(locked);
    if (option == MM_OPT_UNUSED && mmh->mmh_child != nullptr) {
        unlock(mmh);
        return COM_TRACE(CS_BUSY);
    }
    if (option == MM_OPT_UNUSED && mmh->mmh_parent != nullptr) {
        MM_HANDLE *parent = mmh->mmh_parent; // the handle is gone when the lock goes back
        const CS_RETCODE status = com___remove_subpool(mmh);
        unlock(parent);
        return status;
    }
    return com___remove_pool(mmh);
}

// What the kinds of list share inside the manager.
#ifndef DLX_LIST_KINDS_H
#define DLX_LIST_KINDS_H

#include "list/records.h"

#include <cstdint>

namespace dlx {

constexpr CS_INT UNASSIGNED_TYPE_15 = 15; // a hole in the numbers: a broken contract wherever it is met
constexpr CS_INT UNASSIGNED_TYPE_17 = 17; // another; making one is a plain failure

template <class Info>
Info *info_of(LM_HANDLE *handle) {
    return static_cast<Info *>(handle->list_state);
}

inline bool has_key(const CS_VOID *key, CS_INT key_size) { return key != nullptr && key_size != LM_UNUSED; }

// Keys of no bytes may be null.
inline bool same_bytes(const CS_VOID *key1, const CS_VOID *key2, CS_INT size) {
    return size == 0 || std::memcmp(key1, key2, static_cast<std::size_t>(size)) == 0;
}

// What an operation answers: the data at the cursor, or null.
inline void report(const DLinkNode *cursor, CS_VOID **data_out) {
    if (data_out != nullptr)
        *data_out = cursor != nullptr ? cursor->data : nullptr;
}

// The function of a print or walk: the list's, or the one stored at data_in.
inline CS_PRINT_FUNC function_of(const LM_HANDLE *handle, CS_INT operation, const CS_VOID *data_in) {
    if (operation != LM_OP_WALK)
        return handle->hdlprop->print_func;
    CS_PRINT_FUNC function = nullptr;
    if (data_in != nullptr)
        std::memcpy(&function, data_in, sizeof function);
    return function;
}

// Nodes that follow one another in a list or a pool lie near each other, but not in the order of their addresses:
// allocators hand memory out again in short runs that go back and forth, and processors do not foresee those. So
// whoever goes from node to node asks for what lies a little ahead on either side; no address is wrong for that.
enum Purpose { FOR_READING, FOR_WRITING };
template <Purpose PURPOSE>
inline void fetch_around(const DLinkNode *node) {
    constexpr std::uintptr_t AHEAD = 8 * 64; // eight nodes, as a general allocator spaces them
    const auto address = reinterpret_cast<std::uintptr_t>(node);
    __builtin_prefetch(reinterpret_cast<const void *>(address + AHEAD), PURPOSE);
    __builtin_prefetch(reinterpret_cast<const void *>(address - AHEAD), PURPOSE);
}

// The first node of a pool that is not empty.
inline DLinkNode *take_from_pool(LM_HANDLE *handle) {
    DLinkNode *node = handle->free_DLN_list;
    fetch_around<FOR_WRITING>(node);
    handle->free_DLN_list = node->next;
    --handle->free_nodes;
    node->next = nullptr;
    return node;
}

// A node for a new entry, or null where there is no memory.
inline DLinkNode *get_node(LM_HANDLE *handle) {
    return handle->free_nodes >= 1 ? take_from_pool(handle) : memory_of(handle).take_record<DLinkNode>();
}

// The record of a hash with a table of the told size, all null. A failure leaves nothing behind.
template <class Info>
CS_RETCODE make_hash(LM_HANDLE *handle, Info *&hash) {
    const ListMemory memory = memory_of(handle);
    const CS_INT size = handle->hdlprop->max_tablesize;
    if (size < 1 || size > INT32_MAX / static_cast<CS_INT>(sizeof(DLinkNode *)))
        return CS_FAIL;
    hash = memory.take_record<Info>();
    if (hash == nullptr)
        return CS_MEM_ERROR;
    hash->table = static_cast<DLinkNode **>(memory.take(size * static_cast<CS_INT>(sizeof(DLinkNode *))));
    if (hash->table == nullptr) {
        memory.give_back_record(hash);
        return CS_MEM_ERROR;
    }
    hash->table_size = size;
    hash->home_addr_hfunc = lm__api_key_to_hash;
    return CS_SUCCEED;
}

CS_RETCODE drop_dlink(LM_HANDLE *handle);
// A table and its entries, without the node pool.
void drop_chash_table(LM_HANDLE *handle);
void drop_dhash_table(LM_HANDLE *handle);

} // namespace dlx

#endif

// The chained hash table. Entries are the manager's nodes; keys and data are the callers'.
#include "diag/check.h"
#include "list/kinds.h"

using namespace dlx;

namespace {

bool matches(const DLinkNode *node, const CS_VOID *key, CS_INT key_size) {
    return node->key_size == key_size && same_bytes(node->key, key, key_size);
}

// Runs a lookup if there is a key; without one the cursor counts. `home` is the key's slot, or 0.
CS_RETCODE seek(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size, CS_INT &home) {
    home = 0;
    if (!has_key(key, key_size))
        return CS_SUCCEED;
    return lm___api_chash_search(handle, key, key_size, &home) == CS_SUCCEED ? CS_SUCCEED : LM_NOT_FOUND;
}

// No check for duplicates: a later entry hides an earlier one of the same key until it is deleted.
CS_RETCODE insert(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size, CS_VOID *data) {
    auto &hash = *info_of<CHashInfo>(handle);
    CS_INT home = 0;
    COM_REQUIRE(hash.home_addr_hfunc(key, key_size, hash.table_size, &home) == CS_SUCCEED, CS_FAIL);
    DLinkNode *node = nullptr;
    const CS_RETCODE status = lm__get_dlinknode(handle, &node);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    node->key = key;
    node->key_size = key_size;
    node->data = data;
    node->previous = nullptr;
    node->next = hash.table[home];
    if (node->next != nullptr)
        node->next->previous = node;
    hash.table[home] = node;
    node->state = LM_SET;
    handle->cur_ptr = node;
    ++handle->hdlprop->handle_load;
    return CS_SUCCEED;
}

// The slot of a node is known only from a lookup. A delete by cursor alone corrects slot 0 and no other, so a
// node that heads another slot stays there as a stale entry that lookups still find: it is marked LM_UNSET and
// keeps its memory until the list goes. Callers delete by key.
void take_off_chain(LM_HANDLE *handle, CHashInfo &hash, DLinkNode *node, CS_INT home) {
    if (node->previous == nullptr && hash.table[home] != node) {
        node->state = LM_UNSET;
        return;
    }
    (node->previous != nullptr ? node->previous->next : hash.table[home]) = node->next;
    if (node->next != nullptr)
        node->next->previous = node->previous;
    lm__free_dlinknode(handle, node);
}

CS_RETCODE remove(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size) {
    COM_REQUIRE(handle->hdlprop->handle_load >= 1, CS_FAIL);
    CS_INT home = 0;
    const CS_RETCODE status = seek(handle, key, key_size, home);
    if (status != CS_SUCCEED)
        return status;
    DLinkNode *node = handle->cur_ptr;
    COM_REQUIRE(node != nullptr && node->state == LM_SET, CS_FAIL);
    handle->cur_ptr = node->previous != nullptr ? node->previous : node->next;
    take_off_chain(handle, *info_of<CHashInfo>(handle), node, home);
    --handle->hdlprop->handle_load;
    return CS_SUCCEED;
}

CS_RETCODE update(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size, CS_VOID *data) {
    CS_INT home = 0;
    const CS_RETCODE status = seek(handle, key, key_size, home);
    if (status != CS_SUCCEED)
        return status;
    COM_REQUIRE(handle->cur_ptr != nullptr, CS_FAIL);
    handle->cur_ptr->data = data;
    return CS_SUCCEED;
}

CS_RETCODE print_entry(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size) {
    const CS_PRINT_FUNC function = handle->hdlprop->print_func;
    if (function == nullptr)
        return COM_TRACE(CS_FAIL);
    CS_INT home = 0;
    const CS_RETCODE status = seek(handle, key, key_size, home);
    if (status != CS_SUCCEED)
        return status;
    if (handle->cur_ptr != nullptr)
        function(handle->cur_ptr->data);
    else
        comn_debug_print("\nNULL\n");
    return CS_SUCCEED;
}

// Calls the function on one field of each node of a chain; false when it ended the walk.
bool walk_chain(const DLinkNode *node, CS_PRINT_FUNC function, CS_VOID *DLinkNode::*field) {
    while (node != nullptr) {
        const DLinkNode *next = node->next; // the function may delete the node
        if (function(node->*field) == 0)
            return false;
        node = next;
    }
    return true;
}

bool print_chain(const DLinkNode *chain, CS_PRINT_FUNC function) {
    if (chain == nullptr) {
        comn_debug_print("\n***Chain empty***\n");
        return true;
    }
    comn_debug_print("\nKeys:\n");
    if (!walk_chain(chain, function, &DLinkNode::key))
        return false;
    comn_debug_print("\nData:\n");
    if (!walk_chain(chain, function, &DLinkNode::data))
        return false;
    comn_debug_print("\n");
    return true;
}

CS_RETCODE print_all(LM_HANDLE *handle, CS_INT operation, const CS_VOID *data_in) {
    const CS_PRINT_FUNC function = function_of(handle, operation, data_in);
    if (function == nullptr)
        return COM_TRACE(CS_FAIL);
    const auto &hash = *info_of<CHashInfo>(handle);
    for (CS_INT slot = 0; slot < hash.table_size; ++slot) {
        const DLinkNode *chain = hash.table[slot];
        const bool goes_on = operation == LM_OP_PRINTALL ? print_chain(chain, function)
                                                         : walk_chain(chain, function, &DLinkNode::data);
        if (!goes_on)
            return CS_FAIL;
    }
    return CS_SUCCEED;
}

CS_RETCODE operate(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size, CS_VOID *data_in) {
    CS_INT home = 0;
    switch (operation) {
    case LM_OP_INSERT:
        return insert(handle, key, key_size, data_in);
    case LM_OP_DELETE:
        return remove(handle, key, key_size);
    case LM_OP_FIND:
        return lm___api_chash_search(handle, key, key_size, &home) == CS_SUCCEED ? CS_SUCCEED : LM_NOT_FOUND;
    case LM_OP_UPDATE:
        return update(handle, key, key_size, data_in);
    case LM_OP_CURRENT:
        return CS_SUCCEED;
    case LM_OP_PRINT:
        return print_entry(handle, key, key_size);
    case LM_OP_PRINTALL:
    case LM_OP_WALK:
        return print_all(handle, operation, data_in);
    default:
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

} // namespace

CS_RETCODE lm__api_chash_init(LM_HANDLE *handle) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    CHashInfo *hash;
    const CS_RETCODE status = make_hash(handle, hash);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    hash->state = LM_INITIALIZED;
    handle->list_state = hash;
    return CS_SUCCEED;
}

void dlx::drop_chash_table(LM_HANDLE *handle) {
    const ListMemory memory = memory_of(handle);
    auto *hash = info_of<CHashInfo>(handle);
    for (CS_INT slot = 0; slot < hash->table_size; ++slot) {
        for (DLinkNode *node = hash->table[slot]; node != nullptr;) {
            DLinkNode *next = node->next;
            memory.give_back_record(node);
            node = next;
        }
    }
    memory.give_back_bytes(hash->table, hash->table_size * static_cast<CS_INT>(sizeof(DLinkNode *)));
    memory.give_back_record(hash);
    handle->list_state = nullptr;
}

CS_RETCODE lm__api_chash_drop(LM_HANDLE *handle) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    drop_chash_table(handle);
    handle->hdlprop->handle_load = 0;
    handle->cur_ptr = nullptr;
    return lm__api_dlink_mpool_drop(handle, handle->hdlprop->max_poolsize);
}

CS_RETCODE lm___api_chash_search(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size, CS_INT *home_addr) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    COM_REQUIRE_PTR(home_addr, CS_FAIL);
    const auto &hash = *info_of<CHashInfo>(handle);
    COM_REQUIRE(hash.home_addr_hfunc(key, key_size, hash.table_size, home_addr) == CS_SUCCEED, CS_FAIL);
    for (DLinkNode *node = hash.table[*home_addr]; node != nullptr; node = node->next) {
        if (matches(node, key, key_size)) {
            handle->cur_ptr = node;
            return CS_SUCCEED;
        }
    }
    return CS_FAIL;
}

CS_RETCODE lm___api_chash_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size, CS_VOID *data_in,
                             CS_VOID **data_out) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    const CS_RETCODE status = operate(handle, operation, key, key_size, data_in);
    if (status == CS_SUCCEED)
        report(handle->cur_ptr, data_out);
    return status;
}

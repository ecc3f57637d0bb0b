// The open-addressed hash table: a fixed number of slots, each with a node of its own.
//
// The second hash moves only the starting slot; from there every probe steps by one. A lookup is ended by
// nothing but a match or the whole table, so a miss costs all slots.
#include "diag/check.h"
#include "list/kinds.h"

using namespace dlx;

namespace {

CS_RETCODE start_slot(const DHashInfo &hash, CS_VOID *key, CS_INT key_size, CS_INT &slot) {
    CS_INT home = 0;
    CS_INT increment = 0;
    COM_REQUIRE(hash.home_addr_hfunc(key, key_size, hash.table_size, &home) == CS_SUCCEED, CS_FAIL);
    if (hash.table_size > 1)
        COM_REQUIRE(hash.incr_hfunc(key, key_size, hash.table_size, &increment) == CS_SUCCEED, CS_FAIL);
    slot = static_cast<CS_INT>((CS_BIGINT{home} + increment) % hash.table_size);
    return CS_SUCCEED;
}

// Only the wanted bytes are compared, so a longer stored key with that beginning matches; a shorter one does
// not.
bool matches(const DLinkNode *node, const CS_VOID *key, CS_INT key_size) {
    return node->state == LM_SET && node->key_size >= key_size && same_bytes(node->key, key, key_size);
}

// The first slot from the key's start on for which `wanted` holds, or null.
template <class Wanted>
DLinkNode *probe(const DHashInfo &hash, CS_INT slot, Wanted wanted) {
    for (CS_INT i = 0; i < hash.table_size; ++i) {
        if (wanted(hash.table[slot]))
            return hash.table[slot];
        if (++slot == hash.table_size)
            slot = 0;
    }
    return nullptr;
}

CS_RETCODE seek(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size) {
    if (!has_key(key, key_size))
        return CS_SUCCEED;
    return lm___api_dhash_search(handle, key, key_size) == CS_SUCCEED ? CS_SUCCEED : LM_NOT_FOUND;
}

CS_RETCODE insert(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size, CS_VOID *data) {
    auto &hash = *info_of<DHashInfo>(handle);
    CS_INT slot = 0;
    if (start_slot(hash, key, key_size, slot) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    DLinkNode *node = probe(hash, slot, [](const DLinkNode *n) { return n->state != LM_SET; });
    COM_REQUIRE(node != nullptr, CS_FAIL); // full: the operation never grows the table
    node->key = key;
    node->key_size = key_size;
    node->data = data;
    node->previous = node->next = nullptr;
    node->state = LM_SET;
    handle->cur_ptr = node;
    ++handle->hdlprop->handle_load;
    return CS_SUCCEED;
}

CS_RETCODE remove(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size) {
    const CS_RETCODE status = seek(handle, key, key_size);
    if (status != CS_SUCCEED)
        return status;
    DLinkNode *node = handle->cur_ptr;
    COM_REQUIRE(node != nullptr && node->state == LM_SET, CS_FAIL);
    COM_REQUIRE(handle->hdlprop->handle_load >= 1, CS_FAIL);
    --handle->hdlprop->handle_load;
    *node = {};
    node->state = LM_UNSET; // the cursor stays on it
    return CS_SUCCEED;
}

CS_RETCODE update(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size, CS_VOID *data) {
    const CS_RETCODE status = seek(handle, key, key_size);
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
    const CS_RETCODE status = seek(handle, key, key_size);
    if (status != CS_SUCCEED)
        return status;
    COM_REQUIRE(handle->cur_ptr != nullptr, CS_FAIL);
    function(handle->cur_ptr->data);
    return CS_SUCCEED;
}

// Calls the function on one field of every slot, vacant or not; false when it ended the pass.
bool pass(const DHashInfo &hash, CS_PRINT_FUNC function, CS_VOID *DLinkNode::*field) {
    for (CS_INT slot = 0; slot < hash.table_size; ++slot)
        if (function(hash.table[slot]->*field) == 0)
            return false;
    return true;
}

CS_RETCODE print_all(LM_HANDLE *handle, CS_INT operation, const CS_VOID *data_in) {
    const CS_PRINT_FUNC function = function_of(handle, operation, data_in);
    if (function == nullptr)
        return COM_TRACE(CS_FAIL);
    const auto &hash = *info_of<DHashInfo>(handle);
    if (operation == LM_OP_WALK)
        return pass(hash, function, &DLinkNode::data) ? CS_SUCCEED : CS_FAIL;
    comn_debug_print("Keys:\n");
    if (!pass(hash, function, &DLinkNode::key))
        return CS_FAIL;
    comn_debug_print("\nData:\n");
    if (!pass(hash, function, &DLinkNode::data))
        return CS_FAIL;
    comn_debug_print("\n");
    return CS_SUCCEED;
}

CS_RETCODE operate(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size, CS_VOID *data_in) {
    switch (operation) {
    case LM_OP_INSERT:
        return insert(handle, key, key_size, data_in);
    case LM_OP_DELETE:
        return remove(handle, key, key_size);
    case LM_OP_FIND:
        return lm___api_dhash_search(handle, key, key_size) == CS_SUCCEED ? CS_SUCCEED : LM_NOT_FOUND;
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

// Gives back the nodes of the first `count` slots, the table and the record.
void give_back(const ListMemory &memory, DHashInfo *hash, CS_INT count) {
    for (CS_INT slot = 0; slot < count; ++slot)
        memory.give_back_record(hash->table[slot]);
    memory.give_back_bytes(hash->table, hash->table_size * static_cast<CS_INT>(sizeof(DLinkNode *)));
    memory.give_back_record(hash);
}

} // namespace

CS_RETCODE lm__api_dhash_init(LM_HANDLE *handle) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    DHashInfo *hash;
    const CS_RETCODE status = make_hash(handle, hash);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    const ListMemory memory = memory_of(handle);
    for (CS_INT slot = 0; slot < hash->table_size; ++slot) {
        hash->table[slot] = memory.take_record<DLinkNode>();
        if (hash->table[slot] == nullptr) {
            give_back(memory, hash, slot);
            return COM_TRACE(CS_MEM_ERROR);
        }
        hash->table[slot]->state = LM_INITIALIZED;
    }
    hash->incr_hfunc = lm__api_key_to_hash2;
    hash->state = LM_INITIALIZED;
    handle->list_state = hash;
    return CS_SUCCEED;
}

void dlx::drop_dhash_table(LM_HANDLE *handle) {
    auto *hash = info_of<DHashInfo>(handle);
    for (CS_INT slot = 0; slot < hash->table_size; ++slot)
        if (hash->table[slot]->state == LM_SET)
            --handle->hdlprop->handle_load;
    give_back(memory_of(handle), hash, hash->table_size);
    handle->list_state = nullptr;
}

CS_RETCODE lm__api_dhash_drop(LM_HANDLE *handle) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    drop_dhash_table(handle);
    handle->cur_ptr = nullptr;
    return lm__api_dlink_mpool_drop(handle, handle->hdlprop->max_poolsize);
}

CS_RETCODE lm___api_dhash_search(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    const auto &hash = *info_of<DHashInfo>(handle);
    CS_INT slot = 0;
    if (start_slot(hash, key, key_size, slot) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    DLinkNode *node = probe(hash, slot, [&](const DLinkNode *n) { return matches(n, key, key_size); });
    if (node == nullptr)
        return CS_FAIL;
    handle->cur_ptr = node;
    return CS_SUCCEED;
}

CS_RETCODE lm___api_dhash_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size, CS_VOID *data_in,
                             CS_VOID **data_out) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    const CS_RETCODE status = operate(handle, operation, key, key_size, data_in);
    if (status == CS_SUCCEED)
        report(handle->cur_ptr, data_out);
    return status;
}

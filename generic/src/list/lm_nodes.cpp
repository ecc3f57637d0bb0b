// Nodes of lists, and the pool that keeps them away from the allocator.
#include "diag/check.h"
#include "list/kinds.h"

namespace {

// Zeroes a node but for its place in the pool.
void rest(LM_HANDLE *handle, DLinkNode *node) {
    *node = {};
    node->state = LM_UNINITIALIZED;
    node->next = handle->free_DLN_list;
    handle->free_DLN_list = node;
    ++handle->free_nodes;
}

void empty_pool(LM_HANDLE *handle, CS_INT count) {
    for (; count > 0 && handle->free_DLN_list != nullptr; --count)
        dlx::memory_of(handle).give_back_record(dlx::take_from_pool(handle));
}

} // namespace

CS_RETCODE lm__get_dlinknode(LM_HANDLE *handle, DLinkNode **node) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    COM_REQUIRE_PTR(node, CS_FAIL);
    *node = dlx::get_node(handle);
    return *node != nullptr ? CS_SUCCEED : COM_TRACE(CS_MEM_ERROR);
}

CS_RETCODE lm__free_dlinknode(LM_HANDLE *handle, DLinkNode *node) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    COM_REQUIRE_PTR(node, CS_FAIL);
    if (handle->free_nodes >= handle->hdlprop->max_poolsize)
        dlx::memory_of(handle).give_back_record(node);
    else
        rest(handle, node);
    return CS_SUCCEED;
}

CS_RETCODE lm__api_dlink_mpool_init(LM_HANDLE *handle, CS_INT old_size) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    const CS_INT count = handle->hdlprop->max_poolsize - old_size;
    COM_REQUIRE(count >= 1, CS_FAIL);
    for (CS_INT i = 0; i < count; ++i) {
        auto *node = dlx::memory_of(handle).take_record<DLinkNode>();
        if (node == nullptr) {
            empty_pool(handle, handle->free_nodes);
            return COM_TRACE(CS_MEM_ERROR);
        }
        rest(handle, node);
    }
    return CS_SUCCEED;
}

CS_RETCODE lm__api_dlink_mpool_drop(LM_HANDLE *handle, CS_INT old_size) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    const CS_INT size = handle->hdlprop->max_poolsize;
    empty_pool(handle, old_size == size ? size : old_size - size);
    return CS_SUCCEED;
}

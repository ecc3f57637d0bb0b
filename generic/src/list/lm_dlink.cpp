// The doubly linked list with its cursor, and the queue and the stack on it.
#include "diag/check.h"
#include "list/kinds.h"

using namespace dlx;

namespace {

void link_between(DLinkInfo &list, DLinkNode *before, DLinkNode *node, DLinkNode *after) {
    node->previous = before;
    node->next = after;
    (before != nullptr ? before->next : list.head) = node;
    (after != nullptr ? after->previous : list.tail) = node;
}

void unlink(DLinkInfo &list, DLinkNode *node) {
    (node->previous != nullptr ? node->previous->next : list.head) = node->next;
    (node->next != nullptr ? node->next->previous : list.tail) = node->previous;
}

bool is_position(CS_INT position) {
    return position == LM_OP_FIRST || position == LM_OP_LAST || position == LM_POS_BEFORE || position == LM_POS_AFTER;
}

// Where a cursor came from: the variable of the caller's that holds it, or the list itself.
struct Cursor {
    LM_HANDLE *handle;
    DLinkNode **callers;
};

DLinkNode *node_at(const Cursor &at) {
    return at.callers != nullptr && *at.callers != nullptr ? *at.callers : at.handle->cur_ptr;
}

// The end of an operation that reports where its cursor rests.
CS_RETCODE arrive(const Cursor &at, DLinkNode *node, CS_VOID **data_out) {
    (at.callers != nullptr ? *at.callers : at.handle->cur_ptr) = node;
    report(node, data_out);
    return CS_SUCCEED;
}

CS_RETCODE move(const Cursor &at, DLinkNode *neighbour, CS_VOID **data_out) {
    if (neighbour == nullptr)
        return CS_FAIL; // walking off the end is how a walk ends, so it is not traced
    return arrive(at, neighbour, data_out);
}

// Links a node in for a new entry, which becomes the cursor.
CS_RETCODE enter(const Cursor &at, DLinkNode *before, DLinkNode *node, DLinkNode *after, CS_VOID *data,
                 CS_VOID **data_out) {
    auto &list = *info_of<DLinkInfo>(at.handle);
    if (list.head == nullptr)
        at.handle->cur_ptr = node; // the first entry is the list's own cursor, whoever put it in
    link_between(list, before, node, after);
    node->data = data;
    node->state = LM_INSERTED;
    ++at.handle->hdlprop->handle_load;
    return arrive(at, node, data_out);
}

// The operations that call something are kept apart: the others then need no stack.
[[gnu::noinline]] CS_RETCODE insert_anywhere(LM_HANDLE *handle, DLinkNode **callers, CS_INT position, CS_VOID *data,
                                             CS_VOID **data_out) {
    const Cursor at = {handle, callers};
    const auto &list = *info_of<DLinkInfo>(handle);
    DLinkNode *cursor = node_at(at);
    COM_REQUIRE(is_position(position), CS_FAIL);
    COM_REQUIRE(position == LM_OP_FIRST || cursor != nullptr, CS_FAIL);
    DLinkNode *node = get_node(handle);
    if (node == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    if (position == LM_OP_FIRST)
        return enter(at, nullptr, node, list.head, data, data_out);
    if (position == LM_POS_BEFORE)
        return enter(at, cursor->previous, node, cursor, data, data_out);
    return enter(at, cursor, node, cursor->next, data, data_out);
}

[[gnu::noinline]] CS_RETCODE append_new(LM_HANDLE *handle, DLinkNode **callers, CS_VOID *data, CS_VOID **data_out) {
    auto *node = memory_of(handle).take_record<DLinkNode>();
    if (node == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    return enter({handle, callers}, info_of<DLinkInfo>(handle)->tail, node, nullptr, data, data_out);
}

// Appending a node of the pool is what lists are mostly built by; it calls nothing.
CS_RETCODE insert(LM_HANDLE *handle, DLinkNode **callers, CS_INT position, CS_VOID *data, CS_VOID **data_out) {
    DLinkNode *tail = info_of<DLinkInfo>(handle)->tail;
    if (position != LM_OP_LAST && tail != nullptr)
        return insert_anywhere(handle, callers, position, data, data_out);
    if (handle->free_nodes < 1)
        return append_new(handle, callers, data, data_out);
    return enter({handle, callers}, tail, take_from_pool(handle), nullptr, data, data_out);
}

// The cursor goes forward from the head and back from anywhere else.
[[gnu::noinline]] CS_RETCODE remove(LM_HANDLE *handle, DLinkNode **callers, CS_VOID **data_out) {
    const Cursor at = {handle, callers};
    auto &list = *info_of<DLinkInfo>(handle);
    DLinkNode *node = node_at(at);
    COM_REQUIRE(node != nullptr && node->state == LM_INSERTED, CS_FAIL);
    COM_REQUIRE(handle->hdlprop->handle_load >= 1, CS_FAIL);
    DLinkNode *cursor = node == list.head ? node->next : node->previous;
    COM_REQUIRE((handle->hdlprop->handle_load == 1) == (cursor == nullptr), CS_FAIL);
    unlink(list, node);
    --handle->hdlprop->handle_load;
    // A cursor of the list's own that rested on the node must not outlive it.
    if (handle->cur_ptr == node)
        handle->cur_ptr = cursor;
    const CS_RETCODE status = lm__free_dlinknode(handle, node);
    if (status != CS_SUCCEED)
        return status;
    return arrive(at, cursor, data_out);
}

CS_RETCODE update(const Cursor &at, CS_VOID *data, CS_VOID **data_out) {
    DLinkNode *node = node_at(at);
    COM_REQUIRE(node != nullptr, CS_FAIL);
    node->data = data;
    return arrive(at, node, data_out);
}

CS_RETCODE print_entry(const LM_HANDLE *handle, const DLinkNode *node) {
    const CS_PRINT_FUNC function = handle->hdlprop->print_func;
    if (function == nullptr || node == nullptr)
        return COM_TRACE(CS_FAIL);
    function(node->data);
    return CS_SUCCEED;
}

CS_RETCODE print_all(LM_HANDLE *handle, CS_PRINT_FUNC function) {
    if (function == nullptr)
        return COM_TRACE(CS_FAIL);
    for (DLinkNode *node = info_of<DLinkInfo>(handle)->head; node != nullptr;) {
        DLinkNode *next = node->next; // the function may delete the node
        fetch_around<FOR_READING>(node);
        if (function(node->data) == 0)
            return CS_FAIL;
        node = next;
    }
    return CS_SUCCEED;
}

[[gnu::noinline]] CS_RETCODE print(LM_HANDLE *handle, CS_INT operation, DLinkNode **callers, const CS_VOID *data_in,
                                   CS_VOID **data_out) {
    const Cursor at = {handle, callers};
    const CS_RETCODE status = operation == LM_OP_PRINT
                                  ? print_entry(handle, node_at(at))
                                  : print_all(handle, function_of(handle, operation, data_in));
    // A walk that its function ended still answers, with the entry where its cursor rests then: the function may have
    // deleted the one where it rested before.
    if (status == CS_SUCCEED || operation != LM_OP_PRINT)
        arrive(at, node_at(at), data_out);
    return status;
}

} // namespace

CS_RETCODE lm___api_dlink_init(LM_HANDLE *handle) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    auto *list = dlx::memory_of(handle).take_record<DLinkInfo>();
    if (list == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    if (handle->hdlprop->max_poolsize > 0) {
        const CS_RETCODE status = lm__api_dlink_mpool_init(handle, 0);
        if (status != CS_SUCCEED) {
            dlx::memory_of(handle).give_back_record(list);
            return COM_TRACE(status);
        }
    }
    list->state = LM_INITIALIZED;
    handle->list_state = list;
    return CS_SUCCEED;
}

CS_RETCODE lm___api_dlink_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size, CS_VOID *data_in,
                             CS_VOID **data_out) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    auto **callers = static_cast<DLinkNode **>(key);
    const Cursor at = {handle, callers};
    const auto *list = info_of<DLinkInfo>(handle);
    switch (operation) {
    case LM_OP_INSERT:
        return insert(handle, callers, key_size, data_in, data_out);
    case LM_OP_DELETE:
        return remove(handle, callers, data_out);
    case LM_OP_UPDATE:
        return update(at, data_in, data_out);
    case LM_OP_NEXT:
        return move(at, node_at(at) != nullptr ? node_at(at)->next : nullptr, data_out);
    case LM_OP_PREV:
        return move(at, node_at(at) != nullptr ? node_at(at)->previous : nullptr, data_out);
    case LM_OP_CURRENT:
        return arrive(at, node_at(at), data_out);
    case LM_OP_FIRST:
        return arrive(at, list->head, data_out);
    case LM_OP_LAST:
        return arrive(at, list->tail, data_out);
    case LM_OP_PRINT:
    case LM_OP_PRINTALL:
    case LM_OP_WALK:
        return print(handle, operation, callers, data_in, data_out);
    default: // LM_OP_FIND too: entries have no keys
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

CS_RETCODE dlx::drop_dlink(LM_HANDLE *handle) {
    const ListMemory memory = dlx::memory_of(handle);
    auto *list = info_of<DLinkInfo>(handle);
    for (DLinkNode *node = list->head; node != nullptr;) {
        DLinkNode *next = node->next;
        memory.give_back_record(node);
        --handle->hdlprop->handle_load;
        node = next;
    }
    list->head = list->tail = handle->cur_ptr = nullptr;
    COM_REQUIRE(handle->hdlprop->handle_load == 0, CS_FAIL);
    memory.give_back_record(list);
    handle->list_state = nullptr;
    return lm__api_dlink_mpool_drop(handle, handle->hdlprop->max_poolsize);
}

// ---- Queue -----------------------------------------------------------------------------------------------------

namespace {

// Takes the head off. The delete reports last, so what a caller gets is the data of the new head; one that wants
// the old head's reads it first with LM_OP_CURRENT.
CS_RETCODE take_head(LM_HANDLE *handle, CS_VOID *data_in, CS_VOID **data_out) {
    COM_REQUIRE(info_of<DLinkInfo>(handle)->head != nullptr, CS_FAIL);
    lm___api_dlink_op(handle, LM_OP_FIRST, nullptr, LM_UNUSED, data_in, data_out);
    const DLinkNode *second = handle->cur_ptr->next;
    const CS_RETCODE status = lm___api_dlink_op(handle, LM_OP_DELETE, nullptr, LM_UNUSED, data_in, data_out);
    COM_REQUIRE(handle->cur_ptr == second, CS_FAIL);
    return status;
}

} // namespace

CS_RETCODE lm___api_queue_op(LM_HANDLE *handle, CS_INT operation, CS_VOID * /*key*/, CS_INT /*key_size*/,
                             CS_VOID *data_in, CS_VOID **data_out) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    switch (operation) {
    case LM_OP_INSERT:
        return lm___api_dlink_op(handle, LM_OP_INSERT, nullptr, LM_OP_LAST, data_in, data_out);
    case LM_OP_DELETE:
        return take_head(handle, data_in, data_out);
    case LM_OP_CURRENT: // always the head
        return lm___api_dlink_op(handle, LM_OP_FIRST, nullptr, LM_UNUSED, data_in, data_out);
    case LM_OP_PRINT:
    case LM_OP_PRINTALL:
    case LM_OP_WALK:
        return lm___api_dlink_op(handle, operation, nullptr, LM_UNUSED, data_in, data_out);
    default:
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

CS_RETCODE lm___api_queue_drop(LM_HANDLE *handle) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    return drop_dlink(handle);
}

// ---- Stack -----------------------------------------------------------------------------------------------------

CS_RETCODE lm___api_stack_op(LM_HANDLE *handle, CS_INT operation, CS_VOID * /*key*/, CS_INT /*key_size*/,
                             CS_VOID *data_in, CS_VOID **data_out) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    // One level more than elsewhere: the variable at data_out says where the data goes.
    auto **out = data_out != nullptr ? static_cast<CS_VOID **>(*data_out) : nullptr;
    switch (operation) {
    case LM_OP_INSERT:
        return lm___api_dlink_op(handle, LM_OP_INSERT, nullptr, LM_OP_FIRST, data_in, out);
    case LM_OP_DELETE:
        return take_head(handle, data_in, out);
    case LM_OP_CURRENT: // the cursor rests on the head after each push and pop
    case LM_OP_PRINT:
    case LM_OP_PRINTALL:
    case LM_OP_WALK:
        return lm___api_dlink_op(handle, operation, nullptr, LM_UNUSED, data_in, out);
    default:
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

CS_RETCODE lm___api_stack_drop(LM_HANDLE *handle) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    return drop_dlink(handle);
}

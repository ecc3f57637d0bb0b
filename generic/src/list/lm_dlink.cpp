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

CS_RETCODE insert(LM_HANDLE *handle, DLinkNode *&cursor, CS_INT position, CS_VOID *data) {
    auto &list = *info_of<DLinkInfo>(handle);
    const bool empty = list.head == nullptr; // then any position is the same
    if (!empty) {
        COM_REQUIRE(is_position(position), CS_FAIL);
        COM_REQUIRE(position == LM_OP_FIRST || position == LM_OP_LAST || cursor != nullptr, CS_FAIL);
    }
    DLinkNode *node = nullptr;
    const CS_RETCODE status = lm__get_dlinknode(handle, &node);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    node->data = data;
    if (empty || position == LM_OP_LAST)
        link_between(list, list.tail, node, nullptr);
    else if (position == LM_OP_FIRST)
        link_between(list, nullptr, node, list.head);
    else if (position == LM_POS_BEFORE)
        link_between(list, cursor->previous, node, cursor);
    else
        link_between(list, cursor, node, cursor->next);
    if (empty)
        handle->cur_ptr = node;
    node->state = LM_INSERTED;
    ++handle->hdlprop->handle_load;
    cursor = node;
    return CS_SUCCEED;
}

// The cursor goes forward from the head and back from anywhere else.
CS_RETCODE remove(LM_HANDLE *handle, DLinkNode *&cursor) {
    auto &list = *info_of<DLinkInfo>(handle);
    COM_REQUIRE(cursor != nullptr && cursor->state == LM_INSERTED, CS_FAIL);
    COM_REQUIRE(handle->hdlprop->handle_load >= 1, CS_FAIL);
    DLinkNode *node = cursor;
    DLinkNode *neighbour = node == list.head ? node->next : node->previous;
    COM_REQUIRE((handle->hdlprop->handle_load == 1) == (neighbour == nullptr), CS_FAIL);
    cursor = neighbour;
    unlink(list, node);
    --handle->hdlprop->handle_load;
    // A cursor of the list's own that rested on the node must not outlive it.
    if (handle->cur_ptr == node)
        handle->cur_ptr = cursor;
    return lm__free_dlinknode(handle, node);
}

CS_RETCODE print_all(LM_HANDLE *handle, CS_PRINT_FUNC function) {
    for (DLinkNode *node = info_of<DLinkInfo>(handle)->head; node != nullptr;) {
        DLinkNode *next = node->next; // the function may delete the node
        if (function(node->data) == 0)
            return CS_FAIL;
        node = next;
    }
    return CS_SUCCEED;
}

CS_RETCODE print(LM_HANDLE *handle, CS_INT operation, const DLinkNode *cursor, const CS_VOID *data_in) {
    const CS_PRINT_FUNC function = function_of(handle, operation, data_in);
    if (function == nullptr)
        return COM_TRACE(CS_FAIL);
    if (operation != LM_OP_PRINT)
        return print_all(handle, function);
    if (cursor == nullptr)
        return COM_TRACE(CS_FAIL);
    function(cursor->data);
    return CS_SUCCEED;
}

CS_RETCODE move_to(DLinkNode *&cursor, DLinkNode *neighbour) {
    if (neighbour == nullptr)
        return CS_FAIL; // walking off the end is how a walk ends, so it is not traced
    cursor = neighbour;
    return CS_SUCCEED;
}

CS_RETCODE operate(LM_HANDLE *handle, CS_INT operation, DLinkNode *&cursor, CS_INT position, CS_VOID *data_in) {
    const auto *list = info_of<DLinkInfo>(handle);
    switch (operation) {
    case LM_OP_INSERT:
        return insert(handle, cursor, position, data_in);
    case LM_OP_DELETE:
        return remove(handle, cursor);
    case LM_OP_UPDATE:
        COM_REQUIRE(cursor != nullptr, CS_FAIL);
        cursor->data = data_in;
        return CS_SUCCEED;
    case LM_OP_NEXT:
        return move_to(cursor, cursor != nullptr ? cursor->next : nullptr);
    case LM_OP_PREV:
        return move_to(cursor, cursor != nullptr ? cursor->previous : nullptr);
    case LM_OP_CURRENT:
        return CS_SUCCEED;
    case LM_OP_FIRST:
        cursor = list->head;
        return CS_SUCCEED;
    case LM_OP_LAST:
        cursor = list->tail;
        return CS_SUCCEED;
    case LM_OP_PRINT:
    case LM_OP_PRINTALL:
    case LM_OP_WALK:
        return print(handle, operation, cursor, data_in);
    default: // LM_OP_FIND too: entries have no keys
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

// These answer even when their function ended them; anything else that failed leaves all as it was.
bool is_walk(CS_INT operation) { return operation == LM_OP_PRINTALL || operation == LM_OP_WALK; }

// Where an operation begins: a caller's cursor if it rests on an entry, else the list's own.
DLinkNode *cursor_of(const LM_HANDLE *handle, DLinkNode *const *callers) {
    return callers != nullptr && *callers != nullptr ? *callers : handle->cur_ptr;
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
    DLinkNode *cursor = cursor_of(handle, callers);
    const CS_RETCODE status = operate(handle, operation, cursor, key_size, data_in);
    if (is_walk(operation))
        cursor = cursor_of(handle, callers); // its function may have deleted the entry that this rested on
    if (status == CS_SUCCEED || is_walk(operation)) {
        (callers != nullptr ? *callers : handle->cur_ptr) = cursor;
        report(cursor, data_out);
    }
    return status;
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

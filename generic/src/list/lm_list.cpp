// Lists: creation, the one operation entry, properties with the change of a table's size, dropping.
#include "diag/check.h"
#include "list/kinds.h"
#include "list/properties.h"

#include <algorithm>

using namespace dlx;

namespace {

CS_RETCODE make_state(LM_HANDLE *handle, CS_INT list_type) {
    switch (list_type) {
    case LM_DLINK:
    case LM_QUEUE:
    case LM_STACK:
        return lm___api_dlink_init(handle);
    case LM_CHASH: {
        const CS_RETCODE status = lm__api_chash_init(handle);
        if (status != CS_SUCCEED || handle->hdlprop->max_poolsize < 1)
            return status;
        const CS_RETCODE pool_status = lm__api_dlink_mpool_init(handle, 0);
        if (pool_status != CS_SUCCEED)
            drop_chash_table(handle);
        return pool_status;
    }
    case LM_DHASH:
        return lm__api_dhash_init(handle);
    case UNASSIGNED_TYPE_17:
        return COM_TRACE(CS_FAIL);
    default:
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

CS_RETCODE drop_state(LM_HANDLE *handle) {
    switch (handle->hdlprop->list_type) {
    case LM_DLINK:
        return drop_dlink(handle);
    case LM_CHASH:
        return lm__api_chash_drop(handle);
    case UNASSIGNED_TYPE_15:
        com_bomb(__FILE__, __LINE__);
        return lm__api_dhash_drop(handle);
    case LM_DHASH:
        return lm__api_dhash_drop(handle);
    case UNASSIGNED_TYPE_17:
        com_bomb(__FILE__, __LINE__);
        return lm___api_queue_drop(handle);
    case LM_QUEUE:
        return lm___api_queue_drop(handle);
    case LM_STACK:
        return lm___api_stack_drop(handle);
    default:
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

// The link that leads to a list in its context's chain; one that is null for a list that is not there.
LM_HANDLE **link_to(LM_CONTEXT *context, const LM_HANDLE *handle) {
    LM_HANDLE **link = &context->first_handle;
    while (*link != nullptr && *link != handle)
        link = &(*link)->next;
    return link;
}

void take_off_context(LM_CONTEXT *context, LM_HANDLE *handle) {
    *link_to(context, handle) = handle->next;
    --context->cxtprop->context_load;
    if (context->cxtprop->cur_handleaddr == handle)
        make_current(context, context->first_handle);
}

} // namespace

CS_RETCODE lm___pchk_list_alloc(LM_CONTEXT *context, CS_CHAR *handle_name) {
    return context != nullptr && handle_name != nullptr ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

CS_RETCODE lm___api_list_init(LM_CONTEXT *context, CS_INT list_type, CS_CHAR *handle_name, CS_INT length,
                              LM_HANDLE *handle) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(handle_name, CS_FAIL);
    COM_REQUIRE_PTR(handle, CS_FAIL);
    COM_REQUIRE(length >= 0 || length == LM_NULLTERM, CS_FAIL);
    const ListMemory memory = memory_of(handle);
    auto *properties = memory.take_record<LM_HDLPROP>();
    if (properties == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    handle->hdlprop = properties;
    properties->context = context;
    properties->list_type = list_type == LM_UNUSED ? context->cxtprop->list_type : list_type;
    properties->max_tablesize = context->cxtprop->max_tablesize;
    properties->max_poolsize = properties->list_type == LM_DHASH ? 0 : context->cxtprop->max_poolsize;

    properties->length = kept_length(handle_name, length);
    properties->handle_name = static_cast<CS_CHAR *>(memory.take(properties->length));
    CS_RETCODE status = CS_MEM_ERROR;
    if (properties->handle_name != nullptr) {
        std::memcpy(properties->handle_name, handle_name, static_cast<std::size_t>(properties->length));
        status = make_state(handle, properties->list_type);
        if (status != CS_SUCCEED)
            memory.give_back_bytes(properties->handle_name, properties->length);
    }
    if (status != CS_SUCCEED) {
        memory.give_back_record(properties);
        handle->hdlprop = nullptr;
        return COM_TRACE(status);
    }
    properties->state = LM_INITIALIZED;
    return CS_SUCCEED;
}

CS_RETCODE lm_list_alloc_ex(LM_CONTEXT *context, CS_INT list_type, CS_CHAR *handle_name, CS_INT length,
                            LM_HANDLE **handle_ptr, LM_ALLOCATOR lm_alloc, LM_RELEASER lm_free, CS_VOID *userctx) {
    if (context == nullptr)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE(context->state != LM_RELEASED, CS_FAIL);
    if (context->lmchkparam == CS_TRUE && lm___pchk_list_alloc(context, handle_name) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE_PTR(handle_ptr, CS_FAIL);
    COM_REQUIRE_PTR(lm_alloc, CS_FAIL);
    COM_REQUIRE_PTR(lm_free, CS_FAIL);
    *handle_ptr = nullptr;
    const ListMemory memory = {lm_alloc, lm_free, userctx};
    auto *handle = memory.take_record<LM_HANDLE>();
    if (handle == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    handle->lmhmalloc = lm_alloc;
    handle->lmhfree = lm_free;
    handle->lmhuser = userctx;
    const CS_RETCODE status = lm___api_list_init(context, list_type, handle_name, length, handle);
    if (status != CS_SUCCEED) {
        memory.give_back_record(handle);
        return COM_TRACE(status);
    }
    handle->state = LM_INITIALIZED;
    handle->next = context->first_handle;
    context->first_handle = handle;
    make_current(context, handle);
    ++context->cxtprop->context_load;
    *handle_ptr = handle;
    return CS_SUCCEED;
}

CS_RETCODE lm_list_alloc(LM_CONTEXT *context, CS_INT list_type, CS_CHAR *handle_name, CS_INT length,
                         LM_HANDLE **handle_ptr) {
    if (context == nullptr)
        return COM_TRACE(CS_FAIL);
    return lm_list_alloc_ex(context, list_type, handle_name, length, handle_ptr, context->lmmalloc, context->lmfree,
                            context->lmuser);
}

CS_RETCODE lm_list_drop(LM_HANDLE *handle, CS_INT option) {
    if (handle == nullptr)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE(handle->state != LM_RELEASED, CS_FAIL);
    COM_REQUIRE(option == LM_UNUSED || option == LM_FORCE_DROP, CS_FAIL);
    if (option == LM_UNUSED && handle->hdlprop->handle_load > 0)
        return COM_TRACE(CS_FAIL);
    LM_CONTEXT *context = handle->hdlprop->context;
    COM_REQUIRE(*link_to(context, handle) != nullptr, CS_FAIL);
    COM_REQUIRE(context->cxtprop->context_load >= 1, CS_FAIL);
    // The state is gone already where an earlier drop went no further.
    const CS_RETCODE status = handle->list_state != nullptr ? drop_state(handle) : CS_SUCCEED;
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    COM_REQUIRE(handle->list_state == nullptr, CS_FAIL);
    COM_REQUIRE(handle->free_DLN_list == nullptr, CS_FAIL);

    take_off_context(context, handle);
    const ListMemory memory = memory_of(handle);
    memory.give_back_bytes(handle->hdlprop->handle_name, handle->hdlprop->length);
    memory.give_back_record(handle->hdlprop);
    memory.give_back_record(handle);
    return CS_SUCCEED;
}

CS_RETCODE lm_list_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size, CS_VOID *data_in,
                      CS_VOID **data_out) {
    if (handle == nullptr)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE(handle->state != LM_RELEASED, CS_FAIL);
    switch (handle->hdlprop->list_type) {
    case LM_DLINK:
        return lm___api_dlink_op(handle, operation, key, key_size, data_in, data_out);
    case LM_CHASH:
        return lm___api_chash_op(handle, operation, key, key_size, data_in, data_out);
    case LM_DHASH:
        return lm___api_dhash_op(handle, operation, key, key_size, data_in, data_out);
    case LM_QUEUE:
        return lm___api_queue_op(handle, operation, key, key_size, data_in, data_out);
    case LM_STACK:
        return lm___api_stack_op(handle, operation, key, key_size, data_in, data_out);
    default:
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

// ---- The size of a table ---------------------------------------------------------------------------------------

namespace {

using FillTable = CS_RETCODE (*)(LM_HANDLE *handle, const CS_VOID *old_table);

CS_RETCODE insert_again(LM_HANDLE *handle, const DLinkNode *entry) {
    return lm_list_op(handle, LM_OP_INSERT, entry->key, entry->key_size, entry->data, nullptr);
}

CS_RETCODE fill_dhash(LM_HANDLE *handle, const CS_VOID *old_table) {
    const auto *old = static_cast<const DHashInfo *>(old_table);
    CS_RETCODE status = CS_SUCCEED;
    for (CS_INT slot = 0; slot < old->table_size && status == CS_SUCCEED; ++slot)
        if (old->table[slot]->state == LM_SET)
            status = insert_again(handle, old->table[slot]);
    return status;
}

// Every pass over a chain inserts its first entry again, so a chain of n comes out as n copies of its head and
// the others are lost. Callers know it: they never resize a chained list that has entries.
CS_RETCODE fill_chash(LM_HANDLE *handle, const CS_VOID *old_table) {
    const auto *old = static_cast<const CHashInfo *>(old_table);
    CS_RETCODE status = CS_SUCCEED;
    for (CS_INT slot = 0; slot < old->table_size; ++slot) {
        const DLinkNode *first = old->table[slot];
        while (first != nullptr && first->state != LM_SET)
            first = first->next;
        for (const DLinkNode *node = first; node != nullptr && status == CS_SUCCEED; node = node->next)
            if (node->state == LM_SET)
                status = insert_again(handle, first);
    }
    return status;
}

// Builds a table of the new size, fills it from the old one and drops that. On failure the old one is back.
CS_RETCODE replace_table(LM_HANDLE *handle, CS_RETCODE (*build)(LM_HANDLE *), FillTable fill,
                         void (*drop_table)(LM_HANDLE *)) {
    CS_VOID *old_table = handle->list_state;
    DLinkNode *old_cursor = handle->cur_ptr;
    const CS_INT old_load = handle->hdlprop->handle_load;
    CS_RETCODE status = build(handle);
    if (status != CS_SUCCEED) {
        handle->list_state = old_table;
        return COM_TRACE(status);
    }
    handle->hdlprop->handle_load = 0;
    handle->cur_ptr = nullptr; // the last entry put back, in the end
    status = fill(handle, old_table);
    CS_VOID *new_table = handle->list_state;
    const CS_INT new_load = handle->hdlprop->handle_load;
    if (status == CS_SUCCEED && new_load != old_load) {
        com_bomb(__FILE__, __LINE__);
        status = CS_FAIL;
    }
    if (status != CS_SUCCEED) {
        drop_table(handle);
        handle->list_state = old_table;
        handle->cur_ptr = old_cursor;
        handle->hdlprop->handle_load = old_load;
        return COM_TRACE(status);
    }
    handle->list_state = old_table;
    drop_table(handle);
    handle->list_state = new_table;
    handle->hdlprop->handle_load = new_load;
    return CS_SUCCEED;
}

} // namespace

CS_RETCODE lm___chash_rehash(LM_HANDLE *handle) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    return replace_table(handle, lm__api_chash_init, fill_chash, drop_chash_table);
}

CS_RETCODE lm___dhash_rehash(LM_HANDLE *handle) {
    COM_REQUIRE_PTR(handle, CS_FAIL);
    return replace_table(handle, lm__api_dhash_init, fill_dhash, drop_dhash_table);
}

// ---- Properties ------------------------------------------------------------------------------------------------

namespace {

// The value that a set or clear asks for.
CS_RETCODE wanted_size(const PropertyCall &call, CS_INT standard, CS_INT &size) {
    size = standard;
    return call.action == LM_ACT_SET ? call.set(size) : CS_SUCCEED;
}

CS_RETCODE table_size(LM_HANDLE *handle, const PropertyCall &call) {
    LM_HDLPROP *properties = handle->hdlprop;
    const bool chained = properties->list_type == LM_CHASH;
    if (!chained && properties->list_type != LM_DHASH)
        return COM_TRACE(CS_FAIL);
    if (call.action == LM_ACT_GET)
        return call.get(properties->max_tablesize);
    CS_INT size = 0;
    CS_RETCODE status = wanted_size(call, properties->context->cxtprop->max_tablesize, size);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    if (!chained && size < properties->handle_load)
        return COM_TRACE(CS_FAIL);
    const CS_INT old_size = properties->max_tablesize;
    properties->max_tablesize = size;
    status = chained ? lm___chash_rehash(handle) : lm___dhash_rehash(handle);
    if (status != CS_SUCCEED)
        properties->max_tablesize = old_size;
    return status;
}

CS_RETCODE pool_size(LM_HANDLE *handle, const PropertyCall &call) {
    LM_HDLPROP *properties = handle->hdlprop;
    if (call.action == LM_ACT_GET)
        return call.get(properties->max_poolsize);
    CS_INT size = 0;
    CS_RETCODE status = wanted_size(call, properties->context->cxtprop->max_poolsize, size);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    if (size < 0)
        return COM_TRACE(CS_FAIL);
    const CS_INT old_size = properties->max_poolsize;
    const CS_INT pooled = std::max(old_size, 0); // a context may hand out a negative size, which pools nothing
    properties->max_poolsize = size;
    if (size > pooled)
        status = lm__api_dlink_mpool_init(handle, pooled);
    else if (size < pooled)
        status = lm__api_dlink_mpool_drop(handle, pooled);
    if (status != CS_SUCCEED)
        properties->max_poolsize = old_size;
    return status;
}

CS_RETCODE handle_name(LM_HANDLE *handle, const PropertyCall &call) {
    COM_REQUIRE_AT(call.member, call.action == LM_ACT_GET, CS_FAIL);
    CS_CHAR *name = handle->hdlprop->handle_name;
    return lm__api_prop_cpbytes(name, text_length(name, handle->hdlprop->length), CS_TRUE,
                                static_cast<CS_CHAR *>(call.buffer), call.buflen, call.outlen);
}

CS_RETCODE get_only(const PropertyCall &call, const auto &value) {
    COM_REQUIRE_AT(call.member, call.action == LM_ACT_GET, CS_FAIL);
    return call.get(value);
}

} // namespace

CS_RETCODE lm_list_prop(LM_HANDLE *handle, CS_INT action, CS_INT property, CS_VOID *buffer, CS_INT buflen,
                        CS_INT *outlen) {
    if (handle == nullptr)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE(handle->state != LM_RELEASED, CS_FAIL);
    COM_REQUIRE(action == LM_ACT_GET || action == LM_ACT_SET || action == LM_ACT_CLEAR, CS_FAIL);
    if (outlen != nullptr)
        *outlen = 0;
    const PropertyCall call = {action, buffer, buflen, outlen, COM_HERE};
    LM_HDLPROP *properties = handle->hdlprop;
    switch (property) {
    case LM_PROP_LIST_TYPE:
        return get_only(call, properties->list_type);
    case LM_PROP_MAX_TABLESIZE:
        return table_size(handle, call);
    case LM_PROP_MAX_POOLSIZE:
        return pool_size(handle, call);
    case LM_PROP_HANDLE_LOAD:
        return get_only(call, properties->handle_load);
    case LM_PROP_CONTEXT_ADDR:
        return get_only(call, properties->context);
    case LM_PROP_HANDLE_NAME:
        return handle_name(handle, call);
    case LM_PROP_PRINT_FUNC:
        return call.get_set_clear<CS_PRINT_FUNC>(properties->print_func, nullptr);
    case LM_PROP_COMP_FUNC:
        return call.get_set_clear<CS_COMPARE_FUNC>(properties->comp_func, nullptr);
    default:
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

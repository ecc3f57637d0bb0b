// The context of the list manager: creation, properties, exit.
#include "diag/check.h"
#include "list/properties.h"
#include "list/records.h"

#include <cstdlib>
#include <cstring>

using dlx::ListMemory;
using dlx::PropertyCall;

namespace {

constexpr CS_INT OLDEST_VERSION = 1100;
constexpr CS_INT DEFAULT_TABLESIZE = 10;
constexpr CS_INT DEFAULT_POOLSIZE = 0;

CS_RETCODE set_name(LM_CONTEXT *context, const CS_CHAR *name, CS_INT length) {
    const CS_INT bytes = dlx::kept_length(name, length);
    context->context_name = static_cast<CS_CHAR *>(dlx::memory_of(context).take(bytes));
    if (context->context_name == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    std::memcpy(context->context_name, name, static_cast<std::size_t>(bytes));
    context->length = bytes;
    return CS_SUCCEED;
}

// Whether the first `length` bytes of a handle's name are those of `name`. A shorter name is not read past its
// end.
bool name_begins_with(const LM_HANDLE *handle, const CS_CHAR *name, CS_INT length) {
    return handle->hdlprop->length >= length &&
           std::memcmp(handle->hdlprop->handle_name, name, static_cast<std::size_t>(length)) == 0;
}

CS_RETCODE set_current_handle(LM_CONTEXT *context, const PropertyCall &call) {
    const auto *name = static_cast<const CS_CHAR *>(call.buffer);
    COM_REQUIRE_PTR_AT(call.member, name, CS_FAIL);
    const CS_INT length = call.buflen == LM_NULLTERM ? static_cast<CS_INT>(std::strlen(name)) : call.buflen;
    COM_REQUIRE_AT(call.member, length > 0, CS_FAIL);
    LM_HANDLE *handle = context->first_handle;
    while (handle != nullptr && !name_begins_with(handle, name, length))
        handle = handle->next;
    COM_REQUIRE_AT(call.member, handle != nullptr, CS_FAIL);
    dlx::make_current(context, handle);
    return CS_SUCCEED;
}

CS_RETCODE current_handle_name(LM_CONTEXT *context, const PropertyCall &call) {
    const LM_HANDLE *current = context->cxtprop->cur_handleaddr;
    COM_REQUIRE_AT(call.member, current != nullptr, CS_FAIL);
    switch (call.action) {
    case LM_ACT_GET: {
        CS_CHAR *name = current->hdlprop->handle_name;
        return lm__api_prop_cpbytes(name, dlx::text_length(name, current->hdlprop->length), CS_TRUE,
                                    static_cast<CS_CHAR *>(call.buffer), call.buflen, call.outlen);
    }
    case LM_ACT_SET:
        return set_current_handle(context, call);
    default:
        dlx::make_current(context, context->first_handle);
        return CS_SUCCEED;
    }
}

// Drops every list. The first failure stops it, and the rest stay.
CS_RETCODE drop_lists(LM_CONTEXT *context) {
    while (LM_HANDLE *handle = context->first_handle) {
        const CS_RETCODE status = lm_list_drop(handle, LM_FORCE_DROP);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
    return CS_SUCCEED;
}

} // namespace

CS_VOID *lm___malloc(CS_VOID * /*user*/, CS_INT size) { return std::malloc(static_cast<std::size_t>(size)); }
void lm___free(CS_VOID * /*user*/, CS_VOID *memory) { std::free(memory); }

CS_RETCODE lm___api_init(LM_CONTEXT **context_ptr, LM_ALLOCATOR lm_alloc, LM_RELEASER lm_free, CS_VOID *userctx) {
    COM_REQUIRE_PTR(context_ptr, CS_FAIL);
    COM_REQUIRE_PTR(lm_alloc, CS_FAIL);
    COM_REQUIRE_PTR(lm_free, CS_FAIL);
    *context_ptr = nullptr;
    const ListMemory memory = {lm_alloc, lm_free, userctx};
    auto *context = memory.take_record<LM_CONTEXT>();
    if (context == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    context->lmmalloc = lm_alloc;
    context->lmfree = lm_free;
    context->lmuser = userctx;
    context->cxtprop = memory.take_record<LM_CXTPROP>();
    if (context->cxtprop == nullptr) {
        memory.give_back_record(context);
        return COM_TRACE(CS_MEM_ERROR);
    }
    *context_ptr = context;
    return CS_SUCCEED;
}

CS_RETCODE lm___api_init_fail(LM_CONTEXT **context_ptr) {
    COM_REQUIRE_PTR(context_ptr, CS_FAIL);
    if (LM_CONTEXT *context = *context_ptr) {
        const ListMemory memory = dlx::memory_of(context);
        if (context->cxtprop != nullptr)
            memory.give_back_record(context->cxtprop);
        memory.give_back_record(context);
        *context_ptr = nullptr;
    }
    return CS_SUCCEED;
}

CS_RETCODE lm_initlm_ex(CS_INT version, CS_CHAR *context_name, CS_INT length, LM_CONTEXT **context_ptr,
                        LM_ALLOCATOR lm_alloc, LM_RELEASER lm_free, CS_VOID *userctx) {
    COM_REQUIRE_PTR(context_name, CS_FAIL);
    COM_REQUIRE_PTR(context_ptr, CS_FAIL);
    COM_REQUIRE(version >= OLDEST_VERSION, CS_FAIL);
    COM_REQUIRE(length >= 0 || length == LM_NULLTERM, CS_FAIL);
    CS_RETCODE status = lm___api_init(context_ptr, lm_alloc, lm_free, userctx);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    LM_CONTEXT *context = *context_ptr;
    status = set_name(context, context_name, length);
    if (status != CS_SUCCEED) {
        lm___api_init_fail(context_ptr);
        return COM_TRACE(status);
    }
    LM_CXTPROP *properties = context->cxtprop;
    properties->list_type = LM_DLINK;
    properties->max_tablesize = DEFAULT_TABLESIZE;
    properties->max_poolsize = DEFAULT_POOLSIZE;
    properties->version = version;
    properties->state = LM_INITIALIZED;
    context->lmchkparam = CS_FALSE;
    context->state = LM_INITIALIZED;
    return CS_SUCCEED;
}

CS_RETCODE lm_initlm(CS_INT version, CS_CHAR *context_name, CS_INT length, LM_CONTEXT **context_ptr) {
    return lm_initlm_ex(version, context_name, length, context_ptr, lm___malloc, lm___free, nullptr);
}

CS_RETCODE lm_exit(LM_CONTEXT *context, CS_INT option) {
    if (context == nullptr)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE(context->state != LM_RELEASED, CS_FAIL);
    COM_REQUIRE(context->cxtprop != nullptr && context->cxtprop->state != LM_RELEASED, CS_FAIL);
    COM_REQUIRE(option == LM_UNUSED || option == LM_FORCE_EXIT, CS_FAIL);
    if (option == LM_UNUSED && context->cxtprop->context_load > 0)
        return COM_TRACE(CS_FAIL);
    const CS_RETCODE status = drop_lists(context);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    COM_REQUIRE(context->cxtprop->context_load == 0, CS_FAIL);

    const ListMemory memory = dlx::memory_of(context);
    memory.give_back_bytes(context->context_name, context->length);
    memory.give_back_record(context->cxtprop);
    memory.give_back_record(context);
    return CS_SUCCEED;
}

CS_RETCODE lm_property(LM_CONTEXT *context, CS_INT action, CS_INT property, CS_VOID *buffer, CS_INT buflen,
                       CS_INT *outlen) {
    if (context == nullptr)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE(context->state != LM_RELEASED, CS_FAIL);
    COM_REQUIRE(action == LM_ACT_GET || action == LM_ACT_SET || action == LM_ACT_CLEAR, CS_FAIL);
    if (outlen != nullptr)
        *outlen = 0;
    const PropertyCall call = {action, buffer, buflen, outlen, COM_HERE};
    LM_CXTPROP *properties = context->cxtprop;
    switch (property) {
    case LM_PROP_LIST_TYPE:
        return call.get_set_clear<CS_INT>(properties->list_type, LM_DLINK);
    case LM_PROP_MAX_TABLESIZE:
        return call.get_set_clear(properties->max_tablesize, DEFAULT_TABLESIZE);
    case LM_PROP_MAX_POOLSIZE:
        return call.get_set_clear(properties->max_poolsize, DEFAULT_POOLSIZE);
    case LM_PROP_VERSION:
        return call.get_only(properties->version);
    case LM_PROP_CONTEXT_LOAD:
        return call.get_only(properties->context_load);
    case LM_PROP_CURRENT_HANDLENAME:
        return current_handle_name(context, call);
    case LM_PROP_CURRENT_HANDLEADDR:
        return call.get_only(properties->cur_handleaddr);
    default:
        com_bomb(__FILE__, __LINE__);
        return COM_TRACE(CS_FAIL);
    }
}

#include "owner.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include <pthread.h>

// What the thread callbacks hand out: a mutex uses only the first field, an event all of them.
struct _cs_thrdres {
    std::recursive_mutex mutex;
    std::condition_variable_any signalled;
    bool state = false;
};

namespace client {
namespace {

CS_RETCODE create_resource(CS_THRDRES **resource) {
    *resource = new (std::nothrow) CS_THRDRES;
    return *resource != nullptr ? CS_SUCCEED : CS_FAIL;
}

CS_RETCODE delete_resource(CS_THRDRES *resource) {
    delete resource;
    return CS_SUCCEED;
}

CS_RETCODE take_mutex(CS_THRDRES *mutex) {
    mutex->mutex.lock();
    return CS_SUCCEED;
}

CS_RETCODE release_mutex(CS_THRDRES *mutex) {
    mutex->mutex.unlock();
    return CS_SUCCEED;
}

CS_RETCODE signal_event(CS_THRDRES *event) {
    const std::lock_guard lock(event->mutex);
    event->state = true;
    event->signalled.notify_one();
    return CS_SUCCEED;
}

CS_RETCODE reset_event(CS_THRDRES *event) {
    const std::lock_guard lock(event->mutex);
    event->state = false;
    return CS_SUCCEED;
}

CS_RETCODE wait_for_event(CS_THRDRES *event, CS_INT millisecs) {
    std::unique_lock lock(event->mutex);
    const auto is_signalled = [event] { return event->state; };
    if (millisecs < 0)
        event->signalled.wait(lock, is_signalled);
    else if (!event->signalled.wait_for(lock, std::chrono::milliseconds(millisecs), is_signalled))
        return CS_TIMED_OUT;
    event->state = false;
    return CS_SUCCEED;
}

CS_RETCODE thread_id(CS_VOID *buffer, CS_INT buflen, CS_INT *outlen) {
    const pthread_t self = pthread_self();
    if (buflen < static_cast<CS_INT>(sizeof self))
        return CS_FAIL;
    std::memcpy(buffer, &self, sizeof self);
    *outlen = sizeof self;
    return CS_SUCCEED;
}

CS_THREAD thread_callbacks = {
    create_resource, delete_resource, take_mutex,  release_mutex,  create_resource,
    delete_resource, signal_event,    reset_event, wait_for_event, thread_id,
};

CS_VOID *allocate(CS_CONTEXT * /*context*/, CS_UINT size) { return std::malloc(size); }

CS_RETCODE release(CS_CONTEXT * /*context*/, CS_VOID *memory) {
    std::free(memory);
    return CS_SUCCEED;
}

CS_RETCODE ignore_message(CS_CONTEXT * /*context*/, CS_CLIENTMSG * /*message*/) { return CS_SUCCEED; }

} // namespace

Owner::Owner() {
    globals_.cmg_count = 1;
    charset_.char_attrib = com_get_charattrib();
    locale_data_.locchardesc = &charset_;
    locale_.collateptr = locale_.ctypeptr = locale_.messageptr = &locale_data_;
    locale_.monetaryptr = locale_.numericptr = locale_.timeptr = &locale_data_;
    locale_.ctxptr = &context_;

    context_.ctxglobals = &globals_;
    context_.ctxlocale = context_.ctxdeflocale = &locale_;
    context_.ctxthread = &thread_callbacks;
    context_.ctxmalloc = allocate;
    context_.ctxfree = release;
    context_.ctxerrfunc = ignore_message;
    ready_ = create_resource(&globals_.cmg_mtx) == CS_SUCCEED && create_resource(&context_.ctxmtx) == CS_SUCCEED &&
             com_conv_init(&context_) == CS_SUCCEED && com_null_init(&context_) == CS_SUCCEED;
}

Owner::~Owner() {
    com_null_free(&context_);
    com_conv_free(&context_);
    delete_resource(context_.ctxmtx);
    delete_resource(globals_.cmg_mtx);
}

} // namespace client

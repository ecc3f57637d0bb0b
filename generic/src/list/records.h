// How the list manager takes and gives back its records: zeroed when they come, wiped and stamped
// LM_RELEASED before they go. And what contexts and lists share: kept names, the current list.
#ifndef DLX_LIST_RECORDS_H
#define DLX_LIST_RECORDS_H

#include <dlxcomn/list.h>

#include <cstring>

namespace dlx {

// An allocator pair with its user pointer.
struct ListMemory {
    LM_ALLOCATOR allocate;
    LM_RELEASER release;
    CS_VOID *user;

    CS_VOID *take(CS_INT size) const {
        CS_VOID *memory = allocate(user, size);
        if (memory != nullptr)
            std::memset(memory, 0, static_cast<std::size_t>(size));
        return memory;
    }

    // A record that leads with its state.
    template <class Record>
    Record *take_record() const {
        auto *record = static_cast<Record *>(take(sizeof(Record)));
        if (record != nullptr)
            record->state = LM_ALLOCATED;
        return record;
    }

    template <class Record>
    void give_back_record(Record *record) const {
        std::memset(static_cast<void *>(record), 0, sizeof *record);
        record->state = LM_RELEASED;
        release(user, record);
    }

    void give_back_bytes(CS_VOID *bytes, CS_INT size) const {
        std::memset(bytes, 0, static_cast<std::size_t>(size));
        release(user, bytes);
    }
};

inline ListMemory memory_of(const LM_CONTEXT *context) {
    return {context->lmmalloc, context->lmfree, context->lmuser};
}
inline ListMemory memory_of(const LM_HANDLE *handle) { return {handle->lmhmalloc, handle->lmhfree, handle->lmhuser}; }

// The bytes of a name that is to be kept: one more than the text for LM_NULLTERM, whose NUL is kept too.
inline CS_INT kept_length(const CS_CHAR *name, CS_INT length) {
    return length == LM_NULLTERM ? static_cast<CS_INT>(std::strlen(name)) + 1 : length;
}

// The text of a kept name: its NUL, if it has one, is not counted again.
inline CS_INT text_length(const CS_CHAR *name, CS_INT length) {
    return length > 0 && name[length - 1] == '\0' ? length - 1 : length;
}

// The context's current list; null for none.
inline void make_current(LM_CONTEXT *context, LM_HANDLE *handle) {
    context->cxtprop->cur_handleaddr = handle;
    context->cxtprop->cur_handlename = handle != nullptr ? handle->hdlprop->handle_name : nullptr;
}

} // namespace dlx

#endif

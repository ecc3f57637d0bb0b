// What the kinds of list share inside the manager.
#ifndef DLX_LIST_KINDS_H
#define DLX_LIST_KINDS_H

#include "list/records.h"

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

CS_RETCODE drop_dlink(LM_HANDLE *handle);
// A table and its entries, without the node pool.
void drop_chash_table(LM_HANDLE *handle);
void drop_dhash_table(LM_HANDLE *handle);

} // namespace dlx

#endif

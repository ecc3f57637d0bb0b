// What the two property functions share: values go through the caller's buffer by address.
#ifndef DLX_LIST_PROPERTIES_H
#define DLX_LIST_PROPERTIES_H

#include "diag/check.h"

#include <dlxcomn/list.h>

#include <cstring>

namespace dlx {

// One property call. Checks made here report the exported function's line.
struct PropertyCall {
    CS_INT action;
    CS_VOID *buffer;
    CS_INT buflen;
    CS_INT *outlen;
    SourceLine member;

    template <class Value>
    CS_RETCODE get(const Value &value) const {
        COM_REQUIRE_PTR_AT(member, buffer, CS_FAIL);
        std::memcpy(buffer, &value, sizeof value);
        if (outlen != nullptr)
            *outlen = sizeof value;
        return CS_SUCCEED;
    }

    template <class Value>
    CS_RETCODE set(Value &field) const {
        COM_REQUIRE_PTR_AT(member, buffer, CS_FAIL);
        std::memcpy(&field, buffer, sizeof field);
        return CS_SUCCEED;
    }

    // A field that can be read, set, and cleared to a standard value.
    template <class Value>
    CS_RETCODE get_set_clear(Value &field, Value standard) const {
        switch (action) {
        case LM_ACT_GET:
            return get(field);
        case LM_ACT_SET:
            return set(field);
        default:
            field = standard;
            return CS_SUCCEED;
        }
    }

    template <class Value>
    CS_RETCODE get_only(const Value &value) const {
        COM_REQUIRE_AT(member, action == LM_ACT_GET, CS_FAIL);
        COM_REQUIRE_AT(member, buflen == LM_UNUSED, CS_FAIL);
        return get(value);
    }
};

} // namespace dlx

#endif

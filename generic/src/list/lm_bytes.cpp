// Copies of byte strings for the property functions.
#include "diag/check.h"

#include <dlxcomn/list.h>

#include <cstdlib>
#include <cstring>

CS_RETCODE lm___api_reallength(CS_CHAR *src, CS_INT srclen, CS_BOOL null_term, CS_INT *actual_len,
                               CS_INT *bytes_needed) {
    COM_REQUIRE_PTR(actual_len, CS_FAIL);
    COM_REQUIRE_PTR(bytes_needed, CS_FAIL);
    COM_REQUIRE(null_term == CS_FALSE || null_term == CS_TRUE, CS_FAIL);
    CS_INT length = 0;
    if (src != nullptr) {
        length = srclen == LM_NULLTERM ? static_cast<CS_INT>(std::strlen(src)) : srclen;
        COM_REQUIRE(length >= 0, CS_FAIL);
    }
    *actual_len = length;
    *bytes_needed = length + null_term;
    return CS_SUCCEED;
}

// A destination that is too small is reported by the length alone: nothing is copied, and it is no failure.
CS_RETCODE lm__api_cp_bytes(CS_CHAR *src, CS_INT srclen, CS_BOOL null_term, CS_CHAR *dest, CS_INT destlen,
                            CS_INT *outlen) {
    CS_INT length = 0;
    CS_INT needed = 0;
    if (lm___api_reallength(src, srclen, null_term, &length, &needed) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    if (needed <= destlen && needed > 0) {
        COM_REQUIRE_PTR(dest, CS_FAIL);
        if (length > 0)
            std::memcpy(dest, src, static_cast<std::size_t>(length));
        if (null_term)
            dest[length] = '\0';
    }
    if (outlen != nullptr)
        *outlen = needed;
    return CS_SUCCEED;
}

CS_RETCODE lm__api_prop_cpbytes(CS_CHAR *src, CS_INT srclen, CS_BOOL null_term, CS_CHAR *dest, CS_INT destlen,
                                CS_INT *outlen) {
    return lm__api_cp_bytes(src, srclen, null_term, dest, destlen, outlen);
}

// The copy is the plain allocator's, whatever the context's is.
CS_RETCODE lm__api_setdata(CS_CHAR *src, CS_INT srclen, CS_BOOL null_term, CS_CHAR **p_dest, CS_INT *p_destlen) {
    COM_REQUIRE_PTR(p_dest, CS_FAIL);
    COM_REQUIRE_PTR(p_destlen, CS_FAIL);
    CS_INT length = 0;
    CS_INT needed = 0;
    if (lm___api_reallength(src, srclen, null_term, &length, &needed) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    *p_dest = nullptr;
    *p_destlen = 0;
    if (length == 0)
        return CS_SUCCEED;
    auto *copy = static_cast<CS_CHAR *>(std::malloc(static_cast<std::size_t>(needed)));
    if (copy == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    std::memcpy(copy, src, static_cast<std::size_t>(length));
    if (null_term)
        copy[length] = '\0';
    *p_dest = copy;
    *p_destlen = length;
    return CS_SUCCEED;
}

CS_RETCODE lm__api_prop_setdata(CS_CHAR *buffer, CS_INT buflen, CS_BOOL null_term, CS_CHAR **prop_ptr,
                                CS_INT *proplen) {
    COM_REQUIRE_PTR(prop_ptr, CS_FAIL);
    COM_REQUIRE_PTR(proplen, CS_FAIL);
    std::free(*prop_ptr);
    *prop_ptr = nullptr;
    *proplen = 0;
    lm__api_setdata(buffer, buflen, null_term, prop_ptr, proplen);
    return CS_SUCCEED; // whatever came of it: an empty property is what callers look at
}

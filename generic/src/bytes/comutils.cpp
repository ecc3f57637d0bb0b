// Small memory and lookup services.
#include "diag/check.h"

#include <dlxcomn/services.h>

#include <cstdlib>
#include <cstring>

#include <dlfcn.h>

CS_RETCODE com_setstring(CS_CHAR **destp, CS_INT *destlenp, CS_CHAR *source, CS_INT sourcelen) {
    if (destp == nullptr || destlenp == nullptr || source == nullptr)
        return COM_TRACE(CS_FAIL);
    const CS_INT length = sourcelen == CS_NULLTERM ? static_cast<CS_INT>(std::strlen(source)) : sourcelen;
    if (length <= 0)
        return COM_TRACE(CS_FAIL);
    // Overwritten with what realloc answers: where memory is short the old string is lost to the caller.
    *destp = static_cast<CS_CHAR *>(std::realloc(*destp, static_cast<std::size_t>(length) + 1));
    if (*destp == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    std::memcpy(*destp, source, static_cast<std::size_t>(length));
    (*destp)[length] = '\0';
    *destlenp = length;
    return CS_SUCCEED;
}

CS_VOID *com_secure_memset(CS_VOID *s, int c, size_t n) {
    COM_REQUIRE_PTR(s, s);
    // It clears secrets: volatile stores are made even when nothing reads the bytes again.
    volatile auto *bytes = static_cast<volatile unsigned char *>(s);
    for (size_t i = 0; i < n; ++i)
        bytes[i] = static_cast<unsigned char>(c);
    return s;
}

CS_VOID *com_dlsym(CS_CHAR *symbol) {
    COM_REQUIRE_PTR(symbol, nullptr);
    return dlsym(RTLD_DEFAULT, symbol);
}

CS_RETCODE comn_get_default_tid(CS_VOID *buffer, CS_INT buflen, CS_INT *outlen) {
    constexpr CS_INT ID = 0;
    COM_REQUIRE_PTR(buffer, CS_FAIL);
    if (buflen < static_cast<CS_INT>(sizeof ID))
        return COM_TRACE(CS_FAIL);
    std::memcpy(buffer, &ID, sizeof ID);
    if (outlen != nullptr)
        *outlen = sizeof ID;
    return CS_SUCCEED;
}

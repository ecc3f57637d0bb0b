// Conversions from and to the binary group: bytes in memory order, without interpretation.
#include "frame/conversion.h"

#include <cstddef>
#include <cstring>

using namespace dlx;

CS_RETCODE comn_fixedtobin(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt, CS_VOID *dest,
                           CS_INT *destlen, CS_INT width) {
    const Conversion call = {context, srcfmt, src, destfmt, dest, destlen, COM_HERE};
    if (!call.has_pointers())
        return CS_FAIL;
    COM_REQUIRE(Bin::serves(destfmt->datatype), CS_FAIL);
    COM_REQUIRE(destfmt->maxlength >= 0, CS_FAIL);
    COM_REQUIRE(width >= 1, CS_FAIL);

    const CS_INT room = destfmt->maxlength;
    *destlen = room < width ? room : width;
    std::memmove(dest, src, static_cast<std::size_t>(*destlen));
    if (room < width) // the bytes at the lowest addresses are kept: of an integer the low-order ones
        return COM_TRACE(CS_ETRUNCATED);
    return comn__padbin(width, destfmt, dest, destlen);
}

CS_RETCODE comn_fixedtovarbin(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt, CS_VOID *dest,
                              CS_INT *destlen, CS_INT width) {
    const Conversion call = {context, srcfmt, src, destfmt, dest, destlen, COM_HERE};
    if (!call.has_pointers())
        return CS_FAIL;
    COM_REQUIRE(VarBin::serves(destfmt->datatype), CS_FAIL);

    constexpr CS_INT CAPACITY = sizeof(CS_VARBINARY::array);
    const CS_INT count = width < 0 || width >= CAPACITY ? CAPACITY : width;
    auto *record = static_cast<CS_BYTE *>(dest);
    // The bytes first: the value may stand where the record goes.
    std::memmove(record + offsetof(CS_VARBINARY, array), src, static_cast<std::size_t>(count));
    store(record + offsetof(CS_VARBINARY, len), static_cast<CS_SMALLINT>(count));
    *destlen = sizeof(CS_VARBINARY);
    return count < width ? COM_TRACE(CS_EOVERFLOW) : CS_SUCCEED;
}

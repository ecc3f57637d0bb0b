// Handles: a reference to a set, which the process shares, and the substitutes of the one who holds it.
#include "sets.h"
#include "text.h"

#include <algorithm>
#include <cstdlib>
#include <new>

using namespace dlx::unic;

namespace {

struct Handle {
    const CharacterSet *set;
    Substitutes substitutes;
};

Handle *handle_of(CVTH handle) { return static_cast<Handle *>(handle); }

int make_handle(UNICONV_CID cid, const UNICHAR *directory, CVTH *handle) {
    *handle = nullptr;
    const CharacterSet *set = nullptr;
    const int status = find_set(cid, directory, &set);
    if (status != UNI_OK)
        return status;
    void *room = std::malloc(sizeof(Handle));
    if (room == nullptr)
        return UNI_NOMEMORY;
    *handle = new (room) Handle{set, {}};
    return UNI_OK;
}

// The most that a byte of the source becomes, from the shapes of its codes.
int growth(const CharacterSet &source, const CharacterSet &destination) {
    const int unit = destination.unit_bytes;
    const auto of = [](int bytes, int loads) { return (bytes + loads - 1) / loads; };
    switch (source.number) {
    case ASCII:
        return destination.number == UTF16 ? 2 : 1;
    case UTF16: // two bytes a unit
        return of(unit, 2);
    case UTF8: { // an ASCII character a byte, or a unit from two bytes or more
        const bool shifts = (destination.table.header != nullptr) && (destination.table.flags & TABLE_SHIFT) != 0;
        return std::max({destination.number == UTF16 || shifts ? 2 : 1, of(unit, 2), of(2 * unit, 4)});
    }
    case COMPRESSION: // a byte can be a pair of units
        return destination.number == UTF8 || destination.number == UTF16 ? 4 : 2 * unit;
    default:
        return destination.number == UTF8 ? source.table.header->utf8_growth : unit;
    }
}

} // namespace

void i18nuni_RequestSetDefaults(I18NUNI_REQUEST *request) { *request = {1, 0, 0}; }

int uniconv_HandleGet(UNICONV_CID cid, CVTH *handle) { return make_handle(cid, nullptr, handle); }

int uniconv_HandleGetU(UNICONV_CID cid, const I18NUNI_REQUEST *request, const UNICHAR *path, int selector,
                       CVTH *handle) {
    *handle = nullptr;
    const bool given = request != nullptr && request->useCurrentDir == 2;
    if (selector != 0 || (given && path == nullptr))
        return UNI_NOSET;
    return make_handle(cid, given ? path : nullptr, handle);
}

void uniconv_HandleFree(CVTH handle) { std::free(handle); }

int uniconv_SetSubstituteChar(CVTH handle, int code) {
    if (handle == nullptr || code < 1 || code > 0xFF)
        return UNI_BADTEXT;
    handle_of(handle)->substitutes.narrow = static_cast<std::uint8_t>(code);
    return UNI_OK;
}

int uniconv_SetDBCSSubstituteChar(CVTH handle, int code) {
    if (handle == nullptr || code < 0x101 || code > 0xFFFF || (code & 0xFF) == 0)
        return UNI_BADTEXT;
    handle_of(handle)->substitutes.wide = static_cast<std::uint16_t>(code);
    return UNI_OK;
}

int uniconv_SetSource(CVTH handle, UNICONV_CID source) {
    if (handle == nullptr)
        return UNI_NOSET;
    const CharacterSet *set = nullptr;
    const int status = find_set(source, nullptr, &set);
    if (status == UNI_OK)
        handle_of(handle)->substitutes.source = set;
    return status;
}

int uniconv_unistrFromS(CVTH handle, UNICHAR *buffer, int size, const char *source, int *count) {
    *count = 0;
    if (handle == nullptr)
        return UNI_NOSET;
    if (size < 1)
        return UNI_NOROOM;
    const CharacterSet &set = *handle_of(handle)->set;
    return set.decode(set, buffer, static_cast<std::size_t>(size) - 1, source, count);
}

int uniconv_unistrToS(CVTH handle, char *buffer, int size, const UNICHAR *source, int *count) {
    *count = 0;
    if (handle == nullptr)
        return UNI_NOSET;
    if (size < 1)
        return UNI_NOROOM;
    const Handle &held = *handle_of(handle);
    return held.set->encode(*held.set, held.substitutes, buffer, static_cast<std::size_t>(size) - 1, source, count);
}

namespace {

int pass(UNICONV_CID cid, CharacterSet::Pass CharacterSet::*way, const char *source, int length, char *buffer, int size,
         int *count) {
    *count = 0;
    const CharacterSet *set = loaded_set(cid);
    if (set == nullptr) {
        const int status = find_set(cid, nullptr, &set);
        if (status != UNI_OK)
            return status;
    }
    if (set->*way == nullptr)
        return UNI_INDIRECT;
    if (length < 0 || size < 0)
        return UNI_BADTEXT;
    return (set->*way)(*set, reinterpret_cast<const std::uint8_t *>(source), static_cast<std::size_t>(length),
                       reinterpret_cast<std::uint8_t *>(buffer), static_cast<std::size_t>(size), count);
}

} // namespace

int uniconv_StrToUTF8(UNICONV_CID cid, const char *source, int length, char *buffer, int size, int *count) {
    return pass(cid, &CharacterSet::to_utf8, source, length, buffer, size, count);
}

int uniconv_StrFromUTF8(UNICONV_CID cid, const char *source, int length, char *buffer, int size, int *count) {
    return pass(cid, &CharacterSet::from_utf8, source, length, buffer, size, count);
}

int uniconv_GetExpansionFactor(CVTH handle, int *factor) {
    if (handle == nullptr)
        return UNI_NOSET;
    *factor = handle_of(handle)->set->unit_bytes;
    return UNI_OK;
}

int uniconv_GetExpansion(UNICONV_CID source, UNICONV_CID destination, int *factor) {
    const CharacterSet *from = nullptr;
    const CharacterSet *to = nullptr;
    int status = find_set(source, nullptr, &from);
    if (status == UNI_OK)
        status = find_set(destination, nullptr, &to);
    if (status == UNI_OK)
        *factor = from == to ? 1 : growth(*from, *to);
    return status;
}

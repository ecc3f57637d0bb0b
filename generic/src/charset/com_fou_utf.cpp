// UTF-8 and UTF-16, from one to the other.
//
// Both decoders are lenient in what callers have always been able to send (overlong forms, lone surrogates) and stop
// in front of what they refuse. The loops here take any text, a character at a time, and say why they stop; in front
// of them what is common is moved in blocks.

#include "bytes/memory.h"
#include "charset/utf_blocks.h"
#include "diag/check.h"

#include <dlxcomn/charconv.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace dlx {
namespace {

using namespace utf;

constexpr std::uint32_t LAST_OF_PLANE = FIRST_OF_PAIR - 1;
constexpr std::uint32_t FIRST_PRIVATE_USE = 0xE000;
constexpr std::uint32_t LAST_HIGH_SURROGATE = LOW_SURROGATE - 1;

// Fills the rest of the room and tells what was used.
template <class Pad>
int finish(Progress &at, const CS_BYTE *src, const CS_BYTE *dest, int *sused, int *dused, const CS_VOID *padbytes) {
    if (padbytes != nullptr) {
        const Pad pad = load<Pad>(padbytes);
        for (; at.room() >= static_cast<std::ptrdiff_t>(sizeof pad); at.dest += sizeof pad)
            store(at.dest, pad);
    }
    if (sused != nullptr)
        *sused = static_cast<int>(at.src - src);
    if (dused != nullptr)
        *dused = static_cast<int>(at.dest - dest);
    return at.flags;
}

bool is_continuation(CS_BYTE c) { return (c & 0xC0) == 0x80; }

bool are_continuations(const CS_BYTE *p, int count) { return std::all_of(p, p + count, is_continuation); }

std::uint32_t bits_of(const CS_BYTE *p, int continuations, std::uint32_t lead) {
    for (int i = 0; i < continuations; ++i)
        lead = lead << 6 | (p[i] & 0x3F);
    return lead;
}

// Bytes that a lead byte announces; 0 for one that begins nothing.
int sequence_length(CS_BYTE lead) {
    if (lead < 0x80)
        return 1;
    if ((lead & 0xE0) == 0xC0)
        return 2;
    if ((lead & 0xF0) == 0xE0)
        return 3;
    return (lead & 0xF8) == 0xF0 ? 4 : 0;
}

struct Decoded {
    std::uint32_t code_point;
    int bytes; // 0 for what is no character
};

Decoded decode(const Progress &at, bool validity_check) {
    const CS_BYTE *const p = at.src;
    const int bytes = sequence_length(*p);
    if (bytes == 0 || bytes > at.left() || !are_continuations(p + 1, bytes - 1))
        return {0, 0};
    const std::uint32_t lead_bits = bytes == 1 ? *p : *p & (0x7Fu >> bytes);
    const std::uint32_t code_point = bits_of(p + 1, bytes - 1, lead_bits);
    if (code_point > LAST_CODE_POINT)
        return {0, 0};
    if (validity_check && bytes >= 3 && code_point > LAST_VALID_UNIT && code_point <= LAST_OF_PLANE)
        return {0, 0};
    return {code_point, bytes};
}

// Writes one code point in as many bytes as it takes; false if the room is too small.
bool put_utf8(Progress &at, std::uint32_t code_point, int bytes) {
    if (at.room() < bytes)
        return false;
    static constexpr CS_BYTE LEAD[] = {0, 0, 0xC0, 0xE0, 0xF0};
    for (int i = bytes - 1; i > 0; --i) {
        at.dest[i] = static_cast<CS_BYTE>((code_point & 0x3F) | 0x80);
        code_point >>= 6;
    }
    at.dest[0] = static_cast<CS_BYTE>(code_point | LEAD[bytes]);
    at.dest += bytes;
    return true;
}

} // namespace
} // namespace dlx

using namespace dlx;

int com__fou_utf8_to_utf16(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused, CS_VOID *padbytes,
                           CS_BOOL validity_check) {
    if (slen > 0)
        COM_REQUIRE_PTR(src, CS_XLATE_INVALID);
    if (dlen > 0)
        COM_REQUIRE_PTR(dest, CS_XLATE_INVALID);
    Progress at = {src, src + std::max(slen, 0), dest, dest + std::max(dlen, 0)};
    while (at.left() > 0) {
        if (*at.src < 0x80) {
            move_ascii<ToUtf16>(at);
            if (at.left() <= 0)
                break;
        }
        if (convert_block<ToUtf16>(at, validity_check))
            continue;
        const Decoded next = decode(at, validity_check);
        if (next.bytes == 0) {
            at.flags = CS_XLATE_INVALID;
            break;
        }
        const bool is_pair = next.code_point > LAST_OF_PLANE;
        if (at.room() < (is_pair ? 2 * UNIT : UNIT)) {
            at.flags = CS_XLATE_FULL_DEST;
            break;
        }
        if (is_pair) {
            store_pair(at.dest, next.code_point);
            at.dest += 2 * UNIT;
        } else {
            store(at.dest, static_cast<Unit>(next.code_point));
            at.dest += UNIT;
        }
        at.src += next.bytes;
    }
    return finish<Unit>(at, src, dest, sused, dused, padbytes);
}

int com__fou_utf16_to_utf16(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused,
                            CS_VOID *padbytes) {
    if (slen > 0)
        COM_REQUIRE_PTR(src, CS_XLATE_INVALID);
    if (dlen > 0)
        COM_REQUIRE_PTR(dest, CS_XLATE_INVALID);
    Progress at = {src, src + std::max(slen, 0), dest, dest + std::max(dlen, 0)};
    const std::ptrdiff_t units = std::min(at.left(), at.room()) / UNIT;
    if (units > 0)
        std::memmove(at.dest, at.src, static_cast<std::size_t>(units * UNIT));
    at.src += units * UNIT;
    at.dest += units * UNIT;
    if (at.left() >= UNIT)
        at.flags = CS_XLATE_FULL_DEST;
    else if (at.left() == 1)
        at.flags = CS_XLATE_INVALID;
    return finish<Unit>(at, src, dest, sused, dused, padbytes);
}

int com__fou_utf16_to_utf8(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused, CS_VOID *padbytes,
                           CS_BOOL validity_check) {
    if (slen > 0)
        COM_REQUIRE_PTR(src, CS_XLATE_INVALID);
    if (dlen > 0)
        COM_REQUIRE_PTR(dest, CS_XLATE_INVALID);
    Progress at = {src, src + std::max(slen, 0), dest, dest + std::max(dlen, 0)};
    while (at.left() > 0) {
        if (at.left() == 1) {
            at.flags = CS_XLATE_INVALID;
            break;
        }
        if (load<Unit>(at.src) < 0x80) {
            move_ascii<ToUtf8>(at);
            if (at.left() < UNIT)
                continue;
        }
        if (convert_block<ToUtf8>(at, validity_check))
            continue;
        std::uint32_t code_point = load<Unit>(at.src);
        int units = 1;
        if (code_point >= FIRST_PRIVATE_USE) {
            if (validity_check && code_point > LAST_VALID_UNIT) {
                at.flags = CS_XLATE_INVALID;
                break;
            }
        } else if (code_point >= HIGH_SURROGATE && code_point <= LAST_HIGH_SURROGATE && at.left() >= 2 * UNIT) {
            // What follows need not be a low surrogate, only no other high one.
            const std::uint32_t next = load<Unit>(at.src + UNIT);
            if (next > LAST_HIGH_SURROGATE) {
                code_point = ((next & 0x3FF) | (code_point & 0x3FF) << 10) + LAST_OF_PLANE + 1;
                units = 2;
            }
        }
        const int bytes = code_point < 0x80 ? 1 : code_point < 0x800 ? 2 : code_point <= LAST_OF_PLANE ? 3 : 4;
        if (!put_utf8(at, code_point, bytes)) {
            at.flags = CS_XLATE_FULL_DEST;
            break;
        }
        at.src += units * UNIT;
    }
    return finish<CS_BYTE>(at, src, dest, sused, dused, padbytes);
}

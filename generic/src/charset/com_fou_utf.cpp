// UTF-8 and UTF-16, from one to the other.
//
// Both decoders are lenient in what callers have always been able to send (overlong forms, lone surrogates) and stop
// in front of what they refuse. The loops of the routines take any text, a character at a time, and say why they stop.
// In front of them two quicker steps take what is common and stop silently at anything else: long stretches of ASCII,
// and blocks of characters of one to three bytes. A block is written to a buffer of its own, so that its stores may be
// wider than what they have to say, and the destination still receives nothing behind the last character.

#include "bytes/memory.h"
#include "diag/check.h"

#include <dlxcomn/charconv.h>

#include <algorithm>
#include <bit>
#include <cstdint>

namespace dlx {
namespace {

using Unit = std::uint16_t;
constexpr int UNIT = sizeof(Unit);
constexpr std::uint32_t LAST_OF_PLANE = 0xFFFF;
constexpr std::uint32_t LAST_CODE_POINT = 0x10FFFF;
constexpr std::uint32_t FIRST_PRIVATE_USE = 0xE000;
constexpr std::uint32_t LAST_VALID_UNIT = 0xFFFD;
constexpr std::uint32_t HIGH_SURROGATE = 0xD800;
constexpr std::uint32_t LOW_SURROGATE = 0xDC00;
constexpr std::uint32_t LAST_HIGH_SURROGATE = 0xDBFF;
constexpr int STRIDE = 16; // characters of ASCII looked at together

// A conversion under way: what is left of the source and of the room.
struct Progress {
    const CS_BYTE *src;
    const CS_BYTE *src_end;
    CS_BYTE *dest;
    CS_BYTE *dest_end;
    int flags = 0;

    std::ptrdiff_t left() const { return src_end - src; }
    std::ptrdiff_t room() const { return dest_end - dest; }
};

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

// Moves ASCII while both sides have a stride of it.
void widen_ascii(Progress &at) {
    while (at.left() >= STRIDE && at.room() >= STRIDE * UNIT) {
        if (((load<std::uint64_t>(at.src) | load<std::uint64_t>(at.src + 8)) & 0x8080808080808080) != 0)
            return;
        Unit units[STRIDE];
        for (int i = 0; i < STRIDE; ++i)
            units[i] = at.src[i];
        store(at.dest, units);
        at.src += STRIDE;
        at.dest += STRIDE * UNIT;
    }
}

void narrow_ascii(Progress &at) {
    while (at.left() >= STRIDE * UNIT && at.room() >= STRIDE) {
        struct Stride {
            Unit units[STRIDE];
        };
        const Stride stride = load<Stride>(at.src);
        Unit seen = 0;
        CS_BYTE bytes[STRIDE];
        for (int i = 0; i < STRIDE; ++i) {
            seen |= stride.units[i];
            bytes[i] = static_cast<CS_BYTE>(stride.units[i]);
        }
        if (seen >= 0x80)
            return;
        store(at.dest, bytes);
        at.src += STRIDE * UNIT;
        at.dest += STRIDE;
    }
}

constexpr std::ptrdiff_t SMALLEST_BLOCK = 16; // units; what is shorter goes by characters
constexpr std::ptrdiff_t LARGEST_BLOCK = 256;
constexpr int WORD_BYTES = sizeof(std::uint64_t);
constexpr int WORD_UNITS = WORD_BYTES / UNIT;
constexpr int THREE_BYTES = 3; // the most that a unit becomes, but for pairs, which are two units

static_assert(std::endian::native == std::endian::little, "the block steps take words apart from their low end");

// Decodes characters of one to three bytes, in words of which a part may be taken. Answers whether it came forward.
bool decode_block(Progress &at, bool validity_check) {
    const std::ptrdiff_t size = std::min({at.left(), at.room() / UNIT, LARGEST_BLOCK});
    if (size < SMALLEST_BLOCK)
        return false;
    Unit units[LARGEST_BLOCK + WORD_BYTES];
    Unit *to = units;
    const CS_BYTE *from = at.src;
    const CS_BYTE *const last_word = at.src + size - WORD_BYTES;
    while (from <= last_word) {
        const std::uint64_t high_bits = load<std::uint64_t>(from) & 0x8080808080808080;
        for (int i = 0; i < WORD_BYTES; ++i)
            to[i] = from[i];
        const int ascii = high_bits == 0 ? WORD_BYTES : std::countr_zero(high_bits) / 8;
        from += ascii;
        to += ascii;
        if (ascii == WORD_BYTES)
            continue;
        const CS_BYTE *const run = from;
        for (; from <= last_word; from += 2) {
            const std::uint32_t bytes = load<std::uint16_t>(from);
            if ((bytes & 0xC0E0) != 0x80C0)
                break;
            *to++ = static_cast<Unit>((bytes & 0x1F) << 6 | (bytes >> 8 & 0x3F));
        }
        for (; from <= last_word; from += 3) {
            const std::uint32_t bytes = load<std::uint32_t>(from);
            const std::uint32_t code_point = (bytes & 0x0F) << 12 | (bytes >> 2 & 0xFC0) | (bytes >> 16 & 0x3F);
            if ((bytes & 0xC0C0F0) != 0x8080E0 || (code_point > LAST_VALID_UNIT && validity_check))
                break;
            *to++ = static_cast<Unit>(code_point);
        }
        if (from == run)
            break;
    }
    std::memcpy(at.dest, units, static_cast<std::size_t>(to - units) * UNIT);
    at.dest += (to - units) * UNIT;
    const bool is_forward = from != at.src;
    at.src = from;
    return is_forward;
}

// Encodes units that are no surrogates, four ASCII ones at once. Answers whether it came forward.
bool encode_block(Progress &at, bool validity_check) {
    const std::ptrdiff_t size = std::min({at.left() / UNIT, at.room() / THREE_BYTES, LARGEST_BLOCK});
    if (size < SMALLEST_BLOCK)
        return false;
    CS_BYTE bytes[LARGEST_BLOCK * THREE_BYTES + WORD_UNITS];
    CS_BYTE *to = bytes;
    const CS_BYTE *from = at.src;
    const CS_BYTE *const last_word = at.src + size * UNIT - WORD_BYTES;
    while (from <= last_word) {
        const auto word = load<std::uint64_t>(from);
        const std::uint64_t high_bits = word & 0xFF80FF80FF80FF80;
        const std::uint64_t pairs = word | word >> 8;
        store(to, static_cast<std::uint32_t>((pairs & 0xFFFF) | (pairs >> 16 & 0xFFFF0000)));
        const int ascii = high_bits == 0 ? WORD_UNITS : std::countr_zero(high_bits) / 16;
        from += ascii * UNIT;
        to += ascii;
        if (ascii == WORD_UNITS)
            continue;
        const CS_BYTE *const run = from;
        for (; from <= last_word; from += UNIT) {
            const std::uint32_t unit = load<Unit>(from);
            if (unit < 0x80)
                break;
            if (unit < 0x800) {
                store(to, static_cast<std::uint16_t>(0x80C0 | unit >> 6 | (unit & 0x3F) << 8));
                to += 2;
                continue;
            }
            if ((unit & 0xF800) == HIGH_SURROGATE || (unit > LAST_VALID_UNIT && validity_check))
                break;
            store(to, 0x8080E0 | unit >> 12 | (unit << 2 & 0x3F00) | (unit & 0x3F) << 16);
            to += 3;
        }
        if (from == run)
            break;
    }
    std::memcpy(at.dest, bytes, static_cast<std::size_t>(to - bytes));
    at.dest += to - bytes;
    const bool is_forward = from != at.src;
    at.src = from;
    return is_forward;
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
    Progress at = {src, src + slen, dest, dest + dlen};
    while (at.left() > 0) {
        if (*at.src < 0x80) {
            widen_ascii(at);
            if (at.left() <= 0)
                break;
        }
        if (decode_block(at, validity_check))
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
            const std::uint32_t rest = next.code_point - (LAST_OF_PLANE + 1);
            store(at.dest, static_cast<Unit>((rest >> 10 & 0x3FF) | HIGH_SURROGATE));
            store(at.dest + UNIT, static_cast<Unit>((rest & 0x3FF) | LOW_SURROGATE));
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
    Progress at = {src, src + slen, dest, dest + dlen};
    const std::ptrdiff_t units = std::max<std::ptrdiff_t>(0, std::min(at.left(), at.room()) / UNIT);
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
    Progress at = {src, src + slen, dest, dest + dlen};
    while (at.left() > 0) {
        if (at.left() == 1) {
            at.flags = CS_XLATE_INVALID;
            break;
        }
        if (load<Unit>(at.src) < 0x80) {
            narrow_ascii(at);
            if (at.left() < UNIT)
                continue;
        }
        if (encode_block(at, validity_check))
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

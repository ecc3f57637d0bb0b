// The sets that need no table: ASCII, UTF-8 and UTF-16; and UTF-8 without a handle, where a fault ends the conversion.
#include "one_pass.h"
#include "sets.h"
#include "text.h"
#include "utf8.h"

#include <algorithm>

namespace dlx::unic {
namespace {

// ---- ASCII --------------------------------------------------------------------------------------------------------

int decode_ascii(const CharacterSet &, UNICHAR *buffer, std::size_t room, const char *source, int *count) {
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(source);
    const std::size_t length = std::strlen(source);
    const std::size_t n = std::min(length, room);
    bool missing = false;
    for (std::size_t i = 0; i < n;) {
        i += widen_ascii(bytes + i, n - i, buffer + i);
        if (i < n) {
            buffer[i++] = REPLACEMENT;
            missing = true;
        }
    }
    return end_units({missing, n < length, false}, buffer, buffer + n, count);
}

int encode_ascii(const CharacterSet &, const Substitutes &substitutes, char *buffer, std::size_t room,
                 const UNICHAR *source, int *count) {
    auto *const begin = reinterpret_cast<std::uint8_t *>(buffer);
    std::uint8_t *out = begin;
    std::uint8_t *const limit = begin + room;
    const UNICHAR *p = source;
    const UNICHAR *const end = source + length16(source);
    Ending ending;
    while (p != end) {
        const std::size_t done = narrow_ascii(p, static_cast<std::size_t>(std::min(end - p, limit - out)), out);
        p += done;
        out += done;
        if (p == end)
            break;
        if (out == limit) {
            ending.no_room = true;
            break;
        }
        p += is_high_surrogate(*p) && end - p >= 2 && is_low_surrogate(p[1]) ? 2 : 1;
        *out++ = substitutes.narrow;
        ending.substituted = true;
    }
    return end_bytes(ending, begin, out, room, count);
}

// ---- UTF-8 --------------------------------------------------------------------------------------------------------

// Towards 16-bit text. A fault is replaced, or with STRICT ends the conversion with *fault set.
template <bool STRICT>
UNICHAR *units_from_utf8(UNICHAR *out, UNICHAR *limit, const char *source, Ending *ending, bool *fault) {
    const auto *p = reinterpret_cast<const std::uint8_t *>(source);
    const std::uint8_t *const end = p + std::strlen(source);
    while (p != end) {
        if (out == limit) {
            ending->no_room = true;
            break;
        }
        if (*p < 0x80) {
            const std::size_t done = widen_ascii(p, static_cast<std::size_t>(std::min(end - p, limit - out)), out);
            p += done;
            out += done;
            continue;
        }
        // The usual forms of two and three bytes; what they do not take is looked at closely.
        if ((*p & 0xE0) == 0xC0 && *p >= 0xC2 && end - p >= 2 && (p[1] & 0xC0) == 0x80) {
            *out++ = static_cast<UNICHAR>((p[0] & 0x1F) << 6 | (p[1] & 0x3F));
            p += 2;
            continue;
        }
        if (const UNICHAR *const before = out; (*p & 0xF0) == 0xE0) {
            for (const UNICHAR *const stop = out + std::min((end - p) / 3, limit - out); out != stop; p += 3) {
                if ((p[0] & 0xF0) != 0xE0 || (p[1] & 0xC0) != 0x80 || (p[2] & 0xC0) != 0x80)
                    break;
                const unsigned unit = (p[0] & 0x0Fu) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3Fu);
                if (unit < 0x800 || is_surrogate(unit))
                    break;
                *out++ = static_cast<UNICHAR>(unit);
            }
            if (out != before)
                continue;
        }
        const Sequence sequence = sequence_at(p, end);
        if (sequence.kind == Sequence::CUT) {
            ending->truncated = true;
            break;
        }
        if (sequence.kind == Sequence::MALFORMED) {
            if (STRICT) {
                *fault = true;
                break;
            }
            ending->substituted = true;
        }
        if (sequence.character >= 0x10000) {
            if (limit - out < 2) {
                ending->no_room = true;
                break;
            }
            *out++ = high_surrogate_of(sequence.character);
            *out++ = low_surrogate_of(sequence.character);
        } else {
            *out++ = static_cast<UNICHAR>(sequence.character);
        }
        p += sequence.length;
    }
    return out;
}

// Eight units where there is room for the most that they can become: false for a surrogate among them.
inline bool eight_to_utf8(const UNICHAR *p, std::uint8_t **target) {
    std::uint8_t *out = *target;
    for (int i = 0; i < 8; ++i) {
        const unsigned unit = p[i];
        if (unit < 0x800) {
            // Without a branch: accents fall anywhere between letters.
            const bool two = unit >= 0x80;
            out[0] = static_cast<std::uint8_t>(two ? 0xC0 | unit >> 6 : unit);
            out[1] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
            out += 1 + two;
        } else {
            if (is_surrogate(unit))
                return false;
            out[0] = static_cast<std::uint8_t>(0xE0 | unit >> 12);
            out[1] = static_cast<std::uint8_t>(0x80 | (unit >> 6 & 0x3F));
            out[2] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
            out += 3;
        }
    }
    *target = out;
    return true;
}

template <bool STRICT>
std::uint8_t *utf8_from_units(std::uint8_t *out, std::uint8_t *limit, const UNICHAR *source, Ending *ending,
                              bool *fault) {
    const UNICHAR *p = source;
    const UNICHAR *const end = source + length16(source);
    while (p != end) {
        while (end - p >= 8 && limit - out >= 24) {
            const std::size_t prefix = narrow_ascii_8(p, out);
            if (prefix == 8)
                out += 8;
            else if (!eight_to_utf8(p, &out))
                break;
            p += 8;
        }
        for (const UNICHAR *const stop = end - p > 8 ? p + 8 : end; p < stop;) {
            char32_t character = *p;
            int units = 1;
            if (is_surrogate(character)) {
                if (is_high_surrogate(character) && end - p >= 2 && is_low_surrogate(p[1])) {
                    character = code_point_of(character, p[1]);
                    units = 2;
                } else if (STRICT) {
                    *fault = true;
                    return out;
                } else {
                    character = REPLACEMENT;
                }
            }
            if (limit - out < utf8_length(character)) {
                ending->no_room = true;
                return out;
            }
            ending->substituted |= character == REPLACEMENT && *p != REPLACEMENT;
            out = put_utf8(out, character);
            p += units;
        }
    }
    return out;
}

int decode_utf8(const CharacterSet &, UNICHAR *buffer, std::size_t room, const char *source, int *count) {
    Ending ending;
    UNICHAR *const end = units_from_utf8<false>(buffer, buffer + room, source, &ending, nullptr);
    return end_units(ending, buffer, end, count);
}

int encode_utf8(const CharacterSet &, const Substitutes &, char *buffer, std::size_t room, const UNICHAR *source,
                int *count) {
    auto *const begin = reinterpret_cast<std::uint8_t *>(buffer);
    Ending ending;
    std::uint8_t *const end = utf8_from_units<false>(begin, begin + room, source, &ending, nullptr);
    return end_bytes(ending, begin, end, room, count);
}

// ---- UTF-16 -------------------------------------------------------------------------------------------------------

// The bytes are those of 16-bit text in machine order, at any address.
int decode_utf16(const CharacterSet &, UNICHAR *buffer, std::size_t room, const char *source, int *count) {
    const auto unit_at = [&](std::size_t i) {
        UNICHAR unit;
        std::memcpy(&unit, source + 2 * i, sizeof unit);
        return unit;
    };
    Ending ending;
    std::size_t n = 0;
    for (UNICHAR unit = 0; (unit = unit_at(n)) != 0;) {
        if (n == room) {
            ending.no_room = true;
            break;
        }
        if (is_high_surrogate(unit) && is_low_surrogate(unit_at(n + 1))) {
            if (room - n < 2) {
                ending.no_room = true;
                break;
            }
            buffer[n] = unit;
            buffer[n + 1] = unit_at(n + 1);
            n += 2;
            continue;
        }
        if (is_high_surrogate(unit) && unit_at(n + 1) == 0) {
            ending.truncated = true;
            break;
        }
        ending.substituted |= is_surrogate(unit);
        buffer[n++] = is_surrogate(unit) ? static_cast<UNICHAR>(REPLACEMENT) : unit;
    }
    return end_units(ending, buffer, buffer + n, count);
}

int encode_utf16(const CharacterSet &, const Substitutes &, char *buffer, std::size_t room, const UNICHAR *source,
                 int *count) {
    auto *const begin = reinterpret_cast<std::uint8_t *>(buffer);
    const std::size_t length = length16(source);
    std::size_t n = std::min(length, room / 2);
    Ending ending;
    ending.no_room = n < length;
    if (ending.no_room && n > 0 && is_high_surrogate(source[n - 1]) && is_low_surrogate(source[n]))
        --n;
    for (std::size_t i = 0; i < n; ++i) {
        UNICHAR unit = source[i];
        if (is_surrogate(unit)) {
            const bool paired =
                is_high_surrogate(unit) ? is_low_surrogate(source[i + 1]) : i > 0 && is_high_surrogate(source[i - 1]);
            ending.substituted |= !paired;
            unit = paired ? unit : static_cast<UNICHAR>(REPLACEMENT);
        }
        std::memcpy(begin + 2 * i, &unit, sizeof unit);
    }
    // The terminator is a whole unit where there is room for it; it counts as one byte, as that of every set.
    if (!ending.no_room && room > 2 * n)
        begin[2 * n + 1] = 0;
    return end_bytes(ending, begin, begin + 2 * n, room, count);
}

// ---- Widths -------------------------------------------------------------------------------------------------------

bool is_wide_ascii(const CharacterSet &, char32_t) { return false; }
bool is_wide_utf8(const CharacterSet &, char32_t character) { return character >= 0x80; }
bool is_wide_utf16(const CharacterSet &, char32_t) { return true; }

} // namespace

constinit const CharacterSet ASCII_SET = {ASCII, decode_ascii, encode_ascii, is_wide_ascii, 1, single_to_utf8, single_from_utf8,
                                          &ASCII_BYTES, nullptr, nullptr, {}};
constinit const CharacterSet UTF8_SET = {UTF8, decode_utf8, encode_utf8, is_wide_utf8, 3, nullptr, nullptr, nullptr, nullptr, nullptr, {}};
constinit const CharacterSet UTF16_SET = {UTF16, decode_utf16, encode_utf16, is_wide_utf16, 2, nullptr, nullptr, nullptr, nullptr, nullptr, {}};

} // namespace dlx::unic

using namespace dlx::unic;

int uniutf8_unistrToUTF8(char *buffer, int size, const UNICHAR *source, int *count) {
    *count = 0;
    if (size < 1)
        return UNI_UTF8_NOROOM;
    auto *const begin = reinterpret_cast<std::uint8_t *>(buffer);
    const std::size_t room = static_cast<std::size_t>(size) - 1;
    Ending ending;
    bool fault = false;
    std::uint8_t *const end = utf8_from_units<true>(begin, begin + room, source, &ending, &fault);
    end_bytes(ending, begin, end, room, count);
    --*count;
    return fault ? UNI_BADTEXT : ending.no_room ? UNI_UTF8_NOROOM : *count;
}

int uniutf8_unistrFromUTF8(UNICHAR *buffer, int size, const char *source, int *count) {
    *count = 0;
    if (size < 1)
        return UNI_UTF8_NOROOM;
    Ending ending;
    bool fault = false;
    UNICHAR *const end = units_from_utf8<true>(buffer, buffer + (size - 1), source, &ending, &fault);
    end_units(ending, buffer, end, count);
    return fault ? UNI_BADTEXT : ending.truncated ? UNI_TRUNCATED : ending.no_room ? UNI_UTF8_NOROOM : *count;
}

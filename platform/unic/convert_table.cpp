// Conversions by a table. Text is mostly ASCII, then mostly characters of one look-up; what is rarer stands aside.
#include "codes.h"
#include "sets.h"
#include "text.h"

#include <algorithm>

namespace dlx::unic {
namespace {

constexpr int SHIFT_OUT = 0x0E; // to codes of two bytes
constexpr int SHIFT_IN = 0x0F;

// ---- Bytes to characters ----------------------------------------------------------------------------------------

// Sets of single bytes: a unit a byte, so that the room is known to suffice from the start.
int decode_single(const CharacterSet &set, UNICHAR *buffer, std::size_t room, const char *source, int *count) {
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(source);
    const std::size_t length = std::strlen(source);
    const std::size_t n = std::min(length, room);
    const std::uint16_t *units = set.table.leaf16;
    const bool ascii = (set.table.flags & TABLE_ASCII) != 0;
    bool missing = false;
    std::size_t i = 0;
    while (n - i >= 16) {
        if (!ascii || widen_ascii_16(bytes + i, buffer + i) != 16) {
            for (std::size_t k = i; k < i + 16; ++k) {
                buffer[k] = units[bytes[k]];
                missing |= buffer[k] == REPLACEMENT;
            }
        }
        i += 16;
    }
    for (; i < n; ++i) {
        buffer[i] = units[bytes[i]];
        missing |= buffer[i] == REPLACEMENT;
    }
    return end_units({missing, n < length, false}, buffer, buffer + n, count);
}

constexpr int units_of(char32_t character) { return character == 0 ? 0 : character < 0x10000 ? 1 : 2; }

inline UNICHAR *put_units(UNICHAR *out, char32_t character) {
    if (character >= 0x10000) {
        *out++ = high_surrogate_of(character);
        *out++ = low_surrogate_of(character);
    } else {
        *out++ = static_cast<UNICHAR>(character);
    }
    return out;
}

template <bool SHIFT>
int decode_codes(const CharacterSet &set, UNICHAR *buffer, std::size_t room, const char *source, int *count) {
    const Table &table = set.table;
    const bool ascii = (table.flags & TABLE_ASCII) != 0;
    const auto *p = reinterpret_cast<const std::uint8_t *>(source);
    const std::uint8_t *const end = p + std::strlen(source);
    UNICHAR *out = buffer;
    UNICHAR *const limit = buffer + room;
    const Entry *root = table.entries;
    Ending ending;
    while (p != end) {
        if (SHIFT && (*p == SHIFT_OUT || *p == SHIFT_IN)) {
            root = table.entries + (*p == SHIFT_OUT ? 256 : 0);
            ++p;
            continue;
        }
        if (out == limit) {
            ending.no_room = true;
            break;
        }
        if (!SHIFT && ascii && *p < 0x80) {
            const std::size_t done = widen_ascii(p, static_cast<std::size_t>(std::min(end - p, limit - out)), out);
            p += done;
            out += done;
            continue;
        }
        // Runs of codes of two bytes.
        const std::uint8_t *const before = p;
        for (const UNICHAR *const stop = out + std::min((end - p) / 2, limit - out); out != stop; p += 2) {
            const Entry &entry = root[p[0]];
            const unsigned at = static_cast<unsigned>(p[1]) - entry.low;
            if (entry.kind != ENTRY_LEAF16 || at > static_cast<unsigned>(entry.high) - entry.low)
                break;
            const std::uint16_t unit = table.leaf16[entry.value + at];
            if (unit == REPLACEMENT)
                break;
            *out++ = unit;
        }
        if (p != before)
            continue;
        if (root[*p].kind == ENTRY_CHARACTER && root[*p].value < REPLACEMENT) {
            *out++ = static_cast<UNICHAR>(root[*p].value);
            ++p;
            continue;
        }
        const Code code = code_at<SHIFT>(table, root, p, static_cast<std::size_t>(end - p));
        if (code.truncated) {
            ending.truncated = true;
            break;
        }
        if (limit - out < units_of(code.character) + units_of(code.second)) {
            ending.no_room = true;
            break;
        }
        ending.substituted |= code.character == REPLACEMENT;
        out = put_units(out, code.character);
        if (code.second != 0)
            out = put_units(out, code.second);
        p += code.length;
    }
    return end_units(ending, buffer, out, count);
}

// ---- Characters to bytes ----------------------------------------------------------------------------------------

// A character of 16-bit text; half a surrogate pair is a character without a partner.
struct Character {
    char32_t value;
    int units;
};
inline Character character_at(const UNICHAR *p, const UNICHAR *end) {
    if (is_high_surrogate(*p) && end - p >= 2 && is_low_surrogate(p[1]))
        return {code_point_of(p[0], p[1]), 2};
    return {*p, 1};
}

int encode_single(const CharacterSet &set, const Substitutes &substitutes, char *buffer, std::size_t room,
                  const UNICHAR *source, int *count) {
    const Table &table = set.table;
    const bool ascii = (table.flags & TABLE_ASCII) != 0;
    auto *const begin = reinterpret_cast<std::uint8_t *>(buffer);
    std::uint8_t *out = begin;
    std::uint8_t *const limit = begin + room;
    const UNICHAR *p = source;
    const UNICHAR *const end = source + length16(source);
    Ending ending;
    for (;;) {
        // Eight characters at a time, as long as all of them have a partner.
        while (std::min(end - p, limit - out) >= 8) {
            if (!ascii || narrow_ascii_8(p, out) != 8) {
                bool missing = false;
                for (int i = 0; i < 8; ++i) {
                    out[i] = table.blocks8[table.index[p[i] >> 6] * 64u + (p[i] & 63)];
                    missing |= out[i] == 0;
                }
                if (missing)
                    break;
            }
            p += 8;
            out += 8;
        }
        if (p == end)
            break;
        // What is left at the end, or the block with a character that has none.
        for (const UNICHAR *const stop = std::min(end, p + 8); p < stop; ++out) {
            if (out == limit) {
                ending.no_room = true;
                return end_bytes(ending, begin, out, room, count);
            }
            const Character character = character_at(p, end);
            const std::uint8_t code = table.code_of<std::uint8_t>(character.value);
            ending.substituted |= code == 0;
            *out = code != 0 ? code : substitutes.narrow;
            p += character.units;
        }
    }
    return end_bytes(ending, begin, out, room, count);
}

// The code of the character at p, or of the pair there; 0 without a partner. *units is what it stands for.
template <typename Width>
std::uint32_t code_for(const Table &table, const UNICHAR *p, const UNICHAR *end, char32_t *character, int *units) {
    const Character at = character_at(p, end);
    *character = at.value;
    *units = at.units;
    if (table.header->pair_seconds != 0 && end - p > at.units) {
        const Character next = character_at(p + at.units, end);
        if (next.value >= table.header->second_low && next.value <= table.header->second_high) {
            const std::uint32_t code = pair_code(table, at.value, next.value);
            if (code != 0) {
                *units += next.units;
                return code;
            }
        }
    }
    const std::uint32_t code = table.code_of<Width>(at.value);
    return code == 0 && (table.flags & TABLE_LINEAR) != 0 ? linear_code(table, at.value) : code;
}

template <typename Width>
int encode_codes(const CharacterSet &set, const Substitutes &substitutes, char *buffer, std::size_t room,
                 const UNICHAR *source, int *count) {
    const Table &table = set.table;
    const std::uint16_t *const index = table.index;
    const auto *const blocks = static_cast<const Width *>(table.blocks);
    const bool pairs = table.header->pair_seconds != 0;
    const bool ascii = (table.flags & TABLE_ASCII) != 0;
    auto *const begin = reinterpret_cast<std::uint8_t *>(buffer);
    std::uint8_t *out = begin;
    std::uint8_t *const limit = begin + room;
    const UNICHAR *p = source;
    const UNICHAR *const end = source + length16(source);
    Ending ending;
    while (p != end) {
        if (ascii && *p < 0x80) {
            const std::size_t done = narrow_ascii(p, static_cast<std::size_t>(std::min(end - p, limit - out)), out);
            if (done == 0) {
                ending.no_room = true;
                break;
            }
            p += done;
            out += done;
            continue;
        }
        // Runs of characters with a code of two bytes; halves of pairs have none.
        if (!pairs) {
            const UNICHAR *const stop = p + std::min(end - p, (limit - out) / 2);
            for (; p != stop; ++p, out += 2) {
                const std::uint32_t code = blocks[index[*p >> 6] * 64u + (*p & 63)];
                if (code < 0x100 || code > 0xFFFF)
                    break;
                out[0] = static_cast<std::uint8_t>(code >> 8);
                out[1] = static_cast<std::uint8_t>(code);
            }
            if (p == end || (ascii && *p < 0x80))
                continue;
        }
        char32_t character;
        int units;
        std::uint32_t code = code_for<Width>(table, p, end, &character, &units);
        const bool missing = code == 0;
        if (missing)
            code = table.has_single_codes() ? substitutes.narrow : substitutes.of(character);
        const int bytes = bytes_of(code);
        if (limit - out < bytes) {
            ending.no_room = true;
            break;
        }
        ending.substituted |= missing;
        out = put_code(out, code, bytes);
        p += units;
    }
    return end_bytes(ending, begin, out, room, count);
}

// Two states. A byte is kept free for the way back to the first, in which every text ends.
template <typename Width>
int encode_shifted(const CharacterSet &set, const Substitutes &substitutes, char *buffer, std::size_t room,
                   const UNICHAR *source, int *count) {
    const Table &table = set.table;
    auto *const begin = reinterpret_cast<std::uint8_t *>(buffer);
    std::uint8_t *out = begin;
    std::uint8_t *const limit = begin + room;
    const UNICHAR *p = source;
    const UNICHAR *const end = source + length16(source);
    bool shifted = false;
    Ending ending;
    while (p != end) {
        char32_t character;
        int units;
        std::uint32_t code = code_for<Width>(table, p, end, &character, &units);
        const bool missing = code == 0;
        if (missing)
            code = substitutes.of(character);
        const int bytes = bytes_of(code);
        // A substitute whose bytes are no code of two is two codes of one.
        const bool wide = bytes == 2 && (code >> 8) >= 0x40 && (code & 0xFF) >= 0x40;
        if (limit - out < (wide != shifted) + bytes + wide) {
            ending.no_room = true;
            break;
        }
        if (wide != shifted) {
            *out++ = wide ? SHIFT_OUT : SHIFT_IN;
            shifted = wide;
        }
        ending.substituted |= missing;
        out = put_code(out, code, bytes);
        p += units;
    }
    if (shifted)
        *out++ = SHIFT_IN;
    return end_bytes(ending, begin, out, room, count);
}

// Whether the code of a character, or the one of a pair with it, is longer than a byte. What a text of the set holds for
// bytes that are no code is not a character of it, even where there is a code for the sign.
template <typename Width>
bool is_wide_code(const CharacterSet &set, char32_t character) {
    const Table &table = set.table;
    if (character == REPLACEMENT)
        return false;
    std::uint32_t code = table.code_of<Width>(character);
    if (code == 0 && (table.flags & TABLE_LINEAR) != 0)
        code = linear_code(table, character);
    for (std::uint32_t i = 0; code == 0 && i < table.pair_count; ++i)
        if (table.pairs[i].first == character || table.pairs[i].second == character)
            code = table.pairs[i].code;
    return code > 0xFF;
}

bool is_never_wide(const CharacterSet &, char32_t) { return false; }

// Whether a character is one that only sets with codes of two bytes and more have, and that fills two columns there.
bool fills_two_columns(char32_t c) {
    return (c >= 0x1100 && c < 0x1160) || (c >= 0x2E80 && c < 0xA4D0) || (c >= 0xA960 && c < 0xA980) ||
           (c >= 0xAC00 && c < 0xD7A4) || (c >= 0xE000 && c < 0xFB00) || (c >= 0xFE30 && c < 0xFE70) ||
           (c >= 0xFF00 && c < 0xFF61) || (c >= 0xFFE0 && c < 0xFFE7) || c >= 0x10000;
}

} // namespace

std::uint16_t Substitutes::of(char32_t character) const {
    const bool is_wide = source != nullptr ? source->is_wide(*source, character) : fills_two_columns(character);
    return is_wide ? wide : narrow;
}

void choose_functions(CharacterSet *set) {
    const TableHeader &header = *set->table.header;
    set->unit_bytes = header.unit_bytes;
    if ((header.flags & TABLE_SINGLE) != 0) {
        set->decode = decode_single;
        set->encode = encode_single;
        set->is_wide = is_never_wide;
        return;
    }
    const bool short_codes = header.code_width == 2;
    set->is_wide = short_codes ? is_wide_code<std::uint16_t> : is_wide_code<std::uint32_t>;
    if ((header.flags & TABLE_SHIFT) != 0) {
        set->decode = decode_codes<true>;
        set->encode = short_codes ? encode_shifted<std::uint16_t> : encode_shifted<std::uint32_t>;
    } else {
        set->decode = decode_codes<false>;
        set->encode = short_codes ? encode_codes<std::uint16_t> : encode_codes<std::uint32_t>;
    }
}

} // namespace dlx::unic

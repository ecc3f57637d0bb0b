// Look-ups of single codes and characters in a table: what stands at a place of a text, and what a character becomes.
#ifndef DLXUNIC_CODES_H
#define DLXUNIC_CODES_H

#include "table.h"
#include "text.h"

#include <algorithm>

namespace dlx::unic {

constexpr bool is_digit(unsigned byte) { return byte - 0x30 < 10; }
constexpr bool is_linear_lead(unsigned byte) { return byte - 0x81 < 126; }

// ---- Bytes to characters ----------------------------------------------------------------------------------------

// What stands at a place of a text.
struct Code {
    std::size_t length; // in bytes
    char32_t character; // U+FFFD for a code that is none
    char32_t second;    // of a pair, else 0
    bool truncated;     // the text ends inside
};

inline Code code_of_linear(const Table &table, const std::uint8_t *p, std::size_t left) {
    if (left < 3)
        return {0, 0, 0, true};
    if (!is_linear_lead(p[2]))
        return {1, REPLACEMENT, 0, false};
    if (left < 4)
        return {0, 0, 0, true};
    if (!is_linear_lead(p[0]) || !is_digit(p[3]))
        return {1, REPLACEMENT, 0, false};
    const std::uint32_t linear = ((p[0] - 0x81u) * 10 + (p[1] - 0x30u)) * 1260 + (p[2] - 0x81u) * 10 + (p[3] - 0x30u);
    const LinearRange *end = table.ranges + table.range_count;
    const LinearRange *range = std::upper_bound(
        table.ranges, end, linear, [](std::uint32_t value, const LinearRange &one) { return value < one.linear; });
    if (range == table.ranges || linear - range[-1].linear >= range[-1].count)
        return {4, REPLACEMENT, 0, false};
    return {4, range[-1].character + (linear - range[-1].linear), 0, false};
}

// What a malformed code leaves: a byte that does not continue it is no part of it, and what it begins is read next. Nor
// is an ASCII character part of a code that is none: no damage makes a quote or a bracket disappear.
inline Code code_from(const Table &table, const Entry *root, const std::uint8_t *p, std::size_t left) {
    const Entry *entry = root + p[0];
    for (std::size_t length = 1;; ++length) {
        if (entry->kind == ENTRY_CHARACTER)
            return {length, entry->value, 0, false};
        if (entry->kind == ENTRY_PAIR)
            return {length, table.pairs[entry->value].first, table.pairs[entry->value].second, false};
        if (length == left)
            return {0, 0, 0, true};
        const unsigned byte = p[length];
        if (byte < entry->low || byte > entry->high) {
            if (length == 1 && (table.flags & TABLE_LINEAR) != 0 && is_digit(byte))
                return code_of_linear(table, p, left);
            return {length, REPLACEMENT, 0, false};
        }
        const std::uint32_t at = entry->value + (byte - entry->low);
        if (entry->kind == ENTRY_LEAF16)
            return {length + 1, table.leaf16[at], 0, false};
        if (entry->kind == ENTRY_LEAF32) {
            const std::uint32_t value = table.leaf32[at];
            if ((value & PAIR_BIT) == 0)
                return {length + 1, value, 0, false};
            const Pair &pair = table.pairs[value & ~PAIR_BIT];
            return {length + 1, pair.first, pair.second, false};
        }
        entry = table.entries + at;
    }
}

template <bool SHIFT>
Code code_at(const Table &table, const Entry *root, const std::uint8_t *p, std::size_t left) {
    Code code = code_from(table, root, p, left);
    if (!SHIFT && code.character == REPLACEMENT && code.length == 2 && p[1] < 0x80)
        code.length = 1;
    return code;
}

// ---- Characters to bytes ----------------------------------------------------------------------------------------

inline std::uint32_t linear_code(const Table &table, char32_t character) {
    const LinearRange *end = table.origins + table.origin_count;
    const LinearRange *range = std::upper_bound(
        table.origins, end, character, [](char32_t value, const LinearRange &one) { return value < one.character; });
    if (range == table.origins || character - range[-1].character >= range[-1].count)
        return 0;
    const std::uint32_t linear = range[-1].linear + (character - range[-1].character);
    return (0x81 + linear / 12600) << 24 | (0x30 + linear / 1260 % 10) << 16 | (0x81 + linear / 10 % 126) << 8 |
           (0x30 + linear % 10);
}

// The code of the pair that begins with `first`, if the next character makes it one.
inline std::uint32_t pair_code(const Table &table, char32_t first, char32_t second) {
    for (std::uint32_t i = 0; i < table.pair_count; ++i)
        if (table.pairs[i].first == first && table.pairs[i].second == second)
            return table.pairs[i].code;
    return 0;
}

constexpr int bytes_of(std::uint32_t code) { return code < 0x100 ? 1 : code < 0x10000 ? 2 : code < 0x1000000 ? 3 : 4; }

inline std::uint8_t *put_code(std::uint8_t *out, std::uint32_t code, int bytes) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        *out++ = static_cast<std::uint8_t>(code >> shift);
    return out;
}

} // namespace dlx::unic

#endif

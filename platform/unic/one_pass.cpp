// The passes for every processor, and what they need of a table.
#include "one_pass.h"

#include "codes.h"
#include "utf8.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

namespace dlx::unic {
namespace {

// Every character of UTF-8 but ASCII is wider than a byte.
constexpr std::uint32_t NARROW_SUBSTITUTE = '?';
constexpr std::uint32_t WIDE_SUBSTITUTE = '?' << 8 | '?';

inline void store32(std::uint8_t *to, std::uint32_t value) { std::memcpy(to, &value, sizeof value); }

// Copies 16 bytes and tells how many of them are ASCII and no NUL, up to the first that is neither.
inline std::size_t copy_ascii_16(const std::uint8_t *source, std::uint8_t *target) {
#if defined(__SSE2__)
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(source));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), block);
    const int ascii = _mm_movemask_epi8(_mm_cmpgt_epi8(block, _mm_setzero_si128()));
    return static_cast<std::size_t>(__builtin_ctz(~static_cast<unsigned>(ascii)));
#else
    std::size_t count = 16;
    for (std::size_t i = 16; i-- > 0;) {
        target[i] = source[i];
        count = source[i] - 1u >= 0x7F ? i : count;
    }
    return count;
#endif
}

// Copies the ASCII characters in front, as far as there is room.
inline void copy_ascii(Cursor *cursor) {
    std::size_t count = std::min(cursor->left(), cursor->room());
    while (count >= 16) {
        const std::size_t done = copy_ascii_16(cursor->p, cursor->out);
        cursor->p += done;
        cursor->out += done;
        if (done != 16)
            return;
        count -= 16;
    }
    for (; count != 0 && *cursor->p < 0x80; --count)
        *cursor->out++ = *cursor->p++;
}

// A sequence where there may be no room for the four bytes that hold it.
inline bool put_packed(Cursor *cursor, std::uint32_t packed) {
    const std::size_t length = PackedSequence::length(packed);
    if (cursor->room() < length)
        return false;
    for (std::size_t i = 0; i < length; ++i)
        cursor->out[i] = static_cast<std::uint8_t>(packed >> 8 * i);
    cursor->out += length;
    return true;
}

// ---- Sets of single bytes -----------------------------------------------------------------------------------------

// Bytes at a time for which the room is known to suffice, with the store of the last one.
constexpr std::size_t STRIDE = 16;
constexpr std::size_t STRIDE_ROOM = 3 * STRIDE + 1;

} // namespace

// Without a branch for a character: where accents stand cannot be foreseen.
int single_to_utf8(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                   std::size_t size, int *count) {
    const SingleBytes &single = *set.single;
    Cursor cursor = {source, end_of_text(source, length), buffer, buffer + size, false};
    std::uint32_t seen = 0;
    while (cursor.left() >= STRIDE && cursor.room() >= STRIDE_ROOM) {
        if (single.is_ascii && copy_ascii_16(cursor.p, cursor.out) == STRIDE) {
            cursor.out += STRIDE;
        } else {
            for (std::size_t i = 0; i < STRIDE; ++i) {
                const std::uint32_t packed = single.sequences[cursor.p[i]];
                store32(cursor.out, packed);
                cursor.out += PackedSequence::length(packed);
                seen |= packed;
            }
        }
        cursor.p += STRIDE;
    }
    for (; cursor.p != cursor.end; ++cursor.p) {
        const std::uint32_t packed = single.sequences[*cursor.p];
        if (!put_packed(&cursor, packed))
            return UNI_NOROOM;
        seen |= packed;
    }
    cursor.substituted = (seen & PackedSequence::MISSING) != 0;
    return cursor.finish(buffer, count);
}

int single_from_utf8(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                     std::size_t size, int *count) {
    const SingleBytes &single = *set.single;
    Cursor cursor = {source, end_of_text(source, length), buffer, buffer + size, false};
    while (cursor.p != cursor.end) {
        if (cursor.room() == 0)
            return UNI_NOROOM;
        const unsigned lead = *cursor.p;
        if (lead < 0x80 && single.is_ascii) {
            copy_ascii(&cursor);
            continue;
        }
        if ((lead & 0xE0) == 0xC0 && cursor.left() >= 2 && (cursor.p[1] & 0xC0) == 0x80) {
            const std::uint8_t code = single.codes[(lead & 0x1F) << 6 | (cursor.p[1] & 0x3F)];
            if (code != 0 && lead >= 0xC2) {
                *cursor.out++ = code;
                cursor.p += 2;
                continue;
            }
        }
        const int status = step_from_utf8<std::uint8_t>(set, &cursor);
        if (status != UNI_OK)
            return status;
    }
    return cursor.finish(buffer, count);
}

// ---- Sets with wider codes ----------------------------------------------------------------------------------------

namespace {

// The sequence of a code that is one character of a 16-bit leaf, with its length; 0 for any other.
inline std::uint32_t sequence_of_code(const CharacterSet &set, const Cursor &cursor, std::size_t *length) {
    const Entry *entry = set.table.entries + cursor.p[0];
    *length = 2;
    for (;;) {
        const unsigned at = static_cast<unsigned>(cursor.p[*length - 1]) - entry->low;
        if (at > static_cast<unsigned>(entry->high) - entry->low)
            return 0;
        if (entry->kind == ENTRY_LEAF16)
            return set.wide->sequences[entry->value + at];
        if (entry->kind != ENTRY_NODE || cursor.left() < ++*length)
            return 0;
        entry = set.table.entries + entry->value + at;
    }
}

// One code to UTF-8, whatever it is.
int step_to_utf8(const CharacterSet &set, Cursor *cursor) {
    const Code code = code_at<false>(set.table, set.table.entries, cursor->p, cursor->left());
    if (code.truncated)
        return UNI_TRUNCATED;
    const int bytes = utf8_length(code.character) + (code.second != 0 ? utf8_length(code.second) : 0);
    if (cursor->room() < static_cast<std::size_t>(bytes))
        return UNI_NOROOM;
    cursor->substituted |= code.character == REPLACEMENT;
    cursor->out = put_utf8(cursor->out, code.character);
    if (code.second != 0)
        cursor->out = put_utf8(cursor->out, code.second);
    cursor->p += code.length;
    return UNI_OK;
}

} // namespace

int codes_to_utf8(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                  std::size_t size, int *count) {
    const bool ascii = (set.table.flags & TABLE_ASCII) != 0;
    Cursor cursor = {source, end_of_text(source, length), buffer, buffer + size, false};
    while (cursor.p != cursor.end) {
        if (ascii && *cursor.p < 0x80) {
            if (cursor.room() == 0)
                return UNI_NOROOM;
            *cursor.out++ = *cursor.p++; // often alone
            if (cursor.p != cursor.end && *cursor.p < 0x80)
                copy_ascii(&cursor);
            continue;
        }
        // Runs of codes of two bytes and more.
        const std::uint8_t *const before = cursor.p;
        while (cursor.left() >= 2 && cursor.room() >= 4) {
            std::size_t taken;
            const std::uint32_t packed = sequence_of_code(set, cursor, &taken);
            if (packed == 0 || (packed & PackedSequence::MISSING) != 0)
                break;
            store32(cursor.out, packed);
            cursor.out += PackedSequence::length(packed);
            cursor.p += taken;
        }
        if (cursor.p != before)
            continue;
        const Entry &entry = set.table.entries[*cursor.p];
        if (entry.kind == ENTRY_CHARACTER && entry.value < REPLACEMENT && cursor.room() >= 4) {
            const std::uint32_t packed = PackedSequence::of(entry.value);
            store32(cursor.out, packed);
            cursor.out += PackedSequence::length(packed);
            ++cursor.p;
            continue;
        }
        const int status = step_to_utf8(set, &cursor);
        if (status != UNI_OK)
            return status;
    }
    return cursor.finish(buffer, count);
}

template <typename Width>
int step_from_utf8(const CharacterSet &set, Cursor *cursor) {
    const Table &table = set.table;
    const Sequence sequence = sequence_at(cursor->p, cursor->end);
    if (sequence.kind == Sequence::CUT)
        return UNI_TRUNCATED;
    int length = sequence.length;
    std::uint32_t code = 0;
    if (sizeof(Width) == 1 && sequence.character < 0x800)
        code = set.single->codes[sequence.character];
    else
        code = table.code_of<Width>(sequence.character);
    if (sizeof(Width) > 1 && table.pair_count != 0 && cursor->p + length != cursor->end) {
        const Sequence next = sequence_at(cursor->p + length, cursor->end);
        const std::uint32_t both =
            next.kind == Sequence::CUT ? 0 : pair_code(table, sequence.character, next.character);
        if (both != 0) {
            code = both;
            length += next.length;
        }
    }
    if (code == 0 && (table.flags & TABLE_LINEAR) != 0)
        code = linear_code(table, sequence.character);
    const bool missing = code == 0;
    if (missing)
        code = sizeof(Width) == 1 || sequence.character < 0x80 || table.has_single_codes() ? NARROW_SUBSTITUTE
                                                                                           : WIDE_SUBSTITUTE;
    const int bytes = bytes_of(code);
    if (cursor->room() < static_cast<std::size_t>(bytes))
        return UNI_NOROOM;
    cursor->substituted |= missing || sequence.kind == Sequence::MALFORMED;
    cursor->out = put_code(cursor->out, code, bytes);
    cursor->p += length;
    return UNI_OK;
}
template int step_from_utf8<std::uint8_t>(const CharacterSet &, Cursor *);
template int step_from_utf8<std::uint16_t>(const CharacterSet &, Cursor *);
template int step_from_utf8<std::uint32_t>(const CharacterSet &, Cursor *);

int codes_from_utf8(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                    std::size_t size, int *count) {
    const auto step = set.table.header->code_width == 2 ? step_from_utf8<std::uint16_t> : step_from_utf8<std::uint32_t>;
    const bool ascii = (set.table.flags & TABLE_ASCII) != 0;
    Cursor cursor = {source, end_of_text(source, length), buffer, buffer + size, false};
    while (cursor.p != cursor.end) {
        if (ascii && *cursor.p < 0x80) {
            if (cursor.room() == 0)
                return UNI_NOROOM;
            copy_ascii(&cursor);
            continue;
        }
        // Runs of characters of three bytes with a code of two.
        const std::uint8_t *const before = cursor.p;
        while (cursor.left() >= 3 && cursor.room() >= 2) {
            const std::uint8_t *const p = cursor.p;
            if ((p[0] & 0xF0) != 0xE0 || (p[1] & 0xC0) != 0x80 || (p[2] & 0xC0) != 0x80)
                break;
            const unsigned character = (p[0] & 0xFu) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3Fu);
            const std::uint32_t code = set.wide->code_of(character);
            if (code < 0x100 || code > 0xFFFF || character < 0x800)
                break;
            cursor.out = put_code(cursor.out, code, 2);
            cursor.p += 3;
        }
        if (cursor.p != before)
            continue;
        const int status = step(set, &cursor);
        if (status != UNI_OK)
            return status;
    }
    return cursor.finish(buffer, count);
}

// ---- Preparation --------------------------------------------------------------------------------------------------

namespace {

bool prepare_single(CharacterSet *set) {
    constexpr std::size_t ALIGNMENT = alignof(SingleBytes);
    set->memory = std::malloc(sizeof(SingleBytes) + ALIGNMENT - 1);
    if (set->memory == nullptr)
        return false;
    void *room = set->memory;
    std::size_t left = sizeof(SingleBytes) + ALIGNMENT - 1;
    const Table &table = set->table;
    set->single = new (std::align(ALIGNMENT, sizeof(SingleBytes), room, left)) SingleBytes(make_single_bytes(
        (table.flags & TABLE_ASCII) != 0, [&](unsigned byte) -> char32_t { return table.leaf16[byte]; },
        [&](unsigned c) { return table.code_of<std::uint8_t>(c); }));
    set->to_utf8 = single_to_utf8;
    set->from_utf8 = single_from_utf8;
    return true;
}

template <typename Width>
Width *fill_codes(const Table &table, void *memory) {
    auto *const codes = static_cast<Width *>(memory);
    for (std::uint32_t c = 0; c < 0x10000; ++c)
        codes[c] = is_surrogate(c) ? 0 : table.code_of<Width>(c);
    for (std::uint32_t i = 0; i < table.pair_count; ++i)
        if (table.pairs[i].first < 0x10000)
            codes[table.pairs[i].first] = 0;
    codes[0x10000] = 0;
    return codes;
}

// ASCII text is taken in runs, in which no pair would be seen.
bool ascii_begins_a_pair(const Table &table) {
    return std::any_of(table.pairs, table.pairs + table.pair_count, [](const Pair &pair) { return pair.first < 0x80; });
}

bool prepare_codes(CharacterSet *set) {
    const Table &table = set->table;
    if (ascii_begins_a_pair(table))
        return true;
    const std::size_t characters = table.header->sections[SECTION_LEAF16].count;
    const std::size_t codes = (0x10000 + 1) * table.header->code_width;
    set->memory = std::malloc(sizeof(WideCodes) + characters * sizeof(std::uint32_t) + codes);
    if (set->memory == nullptr)
        return false;
    auto *const wide = new (set->memory) WideCodes();
    auto *const sequences = reinterpret_cast<std::uint32_t *>(wide + 1);
    for (std::size_t i = 0; i < characters; ++i)
        sequences[i] = PackedSequence::of(table.leaf16[i]);
    wide->sequences = sequences;
    if (table.header->code_width == 2)
        wide->shorts = fill_codes<std::uint16_t>(table, sequences + characters);
    else
        wide->longs = fill_codes<std::uint32_t>(table, sequences + characters);
    set->wide = wide;
    set->to_utf8 = codes_to_utf8;
    set->from_utf8 = codes_from_utf8;
    return true;
}

void choose_best(CharacterSet *set) {
#if defined(__x86_64__)
    const Table &table = set->table;
    if (!has_vectors_512() || (table.flags & TABLE_ASCII) == 0)
        return;
    if ((table.flags & TABLE_SINGLE) != 0) {
        set->to_utf8 = single_to_utf8_512;
        set->from_utf8 = single_from_utf8_512;
    } else if (set->wide != nullptr) {
        set->from_utf8 = codes_from_utf8_512;
    }
#else
    (void)set;
#endif
}

} // namespace

bool prepare_passes(CharacterSet *set, Speed speed) {
    const std::uint32_t flags = set->table.flags;
    if ((flags & TABLE_SHIFT) != 0)
        return true;
    if (!((flags & TABLE_SINGLE) != 0 ? prepare_single(set) : prepare_codes(set)))
        return false;
    if (speed == Speed::BEST)
        choose_best(set);
    return true;
}

void drop_passes(const CharacterSet &set) { std::free(set.memory); }

} // namespace dlx::unic

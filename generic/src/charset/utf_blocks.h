// What is common in UTF-8 and UTF-16 text, many characters together, with the vector instructions that every 64-bit
// x86 machine has.
//
// A block is converted to a buffer of its own, so that stores may be wider than what they have to say, and the
// destination still receives nothing behind the last character. What is odd (overlong forms, lone surrogates, anything
// invalid) is left to the caller, as is everything on other machines.
#ifndef DLX_CHARSET_UTF_BLOCKS_H
#define DLX_CHARSET_UTF_BLOCKS_H

#include "bytes/memory.h"

#include <dlxcomn/types.h>

#include <algorithm>
#include <bit>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace dlx::utf {

using Unit = std::uint16_t;
constexpr int UNIT = sizeof(Unit);
constexpr std::uint32_t FIRST_OF_PAIR = 0x10000; // the first code point that is two units
constexpr std::uint32_t LAST_CODE_POINT = 0x10FFFF;
constexpr std::uint32_t LAST_VALID_UNIT = 0xFFFD;
constexpr std::uint32_t SURROGATES = 0xD800; // the upper five bits of each
constexpr std::uint32_t HIGH_SURROGATE = 0xD800;
constexpr std::uint32_t LOW_SURROGATE = 0xDC00;

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

inline void store_pair(CS_BYTE *to, std::uint32_t code_point) {
    const std::uint32_t rest = code_point - FIRST_OF_PAIR;
    store(to, (rest >> 10 | HIGH_SURROGATE) | ((rest & 0x3FF) | LOW_SURROGATE) << 16);
}

#if defined(__SSE2__)

inline __m128i load_vector(const CS_BYTE *from) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(from)); }
inline void store_vector(CS_BYTE *to, __m128i vector) { _mm_storeu_si128(reinterpret_cast<__m128i *>(to), vector); }

// Both ways are told by what moves STRIDE characters of ASCII and what converts a run. A run begins in front of `stop`,
// behind which READ - 1 bytes can be read, and ends at the first character that it does not convert, or behind `stop`
// by up to a stride. `to` comes forward; a run may write two strides behind it.
//
// ASCII with a few two-byte characters in it is the text of most of Europe. A stride of it is taken as a whole: it is
// moved as if it were ASCII, and behind each of the others once more from there on. So nothing has to wait for the
// length of what went before.
constexpr int STRIDE = 16;

struct ToUtf16 {
    static constexpr int SOURCE_SIZE = 1; // of an ASCII character
    static constexpr int DEST_SIZE = UNIT;
    static constexpr int MOST_BYTES = UNIT; // that a SOURCE_SIZE becomes
    static constexpr int MOST_SOURCE = 3;   // that becomes a DEST_SIZE
    static constexpr int READ = 2 * STRIDE + 2;

    // Moves a stride as if it were ASCII, and answers which characters are not.
    static unsigned move_stride(const CS_BYTE *from, CS_BYTE *to) {
        const __m128i bytes = load_vector(from);
        store_vector(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        store_vector(to + sizeof bytes, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
        return static_cast<unsigned>(_mm_movemask_epi8(bytes));
    }
    static bool is_ascii(const CS_BYTE *from) { return _mm_movemask_epi8(load_vector(from)) == 0; }

    static const CS_BYTE *convert_run(const CS_BYTE *from, const CS_BYTE *stop, CS_BYTE *&to, bool validity_check) {
        while (from < stop) {
            const unsigned others = move_stride(from, to);
            if (others == 0) {
                from += STRIDE;
                to += STRIDE * UNIT;
                continue;
            }
            if (move_others_of_two_bytes(from, to, others))
                continue;
            const int ascii = std::countr_zero(others);
            from += ascii;
            to += ascii * UNIT;
            const CS_BYTE *const run = from;
            for (; from < stop; from += 2, to += UNIT) {
                if (!is_two_bytes(from))
                    break;
                store(to, unit_of_two_bytes(from));
            }
            while (from < stop && move_four_of_three_bytes(from, to, validity_check)) {
                from += 12;
                to += 4 * UNIT;
            }
            for (; from < stop; from += 3, to += UNIT) {
                const auto bytes = load<std::uint32_t>(from);
                const std::uint32_t unit = (bytes & 0x0F) << 12 | (bytes >> 2 & 0xFC0) | (bytes >> 16 & 0x3F);
                if ((bytes & 0xC0C0F0) != 0x8080E0 || (unit > LAST_VALID_UNIT && validity_check))
                    break;
                store(to, static_cast<Unit>(unit));
            }
            for (; from < stop; from += 4, to += 2 * UNIT) {
                const std::uint32_t bytes = __builtin_bswap32(load<std::uint32_t>(from));
                const std::uint32_t code_point =
                    (bytes >> 6 & 0x1C0000) | (bytes >> 4 & 0x3F000) | (bytes >> 2 & 0xFC0) | (bytes & 0x3F);
                if ((bytes & 0xF8C0C0C0) != 0xF0808080 || code_point < FIRST_OF_PAIR || code_point > LAST_CODE_POINT)
                    break;
                store_pair(to, code_point);
            }
            if (from == run)
                break;
        }
        return from;
    }

private:
    static bool is_two_bytes(const CS_BYTE *from) { return (load<Unit>(from) & 0xC0E0) == 0x80C0; }
    static Unit unit_of_two_bytes(const CS_BYTE *from) {
        return static_cast<Unit>((from[0] & 0x1F) << 6 | (from[1] & 0x3F));
    }

    // A stride that has been moved as if it were ASCII, with others in it. False where one is not of two bytes.
    static bool move_others_of_two_bytes(const CS_BYTE *&from, CS_BYTE *&to, unsigned others) {
        const __m128i bytes = load_vector(from);
        const __m128i is_low = _mm_cmpeq_epi8(_mm_subs_epu8(bytes, all(0xDF)), _mm_setzero_si128());
        // As signed bytes those that continue a character are the least.
        const auto later = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmplt_epi8(bytes, all(0xC0))));
        const unsigned leads = others & ~later;
        const unsigned end = leads >> (STRIDE - 1); // 1 where the last character ends behind the stride
        if (_mm_movemask_epi8(is_low) != 0xFFFF || later != (leads << 1 & 0xFFFF) ||
            (end != 0 && (from[STRIDE] & 0xC0) != 0x80))
            return false;
        CS_BYTE *unit = to; // where the unit of the stride's first byte would be
        for (unsigned rest = leads; rest != 0; rest &= rest - 1) {
            const int at = std::countr_zero(rest);
            store(unit + at * UNIT, unit_of_two_bytes(from + at));
            move_stride(from + at + 2, unit + (at + 1) * UNIT);
            unit -= UNIT;
        }
        from += STRIDE + end;
        to = unit + (STRIDE + end) * UNIT;
        return true;
    }
    static __m128i all(unsigned byte) { return _mm_set1_epi8(static_cast<char>(byte)); }

    static constexpr std::uint64_t SHAPE = 0x0000C0C0F0C0C0F0;
    static constexpr std::uint64_t SHAPE_OF_TWO = 0x00008080E08080E0;

    // The first six bytes are two characters; their units, the first in the lower half.
    static std::uint64_t units_of_two(std::uint64_t word) {
        const std::uint64_t bits = __builtin_bswap64(word) >> 16;
        const std::uint64_t units = (bits & 0x3F00003F) | (bits >> 2 & 0x0FC0000FC0) | (bits >> 4 & 0xF00000F000);
        return units >> 24 | (units << 16 & 0xFFFF0000);
    }

    static bool move_four_of_three_bytes(const CS_BYTE *from, CS_BYTE *to, bool validity_check) {
        const auto first = load<std::uint64_t>(from), second = load<std::uint64_t>(from + 6);
        if ((((first ^ SHAPE_OF_TWO) | (second ^ SHAPE_OF_TWO)) & SHAPE) != 0)
            return false;
        const std::uint64_t units = units_of_two(first) | units_of_two(second) << 32;
        if (validity_check) {
            const std::uint64_t rest = ~(units | 0x0001000100010001); // a unit of 0 is one of the last two
            if (((rest - 0x0001000100010001) & ~rest & 0x8000800080008000) != 0)
                return false;
        }
        store(to, units);
        return true;
    }
};

struct ToUtf8 {
    static constexpr int SOURCE_SIZE = UNIT;
    static constexpr int DEST_SIZE = 1;
    static constexpr int MOST_BYTES = 3;
    static constexpr int MOST_SOURCE = UNIT;
    static constexpr int READ = 2 * STRIDE * UNIT;

    static unsigned move_stride(const CS_BYTE *from, CS_BYTE *to) {
        store_vector(to, _mm_packus_epi16(load_vector(from), load_vector(from + sizeof(__m128i))));
        return units_with(from, 0xFF80);
    }
    static bool is_ascii(const CS_BYTE *from) {
        const __m128i units = _mm_or_si128(load_vector(from), load_vector(from + sizeof(__m128i)));
        return _mm_movemask_epi8(has_none_of(units, 0xFF80)) == 0xFFFF;
    }

    static const CS_BYTE *convert_run(const CS_BYTE *from, const CS_BYTE *stop, CS_BYTE *&to, bool validity_check) {
        while (from < stop) {
            const unsigned others = move_stride(from, to);
            if (others == 0) {
                from += STRIDE * UNIT;
                to += STRIDE;
                continue;
            }
            if (units_with(from, 0xF800) == 0) {
                move_others_of_two_bytes(from, to, others);
                continue;
            }
            const int ascii = std::countr_zero(others);
            from += ascii * UNIT;
            to += ascii;
            const CS_BYTE *const run = from;
            while (from < stop) {
                const std::uint32_t unit = load<Unit>(from);
                if (unit < 0x80)
                    break;
                if (unit < 0x800) {
                    store(to, two_bytes_of(unit));
                    from += UNIT;
                    to += 2;
                } else if (move_eight_of_three_bytes(from, to, validity_check)) {
                    from += 8 * UNIT;
                    to += 24;
                } else if ((unit & 0xF800) == SURROGATES) {
                    const std::uint32_t next = load<Unit>(from + UNIT);
                    if (unit >= LOW_SURROGATE || next < LOW_SURROGATE || (next & 0xF800) != SURROGATES)
                        break;
                    const std::uint32_t code_point = FIRST_OF_PAIR + ((unit & 0x3FF) << 10 | (next & 0x3FF));
                    store(to, 0x808080F0 | code_point >> 18 | (code_point >> 4 & 0x3F00) |
                                  (code_point << 10 & 0x3F0000) | (code_point & 0x3F) << 24);
                    from += 2 * UNIT;
                    to += 4;
                } else if (unit > LAST_VALID_UNIT && validity_check) {
                    break;
                } else {
                    store(to, 0x8080E0 | unit >> 12 | (unit << 2 & 0x3F00) | (unit & 0x3F) << 16);
                    from += UNIT;
                    to += 3;
                }
            }
            if (from == run)
                break;
        }
        return from;
    }

private:
    static __m128i all(unsigned unit) { return _mm_set1_epi16(static_cast<short>(unit)); }
    // Which units have none of the bits.
    static __m128i has_none_of(__m128i units, unsigned bits) {
        return _mm_cmpeq_epi16(_mm_and_si128(units, all(bits)), _mm_setzero_si128());
    }

    // Which units of a stride have any of the bits.
    static unsigned units_with(const CS_BYTE *from, unsigned bits) {
        const __m128i low = has_none_of(load_vector(from), bits);
        const __m128i high = has_none_of(load_vector(from + sizeof low), bits);
        return ~static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(low, high))) & 0xFFFF;
    }

    static Unit two_bytes_of(std::uint32_t unit) { return static_cast<Unit>(0x80C0 | unit >> 6 | (unit & 0x3F) << 8); }

    // A stride that has been moved as if it were ASCII, with others in it.
    static void move_others_of_two_bytes(const CS_BYTE *&from, CS_BYTE *&to, unsigned others) {
        for (; others != 0; others &= others - 1) {
            const int at = std::countr_zero(others);
            const CS_BYTE *const other = from + at * UNIT;
            store(to + at, two_bytes_of(load<Unit>(other)));
            store_vector(to + at + 2,
                         _mm_packus_epi16(load_vector(other + UNIT), load_vector(other + UNIT + sizeof(__m128i))));
            ++to; // where the byte of the stride's first unit would be
        }
        from += STRIDE * UNIT;
        to += STRIDE;
    }

    static bool move_eight_of_three_bytes(const CS_BYTE *from, CS_BYTE *to, bool validity_check) {
        const __m128i units = load_vector(from);
        __m128i others = _mm_or_si128(has_none_of(units, 0xF800),
                                      _mm_cmpeq_epi16(_mm_and_si128(units, all(0xF800)), all(SURROGATES)));
        if (validity_check)
            others = _mm_or_si128(others, _mm_cmpeq_epi16(_mm_or_si128(units, all(1)), all(0xFFFF)));
        if (_mm_movemask_epi8(others) != 0)
            return false;
        const __m128i first = _mm_srli_epi16(units, 12);
        const __m128i second = _mm_and_si128(_mm_slli_epi16(units, 2), all(0x3F00));
        const __m128i front = _mm_or_si128(_mm_or_si128(first, second), all(0x80E0));
        const __m128i third = _mm_or_si128(_mm_and_si128(units, all(0x3F)), all(0x80));
        // Four bytes to a character, the last of which is 0.
        const __m128i low = _mm_unpacklo_epi16(front, third), high = _mm_unpackhi_epi16(front, third);
        store_two(to, low);
        store_two(to + 6, _mm_unpackhi_epi64(low, low));
        store_two(to + 12, high);
        store_two(to + 18, _mm_unpackhi_epi64(high, high));
        return true;
    }
    static void store_two(CS_BYTE *to, __m128i vector) {
        const auto word = static_cast<std::uint64_t>(_mm_cvtsi128_si64(vector));
        store(to, (word & 0xFFFFFF) | word >> 32 << 24);
    }
};

// Moves ASCII while both sides have a stride of it. What is left of a text behind that is moved with a last stride that
// begins further in front, and writes again what is there.
template <class Way>
void move_ascii(Progress &at) {
    constexpr std::ptrdiff_t SOURCE = STRIDE * Way::SOURCE_SIZE, DEST = STRIDE * Way::DEST_SIZE;
    const CS_BYTE *const start = at.src;
    for (; at.left() >= SOURCE && at.room() >= DEST; at.src += SOURCE, at.dest += DEST) {
        if (!Way::is_ascii(at.src))
            return;
        Way::move_stride(at.src, at.dest);
    }
    const std::ptrdiff_t rest = at.left() / Way::SOURCE_SIZE, again = STRIDE - rest;
    if (at.src == start || rest >= STRIDE || at.room() < rest * Way::DEST_SIZE ||
        !Way::is_ascii(at.src - again * Way::SOURCE_SIZE))
        return;
    Way::move_stride(at.src - again * Way::SOURCE_SIZE, at.dest - again * Way::DEST_SIZE);
    at.src += rest * Way::SOURCE_SIZE;
    at.dest += rest * Way::DEST_SIZE;
}

// One block of a text, up to so many bytes of the source.
template <class Way>
class Block {
public:
    Block(const Progress &at, std::ptrdiff_t size, bool validity_check) {
        const CS_BYTE *const end = at.src + size;
        const CS_BYTE *const stop = at.src + std::clamp<std::ptrdiff_t>(at.left() - (READ - 1), 0, size);
        from_ = Way::convert_run(at.src, stop, to_, validity_check);
        if (from_ < stop || from_ >= end)
            return;
        // Too near to the end of the text to be read where it is. NUL characters stand in for what is not there, and
        // are taken back.
        CS_BYTE tail[2 * READ + STRIDE * Way::SOURCE_SIZE] = {};
        const std::ptrdiff_t rest = (end - from_) / Way::SOURCE_SIZE * Way::SOURCE_SIZE;
        std::memcpy(tail, from_, static_cast<std::size_t>(rest));
        const std::ptrdiff_t used = Way::convert_run(tail, tail + rest, to_, validity_check) - tail;
        to_ -= std::max<std::ptrdiff_t>(0, used - rest) / Way::SOURCE_SIZE * Way::DEST_SIZE;
        from_ += std::min(used, rest);
    }

    bool fits(const Progress &at) const { return to_ - bytes_ <= at.room(); }
    // Answers whether the conversion came forward.
    bool deliver(Progress &at) const {
        std::memcpy(at.dest, bytes_, static_cast<std::size_t>(to_ - bytes_));
        at.dest += to_ - bytes_;
        const bool is_forward = from_ != at.src;
        at.src = from_;
        return is_forward;
    }

    static constexpr int LARGEST = 512 * Way::SOURCE_SIZE;

private:
    static constexpr int READ = Way::READ;

    CS_BYTE bytes_[(LARGEST / Way::SOURCE_SIZE + 4 * STRIDE) * Way::MOST_BYTES];
    CS_BYTE *to_ = bytes_;
    const CS_BYTE *from_;
};

// Converts up to a block of the text. Answers whether it came forward; where it does not, the next character is one for
// the caller.
template <class Way>
bool convert_block(Progress &at, bool validity_check) {
    constexpr std::ptrdiff_t SMALLEST = 4 * Way::SOURCE_SIZE;
    const std::ptrdiff_t size =
        std::min<std::ptrdiff_t>({at.left(), at.room() / Way::DEST_SIZE * Way::MOST_SOURCE, Block<Way>::LARGEST});
    if (size < SMALLEST)
        return false;
    if (const Block<Way> block(at, size, validity_check); block.fits(at))
        return block.deliver(at);
    // As much as cannot be too much.
    const std::ptrdiff_t sure = (at.room() / Way::MOST_BYTES - (STRIDE + 1)) * Way::SOURCE_SIZE;
    return sure >= SMALLEST && Block<Way>(at, std::min(size, sure), validity_check).deliver(at);
}

#else // general steps alone

struct ToUtf16 {};
struct ToUtf8 {};
template <class Way>
void move_ascii(Progress &) {}
template <class Way>
bool convert_block(Progress &, bool) {
    return false;
}

#endif

} // namespace dlx::utf

#endif

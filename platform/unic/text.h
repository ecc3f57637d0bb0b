// Blocks of text, eight or sixteen characters at a time.
#ifndef DLXUNIC_TEXT_H
#define DLXUNIC_TEXT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace dlx::unic {

constexpr char32_t REPLACEMENT = 0xFFFD;

constexpr bool is_surrogate(char32_t unit) { return (unit & 0xFFFFF800u) == 0xD800; }
constexpr bool is_high_surrogate(char32_t unit) { return (unit & 0xFFFFFC00u) == 0xD800; }
constexpr bool is_low_surrogate(char32_t unit) { return (unit & 0xFFFFFC00u) == 0xDC00; }
constexpr char32_t code_point_of(char32_t high, char32_t low) {
    return 0x10000 + ((high & 0x3FF) << 10) + (low & 0x3FF);
}
constexpr std::uint16_t high_surrogate_of(char32_t code) {
    return static_cast<std::uint16_t>(0xD800 + ((code - 0x10000) >> 10));
}
constexpr std::uint16_t low_surrogate_of(char32_t code) { return static_cast<std::uint16_t>(0xDC00 + (code & 0x3FF)); }

// The number of units in front of the terminator. Whole aligned blocks are read: they never leave a page of which the
// text holds a part, which an address checker cannot know.
__attribute__((no_sanitize("address"), no_sanitize("thread"))) inline std::size_t length16(const std::uint16_t *text) {
    const std::uint16_t *p = text;
#if defined(__SSE2__)
    for (; (reinterpret_cast<std::uintptr_t>(p) & 15) != 0; ++p)
        if (*p == 0)
            return static_cast<std::size_t>(p - text);
    const __m128i zero = _mm_setzero_si128();
    for (;; p += 8) {
        const __m128i block = _mm_load_si128(reinterpret_cast<const __m128i *>(p));
        const int found = _mm_movemask_epi8(_mm_cmpeq_epi16(block, zero));
        if (found != 0)
            return static_cast<std::size_t>(p - text) + static_cast<std::size_t>(__builtin_ctz(found)) / 2;
    }
#else
    while (*p != 0)
        ++p;
    return static_cast<std::size_t>(p - text);
#endif
}

// How many of 16 bytes stand in front of the first that is not ASCII. All 16 units are written.
inline std::size_t widen_ascii_16(const std::uint8_t *source, std::uint16_t *target) {
#if defined(__SSE2__)
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(source));
    const __m128i zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), _mm_unpacklo_epi8(block, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target + 8), _mm_unpackhi_epi8(block, zero));
    const int others = _mm_movemask_epi8(block);
    return static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(others) | 0x10000u));
#else
    std::size_t prefix = 16;
    for (std::size_t i = 16; i-- > 0;) {
        target[i] = source[i];
        prefix = source[i] >= 0x80 ? i : prefix;
    }
    return prefix;
#endif
}

// How many of 8 units stand in front of the first that is not ASCII. All 8 bytes are written.
inline std::size_t narrow_ascii_8(const std::uint16_t *source, std::uint8_t *target) {
#if defined(__SSE2__)
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(source));
    const __m128i high = _mm_and_si128(block, _mm_set1_epi16(static_cast<short>(0xFF80)));
    _mm_storel_epi64(reinterpret_cast<__m128i *>(target), _mm_packus_epi16(block, block));
    const int ascii = _mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128()));
    return static_cast<std::size_t>(__builtin_ctz(~static_cast<unsigned>(ascii))) / 2;
#else
    std::size_t prefix = 8;
    for (std::size_t i = 8; i-- > 0;) {
        target[i] = static_cast<std::uint8_t>(source[i]);
        prefix = source[i] >= 0x80 ? i : prefix;
    }
    return prefix;
#endif
}

// Converts the ASCII characters in front and answers their number. Both sides hold `count`; what stands in the target
// behind the characters may be overwritten up to there.
inline std::size_t widen_ascii(const std::uint8_t *source, std::size_t count, std::uint16_t *target) {
    std::size_t done = 0;
    while (count - done >= 16) {
        const std::size_t prefix = widen_ascii_16(source + done, target + done);
        done += prefix;
        if (prefix != 16)
            return done;
    }
    for (; done != count && source[done] < 0x80; ++done)
        target[done] = source[done];
    return done;
}
inline std::size_t narrow_ascii(const std::uint16_t *source, std::size_t count, std::uint8_t *target) {
    std::size_t done = 0;
    while (count - done >= 8) {
        const std::size_t prefix = narrow_ascii_8(source + done, target + done);
        done += prefix;
        if (prefix != 8)
            return done;
    }
    for (; done != count && source[done] < 0x80; ++done)
        target[done] = static_cast<std::uint8_t>(source[done]);
    return done;
}

} // namespace dlx::unic

#endif

// The passes for processors that move and look up bytes in vectors of 64 (AVX-512 with VBMI and VBMI2). Loads and
// stores are masked: short values take one round, and no round reads or writes a byte too many.
//
// A round converts the characters of a block up to the first that it cannot convert; that one is taken by a step of its
// own, and the next round begins behind it.
#include "one_pass.h"

#if defined(__x86_64__)

#include <algorithm>

#include <immintrin.h>

// g++ 12 takes the operands that its own header leaves open on purpose for a fault.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define VECTORS __attribute__((target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")))

namespace dlx::unic {
namespace {

constexpr std::size_t BLOCK = 64;
constexpr std::uint64_t ALL = ~std::uint64_t{0};

VECTORS inline std::uint64_t first_bits(std::size_t count) { return _bzhi_u64(ALL, static_cast<unsigned>(count)); }
VECTORS inline std::size_t first_of(std::uint64_t bits) { return static_cast<std::size_t>(_tzcnt_u64(bits)); }
VECTORS inline std::size_t count_of(std::uint64_t bits) { return static_cast<std::size_t>(_mm_popcnt_u64(bits)); }

VECTORS inline __m512i load(const void *from) { return _mm512_loadu_si512(from); }

// The chosen bytes of a block, behind each other.
VECTORS inline bool put(Cursor *cursor, std::uint64_t chosen, __m512i bytes) {
    const std::size_t count = count_of(chosen);
    if (cursor->room() < count)
        return false;
    _mm512_mask_storeu_epi8(cursor->out, first_bits(count), _mm512_maskz_compress_epi8(chosen, bytes));
    cursor->out += count;
    return true;
}

// ---- Sets of single bytes to UTF-8 --------------------------------------------------------------------------------

// 16 bytes by the sequences of three bytes; the unused bytes of a sequence are zero.
VECTORS inline bool put_sequences(const SingleBytes &single, __m128i bytes, std::uint32_t present, Cursor *cursor) {
    const __m512i packed = _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), static_cast<__mmask16>(present),
                                                       _mm512_cvtepu8_epi32(bytes), single.sequences, 4);
    const __m512i sequences = _mm512_and_si512(packed, _mm512_set1_epi32(PackedSequence::BYTES));
    cursor->substituted |= _mm512_test_epi32_mask(packed, _mm512_set1_epi32(PackedSequence::MISSING)) != 0;
    return put(cursor, _mm512_test_epi8_mask(sequences, sequences), sequences);
}

} // namespace

VECTORS int single_to_utf8_512(const CharacterSet &set, const std::uint8_t *source, std::size_t length,
                               std::uint8_t *buffer, std::size_t size, int *count) {
    constexpr std::size_t HALF = BLOCK / 2;
    const SingleBytes &single = *set.single;
    const __m512i firsts_low = load(single.firsts), firsts_high = load(single.firsts + 64);
    const __m512i seconds_low = load(single.seconds), seconds_high = load(single.seconds + 64);
    Cursor cursor = {source, source + length, buffer, buffer + size, false};
    while (cursor.p != cursor.end) {
        std::size_t n = std::min(cursor.left(), HALF);
        auto present = static_cast<std::uint32_t>(first_bits(n));
        const __m256i bytes = _mm256_maskz_loadu_epi8(present, cursor.p);
        const std::uint32_t text = _mm256_test_epi8_mask(bytes, bytes);
        if (text != present) { // a NUL
            n = first_of(~text);
            present = static_cast<std::uint32_t>(first_bits(n));
            cursor.end = cursor.p + n;
        }
        const std::uint32_t upper = _mm256_movepi8_mask(bytes) & present;
        const __m512i words = _mm512_cvtepu8_epi16(bytes);
        const __m512i twice = _mm512_or_si512(words, _mm512_slli_epi16(words, 8));
        const __m512i firsts = _mm512_permutex2var_epi8(firsts_low, twice, firsts_high);
        const __m512i seconds = _mm512_permutex2var_epi8(seconds_low, twice, seconds_high);
        const __m512i both = _mm512_mask_mov_epi8(firsts, 0xAAAAAAAAAAAAAAAA, seconds);
        const std::uint32_t three = _mm512_mask_cmpge_epu16_mask(upper, _mm512_slli_epi16(firsts, 8),
                                                                 _mm512_set1_epi16(static_cast<short>(0xE000)));
        if (three == 0) {
            const __m512i sequences = _mm512_mask_mov_epi16(_mm512_maskz_mov_epi16(present, words), upper, both);
            if (!put(&cursor, _mm512_test_epi8_mask(sequences, sequences), sequences))
                return UNI_NOROOM;
        } else if (!put_sequences(single, _mm256_castsi256_si128(bytes), present & 0xFFFF, &cursor) ||
                   !put_sequences(single, _mm256_extracti128_si256(bytes, 1), present >> 16, &cursor)) {
            return UNI_NOROOM;
        }
        cursor.p += n;
    }
    return cursor.finish(buffer, count);
}

// ---- UTF-8 to sets ------------------------------------------------------------------------------------------------

namespace {

// A block of UTF-8.
struct Block {
    std::size_t length;
    __m512i bytes;
    std::uint64_t present;
    std::uint64_t upper;         // bytes of characters that are not ASCII
    std::uint64_t continuations; // but not the first ones

    std::uint64_t leads() const { return upper & ~continuations; }
};

// The text is known to end in front of its first NUL only if it is longer than a block; else that is seen here.
VECTORS inline Block block_at(Cursor *cursor) {
    Block block;
    block.length = std::min(cursor->left(), BLOCK);
    block.present = first_bits(block.length);
    block.bytes = _mm512_maskz_loadu_epi8(block.present, cursor->p);
    const std::uint64_t text = _mm512_test_epi8_mask(block.bytes, block.bytes);
    if (text != block.present) {
        block.length = first_of(~text);
        block.present = first_bits(block.length);
        block.bytes = _mm512_maskz_mov_epi8(block.present, block.bytes);
        cursor->end = cursor->p + block.length;
    }
    block.upper = _mm512_movepi8_mask(block.bytes);
    block.continuations = _mm512_cmplt_epi8_mask(block.bytes, _mm512_set1_epi8(static_cast<char>(0xC0)));
    return block;
}

VECTORS inline Cursor cursor_over(const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                                  std::size_t size) {
    const std::uint8_t *const end = length > BLOCK ? end_of_text(source, length) : source + length;
    return {source, end, buffer, buffer + size, false};
}

// The character that a round leaves, and the ones behind it that rounds would leave as well: they begin from `rare`.
template <typename Width>
int step_over(const CharacterSet &set, unsigned rare, Cursor *cursor) {
    int status;
    do
        status = step_from_utf8<Width>(set, cursor);
    while (status == UNI_OK && cursor->p != cursor->end && *cursor->p >= rare);
    return status;
}

} // namespace

VECTORS int single_from_utf8_512(const CharacterSet &set, const std::uint8_t *source, std::size_t length,
                                 std::uint8_t *buffer, std::size_t size, int *count) {
    const SingleBytes &single = *set.single;
    const __m512i places = load(single.places), known = load(single.known);
    const __m512i codes[] = {load(single.favourites), load(single.favourites + 64), load(single.favourites + 128),
                             load(single.favourites + 192)};
    alignas(64) static constexpr auto PREVIOUS = [] {
        struct {
            std::uint8_t of[64];
        } made = {};
        for (unsigned i = 0; i < 64; ++i)
            made.of[i] = static_cast<std::uint8_t>(i - 1) & 63;
        return made;
    }();
    const __m512i previous = load(PREVIOUS.of);
    Cursor cursor = cursor_over(source, length, buffer, size);
    while (cursor.p != cursor.end) {
        const Block block = block_at(&cursor);
        if (block.upper == 0) {
            if (!put(&cursor, block.present, block.bytes))
                return UNI_NOROOM;
            cursor.p += block.length;
            continue;
        }
        // A code for every place that continues a character of two bytes.
        const std::uint64_t leads = block.leads();
        const std::uint64_t known_leads =
            _mm512_mask_test_epi8_mask(leads, _mm512_permutexvar_epi8(block.bytes, known), _mm512_set1_epi8(-1));
        const __m512i place = _mm512_permutexvar_epi8(previous, _mm512_permutexvar_epi8(block.bytes, places));
        const __m512i at = _mm512_or_si512(place, _mm512_and_si512(block.bytes, _mm512_set1_epi8(0x3F)));
        const __m512i found =
            _mm512_mask_mov_epi8(_mm512_permutex2var_epi8(codes[0], at, codes[1]), _mm512_movepi8_mask(at),
                                 _mm512_permutex2var_epi8(codes[2], at, codes[3]));
        const std::uint64_t whole = _mm512_mask_test_epi8_mask(block.continuations & known_leads << 1, found, found);
        // What is not a whole character with a code ends the round.
        const std::uint64_t others = (leads & ~(whole >> 1)) | (block.continuations & ~whole & ~(leads << 1));
        const std::size_t n = std::min(first_of(others), block.length);
        const std::uint64_t done = first_bits(n);
        if (!put(&cursor, done & ~leads, _mm512_mask_mov_epi8(block.bytes, whole, found)))
            return UNI_NOROOM;
        cursor.p += n;
        // A character that begins with the last byte of a block may go on behind it.
        if (n < block.length && n < BLOCK - 1) {
            const int status = step_over<std::uint8_t>(set, 0xE0, &cursor);
            if (status != UNI_OK)
                return status;
        }
    }
    return cursor.finish(buffer, count);
}

namespace {

// The codes at places of the blocks, for the chosen ones of 16 characters.
VECTORS inline __m512i codes_at(const Table &table, __mmask16 chosen, __m512i at) {
    const __m512i zero = _mm512_setzero_si512();
    if (table.header->code_width == 4)
        return _mm512_mask_i32gather_epi32(zero, chosen, at, table.blocks, 4);
    // Two codes at a time, of which the lower half of what is left is the right one.
    const __m512i two = _mm512_mask_i32gather_epi32(zero, chosen, _mm512_srli_epi32(at, 1), table.blocks, 4);
    const __m512i odd = _mm512_and_si512(at, _mm512_set1_epi32(1));
    return _mm512_and_si512(_mm512_srlv_epi32(two, _mm512_slli_epi32(odd, 4)), _mm512_set1_epi32(0xFFFF));
}

} // namespace

VECTORS int codes_from_utf8_512(const CharacterSet &set, const std::uint8_t *source, std::size_t length,
                                std::uint8_t *buffer, std::size_t size, int *count) {
    constexpr std::size_t LANES = 16;
    const std::uint32_t *const places = set.wide->places;
    const auto step = set.table.header->code_width == 2 ? step_over<std::uint16_t> : step_over<std::uint32_t>;
    alignas(64) static constexpr auto ORDER = [] {
        struct {
            std::uint8_t of[64];
        } made = {};
        for (unsigned i = 0; i < 64; ++i)
            made.of[i] = static_cast<std::uint8_t>(i);
        return made;
    }();
    const __m512i order = load(ORDER.of);
    const __m512i next_bytes = _mm512_set1_epi32(0x03020100);
    const __m512i first_byte_everywhere = _mm512_set4_epi32(0x0C0C0C0C, 0x08080808, 0x04040404, 0x00000000);
    const __m512i highest_first = _mm512_set4_epi32(0x0C0D0E0F, 0x08090A0B, 0x04050607, 0x00010203);
    Cursor cursor = cursor_over(source, length, buffer, size);
    while (cursor.p != cursor.end) {
        const Block block = block_at(&cursor);
        if (block.upper == 0) {
            if (!put(&cursor, block.present, block.bytes))
                return UNI_NOROOM;
            cursor.p += block.length;
            continue;
        }
        // Characters of two and three bytes as far as their shape goes.
        const std::uint64_t leads = block.leads();
        const auto at_least = [&](int byte) VECTORS {
            return _mm512_mask_cmpge_epu8_mask(leads, block.bytes, _mm512_set1_epi8(static_cast<char>(byte)));
        };
        const std::uint64_t threes = at_least(0xE0) & ~at_least(0xF0), twos = at_least(0xC2) & ~at_least(0xE0);
        const std::uint64_t whole =
            (twos & block.continuations >> 1) | (threes & block.continuations >> 1 & block.continuations >> 2);
        const std::uint64_t inner = (whole << 1) | (whole & threes) << 2;
        const std::uint64_t others = (leads & ~whole) | (block.continuations & ~inner);
        const std::size_t shaped = std::min(first_of(others), block.length);
        const std::uint64_t starts = first_bits(shaped) & ~block.continuations;
        std::size_t lanes = std::min(count_of(starts), LANES);
        std::size_t n = count_of(starts) > LANES ? first_of(_pdep_u64(1u << LANES, starts)) : shaped;

        // The bytes of 16 characters, as if each had three.
        const __m128i offsets = _mm512_castsi512_si128(_mm512_maskz_compress_epi8(starts, order));
        const __m512i spread = _mm512_shuffle_epi8(_mm512_cvtepu8_epi32(offsets), first_byte_everywhere);
        const __m512i bytes = _mm512_permutexvar_epi8(_mm512_add_epi8(spread, next_bytes), block.bytes);
        auto chosen = static_cast<__mmask16>(first_bits(lanes));
        const __mmask16 ascii = _mm512_mask_testn_epi32_mask(chosen, bytes, _mm512_set1_epi32(0x80));
        const __mmask16 wide = chosen & static_cast<__mmask16>(~ascii);
        const __mmask16 two = _mm512_mask_testn_epi32_mask(wide, bytes, _mm512_set1_epi32(0x20));
        const __m512i as_three = _mm512_mask_or_epi32(bytes, two, _mm512_slli_epi32(bytes, 8), _mm512_set1_epi32(0x10));
        const __m512i bits = _mm512_and_si512(as_three, _mm512_set1_epi32(0x003F3F1F));
        const __m512i halves = _mm512_maddubs_epi16(bits, _mm512_set1_epi32(0x00010140));
        const __m512i front = _mm512_and_si512(halves, _mm512_set1_epi32(0xFFFF));
        const __m512i place = _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), wide, front, places, 4);
        const __m512i found = codes_at(set.table, wide, _mm512_add_epi32(place, _mm512_srli_epi32(halves, 16)));
        const __mmask16 missing = _mm512_mask_testn_epi32_mask(wide, found, found);
        if (missing != 0) {
            lanes = first_of(missing);
            n = first_of(_pdep_u64(std::uint64_t{1} << lanes, starts));
            chosen = static_cast<__mmask16>(first_bits(lanes));
        }
        const __m512i single = _mm512_and_si512(bytes, _mm512_set1_epi32(0x7F));
        const __m512i codes = _mm512_maskz_mov_epi32(chosen, _mm512_mask_mov_epi32(found, ascii, single));
        const __m512i out = _mm512_shuffle_epi8(codes, highest_first);
        if (!put(&cursor, _mm512_test_epi8_mask(out, out), out))
            return UNI_NOROOM;
        cursor.p += n;
        if (missing != 0 || (n == shaped && n < block.length && n < BLOCK - 2)) {
            const int status = step(set, 0xF0, &cursor);
            if (status != UNI_OK)
                return status;
        }
    }
    return cursor.finish(buffer, count);
}

bool has_vectors_512() {
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
           __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
           __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
}

} // namespace dlx::unic

#else

namespace dlx::unic {

bool has_vectors_512() { return false; }

} // namespace dlx::unic

#endif

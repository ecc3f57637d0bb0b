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

// The places of a block, and of each the one in front of it.
struct Places {
    alignas(BLOCK) std::uint8_t of[BLOCK];

    constexpr explicit Places(unsigned first) : of() {
        for (unsigned i = 0; i < BLOCK; ++i)
            of[i] = static_cast<std::uint8_t>((first + i) % BLOCK);
    }
};
constexpr Places PLACES(0), PREVIOUS(BLOCK - 1);

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
        __m256i bytes = _mm256_maskz_loadu_epi8(present, cursor.p);
        const std::uint32_t text = _mm256_test_epi8_mask(bytes, bytes);
        if (text != present) { // a NUL
            n = first_of(~text);
            present = static_cast<std::uint32_t>(first_bits(n));
            bytes = _mm256_maskz_mov_epi8(present, bytes);
            cursor.end = cursor.p + n;
        }
        const std::uint32_t upper = _mm256_movepi8_mask(bytes);
        const __m512i words = _mm512_cvtepu8_epi16(bytes);
        const __m512i twice = _mm512_or_si512(words, _mm512_slli_epi16(words, 8));
        const __m512i firsts = _mm512_permutex2var_epi8(firsts_low, twice, firsts_high);
        const __m512i seconds = _mm512_permutex2var_epi8(seconds_low, twice, seconds_high);
        const __m512i both = _mm512_mask_mov_epi8(firsts, 0xAAAAAAAAAAAAAAAA, seconds);
        const std::uint32_t three = _mm512_mask_cmpge_epu16_mask(upper, _mm512_slli_epi16(firsts, 8),
                                                                 _mm512_set1_epi16(static_cast<short>(0xE000)));
        if (three == 0) {
            const __m512i sequences = _mm512_mask_mov_epi16(words, upper, both);
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

// Where a step has come to: by value, so that the rounds keep what they are at in registers.
struct Step {
    int status;
    Cursor cursor;
};

// The character that a round leaves, and some behind it that the next rounds would leave as well: where this round took
// none, it is in text that they do not suit, and characters that begin from `rare` never do.
template <typename Width>
__attribute__((noinline)) Step step_over(const CharacterSet &set, std::size_t taken_before, unsigned rare, Cursor at) {
    constexpr int STRETCH = 8;
    int left = taken_before == 0 ? STRETCH : 1;
    int status;
    do
        status = step_from_utf8<Width>(set, &at);
    while (status == UNI_OK && at.p != at.end && (--left > 0 || *at.p >= rare));
    return {status, at};
}

} // namespace

VECTORS int single_from_utf8_512(const CharacterSet &set, const std::uint8_t *source, std::size_t length,
                                 std::uint8_t *buffer, std::size_t size, int *count) {
    const SingleBytes &single = *set.single;
    Cursor at = cursor_over(source, length, buffer, size);
    for (;;) {
        const __m512i previous = load(PREVIOUS.of), places = load(single.places), known = load(single.known);
        const __m512i codes[] = {load(single.favourites), load(single.favourites + 64), load(single.favourites + 128),
                                 load(single.favourites + 192)};
        std::size_t n = 0;
        for (bool is_regular = true; is_regular;) {
            if (at.p == at.end)
                return at.finish(buffer, count);
            const Block block = block_at(&at);
            if (block.upper == 0) {
                if (!put(&at, block.present, block.bytes))
                    return UNI_NOROOM;
                at.p += block.length;
                continue;
            }
            // A code for every place that continues a character of two bytes.
            const std::uint64_t leads = block.leads();
            const __m512i is_known = _mm512_permutexvar_epi8(block.bytes, known);
            const std::uint64_t known_leads = leads & _mm512_test_epi8_mask(is_known, is_known);
            const __m512i place = _mm512_permutexvar_epi8(previous, _mm512_permutexvar_epi8(block.bytes, places));
            const __m512i favourite = _mm512_or_si512(place, _mm512_and_si512(block.bytes, _mm512_set1_epi8(0x3F)));
            const __m512i found = _mm512_mask_mov_epi8(_mm512_permutex2var_epi8(codes[0], favourite, codes[1]),
                                                       _mm512_movepi8_mask(favourite),
                                                       _mm512_permutex2var_epi8(codes[2], favourite, codes[3]));
            const std::uint64_t coded = _mm512_mask_test_epi8_mask(block.continuations, found, found);
            const std::uint64_t whole = coded & known_leads << 1;
            n = block.length;
            std::uint64_t done = block.present;
            if ((block.continuations ^ leads << 1) != 0 || whole != block.continuations || leads >> (BLOCK - 1) != 0) {
                // What is not a whole character with a code ends the round.
                const std::uint64_t others = (leads & ~(whole >> 1)) | (block.continuations & ~whole & ~(leads << 1));
                n = std::min(first_of(others), n);
                done = first_bits(n);
                // A character that begins with the last byte of a block may go on behind it.
                is_regular = n == block.length || n == BLOCK - 1;
            }
            // Up to there every byte that continues one has its code.
            if (!put(&at, done & ~leads, _mm512_mask_mov_epi8(block.bytes, block.continuations, found)))
                return UNI_NOROOM;
            at.p += n;
        }
        const Step step = step_over<std::uint8_t>(set, n, 0xE0, at);
        if (step.status != UNI_OK)
            return step.status;
        at = step.cursor;
    }
}

namespace {

// The codes of the chosen ones of 16 characters, 0 for the others.
VECTORS inline __m512i codes_of(const WideCodes &wide, __mmask16 chosen, __m512i characters) {
    const __m512i zero = _mm512_setzero_si512();
    if (wide.longs != nullptr)
        return _mm512_mask_i32gather_epi32(zero, chosen, characters, wide.longs, 4);
    return _mm512_and_si512(_mm512_mask_i32gather_epi32(zero, chosen, characters, wide.shorts, 2),
                            _mm512_set1_epi32(0xFFFF));
}

} // namespace

VECTORS int codes_from_utf8_512(const CharacterSet &set, const std::uint8_t *source, std::size_t length,
                                std::uint8_t *buffer, std::size_t size, int *count) {
    constexpr std::size_t LANES = 16;
    const auto step_over =
        set.wide->shorts != nullptr ? dlx::unic::step_over<std::uint16_t> : dlx::unic::step_over<std::uint32_t>;
    const __m512i order = load(PLACES.of);
    const __m512i next_bytes = _mm512_set1_epi32(0x03020100);
    const __m512i first_byte_everywhere = _mm512_set4_epi32(0x0C0C0C0C, 0x08080808, 0x04040404, 0x00000000);
    const __m512i high_byte_first = _mm512_set4_epi32(0x0C0D0E0F, 0x08090A0B, 0x04050607, 0x00010203);
    Cursor at = cursor_over(source, length, buffer, size);
    for (;;) {
        std::size_t n = 0;
        for (bool is_regular = true; is_regular;) {
            if (at.p == at.end)
                return at.finish(buffer, count);
            const Block block = block_at(&at);
            if (block.upper == 0) {
                if (!put(&at, block.present, block.bytes))
                    return UNI_NOROOM;
                at.p += block.length;
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
            const std::size_t lanes = std::min(count_of(starts), LANES);
            n = count_of(starts) > LANES ? first_of(_pdep_u64(1u << LANES, starts)) : shaped;

            // The bytes of 16 characters, as if each had three.
            const __m128i offsets = _mm512_castsi512_si128(_mm512_maskz_compress_epi8(starts, order));
            const __m512i spread = _mm512_shuffle_epi8(_mm512_cvtepu8_epi32(offsets), first_byte_everywhere);
            const __m512i bytes = _mm512_permutexvar_epi8(_mm512_add_epi8(spread, next_bytes), block.bytes);
            auto chosen = static_cast<__mmask16>(first_bits(lanes));
            const __mmask16 one = _mm512_testn_epi32_mask(bytes, _mm512_set1_epi32(0x80));
            const __mmask16 one_or_two = one | _mm512_testn_epi32_mask(bytes, _mm512_set1_epi32(0x20));
            __m512i three = _mm512_mask_slli_epi32(bytes, one_or_two, bytes, 8);
            three = _mm512_mask_slli_epi32(three, one, bytes, 16);
            const __m512i bits = _mm512_and_si512(three, _mm512_set1_epi32(0x007F3F0F));
            const __m512i halves = _mm512_maddubs_epi16(bits, _mm512_set1_epi32(0x00010140));
            const __m512i characters = _mm512_madd_epi16(halves, _mm512_set1_epi32(0x00010040));
            // What has fewer bits than its form stands for is no character.
            const __mmask16 sound = _mm512_cmpge_epu32_mask(characters, _mm512_set1_epi32(0x800)) | one_or_two;
            const __m512i found = codes_of(*set.wide, chosen & sound, characters);
            const __mmask16 missing = _mm512_mask_testn_epi32_mask(chosen, found, found);
            if (missing != 0) {
                n = first_of(_pdep_u64(std::uint64_t{1} << first_of(missing), starts));
                chosen = static_cast<__mmask16>(first_bits(first_of(missing)));
            }
            const __m512i out = _mm512_shuffle_epi8(_mm512_maskz_mov_epi32(chosen, found), high_byte_first);
            if (!put(&at, _mm512_test_epi8_mask(out, out), out))
                return UNI_NOROOM;
            at.p += n;
            is_regular = missing == 0 && (n != shaped || n == block.length || n >= BLOCK - 2);
        }
        const Step step = step_over(set, n, 0xF0, at);
        if (step.status != UNI_OK)
            return step.status;
        at = step.cursor;
    }
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

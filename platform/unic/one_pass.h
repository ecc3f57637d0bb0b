// From a set to UTF-8 and back without 16-bit text in between: what a set keeps for it, and the steps that the ways
// share. Every way is exact about the room: it fails only where the whole result does not fit.
#ifndef DLXUNIC_ONE_PASS_H
#define DLXUNIC_ONE_PASS_H

#include "sets.h"
#include "text.h"

namespace dlx::unic {

// A short run of UTF-8: its bytes from the lowest on, as they lie in memory, with the length above.
struct PackedSequence {
    static constexpr std::uint32_t BYTES = 0x00FFFFFF;
    static constexpr std::uint32_t MISSING = 0x01000000; // U+FFFD for a code that is none
    static constexpr int LENGTH_SHIFT = 30;

    static constexpr std::uint32_t of(char32_t c) {
        const std::uint32_t lack = c == REPLACEMENT ? MISSING : 0;
        if (c < 0x80)
            return 1u << LENGTH_SHIFT | c;
        if (c < 0x800)
            return 2u << LENGTH_SHIFT | (0xC0 | c >> 6) | (0x80 | (c & 0x3F)) << 8;
        return 3u << LENGTH_SHIFT | lack | (0xE0 | c >> 12) | (0x80 | (c >> 6 & 0x3F)) << 8 | (0x80 | (c & 0x3F)) << 16;
    }
    static constexpr std::size_t length(std::uint32_t packed) { return packed >> LENGTH_SHIFT; }
};

// What a set of single bytes keeps. Lies at a multiple of 64.
struct SingleBytes {
    std::uint32_t sequences[256]; // a byte's UTF-8
    std::uint8_t codes[0x800];    // of the characters below, 0 without a partner
    bool is_ascii;                // the ASCII characters are themselves

    // For blocks of text at a time. The bytes from 0x80: the first and second byte of their UTF-8.
    alignas(64) std::uint8_t firsts[128];
    std::uint8_t seconds[128];
    // The characters of two bytes behind the four leads that have most: codes, as `codes` has them.
    std::uint8_t favourites[256];
    // By the low six bits of a lead: where its 64 favourites begin, and 1 for those four.
    std::uint8_t places[64];
    std::uint8_t known[64];
};

template <typename UnitOf, typename CodeOf>
constexpr SingleBytes make_single_bytes(bool is_ascii, UnitOf unit_of, CodeOf code_of) {
    SingleBytes made = {};
    made.is_ascii = is_ascii;
    for (unsigned byte = 0; byte < 256; ++byte)
        made.sequences[byte] = PackedSequence::of(unit_of(byte));
    for (unsigned i = 0; i < 128; ++i) {
        made.firsts[i] = static_cast<std::uint8_t>(made.sequences[128 + i]);
        made.seconds[i] = static_cast<std::uint8_t>(made.sequences[128 + i] >> 8);
    }
    int counts[32] = {};
    for (unsigned c = 1; c < 0x800; ++c) {
        made.codes[c] = code_of(c);
        counts[c >> 6] += c >= 0x80 && made.codes[c] != 0;
    }
    for (unsigned place = 0; place < 4; ++place) {
        unsigned best = 2;
        for (unsigned lead = 2; lead < 32; ++lead)
            best = counts[lead] > counts[best] ? lead : best;
        counts[best] = -1;
        made.known[best] = 1;
        made.places[best] = static_cast<std::uint8_t>(64 * place);
        for (unsigned i = 0; i < 64; ++i)
            made.favourites[64 * place + i] = made.codes[64 * best + i];
    }
    return made;
}

inline constexpr SingleBytes ASCII_BYTES = make_single_bytes(
    true, [](unsigned byte) -> char32_t { return byte < 0x80 ? byte : REPLACEMENT; },
    [](unsigned c) { return static_cast<std::uint8_t>(c < 0x80 ? c : 0); });

// What a set with wider codes keeps.
struct WideCodes {
    const std::uint32_t *sequences; // the UTF-8 of each character of the table's 16-bit leaves
    // The code of each character of the basic plane, where it has one and does not begin a pair, else 0. One of the two
    // is null: `shorts`, with room for one more behind the last, is for sets with codes of two bytes at the most.
    const std::uint16_t *shorts;
    const std::uint32_t *longs;

    std::uint32_t code_of(char32_t c) const { return shorts != nullptr ? shorts[c] : longs[c]; }
};

// How far a pass is.
struct Cursor {
    const std::uint8_t *p;
    const std::uint8_t *end;
    std::uint8_t *out;
    std::uint8_t *limit;
    bool substituted;

    std::size_t left() const { return static_cast<std::size_t>(end - p); }
    std::size_t room() const { return static_cast<std::size_t>(limit - out); }
    // The answer of a pass that came to its end.
    int finish(const std::uint8_t *begin, int *count) const {
        *count = static_cast<int>(out - begin);
        return substituted ? UNI_SUBSTITUTED : UNI_OK;
    }
};

// The text ends in front of its first NUL.
inline const std::uint8_t *end_of_text(const std::uint8_t *source, std::size_t length) {
    const void *nul = length != 0 ? std::memchr(source, 0, length) : nullptr;
    return nul != nullptr ? static_cast<const std::uint8_t *>(nul) : source + length;
}

// One character from UTF-8, whatever it is, with Width the table's codes. UNI_OK, or why the pass ends.
template <typename Width>
int step_from_utf8(const CharacterSet &set, Cursor *cursor);
extern template int step_from_utf8<std::uint8_t>(const CharacterSet &, Cursor *);
extern template int step_from_utf8<std::uint16_t>(const CharacterSet &, Cursor *);
extern template int step_from_utf8<std::uint32_t>(const CharacterSet &, Cursor *);

// The ways for every processor.
int single_to_utf8(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                   std::size_t size, int *count);
int single_from_utf8(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                     std::size_t size, int *count);
int codes_from_utf8(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                    std::size_t size, int *count);
int codes_to_utf8(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                  std::size_t size, int *count);

// The ways for processors with AVX-512, VBMI and VBMI2, and whether this is one.
int single_to_utf8_512(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                       std::size_t size, int *count);
int single_from_utf8_512(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                         std::size_t size, int *count);
int codes_from_utf8_512(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                        std::size_t size, int *count);
bool has_vectors_512();

// Chooses the passes of a set with a table and makes what they need: false without memory. PLAIN leaves aside what
// only some processors have.
enum class Speed { PLAIN, BEST };
bool prepare_passes(CharacterSet *set, Speed speed);
void drop_passes(const CharacterSet &set);

} // namespace dlx::unic

#endif

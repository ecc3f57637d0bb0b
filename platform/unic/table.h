// The table of a character set, as it lies in its file and in memory: docs/data-files.md, "Tables of character sets".
//
// Bytes to characters: entries and leaves. An entry tells what a byte is: a character, or the beginning of one, and
// then where the next byte is looked up. Sets of single bytes are one leaf of 256. Characters to bytes: an index by
// blocks of 64 code points and the blocks, with a code of 0 for a character without a partner (no text here holds the
// byte 0).
#ifndef DLXUNIC_TABLE_H
#define DLXUNIC_TABLE_H

#include <cstddef>
#include <cstdint>

namespace dlx::unic {

constexpr char TABLE_MAGIC[8] = {'D', 'L', 'X', 'U', 'C', 'T', '\r', '\n'};
constexpr std::uint32_t TABLE_VERSION = 1;
constexpr std::uint32_t TABLE_ORDER = 0x01020304;
// The greatest number that a set with a file has.
constexpr int TABLE_NUMBER_LIMIT = 8191;

enum TableFlag : std::uint32_t {
    TABLE_SINGLE = 1, // every code is one byte: one leaf, blocks of bytes
    TABLE_SHIFT = 2,  // two states: 0x0E begins codes of two bytes, 0x0F ends them; two roots
    TABLE_LINEAR = 4, // codes of four bytes whose second and fourth are digits, by ranges
    TABLE_ASCII = 8,  // the bytes 1 to 0x7F are the ASCII characters, in both directions
    TABLE_FLAGS = 15
};

enum Section {
    SECTION_ENTRIES, // Entry; the first 256 are the root, and with TABLE_SHIFT the next 256 that of the second state
    SECTION_LEAF16,  // uint16_t: a character; U+FFFD: none
    SECTION_LEAF32,  // uint32_t: a character, U+FFFD: none, or PAIR_BIT and the number of a pair
    SECTION_PAIRS,   // Pair: a code that stands for two characters
    SECTION_RANGES,  // LinearRange, ascending in the linear number
    SECTION_ORIGINS, // LinearRange, ascending in the character
    SECTION_INDEX,   // uint16_t: the block of 64 code points; at least the 1024 of the basic plane
    SECTION_BLOCKS,  // codes of 1, 2 or 4 bytes each, 64 a block; the block 0 is empty
    SECTIONS
};

constexpr std::uint32_t PAIR_BIT = 0x80000000u;
constexpr std::uint32_t BASIC_INDEX = 0x10000 / 64;

enum EntryKind : std::uint8_t {
    ENTRY_CHARACTER, // value: the character; U+FFFD: none
    ENTRY_LEAF16,    // value: where in the leaf the byte `low` stands
    ENTRY_LEAF32,    // the same
    ENTRY_NODE,      // the same, among the entries
    ENTRY_PAIR,      // value: the number of a pair
    ENTRY_KINDS
};

struct Entry {
    std::uint32_t value;
    EntryKind kind;
    std::uint8_t low; // the next byte is from low to high, or the code is malformed
    std::uint8_t high;
    std::uint8_t zero;
};

struct Pair {
    std::uint32_t first;
    std::uint32_t second;
    std::uint32_t code;
};

// A run of codes of four bytes. Their linear number counts 10 digits, 126 bytes from 0x81, 10 digits and 126 bytes.
struct LinearRange {
    std::uint32_t linear;
    std::uint32_t character;
    std::uint32_t count;
};

struct SectionPlace {
    std::uint32_t offset; // from the start of the file, a multiple of 4
    std::uint32_t count;  // of elements
};

struct TableHeader {
    char magic[8];
    std::uint32_t version;
    std::uint32_t order;
    std::uint64_t size;     // of the file
    std::uint64_t checksum; // of the file with 0 in this field
    std::int32_t number;
    std::uint32_t flags;
    std::uint8_t code_width;   // bytes of a code in the blocks: 1, 2, 4
    std::uint8_t unit_bytes;   // the most bytes that a 16-bit unit takes, changes of state included
    std::uint8_t utf8_growth;  // the most bytes of UTF-8 that a byte becomes
    std::uint8_t pair_seconds; // whether there are pairs
    std::uint32_t second_low;  // the second characters of pairs lie from here
    std::uint32_t second_high; // to here
    std::uint32_t zero;
    SectionPlace sections[SECTIONS];
};
static_assert(sizeof(TableHeader) == 120 && sizeof(Entry) == 8 && sizeof(Pair) == 12 && sizeof(LinearRange) == 12);

std::uint64_t table_checksum(const void *file, std::size_t size);

// A table in memory. Everything in it stays within the file, whatever text is looked up: validate_table saw to it.
struct Table {
    const TableHeader *header;
    std::uint32_t flags;
    const Entry *entries;
    const std::uint16_t *leaf16;
    const std::uint32_t *leaf32;
    const Pair *pairs;
    std::uint32_t pair_count;
    const LinearRange *ranges;
    std::uint32_t range_count;
    const LinearRange *origins;
    std::uint32_t origin_count;
    const std::uint16_t *index;
    std::uint32_t index_count;
    union {
        const void *blocks;
        const std::uint8_t *blocks8;
        const std::uint16_t *blocks16;
        const std::uint32_t *blocks32;
    };

    // Of a set without TABLE_SINGLE: whether every code is a byte all the same, and only some characters become two of
    // them, a letter and a mark.
    bool has_single_codes() const {
        return header->sections[SECTION_LEAF16].count == 0 && header->sections[SECTION_LEAF32].count == 0;
    }
    // The code of a character, 0 without a partner; ranges and pairs are looked up elsewhere.
    template <typename Code>
    Code code_of(char32_t character) const {
        const std::uint32_t at = character >> 6;
        if (at >= index_count)
            return 0;
        return static_cast<const Code *>(blocks)[index[at] * 64u + (character & 63)];
    }
};

// Fills *table from a file in memory. False for anything that is not a sound table of this number.
bool validate_table(const void *file, std::size_t size, int number, Table *table);

// Maps <directory>/<number>.uct for the life of the process. UNI_OK, UNI_NOSET without a readable file, UNI_BADTABLE,
// UNI_NOMEMORY.
int map_table(const char *directory, int number, Table *table);
void unmap_table(const Table &table);

} // namespace dlx::unic

#endif

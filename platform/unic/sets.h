// Character sets at run time: what a handle refers to.
#ifndef DLXUNIC_SETS_H
#define DLXUNIC_SETS_H

#include "table.h"

#include <dlxunic/unic.h>

#include <atomic>
#include <cstring>

namespace dlx::unic {

// The numbers of the sets that need no file.
constexpr int ASCII = 0;
constexpr int UTF16 = -1;
constexpr int UTF8 = -4;
constexpr int COMPRESSION = -5;

struct CharacterSet;

// What is written for a character without a partner.
struct Substitutes {
    std::uint8_t narrow = '?';
    std::uint16_t wide = '?' << 8 | '?';
    const CharacterSet *source = nullptr; // that the text came from, if it was told

    std::uint16_t of(char32_t character) const;
};

struct SingleBytes;
struct WideCodes;

struct CharacterSet {
    using Decoder = int (*)(const CharacterSet &set, UNICHAR *buffer, std::size_t room, const char *source, int *count);
    using Encoder = int (*)(const CharacterSet &set, const Substitutes &substitutes, char *buffer, std::size_t room,
                            const UNICHAR *source, int *count);
    using Pass = int (*)(const CharacterSet &set, const std::uint8_t *source, std::size_t length, std::uint8_t *buffer,
                         std::size_t size, int *count);
    int number;
    Decoder decode; // room is without the terminator, for both
    Encoder encode;
    bool (*is_wide)(const CharacterSet &set, char32_t character); // whether it takes two bytes or more here
    int unit_bytes; // the most bytes that a 16-bit unit takes
    Pass to_utf8;   // null where 16-bit text is the only way, for both
    Pass from_utf8;
    const SingleBytes *single; // for the passes: what they need besides the table, for sets of single bytes
    const WideCodes *wide;     // the same for sets with wider codes
    void *memory;              // that either lies in
    Table table;
};

// The set with its table, which stays for the life of the process. The directory of the tables is that of the home in
// force, or the one that `directory` names if it is not null; it is asked only by the first call for a set.
int find_set(int number, const UNICHAR *directory, const CharacterSet **set);
// A set that is there already, else null: what most calls need, in few instructions.
extern std::atomic<const CharacterSet *> loaded_sets[TABLE_NUMBER_LIMIT + 1];
inline const CharacterSet *loaded_set(int number) {
    return number > 0 && number <= TABLE_NUMBER_LIMIT ? loaded_sets[number].load(std::memory_order_acquire) : nullptr;
}

// Built-in sets.
extern const CharacterSet ASCII_SET, UTF16_SET, UTF8_SET, COMPRESSION_SET;
// The functions for a table, with its header's unit_bytes. A character that the set lacks is not wide.
void choose_functions(CharacterSet *set);

// ---- How conversions end ----------------------------------------------------------------------------------------

struct Ending {
    bool substituted = false;
    bool no_room = false;
    bool truncated = false;

    int status() const {
        if (no_room)
            return substituted ? UNI_NOROOM_SUBSTITUTED : UNI_NOROOM;
        if (truncated)
            return UNI_TRUNCATED;
        return substituted ? UNI_SUBSTITUTED : UNI_OK;
    }
};

inline int end_units(const Ending &ending, UNICHAR *begin, UNICHAR *end, int *count) {
    *end = 0;
    *count = static_cast<int>(end - begin);
    return ending.status();
}

// Callers that find no room keep the whole buffer, so nothing of it is left as it was.
inline int end_bytes(const Ending &ending, std::uint8_t *begin, std::uint8_t *end, std::size_t room, int *count) {
    const auto length = static_cast<std::size_t>(end - begin);
    std::memset(end, 0, ending.no_room ? room - length + 1 : 1);
    *count = static_cast<int>(length) + 1;
    return ending.status();
}

} // namespace dlx::unic

#endif

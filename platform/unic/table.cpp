// Table files: mapped, and checked whole before the first look-up, so that no file can lead a conversion astray.
#include "table.h"

#include <dlxunic/unic.h>

#include <cstdio>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dlx::unic {
namespace {

constexpr std::uint32_t LAST_CHARACTER = 0x10FFFF;
constexpr std::uint32_t LINEAR_CODES = 126 * 10 * 126 * 10;
constexpr std::size_t CHECKSUM_OFFSET = offsetof(TableHeader, checksum);

constexpr bool is_character(std::uint32_t value) { return value <= LAST_CHARACTER && (value & ~0x7FFu) != 0xD800; }
// No text holds the NUL, as a character or as a byte of a code.
constexpr bool is_text_character(std::uint32_t value) { return value != 0 && is_character(value); }
constexpr bool is_code(std::uint32_t code) {
    for (std::uint32_t rest = code; rest != 0; rest >>= 8)
        if ((rest & 0xFF) == 0)
            return false;
    return code != 0;
}

class Validator {
public:
    Validator(const void *file, std::size_t size) : bytes_(static_cast<const unsigned char *>(file)), size_(size) {
        std::memcpy(&header_, file, sizeof header_);
    }

    bool header_is_sound(int number) const {
        return std::memcmp(header_.magic, TABLE_MAGIC, sizeof TABLE_MAGIC) == 0 && header_.version == TABLE_VERSION &&
               header_.order == TABLE_ORDER && header_.size == size_ && header_.number == number &&
               (header_.flags & ~TABLE_FLAGS) == 0 && header_.zero == 0 && widths_are_sound() &&
               header_.checksum == table_checksum(bytes_, size_);
    }

    bool sections_lie_inside() const {
        const std::uint32_t widths[SECTIONS] = {sizeof(Entry),         sizeof(std::uint16_t), sizeof(std::uint32_t),
                                                sizeof(Pair),          sizeof(LinearRange),   sizeof(LinearRange),
                                                sizeof(std::uint16_t), header_.code_width};
        for (int i = 0; i < SECTIONS; ++i) {
            const SectionPlace place = header_.sections[i];
            const std::uint64_t end = place.offset + std::uint64_t{place.count} * widths[i];
            if (place.offset % 4 != 0 || place.offset < sizeof(TableHeader) || end > size_)
                return false;
        }
        return true;
    }

    bool contents_are_sound() const {
        return entries_are_sound() && leaves_are_sound() && pairs_are_sound() && ranges_are_sound() &&
               blocks_are_sound() && (!has(TABLE_ASCII) || ascii_is_itself());
    }

    template <typename T>
    const T *section(Section which) const {
        return reinterpret_cast<const T *>(bytes_ + header_.sections[which].offset);
    }
    std::uint32_t count(Section which) const { return header_.sections[which].count; }
    bool has(TableFlag flag) const { return (header_.flags & flag) != 0; }

private:
    bool widths_are_sound() const {
        const int width = header_.code_width;
        return (has(TABLE_SINGLE) ? width == 1 && (header_.flags & (TABLE_SHIFT | TABLE_LINEAR)) == 0
                                  : width == 2 || width == 4) &&
               header_.unit_bytes >= 1 && header_.unit_bytes <= 8 && header_.utf8_growth >= 1 &&
               header_.utf8_growth <= 8 && header_.pair_seconds <= 1;
    }

    bool entries_are_sound() const {
        const std::uint32_t entries = count(SECTION_ENTRIES);
        if (has(TABLE_SINGLE))
            return entries == 0;
        if (entries < roots())
            return false;
        const Entry *first = section<Entry>(SECTION_ENTRIES);
        for (const Entry *entry = first; entry != first + entries; ++entry)
            if (!entry_is_sound(*entry) || (entry->kind == ENTRY_CHARACTER && entry->value == 0 && entry != first))
                return false;
        return true;
    }

    std::uint32_t roots() const { return has(TABLE_SHIFT) ? 512 : 256; }

    bool entry_is_sound(const Entry &entry) const {
        if (entry.zero != 0)
            return false;
        switch (entry.kind) {
        case ENTRY_CHARACTER:
            return is_character(entry.value);
        case ENTRY_LEAF16:
            return fits(entry, SECTION_LEAF16);
        case ENTRY_LEAF32:
            return fits(entry, SECTION_LEAF32);
        case ENTRY_NODE: // the entry of the byte 0 is no character, and the roots are not led to
            return entry.value >= roots() && fits(entry, SECTION_ENTRIES);
        case ENTRY_PAIR:
            return entry.value < count(SECTION_PAIRS);
        default:
            return false;
        }
    }

    // low is at least 1: the terminator of a text never continues a code.
    bool fits(const Entry &entry, Section which) const {
        return entry.low >= 1 && entry.low <= entry.high &&
               std::uint64_t{entry.value} + (entry.high - entry.low) < count(which);
    }

    bool leaves_are_sound() const {
        if (has(TABLE_SINGLE) && count(SECTION_LEAF16) != 256)
            return false;
        const std::uint16_t *units = section<std::uint16_t>(SECTION_LEAF16);
        unsigned bad = 0;
        for (std::uint32_t i = has(TABLE_SINGLE) ? 1 : 0; i < count(SECTION_LEAF16); ++i)
            bad += !is_text_character(units[i]);
        const std::uint32_t *values = section<std::uint32_t>(SECTION_LEAF32);
        for (std::uint32_t i = 0; i < count(SECTION_LEAF32); ++i)
            bad += (values[i] & PAIR_BIT) != 0 ? (values[i] & ~PAIR_BIT) >= count(SECTION_PAIRS)
                                               : !is_text_character(values[i]);
        return bad == 0;
    }

    bool pairs_are_sound() const {
        const Pair *pairs = section<Pair>(SECTION_PAIRS);
        for (std::uint32_t i = 0; i < count(SECTION_PAIRS); ++i)
            if (!is_text_character(pairs[i].first) || !is_text_character(pairs[i].second) ||
                pairs[i].second < header_.second_low || pairs[i].second > header_.second_high || !is_code(pairs[i].code))
                return false;
        return (count(SECTION_PAIRS) != 0) == (header_.pair_seconds != 0);
    }

    bool ranges_are_sound() const {
        if (!has(TABLE_LINEAR))
            return count(SECTION_RANGES) == 0 && count(SECTION_ORIGINS) == 0;
        return ranges_ascend(SECTION_RANGES, &LinearRange::linear) &&
               ranges_ascend(SECTION_ORIGINS, &LinearRange::character);
    }

    bool ranges_ascend(Section which, std::uint32_t LinearRange::*key) const {
        const LinearRange *ranges = section<LinearRange>(which);
        std::uint64_t end = 0;
        for (std::uint32_t i = 0; i < count(which); ++i) {
            const LinearRange &range = ranges[i];
            if (range.count == 0 || range.*key < end || std::uint64_t{range.linear} + range.count > LINEAR_CODES ||
                std::uint64_t{range.character} + range.count > LAST_CHARACTER + 1 || range.character == 0 ||
                (range.character < 0xE000 && range.character + range.count > 0xD800))
                return false;
            end = std::uint64_t{range.*key} + range.count;
        }
        return true;
    }

    bool blocks_are_sound() const {
        const std::uint32_t blocks = count(SECTION_BLOCKS) / 64;
        if (count(SECTION_BLOCKS) % 64 != 0 || count(SECTION_INDEX) < BASIC_INDEX)
            return false;
        const std::uint16_t *index = section<std::uint16_t>(SECTION_INDEX);
        for (std::uint32_t i = 0; i < count(SECTION_INDEX); ++i)
            if (index[i] >= blocks)
                return false;
        return header_.code_width == 1   ? codes_are_sound<std::uint8_t>()
               : header_.code_width == 2 ? codes_are_sound<std::uint16_t>()
                                         : codes_are_sound<std::uint32_t>();
    }

    template <typename Code>
    bool codes_are_sound() const {
        const Code *codes = section<Code>(SECTION_BLOCKS);
        unsigned bad = 0;
        for (std::uint32_t i = 0; i < count(SECTION_BLOCKS); ++i)
            bad += codes[i] != 0 && (i < 64 || !is_code(codes[i]));
        return bad == 0;
    }

    bool ascii_is_itself() const {
        const std::uint16_t *index = section<std::uint16_t>(SECTION_INDEX);
        for (std::uint32_t c = 1; c < 0x80; ++c) {
            const std::uint32_t at = index[c >> 6] * 64u + (c & 63);
            const std::uint32_t code = header_.code_width == 1   ? section<std::uint8_t>(SECTION_BLOCKS)[at]
                                       : header_.code_width == 2 ? section<std::uint16_t>(SECTION_BLOCKS)[at]
                                                                 : section<std::uint32_t>(SECTION_BLOCKS)[at];
            const Entry *entry = section<Entry>(SECTION_ENTRIES) + c;
            if (code != c || (has(TABLE_SINGLE) ? section<std::uint16_t>(SECTION_LEAF16)[c] != c
                                                : entry->kind != ENTRY_CHARACTER || entry->value != c))
                return false;
        }
        return true;
    }

    const unsigned char *bytes_;
    std::size_t size_;
    TableHeader header_;
};

} // namespace

std::uint64_t table_checksum(const void *file, std::size_t size) {
    constexpr std::uint64_t PRIME = 0x9E3779B97F4A7C15u;
    const auto *bytes = static_cast<const unsigned char *>(file);
    std::uint64_t sum = size * PRIME;
    for (std::size_t at = 0; at < size; at += 8) {
        std::uint64_t word = 0;
        if (at != CHECKSUM_OFFSET)
            std::memcpy(&word, bytes + at, size - at < 8 ? size - at : 8);
        // The multiplication is one to one for 64 bits, and so is the rotation: a change of one word always shows.
        sum = (sum ^ word) * PRIME;
        sum = sum << 29 | sum >> 35;
    }
    return sum;
}

bool validate_table(const void *file, std::size_t size, int number, Table *table) {
    if (size < sizeof(TableHeader) || size > UINT32_MAX || reinterpret_cast<std::uintptr_t>(file) % 8 != 0)
        return false;
    const Validator file_of(file, size);
    if (!file_of.header_is_sound(number) || !file_of.sections_lie_inside() || !file_of.contents_are_sound())
        return false;
    table->header = static_cast<const TableHeader *>(file);
    table->flags = table->header->flags;
    table->entries = file_of.section<Entry>(SECTION_ENTRIES);
    table->leaf16 = file_of.section<std::uint16_t>(SECTION_LEAF16);
    table->leaf32 = file_of.section<std::uint32_t>(SECTION_LEAF32);
    table->pairs = file_of.section<Pair>(SECTION_PAIRS);
    table->pair_count = file_of.count(SECTION_PAIRS);
    table->ranges = file_of.section<LinearRange>(SECTION_RANGES);
    table->range_count = file_of.count(SECTION_RANGES);
    table->origins = file_of.section<LinearRange>(SECTION_ORIGINS);
    table->origin_count = file_of.count(SECTION_ORIGINS);
    table->index = file_of.section<std::uint16_t>(SECTION_INDEX);
    table->index_count = file_of.count(SECTION_INDEX);
    table->blocks = file_of.section<unsigned char>(SECTION_BLOCKS);
    return true;
}

int map_table(const char *directory, int number, Table *table) {
    char path[4096];
    const int length = std::snprintf(path, sizeof path, "%s/%d.uct", directory, number);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof path)
        return UNI_NOSET;
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return UNI_NOSET;
    struct stat status;
    int result = UNI_BADTABLE;
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        result = UNI_NOSET;
    } else if (status.st_size >= static_cast<off_t>(sizeof(TableHeader)) && status.st_size <= UINT32_MAX) {
        const auto size = static_cast<std::size_t>(status.st_size);
        void *content = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
        if (content == MAP_FAILED)
            result = UNI_NOMEMORY;
        else if (validate_table(content, size, number, table))
            result = UNI_OK;
        else
            munmap(content, size);
    }
    close(file);
    return result;
}

void unmap_table(const Table &table) {
    munmap(const_cast<TableHeader *>(table.header), static_cast<std::size_t>(table.header->size));
}

} // namespace dlx::unic

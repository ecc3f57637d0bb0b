// From a list of codes to a table file (table.h tells its parts).
#include "mapping.h"

#include "../table.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <span>

namespace unic_tables {
namespace {

using namespace dlx::unic;

constexpr char32_t NONE = 0xFFFD;

int utf8_length(char32_t c) { return c == 0 ? 0 : c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4; }
int units_of(char32_t c) { return c > 0xFFFF ? 2 : 1; }
int length_of(std::uint32_t code) { return code > 0xFFFFFF ? 4 : code > 0xFFFF ? 3 : code > 0xFF ? 2 : 1; }
int ceiling(int a, int b) { return (a + b - 1) / b; }

bool is_linear(const Code &code) { return code.length == 4 && code.byte(1) >= 0x30 && code.byte(1) <= 0x39; }
std::uint32_t linear_number(const Code &code) {
    return ((code.byte(0) - 0x81) * 10 + code.byte(1) - 0x30) * 1260 + (code.byte(2) - 0x81) * 10 + code.byte(3) - 0x30;
}

using Meanings = std::span<const Meaning>;

class Writer {
public:
    explicit Writer(const Mapping &mapping) : mapping_(mapping) {}

    std::string write() {
        single_ = is_single();
        for (int state = 0; state < (mapping_.shift ? 2 : 1); ++state) {
            find_trail_bounds(mapping_.meanings[static_cast<std::size_t>(state)]);
            if (single_)
                write_single();
            else
                write_root(state);
        }
        write_ranges();
        write_codes();
        return assemble();
    }

private:
    // ---- Bytes to characters

    bool is_single() const {
        return !mapping_.shift && std::all_of(mapping_.codes.begin(), mapping_.codes.end(), [](std::uint32_t code) {
            return code < 0x100;
        }) && std::all_of(mapping_.meanings[0].begin(), mapping_.meanings[0].end(), [](const Meaning &meaning) {
            return meaning.code.length == 1 && meaning.characters[0] < 0x10000 && meaning.characters[1] == 0;
        });
    }

    void write_single() {
        leaf16_.assign(256, NONE);
        leaf16_[0] = 0;
        for (const Meaning &meaning : mapping_.meanings[0])
            leaf16_[meaning.code.bytes] = static_cast<std::uint16_t>(meaning.characters[0]);
    }

    // A byte between the lowest and the highest that continue any code of the set continues every one, with or without
    // a character: so damage is told from a code that has none.
    void find_trail_bounds(Meanings meanings) {
        std::fill(std::begin(low_), std::end(low_), 0xFF);
        std::fill(std::begin(high_), std::end(high_), 0);
        for (const Meaning &meaning : meanings) {
            if (is_linear(meaning.code) || meaning.is_beginning())
                continue;
            for (int i = 1; i < meaning.code.length; ++i) {
                low_[i] = std::min(low_[i], meaning.code.byte(i));
                high_[i] = std::max(high_[i], meaning.code.byte(i));
            }
        }
    }

    void write_root(int state) {
        const auto base = static_cast<std::size_t>(256 * state);
        entries_.resize(base + 256, Entry{NONE, ENTRY_CHARACTER, 0, 0, 0});
        std::vector<Meaning> meanings;
        for (const Meaning &meaning : mapping_.meanings[static_cast<std::size_t>(state)])
            if (!is_linear(meaning.code) && !(meaning.code.length > 1 && meaning.is_beginning() && has_digits(meaning)))
                meanings.push_back(meaning);
        if (state == 0)
            entries_[0] = {0, ENTRY_CHARACTER, 0, 0, 0};
        if (mapping_.shift && state == 0)
            entries_.resize(512, Entry{NONE, ENTRY_CHARACTER, 0, 0, 0});
        for_each_byte(meanings, 0, [&](unsigned byte, Meanings below) {
            const Entry entry = entry_of(below, 1);
            entries_[base + byte] = entry;
        });
    }

    static bool has_digits(const Meaning &meaning) {
        return meaning.code.byte(1) >= 0x30 && meaning.code.byte(1) <= 0x39;
    }

    template <typename Visit>
    static void for_each_byte(Meanings meanings, int depth, Visit visit) {
        for (std::size_t begin = 0; begin < meanings.size();) {
            const unsigned byte = meanings[begin].code.byte(depth);
            std::size_t end = begin;
            while (end < meanings.size() && meanings[end].code.byte(depth) == byte)
                ++end;
            visit(byte, meanings.subspan(begin, end - begin));
            begin = end;
        }
    }

    // All codes that share their first `depth` bytes.
    Entry entry_of(Meanings meanings, int depth) {
        const Meaning &first = meanings.front();
        if (first.code.length == depth && !first.is_beginning()) {
            if (first.characters[1] != 0)
                return {pair_of(first), ENTRY_PAIR, 0, 0, 0};
            return {first.characters[0], ENTRY_CHARACTER, 0, 0, 0};
        }
        const Meanings longer = first.code.length == depth ? meanings.subspan(1) : meanings;
        const unsigned low = low_[depth], high = high_[depth];
        if (low > high)
            return {NONE, ENTRY_CHARACTER, 0, 0, 0};
        const bool ends = std::all_of(longer.begin(), longer.end(), [&](const Meaning &meaning) {
            return meaning.code.length == depth + 1 && !meaning.is_beginning();
        });
        const bool basic = std::all_of(longer.begin(), longer.end(), [](const Meaning &meaning) {
            return meaning.characters[0] < 0x10000 && meaning.characters[1] == 0;
        });
        const EntryKind kind = !ends ? ENTRY_NODE : basic ? ENTRY_LEAF16 : ENTRY_LEAF32;
        return {kind == ENTRY_NODE     ? write_node(longer, depth, low, high)
                : kind == ENTRY_LEAF16 ? write_leaf(&leaf16_, longer, depth, low, high)
                                       : write_leaf(&leaf32_, longer, depth, low, high),
                kind, static_cast<std::uint8_t>(low), static_cast<std::uint8_t>(high), 0};
    }

    std::uint32_t write_node(Meanings meanings, int depth, unsigned low, unsigned high) {
        const std::size_t at = entries_.size();
        entries_.resize(at + high - low + 1, Entry{NONE, ENTRY_CHARACTER, 0, 0, 0});
        for_each_byte(meanings, depth, [&](unsigned byte, Meanings below) {
            const Entry entry = entry_of(below, depth + 1);
            entries_[at + byte - low] = entry;
        });
        return static_cast<std::uint32_t>(at);
    }

    template <typename Value>
    std::uint32_t write_leaf(std::vector<Value> *leaf, Meanings meanings, int depth, unsigned low, unsigned high) {
        std::vector<Value> values(high - low + 1, static_cast<Value>(NONE));
        for (const Meaning &meaning : meanings)
            values[meaning.code.byte(depth) - low] =
                static_cast<Value>(meaning.characters[1] != 0 ? PAIR_BIT | pair_of(meaning) : meaning.characters[0]);
        // Rows without a character are one.
        const auto found = std::search(leaf->begin(), leaf->end(), values.begin(), values.end());
        const auto at = static_cast<std::uint32_t>(found - leaf->begin());
        if (found == leaf->end())
            leaf->insert(leaf->end(), values.begin(), values.end());
        return at;
    }

    std::uint32_t pair_of(const Meaning &meaning) {
        pairs_.push_back({meaning.characters[0], meaning.characters[1], meaning.code.bytes});
        return static_cast<std::uint32_t>(pairs_.size() - 1);
    }

    // ---- Codes of four bytes by ranges

    void write_ranges() {
        for (const Meaning &meaning : mapping_.meanings[0])
            if (is_linear(meaning.code) && !meaning.is_beginning())
                append(&ranges_, linear_number(meaning.code), meaning.characters[0]);
        if (ranges_.empty())
            return;
        for (char32_t c = 1; c < 0x110000; ++c) {
            const Code code = {mapping_.codes[c], length_of(mapping_.codes[c])};
            if (is_linear(code))
                append(&origins_, linear_number(code), c);
        }
    }

    static void append(std::vector<LinearRange> *ranges, std::uint32_t linear, char32_t character) {
        if (!ranges->empty()) {
            LinearRange &last = ranges->back();
            if (linear == last.linear + last.count && character == last.character + last.count) {
                ++last.count;
                return;
            }
        }
        ranges->push_back({linear, character, 1});
    }

    // ---- Characters to bytes

    void write_codes() {
        std::vector<std::uint32_t> codes = mapping_.codes;
        for (std::uint32_t &code : codes)
            if (!ranges_.empty() && is_linear({code, length_of(code)}))
                code = 0;
        const std::uint32_t highest = *std::max_element(codes.begin(), codes.end());
        width_ = single_ ? 1 : highest <= 0xFFFF ? 2 : 4;
        std::size_t blocks = codes.size() / 64;
        const auto block_at = [&](std::size_t i) {
            return std::vector<std::uint32_t>(codes.begin() + static_cast<std::ptrdiff_t>(64 * i),
                                              codes.begin() + static_cast<std::ptrdiff_t>(64 * i + 64));
        };
        const std::vector<std::uint32_t> empty(64);
        while (blocks > BASIC_INDEX && block_at(blocks - 1) == empty)
            --blocks;
        std::map<std::vector<std::uint32_t>, std::uint16_t> known = {{empty, 0}};
        blocks_ = empty;
        for (std::size_t i = 0; i < blocks; ++i) {
            const std::vector<std::uint32_t> block = block_at(i);
            const auto [place, fresh] = known.try_emplace(block, static_cast<std::uint16_t>(known.size()));
            if (fresh)
                blocks_.insert(blocks_.end(), block.begin(), block.end());
            index_.push_back(place->second);
        }
    }

    // ---- The file

    bool is_ascii() const {
        for (unsigned c = 1; c < 0x80; ++c)
            if (mapping_.codes[c] != c ||
                (single_ ? leaf16_[c] != c : entries_[c].kind != ENTRY_CHARACTER || entries_[c].value != c))
                return false;
        return !mapping_.shift;
    }

    int unit_bytes() const {
        int most = single_ ? 1 : 2; // a wide substitute
        for (char32_t c = 1; c < 0x110000; ++c)
            if (mapping_.codes[c] != 0)
                most = std::max(most, ceiling(length_of(mapping_.codes[c]) + (mapping_.shift ? 2 : 0), units_of(c)));
        return most;
    }

    int utf8_growth() const {
        int most = 1;
        std::size_t bytes = 0;
        for (const auto &meanings : mapping_.meanings)
            for (const Meaning &meaning : meanings) {
                const int length = utf8_length(meaning.characters[0]) + utf8_length(meaning.characters[1]);
                most = std::max(most, ceiling(length, meaning.code.length));
                bytes += meaning.code.length == 1 && !meaning.is_beginning();
            }
        return bytes == 255 ? most : std::max(most, 3); // a byte that is no character becomes U+FFFD
    }

    std::string assemble() {
        TableHeader header = {};
        std::memcpy(header.magic, TABLE_MAGIC, sizeof header.magic);
        header.version = TABLE_VERSION;
        header.order = TABLE_ORDER;
        header.number = mapping_.number;
        header.flags = (single_ ? TABLE_SINGLE : 0u) | (mapping_.shift ? TABLE_SHIFT : 0u) |
                       (!ranges_.empty() ? TABLE_LINEAR : 0u) | (is_ascii() ? TABLE_ASCII : 0u);
        header.code_width = static_cast<std::uint8_t>(width_);
        header.unit_bytes = static_cast<std::uint8_t>(unit_bytes());
        header.utf8_growth = static_cast<std::uint8_t>(utf8_growth());
        header.pair_seconds = !pairs_.empty();
        if (!pairs_.empty()) {
            const auto [low, high] = std::minmax_element(
                pairs_.begin(), pairs_.end(), [](const Pair &a, const Pair &b) { return a.second < b.second; });
            header.second_low = low->second;
            header.second_high = high->second;
        }
        std::string body;
        const auto add = [&](Section section, const auto &elements) {
            header.sections[section] = {static_cast<std::uint32_t>(sizeof header + body.size()),
                                        static_cast<std::uint32_t>(elements.size())};
            body.append(reinterpret_cast<const char *>(elements.data()), elements.size() * sizeof elements[0]);
            body.resize((body.size() + 7) / 8 * 8);
        };
        add(SECTION_ENTRIES, entries_);
        add(SECTION_LEAF16, leaf16_);
        add(SECTION_LEAF32, leaf32_);
        add(SECTION_PAIRS, pairs_);
        add(SECTION_RANGES, ranges_);
        add(SECTION_ORIGINS, origins_);
        add(SECTION_INDEX, index_);
        if (width_ == 1)
            add(SECTION_BLOCKS, std::vector<std::uint8_t>(blocks_.begin(), blocks_.end()));
        else if (width_ == 2)
            add(SECTION_BLOCKS, std::vector<std::uint16_t>(blocks_.begin(), blocks_.end()));
        else
            add(SECTION_BLOCKS, blocks_);
        header.size = sizeof header + body.size();
        std::string file(reinterpret_cast<const char *>(&header), sizeof header);
        file += body;
        const std::uint64_t checksum = table_checksum(file.data(), file.size());
        std::memcpy(file.data() + offsetof(TableHeader, checksum), &checksum, sizeof checksum);
        return file;
    }

    const Mapping &mapping_;
    bool single_ = false;
    int width_ = 0;
    unsigned low_[5] = {}, high_[5] = {};
    std::vector<Entry> entries_;
    std::vector<std::uint16_t> leaf16_;
    std::vector<std::uint32_t> leaf32_;
    std::vector<Pair> pairs_;
    std::vector<LinearRange> ranges_, origins_;
    std::vector<std::uint16_t> index_;
    std::vector<std::uint32_t> blocks_;
};

} // namespace

std::string table_file(const Mapping &mapping) { return Writer(mapping).write(); }

} // namespace unic_tables

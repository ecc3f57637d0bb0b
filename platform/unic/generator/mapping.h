// A character set as a list of codes: what a source tells of it, and what a table file is made from.
#ifndef UNIC_TABLES_MAPPING_H
#define UNIC_TABLES_MAPPING_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace unic_tables {

// Bytes, the first one highest.
struct Code {
    std::uint32_t bytes = 0;
    int length = 0;

    unsigned byte(int at) const { return bytes >> 8 * (length - 1 - at) & 0xFF; }
    Code with(unsigned next) const { return {bytes << 8 | next, length + 1}; }
    bool operator==(const Code &) const = default;
};

struct Meaning {
    Code code;
    // One character, or two for a code that is a pair; none where the code is only the beginning of longer ones.
    std::array<char32_t, 2> characters = {0, 0};
    bool is_beginning() const { return characters[0] == 0; }
};

struct Mapping {
    int number = 0;
    bool shift = false;
    // In the order of their bytes; [1] is the second state of sets with two.
    std::array<std::vector<Meaning>, 2> meanings;
    // By character, 0 without a code; a code of the second state has two bytes, one of the first state has one.
    std::vector<std::uint32_t> codes = std::vector<std::uint32_t>(0x110000);
};

// What knows a character set: the C library, ICU.
class Reference {
public:
    struct Answer {
        enum { NOTHING, BEGINNING, CHARACTERS } kind = NOTHING;
        std::array<char32_t, 2> characters = {0, 0};
    };
    virtual ~Reference() = default;
    virtual Answer decode(const std::string &bytes) = 0;
    virtual std::string encode(char32_t character) = 0; // empty without a code
};
// Null where the source does not know the name.
std::unique_ptr<Reference> open_iconv(const std::string &name);
std::unique_ptr<Reference> open_icu(const std::string &name);

// Asks for every code and every character.
Mapping probe(Reference &reference, int number, bool shift);
// Changes a mapping, or makes one, by a text; docs/data-files.md tells its syntax. Errors end the program.
void apply_mapping_text(const std::string &path, Mapping *mapping);

// The content of the table file.
std::string table_file(const Mapping &mapping);

[[noreturn]] void fail(const std::string &message);

} // namespace unic_tables

#endif

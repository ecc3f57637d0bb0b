// The table of a character set: small tables of every shape, in which the input changes what it likes, with a checksum
// that is right. One that is refused is done with; by one that is taken, any text is converted without a step outside
// of it, and the passes tell what the two steps through 16-bit text do.
#include "input.h"

#include "one_pass.h"

#include "generator/mapping.h"

#include <array>
#include <vector>

using namespace dlx::unic;

namespace unic_tables {

void fail(const std::string &message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    std::abort();
}

} // namespace unic_tables

namespace {

using unic_tables::Mapping;

constexpr int NUMBER = 7000;

void enter(Mapping *mapping, int state, std::uint32_t bytes, int length, char32_t first, char32_t second = 0) {
    mapping->meanings[static_cast<std::size_t>(state)].push_back({{bytes, length}, {first, second}});
    if (second == 0)
        mapping->codes[first] = bytes;
}

// Sound as long as nothing is changed in it.
std::string made(const Mapping &mapping) {
    const std::string file = unic_tables::table_file(mapping);
    fuzz::ExactBuffer memory(file.size(), file);
    Table table;
    FUZZ_CHECK(validate_table(memory.get(), file.size(), NUMBER, &table));
    return file;
}

// One table of each shape. Leads that only begin longer codes are entered as such.
std::vector<std::string> made_tables() {
    const auto with_ascii = [](int last) {
        Mapping mapping;
        mapping.number = NUMBER;
        for (char32_t c = 1; c <= static_cast<char32_t>(last); ++c)
            enter(&mapping, 0, c, 1, c);
        return mapping;
    };
    std::vector<std::string> tables;
    Mapping single = with_ascii(0x7F);
    for (char32_t c = 0xA0; c < 0x100; ++c)
        enter(&single, 0, c, 1, c % 8 == 0 ? 0x2000 + c : c % 8 == 1 ? 0x400 + c : c);
    tables.push_back(made(single));

    Mapping other = with_ascii(0x20); // no ASCII
    for (char32_t c = 0x41; c < 0x5B; ++c)
        enter(&other, 0, c + 0x80, 1, c);
    tables.push_back(made(other));

    Mapping wide = with_ascii(0x7F);
    enter(&wide, 0, 0xA1, 1, 0xFF61);
    for (std::uint32_t lead = 0xB0; lead < 0xB4; ++lead) {
        enter(&wide, 0, lead, 1, 0);
        for (std::uint32_t trail = 0x40; trail < 0x80; ++trail)
            enter(&wide, 0, lead << 8 | trail, 2, lead == 0xB3 ? 0x20000 + trail : 0x4E00 + (lead << 6 & 0xFF) + trail);
    }
    enter(&wide, 0, 0xC0, 1, 0);
    enter(&wide, 0, 0xC041, 2, 0xCA, 0x304);
    enter(&wide, 0, 0xC042, 2, 0xCA);
    enter(&wide, 0, 0xD0, 1, 0);
    enter(&wide, 0, 0xD0A1, 2, 0);
    for (std::uint32_t trail = 0xA1; trail < 0xB0; ++trail)
        enter(&wide, 0, 0xD0A100 | trail, 3, 0x6000 + trail);
    tables.push_back(made(wide));

    Mapping narrow = with_ascii(0x7F);
    for (std::uint32_t lead = 0x81; lead < 0x84; ++lead) {
        enter(&narrow, 0, lead, 1, 0);
        for (std::uint32_t trail = 0x80; trail < 0xC0; ++trail)
            enter(&narrow, 0, lead << 8 | trail, 2, 0x4E00 + (lead << 6 & 0xFF) + trail);
    }
    tables.push_back(made(narrow));

    Mapping shift = with_ascii(0x0D);
    shift.shift = true;
    for (char32_t c = 0x41; c < 0x5B; ++c)
        enter(&shift, 0, c + 0x80, 1, c);
    enter(&shift, 1, 0x41, 1, 0);
    for (std::uint32_t trail = 0x41; trail < 0x60; ++trail)
        enter(&shift, 1, 0x4100 | trail, 2, 0x4E00 + trail);
    tables.push_back(made(shift));
    return tables;
}

// What the input changes: a section, a place in it, and bytes.
void change(fuzz::Input *input, std::string *file) {
    for (int changes = input->byte() % 16; changes > 0; --changes) {
        TableHeader header;
        std::memcpy(&header, file->data(), sizeof header);
        const int which = input->byte() % (SECTIONS + 1);
        std::size_t at = input->byte() + 256u * input->byte();
        if (which < SECTIONS)
            at += header.sections[which].offset;
        for (int length = 1 + input->byte() % 4; length > 0; --length, ++at) {
            const CS_BYTE byte = input->byte();
            if (at < file->size())
                (*file)[at] = static_cast<char>(byte);
        }
    }
    if (file->size() < sizeof(TableHeader))
        return;
    const std::uint64_t sum = table_checksum(file->data(), file->size());
    std::memcpy(file->data() + offsetof(TableHeader, checksum), &sum, sizeof sum);
}

using Units = std::vector<UNICHAR>;

struct Result {
    bool is_whole;
    bool is_substituted;
    std::string text;
    bool operator==(const Result &) const = default;
};

bool is_done(int status) { return status == UNI_OK || status == UNI_SUBSTITUTED; }

Result in_two_steps(const CharacterSet &from, const CharacterSet &to, const std::string &text) {
    const std::string front = text.substr(0, text.find('\0'));
    fuzz::ExactBuffer source(front.size() + 3, front);
    const std::size_t room = 2 * front.size();
    const std::unique_ptr<UNICHAR[]> units(new UNICHAR[room + 1]);
    int count = -1;
    const int decoded = from.decode(from, units.get(), room, reinterpret_cast<char *>(source.get()), &count);
    FUZZ_CHECK(decoded == UNI_TRUNCATED || is_done(decoded));
    FUZZ_CHECK(static_cast<std::size_t>(count) <= room);
    const std::size_t most = 8 * static_cast<std::size_t>(count) + 1;
    const Substitutes substitutes = {'?', '?' << 8 | '?', &from};
    fuzz::ExactBuffer bytes(most + 1);
    const int encoded = to.encode(to, substitutes, reinterpret_cast<char *>(bytes.get()), most, units.get(), &count);
    FUZZ_CHECK(is_done(encoded));
    fuzz::ExactBuffer few(text.size() + 1); // and in any room
    int fitting = -1;
    to.encode(to, substitutes, reinterpret_cast<char *>(few.get()), text.size(), units.get(), &fitting);
    if (!is_done(decoded))
        return {false, false, ""};
    return {true, decoded == UNI_SUBSTITUTED || encoded == UNI_SUBSTITUTED,
            bytes.first(static_cast<std::size_t>(count) - 1)};
}

void compare(const CharacterSet &set, CharacterSet::Pass pass, const Result &expected, const std::string &text) {
    if (pass == nullptr)
        return;
    fuzz::ExactBuffer source(text.size(), text);
    for (const std::size_t spare : {std::size_t{100}, std::size_t{0}}) {
        const std::size_t room = expected.text.size() + spare;
        fuzz::ExactBuffer buffer(room);
        int count = 0;
        const int status = pass(set, reinterpret_cast<std::uint8_t *>(source.get()), text.size(),
                                reinterpret_cast<std::uint8_t *>(buffer.get()), room, &count);
        const Result told = {is_done(status), status == UNI_SUBSTITUTED,
                             is_done(status) ? buffer.first(static_cast<std::size_t>(count)) : std::string()};
        FUZZ_CHECK(told == expected);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static const std::vector<std::string> tables = made_tables();
    fuzz::Input input(data, size);
    std::string file = tables[input.byte() % tables.size()];
    change(&input, &file);
    const std::string text = input.rest();

    fuzz::ExactBuffer memory(file.size(), file);
    CharacterSet set = {};
    if (!validate_table(memory.get(), file.size(), NUMBER, &set.table))
        return 0;
    choose_functions(&set);
    const Result to_utf8 = in_two_steps(set, UTF8_SET, text), from_utf8 = in_two_steps(UTF8_SET, set, text);
    for (const Speed speed : {Speed::PLAIN, Speed::BEST}) {
        set.to_utf8 = set.from_utf8 = nullptr;
        set.memory = nullptr;
        FUZZ_CHECK(prepare_passes(&set, speed));
        compare(set, set.to_utf8, to_utf8, text);
        compare(set, set.from_utf8, from_utf8, text);
        drop_passes(set);
    }
    return 0;
}

// charset.loc: the tables of a set.
//
// Sets of single bytes on ASCII have an image of the first class, whose lower-case letters are also what texts are
// compared in. All others have one of the second class: with widths where characters have more than one byte, and with
// normalization pages, which lead to the ASCII forms.
//
// Of a two-byte code the type pages tell the second byte. A page is written only where the characters of a first byte
// differ; where they are all alike, as ideographs are, the entry of the first byte says what they are. Equal pages are
// one. Of a code of three or four bytes there are no pages: the first byte tells what most of its characters are.
#include "classes.h"
#include "files.h"

#include <dlxcomn/charconv.h>
#include <dlxcomn/charset.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace home {
namespace {

constexpr int CODES = 256;

using Characters = std::array<std::optional<char32_t>, CODES>;
using TypePage = std::array<CHAR_MAP, CODES>;
using NormPage = std::array<CS_BYTE, CODES>;
using Widths = std::array<CS_BYTE, CODES>;

struct Tables {
    Widths widths = {};
    bool has_widths = false;
    std::vector<NormPage> norms;
    std::vector<TypePage> types = std::vector<TypePage>(1);
    std::array<CS_BYTE, CODES> sounds = {};
    int longest = 1;
    int national = 1;
};

char byte_of(int code) { return static_cast<char>(code); }

// The characters of the bytes `prefix` and one more.
Characters characters_behind(Decoder &decoder, const std::string &prefix) {
    Characters characters;
    for (int code = 0; code < CODES; ++code)
        characters[code] = decoder.character(prefix + byte_of(code));
    return characters;
}

// ---- Widths ----

struct Width {
    int bytes;
    int columns;
};

bool is_between(int code, int first, int last) { return code >= first && code <= last; }

Width width_of(const Set &set, int lead) {
    constexpr Width ONE = {1, 1}, PAIR = {2, 2};
    switch (set.form) {
    case Form::pairs:
        return is_between(lead, set.first_lead, 0xFE) ? PAIR : ONE;
    case Form::sjis:
        return is_between(lead, 0x81, 0x9F) || is_between(lead, 0xE0, 0xFC) ? PAIR : ONE;
    case Form::euc_japan:
        if (lead == 0x8E)
            return {2, 1}; // half-width katakana
        if (lead == 0x8F)
            return {3, 2};
        return is_between(lead, 0xA1, 0xFE) ? PAIR : ONE;
    case Form::euc_taiwan:
        if (lead == 0x8E)
            return {4, 2};
        return is_between(lead, 0xA1, 0xFE) ? PAIR : ONE;
    case Form::gb18030:
        return is_between(lead, 0x81, 0xFE) ? PAIR : ONE;
    case Form::utf8:
        if (is_between(lead, 0xC2, 0xDF))
            return {2, 1};
        if (is_between(lead, 0xE0, 0xEF))
            return {3, lead <= 0xE2 ? 1 : 2};
        return is_between(lead, 0xF0, 0xF4) ? Width{4, 2} : ONE;
    case Form::utf16:
        return {2, 1}; // the low byte comes first and does not tell
    case Form::single:
    case Form::ebcdic:
    case Form::compressed:
        return ONE;
    }
    throw std::logic_error("no such form");
}

void fill_widths(const Set &set, Tables &tables) {
    for (int lead = 0; lead < CODES; ++lead) {
        const Width width = width_of(set, lead);
        tables.widths[lead] = static_cast<CS_BYTE>(width.columns << 4 | width.bytes);
        tables.has_widths |= width.bytes > 1;
        tables.longest = std::max(tables.longest, width.bytes);
        // What most characters beyond ASCII take: that of the last first byte but those of four bytes.
        if (width.bytes > 1 && (width.bytes < 4 || tables.national == 1))
            tables.national = width.bytes;
    }
    if (set.form == Form::gb18030) {
        constexpr CS_BYTE FOUR_BYTE_MODE = 0xF0;
        tables.widths[0xFF] = static_cast<CS_BYTE>(FOUR_BYTE_MODE | (tables.widths[0xFF] & 0x0F));
        tables.longest = 4;
    }
    if (set.form == Form::utf16)
        tables.longest = 4; // a pair of surrogates, which is walked as two
}

// ---- Types ----

// The code of a character among those of one byte or one page; `code` where it is not there.
int code_of(const Characters &characters, char32_t character, int code) {
    const auto found = std::ranges::find(characters, std::optional(character));
    return found != characters.end() ? static_cast<int>(found - characters.begin()) : code;
}

CHAR_MAP entry_of(const Characters &characters, int code) {
    const std::optional<char32_t> character = characters[code];
    CHAR_MAP entry = {static_cast<CS_BYTE>(code), static_cast<CS_BYTE>(code), lexical_bits(0x80), 0};
    if (!character)
        return entry;
    entry.char_lex = lexical_bits(*character);
    entry.char_type = type_bits(*character);
    entry.char_upper = static_cast<CS_BYTE>(code_of(characters, upper_case(*character), code));
    entry.char_lower = static_cast<CS_BYTE>(code_of(characters, lower_case(*character), code));
    return entry;
}

// Without case and without a page: what the entry says holds for every character that begins with the byte.
CHAR_MAP common_entry(int types) { return {0, 0, lexical_bits(0x80), static_cast<CS_BYTE>(types)}; }

constexpr int LETTER = CS_CT_LOWER | CS_CT_GRAPH;

// What most of many characters are: letters, or nothing in particular.
class Majority {
public:
    void count(std::optional<char32_t> character) {
        if (!character || type_bits(*character) == 0)
            return;
        ++all_;
        letters_ += (type_bits(*character) & CS_CT_ALPHA) != 0;
    }
    CHAR_MAP entry() const { return common_entry(2 * letters_ > all_ ? LETTER : all_ != 0 ? CS_CT_GRAPH : 0); }

private:
    int all_ = 0;
    int letters_ = 0;
};

int page_number(std::vector<TypePage> &pages, const TypePage &page) {
    const auto equal = [&page](const TypePage &other) { return std::memcmp(&other, &page, sizeof page) == 0; };
    const auto found = std::find_if(pages.begin() + 1, pages.end(), equal);
    if (found != pages.end())
        return static_cast<int>(found - pages.begin());
    pages.push_back(page);
    return static_cast<int>(pages.size()) - 1;
}

CHAR_MAP leading_to(int page) {
    if (page >= CODES)
        throw std::runtime_error("too many type pages");
    return {static_cast<CS_BYTE>(page), 0, lexical_bits(0x80), CS_CT_ROW};
}

// The entry of the first byte of pairs; a page is added where it needs one.
CHAR_MAP pair_entry(const Characters &characters, Tables &tables) {
    TypePage page;
    bool are_letters = true;
    bool are_there = false;
    for (int code = 0; code < CODES; ++code) {
        page[code] = entry_of(characters, code);
        const CHAR_MAP &entry = page[code];
        const bool is_plain = entry.char_type == LETTER && entry.char_upper == code && entry.char_lower == code;
        are_there |= characters[code].has_value();
        are_letters &= !characters[code] || is_plain;
    }
    if (!are_there)
        return common_entry(0);
    return are_letters ? common_entry(LETTER) : leading_to(page_number(tables.types, page));
}

constexpr char32_t LAST_OF_TWO_BYTES = 0x7FF;

// What the characters of UTF-8 that begin with a byte of three or four are.
CHAR_MAP utf8_entry(int lead) {
    Majority majority;
    const bool has_three = lead < 0xF0;
    const int bits = has_three ? 12 : 18;
    const char32_t first = static_cast<char32_t>(lead & (has_three ? 0x0F : 0x07)) << bits;
    for (char32_t character = first; character < first + (1u << bits); ++character)
        if (character > LAST_OF_TWO_BYTES)
            majority.count(character);
    return majority.entry();
}

// A page of UTF-16 is that of a low byte, and the high byte is looked up. An ASCII character is told exactly; the 256
// characters of any other high byte are told together, so that low bytes share pages.
CHAR_MAP utf16_entry(int low, Tables &tables) {
    static const TypePage OTHERS = [] {
        TypePage page = {};
        for (int high = 1; high < CODES; ++high) {
            Majority majority;
            for (int code = 0; code < CODES; ++code)
                majority.count(static_cast<char32_t>(high << 8 | code));
            page[high] = majority.entry();
            page[high].char_upper = page[high].char_lower = static_cast<CS_BYTE>(high);
        }
        return page;
    }();
    TypePage page = OTHERS;
    const auto character = static_cast<char32_t>(low);
    // Case would change the low byte, which a page cannot tell.
    page[0] = {0, 0, lexical_bits(character), type_bits(character)};
    return leading_to(page_number(tables.types, page));
}

CHAR_MAP entry_of_first_byte(const Set &set, Decoder &decoder, const Characters &singles, int lead, Tables &tables) {
    if (set.form == Form::utf16)
        return utf16_entry(lead, tables);
    switch (tables.widths[lead] & 0x0F) {
    case 1:
        return entry_of(singles, lead);
    case 2:
        return pair_entry(characters_behind(decoder, {byte_of(lead)}), tables);
    default:
        return set.form == Form::utf8 ? utf8_entry(lead) : common_entry(LETTER);
    }
}

// ---- Normalization ----

NormPage norm_page_of(const Characters &characters) {
    NormPage page = {};
    for (int code = 0; code < CODES; ++code)
        page[code] = characters[code] ? ascii_form(*characters[code]) : CS_BYTE{0};
    return page;
}

// A single byte is normalized to ASCII; where the set is an extension of ASCII, others stay as they are.
void fill_norms(const Set &set, Decoder &decoder, const Characters &singles, Tables &tables) {
    tables.norms.emplace_back();
    NormPage first = {};
    for (int lead = 0; lead < CODES; ++lead) {
        if ((tables.widths[lead] & 0x0F) == 1) {
            first[lead] = singles[lead] ? ascii_form(*singles[lead]) : CS_BYTE{0};
            if (first[lead] == 0 && set.form != Form::ebcdic)
                first[lead] = static_cast<CS_BYTE>(lead);
        } else if ((tables.widths[lead] & 0x0F) == 2) {
            const NormPage page = norm_page_of(characters_behind(decoder, {byte_of(lead)}));
            if (std::ranges::count(page, 0) == CODES)
                continue;
            first[lead] = static_cast<CS_BYTE>(tables.norms.size());
            tables.norms.push_back(page);
        }
    }
    if (tables.norms.size() > CODES)
        throw std::runtime_error("too many normalization pages");
    tables.norms[0] = first;
}

// ---- Text ----

std::string set_line(std::string_view key, const std::string &value) { return std::string(key) + " = " + value + "\n"; }

// The numbers of the file: `count` bytes, the highest first.
std::string number(std::size_t value, int count) {
    std::string text;
    for (int i = count - 1; i >= 0; --i)
        text += escaped(static_cast<int>(value >> (8 * i) & 0xFF));
    return text;
}

std::string hexadecimal(const void *data, std::size_t size) {
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (const auto *at = static_cast<const unsigned char *>(data); size-- != 0; ++at) {
        text += DIGITS[*at >> 4];
        text += DIGITS[*at & 15];
    }
    return text;
}

// An image, some bytes a line.
std::string image(std::string_view comment, const void *data, std::size_t size) {
    constexpr std::size_t LINE = 48;
    std::string text = "; " + std::string(comment) + "\n";
    for (std::size_t at = 0; at < size; at += LINE)
        text += "definition = " + hexadecimal(static_cast<const char *>(data) + at, std::min(LINE, size - at)) + "\n";
    return text;
}

std::string header(const Set &set, int number_of_set, int set_class, std::size_t image_size) {
    return "; Character set " + std::string(set.name) + ": " + std::string(set.description) +
           ".\n; Made by home_generator.\n[charset]\n" + set_line("class", number(set_class, 1)) +
           set_line("name", std::string(set.name)) + set_line("description", '"' + std::string(set.description) + '"') +
           set_line("id", number(number_of_set, 1)) + set_line("status", number(0, 2)) +
           set_line("image_size", number(image_size, 4));
}

// The last entry of either image is a spare.
constexpr std::size_t FIRST_CLASS_CODES = 257;

std::string first_class_text(const Set &set, int id, const TypePage &types, const std::array<CS_BYTE, CODES> &sounds) {
    std::array<CHAR_MAP, FIRST_CLASS_CODES> type_image = {};
    std::array<CS_BYTE, FIRST_CLASS_CODES> sound_image = {};
    std::ranges::copy(types, type_image.begin());
    std::ranges::copy(sounds, sound_image.begin());
    return header(set, id, 1, sizeof type_image + sizeof sound_image) +
           image("Types: upper case, lower case, lexical bits and type bits of each code.", &type_image,
                 sizeof type_image) +
           image("Sounds.", &sound_image, sizeof sound_image);
}

std::string second_class_text(const Set &set, int id, const Tables &tables) {
    struct Part {
        std::string_view comment;
        const void *data;
        std::size_t size;
    };
    const Part parts[] = {{"Widths: columns and bytes by the first byte.", tables.widths.data(),
                           tables.has_widths ? sizeof tables.widths : 0},
                          {"Normalization pages.", tables.norms.data(), tables.norms.size() * sizeof(NormPage)},
                          {"Type pages: upper case or page, lower case, lexical bits and type bits of each code.",
                           tables.types.data(), tables.types.size() * sizeof(TypePage)},
                          {"Sounds.", tables.sounds.data(), sizeof tables.sounds}};
    constexpr int SECOND_CLASS = 2;
    std::string head = {'\0',
                        '\0',
                        SECOND_CLASS,
                        byte_of(tables.longest),
                        byte_of(tables.national),
                        byte_of(static_cast<int>(tables.types.size())),
                        byte_of(static_cast<int>(tables.norms.size())),
                        1,
                        '\0',
                        '\0',
                        '\0',
                        '\0'};
    constexpr std::size_t HEAD = 44;
    std::size_t offset = HEAD;
    for (const Part &part : parts) {
        for (const std::size_t value : {part.size != 0 ? offset : 0, part.size})
            for (int shift = 24; shift >= 0; shift -= 8)
                head += byte_of(static_cast<int>(value >> shift & 0xFF));
        offset += part.size;
    }
    std::string text = header(set, id, SECOND_CLASS, offset) +
                       image("What the image holds, with offsets and sizes.", head.data(), head.size());
    for (const Part &part : parts)
        if (part.size != 0)
            text += image(part.comment, part.data, part.size);
    return text;
}

int number_of(const Set &set) {
    const auto *const row = std::ranges::find_if(csid_name, [&set](const CSID_CSNAME &known) {
        return set.name == reinterpret_cast<const char *>(known.csname);
    });
    if (row == std::end(csid_name))
        throw std::runtime_error("the library does not know " + std::string(set.name));
    return row->csid;
}

// The file says of iso_1 what the library has built in, so that it does not matter which of both a caller meets.
std::string iso_1_text(const Set &set) {
    const CHAR_ATTRIB &built_in = *com_get_charattrib();
    TypePage types;
    std::array<CS_BYTE, CODES> sounds;
    std::ranges::copy(built_in.cs_type_map->chmap, types.begin());
    std::ranges::copy(built_in.cs_soundex->sound, sounds.begin());
    return first_class_text(set, built_in.cs_id, types, sounds);
}

} // namespace

std::string escaped(int byte) {
    static constexpr char DIGITS[] = "0123456789abcdef";
    return {'\\', 'x', DIGITS[byte >> 4 & 15], DIGITS[byte & 15]};
}

std::string charset_file(const Set &set, Decoder &decoder) {
    if (set.name == "iso_1")
        return iso_1_text(set);
    Tables tables;
    fill_widths(set, tables);
    const Characters singles = characters_behind(decoder, "");
    for (int lead = 0; lead < CODES; ++lead) {
        tables.types[0][lead] = entry_of_first_byte(set, decoder, singles, lead, tables);
        if (singles[lead])
            tables.sounds[lead] = sound(*singles[lead]);
    }
    if (set.form == Form::single)
        return first_class_text(set, number_of(set), tables.types[0], tables.sounds);
    fill_norms(set, decoder, singles, tables);
    return second_class_text(set, number_of(set), tables);
}

std::string config_file(const Set &set) {
    return "; Settings of the character set " + std::string(set.name) + ". It needs none.\n";
}

} // namespace home

// The files of sort orders.
//
// A dictionary order compares letters first: a letter with its accents in both cases has one primary weight. Codes that
// are no characters and controls come first, then blanks, signs, digits, Latin letters, and letters of other scripts.
// Between equal words decide, at the first place where they differ, no accent before an accent and upper case before
// lower case. Æ, Œ and ß stand behind the pair of letters that they are.
//
// Only canonical decompositions count as accents, which Unicode never changes, and those of a few letters that have
// none.
#include "classes.h"
#include "files.h"

#include <unicode/unorm2.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <compare>
#include <map>
#include <stdexcept>
#include <vector>

namespace home {
namespace {

constexpr int CODES = 256;
constexpr int BINARY_ID = 1;

struct Ligature {
    char32_t upper;
    char32_t lower;
    char first;
    char second;
};

constexpr Ligature LIGATURES[] = {{0x00C6, 0x00E6, 'a', 'e'}, {0x0152, 0x0153, 'o', 'e'}, {0, 0x00DF, 's', 's'}};

struct Relative {
    char32_t letter; // lower case
    char32_t base;
};

// Letters that have no canonical decomposition, and the letter that they are a form of.
constexpr Relative FORMS[] = {{0x00AA, U'a'}, {0x00B5, 0x03BC}, {0x00BA, U'o'}, {0x00F0, U'd'},
                              {0x00F8, U'o'}, {0x0111, U'd'},   {0x0142, U'l'}, {0x207F, U'n'}};
constexpr char32_t BEHIND_ACCENTS = 0x0338; // the last combining mark
// Letters of their own, and the one behind which they stand.
constexpr Relative FOLLOWERS[] = {{0x0131, U'i'}, {0x0192, U'f'}, {0x00FE, U'z'}};

template <std::size_t N>
char32_t base_among(const Relative (&relatives)[N], char32_t letter) {
    const auto *const found = std::ranges::find(relatives, letter, &Relative::letter);
    return found != std::end(relatives) ? found->base : 0;
}

enum class Group { control, blank, sign, digit, latin, other };

// What has one primary weight.
struct Primary {
    Group group;
    char32_t base; // a code where there is no character
    char32_t own;  // a follower behind its base; else 0
    auto operator<=>(const Primary &) const = default;
};

struct Variant {
    std::u32string accents;
    bool is_lower;
    int code;
    char32_t character;
    auto operator<=>(const Variant &) const = default;
};

// The canonical decomposition; the character itself where it has none.
std::u32string decomposed(char32_t character) {
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2 *const normalizer = unorm2_getNFDInstance(&error);
    UChar units[16];
    const int32_t count =
        unorm2_getDecomposition(normalizer, static_cast<UChar32>(character), units, std::size(units), &error);
    if (U_FAILURE(error))
        throw std::runtime_error("ICU does not decompose");
    if (count < 0)
        return {character};
    std::u32string text;
    for (int32_t at = 0; at < count;) {
        UChar32 c;
        U16_NEXT(units, at, count, c);
        text += static_cast<char32_t>(c);
    }
    return text;
}

std::string utf8(char32_t character) {
    char bytes[U8_MAX_LENGTH];
    int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, character);
    return {bytes, static_cast<std::size_t>(length)};
}

struct Place {
    Primary primary;
    Variant variant;
};

Place place_of_letter(char32_t character, int code) {
    std::u32string parts = decomposed(character);
    char32_t base = lower_case(parts[0]);
    std::u32string accents = parts.substr(1);
    if (const char32_t form_of = base_among(FORMS, base)) {
        accents += {BEHIND_ACCENTS, base};
        base = form_of;
    }
    const char32_t own = base;
    const char32_t before = base_among(FOLLOWERS, base);
    if (before != 0)
        base = before;
    const bool is_latin = base < 0x80;
    const bool is_lower = lower_case(character) == character;
    return {{is_latin ? Group::latin : Group::other, base, before != 0 ? own : 0},
            {accents, is_lower, code, character}};
}

// The C library takes them for letters.
bool is_lone_accent(char32_t character) { return character >= 0x02B0 && character <= 0x02FF; }

Place place_of(std::optional<char32_t> character, int code) {
    const auto at = [&](Group group, char32_t base) {
        return Place{{group, base, 0}, {{}, false, code, character.value_or(0)}};
    };
    if (!character)
        return at(Group::control, static_cast<char32_t>(0x110000 + code));
    const CS_BYTE types = type_bits(*character);
    if ((types & CS_CT_ALPHA) != 0 && !is_lone_accent(*character))
        return place_of_letter(*character, code);
    if ((types & CS_CT_DIGIT) != 0)
        return at(Group::digit, *character);
    const bool is_blank = *character == U' ' || *character == 0xA0;
    if (is_blank || (types & CS_CT_GRAPH) != 0)
        return at(is_blank ? Group::blank : Group::sign, *character);
    return at(Group::control, *character);
}

// ---- Text ----

std::string header(const Set &set, std::string_view name, int id, std::string_view title) {
    return "; Sort order " + std::string(name) + " of the character set " + std::string(set.name) +
           ".\n; Made by home_generator.\n[sortorder]\nclass = " + escaped(1) + "\nid = " + escaped(id) +
           "\nname = " + std::string(name) + "\nmenuname = " + std::string(name) +
           "\ncharset = " + std::string(set.name) + "\ndescription = \"" + std::string(title) + "\"\n";
}

std::string item(int code) {
    const bool is_plain = (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z');
    return is_plain ? std::string(1, static_cast<char>(code)) : escaped(code);
}

// One entry: the variants of a primary weight. Values are secondary weights; their items, joined, differ only on the
// third level, which does not count in orders that leave case or accents out.
std::string char_entry(const std::vector<Variant> &variants, const SortOrder &order) {
    std::string line = "char = " + item(variants[0].code);
    std::string comment = ";";
    bool is_beyond_ascii = false;
    for (const Variant &variant : variants) {
        comment += " " + utf8(variant.character);
        is_beyond_ascii |= variant.character > 0xA0;
    }
    for (std::size_t i = 1; i < variants.size(); ++i) {
        const bool differs_in_accents = variants[i].accents != variants[i - 1].accents;
        const bool differs_in_case = variants[i].is_lower != variants[i - 1].is_lower;
        const bool counts = (differs_in_accents && order.accents_count) || (differs_in_case && order.case_counts);
        line += (counts ? ", " : "=") + item(variants[i].code);
    }
    return (is_beyond_ascii ? comment + "\n" : "") + line + "\n";
}

class OrderFile {
public:
    OrderFile(const Set &set, Decoder &decoder, const SortOrder &order) : order_(order) {
        for (int code = 0; code < CODES; ++code)
            characters_[code] = decoder.character(std::string(1, static_cast<char>(code)));
        text_ = header(set, order.name, order.id, order.title) + "preference = false\n";
    }

    std::string text() {
        for (const Ligature &ligature : LIGATURES)
            add(ligature);
        std::map<Primary, std::vector<Variant>> weights;
        for (int code = 1; code < CODES; ++code) {
            if (is_ligature_[code])
                continue;
            const Place place = place_of(characters_[code], code);
            weights[place.primary].push_back(place.variant);
        }
        for (auto &[primary, variants] : weights) {
            std::ranges::sort(variants);
            text_ += char_entry(variants, order_);
        }
        return text_;
    }

private:
    // 0 where the set does not have the character.
    int code_of(char32_t character) const {
        const auto found = std::ranges::find(characters_, std::optional(character));
        return character != 0 && found != characters_.end() ? static_cast<int>(found - characters_.begin()) : 0;
    }

    void add(const Ligature &ligature) {
        const int upper = code_of(ligature.upper);
        const int lower = code_of(ligature.lower);
        const std::string small = {ligature.first, ligature.second};
        const std::string large = {static_cast<char>(ligature.first - 0x20), static_cast<char>(ligature.second - 0x20)};
        const std::string_view type = order_.accents_count ? "after " : "equal ";
        const auto write = [&](const std::string &forms, const std::string &pair) {
            text_ += "; " + pair + "\nlig = " + forms + ", " + std::string(type) + pair + "\n";
        };
        for (const int code : {upper, lower})
            is_ligature_[code] = is_ligature_[code] || code != 0;
        if (upper != 0 && lower != 0 && !order_.case_counts)
            return write(item(upper) + "=" + item(lower), small);
        if (upper != 0)
            write(item(upper), large);
        if (lower != 0)
            write(item(lower), small);
    }

    const SortOrder &order_;
    std::array<std::optional<char32_t>, CODES> characters_;
    std::array<bool, CODES> is_ligature_ = {};
    std::string text_;
};

} // namespace

std::string binary_order_file(const Set &set) {
    return header(set, "binary", BINARY_ID, "Order of the codes") + "binary = true\n";
}

std::string sort_order_file(const Set &set, Decoder &decoder, const SortOrder &order) {
    return OrderFile(set, decoder, order).text();
}

} // namespace home

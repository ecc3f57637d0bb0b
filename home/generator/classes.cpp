#include "classes.h"

#include <cstdlib>
#include <cwctype>

#include <locale.h>

namespace home {
namespace {

locale_t unicode() {
    static const locale_t locale = [] {
        const locale_t made = newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
        if (made == nullptr)
            std::abort();
        return made;
    }();
    return locale;
}

wint_t wide(char32_t character) { return static_cast<wint_t>(character); }

constexpr char32_t FULL_WIDTH_FIRST = 0xFF01;
constexpr char32_t FULL_WIDTH_LAST = 0xFF5E;
constexpr char32_t FULL_WIDTH_OFFSET = 0xFEE0;
constexpr char32_t FULL_WIDTH_BLANK = 0x3000;

// The character that a full-width form is a form of; other characters themselves.
char32_t narrow(char32_t character) {
    if (character >= FULL_WIDTH_FIRST && character <= FULL_WIDTH_LAST)
        return character - FULL_WIDTH_OFFSET;
    return character == FULL_WIDTH_BLANK ? U' ' : character;
}

bool is_ascii(char32_t character) { return character < 0x80; }

bool is_currency(char32_t character) {
    return character == U'$' || (character >= 0xA3 && character <= 0xA5) ||
           (character >= 0x20A0 && character <= 0x20CF) || character == 0xFF04 || character == 0xFFE1 ||
           character == 0xFFE5;
}

} // namespace

CS_BYTE type_bits(char32_t character) {
    const wint_t c = wide(narrow(character));
    int bits = 0;
    if (iswupper_l(c, unicode()))
        bits |= CS_CT_UPPER;
    if (iswlower_l(c, unicode()) || (bits == 0 && iswalpha_l(c, unicode())))
        bits |= CS_CT_LOWER;
    if (iswdigit_l(c, unicode()))
        bits |= CS_CT_DIGIT;
    if (iswspace_l(c, unicode()))
        bits |= CS_CT_SPACE;
    if (iswxdigit_l(c, unicode()))
        bits |= CS_CT_XDIGIT;
    if (iswpunct_l(c, unicode()))
        bits |= CS_CT_PUNCT;
    if (iswprint_l(c, unicode()))
        bits |= CS_CT_GRAPH;
    return static_cast<CS_BYTE>(bits);
}

CS_BYTE lexical_bits(char32_t character) {
    constexpr CS_BYTE IDENTIFIER = 0x01;
    constexpr CS_BYTE DIGIT = 0x02;
    constexpr CS_BYTE BLANK = 0x08;
    constexpr CS_BYTE QUOTE = 0x10;
    constexpr CS_BYTE PUNCTUATION = 0x20;
    constexpr CS_BYTE CURRENCY = 0x40;
    if (is_currency(character))
        return CURRENCY;
    if (!is_ascii(character))
        return IDENTIFIER;
    if (character <= U' ')
        return BLANK;
    if (character >= U'0' && character <= U'9')
        return DIGIT;
    if (character == U'"' || character == U'\'')
        return QUOTE;
    const bool may_name =
        iswalpha_l(wide(character), unicode()) || character == U'#' || character == U'@' || character == U'_';
    return may_name ? IDENTIFIER : PUNCTUATION;
}

CS_BYTE sound(char32_t character) {
    if (!iswalpha_l(wide(character), unicode()))
        return 0;
    if (!is_ascii(character))
        return '0';
    //                              ABCDEFGHIJKLMNOPQRSTUVWXYZ
    static constexpr char CODES[] = "01230120022455012623010202";
    return static_cast<CS_BYTE>(CODES[(character | 0x20) - U'a']);
}

char32_t upper_case(char32_t character) { return static_cast<char32_t>(towupper_l(wide(character), unicode())); }
char32_t lower_case(char32_t character) { return static_cast<char32_t>(towlower_l(wide(character), unicode())); }

CS_BYTE ascii_form(char32_t character) {
    const char32_t form = narrow(character);
    return is_ascii(form) ? static_cast<CS_BYTE>(lower_case(form)) : 0;
}

} // namespace home

// Every walker over a chosen set and text, against the naive versions. The text has behind it only what the
// contract asks for: the byte that a lookup of the second byte reads, and the tail of a character that a copy
// takes whole.
#include "character_set.h"
#include "support/naive_walk.h"

namespace naive = support::naive;
using fuzz::ExactBuffer;

namespace {

void check_character(CS_ATTRIB *ca, CS_BYTE *p) {
    const CHAR_MAP entry = naive::entry(ca, p);
    FUZZ_CHECK(comn_isupper(ca, p) == (entry.char_type & 0x01));
    FUZZ_CHECK(comn_islower(ca, p) == (entry.char_type & 0x02));
    FUZZ_CHECK(comn_isalpha(ca, p) == (entry.char_type & 0x03));
    FUZZ_CHECK(comn_isdigit(ca, p) == (entry.char_type & 0x04));
    FUZZ_CHECK(comn_isspace(ca, p) == (entry.char_type & 0x08));
    FUZZ_CHECK(comn_isxdigit(ca, p) == (entry.char_type & 0x10));
    FUZZ_CHECK(comn_ispunct(ca, p) == (entry.char_type & 0x20));
    FUZZ_CHECK(comn_isgraph(ca, p) == (entry.char_type & 0x40));
    FUZZ_CHECK(comn_get_lex(ca, p) == entry.char_lex);
    FUZZ_CHECK(comn_char_width(ca, p) == naive::width(ca, p));
    FUZZ_CHECK(comn_disp_width(ca, p) == naive::columns(ca, p));
    FUZZ_CHECK(comn_to_ascii(ca, p) == naive::to_ascii(ca, p));
    CS_BYTE *next = p;
    comn_inc_char(ca, &next);
    FUZZ_CHECK(next == p + naive::step(ca, p));
}

// The source has all bytes of the character.
void check_case(CS_ATTRIB *ca, CS_BYTE *p) {
    for (const bool upper : {true, false}) {
        const std::string expected = naive::other_case(ca, p, upper);
        ExactBuffer dest(expected.size());
        (upper ? comn_toupper : comn_tolower)(ca, p, dest.get());
        FUZZ_CHECK(dest.all() == expected);
    }
}

void check_whole_char(CS_ATTRIB *ca, CS_BYTE *start, CS_BYTE *end) {
    naive::Whole found{-5, -5, -5, -5};
    comn_whole_char(ca, start, end, &found.bytes, &found.part1, &found.part2, &found.count);
    FUZZ_CHECK(found == naive::whole_char(ca, start, end));
}

void check_str_to_ascii(CS_ATTRIB *ca, const std::string &text) {
    const std::string padded = text + std::string(support::LONGEST_CHARACTER + 1, '\0');
    const auto *source = reinterpret_cast<const CS_BYTE *>(padded.data());
    const int length = static_cast<int>(text.size());
    const std::string expected = naive::str_to_ascii(ca, source, length);
    const auto tail = static_cast<std::size_t>(naive::whole_char(ca, source, source + length).part2);
    ExactBuffer src(text.size() + std::max<std::size_t>(tail, 1), text);
    ExactBuffer dest(text.size() + tail);
    CS_INT written = -5;
    comn_str_to_ascii(reinterpret_cast<CS_CHAR *>(src.get()), length, reinterpret_cast<CS_CHAR *>(dest.get()), &written,
                      ca);
    FUZZ_CHECK(written == static_cast<CS_INT>(expected.size()));
    FUZZ_CHECK(dest.first(expected.size()) == expected);
}

// The text ends where the search has to end, or is closed by NUL bytes if the search goes on to its end.
void check_strchr(CS_ATTRIB *ca, const std::string &text, CS_BYTE wanted) {
    const std::string padded = text + std::string(support::LONGEST_CHARACTER + 1, '\0');
    const auto *source = reinterpret_cast<const CS_BYTE *>(padded.data());
    const CS_BYTE *expected = naive::mb_strchr(ca, source, wanted);
    const CS_BYTE *last = source;
    while (*last != 0 && *last != wanted)
        last += naive::step(ca, last);
    ExactBuffer exact(static_cast<std::size_t>(last - source) + 1, padded);
    CS_BYTE *found = comn_mb_strchr(ca, exact.get(), wanted);
    FUZZ_CHECK((found == nullptr) == (expected == nullptr));
    FUZZ_CHECK(found == nullptr || found - exact.get() == expected - source);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    fuzz::Input input(data, size);
    fuzz::ChosenSet set(input);
    CS_ATTRIB *ca = set.get();
    const CS_BYTE wanted = input.byte();
    const std::string text = input.rest();

    ExactBuffer exact(text.size() + 1, text);
    CS_BYTE *end = exact.get() + text.size();
    for (CS_BYTE *p = exact.get(); p < end; ++p) {
        check_character(ca, p);
        if (naive::step(ca, p) <= end - p)
            check_case(ca, p);
        check_whole_char(ca, exact.get(), p);
    }
    check_whole_char(ca, exact.get(), end);
    check_whole_char(ca, end, exact.get());
    check_str_to_ascii(ca, text);
    check_strchr(ca, text, wanted);
    return 0;
}

// Every code of a set, found by asking: bytes that are the beginning of something are tried with every next byte.
#include "mapping.h"

#include <unordered_map>

namespace unic_tables {
namespace {

constexpr char SHIFT_OUT = 0x0E;
constexpr char SHIFT_IN = 0x0F;
constexpr int LONGEST = 4;

std::string text_of(const Code &code) {
    std::string text;
    for (int i = 0; i < code.length; ++i)
        text += static_cast<char>(code.byte(i));
    return text;
}

// No set continues a beginning of two bytes with anything else: 94 rows and cells, or the digits of four-byte codes.
// (A source may call anything a beginning as long as bytes are missing.)
bool may_continue(const Code &code, unsigned byte) {
    if (code.length < 2)
        return true;
    const bool digits = code.byte(1) >= 0x30 && code.byte(1) <= 0x39;
    return digits && code.length == 3 ? byte >= 0x30 && byte <= 0x39 : byte >= (digits ? 0x81 : 0xA1) && byte <= 0xFE;
}

class Prober {
public:
    Prober(Reference &reference, std::string prefix, bool shift, std::vector<Meaning> *meanings)
        : reference_(reference), prefix_(std::move(prefix)), shift_(shift), meanings_(meanings) {}

    void extend(const Code &code) {
        for (unsigned byte = 1; byte < 256; ++byte) {
            if (code.length == 0 && shift_ && (byte == SHIFT_OUT || byte == SHIFT_IN))
                continue;
            if (may_continue(code, byte))
                ask(code.with(byte));
        }
    }

private:
    void ask(const Code &code) {
        const Reference::Answer answer = reference_.decode(prefix_ + text_of(code));
        if (answer.kind == Reference::Answer::CHARACTERS) {
            if (prefix_.empty() || code.length == 2)
                meanings_->push_back({code, answer.characters});
        } else if (answer.kind == Reference::Answer::BEGINNING && code.length < LONGEST) {
            meanings_->push_back({code, {0, 0}});
            extend(code);
        }
    }

    Reference &reference_;
    std::string prefix_;
    bool shift_;
    std::vector<Meaning> *meanings_;
};

std::uint32_t code_without_shifts(std::string text, bool shift) {
    if (shift && text.size() == 4 && text.front() == SHIFT_OUT && text.back() == SHIFT_IN)
        text = text.substr(1, 2);
    if (text.size() > LONGEST || (shift && text.size() > 2))
        fail("a character of too many bytes");
    std::uint32_t code = 0;
    for (const char c : text)
        code = code << 8 | static_cast<unsigned char>(c);
    return code;
}

// A source may write a character as a code of another, or as the sign for none, and call it done. Where a code means
// the character, that is its code; a code that stands for it in one direction only is kept, but never that of a
// control: the sign for none is one, and no picture of a control may become a line end.
void prefer_round_trips(Mapping *mapping) {
    const auto is_control = [](char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); };
    std::unordered_map<std::uint32_t, char32_t> meaning_of;
    std::vector<std::uint32_t> inverse(mapping->codes.size());
    for (const auto &meanings : mapping->meanings)
        for (const Meaning &meaning : meanings) {
            if (meaning.is_beginning() || meaning.characters[1] != 0)
                continue;
            meaning_of[meaning.code.bytes] = meaning.characters[0];
            std::uint32_t &first = inverse[meaning.characters[0]];
            first = first != 0 ? first : meaning.code.bytes;
        }
    for (char32_t c = 1; c < mapping->codes.size(); ++c) {
        std::uint32_t &code = mapping->codes[c];
        const auto meaning = meaning_of.find(code);
        if (code == 0 || meaning == meaning_of.end() || meaning->second == c)
            continue;
        if (inverse[c] != 0)
            code = inverse[c];
        else if (is_control(meaning->second))
            code = 0;
    }
}

} // namespace

Mapping probe(Reference &reference, int number, bool shift) {
    Mapping mapping;
    mapping.number = number;
    mapping.shift = shift;
    Prober(reference, "", shift, &mapping.meanings[0]).extend({});
    if (shift)
        Prober(reference, std::string(1, SHIFT_OUT), shift, &mapping.meanings[1]).extend({});
    const auto ask = [&](char32_t c) { mapping.codes[c] = code_without_shifts(reference.encode(c), shift); };
    for (char32_t c = 1; c < 0x10000; ++c)
        if (c < 0xD800 || c >= 0xE000)
            ask(c);
    // In the other planes those that have a code.
    for (const auto &meanings : mapping.meanings)
        for (const Meaning &meaning : meanings)
            if (meaning.characters[0] > 0xFFFF && mapping.codes[meaning.characters[0]] == 0)
                ask(meaning.characters[0]);
    prefer_round_trips(&mapping);
    return mapping;
}

} // namespace unic_tables

#include "scsu.h"

#include <algorithm>

namespace client {
namespace {

// Tags of the state of bytes.
constexpr unsigned SQ0 = 0x01; // to 0x08: quotes from a window
constexpr unsigned SDX = 0x0B;
constexpr unsigned SQU = 0x0E;
constexpr unsigned SCU = 0x0F;
constexpr unsigned SC0 = 0x10; // to 0x17: changes to a window
constexpr unsigned SD0 = 0x18; // to 0x1F: defines it
// Tags of the state of units.
constexpr unsigned UC0 = 0xE0;
constexpr unsigned UD0 = 0xE8;
constexpr unsigned UQU = 0xF0;
constexpr unsigned UDX = 0xF1;
constexpr unsigned U_RESERVED = 0xF2;

// What defines each window where it lies at first.
constexpr char FIRST_DEFINITIONS[] = "\x01\xF9\x08\x0C\x12\xFD\xFE\xA6";

constexpr bool is_one_of_eight(unsigned byte, unsigned first) { return byte >= first && byte < first + 8; }

// Whether a byte defines a window.
constexpr bool is_definition(unsigned byte) { return (byte >= 0x01 && byte <= 0xA7) || byte >= 0xF9; }

unsigned at(std::string_view text, size_t i) { return static_cast<unsigned char>(text[i]); }
char byte_of(unsigned value) { return static_cast<char>(value); }

} // namespace

struct ScsuState::Token {
    size_t length;
    bool is_cut = false;
    bool is_nul = false;
    bool is_malformed = false; // and ends a text of the library as U+0000 does
    bool is_tag = false;       // no character
    unsigned unit = 0;         // of a character that is written as a unit
};

// The character or tag at the front of a text that is not empty.
ScsuState::Token ScsuState::token_at(std::string_view text) const {
    const unsigned first = at(text, 0);
    const auto of_length = [&](size_t length) { return Token{length, text.size() < length}; };
    const auto tag_of_length = [&](size_t length) {
        Token token = of_length(length);
        token.is_tag = true;
        return token;
    };
    const auto unit_behind = [&](size_t tag) {
        Token token = of_length(tag + 2);
        if (token.is_cut)
            return token;
        token.unit = at(text, tag) << 8 | at(text, tag + 1);
        token.is_nul = token.unit == 0;
        return token;
    };
    const auto definition = [&] {
        Token token = tag_of_length(2);
        // A zero is the character behind a tag that lacks its byte.
        if (!token.is_cut && text[1] == '\0')
            return Token{1, false, false, true};
        token.is_tag = token.is_cut || is_definition(at(text, 1)); // what defines nothing is a malformed character
        return token;
    };
    if (is_units_) {
        if (is_one_of_eight(first, UC0))
            return tag_of_length(1);
        if (first == U_RESERVED)
            return of_length(1);
        if (is_one_of_eight(first, UD0))
            return definition();
        if (first == UDX)
            return tag_of_length(3);
        return unit_behind(first == UQU ? 1 : 0);
    }
    if (is_one_of_eight(first, SQ0)) {
        Token token = of_length(2);
        token.is_nul = !token.is_cut && first == SQ0 && text[1] == '\0';
        return token;
    }
    if (is_one_of_eight(first, SD0))
        return definition();
    if (first == SDX)
        return tag_of_length(3);
    if (first == SQU)
        return unit_behind(1);
    if (first == SCU || is_one_of_eight(first, SC0))
        return tag_of_length(1);
    Token token = of_length(1);
    token.is_nul = first == 0;
    return token;
}

// Of a tag that is whole.
void ScsuState::take(std::string_view tag) {
    const unsigned first = at(tag, 0);
    const unsigned define = is_units_ ? UD0 : SD0;
    const unsigned change = is_units_ ? UC0 : SC0;
    const unsigned extended = is_units_ ? UDX : SDX;
    if (is_one_of_eight(first, change)) {
        window_ = static_cast<int>(first - change);
        is_units_ = false;
    } else if (is_one_of_eight(first, define)) {
        const bool is_sound = is_definition(at(tag, 1));
        if (is_sound) {
            window_ = static_cast<int>(first - define);
            definitions_[window_] = {byte_of(SD0 + static_cast<unsigned>(window_)), tag[1]};
        }
        is_units_ = false;
    } else if (first == extended) {
        window_ = static_cast<int>(at(tag, 1) >> 5);
        definitions_[window_] = {byte_of(SDX), tag[1], tag[2]};
        is_units_ = false;
    } else if (!is_units_ && first == SCU) {
        is_units_ = true;
    }
}

ScsuRun ScsuState::read(std::string_view text) {
    ScsuRun run;
    size_t done = 0;
    ScsuState behind = *this; // the state behind `run.text`
    bool is_half = false;     // a high surrogate waits for its other half
    while (done < text.size()) {
        const std::string_view rest = text.substr(done);
        const Token token = token_at(rest);
        if (token.is_cut)
            break;
        if (token.is_nul || token.is_malformed) {
            run.text = done;
            run.nul = token.length;
            run.is_malformed = token.is_malformed;
            return run;
        }
        take(rest.substr(0, token.length));
        done += token.length;
        if (!token.is_tag)
            is_half = (token.unit & 0xFC00) == 0xD800;
        if (!is_half) {
            run.text = done;
            behind = *this;
        }
    }
    *this = behind;
    return run;
}

size_t ScsuState::read_one(std::string_view text) {
    const Token token = token_at(text);
    const size_t length = std::min(token.length, text.size());
    if (!token.is_cut && !token.is_malformed)
        take(text.substr(0, length));
    return length;
}

std::string ScsuState::way_from_start() const {
    std::string way;
    for (const std::string &definition : definitions_)
        way += definition;
    if (!way.empty() || window_ != 0)
        way += byte_of(SC0 + static_cast<unsigned>(window_));
    if (is_units_)
        way += byte_of(SCU);
    return way;
}

std::string ScsuState::way_to_start() const {
    std::string way;
    if (is_units_)
        way += byte_of(UC0);
    for (unsigned i = 0; i < WINDOWS; ++i)
        if (!definitions_[i].empty())
            way += {byte_of(SD0 + i), FIRST_DEFINITIONS[i]};
    if (!way.empty() || window_ != 0)
        way += byte_of(SC0);
    return way;
}

} // namespace client

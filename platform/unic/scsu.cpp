// The standard compression scheme for Unicode (Unicode Technical Standard 6). The decoder takes every form that the
// scheme has; as it is not told the length of its text, one that ends inside a tag may be read as one that quotes
// zeros, but never past the three zeros behind it. The encoder keeps to few of them: it moves between the windows that
// it finds, redefines one where two characters in a row ask for it, and writes in whole units where characters have no
// window.
#include "sets.h"
#include "text.h"

#include <algorithm>
#include <iterator>

namespace dlx::unic {
namespace {

enum Tag : std::uint8_t {
    // Of the state of single bytes; 0x01 to 0x08 quote from a window, 0x10 to 0x17 change to one, 0x18 to 0x1F define
    // it.
    SQ0 = 0x01,
    SDX = 0x0B,
    SQU = 0x0E,
    SCU = 0x0F,
    SC0 = 0x10,
    SD0 = 0x18,
    // Of the state of units.
    UC0 = 0xE0,
    UD0 = 0xE8,
    UQU = 0xF0,
    UDX = 0xF1,
    U_RESERVED = 0xF2
};

constexpr char32_t STATIC_WINDOWS[8] = {0x0000, 0x0080, 0x0100, 0x0300, 0x2000, 0x2080, 0x2100, 0x3000};
constexpr char32_t FIRST_DYNAMIC_WINDOWS[8] = {0x0080, 0x00C0, 0x0400, 0x0600, 0x0900, 0x3040, 0x30A0, 0xFF00};
constexpr char32_t FIXED_WINDOWS[7] = {0x00C0, 0x0250, 0x0370, 0x0530, 0x3040, 0x30A0, 0xFF60};
constexpr char32_t GAP_OFFSET = 0xAC00;

// Where the window that a byte defines lies; 0 for a reserved byte.
constexpr char32_t window_of(unsigned byte) {
    if (byte >= 0x01 && byte <= 0x67)
        return byte << 7;
    if (byte >= 0x68 && byte <= 0xA7)
        return (byte << 7) + GAP_OFFSET;
    return byte >= 0xF9 ? FIXED_WINDOWS[byte - 0xF9] : 0;
}

// ---- Decoder ------------------------------------------------------------------------------------------------------

class Decoder {
public:
    Decoder(const char *source, UNICHAR *begin, UNICHAR *limit)
        : p_(reinterpret_cast<const std::uint8_t *>(source)), out_(begin), limit_(limit) {
        std::copy(std::begin(FIRST_DYNAMIC_WINDOWS), std::end(FIRST_DYNAMIC_WINDOWS), windows_);
    }

    UNICHAR *run(Ending *ending) {
        while (units_ ? step_of_units() : step_of_bytes()) {
        }
        // Half a pair at the end lacks its other half.
        ending_.truncated |= high_ != 0 && !ending_.no_room;
        *ending = ending_;
        return out_;
    }

private:
    bool at_end() const { return p_[0] == 0 && (!units_ || p_[1] == 0); }
    bool cut() {
        ending_.truncated = true;
        return false;
    }

    bool step_of_bytes() {
        const unsigned byte = *p_;
        if (byte == 0)
            return false;
        if (byte >= 0x80)
            return put(windows_[window_] + (byte - 0x80), 1);
        if (byte >= 0x20 || byte == 0x09 || byte == 0x0A || byte == 0x0D)
            return put(byte, 1);
        if (byte >= SQ0 && byte < SQ0 + 8) {
            const unsigned quoted = p_[1];
            const unsigned window = byte - SQ0;
            // The first character of a window is quoted with the byte 0; only U+0000 is none.
            if (quoted == 0 && window == 0)
                return cut();
            return put(quoted < 0x80 ? STATIC_WINDOWS[window] + quoted : windows_[window] + (quoted - 0x80), 2);
        }
        if (byte >= SC0 && byte < SC0 + 8) {
            window_ = byte - SC0;
            ++p_;
            return true;
        }
        if (byte >= SD0 && byte < SD0 + 8)
            return define(byte - SD0, p_[1], 2);
        switch (byte) {
        case SDX:
            define_extended();
            return true;
        case SQU:
            return put_unit(1);
        case SCU:
            units_ = true;
            ++p_;
            return true;
        default: // 0x0C is reserved
            return malformed(1);
        }
    }

    bool step_of_units() {
        if (at_end())
            return false;
        const unsigned byte = *p_;
        if (byte >= UC0 && byte < UC0 + 8) {
            window_ = byte - UC0;
            units_ = false;
            ++p_;
            return true;
        }
        if (byte >= UD0 && byte < UD0 + 8) {
            if (!define(byte - UD0, p_[1], 2))
                return false;
            units_ = false;
            return true;
        }
        switch (byte) {
        case UDX:
            define_extended();
            units_ = false;
            return true;
        case UQU:
            return put_unit(1);
        case U_RESERVED:
            return malformed(1);
        default:
            return put_unit(0);
        }
    }

    bool define(unsigned window, unsigned byte, int length) {
        if (byte == 0)
            return cut();
        const char32_t start = window_of(byte);
        if (start == 0)
            return malformed(length);
        windows_[window] = start;
        window_ = window;
        p_ += length;
        return true;
    }

    void define_extended() {
        window_ = p_[1] >> 5;
        windows_[window_] = 0x10000 + (((p_[1] & 0x1Fu) << 8 | p_[2]) << 7);
        p_ += 3;
    }

    // A unit of which the first byte stands at p_[tag].
    bool put_unit(int tag) {
        if (p_[tag] == 0 && p_[tag + 1] == 0)
            return cut();
        return put(p_[tag] << 8 | p_[tag + 1], tag + 2);
    }

    // Surrogates come as units, each by itself; a pair is written when it is whole.
    bool put(char32_t character, int length) {
        if (high_ != 0 && is_low_surrogate(character)) {
            if (!store(code_point_of(high_, character)))
                return false;
            high_ = 0;
            p_ += length;
            return true;
        }
        if (high_ != 0 && !lose_high())
            return false;
        if (is_high_surrogate(character)) {
            high_ = character;
        } else {
            const bool half = is_low_surrogate(character);
            if (!store(half || character > 0x10FFFF ? REPLACEMENT : character))
                return false;
            ending_.substituted |= half || character > 0x10FFFF;
        }
        p_ += length;
        return true;
    }

    bool malformed(int length) {
        if ((high_ != 0 && !lose_high()) || !store(REPLACEMENT))
            return false;
        ending_.substituted = true;
        p_ += length;
        return true;
    }

    bool lose_high() {
        if (!store(REPLACEMENT))
            return false;
        ending_.substituted = true;
        high_ = 0;
        return true;
    }

    bool store(char32_t character) {
        if (limit_ - out_ < (character >= 0x10000 ? 2 : 1)) {
            ending_.no_room = true;
            return false;
        }
        if (character >= 0x10000) {
            *out_++ = high_surrogate_of(character);
            *out_++ = low_surrogate_of(character);
        } else {
            *out_++ = static_cast<UNICHAR>(character);
        }
        return true;
    }

    const std::uint8_t *p_;
    UNICHAR *out_;
    UNICHAR *const limit_;
    char32_t windows_[8];
    unsigned window_ = 0;
    bool units_ = false;
    char32_t high_ = 0;
    Ending ending_;
};

int decode_scsu(const CharacterSet &, UNICHAR *buffer, std::size_t room, const char *source, int *count) {
    Ending ending;
    UNICHAR *const end = Decoder(source, buffer, buffer + room).run(&ending);
    return end_units(ending, buffer, end, count);
}

// ---- Encoder ------------------------------------------------------------------------------------------------------

constexpr bool passes(char32_t c) { return (c >= 0x20 && c < 0x80) || c == 0x09 || c == 0x0A || c == 0x0D; }

// The byte that defines a window with this character in it; 0 where there is none: between, and in other planes.
constexpr unsigned definition_for(char32_t c) {
    for (unsigned i = 0; i < std::size(FIXED_WINDOWS); ++i)
        if (c - FIXED_WINDOWS[i] < 0x80)
            return 0xF9 + i;
    if (c >= 0x80 && c < 0x3400)
        return c >> 7;
    return c >= 0xE000 && c < 0x10000 ? (c - GAP_OFFSET) >> 7 : 0;
}

// A private character as a unit would begin with a byte that is a tag there.
constexpr bool needs_quote(char32_t c) { return c >= 0xE000 && c < 0xF300; }

class Encoder {
public:
    Encoder(const UNICHAR *source, std::uint8_t *begin, std::uint8_t *limit)
        : p_(source), end_(source + length16(source)), out_(begin), limit_(limit) {
        std::copy(std::begin(FIRST_DYNAMIC_WINDOWS), std::end(FIRST_DYNAMIC_WINDOWS), windows_);
    }

    // Every step writes a character and what it takes to get there, or nothing: a cut leaves sound text.
    std::uint8_t *run(Ending *ending) {
        while (p_ != end_) {
            int units;
            const char32_t character = character_at(p_, &units);
            const Piece piece = piece_for(character, next_after(units));
            if (limit_ - out_ < piece.length) {
                ending_.no_room = true;
                break;
            }
            ending_.substituted |= character == REPLACEMENT && *p_ != REPLACEMENT;
            std::memcpy(out_, piece.bytes, static_cast<std::size_t>(piece.length));
            out_ += piece.length;
            p_ += units;
        }
        *ending = ending_;
        return out_;
    }

private:
    struct Piece {
        std::uint8_t bytes[8];
        int length = 0;
        void add(unsigned byte) { bytes[length++] = static_cast<std::uint8_t>(byte); }
        void add_unit(unsigned unit) {
            add(unit >> 8);
            add(unit & 0xFF);
        }
    };

    char32_t character_at(const UNICHAR *p, int *units) const {
        *units = 1;
        if (!is_surrogate(*p))
            return *p;
        if (!is_high_surrogate(*p) || end_ - p < 2 || !is_low_surrogate(p[1]))
            return REPLACEMENT;
        *units = 2;
        return code_point_of(p[0], p[1]);
    }
    char32_t next_after(int units) const {
        int ignored;
        return end_ - p_ > units ? character_at(p_ + units, &ignored) : 0;
    }

    static bool in_window(char32_t c, char32_t start) { return c - start < 0x80; }
    int dynamic_window_of(char32_t c) const {
        for (int i = 0; i < 8; ++i)
            if (in_window(c, windows_[i]))
                return i;
        return -1;
    }
    static int static_window_of(char32_t c) {
        for (int i = 0; i < 8; ++i)
            if (in_window(c, STATIC_WINDOWS[i]))
                return i;
        return -1;
    }
    static bool has_bytes(char32_t c) { return c < 0x80 || definition_for(c) != 0; }

    Piece piece_for(char32_t c, char32_t next) { return units_ ? piece_of_units(c, next) : piece_of_bytes(c, next); }

    Piece piece_of_bytes(char32_t c, char32_t next) {
        Piece piece;
        if (passes(c)) {
            piece.add(c);
        } else if (in_window(c, windows_[window_])) {
            piece.add(0x80 + (c - windows_[window_]));
        } else if (const int window = dynamic_window_of(c); window >= 0) {
            if (in_window(next, windows_[window]))
                window_ = static_cast<unsigned>(window), piece.add(SC0 + window_);
            else
                piece.add(SQ0 + static_cast<unsigned>(window));
            piece.add(0x80 + (c - windows_[window]));
        } else if (const int fixed = static_window_of(c); fixed >= 0) {
            piece.add(SQ0 + static_cast<unsigned>(fixed));
            piece.add(c - STATIC_WINDOWS[fixed]);
        } else if (const unsigned definition = definition_for(c);
                   definition != 0 && in_window(next, window_of(definition))) {
            define(definition);
            piece.add(SD0 + window_);
            piece.add(definition);
            piece.add(0x80 + (c - windows_[window_]));
        } else if (c >= 0x10000 || (!has_bytes(c) && next != 0 && !has_bytes(next))) {
            units_ = true;
            piece.add(SCU);
            add_units(&piece, c);
        } else {
            piece.add(SQU);
            piece.add_unit(c);
        }
        return piece;
    }

    // A character with a window is written as a unit too, unless it is the first of two.
    Piece piece_of_units(char32_t c, char32_t next) {
        Piece piece;
        const unsigned definition = definition_for(c);
        if (c < 0x80) {
            units_ = false;
            piece.add(UC0 + window_);
            if (!passes(c))
                piece.add(SQ0);
            piece.add(c);
        } else if (const int window = dynamic_window_of(c); window >= 0 && has_bytes(next)) {
            units_ = false;
            window_ = static_cast<unsigned>(window);
            piece.add(UC0 + window_);
            piece.add(0x80 + (c - windows_[window_]));
        } else if (definition != 0 && next != 0 && in_window(next, window_of(definition))) {
            units_ = false;
            define(definition);
            piece.add(UD0 + window_);
            piece.add(definition);
            piece.add(0x80 + (c - windows_[window_]));
        } else {
            if (needs_quote(c))
                piece.add(UQU);
            add_units(&piece, c);
        }
        return piece;
    }

    static void add_units(Piece *piece, char32_t c) {
        if (c >= 0x10000)
            piece->add_unit(high_surrogate_of(c));
        piece->add_unit(c >= 0x10000 ? low_surrogate_of(c) : c);
    }

    // The windows are redefined in turn.
    void define(unsigned definition) {
        window_ = victim_;
        victim_ = (victim_ + 1) % 8;
        windows_[window_] = window_of(definition);
    }

    const UNICHAR *p_;
    const UNICHAR *const end_;
    std::uint8_t *out_;
    std::uint8_t *const limit_;
    char32_t windows_[8];
    unsigned window_ = 0;
    unsigned victim_ = 0;
    bool units_ = false;
    Ending ending_;
};

int encode_scsu(const CharacterSet &, const Substitutes &, char *buffer, std::size_t room, const UNICHAR *source,
                int *count) {
    auto *const begin = reinterpret_cast<std::uint8_t *>(buffer);
    Ending ending;
    std::uint8_t *const end = Encoder(source, begin, begin + room).run(&ending);
    // A text that ends in units ends with a whole zero unit where there is room for it.
    if (!ending.no_room && room > static_cast<std::size_t>(end - begin))
        end[1] = 0;
    return end_bytes(ending, begin, end, room, count);
}

// Latin-1 takes a byte in the window that every text begins with.
bool is_wide_scsu(const CharacterSet &, char32_t character) { return character > 0xFF; }

} // namespace

constinit const CharacterSet COMPRESSION_SET = {COMPRESSION, decode_scsu, encode_scsu, is_wide_scsu, 3, nullptr, nullptr, nullptr, nullptr, nullptr, {}};

} // namespace dlx::unic

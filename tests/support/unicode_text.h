// Unicode text for tests: slow and simple decoders, and random text, valid and not.
#ifndef TESTS_SUPPORT_UNICODE_TEXT_H
#define TESTS_SUPPORT_UNICODE_TEXT_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace support {

using Units = std::u16string;

inline void append_units(Units &text, char32_t c) {
    if (c > 0xFFFF) {
        text += static_cast<char16_t>(0xD7C0 + (c >> 10));
        text += static_cast<char16_t>(0xDC00 + c % 0x400);
    } else {
        text += static_cast<char16_t>(c);
    }
}

inline Units units_of(const std::u32string &text) {
    Units units;
    for (const char32_t c : text)
        append_units(units, c);
    return units;
}

inline void append_utf8(std::string &text, char32_t c) {
    const auto add = [&](char32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) {
        add(c);
        return;
    }
    const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    add(std::array{0u, 0xC0u, 0xE0u, 0xF0u}[static_cast<size_t>(more)] + (c >> 6 * more));
    for (int i = more - 1; i >= 0; --i)
        add(0x80 + (c >> 6 * i) % 64);
}

inline std::string utf8_of(const std::u32string &text) {
    std::string bytes;
    for (const char32_t c : text)
        append_utf8(bytes, c);
    return bytes;
}

// What a text of bytes says. Faults are the characters U+FFFD that stand for malformed bytes.
struct Decoded {
    std::u32string characters;
    std::vector<bool> faults;
    bool cut = false; // the text ends inside a character
    bool faulty() const { return std::find(faults.begin(), faults.end(), true) != faults.end(); }
};

// UTF-8 by the list of its well-formed sequences.
inline Decoded naive_utf8(const std::string &text) {
    struct Form {
        int lead_low, lead_high, low, high, length;
    };
    static constexpr Form FORMS[] = {
        {0x00, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
        {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
    };
    const auto byte = [&](size_t i) { return static_cast<int>(static_cast<unsigned char>(text[i])); };
    Decoded result;
    for (size_t i = 0; i < text.size();) {
        const Form *form = std::find_if(std::begin(FORMS), std::end(FORMS),
                                        [&](const Form &f) { return byte(i) >= f.lead_low && byte(i) <= f.lead_high; });
        size_t good = 1;
        const size_t length = form == std::end(FORMS) ? 0 : static_cast<size_t>(form->length);
        while (good < length && i + good < text.size()) {
            const int low = good == 1 ? form->low : 0x80;
            const int high = good == 1 ? form->high : 0xBF;
            if (byte(i + good) < low || byte(i + good) > high)
                break;
            ++good;
        }
        if (good < length && i + good == text.size()) {
            result.cut = true;
            return result;
        }
        char32_t c = 0xFFFD;
        if (good == length) {
            c = static_cast<char32_t>(length == 1 ? byte(i) : byte(i) % (1 << (7 - length)));
            for (size_t k = 1; k < length; ++k)
                c = c * 64 + static_cast<char32_t>(byte(i + k) % 64);
        }
        result.characters += c;
        result.faults.push_back(good != length);
        i += good;
    }
    return result;
}

// 16-bit text; the faults are halves of pairs.
inline Decoded naive_utf16(const Units &text) {
    const auto high = [&](size_t i) { return text[i] >= 0xD800 && text[i] <= 0xDBFF; };
    const auto low = [&](size_t i) { return text[i] >= 0xDC00 && text[i] <= 0xDFFF; };
    Decoded result;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool pair = high(i) && i + 1 < text.size() && low(i + 1);
        const bool fault = !pair && (high(i) || low(i));
        char32_t c = fault ? 0xFFFD : text[i];
        if (pair) {
            c = (text[i] - 0xD800u) * 0x400 + (text[i + 1] - 0xDC00u) + 0x10000;
            ++i;
        }
        result.characters += c;
        result.faults.push_back(fault);
    }
    return result;
}

// A character of a kind that texts have: 0 ASCII, 1 to U+07FF, 2 the rest of the basic plane, 3 beyond, 4 edges.
inline char32_t random_character(std::mt19937_64 &random, unsigned kind) {
    static constexpr char32_t EDGES[] = {0x1,    0x7F,   0x80,   0x7FF,   0x800,   0xD7FF,
                                         0xE000, 0xFFFD, 0xFFFF, 0x10000, 0x10FFFF};
    const auto bits = random();
    switch (kind) {
    case 0:
        return 1 + static_cast<char32_t>(bits % 0x7F);
    case 1:
        return 0x80 + static_cast<char32_t>(bits % 0x780);
    case 2: {
        const auto c = 0x800 + static_cast<char32_t>(bits % 0xF000);
        return c < 0xD800 ? c : c + 0x800;
    }
    case 3:
        return 0x10000 + static_cast<char32_t>(bits % 0x100000);
    default:
        return EDGES[bits % std::size(EDGES)];
    }
}

// Mostly of one kind, or of all of them.
inline std::u32string random_characters(std::mt19937_64 &random, size_t length) {
    const auto taste = random() % 8;
    std::u32string text;
    while (text.size() < length)
        text += random_character(
            random, static_cast<unsigned>(random() % 8 != 0 ? std::min<uint64_t>(taste, 4) : random() % 5));
    return text;
}

} // namespace support

#endif

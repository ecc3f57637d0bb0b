// UTF-8 and UTF-16, from one to the other: column values of 100 characters, against ICU.
#include "contest.h"
#include "data.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>

namespace bench {
namespace {

constexpr int CHARACTERS = 100;
constexpr int ROOM = 4 * CHARACTERS;

// The same texts in both forms.
struct Texts {
    std::vector<std::string> utf8;
    std::vector<std::u16string> utf16;
};

template <class Draw>
Texts texts_of(std::uint64_t seed, Draw draw) {
    Random random(seed);
    Texts texts;
    for (std::size_t i = 0; i < VALUES; ++i) {
        std::u16string text;
        std::string bytes;
        for (int c = 0; c < CHARACTERS; ++c) {
            const unsigned unit = draw(random);
            text += static_cast<char16_t>(unit);
            if (unit < 0x80) {
                bytes += static_cast<char>(unit);
            } else if (unit < 0x800) {
                bytes += {static_cast<char>(0xC0 | unit >> 6), static_cast<char>(0x80 | (unit & 0x3F))};
            } else {
                bytes += {static_cast<char>(0xE0 | unit >> 12), static_cast<char>(0x80 | (unit >> 6 & 0x3F)),
                          static_cast<char>(0x80 | (unit & 0x3F))};
            }
        }
        texts.utf16.push_back(text);
        texts.utf8.push_back(bytes);
    }
    return texts;
}

unsigned draw_ascii(Random &random) { return static_cast<unsigned>(0x20 + below(random, 0x5F)); }
unsigned draw_accents(Random &random) {
    return below(random, 10) == 0 ? static_cast<unsigned>(0xC0 + below(random, 0x40)) : draw_ascii(random);
}
unsigned draw_chinese(Random &random) { return static_cast<unsigned>(0x4E00 + below(random, 0x5000)); }

CS_BYTE *bytes_of(const void *text) { return static_cast<CS_BYTE *>(const_cast<void *>(text)); }

// ---- To UTF-16 ----------------------------------------------------------------------------------------------

class ToUtf16 {
public:
    explicit ToUtf16(const Texts &texts) : texts_(texts) {}
    bool right(std::size_t i) const {
        return std::u16string_view(reinterpret_cast<const char16_t *>(units_), static_cast<std::size_t>(length_)) ==
               texts_.utf16[i];
    }

protected:
    const Texts &texts_;
    UChar units_[ROOM];
    int length_ = 0;
};

class LibraryToUtf16 : public ToUtf16 {
public:
    using ToUtf16::ToUtf16;
    void work(std::size_t i) {
        const std::string &text = texts_.utf8[i];
        int used;
        com__fou_utf8_to_utf16(bytes_of(text.data()), static_cast<int>(text.size()), bytes_of(units_), sizeof units_,
                               nullptr, &used, nullptr, CS_TRUE);
        length_ = used / 2;
    }
};

class IcuToUtf16 : public ToUtf16 {
public:
    using ToUtf16::ToUtf16;
    void work(std::size_t i) {
        const std::string &text = texts_.utf8[i];
        UErrorCode error = U_ZERO_ERROR;
        u_strFromUTF8(units_, ROOM, &length_, text.data(), static_cast<int>(text.size()), &error);
    }
};

// ---- To UTF-8 -----------------------------------------------------------------------------------------------

class ToUtf8 {
public:
    explicit ToUtf8(const Texts &texts) : texts_(texts) {}
    bool right(std::size_t i) const { return std::string_view(bytes_, static_cast<std::size_t>(length_)) == texts_.utf8[i]; }

protected:
    const Texts &texts_;
    char bytes_[ROOM];
    int length_ = 0;
};

class LibraryToUtf8 : public ToUtf8 {
public:
    using ToUtf8::ToUtf8;
    void work(std::size_t i) {
        const std::u16string &text = texts_.utf16[i];
        com__fou_utf16_to_utf8(bytes_of(text.data()), static_cast<int>(text.size() * 2), bytes_of(bytes_), ROOM,
                               nullptr, &length_, nullptr, CS_TRUE);
    }
};

class IcuToUtf8 : public ToUtf8 {
public:
    using ToUtf8::ToUtf8;
    void work(std::size_t i) {
        const std::u16string &text = texts_.utf16[i];
        UErrorCode error = U_ZERO_ERROR;
        u_strToUTF8(bytes_, ROOM, &length_, text.data(), static_cast<int>(text.size()), &error);
    }
};

void enter_rows_of(const std::string &kind, const Texts &texts) {
    enter<LibraryToUtf16>("UTF-8 to UTF-16 " + kind, LIBRARY, texts);
    enter<IcuToUtf16>("UTF-8 to UTF-16 " + kind, "ICU", texts);
    enter<LibraryToUtf8>("UTF-16 to UTF-8 " + kind, LIBRARY, texts);
    enter<IcuToUtf8>("UTF-16 to UTF-8 " + kind, "ICU", texts);
}

} // namespace

void enter_utf_rows() {
    static const Texts ascii = texts_of(61, draw_ascii);
    static const Texts accents = texts_of(62, draw_accents);
    static const Texts chinese = texts_of(63, draw_chinese);
    enter_rows_of("ASCII", ascii);
    enter_rows_of("accents", accents);
    enter_rows_of("Chinese", chinese);
}

} // namespace bench

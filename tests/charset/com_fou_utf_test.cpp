// UTF-8 and UTF-16: every code point, every rule by name, and random valid and damaged text in every room against a
// second version of each routine.
#include "support/assertions.h"
#include "support/cases.h"
#include "support/naive_utf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace {

using support::ReturningAssertions;
using support::naive::Utf;
using support::naive::UTF_GROUND;
using Pad = std::optional<std::string>;

} // namespace

namespace support::naive {
void PrintTo(const Utf &utf, std::ostream *out) {
    *out << "flags " << utf.flags << " used " << utf.sused << '/' << utf.dused << std::hex;
    for (const char c : utf.dest)
        *out << ' ' << int(static_cast<unsigned char>(c));
    *out << std::dec;
}
} // namespace support::naive

namespace {

std::string units(const std::u16string &text) {
    return {reinterpret_cast<const char *>(text.data()), text.size() * 2};
}

// Text at an odd or even place, without a byte behind it.
class Block {
public:
    Block(const std::string &text, std::size_t offset) : memory_(new CS_BYTE[text.size() + offset]), offset_(offset) {
        std::memcpy(get(), text.data(), text.size());
    }
    CS_BYTE *get() { return memory_.get() + offset_; }

private:
    std::unique_ptr<CS_BYTE[]> memory_;
    std::size_t offset_;
};

using PaddedFunction = int (*)(CS_BYTE *, int, CS_BYTE *, int, int *, int *, CS_VOID *, CS_BOOL);

template <class Function>
Utf call(Function function, const std::string &text, int room, Pad pad, std::size_t offset = 0) {
    Block src(text, offset);
    Block dest(std::string(static_cast<std::size_t>(room), UTF_GROUND), offset);
    Utf result{-5, -5, -5, ""};
    // A pad is read from an odd place too.
    std::string odd_pad = "." + pad.value_or("");
    result.flags = function(src.get(), static_cast<int>(text.size()), dest.get(), room, &result.sused, &result.dused,
                            pad ? odd_pad.data() + 1 : nullptr);
    result.dest.assign(reinterpret_cast<char *>(dest.get()), static_cast<std::size_t>(room));
    EXPECT_EQ(std::string(reinterpret_cast<char *>(src.get()), text.size()), text) << "the source was changed";
    return result;
}

// The routines with their check on or off.
auto with(PaddedFunction function, bool validity) {
    return [=](CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused, CS_VOID *pad) {
        return function(src, slen, dest, dlen, sused, dused, pad, validity ? CS_TRUE : CS_FALSE);
    };
}

Utf to16(const std::string &text, int room = 64, bool validity = true, const Pad &pad = {}, std::size_t offset = 0) {
    return call(with(com__fou_utf8_to_utf16, validity), text, room, pad, offset);
}
Utf to8(const std::string &text, int room = 64, bool validity = true, const Pad &pad = {}, std::size_t offset = 0) {
    return call(with(com__fou_utf16_to_utf8, validity), text, room, pad, offset);
}
Utf copied(const std::string &text, int room = 64, const Pad &pad = {}, std::size_t offset = 0) {
    return call(com__fou_utf16_to_utf16, text, room, pad, offset);
}

std::string delivered(const Utf &utf) { return utf.dest.substr(0, static_cast<std::size_t>(utf.dused)); }

// ---- Every character ----------------------------------------------------------------------------------------

std::string utf8_of(char32_t point) {
    std::string text;
    if (point < 0x80)
        return {static_cast<char>(point)};
    const int more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    constexpr unsigned LEADS[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(LEADS[more] | point >> (6 * more));
    for (int i = more - 1; i >= 0; --i)
        text += static_cast<char>(0x80 | (point >> (6 * i) & 0x3F));
    return text;
}

std::u16string utf16_of(char32_t point) {
    if (point < 0x10000)
        return {static_cast<char16_t>(point)};
    const char32_t rest = point - 0x10000;
    return {static_cast<char16_t>(0xD800 + (rest >> 10)), static_cast<char16_t>(0xDC00 + (rest & 0x3FF))};
}

// Alone, and within text that is long enough for the quick steps.
TEST(UtfRoutines, EveryCodePointBothWays) {
    for (char32_t point = 0; point <= 0x10FFFF; ++point) {
        const std::string utf8 = utf8_of(point);
        const std::string utf16 = units(utf16_of(point));
        if (point >= 0x10000 && point % 7 != 0)
            continue; // a seventh of the outer planes
        for (const bool validity : {true, false}) {
            const bool is_refused = validity && (point == 0xFFFE || point == 0xFFFF);
            const Utf wide = to16(utf8, 4, validity);
            ASSERT_EQ(wide.flags, is_refused ? CS_XLATE_INVALID : 0) << std::hex << unsigned(point);
            ASSERT_EQ(delivered(wide), is_refused ? "" : utf16) << std::hex << unsigned(point);
            const Utf narrow = to8(utf16, 4, validity);
            ASSERT_EQ(narrow.flags, is_refused ? CS_XLATE_INVALID : 0) << std::hex << unsigned(point);
            ASSERT_EQ(delivered(narrow), is_refused ? "" : utf8) << std::hex << unsigned(point);
        }
    }
}

TEST(UtfRoutines, EveryUnitWithinLongText) {
    for (char32_t point = 0; point <= 0xFFFF; ++point)
        for (const bool validity : {true, false}) {
            std::u16string wide(9, u'x');
            wide += std::u16string(13, static_cast<char16_t>(point)) + std::u16string(17, u'\u00E9') + u"end";
            const std::string source = units(wide);
            const Utf narrow = to8(source, 120, validity);
            ASSERT_EQ(narrow, support::naive::utf16_to_utf8(source, 120, {}, validity)) << std::hex << unsigned(point);
            if (narrow.flags == 0 && (point < 0xD800 || point > 0xDFFF)) {
                ASSERT_EQ(delivered(to16(delivered(narrow), 120, validity)), source) << std::hex << unsigned(point);
            }
        }
}

TEST(UtfRoutines, EveryStartOfASequence) {
    for (unsigned lead = 0; lead < 256; ++lead)
        for (unsigned second = 0; second < 256; ++second)
            for (const char *tail : {"", "\x80", "\xBF\xBF", "\x80\x80\x80", "abcdefghijklmnopqrstuvwxyz"})
                for (const bool validity : {true, false}) {
                    const std::string text{static_cast<char>(lead), static_cast<char>(second)};
                    const std::string all = text + tail;
                    ASSERT_EQ(to16(all, 60, validity), support::naive::utf8_to_utf16(all, 60, {}, validity))
                        << std::hex << lead << ' ' << second;
                    const std::string behind = "what goes before" + all;
                    ASSERT_EQ(to16(behind, 100, validity), support::naive::utf8_to_utf16(behind, 100, {}, validity))
                        << std::hex << lead << ' ' << second;
                }
}

// ---- Random text --------------------------------------------------------------------------------------------

using Random = std::mt19937_64;

char32_t random_point(Random &random, unsigned taste) {
    switch (taste % 8 < 6 ? taste % 8 : random() % 6) {
    case 0:
        return 0x20 + random() % 0x5F;
    case 1:
        return random() % 10 == 0 ? 0xC0 + random() % 0x40 : 0x61 + random() % 26; // accents among letters
    case 2:
        return 0x80 + random() % 0x780;
    case 3:
        return 0x4E00 + random() % 0x5200;
    case 4:
        return random() % 0x10000; // surrogates and the last two as well
    default:
        return 0x10000 + random() % 0x100000;
    }
}

std::size_t random_length(Random &random) {
    constexpr std::size_t LONGEST[] = {8, 24, 40, 80, 700};
    return random() % LONGEST[random() % std::size(LONGEST)];
}

std::string random_utf8(Random &random) {
    std::string text;
    const auto taste = static_cast<unsigned>(random());
    for (std::size_t i = random_length(random); i > 0; --i)
        text += utf8_of(random_point(random, taste));
    return text;
}

std::string random_utf16(Random &random) {
    std::u16string text;
    const auto taste = static_cast<unsigned>(random());
    for (std::size_t i = random_length(random); i > 0; --i)
        text += utf16_of(random_point(random, taste));
    return units(text);
}

// Now and then a byte is another one, or the end is missing.
void damage(Random &random, std::string &text) {
    while (!text.empty() && random() % 3 == 0)
        text[random() % text.size()] = static_cast<char>(random() % 2 == 0 ? random() : 0xF0 | random());
    if (random() % 4 == 0)
        text.resize(text.size() - random() % (std::min<std::size_t>(text.size(), 4) + 1));
}

Pad random_pad(Random &random, std::size_t size) {
    if (random() % 2 == 0)
        return {};
    std::string pad(size, '\0');
    for (char &c : pad)
        c = static_cast<char>(random());
    return pad;
}

// Rooms around what the text takes, and any other.
int random_room(Random &random, int taken) {
    const int room = random() % 3 != 0 ? taken + static_cast<int>(random() % 9) - 4
                                       : static_cast<int>(random() % static_cast<unsigned>(taken + 20));
    return std::max(room, 0);
}

TEST(UtfRoutines, RandomTextInAnyRoomAtAnyPlaceWithAnyPad) {
    Random random(20260102);
    for (int round = 0; round < support::cases(60'000); ++round) {
        const bool validity = random() % 2 == 0;
        const std::size_t offset = random() % 8;
        std::string utf8 = random_utf8(random);
        std::string utf16 = random_utf16(random);
        damage(random, utf8);
        damage(random, utf16);
        const int wide = support::naive::utf8_to_utf16(utf8, 4000, {}, validity).dused;
        const int narrow = support::naive::utf16_to_utf8(utf16, 4000, {}, validity).dused;
        Pad pad = random_pad(random, 2);
        int room = random_room(random, wide);
        ASSERT_EQ(to16(utf8, room, validity, pad, offset), support::naive::utf8_to_utf16(utf8, room, pad, validity))
            << round;
        room = random_room(random, static_cast<int>(utf16.size()));
        ASSERT_EQ(copied(utf16, room, pad, offset), support::naive::utf16_to_utf16(utf16, room, pad)) << round;
        pad = random_pad(random, 1);
        room = random_room(random, narrow);
        ASSERT_EQ(to8(utf16, room, validity, pad, offset), support::naive::utf16_to_utf8(utf16, room, pad, validity))
            << round;
    }
}

TEST(UtfRoutines, EveryRoomForTextOfAllWidths) {
    Random random(20260103);
    for (int round = 0; round < 60; ++round) {
        std::string utf8;
        std::u16string utf16;
        for (int i = 0; i < 30; ++i) {
            const char32_t point = random_point(random, static_cast<unsigned>(random()));
            utf8 += utf8_of(point);
            utf16 += utf16_of(point);
        }
        for (int room = 0; room <= 124; ++room)
            for (const bool validity : {true, false}) {
                ASSERT_EQ(to16(utf8, room, validity), support::naive::utf8_to_utf16(utf8, room, {}, validity));
                ASSERT_EQ(to8(units(utf16), room, validity),
                          support::naive::utf16_to_utf8(units(utf16), room, {}, validity));
                ASSERT_EQ(copied(units(utf16), room), support::naive::utf16_to_utf16(units(utf16), room, {}));
            }
    }
}

// ---- By name ------------------------------------------------------------------------------------------------

TEST(Utf8ToUtf16, OddityOverlongFormsAreDecoded) {
    EXPECT_EQ(delivered(to16("\xC1\xA1")), units(u"a"));
    EXPECT_EQ(delivered(to16("\xE0\x81\xA1")), units(u"a"));
    EXPECT_EQ(delivered(to16("\xF0\x80\x81\xA1")), units(u"a"));
    EXPECT_EQ(delivered(to16(std::string("\xC0\x80", 2))), std::string(2, '\0'));
    EXPECT_EQ(to16("\xC1\xA1").flags, 0);
}

TEST(Utf8ToUtf16, OddityEncodedSurrogatesPass) {
    EXPECT_EQ(delivered(to16("\xED\xA0\x80")), std::string("\x00\xD8", 2));
    EXPECT_EQ(delivered(to16("\xED\xBF\xBF")), std::string("\xFF\xDF", 2));
    EXPECT_EQ(delivered(to16("\xF0\x8D\xA0\x80")), std::string("\x00\xD8", 2));
}

TEST(Utf8ToUtf16, NoncharactersAreRefusedOnlyWhereValidityIsChecked) {
    for (const char *text : {"\xEF\xBF\xBE", "\xEF\xBF\xBF", "\xF0\x8F\xBF\xBE", "\xF0\x8F\xBF\xBF"}) {
        EXPECT_EQ(to16(text, 8, true).flags, CS_XLATE_INVALID);
        EXPECT_EQ(to16(text, 8, false).flags, 0);
        EXPECT_EQ(to16(text, 8, false).dused, 2);
    }
    // Those of the other planes are characters as any.
    EXPECT_EQ(delivered(to16("\xF0\x9F\xBF\xBE")), units(u"\U0001FFFE"));
}

TEST(UtfRoutines, NoncharactersAndTheirNeighboursAtEveryPlaceOfLongText) {
    for (const char16_t point : {u'\uFFFC', u'\uFFFD', u'\uFFFE', u'\uFFFF', char16_t(0xD7FF), char16_t(0xD800),
                                 char16_t(0xDFFF), u'\uE000', u'\u07FF', u'\u0800', u'\u007F', u'\u0080'})
        for (const char16_t around : {u'x', u'\u00E9', u'\u4E2D'})
            for (std::size_t place = 0; place < 40; ++place)
                for (const bool validity : {true, false}) {
                    std::u16string text(40, around);
                    text[place] = point;
                    std::string utf8;
                    for (const char16_t unit : text)
                        utf8 += utf8_of(unit);
                    ASSERT_EQ(to16(utf8, 80, validity), support::naive::utf8_to_utf16(utf8, 80, {}, validity))
                        << std::hex << unsigned(point) << ' ' << unsigned(around) << ' ' << place;
                    ASSERT_EQ(to8(units(text), 120, validity),
                              support::naive::utf16_to_utf8(units(text), 120, {}, validity))
                        << std::hex << unsigned(point) << ' ' << unsigned(around) << ' ' << place;
                }
}

TEST(Utf8ToUtf16, NothingAboveTheLastCodePoint) {
    EXPECT_EQ(delivered(to16("\xF4\x8F\xBF\xBF")), units(u"\U0010FFFF"));
    for (const char *text : {"\xF4\x90\x80\x80", "\xF7\xBF\xBF\xBF"})
        for (const bool validity : {true, false})
            EXPECT_EQ(to16(text, 8, validity).flags, CS_XLATE_INVALID);
}

TEST(Utf8ToUtf16, StopsInFrontOfWhatIsInvalid) {
    for (const char *bad : {"\x80", "\xBF", "\xF8", "\xFF", "\xC3", "\xC3(", "\xE4\xB8", "\xE4\xB8(", "\xE4(\xAD",
                            "\xF0\x9F\x98", "\xF0\x9F\x98(", "\xF0(\x98\x80"}) {
        const Utf result = to16(std::string("ab") + bad);
        EXPECT_EQ(result.flags, CS_XLATE_INVALID);
        EXPECT_EQ(result.sused, 2);
        EXPECT_EQ(delivered(result), units(u"ab"));
    }
}

TEST(Utf8ToUtf16, ValidityIsJudgedBeforeRoom) {
    EXPECT_EQ(to16("\xC3", 0).flags, CS_XLATE_INVALID);
    EXPECT_EQ(to16("\xEF\xBF\xBF", 0, true).flags, CS_XLATE_INVALID);
    EXPECT_EQ(to16("\xEF\xBF\xBF", 0, false).flags, CS_XLATE_FULL_DEST);
}

TEST(Utf8ToUtf16, APairOfUnitsIsNotCut) {
    const Utf result = to16("a\xF0\x9F\x98\x80", 5);
    EXPECT_EQ(result.flags, CS_XLATE_FULL_DEST);
    EXPECT_EQ(result.sused, 1);
    EXPECT_EQ(result.dused, 2);
}

TEST(Utf8ToUtf16, PadFillsWholeUnitsOfWhatIsLeft) {
    const Utf result = to16("ab", 9, true, std::string(" \x20", 2));
    EXPECT_EQ(result.flags, 0);
    EXPECT_EQ(result.sused, 2);
    EXPECT_EQ(result.dused, 8);
    EXPECT_EQ(result.dest, units(u"ab\u2020\u2020") + UTF_GROUND);
    // Also behind a stop.
    EXPECT_EQ(to16("a\xFF", 6, true, std::string("\0\0", 2)).dused, 6);
    EXPECT_EQ(to16("a\xF0\x9F\x98\x80", 4, true, std::string(" \0", 2)).dused, 4);
}

TEST(Utf16ToUtf16, WholeUnitsAsTheyAre) {
    const std::string text("a\0\x00\xD8\xFF\xFF\xFE\xFF", 8); // lone surrogates and noncharacters too
    EXPECT_EQ(delivered(copied(text)), text);
    EXPECT_EQ(copied(text).flags, 0);
}

TEST(Utf16ToUtf16, ALeftoverByteIsInvalidAndASmallRoomFull) {
    EXPECT_EQ(copied("abc", 4).flags, CS_XLATE_INVALID);
    EXPECT_EQ(copied("abc", 4).sused, 2);
    EXPECT_EQ(copied("abc", 2).flags, CS_XLATE_INVALID);
    EXPECT_EQ(copied("abc", 1).flags, CS_XLATE_FULL_DEST);
    EXPECT_EQ(copied("abcd", 3).flags, CS_XLATE_FULL_DEST);
    EXPECT_EQ(copied("abcd", 3).dused, 2);
    EXPECT_EQ(copied("ab", 7, std::string("xy")).dest, std::string("abxyxy") + UTF_GROUND);
}

TEST(Utf16ToUtf8, OddityALoneSurrogateIsThreeBytes) {
    EXPECT_EQ(delivered(to8(std::string("\x00\xDC", 2))), "\xED\xB0\x80");
    EXPECT_EQ(delivered(to8(std::string("\x00\xD8", 2))), "\xED\xA0\x80");
    EXPECT_EQ(delivered(to8(std::string("\x00\xD8\x00\xD8", 4))), "\xED\xA0\x80\xED\xA0\x80");
    EXPECT_EQ(delivered(to8(std::string("\x00\xD8\x61\x00", 4))), "\xED\xA0\x80\x61");
    EXPECT_EQ(delivered(to8(std::string("\x00\xD8\x61", 3))), "\xED\xA0\x80"); // and then half a unit
}

TEST(Utf16ToUtf8, OddityAnyUnitAboveTheHighSurrogatesMakesAPair) {
    EXPECT_EQ(delivered(to8(std::string("\x3D\xD8\x00\xDE", 4))), "\xF0\x9F\x98\x80");
    // U+E000 behind a high surrogate, though it is none; and U+FFFF, which is not looked at.
    EXPECT_EQ(delivered(to8(std::string("\x00\xD8\x00\xE0", 4))), "\xF0\x90\x80\x80");
    EXPECT_EQ(delivered(to8(std::string("\x00\xD8\xFF\xFF", 4))), "\xF0\x90\x8F\xBF");
}

TEST(Utf16ToUtf8, NoncharactersAreRefusedOnlyWhereValidityIsChecked) {
    for (const std::string text : {"\xFE\xFF", "\xFF\xFF"}) {
        EXPECT_EQ(to8(text, 8, true).flags, CS_XLATE_INVALID);
        EXPECT_EQ(to8(text, 8, true).sused, 0);
        EXPECT_EQ(to8(text, 8, false).dused, 3);
    }
    EXPECT_EQ(delivered(to8("\xFD\xFF")), "\xEF\xBF\xBD");
}

TEST(Utf16ToUtf8, ASequenceIsNotCut) {
    EXPECT_EQ(to8(units(u"a\u4E2D"), 3).dused, 1);
    EXPECT_EQ(to8(units(u"a\u4E2D"), 3).flags, CS_XLATE_FULL_DEST);
    EXPECT_EQ(to8(units(u"\U0001F600"), 3).dused, 0);
    EXPECT_EQ(to8(units(u"a\u4E2D"), 3, true, "_").dest, "a__");
    EXPECT_EQ(to8(units(u"a\u4E2D"), 3, true, "_").dused, 3);
}

TEST(Utf16ToUtf8, HalfAUnitIsInvalid) {
    const Utf result = to8(std::string("a\0b", 3));
    EXPECT_EQ(result.flags, CS_XLATE_INVALID);
    EXPECT_EQ(result.sused, 2);
    EXPECT_EQ(delivered(result), "a");
}

TEST(UtfRoutines, NothingIsWrittenBehindTheLastCharacterWithinTheRoom) {
    const std::string accents = "caf\u00E9 cr\u00E8me br\u00FBl\u00E9e \u4E2D\u6587 caf\u00E9 cr\u00E8me";
    const Utf wide = to16(accents + "\xFF", 400);
    EXPECT_EQ(wide.dest.substr(static_cast<std::size_t>(wide.dused)),
              std::string(static_cast<std::size_t>(400 - wide.dused), UTF_GROUND));
    const Utf narrow = to8(delivered(wide) + "\xFF\xFF", 400);
    EXPECT_EQ(narrow.flags, CS_XLATE_INVALID);
    EXPECT_EQ(narrow.dest, accents + std::string(400 - accents.size(), UTF_GROUND));
}

TEST(UtfRoutines, CountsMayBeLeftOut) {
    CS_BYTE text[] = {'a', 'b'}, wide[4] = {}, narrow[2] = {};
    EXPECT_EQ(com__fou_utf8_to_utf16(text, 2, wide, 4, nullptr, nullptr, nullptr, CS_TRUE), 0);
    EXPECT_EQ(std::memcmp(wide, u"ab", 4), 0);
    CS_BYTE copy[4] = {};
    EXPECT_EQ(com__fou_utf16_to_utf16(wide, 4, copy, 4, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(std::memcmp(copy, u"ab", 4), 0);
    EXPECT_EQ(com__fou_utf16_to_utf8(wide, 4, narrow, 2, nullptr, nullptr, nullptr, CS_TRUE), 0);
    EXPECT_EQ(std::memcmp(narrow, "ab", 2), 0);
}

TEST(UtfRoutines, WithoutBytesNoBufferIsNeeded) {
    int sused = -5, dused = -5;
    EXPECT_EQ(com__fou_utf8_to_utf16(nullptr, 0, nullptr, 0, &sused, &dused, nullptr, CS_TRUE), 0);
    EXPECT_EQ(com__fou_utf16_to_utf16(nullptr, 0, nullptr, 0, &sused, &dused, nullptr), 0);
    EXPECT_EQ(com__fou_utf16_to_utf8(nullptr, 0, nullptr, 0, &sused, &dused, nullptr, CS_TRUE), 0);
    EXPECT_EQ(sused, 0);
    EXPECT_EQ(dused, 0);
    // A room of less than none is full at once.
    CS_BYTE text[] = {'a', 0};
    EXPECT_EQ(com__fou_utf8_to_utf16(text, 2, nullptr, -1, nullptr, nullptr, nullptr, CS_TRUE), CS_XLATE_FULL_DEST);
    EXPECT_EQ(com__fou_utf16_to_utf16(text, 2, nullptr, -1, nullptr, nullptr, nullptr), CS_XLATE_FULL_DEST);
    EXPECT_EQ(com__fou_utf16_to_utf8(text, 2, nullptr, -1, nullptr, nullptr, nullptr, CS_TRUE), CS_XLATE_FULL_DEST);
}

// ---- Broken contracts ---------------------------------------------------------------------------------------

TEST(UtfRoutinesDeathTest, NullPointersAreReported) {
    CS_BYTE text[4] = "abc";
    EXPECT_NULL_REPORT(com__fou_utf8_to_utf16(nullptr, 3, text, 4, nullptr, nullptr, nullptr, CS_TRUE), "com_fou_utf");
    EXPECT_NULL_REPORT(com__fou_utf8_to_utf16(text, 3, nullptr, 4, nullptr, nullptr, nullptr, CS_TRUE), "com_fou_utf");
    EXPECT_NULL_REPORT(com__fou_utf16_to_utf16(nullptr, 2, text, 4, nullptr, nullptr, nullptr), "com_fou_utf");
    EXPECT_NULL_REPORT(com__fou_utf16_to_utf16(text, 2, nullptr, 4, nullptr, nullptr, nullptr), "com_fou_utf");
    EXPECT_NULL_REPORT(com__fou_utf16_to_utf8(nullptr, 2, text, 4, nullptr, nullptr, nullptr, CS_TRUE), "com_fou_utf");
    EXPECT_NULL_REPORT(com__fou_utf16_to_utf8(text, 2, nullptr, 4, nullptr, nullptr, nullptr, CS_TRUE), "com_fou_utf");
}

TEST(UtfRoutines, NullPointersAreInvalidTextWhereAssertionsReturn) {
    const ReturningAssertions returning;
    CS_BYTE text[4] = "abc";
    int used = -5;
    EXPECT_EQ(com__fou_utf8_to_utf16(nullptr, 3, text, 4, &used, &used, nullptr, CS_TRUE), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_utf8_to_utf16(text, 3, nullptr, 4, &used, &used, nullptr, CS_TRUE), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_utf16_to_utf16(nullptr, 2, text, 4, &used, &used, nullptr), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_utf16_to_utf16(text, 2, nullptr, 4, &used, &used, nullptr), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_utf16_to_utf8(nullptr, 2, text, 4, &used, &used, nullptr, CS_TRUE), CS_XLATE_INVALID);
    EXPECT_EQ(com__fou_utf16_to_utf8(text, 2, nullptr, 4, &used, &used, nullptr, CS_TRUE), CS_XLATE_INVALID);
    EXPECT_EQ(used, -5);
    EXPECT_STREQ(reinterpret_cast<char *>(text), "abc");
    EXPECT_EQ(returning.count(), 6);
}

} // namespace

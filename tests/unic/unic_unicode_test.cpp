// The sets without a table, and UTF-8 without a handle, against simple decoders, at every room.
#include "support/unicode_calls.h"
#include "support/unicode_text.h"

#include <cstring>

namespace {

using support::Decoded;
using support::Handle;
using support::naive_utf16;
using support::naive_utf8;
using support::Units;

constexpr UNICONV_CID ASCII = 0, UTF16 = -1, UTF8 = -4;

// Texts of bytes: valid, damaged in places, and noise of lead and continuation bytes.
std::string random_bytes(std::mt19937_64 &random) {
    const size_t length = random() % 48;
    std::string text = support::utf8_of(support::random_characters(random, length));
    if (random() % 2 == 0 && !text.empty()) {
        for (auto damages = random() % 4; damages-- != 0;)
            text[random() % text.size()] = static_cast<char>(1 + random() % 255);
        text.resize(text.size() - random() % std::min<size_t>(text.size(), 4));
    }
    if (random() % 4 == 0) {
        static constexpr char NOISE[] = "A\xE0\xA0\x80\xED\x9F\xBF\xF0\x90\xF4\x8F\xC2\xC1\xF5\xFF";
        for (auto more = random() % 12; more-- != 0;)
            text += NOISE[random() % (sizeof NOISE - 1)];
    }
    return text;
}

// 16-bit text in which halves of pairs stand alone now and then.
Units random_units(std::mt19937_64 &random) {
    Units text = support::units_of(support::random_characters(random, random() % 48));
    if (random() % 2 == 0 && !text.empty())
        for (auto damages = random() % 4; damages-- != 0;)
            text[random() % text.size()] = static_cast<char16_t>(0xD800 + random() % 0x800);
    return text;
}

struct Expected {
    int status;
    Units units;
    std::string bytes;
};

// What fits of a text, and the status with it. STRICT texts end at their first fault.
Expected expected_units(const Decoded &text, size_t room) {
    Expected result = {UNI_OK, {}, {}};
    bool substituted = false;
    for (size_t i = 0; i < text.characters.size(); ++i) {
        Units next = result.units;
        support::append_units(next, text.characters[i]);
        if (next.size() > room) {
            result.status = substituted ? UNI_NOROOM_SUBSTITUTED : UNI_NOROOM;
            return result;
        }
        result.units = next;
        substituted |= text.faults[i];
    }
    // A character that is cut finds no room either.
    if (text.cut)
        result.status = result.units.size() < room ? UNI_TRUNCATED : substituted ? UNI_NOROOM_SUBSTITUTED : UNI_NOROOM;
    else
        result.status = substituted ? UNI_SUBSTITUTED : UNI_OK;
    return result;
}

Expected expected_bytes(const Decoded &text, size_t room) {
    Expected result = {UNI_OK, {}, {}};
    bool substituted = false;
    for (size_t i = 0; i < text.characters.size(); ++i) {
        std::string next = result.bytes;
        support::append_utf8(next, text.characters[i]);
        if (next.size() > room) {
            result.status = substituted ? UNI_NOROOM_SUBSTITUTED : UNI_NOROOM;
            return result;
        }
        result.bytes = next;
        substituted |= text.faults[i];
    }
    result.status = substituted ? UNI_SUBSTITUTED : UNI_OK;
    return result;
}

TEST(UnicUtf8, RandomTextToUnitsAsASimpleDecoderReadsIt) {
    const Handle utf8(UTF8);
    std::mt19937_64 random(801);
    for (int i = 0; i < 60000; ++i) {
        const std::string text = random_bytes(random);
        const Decoded decoded = naive_utf8(text);
        const size_t room = random() % 3 == 0 ? random() % (text.size() + 1) : text.size() + 1;
        const Expected expected = expected_units(decoded, room);
        const support::ToUnits told = utf8.from(text, room);
        ASSERT_EQ(told.status, expected.status) << testing::PrintToString(text) << " room " << room;
        ASSERT_EQ(told.text, expected.units) << testing::PrintToString(text) << " room " << room;
    }
}

TEST(UnicUtf8, RandomUnitsToTextAsASimpleEncoderWritesThem) {
    const Handle utf8(UTF8);
    std::mt19937_64 random(802);
    for (int i = 0; i < 60000; ++i) {
        const Units text = random_units(random);
        const size_t room = random() % 3 == 0 ? random() % (text.size() * 3 + 1) : text.size() * 3 + 3;
        const Expected expected = expected_bytes(naive_utf16(text), room);
        const support::ToBytes told = utf8.to(text, room);
        ASSERT_EQ(told.status, expected.status) << testing::PrintToString(text) << " room " << room;
        ASSERT_EQ(told.text, expected.bytes) << testing::PrintToString(text) << " room " << room;
        if (told.status == UNI_NOROOM || told.status == UNI_NOROOM_SUBSTITUTED) {
            ASSERT_EQ(told.behind, std::string(told.behind.size(), '\0')) << "the buffer may be kept whole";
        }
    }
}

TEST(UnicUtf8, EveryRoomOfMixedText) {
    const Handle utf8(UTF8);
    const std::u32string text =
        U"plain \u00E9\u00DF \u20AC\u4E2D\u6587 \U0001F600\U0010FFFF, and sixteen ASCII letters";
    const std::string bytes = support::utf8_of(text);
    const Units units = support::units_of(text);
    for (size_t room = 0; room <= bytes.size() + 1; ++room) {
        const Expected to_units = expected_units(naive_utf8(bytes), room);
        EXPECT_EQ(utf8.from(bytes, room).text, to_units.units) << room;
        EXPECT_EQ(utf8.from(bytes, room).status, to_units.status) << room;
        const Expected to_bytes = expected_bytes(naive_utf16(units), room);
        EXPECT_EQ(utf8.to(units, room).text, to_bytes.bytes) << room;
        EXPECT_EQ(utf8.to(units, room).status, to_bytes.status) << room;
    }
}

TEST(UnicUtf8, TextCutInsideACharacterIsTruncatedAndConvertedUpToThere) {
    const Handle utf8(UTF8);
    for (const char *cut : {"\xC3", "\xE2", "\xE2\x82", "\xF0", "\xF0\x9F", "\xF0\x9F\x98"}) {
        const support::ToUnits told = utf8.from(std::string("ab") + cut);
        EXPECT_EQ(told.status, UNI_TRUNCATED) << cut;
        EXPECT_EQ(told.text, u"ab") << cut;
    }
}

// ---- Without a handle ---------------------------------------------------------------------------------------------

int strict_from(const std::string &source, size_t room, Units *text) {
    const support::Terminated<char> bytes(source);
    std::vector<UNICHAR> buffer(room + 2, 0x5A5A);
    int count = -1;
    const int result = uniutf8_unistrFromUTF8(buffer.data(), static_cast<int>(room) + 1, bytes.get(), &count);
    EXPECT_EQ(buffer[room + 1], 0x5A5A);
    EXPECT_TRUE(result < 0 || result == count);
    EXPECT_EQ(buffer[static_cast<size_t>(count)], 0);
    text->assign(buffer.begin(), buffer.begin() + count);
    return result;
}

int strict_to(const Units &source, size_t room, std::string *text, std::string *behind = nullptr) {
    const std::basic_string<UNICHAR> units(source.begin(), source.end());
    const support::Terminated<UNICHAR> terminated(units);
    std::string buffer(room + 2, '\x5A');
    int count = -1;
    const int result = uniutf8_unistrToUTF8(buffer.data(), static_cast<int>(room) + 1, terminated.get(), &count);
    EXPECT_EQ(buffer[room + 1], '\x5A');
    EXPECT_TRUE(result < 0 || result == count);
    EXPECT_EQ(buffer[static_cast<size_t>(count)], '\0');
    *text = buffer.substr(0, static_cast<size_t>(count));
    if (behind != nullptr)
        *behind = buffer.substr(static_cast<size_t>(count), room + 1 - static_cast<size_t>(count));
    return result;
}

Decoded up_to_the_first_fault(Decoded text, bool *faulty) {
    const auto fault = std::find(text.faults.begin(), text.faults.end(), true);
    *faulty = fault != text.faults.end();
    const auto good = static_cast<size_t>(fault - text.faults.begin());
    text.characters.resize(good);
    text.faults.resize(good);
    text.cut = text.cut && !*faulty;
    return text;
}

TEST(UniUtf8Strict, RandomTextToUnitsEndsAtTheFirstFault) {
    std::mt19937_64 random(803);
    for (int i = 0; i < 60000; ++i) {
        const std::string text = random_bytes(random);
        bool faulty = false;
        const Decoded good = up_to_the_first_fault(naive_utf8(text), &faulty);
        Units told;
        const int result = strict_from(text, text.size() + 1, &told);
        const Units expected = support::units_of(good.characters);
        ASSERT_EQ(told, expected) << testing::PrintToString(text);
        ASSERT_EQ(result, faulty     ? UNI_BADTEXT
                          : good.cut ? UNI_TRUNCATED
                                     : static_cast<int>(expected.size()))
            << testing::PrintToString(text);
    }
}

TEST(UniUtf8Strict, RandomUnitsToTextEndAtTheFirstHalfOfAPair) {
    std::mt19937_64 random(804);
    for (int i = 0; i < 60000; ++i) {
        const Units text = random_units(random);
        bool faulty = false;
        const Decoded good = up_to_the_first_fault(naive_utf16(text), &faulty);
        std::string told;
        const int result = strict_to(text, text.size() * 3 + 1, &told);
        const std::string expected = support::utf8_of(good.characters);
        ASSERT_EQ(told, expected) << testing::PrintToString(text);
        ASSERT_EQ(result, faulty ? UNI_BADTEXT : static_cast<int>(expected.size())) << testing::PrintToString(text);
    }
}

TEST(UniUtf8Strict, EveryRoomHoldsWholeCharactersAndZerosBehindThem) {
    const std::u32string text = U"caf\u00E9 \u20AC \U0001F600 and eight more";
    const std::string bytes = support::utf8_of(text);
    const Units units = support::units_of(text);
    for (size_t room = 0; room <= bytes.size() + 1; ++room) {
        std::string told, behind;
        const int result = strict_to(units, room, &told, &behind);
        const Expected expected = expected_bytes(naive_utf16(units), room);
        EXPECT_EQ(told, expected.bytes) << room;
        EXPECT_EQ(result, expected.status == UNI_OK ? static_cast<int>(bytes.size()) : UNI_UTF8_NOROOM) << room;
        if (result < 0) {
            EXPECT_EQ(behind, std::string(behind.size(), '\0')) << room;
        }
        Units told_units;
        const int back = strict_from(bytes, room, &told_units);
        const Expected expected_back = expected_units(naive_utf8(bytes), room);
        EXPECT_EQ(told_units, expected_back.units) << room;
        EXPECT_EQ(back, expected_back.status == UNI_OK ? static_cast<int>(units.size()) : UNI_UTF8_NOROOM) << room;
    }
}

TEST(UniUtf8Strict, ABufferWithoutRoomForTheTerminatorIsLeftAsItWas) {
    for (const int size : {0, -1, -1000}) {
        char bytes[4] = "xyz";
        UNICHAR units[2] = {7, 0};
        int count = -1;
        EXPECT_EQ(uniutf8_unistrToUTF8(bytes, size, units, &count), UNI_UTF8_NOROOM);
        EXPECT_EQ(count, 0);
        EXPECT_STREQ(bytes, "xyz");
        count = -1;
        EXPECT_EQ(uniutf8_unistrFromUTF8(units, size, bytes, &count), UNI_UTF8_NOROOM);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(units[0], 7);
    }
}

// ---- UTF-16 as a set ----------------------------------------------------------------------------------------------

std::string bytes_of(const Units &text) {
    return {reinterpret_cast<const char *>(text.data()), text.size() * sizeof(char16_t)};
}

TEST(UnicUtf16, RandomBytesToUnitsWithHalvesOfPairsReplaced) {
    const Handle utf16(UTF16);
    std::mt19937_64 random(805);
    for (int i = 0; i < 40000; ++i) {
        const Units text = random_units(random);
        Decoded decoded = naive_utf16(text);
        if (!text.empty() && text.back() >= 0xD800 && text.back() <= 0xDBFF) {
            decoded.characters.pop_back();
            decoded.faults.pop_back();
            decoded.cut = true;
        }
        const size_t room = random() % 3 == 0 ? random() % (text.size() + 1) : text.size() + 1;
        const Expected expected = expected_units(decoded, room);
        const support::ToUnits told = utf16.from(bytes_of(text), room);
        ASSERT_EQ(told.status, expected.status) << testing::PrintToString(text) << " room " << room;
        ASSERT_EQ(told.text, expected.units) << testing::PrintToString(text) << " room " << room;
    }
}

TEST(UnicUtf16, RandomUnitsToBytesCutBetweenCharacters) {
    const Handle utf16(UTF16);
    std::mt19937_64 random(806);
    for (int i = 0; i < 40000; ++i) {
        const Units text = random_units(random);
        const size_t room = random() % 3 == 0 ? random() % (text.size() * 2 + 1) : text.size() * 2 + 3;
        const Expected expected = expected_units(naive_utf16(text), room / 2);
        const support::ToBytes told = utf16.to(text, room);
        ASSERT_EQ(told.status, expected.status) << testing::PrintToString(text) << " room " << room;
        ASSERT_EQ(told.text, bytes_of(expected.units)) << testing::PrintToString(text) << " room " << room;
        if (told.status == UNI_NOROOM || told.status == UNI_NOROOM_SUBSTITUTED) {
            ASSERT_EQ(told.behind, std::string(told.behind.size(), '\0'));
        } else if (told.behind.size() >= 2) {
            ASSERT_EQ(told.behind.substr(0, 2), std::string(2, '\0')) << "the terminator is a unit";
        }
    }
}

TEST(UnicUtf16, SourceAtAnOddAddress) {
    const Handle utf16(UTF16);
    const Units text = u"odd \u4E2D";
    const std::string moved = "x" + bytes_of(text) + std::string(3, '\0');
    UNICHAR buffer[16];
    int count = 0;
    EXPECT_EQ(uniconv_unistrFromS(utf16.get(), buffer, 16, moved.data() + 1, &count), UNI_OK);
    EXPECT_EQ(Units(buffer, buffer + count), text);
}

// ---- ASCII --------------------------------------------------------------------------------------------------------

TEST(UnicAscii, EveryByteAtEveryPlaceOfABlock) {
    const Handle ascii(ASCII);
    for (int byte = 1; byte < 256; ++byte) {
        for (size_t at = 0; at < 40; ++at) {
            std::string text(40, 'a');
            text[at] = static_cast<char>(byte);
            Units expected(40, u'a');
            expected[at] = byte < 0x80 ? static_cast<char16_t>(byte) : u'\uFFFD';
            const support::ToUnits told = ascii.from(text);
            ASSERT_EQ(told.text, expected) << byte << " at " << at;
            ASSERT_EQ(told.status, byte < 0x80 ? UNI_OK : UNI_SUBSTITUTED);
        }
    }
}

TEST(UnicAscii, CharactersWithoutAPartnerBecomeOneSubstituteEach) {
    const Handle ascii(ASCII);
    EXPECT_EQ(ascii.to(u"a\u00E9\u4E2D\U0001F600\xD800z").text, "a????z");
    EXPECT_EQ(ascii.to(u"a\u00E9\u4E2D\U0001F600\xD800z").status, UNI_SUBSTITUTED);
    ASSERT_EQ(uniconv_SetSubstituteChar(ascii.get(), '*'), UNI_OK);
    EXPECT_EQ(ascii.to(u"a\u00E9").text, "a*");
}

TEST(UnicAscii, EveryRoomWithAndWithoutSubstitutes) {
    const Handle ascii(ASCII);
    const Units plain = u"more than sixteen plain letters";
    for (size_t room = 0; room <= plain.size() + 1; ++room) {
        const int status = room < plain.size() ? UNI_NOROOM : UNI_OK;
        const std::string bytes(plain.begin(), plain.end());
        EXPECT_EQ(ascii.to(plain, room).text, bytes.substr(0, room));
        EXPECT_EQ(ascii.to(plain, room).status, status);
        EXPECT_EQ(ascii.from(bytes, room).text, plain.substr(0, room));
        EXPECT_EQ(ascii.from(bytes, room).status, status);
    }
    for (size_t room = 0; room <= 3; ++room) {
        EXPECT_EQ(ascii.to(u"\u00E9b\u00E9", room).text, std::string("?b?").substr(0, room));
        EXPECT_EQ(ascii.to(u"\u00E9b\u00E9", room).status, room == 0  ? UNI_NOROOM
                                                           : room < 3 ? UNI_NOROOM_SUBSTITUTED
                                                                      : UNI_SUBSTITUTED);
    }
}

// ---- Handles ------------------------------------------------------------------------------------------------------

TEST(UnicHandle, AnUnknownNumberGivesNone) {
    for (const UNICONV_CID cid : {-2, -3, -6, 8192, INT32_MAX, INT32_MIN}) {
        CVTH handle = &handle;
        EXPECT_EQ(uniconv_HandleGet(cid, &handle), UNI_NOSET) << cid;
        EXPECT_EQ(handle, nullptr) << cid;
    }
}

TEST(UnicHandle, NullIsFreedAndRefusedElsewhere) {
    uniconv_HandleFree(nullptr);
    UNICHAR units[4] = {1};
    char bytes[4] = {1};
    int count = 5;
    EXPECT_EQ(uniconv_unistrFromS(nullptr, units, 4, "a", &count), UNI_NOSET);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(uniconv_unistrToS(nullptr, bytes, 4, units, &count), UNI_NOSET);
    EXPECT_EQ(uniconv_GetExpansionFactor(nullptr, &count), UNI_NOSET);
    EXPECT_EQ(uniconv_SetSubstituteChar(nullptr, '?'), UNI_BADTEXT);
    EXPECT_EQ(uniconv_SetDBCSSubstituteChar(nullptr, 0x3F3F), UNI_BADTEXT);
}

TEST(UnicHandle, SubstitutesOutOfRangeAreRefused) {
    const Handle ascii(ASCII);
    for (const int code : {0, -1, 0x100, 0x3F3F})
        EXPECT_EQ(uniconv_SetSubstituteChar(ascii.get(), code), UNI_BADTEXT) << code;
    for (const int code : {0, -1, 0x3F, 0x100, 0x3F00, 0x10000})
        EXPECT_EQ(uniconv_SetDBCSSubstituteChar(ascii.get(), code), UNI_BADTEXT) << code;
    EXPECT_EQ(ascii.to(u"\u00E9").text, "?");
}

TEST(UnicHandle, DefaultsOfARequest) {
    I18NUNI_REQUEST request = {-1, -1, -1};
    i18nuni_RequestSetDefaults(&request);
    EXPECT_EQ(request.cacheInMemory, 1);
    EXPECT_EQ(request.cacheIndexOnly, 0);
    EXPECT_EQ(request.useCurrentDir, 0);
}

TEST(UnicHandle, GetUTakesOnlyTheSelectorThatThereIsAndAPathWhereOneIsAskedFor) {
    I18NUNI_REQUEST request = {1, 0, 2};
    const UNICHAR path[] = {'/', 0};
    CVTH handle = nullptr;
    EXPECT_EQ(uniconv_HandleGetU(ASCII, &request, path, 1, &handle), UNI_NOSET);
    EXPECT_EQ(uniconv_HandleGetU(ASCII, &request, nullptr, 0, &handle), UNI_NOSET);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(uniconv_HandleGetU(ASCII, &request, path, 0, &handle), UNI_OK);
    uniconv_HandleFree(handle);
}

TEST(UnicHandle, ABufferWithoutRoomForTheTerminatorIsLeftAsItWas) {
    for (const UNICONV_CID cid : {ASCII, UTF8, UTF16, -5}) {
        const Handle set(cid);
        char bytes[4] = "xyz";
        UNICHAR units[2] = {7, 0};
        int count = -1;
        EXPECT_EQ(uniconv_unistrToS(set.get(), bytes, 0, units, &count), UNI_NOROOM);
        EXPECT_EQ(count, 0);
        EXPECT_STREQ(bytes, "xyz");
        EXPECT_EQ(uniconv_unistrFromS(set.get(), units, -3, bytes, &count), UNI_NOROOM);
        EXPECT_EQ(units[0], 7);
    }
}

TEST(UnicExpansion, FactorsOfTheSetsWithoutATable) {
    for (const auto &[cid, factor] : {std::pair{ASCII, 1}, {UTF8, 3}, {UTF16, 2}, {-5, 3}}) {
        int told = 0;
        EXPECT_EQ(uniconv_GetExpansionFactor(Handle(cid).get(), &told), UNI_OK);
        EXPECT_EQ(told, factor) << cid;
    }
}

TEST(UnicExpansion, BetweenTheSetsWithoutATable) {
    struct Case {
        UNICONV_CID from, to;
        int factor;
    };
    for (const Case &c : {Case{ASCII, ASCII, 1},
                          {ASCII, UTF8, 1},
                          {ASCII, UTF16, 2},
                          {UTF8, ASCII, 1},
                          {UTF8, UTF16, 2},
                          {UTF8, UTF8, 1},
                          {UTF16, UTF8, 2},
                          {UTF16, ASCII, 1}}) {
        int told = 0;
        EXPECT_EQ(uniconv_GetExpansion(c.from, c.to, &told), UNI_OK);
        EXPECT_EQ(told, c.factor) << c.from << " to " << c.to;
    }
    int told = 77;
    EXPECT_EQ(uniconv_GetExpansion(UTF8, -3, &told), UNI_NOSET);
    EXPECT_EQ(uniconv_GetExpansion(-3, UTF8, &told), UNI_NOSET);
    EXPECT_EQ(told, 77);
}

} // namespace

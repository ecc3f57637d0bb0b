// The built-in iso_1, the character set of a value, and sets made from memory images.
#include "support/assertions.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

using support::ReturningAssertions;

// ---- The built-in tables -----------------------------------------------------------------------------------

// char_type and char_lex of every code, sixteen a line, as they must be.
constexpr std::array<CS_BYTE, 256> TYPE = {
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, // 00
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 10
    0x08, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, // 20
    0x14, 0x14, 0x14, 0x14, 0x14, 0x14, 0x14, 0x14, 0x14, 0x14, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, // 30
    0x20, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // 40
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x20, 0x20, 0x20, 0x20, 0x20, // 50
    0x20, 0x12, 0x12, 0x12, 0x12, 0x12, 0x12, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, // 60
    0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x20, 0x20, 0x20, 0x20, 0x00, // 70
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x08, // 80
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 90
    0x08, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x08, 0x20, 0x20, // A0
    0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, // B0
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // C0
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x20, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // D0
    0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, // E0
    0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x20, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, // F0
};
constexpr std::array<CS_BYTE, 256> LEX = {
    0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, // 00
    0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, // 10
    0x08, 0x20, 0x10, 0x01, 0x40, 0x20, 0x20, 0x10, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, // 20
    0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, // 30
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // 40
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x20, 0x20, 0x20, 0x20, 0x01, // 50
    0x20, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // 60
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x20, 0x20, 0x20, 0x20, 0x20, // 70
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // 80
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // 90
    0x01, 0x01, 0x01, 0x40, 0x40, 0x40, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // A0
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // B0
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // C0
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // D0
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // E0
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, // F0
};
// Soundex of 0x41 to 0x5A, of which 0x61 to 0x7A have the same.
//                                 ABCDEFGHIJKLMNOPQRSTUVWXYZ
constexpr char LETTER_SOUNDS[] = "01230120022455012623010202";

TEST(Iso1TypeMap, EveryEntryOfTheTable) {
    for (int code = 0; code < 256; ++code) {
        const CHAR_MAP &entry = ISO_1_type_map.chmap[code];
        EXPECT_EQ(entry.char_type, TYPE[code]) << code;
        EXPECT_EQ(entry.char_lex, LEX[code]) << code;
    }
}

TEST(Iso1TypeMap, CaseColumns) {
    // Latin-1 letter pairs written out; every other code is its own form in both columns.
    const std::string uppers = "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                               "\xC0\xC1\xC2\xC3\xC4\xC5\xC6\xC7\xC8\xC9\xCA\xCB\xCC\xCD\xCE\xCF"
                               "\xD0\xD1\xD2\xD3\xD4\xD5\xD6\xD8\xD9\xDA\xDB\xDC\xDD\xDE";
    const std::string lowers = "abcdefghijklmnopqrstuvwxyz"
                               "\xE0\xE1\xE2\xE3\xE4\xE5\xE6\xE7\xE8\xE9\xEA\xEB\xEC\xED\xEE\xEF"
                               "\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF8\xF9\xFA\xFB\xFC\xFD\xFE";
    for (int code = 0; code < 256; ++code) {
        const auto c = static_cast<char>(code);
        const std::size_t as_lower = lowers.find(c);
        const std::size_t as_upper = uppers.find(c);
        const CHAR_MAP &entry = ISO_1_type_map.chmap[code];
        EXPECT_EQ(entry.char_upper, static_cast<CS_BYTE>(as_lower != std::string::npos ? uppers[as_lower] : c)) << code;
        EXPECT_EQ(entry.char_lower, static_cast<CS_BYTE>(as_upper != std::string::npos ? lowers[as_upper] : c)) << code;
    }
}

TEST(Iso1TypeMap, FourSignsAndLettersHaveNoOtherCase) {
    for (const int code : {0xD7, 0xDF, 0xF7, 0xFF}) {
        EXPECT_EQ(ISO_1_type_map.chmap[code].char_upper, code);
        EXPECT_EQ(ISO_1_type_map.chmap[code].char_lower, code);
    }
}

TEST(Iso1TypeMap, ShiftCodesAndTheSoftHyphenAreWhiteSpace) {
    for (int code = 0; code < 256; ++code) {
        CS_BYTE p[] = {static_cast<CS_BYTE>(code), 0};
        const bool is_odd = code == 0x0E || code == 0x0F || code == 0x8E || code == 0x8F || code == 0xAD;
        const bool is_plain = (code >= 0x09 && code <= 0x0D) || code == 0x20 || code == 0xA0;
        EXPECT_EQ(comn_isspace(nullptr, p), is_odd || is_plain ? CS_CT_SPACE : 0) << code;
    }
}

TEST(Iso1Soundex, EveryEntryOfTheTable) {
    for (int code = 0; code < 256; ++code) {
        int expected = 0;
        if (code >= 'A' && code <= 'Z')
            expected = LETTER_SOUNDS[code - 'A'];
        else if (code >= 'a' && code <= 'z')
            expected = LETTER_SOUNDS[code - 'a'];
        else if (code >= 0xC0 && code != 0xD7 && code != 0xF7)
            expected = '0';
        EXPECT_EQ(ISO_1_soundex.sound[code], expected) << code;
    }
}

TEST(Iso1CharAttrib, EveryField) {
    const CHAR_ATTRIB &set = ISO_1_char_attrib;
    EXPECT_EQ(set.cs_status, 0);
    EXPECT_EQ(set.cs_class, 1);
    EXPECT_EQ(set.cs_id, 1);
    EXPECT_EQ(set.cs_namelen, 5);
    EXPECT_STREQ(reinterpret_cast<const char *>(set.cs_name), "iso_1");
    EXPECT_EQ(set.cs_maxcharlen, 1);
    EXPECT_EQ(set.cs_ncharsize, 1);
    EXPECT_EQ(set.cs_nnorm, 0);
    EXPECT_EQ(set.cs_ntype, 1);
    EXPECT_EQ(set.cs_nsoundex, 1);
    EXPECT_EQ(set.cs_width_map, nullptr);
    EXPECT_EQ(set.cs_norm_map, nullptr);
    EXPECT_EQ(set.cs_type_map, &ISO_1_type_map);
    EXPECT_EQ(set.cs_soundex, &ISO_1_soundex);
    EXPECT_EQ(com_get_charattrib(), &ISO_1_char_attrib);
    EXPECT_EQ(com_get_typemap(), &ISO_1_type_map);
}

// The permissions of the mapping that holds an address, such as "r--p".
std::string permissions_at(const void *address) {
    const auto wanted = reinterpret_cast<unsigned long>(address);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        unsigned long first = 0, last = 0;
        char permissions[8] = "";
        if (std::sscanf(line.c_str(), "%lx-%lx %7s", &first, &last, permissions) == 3 && first <= wanted &&
            wanted < last)
            return permissions;
    }
    return "unmapped";
}

TEST(Iso1CharAttrib, TheBuiltInDataLieInReadOnlyMemory) {
    EXPECT_EQ(permissions_at(com_get_charattrib()), "r--p");
    EXPECT_EQ(permissions_at(com_get_typemap()), "r--p");
    EXPECT_EQ(permissions_at(com_get_charattrib()->cs_soundex), "r--p");
    EXPECT_EQ(permissions_at(Com_charmap), "r--p");
}

// ---- The character set of a value --------------------------------------------------------------------------

// A locale with a character set of its own.
struct LocaleWithSet {
    CHAR_ATTRIB set = {};
    CsCharDesc desc = {};
    CsLocCache cache = {};
    CS_LOCALE locale = {};
    LocaleWithSet() {
        desc.char_attrib = &set;
        cache.locchardesc = &desc;
        locale.ctypeptr = &cache;
    }
};

class CharacterSetOfAValue : public testing::Test {
protected:
    CharacterSetOfAValue() {
        format_.locale = &of_value_.locale;
        context_.ctxlocale = &of_context_.locale;
    }
    LocaleWithSet of_value_;
    LocaleWithSet of_context_;
    CS_DATAFMT format_ = {};
    CS_CONTEXT context_ = {};
};
using CharacterSetOfAValueDeathTest = CharacterSetOfAValue;

TEST_F(CharacterSetOfAValue, ComesFromTheLocaleOfItsDescriptor) {
    EXPECT_EQ(com_intl_charattr(&context_, &format_), &of_value_.set);
    EXPECT_EQ(com_intl_charattr(nullptr, &format_), &of_value_.set);
}

TEST_F(CharacterSetOfAValue, ComesFromTheLocaleOfTheContextNext) {
    EXPECT_EQ(com_intl_charattr(&context_, nullptr), &of_context_.set);
    format_.locale = nullptr;
    EXPECT_EQ(com_intl_charattr(&context_, &format_), &of_context_.set);
}

TEST_F(CharacterSetOfAValue, IsIso1WithNeither) {
    EXPECT_EQ(com_intl_charattr(nullptr, nullptr), &ISO_1_char_attrib);
    format_.locale = nullptr;
    EXPECT_EQ(com_intl_charattr(nullptr, &format_), &ISO_1_char_attrib);
}

TEST_F(CharacterSetOfAValueDeathTest, ALocaleOfADescriptorWithoutCharacterTypeDataIsReported) {
    of_value_.locale.ctypeptr = nullptr;
    EXPECT_NULL_REPORT(com_intl_charattr(&context_, &format_), "charset");
    of_value_.locale.ctypeptr = &of_value_.cache;
    of_value_.cache.locchardesc = nullptr;
    EXPECT_NULL_REPORT(com_intl_charattr(&context_, &format_), "charset");
    of_value_.cache.locchardesc = &of_value_.desc;
    of_value_.desc.char_attrib = nullptr;
    EXPECT_NULL_REPORT(com_intl_charattr(&context_, &format_), "charset");
}

TEST_F(CharacterSetOfAValueDeathTest, AContextWithoutALocaleOrItsDataIsReported) {
    of_context_.cache.locchardesc = nullptr;
    EXPECT_NULL_REPORT(com_intl_charattr(&context_, nullptr), "charset");
    of_context_.locale.ctypeptr = nullptr;
    EXPECT_NULL_REPORT(com_intl_charattr(&context_, nullptr), "charset");
    context_.ctxlocale = nullptr;
    EXPECT_NULL_REPORT(com_intl_charattr(&context_, nullptr), "charset");
}

TEST_F(CharacterSetOfAValue, WhereReportsReturnMissingDataAnswerIso1) {
    ReturningAssertions returning;
    of_value_.desc.char_attrib = nullptr;
    EXPECT_EQ(com_intl_charattr(&context_, &format_), &ISO_1_char_attrib);
    of_value_.cache.locchardesc = nullptr;
    EXPECT_EQ(com_intl_charattr(&context_, &format_), &ISO_1_char_attrib);
    of_value_.locale.ctypeptr = nullptr;
    EXPECT_EQ(com_intl_charattr(&context_, &format_), &ISO_1_char_attrib);
    of_context_.cache.locchardesc = nullptr;
    EXPECT_EQ(com_intl_charattr(&context_, nullptr), &ISO_1_char_attrib);
    of_context_.locale.ctypeptr = nullptr;
    EXPECT_EQ(com_intl_charattr(&context_, nullptr), &ISO_1_char_attrib);
    context_.ctxlocale = nullptr;
    EXPECT_EQ(com_intl_charattr(&context_, nullptr), &ISO_1_char_attrib);
    EXPECT_EQ(returning.count(), 6);
}

// ---- Memory images ------------------------------------------------------------------------------------------

// A record with no byte that a build would write by chance.
CHAR_ATTRIB scribbled() {
    CHAR_ATTRIB set;
    std::memset(static_cast<void *>(&set), 0xA5, sizeof set);
    return set;
}
bool is_scribbled(const CHAR_ATTRIB &set) {
    const CHAR_ATTRIB untouched = scribbled();
    return std::memcmp(&set, &untouched, sizeof set) == 0;
}

std::vector<CS_BYTE> numbered_bytes(std::size_t size) {
    std::vector<CS_BYTE> bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<CS_BYTE>(i * 7 + i / 256);
    return bytes;
}

CS_CHAR name[] = "some_set";

TEST(Class1Image, EveryField) {
    std::vector<CS_BYTE> image = numbered_bytes(1285);
    const std::vector<CS_BYTE> before = image;
    CHAR_ATTRIB set = scribbled();
    ASSERT_EQ(com_build_char_attrib(1001, 0x1234, name, image.data(), &set), CS_SUCCEED);
    EXPECT_EQ(set.cs_status, 0);
    EXPECT_EQ(set.cs_class, 1);
    EXPECT_EQ(set.cs_id, 0x34);
    EXPECT_EQ(set.cs_namelen, 8);
    EXPECT_STREQ(reinterpret_cast<char *>(set.cs_name), "some_set");
    EXPECT_EQ(set.cs_maxcharlen, 1);
    EXPECT_EQ(set.cs_ncharsize, 1);
    EXPECT_EQ(set.cs_nnorm, 0);
    EXPECT_EQ(set.cs_ntype, 1);
    EXPECT_EQ(set.cs_nsoundex, 1);
    EXPECT_EQ(set.cs_width_map, nullptr);
    EXPECT_EQ(set.cs_norm_map, nullptr);
    EXPECT_EQ(static_cast<void *>(set.cs_type_map), image.data());
    EXPECT_EQ(static_cast<void *>(set.cs_soundex), image.data() + 1028);
    EXPECT_EQ(image, before); // and so it can be built from again
}

TEST(Class1Image, OfIso1WalksAsIso1) {
    std::vector<CS_BYTE> image(1285);
    std::memcpy(image.data(), &ISO_1_type_map, sizeof ISO_1_type_map);
    std::memcpy(image.data() + 1028, &ISO_1_soundex, sizeof ISO_1_soundex);
    CHAR_ATTRIB set = scribbled();
    ASSERT_EQ(com_build_char_attrib(CS_IMAGE_CLASS1, 1, name, image.data(), &set), CS_SUCCEED);
    for (int code = 0; code < 256; ++code) {
        CS_BYTE p[] = {static_cast<CS_BYTE>(code), 0};
        EXPECT_EQ(comn_isalpha(&set, p), comn_isalpha(nullptr, p));
        EXPECT_EQ(comn_get_lex(&set, p), comn_get_lex(nullptr, p));
        EXPECT_EQ(comn_to_ascii(&set, p), comn_to_ascii(nullptr, p));
        EXPECT_EQ(set.cs_soundex->sound[code], ISO_1_soundex.sound[code]);
    }
}

// An image of class 2 with the given sizes; the tables lie behind the header in an order that no loader would
// choose, to show that the offsets count.
struct Class2 {
    static constexpr std::size_t OFF_SOUNDEX = 44, OFF_TYPE = 300, OFF_NORM = 2348, OFF_WIDTH = 2860, SIZE = 3116;
    std::vector<CS_BYTE> bytes = numbered_bytes(SIZE);

    Class2(CS_UINT size_width, CS_UINT size_norm) {
        const CS_SMALLINT status = 0x1234;
        std::memcpy(bytes.data(), &status, sizeof status);
        const CS_BYTE counts[] = {2, 4, 3, 2, 5, 1, 0xAA, 0xBB, 0xBB, 0xBB};
        std::memcpy(bytes.data() + 2, counts, sizeof counts);
        put(12, OFF_WIDTH), put(16, size_width);
        put(20, OFF_NORM), put(24, size_norm);
        put(28, OFF_TYPE), put(32, 2048);
        put(36, OFF_SOUNDEX), put(40, 256);
    }
    void put(std::size_t at, std::size_t value) {
        for (int i = 0; i < 4; ++i)
            bytes[at + static_cast<std::size_t>(i)] = static_cast<CS_BYTE>(value >> (24 - 8 * i));
    }
    CS_UINT machine_word(std::size_t at) const {
        CS_UINT word;
        std::memcpy(&word, bytes.data() + at, sizeof word);
        return word;
    }
};

TEST(Class2Image, EveryField) {
    Class2 image(256, 512);
    CHAR_ATTRIB set = scribbled();
    ASSERT_EQ(com_build_char_attrib(1002, 77, name, image.bytes.data(), &set), CS_SUCCEED);
    EXPECT_EQ(set.cs_status, 0x1234);
    EXPECT_EQ(set.cs_class, 2);
    EXPECT_EQ(set.cs_id, 77);
    EXPECT_EQ(set.cs_namelen, 8);
    EXPECT_STREQ(reinterpret_cast<char *>(set.cs_name), "some_set");
    EXPECT_EQ(set.cs_maxcharlen, 4);
    EXPECT_EQ(set.cs_ncharsize, 3);
    EXPECT_EQ(set.cs_ntype, 2);
    EXPECT_EQ(set.cs_nnorm, 5);
    EXPECT_EQ(set.cs_nsoundex, 1);
    CS_BYTE *base = image.bytes.data();
    EXPECT_EQ(static_cast<void *>(set.cs_width_map), base + Class2::OFF_WIDTH);
    EXPECT_EQ(static_cast<void *>(set.cs_norm_map), base + Class2::OFF_NORM);
    EXPECT_EQ(static_cast<void *>(set.cs_type_map), base + Class2::OFF_TYPE);
    EXPECT_EQ(static_cast<void *>(set.cs_soundex), base + Class2::OFF_SOUNDEX);
}

TEST(Class2Image, TheClassIsTheImagesOwn) {
    Class2 image(0, 0);
    image.bytes[2] = 9;
    CHAR_ATTRIB set = scribbled();
    ASSERT_EQ(com_build_char_attrib(1002, 77, name, image.bytes.data(), &set), CS_SUCCEED);
    EXPECT_EQ(set.cs_class, 9);
}

TEST(Class2Image, TheEightWordsAreTurnedInPlaceAndNothingElseIs) {
    Class2 image(256, 512);
    const Class2 before = image;
    CHAR_ATTRIB set = scribbled();
    ASSERT_EQ(com_build_char_attrib(1002, 77, name, image.bytes.data(), &set), CS_SUCCEED);
    const std::size_t words[] = {Class2::OFF_WIDTH, 256,  Class2::OFF_NORM,    512,
                                 Class2::OFF_TYPE,  2048, Class2::OFF_SOUNDEX, 256};
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(image.machine_word(12 + 4 * i), words[i]) << i;
    EXPECT_TRUE(std::equal(image.bytes.begin(), image.bytes.begin() + 12, before.bytes.begin()));
    EXPECT_TRUE(std::equal(image.bytes.begin() + 44, image.bytes.end(), before.bytes.begin() + 44));
}

TEST(Class2Image, CanBeBuiltFromOnlyOnce) {
    Class2 image(256, 0);
    const std::vector<CS_BYTE> before = image.bytes;
    CHAR_ATTRIB set = scribbled();
    ASSERT_EQ(com_build_char_attrib(1002, 77, name, image.bytes.data(), &set), CS_SUCCEED);
    EXPECT_EQ(static_cast<void *>(set.cs_type_map), image.bytes.data() + Class2::OFF_TYPE);
    // A second build turns the words back: its record points elsewhere.
    ASSERT_EQ(com_build_char_attrib(1002, 77, name, image.bytes.data(), &set), CS_SUCCEED);
    EXPECT_NE(static_cast<void *>(set.cs_type_map), image.bytes.data() + Class2::OFF_TYPE);
    EXPECT_EQ(image.bytes, before);
}

TEST(Class2Image, ASizeOfZeroMakesTheWidthOrNormMapNull) {
    Class2 no_width(0, 512), no_norm(256, 0), neither(0, 0);
    CHAR_ATTRIB set = scribbled();
    ASSERT_EQ(com_build_char_attrib(1002, 1, name, no_width.bytes.data(), &set), CS_SUCCEED);
    EXPECT_EQ(set.cs_width_map, nullptr);
    EXPECT_NE(set.cs_norm_map, nullptr);
    CS_BYTE p[] = {0xFF, '7'};
    EXPECT_EQ(comn_char_width(&set, p), 1); // every character is one byte
    ASSERT_EQ(com_build_char_attrib(1002, 1, name, no_norm.bytes.data(), &set), CS_SUCCEED);
    EXPECT_NE(set.cs_width_map, nullptr);
    EXPECT_EQ(set.cs_norm_map, nullptr);
    ASSERT_EQ(com_build_char_attrib(1002, 1, name, neither.bytes.data(), &set), CS_SUCCEED);
    EXPECT_EQ(set.cs_width_map, nullptr);
    EXPECT_EQ(set.cs_norm_map, nullptr);
}

TEST(Class2Image, NeedNotBeAligned) {
    Class2 image(256, 512);
    std::vector<CS_BYTE> shifted(1 + image.bytes.size());
    std::copy(image.bytes.begin(), image.bytes.end(), shifted.begin() + 1);
    CHAR_ATTRIB set = scribbled();
    ASSERT_EQ(com_build_char_attrib(1002, 77, name, shifted.data() + 1, &set), CS_SUCCEED);
    EXPECT_EQ(static_cast<void *>(set.cs_norm_map), shifted.data() + 1 + Class2::OFF_NORM);
}

TEST(ImageName, IsCutToThirtyBytesWhileItsLengthIsThatOfTheGivenName) {
    std::vector<CS_BYTE> image(1285);
    for (const std::size_t length : {0u, 1u, 28u, 29u, 30u, 31u, 100u}) {
        std::string given(length, 'n');
        CHAR_ATTRIB set = scribbled();
        ASSERT_EQ(com_build_char_attrib(1001, 1, given.data(), image.data(), &set), CS_SUCCEED);
        EXPECT_EQ(set.cs_namelen, static_cast<short>(length));
        EXPECT_EQ(std::string(reinterpret_cast<char *>(set.cs_name)), given.substr(0, 29)) << length;
    }
}

TEST(ImageFailures, ANullImageOrRecordIsAFailureAndNoReport) {
    std::vector<CS_BYTE> image(1285);
    CHAR_ATTRIB set = scribbled();
    for (const CS_INT type : {1001, 1002}) {
        EXPECT_EQ(com_build_char_attrib(type, 1, name, nullptr, &set), CS_FAIL);
        EXPECT_EQ(com_build_char_attrib(type, 1, name, image.data(), nullptr), CS_FAIL);
    }
    EXPECT_TRUE(is_scribbled(set));
    EXPECT_EQ(image, std::vector<CS_BYTE>(1285));
}

TEST(ImageFailures, AnotherTypeIsAFailureThatTouchesNothing) {
    Class2 image(256, 512);
    const std::vector<CS_BYTE> before = image.bytes;
    CHAR_ATTRIB set = scribbled();
    for (const CS_INT type : {0, 1, 2, 1000, 1003, -1001})
        EXPECT_EQ(com_build_char_attrib(type, 1, name, image.bytes.data(), &set), CS_FAIL) << type;
    EXPECT_TRUE(is_scribbled(set));
    EXPECT_EQ(image.bytes, before);
}

TEST(ImageFailuresDeathTest, ANullNameIsReported) {
    std::vector<CS_BYTE> image(1285);
    CHAR_ATTRIB set;
    EXPECT_NULL_REPORT(com_build_char_attrib(1001, 1, nullptr, image.data(), &set), "charset");
    EXPECT_NULL_REPORT(com_build_char_attrib(1002, 1, nullptr, image.data(), &set), "charset");
}

TEST(ImageFailures, WhereReportsReturnANullNameIsAFailureThatTouchesNothing) {
    ReturningAssertions returning;
    Class2 image(256, 512);
    const std::vector<CS_BYTE> before = image.bytes;
    CHAR_ATTRIB set = scribbled();
    EXPECT_EQ(com_build_char_attrib(1001, 1, nullptr, image.bytes.data(), &set), CS_FAIL);
    EXPECT_EQ(com_build_char_attrib(1002, 1, nullptr, image.bytes.data(), &set), CS_FAIL);
    EXPECT_EQ(returning.count(), 2);
    EXPECT_TRUE(is_scribbled(set));
    EXPECT_EQ(image.bytes, before);
}

} // namespace

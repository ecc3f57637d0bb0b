// The walkers of text in any character set: each rule by name, every code of iso_1, and differential runs over
// random sets and texts.
#include "charset/walk.h"
#include "support/assertions.h"
#include "support/charsets.h"
#include "support/naive_walk.h"

namespace {

using namespace support;

// Text as the walkers take it. It is closed by NUL bytes that a walk can run into.
class Text {
public:
    Text(const std::string &bytes) // NOLINT: reads as the text it is
        : bytes_(bytes.begin(), bytes.end()), length_(bytes.size()) {
        bytes_.resize(length_ + LONGEST_CHARACTER + 1, 0);
    }
    Text(const char *bytes) : Text(std::string(bytes)) {}
    operator CS_BYTE *() { return bytes_.data(); }
    CS_BYTE *at(std::size_t position) { return bytes_.data() + position; }
    CS_BYTE *end() { return bytes_.data() + length_; }
    CS_INT length() const { return static_cast<CS_INT>(length_); }

private:
    std::vector<CS_BYTE> bytes_;
    std::size_t length_;
};

naive::Whole whole_char(CS_ATTRIB *ca, CS_BYTE *start, CS_BYTE *end) {
    naive::Whole result{-5, -5, -5, -5};
    comn_whole_char(ca, start, end, &result.bytes, &result.part1, &result.part2, &result.count);
    return result;
}

std::string str_to_ascii(CS_ATTRIB *ca, Text text, CS_INT length) {
    std::string dest(static_cast<std::size_t>(std::max(length, 0) + LONGEST_CHARACTER), '\x5A');
    CS_INT written = -5;
    comn_str_to_ascii(reinterpret_cast<CS_CHAR *>(text.at(0)), length, dest.data(), &written, ca);
    EXPECT_EQ(dest.find_first_not_of('\x5A', static_cast<std::size_t>(written)), std::string::npos)
        << "wrote behind the length that it told";
    return dest.substr(0, static_cast<std::size_t>(written));
}

std::string changed_case(CS_ATTRIB *ca, Text text, bool upper) {
    std::array<CS_BYTE, LONGEST_CHARACTER + 1> dest;
    // Whatever is written shows against one of two grounds.
    std::string result;
    std::array<CS_BYTE, LONGEST_CHARACTER + 1> other;
    dest.fill(0x11);
    other.fill(0x22);
    (upper ? comn_toupper : comn_tolower)(ca, text, dest.data());
    (upper ? comn_toupper : comn_tolower)(ca, text, other.data());
    for (std::size_t i = 0; i < dest.size() && dest[i] == other[i]; ++i)
        result += static_cast<char>(dest[i]);
    return result;
}

// ---- iso_1 -------------------------------------------------------------------------------------------------

TEST(WalkersInIso1, EveryAccessorOnEveryCode) {
    for (CS_ATTRIB *ca : {static_cast<CS_ATTRIB *>(nullptr), com_get_charattrib()})
        for (int code = 0; code < 256; ++code) {
            CS_BYTE p[] = {static_cast<CS_BYTE>(code), '7', 0xFF};
            const CHAR_MAP &entry = ISO_1_type_map.chmap[code];
            EXPECT_EQ(comn_isupper(ca, p), entry.char_type & 1) << code;
            EXPECT_EQ(comn_islower(ca, p), entry.char_type & 2) << code;
            EXPECT_EQ(comn_isalpha(ca, p), entry.char_type & 3) << code;
            EXPECT_EQ(comn_isdigit(ca, p), entry.char_type & 4) << code;
            EXPECT_EQ(comn_isspace(ca, p), entry.char_type & 8) << code;
            EXPECT_EQ(comn_isxdigit(ca, p), entry.char_type & 16) << code;
            EXPECT_EQ(comn_ispunct(ca, p), entry.char_type & 32) << code;
            EXPECT_EQ(comn_isgraph(ca, p), 0) << code; // the graphic bit is in the other table only
            EXPECT_EQ(comn_get_lex(ca, p), entry.char_lex) << code;
            EXPECT_EQ(comn_char_width(ca, p), 1) << code;
            EXPECT_EQ(comn_disp_width(ca, p), 1) << code;
            EXPECT_EQ(comn_to_ascii(ca, p), entry.char_lower) << code;
            const std::string text(1, static_cast<char>(code));
            EXPECT_EQ(changed_case(ca, text, true), std::string(1, static_cast<char>(entry.char_upper))) << code;
            EXPECT_EQ(changed_case(ca, text, false), std::string(1, static_cast<char>(entry.char_lower))) << code;
            CS_BYTE *next = p;
            comn_inc_char(ca, &next);
            EXPECT_EQ(next, p + 1) << code;
        }
    EXPECT_EQ(comn_get_widthmap(nullptr), nullptr);
    EXPECT_EQ(comn_get_widthmap(com_get_charattrib()), nullptr);
}

TEST(WalkersInIso1, ToAsciiWithoutNormPagesFoldsCase) {
    Text text("\xC4");
    EXPECT_EQ(comn_to_ascii(nullptr, text), 0xE4);
    EXPECT_EQ(str_to_ascii(nullptr, "SELECT 'X'", 10), "select 'x'");
}

TEST(WalkersInIso1, StrToAsciiCopiesANul) {
    EXPECT_EQ(str_to_ascii(nullptr, std::string("A\0B", 3), 3), std::string("a\0b", 3));
}

TEST(WalkersInIso1, WholeCharCountsBytes) {
    Text text("twelve bytes");
    EXPECT_EQ(whole_char(nullptr, text, text.end()), (naive::Whole{12, 0, 0, 12}));
}

TEST(WalkersInIso1, StrchrFindsTheFirst) {
    Text text("a'b'c");
    EXPECT_EQ(comn_mb_strchr(nullptr, text, '\''), text.at(1));
    EXPECT_EQ(comn_mb_strchr(nullptr, text, 'z'), nullptr);
    EXPECT_EQ(comn_mb_strchr(nullptr, text, 0), nullptr); // the NUL ends the search before it is compared
    Text high("abc\xFF");
    EXPECT_EQ(comn_mb_strchr(nullptr, high, 0xFF), high.at(3));
    Text empty("");
    EXPECT_EQ(comn_mb_strchr(nullptr, empty, 'a'), nullptr);
}

// ---- Width -------------------------------------------------------------------------------------------------

TEST(CharWidth, IsTheLowHalfOfTheFirstBytesEntry) {
    ThreeByteSet set;
    Text text("A\x8E\xB1\xC1\xC2\x8F\xA1\xA2");
    EXPECT_EQ(comn_char_width(set.get(), text.at(0)), 1);
    EXPECT_EQ(comn_char_width(set.get(), text.at(1)), 2);
    EXPECT_EQ(comn_char_width(set.get(), text.at(3)), 2);
    EXPECT_EQ(comn_char_width(set.get(), text.at(5)), 3);
    EXPECT_EQ(comn_get_widthmap(set.get()), set.get()->cs_width_map);
}

TEST(CharWidth, InAMode15SetTheSecondByteDecides) {
    FourByteSet set;
    for (int second = 0; second < 256; ++second) {
        CS_BYTE p[] = {0x81, static_cast<CS_BYTE>(second), 0, 0};
        EXPECT_EQ(comn_char_width(set.get(), p), second >= '0' && second <= '9' ? 4 : 2) << second;
        CS_BYTE *next = p;
        comn_inc_char(set.get(), &next);
        EXPECT_EQ(next, p + (second >= '0' && second <= '9' ? 4 : 2)) << second;
    }
    Text one_byte("A7");
    EXPECT_EQ(comn_char_width(set.get(), one_byte), 1);
}

TEST(CharWidth, Mode15IsReadFromEntry255WhateverItsLowHalf) {
    ConstructedSet set(1, 0);
    set.width(0x81, 0x81, 2, 2).width(0xFF, 0xFF, 2, 15);
    Text seven("\x81\x37"), letter("\x81\x61"), last("\xFF\x39");
    EXPECT_EQ(comn_char_width(set.get(), seven), 4);
    EXPECT_EQ(comn_char_width(set.get(), letter), 2);
    EXPECT_EQ(comn_char_width(set.get(), last), 4);
}

TEST(CharWidth, WithoutMode15ADigitChangesNothing) {
    DoubleByteSet set;
    for (int columns = 0; columns < 15; ++columns) {
        set.width(0xFF, 0xFF, 1, columns);
        Text text("\x81\x37");
        EXPECT_EQ(comn_char_width(set.get(), text), 2) << columns;
    }
}

TEST(CharWidth, InAMode15SetOtherWidthsStand) {
    FourByteSet set;
    set.width(0x82, 0x82, 3, 2).width(0x83, 0x83, 1, 1);
    Text three("\x82\x37\x37"), one("\x83\x37");
    EXPECT_EQ(comn_char_width(set.get(), three), 3);
    EXPECT_EQ(comn_char_width(set.get(), one), 1);
}

TEST(DispWidth, IsTheHighHalfOfTheFirstBytesEntry) {
    ThreeByteSet set;
    Text text("A\x8E\xB1\x8F\xA1\xA2");
    EXPECT_EQ(comn_disp_width(set.get(), text.at(0)), 1);
    EXPECT_EQ(comn_disp_width(set.get(), text.at(1)), 1);
    EXPECT_EQ(comn_disp_width(set.get(), text.at(3)), 2);
}

TEST(DispWidth, OfCode255InAMode15SetIsFifteen) {
    FourByteSet set;
    Text text("\xFF");
    EXPECT_EQ(comn_disp_width(set.get(), text), 15);
}

TEST(DispWidth, IsOneWithoutAWidthMap) {
    DoubleByteSet set;
    set.without_width_map();
    Text text("\xA3\xB1");
    EXPECT_EQ(comn_disp_width(set.get(), text), 1);
    EXPECT_EQ(comn_char_width(set.get(), text), 1);
    EXPECT_EQ(comn_get_widthmap(set.get()), nullptr);
}

// ---- A width of 0 -------------------------------------------------------------------------------------------

class WidthOfZero : public testing::Test {
protected:
    WidthOfZero() { set_.width(0x80, 0x80, 0, 0); }
    DoubleByteSet set_;
    Text text_{"\x80\x80"
               "a"};
};

TEST_F(WidthOfZero, IsWhatCharWidthAnswers) { EXPECT_EQ(comn_char_width(set_.get(), text_), 0); }

TEST_F(WidthOfZero, IsOneStepOfIncChar) {
    CS_BYTE *p = text_;
    comn_inc_char(set_.get(), &p);
    EXPECT_EQ(p, text_.at(1));
}

TEST_F(WidthOfZero, IsOneCharacterOfWholeChar) {
    EXPECT_EQ(whole_char(set_.get(), text_, text_.end()), (naive::Whole{3, 0, 0, 3}));
}

TEST_F(WidthOfZero, IsCopiedByStrToAsciiAsOneByte) {
    EXPECT_EQ(str_to_ascii(set_.get(), text_, 3), "\x80\x80"
                                                  "a");
}

TEST_F(WidthOfZero, IsHoppedOverByStrchrAsOneByte) {
    EXPECT_EQ(comn_mb_strchr(set_.get(), text_, 'a'), text_.at(2));
    EXPECT_EQ(comn_mb_strchr(set_.get(), text_, 'b'), nullptr);
}

TEST_F(WidthOfZero, HasTheAsciiFormOfASingleByte) {
    set_.norm(0, 0x80, '?'); // not the number of a page
    EXPECT_EQ(comn_to_ascii(set_.get(), text_), '?');
}

TEST_F(WidthOfZero, IsCopiedByTheCaseChangeAsOneByte) {
    EXPECT_EQ(changed_case(set_.get(), text_, true), "\x80");
    EXPECT_EQ(changed_case(set_.get(), text_, false), "\x80");
}

// ---- Classes and case ---------------------------------------------------------------------------------------

TEST(TwoLevelLookup, TheRowBitLeadsToThePageOfTheSecondByte) {
    DoubleByteSet set;
    for (int c = 0x20; c < 0x7F; ++c) {
        CS_BYTE p[] = {WIDE_LEAD, static_cast<CS_BYTE>(c + 0x80)};
        const CHAR_MAP &narrow = ISO_1_type_map.chmap[c];
        EXPECT_EQ(comn_isupper(set.get(), p), narrow.char_type & 1) << c;
        EXPECT_EQ(comn_islower(set.get(), p), narrow.char_type & 2) << c;
        EXPECT_EQ(comn_isalpha(set.get(), p), narrow.char_type & 3) << c;
        EXPECT_EQ(comn_isdigit(set.get(), p), narrow.char_type & 4) << c;
        EXPECT_EQ(comn_isspace(set.get(), p), narrow.char_type & 8) << c;
        EXPECT_EQ(comn_isxdigit(set.get(), p), narrow.char_type & 16) << c;
        EXPECT_EQ(comn_ispunct(set.get(), p), narrow.char_type & 32) << c;
        EXPECT_EQ(comn_isgraph(set.get(), p), narrow.char_type & 64) << c;
        EXPECT_EQ(comn_get_lex(set.get(), p), narrow.char_lex) << c;
        EXPECT_EQ(comn_to_ascii(set.get(), p), c) << c;
    }
}

TEST(TwoLevelLookup, ARowBitInsideAPageIsNotFollowed) {
    DoubleByteSet set;
    set.type(1, 0xC1, {0, 0, CS_LEX_QUOTE, CS_CT_ROW | CS_CT_DIGIT});
    Text text("\xA3\xC1\xA3");
    EXPECT_EQ(comn_isdigit(set.get(), text), CS_CT_DIGIT);
    EXPECT_EQ(comn_get_lex(set.get(), text), CS_LEX_QUOTE);
}

TEST(TwoLevelLookup, ARowOfPage0IsThePageItself) {
    DoubleByteSet set;
    set.type_row(0x90, 0);
    Text text("\x90"
              "F");
    EXPECT_EQ(comn_isxdigit(set.get(), text), CS_CT_XDIGIT);
}

TEST(TwoLevelLookup, IsDecidedByTheRowBitAndNotByTheWidth) {
    DoubleByteSet set;
    set.type(0, 0x90, {'x', 'y', CS_LEX_PUNCT, CS_CT_PUNCT});
    Text text("\x90\xC1");
    EXPECT_EQ(comn_ispunct(set.get(), text), CS_CT_PUNCT);
    EXPECT_EQ(comn_get_lex(set.get(), text), CS_LEX_PUNCT);
}

TEST(TwoLevelLookup, ASetWithoutTypePagesHasNoClassesAndNoCase) {
    ConstructedSet set(0, 0);
    Text text("A");
    EXPECT_EQ(comn_isalpha(set.get(), text), 0);
    EXPECT_EQ(comn_get_lex(set.get(), text), 0);
    EXPECT_EQ(changed_case(set.get(), text, false), "A");
}

TEST(CaseChange, KeepsTheFirstByteOfATwoByteCode) {
    DoubleByteSet set;
    EXPECT_EQ(changed_case(set.get(), "\xA3\xE1", true), "\xA3\xC1");
    EXPECT_EQ(changed_case(set.get(), "\xA3\xC1", false), "\xA3\xE1");
}

TEST(CaseChange, ToLowerFindsItsPageByCharUpper) {
    DoubleByteSet set;
    set.type(0, WIDE_LEAD, {1, 0 /* would be page 0 */, 0, CS_CT_ROW});
    EXPECT_EQ(changed_case(set.get(), "\xA3\xC1", false), "\xA3\xE1");
}

TEST(CaseChange, OfATwoByteCodeWritesAZeroThatThePageHolds) {
    DoubleByteSet set;
    set.type(1, 0xC1, {0, 0, 0, 0});
    EXPECT_EQ(changed_case(set.get(), "\xA3\xC1", true), std::string("\xA3\0", 2));
}

TEST(CaseChange, OfAFourByteCodeBehindARowWritesTwoBytes) {
    FourByteSet set;
    set.type(1, '5', {'6', '7', 0, 0});
    EXPECT_EQ(changed_case(set.get(), "\xA3\x35\x81\x30", true), "\xA3\x36");
    EXPECT_EQ(changed_case(set.get(), "\xA3\x35\x81\x30", false), "\xA3\x37");
}

TEST(CaseChange, ACharacterWithoutCaseIsCopiedWhole) {
    ThreeByteSet set;
    EXPECT_EQ(changed_case(set.get(), "\x8F\xA1\xA2", true), "\x8F\xA1\xA2");
    EXPECT_EQ(changed_case(set.get(), "\x8F\xA1\xA2", false), "\x8F\xA1\xA2");
    FourByteSet four;
    EXPECT_EQ(changed_case(four.get(), "\x81\x30\x81\x30", true), "\x81\x30\x81\x30");
    EXPECT_EQ(changed_case(nullptr, std::string(1, '\0'), true), std::string(1, '\0'));
}

TEST(CaseChange, OfAWideCharacterWithoutARowWritesOneByte) {
    DoubleByteSet set;
    set.type(0, 0x90, {'X', 'y', 0, 0});
    EXPECT_EQ(changed_case(set.get(), "\x90\xC1", true), "X");
    EXPECT_EQ(changed_case(set.get(), "\x90\xC1", false), "y");
}

TEST(CaseChange, MayWriteOverItsSource) {
    DoubleByteSet set;
    Text text("\xA3\xE1");
    comn_toupper(set.get(), text, text);
    EXPECT_EQ(text[1], 0xC1);
    ThreeByteSet three;
    Text copied("\x8F\xA1\xA2");
    comn_toupper(three.get(), copied, copied);
    EXPECT_EQ(copied[2], 0xA2);
}

// ---- ASCII forms --------------------------------------------------------------------------------------------

TEST(ToAscii, OfAOneByteCharacterIsItsNormEntry) {
    DoubleByteSet set;
    set.norm(0, 'A', 'a').norm(0, 0x80, '$');
    Text letter("A"), high("\x80");
    EXPECT_EQ(comn_to_ascii(set.get(), letter), 'a');
    EXPECT_EQ(comn_to_ascii(set.get(), high), '$');
}

TEST(ToAscii, OfAWideCharacterComesFromThePageOfItsFirstByte) {
    DoubleByteSet set;
    Text text("\xA3\xB7");
    EXPECT_EQ(comn_to_ascii(set.get(), text), '7');
}

TEST(ToAscii, OfAWideCharacterWithoutAPageIsZeroAndItIsCopiedWhole) {
    DoubleByteSet set;
    Text text("\x90\xC1");
    EXPECT_EQ(comn_to_ascii(set.get(), text), 0);
    EXPECT_EQ(str_to_ascii(set.get(), text, 2), "\x90\xC1");
}

TEST(ToAscii, AVariableWidthCharacterIsNotOneByteWide) {
    FourByteSet set;
    set.norm(1, '5', '#');
    Text text("\xA3\x35\x81\x30");
    EXPECT_EQ(comn_to_ascii(set.get(), text), '#');
}

TEST(ToAscii, WithNormPagesAndNoWidthMapEveryByteStandsAlone) {
    DoubleByteSet set;
    set.without_width_map().norm(0, WIDE_LEAD, '!');
    Text text("\xA3\xB7");
    EXPECT_EQ(comn_to_ascii(set.get(), text), '!');
}

TEST(ToAscii, WithoutNormPagesTakesCharLowerOfTheFirstByteWithoutSecondLevel) {
    ConstructedSet set(2, 0);
    set.width(0xA1, 0xFE, 2, 2).type(0, 0xA3, {1, '@', 0, CS_CT_ROW}).type(1, 0xC1, {0xC1, 0xE1, 0, CS_CT_UPPER});
    Text wide("\xA3\xC1"), letter("Q");
    EXPECT_EQ(comn_to_ascii(set.get(), wide), '@');
    EXPECT_EQ(comn_to_ascii(set.get(), letter), 'q');
    EXPECT_EQ(str_to_ascii(set.get(), "\xA3\xC1Q", 3), "@q");
}

TEST(ToAscii, WithoutAnyPagesIsTheByteItself) {
    ConstructedSet set(0, 0);
    set.width(0xA1, 0xFE, 2, 2);
    Text text("\xA3\xC1");
    EXPECT_EQ(comn_to_ascii(set.get(), text), 0xA3);
    Text letter("Q");
    EXPECT_EQ(comn_to_ascii(set.get(), letter), 'Q');
}

TEST(StrToAscii, MixesFormsAndWholeCharacters) {
    FourByteSet set;
    EXPECT_EQ(str_to_ascii(set.get(), "\xA3\xB1+\xA3\xB2=\x81\x30\x81\x30?", 11), "1+2=\x81\x30\x81\x30?");
}

TEST(StrToAscii, TakesTheLastCharacterWholeThoughItPassesTheLength) {
    ThreeByteSet set;
    EXPECT_EQ(str_to_ascii(set.get(), "a\x8F\xA1\xA2z", 2), "a\x8F\xA1\xA2");
    EXPECT_EQ(str_to_ascii(set.get(), "a\xA3\xB7z", 2), "a7");
}

TEST(StrToAscii, OfNothingIsNothing) {
    EXPECT_EQ(str_to_ascii(nullptr, "abc", 0), "");
    EXPECT_EQ(str_to_ascii(nullptr, "abc", -1), "");
}

TEST(StrToAscii, MayWriteOverItsSource) {
    DoubleByteSet set;
    Text text("\xA3\xC1\x90\xC1\xA3\xE2 and a longer run of plain text");
    const std::string expected = naive::str_to_ascii(set.get(), text, text.length());
    CS_INT length = 0;
    comn_str_to_ascii(reinterpret_cast<CS_CHAR *>(text.at(0)), text.length(), reinterpret_cast<CS_CHAR *>(text.at(0)),
                      &length, set.get());
    EXPECT_EQ(std::string(reinterpret_cast<char *>(text.at(0)), static_cast<std::size_t>(length)), expected);
}

TEST(Normalize, StopsWhenItsLimitIsReachedButDoesNotCutACharacter) {
    ThreeByteSet set;
    const dlx::Walker walker(set.get());
    Text text("abcdefghij\x8F\xA1\xA2zz");
    CS_BYTE dest[32];
    EXPECT_EQ(dlx::normalize(walker, text, text.length(), dest, 0), 0);
    EXPECT_EQ(dlx::normalize(walker, text, text.length(), dest, 7), 7);
    EXPECT_EQ(dlx::normalize(walker, text, text.length(), dest, 9), 9);
    EXPECT_EQ(dlx::normalize(walker, text, text.length(), dest, 11), 13);
    EXPECT_EQ(dlx::normalize(walker, text, text.length(), dest, 14), 14);
    EXPECT_EQ(dlx::normalize(walker, text, text.length(), dest, 100), 15);
}

TEST(Normalize, AtEveryLimitWritesTheFormsOfWholeCharacters) {
    std::mt19937_64 random(20240904);
    ThreeByteSet three;
    FourByteSet four;
    CS_ATTRIB *const sets[] = {nullptr, three.get(), four.get()};
    for (int i = 0; i < 300; ++i) {
        CS_ATTRIB *ca = sets[i % 3];
        Text text(random_text(random, 10) + std::string(random() % 40, 'x') + random_text(random, 10));
        const dlx::Walker walker(ca);
        // After each character: bytes written by all up to it.
        std::vector<std::string> written = {""};
        for (CS_BYTE *p = text; p < text.end(); p += naive::step(ca, p))
            written.push_back(written.back() + naive::str_to_ascii(ca, p, 1));
        for (CS_INT limit = 0; limit <= text.length() + 2; ++limit) {
            std::size_t last = 0;
            while (last + 1 < written.size() && written[last].size() < static_cast<std::size_t>(limit))
                ++last;
            std::vector<CS_BYTE> dest(static_cast<std::size_t>(text.length() + LONGEST_CHARACTER), 0xEE);
            const CS_INT length = dlx::normalize(walker, text, text.length(), dest.data(), limit);
            ASSERT_EQ(std::string(dest.begin(), dest.begin() + length), written[last]) << "limit " << limit;
            ASSERT_EQ(std::count(dest.begin() + length, dest.end(), 0xEE), std::ssize(dest) - length);
        }
    }
}

// ---- Runs ---------------------------------------------------------------------------------------------------

TEST(WholeChar, ARangeThatEndsInsideACharacterReportsItsTwoParts) {
    ThreeByteSet set;
    Text text("ab\x8F\xA1\xA2");
    EXPECT_EQ(whole_char(set.get(), text, text.at(5)), (naive::Whole{5, 0, 0, 3}));
    EXPECT_EQ(whole_char(set.get(), text, text.at(4)), (naive::Whole{2, 2, 1, 2}));
    EXPECT_EQ(whole_char(set.get(), text, text.at(3)), (naive::Whole{2, 1, 2, 2}));
    EXPECT_EQ(whole_char(set.get(), text, text.at(2)), (naive::Whole{2, 0, 0, 2}));
}

TEST(WholeChar, AFourByteCharacterIsSplitAnywhere) {
    FourByteSet set;
    Text text("\x81\x30\x81\x30");
    for (int cut = 1; cut < 4; ++cut)
        EXPECT_EQ(whole_char(set.get(), text, text.at(cut)), (naive::Whole{0, cut, 4 - cut, 0})) << cut;
    EXPECT_EQ(whole_char(set.get(), text, text.at(4)), (naive::Whole{4, 0, 0, 1}));
}

TEST(WholeChar, AnEmptyRangeOrOneWithItsEndInFrontCountsNothing) {
    ThreeByteSet set;
    Text text("\x8F\xA1\xA2");
    EXPECT_EQ(whole_char(set.get(), text, text), (naive::Whole{0, 0, 0, 0}));
    EXPECT_EQ(whole_char(set.get(), text.at(2), text), (naive::Whole{0, 0, 0, 0}));
    EXPECT_EQ(whole_char(nullptr, text.at(2), text), (naive::Whole{0, 0, 0, 0}));
}

TEST(WholeChar, LongPlainRunsAreCountedToTheByte) {
    ThreeByteSet set;
    for (int plain = 0; plain <= 40; ++plain) {
        Text text(std::string(static_cast<std::size_t>(plain), 'x') + "\x8F\xA1\xA2" + std::string(20, 'y'));
        for (int end = 0; end <= text.length(); ++end)
            EXPECT_EQ(whole_char(set.get(), text, text.at(end)), naive::whole_char(set.get(), text, text.at(end)))
                << plain << " " << end;
    }
}

TEST(MbStrchr, ATailByteIsNeverFound) {
    DoubleByteSet set;
    Text text("\x81'\x81'x'");
    EXPECT_EQ(comn_mb_strchr(set.get(), text, '\''), text.at(5));
}

TEST(MbStrchr, AFirstByteIsFound) {
    DoubleByteSet set;
    Text text("a\x82\x81\x81\x40");
    EXPECT_EQ(comn_mb_strchr(set.get(), text, 0x81), text.at(3));
}

TEST(MbStrchr, HopsOverANulInATail) {
    DoubleByteSet set;
    Text text(std::string("\x81\0'", 3));
    EXPECT_EQ(comn_mb_strchr(set.get(), text, '\''), text.at(2));
}

TEST(MbStrchr, NeverFindsANul) {
    DoubleByteSet set;
    Text text("abc");
    EXPECT_EQ(comn_mb_strchr(set.get(), text, 0), nullptr);
}

// ---- Against the naive versions -----------------------------------------------------------------------------

// Everything about one text in one set.
void expect_as_naive(CS_ATTRIB *ca, const std::string &bytes, CS_BYTE wanted) {
    Text text(bytes);
    CS_BYTE *p = text;
    ASSERT_EQ(comn_char_width(ca, p), naive::width(ca, p));
    ASSERT_EQ(comn_disp_width(ca, p), naive::columns(ca, p));
    ASSERT_EQ(comn_get_lex(ca, p), naive::entry(ca, p).char_lex);
    ASSERT_EQ(comn_isupper(ca, p), naive::entry(ca, p).char_type & 0x01);
    ASSERT_EQ(comn_islower(ca, p), naive::entry(ca, p).char_type & 0x02);
    ASSERT_EQ(comn_isalpha(ca, p), naive::entry(ca, p).char_type & 0x03);
    ASSERT_EQ(comn_isdigit(ca, p), naive::entry(ca, p).char_type & 0x04);
    ASSERT_EQ(comn_isspace(ca, p), naive::entry(ca, p).char_type & 0x08);
    ASSERT_EQ(comn_isxdigit(ca, p), naive::entry(ca, p).char_type & 0x10);
    ASSERT_EQ(comn_ispunct(ca, p), naive::entry(ca, p).char_type & 0x20);
    ASSERT_EQ(comn_isgraph(ca, p), naive::entry(ca, p).char_type & 0x40);
    ASSERT_EQ(comn_to_ascii(ca, p), naive::to_ascii(ca, p));
    ASSERT_EQ(changed_case(ca, text, true), naive::other_case(ca, p, true));
    ASSERT_EQ(changed_case(ca, text, false), naive::other_case(ca, p, false));
    CS_BYTE *next = p;
    comn_inc_char(ca, &next);
    ASSERT_EQ(next, p + naive::step(ca, p));
    ASSERT_EQ(whole_char(ca, p, text.end()), naive::whole_char(ca, p, text.end()));
    ASSERT_EQ(str_to_ascii(ca, text, text.length()), naive::str_to_ascii(ca, p, text.length()));
    ASSERT_EQ(comn_mb_strchr(ca, p, wanted), naive::mb_strchr(ca, p, wanted));
}

std::string random_walk_text(std::mt19937_64 &random) {
    return random_text(random, random() % (random() % 8 == 0 ? 120 : 24));
}

TEST(WalkersDifferential, RandomTextsInTheConstructedSets) {
    std::mt19937_64 random(20240901);
    DoubleByteSet two;
    ThreeByteSet three;
    FourByteSet four;
    CS_ATTRIB *const sets[] = {nullptr, two.get(), three.get(), four.get()};
    for (int i = 0; i < 60'000; ++i) {
        const std::string text = random_walk_text(random);
        ASSERT_NO_FATAL_FAILURE(expect_as_naive(sets[i % 4], text, static_cast<CS_BYTE>(random())))
            << testing::PrintToString(text) << " in set " << i % 4;
    }
}

TEST(WalkersDifferential, RandomTextsInRandomSets) {
    std::mt19937_64 random(20240902);
    for (int i = 0; i < 1'500; ++i) {
        RandomSet set(random);
        for (int j = 0; j < 40; ++j) {
            const std::string text = random_walk_text(random);
            ASSERT_NO_FATAL_FAILURE(expect_as_naive(set.get(), text, static_cast<CS_BYTE>(random())))
                << testing::PrintToString(text) << " in set " << i;
        }
    }
}

// ---- Null pointers ------------------------------------------------------------------------------------------

struct Accessor {
    const char *name;
    CS_INT (*call)(CS_ATTRIB *ca, CS_BYTE *p);
};
constexpr Accessor ACCESSORS[] = {
    {"comn_isupper", comn_isupper},
    {"comn_islower", comn_islower},
    {"comn_isalpha", comn_isalpha},
    {"comn_isdigit", comn_isdigit},
    {"comn_isspace", comn_isspace},
    {"comn_isxdigit", comn_isxdigit},
    {"comn_ispunct", comn_ispunct},
    {"comn_isgraph", comn_isgraph},
    {"comn_get_lex", comn_get_lex},
    {"comn_char_width", comn_char_width},
    {"comn_disp_width", comn_disp_width},
    {"comn_to_ascii", [](CS_ATTRIB *ca, CS_BYTE *p) { return CS_INT{comn_to_ascii(ca, p)}; }},
};

TEST(WalkersDeathTest, ANullTextIsReported) {
    for (const Accessor &accessor : ACCESSORS) {
        SCOPED_TRACE(accessor.name);
        EXPECT_NULL_REPORT(accessor.call(nullptr, nullptr), "com_mtyp");
    }
    CS_BYTE byte = 'a';
    EXPECT_NULL_REPORT(comn_toupper(nullptr, nullptr, &byte), "com_mtyp");
    EXPECT_NULL_REPORT(comn_toupper(nullptr, &byte, nullptr), "com_mtyp");
    EXPECT_NULL_REPORT(comn_tolower(nullptr, nullptr, &byte), "com_mtyp");
    EXPECT_NULL_REPORT(comn_tolower(nullptr, &byte, nullptr), "com_mtyp");
    EXPECT_NULL_REPORT(comn_mb_strchr(nullptr, nullptr, 'a'), "com_mtyp");
}

TEST(WalkersDeathTest, IncCharReportsANullPlaceAndANullText) {
    CS_BYTE *nothing = nullptr;
    EXPECT_NULL_REPORT(comn_inc_char(nullptr, nullptr), "com_mtyp");
    EXPECT_NULL_REPORT(comn_inc_char(nullptr, &nothing), "com_mtyp");
}

TEST(WalkersDeathTest, WholeCharReportsEachNullPointer) {
    CS_BYTE text[] = "ab";
    CS_INT out = 0;
    EXPECT_NULL_REPORT(comn_whole_char(nullptr, nullptr, text, &out, &out, &out, &out), "com_mtyp");
    EXPECT_NULL_REPORT(comn_whole_char(nullptr, text, nullptr, &out, &out, &out, &out), "com_mtyp");
    EXPECT_NULL_REPORT(comn_whole_char(nullptr, text, text, nullptr, &out, &out, &out), "com_mtyp");
    EXPECT_NULL_REPORT(comn_whole_char(nullptr, text, text, &out, nullptr, &out, &out), "com_mtyp");
    EXPECT_NULL_REPORT(comn_whole_char(nullptr, text, text, &out, &out, nullptr, &out), "com_mtyp");
    EXPECT_NULL_REPORT(comn_whole_char(nullptr, text, text, &out, &out, &out, nullptr), "com_mtyp");
}

TEST(WalkersDeathTest, StrToAsciiReportsEachNullPointer) {
    CS_CHAR text[] = "ab";
    CS_INT length = 0;
    EXPECT_NULL_REPORT(comn_str_to_ascii(nullptr, 1, text, &length, nullptr), "com_mtyp");
    EXPECT_NULL_REPORT(comn_str_to_ascii(text, 1, nullptr, &length, nullptr), "com_mtyp");
    EXPECT_NULL_REPORT(comn_str_to_ascii(text, 1, text, nullptr, nullptr), "com_mtyp");
}

TEST(WalkersWhereReportsReturn, ANullPointerAnswersZeroAndTouchesNothing) {
    ReturningAssertions returning;
    int reports = 0;
    for (const Accessor &accessor : ACCESSORS) {
        EXPECT_EQ(accessor.call(nullptr, nullptr), 0) << accessor.name;
        EXPECT_EQ(returning.count(), ++reports) << accessor.name;
    }

    CS_BYTE byte = 'a';
    for (auto *change : {comn_toupper, comn_tolower}) {
        change(nullptr, nullptr, &byte);
        change(nullptr, &byte, nullptr);
        reports += 2;
        EXPECT_EQ(byte, 'a');
    }
    EXPECT_EQ(comn_mb_strchr(nullptr, nullptr, 'a'), nullptr);
    CS_BYTE *nothing = nullptr;
    comn_inc_char(nullptr, nullptr);
    comn_inc_char(nullptr, &nothing);
    EXPECT_EQ(nothing, nullptr);
    reports += 3;
    EXPECT_EQ(returning.count(), reports);

    CS_BYTE text[] = "ab";
    CS_INT out[4];
    for (int missing = 0; missing < 6; ++missing) {
        std::fill(std::begin(out), std::end(out), 77);
        comn_whole_char(nullptr, missing == 0 ? nullptr : text, missing == 1 ? nullptr : text + 2,
                        missing == 2 ? nullptr : &out[0], missing == 3 ? nullptr : &out[1],
                        missing == 4 ? nullptr : &out[2], missing == 5 ? nullptr : &out[3]);
        EXPECT_EQ(returning.count(), ++reports);
        for (const CS_INT value : out)
            EXPECT_EQ(value, 77) << missing;
    }

    CS_CHAR source[] = "AB";
    CS_CHAR dest[] = "..";
    CS_INT length = 77;
    comn_str_to_ascii(nullptr, 2, dest, &length, nullptr);
    comn_str_to_ascii(source, 2, nullptr, &length, nullptr);
    comn_str_to_ascii(source, 2, dest, nullptr, nullptr);
    reports += 3;
    EXPECT_EQ(returning.count(), reports);
    EXPECT_STREQ(dest, "..");
    EXPECT_EQ(length, 77);
}

} // namespace

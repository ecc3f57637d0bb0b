// Text through the tables: every room, cuts, faults and substitutes, by kind of set.
#include "support/environment.h"
#include "support/unicode_calls.h"
#include "support/unicode_text.h"

namespace {

using support::Handle;
using support::ToBytes;
using support::ToUnits;
using support::Units;

const support::Variable home("DALVEX", DLXCOMN_BUILD_DIR "/home");

constexpr UNICONV_CID CP1252 = 1252, CP1258 = 1258, SJIS = 50, EUC_JP = 49, EUC_TW = 9, BIG5_HK = 47, GB18030 = 48,
                      CP037 = 37, CP930 = 930;

// A text as characters, each with its bytes in a set.
using Pieces = std::vector<std::pair<Units, std::string>>;

const Pieces PLAIN = {{u"\u20AC", "\x80"}, {u"a", "a"}, {u"\u00E9", "\xE9"}};
const Pieces JAPANESE = {
    {u"a", "a"}, {u"\u65E5", "\x93\xFA"}, {u"\u672C", "\x96\x7B"}, {u"\uFF71", "\xB1"}, {u"~", "~"}};
const Pieces JAPANESE_EUC = {
    {u"\u65E5", "\xC6\xFC"}, {u"\uFF71", "\x8E\xB1"}, {u"\u4E02", "\x8F\xB0\xA1"}, {u"z", "z"}};
const Pieces TAIWANESE = {{u"\u4E00", "\xC4\xA1"}, {u"\u4E42", "\x8E\xA2\xA1\xA1"}, {u"x", "x"}};
const Pieces HONG_KONG = {
    {u"\u4E00", "\xA4\x40"}, {u"\u00CA\u0304", "\x88\x62"}, {u"\u00CA", "\x88\x66"}, {u"\U000233F4", "\x8B\x40"}};
const Pieces CHINESE = {
    {u"\u4E2D", "\xD6\xD0"}, {u"\u00DF", "\x81\x30\x89\x38"}, {u"\U0001F600", "\x94\x39\xFC\x36"}, {u"1", "1"}};

struct Case {
    UNICONV_CID set;
    const Pieces *pieces;
};

class UnicTextOf : public testing::TestWithParam<Case> {
protected:
    // The pieces over and over, with ASCII between them so that every path is entered and left.
    Pieces text() const {
        Pieces all = *GetParam().pieces;
        for (int more = 0; more < 20; ++more)
            all.emplace_back(u"k", "k");
        all.insert(all.end(), GetParam().pieces->rbegin(), GetParam().pieces->rend());
        return all;
    }
};

TEST_P(UnicTextOf, EveryRoomHoldsWholeCharacters) {
    const Handle handle(GetParam().set);
    ASSERT_EQ(handle.status(), UNI_OK);
    Units units;
    std::string bytes;
    for (const auto &[u, b] : text()) {
        units += u;
        bytes += b;
    }
    for (size_t room = 0; room <= bytes.size() + 2; ++room) {
        Units fitting_units;
        std::string fitting_bytes;
        bool units_fit = true, bytes_fit = true;
        for (const auto &[u, b] : text()) {
            units_fit = units_fit && fitting_units.size() + u.size() <= room;
            bytes_fit = bytes_fit && fitting_bytes.size() + b.size() <= room;
            fitting_units += units_fit ? u : Units();
            fitting_bytes += bytes_fit ? b : std::string();
        }
        const ToUnits from = handle.from(bytes, room);
        ASSERT_EQ(from.text, fitting_units) << room;
        ASSERT_EQ(from.status, units_fit ? UNI_OK : UNI_NOROOM) << room;
        const ToBytes to = handle.to(units, room);
        ASSERT_EQ(to.text, fitting_bytes) << room;
        ASSERT_EQ(to.status, bytes_fit ? UNI_OK : UNI_NOROOM) << room;
        if (!bytes_fit) {
            ASSERT_EQ(to.behind, std::string(to.behind.size(), '\0')) << room;
        }
    }
}

TEST_P(UnicTextOf, ASourceCutInsideACharacterIsTruncated) {
    const Handle handle(GetParam().set);
    for (const auto &[u, b] : *GetParam().pieces)
        for (size_t length = 1; length < b.size(); ++length) {
            const ToUnits told = handle.from("ab" + b.substr(0, length));
            // A beginning of a longer code that is itself the code of a shorter one is no cut.
            EXPECT_EQ(told.status, UNI_TRUNCATED) << testing::PrintToString(b) << " cut at " << length;
            EXPECT_EQ(told.text, u"ab");
        }
}

INSTANTIATE_TEST_SUITE_P(Sets, UnicTextOf,
                         testing::Values(Case{CP1252, &PLAIN}, Case{SJIS, &JAPANESE}, Case{EUC_JP, &JAPANESE_EUC},
                                         Case{EUC_TW, &TAIWANESE}, Case{BIG5_HK, &HONG_KONG}, Case{GB18030, &CHINESE}),
                         [](const auto &param) { return std::to_string(param.param.set); });

// ---- Substitutes --------------------------------------------------------------------------------------------------

TEST(UnicSubstitutes, OneForSetsOfSingleBytesWhateverTheCharacter) {
    const Handle handle(CP1252);
    const ToBytes told = handle.to(u"a\u0416\u4E2D\U0001F600\xDC00z and more than one block of text \u0416");
    EXPECT_EQ(told.text, "a????z and more than one block of text ?");
    EXPECT_EQ(told.status, UNI_SUBSTITUTED);
    ASSERT_EQ(uniconv_SetSubstituteChar(handle.get(), 0xBF), UNI_OK);
    EXPECT_EQ(handle.to(u"\u0416").text, "\xBF");
}

TEST(UnicSubstitutes, TwoBytesForWideCharactersTowardsSetsOfSeveral) {
    const Handle handle(SJIS);
    EXPECT_EQ(handle.to(u"\u00E9").text, "?");
    EXPECT_EQ(handle.to(u"\u0E01").text, "?") << "one column";
    EXPECT_EQ(handle.to(u"\uAC00").text, "??") << "a Korean syllable";
    EXPECT_EQ(handle.to(u"\U0001F600").text, "??");
    EXPECT_EQ(handle.to(u"\xD800").text, "?") << "half a pair";
    ASSERT_EQ(uniconv_SetDBCSSubstituteChar(handle.get(), 0x81AC), UNI_OK);
    ASSERT_EQ(uniconv_SetSubstituteChar(handle.get(), '*'), UNI_OK);
    EXPECT_EQ(handle.to(u"\uAC00\u00E9").text, "\x81\xAC*");
    EXPECT_EQ(handle.to(u"\uAC00\u00E9").status, UNI_SUBSTITUTED);
}

TEST(UnicSubstitutes, BothStatusesWhereTheRestDoesNotFit) {
    const Handle handle(SJIS);
    EXPECT_EQ(handle.to(u"\uAC00abc", 3).status, UNI_NOROOM_SUBSTITUTED);
    EXPECT_EQ(handle.to(u"\uAC00abc", 3).text, "??a");
    EXPECT_EQ(handle.to(u"\uAC00abc", 1).status, UNI_NOROOM);
    EXPECT_EQ(handle
                  .from("\xFD"
                        "abc",
                        2)
                  .status,
              UNI_NOROOM_SUBSTITUTED);
}

// ---- Faults -------------------------------------------------------------------------------------------------------

TEST(UnicFaults, ABadByteBecomesTheReplacementCharacter) {
    EXPECT_EQ(Handle(CP1252).from("a\x81z").text, u"a\uFFFDz");
    EXPECT_EQ(Handle(CP1252).from("a\x81z").status, UNI_SUBSTITUTED);
    EXPECT_EQ(Handle(EUC_JP).from("a\xFFz").text, u"a\uFFFDz");
    EXPECT_EQ(Handle(SJIS)
                  .from("\x81"
                        "\x20z")
                  .text,
              u"\uFFFD z")
        << "what does not continue a code is read again";
}

TEST(UnicFaults, AnAsciiCharacterIsNeverSwallowed) {
    // 85 7E is no character, though 7E may continue one.
    EXPECT_EQ(Handle(SJIS).from("\x85~z").text, u"\uFFFD~z");
    EXPECT_EQ(Handle(EUC_JP).from("\x8F\xB0'x").text, u"\uFFFD'x");
    EXPECT_EQ(Handle(GB18030).from("\x81\x30\"x").text, u"\uFFFD0\"x");
    EXPECT_EQ(Handle(GB18030).from("\x81\x30\x81\"").text, u"\uFFFD0\uFFFD\"");
}

TEST(UnicFaults, ACodeWithoutACharacterIsOneFault) {
    EXPECT_EQ(Handle(EUC_JP).from("\xA9\xA1z").text, u"\uFFFDz");
    EXPECT_EQ(Handle(GB18030).from("\xFE\x39\xFE\x39z").text, u"\uFFFDz");
}

TEST(UnicFaults, RandomBytesNeverLeaveTheirRoomNorStopBeforeTheEnd) {
    std::mt19937_64 random(810);
    for (const UNICONV_CID set : {CP1252, CP1258, SJIS, EUC_JP, EUC_TW, BIG5_HK, GB18030, CP037, CP930}) {
        const Handle handle(set);
        for (int i = 0; i < 4000; ++i) {
            std::string bytes(random() % 40, '\0');
            for (char &c : bytes)
                c = static_cast<char>(random() % 3 == 0 ? 0x20 + random() % 0x5F : 1 + random() % 255);
            const ToUnits whole = handle.from(bytes);
            EXPECT_NE(whole.status, UNI_NOROOM);
            EXPECT_NE(whole.status, UNI_NOROOM_SUBSTITUTED);
            const size_t room = random() % (bytes.size() + 1);
            const ToUnits cut = handle.from(bytes, room);
            EXPECT_EQ(cut.text, whole.text.substr(0, cut.text.size()));
            EXPECT_LE(cut.text.size(), room);
            // And the other way, with characters of all kinds.
            const Units text = support::units_of(support::random_characters(random, random() % 40));
            int factor = 0;
            ASSERT_EQ(uniconv_GetExpansionFactor(handle.get(), &factor), UNI_OK);
            const ToBytes fitting = handle.to(text, text.size() * static_cast<size_t>(factor));
            EXPECT_TRUE(fitting.status == UNI_OK || fitting.status == UNI_SUBSTITUTED) << set;
            const ToBytes short_of = handle.to(text, random() % (fitting.text.size() + 1));
            if (set != CP930) {
                EXPECT_EQ(short_of.text, fitting.text.substr(0, short_of.text.size())) << set;
            }
        }
    }
}

// ---- Two states ---------------------------------------------------------------------------------------------------

TEST(UnicShift, ChangesOfStateAreWrittenWhereTheyAreNeeded) {
    const Handle handle(CP930);
    EXPECT_EQ(handle.to(u"A\u65E5\u672CB").text, "\xC1\x0E\x45\x62\x45\x66\x0F\xC2");
    EXPECT_EQ(handle.from("\xC1\x0E\x45\x62\x45\x66\x0F\xC2").text, u"A\u65E5\u672CB");
    EXPECT_EQ(handle.to(u"\u65E5").text, "\x0E\x45\x62\x0F") << "a text ends in the first state";
}

TEST(UnicShift, EveryRoomEndsInTheFirstState) {
    const Handle handle(CP930);
    // What fits, by the number of bytes: the way back is always counted.
    const std::string expected[] = {"",
                                    "\xC1",
                                    "\xC1",
                                    "\xC1",
                                    "\xC1",
                                    "\xC1\x0E\x45\x62\x0F",
                                    "\xC1\x0E\x45\x62\x0F",
                                    "\xC1\x0E\x45\x62\x45\x66\x0F",
                                    "\xC1\x0E\x45\x62\x45\x66\x0F\xC2"};
    for (size_t room = 0; room < std::size(expected); ++room) {
        const ToBytes told = handle.to(u"A\u65E5\u672CB", room);
        EXPECT_EQ(told.text, expected[room]) << room;
        EXPECT_EQ(told.status, room == 8 ? UNI_OK : UNI_NOROOM) << room;
        EXPECT_EQ(told.behind,
                  std::string(told.behind.size(), told.status == UNI_OK ? '\x5A' : '\0').replace(0, 1, 1, '\0'))
            << room;
    }
}

TEST(UnicShift, ASubstituteThatIsNoCodeOfTwoBytesIsTwoOfOne) {
    const Handle handle(CP930);
    EXPECT_EQ(handle.to(u"\u65E5\uAC00").text, "\x0E\x45\x62\x0F??");
    ASSERT_EQ(uniconv_SetDBCSSubstituteChar(handle.get(), 0xFEFE), UNI_OK);
    EXPECT_EQ(handle.to(u"\u65E5\uAC00").text, "\x0E\x45\x62\xFE\xFE\x0F");
}

TEST(UnicShift, RepeatedAndMissingChangesAreRead) {
    const Handle handle(CP930);
    EXPECT_EQ(handle.from("\x0F\xC1\x0E\x0E\x45\x62").text, u"A\u65E5");
    EXPECT_EQ(handle.from("\x0F\xC1\x0E\x0E\x45\x62").status, UNI_OK);
    EXPECT_EQ(handle.from("\xC1\x0E\x45").status, UNI_TRUNCATED);
    EXPECT_EQ(handle.from("\xC1\x0E\x45").text, u"A");
    EXPECT_EQ(handle.from("\x0E\x45\x0F\xC1").text, u"\uFFFDA") << "a change of state inside a code";
}

// ---- Two characters in one code, two codes for one character --------------------------------------------------------

TEST(UnicPairs, APairIsOneCodeAndItsFirstCharacterAloneAnother) {
    const Handle handle(BIG5_HK);
    EXPECT_EQ(handle.to(u"\u00CA\u0304\u00CA\u030C\u00CA\u0301x").text, "\x88\x62\x88\x64\x88\x66?x");
    EXPECT_EQ(handle.from("\x88\x62", 1).status, UNI_NOROOM) << "both characters or none";
    EXPECT_EQ(handle.from("\x88\x62", 1).text, u"");
}

TEST(UnicPairs, ComposedVietnameseLettersBecomeTwoCodes) {
    const Handle handle(CP1258);
    EXPECT_EQ(handle.to(u"\u1EBF").text, "\xEA\xEC");
    EXPECT_EQ(handle.from("\xEA\xEC").text, u"\u00EA\u0301");
}

// ---- Expansion ----------------------------------------------------------------------------------------------------

TEST(UnicExpansionOfTables, Factors) {
    struct Row {
        UNICONV_CID set;
        int factor;
    };
    for (const Row &row : {Row{CP1252, 1},
                           {CP1258, 2},
                           {SJIS, 2},
                           {EUC_JP, 3},
                           {EUC_TW, 4},
                           {BIG5_HK, 2},
                           {GB18030, 4},
                           {CP037, 1},
                           {CP930, 4}}) {
        int told = 0;
        EXPECT_EQ(uniconv_GetExpansionFactor(Handle(row.set).get(), &told), UNI_OK);
        EXPECT_EQ(told, row.factor) << row.set;
    }
}

TEST(UnicExpansionOfTables, BetweenSets) {
    struct Row {
        UNICONV_CID from, to;
        int factor;
    };
    for (const Row &row : {Row{1, -4, 2},
                           {CP1252, -4, 3},
                           {1, CP1252, 1},
                           {-4, 1, 1},
                           {CP1252, SJIS, 2},
                           {SJIS, -4, 3},
                           {-4, SJIS, 1},
                           {SJIS, SJIS, 1},
                           {-4, GB18030, 2},
                           {-4, CP930, 2}}) {
        int told = 0;
        EXPECT_EQ(uniconv_GetExpansion(row.from, row.to, &told), UNI_OK);
        EXPECT_EQ(told, row.factor) << row.from << " to " << row.to;
    }
}

} // namespace

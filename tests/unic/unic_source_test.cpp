// Substitutes of a handle that was told which set its text came from.
#include "support/environment.h"
#include "support/unicode_calls.h"

#include <dlxcomn/charconv.h>

namespace {

using support::Handle;

const support::Variable home("DALVEX", DLXCOMN_BUILD_DIR "/home");

constexpr UNICONV_CID LATIN = 1, DOS = 2, TAIWAN = 9, BIG5 = 34, HKSCS = 47, GB18030 = 48, EUC_JIS = 49, SHIFT_JIS = 50;
constexpr UNICONV_CID HOST_JAPAN = 930, MICROSOFT_BIG5 = 950, WINDOWS = 1252;

std::string substituted(UNICONV_CID source, UNICONV_CID destination, const std::u16string &text) {
    const Handle handle(destination);
    EXPECT_EQ(uniconv_SetSubstituteChar(handle.get(), 'n'), UNI_OK);
    EXPECT_EQ(uniconv_SetDBCSSubstituteChar(handle.get(), 'W' << 8 | 'W'), UNI_OK);
    EXPECT_EQ(uniconv_SetSource(handle.get(), source), UNI_OK);
    return handle.to(text).text;
}

TEST(UnicSource, WithoutACallColumnsTell) {
    const Handle handle(BIG5);
    EXPECT_EQ(handle.to(u"\u00E9\uAC00").text, "???");
}

TEST(UnicSource, OfSingleBytesIsAlwaysNarrow) {
    EXPECT_EQ(substituted(LATIN, BIG5, u"\u00E9"), "n");
    EXPECT_EQ(substituted(DOS, SHIFT_JIS, u"\u2551"), "n");
    EXPECT_EQ(substituted(0, SHIFT_JIS, u"\uFFFD"), "n");
    EXPECT_EQ(substituted(WINDOWS, SHIFT_JIS, u"\uAC00"), "n") << "which it lacks";
}

TEST(UnicSource, OfTwoBytesIsWideWhateverItsColumns) {
    EXPECT_EQ(substituted(SHIFT_JIS, MICROSOFT_BIG5, u"\u0451"), "WW") << "a letter that fills a column";
    EXPECT_EQ(substituted(SHIFT_JIS, MICROSOFT_BIG5, u"\uFF71"), "n") << "half-width katakana, a byte there";
    EXPECT_EQ(substituted(EUC_JIS, MICROSOFT_BIG5, u"\uFF71"), "WW") << "half-width katakana, two bytes there";
    EXPECT_EQ(substituted(EUC_JIS, MICROSOFT_BIG5, u"\u00E9"), "WW") << "three bytes there";
    EXPECT_EQ(substituted(TAIWAN, SHIFT_JIS, u"\U0002000B"), "WW") << "four bytes there";
    EXPECT_EQ(substituted(GB18030, SHIFT_JIS, u"\u00E9\uAC00\u0E01"), "WWWWWW") << "two bytes, and four by ranges";
}

TEST(UnicSource, WithStatesCountsTheCodeAlone) {
    EXPECT_EQ(substituted(HOST_JAPAN, BIG5, u"\uFF71\u0451"), "nWW");
    EXPECT_EQ(substituted(HOST_JAPAN, GB18030, u"\uFFFD"), "\x84\x31\xA4\x37");
    EXPECT_EQ(substituted(HOST_JAPAN, BIG5, u"\u7551"), "WW");
}

TEST(UnicSource, OfAPairIsWide) {
    EXPECT_EQ(substituted(HKSCS, SHIFT_JIS, u"\u00CA\u0304"), "WWWW") << "the second has no code but in the pair";
    EXPECT_EQ(substituted(HKSCS, SHIFT_JIS, u"\u0301"), "n") << "which it lacks";
}

TEST(UnicSource, AFaultIsNarrowButInUnicode) {
    EXPECT_EQ(substituted(SHIFT_JIS, MICROSOFT_BIG5, u"\uFFFD"), "n");
    EXPECT_EQ(substituted(GB18030, SHIFT_JIS, u"\uFFFD"), "n") << "though the set has a code for the sign";
    EXPECT_EQ(substituted(-4, SHIFT_JIS, u"\uFFFD"), "WW");
    EXPECT_EQ(substituted(-1, SHIFT_JIS, u"\uFFFD"), "WW");
}

TEST(UnicSource, OfUnicode) {
    EXPECT_EQ(substituted(-4, SHIFT_JIS, u"\u0080\u00E9\uAC00\U0001F600"), "WWWWWWWW");
    EXPECT_EQ(substituted(-1, SHIFT_JIS, u"\u00E9\uAC00\U0001F600"), "WWWWWW");
    EXPECT_EQ(substituted(-5, SHIFT_JIS, u"\u00E9\u00FF\u0100\U0001F600"), "nnWWWW");
    EXPECT_EQ(substituted(-1, HOST_JAPAN, u"\u0080"), "\x20") << "which it has";
}

TEST(UnicSource, TowardsSingleBytesIsAlwaysNarrow) {
    for (const UNICONV_CID source : {-5, -4, -1, SHIFT_JIS, GB18030})
        for (const UNICONV_CID destination : {0, LATIN, WINDOWS})
            EXPECT_EQ(substituted(source, destination, u"\u0451\uAC00\U0001F600"), "nnn") << source;
}

TEST(UnicSource, MayBeToldAnew) {
    const Handle handle(SHIFT_JIS);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(uniconv_SetSource(handle.get(), LATIN), UNI_OK);
        EXPECT_EQ(handle.to(u"\u00E9").text, "?");
        EXPECT_EQ(uniconv_SetSource(handle.get(), -4), UNI_OK);
        EXPECT_EQ(handle.to(u"\u00E9").text, "??");
    }
}

TEST(UnicSource, OfAnUnknownSetLeavesTheHandle) {
    const Handle handle(SHIFT_JIS);
    EXPECT_EQ(uniconv_SetSource(nullptr, LATIN), UNI_NOSET);
    EXPECT_EQ(uniconv_SetSource(handle.get(), -4), UNI_OK);
    for (const UNICONV_CID none : {-3, -2, 7, 8192})
        EXPECT_EQ(uniconv_SetSource(handle.get(), none), UNI_NOSET);
    EXPECT_EQ(handle.to(u"\u00E9").text, "??");
}

// ---- The code space -----------------------------------------------------------------------------------------------

// Calls visit(characters, length) for the codes of a set: all of up to three bytes, and some of four.
template <typename Visit>
void each_code(const Handle &set, bool states, const std::string &front, Visit visit) {
    for (int byte = 1; byte < 256; byte += front.size() < 3 ? 1 : 29) {
        const std::string code = front + static_cast<char>(byte);
        if (states && front.empty() && (byte == 0x0E || byte == 0x0F))
            continue;
        const support::ToUnits one = set.from(states && code.size() == 2 ? '\x0E' + code + '\x0F' : code);
        if (one.status == UNI_OK)
            visit(one.text, code.size());
        if (one.status == UNI_TRUNCATED || (states && front.empty() && byte > 0x40))
            each_code(set, states, code, visit);
    }
}

TEST(UnicSource, EveryCodeOfEverySetTellsItsWidth) {
    const Handle destinations[] = {Handle(BIG5), Handle(SHIFT_JIS), Handle(36)};
    for (const CSID_CSNAME &row : csid_name) {
        const UNICONV_CID cid = row.unilib_cid;
        if (cid <= 0)
            continue;
        int checked = 0, wrong = 0;
        for (const Handle &destination : destinations)
            EXPECT_EQ(uniconv_SetSource(destination.get(), cid), UNI_OK);
        const auto check = [&](const std::u16string &text, size_t length) {
            for (const Handle &destination : destinations) {
                const size_t characters = text.size() - (text.size() > 1 && (text[0] & 0xFC00) == 0xD800);
                const support::ToBytes told = destination.to(text);
                if (told.text.find_first_not_of('?') != std::string::npos || text == u"?")
                    continue;
                ++checked;
                if (told.text.size() != characters * (length > 1 ? 2 : 1) && ++wrong < 5)
                    ADD_FAILURE() << cid << " U+" << std::hex << static_cast<int>(text[0]) << " length " << length;
            }
        };
        const bool states = cid == 930 || cid == 933 || cid == 935 || cid == 937 || cid == 939 || cid == 5026 ||
                            cid == 5035 || (cid >= 3000 && cid <= 3003);
        each_code(Handle(cid), states, "", check);
        EXPECT_GT(checked, 20) << cid;
        EXPECT_EQ(wrong, 0) << cid;
    }
}

} // namespace

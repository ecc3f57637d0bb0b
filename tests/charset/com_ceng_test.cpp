// The main engine by its routes: which one a value takes, and all that it leaves behind.
#include "charset/engine_fixture.h"

#include "support/debug_output.h"
#include "support/null_calls.h"
#include "support/temp_home.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include <sys/mman.h>

namespace {

using namespace engine;
using support::ReturningAssertions;

using Engine = EngineTest;
using EngineDeathTest = EngineTest;

constexpr std::size_t VARCHAR_SIZE = sizeof(CS_VARCHAR);

// ---- The same set ---------------------------------------------------------------------------------------------------

TEST_F(Engine, TheSameCacheIsACopyOfAnyBytes) {
    const std::string bytes("\xFF\0\x80 abc\x8E", 8);
    for (const char *set : {"iso_1", "utf8", "sjis", "utf16", "ascii_7"}) {
        const Result result = convert(set, bytes, set, 10);
        expect_text(result, CS_SUCCEED, bytes);
        EXPECT_TRUE(result.untouched_from(8)) << set;
    }
}

TEST_F(Engine, TwoCachesOfOneSetAreACopy) {
    Locale twin(cache("eucjis")->locchardesc);
    const std::string bytes = "\xA4\xA2\xFF";
    expect_text(convert(text_format(locale("eucjis"), 3), bytes, text_format(&twin.record, 3), 3), CS_SUCCEED, bytes);
}

TEST_F(Engine, OddityACopyIsCutSilentlyAndInsideACharacter) {
    const Result result = convert("eucjis", "\xA4\xA2\xA4\xA4", "eucjis", 3);
    expect_text(result, CS_SUCCEED, "\xA4\xA2\xA4");
    expect_text(convert("iso_1", "abc", "iso_1", 0), CS_SUCCEED, "");
}

TEST_F(Engine, ACopyBetweenVariableCharactersMovesTheText) {
    const std::string source = prefixed("\xE4yz") + "never read";
    const Result result = convert(text_format(locale("iso_1"), 1, CS_VARCHAR_TYPE), source,
                                  text_format(locale("iso_1"), 1, CS_VARCHAR_TYPE), VARCHAR_SIZE);
    EXPECT_EQ(result.status, CS_SUCCEED);
    EXPECT_EQ(result.length, 3);
    EXPECT_EQ(result.room.substr(0, 5), prefixed("\xE4yz"));
    EXPECT_TRUE(result.untouched_from(5));
}

TEST_F(Engine, AVariableCharacterHoldsACopyOf256BytesWhateverItsDescriptorSays) {
    const std::string source(300, '\xE4');
    for (const std::size_t maxlength : {1u, 1000u}) {
        const Result result = convert(text_format(locale("iso_1"), 300), source,
                                      text_format(locale("iso_1"), maxlength, CS_VARCHAR_TYPE), VARCHAR_SIZE);
        EXPECT_EQ(result.status, CS_SUCCEED);
        EXPECT_EQ(result.length, 256);
        EXPECT_EQ(result.room, prefixed(source.substr(0, 256)));
    }
}

TEST_F(Engine, ACopyMayLieOnItsSource) {
    std::string text = "\xE4\xF6\xFC";
    CS_DATAFMT srcfmt = text_format(locale("iso_1"), 3), destfmt = text_format(locale("iso_1"), 2);
    CS_INT length = NO_LENGTH;
    EXPECT_EQ(comn_charset_convert(&context_, CS_LC_CTYPE, &srcfmt, text.data(), &destfmt, text.data(), &length),
              CS_SUCCEED);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(text, "\xE4\xF6\xFC");
}

TEST_F(Engine, NoTableIsNeededForTheSameSet) {
    BareSet unknown(99);
    Locale twin(unknown.get());
    expect_text(convert(text_format(&unknown.locale.record, 2), "\xE4\xF6", text_format(&twin.record, 2), 2),
                CS_SUCCEED, "\xE4\xF6");
}

// ---- Locale and category --------------------------------------------------------------------------------------------

TEST_F(Engine, EachCategoryHasItsOwnSet) {
    // What E4 becomes in the set that the destination has in a category.
    CS_LOCALE mixed = {};
    mixed.ctypeptr = cache("cp850");
    mixed.messageptr = cache("mac");
    mixed.monetaryptr = cache("roman8");
    mixed.numericptr = cache("utf8");
    mixed.timeptr = cache("cp1047");
    const std::pair<CS_INT, std::string> expected[] = {{CS_LC_CTYPE, "\x84"},
                                                       {CS_LC_MESSAGE, "\x8A"},
                                                       {CS_LC_MONETARY, "\xCC"},
                                                       {CS_LC_NUMERIC, "\xC3\xA4"},
                                                       {CS_LC_TIME, "\x43"}};
    for (const auto &[type, text] : expected) {
        SCOPED_TRACE(type);
        expect_text(convert(text_format(locale("iso_1"), 1), "\xE4", text_format(&mixed, 4), 4, type), CS_SUCCEED,
                    text);
        // The source is looked up in the same category.
        if (type != CS_LC_TIME) // 43 alone is taken for ASCII
            expect_text(convert(text_format(&mixed, text.size()), text, text_format(locale("iso_1"), 4), 4, type),
                        CS_SUCCEED, "\xE4");
    }
}

TEST_F(Engine, TheContextsLocaleStandsInForOneThatADescriptorLacks) {
    context_.ctxlocale = locale("iso_1");
    expect_text(convert(text_format(nullptr, 1), "\xE4", text_format(locale("cp850"), 1), 1), CS_SUCCEED, "\x84");
    expect_text(convert(text_format(locale("cp850"), 1), "\x84", text_format(nullptr, 1), 1), CS_SUCCEED, "\xE4");
    expect_text(convert(text_format(nullptr, 1), "\xE4", text_format(nullptr, 1), 1), CS_SUCCEED, "\xE4");
    // A descriptor's own comes first.
    expect_text(convert(text_format(locale("cp850"), 1), "\x84", text_format(locale("mac"), 1), 1), CS_SUCCEED, "\x8A");
}

TEST_F(EngineDeathTest, OtherCategoriesAreABrokenContract) {
    for (const CS_INT type : {0, 1, 7, 8, -1}) {
        const auto run = [&] {
            return convert(text_format(locale("iso_1"), 1), "a", text_format(locale("cp850"), 1), 1, type);
        };
        EXPECT_BOMB(run(), "com_ceng");
        const ReturningAssertions returning;
        const Result result = run();
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(result.status, CS_FAIL);
        EXPECT_TRUE(result.untouched_from(0));
    }
}

// ---- Conversions of the application ---------------------------------------------------------------------------------

TEST_F(Engine, AUserFunctionGetsTheUntouchedArgumentsAndItsStatusIsTold) {
    install("iso_1", "cp850", note_call);
    user_calls.clear();
    CS_DATAFMT srcfmt = text_format(locale("iso_1"), 7, CS_VARCHAR_TYPE);
    CS_DATAFMT destfmt = text_format(locale("cp850"), 3, CS_VARCHAR_TYPE);
    std::string source = prefixed("\xE4"), dest(VARCHAR_SIZE, '~');
    CS_INT length = NO_LENGTH;
    EXPECT_EQ(comn_charset_convert(&context_, CS_LC_CTYPE, &srcfmt, source.data(), &destfmt, dest.data(), &length),
              USER_STATUS);
    ASSERT_EQ(user_calls.size(), 1u);
    const UserCall &call = user_calls.front();
    EXPECT_EQ(call.context, &context_);
    EXPECT_EQ(call.srcfmt, &srcfmt);
    EXPECT_EQ(call.src, source.data());
    EXPECT_EQ(call.destfmt, &destfmt);
    EXPECT_EQ(call.dest, dest.data());
    EXPECT_EQ(call.destlen, &length);
    EXPECT_EQ(length, USER_LENGTH);
    EXPECT_EQ(dest, "user" + std::string(VARCHAR_SIZE - 4, '~')) << "and nothing else is stored";
    EXPECT_EQ(call.source.maxlength, 7);
    EXPECT_EQ(call.destination.maxlength, 3);
}

TEST_F(Engine, AUserFunctionComesBeforeAsciiAndBeforeUtf8) {
    install("iso_1", "cp850", note_call);
    install("iso_1", "utf8", note_call);
    user_calls.clear();
    expect_text(convert("iso_1", "abc", "cp850", 8), USER_STATUS, "user");
    expect_text(convert("iso_1", "abc", "utf8", 8), USER_STATUS, "user");
    expect_text(convert("iso_1", "\xE4", "utf8", 8), USER_STATUS, "user");
    EXPECT_EQ(user_calls.size(), 3u);
}

TEST_F(Engine, AUserFunctionIsForItsOwnDirectionAndPairAndContext) {
    install("iso_1", "cp850", note_call);
    user_calls.clear();
    expect_text(convert("cp850", "\x84", "iso_1", 8), CS_SUCCEED, "\xE4");
    expect_text(convert("iso_1", "\xE4", "cp437", 8), CS_SUCCEED, "\x84");
    expect_text(convert("iso_1", "\xE4", "iso_1", 8), CS_SUCCEED, "\xE4");
    CS_VOID *const list = std::exchange(context_.usercharconv, nullptr); // as another context
    expect_text(convert("iso_1", "\xE4", "cp850", 8), CS_SUCCEED, "\x84");
    context_.usercharconv = list;
    EXPECT_TRUE(user_calls.empty());
}

TEST_F(Engine, TheSameSetIsCopiedWhateverTheApplicationInstalled) {
    install("iso_1", "iso_1", note_call);
    user_calls.clear();
    expect_text(convert("iso_1", "\xE4", "iso_1", 8), CS_SUCCEED, "\xE4");
    EXPECT_TRUE(user_calls.empty());
}

TEST_F(Engine, AUserFunctionWorksBetweenSetsWithoutTables) {
    BareSet decmcs(6);
    CsUserAlgo conversion = {};
    conversion.from_oid = decmcs.get()->oid;
    conversion.to_oid = oid("iso_1");
    conversion.user_conv_func = note_call;
    context_.usercharconv = &conversion;
    expect_text(convert(text_format(&decmcs.locale.record, 1), "\xE4", text_format(locale("iso_1"), 8), 8), USER_STATUS,
                "user");
    context_.usercharconv = nullptr;
}

// ---- ASCII ----------------------------------------------------------------------------------------------------------

TEST_F(Engine, AsciiIsCopiedBetweenAnySets) {
    const std::string text("a\0~\x7F\x01", 5); // a NUL does not end it here
    BareSet unknown(99), decmcs(6);
    expect_text(convert("iso_1", text, "sjis", 5), CS_SUCCEED, text);
    expect_text(convert("utf8", text, "cp850", 5), CS_SUCCEED, text);
    expect_text(convert("iso_1", text, "utf8", 5), CS_SUCCEED, text);
    expect_text(convert(text_format(&unknown.locale.record, 5), text, text_format(&decmcs.locale.record, 5), 5),
                CS_SUCCEED, text);
}

TEST_F(Engine, OddityAsciiBytesAreCopiedWhateverTheyMeanInTheirSet) {
    expect_text(convert("cp037", "\x4B\x5C", "iso_1", 8), CS_SUCCEED, "\x4B\x5C"); // ".*" there
    expect_text(convert("iso_1", "AB", "cp037", 8), CS_SUCCEED, "AB");
    expect_text(convert("utf16", std::string("A\0B\0", 4), "iso_1", 8), CS_SUCCEED, std::string("A\0B\0", 4));
    expect_text(convert("cp930", "\x0E\x44\x4B\x0F", "utf8", 8), CS_SUCCEED, "\x0E\x44\x4B\x0F");
}

TEST_F(Engine, AsciiOfAndToVariableCharactersIsWhole) {
    const Result result = convert(text_format(locale("iso_1"), 99, CS_VARCHAR_TYPE), prefixed("abc"),
                                  text_format(locale("cp850"), 1, CS_VARCHAR_TYPE), VARCHAR_SIZE);
    EXPECT_EQ(result.status, CS_SUCCEED);
    EXPECT_EQ(result.length, 3);
    EXPECT_EQ(result.room.substr(0, 5), prefixed("abc"));
    EXPECT_TRUE(result.untouched_from(5));
    // Towards UTF-8 as well.
    EXPECT_EQ(convert(text_format(locale("iso_1"), 99, CS_VARCHAR_TYPE), prefixed("abc"),
                      text_format(locale("utf8"), 1, CS_VARCHAR_TYPE), VARCHAR_SIZE)
                  .room.substr(0, 5),
              prefixed("abc"));
}

TEST_F(Engine, AsciiThatDoesNotFitGoesOnToTheLibrary) {
    const Result result = convert("iso_1", "abcdef", "cp850", 4);
    expect_text(result, CS_ETRUNCATED, "abcd");
    expect_text(convert("iso_1", "abcdef", "utf8", 4), CS_ETRUNCATED, "abcd");
    // That it went there shows where the library has other codes for it, or none.
    expect_text(convert("iso_1", "ABCDEF", "cp037", 4), CS_ETRUNCATED, "\xC1\xC2\xC3\xC4");
    BareSet decmcs(6);
    const Result failed = convert(text_format(locale("iso_1"), 3), "abc", text_format(&decmcs.locale.record, 2), 2);
    EXPECT_EQ(failed.status, CS_FAIL);
    EXPECT_EQ(failed.length, 0);
    EXPECT_EQ(failed.room, "ab") << "what was copied stays";
}

TEST_F(Engine, WhatTheAsciiStepCopiedStaysWhereALaterStepFails) {
    BareSet decmcs(6);
    const Result failed = convert(text_format(&decmcs.locale.record, 4), "ab\xE4z", text_format(locale("iso_1"), 8), 8);
    EXPECT_EQ(failed.status, CS_FAIL);
    EXPECT_EQ(failed.length, 0);
    EXPECT_EQ(failed.room.substr(0, 3), "ab\xE4");
    EXPECT_TRUE(failed.untouched_from(3));
}

TEST_F(Engine, NoSourceIsNoText) {
    expect_text(convert("iso_1", "", "cp850", 3), CS_SUCCEED, "");
    expect_text(convert("iso_1", "", "cp850", 0), CS_SUCCEED, "");
    expect_text(convert("iso_1", "", "utf8", 0), CS_SUCCEED, "");
    const Result result = convert(text_format(locale("iso_1"), 5, CS_VARCHAR_TYPE), prefixed(""),
                                  text_format(locale("cp850"), 5, CS_VARCHAR_TYPE), VARCHAR_SIZE);
    EXPECT_EQ(result.status, CS_SUCCEED);
    EXPECT_EQ(result.room.substr(0, 2), prefixed(""));
    EXPECT_TRUE(result.untouched_from(2));
}

TEST_F(Engine, NoRoomIsACut) {
    for (const char *set : {"cp850", "utf8", "utf16", "sjis", "cp930", "rcsu", "ascii_8"})
        for (const char *text : {"abc", "\xE4"}) {
            SCOPED_TRACE(set);
            expect_text(convert("iso_1", text, set, 0), CS_ETRUNCATED, "");
        }
}

// ---- Through the tables ---------------------------------------------------------------------------------------------

struct Sample {
    const char *from;
    std::string text;
    const char *to;
    std::string expected;
};

TEST_F(Engine, WellKnownText) {
    const Sample samples[] = {
        {"iso_1", "Gr\xFC\xDF!", "cp850", "Gr\x81\xE1!"},
        {"cp850", "Gr\x81\xE1!", "iso_1", "Gr\xFC\xDF!"},
        {"cp1252", "\x80 100", "iso15", "\xA4 100"},
        {"iso_1", "Spa\xDF", "cp037", "\xE2\x97\x81\x59"},
        {"sjis", "\x93\xFA\x96\x7B", "eucjis", "\xC6\xFC\xCB\xDC"},
        {"eucjis", "\xC6\xFC\xCB\xDC", "sjis", "\x93\xFA\x96\x7B"},
        {"eucjis", "\xC6\xFC\xCB\xDC", "cp939", "\x0E\x45\x62\x45\x66\x0F"},
        {"cp939", "\x0E\x45\x62\x45\x66\x0F\xE9", "utf8", "\xE6\x97\xA5\xE6\x9C\xACZ"},
        {"utf8", "\xE4\xB8\xAD\xE6\x96\x87", "gb18030", "\xD6\xD0\xCE\xC4"},
        {"utf8", "\xE4\xB8\xAD\xE6\x96\x87", "big5", "\xA4\xA4\xA4\xE5"},
        {"utf8", "\xF0\x9F\x98\x80", "gb18030", "\x94\x39\xFC\x36"},
        {"gb18030", "\x94\x39\xFC\x36", "utf8", "\xF0\x9F\x98\x80"},
        {"utf8", "\xF0\x9F\x98\x80", "utf16", std::string("\x3D\xD8\x00\xDE", 4)},
        {"utf8", "\xD0\xAF", "koi8", "\xF1"},
        {"koi8", "\xF1", "iso88595", "\xCF"},
        {"eucksc", "\xC7\xD1", "utf8", "\xED\x95\x9C"},
        {"utf8", "\xED\x95\x9C", "cp933", "\x0E\xD0\x65\x0F"},
    };
    for (const Sample &sample : samples) {
        SCOPED_TRACE(std::string(sample.from) + " to " + sample.to);
        expect_text(convert(sample.from, sample.text, sample.to, 64), CS_SUCCEED, sample.expected);
    }
}

TEST_F(Engine, NothingBehindTheResultIsWritten) {
    EXPECT_TRUE(convert("iso_1", "\xE4", "cp850", 8).untouched_from(1));
    EXPECT_TRUE(convert("iso_1", "\xE4", "utf8", 8).untouched_from(2));
    EXPECT_TRUE(convert("iso_1", "\xE4", "utf16", 8).untouched_from(2));
    EXPECT_TRUE(convert("sjis", "\x82\xA0", "eucjis", 8).untouched_from(2));
    // The ASCII step left the first byte that it could not take; the result may be shorter.
    EXPECT_TRUE(convert("eucjis", "ab\x8E\xB1", "sjis", 8).untouched_from(3));
}

TEST_F(Engine, ANulEndsTheTextOnItsWayThroughTheTables) {
    expect_text(convert("iso_1", std::string("\xE4\0b", 3), "cp850", 8), CS_SUCCEED, "\x84");
    expect_text(convert("iso_1", std::string("\0\xE4", 2), "cp850", 8), CS_SUCCEED, "");
    expect_text(convert("iso_1", std::string("\xE4\0b", 3), "utf8", 8), CS_SUCCEED, "\xC3\xA4");
    expect_text(convert("utf8", std::string("\xC3\xA4\0b", 4), "cp850", 8), CS_SUCCEED, "\x84");
    expect_text(convert("sjis", std::string("\x82\xA0\0b", 4), "eucjis", 8), CS_SUCCEED, "\xA4\xA2");
    // Of UTF-16 a unit of zero does; half of one is no end.
    expect_text(convert("utf16", std::string("\xE4\0\0\0b\0", 6), "cp850", 8), CS_SUCCEED, "\x84");
    expect_text(convert("utf16", std::string("\xE4\0\0\1z\0", 6), "utf8", 8), CS_SUCCEED, "\xC3\xA4\xC4\x80z");
}

TEST_F(Engine, AResultMayLieOnItsSource) {
    const auto in_place = [&](const char *from, std::string text, std::size_t length, const char *to) {
        CS_DATAFMT srcfmt = text_format(locale(from), length), destfmt = text_format(locale(to), text.size());
        CS_INT count = NO_LENGTH;
        EXPECT_EQ(comn_charset_convert(&context_, CS_LC_CTYPE, &srcfmt, text.data(), &destfmt, text.data(), &count),
                  CS_SUCCEED);
        return text.substr(0, static_cast<std::size_t>(count));
    };
    EXPECT_EQ(in_place("iso_1", "a\xE4\xF6\xFC", 4, "cp850"), "a\x84\x94\x81");
    EXPECT_EQ(in_place("iso_1", "a\xE4\xF6\xFC~~~", 4, "utf8"), "a\xC3\xA4\xC3\xB6\xC3\xBC");
    EXPECT_EQ(in_place("utf8", "a\xC3\xA4\xC3\xB6", 5, "iso_1"), "a\xE4\xF6");
    EXPECT_EQ(in_place("sjis", "a\x82\xA0\xB1~", 4, "eucjis"), "a\xA4\xA2\x8E\xB1");
    EXPECT_EQ(in_place("cp037", "\xC1\xC2\xC3", 3, "iso_1"), "ABC");
}

TEST_F(Engine, LongTextInPlace) {
    for (const std::size_t length : {300u, 2000u, 70000u}) {
        std::string text(length, '\xE4');
        CS_DATAFMT srcfmt = text_format(locale("iso_1"), length), destfmt = text_format(locale("cp850"), length);
        CS_INT count = NO_LENGTH;
        EXPECT_EQ(comn_charset_convert(&context_, CS_LC_CTYPE, &srcfmt, text.data(), &destfmt, text.data(), &count),
                  CS_SUCCEED);
        EXPECT_EQ(count, static_cast<CS_INT>(length));
        EXPECT_EQ(text, std::string(length, '\x84'));
    }
}

TEST_F(Engine, EveryDatatypeButTheVariableCharacterIsPlainText) {
    for (CS_INT datatype = 0; datatype < CS_CONV_DIM; ++datatype) {
        if (datatype == CS_VARCHAR_TYPE)
            continue;
        SCOPED_TRACE(datatype);
        expect_text(convert(text_format(locale("iso_1"), 3, datatype), "\xE4\xF6\xFC",
                            text_format(locale("cp850"), 4, datatype), 4),
                    CS_SUCCEED, "\x84\x94\x81");
        expect_text(convert(text_format(locale("iso_1"), 3, datatype), "\xE4\xF6\xFC",
                            text_format(locale("iso_1"), 2, datatype), 2),
                    CS_SUCCEED, "\xE4\xF6");
        expect_text(
            convert(text_format(locale("iso_1"), 1, datatype), "\xE4", text_format(locale("utf8"), 2, datatype), 2),
            CS_SUCCEED, "\xC3\xA4");
    }
}

TEST_F(Engine, RecordsOfConversionsByATableAreNotLookedAt) {
    CsConvConfig nonsense = {};
    nonsense.conv_method = 77;
    nonsense.nextdest = &nonsense; // whoever walks it never comes back
    BareSet iso_1(1), cp850(2);
    iso_1.get()->conv_config = cp850.get()->conv_config = &nonsense;
    expect_text(convert(text_format(&iso_1.locale.record, 1), "\xE4", text_format(&cp850.locale.record, 1), 1),
                CS_SUCCEED, "\x84");
    expect_text(to_utf8(&iso_1.locale.cache, "\xE4", 2), CS_SUCCEED, "\xC3\xA4");
    expect_text(from_utf8("\xC3\xA4", &cp850.locale.cache, 2), CS_SUCCEED, "\x84");
}

// ---- Cuts -----------------------------------------------------------------------------------------------------------

TEST_F(Engine, ACutFillsTheRoomBehindItsLastWholeCharacterWithNuls) {
    // The count is the capacity, and all of it is stored.
    expect_text(convert("iso_1", "\xE4\xF6\xFC", "cp850", 2), CS_ETRUNCATED, "\x84\x94");
    expect_text(convert("eucjis", "\xA4\xA2\xA4\xA4", "sjis", 3), CS_ETRUNCATED, std::string("\x82\xA0\0", 3));
    expect_text(convert("eucjis", "\xA4\xA2\xA4\xA4", "sjis", 1), CS_ETRUNCATED, std::string("\0", 1));
    expect_text(convert("utf8", "a\xF0\x9F\x98\x80", "gb18030", 4), CS_ETRUNCATED, std::string("a\0\0\0", 4));
    expect_text(convert("iso_1", "\xE4\xF6", "utf8", 3), CS_ETRUNCATED, std::string("\xC3\xA4\0", 3));
    expect_text(convert("iso_1", "\xE4\xF6", "utf16", 3), CS_ETRUNCATED, std::string("\xE4\0\0", 3));
    expect_text(convert("utf8", "\xF0\x9F\x98\x80", "utf16", 3), CS_ETRUNCATED, std::string("\0\0\0", 3));
    // Two states: there is room for the way back to the first.
    expect_text(convert("eucjis", "\xC6\xFC\xCB\xDC", "cp939", 5), CS_ETRUNCATED, std::string("\x0E\x45\x62\x0F\0", 5));
    expect_text(convert("eucjis", "\xC6\xFC\xCB\xDC", "cp939", 3), CS_ETRUNCATED, std::string(3, '\0'));
}

TEST_F(Engine, ACutWithACharacterThatWasReplacedIsACut) {
    expect_text(convert("cp1252", "\x80\x80\x80", "iso_1", 2), CS_ETRUNCATED, "??");
}

TEST_F(Engine, EveryRoomOfAText) {
    const std::string source = "a\xA4\xA2z\x8E\xB1\xA4\xA4";
    const std::string whole = "a\x82\xA0z\xB1\x82\xA2";
    const std::size_t ends[] = {0, 1, 3, 4, 5, 7};
    for (std::size_t room = 0; room < 12; ++room) {
        std::size_t end = 0;
        for (const std::size_t each : ends)
            end = each <= room ? each : end;
        const Result result = convert("eucjis", source, "sjis", room);
        if (room >= whole.size()) {
            expect_text(result, CS_SUCCEED, whole);
            EXPECT_TRUE(result.untouched_from(8)) << room; // a byte of the ASCII step's at most lies behind
        } else {
            expect_text(result, CS_ETRUNCATED, whole.substr(0, end) + std::string(room - end, '\0'));
        }
    }
}

// A room without limit, as some callers tell it, costs no more than its text takes.
TEST_F(Engine, TheGreatestRoomThereIs) {
    constexpr CS_INT ROOM = INT32_MAX;
    void *const memory =
        mmap(nullptr, ROOM, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto *const dest = static_cast<char *>(memory);
    for (const auto &[from, text, to, expected] :
         {Sample{"iso_1", "\xE4\xF6", "utf8", "\xC3\xA4\xC3\xB6"}, Sample{"iso_1", "\xE4\xF6", "cp850", "\x84\x94"},
          Sample{"eucjis", "\xC6\xFC", "cp939", "\x0E\x45\x62\x0F"},
          Sample{"cp939", "\x0E\x45\x62\x0F\xE9", "utf8", "\xE6\x97\xA5Z"},
          Sample{"utf8", "\xE6\x97\xA5", "cp939", "\x0E\x45\x62\x0F"},
          Sample{"utf8", "\xE6\x97\xA5", "sjis", "\x93\xFA"}, Sample{"iso_1", "plain", "utf8", "plain"},
          Sample{"iso_1", "\xE4", "iso_1", "\xE4"}}) {
        SCOPED_TRACE(std::string(from) + " to " + to);
        std::string source = text;
        CS_DATAFMT srcfmt = text_format(locale(from), source.size()), destfmt = text_format(locale(to), ROOM);
        CS_INT length = NO_LENGTH;
        EXPECT_EQ(comn_charset_convert(&context_, CS_LC_CTYPE, &srcfmt, source.data(), &destfmt, dest, &length),
                  CS_SUCCEED);
        EXPECT_EQ(std::string(dest, static_cast<std::size_t>(std::max(length, 0))), expected);
        if (to == std::string("utf8")) {
            EXPECT_EQ(comn__convt_to_utf8(&context_, 0, &srcfmt, cache(from), source.data(), dest, ROOM, &length),
                      CS_SUCCEED);
            EXPECT_EQ(std::string(dest, static_cast<std::size_t>(std::max(length, 0))), expected);
        }
    }
    munmap(memory, ROOM);
}

// ---- Source that ends inside a character ----------------------------------------------------------------------------

TEST_F(Engine, ASourceThatEndsInsideACharacterIsACutBehindTwoUnits) {
    expect_text(convert("eucjis", "\xA4\xA2\xA4\xA4\xA4", "sjis", 8), CS_ETRUNCATED, "\x82\xA0\x82\xA2");
    expect_text(convert("sjis", "a\x82\xA0\x82", "eucjis", 8), CS_ETRUNCATED, "a\xA4\xA2");
    expect_text(convert("utf8", "a\xC3\xA4\xC3", "cp850", 8), CS_ETRUNCATED, "a\x84");
    expect_text(convert("gb18030", "\xD6\xD0\xCE\xC4\x94\x39", "big5", 8), CS_ETRUNCATED, "\xA4\xA4\xA4\xE5");
    // A cut of its own keeps the whole room.
    expect_text(convert("eucjis", "\xA4\xA2\xA4\xA4\xA4", "sjis", 3), CS_ETRUNCATED, std::string("\x82\xA0\0", 3));
}

TEST_F(Engine, ASourceThatEndsInsideItsFirstOrSecondCharacterFails) {
    for (const std::string text : {"\xA4", "\xA4\xA2\xA4", "\x8F\xB0", "a\xA4"}) {
        const Result result = convert("eucjis", text, "sjis", 8);
        EXPECT_EQ(result.status, CS_FAIL);
        EXPECT_EQ(result.length, 0);
    }
    // A pair of units is two of them.
    expect_text(convert("utf8", "\xF0\x9F\x98\x80\xC3", "gb18030", 8), CS_ETRUNCATED, "\x94\x39\xFC\x36");
}

TEST_F(Engine, ASourceThatEndsInsideACharacterFailsTowardsUtf8) {
    for (const std::string text : {"\xA4\xA2\xA4\xA4\xA4", "abc\xA4"}) {
        const Result result = convert("eucjis", text, "utf8", 32);
        EXPECT_EQ(result.status, CS_FAIL);
        EXPECT_EQ(result.length, 0);
    }
}

// ---- Characters without a partner -----------------------------------------------------------------------------------

TEST_F(Engine, ACharacterWithoutAPartnerIsAQuestionMarkInASetOfSingleBytes) {
    expect_text(convert("cp1252", "a\x80z", "iso_1", 8), CS_SUCCEED, "a?z");
    expect_text(convert("eucjis", "a\xA4\xA2z", "iso_1", 8), CS_SUCCEED, "a?z");
    expect_text(convert("utf8", "\xF0\x9F\x98\x80", "iso_1", 8), CS_SUCCEED, "?");
    expect_text(convert("utf8", "a\xC3\xA4z", "ascii_8", 8), CS_SUCCEED, "a?z");
    // Also in one that writes some characters as two codes, a letter and a mark.
    expect_text(convert("utf8", "\xE6\x97\xA5\xE1\xBA\xA5", "cp1258", 8), CS_SUCCEED, "?\xE2\xEC");
    expect_text(convert("eucjis", "a\xC6\xFCz", "cp1258", 8), CS_SUCCEED, "a?z");
    expect_text(from_utf8("\xE6\x97\xA5", cache("cp1255"), 8), CS_SUCCEED, "?");
    expect_text(convert("gb18030", "\x94\x39\xFC\x36", "koi8", 8), CS_SUCCEED, "?");
    expect_text(convert("utf8", "\xE4\xB8\xAD", "cp037", 8), CS_SUCCEED, "?"); // the code, whatever it means there
}

TEST_F(Engine, ACharacterOfOneByteIsOneQuestionMarkInASetOfWiderOnes) {
    for (const char *set : {"sjis", "eucjis", "deckanji", "big5", "eucksc", "eucgb"}) {
        SCOPED_TRACE(set);
        expect_text(convert("tis620", "a\xA1z", set, 8), CS_SUCCEED, "a?z");
        expect_text(convert("sjis", "\xB1z", "big5", 8), CS_SUCCEED, "?z"); // katakana of half a width
    }
}

TEST_F(Engine, ACharacterOfTwoBytesAndMoreIsTwoQuestionMarksInASetOfWiderOnes) {
    expect_text(convert("utf8", "a\xC5\xBDz", "sjis", 8), CS_SUCCEED, "a??z"); // a Z with a caron
    expect_text(convert("utf8", "a\xE2\x82\xACz", "eucgb", 8), CS_SUCCEED, "a??z");
    expect_text(convert("utf8", "a\xF0\x9F\x98\x80z", "big5", 8), CS_SUCCEED, "a??z");
    expect_text(convert("eucksc", "a\xC7\xD1z", "sjis", 8), CS_SUCCEED, "a??z");
    expect_text(convert("gb18030", "a\x94\x39\xFC\x36z", "eucjis", 8), CS_SUCCEED, "a??z");
    expect_text(convert("utf16", std::string("\xA7\0\x7D\x01z\0", 6), "sjis", 8), CS_SUCCEED, "\x81\x98??z");
    // A set of two widths has both.
    expect_text(convert("eucjis", "\x8E\xB1", "big5", 8), CS_SUCCEED, "??");
    expect_text(convert("sjis", "\xB1", "big5", 8), CS_SUCCEED, "?");
    expect_text(convert("sjis", "\xB1\x82\xA0", "eucksc", 8), CS_SUCCEED, "?\xAA\xA2");
}

TEST_F(Engine, QuestionMarksThatDoNotFitAreCutWhole) {
    expect_text(convert("utf8", "a\xC5\xBDz", "sjis", 2), CS_ETRUNCATED, std::string("a\0", 2));
    expect_text(convert("utf8", "a\xC5\xBDz", "sjis", 3), CS_ETRUNCATED, "a??");
}

TEST_F(Engine, BytesThatAreNoCharacterBecomeTheSubstituteWithoutAWord) {
    expect_text(convert("iso88593", "a\xA5z", "cp850", 8), CS_SUCCEED, "a?z");
    expect_text(convert("iso88593", "a\xA5z", "sjis", 8), CS_SUCCEED, "a?z");
    expect_text(convert("iso88593", "a\xA5z", "utf8", 8), CS_SUCCEED, "a\xEF\xBF\xBDz");
    expect_text(convert("ascii_8", "a\xA5z", "utf8", 8), CS_SUCCEED, "a\xEF\xBF\xBDz");
    expect_text(convert("eucjis", "a\xA9\xA1z", "sjis", 8), CS_SUCCEED, "a?z"); // one for each fault
    expect_text(convert("eucjis", "a\xA9\xA1z", "iso_1", 8), CS_SUCCEED, "a?z");
}

// ---- Variable characters through the tables -------------------------------------------------------------------------

TEST_F(Engine, OddityAVariableCharacterLosesItsFirstTwoBytesThroughTheTables) {
    const Result result = convert(text_format(locale("iso_1"), 4), "\xE4\xF6\xFC!",
                                  text_format(locale("cp850"), 0, CS_VARCHAR_TYPE), VARCHAR_SIZE);
    EXPECT_EQ(result.status, CS_SUCCEED);
    EXPECT_EQ(result.length, 4);
    EXPECT_EQ(result.room.substr(0, 4), prefixed(4, "\x81!"));
    EXPECT_TRUE(result.untouched_from(4));
}

TEST_F(Engine, OddityAVariableCharacterOfOneByteIsItsLengthAlone) {
    const Result result = convert(text_format(locale("iso_1"), 1), "\xE4",
                                  text_format(locale("cp850"), 9, CS_VARCHAR_TYPE), VARCHAR_SIZE);
    EXPECT_EQ(result.status, CS_SUCCEED);
    EXPECT_EQ(result.length, 1);
    EXPECT_EQ(result.room.substr(0, 3), prefixed(1, "\xE4")) << "the byte of the ASCII step's lies behind";
    EXPECT_TRUE(result.untouched_from(3));
}

TEST_F(Engine, AVariableCharacterHolds256BytesThroughTheTables) {
    const std::string source(300, '\xE4');
    const Result result = convert(text_format(locale("iso_1"), 300), source,
                                  text_format(locale("cp850"), 1, CS_VARCHAR_TYPE), VARCHAR_SIZE);
    EXPECT_EQ(result.status, CS_ETRUNCATED);
    EXPECT_EQ(result.length, 256);
    EXPECT_EQ(result.room.substr(0, 256), prefixed(256, std::string(254, '\x84')));
    EXPECT_TRUE(result.untouched_from(256));
}

TEST_F(Engine, AVariableSourceIsReadBehindItsLength) {
    expect_text(convert(text_format(locale("iso_1"), 99, CS_VARCHAR_TYPE), prefixed("a\xE4z") + "d",
                        text_format(locale("cp850"), 9), 9),
                CS_SUCCEED, "a\x84z");
}

TEST_F(Engine, OddityTowardsUtf8TheLengthOfAVariableSourceIsReadAsText) {
    // 0x012C is 300, and the two bytes "," and 0x01. As many bytes are read as the descriptor says.
    const std::string text = "\xE4" + std::string(299, 'x');
    const Result result = convert(text_format(locale("iso_1"), 5, CS_VARCHAR_TYPE), prefixed(text),
                                  text_format(locale("utf8"), 400), 400);
    EXPECT_EQ(result.status, CS_SUCCEED);
    EXPECT_EQ(result.text(), ",\x01\xC3\xA4xx");
    // A length below 256 has a NUL in it, which ends the text.
    expect_text(convert(text_format(locale("iso_1"), 5, CS_VARCHAR_TYPE), prefixed("\xE4xx"),
                        text_format(locale("utf8"), 400), 400),
                CS_SUCCEED, "\x03");
}

TEST_F(Engine, OddityTowardsUtf8AVariableDestinationGetsTextInThePlaceOfItsLength) {
    const Result result = convert(text_format(locale("iso_1"), 3), "a\xE4z",
                                  text_format(locale("utf8"), 0, CS_VARCHAR_TYPE), VARCHAR_SIZE);
    EXPECT_EQ(result.status, CS_SUCCEED);
    EXPECT_EQ(result.length, 4);
    EXPECT_EQ(result.room.substr(0, 4), "a\xC3\xA4z");
    EXPECT_TRUE(result.untouched_from(4));
    // And has room for 256 bytes.
    const Result cut = convert(text_format(locale("iso_1"), 200), std::string(200, '\xE4'),
                               text_format(locale("utf8"), 0, CS_VARCHAR_TYPE), VARCHAR_SIZE);
    EXPECT_EQ(cut.status, CS_ETRUNCATED);
    EXPECT_EQ(cut.length, 256);
    EXPECT_TRUE(cut.untouched_from(256));
}

TEST_F(EngineDeathTest, LengthsBelowZeroAreABrokenContract) {
    const auto source = [&] {
        return convert(text_format(locale("iso_1"), static_cast<std::size_t>(-1)), "a", text_format(locale("cp850"), 4),
                       4);
    };
    const auto prefix = [&] {
        return convert(text_format(locale("iso_1"), 4, CS_VARCHAR_TYPE), prefixed(-1, "a"),
                       text_format(locale("cp850"), 4), 4);
    };
    const auto room = [&] {
        return convert(text_format(locale("iso_1"), 1), "a", text_format(locale("cp850"), static_cast<std::size_t>(-1)),
                       4);
    };
    EXPECT_BOMB(source(), "com_ceng");
    EXPECT_BOMB(prefix(), "com_ceng");
    EXPECT_BOMB(room(), "com_ceng");
    const ReturningAssertions returning;
    for (const Result &result : {source(), prefix(), room()}) {
        EXPECT_EQ(result.status, CS_FAIL);
        EXPECT_TRUE(result.untouched_from(0));
    }
    EXPECT_EQ(returning.count(), 3);
}

// ---- Sets without tables --------------------------------------------------------------------------------------------

TEST_F(Engine, SetsThatTheLibraryDoesNotKnowFail) {
    BareSet unknown(99), decmcs(6);
    for (BareSet *bare : {&unknown, &decmcs}) {
        const auto fails = [](const Result &result) {
            EXPECT_EQ(result.status, CS_FAIL);
            EXPECT_EQ(result.length, 0);
        };
        CS_LOCALE *const other = &bare->locale.record;
        fails(convert(text_format(other, 1), "\xE4", text_format(locale("iso_1"), 4), 4));
        fails(convert(text_format(locale("iso_1"), 1), "\xE4", text_format(other, 4), 4));
        fails(convert(text_format(other, 1), "\xE4", text_format(locale("utf8"), 4), 4));
        fails(convert(text_format(locale("utf8"), 2), "\xC3\xA4", text_format(other, 4), 4));
        fails(to_utf8(&bare->locale.cache, "\xE4", 4));
        fails(from_utf8("\xC3\xA4", &bare->locale.cache, 4));
        fails(from_utf8("a", &bare->locale.cache, 4));
    }
}

// Sets that nothing else here opens: a table is looked for until it was found once.
TEST_F(Engine, ATableThatIsMissingOrDamagedFailsUntilItIsThere) {
    BareSet cp869(72), cp424(85);
    const support::TempHome home;
    for (BareSet *bare : {&cp869, &cp424})
        for (const char *content : {"", "nothing of the kind", "DLXUCT\r\n"}) {
            if (*content != '\0') {
                home.write("charsets/unicode/869.uct", content);
                home.write("charsets/unicode/424.uct", content);
            }
            CS_LOCALE *const other = &bare->locale.record;
            for (const Result &result :
                 {convert(text_format(other, 1), "\xE4", text_format(locale("iso_1"), 4), 4),
                  convert(text_format(locale("iso_1"), 1), "\xE4", text_format(other, 4), 4),
                  to_utf8(&bare->locale.cache, "\xE4", 4), from_utf8("\xC3\xA4", &bare->locale.cache, 4)}) {
                EXPECT_EQ(result.status, CS_FAIL);
                EXPECT_EQ(result.length, 0);
            }
        }
    // A table of another set, and one that is cut.
    const std::string tables = DLXCOMN_BUILD_DIR "/home/charsets/unicode/";
    const std::string table = support::content_of_file(tables + "869.uct");
    ASSERT_GT(table.size(), 100u);
    home.write("charsets/unicode/424.uct", table);
    home.write("charsets/unicode/869.uct", table.substr(0, table.size() - 1));
    EXPECT_EQ(to_utf8(&cp424.locale.cache, "\xE4", 4).status, CS_FAIL);
    EXPECT_EQ(to_utf8(&cp869.locale.cache, "\xE4", 4).status, CS_FAIL);
    home.write("charsets/unicode/869.uct", table);
    expect_text(to_utf8(&cp869.locale.cache, "\xE4", 4), CS_SUCCEED, "\xCE\xBA"); // a kappa
}

TEST_F(Engine, WithoutAHomeATableCannotBeFound) {
    BareSet cp775(37);
    const support::Variable home("DALVEX", "");
    EXPECT_EQ(to_utf8(&cp775.locale.cache, "\xE4", 4).status, CS_FAIL);
    EXPECT_EQ(from_utf8("\xC3\xA4", &cp775.locale.cache, 4).status, CS_FAIL);
}

// ---- Traces ---------------------------------------------------------------------------------------------------------

TEST_F(Engine, FailuresAndCutsAreTracedOnceAndOrdinaryAnswersAreNot) {
    BareSet decmcs(6);
    locale("cp850"), locale("utf8"), locale("iso_1"); // loaded before
    support::DebugOutput output;
    const auto traced = [&](const std::function<void()> &call) {
        com_errset(COM_TRACE_ERRORS);
        call();
        com_errset(COM_TRACE_OFF);
        const std::string text = output.take();
        EXPECT_TRUE(text.empty() || text.find("com_ceng.cpp") != std::string::npos) << text;
        return std::ranges::count(text, '\n');
    };
    EXPECT_EQ(traced([&] { convert("iso_1", "a", "iso_1", 0); }), 0) << "a silent cut";
    EXPECT_EQ(traced([&] { convert("iso_1", "abc", "cp850", 3); }), 0);
    EXPECT_EQ(traced([&] { convert("iso_1", "\xE4", "cp850", 3); }), 0) << "no user function, and no ASCII";
    EXPECT_EQ(traced([&] { convert("iso_1", "\xE4", "utf8", 3); }), 0);
    EXPECT_EQ(traced([&] { from_utf8("\xC3\xA4", cache("cp850"), 3); }), 0);
    EXPECT_EQ(traced([&] { convert("iso_1", "\xE4\xE4", "cp850", 1); }), 1);
    EXPECT_EQ(traced([&] { convert("iso_1", "\xE4\xE4", "utf8", 1); }), 1);
    EXPECT_EQ(traced([&] { from_utf8("\xC3\xA4", cache("cp850"), 0); }), 1);
    EXPECT_EQ(traced([&] { from_utf8("\xC3", cache("cp850"), 3); }), 1);
    EXPECT_EQ(traced([&] { to_utf8(&decmcs.locale.cache, "\xE4", 3); }), 1);
    EXPECT_EQ(
        traced([&] { convert(text_format(&decmcs.locale.record, 1), "\xE4", text_format(locale("iso_1"), 3), 3); }), 1);
}

// ---- Null pointers --------------------------------------------------------------------------------------------------

class EngineNullDeathTest : public EngineTest {
protected:
    EngineNullDeathTest() {
        srcfmt_ = text_format(locale("iso_1"), 1);
        destfmt_ = text_format(locale("cp850"), 4);
        const auto add = [&](const char *name, std::function<long()> run) { calls_.add(name, run, CS_FAIL); };
        const CS_INT type = CS_LC_CTYPE;
        add("no context",
            [=, this] { return comn_charset_convert(nullptr, type, &srcfmt_, src_, &destfmt_, dest_, &length_); });
        add("no source format",
            [=, this] { return comn_charset_convert(&context_, type, nullptr, src_, &destfmt_, dest_, &length_); });
        add("no source",
            [=, this] { return comn_charset_convert(&context_, type, &srcfmt_, nullptr, &destfmt_, dest_, &length_); });
        add("no destination format",
            [=, this] { return comn_charset_convert(&context_, type, &srcfmt_, src_, nullptr, dest_, &length_); });
        add("no destination",
            [=, this] { return comn_charset_convert(&context_, type, &srcfmt_, src_, &destfmt_, nullptr, &length_); });
        add("no length",
            [=, this] { return comn_charset_convert(&context_, type, &srcfmt_, src_, &destfmt_, dest_, nullptr); });
        add("no globals", [=, this] {
            CS_CONTEXT bare = {};
            return comn_charset_convert(&bare, type, &srcfmt_, src_, &destfmt_, dest_, &length_);
        });
        add("no locale of the source", [=, this] {
            CS_DATAFMT bare = text_format(nullptr, 1);
            return comn_charset_convert(&context_, type, &bare, src_, &destfmt_, dest_, &length_);
        });
        add("no locale of the destination", [=, this] {
            CS_DATAFMT bare = text_format(nullptr, 1);
            return comn_charset_convert(&context_, type, &srcfmt_, src_, &bare, dest_, &length_);
        });
        add("no category", [=, this] {
            CS_LOCALE empty = {};
            CS_DATAFMT bare = text_format(&empty, 1);
            return comn_charset_convert(&context_, type, &bare, src_, &destfmt_, dest_, &length_);
        });
        add("no set", [=, this] {
            Locale empty(nullptr);
            CS_DATAFMT bare = text_format(&empty.record, 1);
            return comn_charset_convert(&context_, type, &srcfmt_, src_, &bare, dest_, &length_);
        });
        add("no attributes", [=, this] {
            CsCharDesc empty = {};
            Locale other(&empty);
            CS_DATAFMT bare = text_format(&other.record, 1);
            return comn_charset_convert(&context_, type, &bare, src_, &destfmt_, dest_, &length_);
        });
    }

    support::NullCalls calls_;
    CS_DATAFMT srcfmt_, destfmt_;
    char src_[1] = {'\xE4'}, dest_[4] = {'~', '~', '~', '~'};
    CS_INT length_ = NO_LENGTH;
};

TEST_F(EngineNullDeathTest, NullPointersAreReported) { calls_.expect_reports("com_ceng"); }

TEST_F(EngineNullDeathTest, NothingIsWrittenWhereAssertionsReturn) {
    calls_.expect_answers([] {},
                          [&] {
                              EXPECT_EQ(length_, NO_LENGTH);
                              EXPECT_EQ(std::string(dest_, 4), "~~~~");
                          });
}

} // namespace

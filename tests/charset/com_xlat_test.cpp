// Values through the older matrix: every pair of sets, the operands' kinds, and each status.
#include "support/assertions.h"
#include "support/convert.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using support::format_of;
using support::ReturningAssertions;

constexpr CS_INT SETS[] = {0, 1, 2, 3, 4, 5, 140, 141, 142, 255};
constexpr int OTHER_SET = 60; // one that the matrix does not have

// A locale whose text is in a set of the given number.
class Locale {
public:
    explicit Locale(int csid) {
        attributes_.cs_id = static_cast<CS_BYTE>(csid);
        description_.char_attrib = &attributes_;
        cache_.locchardesc = &description_;
        locale_.ctypeptr = &cache_;
    }
    Locale(const Locale &) = delete;
    Locale &operator=(const Locale &) = delete;
    CS_LOCALE *get() { return &locale_; }

    CHAR_ATTRIB attributes_ = {};
    CsCharDesc description_ = {};
    CsLocCache cache_ = {};
    CS_LOCALE locale_ = {};
};

constexpr CS_INT UNTOUCHED = -77777;

struct Outcome {
    CS_RETCODE status = 12345;
    CS_INT srcused = UNTOUCHED;
    CS_INT destused = UNTOUCHED;
    std::string dest; // all bytes
};

class Xlate : public testing::Test {
protected:
    CS_DATAFMT format(CS_LOCALE *locale, CS_INT maxlength, CS_INT datatype = CS_CHAR_TYPE) {
        CS_DATAFMT result = format_of(datatype, maxlength);
        result.locale = locale;
        return result;
    }

    // The destination has 300 bytes, most of which are not its own.
    Outcome xlate(CS_DATAFMT srcfmt, std::string source, CS_DATAFMT destfmt) {
        Outcome outcome;
        outcome.dest.assign(300, '~');
        outcome.status = com_intl_xlate(&context_, &srcfmt, source.data(), &destfmt, outcome.dest.data(),
                                        &outcome.srcused, &outcome.destused);
        return outcome;
    }

    Outcome xlate(int from, const std::string &text, int to, CS_INT room) {
        Locale source(from), dest(to);
        return xlate(format(source.get(), static_cast<CS_INT>(text.size())), text, format(dest.get(), room));
    }

    CS_INT type(CS_DATAFMT srcfmt, CS_DATAFMT destfmt) {
        CS_INT result = UNTOUCHED;
        EXPECT_EQ(com_intl_will_xlate(&context_, &srcfmt, &destfmt, &result), CS_SUCCEED);
        return result;
    }

    static std::string prefixed(const std::string &text) {
        const auto length = static_cast<CS_SMALLINT>(text.size());
        return std::string(reinterpret_cast<const char *>(&length), sizeof length) + text;
    }

    CS_CONTEXT context_ = {};
};

TEST_F(Xlate, TypeOfEveryPairOfSetsAndOfOthers) {
    for (int from = 0; from < 256; ++from)
        for (int to = 0; to < 256; ++to) {
            CS_INT wanted = from == to ? CS_XLATE_COPY : CS_XLATE_NONE;
            for (int i = 0; i < 10; ++i)
                for (int j = 0; j < 10; ++j)
                    if (SETS[i] == from && SETS[j] == to)
                        wanted = Com_fou_xlt_map[i].fou_funcs[j].xlate_type;
            Locale source(from), dest(to);
            ASSERT_EQ(type(format(source.get(), 1), format(dest.get(), 1)), wanted) << from << ' ' << to;
        }
}

TEST_F(Xlate, EveryCellDoesWhatItsTypeSays) {
    const std::string text("A\xE4\0", 3);
    for (const CS_INT from : SETS)
        for (const CS_INT to : SETS) {
            SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
            Locale source(from), dest(to);
            const Outcome outcome = xlate(from, text, to, 3);
            CS_XLATE_FUNC function = nullptr;
            CS_INT kind = -1;
            for (const CS_FOU_XLT_MAP &row : Com_fou_xlt_map)
                for (const CS_FOU_FUNCS &cell : row.fou_funcs)
                    if (row.csid == from && cell.csid == to) {
                        function = cell.xlate_func;
                        kind = cell.xlate_type;
                    }
            if (kind == CS_XLATE_NONE) {
                EXPECT_EQ(outcome.status, CS_ENOCONV);
                EXPECT_EQ(outcome.srcused, 0);
                EXPECT_EQ(outcome.destused, 0);
                EXPECT_EQ(outcome.dest, std::string(300, '~'));
                continue;
            }
            if (kind == CS_XLATE_COPY) {
                EXPECT_EQ(outcome.status, CS_SUCCEED);
                EXPECT_EQ(outcome.srcused, 3);
                EXPECT_EQ(outcome.destused, 3);
                EXPECT_EQ(outcome.dest.substr(0, 3), text);
                continue;
            }
            std::string copy = text, made(3, '~');
            int sused = -5, dused = -5;
            const int flags = function(reinterpret_cast<CS_BYTE *>(copy.data()), 3,
                                       reinterpret_cast<CS_BYTE *>(made.data()), 3, &sused, &dused);
            EXPECT_EQ(outcome.status, flags == 0 ? CS_SUCCEED : CS_EUNMAPPED);
            EXPECT_EQ(outcome.srcused, sused);
            EXPECT_EQ(outcome.destused, dused);
            EXPECT_EQ(outcome.dest, made + std::string(297, '~'));
        }
}

TEST_F(Xlate, ALocaleOfTheDescriptorComesBeforeTheContexts) {
    Locale iso1(1), cp850(2), sjis(141);
    context_.ctxlocale = iso1.get();
    EXPECT_EQ(type(format(nullptr, 1), format(nullptr, 1)), CS_XLATE_COPY);
    EXPECT_EQ(type(format(nullptr, 1), format(cp850.get(), 1)), CS_XLATE_FULL);
    EXPECT_EQ(type(format(cp850.get(), 1), format(nullptr, 1)), CS_XLATE_FULL);
    EXPECT_EQ(type(format(sjis.get(), 1), format(nullptr, 1)), CS_XLATE_ASCII);
    const Outcome outcome = xlate(format(nullptr, 1), "\xE4", format(cp850.get(), 1));
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.dest[0], '\x84');
}

TEST_F(Xlate, TheSameLocaleIsACopyWithoutALookAtItsSet) {
    Locale locale(OTHER_SET);
    locale.cache_.locchardesc = nullptr;
    EXPECT_EQ(type(format(locale.get(), 1), format(locale.get(), 1)), CS_XLATE_COPY);
    EXPECT_EQ(xlate(format(locale.get(), 2), "ab", format(locale.get(), 2)).dest.substr(0, 3), "ab~");
}

TEST_F(Xlate, TwoLocalesOfOneSetCopyEvenWhereTheMatrixDoesNotHaveIt) {
    const Outcome outcome = xlate(OTHER_SET, "\x80\xFFx", OTHER_SET, 3);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.dest.substr(0, 4), "\x80\xFFx~");
}

TEST_F(Xlate, ACopyThatIsCutOverflows) {
    const Outcome outcome = xlate(1, "abc", 1, 2);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.srcused, 2);
    EXPECT_EQ(outcome.destused, 2);
    EXPECT_EQ(outcome.dest.substr(0, 3), "ab~");
    EXPECT_EQ(xlate(1, "abc", 1, 0).status, CS_EOVERFLOW);
    EXPECT_EQ(xlate(1, "abc", 1, 0).destused, 0);
}

TEST_F(Xlate, ACopyOntoItselfIsLeftAlone) {
    Locale locale(1);
    CS_DATAFMT srcfmt = format(locale.get(), 3), destfmt = format(locale.get(), 5);
    char text[] = "abc";
    CS_INT srcused = 0, destused = 0;
    EXPECT_EQ(com_intl_xlate(&context_, &srcfmt, text, &destfmt, text, &srcused, &destused), CS_SUCCEED);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(srcused, 3);
    EXPECT_EQ(destused, 3);
}

TEST_F(Xlate, UnmappedComesBeforeFull) {
    const Outcome both = xlate(1, "a\x80z", 2, 2);
    EXPECT_EQ(both.status, CS_EUNMAPPED);
    EXPECT_EQ(both.srcused, 2);
    EXPECT_EQ(both.dest.substr(0, 3), "a?~");
    const Outcome full = xlate(1, "abc", 2, 2);
    EXPECT_EQ(full.status, CS_EOVERFLOW);
    EXPECT_EQ(full.destused, 2);
    EXPECT_EQ(xlate(1, "a\x80", 2, 2).status, CS_EUNMAPPED);
    EXPECT_EQ(xlate(1, "ab", 2, 2).status, CS_SUCCEED);
}

TEST_F(Xlate, Cp850ToDlxcharIsNotConvertedAndCountsNothing) {
    const Outcome outcome = xlate(2, "a", 255, 1);
    EXPECT_EQ(outcome.status, CS_ENOCONV);
    EXPECT_EQ(outcome.srcused, 0);
    EXPECT_EQ(outcome.destused, 0);
}

TEST_F(Xlate, OddityTextToDlxcharIsCountedAndNotWritten) {
    const Outcome outcome = xlate(1, std::string("Ab\0", 3), 255, 3);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.srcused, 2);
    EXPECT_EQ(outcome.destused, 2);
    EXPECT_EQ(outcome.dest, std::string(300, '~'));
}

TEST_F(Xlate, VarcharHasItsLengthInFrontOnBothSides) {
    Locale iso1(1), cp850(2);
    for (CS_LOCALE *to : {iso1.get(), cp850.get()}) {
        const std::string made = to == iso1.get() ? "a\xE4" : "a\x84";
        // maxlength plays no part on either side.
        const Outcome outcome = xlate(format(iso1.get(), 1, CS_VARCHAR_TYPE), prefixed("a\xE4"),
                                      format(to, 1, CS_VARCHAR_TYPE));
        EXPECT_EQ(outcome.status, CS_SUCCEED);
        EXPECT_EQ(outcome.srcused, 2);
        EXPECT_EQ(outcome.destused, 2);
        EXPECT_EQ(outcome.dest, prefixed(made) + std::string(296, '~'));
    }
}

TEST_F(Xlate, VarcharDestinationHasRoomFor256Bytes) {
    for (const int to : {1, 2}) {
        Locale source(1), dest(to);
        const Outcome outcome =
            xlate(format(source.get(), 260), std::string(260, 'x'), format(dest.get(), 1000, CS_VARCHAR_TYPE));
        EXPECT_EQ(outcome.status, CS_EOVERFLOW);
        EXPECT_EQ(outcome.destused, 256);
        EXPECT_EQ(outcome.dest, prefixed(std::string(256, 'x')) + std::string(42, '~'));
    }
}

TEST_F(Xlate, VarcharDestinationOfAPairThatIsNotConvertedStaysAsItIs) {
    Locale source(2), dest(255);
    EXPECT_EQ(xlate(format(source.get(), 1), "a", format(dest.get(), 1, CS_VARCHAR_TYPE)).dest, std::string(300, '~'));
}

// ---- Broken contracts ---------------------------------------------------------------------------------------

// Each a call with one thing wrong.
struct Broken {
    const char *name;
    bool is_null; // reported as a null pointer, else as an assertion
    void (*spoil)(Locale &from, Locale &to, CS_DATAFMT &srcfmt, CS_DATAFMT &destfmt);
};

constexpr Broken BROKEN[] = {
    {"no source locale", true, [](Locale &, Locale &, CS_DATAFMT &s, CS_DATAFMT &) { s.locale = nullptr; }},
    {"no destination locale", true, [](Locale &, Locale &, CS_DATAFMT &, CS_DATAFMT &d) { d.locale = nullptr; }},
    {"no source cache", true, [](Locale &f, Locale &, CS_DATAFMT &, CS_DATAFMT &) { f.locale_.ctypeptr = nullptr; }},
    {"no destination cache", true,
     [](Locale &, Locale &t, CS_DATAFMT &, CS_DATAFMT &) { t.locale_.ctypeptr = nullptr; }},
    {"no source set", true, [](Locale &f, Locale &, CS_DATAFMT &, CS_DATAFMT &) { f.cache_.locchardesc = nullptr; }},
    {"no destination set", true,
     [](Locale &, Locale &t, CS_DATAFMT &, CS_DATAFMT &) { t.cache_.locchardesc = nullptr; }},
    {"source set without tables", true,
     [](Locale &f, Locale &, CS_DATAFMT &, CS_DATAFMT &) { f.description_.char_attrib = nullptr; }},
    {"destination set without tables", true,
     [](Locale &, Locale &t, CS_DATAFMT &, CS_DATAFMT &) { t.description_.char_attrib = nullptr; }},
    {"no source bytes", false, [](Locale &, Locale &, CS_DATAFMT &s, CS_DATAFMT &) { s.maxlength = 0; }},
    {"negative room", false, [](Locale &, Locale &, CS_DATAFMT &, CS_DATAFMT &d) { d.maxlength = -1; }},
};

CS_RETCODE call_broken(const Broken &broken, std::string &dest) {
    Locale from(1), to(2);
    CS_CONTEXT context = {};
    CS_DATAFMT srcfmt = format_of(CS_CHAR_TYPE, 1), destfmt = format_of(CS_CHAR_TYPE, 1);
    srcfmt.locale = from.get();
    destfmt.locale = to.get();
    broken.spoil(from, to, srcfmt, destfmt);
    CS_INT srcused = UNTOUCHED, destused = UNTOUCHED;
    char text[] = "a";
    const CS_RETCODE status =
        com_intl_xlate(&context, &srcfmt, text, &destfmt, dest.data(), &srcused, &destused);
    EXPECT_EQ(srcused, UNTOUCHED);
    EXPECT_EQ(destused, UNTOUCHED);
    return status;
}

TEST(XlateDeathTest, BrokenOperandsAreReported) {
    std::string dest = "~";
    for (const Broken &broken : BROKEN) {
        SCOPED_TRACE(broken.name);
        if (broken.is_null)
            EXPECT_NULL_REPORT(call_broken(broken, dest), "com_xlat");
        else
            EXPECT_BOMB(call_broken(broken, dest), "com_xlat");
    }
}

TEST(XlateAssertions, BrokenOperandsFailWhereAssertionsReturn) {
    const ReturningAssertions returning;
    std::string dest = "~";
    for (const Broken &broken : BROKEN)
        EXPECT_EQ(call_broken(broken, dest), CS_FAIL) << broken.name;
    EXPECT_EQ(dest, "~");
    EXPECT_EQ(returning.count(), static_cast<int>(std::size(BROKEN)));
}

// A null in place of each argument in turn; 7 gives all.
CS_RETCODE xlate_without(int missing) {
    Locale from(1), to(2);
    CS_CONTEXT context = {};
    CS_DATAFMT srcfmt = format_of(CS_CHAR_TYPE, 1), destfmt = format_of(CS_CHAR_TYPE, 1);
    srcfmt.locale = from.get();
    destfmt.locale = to.get();
    CS_INT srcused = 0, destused = 0;
    char text[] = "a", dest[] = "~";
    return com_intl_xlate(missing == 0 ? nullptr : &context, missing == 1 ? nullptr : &srcfmt,
                          missing == 2 ? nullptr : text, missing == 3 ? nullptr : &destfmt,
                          missing == 4 ? nullptr : dest, missing == 5 ? nullptr : &srcused,
                          missing == 6 ? nullptr : &destused);
}

CS_RETCODE will_xlate_without(int missing) {
    Locale from(1), to(2);
    CS_CONTEXT context = {};
    CS_DATAFMT srcfmt = format_of(CS_CHAR_TYPE, 1), destfmt = format_of(CS_CHAR_TYPE, 1);
    srcfmt.locale = from.get();
    destfmt.locale = to.get();
    CS_INT type = 0;
    return com_intl_will_xlate(missing == 0 ? nullptr : &context, missing == 1 ? nullptr : &srcfmt,
                               missing == 2 ? nullptr : &destfmt, missing == 3 ? nullptr : &type);
}

TEST(XlateDeathTest, NullArgumentsAreReported) {
    for (int missing = 0; missing < 7; ++missing)
        EXPECT_NULL_REPORT(xlate_without(missing), "com_xlat");
    for (int missing = 0; missing < 4; ++missing)
        EXPECT_NULL_REPORT(will_xlate_without(missing), "com_xlat");
}

TEST(XlateAssertions, NullArgumentsFailWhereAssertionsReturn) {
    EXPECT_EQ(xlate_without(7), CS_SUCCEED);
    EXPECT_EQ(will_xlate_without(4), CS_SUCCEED);
    const ReturningAssertions returning;
    for (int missing = 0; missing < 7; ++missing)
        EXPECT_EQ(xlate_without(missing), CS_FAIL) << missing;
    for (int missing = 0; missing < 4; ++missing)
        EXPECT_EQ(will_xlate_without(missing), CS_FAIL) << missing;
    EXPECT_EQ(returning.count(), 11);
}

} // namespace

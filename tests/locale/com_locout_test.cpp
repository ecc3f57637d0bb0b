// Names of months and days, the order of dates and the names of locales, in the set of each locale that ships.
#include "home/shipped_home.h"

#include "support/assertions.h"
#include "support/code_pages.h"
#include "support/null_calls.h"

#include <cstring>
#include <map>
#include <set>

namespace {

using support::ReturningAssertions;

constexpr char GROUND = '~';
constexpr CS_INT UNTOUCHED = -77777;

// What a call left in a buffer of 64 bytes.
struct Told {
    CS_RETCODE status = 12345;
    CS_INT length = UNTOUCHED;
    std::string buffer = std::string(64, GROUND);

    std::string text() const { return length < 0 ? "(no length)" : buffer.substr(0, static_cast<std::size_t>(length)); }
    bool untouched_from(std::size_t from) const { return buffer.find_first_not_of(GROUND, from) == std::string::npos; }
};

class LocOut : public ShippedHome {
protected:
    LocOut() : ShippedHome(WHOLE_HOME) { start(); }
    ~LocOut() override { comn_drop_user_charconv_list(context()); }

    CsLocCache *cache(const std::string &name) { return const_cast<CsLocCache *>(locale(name)); }
    CS_LOCALE of(CsLocCache *time) {
        CS_LOCALE made = {};
        made.timeptr = time; // no other category plays a part
        return made;
    }
    CS_LOCALE of(const std::string &name) { return of(cache(name)); }

    // The same data with another set.
    CsLocCache *in_set(const std::string &name, std::string set) {
        CS_VOID *derived = nullptr;
        CS_CHAR file[1025] = "";
        EXPECT_EQ(comn_intl_load_dlxtypes(context(), CS_LOC_CHARSET, set.data(), static_cast<CS_INT>(set.size()), file,
                                          sizeof file, cache(name), &derived),
                  CS_SUCCEED)
            << file;
        return static_cast<CsLocCache *>(derived);
    }

    Told month(CS_LOCALE *locale, CS_INT type, CS_INT number, CS_INT buflen = 64) {
        Told told;
        told.status = comn_intl_month(context(), locale, type, number, told.buffer.data(), buflen, &told.length);
        return told;
    }
    Told day(CS_LOCALE *locale, CS_INT number, CS_INT buflen = 64, CS_INT type = CS_LOC_DAY) {
        Told told;
        told.status = comn_intl_day(context(), locale, type, number, told.buffer.data(), buflen, &told.length);
        return told;
    }
    Told order(CS_LOCALE *locale, CS_INT buflen = 64) {
        Told told;
        told.status = comn_intl_dateorder(context(), locale, told.buffer.data(), buflen, &told.length);
        return told;
    }
    Told name(CsLocCache *cache, CS_INT buflen = 64) {
        Told told;
        told.status = com_intl_get_locname(context(), cache, told.buffer.data(), buflen, &told.length);
        return told;
    }
};
using LocOutDeathTest = LocOut;

void expect_text(const Told &told, CS_RETCODE status, const std::string &text) {
    EXPECT_EQ(told.status, status);
    EXPECT_EQ(told.text(), text);
    EXPECT_TRUE(told.untouched_from(text.size())) << "not even a NUL";
}

// ---- Every locale that ships ----------------------------------------------------------------------------------------

// UTF-8 as the C library converts it.
class Converter {
public:
    explicit Converter(const std::string &set) {
        for (const CSID_CSNAME &row : csid_name)
            for (const support::code_pages::Set &page : support::code_pages::SETS)
                if (name_of(row) == set && page.number == row.unilib_cid)
                    oracle_ = support::code_pages::oracle_of(page);
        EXPECT_TRUE(oracle_ != nullptr || set == "utf8") << set;
    }
    std::string operator()(const std::string &utf8) const {
        if (oracle_ == nullptr)
            return utf8;
        const auto bytes = oracle_->bytes(support::units_of(support::naive_utf8(utf8).characters));
        EXPECT_TRUE(bytes.has_value()) << utf8;
        return bytes.value_or("");
    }

private:
    std::unique_ptr<support::code_pages::Oracle> oracle_;
};

TEST_F(LocOut, EveryShippedLocaleInItsOwnSet) {
    std::set<std::string> sets, languages;
    for (const FileEntry &line : entries_of(HOME + "/locales/locales.dat")) {
        SCOPED_TRACE(line.values[0]);
        std::map<std::string, Strings> data;
        for (const FileEntry &entry : entries_of(HOME + "/locales/message/" + line.values[1] + "/common.loc"))
            data[entry.key] = entry.values;
        ASSERT_EQ(data["months"].size(), 12u);
        ASSERT_EQ(data["shortmonths"].size(), 12u);
        ASSERT_EQ(data["days"].size(), 7u);
        const Converter in_its_set(line.values[2]);
        CsLocCache *const loaded = cache(line.values[0]);
        CS_LOCALE its = of(loaded);
        for (CS_INT i = 0; i < 12; ++i) {
            expect_text(month(&its, CS_LOC_MONTH, i), CS_SUCCEED,
                        in_its_set(data["months"][static_cast<std::size_t>(i)]));
            expect_text(month(&its, CS_LOC_SHORTMONTH, i), CS_SUCCEED,
                        in_its_set(data["shortmonths"][static_cast<std::size_t>(i)]));
        }
        // The file has Sunday first, and the week begins with its own first day.
        const auto first = std::stoul(data["firstday"].at(0)) - 1;
        for (CS_INT i = 0; i < 7; ++i)
            expect_text(day(&its, i), CS_SUCCEED, in_its_set(data["days"][(static_cast<std::size_t>(i) + first) % 7]));
        expect_text(order(&its), CS_SUCCEED, in_its_set(data["dateorder"].at(0)));
        expect_text(name(loaded), CS_SUCCEED, in_its_set(line.values[0]));
        sets.insert(line.values[2]);
        languages.insert(line.values[1]);
    }
    EXPECT_GE(sets.size(), 14u);
    EXPECT_EQ(languages.size(), 17u);
}

TEST_F(LocOut, ALanguageInASetOfAnother) {
    CS_LOCALE german = of(in_set("de_DE", "cp850"));
    expect_text(month(&german, CS_LOC_MONTH, 2), CS_SUCCEED, "M\x84rz");
    CS_LOCALE ebcdic = of(in_set("de_DE", "cp037"));
    expect_text(month(&ebcdic, CS_LOC_MONTH, 2), CS_SUCCEED, "\xD4\x43\x99\xA9");
    expect_text(order(&ebcdic), CS_SUCCEED, "\x84\x94\xA8"); // "dmy": ASCII is converted as well
    expect_text(day(&ebcdic, 0), CS_SUCCEED, "\xD4\x96\x95\xA3\x81\x87");
    CS_LOCALE wide = of(in_set("de_DE", "utf16"));
    expect_text(order(&wide), CS_SUCCEED, std::string("d\0m\0y\0", 6));
    // Characters that the set lacks.
    CS_LOCALE japanese = of(in_set("ja_JP", "iso_1"));
    expect_text(day(&japanese, 0), CS_SUCCEED, "???");
    CS_LOCALE chinese = of(in_set("de_DE", "big5"));
    expect_text(month(&chinese, CS_LOC_MONTH, 2), CS_SUCCEED, "M??rz");
}

// ---- Room -----------------------------------------------------------------------------------------------------------

TEST_F(LocOut, TextThatFitsExactlyHasNoTerminator) {
    CS_LOCALE german = of("de_DE");
    expect_text(month(&german, CS_LOC_MONTH, 2, 4), CS_SUCCEED, "M\xE4rz");
    CS_LOCALE utf8 = of("de_DE.UTF-8");
    expect_text(month(&utf8, CS_LOC_MONTH, 2, 5), CS_SUCCEED, "M\xC3\xA4rz");
    expect_text(order(&german, 3), CS_SUCCEED, "dmy");
    expect_text(name(cache("de_DE"), 5), CS_SUCCEED, "de_DE");
}

TEST_F(LocOut, TextThatDoesNotFitIsCutAtAWholeCharacter) {
    CS_LOCALE german = of("de_DE");
    expect_text(month(&german, CS_LOC_MONTH, 2, 3), CS_ETRUNCATED, "M\xE4r");
    expect_text(month(&german, CS_LOC_MONTH, 2, 0), CS_ETRUNCATED, "");
    expect_text(day(&german, 0, 1), CS_ETRUNCATED, "M");
    expect_text(order(&german, 2), CS_ETRUNCATED, "dm");
    expect_text(name(cache("de_DE"), 2), CS_ETRUNCATED, "de");
    // The rest of the room becomes NUL.
    CS_LOCALE japanese = of("ja_JP.SJIS");
    expect_text(day(&japanese, 0, 3), CS_ETRUNCATED, std::string("\x93\xFA\0", 3));
    expect_text(day(&japanese, 0, 1), CS_ETRUNCATED, std::string("\0", 1));
}

TEST_F(LocOut, OddityInUtf8TextIsCutInsideACharacter) {
    CS_LOCALE german = of("de_DE.UTF-8");
    expect_text(month(&german, CS_LOC_MONTH, 2, 2), CS_ETRUNCATED, "M\xC3");
    expect_text(name(cache("de_DE.UTF-8"), 2), CS_ETRUNCATED, "de");
}

TEST_F(LocOutDeathTest, ARoomBelowZeroIsABrokenContract) {
    CS_LOCALE german = of("de_DE");
    EXPECT_BOMB(month(&german, CS_LOC_MONTH, 0, -1), "com_ceng");
    EXPECT_BOMB(day(&german, 0, -1), "com_ceng");
    EXPECT_BOMB(order(&german, -1), "com_ceng");
    EXPECT_BOMB(name(cache("de_DE"), -1), "com_ceng");
    const ReturningAssertions returning;
    for (const Told &told :
         {month(&german, CS_LOC_MONTH, 0, -1), day(&german, 0, -1), order(&german, -1), name(cache("de_DE"), -1)}) {
        EXPECT_EQ(told.status, CS_FAIL);
        EXPECT_TRUE(told.untouched_from(0));
    }
    EXPECT_EQ(returning.count(), 4);
}

// ---- Locales --------------------------------------------------------------------------------------------------------

TEST_F(LocOut, NoLocaleIsTheContexts) {
    CS_LOCALE german = of("de_DE"), french = of("fr_FR");
    context()->ctxlocale = &german;
    expect_text(month(nullptr, CS_LOC_MONTH, 2), CS_SUCCEED, "M\xE4rz");
    expect_text(day(nullptr, 0), CS_SUCCEED, "Montag");
    expect_text(order(nullptr), CS_SUCCEED, "dmy");
    // One that is given comes first.
    expect_text(day(&french, 0), CS_SUCCEED, "lundi");
    context()->ctxlocale = nullptr;
}

TEST_F(LocOut, AStyleOfItsOwnLeavesTheNames) {
    CS_LOCALE german = of("de_DE");
    CS_INT style = 9;
    ASSERT_EQ(comn_intl_set_dtfmt(context(), &german, &style), CS_SUCCEED);
    expect_text(month(&german, CS_LOC_MONTH, 2), CS_SUCCEED, "M\xE4rz");
    expect_text(day(&german, 0), CS_SUCCEED, "Montag");
    expect_text(order(&german), CS_SUCCEED, "dmy");
    expect_text(name(static_cast<CsLocCache *>(german.timeptr)), CS_SUCCEED, ""); // a cache without a name
}

TEST_F(LocOut, ACacheWithoutANameHasNone) {
    CsLocCache *const derived = in_set("de_DE", "cp850");
    expect_text(name(derived), CS_SUCCEED, "");
    expect_text(name(derived, 0), CS_SUCCEED, "");
    CsLocCache bare = {}; // it is not even asked for its set
    expect_text(name(&bare), CS_SUCCEED, "");
}

TEST_F(LocOut, ANameIsUtf8) {
    char named[] = "gar\xC3\xA7on";
    CsLocCache copy = *cache("fr_FR");
    copy.locname = named;
    copy.locnamelen = 7;
    expect_text(name(&copy), CS_SUCCEED, "gar\xE7on");
    copy.locnamelen = 3;
    expect_text(name(&copy), CS_SUCCEED, "gar");
    copy.locnamelen = 4; // inside a character
    EXPECT_EQ(name(&copy).status, CS_FAIL);
    copy.locnamelen = 0;
    expect_text(name(&copy), CS_SUCCEED, "");
}

// ---- Conversions of the application ---------------------------------------------------------------------------------

CS_DATAFMT noted_source, noted_destination;
std::string noted_text;

CS_RETCODE note(CS_CONTEXT *, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen) {
    noted_source = *srcfmt;
    noted_destination = *destfmt;
    noted_text.assign(static_cast<const char *>(src), static_cast<std::size_t>(srcfmt->maxlength));
    std::memcpy(dest, "own", 3);
    *destlen = 3;
    return -4321;
}

TEST_F(LocOut, AUserFunctionGetsADescriptorOfTheRoomAndTheLocale) {
    CS_CHAR utf8[] = "utf8", iso_1[] = "iso_1";
    CS_CONV_FUNC function = note;
    ASSERT_EQ(comn_set_user_charset_convert(context(), CS_USERCONV_SET, utf8, 4, iso_1, 5, nullptr, &function),
              CS_SUCCEED);
    CS_LOCALE german = of("de_DE");
    CS_DATAFMT expected = {};
    expected.maxlength = 17;
    expected.locale = &german;
    const auto check = [&](const Told &told, const std::string &text) {
        expect_text(told, -4321, "own");
        EXPECT_EQ(noted_text, text);
        EXPECT_EQ(std::memcmp(&noted_destination, &expected, sizeof expected), 0);
        EXPECT_EQ(noted_source.datatype, CS_CHAR_TYPE);
        EXPECT_EQ(noted_source.locale, nullptr);
    };
    check(month(&german, CS_LOC_MONTH, 2, 17), "M\xC3\xA4rz");
    check(month(&german, CS_LOC_SHORTMONTH, 0, 17), "Jan");
    check(day(&german, 0, 17), "Montag");
    check(order(&german, 17), "dmy");
    expected.locale = nullptr;
    check(name(cache("de_DE"), 17), "de_DE");
    context()->ctxlocale = &german;
    check(day(nullptr, 0, 17), "Montag"); // the caller's locale, which is none
    context()->ctxlocale = nullptr;
}

// ---- Broken contracts -----------------------------------------------------------------------------------------------

TEST_F(LocOutDeathTest, NumbersAndTypesOutOfRangeAreABrokenContract) {
    CS_LOCALE german = of("de_DE");
    const std::function<Told()> calls[] = {
        [&] { return month(&german, CS_LOC_MONTH, 12); },
        [&] { return month(&german, CS_LOC_MONTH, -1); },
        [&] { return month(&german, CS_LOC_SHORTMONTH, 12); },
        [&] { return month(&german, CS_LOC_DAY, 0); },
        [&] { return month(&german, 7339, 0); },
        [&] { return month(&german, 0, 0); },
        [&] { return day(&german, 7); },
        [&] { return day(&german, -1); },
        [&] { return day(&german, 0, 64, CS_LOC_MONTH); },
        [&] { return day(&german, 0, 64, 7343); },
    };
    for (const auto &call : calls) {
        EXPECT_BOMB(call(), "com_locout");
        const ReturningAssertions returning;
        const Told told = call();
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(told.status, CS_FAIL);
        EXPECT_EQ(told.length, UNTOUCHED);
        EXPECT_TRUE(told.untouched_from(0));
    }
}

TEST_F(LocOutDeathTest, NullPointersAreReported) {
    CS_LOCALE german = of("de_DE"), empty = {};
    CsLocCache *const named = cache("de_DE");
    CsLocCache bare = {};
    CS_LOCALE undated = of(&bare);
    CS_CHAR buffer[] = "~~~~";
    CS_INT length = UNTOUCHED;
    support::NullCalls calls;
    const auto add = [&](const char *what, CS_CONTEXT *with, CS_LOCALE *locale, CS_CHAR *room, CS_INT *count) {
        calls.add(
            what, [=] { return comn_intl_month(with, locale, CS_LOC_MONTH, 0, room, 4, count); }, CS_FAIL);
        calls.add(
            what, [=] { return comn_intl_day(with, locale, CS_LOC_DAY, 0, room, 4, count); }, CS_FAIL);
        calls.add(
            what, [=] { return comn_intl_dateorder(with, locale, room, 4, count); }, CS_FAIL);
    };
    add("no context", nullptr, &german, buffer, &length);
    add("no locale", context(), nullptr, buffer, &length);
    add("no category", context(), &empty, buffer, &length);
    add("no dates", context(), &undated, buffer, &length);
    add("no buffer", context(), &german, nullptr, &length);
    add("no length", context(), &german, buffer, nullptr);
    const auto add_name = [&](const char *what, CS_CONTEXT *with, CS_VOID *of, CS_CHAR *room, CS_INT *count) {
        calls.add(
            what, [=] { return com_intl_get_locname(with, of, room, 4, count); }, CS_FAIL);
    };
    add_name("no context", nullptr, named, buffer, &length);
    add_name("no cache", context(), nullptr, buffer, &length);
    add_name("no buffer", context(), named, nullptr, &length);
    add_name("no length", context(), named, buffer, nullptr);
    calls.expect_reports("com_locout");
    calls.expect_answers([] {},
                         [&] {
                             EXPECT_STREQ(buffer, "~~~~");
                             EXPECT_EQ(length, UNTOUCHED);
                         });
}

} // namespace

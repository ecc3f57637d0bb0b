// The locales and languages that ship.
#include "home/shipped_home.h"

#include <unicode/ucal.h>
#include <unicode/udat.h>
#include <unicode/ustring.h>

#include <filesystem>
#include <map>
#include <memory>
#include <set>

namespace {

class HomeLocales : public ShippedHome {};

const std::vector<FileEntry> locales = entries_of(HOME + "/locales/locales.dat");

struct Language {
    const char *name;
    const char *icu_locale;
};

constexpr Language LANGUAGES[] = {
    {"us_english", "en_US"}, {"german", "de_DE"},  {"french", "fr_FR"}, {"spanish", "es_ES"},   {"italian", "it_IT"},
    {"portuguese", "pt_BR"}, {"polish", "pl_PL"},  {"czech", "cs_CZ"},  {"hungarian", "hu_HU"}, {"russian", "ru_RU"},
    {"greek", "el_GR"},      {"turkish", "tr_TR"}, {"thai", "th_TH"},   {"japanese", "ja_JP"},  {"chinese", "zh_CN"},
    {"tchinese", "zh_TW"},   {"korean", "ko_KR"}};

// ---- Lines ---------------------------------------------------------------------------------------------------------

TEST_F(HomeLocales, HaveOneSectionOfWholeLines) {
    for (const FileEntry &line : locales) {
        EXPECT_EQ(line.section, "linux");
        EXPECT_EQ(line.key, "locale");
        EXPECT_EQ(line.values.size(), 4u);
    }
}

TEST_F(HomeLocales, AreAllLoaded) {
    for (const FileEntry &line : locales) {
        const CsLocCache *const cache = locale(line.values[0]);
        ASSERT_NE(cache, nullptr) << line.values[0];
        EXPECT_EQ(text_of(cache->langname, cache->langnamelen), line.values[1]);
        EXPECT_EQ(text_of(cache->charname, cache->charnamelen), line.values[2]);
        EXPECT_EQ(text_of(cache->sortname, cache->sortnamelen), line.values[3]);
        EXPECT_NE(cache->locchardesc->char_attrib, nullptr);
        EXPECT_EQ(cache->locsortorder->char_sort_class == nullptr, line.values[3] == "binary") << line.values[0];
        EXPECT_NE(cache->locdateinfo, nullptr) << line.values[0];
    }
}

TEST_F(HomeLocales, NamesAreThoseThatArePromised) {
    std::set<std::string> names;
    for (const FileEntry &line : locales)
        EXPECT_TRUE(names.insert(line.values[0]).second) << line.values[0];
    for (const char *name : {"default", "C", "POSIX", "C.UTF-8", "ru_RU.KOI8-R", "ja_JP.SJIS", "ja_JP.eucJP",
                             "zh_CN.GB18030", "zh_TW.Big5", "ko_KR.eucKR"})
        EXPECT_TRUE(names.contains(name)) << name;
    for (const Language &language : LANGUAGES) {
        EXPECT_TRUE(names.contains(language.icu_locale));
        EXPECT_TRUE(names.contains(language.icu_locale + std::string(".UTF-8")));
    }
}

TEST_F(HomeLocales, HaveTheirTraditionalSets) {
    const std::map<std::string, std::string> expected = {
        {"default", "iso_1"},         {"C", "iso_1"},           {"POSIX", "iso_1"},
        {"en_US", "iso_1"},           {"de_DE", "iso_1"},       {"fr_FR", "iso_1"},
        {"es_ES", "iso_1"},           {"it_IT", "iso_1"},       {"pt_BR", "iso_1"},
        {"pl_PL", "iso88592"},        {"cs_CZ", "iso88592"},    {"hu_HU", "iso88592"},
        {"ru_RU", "iso88595"},        {"ru_RU.KOI8-R", "koi8"}, {"el_GR", "iso88597"},
        {"tr_TR", "iso88599"},        {"th_TH", "tis620"},      {"ja_JP", "eucjis"},
        {"ja_JP.eucJP", "eucjis"},    {"ja_JP.SJIS", "sjis"},   {"zh_CN", "eucgb"},
        {"zh_CN.GB18030", "gb18030"}, {"zh_TW", "big5"},        {"zh_TW.Big5", "big5"},
        {"ko_KR", "eucksc"},          {"ko_KR.eucKR", "eucksc"}};
    for (const FileEntry &line : locales) {
        const auto plain = expected.find(line.values[0]);
        EXPECT_EQ(line.values[2], plain != expected.end() ? plain->second : "utf8") << line.values[0];
    }
}

TEST_F(HomeLocales, LocalesOfALanguageShareItsDates) {
    EXPECT_EQ(locale("ja_JP.SJIS")->locdateinfo, locale("ja_JP.UTF-8")->locdateinfo);
    EXPECT_NE(locale("de_DE")->locdateinfo, locale("fr_FR")->locdateinfo);
}

TEST_F(HomeLocales, TheLibraryStartsUpFromThem) {
    start();
    ASSERT_NE(globals().cmg_utf8_charset, nullptr);
    const auto *const set = static_cast<const CsCharDesc *>(globals().cmg_utf8_charset);
    EXPECT_EQ(text_of(reinterpret_cast<const CS_CHAR *>(set->char_attrib->cs_name), set->char_attrib->cs_namelen),
              "utf8");
}

// What the check tells goes to a file of the current directory too.
class InItsOwnDirectory {
public:
    InItsOwnDirectory() { std::filesystem::current_path(own_.path()); }
    ~InItsOwnDirectory() { std::filesystem::current_path(before_); }
    std::string take(const std::string &name) const {
        const std::string content = support::content_of_file(own_.path_of(name));
        std::filesystem::remove(own_.path_of(name));
        return content;
    }

private:
    const std::filesystem::path before_ = std::filesystem::current_path();
    const support::TempDirectory own_;
};

TEST_F(HomeLocales, TheStartUpCheckFindsNothingMissing) {
    const InItsOwnDirectory directory;
    for (const FileEntry &line : locales) {
        const support::Variable name("LC_ALL", line.values[0]);
        testing::internal::CaptureStderr();
        com_intl_verify_ctxloc(context());
        testing::internal::GetCapturedStderr();
        const std::string told = directory.take("dlxinit.err");
        const std::string last =
            "Using locale name \"" + line.values[0] + "\" defined in environment variable LC_ALL\n";
        EXPECT_TRUE(told.ends_with(last)) << told;
    }
}

// ---- Languages -----------------------------------------------------------------------------------------------------

template <auto close>
struct Close {
    void operator()(void **object) const { close(object); }
};

std::string utf8_of(const UChar *text, int32_t length) {
    char bytes[300];
    UErrorCode error = U_ZERO_ERROR;
    int32_t written = 0;
    u_strToUTF8(bytes, sizeof bytes, &written, text, length, &error);
    EXPECT_TRUE(U_SUCCESS(error));
    return {bytes, static_cast<std::size_t>(written)};
}

// What ICU knows of a language's dates.
class Known {
public:
    explicit Known(const char *locale) {
        UErrorCode error = U_ZERO_ERROR;
        format_.reset(udat_open(UDAT_SHORT, UDAT_SHORT, locale, u"UTC", -1, nullptr, 0, &error));
        calendar_.reset(ucal_open(u"UTC", -1, locale, UCAL_GREGORIAN, &error));
        EXPECT_TRUE(U_SUCCESS(error)) << locale;
    }

    Strings names(UDateFormatSymbolType type, int first, int count) const {
        Strings result;
        for (int i = first; i < first + count; ++i) {
            UErrorCode error = U_ZERO_ERROR;
            UChar name[100];
            const int32_t length = udat_getSymbols(format_.get(), type, i, name, std::size(name), &error);
            EXPECT_TRUE(U_SUCCESS(error));
            result.push_back(utf8_of(name, length));
        }
        return result;
    }
    int first_day() const { return ucal_getAttribute(calendar_.get(), UCAL_FIRST_DAY_OF_WEEK); }
    // The letters of day, month and year, in their order.
    std::string order() const {
        std::string letters;
        for (const char c : pattern())
            if (std::string("dMy").find(c) != std::string::npos && (letters.empty() || letters.back() != c))
                letters += c;
        std::ranges::replace(letters, 'M', 'm');
        return letters;
    }
    bool is_12_hour() const { return pattern().find('h') != std::string::npos; }

private:
    std::string pattern() const {
        UErrorCode error = U_ZERO_ERROR;
        UChar text[100];
        const int32_t length = udat_toPattern(format_.get(), 0, text, std::size(text), &error);
        EXPECT_TRUE(U_SUCCESS(error));
        return utf8_of(text, length);
    }

    std::unique_ptr<UDateFormat, Close<udat_close>> format_;
    std::unique_ptr<UCalendar, Close<ucal_close>> calendar_;
};

std::map<std::string, Strings> dates_of(const std::string &language) {
    std::map<std::string, Strings> values;
    for (const FileEntry &entry : entries_of(HOME + "/locales/message/" + language + "/common.loc"))
        if (entry.section == "datetime")
            values[entry.key] = entry.values;
    return values;
}

// Names that are other ones: their own are longer than the room for them.
const std::map<std::string, std::string> SHORTENED = {{"Φεβρουάριος", "Φλεβάρης"},
                                                      {"Σεπτέμβριος", "Σεπτέμβρης"},
                                                      {"มกราคม", "มกรา"},
                                                      {"กุมภาพันธ์", "กุมภา"},
                                                      {"มีนาคม", "มีนา"},
                                                      {"เมษายน", "เมษา"},
                                                      {"พฤษภาคม", "พฤษภา"},
                                                      {"มิถุนายน", "มิถุนา"},
                                                      {"กรกฎาคม", "กรกฎา"},
                                                      {"สิงหาคม", "สิงหา"},
                                                      {"กันยายน", "กันยา"},
                                                      {"ตุลาคม", "ตุลา"},
                                                      {"พฤศจิกายน", "พฤศจิ"},
                                                      {"ธันวาคม", "ธันวา"}};

std::string without(std::string text, const std::string &part) {
    for (std::size_t at; (at = text.find(part)) != std::string::npos;)
        text.erase(at, part.size());
    return text;
}

std::string shortened(const std::string &name) {
    const auto found = SHORTENED.find(name);
    return found != SHORTENED.end() ? found->second : name;
}

class HomeLanguages : public ShippedHome, public testing::WithParamInterface<Language> {};

INSTANTIATE_TEST_SUITE_P(All, HomeLanguages, testing::ValuesIn(LANGUAGES),
                         [](const auto &test) { return std::string(test.param.name); });

TEST_P(HomeLanguages, NamesAreThoseOfTheLanguage) {
    const Known known(GetParam().icu_locale);
    auto dates = dates_of(GetParam().name);
    Strings months = known.names(UDAT_STANDALONE_MONTHS, 0, 12);
    std::ranges::transform(months, months.begin(), shortened);
    EXPECT_EQ(dates["months"], months);
    // A point is no part of a word in a date.
    Strings shortmonths = known.names(UDAT_STANDALONE_SHORT_MONTHS, 0, 12);
    std::ranges::transform(shortmonths, shortmonths.begin(),
                           [](const std::string &name) { return without(name, "."); });
    EXPECT_EQ(dates["shortmonths"], shortmonths);
    Strings days = known.names(UDAT_STANDALONE_WEEKDAYS, UCAL_SUNDAY, 7);
    std::ranges::transform(days, days.begin(), [](const std::string &name) { return without(name, "วัน"); });
    EXPECT_EQ(dates["days"], days);
}

TEST_P(HomeLanguages, ConventionsAreThoseOfTheCountry) {
    const Known known(GetParam().icu_locale);
    auto dates = dates_of(GetParam().name);
    EXPECT_EQ(dates["firstday"], Strings{std::to_string(known.first_day())});
    EXPECT_EQ(dates["dateorder"], Strings{known.order()});
    EXPECT_EQ(dates["is12hour"], Strings{known.is_12_hour() ? "true" : "false"});
}

TEST_P(HomeLanguages, NamesArriveInTheDateData) {
    auto dates = dates_of(GetParam().name);
    const CS_DATEINFO *const info = locale(GetParam().icu_locale)->locdateinfo;
    const auto text = [](const CS_BYTE *bytes) { return std::string(reinterpret_cast<const char *>(bytes)); };
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(text(info->months[i]), dates["months"][i]);
        EXPECT_EQ(text(info->shortmonths[i]), dates["shortmonths"][i]);
    }
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(text(info->days[i]), dates["days"][(info->firstday - 1 + i) % 7]);
    EXPECT_EQ(dates["dateorder"], Strings{info->dateorder});
}

TEST_P(HomeLanguages, HaveOneSectionForClientLibraries) {
    const std::string text = support::content_of_file(HOME + "/locales/message/" + GetParam().name + "/cslib.loc");
    EXPECT_TRUE(text.starts_with("; "));
    EXPECT_TRUE(text.ends_with("\n[cslib]\n")) << text;
    EXPECT_EQ(std::ranges::count(text, '\n'), 2);
}

TEST(HomeLanguageFiles, EveryLanguageOfTheIdentifiersHasThem) {
    std::set<std::string> expected;
    for (const FileEntry &entry : entries_of(HOME + "/config/objectid.dat"))
        if (entry.section == "natlang")
            expected.insert(entry.values[0]);
    std::set<std::string> known;
    for (const Language &language : LANGUAGES)
        known.insert(language.name);
    EXPECT_EQ(expected, known);
}

} // namespace

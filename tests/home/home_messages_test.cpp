// The messages of the library in every language that ships: each number that is raised has its SQLSTATE and a text with
// the parameters that are packed for it, which can be read in the sets of the language's locales.
#include "home/catalog.h"

#include <filesystem>
#include <map>
#include <set>

namespace {

// ---- What is raised ------------------------------------------------------------------------------------------------

// The parameters behind the first one, by the call that packs them.
enum class Packed { none, text, line_and_text };

struct Raised {
    CS_MSGNUM number;
    const char *sqlstate;
    CS_INT severity;
    Packed packed;
};

constexpr CS_INT INFORMATION = 0;
constexpr CS_INT FAILURE = 6;

constexpr Raised RAISED[] = {
    {17040897, "HY000", FAILURE, Packed::none},     {17040898, "HY001", FAILURE, Packed::none},
    {17040899, "HY000", FAILURE, Packed::text},     {17040900, "HY010", FAILURE, Packed::none},
    {17040901, "HY090", FAILURE, Packed::text},     {17040902, "22021", FAILURE, Packed::none},
    {17040903, "HY000", FAILURE, Packed::text},     {17040906, "HY000", FAILURE, Packed::none},
    {17039367, "HY000", INFORMATION, Packed::text}, {17039368, "HY000", INFORMATION, Packed::line_and_text},
    {17039369, "01000", INFORMATION, Packed::none},
};

// Messages of the localization library: the number in the low byte is that of its code.
constexpr CS_MSGNUM LOCALIZATION = 0x01050600;

// The key in the file.
int key_of(CS_MSGNUM number) { return static_cast<int>(number & 0xFF); }

using Placeholders = std::multiset<std::string>;

Placeholders placeholders_of(Packed packed) {
    switch (packed) {
    case Packed::none:
        return {};
    case Packed::text:
        return {"%1!"};
    case Packed::line_and_text:
        return {"%1!", "%2!"};
    }
    return {};
}

// Every percent sign of a text with the two characters behind it.
Placeholders placeholders_in(const std::string &text) {
    Placeholders found;
    for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1))
        found.insert(text.substr(at, 3));
    return found;
}

TEST(RaisedMessages, NumbersOfOneEntryTakeTheSameParameters) {
    std::map<int, Raised> entries;
    for (const Raised &raised : RAISED) {
        const Raised &first = entries.emplace(key_of(raised.number), raised).first->second;
        EXPECT_EQ(first.packed, raised.packed) << raised.number;
        EXPECT_STREQ(first.sqlstate, raised.sqlstate) << raised.number;
    }
    EXPECT_EQ(entries.size(), std::size(RAISED) - 1); // 17040903 and 17039367 share one
}

// docs/data-files.md has a row for each, with a word for each parameter.
TEST(RaisedMessages, AreAllInTheDocument) {
    const std::string page = support::content_of_file(DLXCOMN_SOURCE_DIR "/docs/data-files.md");
    std::size_t rows = 0;
    for (std::size_t at = page.find("\n| 170"); at != std::string::npos; at = page.find("\n| 170", at + 1))
        ++rows;
    EXPECT_EQ(rows, std::size(RAISED));
    for (const Raised &raised : RAISED) {
        const std::string begin = "\n| " + std::to_string(raised.number) + " | " +
                                  std::to_string(key_of(raised.number)) + " | " + raised.sqlstate + " | ";
        const std::size_t at = page.find(begin);
        ASSERT_NE(at, std::string::npos) << begin;
        const std::size_t column = page.find(" | ", at + begin.size());
        const std::string parameters = page.substr(column, page.find('\n', column) - column);
        const auto commas = static_cast<std::size_t>(std::ranges::count(parameters, ','));
        EXPECT_EQ(parameters == " | |" ? 0 : commas + 1, placeholders_of(raised.packed).size()) << begin;
    }
}

// ---- The files -----------------------------------------------------------------------------------------------------

using Key = std::pair<std::string, int>; // section and number

std::vector<FileEntry> messages_of(const std::string &language) {
    return entries_of(HOME + "/locales/message/" + language + "/comnlib.loc");
}

// What becomes of a value of the file: in these texts only quotes are escaped.
std::string unescaped(std::string text) {
    for (std::size_t at; (at = text.find("\\\"")) != std::string::npos;)
        text.erase(at, 1);
    return text;
}

std::string text_of(const FileEntry &entry) {
    std::string text;
    for (std::size_t i = 1; i < entry.values.size(); ++i)
        text += unescaped(entry.values[i]);
    return text;
}

std::map<Key, std::string> texts_of(const std::string &language) {
    std::map<Key, std::string> texts;
    for (const FileEntry &entry : messages_of(language))
        texts[{entry.section, std::stoi(entry.key)}] = text_of(entry);
    return texts;
}

Strings languages() {
    Strings names;
    for (const auto &directory : std::filesystem::directory_iterator(HOME + "/locales/message"))
        names.push_back(directory.path().filename());
    std::ranges::sort(names);
    return names;
}

class HomeMessageFiles : public testing::TestWithParam<std::string> {
protected:
    const std::vector<FileEntry> entries_ = messages_of(GetParam());
};

INSTANTIATE_TEST_SUITE_P(All, HomeMessageFiles, testing::ValuesIn(languages()),
                         [](const auto &test) { return test.param; });

TEST_P(HomeMessageFiles, HaveAnEntryForEverythingThatIsRaised) {
    std::vector<Key> expected;
    for (const CS_ERRIDX &idx : Comdeferrs)
        expected.emplace_back("comdefaults", idx.errnum);
    std::set<int> layers, origins = {static_cast<int>(LOCALIZATION >> 16 & 0xFF)}, numbers;
    for (const Raised &raised : RAISED) {
        layers.insert(static_cast<int>(raised.number >> 24));
        origins.insert(static_cast<int>(raised.number >> 16 & 0xFF));
        numbers.insert(key_of(raised.number));
    }
    for (const auto &[section, keys] :
         {std::pair("comlayer", layers), {"comorigin", origins}, {"comapierror", numbers}})
        for (const int key : keys)
            expected.emplace_back(section, key);

    std::vector<Key> found;
    for (const FileEntry &entry : entries_)
        found.emplace_back(entry.section, std::stoi(entry.key));
    EXPECT_EQ(found, expected);
}

TEST_P(HomeMessageFiles, HaveAnSqlstateAndATextInEachEntry) {
    std::map<int, std::string> expected;
    for (const Raised &raised : RAISED)
        expected[key_of(raised.number)] = raised.sqlstate;
    for (const FileEntry &entry : entries_) {
        SCOPED_TRACE(entry.section + " " + entry.key);
        ASSERT_GE(entry.values.size(), 2u);
        EXPECT_EQ(entry.values[0].size(), 5u);
        EXPECT_EQ(entry.values[0].find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"), std::string::npos);
        if (entry.section == "comapierror") {
            EXPECT_EQ(entry.values[0], expected.at(std::stoi(entry.key)));
        }
        EXPECT_FALSE(text_of(entry).empty());
    }
}

TEST_P(HomeMessageFiles, TextsArePlainUtf8) {
    for (const FileEntry &entry : entries_) {
        const std::string text = text_of(entry);
        EXPECT_FALSE(recoded("UTF-32LE", "UTF-8", text).empty()) << text; // which is not UTF-8
        EXPECT_EQ(text.find('\\'), std::string::npos) << text;
        EXPECT_EQ(text.find("  "), std::string::npos) << text;
        EXPECT_TRUE(text.front() != ' ' && text.back() != ' ') << text;
        EXPECT_TRUE(std::ranges::none_of(text, [](unsigned char c) { return c < ' ' || c == 0x7F; })) << text;
    }
}

TEST_P(HomeMessageFiles, PlaceholdersAreThoseOfTheParameters) {
    std::map<Key, Placeholders> expected;
    for (const Raised &raised : RAISED)
        expected[{"comapierror", key_of(raised.number)}] = placeholders_of(raised.packed);
    for (const auto &[key, text] : texts_of(GetParam()))
        EXPECT_EQ(placeholders_in(text), expected[key]) << text;
}

// Only what is called the same in English may be told in its words.
TEST_P(HomeMessageFiles, TextsAreOfTheLanguage) {
    const auto english = texts_of("us_english");
    const auto own = texts_of(GetParam());
    if (GetParam() == "us_english") {
        for (const CS_STRINGS *failure = Msgfailures; failure->key != CS_UNUSED; ++failure)
            EXPECT_EQ(own.at({"comdefaults", failure->key}), failure->string);
        return;
    }
    for (const auto &[key, text] : own) {
        EXPECT_TRUE(key.first == "comlayer" || text != english.at(key)) << text;
    }
}

// Sets of personal computers, which a site may well choose for locales of its own.
TEST_P(HomeMessageFiles, TextsCanBeWrittenInOtherSetsOfTheLanguage) {
    static const std::map<std::string, Strings> SETS = {
        {"us_english", {"CP437", "CP1252"}},
        {"german", {"CP437", "CP850", "CP1252", "ISO-8859-15", "MACINTOSH"}},
        {"french", {"CP850", "CP1252", "ISO-8859-15", "MACINTOSH"}},
        {"spanish", {"CP437", "CP850", "CP1252", "ISO-8859-15", "MACINTOSH"}},
        {"italian", {"CP437", "CP850", "CP1252", "ISO-8859-15", "MACINTOSH"}},
        {"portuguese", {"CP850", "CP860", "CP1252", "ISO-8859-15", "MACINTOSH"}},
        {"polish", {"CP852", "CP1250"}},
        {"czech", {"CP852", "CP1250"}},
        {"hungarian", {"CP852", "CP1250"}},
        {"russian", {"CP866", "CP1251", "CP855", "MAC-CYRILLIC"}},
        {"greek", {"CP869", "CP737", "CP1253"}},
        {"turkish", {"CP857", "CP1254"}},
        {"thai", {"CP874"}},
        {"japanese", {"CP932"}},
        {"chinese", {"CP936"}},
        {"tchinese", {"CP950", "BIG5-HKSCS", "EUC-TW"}},
        {"korean", {"CP949"}},
    };
    for (const auto &[key, text] : texts_of(GetParam()))
        for (const std::string &set : SETS.at(GetParam()))
            EXPECT_FALSE(recoded(set.c_str(), "UTF-8", text).empty()) << set << " has not all of " << text;
}

// ---- The catalog in the locales that ship --------------------------------------------------------------------------

class HomeMessages : public Catalog, public testing::WithParamInterface<Strings> {
protected:
    const std::string &name() const { return GetParam()[0]; }
    std::map<Key, std::string> texts() const { return texts_of(GetParam()[1]); }
};

// Values of the lines.
std::vector<Strings> locales() {
    std::vector<Strings> lines;
    for (const FileEntry &line : entries_of(HOME + "/locales/locales.dat"))
        lines.push_back(line.values);
    return lines;
}

INSTANTIATE_TEST_SUITE_P(All, HomeMessages, testing::ValuesIn(locales()), [](const auto &test) {
    std::string name = test.param[0];
    std::ranges::replace_if(
        name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
});

TEST_P(HomeMessages, AllTextsAreReadInTheSetOfTheLocale) {
    ASSERT_EQ(open(name()), CS_SUCCEED);
    std::map<std::string, CS_INT> tags;
    for (const CS_ERRSECTION &section : Comlocsections)
        tags[section.errstr] = section.errtag;
    for (const FileEntry &entry : messages_of(GetParam()[1])) {
        const int number = std::stoi(entry.key);
        EXPECT_EQ(text(tags.at(entry.section), number), text_of(entry));
        EXPECT_EQ(sqlstate(tags.at(entry.section), number), entry.values[0]);
    }
}

std::string filled(std::string message_template, const Strings &parameters) {
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const std::string placeholder = "%" + std::to_string(i + 1) + "!";
        const std::size_t at = message_template.find(placeholder);
        EXPECT_NE(at, std::string::npos);
        message_template.replace(at, placeholder.size(), parameters[i]);
    }
    return message_template;
}

TEST_P(HomeMessages, EveryNumberArrivesWithItsParameters) {
    ASSERT_EQ(open(name()), CS_SUCCEED);
    const auto own = texts();
    const std::string before = "comn_init_cfg: " + own.at({"comlayer", 1}) + ": " + own.at({"comorigin", 4}) + ": ";
    CS_CHAR function[] = "comn_init_cfg", value[] = "/srv/100%!/a.cfg";
    CS_INT line = 4711;
    for (const Raised &raised_one : RAISED) {
        CsErrParams parameters;
        Strings behind;
        switch (raised_one.packed) {
        case Packed::none:
            ASSERT_EQ(com_ep_s(&parameters, function), CS_SUCCEED);
            break;
        case Packed::text:
            ASSERT_EQ(com_ep_ss(&parameters, function, value), CS_SUCCEED);
            behind = {value};
            break;
        case Packed::line_and_text:
            ASSERT_EQ(com_ep_sds(&parameters, function, &line, value), CS_SUCCEED);
            behind = {"4711", value};
            break;
        }
        const std::string expected = filled(own.at({"comapierror", key_of(raised_one.number)}), behind);
        EXPECT_EQ(raised(raised_one.number, &parameters), before + expected);
        EXPECT_EQ(told().severity, raised_one.severity);
        EXPECT_EQ(std::string(reinterpret_cast<const char *>(told().sqlstate), 5), raised_one.sqlstate);
        EXPECT_EQ(told().sqlstatelen, 5);
    }
}

// The longest name that a configuration may have; what is told of a longer one is cut shorter than that.
TEST_P(HomeMessages, ANameOf512BytesIsToldWhole) {
    ASSERT_EQ(open(name()), CS_SUCCEED);
    CS_CHAR function[] = "comn_init_cfg";
    std::string file(512, 'n');
    CsErrParams parameters;
    ASSERT_EQ(com_ep_ss(&parameters, function, file.data()), CS_SUCCEED);
    const std::string message = raised(17040899, &parameters);
    const std::string expected = filled(texts().at({"comapierror", 3}), {file});
    EXPECT_TRUE(message.ends_with(": " + expected)) << message;
}

TEST_P(HomeMessages, OfTheLocalizationLibraryNameIt) {
    ASSERT_EQ(open(name()), CS_SUCCEED);
    const auto own = texts();
    CS_CHAR function[] = "comn_intl_load";
    CsErrParams parameters;
    ASSERT_EQ(com_ep_s(&parameters, function), CS_SUCCEED);
    EXPECT_EQ(raised(LOCALIZATION | -INTL_EREAD, &parameters), "comn_intl_load: " + own.at({"comlayer", 1}) + ": " +
                                                                   own.at({"comorigin", 5}) + ": " +
                                                                   intl_errstr(INTL_EREAD));
}

TEST_P(HomeMessages, OfUnknownNumbersAreTheDefaults) {
    ASSERT_EQ(open(name()), CS_SUCCEED);
    const auto own = texts();
    CS_CHAR function[] = "f";
    CsErrParams parameters;
    ASSERT_EQ(com_ep_s(&parameters, function), CS_SUCCEED);
    EXPECT_EQ(raised(0x63636363, &parameters), "f: " + own.at({"comdefaults", 2}) + ": " + own.at({"comdefaults", 3}) +
                                                   ": " + own.at({"comdefaults", 4}));
}

} // namespace

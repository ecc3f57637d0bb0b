// What docs/data-files.md tells a site to do, done to a copy of the home with the texts of that page.
#include "home/catalog.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

const std::string page = support::content_of_file(DLXCOMN_SOURCE_DIR "/docs/data-files.md");

// The fenced texts of the section with this heading, without what they are indented by.
Strings texts_of(const std::string &heading) {
    const std::size_t begin = page.find("\n### " + heading + "\n");
    EXPECT_NE(begin, std::string::npos) << heading;
    std::istringstream section(page.substr(begin + 1, page.find("\n### ", begin + 1) - begin));
    Strings texts;
    bool is_inside = false;
    for (std::string line; std::getline(section, line);) {
        const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
        if (line.substr(indent) == "```") {
            is_inside = !is_inside;
            if (is_inside)
                texts.emplace_back();
        } else if (is_inside) {
            texts.back() += line.substr(indent) + "\n";
        }
    }
    return texts;
}

// `text` with every `from` replaced, of which there is at least one.
std::string replaced(std::string text, const std::string &from, const std::string &to) {
    std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    for (; at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

class HomeSite : public testing::Test {
protected:
    HomeSite() { fs::copy(HOME, home_.path_of("home"), fs::copy_options::recursive); }

    std::string path_of(const std::string &name) const { return home_.path_of("home/" + name); }
    void write(const std::string &name, const std::string &text) {
        fs::create_directories(fs::path(path_of(name)).parent_path());
        std::ofstream(path_of(name), std::ios::binary) << text;
    }
    // Puts a line behind the line of the section.
    void add(const std::string &name, const std::string &section, const std::string &line) {
        std::string text = support::content_of_file(path_of(name));
        const std::size_t at = text.find("[" + section + "]\n");
        ASSERT_NE(at, std::string::npos);
        write(name, text.insert(at + section.size() + 3, line));
    }

    support::TempDirectory home_;
};

// An application whose home is that of a site.
class Site : public Catalog {
public:
    explicit Site(const std::string &path) : Catalog(path) {}
    void TestBody() override {}
    using Catalog::locale;
    using Catalog::open;
    using Catalog::order;
    using Catalog::raised;
    using Catalog::told;
};

TEST_F(HomeSite, ALocaleIsALine) {
    const Strings texts = texts_of("A locale");
    ASSERT_EQ(texts.size(), 1u);
    add("locales/locales.dat", "linux", texts[0]);
    Site site(path_of(""));
    const CsLocCache *const cache = site.locale("de_AT.cp850");
    ASSERT_NE(cache, nullptr);
    EXPECT_EQ(text_of(cache->charname, cache->charnamelen), "cp850");
    EXPECT_STREQ(reinterpret_cast<const char *>(cache->locdateinfo->months[0]), "Januar");
}

TEST_F(HomeSite, ALanguageIsAnIdentifierThreeFilesAndALocale) {
    const Strings texts = texts_of("A language");
    ASSERT_EQ(texts.size(), 5u);
    add("config/objectid.dat", "natlang", texts[0]);
    write("locales/message/swedish/common.loc", texts[1]);
    write("locales/message/swedish/cslib.loc", texts[2]);
    write("locales/message/swedish/comnlib.loc", texts[3]);
    add("locales/locales.dat", "linux", texts[4]);
    Site site(path_of(""));
    const CsLocCache *const cache = site.locale("sv_SE.UTF-8");
    ASSERT_NE(cache, nullptr);
    EXPECT_STREQ(reinterpret_cast<const char *>(cache->locdateinfo->days[0]), "måndag");
    EXPECT_STREQ(cache->locdateinfo->dateorder, "ymd");

    ASSERT_EQ(site.open("sv_SE.UTF-8"), CS_SUCCEED);
    const std::string from = "/etc/ncs.cfg: klient: gemensamt bibliotek: ";
    CS_CHAR file[] = "/etc/ncs.cfg", token[] = "[[";
    CS_INT line = 7;
    CsErrParams parameters;
    ASSERT_EQ(com_ep_sds(&parameters, file, &line, token), CS_SUCCEED);
    EXPECT_EQ(site.raised(17039368, &parameters), from + "syntaxfel vid \"[[\" på rad 7");
    ASSERT_EQ(com_ep_s(&parameters, file), CS_SUCCEED);
    EXPECT_EQ(site.raised(17040902, &parameters), from + "meddelandet saknar text"); // which the example leaves out
}

TEST_F(HomeSite, AMessageIsALine) {
    const Strings texts = texts_of("Messages");
    ASSERT_EQ(texts.size(), 1u);
    const std::string file = "locales/message/us_english/comnlib.loc";
    std::string messages = support::content_of_file(path_of(file));
    const std::size_t at = messages.find("3  = ", messages.find("[comapierror]"));
    ASSERT_NE(at, std::string::npos);
    write(file, messages.replace(at, messages.find('\n', at) + 1 - at, texts[0]));
    Site site(path_of(""));
    ASSERT_EQ(site.open("en_US.UTF-8"), CS_SUCCEED);
    CS_CHAR function[] = "comn_init_cfg", name[] = "/etc/ncs.cfg";
    CsErrParams parameters;
    ASSERT_EQ(com_ep_ss(&parameters, function, name), CS_SUCCEED);
    EXPECT_EQ(site.raised(17040899, &parameters),
              "comn_init_cfg: client: common library: there is no file \"/etc/ncs.cfg\"; the help desk knows more");
}

// The page shows one that the messages of the home make.
TEST_F(HomeSite, AMessageIsToldInFourParts) {
    Site site(path_of(""));
    ASSERT_EQ(site.open("en_US.UTF-8"), CS_SUCCEED);
    CS_CHAR function[] = "comn_init_cfg", name[] = "/etc/ncs.cfg";
    CsErrParams parameters;
    ASSERT_EQ(com_ep_ss(&parameters, function, name), CS_SUCCEED);
    EXPECT_NE(page.find("\n    " + site.raised(17040899, &parameters) + "\n"), std::string::npos);
}

TEST_F(HomeSite, ALanguageWithoutAllSectionsHasNoCatalog) {
    const std::string file = "locales/message/german/comnlib.loc";
    std::string messages = support::content_of_file(path_of(file));
    const std::size_t at = messages.find("[comapierror]");
    ASSERT_NE(at, std::string::npos);
    write(file, messages.substr(0, at));
    Site site(path_of(""));
    EXPECT_EQ(site.open("de_DE.UTF-8"), CS_FAIL);
    CS_CHAR function[] = "f";
    CsErrParams parameters;
    ASSERT_EQ(com_ep_s(&parameters, function), CS_SUCCEED);
    EXPECT_EQ(site.raised(17040898, &parameters), "f: unable to get layer message string: unable to get origin message "
                                                  "string: unable to get error string");
    EXPECT_STREQ(reinterpret_cast<const char *>(site.told().sqlstate), "ZZZZZ");

    std::filesystem::remove(path_of(file));
    EXPECT_EQ(site.open("de_DE.UTF-8"), CS_ENOLOCFILE);
}

TEST_F(HomeSite, ASortOrderIsAnIdentifierAndAFile) {
    const Strings texts = texts_of("A sort order");
    ASSERT_EQ(texts.size(), 3u);
    add("config/objectid.dat", "collate", texts[0]);
    std::string order = support::content_of_file(path_of("charsets/iso_1/dict.srt"));
    order = replaced(order, "name = dict", "name = swedish");
    order = replaced(order, "id = \\x02", "id = \\x05");
    const std::size_t second_line = texts[1].find('\n') + 1;
    for (const std::string &line : {texts[1].substr(0, second_line), texts[1].substr(second_line)}) {
        const std::size_t at = order.find(line.substr(0, 12)); // "char = A, a,"
        ASSERT_NE(at, std::string::npos) << line;
        order.replace(at, order.find('\n', at) + 1 - at, line);
    }
    order.insert(order.find("\n", order.find("char = Z")) + 1, texts[2]);
    write("charsets/iso_1/swedish.srt", order);
    Site site(path_of(""));
    const CsSortDesc *const loaded = site.order("iso_1", "swedish");
    ASSERT_NE(loaded, nullptr);
    auto *const table = static_cast<SO_1CLASS *>(loaded->char_sort_class);
    const auto compare = [table](std::string left, std::string right) {
        return com__ps_dl_sqlhilo(table, left.data(), static_cast<int>(left.size()), right.data(),
                                  static_cast<int>(right.size()));
    };
    const Strings words = {"adel", "zebra", "\xE5r", "\xE4r", "\xF6l", "\xF8l"}; // är stands behind år, öl behind both
    for (std::size_t i = 1; i < words.size(); ++i)
        EXPECT_LT(compare(words[i - 1], words[i]), 0) << i;
}

TEST_F(HomeSite, ACharacterSetIsAnIdentifierADirectoryAndALocale) {
    const Strings texts = texts_of("A character set");
    ASSERT_EQ(texts.size(), 2u);
    add("config/objectid.dat", "charset", texts[0]);
    const std::string set = support::content_of_file(path_of("charsets/iso_1/charset.loc"));
    const std::string order = support::content_of_file(path_of("charsets/iso_1/binary.srt"));
    write("charsets/house_1/charset.loc", replaced(set, "name = iso_1", "name = house_1"));
    write("charsets/house_1/binary.srt", replaced(order, "charset = iso_1", "charset = house_1"));
    write("charsets/house_1/house_1.cfg", "");
    add("locales/locales.dat", "linux", texts[1]);
    fs::create_directory_symlink(WHOLE_HOME + "/charsets/unicode", path_of("charsets/unicode"));
    Site site(path_of(""));
    ASSERT_EQ(site.open("de_DE.house", "ISO-8859-1"), CS_SUCCEED);
    CS_CHAR file[] = "/etc/ncs.cfg", token[] = "[[";
    CS_INT line = 7;
    CsErrParams parameters;
    ASSERT_EQ(com_ep_sds(&parameters, file, &line, token), CS_SUCCEED);
    EXPECT_EQ(site.raised(17039368, &parameters),
              "/etc/ncs.cfg: Client: gemeinsame Bibliothek: Syntaxfehler in Zeile 7 bei »[[«");
}

TEST_F(HomeSite, TheArcIsReplacedInEveryLine) {
    const std::string file = "config/objectid.dat";
    write(file, replaced(support::content_of_file(path_of(file)), "1.3.6.1.4.1.54321", "1.3.6.1.4.1.99999.7"));
    Site site(path_of(""));
    const CsLocCache *const cache = site.locale("default");
    ASSERT_NE(cache, nullptr);
    const CsOID &oid = *cache->locsortorder->oid;
    EXPECT_EQ(text_of(oid.oidstring, oid.oidnamelen), "1.3.6.1.4.1.99999.7.5.1");
}

} // namespace

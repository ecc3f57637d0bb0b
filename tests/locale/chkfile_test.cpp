// The check of the files that a context needs: what it prints, whole, and the tests of single files.
#include "locale_fixture.h"
#include "support/account.h"
#include "support/child.h"
#include "support/environment.h"
#include "support/null_calls.h"

#include <filesystem>
#include <optional>

#include <unistd.h>

namespace {

using support::changed;
using support::NullCalls;
using support::ReturningAssertions;
using support::Variable;

const std::string OPENING = "\n\nThe context allocation routine failed when it tried to load localization files!!\n"
                            "One or more following problems may caused the failure\n\n";

std::string home_text(const std::string &home) {
    return "Your dalvex home directory is " + home +
           ". Check the environment variable DALVEX if it is not the one you want!\n";
}

std::string cannot_access(const std::string &path) { return "Cannot access " + path + " file\n"; }

// The home lies below a directory, so that it can have any name.
class Check : public testing::Test {
protected:
    Check() { home_.home().put(path_of("")); }
    ~Check() override { support::Accounts::clear(); }

    // Without a slash at the end where the name is empty.
    std::string path_of(const std::string &name) const {
        const std::string home = home_.path_of("").substr(0, home_.path_of("").size() - 1);
        return name.empty() ? home : home + "/" + name;
    }
    // What the check prints. The log file has the same.
    std::string printed() {
        const support::TempDirectory directory;
        const support::Ending ending = support::in_child([&](int notes) {
            CHILD_CHECK(notes, chdir(directory.path().c_str()) == 0);
            com_intl_verify_ctxloc(&context_);
        });
        EXPECT_TRUE(ending.exited(0));
        EXPECT_EQ(ending.notes, "");
        EXPECT_EQ(ending.out, "");
        EXPECT_EQ(support::content_of_file(directory.path_of("dlxinit.err")), ending.err);
        return ending.err;
    }
    std::string named(const std::string &name, const std::string &variable) {
        return "Using locale name \"" + name + "\" defined in environment variable " + variable + "\n";
    }
    const std::string DEFAULT = "Using default locale name: \"default\"\n";
    std::string begin() { return OPENING + home_text(path_of("")); }

    support::DataHome home_;
    Variable all_{"LC_ALL"};
    Variable lang_{"LANG"};
    Variable messages_{"LC_MESSAGES"};
    CS_CONTEXT context_ = {};
};

TEST_F(Check, CleanHomeHasNoFindings) { EXPECT_EQ(printed(), begin() + DEFAULT); }

TEST_F(Check, WithoutAHomeOnlyThatIsTold) {
    home_.home().put(std::nullopt);
    EXPECT_EQ(printed(), OPENING +
                             "Cannot access the dalvex home directory, please check environment variable DALVEX or "
                             "~dalvex\n");
}

TEST_F(Check, HomeMayBeOfTheAccount) {
    support::Accounts::home = path_of("");
    home_.home().put(std::nullopt);
    EXPECT_EQ(printed(), begin() + DEFAULT);
}

TEST_F(Check, IdentifiersAreNeededFirst) {
    home_.remove(support::OBJECTID_DAT);
    home_.remove(support::LOCALES_DAT);
    EXPECT_EQ(printed(), begin() + "Cannot access file objectid.dat\n");
}

TEST_F(Check, IdentifiersLieInTheHomeItselfNotTheSubdirectory) {
    const Variable ncs("DALVEX_NCS", "elsewhere");
    EXPECT_EQ(printed(), begin() + DEFAULT);
}

TEST_F(Check, LocalesAreNeededNext) {
    home_.remove(support::LOCALES_DAT);
    lang_.put("de");
    EXPECT_EQ(printed(), begin() + "Cannot access file locales.dat\n");
}

TEST_F(Check, NameComesFromTheEnvironment) {
    lang_.put("de");
    EXPECT_EQ(printed(), begin() + named("de", "LANG"));
    all_.put("C");
    EXPECT_EQ(printed(), begin() + named("C", "LC_ALL"));
    all_.put("");
    EXPECT_EQ(printed(), begin() + named("de", "LANG"));
    lang_.put("");
    EXPECT_EQ(printed(), begin() + DEFAULT) << "no variable is named";
}

TEST_F(Check, UnknownNameIsToldWithTheFile) {
    lang_.put("nowhere");
    EXPECT_EQ(printed(), begin() + named("nowhere", "LANG") + "Locale name \"nowhere\" doesn't exist in your " +
                             path_of(support::LOCALES_DAT) + " file\n");
}

TEST_F(Check, NameLongerThanItsRoomIsCut) {
    lang_.put(std::string(400, 'x'));
    const std::string cut(255, 'x');
    EXPECT_EQ(printed(), begin() + named(cut, "LANG") + "Locale name \"" + cut + "\" doesn't exist in your " +
                             path_of(support::LOCALES_DAT) + " file\n");
}

TEST_F(Check, TroubleOfTheReaderIsTold) {
    home_.write(support::LOCALES_DAT, "[linux\n");
    EXPECT_EQ(printed(), begin() + DEFAULT + "An intl library error occurs when trying to get local names from file: " +
                             path_of(support::LOCALES_DAT) + ", can't continue!\n");
}

TEST_F(Check, DirectoryInPlaceOfLocalesIsTold) {
    home_.remove(support::LOCALES_DAT);
    home_.make_directory(support::LOCALES_DAT);
    EXPECT_EQ(printed(), begin() + DEFAULT + "An intl library error occurs when trying to get local names from file: " +
                             path_of(support::LOCALES_DAT) + ", can't continue!\n");
}

TEST_F(Check, EachFileOfTheLocaleIsTold) {
    const std::vector<std::string> FILES = {"locales/message/german/common.loc", "locales/message/german/cslib.loc",
                                            "charsets/iso_1/binary.srt", "charsets/iso_1/charset.loc",
                                            "charsets/iso_1/iso_1.cfg"};
    lang_.put("de");
    const std::string start = begin() + named("de", "LANG");
    for (const std::string &file : FILES) {
        const std::string content = support::content_of_file(path_of(file));
        home_.remove(file);
        EXPECT_EQ(printed(), start + cannot_access(path_of(file)));
        home_.write(file, content);
    }
    std::string all = start;
    for (const std::string &file : FILES) {
        home_.remove(file);
        all += cannot_access(path_of(file));
        EXPECT_EQ(printed(), all) << "in the order of the table";
    }
}

TEST_F(Check, DatesAreNotNeededWhereTheyHaveAName) {
    home_.remove(support::common_loc_of("us_english"));
    lang_.put("dated");
    EXPECT_EQ(printed(), begin() + named("dated", "LANG"));
    lang_.put("default");
    EXPECT_EQ(printed(),
              begin() + named("default", "LANG") + cannot_access(path_of(support::common_loc_of("us_english"))));
}

TEST_F(Check, OrderIsSoughtInTheDirectoryOfTheSet) {
    home_.remove("charsets/iso_1/dict.srt");
    lang_.put("C");
    EXPECT_EQ(printed(), begin() + named("C", "LANG") + cannot_access(path_of("charsets/iso_1/dict.srt")));
    lang_.put("us.850");
    EXPECT_EQ(printed(), begin() + named("us.850", "LANG"));
}

TEST_F(Check, PercentSignsComeOutAsTheyAre) {
    const std::string home = path_of("100%s%n%%d");
    std::filesystem::create_directories(home + "/locales");
    for (const char *directory : {"config", "charsets", "locales/message"})
        std::filesystem::rename(path_of(directory), home + "/" + directory);
    support::write_file(home + "/locales/locales.dat",
                        changed(support::locales_dat(), "[linux]\n",
                                "[linux]\nlocale = %d, %x, %s%n, \"%%\"\nlocale = plain, german, %c\n"));
    home_.home().put(home);
    lang_.put("%d");
    EXPECT_EQ(printed(),
              OPENING + home_text(home) + named("%d", "LANG") + cannot_access(home + "/locales/message/%x/common.loc") +
                  cannot_access(home + "/locales/message/%x/cslib.loc") +
                  cannot_access(home + "/charsets/%s%n/%%.srt") + cannot_access(home + "/charsets/%s%n/charset.loc") +
                  cannot_access(home + "/charsets/%s%n/%s%n.cfg"));
    lang_.put("%n%s");
    EXPECT_EQ(printed(), OPENING + home_text(home) + named("%n%s", "LANG") +
                             "Locale name \"%n%s\" doesn't exist in your " + home + "/locales/locales.dat file\n");
}

TEST_F(Check, TextsAreCutToTheirRoom) {
    // The home is longer than what is left of 1024 bytes behind the words in front of it.
    std::string home = path_of("");
    while (home.size() < 1010)
        home += "/" + std::string(std::min<size_t>(1010 - home.size(), 200), '%');
    home_.home().put(home);
    const std::string whole = home_text(home);
    const size_t first = std::string("Your dalvex home directory is ").size() + home.size() + 2;
    ASSERT_GT(first, 1023u);
    EXPECT_EQ(printed(), OPENING + whole.substr(0, 1023) + whole.substr(first) + "Cannot access file objectid.dat\n");
}

TEST_F(Check, PathThatDoesNotFitIsAStar) {
    // The base files fit; what lies deeper does not.
    std::string home = path_of("");
    while (home.size() < 980)
        home += "/" + std::string(std::min<size_t>(980 - home.size() - 1, 200), 'x');
    std::filesystem::create_directories(home + "/locales");
    std::filesystem::create_directories(home + "/config");
    support::write_file(home + "/config/objectid.dat", support::objectid_dat());
    support::write_file(home + "/locales/locales.dat",
                        "[linux]\nlocale = default, " + std::string(100, 'l') + ", " + std::string(100, 's') + "\n");
    home_.home().put(home);
    std::string expected = OPENING + home_text(home) + DEFAULT;
    for (int i = 0; i < 5; ++i)
        expected += cannot_access("*");
    EXPECT_EQ(printed(), expected);
}

TEST_F(Check, LeavesNothingBehind) {
    const CS_CONTEXT before = context_;
    testing::internal::CaptureStderr();
    const std::filesystem::path directory = std::filesystem::current_path();
    const support::TempDirectory elsewhere;
    std::filesystem::current_path(elsewhere.path());
    com_intl_verify_ctxloc(&context_);
    std::filesystem::current_path(directory);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), begin() + DEFAULT);
    EXPECT_EQ(std::memcmp(&before, &context_, sizeof before), 0);
}

// ---- Single files -------------------------------------------------------------------------------------------------

class SingleFile : public Check {
protected:
    CS_RETCODE message(std::string language, std::string file, CS_INT room = 1024) {
        return com__verify_msgfile(&context_, chars(language), length_of(language), chars(file), length_of(file), path_,
                                   room);
    }
    CS_RETCODE charset(std::string set, std::string file, std::optional<std::string> extension, CS_INT room = 1024) {
        return com__verify_charfile(&context_, chars(set), chars(file), extension ? chars(*extension) : nullptr, path_,
                                    room);
    }
    CS_CHAR path_[1024] = "~~~~~~~";
};

TEST_F(SingleFile, OfALanguage) {
    EXPECT_EQ(message("german", "common.loc"), CS_SUCCEED);
    EXPECT_EQ(path_, path_of("locales/message/german/common.loc"));
    EXPECT_EQ(message("german", "none.loc"), CS_FAIL);
    EXPECT_EQ(path_, path_of("locales/message/german/none.loc"));
}

TEST_F(SingleFile, OfASet) {
    EXPECT_EQ(charset("iso_1", "charset.loc", std::nullopt), CS_SUCCEED);
    EXPECT_EQ(path_, path_of("charsets/iso_1/charset.loc"));
    EXPECT_EQ(charset("iso_1", "dict", "srt"), CS_SUCCEED);
    EXPECT_EQ(path_, path_of("charsets/iso_1/dict.srt"));
    EXPECT_EQ(charset("iso_1", "dict", "cfg"), CS_FAIL);
    EXPECT_EQ(path_, path_of("charsets/iso_1/dict.cfg"));
}

TEST_F(SingleFile, OfTheMessagesOfALocale) {
    std::string language = "german";
    CsLocCache cache = {}, other = {};
    cache.langname = chars(language);
    cache.langnamelen = length_of(language);
    CS_LOCALE locale = locale_of(&other);
    locale.messageptr = &cache;
    CS_CHAR common[] = "common.loc", none[] = "none.loc";
    EXPECT_EQ(com_intl_verify_a_msgfile(&context_, &locale, common, path_, 1024), CS_SUCCEED);
    EXPECT_EQ(path_, path_of("locales/message/german/common.loc"));
    EXPECT_EQ(com_intl_verify_a_msgfile(&context_, &locale, none, path_, 1024), CS_FAIL);
    EXPECT_EQ(com_intl_verify_a_msgfile(&context_, &locale, common, path_, 10), CS_FAIL);
    EXPECT_STREQ(path_, "*");
}

TEST_F(SingleFile, PathThatDoesNotFitIsAStar) {
    EXPECT_EQ(message("german", "common.loc", 20), CS_FAIL);
    EXPECT_STREQ(path_, "*");
    EXPECT_EQ(charset("iso_1", "dict", "srt", 20), CS_FAIL);
    EXPECT_STREQ(path_, "*");
    EXPECT_EQ(message("german", "common.loc", 2), CS_FAIL);
    EXPECT_STREQ(path_, "*");
    EXPECT_EQ(message("german", "common.loc", 1), CS_FAIL);
    EXPECT_STREQ(path_, "") << "nothing is written past the room";
}

TEST_F(SingleFile, StatusOfTheBuilderIsTold) {
    home_.home().put(std::nullopt);
    EXPECT_EQ(message("german", "common.loc"), CS_EINTL);
    EXPECT_STREQ(path_, "*");
    EXPECT_EQ(charset("iso_1", "dict", "srt"), CS_EINTL);
    EXPECT_STREQ(path_, "*");
    EXPECT_EQ(context_.ctxintlerr, INTL_ENOHOME);
}

using SingleFileDeathTest = SingleFile;

TEST_F(SingleFileDeathTest, NeedsAPathWithRoom) {
    CS_CHAR name[] = "x";
    CsLocCache cache = {};
    cache.langname = name;
    CS_LOCALE locale = locale_of(&cache), empty = {};
    NullCalls calls;
    calls.add(
        "msgfile", [&] { return com__verify_msgfile(&context_, name, 1, name, 1, nullptr, 9); }, CS_FAIL);
    calls.add(
        "charfile", [&] { return com__verify_charfile(&context_, name, name, name, nullptr, 9); }, CS_FAIL);
    calls.add(
        "a msgfile", [&] { return com_intl_verify_a_msgfile(&context_, &locale, name, nullptr, 9); }, CS_FAIL);
    calls.add(
        "locale", [&] { return com_intl_verify_a_msgfile(&context_, nullptr, name, path_, 9); }, CS_FAIL);
    calls.add(
        "messages", [&] { return com_intl_verify_a_msgfile(&context_, &empty, name, path_, 9); }, CS_FAIL);
    calls.add(
        "file", [&] { return com_intl_verify_a_msgfile(&context_, &locale, nullptr, path_, 9); }, CS_FAIL);
    calls.add(
        "check", [&] { return com_intl_verify_ctxloc(nullptr), 0L; }, 0);
    calls.expect_reports("chkfile");
    calls.expect_answers([] {}, [&] { EXPECT_STREQ(path_, "~~~~~~~"); });
    for (const CS_INT room : {0, -1}) {
        EXPECT_BOMB(message("x", "y", room), "chkfile");
        EXPECT_BOMB(charset("x", "y", "z", room), "chkfile");
        const ReturningAssertions returning;
        EXPECT_EQ(message("x", "y", room), CS_FAIL);
        EXPECT_EQ(charset("x", "y", "z", room), CS_FAIL);
        EXPECT_EQ(returning.count(), 2);
        EXPECT_STREQ(path_, "~~~~~~~");
    }
}

} // namespace

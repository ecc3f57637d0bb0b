// dlxcomn paths over homes of the tests' own.
#include "support/environment.h"
#include "support/process.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using support::ProcessOutcome;
using support::TempDirectory;
using support::Variable;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Paths : public testing::Test {
protected:
    Paths() { home_.put(directory_.path()); }
    static ProcessOutcome paths(std::vector<std::string> options = {}) {
        options.insert(options.begin(), {DLXCOMN_COMMAND, "paths"});
        return support::run_process(std::move(options));
    }
    static std::string line(const char *what, const char *state, const std::string &path) {
        char result[2048];
        std::snprintf(result, sizeof result, "\n%-16s%-14s%s\n", what, state, path.c_str());
        return result;
    }
    void add(const std::string &name) {
        std::filesystem::create_directories(std::filesystem::path(directory_.path_of(name)).parent_path());
        support::write_file(directory_.path_of(name), "");
    }

    TempDirectory directory_;
    Variable home_{"DALVEX"};
    Variable ncs_{"DALVEX_NCS"};
    Variable ifile_{"DLXNCS_IFILE"};
    Variable new_tcl_{"DLXNCS_TCL_CFG"};
    Variable old_tcl_{"DALVEX_TCL_CFG"};
};

#define EXPECT_LINE(outcome, what, state, path) EXPECT_THAT((outcome).output, HasSubstr(line(what, state, path)))

TEST_F(Paths, EmptyHomeHasNothing) {
    const ProcessOutcome outcome = paths();
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.output, StartsWith("DALVEX          \"" + directory_.path() + "\"\nDALVEX_NCS      not set\n"));
    EXPECT_LINE(outcome, "home", "readable", directory_.path());
    const std::pair<const char *, const char *> missing[] = {
        {"interfaces", "interfaces"},
        {"configuration", "config/ncs.cfg"},
        {"transport", "config/libtcl64.cfg"},
        {"identifiers", "config/objectid.dat"},
        {"locale names", "locales/locales.dat"},
        {"date data", "locales/message/us_english/common.loc"},
        {"messages", "locales/message/us_english/comnlib.loc"},
        {"character set", "charsets/iso_1/charset.loc"},
        {"sort order", "charsets/iso_1/binary.srt"},
        {"Unicode tables", "charsets/unicode"},
        {"libraries", "devlib3p64"},
    };
    for (const auto &[what, name] : missing)
        EXPECT_LINE(outcome, what, "missing", directory_.path_of(name));
}

TEST_F(Paths, FilesThatAreThereAreReadable) {
    add("interfaces");
    add("locales/locales.dat");
    add("charsets/unicode/cp850.table");
    const ProcessOutcome outcome = paths();
    EXPECT_LINE(outcome, "interfaces", "readable", directory_.path_of("interfaces"));
    EXPECT_LINE(outcome, "locale names", "readable", directory_.path_of("locales/locales.dat"));
    EXPECT_LINE(outcome, "Unicode tables", "readable", directory_.path_of("charsets/unicode"));
}

TEST_F(Paths, ThingsOfTheWrongKindAreTold) {
    add("interfaces/file");
    add("devlib3p64");
    add("config");
    const ProcessOutcome outcome = paths();
    EXPECT_LINE(outcome, "interfaces", "a directory", directory_.path_of("interfaces"));
    EXPECT_LINE(outcome, "libraries", "no directory", directory_.path_of("devlib3p64"));
    EXPECT_LINE(outcome, "configuration", "missing", directory_.path_of("config/ncs.cfg"));
}

TEST_F(Paths, LoopOfLinksIsNotReadable) {
    std::filesystem::create_symlink("interfaces", directory_.path_of("interfaces"));
    EXPECT_LINE(paths(), "interfaces", "not readable", directory_.path_of("interfaces"));
}

TEST_F(Paths, OptionsNameLanguageCharsetAndSortorder) {
    add("charsets/cp850/dict.srt");
    const ProcessOutcome outcome = paths({"--language", "french", "--charset=cp850", "--sortorder", "dict"});
    EXPECT_LINE(outcome, "messages", "missing", directory_.path_of("locales/message/french/comnlib.loc"));
    EXPECT_LINE(outcome, "character set", "missing", directory_.path_of("charsets/cp850/charset.loc"));
    EXPECT_LINE(outcome, "sort order", "readable", directory_.path_of("charsets/cp850/dict.srt"));
}

TEST_F(Paths, VariablesMoveTheirFiles) {
    ncs_.put("sub");
    ifile_.put("/etc/hosts");
    new_tcl_.put("/absent/tcl.cfg");
    old_tcl_.put("/never/asked");
    const ProcessOutcome outcome = paths();
    EXPECT_THAT(outcome.output, HasSubstr("DALVEX_NCS      \"sub\"\n"));
    EXPECT_LINE(outcome, "interfaces", "readable", "/etc/hosts");
    EXPECT_LINE(outcome, "transport", "missing", "/absent/tcl.cfg");
    EXPECT_LINE(outcome, "libraries", "missing", directory_.path_of("sub/devlib3p64"));
    EXPECT_LINE(outcome, "configuration", "missing", directory_.path_of("config/ncs.cfg"));
}

TEST_F(Paths, NamesThatDoNotFitAreTold) {
    const ProcessOutcome outcome = paths({"--charset", std::string(1000, 'c')});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_LINE(outcome, "character set", "too long", "");
    new_tcl_.put(std::string(1025, 't'));
    EXPECT_LINE(paths(), "transport", "too long", "");
}

TEST_F(Paths, UnknownHomeFailsBehindTheVariables) {
    home_.put({});
    // Beside a command that lies elsewhere there is no home.
    std::filesystem::create_directory(directory_.path_of("bin"));
    std::filesystem::copy_file(DLXCOMN_COMMAND, directory_.path_of("bin/dlxcomn"));
    const ProcessOutcome outcome = support::run_process({directory_.path_of("bin/dlxcomn"), "paths"});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_THAT(outcome.output, StartsWith("DALVEX          not set\n"));
    EXPECT_THAT(outcome.output, Not(HasSubstr("locales")));
    EXPECT_THAT(outcome.errors, StartsWith("dlxcomn: the home directory is not known"));
}

TEST_F(Paths, HomeBesideTheCommandIsTold) {
    const char *const lines = "DALVEX          not set: the home beside the command\n";
    for (const std::optional<std::string> &value : {std::optional<std::string>(), std::optional<std::string>("")}) {
        home_.put(value);
        const ProcessOutcome outcome = paths();
        EXPECT_EQ(outcome.exit_code, 0);
        EXPECT_THAT(outcome.output, StartsWith(lines));
        EXPECT_LINE(outcome, "home", "readable", DLXCOMN_BUILD_DIR "/home");
        EXPECT_LINE(outcome, "Unicode tables", "readable", DLXCOMN_BUILD_DIR "/home/charsets/unicode");
    }
    // An installed command has it in another place.
    std::filesystem::create_directories(directory_.path_of("bin"));
    std::filesystem::copy_file(DLXCOMN_COMMAND, directory_.path_of("bin/dlxcomn"));
    add("share/dlxcomn/home/config/objectid.dat");
    const ProcessOutcome installed = support::run_process({directory_.path_of("bin/dlxcomn"), "paths"});
    EXPECT_EQ(installed.exit_code, 0);
    EXPECT_THAT(installed.output, StartsWith(lines));
    EXPECT_LINE(installed, "identifiers", "readable",
                std::filesystem::canonical(directory_.path()).string() + "/share/dlxcomn/home/config/objectid.dat");
    // A directory that is named so and is none.
    std::filesystem::create_directory(directory_.path_of("home"));
    EXPECT_THAT(support::run_process({directory_.path_of("bin/dlxcomn"), "paths"}).output,
                HasSubstr("/share/dlxcomn/home\n"));
}

TEST_F(Paths, HomeThatIsTooLongFailsAndDoesNotAbort) {
    home_.put("/" + std::string(1022, 'h'));
    EXPECT_EQ(paths().exit_code, 0);
    for (const size_t length : {1023, 1024, 5000}) {
        home_.put("/" + std::string(length, 'h'));
        const ProcessOutcome outcome = paths();
        EXPECT_EQ(outcome.exit_code, 1) << length;
        EXPECT_THAT(outcome.errors, HasSubstr("has " + std::to_string(length + 1) + " bytes")) << length;
    }
}

TEST_F(Paths, TakesNoOperandAndNoOtherOption) {
    EXPECT_EQ(paths({"french"}).exit_code, 2);
    EXPECT_THAT(paths({"french"}).errors, HasSubstr("paths takes no argument, not \"french\""));
    EXPECT_THAT(paths({"--lang", "french"}).errors,
                HasSubstr("no option --lang; there are --language, --charset and --sortorder"));
    EXPECT_THAT(paths({"--charset"}).errors, HasSubstr("--charset wants a value"));
}

} // namespace

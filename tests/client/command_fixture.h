// What tests of the command's localization share: runs in an environment of their own, over the home of the build tree
// or over a small one that they may damage.
#ifndef TESTS_CLIENT_COMMAND_FIXTURE_H
#define TESTS_CLIENT_COMMAND_FIXTURE_H

#include "support/environment.h"
#include "support/process.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

using testing::HasSubstr;
using testing::StartsWith;

// The home of the build tree; no locale in the environment.
class CommandTest : public testing::Test {
protected:
    static support::ProcessOutcome dlxcomn(std::vector<std::string> arguments, const std::string &input = "") {
        arguments.insert(arguments.begin(), DLXCOMN_COMMAND);
        return support::run_process(std::move(arguments), input);
    }

    support::Variable home_{"DALVEX", DLXCOMN_BUILD_DIR "/home"};
    support::Variable lc_all_{"LC_ALL"};
    support::Variable lang_{"LANG"};
};

// A home with copies of what ships, of which a test may change any file.
class SiteTest : public CommandTest {
protected:
    SiteTest() {
        namespace fs = std::filesystem;
        const fs::path shipped = DLXCOMN_BUILD_DIR "/home", site = directory_.path();
        constexpr auto WHOLE = fs::copy_options::recursive;
        fs::create_directories(site / "charsets");
        for (const char *part : {"config", "locales", "charsets/iso_1", "charsets/utf8", "charsets/cp850"})
            fs::copy(fs::canonical(shipped / part), site / part, WHOLE);
        fs::create_directory(site / "charsets/unicode");
        for (const char *table : {"1.uct", "2.uct"})
            fs::copy(shipped / "charsets/unicode" / table, site / "charsets/unicode" / table);
        home_.put(site.string());
    }

    std::string path_of(const std::string &name) const { return directory_.path_of(name); }
    void write(const std::string &name, const std::string &content) const {
        support::write_file(path_of(name), content);
    }
    std::string content_of(const std::string &name) const { return support::content_of_file(path_of(name)); }
    void remove(const std::string &name) const { std::filesystem::remove_all(path_of(name)); }
    // Replaces the first `from`, which has to be there.
    void change(const std::string &name, const std::string &from, const std::string &to) const {
        std::string content = content_of(name);
        const size_t at = content.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        write(name, content.replace(at, from.size(), to));
    }
    // The line on which a text stands, from 1.
    int line_of(const std::string &name, const std::string &text) const {
        const std::string content = content_of(name);
        const size_t at = content.find(text);
        EXPECT_NE(at, std::string::npos) << text;
        return 1 + static_cast<int>(std::count(content.begin(), content.begin() + static_cast<ptrdiff_t>(at), '\n'));
    }

    support::TempDirectory directory_;
};

#define EXPECT_DONE(outcome, expected) \
    do { \
        const support::ProcessOutcome &done = (outcome); \
        EXPECT_EQ(done.output, expected); \
        EXPECT_EQ(done.errors, ""); \
        EXPECT_EQ(done.exit_code, 0); \
    } while (0)

// One complaint, word for word.
#define EXPECT_FAILED(outcome, sentence) \
    do { \
        const support::ProcessOutcome &failed = (outcome); \
        EXPECT_EQ(failed.errors, "dlxcomn: " + std::string(sentence) + "\n"); \
        EXPECT_EQ(failed.exit_code, 1); \
    } while (0)

#define EXPECT_MISUSED(outcome, sentence) \
    do { \
        const support::ProcessOutcome &misused = (outcome); \
        EXPECT_THAT(misused.errors, StartsWith("dlxcomn: " + std::string(sentence) + "\n`dlxcomn ")); \
        EXPECT_EQ(misused.output, ""); \
        EXPECT_EQ(misused.exit_code, 2); \
    } while (0)

#endif

// README.md against the build: each program of its examples is the one in examples/, and each line that it shows
// a person typing prints what it says.
#include "support/process.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string content_of(const std::string &path) {
    std::ifstream file(path);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

// The contents of the fenced blocks of a language.
std::vector<std::string> blocks(const std::string &language) {
    std::vector<std::string> result;
    std::istringstream readme(content_of(DLXCOMN_SOURCE_DIR "/README.md"));
    bool inside = false;
    for (std::string line; std::getline(readme, line);) {
        if (inside && line == "```")
            inside = false;
        else if (inside)
            result.back() += line + "\n";
        else if (line == "```" + language) {
            inside = true;
            result.emplace_back();
        }
    }
    return result;
}

struct Typed {
    std::string line;
    std::string answer;
};

std::vector<Typed> typed_lines() {
    std::vector<Typed> result;
    for (const std::string &block : blocks("console")) {
        std::istringstream stream(block);
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with("$ "))
                result.push_back({line.substr(2), ""});
            else if (!result.empty())
                result.back().answer += line + "\n";
        }
    }
    return result;
}

// Both outputs of a line, in the order in which a terminal shows them.
std::string answer_to(const std::string &line) {
    const std::string places =
        "cd \"" DLXCOMN_BUILD_DIR "/bin/examples\" && PATH=\"" DLXCOMN_BUILD_DIR "/bin:$PATH\" && ";
    return support::run_process({"/bin/sh", "-c", places + "{ " + line + "; } 2>&1"}).output;
}

TEST(Readme, ShowsWhatItsCommandsPrint) {
    int checked = 0;
    for (const Typed &typed : typed_lines()) {
        if (typed.line.starts_with("cc ") || typed.line.starts_with("./dev"))
            continue; // builds that the tests are part of
        EXPECT_EQ(typed.answer, answer_to(typed.line)) << typed.line;
        ++checked;
    }
    EXPECT_GE(checked, 10);
}

TEST(Readme, ShowsTheExamplesAsTheyAre) {
    const std::vector<std::string> programs = blocks("c");
    ASSERT_EQ(programs.size(), 1u);
    EXPECT_EQ(programs[0], content_of(DLXCOMN_SOURCE_DIR "/examples/convert.c"));
}

} // namespace

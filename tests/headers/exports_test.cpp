// What the library exports is what cmake/exports.list says: each name, functions as functions and data as
// data, nothing more.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Names = std::set<std::string>;

// Lines "F name" and "D name".
Names listed() {
    Names names;
    std::ifstream list(DLXCOMN_SOURCE_DIR "/cmake/exports.list");
    for (std::string line; std::getline(list, line);)
        if (line[0] != '#')
            names.insert(line);
    return names;
}

// The same from the library's dynamic symbols. A kind that is neither function nor data keeps its letter.
Names exported() {
    Names names;
    FILE *symbols = popen("nm -D --defined-only --format=posix '" DLXCOMN_LIBRARY "'", "r");
    if (symbols == nullptr)
        return names;
    char line[1024];
    while (std::fgets(line, sizeof line, symbols) != nullptr) {
        std::istringstream fields(line);
        std::string name, kind;
        fields >> name >> kind;
        if (kind == "A" && name == "DLXCOMN_1")
            continue; // the version itself
        const size_t version = name.find("@@DLXCOMN_1");
        EXPECT_NE(version, std::string::npos) << name << " carries no version";
        name = name.substr(0, version);
        if (kind == "T")
            kind = "F";
        else if (kind == "B" || kind == "D" || kind == "R")
            kind = "D";
        names.insert(kind + " " + name);
    }
    EXPECT_EQ(pclose(symbols), 0);
    return names;
}

std::vector<std::string> without(const Names &names, const Names &others) {
    std::vector<std::string> rest;
    for (const std::string &name : names)
        if (others.count(name) == 0)
            rest.push_back(name);
    return rest;
}

bool is_name(const std::string &name) {
    return std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
}

TEST(Exports, EachListedNameIsExported) { EXPECT_EQ(without(listed(), exported()), std::vector<std::string>{}); }

TEST(Exports, EachExportedNameIsListed) { EXPECT_EQ(without(exported(), listed()), std::vector<std::string>{}); }

TEST(Exports, TheListIsInOrderAndWellFormed) {
    std::ifstream list(DLXCOMN_SOURCE_DIR "/cmake/exports.list");
    std::string previous;
    int names = 0;
    for (std::string line; std::getline(list, line);) {
        if (line[0] == '#')
            continue;
        EXPECT_TRUE(line.starts_with("F ") || line.starts_with("D ")) << line;
        EXPECT_TRUE(line.size() > 2 && is_name(line.substr(2))) << line;
        const std::string name = line.substr(2);
        EXPECT_LT(previous, name);
        previous = name;
        ++names;
    }
    EXPECT_GE(names, 380);
}

} // namespace

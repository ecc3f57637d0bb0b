// The files of character sets are what the generator makes of the tables of this machine.
#include "home/shipped_home.h"

#include <filesystem>
#include <map>
#include <set>

namespace {

namespace fs = std::filesystem;

std::map<std::string, std::string> files_below(const fs::path &directory) {
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(directory))
        if (entry.is_regular_file())
            files[entry.path().lexically_relative(directory)] = support::content_of_file(entry.path());
    return files;
}

TEST(HomeGenerator, MakesTheFilesThatShip) {
    const support::TempDirectory made;
    ASSERT_EQ(std::system((DLXCOMN_HOME_GENERATOR " " + made.path()).c_str()), 0);
    const auto expected = files_below(made.path());
    const auto shipped = files_below(HOME + "/charsets");
    for (const auto &[name, content] : expected) {
        const auto file = shipped.find(name);
        ASSERT_NE(file, shipped.end()) << name << " is not in home/charsets";
        EXPECT_TRUE(file->second == content) << "home/charsets/" << name << " is another one";
    }
    for (const auto &[name, content] : shipped)
        EXPECT_TRUE(expected.contains(name)) << name << " is nobody's";
}

TEST(HomeGenerator, TellsADirectoryThatItCannotMake) {
    EXPECT_NE(std::system(DLXCOMN_HOME_GENERATOR " /proc/none 2>/dev/null"), 0);
    EXPECT_NE(std::system(DLXCOMN_HOME_GENERATOR " 2>/dev/null"), 0);
}

TEST(HomeFiles, EverySetThatConvertsHasItsThreeFilesAndNoOther) {
    std::set<std::string> names;
    for (const CSID_CSNAME &set : shipped_sets()) {
        const std::string name = name_of(set);
        names.insert(name);
        for (const std::string &file : {std::string("charset.loc"), std::string("binary.srt"), name + ".cfg"})
            EXPECT_TRUE(fs::is_regular_file(HOME + "/charsets/" + name + "/" + file)) << name << "/" << file;
    }
    EXPECT_EQ(names.size(), 117u);
    for (const auto &directory : fs::directory_iterator(HOME + "/charsets"))
        EXPECT_TRUE(names.contains(directory.path().filename())) << directory.path();
}

TEST(HomeFiles, StaySmall) {
    std::uintmax_t size = 0;
    for (const auto &entry : fs::recursive_directory_iterator(HOME))
        if (entry.is_regular_file())
            size += entry.file_size();
    EXPECT_LT(size, 3u << 20);
}

} // namespace

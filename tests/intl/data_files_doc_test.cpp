// docs/data-files.md against the reader: its example read, its table of values and its table of errors.
#include "support/locfile_steps.h"
#include "support/memory_file.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

using support::Step;

const std::string page = support::content_of_file(DLXCOMN_SOURCE_DIR "/docs/data-files.md");

std::map<std::string, std::vector<std::string>> values_of_the_example() {
    const std::string fence = "```ini\n";
    const size_t begin = page.find(fence) + fence.size();
    const support::MemoryFile memory(page.substr(begin, page.find("```", begin) - begin));
    INTL_LOCFILE file;
    EXPECT_EQ(intl_open(memory.path(), &file), INTL_OK);
    std::map<std::string, std::vector<std::string>> result;
    while (support::told(file, Step::section).text)
        while (const auto key = support::told(file, Step::entry).text)
            for (auto &values = result[*key]; const auto value = support::told(file, Step::value).text;)
                values.push_back(*value);
    EXPECT_EQ(support::told(file, Step::section).status, INTL_OK) << "line " << file.linenum;
    EXPECT_EQ(intl_close(&file), INTL_OK);
    return result;
}

TEST(DataFilesPage, ExampleReadsAsItsTableSays) {
    using namespace std::string_literals;
    const std::map<std::string, std::vector<std::string>> expected = {
        {"17040897", {"08001", "The server %1! cannot be reached, ", "%2! tells why"}},
        {"17040898", {"HY001", "Out of memory"}},
        {"days", {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"}},
        {"firstday", {"1"}},
        {"dateorder", {"mdy"}},
        {"class", {"\1"}},
        {"image_size", {"\0\0\5\5"s}},
        {"blank", {" "}},
        {"separator", {","}},
        {"motto", {"as written: \\x41 stays four characters"}},
        {"nothing", {}},
    };
    EXPECT_EQ(values_of_the_example(), expected);
    for (const auto &[key, values] : expected)
        EXPECT_NE(page.find("\n| `" + key + "` | "), std::string::npos) << key;
}

TEST(DataFilesPage, EveryErrorOfTheReaderIsToldWithItsText) {
    for (const int code : {INTL_ECANTOPEN, INTL_EREAD, INTL_ELINETOOLONG, INTL_EBADSECTION, INTL_ENOEQUALS,
                           INTL_EUNTERMINATED, INTL_EBADESCAPE, INTL_ENOMEMORY, INTL_ENOHOME}) {
        const std::string row = "\n| " + std::to_string(code) + " | " + intl_errstr(code) + " | ";
        EXPECT_NE(page.find(row), std::string::npos) << row;
    }
}

} // namespace

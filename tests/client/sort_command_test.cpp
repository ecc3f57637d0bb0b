// dlxcomn sort, and the order that it sorts by.
#include "command/home.h"
#include "command/sorting.h"
#include "command_fixture.h"

#include <algorithm>
#include <random>

namespace {

using client::Home;
using client::lines_of;
using Sort = CommandTest;
using SiteSort = SiteTest;
using Sorting = CommandTest;

support::ProcessOutcome run(std::vector<std::string> arguments, const std::string &input) {
    arguments.insert(arguments.begin(), {DLXCOMN_COMMAND, "sort"});
    return support::run_process(std::move(arguments), input);
}

support::ProcessOutcome sorted_by(const char *order, const std::string &lines) {
    return run({"--charset", "iso_1", "--order", order}, lines);
}

const std::string WORDS = "Zebra\napfel\n\xC4pfel\nApfelbaum\nApfel\n\xE4pfel\nZebra\n";

TEST_F(Sort, DictionarySortsByLettersThenAccentsAndCase) {
    EXPECT_DONE(sorted_by("dict", WORDS), "Apfel\napfel\n\xC4pfel\n\xE4pfel\nApfelbaum\nZebra\nZebra\n");
}

TEST_F(Sort, BinarySortsByCodes) {
    EXPECT_DONE(sorted_by("binary", WORDS), "Apfel\nApfelbaum\nZebra\nZebra\napfel\n\xC4pfel\n\xE4pfel\n");
    EXPECT_DONE(sorted_by("bin", WORDS), sorted_by("binary", WORDS).output); // another name of it
    EXPECT_DONE(run({"--charset=utf8", "--order=binary"}, "é\nz\na\n"), "a\nz\né\n");
}

TEST_F(Sort, EqualLinesKeepTheirOrder) {
    EXPECT_DONE(sorted_by("nocase", "b1\nB\nb\nA\na\nB\n"), "A\na\nB\nb\nB\nb1\n");
    EXPECT_DONE(sorted_by("noaccent", "\xC4\na\nA\n\xE0\n"), "\xC4\na\nA\n\xE0\n");
    EXPECT_DONE(sorted_by("dict", "b  \nb\na\nb \n"), "a\nb  \nb\nb \n");
}

TEST_F(Sort, LastLineNeedsNoLineFeed) {
    EXPECT_DONE(sorted_by("dict", "b\na"), "a\nb\n");
    EXPECT_DONE(sorted_by("dict", ""), "");
    EXPECT_DONE(sorted_by("dict", "\n"), "\n");
    EXPECT_DONE(sorted_by("dict", "b\n\na\n"), "\na\nb\n");
    EXPECT_DONE(sorted_by("binary", std::string("b\0b\nb\0a\n", 8)), std::string("b\0a\nb\0b\n", 8));
}

TEST_F(Sort, ReadsAFile) {
    const support::TempDirectory directory;
    support::write_file(directory.path_of("words"), "b\na\n");
    EXPECT_DONE(run({"--charset", "latin1", "--order", "dict", directory.path_of("words")}, ""), "a\nb\n");
    EXPECT_FAILED(run({"--charset", "latin1", "--order", "dict", directory.path_of("absent")}, ""),
                  "cannot open \"" + directory.path_of("absent") + "\": No such file or directory");
}

TEST_F(Sort, WrongNamesAreTold) {
    EXPECT_MISUSED(run({"--order", "dict"}, ""), "sort wants --charset");
    EXPECT_MISUSED(run({"--charset", "iso_1"}, ""), "sort wants --order");
    EXPECT_MISUSED(sorted_by("dcit", ""), "no sort order \"dcit\"; did you mean dict?");
    EXPECT_MISUSED(run({"--charset", "utf8", "--order", "dict"}, ""), "utf8 has no sort order \"dict\"; it has binary");
    EXPECT_MISUSED(run({"--charset", "iso2", "--order", "dict"}, ""),
                   "no character set \"iso2\"; `dlxcomn charsets` lists them");
    EXPECT_MISUSED(run({"--charset", "iso_1", "--order", "dict", "a", "b"}, ""), "sort takes one file, not \"b\" too");
    EXPECT_THAT(run({"--help"}, "").output, StartsWith("usage: dlxcomn sort --charset SET --order ORDER [FILE]\n"));
}

TEST_F(SiteSort, DamagedOrderIsTold) {
    change("charsets/iso_1/dict.srt", "id = \\x02", "id = \\x00");
    EXPECT_FAILED(sorted_by("dict", "a\n"), path_of("charsets/iso_1/dict.srt") + ":" +
                                                std::to_string(line_of("charsets/iso_1/dict.srt", "id = ")) +
                                                ": this line is wrong, or something is missing in front of it");
    std::filesystem::remove(path_of("charsets/iso_1/dict.srt"));
    EXPECT_MISUSED(sorted_by("dict", ""), "iso_1 has no sort order \"dict\"; it has binary, noaccent and nocase");
}

// ---- Parts ----

TEST(LinesOf, EndAtLineFeeds) {
    using Lines = std::vector<std::string_view>;
    EXPECT_EQ(lines_of(""), Lines());
    EXPECT_EQ(lines_of("\n"), Lines{""});
    EXPECT_EQ(lines_of("a\nb\n"), (Lines{"a", "b"}));
    EXPECT_EQ(lines_of("a\n\nb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(lines_of("a\r\n"), Lines{"a\r"});
}

TEST_F(Sorting, RandomLinesAreInOrderAndStable) {
    const auto home = *Home::open();
    CsCharDesc *const set = *home->load_charset("iso_1");
    std::mt19937_64 random(20261124);
    for (const char *name : {"binary", "dict", "nocase", "noaccent"}) {
        const auto order = home->load_order(set, name);
        ASSERT_TRUE(order) << order.sentence();
        for (int round = 0; round < 50; ++round) {
            static constexpr std::string_view LETTERS = "aAbB \xE4\xC4\xDFsSzZ\xE9"
                                                        "eE";
            std::vector<std::string> texts(200);
            for (std::string &text : texts)
                for (auto length = random() % 6; length > 0; --length)
                    text += LETTERS[random() % LETTERS.size()];
            const std::vector<std::string_view> sorted = client::sorted({texts.begin(), texts.end()}, **order);
            ASSERT_EQ(sorted.size(), texts.size());
            for (size_t i = 1; i < sorted.size(); ++i) {
                const int compared = client::compare(**order, sorted[i - 1], sorted[i]);
                ASSERT_LE(compared, 0) << name;
                const auto place = [&](size_t at) { // of a line in the input
                    return std::find_if(texts.begin(), texts.end(),
                                        [&](const std::string &text) { return text.data() == sorted[at].data(); });
                };
                if (compared == 0) {
                    ASSERT_LT(place(i - 1), place(i)) << name;
                }
            }
        }
    }
}

} // namespace

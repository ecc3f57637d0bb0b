// dlxcomn recode as a filter: standard input and files, long texts with characters at the edges of blocks, what it
// tells of what was lost.
#include "command_fixture.h"

namespace {

using Recode = CommandTest;
using SiteRecode = SiteTest;

constexpr size_t BLOCK = 64 * 1024; // what the command reads at once

TEST_F(Recode, IsAFilter) {
    EXPECT_DONE(dlxcomn({"recode", "utf8", "iso_1"}, "Grüße\n"), "Gr\xFC\xDF"
                                                                 "e\n");
    EXPECT_DONE(dlxcomn({"recode", "iso_1", "utf8", "-"}, "Gr\xFC\xDF"
                                                          "e\n"),
                "Grüße\n");
    EXPECT_DONE(dlxcomn({"recode", "cp939", "sjis"}, "\x0E\x45\x62\x45\x66\x0F"), "\x93\xFA\x96\x7B");
    EXPECT_DONE(dlxcomn({"recode", "utf8", "utf16"}, ""), "");
}

TEST_F(Recode, ReadsAFile) {
    const support::TempDirectory directory;
    support::write_file(directory.path_of("text"), std::string("a\0\xE9", 3));
    EXPECT_DONE(dlxcomn({"recode", "latin1", "UTF-8", directory.path_of("text")}), std::string("a\0é", 4));
    EXPECT_FAILED(dlxcomn({"recode", "latin1", "UTF-8", directory.path_of("absent")}),
                  "cannot open \"" + directory.path_of("absent") + "\": No such file or directory");
    EXPECT_FAILED(dlxcomn({"recode", "latin1", "UTF-8", directory.path()}),
                  "cannot read \"" + directory.path() + "\": Is a directory");
}

TEST_F(Recode, CharactersAtTheEdgesOfBlocksAreWhole) {
    const std::string text = "日本語𝄞ﾃé\n";
    for (const char *set : {"utf8", "gb18030", "utf16", "eucjis", "cp932ms", "cp939", "rcsu"}) {
        const bool has_all =
            std::string(set) != "eucjis" && std::string(set) != "cp932ms" && std::string(set) != "cp939";
        const std::string line = has_all ? text : "日本語ﾃ\n";
        for (size_t shift = 0; shift < 5; ++shift) {
            std::string whole(BLOCK - 3 - shift, 'x');
            whole += line;
            whole += std::string(BLOCK - line.size() - 2, 'y') + line + line;
            const auto there = dlxcomn({"recode", "utf-8", set}, whole);
            ASSERT_EQ(there.exit_code, 0) << set << there.errors;
            const auto back = dlxcomn({"recode", set, "utf8"}, there.output);
            ASSERT_EQ(back.exit_code, 0) << set << back.errors;
            ASSERT_TRUE(back.output == whole) << set << " " << shift;
        }
    }
}

TEST_F(Recode, LongTextOfOneLineIsTheSameAsByIconv) {
    std::string whole;
    while (whole.size() < 3 * BLOCK)
        whole += "中文字符編碼";
    const auto ours = dlxcomn({"recode", "utf8", "gb18030"}, whole);
    const auto theirs = support::run_process({"iconv", "-f", "UTF-8", "-t", "GB18030"}, whole);
    EXPECT_EQ(ours.exit_code, 0);
    EXPECT_TRUE(ours.output == theirs.output);
    EXPECT_TRUE(dlxcomn({"recode", "gb18030", "utf8"}, ours.output).output == whole);
}

TEST_F(Recode, LossesAreToldAtTheEnd) {
    auto outcome = dlxcomn({"recode", "utf8", "iso_1"}, "a日b\n");
    EXPECT_EQ(outcome.output, "a?b\n");
    EXPECT_FAILED(outcome, "1 character has no partner in iso_1 and was replaced");
    outcome = dlxcomn({"recode", "utf8", "iso_1"}, "日日");
    EXPECT_FAILED(outcome, "2 characters have no partner in iso_1 and were replaced");
    outcome = dlxcomn({"recode", "utf8", "iso_1"}, "xy\xFFz\xFE");
    EXPECT_EQ(outcome.output, "xy?z?");
    EXPECT_FAILED(outcome, "2 places are no characters of utf8 and were replaced, the first at byte 2");
    outcome = dlxcomn({"recode", "utf8", "iso_1"}, "abc\xE6\x97");
    EXPECT_EQ(outcome.output, "abc");
    EXPECT_FAILED(outcome, "the text ends inside the character that begins at byte 3");
    outcome = dlxcomn({"recode", "utf8", "iso_1"}, std::string(BLOCK, 'a') + "日\xFF\xE6");
    EXPECT_FAILED(outcome, "1 character has no partner in iso_1 and was replaced\n"
                           "dlxcomn: 1 place is no character of utf8 and was replaced, at byte 65539\n"
                           "dlxcomn: the text ends inside the character that begins at byte 65540");
}

// The writer sends its second line when the reader has seen the first one.
TEST_F(Recode, LinesDoNotWaitForOneAnother) {
    const support::TempDirectory directory;
    for (const char *to : {"utf8", "big5hk", "cp500", "utf16"}) {
        const std::string line =
            std::string("rm -f seen; mkfifo seen; { echo one; read -r answer <seen; echo two; } | \"" DLXCOMN_COMMAND
                        "\" recode iso_1 ") +
            to + " | { dd bs=1 count=1 2>/dev/null; echo yes >seen; cat; } | wc -c";
        const auto outcome =
            support::run_process({"timeout", "20", "/bin/sh", "-c", "cd \"$0\" && " + line, directory.path()});
        EXPECT_EQ(outcome.output, to == std::string("utf16") ? "16\n" : "8\n") << to;
        EXPECT_EQ(outcome.exit_code, 0) << to;
    }
}

TEST_F(Recode, OutputThatCannotBeWrittenIsTold) {
    const auto outcome =
        support::run_process({DLXCOMN_COMMAND, "recode", "utf8", "utf16"}, std::string(BLOCK, 'a'), "/dev/full");
    EXPECT_FAILED(outcome, "cannot write to standard output: No space left on device");
}

TEST_F(Recode, WrongNamesAreTold) {
    EXPECT_MISUSED(dlxcomn({"recode", "utf9", "iso_1"}),
                   "no character set \"utf9\"; did you mean utf8? `dlxcomn charsets` lists them");
    EXPECT_MISUSED(dlxcomn({"recode", "utf8", "Latin_1"}),
                   "no character set \"Latin_1\"; did you mean latin1? `dlxcomn charsets` lists them");
    EXPECT_MISUSED(dlxcomn({"recode", "utf8", "nothing-like-it"}),
                   "no character set \"nothing-like-it\"; `dlxcomn charsets` lists them");
    EXPECT_MISUSED(dlxcomn({"recode", "utf8"}),
                   "recode wants the character set of the text, and the one to write it in");
    EXPECT_MISUSED(dlxcomn({"recode", "utf8", "iso_1", "a", "b"}), "recode takes one file, not \"b\" too");
    EXPECT_THAT(dlxcomn({"recode", "--help"}).output, StartsWith("usage: dlxcomn recode FROM TO [FILE]\n"));
}

TEST_F(SiteRecode, TablesThatAreNotRightAreTold) {
    EXPECT_DONE(dlxcomn({"recode", "iso_1", "cp850"}, "\xFC"), "\x81");
    remove("charsets/unicode/2.uct");
    EXPECT_FAILED(dlxcomn({"recode", "iso_1", "cp850"}, "\xFC"),
                  "the table of cp850 (charsets/unicode/2.uct) cannot be read");
    write("charsets/unicode/1.uct", content_of("charsets/unicode/1.uct").substr(0, 100));
    EXPECT_FAILED(dlxcomn({"recode", "iso_1", "utf8"}, "\xFC"),
                  "the table of iso_1 (charsets/unicode/1.uct) is damaged");
    remove("charsets/cp850");
    EXPECT_FAILED(dlxcomn({"recode", "cp850", "utf8"}, ""),
                  path_of("charsets/cp850/charset.loc") + ": the file cannot be opened");
}

TEST_F(SiteRecode, SetWithoutANumberIsRefused) {
    std::filesystem::copy(path_of("charsets/cp850"), path_of("charsets/decmcs"));
    change("charsets/decmcs/charset.loc", "id = \\x02", "id = \\x06");
    change("config/objectid.dat", "[charset]\n", "[charset]\n1.3.6.1.4.1.54321.1.6 = decmcs\n");
    EXPECT_MISUSED(dlxcomn({"recode", "decmcs", "utf8"}, ""), "the Unicode library does not know decmcs");
}

} // namespace

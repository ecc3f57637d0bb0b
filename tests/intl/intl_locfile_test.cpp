// The reader of localization files: its syntax case by case, its failures, and files of every kind against a naive
// second reader.
#include "support/cases.h"
#include "support/failing_allocator.h"
#include "support/locfile_steps.h"
#include "support/memory_file.h"
#include "support/temp_directory.h"

#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace {

using support::MemoryFile;
using support::NaiveLocfile;
using support::Step;

constexpr size_t LONGEST_LINE = 1023;
constexpr size_t BLOCK = 64 * 1024;

// A reader that is open while the object lives.
class Reader {
public:
    explicit Reader(const char *path) {
        std::memset(&file_, 0x55, sizeof file_);
        EXPECT_EQ(intl_open(path, &file_), INTL_OK);
    }
    ~Reader() { intl_close(&file_); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    INTL_LOCFILE *operator->() { return &file_; }
    INTL_LOCFILE &operator*() { return file_; }
    NaiveLocfile::Answer section() { return support::told(file_, Step::section); }
    NaiveLocfile::Answer entry() { return support::told(file_, Step::entry); }
    NaiveLocfile::Answer value() { return support::told(file_, Step::value); }

private:
    INTL_LOCFILE file_;
};

struct Content {
    explicit Content(const std::string &text) : memory(text), reader(memory.path()) {}
    MemoryFile memory;
    Reader reader;
    Reader *operator->() { return &reader; }
};

NaiveLocfile::Answer text(const std::string &content) { return {content, INTL_OK}; }
const NaiveLocfile::Answer END = {std::nullopt, INTL_OK};
NaiveLocfile::Answer failure(int code) { return {std::nullopt, code}; }

// The whole file as one text: sections in brackets, "key:" and each value between bars, quoted ones between bars
// and quotes; at last what ended it, with the line.
std::string walk(Reader &reader) {
    std::string result;
    NaiveLocfile::Answer section, entry, value;
    while ((section = reader.section()).text) {
        result += "[" + *section.text + "] ";
        while ((entry = reader.entry()).text) {
            result += *entry.text + ":";
            while ((value = reader.value()).text) {
                const std::string quote = reader->isquoted ? "\"" : "";
                result += "|" + quote + *value.text + quote + "|";
            }
            result += " ";
        }
    }
    return result + (section.status == INTL_OK ? "end" : "failure " + std::to_string(section.status)) + " at " +
           std::to_string(reader->linenum);
}

std::string read_all(const std::string &content) {
    Content file(content);
    return walk(file.reader);
}

// The values of one entry "k".
std::string values(const std::string &behind_equals) {
    const std::string all = read_all("[s]\nk =" + behind_equals + "\n");
    const std::string before = "[s] k:", behind = " end at 2";
    EXPECT_TRUE(all.starts_with(before) && all.ends_with(behind)) << all;
    return all.substr(before.size(), all.size() - before.size() - behind.size());
}

// ---- Opening and closing --------------------------------------------------------------------------------------

TEST(IntlOpen, SetsTheReaderUp) {
    Content file("[s]\n");
    INTL_LOCFILE &record = *file.reader;
    EXPECT_EQ(record.version, 1);
    EXPECT_EQ(record.linenum, 0);
    EXPECT_EQ(record.eof, 0);
    EXPECT_EQ(record.comment_char, ';');
    EXPECT_EQ(record.leftsection, '[');
    EXPECT_EQ(record.rightsection, ']');
    EXPECT_EQ(record.list_sep, ',');
    EXPECT_EQ(record.escape, '\\');
    EXPECT_EQ(record.quote_char, '"');
    EXPECT_STREQ(record.line, "");
    EXPECT_STREQ(record.section, "");
    EXPECT_STREQ(record.entry, "");
    EXPECT_STREQ(record.value, "");
    EXPECT_NE(record.file, nullptr);
    EXPECT_EQ(intl_valuelen(&record), 0);
}

TEST(IntlOpen, OfAMissingFileLeavesNothingToClose) {
    const support::TempDirectory directory;
    INTL_LOCFILE file;
    std::memset(&file, 0x55, sizeof file);
    EXPECT_EQ(intl_open(directory.path_of("absent.loc").c_str(), &file), INTL_ECANTOPEN);
    EXPECT_EQ(file.file, nullptr);
    EXPECT_EQ(intl_close(&file), INTL_OK);
    EXPECT_EQ(intl_open(directory.path_of("absent/file.loc").c_str(), &file), INTL_ECANTOPEN);
    EXPECT_EQ(intl_open("", &file), INTL_ECANTOPEN);
}

TEST(IntlClose, LeavesTheLineWhereTheReaderStood) {
    const support::TempDirectory directory;
    const std::string path = directory.path_of("file.loc");
    support::write_file(path, "; comment\n[one]\nkey = value\nno entry\n[two]\n");
    {
        Reader reader(path.c_str());
        EXPECT_EQ(reader.section(), text("one"));
    }
    EXPECT_EQ(intl_closedline(), 2);
    {
        Reader reader(path.c_str());
        reader.section();
        reader.entry();
        EXPECT_EQ(reader.entry(), failure(INTL_ENOEQUALS));
        EXPECT_EQ(intl_closedline(), 2) << "a reader that is open tells nothing";
    }
    EXPECT_EQ(intl_closedline(), 4);
    std::thread([] { EXPECT_EQ(intl_closedline(), 0) << "each thread has its own"; }).join();
    INTL_LOCFILE absent;
    EXPECT_EQ(intl_open(directory.path_of("absent").c_str(), &absent), INTL_ECANTOPEN);
    intl_close(&absent);
    EXPECT_EQ(intl_closedline(), 4);
}

TEST(IntlOpen, OfADirectorySucceedsAndReadingFailsInItsFirstLine) {
    const support::TempDirectory directory;
    Reader reader(directory.path().c_str());
    EXPECT_EQ(reader.section(), failure(INTL_EREAD));
    EXPECT_EQ(reader->linenum, 1);
    EXPECT_EQ(reader->eof, 1);
    EXPECT_EQ(reader.section(), failure(INTL_EREAD));
    EXPECT_EQ(reader.entry(), failure(INTL_EREAD));
    EXPECT_EQ(reader.value(), failure(INTL_EREAD));
    EXPECT_EQ(reader->linenum, 1);
    EXPECT_EQ(intl_close(&*reader), INTL_EREAD);
    EXPECT_EQ(intl_close(&*reader), INTL_OK);
}

TEST(IntlOpen, EveryFailingAllocationGivesItsStatusAndLeavesNothing) {
    const MemoryFile file("[s]\nk = v\n");
    int needed = 0;
    {
        const support::FailingAllocator counting;
        INTL_LOCFILE record;
        ASSERT_EQ(intl_open(file.path(), &record), INTL_OK);
        EXPECT_EQ(intl_close(&record), INTL_OK);
        needed = counting.asked();
        EXPECT_EQ(counting.held(), 0);
    }
    ASSERT_GT(needed, 0);
    const int next_descriptor = dup(0);
    close(next_descriptor);
    for (const auto span : {support::FailingAllocator::ONCE, support::FailingAllocator::LASTING})
        for (int n = 1; n <= needed; ++n) {
            INTL_LOCFILE record;
            std::memset(&record, 0x55, sizeof record);
            int status = 0, held = -1;
            {
                const support::FailingAllocator failing(n, span);
                status = intl_open(file.path(), &record);
                held = failing.held();
            }
            EXPECT_EQ(status, INTL_ENOMEMORY) << n;
            EXPECT_EQ(held, 0) << n;
            EXPECT_EQ(record.file, nullptr);
            EXPECT_EQ(intl_close(&record), INTL_OK);
        }
    const int descriptor = dup(0);
    EXPECT_EQ(descriptor, next_descriptor) << "a file was left open";
    close(descriptor);
}

TEST(IntlOpen, ReadingTakesNoMemory) {
    Content file("[s]\nk = a, \"b\", \\x41\n[t]\nl = 1\n");
    const support::FailingAllocator failing(1, support::FailingAllocator::LASTING);
    int status = 0, sections = 0;
    while (intl_nextsection(&*file.reader, &status) != nullptr) {
        ++sections;
        while (intl_nextentry(&*file.reader, &status) != nullptr)
            while (intl_nextvalue(&*file.reader, &status) != nullptr)
                continue;
    }
    EXPECT_EQ(sections, 2);
    EXPECT_EQ(failing.asked(), 0);
}

TEST(IntlClose, ReleasesTheDescriptorAndIsHarmlessTwice) {
    const MemoryFile file("[s]\n");
    const int free_descriptor = dup(0);
    close(free_descriptor);
    INTL_LOCFILE record;
    ASSERT_EQ(intl_open(file.path(), &record), INTL_OK);
    EXPECT_NE(fcntl(free_descriptor, F_GETFD) & FD_CLOEXEC, 0) << "programs that are started must not get it";
    EXPECT_EQ(intl_close(&record), INTL_OK);
    EXPECT_EQ(fcntl(free_descriptor, F_GETFD), -1);
    EXPECT_EQ(intl_close(&record), INTL_OK);
}

TEST(IntlClose, MakesEveryFurtherCallAFailure) {
    Content file("[s]\nk = v\n");
    EXPECT_EQ(file->section(), text("s"));
    EXPECT_EQ(intl_close(&*file.reader), INTL_OK);
    EXPECT_EQ(file->section(), failure(INTL_EREAD));
    EXPECT_EQ(file->entry(), failure(INTL_EREAD));
    EXPECT_EQ(file->value(), failure(INTL_EREAD));
    EXPECT_EQ(intl_valuelen(&*file.reader), 0);
}

TEST(IntlClose, IsFineAfterAMalformedLine) {
    Content file("[s\n");
    EXPECT_EQ(file->section(), failure(INTL_EBADSECTION));
    EXPECT_EQ(intl_close(&*file.reader), INTL_OK);
}

// ---- Sections -------------------------------------------------------------------------------------------------

TEST(IntlSection, NamesMayHoldInnerBlanksDotsAndDigits) {
    EXPECT_EQ(read_all("[a b\tc.1]\n[1.3.6]\n"), "[a b\tc.1] [1.3.6] end at 2");
}

TEST(IntlSection, BlanksAroundNameAndBracketsDoNotCount) {
    EXPECT_EQ(read_all(" \t[ \tname\t ] \t\n"), "[name] end at 1");
}

TEST(IntlSection, MayBeEmptyOrRepeated) {
    EXPECT_EQ(read_all("[a]\n[b]\nk = 1\n[a]\nk = 2\n"), "[a] [b] k:|1| [a] k:|2| end at 5");
}

TEST(IntlSection, WithTheWholeLineForItsNameIsDeliveredWhole) {
    const std::string name(LONGEST_LINE - 2, 'n');
    Content file("[" + name + "]\n");
    EXPECT_EQ(file->section(), text(name));
    EXPECT_EQ(file.reader->section, name.substr(0, 63));
}

TEST(IntlSection, FieldHoldsAllOf63BytesAndCutsThe64th) {
    Content file("[" + std::string(63, 'a') + "]\n[" + std::string(64, 'b') + "]\n");
    EXPECT_EQ(file->section(), text(std::string(63, 'a')));
    EXPECT_EQ(file.reader->section, std::string(63, 'a'));
    EXPECT_EQ(file->section(), text(std::string(64, 'b')));
    EXPECT_EQ(file.reader->section, std::string(63, 'b'));
}

TEST(IntlSection, OfAnyMalformedFormIsRefusedWithItsLine) {
    for (const char *line : {"[", "[name", "[]", "[ ]", "[name] x", "[name] ; comment", "[name]]", "[a]b]", "[name]=v",
                             "  [name", "[name = v"}) {
        Content file("; one\n" + std::string(line) + "\n[next]\n");
        EXPECT_EQ(file->section(), failure(INTL_EBADSECTION)) << line;
        EXPECT_EQ(file.reader->linenum, 2) << line;
        EXPECT_EQ(file.reader->eof, 1) << line;
    }
}

TEST(IntlSection, MayHoldAnOpeningBracket) { EXPECT_EQ(read_all("[a[b]\n"), "[a[b] end at 1"); }

TEST(IntlSection, NextSkipsEntriesWithoutJudgingThem) {
    Content file("no entry at all\n[a]\nk = \"open\nno equals\n[b]\nk = v\n");
    EXPECT_EQ(file->section(), text("a"));
    EXPECT_EQ(file.reader->linenum, 2);
    EXPECT_EQ(file->section(), text("b"));
    EXPECT_EQ(file.reader->linenum, 5);
    EXPECT_EQ(file->entry(), text("k"));
}

TEST(IntlSection, NextSkipsWhatIsLeftOfEntryAndSection) {
    Content file("[a]\nk = 1, 2\nl = 3\n[b]\n");
    EXPECT_EQ(file->section(), text("a"));
    EXPECT_EQ(file->entry(), text("k"));
    EXPECT_EQ(file->value(), text("1"));
    EXPECT_EQ(file->section(), text("b"));
    EXPECT_EQ(file->value(), END) << "the entry is gone";
    EXPECT_EQ(file->entry(), END);
}

TEST(IntlSection, AtTheEndKeepsEnding) {
    Content file("[a]\nk = v\n");
    EXPECT_EQ(file->section(), text("a"));
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(file->section(), END);
        EXPECT_EQ(file->entry(), END);
        EXPECT_EQ(file->value(), END);
        EXPECT_EQ(file.reader->eof, 1);
    }
}

TEST(IntlSection, LinesBeforeTheFirstAreSkipped) {
    Content file("k = v\n[a]\n");
    EXPECT_EQ(file->entry(), END) << "there is no section yet";
    EXPECT_EQ(file->value(), END);
    EXPECT_EQ(file->section(), text("a"));
}

// ---- Entries --------------------------------------------------------------------------------------------------

TEST(IntlEntry, KeysMayHoldInnerBlanksDotsDigitsAndBrackets) {
    EXPECT_EQ(read_all("[s]\n a b\t c =1\n1.3.6.1 = 2\n17040899= 3\nx[1] = 4\n\"q\" = 5\n"),
              "[s] a b\t c:|1| 1.3.6.1:|2| 17040899:|3| x[1]:|4| \"q\":|5| end at 6");
}

TEST(IntlEntry, KeyEndsAtTheFirstEqualsSign) { EXPECT_EQ(read_all("[s]\na = b = c\n"), "[s] a:|b = c| end at 2"); }

TEST(IntlEntry, KeyIsNotDecoded) { EXPECT_EQ(read_all("[s]\na\\x41\\  = b\n"), "[s] a\\x41\\:|b| end at 2"); }

TEST(IntlEntry, KeyMayBeEmpty) { EXPECT_EQ(read_all("[s]\n= b\n"), "[s] :|b| end at 2"); }

TEST(IntlEntry, KeyOfAWholeLineIsDeliveredWhole) {
    const std::string key(LONGEST_LINE - 1, 'k');
    Content file("[s]\n" + key + "=\n");
    EXPECT_EQ(file->section(), text("s"));
    EXPECT_EQ(file->entry(), text(key));
    EXPECT_EQ(file.reader->entry, key.substr(0, 63));
    EXPECT_EQ(file.reader->section, std::string("s"));
    EXPECT_EQ(file->value(), END);
}

TEST(IntlEntry, FieldHoldsAllOf63BytesAndCutsThe64th) {
    Content file("[s]\n" + std::string(63, 'a') + "=1\n" + std::string(64, 'b') + "=2\n");
    EXPECT_EQ(file->section(), text("s"));
    EXPECT_EQ(file->entry(), text(std::string(63, 'a')));
    EXPECT_EQ(file.reader->entry, std::string(63, 'a'));
    EXPECT_EQ(file->entry(), text(std::string(64, 'b')));
    EXPECT_EQ(file.reader->entry, std::string(63, 'b'));
    EXPECT_EQ(file->value(), text("2"));
}

TEST(IntlEntry, WithoutEqualsSignIsRefusedWithItsLine) {
    Content file("[s]\nk = v\n\nword\nl = w\n");
    EXPECT_EQ(file->section(), text("s"));
    EXPECT_EQ(file->entry(), text("k"));
    EXPECT_EQ(file->entry(), failure(INTL_ENOEQUALS));
    EXPECT_EQ(file.reader->linenum, 4);
    EXPECT_EQ(file->entry(), failure(INTL_ENOEQUALS)) << "the failure stays";
    EXPECT_EQ(file->section(), failure(INTL_ENOEQUALS));
    EXPECT_EQ(file->value(), failure(INTL_ENOEQUALS));
    EXPECT_EQ(file.reader->linenum, 4);
    EXPECT_EQ(file.reader->end_of_list, 1);
    EXPECT_EQ(file.reader->end_of_section, 1);
    EXPECT_EQ(file.reader->eof, 1);
}

TEST(IntlEntry, EndsAtTheNextSectionAndStaysEnded) {
    Content file("[a]\nk = v\n\n; note\n[b]\nl = w\n");
    EXPECT_EQ(file->section(), text("a"));
    EXPECT_EQ(file->entry(), text("k"));
    EXPECT_EQ(file.reader->end_of_section, 0);
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(file->entry(), END);
        EXPECT_EQ(file->value(), END);
        EXPECT_EQ(file.reader->end_of_section, 1);
        EXPECT_EQ(file.reader->eof, 0);
        EXPECT_EQ(file.reader->linenum, 5);
    }
    EXPECT_EQ(file->section(), text("b"));
    EXPECT_EQ(file.reader->linenum, 5);
    EXPECT_EQ(file->entry(), text("l"));
}

TEST(IntlEntry, NextSkipsWhatIsLeftOfTheList) {
    Content file("[s]\nk = 1, \"open\nl = 3\n");
    EXPECT_EQ(file->section(), text("s"));
    EXPECT_EQ(file->entry(), text("k"));
    EXPECT_EQ(file->value(), text("1"));
    EXPECT_EQ(file->entry(), text("l")) << "the quote that does not end is never looked at";
    EXPECT_EQ(file->value(), text("3"));
}

// ---- Values ---------------------------------------------------------------------------------------------------

TEST(IntlValue, KeyWithNothingBehindItHasNoValue) {
    EXPECT_EQ(read_all("[s]\nk =\nl = \t \nm=\n"), "[s] k: l: m: end at 4");
}

TEST(IntlValue, ListsAreSplitAndTrimmed) {
    EXPECT_EQ(values(" a b ,\tc\t, d"), "|a b||c||d|");
    EXPECT_EQ(values("a,b"), "|a||b|");
}

TEST(IntlValue, EmptyInTheMiddleIsAValue) { EXPECT_EQ(values(" a,,b"), "|a||||b|"); }

TEST(IntlValue, SeparatorPromisesAFurtherValue) {
    EXPECT_EQ(values(" a,"), "|a|||");
    EXPECT_EQ(values(" ,a"), "|||a|");
    EXPECT_EQ(values(" , "), "||||");
}

TEST(IntlValue, EndOfListIsToldWithTheLastValue) {
    Content file("[s]\nk = a, b\n");
    EXPECT_EQ(file->section(), text("s"));
    EXPECT_EQ(file.reader->end_of_list, 1);
    EXPECT_EQ(file->entry(), text("k"));
    EXPECT_EQ(file.reader->end_of_list, 0);
    EXPECT_EQ(file->value(), text("a"));
    EXPECT_EQ(file.reader->end_of_list, 0);
    EXPECT_EQ(file->value(), text("b"));
    EXPECT_EQ(file.reader->end_of_list, 1);
    for (int again = 0; again < 3; ++again)
        EXPECT_EQ(file->value(), END);
    EXPECT_EQ(file->entry(), END);
}

TEST(IntlValue, EscapeGivesTheByteOrTheCharacter) {
    EXPECT_EQ(values(" \\x41\\x4a\\x4A"), "|AJJ|");
    EXPECT_EQ(values(" a\\,b, \\\\, \\\"c\\\", \\;, \\n"), "|a,b||\\||\"c\"||;||n|");
    EXPECT_EQ(values(" \\X41"), "|X41|") << "only the small x begins a byte";
}

TEST(IntlValue, EveryByteCanBeWrittenInHexadecimal) {
    for (int byte = 0; byte < 256; ++byte)
        for (const char *digits : {"0123456789abcdef", "0123456789ABCDEF"}) {
            const std::string content = std::string("[s]\nk = <\\x") + digits[byte / 16] + digits[byte % 16] + ">\n";
            Content file(content);
            EXPECT_EQ(file->section(), text("s"));
            EXPECT_EQ(file->entry(), text("k"));
            EXPECT_EQ(file->value(), text(std::string("<") + static_cast<char>(byte) + ">")) << content;
            EXPECT_EQ(intl_valuelen(&*file.reader), 3);
        }
}

TEST(IntlValue, HexadecimalWantsTwoDigits) {
    const std::string digits = "0123456789abcdefABCDEF";
    for (int byte = 1; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        if (c == '\n' || digits.find(c) != std::string::npos)
            continue;
        for (const std::string &wrong : {std::string("\\x") + c + "1", std::string("\\x1") + c}) {
            Content file("[s]\nk = " + wrong + "z\n");
            file->section();
            file->entry();
            EXPECT_EQ(file->value(), failure(INTL_EBADESCAPE)) << byte;
            EXPECT_EQ(file.reader->linenum, 2);
        }
    }
}

TEST(IntlValue, NulBytesAreCountedByValuelen) {
    Content file("[s]\nimage_size = \\x00\\x00\\x05\\x05\nclass = \\x01\n");
    file->section();
    EXPECT_EQ(file->entry(), text("image_size"));
    EXPECT_EQ(file->value(), text(std::string("\0\0\5\5", 4)));
    EXPECT_EQ(intl_valuelen(&*file.reader), 4);
    EXPECT_EQ(file->entry(), text("class"));
    EXPECT_EQ(file->value(), text("\1"));
    EXPECT_EQ(intl_valuelen(&*file.reader), 1);
}

TEST(IntlValue, EscapedBlanksAreKeptAtBothEnds) {
    EXPECT_EQ(values("  \\ a\\  , \\\tb \\x20 "), "| a ||\tb  |");
    EXPECT_EQ(values(" \\ "), "| |");
    EXPECT_EQ(values(" \\  \\ "), "|   |") << "a blank between two escaped ones";
}

TEST(IntlValue, BackslashAtTheEndOfALineIsRefused) {
    for (const char *value : {"\\", "a\\", "a, \\", "\\x", "\\x4", "a\\x"}) {
        for (const char *line_end : {"\n", "\r\n", ""}) {
            const std::string all = read_all("[s]\nk = " + std::string(value) + line_end);
            EXPECT_TRUE(all.ends_with("failure -7 at 2")) << value << ": " << all;
        }
    }
}

TEST(IntlValue, InQuotesStandsAsWritten) {
    EXPECT_EQ(values(" \" a, b ; \\x41 \" , \"\", c"), "|\" a, b ; \\x41 \"||\"\"||c|");
    EXPECT_EQ(values(" \"a\\\"b\""), "|\"a\\\"b\"|") << "both characters stay";
    EXPECT_EQ(values(" \"a\\\\\""), "|\"a\\\\\"|") << "a backslash keeps a backslash from keeping the quote";
}

TEST(IntlValue, QuoteInsideAPlainValueIsPlain) { EXPECT_EQ(values(" a\"b\", c"), "|a\"b\"||c|"); }

TEST(IntlValue, QuoteThatDoesNotEndTheValueIsRefused) {
    for (const char *value : {"\"", "\"abc", "\"abc\\\"", "\"abc\\", "\"abc\"d", "\"abc\" d, e", "\"a\"\"b\"",
                              "\"abc\" ; no comment here"}) {
        const std::string all = read_all("[s]\nk = " + std::string(value) + "\n[t]\n");
        EXPECT_EQ(all, "[s] k: failure -6 at 2") << value;
    }
}

TEST(IntlValue, FailureInAListComesBehindTheGoodValues) {
    EXPECT_EQ(read_all("[s]\nk = a, \"b\", \"c\nl = d\n"), "[s] k:|a||\"b\"| failure -6 at 2");
}

TEST(IntlValue, IsquotedIsThatOfThePresentValue) {
    Content file("[s]\nk = \"a\", b, \"c\"\n");
    file->section();
    file->entry();
    for (const int quoted : {1, 0, 1}) {
        file->value();
        EXPECT_EQ(file.reader->isquoted, quoted);
    }
}

TEST(IntlValue, OfAWholeLineIsDeliveredWhole) {
    const std::string plain(LONGEST_LINE - 2, 'v');
    EXPECT_EQ(read_all("[s]\nk=" + plain + "\n"), "[s] k:|" + plain + "| end at 2");
    const std::string quoted(LONGEST_LINE - 4, 'v');
    EXPECT_EQ(read_all("[s]\nk=\"" + quoted + "\"\n"), "[s] k:|\"" + quoted + "\"| end at 2");
}

TEST(IntlValue, CommentCharacterBehindTextIsText) { EXPECT_EQ(values(" a ; b"), "|a ; b|"); }

// ---- Lines ----------------------------------------------------------------------------------------------------

TEST(IntlLine, EndsInLfOrCrLf) {
    EXPECT_EQ(read_all("[s]\r\nk = v\r\nl = \"w\"\r\n"), "[s] k:|v| l:|\"w\"| end at 3");
    EXPECT_EQ(read_all("[s]\nk = v\r\nl = w\n"), "[s] k:|v| l:|w| end at 3");
}

TEST(IntlLine, OneCarriageReturnBelongsToTheEndAndOthersToTheLine) {
    EXPECT_EQ(read_all("[s]\nk = v\r\r\n"), "[s] k:|v\r| end at 2");
    EXPECT_EQ(read_all("[s]\nk = v\rw\n"), "[s] k:|v\rw| end at 2");
}

TEST(IntlLine, LastNeedsNoEnd) {
    EXPECT_EQ(read_all("[s]\nk = v"), "[s] k:|v| end at 2");
    EXPECT_EQ(read_all("[s]"), "[s] end at 1");
    EXPECT_EQ(read_all("[s]\n; note"), "[s] end at 2");
    EXPECT_EQ(read_all("[s]\nk = v\r"), "[s] k:|v| end at 2") << "an end that was cut in the middle";
}

TEST(IntlLine, BlankOnesAndCommentsAreSkippedAndCounted) {
    EXPECT_EQ(read_all("\n \t \n;[a]\n  ; b\n\r\n[s]\n\n;k = v\nk = v\n\n"), "[s] k:|v| end at 10");
}

TEST(IntlLine, EmptyFileHasNothing) {
    for (const char *content : {"", "\n", "\r\n", " ", ";", "; only\n; notes\n"})
        EXPECT_TRUE(read_all(content).starts_with("end")) << content;
    EXPECT_EQ(read_all(""), "end at 0");
}

TEST(IntlLine, Of1023BytesIsReadAndOfOneMoreRefused) {
    const std::string values_of_1023 = "k = " + std::string(LONGEST_LINE - 4, 'v');
    const std::string lines[] = {values_of_1023, ";" + std::string(LONGEST_LINE - 1, 'c'),
                                 std::string(LONGEST_LINE, ' ')};
    for (const std::string &line : lines)
        for (const char *line_end : {"\n", "\r\n", ""}) {
            ASSERT_EQ(line.size(), LONGEST_LINE);
            const std::string good = read_all("[s]\n" + line + line_end);
            EXPECT_TRUE(good.ends_with("end at 2")) << good;
            EXPECT_EQ(read_all("[s]\n" + line + line[5] + line_end), "[s] failure -3 at 2");
        }
}

TEST(IntlLine, OfAnyLengthIsRefusedAtItsNumber) {
    for (const size_t length : {size_t{1024}, size_t{1025}, size_t{1026}, size_t{4096}, BLOCK - 5, BLOCK - 4, BLOCK - 3,
                                BLOCK, BLOCK + 1, 3 * BLOCK})
        for (const char *line_end : {"\n", "\r\n", ""}) {
            Content file("[s]\n" + std::string(length, 'v') + line_end + "\n[t]\n");
            EXPECT_EQ(file->section(), text("s"));
            EXPECT_EQ(file->entry(), failure(INTL_ELINETOOLONG)) << length;
            EXPECT_EQ(file.reader->linenum, 2);
            EXPECT_EQ(file.reader->eof, 1);
            EXPECT_EQ(file->section(), failure(INTL_ELINETOOLONG)) << "the failure stays";
            EXPECT_EQ(file.reader->linenum, 2);
        }
}

TEST(IntlLine, NulByteEndsANameForCallersButNotAValue) {
    using namespace std::string_literals;
    Content file("[a\0b]\nk\0l = v\0w\n"s);
    EXPECT_EQ(file->section(), text("a"));
    EXPECT_EQ(file->entry(), text("k"));
    EXPECT_EQ(file->value(), text("v\0w"s));
}

TEST(IntlLine, PositionTellsWhereReadingGoesOn) {
    Content file("[s]\n  key = a , b\n");
    file->section();
    file->entry();
    EXPECT_STREQ(file.reader->line, "  key = a , b");
    EXPECT_EQ(file.reader->linelen, 13);
    EXPECT_EQ(file.reader->linepos, 8);
    file->value();
    EXPECT_EQ(file.reader->linepos, 11);
    file->value();
    EXPECT_EQ(file.reader->linepos, 13);
}

// ---- Against the naive reader ---------------------------------------------------------------------------------

void expect_same(const std::string &content, const std::string &name) {
    Content file(content);
    NaiveLocfile naive(content);
    ASSERT_EQ(support::difference_in_all(*file.reader, naive), "") << name << ", line " << naive.linenum();
}

// Lines of comment, `bytes` bytes in all.
std::string filler(size_t bytes) {
    std::string content(bytes, ';');
    for (size_t i = 999; i < bytes; i += 1000)
        content[i] = '\n';
    content.back() = '\n';
    return content;
}

// Each of these pieces at every offset around the edges of the first two blocks.
TEST(IntlBlocks, EdgesFallOnEveryByteOfInterestingLines) {
    const std::string pieces[] = {
        "[section name]\nkey = a, b\n",
        "[s]\r\nk = v\r\n\r\n; c\r\nl = \"q\\\"\", \\x00\\x01\\,\r\n",
        "k = \"open\n",
        "k = \\x4\n",
        "[open\n",
        "no equals\n",
        "\n\n\n\r\n\r\n \t\n;\n",
        "last = without line end",
        std::string(LONGEST_LINE, 'k') + "\n[after]\n",
        std::string(LONGEST_LINE - 2, 'k') + "=1\r\n[after]\n",
        std::string(LONGEST_LINE + 1, 'k') + "\n[after]\n",
        ";" + std::string(LONGEST_LINE - 1, 'k') + "\r",
    };
    for (const std::string &piece : pieces)
        for (const size_t edge : {BLOCK, 2 * BLOCK}) {
            const size_t step = piece.size() > 100 ? 13 : 1; // the long ones are long for their ends
            std::string before = "[first]\n";
            before += filler(edge - piece.size() - 4 - before.size());
            for (size_t shift = 0; shift <= piece.size() + 8; shift += shift + 24 < piece.size() ? step : 1) {
                ASSERT_NO_FATAL_FAILURE(expect_same(before + std::string(shift, '\n') + piece, piece.substr(0, 40)));
                ASSERT_NO_FATAL_FAILURE(
                    expect_same(before + std::string(shift, '\n') + piece + "\n[end]\nk = v\n", piece.substr(0, 40)));
            }
        }
}

TEST(IntlBlocks, FileOfExactlyABlockOrTwoIsReadToItsEnd) {
    for (const size_t size : {BLOCK - 1, BLOCK, BLOCK + 1, 2 * BLOCK - 1, 2 * BLOCK, 2 * BLOCK + 1}) {
        const std::string content = "[s]\n" + filler(size - 4 - 5) + "k = v";
        ASSERT_EQ(content.size(), size);
        ASSERT_NO_FATAL_FAILURE(expect_same(content, std::to_string(size)));
    }
}

TEST(IntlBlocks, PipeThatDeliversAFewBytesAtATimeIsReadLikeAFile) {
    const std::string content = "[s]\r\nk = a, \"b\"\n\n[t]\nlong = " + std::string(900, 'v') + "\nl = \\x41";
    for (const size_t portion : {1, 2, 7, 100}) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        std::thread writer([&] {
            for (size_t at = 0; at < content.size(); at += portion)
                if (write(ends[1], content.data() + at, std::min(portion, content.size() - at)) < 0)
                    break;
            close(ends[1]);
        });
        {
            Reader reader(("/proc/self/fd/" + std::to_string(ends[0])).c_str());
            close(ends[0]);
            NaiveLocfile naive(content);
            EXPECT_EQ(support::difference_in_all(*reader, naive), "") << portion;
        }
        writer.join();
    }
}

class Generator {
public:
    explicit Generator(std::uint64_t seed) : random_(seed) {}

    // One in two files is well-formed; the others have an accident somewhere.
    std::string file() {
        accidents_ = below(2) == 0 ? 0 : 3 + below(40);
        std::string content;
        for (int left = below(40); left > 0; --left)
            content += line() + line_end();
        if (below(8) == 0)
            content += line();
        return content;
    }
    int below(int bound) { return static_cast<int>(random_() % static_cast<std::uint64_t>(bound)); }

private:
    bool accident() { return accidents_ != 0 && below(accidents_) == 0; }
    std::string one_of(std::initializer_list<const char *> texts) {
        return texts.begin()[below(static_cast<int>(texts.size()))];
    }
    std::string blanks() { return one_of({"", "", " ", "\t", " \t "}); }
    std::string line_end() { return accident() ? one_of({"\r\r\n", "\r", ""}) : one_of({"\n", "\n", "\r\n"}); }

    std::string name() {
        std::string result;
        for (int left = 1 + below(below(30) == 0 ? 90 : 10); left > 0; --left)
            result += one_of({"a", "B", "1", ".", "_", " ", "\xC3\xA9", "\\", "\""});
        return result;
    }
    std::string plain() {
        std::string result;
        for (int left = below(below(200) == 0 ? 700 : 8); left > 0; --left)
            result += one_of({"a", "1", " ", "\t", "\"", "=", ";", "]", "[", "\\,", "\\\\", "\\ ", "\\\"", "\\x00",
                              "\\x7f", "\\xFf", "\xE4"});
        if (accident())
            result += one_of({"\\", "\\x", "\\x1", "\\xg1"});
        return result;
    }
    std::string quoted() {
        std::string result = "\"";
        for (int left = below(8); left > 0; --left)
            result += one_of({"a", " ", ",", ";", "\\\"", "\\\\", "\\x41", "=", "["});
        return result + (accident() ? one_of({"", "\\", "\\\"", "\"a", "\"\""}) : "\"");
    }
    std::string line() {
        if (accident())
            return one_of({"[", "[a", "[]", "[a]]", "[a] b", "word", "\\", "\"", "=", "]", ","}) +
                   std::string(below(4) == 0 ? static_cast<size_t>(1000 + below(60)) : 0, 'x');
        switch (below(8)) {
        case 0:
            return blanks();
        case 1:
            return blanks() + ";" + name();
        case 2:
            return blanks() + "[" + blanks() + name() + "x" + blanks() + "]" + blanks();
        default: {
            std::string result = blanks() + name() + blanks() + "=";
            for (int left = below(5); left > 0; --left)
                result += blanks() + (below(3) == 0 ? quoted() : plain()) + blanks() + (left > 1 ? "," : "");
            return result;
        }
        }
    }

    std::mt19937_64 random_;
    int accidents_ = 0;
};

TEST(IntlDifferential, GeneratedFilesReadWholeAreTheSameForBothReaders) {
    Generator generator(31);
    int failed = 0, ended = 0;
    for (int round = 0; round < support::cases(30000); ++round) {
        const std::string content = generator.file();
        Content file(content);
        NaiveLocfile naive(content);
        ASSERT_EQ(support::difference_in_all(*file.reader, naive), "") << round << ":\n" << content;
        (naive.next_section().status == INTL_OK ? ended : failed) += 1;
    }
    EXPECT_GT(failed, support::cases(5000));
    EXPECT_GT(ended, support::cases(5000));
}

TEST(IntlDifferential, CallsInAnyOrderAreTheSameForBothReaders) {
    Generator generator(32);
    for (int round = 0; round < support::cases(30000); ++round) {
        const std::string content = generator.file();
        Content file(content);
        NaiveLocfile naive(content);
        bool ended = false;
        for (int call = 0; call < 60; ++call) {
            const int choice = generator.below(8);
            const Step step = choice == 0 ? Step::section : choice < 4 ? Step::entry : Step::value;
            ASSERT_EQ(support::difference(*file.reader, naive, step, ended), "") << round << ":\n" << content;
        }
    }
}

TEST(IntlDifferential, RandomBytesAreTheSameForBothReaders) {
    Generator generator(33);
    const std::string alphabet = std::string("[]=,;\\\"x \t\r\n\n\n0af") + '\0' + "\xFF";
    for (int round = 0; round < support::cases(30000); ++round) {
        std::string content = generator.below(2) == 0 ? "[s]\n" : "";
        for (int left = generator.below(120); left > 0; --left)
            content += alphabet[static_cast<size_t>(generator.below(static_cast<int>(alphabet.size())))];
        ASSERT_NO_FATAL_FAILURE(expect_same(content, content));
    }
}

TEST(IntlDifferential, FilesOfManyBlocksAreTheSameForBothReaders) {
    Generator generator(34);
    for (int round = 0; round < 12; ++round) {
        std::string content;
        while (content.size() < 5 * BLOCK) {
            const std::string part = generator.file();
            Content file(part + "\n");
            if (walk(file.reader).find("failure") == std::string::npos)
                content += part + "\n";
        }
        ASSERT_NO_FATAL_FAILURE(expect_same(content, std::to_string(round)));
    }
}

} // namespace

// Loading sort orders: the header key by key, each fault of an entry, the table of generated orders against a second
// maker, and memory that runs out.
#include "support/assertions.h"
#include "support/failing_allocator.h"
#include "support/naive_sort.h"
#include "support/sort_home.h"
#include "support/temp_directory.h"

#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace {

using support::FailingAllocator;
using support::ReturningAssertions;
using support::naive::escaped;
using support::naive::Ligature;
using support::naive::SORT_HEADER;
using support::naive::SortOrder;

const std::string HEADER = SORT_HEADER;

std::string replaced(std::string text, const std::string &from, const std::string &to) {
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

bool same(const SO_1CLASS &one, const SO_1CLASS &other) { return std::memcmp(&one, &other, sizeof one) == 0; }

class SortFile : public testing::Test {
protected:
    CS_RETCODE load(const std::string &content) {
        set_.drop();
        set_.context_.ctxintlerr = 0;
        home_.write(content);
        const CS_RETCODE status = set_.load();
        if (status != CS_SUCCEED) {
            EXPECT_EQ(set_.set_.sort_order, nullptr);
            EXPECT_EQ(set_.cache_.locsortorder, nullptr);
        }
        return status;
    }
    CS_RETCODE load(const SortOrder &order) { return load(support::naive::file_of(order)); }
    // A failure of the reader, with its code.
    void expect_reader_failure(const std::string &content, int code) {
        EXPECT_EQ(load(content), CS_EINTL) << content;
        EXPECT_EQ(set_.context_.ctxintlerr, code) << content;
    }
    const S_DESCRIPT &header() { return *set_.order()->char_sort_descript; }
    SO_1CLASS &table() { return *set_.table(); }

    // The lines of an order of every byte, one to a weight; without `missing`.
    static std::string all_but(const std::string &missing) {
        std::string text;
        for (int code = 1; code < 256; ++code)
            if (missing.find(static_cast<char>(code)) == std::string::npos)
                text += "char = " + escaped({static_cast<char>(code)}) + "\n";
        return text;
    }

    support::SortHome home_;
    support::SortSet set_;
};

// ---- The load -----------------------------------------------------------------------------------------------

TEST_F(SortFile, LoadsHeaderAndTable) {
    ASSERT_EQ(load(SortOrder().fill()), CS_SUCCEED);
    EXPECT_EQ(set_.order()->oid, &set_.oid_);
    EXPECT_EQ(set_.set_.sort_order, set_.order());
    EXPECT_EQ(set_.order()->sortnext, nullptr);
    EXPECT_EQ(header().class_, 1);
    EXPECT_EQ(header().id, 0x32);
    EXPECT_STREQ(header().name, "test_order");
    EXPECT_STREQ(header().charset, "iso_1");
    EXPECT_STREQ(header().descript, "An order made up");
    EXPECT_EQ(header().preference, 1);
    EXPECT_EQ(header().isbin, 0);
    EXPECT_EQ(table().stat1, SO_PRIMARY);
    EXPECT_EQ(table().stat2, 0);
    EXPECT_EQ(table().last_char, 255);
    EXPECT_EQ(table().nsmels, 0);
    for (int code = 0; code < 256; ++code) {
        const auto weight = table().lscs[code].pst;
        EXPECT_EQ(weight.p, code);
        EXPECT_EQ(weight.s, 0);
        EXPECT_EQ(weight.t, 1);
        EXPECT_EQ(weight.smelist, (code + 1) % 256); // the character behind it, 0 behind the last
    }
}

TEST_F(SortFile, SectionsInFrontAreSkipped) {
    EXPECT_EQ(load("[other]\nclass = \\x02\nnonsense = 1\n" + HEADER + all_but("")), CS_SUCCEED);
    EXPECT_EQ(load("; nothing else\n"), CS_FAIL);
    EXPECT_EQ(load(""), CS_FAIL);
    EXPECT_EQ(load("[Sortorder]\n"), CS_FAIL);
}

TEST_F(SortFile, WhatFollowsTheTableIsNotLookedAt) {
    EXPECT_EQ(load(HEADER + all_but("") + "[next]\nno equals sign\n"), CS_SUCCEED);
}

TEST_F(SortFile, AnOrderIsFoundByItsIdentifierAndLoadedOnce) {
    ASSERT_EQ(load(SortOrder().fill()), CS_SUCCEED);
    CsSortDesc *const first = set_.order();
    CsOID other = {};
    ASSERT_EQ(set_.load(other), CS_SUCCEED);
    EXPECT_NE(set_.order(), first);
    EXPECT_EQ(set_.set_.sort_order, set_.order()); // the newest in front
    EXPECT_EQ(set_.order()->sortnext, first);
    std::filesystem::remove(home_.file());
    ASSERT_EQ(set_.load(), CS_SUCCEED);
    EXPECT_EQ(set_.order(), first);
    CsOID third = {};
    EXPECT_NE(set_.load(third), CS_SUCCEED);
    EXPECT_EQ(set_.order(), first); // as it was
}

TEST_F(SortFile, AMissingFileIsTheStatusOfTheOpening) {
    INTL_LOCFILE file;
    CS_CHAR path[256] = "", opened[256] = "";
    EXPECT_EQ(comn__intl_load_sortorder(&set_.context_, &set_.oid_, &set_.cache_, path, sizeof path),
              com__open_charfile(&set_.context_, set_.cache_.charname, set_.cache_.sortname,
                                 const_cast<CS_CHAR *>("srt"), &file, opened, sizeof opened));
    EXPECT_EQ(path, home_.file());
    EXPECT_EQ(set_.set_.sort_order, nullptr);
}

TEST_F(SortFile, ThePathIsToldWhereItIsAskedFor) {
    home_.write(support::naive::file_of(SortOrder().fill()));
    CS_CHAR path[256] = "";
    EXPECT_EQ(comn__intl_load_sortorder(&set_.context_, &set_.oid_, &set_.cache_, path, sizeof path), CS_SUCCEED);
    EXPECT_EQ(path, home_.file());
}

TEST_F(SortFile, AfterALoadNothingIsLeftOfAnEarlierFailureOfTheReader) {
    home_.write(support::naive::file_of(SortOrder().fill()));
    set_.context_.ctxintlerr = INTL_ENOEQUALS;
    EXPECT_EQ(set_.load(), CS_SUCCEED);
    EXPECT_EQ(set_.context_.ctxintlerr, 0);
}

TEST_F(SortFile, FailuresOfTheReaderAreToldWithTheirCode) {
    expect_reader_failure("[sortorder\n", INTL_EBADSECTION);
    expect_reader_failure("[sortorder]\nclass\n", INTL_ENOEQUALS);
    expect_reader_failure("[sortorder]\nclass = \\x1\n", INTL_EBADESCAPE);
    expect_reader_failure("[sortorder]\nname = \"a\n", INTL_EUNTERMINATED);
    expect_reader_failure("[sortorder]\npreference = \\x1\n", INTL_EBADESCAPE);
    expect_reader_failure(HEADER + "char = a, \\x1\n", INTL_EBADESCAPE);
    expect_reader_failure(HEADER + "char = a\nchar\n", INTL_ENOEQUALS);
    expect_reader_failure(HEADER + "lig = \\x1\n", INTL_EBADESCAPE);
    expect_reader_failure(HEADER + "lig = a, after bc\nchar\n", INTL_ENOEQUALS);
    expect_reader_failure(HEADER + std::string(1100, ';') + "\n", INTL_ELINETOOLONG);
}

TEST_F(SortFile, DropTakesNullAndOrdersWithoutParts) {
    comn__sortorder_drop(nullptr);
    const FailingAllocator counting;
    auto *order = static_cast<CsSortDesc *>(std::calloc(1, sizeof(CsSortDesc)));
    comn__sortorder_drop(order);
    EXPECT_EQ(counting.held(), 0);
}

// ---- The header ---------------------------------------------------------------------------------------------

TEST_F(SortFile, KeysOfTheHeaderComeInAnyOrder) {
    EXPECT_EQ(load("[sortorder]\nmenuname = M\ndescription = D\ncharset = c\nname = n\nid = \\x01\nclass = \\x01\n" +
                   all_but("")),
              CS_SUCCEED);
    EXPECT_STREQ(header().descript, "D");
}

TEST_F(SortFile, EachMandatoryKeyIsMissed) {
    for (const char *line : {"class = \\x01\n", "id = \\x32\n", "name = test_order\n", "charset = iso_1\n",
                             "description = An order made up\n", "menuname = Made up\n"}) {
        EXPECT_EQ(load(replaced(HEADER, line, "") + all_but("")), CS_FAIL) << line;
        EXPECT_EQ(load(replaced(HEADER, line, std::string(line) + line) + all_but("")), CS_SUCCEED) << line;
    }
}

TEST_F(SortFile, ClassIsOneOrTwoAndTwoIsRefusedInTheEnd) {
    for (int value = 0; value < 256; ++value) {
        const std::string header = replaced(HEADER, "\\x01", escaped({static_cast<char>(value)}));
        EXPECT_EQ(load(header + all_but("")), value == 1 ? CS_SUCCEED : CS_FAIL) << value;
    }
    const std::string second = replaced(HEADER, "\\x01", "\\x02");
    for (const char *key : {"not_found", "lig", "char", "alphabet", "row", "row-low", "row-high", "plane", "group",
                            "ignore char", "ignore row", "ignore plane", "ignore group"})
        EXPECT_EQ(load(second + key + " = a\n"), CS_FAIL) << key;
}

// Which keys may end a header is told by the step itself: a load of the second class fails either way.
TEST_F(SortFile, EachClassHasItsOwnKeysBehindTheHeader) {
    const auto ends = [&](int order_class, const std::string &key) {
        home_.write(replaced(HEADER, "\\x01", escaped({static_cast<char>(order_class)})) + key + " = a\n");
        INTL_LOCFILE file;
        EXPECT_EQ(intl_open(home_.file().c_str(), &file), 0);
        int status = 0;
        EXPECT_STREQ(intl_nextsection(&file, &status), "sortorder");
        S_DESCRIPT header = {};
        CS_CHAR *entry = nullptr;
        const CS_RETCODE result = comn__get_sort_description(&set_.context_, &header, &entry, &file);
        EXPECT_EQ(entry, key);
        intl_close(&file);
        return result;
    };
    for (const char *key : {"lig", "char", "ignore char"})
        for (const int order_class : {1, 2})
            EXPECT_EQ(ends(order_class, key), CS_SUCCEED) << key;
    for (const char *key : {"not_found", "alphabet", "row", "row-low", "row-high", "plane", "group", "ignore row",
                            "ignore plane", "ignore group"}) {
        EXPECT_EQ(ends(1, key), CS_FAIL) << key;
        EXPECT_EQ(ends(2, key), CS_SUCCEED) << key;
    }
    for (const char *key : {"chars", "Char", "ignore", "CLASS", "x", "ignore  char"})
        for (const int order_class : {1, 2})
            EXPECT_EQ(ends(order_class, key), CS_FAIL) << key;
}

TEST_F(SortFile, AnIdOfZeroFails) {
    EXPECT_EQ(load(replaced(HEADER, "\\x32", "\\x00") + all_but("")), CS_FAIL);
    EXPECT_EQ(load(replaced(HEADER, "\\x32", "\\xFF") + all_but("")), CS_SUCCEED);
    EXPECT_EQ(header().id, 255);
}

TEST_F(SortFile, EachKeyNeedsItsValue) {
    for (const char *line : {"class = \\x01\n", "id = \\x32\n", "name = test_order\n", "charset = iso_1\n",
                             "description = An order made up\n", "menuname = Made up\n"}) {
        const std::string key = std::string(line).substr(0, std::string(line).find('='));
        EXPECT_EQ(load(replaced(HEADER, line, key + "=\n") + all_but("")), CS_FAIL) << key;
    }
    for (const char *key : {"preference", "binary"})
        EXPECT_EQ(load(HEADER + key + " =\n" + all_but("")), CS_FAIL) << key;
}

TEST_F(SortFile, NamesAreIdentifiersOfUpTo29Bytes) {
    for (const char *name : {"a", "a_", "a1", "Z9_z"}) {
        EXPECT_EQ(load(replaced(HEADER, "test_order", name) + all_but("")), CS_SUCCEED) << name;
        EXPECT_STREQ(header().name, name);
        EXPECT_EQ(load(replaced(HEADER, "iso_1", name) + all_but("")), CS_SUCCEED) << name;
        EXPECT_STREQ(header().charset, name);
    }
    for (const char *name : {"1a", "_a", "a-b", "a b", "\"\"", "a.", "\\x00"}) {
        EXPECT_EQ(load(replaced(HEADER, "test_order", name) + all_but("")), CS_FAIL) << name;
        EXPECT_EQ(load(replaced(HEADER, "iso_1", name) + all_but("")), CS_FAIL) << name;
    }
    EXPECT_EQ(load(replaced(HEADER, "test_order", std::string(29, 'n')) + all_but("")), CS_SUCCEED);
    EXPECT_EQ(header().name, std::string(29, 'n'));
    for (const std::size_t length : {30, 31, 200}) {
        EXPECT_EQ(load(replaced(HEADER, "test_order", std::string(length, 'n')) + all_but("")), CS_FAIL) << length;
        EXPECT_EQ(load(replaced(HEADER, "iso_1", std::string(length, 'n')) + all_but("")), CS_FAIL) << length;
    }
}

TEST_F(SortFile, ADescriptionHasUpTo254BytesOfAnyKind) {
    const std::string any = "\"1 -\xE4; = \"";
    EXPECT_EQ(load(replaced(HEADER, "An order made up", any) + all_but("")), CS_SUCCEED);
    EXPECT_STREQ(header().descript, "1 -\xE4; = ");
    EXPECT_EQ(load(replaced(HEADER, "An order made up", std::string(254, 'd')) + all_but("")), CS_SUCCEED);
    EXPECT_EQ(header().descript, std::string(254, 'd'));
    for (const std::size_t length : {255, 256, 900})
        EXPECT_EQ(load(replaced(HEADER, "An order made up", std::string(length, 'd')) + all_but("")), CS_FAIL);
    // A menu name is dropped, however long.
    EXPECT_EQ(load(replaced(HEADER, "Made up", std::string(900, 'm')) + all_but("")), CS_SUCCEED);
}

TEST_F(SortFile, PreferenceAndBinaryAreTrueOrFalse) {
    for (const char *key : {"preference", "binary"}) {
        for (const char *word : {"True", "yes", "1", "truex", "tru", "\"\"", "false "}) {
            const bool is_good = word == std::string("false "); // blanks at the end are not part of the value
            EXPECT_EQ(load(HEADER + key + " = " + word + "\n" + all_but("")), is_good ? CS_SUCCEED : CS_FAIL) << word;
        }
    }
    EXPECT_EQ(load(HEADER + "preference = true\n" + all_but("")), CS_SUCCEED);
    EXPECT_EQ(header().preference, 1);
    EXPECT_EQ(load(HEADER + "preference = false\nbinary = false\n" + all_but("")), CS_SUCCEED);
    EXPECT_EQ(header().preference, 0);
    EXPECT_EQ(header().isbin, 0);
}

TEST_F(SortFile, ABinaryOrderHasNoTable) {
    for (const char *rest : {"", "char = a\n", "char = a, a\n", "lig = nonsense\n", "ignore char = x\n"}) {
        EXPECT_EQ(load(HEADER + "binary = true\n" + rest), CS_SUCCEED) << rest;
        EXPECT_EQ(set_.order()->char_sort_class, nullptr);
        EXPECT_EQ(header().isbin, 1);
    }
    EXPECT_EQ(load(HEADER + "binary = true\nrow = a\n"), CS_FAIL);
    EXPECT_EQ(load(replaced(HEADER, "\\x01", "\\x02") + "binary = true\n"), CS_FAIL); // of the second class
}

TEST_F(SortFile, AHeaderWithoutEntriesIsForBinaryOrdersOnly) {
    EXPECT_EQ(load(HEADER), CS_FAIL);
    EXPECT_EQ(load(HEADER + "binary = false\n"), CS_FAIL);
    EXPECT_EQ(load(HEADER + "[char]\n"), CS_FAIL);
}

// ---- Characters ---------------------------------------------------------------------------------------------

TEST_F(SortFile, EveryByteNeedsItsWeight) {
    for (int code = 1; code < 256; ++code)
        EXPECT_EQ(load(HEADER + all_but({static_cast<char>(code)})), CS_FAIL) << code;
    EXPECT_EQ(load(HEADER + all_but("")), CS_SUCCEED);
}

TEST_F(SortFile, TheFirstByteOfAPairNeedsAWeightOfItsOwn) {
    EXPECT_EQ(load(HEADER + all_but("q") + "char = qu\n"), CS_FAIL);
    EXPECT_EQ(load(HEADER + all_but("q") + "char = qu\nchar = q\n"), CS_FAIL); // a 256th entry is not read
    EXPECT_EQ(load(HEADER + all_but("qr") + "char = qu\nchar = q, r\n"), CS_SUCCEED);
}

TEST_F(SortFile, AByteIsDefinedOnce) {
    EXPECT_EQ(load(HEADER + "char = a, a\n" + all_but("ab")), CS_FAIL);
    EXPECT_EQ(load(HEADER + "char = a=a\n" + all_but("ab")), CS_FAIL);
    EXPECT_EQ(load(HEADER + "char = a\nchar = a\n" + all_but("ab")), CS_FAIL);
    EXPECT_EQ(load(HEADER + "char = ab, ab\nchar = a, c\n" + all_but("abc")), CS_FAIL);
    EXPECT_EQ(load(HEADER + "char = ab\nchar = a, c, b\n" + all_but("abc")), CS_SUCCEED);
}

TEST_F(SortFile, FaultsOfAValue) {
    const std::string rest = all_but("abcd=");
    const auto status = [&](const std::string &line) { return load(HEADER + "char = " + line + "\n" + rest); };
    const std::string all = ", a, b, c, d, =";
    for (const std::string line : {
             "\"\"",           // empty
             "a,,b",           // the same
             "\\x00",          // NUL
             "a\\x00",         // behind a character
             "a=\\x00",        // as an item
             "a=",             // no item behind "="
             "a=b=",           //
             "a=bc",           // the items are as wide as the first
             "ab=c",           //
             "abc",            //
             "ab\\x00",        //
             "ab=c=",          // a pair's second byte is "="
             "ab=c\\ ",        // or a blank
         })
        EXPECT_EQ(status(line), CS_FAIL) << line;
    for (const std::string line : {
             "a, b, c, d, =",       //
             "a=b=c=d, =",          //
             "a==, b, c, d",        // "=" as an item behind "="
             "==a, b, c, d",        // and in front
             "\"a xyz\", b, c, d, =", // what follows a blank is not read
             "a b, b, c, d, =",     //
             "ab, cd=ac, a, b, c, d, =", //
             "\\ a, a, b, c, d, =", // a pair that begins with a blank
         })
        EXPECT_EQ(status(line), CS_SUCCEED) << line;
}

TEST_F(SortFile, WeightsOfItemsAndValues) {
    ASSERT_EQ(load(HEADER + "char = a=A=\\xE4, \\xE1=\\xC1, \\xE0\nchar = b\n" + all_but("aA\xE4\xE1\xC1\xE0"
                                                                                       "b")),
              CS_SUCCEED);
    const auto weight = [&](int code) {
        const auto pst = table().lscs[code].pst;
        return std::array{int(pst.p), int(pst.s), int(pst.t)};
    };
    EXPECT_EQ(weight('a'), (std::array{1, 0, 1}));
    EXPECT_EQ(weight('A'), (std::array{1, 0, 2}));
    EXPECT_EQ(weight(0xE4), (std::array{1, 0, 3}));
    EXPECT_EQ(weight(0xE1), (std::array{1, 1, 1}));
    EXPECT_EQ(weight(0xC1), (std::array{1, 1, 2}));
    EXPECT_EQ(weight(0xE0), (std::array{1, 2, 1}));
    EXPECT_EQ(weight('b'), (std::array{2, 0, 1}));
    EXPECT_EQ(table().lscs[0].pst.smelist, 'a');
    EXPECT_EQ(table().lscs['A'].pst.smelist, 'b');
    EXPECT_EQ(table().lscs['b'].pst.smelist, 1);
}

TEST_F(SortFile, FeatureBits) {
    const auto bits = [&](const std::string &lines, const std::string &defined, const std::string &header = HEADER) {
        EXPECT_EQ(load(header + lines + all_but(defined)), CS_SUCCEED) << lines;
        return int(table().stat1);
    };
    EXPECT_EQ(bits("", ""), SO_PRIMARY);
    EXPECT_EQ(bits("char = a, b\n", "ab"), SO_PRIMARY); // the counter is 1 at the second value
    EXPECT_EQ(bits("char = a, b, c\n", "abc"), SO_SECONDARY);
    EXPECT_EQ(bits("char = a=b\n", "ab"), SO_TERTIARY | SO_EQUAL);
    EXPECT_EQ(bits("char = a, b, c=d\n", "abcd"), SO_TERTIARY | SO_EQUAL);
    EXPECT_EQ(bits("char = c=d\nchar = a, b, e\n", "abcde"), SO_TERTIARY | SO_EQUAL);
    const std::string without = HEADER + "preference = false\n";
    EXPECT_EQ(bits("char = a=b\n", "ab", without), SO_PRIMARY | SO_EQUAL);
    EXPECT_EQ(bits("char = a=b, c, d\n", "abcd", without), SO_SECONDARY | SO_EQUAL);
    EXPECT_EQ(bits("char = ab\nchar = a, b\n", "ab"), SO_PRIMARY | SO_PAIRS);
    EXPECT_EQ(bits("lig = x, equal ab\n", "x"), SO_PRIMARY | SO_PAIRS | SO_LIGATURES);
    EXPECT_EQ(bits("lig = x=y, equal ab\n", "xy"), SO_PRIMARY | SO_PAIRS | SO_LIGATURES | SO_EQUAL);
    // A ligature that is reckoned with makes room for itself, so that the second value is above 1.
    EXPECT_EQ(bits("lig = x, after ab\nchar = a, c\n", "xac"), SO_SECONDARY | SO_PAIRS | SO_LIGATURES);
}

TEST_F(SortFile, LastCharIsTheLastByteOfTheLastItem) {
    ASSERT_EQ(load(HEADER + all_but("xyz") + "char = x, y=z\n"), CS_SUCCEED);
    EXPECT_EQ(table().last_char, 'z');
    ASSERT_EQ(load(HEADER + all_but("xyz") + "char = x, y=z, xq\n"), CS_SUCCEED);
    EXPECT_EQ(table().last_char, 'q');
}

TEST_F(SortFile, AnEntryWithoutValuesTakesAWeight) {
    ASSERT_EQ(load(HEADER + "char =\n" + all_but("ab") + "char = a, b\n"), CS_SUCCEED);
    EXPECT_EQ(table().lscs[1].pst.p, 2);
    EXPECT_EQ(table().lscs[0].pst.smelist, 1);
}

TEST_F(SortFile, NoPrimaryWeightIsAbove255) {
    // 255 entries define all; the 256th is not read, whatever it is.
    EXPECT_EQ(load(HEADER + all_but("") + "char = a\n"), CS_SUCCEED);
    EXPECT_EQ(load(HEADER + all_but("") + "nonsense = a\n"), CS_SUCCEED);
    EXPECT_EQ(load(HEADER + all_but("ab") + "char = a, b\nnonsense = a\n"), CS_FAIL); // the 255th
}

TEST_F(SortFile, IgnoreCharEndsTheTable) {
    const std::string all = "char = a, b\n" + all_but("ab");
    EXPECT_EQ(load(HEADER + all + "ignore char = a\nnonsense = 1\nchar = a\n"), CS_SUCCEED);
    EXPECT_EQ(load(HEADER + all_but("ab") + "ignore char = x\nchar = a, b\n"), CS_FAIL); // so both are missing
    EXPECT_EQ(load(HEADER + "ignore char = x\n" + all_but("")), CS_FAIL);
}

TEST_F(SortFile, OtherKeysAmongTheCharactersFail) {
    for (const char *line : {"lig = x, equal ab\n", "name = n\n", "CHAR = a\n", "chars = a\n"})
        EXPECT_EQ(load(HEADER + "char = a, b\n" + line + all_but("ab")), CS_FAIL) << line;
}

// ---- Exceptions ---------------------------------------------------------------------------------------------

TEST_F(SortFile, NewestPairIsFirstInItsChainAndTheOwnWeightLast) {
    ASSERT_EQ(load(HEADER + "char = a=A, ab, ac=ad\n" + all_but("aA")), CS_SUCCEED);
    EXPECT_EQ(table().nsmels, 4);
    const int head = table().lscs['a'].pst.smelist;
    EXPECT_EQ(table().lscs['a'].lsclong & 0xFFFFFF, 0u);
    const CS_BYTE seconds[] = {'d', 'c', 'b'};
    const int weights[][2] = {{2, 2}, {2, 1}, {1, 1}};
    int at = head;
    for (int i = 0; i < 3; ++i, at = table().smels[at].next_smel) {
        const SMEL &smel = table().smels[at];
        EXPECT_EQ(smel.type_smel, SMEL_PAIR);
        EXPECT_EQ(smel.noxtraw, 1);
        EXPECT_EQ(smel.smel_types.sm_1type.xtraw, seconds[i]);
        EXPECT_EQ(smel.smel_types.sm_1type.lsc1.pst.p, 1);
        EXPECT_EQ(smel.smel_types.sm_1type.lsc1.pst.s, weights[i][0]);
        EXPECT_EQ(smel.smel_types.sm_1type.lsc1.pst.t, weights[i][1]);
        EXPECT_EQ(smel.smel_types.sm_1type.lsc1.pst.smelist, 1);
    }
    EXPECT_EQ(table().smels[at].type_smel, SMEL_OWN);
    EXPECT_EQ(table().smels[at].noxtraw, 0);
    EXPECT_EQ(table().smels[at].next_smel, SMEL_END);
    EXPECT_EQ(table().smels[at].smel_types.sm_0type.lsc1.pst.t, 1);
    EXPECT_EQ(table().smels[at].smel_types.sm_0type.lsc1.pst.smelist, 1);
}

TEST_F(SortFile, LigaturesFallIntoTheGapsThatTheirLettersLeave) {
    ASSERT_EQ(load(HEADER + "lig = x=X, y, after ae\nlig = z, after ea\nlig = w, equal ee\nchar = a, A\nchar = e, E\n" +
                   all_but("xXyzwaAeE")),
              CS_SUCCEED);
    // Three records sort behind a and e, so three numbers are left free.
    EXPECT_EQ(table().lscs['A'].pst.s, 4);
    EXPECT_EQ(table().lscs['E'].pst.s, 4);
    const auto weights = [&](int code) {
        const SMEL &smel = table().smels[table().lscs[code].pst.smelist];
        EXPECT_EQ(smel.type_smel, SMEL_EXPAND);
        EXPECT_EQ(smel.noxtraw, 0);
        EXPECT_EQ(smel.next_smel, SMEL_END);
        const auto one = smel.smel_types.sm_3type.lsc1.pst, other = smel.smel_types.sm_3type.lsc2.pst;
        EXPECT_EQ(one.smelist, one.p == 1 ? 'e' : 1);
        EXPECT_EQ(other.smelist, other.p == 1 ? 'e' : 1);
        return std::array{int(one.p), int(one.s), int(one.t), int(other.p), int(other.s), int(other.t)};
    };
    EXPECT_EQ(weights('x'), (std::array{1, 1, 1, 2, 1, 1}));
    EXPECT_EQ(weights('X'), (std::array{1, 1, 2, 2, 1, 2}));
    EXPECT_EQ(weights('y'), (std::array{1, 2, 1, 2, 2, 1}));
    EXPECT_EQ(weights('z'), (std::array{2, 3, 1, 1, 3, 1}));
    EXPECT_EQ(weights('w'), (std::array{2, 3, 1, 2, 3, 1})); // as its letters, behind three
}

TEST_F(SortFile, FaultsOfALigature) {
    const auto status = [&](const std::string &lines, const std::string &forms = "") {
        return load(HEADER + lines + all_but(forms));
    };
    for (const char *line : {
             "lig =\n",                            // no letters
             "lig = x\n",                          //
             "lig = x, y\n",                       //
             "lig = xy, after ab\n",               // forms are joined by "="
             "lig = x=, after ab\n",               //
             "lig = x=x, after ab\n",              // the same form twice
             "lig = x, x, after ab\n",             //
             "lig = x, after ab\nlig = x, after ab\n",
             "lig = x, after ab\nlig = a, after cd\n", // a letter of an earlier one
             "lig = x, after ab\nlig = b, after cd\n",
             "lig = \"\", after ab\n",             // empty
             "lig = \\x00, after ab\n",            // NUL
             "lig = x, after a\n",                 // one letter
             "lig = x, after \\x00a\n",            //
             "lig = x, after abc\n",               // three
             "lig = x, \"after ab \"\n",           //
             "lig = x, after xb\n",                // the letter is a form
             "lig = x, after bx\n",                //
             "lig = x, before ab\n",               //
             "lig = x, After ab\n",                //
             "lig = x, afterab\n",                 //
             "lig = x, after\n",                   //
         }) {
        EXPECT_EQ(status(line), CS_FAIL) << line;
        EXPECT_EQ(status(line, "x"), CS_FAIL) << line;
        EXPECT_EQ(status(line, "xy"), CS_FAIL) << line;
    }
    EXPECT_EQ(status("lig = x, after ab\n", "x"), CS_SUCCEED);
    EXPECT_EQ(status("lig = \" x = y \", \"  equal   ab\"\n", "xy"), CS_SUCCEED); // blanks around
    EXPECT_EQ(status("lig = after ab\n"), CS_SUCCEED);                            // letters without a form
    EXPECT_EQ(status("lig = x, after ab, nonsense, x\n", "x"), CS_SUCCEED);       // nothing is read behind the letters
    EXPECT_EQ(status("lig = x==, after ab\n", "x="), CS_SUCCEED);                 // "=" as a form
}

TEST_F(SortFile, AFormOfALigatureIsNoCharacter) {
    EXPECT_EQ(load(HEADER + "lig = x, after ab\n" + all_but("")), CS_FAIL);
    EXPECT_EQ(load(HEADER + "lig = x, after ab\nchar = ax\n" + all_but("x")), CS_FAIL);
    EXPECT_EQ(load(HEADER + "lig = x, after ab\nchar = xa\n" + all_but("x")), CS_FAIL);
    EXPECT_EQ(load(HEADER + "lig = x, after ab\nchar = a=x\n" + all_but("ax")), CS_FAIL);
}

TEST_F(SortFile, NothingBehindTheLigaturesFails) {
    EXPECT_EQ(load(HEADER + "lig = x, after ab\n"), CS_FAIL);
    EXPECT_EQ(load(HEADER + "lig = x, after ab\n[next]\n"), CS_FAIL);
}

TEST_F(SortFile, TenFormsInAListAndNoMore) {
    EXPECT_EQ(load(HEADER + "lig = 0=1=2=3=4=5=6=7=8=9, after ab\n" + all_but("0123456789")), CS_SUCCEED);
    EXPECT_EQ(table().nsmels, 10);
    EXPECT_EQ(load(HEADER + "lig = 0=1=2=3=4=5=6=7=8=9=x, after ab\n" + all_but("0123456789x")), CS_FAIL);
}

TEST_F(SortFile, FiftyListsAndNoMore) {
    for (const int lists : {50, 51}) {
        std::string lines, forms;
        for (int i = 0; i < lists; ++i) {
            forms += static_cast<char>(0x80 + i);
            lines += "lig = " + escaped(forms.substr(forms.size() - 1)) + ", equal ab\n";
        }
        EXPECT_EQ(load(HEADER + lines + all_but(forms)), lines.size() && lists == 50 ? CS_SUCCEED : CS_FAIL) << lists;
    }
}

TEST_F(SortFile, SixtyFourExceptionsAndNoMore) {
    // Pairs, and the own weight of their first byte.
    for (const int pairs : {63, 64, 65}) {
        std::string line;
        for (int i = 0; i < pairs; ++i)
            line += (i == 0 ? "" : ", ") + escaped({'q', static_cast<char>(0x80 + i)});
        EXPECT_EQ(load(HEADER + "char = " + line + "\nchar = p, q\n" + all_but("pq")),
                  pairs == 63 ? CS_SUCCEED : CS_FAIL)
            << pairs;
    }
    // Forms of ligatures.
    for (const int forms : {64, 65}) {
        std::string lines, all;
        for (int i = 0; i < forms; ++i) {
            all += static_cast<char>(0x80 + i);
            lines += i % 10 == 0 ? "lig = " : "=";
            lines += escaped(all.substr(all.size() - 1));
            if (i % 10 == 9 || i + 1 == forms)
                lines += ", equal ab\n";
        }
        EXPECT_EQ(load(HEADER + lines + all_but(all)), forms == 64 ? CS_SUCCEED : CS_FAIL) << forms;
    }
}

// ---- Generated orders ---------------------------------------------------------------------------------------

using Random = std::mt19937_64;

// Often right, and often wrong in some way that the second maker knows of.
SortOrder random_order(Random &random) {
    std::string bytes(255, '\0');
    for (int code = 1; code < 256; ++code)
        bytes[static_cast<std::size_t>(code - 1)] = static_cast<char>(code);
    std::shuffle(bytes.begin(), bytes.end(), random);
    SortOrder order;
    order.preference = random() % 2 == 0;
    std::size_t at = 0;
    const std::size_t ligatures = random() % 3 == 0 ? random() % 8 : 0;
    for (std::size_t i = 0; i < ligatures; ++i) {
        Ligature ligature;
        for (auto lists = 1 + random() % 2; lists > 0; --lists) {
            std::string list;
            for (auto forms = 1 + random() % 4; forms > 0; --forms) {
                while (bytes[at] == ' ' || bytes[at] == '=')
                    std::swap(bytes[at], bytes[100 + random() % 155]);
                list += bytes[at++];
            }
            ligature.lists.push_back(list);
        }
        ligature.is_after = random() % 2 == 0;
        order.ligatures.push_back(ligature);
    }
    const std::size_t first_letter = at;
    const auto any_letter = [&] {
        const char c = bytes[first_letter + random() % (bytes.size() - first_letter)];
        return c == ' ' ? bytes[first_letter + (bytes[first_letter] == ' ' ? 1 : 0)] : c;
    };
    for (Ligature &ligature : order.ligatures) {
        ligature.first = any_letter();
        ligature.second = any_letter();
    }
    const auto pairs = random() % 2 == 0 ? random() % 70 : 0;
    std::size_t written = 0;
    for (const std::size_t last = bytes.size() - random() % 3 / 2; at < last;) {
        std::vector<std::vector<std::string>> entry;
        for (auto values = 1 + random() % 6; values > 0 && at < last; --values) {
            std::vector<std::string> value;
            for (auto items = 1 + random() % 4; items > 0 && at < last; --items)
                value.push_back({bytes[at++]});
            entry.push_back(value);
        }
        if (written < pairs) {
            std::vector<std::string> value;
            for (auto items = 1 + random() % 3; items > 0; --items, ++written)
                value.push_back({bytes[random() % 8 == 0 ? random() % bytes.size() : bytes.size() - 1 - random() % 9],
                                 any_letter()});
            entry.insert(entry.begin() + static_cast<std::ptrdiff_t>(random() % (entry.size() + 1)), value);
        }
        order.characters.push_back(entry);
    }
    if (random() % 8 == 0)
        order.characters.back().push_back({{bytes[random() % bytes.size()]}}); // mostly there already
    return order;
}

TEST_F(SortFile, GeneratedOrdersMakeTheTablesOfASecondMaker) {
    Random random(20260107);
    int right = 0, wrong = 0, full = 0;
    for (int round = 0; round < 600; ++round) {
        const SortOrder order = random_order(random);
        const auto expected = support::naive::table_of(order);
        const CS_RETCODE status = load(order);
        ASSERT_EQ(status, expected ? CS_SUCCEED : CS_FAIL) << round << '\n' << support::naive::file_of(order);
        if (expected) {
            ASSERT_TRUE(same(table(), *expected)) << round << '\n' << support::naive::file_of(order);
            full += expected->nsmels > 30;
        }
        ++(expected ? right : wrong);
    }
    EXPECT_GT(right, 100);
    EXPECT_GT(wrong, 100);
    EXPECT_GT(full, 10);
}

// ---- Memory -------------------------------------------------------------------------------------------------

TEST_F(SortFile, WithoutMemoryALoadLeavesNothingBehind) {
    SortOrder order;
    order.ligatures = {{{"\xE6\xC6"}, true, 'a', 'e'}};
    order.characters = {{{"c", "C"}, {"ch"}}};
    home_.write(support::naive::file_of(order.fill()));
    int asked = 0;
    {
        const FailingAllocator counting;
        ASSERT_EQ(set_.load(), CS_SUCCEED);
        asked = counting.asked();
        set_.drop();
        EXPECT_EQ(counting.held(), 0);
    }
    ASSERT_GE(asked, 3); // the node, the header, the table
    int memory_errors = 0;
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        for (int n = 1; n <= asked; ++n) {
            set_.context_.ctxintlerr = 0;
            const FailingAllocator failing(n, span);
            const CS_RETCODE status = set_.load();
            if (status == CS_SUCCEED) { // what failed could be done without
                set_.drop();
            } else {
                // The reader's own want of memory is told as its failures are.
                EXPECT_TRUE(status == CS_MEM_ERROR || set_.context_.ctxintlerr == INTL_ENOMEMORY) << n << ' ' << status;
                memory_errors += status == CS_MEM_ERROR;
            }
            EXPECT_EQ(set_.set_.sort_order, nullptr) << n;
            EXPECT_EQ(set_.cache_.locsortorder, nullptr) << n;
            EXPECT_EQ(failing.held(), 0) << n;
        }
    EXPECT_EQ(memory_errors, 6);
}

// ---- Values -------------------------------------------------------------------------------------------------

// A reader in front of the values of one entry.
class Values : public testing::Test {
protected:
    ~Values() override { intl_close(&file_); }
    INTL_LOCFILE *values(const std::string &text) {
        intl_close(&file_);
        support::write_file(directory_.path_of("file"), "[s]\nk = " + text + "\n");
        EXPECT_EQ(intl_open(directory_.path_of("file").c_str(), &file_), 0);
        int status = 0;
        EXPECT_NE(intl_nextsection(&file_, &status), nullptr);
        EXPECT_NE(intl_nextentry(&file_, &status), nullptr);
        return &file_;
    }

    support::TempDirectory directory_;
    INTL_LOCFILE file_ = {};
    CS_CONTEXT context_ = {};
};

TEST_F(Values, NumbersAreBytesWithTheHighestFirst) {
    INTL_LOCFILE *const file = values("\\x81\\x02\\x03\\x04, \\x81\\x02\\x03\\x04, \\x81\\x02\\x03\\x04");
    CS_BYTE byte = 0;
    CS_SMALLINT number = 0;
    CS_INT large = 0;
    EXPECT_EQ(comn__get_byteval(&context_, file, &byte), CS_SUCCEED);
    EXPECT_EQ(byte, 0x81);
    EXPECT_EQ(comn__get_shortval(&context_, file, &number), CS_SUCCEED);
    EXPECT_EQ(number, static_cast<CS_SMALLINT>(0x8102));
    EXPECT_EQ(comn__get_longval(&context_, file, &large), CS_SUCCEED);
    EXPECT_EQ(large, static_cast<CS_INT>(0x81020304));
}

TEST_F(Values, BytesThatANumberDoesNotHaveAreZero) {
    INTL_LOCFILE *const file = values("\"\", a, a");
    CS_BYTE byte = 9;
    CS_BYTE number[4] = {9, 9, 9, 9}; // at an odd place
    CS_INT large = 9;
    EXPECT_EQ(comn__get_byteval(&context_, file, &byte), CS_SUCCEED);
    EXPECT_EQ(byte, 0);
    EXPECT_EQ(comn__get_shortval(&context_, file, number + 1), CS_SUCCEED);
    EXPECT_EQ(number[0], 9);
    EXPECT_EQ(number[1], 0);
    EXPECT_EQ(number[2], 'a');
    EXPECT_EQ(number[3], 9);
    EXPECT_EQ(comn__get_longval(&context_, file, &large), CS_SUCCEED);
    EXPECT_EQ(large, 'a' << 24);
}

TEST_F(Values, TextsHaveAtMostOneByteLessThanTheirLimit) {
    CS_CHAR text[8];
    std::memset(text, '~', sizeof text);
    EXPECT_EQ(comn__get_string(&context_, values("abcd"), text, CS_FALSE, 5), CS_SUCCEED);
    EXPECT_STREQ(text, "abcd");
    EXPECT_EQ(text[5], '~');
    EXPECT_EQ(comn__get_string(&context_, values("abcde"), text, CS_FALSE, 5), CS_FAIL);
    EXPECT_EQ(comn__get_string(&context_, values("abcdef"), text, CS_FALSE, 5), CS_FAIL);
    EXPECT_EQ(text[5], '~');
    EXPECT_EQ(comn__get_string(&context_, values("a-b"), text, CS_TRUE, 5), CS_FAIL);
    EXPECT_EQ(comn__get_string(&context_, values("a_1"), text, CS_TRUE, 5), CS_SUCCEED);
    EXPECT_STREQ(text, "a_1");
    EXPECT_EQ(comn__get_string(&context_, values("-_1, next"), nullptr, CS_TRUE, 0), CS_SUCCEED);
    EXPECT_EQ(comn__get_string(&context_, &file_, text, CS_TRUE, 8), CS_SUCCEED); // it took the first
    EXPECT_STREQ(text, "next");
}

TEST_F(Values, ABooleanIsOneOfTwoWords) {
    int value = 9;
    EXPECT_EQ(comn__get_boolval(&context_, values("true"), &value), CS_SUCCEED);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(comn__get_boolval(&context_, values("false"), &value), CS_SUCCEED);
    EXPECT_EQ(value, 0);
    value = 9;
    for (const char *text : {"TRUE", "t", "\"\"", "true\\x00", "0"})
        EXPECT_EQ(comn__get_boolval(&context_, values(text), &value), CS_FAIL) << text;
    EXPECT_EQ(value, 9);
}

// Every reader, on the reader's present entry.
const std::function<CS_RETCODE(CS_CONTEXT *, INTL_LOCFILE *)> READERS[] = {
    [](CS_CONTEXT *context, INTL_LOCFILE *file) {
        CS_BYTE byte;
        return comn__get_byteval(context, file, &byte);
    },
    [](CS_CONTEXT *context, INTL_LOCFILE *file) {
        CS_SMALLINT number;
        return comn__get_shortval(context, file, &number);
    },
    [](CS_CONTEXT *context, INTL_LOCFILE *file) {
        CS_INT number;
        return comn__get_longval(context, file, &number);
    },
    [](CS_CONTEXT *context, INTL_LOCFILE *file) {
        CS_CHAR text[8];
        return comn__get_string(context, file, text, CS_FALSE, sizeof text);
    },
    [](CS_CONTEXT *context, INTL_LOCFILE *file) {
        return comn__get_string(context, file, nullptr, CS_FALSE, 0);
    },
    [](CS_CONTEXT *context, INTL_LOCFILE *file) {
        int value;
        return comn__get_boolval(context, file, &value);
    },
};

TEST_F(Values, AMissingValueFailsAndAnUnreadableOneIsTheReadersFailure) {
    for (const auto &reader : READERS) {
        context_.ctxintlerr = 7;
        EXPECT_EQ(reader(&context_, values("")), CS_FAIL);
        EXPECT_EQ(context_.ctxintlerr, 7);
        EXPECT_EQ(reader(&context_, values("\\x1")), CS_EINTL);
        EXPECT_EQ(context_.ctxintlerr, INTL_EBADESCAPE);
    }
}

using ValuesDeathTest = Values;

TEST_F(ValuesDeathTest, BrokenContractsAreReported) {
    for (const auto &reader : READERS) {
        EXPECT_NULL_REPORT(reader(nullptr, values("a")), "locvalue");
        EXPECT_NULL_REPORT(reader(&context_, nullptr), "locvalue");
    }
    EXPECT_NULL_REPORT(comn__get_byteval(&context_, values("a"), nullptr), "locvalue");
    EXPECT_NULL_REPORT(comn__get_shortval(&context_, values("a"), nullptr), "locvalue");
    EXPECT_NULL_REPORT(comn__get_longval(&context_, values("a"), nullptr), "locvalue");
    EXPECT_NULL_REPORT(comn__get_boolval(&context_, values("a"), nullptr), "locvalue");
    CS_CHAR text[8];
    EXPECT_BOMB(comn__get_string(&context_, values("a"), text, 2, 8), "locvalue");
    EXPECT_BOMB(comn__get_string(&context_, values("a"), nullptr, -1, 8), "locvalue");
}

TEST_F(Values, BrokenContractsFailWhereAssertionsReturn) {
    const ReturningAssertions returning;
    for (const auto &reader : READERS) {
        EXPECT_EQ(reader(nullptr, values("a")), CS_FAIL);
        EXPECT_EQ(reader(&context_, nullptr), CS_FAIL);
    }
    EXPECT_EQ(comn__get_byteval(&context_, values("a"), nullptr), CS_FAIL);
    EXPECT_EQ(comn__get_shortval(&context_, values("a"), nullptr), CS_FAIL);
    EXPECT_EQ(comn__get_longval(&context_, values("a"), nullptr), CS_FAIL);
    EXPECT_EQ(comn__get_boolval(&context_, values("a"), nullptr), CS_FAIL);
    CS_CHAR text[8] = "~";
    EXPECT_EQ(comn__get_string(&context_, values("a"), text, 2, 8), CS_FAIL);
    EXPECT_STREQ(text, "~");
    EXPECT_EQ(returning.count(), 2 * static_cast<int>(std::size(READERS)) + 5);
}

// ---- Broken contracts of the loader and its steps -----------------------------------------------------------

// Every entry with each argument missing in turn; false behind the last.
bool call_without(int missing, CS_RETCODE &status) {
    CS_CONTEXT context = {};
    INTL_LOCFILE file = {};
    S_DESCRIPT header = {};
    SO_1CLASS so = {};
    CsSortDesc order = {};
    CsOID oid = {};
    CsCharDesc set = {};
    CsLocCache cache = {};
    LIGSTRUCT ligs[1] = {};
    CS_BYTE byte = 'a', none = 0, next_char[256] = {};
    CS_CHAR *entry = nullptr, key[] = "char";
    int count = 0;
    order.char_sort_descript = &header;
    const auto omit = [&](int place, auto *pointer) { return missing == place ? nullptr : pointer; };
    cache.locchardesc = omit(3, &set);
    if (missing <= 3)
        status = comn__intl_load_sortorder(omit(0, &context), omit(1, &oid), omit(2, &cache), nullptr, 0);
    else if (missing <= 7)
        status = comn__get_sort_description(omit(4, &context), omit(5, &header), omit(6, &entry), omit(7, &file));
    else if (missing <= 11)
        status = comn__build_class1(omit(8, &context), omit(9, &order), omit(10, key), omit(11, &file));
    else if (missing <= 15)
        status = comn__get_lig(omit(12, &context), omit(13, &file), omit(14, ligs), omit(15, &count));
    else if (missing <= 20)
        status = comn__get_char(omit(16, &context), omit(17, &so), omit(18, &file), omit(19, ligs), 0, 1, 0, 1, 1,
                                omit(20, next_char));
    else if (missing <= 23)
        status = comn__add_smel(omit(21, &so), omit(22, &byte), omit(23, &none), 1, 0, 1);
    else if (missing <= 25)
        status = comn__do_ligs(omit(24, &so), omit(25, ligs), 0);
    else if (missing <= 27)
        status = comn__check_sort(omit(26, &so), omit(27, next_char));
    else
        return false;
    EXPECT_EQ(order.char_sort_class, nullptr);
    return true;
}

TEST(SortLoaderDeathTest, NullPointersAreReported) {
    CS_RETCODE status;
    for (int missing = 0; missing < 28; ++missing)
        EXPECT_NULL_REPORT(call_without(missing, status), "sortord_load");
}

TEST(SortLoader, NullPointersFailWhereAssertionsReturn) {
    const ReturningAssertions returning;
    int missing = 0;
    for (CS_RETCODE status = CS_SUCCEED; call_without(missing, status); ++missing)
        EXPECT_EQ(status, CS_FAIL) << missing;
    EXPECT_EQ(missing, 28);
    EXPECT_EQ(returning.count(), 28);
}

TEST(SortLoader, AddSmelRefusesChainsThatAreNotOfPairs) {
    SO_1CLASS so = {};
    for (LSC &weight : so.lscs)
        weight.pst.smelist = SMEL_END;
    CS_BYTE a = 'a', b = 'b', none = 0;
    so.lscs['a'].pst.smelist = 0;
    so.smels[0] = {SMEL_END, SMEL_EXPAND, 0, 0, {}};
    so.nsmels = 1;
    EXPECT_EQ(comn__add_smel(&so, &a, &b, 1, 2, 3), CS_FAIL);
    EXPECT_EQ(so.nsmels, 1);
    EXPECT_EQ(comn__add_smel(&so, &a, &none, 1, 2, 3), CS_SUCCEED); // the last of a chain may be of any kind
    EXPECT_EQ(so.lscs['a'].pst.p, 1);
    EXPECT_EQ(so.lscs['a'].pst.smelist, 0);
    EXPECT_EQ(comn__add_smel(&so, &a, &none, 1, 2, 3), CS_FAIL); // defined
    so.lscs['b'].pst.smelist = 1;
    so.smels[1] = {2, SMEL_OWN, 0, 0, {}};
    so.smels[2] = {SMEL_END, SMEL_PAIR, 1, 0, {}};
    so.nsmels = 3;
    EXPECT_EQ(comn__add_smel(&so, &b, &none, 1, 2, 3), CS_FAIL);
    EXPECT_EQ(so.lscs['b'].pst.t, 0);
}

TEST(SortLoader, CheckSortRefusesKindsThatAreNotMade) {
    SO_1CLASS so = {};
    CS_BYTE next_char[256] = {};
    for (LSC &weight : so.lscs)
        weight.pst = {1, 0, 1, SMEL_END};
    EXPECT_EQ(comn__check_sort(&so, next_char), CS_SUCCEED);
    for (LSC &weight : so.lscs)
        weight.pst = {1, 0, 1, SMEL_END};
    so.lscs['a'].pst = {0, 0, 0, 0};
    so.smels[0] = {SMEL_END, 4, 0, 0, {}};
    so.nsmels = 1;
    EXPECT_EQ(comn__check_sort(&so, next_char), CS_FAIL);
}

} // namespace

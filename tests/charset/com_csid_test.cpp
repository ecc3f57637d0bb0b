// The names of the character sets: each row, both lookups, and what they refuse.
#include "support/assertions.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using support::ReturningAssertions;

struct Row {
    int csid;
    const char *name;
    UNICONV_CID cid;
};

constexpr Row ROWS[] = {
    {0, "ascii_8", 0}, {1, "iso_1", 1}, {2, "cp850", 2}, {3, "cp437", 3}, {4, "roman8", 4}, {5, "mac", 5},
    {6, "decmcs", -3}, {7, "ebcdic", -3}, {8, "iso646", 0}, {9, "cp860", 860}, {10, "cp863", 863}, {11, "ascii_7", 0},
    {12, "teletex", -3}, {13, "cp1252", 1252}, {14, "iso15", 21}, {15, "cp861", 861}, {16, "iso6937", -3},
    {20, "iso88592", 12}, {21, "cp852", 852}, {22, "cp1250", 1250}, {23, "mac_ee", 27}, {24, "mac_croat", -3},
    {25, "mac_ice", -3}, {26, "mac_rom", -3}, {27, "mac_ukr", -3}, {29, "cp273", 273}, {30, "cp1257", 1257},
    {31, "iso13", 42}, {32, "cp280", 280}, {33, "cp284", 284}, {34, "cp285", 285}, {35, "cp297", 297},
    {36, "cp277", 277}, {37, "cp775", 775}, {38, "cp870", 870}, {39, "cp871", -3}, {40, "iso88593", 19},
    {41, "iso88594", 20}, {42, "iso10", 18}, {43, "cp865", 865}, {44, "cp1122", -3}, {45, "cp278", 278},
    {46, "cp921", 921}, {47, "cp922", -3}, {48, "cp1123", -3}, {49, "cp1124", -3}, {50, "iso88595", 13},
    {51, "cp855", 855}, {52, "cp866", 866}, {53, "cp1251", 1251}, {54, "cp880", -3}, {55, "koi8", 32},
    {56, "mac_cyr", 26}, {57, "cp1025", -3}, {58, "cp1112", -3}, {59, "mac_farsi", -3}, {60, "iso88596", 14},
    {61, "arabic8", -3}, {62, "cp1256", 1256}, {63, "mac_arab", -3}, {64, "ibm420", -3}, {65, "ibm918", -3},
    {66, "cp864", 864}, {67, "cp868", -3}, {68, "cp1097", -3}, {69, "cp1098", -3}, {70, "iso88597", 15},
    {71, "greek8", 30}, {72, "cp869", 869}, {73, "cp1253", 1253}, {74, "macgrk2", -3}, {75, "macgreek", 28},
    {76, "cp737", 737}, {77, "cp875", 875}, {80, "iso88598", 16}, {81, "cp1255", 1255}, {82, "mac_hebr", -3},
    {83, "hebrew8", -3}, {84, "cp856", 856}, {85, "cp424", 424}, {86, "cp862", 862}, {90, "iso88599", 17},
    {91, "turkish8", 31}, {92, "cp1254", 1254}, {93, "cp857", 857}, {94, "macturk", 29}, {95, "cp1026", 1026},
    {100, "tis620", 33}, {101, "cp874", 874}, {102, "macthai", 41}, {103, "cp838", -3}, {104, "ibm874", -3},
    {110, "cp037", 37}, {111, "cp500", 500}, {112, "cp1047", 1047}, {120, "cp1258", 1258}, {125, "cp942", -3},
    {126, "cp290", 290}, {128, "cp930", 930}, {129, "cp930yen", 3000}, {130, "cp1006", 1006}, {131, "cp5026", 5026},
    {132, "cp5026yen", 3002}, {133, "cp939", 939}, {134, "cp939yen", 3001}, {136, "cp5035", 5035},
    {137, "cp5035yen", 3003}, {138, "cp954", 954}, {139, "cp33722", -3}, {140, "eucjis", 49}, {141, "sjis", 50},
    {142, "deckanji", 8}, {143, "jis", -3}, {144, "cp932", 932}, {145, "cp932ms", 11}, {150, "eucksc", 36},
    {151, "kscpack", -3}, {152, "cp934", -3}, {153, "korea15", -3}, {154, "cp949", 949}, {155, "cp933", 933},
    {160, "euccns", 9}, {161, "big5", 34}, {168, "big5hk", 47}, {162, "cp938", -3}, {163, "roc15", -3},
    {164, "cns", -3}, {165, "cp950", 950}, {166, "cp964", -3}, {167, "cp937", 937}, {170, "eucgb", 10},
    {171, "cp936", 936}, {172, "gb80", -3}, {173, "gb18030", 48}, {175, "cp935", 935}, {176, "cp1381", -3},
    {177, "cp1383", -3}, {180, "iso5426", -3}, {181, "blecs", -3}, {182, "alacs", -3}, {183, "iso5427", -3},
    {184, "iso5428", -3}, {185, "iso6438", -3}, {190, "utf8", -4}, {191, "ucs2", -3}, {192, "utf16", -1},
    {193, "opoce", -3}, {194, "ucs4", -3}, {195, "mac_sym", -3}, {196, "mac_ding", -3}, {199, "cp1046", -3},
    {200, "iso14", 43}, {201, "cp1140", 1140}, {202, "cp1141", 1141}, {203, "cp1142", 1142}, {204, "cp1143", 1143},
    {205, "cp1144", 1144}, {206, "cp1145", 1145}, {207, "cp1146", 1146}, {208, "cp1147", 1147}, {209, "cp1148", 1148},
    {210, "cp1149", 1149}, {211, "cp420", 420}, {197, "cp858", 858}, {213, "cp871v1", 871}, {214, "cp874ibm", 46},
    {215, "cp923", 923}, {216, "mac_euro", 45}, {217, "rcsu", -5}, {218, "roman9", 44}, {87, "kz1048", 54},
    {255, "dlxchar", -3},
};

constexpr UNICONV_CID UNTOUCHED_CID = 0x5A5A5A5A;

struct Found {
    CS_RETCODE status;
    UNICONV_CID cid = UNTOUCHED_CID;
    bool operator==(const Found &) const = default;
};

void PrintTo(const Found &found, std::ostream *out) { *out << "status " << found.status << ", " << found.cid; }

Found by_name(std::string name) {
    Found found{};
    found.status = com_get_csid(reinterpret_cast<CS_BYTE *>(name.data()), &found.cid);
    return found;
}

Found by_csid(int csid) {
    Found found{};
    found.status = comn__get_unilib_cid(static_cast<CS_BYTE>(csid), &found.cid);
    return found;
}

constexpr Found NOTHING = {CS_FAIL, UNTOUCHED_CID};

TEST(CharacterSetNames, EveryRowInItsPlace) {
    ASSERT_EQ(std::size(csid_name), std::size(ROWS));
    for (std::size_t i = 0; i < std::size(ROWS); ++i) {
        EXPECT_EQ(csid_name[i].csid, ROWS[i].csid) << i;
        EXPECT_STREQ(reinterpret_cast<const char *>(csid_name[i].csname), ROWS[i].name) << i;
        EXPECT_EQ(csid_name[i].len, static_cast<int>(std::string(ROWS[i].name).size())) << i;
        EXPECT_EQ(csid_name[i].unilib_cid, ROWS[i].cid) << ROWS[i].name;
    }
}

TEST(CharacterSetNames, EveryNameIsFoundAndAnswersTheNumberInTheUnicodeLibrary) {
    for (const Row &row : ROWS)
        EXPECT_EQ(by_name(row.name), (Found{CS_SUCCEED, row.cid})) << row.name;
    EXPECT_EQ(by_name("cp850").cid, 2);
    EXPECT_EQ(by_name("cp1252").cid, 1252);
    EXPECT_EQ(by_name("utf8").cid, UNICONV_UTF8);
    EXPECT_EQ(by_name("utf16").cid, UNICONV_UTF16);
    EXPECT_EQ(by_name("rcsu").cid, UNICONV_RCSU);
    EXPECT_EQ(by_name("decmcs").cid, UNICONV_NONE); // a known name without a number
}

TEST(CharacterSetNames, NoPartOrOtherCaseOfANameIsOne) {
    for (const Row &row : ROWS) {
        const std::string name = row.name;
        EXPECT_EQ(by_name(name + " "), NOTHING) << name;
        EXPECT_EQ(by_name(" " + name), NOTHING) << name;
        std::string upper = name;
        for (char &c : upper)
            c = static_cast<char>(std::toupper(c));
        EXPECT_EQ(by_name(upper), NOTHING) << name;
    }
    for (const char *name : {"", "iso", "iso_", "iso_15", "cp93", "cp930y", "utf", "utf-8", "nonsense"})
        EXPECT_EQ(by_name(name), NOTHING) << name;
}

TEST(CharacterSetNames, EveryCodeFindsItsFirstRowOrNone) {
    std::map<int, UNICONV_CID> first;
    for (const Row &row : ROWS)
        first.emplace(row.csid, row.cid);
    EXPECT_EQ(first.size(), std::size(ROWS)); // no code stands twice
    for (int csid = 0; csid < 256; ++csid)
        EXPECT_EQ(by_csid(csid), first.contains(csid) ? (Found{CS_SUCCEED, first[csid]}) : NOTHING) << csid;
    EXPECT_EQ(by_csid(255), (Found{CS_SUCCEED, UNICONV_NONE}));
    EXPECT_EQ(by_csid(17), NOTHING);
}

TEST(CharacterSetNamesDeathTest, NullPointersAreReported) {
    CS_BYTE name[] = "iso_1";
    UNICONV_CID cid = 0;
    EXPECT_NULL_REPORT(com_get_csid(nullptr, &cid), "com_csid");
    EXPECT_NULL_REPORT(com_get_csid(name, nullptr), "com_csid");
    EXPECT_NULL_REPORT(comn__get_unilib_cid(1, nullptr), "com_csid");
}

TEST(CharacterSetNames, NullPointersFailWhereAssertionsReturn) {
    const ReturningAssertions returning;
    CS_BYTE name[] = "iso_1";
    UNICONV_CID cid = UNTOUCHED_CID;
    EXPECT_EQ(com_get_csid(nullptr, &cid), CS_FAIL);
    EXPECT_EQ(com_get_csid(name, nullptr), CS_FAIL);
    EXPECT_EQ(comn__get_unilib_cid(1, nullptr), CS_FAIL);
    EXPECT_EQ(cid, UNTOUCHED_CID);
    EXPECT_EQ(returning.count(), 3);
}

} // namespace

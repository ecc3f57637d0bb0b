// The whole built-in matrix against a drawing of it, the cells that differ from the rule, and the traps.
#include "support/assertions.h"
#include "support/bare_context.h"
#include "support/convert.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>

#include <dlfcn.h>

namespace {

using support::BareContext;
using support::format_of;
using support::ReturningAssertions;

// ---- The drawing ----------------------------------------------------------------------------

struct Row {
    const char *cells; // a '#' for each filled destination
    int filled;        // how many
    int landed;        // how many of them hold a function of the library as it is
};

constexpr Row rows[40] = {
    {"#######################..#.#############", 37, 0},  // 0
    {"#####################....#.##########...", 32, 0},  // 1
    {"#######################..#.##########...", 34, 0},  // 2
    {"#####################....#.##########...", 32, 0},  // 3
    {"#######################..#.##########...", 34, 0},  // 4
    {"#####################....#.##########...", 32, 0},  // 5
    {"############..#######....#...#####......", 25, 23}, // 6
    {"############..#######....#...#####......", 25, 23}, // 7
    {"############..#######....#...#####......", 25, 23}, // 8
    {"############..#######....#...#####......", 25, 23}, // 9
    {"############..#######....#...#####......", 25, 23}, // 10
    {"############....#####....#...#####......", 23, 21}, // 11
    {"#.#.#.......##....##.....#.###.....##...", 13, 0},  // 12
    {"#.#.#.......##....##.....#.###.....##...", 13, 0},  // 13
    {"############..#######....#...#####......", 25, 0},  // 14
    {"############..#######....#...#####......", 25, 0},  // 15
    {"############..#######....#...#####......", 25, 23}, // 16
    {"############..#######....#...#####......", 25, 23}, // 17
    {"#######################..#.##########...", 34, 0},  // 18
    {"#####################....#.##########...", 32, 0},  // 19
    {"........#.......##..#.........####......", 8, 8},   // 20
    {"#.#.#...#.........#..#..................", 6, 1},   // 21
    {"#.#.#.............#...#.................", 5, 0},   // 22
    {"#####################################...", 37, 37}, // 23
    {"........................................", 0, 0},   // 24
    {"#####################....#.#######.##...", 31, 0},  // 25
    {"........................................", 0, 0},   // 26
    {"#.#.#.......##....##.....#.#.#.....#....", 11, 0},  // 27
    {"#.#.#.......##....##.....#..##.....##...", 12, 0},  // 28
    {"#####################....#.#######.##...", 31, 0},  // 29
    {"############..#######....#...#####......", 25, 23}, // 30
    {"############..#######....#...#####......", 25, 23}, // 31
    {"############..#######....#...#####......", 25, 23}, // 32
    {"############..#######....#...#####......", 25, 23}, // 33
    {"######............##..............#.....", 9, 0},   // 34
    {"#.#.#.......##....##.....#.###.....##...", 13, 0},  // 35
    {"#.#.#.......##....##.....#..##.....##...", 12, 0},  // 36
    {"#...#...#.......##..#.........####...#..", 11, 8},  // 37
    {"#....#..#.......##..#.........####....#.", 11, 8},  // 38
    {"#.......#.......##..#....#....####.....#", 11, 8},  // 39
};
constexpr int ALL_FILLED = 849;
constexpr int ALL_LANDED = 344;

// The families that the library has: words of sources, and the destination words that no source has yet.
const std::set<std::string> landed_sources = {"i1",  "i2",  "i4",   "i8",   "ui2", "ui4",
                                              "ui8", "bit", "flt4", "flt8", "num", "void"};
const std::set<std::string> missing_destinations = {"unichar"};

constexpr const char *source_words[40] = {
    "char", "bin",  "char", "bin",   "char",  "bin",         "i1",      "i2",      "i4",      "flt4",
    "flt8", "bit",  "date", "date4", "money", "mny4",        "num",     "num",     "varchar", "varbin",
    "i8",   "char", "char", "void",  "",      "unichar",     "",        "datea",   "timea",   "unichar",
    "i8",   "ui2",  "ui4",  "ui8",   "char",  "bigdatetime", "bigtime", "locator", "locator", "locator",
};

// A destination's word is the source's, but for id 12 outside the date family.
std::string destination_word(int source, int destination) {
    const bool from_date = source == 12 || source == 13 || source == 27 || source == 28 || source == 35 || source == 36;
    return destination == 12 && !from_date ? "datetime" : source_words[destination];
}

struct Deviation {
    int row, column;
    const char *name;
};

constexpr Deviation deviations[] = {
    {0, 35, "comn_chartodatetime"}, {2, 35, "comn_chartodatetime"}, {4, 35, "comn_chartodatetime"},
    {0, 36, "comn_chartotimea"}, {2, 36, "comn_chartotimea"}, {4, 36, "comn_chartotimea"},
    {18, 35, "comn_varchartodatetime"}, {18, 36, "comn_varchartotimea"},
    {25, 35, "comn_unichartodatetime"}, {29, 35, "comn_unichartodatetime"},
    {25, 36, "comn_unichartotimea"}, {29, 36, "comn_unichartotimea"},
    {25, 5, "comn_unichartoimage"}, {29, 5, "comn_unichartobin"},
    {5, 25, "comn_imagetounichar"}, {5, 29, "comn_bintounichar"},
    {12, 25, "comn_datetimetounichar"}, {12, 29, "comn_datetimetounichar"},
    {35, 25, "comn_datetimetounichar"}, {35, 29, "comn_datetimetounichar"},
    {35, 0, "comn_datetochar"}, {35, 2, "comn_datetochar"}, {35, 4, "comn_datetochar"},
    {35, 18, "comn_datetovarchar"},
    {36, 0, "comn_timeatochar"}, {36, 2, "comn_timeatochar"}, {36, 4, "comn_timeatochar"},
    {36, 18, "comn_timeatovarchar"}, {36, 25, "comn_timeatounichar"}, {36, 29, "comn_timeatounichar"},
    {0, 37, "comn_chartolocator"}, {0, 38, "comn_chartolocator"}, {0, 39, "comn_chartolocator"},
    {37, 0, "comn_locatortochar"}, {38, 0, "comn_locatortochar"}, {39, 0, "comn_locatortochar"},
    {37, 4, "comn_locatortotext"}, {38, 5, "comn_locatortoimage"}, {39, 25, "comn_locatortounitext"},
    {37, 37, "comn_locatortolocator"}, {38, 38, "comn_locatortolocator"}, {39, 39, "comn_locatortolocator"},
    {21, 8, "comn_i8toi4"},
    {37, 8, "comn_i8toi4"}, {37, 16, "comn_i8tonum"}, {37, 17, "comn_i8tonum"}, {37, 20, "comn_i8toi8"},
    {37, 30, "comn_i8toi8"}, {37, 31, "comn_i8toui2"}, {37, 32, "comn_i8toui4"}, {37, 33, "comn_i8toui8"},
    {38, 8, "comn_i8toi4"}, {38, 16, "comn_i8tonum"}, {38, 17, "comn_i8tonum"}, {38, 20, "comn_i8toi8"},
    {38, 30, "comn_i8toi8"}, {38, 31, "comn_i8toui2"}, {38, 32, "comn_i8toui4"}, {38, 33, "comn_i8toui8"},
    {39, 8, "comn_i8toi4"}, {39, 16, "comn_i8tonum"}, {39, 17, "comn_i8tonum"}, {39, 20, "comn_i8toi8"},
    {39, 30, "comn_i8toi8"}, {39, 31, "comn_i8toui2"}, {39, 32, "comn_i8toui4"}, {39, 33, "comn_i8toui8"},
};

// What a filled cell holds once every family is there. The void row has one function for all.
std::string name_of_cell(int row, int column) {
    if (row == 23)
        return column == 23 ? "comn_voidtovoid" : "comn_voidtoany";
    for (const Deviation &deviation : deviations)
        if (deviation.row == row && deviation.column == column)
            return deviation.name;
    return std::string("comn_") + source_words[row] + "to" + destination_word(row, column);
}

bool is_landed(const std::string &name) {
    const size_t to = name.find("to", 5);
    return landed_sources.count(name.substr(5, to - 5)) != 0 && missing_destinations.count(name.substr(to + 2)) == 0;
}

CS_CONV_FUNC cell(int row, int column) { return Com__cnvrt_array[row * 40 + column]; }

std::string name_of(CS_CONV_FUNC function) {
    Dl_info info = {};
    if (function == nullptr || dladdr(reinterpret_cast<void *>(function), &info) == 0 || info.dli_sname == nullptr ||
        info.dli_saddr != reinterpret_cast<void *>(function))
        return "(none)";
    return info.dli_sname;
}

// ---- The table against the drawing ----------------------------------------------------------

TEST(ComCtbl, TheDrawingIsCountedRight) {
    int filled = 0, landed = 0;
    for (int row = 0; row < 40; ++row) {
        const std::string cells = rows[row].cells;
        ASSERT_EQ(cells.size(), 40u) << row;
        EXPECT_EQ(std::count(cells.begin(), cells.end(), '#'), rows[row].filled) << row;
        filled += rows[row].filled;
        landed += rows[row].landed;
    }
    EXPECT_EQ(filled, ALL_FILLED);
    EXPECT_EQ(landed, ALL_LANDED);
    for (const Deviation &deviation : deviations)
        EXPECT_EQ(rows[deviation.row].cells[deviation.column], '#') << deviation.row << ", " << deviation.column;
}

TEST(ComCtbl, EachCellOfALandedFamilyHoldsItsFunctionAndEveryOtherIsNull) {
    for (int row = 0; row < 40; ++row)
        for (int column = 0; column < 40; ++column) {
            std::string expected = "(none)";
            if (rows[row].cells[column] == '#' && is_landed(name_of_cell(row, column)))
                expected = name_of_cell(row, column);
            EXPECT_EQ(name_of(cell(row, column)), expected) << row << " to " << column;
            EXPECT_EQ(cell(row, column) == nullptr, expected == "(none)") << row << " to " << column;
        }
}

TEST(ComCtbl, FilledCellsAreCountedRowByRow) {
    int all = 0;
    for (int row = 0; row < 40; ++row) {
        int filled = 0;
        for (int column = 0; column < 40; ++column)
            filled += cell(row, column) != nullptr;
        EXPECT_EQ(filled, rows[row].landed) << row;
        all += filled;
    }
    EXPECT_EQ(all, ALL_LANDED);
}

TEST(ComCtbl, NoCellIsEmptyWhoseFunctionTheLibraryExports) {
    void *library = dlopen(DLXCOMN_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << dlerror();
    for (int row = 0; row < 40; ++row)
        for (int column = 0; column < 40; ++column)
            if (rows[row].cells[column] == '#' && cell(row, column) == nullptr) {
                const std::string name = name_of_cell(row, column);
                EXPECT_EQ(dlsym(library, name.c_str()), nullptr) << name << " belongs to " << row << ", " << column;
            }
    dlclose(library);
}

TEST(ComCtbl, EachCellIsTheFunctionThatAProgramNamesItself) {
    EXPECT_EQ(cell(6, 7), comn_i1toi2);
    EXPECT_EQ(cell(8, 30), comn_i4toi8);
    EXPECT_EQ(cell(20, 30), comn_i8toi8);
    EXPECT_EQ(cell(30, 20), comn_i8toi8);
    EXPECT_EQ(cell(17, 16), comn_numtonum);
    EXPECT_EQ(cell(23, 23), comn_voidtovoid);
    EXPECT_EQ(cell(23, 24), comn_voidtoany);
    EXPECT_EQ(cell(23, 26), comn_voidtoany);
    EXPECT_EQ(cell(10, 9), comn_flt8toflt4);
    EXPECT_EQ(cell(11, 11), comn_bittobit);
    EXPECT_EQ(cell(33, 19), comn_ui8tovarbin);
    EXPECT_EQ(cell(31, 21), nullptr);
}

TEST(ComCtbl, NoCellJoinsDatesAndNumbersOrBitAndMoney) {
    const int dates[] = {12, 13, 27, 28, 35, 36};
    const int numbers[] = {6, 7, 8, 9, 10, 11, 14, 15, 16, 17, 20, 30, 31, 32, 33};
    for (const int date : dates)
        for (const int number : numbers) {
            EXPECT_EQ(cell(date, number), nullptr) << date << " to " << number;
            EXPECT_EQ(cell(number, date), nullptr) << number << " to " << date;
        }
    EXPECT_EQ(cell(11, 14), nullptr);
    EXPECT_EQ(cell(11, 15), nullptr);
}

TEST(ComCtbl, UshortAndBlobHaveNoRowAndNoColumnButFromVoid) {
    for (const int id : {24, 26})
        for (int other = 0; other < 40; ++other) {
            EXPECT_EQ(cell(id, other), nullptr) << id << " to " << other;
            EXPECT_EQ(cell(other, id) != nullptr, other == 23) << other << " to " << id;
        }
}

TEST(ComCtbl, GetCtblHandsOutTheTableAndItsSide) {
    CS_CONV_FUNC *table = nullptr;
    int dimension = 0;
    com__get_ctbl(&table, &dimension);
    EXPECT_EQ(table, Com__cnvrt_array);
    EXPECT_EQ(dimension, 40);
    EXPECT_EQ(CS_CONV_DIM, 40);
}

TEST(ComCtblDeathTest, TheBuiltInTableIsInReadOnlyMemory) {
    CS_CONV_FUNC *table = nullptr;
    int dimension = 0;
    com__get_ctbl(&table, &dimension);
    CS_CONV_FUNC volatile *writable = table;
    EXPECT_DEATH(writable[0] = comn_voidtovoid, "");
}

TEST(ComCtblDeathTest, GetCtblWithANullPlace) {
    CS_CONV_FUNC *table = nullptr;
    int dimension = 0;
    EXPECT_NULL_REPORT(com__get_ctbl(nullptr, &dimension), "com_ctbl");
    EXPECT_NULL_REPORT(com__get_ctbl(&table, nullptr), "com_ctbl");
}

TEST(ComCtbl, GetCtblWithANullPlaceWritesNothingWhereReportsReturn) {
    CS_CONV_FUNC *table = nullptr;
    int dimension = 77;
    ReturningAssertions assertions;
    com__get_ctbl(nullptr, &dimension);
    com__get_ctbl(&table, nullptr);
    EXPECT_EQ(assertions.count(), 2);
    EXPECT_EQ(dimension, 77);
    EXPECT_EQ(table, nullptr);
}

// ---- The traps ------------------------------------------------------------------------------

struct Trap {
    int source, destination;
};

constexpr Trap traps[] = {
    {21, 8},  {37, 8},  {37, 16}, {37, 17}, {37, 20}, {37, 30}, {37, 31}, {37, 32}, {37, 33},
    {38, 8},  {38, 16}, {38, 17}, {38, 20}, {38, 30}, {38, 31}, {38, 32}, {38, 33},
    {39, 8},  {39, 16}, {39, 17}, {39, 20}, {39, 30}, {39, 31}, {39, 32}, {39, 33},
};

class ComCtblCall : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(com_conv_init(context), CS_SUCCEED);
        ASSERT_EQ(com_null_init(context), CS_SUCCEED);
    }

    // Calls the cell of a trap with a value that says `datatype`.
    CS_RETCODE spring(const Trap &trap, CS_INT datatype) {
        CS_DATAFMT srcfmt = format_of(datatype, sizeof(CS_BIGINT));
        CS_DATAFMT destfmt = format_of(trap.destination, sizeof(CS_NUMERIC));
        destfmt.precision = 10;
        CS_BIGINT value = 7;
        return com_conv_func(context, trap.source, trap.destination)(context, &srcfmt, &value, &destfmt, bytes,
                                                                     &length);
    }

    BareContext context;
    CS_BYTE bytes[64];
    CS_INT length = support::UNTOUCHED_LENGTH;
};

using ComCtblCallDeathTest = ComCtblCall;

TEST_F(ComCtblCallDeathTest, TrapCellsEndInTheAssertionOfTheI8Functions) {
    for (const Trap &trap : traps)
        EXPECT_BOMB(spring(trap, trap.source), "com_i8") << trap.source << " to " << trap.destination;
}

TEST_F(ComCtblCall, TrapCellsWriteNothingWhereReportsReturn) {
    std::memset(bytes, support::UNTOUCHED, sizeof bytes);
    ReturningAssertions assertions;
    int reports = 0;
    for (const Trap &trap : traps) {
        EXPECT_EQ(spring(trap, trap.source), CS_FAIL) << trap.source << " to " << trap.destination;
        EXPECT_EQ(assertions.count(), ++reports) << trap.source << " to " << trap.destination;
        EXPECT_EQ(length, support::UNTOUCHED_LENGTH);
        for (const CS_BYTE byte : bytes)
            ASSERT_EQ(byte, support::UNTOUCHED);
    }
}

TEST_F(ComCtblCall, TrapCellsRunWhenTheDescriptorSaysLongOrBigint) {
    for (const Trap &trap : traps)
        for (const CS_INT datatype : {CS_LONG_TYPE, CS_BIGINT_TYPE})
            EXPECT_EQ(spring(trap, datatype), CS_SUCCEED) << trap.source << " to " << trap.destination;
}

// ---- From CS_VOID ---------------------------------------------------------------------------

TEST_F(ComCtblCall, VoidToEachTypeIsThatTypesNullValue) {
    for (CS_INT type = 0; type < 37; ++type) {
        if (type == CS_VOID_TYPE)
            continue;
        CS_DATAFMT destfmt = format_of(type, 12, CS_FORMAT_NULLTERM);
        destfmt.precision = 20;
        destfmt.scale = 3;
        CS_BYTE expected[300], got[300];
        std::memset(expected, support::UNTOUCHED, sizeof expected);
        std::memset(got, support::UNTOUCHED, sizeof got);
        CS_INT expected_length = -1, got_length = -1;
        const CS_RETCODE expected_status =
            com_null_get(context, &destfmt, expected, comn_typelen(type, 12), &expected_length);
        // srcfmt and src are ignored, null ones too.
        EXPECT_EQ(com_conv_func(context, 23, type)(context, nullptr, nullptr, &destfmt, got, &got_length),
                  expected_status)
            << type;
        EXPECT_EQ(got_length, expected_length) << type;
        EXPECT_EQ(std::memcmp(got, expected, sizeof got), 0) << type;
    }
}

TEST_F(ComCtblCall, VoidTakesTheWidthOfAFixedTypeAndTheMaxlengthOfTheOthers) {
    CS_DATAFMT four_bytes = format_of(CS_DATETIME4_TYPE, 8);
    EXPECT_EQ(comn_voidtoany(context, nullptr, nullptr, &four_bytes, bytes, &length), CS_SUCCEED);
    EXPECT_EQ(length, 4) << "the stored value has eight bytes";
    CS_DATAFMT given = format_of(CS_LONG_TYPE, 5);
    EXPECT_EQ(comn_voidtoany(context, nullptr, nullptr, &given, bytes, &length), CS_SUCCEED);
    EXPECT_EQ(length, 5);
    CS_DATAFMT text = format_of(CS_CHAR_TYPE, 5, CS_FORMAT_BLANKPAD);
    EXPECT_EQ(comn_voidtoany(context, nullptr, nullptr, &text, bytes, &length), CS_SUCCEED);
    EXPECT_EQ(length, 5);
    EXPECT_EQ(std::memcmp(bytes, "     ", 5), 0);
}

TEST_F(ComCtblCall, VoidHandsOutAUserTypesValue) {
    char value[] = "ab";
    com_null_set(context, 100, value, 2);
    com_conv_install(context, 23, 100, comn_voidtoany);
    CS_DATAFMT destfmt = format_of(100, 8);
    EXPECT_EQ(com_conv_func(context, 23, 100)(context, nullptr, nullptr, &destfmt, bytes, &length), CS_SUCCEED);
    EXPECT_EQ(length, 3);
    EXPECT_EQ(std::memcmp(bytes, "ab", 3), 0);
    com_null_reinstall(context, 100);
}

TEST_F(ComCtblCall, VoidPassesOnThePaddingsStatus) {
    CS_DATAFMT no_room = format_of(CS_CHAR_TYPE, 0, CS_FORMAT_NULLTERM);
    EXPECT_EQ(comn_voidtoany(context, nullptr, nullptr, &no_room, bytes, &length), CS_EOVERFLOW);
    CS_DATAFMT both_pads = format_of(CS_TEXT_TYPE, 5, CS_FORMAT_ZEROPAD | CS_FORMAT_BLANKPAD);
    EXPECT_EQ(comn_voidtoany(context, nullptr, nullptr, &both_pads, bytes, &length), CS_EFORMAT);
}

TEST_F(ComCtblCall, VoidToVoidDoesNothingAtAll) {
    ReturningAssertions assertions;
    EXPECT_EQ(com_conv_func(context, 23, 23)(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), CS_SUCCEED);
    CS_DATAFMT fmt = format_of(CS_VOID_TYPE, 4);
    std::memset(bytes, support::UNTOUCHED, sizeof bytes);
    EXPECT_EQ(comn_voidtovoid(context, &fmt, bytes, &fmt, bytes, &length), CS_SUCCEED);
    EXPECT_EQ(length, support::UNTOUCHED_LENGTH);
    EXPECT_EQ(bytes[0], support::UNTOUCHED);
    EXPECT_EQ(assertions.count(), 0);
}

TEST_F(ComCtblCallDeathTest, VoidToAnyLeavesTheTestsOfItsArgumentsToTheNullValues) {
    CS_DATAFMT destfmt = format_of(CS_INT_TYPE);
    EXPECT_NULL_REPORT(comn_voidtoany(nullptr, nullptr, nullptr, &destfmt, bytes, &length), "com_null");
    EXPECT_NULL_REPORT(comn_voidtoany(context, nullptr, nullptr, nullptr, bytes, &length), "com_null");
    EXPECT_NULL_REPORT(comn_voidtoany(context, nullptr, nullptr, &destfmt, nullptr, &length), "com_null");
    EXPECT_NULL_REPORT(comn_voidtoany(context, nullptr, nullptr, &destfmt, bytes, nullptr), "com_null");
    destfmt = format_of(CS_CHAR_TYPE, -1);
    EXPECT_BOMB(comn_voidtoany(context, nullptr, nullptr, &destfmt, bytes, &length), "com_null");
    destfmt = format_of(-1);
    EXPECT_BOMB(comn_voidtoany(context, nullptr, nullptr, &destfmt, bytes, &length), "com_null");
}

TEST_F(ComCtblCall, VoidToAnyOfBrokenArgumentsWritesNothingWhereReportsReturn) {
    ReturningAssertions assertions;
    std::memset(bytes, support::UNTOUCHED, sizeof bytes);
    CS_DATAFMT destfmt = format_of(CS_INT_TYPE);
    EXPECT_EQ(comn_voidtoany(nullptr, nullptr, nullptr, &destfmt, bytes, &length), CS_FAIL);
    EXPECT_EQ(comn_voidtoany(context, nullptr, nullptr, nullptr, bytes, &length), CS_FAIL);
    EXPECT_EQ(comn_voidtoany(context, nullptr, nullptr, &destfmt, nullptr, &length), CS_FAIL);
    EXPECT_EQ(comn_voidtoany(context, nullptr, nullptr, &destfmt, bytes, nullptr), CS_FAIL);
    for (const CS_INT type : {0, 1, 2, 3, 4, 5, 21, 22, 25, 29, 34}) {
        destfmt = format_of(type, -1, CS_FORMAT_NULLTERM | CS_FORMAT_BLANKPAD);
        EXPECT_EQ(comn_voidtoany(context, nullptr, nullptr, &destfmt, bytes, &length), CS_FAIL) << type;
    }
    EXPECT_EQ(assertions.count(), 4 + 11);
    EXPECT_EQ(length, support::UNTOUCHED_LENGTH);
    for (const CS_BYTE byte : bytes)
        EXPECT_EQ(byte, support::UNTOUCHED);
}

} // namespace

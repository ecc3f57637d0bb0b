// The tables of datatypes and statuses that the command reads.
#include "command/conversion.h"
#include "command/names.h"
#include "owner.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

using client::datatype;
using client::find_datatype;
using client::nearest;
using client::status_name;

CS_INT id_of(std::string_view spelled) {
    const auto found = find_datatype(spelled);
    return found ? (*found)->id : -1;
}

TEST(Datatypes, StandAtTheirIds) {
    for (CS_INT id = 0; id < client::TYPE_COUNT; ++id)
        EXPECT_EQ(datatype(id).id, id);
}

TEST(Datatypes, HaveNamesOfTheirOwn) {
    std::set<std::string_view> names;
    for (CS_INT id = 0; id < client::TYPE_COUNT; ++id)
        names.insert(datatype(id).name);
    EXPECT_EQ(names.size(), 40u);
}

TEST(Datatypes, AreFoundByName) {
    EXPECT_EQ(id_of("int"), CS_INT_TYPE);
    EXPECT_EQ(id_of("BigInt"), CS_BIGINT_TYPE);
    EXPECT_EQ(id_of("CS_MONEY4"), CS_MONEY4_TYPE);
    EXPECT_EQ(id_of("date"), CS_DATE_TYPE);
    EXPECT_EQ(id_of("unitextlocator"), CS_UNITEXTLOCATOR_TYPE);
    EXPECT_EQ(id_of("in"), -1);
    EXPECT_EQ(id_of(""), -1);
    EXPECT_EQ(id_of("cs_"), -1);
}

TEST(Datatypes, AreFoundById) {
    EXPECT_EQ(id_of("0"), 0);
    EXPECT_EQ(id_of("39"), 39);
    EXPECT_EQ(id_of("40"), -1);
    EXPECT_EQ(id_of("-1"), -1);
    EXPECT_EQ(id_of("8x"), -1);
    EXPECT_EQ(id_of("99999999999"), -1);
}

TEST(Datatypes, HaveTheWidthOfTheLibraryWhereItHasOne) {
    for (CS_INT id = 0; id < client::TYPE_COUNT; ++id) {
        const CS_INT width = comn_typelen(id, CS_UNUSED);
        if (width != CS_UNUSED) {
            EXPECT_EQ(datatype(id).width(7), width) << datatype(id).name;
        }
    }
    EXPECT_EQ(datatype(CS_LONG_TYPE).width(7), 8);
    EXPECT_EQ(datatype(CS_USHORT_TYPE).width(7), 2);
    EXPECT_EQ(datatype(CS_TEXT_TYPE).width(7), 7);
}

// The name of every runnable cell is made of the two words, so the words here are those of the functions and
// the names that the dynamic linker tells are those of the functions called.
TEST(Datatypes, HaveTheWordsOfTheConversionFunctions) {
    client::Owner owner;
    ASSERT_NE(owner.context(), nullptr);
    int cells = 0;
    for (CS_INT from = 0; from < client::TYPE_COUNT; ++from)
        for (CS_INT to = 0; to < client::TYPE_COUNT; ++to) {
            const bool is_number = (from >= CS_TINYINT_TYPE && from <= CS_BIT_TYPE) || from == CS_NUMERIC_TYPE ||
                                   from == CS_DECIMAL_TYPE || from == CS_LONG_TYPE ||
                                   (from >= CS_BIGINT_TYPE && from <= CS_UBIGINT_TYPE);
            if (!is_number || client::cell(owner.context(), from, to) != client::Cell::filled)
                continue;
            const std::string expected =
                "comn_" + std::string(datatype(from).word) + "to" + std::string(datatype(to).word);
            EXPECT_EQ(client::function_name(com_conv_func(owner.context(), from, to)), expected);
            ++cells;
        }
    EXPECT_GE(cells, 11 * 21 + 19 + 8); // eleven numbers, bit without money, and the few of long
}

TEST(Statuses, HaveTheNamesOfTheHeader) {
    EXPECT_EQ(status_name(CS_SUCCEED), "CS_SUCCEED");
    EXPECT_EQ(status_name(CS_FAIL), "CS_FAIL");
    EXPECT_EQ(status_name(-101), "CS_EOVERFLOW");
    EXPECT_EQ(status_name(-102), "CS_EUNDERFLOW");
    EXPECT_EQ(status_name(-108), "CS_EDIVZERO");
    EXPECT_EQ(status_name(-113), "CS_ETRUNCATED");
    EXPECT_EQ(status_name(-117), "CS_ECONVWARN");
    EXPECT_EQ(status_name(-213), "CS_TRYING");
    EXPECT_EQ(status_name(-301), "CS_EINTL");
    EXPECT_EQ(status_name(-417), "CS_EBADCSNAME");
}

TEST(Statuses, WithoutANameAreNumbers) {
    EXPECT_EQ(status_name(-109), "-109");
    EXPECT_EQ(status_name(12345), "12345");
}

TEST(Statuses, OfTheTraceAreAllNamedAlike) {
    for (const COM_ERROR_NAME &row : Com_errors)
        EXPECT_EQ(status_name(row.error), row.name);
}

TEST(Formats, AreBits) {
    EXPECT_EQ(*client::parse_format("nullterm"), CS_FORMAT_NULLTERM);
    EXPECT_EQ(*client::parse_format("blankpad,nullterm"), CS_FORMAT_BLANKPAD | CS_FORMAT_NULLTERM);
    EXPECT_EQ(*client::parse_format("zeropad,zeropad"), CS_FORMAT_ZEROPAD);
    EXPECT_FALSE(client::parse_format(""));
    EXPECT_FALSE(client::parse_format("nullterm,"));
    EXPECT_FALSE(client::parse_format("nullterm blankpad"));
}

using Words = std::vector<std::string_view>;

TEST(Nearest, FindsSlipsOfTheFingers) {
    const Words words = {"int", "tinyint", "smallint", "bigint", "uint"};
    EXPECT_EQ(nearest("itn", words), Words({"int"}));
    EXPECT_EQ(nearest("inte", words), Words({"int"}));
    EXPECT_EQ(nearest("bigitn", words), Words({"bigint"}));
    EXPECT_EQ(nearest("unit", words), Words({"uint"}));
    EXPECT_EQ(nearest("tinyin", words), Words({"tinyint"}));
}

TEST(Nearest, FindsBeginningsAndNothingFarAway) {
    EXPECT_EQ(nearest("varch", {"varchar", "varbinary"}), Words({"varchar"}));
    EXPECT_EQ(nearest("uni", {"unichar", "unitext", "image"}), Words({"unichar", "unitext"}));
    EXPECT_EQ(nearest("xyzzy", {"int", "char"}), Words());
    EXPECT_EQ(nearest("", {"int", "char"}), Words());
}

TEST(Nearest, TellsThreeAtMostTheLikeliestFirst) {
    EXPECT_EQ(nearest("money", {"money44", "money444", "money", "money4"}), Words({"money", "money4", "money44"}));
}

} // namespace

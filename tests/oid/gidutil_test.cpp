// Maps between numbers and names, what a peer acknowledged, and the debug output of identifiers.
#include "oid_fixture.h"
#include "support/debug_output.h"
#include "support/null_calls.h"

#include <cstring>
#include <utility>

namespace {

using support::DebugOutput;
using support::ReturningAssertions;
using namespace std::string_literals;

// ---- Maps -----------------------------------------------------------------------------------------------------

using Rows = std::vector<std::pair<CS_INT, std::string>>;

Rows rows_of(const CS_STRINGS *map) {
    Rows rows;
    for (; map->key != CS_UNUSED; ++map)
        rows.emplace_back(map->key, map->string);
    return rows;
}

TEST(OidMaps, ClassesHaveTheirNamesTwice) {
    const Rows classes = {{0, "charset"},  {1, "numeric"}, {2, "money"},    {3, "datetime"},
                          {4, "collate"},  {5, "natlang"}, {6, "integer2"}, {7, "integer4"},
                          {8, "integer8"}, {9, "float4"},  {10, "float8"},  {11, "secmech"}};
    EXPECT_EQ(rows_of(Com__classmap), classes);
    EXPECT_EQ(rows_of(Com__dup_classmap), classes);
    EXPECT_NE(Com__classmap, Com__dup_classmap);
}

TEST(OidMaps, NumbersOfTheLoginRecordHaveTheirNamesInOrder) {
    const Rows numbers = {{2, "int2_lsb_high"},       {3, "int2_lsb_low"},        {0, "int4_lsb_high"},
                          {1, "int4_lsb_low"},        {6, "char_ascii"},          {7, "char_ebcdic"},
                          {4, "float_ieee_lsb_high"}, {10, "float_ieee_lsb_low"}, {11, "float_nd5000"},
                          {5, "float_vaxd"},          {12, "flt4_ieee_lsb_high"}, {13, "flt4_ieee_lsb_low"},
                          {14, "flt4_vaxf"},          {15, "flt4_nd5000"}};
    EXPECT_EQ(rows_of(Com__tds_lclname_map), numbers);
}

TEST(OidMaps, EveryRowIsFoundFromBothSides) {
    for (const CS_STRINGS *map : {Com__classmap, Com__dup_classmap, Com__tds_lclname_map})
        for (const CS_STRINGS *row = map; row->key != CS_UNUSED; ++row) {
            std::string name = row->string;
            CS_INT id = -77;
            EXPECT_EQ(comn_string_to_id(nullptr, map, chars(name), &id), CS_SUCCEED);
            EXPECT_EQ(id, row->key);
            CS_CHAR *text = nullptr;
            EXPECT_EQ(comn_id_to_string(nullptr, map, row->key, &text), CS_SUCCEED);
            EXPECT_EQ(text, row->string) << "the table's own";
        }
}

TEST(OidMaps, UnknownNameIsUnusedAndFails) {
    for (std::string name : {"", "Charset", "charse", "charsets", "secmech ", "utf8"}) {
        CS_INT id = -77;
        EXPECT_EQ(comn_string_to_id(nullptr, Com__classmap, chars(name), &id), CS_FAIL) << name;
        EXPECT_EQ(id, CS_UNUSED);
    }
}

TEST(OidMaps, UnknownNumberIsNullAndFails) {
    for (const CS_INT id : {-1, 8, 9, 16, CS_UNUSED}) {
        CS_CHAR here[] = "here";
        CS_CHAR *text = here;
        EXPECT_EQ(comn_id_to_string(nullptr, Com__tds_lclname_map, id, &text), CS_FAIL) << id;
        EXPECT_EQ(text, nullptr);
    }
}

TEST(OidMaps, FirstRowWinsAndTheEndRowEnds) {
    CS_CHAR a[] = "a", b[] = "b", c[] = "c";
    const CS_STRINGS map[] = {{1, a}, {2, b}, {1, b}, {2, a}, {CS_UNUSED, nullptr}, {3, c}};
    CS_INT id = -77;
    CS_CHAR *text = nullptr;
    EXPECT_EQ(comn_string_to_id(nullptr, map, b, &id), CS_SUCCEED);
    EXPECT_EQ(id, 2);
    EXPECT_EQ(comn_id_to_string(nullptr, map, 1, &text), CS_SUCCEED);
    EXPECT_EQ(text, a);
    EXPECT_EQ(comn_string_to_id(nullptr, map, c, &id), CS_FAIL);
    EXPECT_EQ(comn_id_to_string(nullptr, map, 3, &text), CS_FAIL);
    EXPECT_EQ(comn_string_to_id(nullptr, map + 4, a, &id), CS_FAIL) << "an empty map";
}

// ---- Numbers of the login record --------------------------------------------------------------------------------

// Local names as a home has them. The class of a number is not part of its map.
const std::string CONTENT = "[charset]\n"
                            "1.2.1 = char_ascii, ascii_8\n"
                            "1.2.2 = char_ebcdic\n"
                            "1.2.3 = utf8, char_ascii_too\n"
                            "1.2.4 =\n"
                            "[numeric]\n1.3.1 = plain\n"
                            "[money]\n1.4.1 = pounds\n"
                            "[datetime]\n1.5.1 = short\n"
                            "[collate]\n1.6.1 = binary\n"
                            "[natlang]\n1.7.1 = english\n"
                            "[integer2]\n1.8.1 = int2_lsb_high\n1.8.2 = int2_lsb_low\n"
                            "[integer4]\n1.9.1 = int4_lsb_high\n1.9.2 = int4_lsb_low\n"
                            "[integer8]\n1.10.1 = int8_lsb_low, int4_lsb_low\n"
                            "[float4]\n1.11.1 = flt4_ieee_lsb_high\n1.11.2 = flt4_ieee_lsb_low\n"
                            "1.11.3 = flt4_vaxf\n1.11.4 = flt4_nd5000\n"
                            "[float8]\n1.12.1 = float_ieee_lsb_high\n1.12.2 = float_ieee_lsb_low\n"
                            "1.12.3 = float_nd5000\n1.12.4 = float_vaxd\n";

class LoginNumbers : public OidFixture {
protected:
    LoginNumbers() { EXPECT_EQ(load(CONTENT), CS_SUCCEED); }
    CsOID nothing_ = {};
};

TEST_F(LoginNumbers, EachHasItsIdentifierAndTheIdentifierItsNumber) {
    struct Case {
        CS_INT number, id_class;
        const char *dotted;
    };
    for (const Case &c : {Case{2, 6, "1.8.1"}, Case{3, 6, "1.8.2"}, Case{0, 7, "1.9.1"}, Case{1, 7, "1.9.2"},
                          Case{6, 0, "1.2.1"}, Case{7, 0, "1.2.2"}, Case{4, 10, "1.12.1"}, Case{10, 10, "1.12.2"},
                          Case{11, 10, "1.12.3"}, Case{5, 10, "1.12.4"}, Case{12, 9, "1.11.1"}, Case{13, 9, "1.11.2"},
                          Case{14, 9, "1.11.3"}, Case{15, 9, "1.11.4"}}) {
        CsOID *oid = &nothing_;
        EXPECT_EQ(comn_tds_to_oid(&context_, c.id_class, c.number, &oid), CS_SUCCEED) << c.number;
        EXPECT_EQ(oid, oid_of(c.id_class, c.dotted)) << c.number;
        CS_INT number = -77;
        EXPECT_EQ(comn_oid_to_tds(&context_, oid, &number), CS_SUCCEED) << c.number;
        EXPECT_EQ(number, c.number);
    }
}

TEST_F(LoginNumbers, AbsentOnesFailWithANullIdentifier) {
    for (const CS_INT number : {8, 9, 16, -1, CS_UNUSED})
        for (CS_INT id_class = 0; id_class < CS_OID_CLASSES; ++id_class) {
            CsOID *oid = &nothing_;
            EXPECT_EQ(comn_tds_to_oid(&context_, id_class, number, &oid), CS_FAIL) << number;
            EXPECT_EQ(oid, nullptr);
        }
}

TEST_F(LoginNumbers, NumberOfAnotherClassFails) {
    CsOID *oid = &nothing_;
    EXPECT_EQ(comn_tds_to_oid(&context_, CS_OID_INTEGER4, 2, &oid), CS_FAIL);
    EXPECT_EQ(oid, nullptr);
    EXPECT_EQ(comn_tds_to_oid(&context_, CS_OID_INTEGER8, 1, &oid), CS_SUCCEED) << "any class that has the name";
    EXPECT_EQ(oid, oid_of(8, "1.10.1"));
}

TEST_F(LoginNumbers, OnlyTheFirstLocalNameCounts) {
    CS_INT number = -77;
    EXPECT_EQ(comn_oid_to_tds(&context_, oid_of(CS_OID_INTEGER8, "1.10.1"), &number), CS_FAIL);
    EXPECT_EQ(number, CS_UNUSED) << "int4_lsb_low is its second name";
    EXPECT_EQ(comn_oid_to_tds(&context_, oid_of(CS_OID_CHARSET, "1.2.1"), &number), CS_SUCCEED);
    EXPECT_EQ(number, 6);
}

TEST_F(LoginNumbers, IdentifierWithoutANumberFails) {
    for (const char *dotted : {"1.2.3", "1.2.4"}) {
        CS_INT number = -77;
        EXPECT_EQ(comn_oid_to_tds(&context_, oid_of(CS_OID_CHARSET, dotted), &number), CS_FAIL) << dotted;
        EXPECT_EQ(number, CS_UNUSED);
    }
    LooseOid stranger("\x06\x01\x7F"), known("\x06\x02\x32\x01");
    CS_INT number = -77;
    EXPECT_EQ(comn_oid_to_tds(&context_, stranger.get(), &number), CS_FAIL);
    EXPECT_EQ(number, CS_UNUSED);
    EXPECT_EQ(comn_oid_to_tds(&context_, known.get(), &number), CS_FAIL) << "not a number's name";
}

TEST_F(LoginNumbers, IdentifierNeedNotComeFromTheTable) {
    LooseOid loose(ber_text(*oid_of(CS_OID_FLOAT4, "1.11.3")));
    CS_INT number = -77;
    EXPECT_EQ(comn_oid_to_tds(&context_, loose.get(), &number), CS_SUCCEED);
    EXPECT_EQ(number, 14);
}

TEST_F(LoginNumbers, NameOf254BytesIsTheLongestThatIsLookedUp) {
    comn_intl_drop_globalid(&context_, &globals_.ctxoids);
    const std::string tail = "\\x00" + std::string(244, 'x'); // behind a NUL nothing is compared
    ASSERT_EQ(load("[float4]\n1.1.1 = flt4_vaxf" + tail + "\n1.1.2 = flt4_vaxf" + tail + "x\n"), CS_SUCCEED);
    ASSERT_EQ(oid_of(CS_OID_FLOAT4, "1.1.1")->oidlnames->len, 254);
    CS_INT number = -77;
    EXPECT_EQ(comn_oid_to_tds(&context_, oid_of(CS_OID_FLOAT4, "1.1.1"), &number), CS_SUCCEED);
    EXPECT_EQ(number, 14);
    EXPECT_EQ(comn_oid_to_tds(&context_, oid_of(CS_OID_FLOAT4, "1.1.2"), &number), CS_FAIL);
    EXPECT_EQ(number, CS_UNUSED);
}

// ---- What a peer acknowledged -----------------------------------------------------------------------------------

// The operands of comn_init_convack, each of which a test may change.
struct Acknowledged {
    CS_INT int2 = 3, int4 = 1, int8 = 1, flt4 = 13, flt8 = 10;
    std::string charset = "utf8", lang = "english", sort = "binary", datetime = "short", money = "pounds",
                numeric = "plain";
    CS_INT charset_len = 4, lang_len = 7, sort_len = 6, datetime_len = 5, money_len = 6, numeric_len = 5;

    CS_RETCODE init(CS_CONTEXT *context, CS_CONVACK *convack) {
        return comn_init_convack(context, convack, int2, int4, int8, flt4, flt8, chars(charset), charset_len,
                                 chars(lang), lang_len, chars(sort), sort_len, chars(datetime), datetime_len,
                                 chars(money), money_len, chars(numeric), numeric_len);
    }
};

bool is_zeroed(const CS_CONVACK &convack) {
    const CS_CONVACK zeroed = {};
    return std::memcmp(&convack, &zeroed, sizeof zeroed) == 0;
}

class Convack : public LoginNumbers {
protected:
    Convack() { std::memset(&convack_, 0xEE, sizeof convack_); }
    Acknowledged operands_;
    CS_CONVACK convack_;
};

TEST_F(Convack, EverySlotIsFilledFromItsClass) {
    ASSERT_EQ(operands_.init(&context_, &convack_), CS_SUCCEED);
    EXPECT_EQ(convack_.ca_int2, oid_of(CS_OID_INTEGER2, "1.8.2"));
    EXPECT_EQ(convack_.ca_int4, oid_of(CS_OID_INTEGER4, "1.9.2"));
    EXPECT_EQ(convack_.ca_flt4, oid_of(CS_OID_FLOAT4, "1.11.2"));
    EXPECT_EQ(convack_.ca_flt8, oid_of(CS_OID_FLOAT8, "1.12.2"));
    EXPECT_EQ(convack_.ca_char, oid_of(CS_OID_CHARSET, "1.2.3"));
    EXPECT_EQ(convack_.ca_lang, oid_of(CS_OID_NATLANG, "1.7.1"));
    EXPECT_EQ(convack_.ca_sort, oid_of(CS_OID_COLLATE, "1.6.1"));
    EXPECT_EQ(convack_.ca_datetime, oid_of(CS_OID_DATETIME, "1.5.1"));
    EXPECT_EQ(convack_.ca_money, oid_of(CS_OID_MONEY, "1.4.1"));
    EXPECT_EQ(convack_.ca_numeric, oid_of(CS_OID_NUMERIC, "1.3.1"));
}

TEST_F(Convack, OddityInt8StaysNullWhateverItsNumberSays) {
    for (const CS_INT number : {0, 1, 8, -1, CS_UNUSED}) {
        operands_.int8 = number;
        ASSERT_EQ(operands_.init(&context_, &convack_), CS_SUCCEED);
        EXPECT_EQ(convack_.ca_int8, nullptr);
    }
}

TEST_F(Convack, OddityLengthBelow1LeavesTheSlotNullAlsoThatOfATerminatedName) {
    for (const CS_INT len : {0, -1, CS_NULLTERM, CS_UNUSED}) {
        operands_.charset_len = operands_.lang_len = operands_.sort_len = len;
        operands_.datetime_len = operands_.money_len = operands_.numeric_len = len;
        operands_.charset = "unknown"; // not looked up
        ASSERT_EQ(operands_.init(&context_, &convack_), CS_SUCCEED);
        for (CsOID *slot : {convack_.ca_char, convack_.ca_lang, convack_.ca_sort, convack_.ca_datetime,
                            convack_.ca_money, convack_.ca_numeric})
            EXPECT_EQ(slot, nullptr);
        EXPECT_NE(convack_.ca_flt8, nullptr);
    }
}

TEST_F(Convack, EachNameIsOptionalByItself) {
    CS_INT Acknowledged::*const lengths[] = {&Acknowledged::charset_len, &Acknowledged::lang_len,
                                             &Acknowledged::sort_len,    &Acknowledged::datetime_len,
                                             &Acknowledged::money_len,   &Acknowledged::numeric_len};
    CsOID *CS_CONVACK::*const slots[] = {&CS_CONVACK::ca_char,     &CS_CONVACK::ca_lang,  &CS_CONVACK::ca_sort,
                                         &CS_CONVACK::ca_datetime, &CS_CONVACK::ca_money, &CS_CONVACK::ca_numeric};
    for (int missing = 0; missing < 6; ++missing) {
        Acknowledged operands;
        operands.*lengths[missing] = 0;
        ASSERT_EQ(operands.init(&context_, &convack_), CS_SUCCEED);
        for (int slot = 0; slot < 6; ++slot)
            EXPECT_EQ(convack_.*slots[slot] == nullptr, slot == missing);
    }
}

TEST_F(Convack, NameMayHaveItsNulCounted) {
    operands_.charset_len = 5;
    ASSERT_EQ(operands_.init(&context_, &convack_), CS_SUCCEED);
    EXPECT_EQ(convack_.ca_char, oid_of(CS_OID_CHARSET, "1.2.3"));
}

TEST_F(Convack, AnyFailureLeavesTheRecordNull) {
    CS_INT Acknowledged::*const numbers[] = {&Acknowledged::int2, &Acknowledged::int4, &Acknowledged::flt4,
                                             &Acknowledged::flt8};
    for (const auto number : numbers) {
        Acknowledged operands;
        operands.*number = 8;
        std::memset(&convack_, 0xEE, sizeof convack_);
        EXPECT_EQ(operands.init(&context_, &convack_), CS_FAIL);
        EXPECT_TRUE(is_zeroed(convack_));
    }
    std::string Acknowledged::*const names[] = {&Acknowledged::charset,  &Acknowledged::lang,  &Acknowledged::sort,
                                                &Acknowledged::datetime, &Acknowledged::money, &Acknowledged::numeric};
    for (const auto name : names) {
        Acknowledged operands;
        (operands.*name)[0] = 'X';
        std::memset(&convack_, 0xEE, sizeof convack_);
        EXPECT_EQ(operands.init(&context_, &convack_), CS_FAIL);
        EXPECT_TRUE(is_zeroed(convack_));
    }
}

TEST_F(Convack, NumberOfTheWrongClassFails) {
    operands_.int2 = 0;
    EXPECT_EQ(operands_.init(&context_, &convack_), CS_FAIL);
    EXPECT_TRUE(is_zeroed(convack_));
}

TEST_F(Convack, CopyTakesThePointersOnly) {
    ASSERT_EQ(operands_.init(&context_, &convack_), CS_SUCCEED);
    CS_CONVACK copy;
    std::memset(&copy, 0xEE, sizeof copy);
    EXPECT_EQ(comn_copy_convack(&context_, &convack_, &copy), CS_SUCCEED);
    EXPECT_EQ(std::memcmp(&copy, &convack_, sizeof copy), 0);
    EXPECT_EQ(copy.ca_char, oid_of(CS_OID_CHARSET, "1.2.3"));
    EXPECT_EQ(comn_copy_convack(nullptr, &convack_, &convack_), CS_SUCCEED);
    EXPECT_EQ(std::memcmp(&copy, &convack_, sizeof copy), 0);
}

TEST_F(Convack, ComparisonNeedsEverySlot) {
    CsOID *CS_CONVACK::*const slots[] = {&CS_CONVACK::ca_int2,  &CS_CONVACK::ca_int4,   &CS_CONVACK::ca_int8,
                                         &CS_CONVACK::ca_flt4,  &CS_CONVACK::ca_flt8,   &CS_CONVACK::ca_char,
                                         &CS_CONVACK::ca_lang,  &CS_CONVACK::ca_sort,   &CS_CONVACK::ca_datetime,
                                         &CS_CONVACK::ca_money, &CS_CONVACK::ca_numeric};
    ASSERT_EQ(operands_.init(&context_, &convack_), CS_SUCCEED);
    LooseOid other("\x06\x01\x7F"), empty("");
    CS_CONVACK copy = convack_;
    EXPECT_EQ(comn_cmp_convack(&context_, &convack_, &copy), CS_TRUE);
    for (const auto slot : slots) {
        copy = convack_;
        copy.*slot = other.get();
        EXPECT_EQ(comn_cmp_convack(&context_, &convack_, &copy), CS_FALSE);
        EXPECT_EQ(comn_cmp_convack(&context_, &copy, &convack_), CS_FALSE);

        LooseOid same(convack_.*slot != nullptr ? ber_text(*(convack_.*slot)) : "");
        copy.*slot = same.get();
        EXPECT_EQ(comn_cmp_convack(&context_, &convack_, &copy), CS_TRUE) << "by encoding";

        CS_CONVACK without = convack_;
        without.*slot = nullptr;
        copy.*slot = empty.get();
        EXPECT_EQ(comn_cmp_convack(&context_, &without, &copy), CS_TRUE) << "null is an empty one";
    }
    const CS_CONVACK none = {};
    EXPECT_EQ(comn_cmp_convack(nullptr, const_cast<CS_CONVACK *>(&none), const_cast<CS_CONVACK *>(&none)), CS_TRUE);
}

// ---- Debug output -----------------------------------------------------------------------------------------------

const std::string RULE = std::string(68, '=') + "\n";
const std::string CLASS_RULE = "  " + std::string(66, '-') + "\n";

std::string shown(CsOID *oid) {
    DebugOutput output;
    comn_dbg_print_oid(nullptr, oid);
    return output.text();
}

class OidDebugOutput : public OidFixture {};

TEST_F(OidDebugOutput, OddityNullIdentifierEndsNoLine) { EXPECT_EQ(shown(nullptr), "OID: \tNULL"); }

TEST_F(OidDebugOutput, Identifier) {
    ASSERT_EQ(load("[charset]\n1.2.128.5 = utf8, \"utf %s 8\"\n1.3 =\n"), CS_SUCCEED);
    EXPECT_EQ(shown(table().ot_oid[0]), "OID: \t1.2.128.5 (9)\n"
                                        "\t\tglobal id: 0x6 0x4 0x2a 0x81 0x0 0x5 (6)\n"
                                        "\t\tnumber of local names: 2\n"
                                        "\t\tlocal names\n"
                                        "\t\t\tutf8 (4)\n"
                                        "\t\t\tutf %s 8 (8)\n");
    EXPECT_EQ(shown(table().ot_oid[0]->oidnext), "OID: \t1.3 (3)\n"
                                                 "\t\tglobal id: 0x6 0x1 0x2b (3)\n"
                                                 "\t\tnumber of local names: 0\n"
                                                 "\t\tlocal names\n");
}

TEST_F(OidDebugOutput, TextsArePrintedByTheirLength) {
    CS_CHAR text[] = {'1', '.', '2', '3'}, name[] = {'a', 'b', 'c'};
    CS_BYTE ber[] = {6, 1, 42, 99};
    CS_STRING_LIST empty = {name, 0, nullptr}, first = {name, 2, &empty};
    CsOID oid = {text, 3, ber, 3, &first, 2, nullptr};
    EXPECT_EQ(shown(&oid), "OID: \t1.2 (3)\n"
                           "\t\tglobal id: 0x6 0x1 0x2a (3)\n"
                           "\t\tnumber of local names: 2\n"
                           "\t\tlocal names\n"
                           "\t\t\tab (2)\n"
                           "\t\t\t (0)\n");
}

TEST_F(OidDebugOutput, TextsOfAnyLengthArePrintedWhole) {
    std::string text = "1.2" + std::string(3000, '.');
    CS_STRING_LIST name = {chars(text), length_of(text), nullptr};
    CsOID oid = {chars(text), length_of(text), nullptr, 0, &name, 1, nullptr};
    EXPECT_EQ(shown(&oid), "OID: \t" + text +
                               " (3003)\n\t\tglobal id: (0)\n\t\tnumber of local names: 1\n\t\tlocal names\n\t\t\t" +
                               text + " (3003)\n");
}

TEST_F(OidDebugOutput, NullTable) {
    DebugOutput output;
    comn_dbg_print_oidtable(nullptr, nullptr);
    EXPECT_EQ(output.text(), RULE + "OID TABLE\n" + RULE + "\tNULL\n" + RULE);
}

TEST_F(OidDebugOutput, Table) {
    ASSERT_EQ(load("[charset]\n1.2 = utf8\n1.3 =\n[secmech]\n1.4 = s\n"), CS_SUCCEED);
    std::string expected = RULE + "OID TABLE\n" + RULE;
    for (CS_INT id_class = 0; id_class < CS_OID_CLASSES; ++id_class) {
        expected += "  CLASS: " + std::string(Com__classmap[id_class].string) + "\n" + CLASS_RULE;
        for (CsOID *oid = table().ot_oid[id_class]; oid != nullptr; oid = oid->oidnext)
            expected += shown(oid);
    }
    expected += RULE;
    DebugOutput output;
    comn_dbg_print_oidtable(&context_, &table());
    EXPECT_EQ(output.text(), expected);
}

TEST_F(OidDebugOutput, Convack) {
    ASSERT_EQ(load(CONTENT), CS_SUCCEED);
    CS_CONVACK convack;
    ASSERT_EQ(Acknowledged().init(&context_, &convack), CS_SUCCEED);
    convack.ca_lang = nullptr;
    const std::pair<const char *, CsOID *> slots[] = {
        {"integer2", convack.ca_int2}, {"integer4", convack.ca_int4},   {"integer8", nullptr},
        {"float4", convack.ca_flt4},   {"float8", convack.ca_flt8},     {"charset", convack.ca_char},
        {"natlang", nullptr},          {"collate", convack.ca_sort},    {"datetime", convack.ca_datetime},
        {"money", convack.ca_money},   {"numeric", convack.ca_numeric},
    };
    std::string expected = RULE + "CONVACK\n" + RULE;
    for (const auto &[name, oid] : slots)
        expected += CLASS_RULE + "CLASS: " + name + "\n" + CLASS_RULE + shown(oid);
    DebugOutput output;
    comn_dbg_print_convack(&context_, &convack);
    EXPECT_EQ(output.text(), expected);
}

TEST_F(OidDebugOutput, DatafuncsAreAHeadingWhateverTheyHold) {
    CS_DATAFUNCS some = {};
    for (CS_DATAFUNCS *datafuncs : {static_cast<CS_DATAFUNCS *>(nullptr), &some}) {
        DebugOutput output;
        comn_dbg_print_datafuncs(&context_, datafuncs);
        EXPECT_EQ(output.text(), RULE + "DATAFUNCS\n" + RULE);
    }
}

// ---- Broken contracts -------------------------------------------------------------------------------------------

class UtilityOperands {
public:
    explicit UtilityOperands(support::NullCalls &calls) {
        const auto string_to_id = [](const CS_STRINGS *map, CS_CHAR *text, CS_INT *id) {
            return comn_string_to_id(nullptr, map, text, id);
        };
        const auto id_to_string = [](const CS_STRINGS *map, CS_CHAR **text) {
            return comn_id_to_string(nullptr, map, 0, text);
        };
        const auto oid_to_tds = [](CsOID *oid, CS_INT *number) { return comn_oid_to_tds(nullptr, oid, number); };
        const auto copy = [](CS_CONVACK *from, CS_CONVACK *to) { return comn_copy_convack(nullptr, from, to); };
        const auto compare = [](CS_CONVACK *ack1, CS_CONVACK *ack2) { return comn_cmp_convack(nullptr, ack1, ack2); };
        NULL_CALLS(calls, string_to_id, CS_FAIL, Com__classmap, name_, &number_);
        NULL_CALLS(calls, id_to_string, CS_FAIL, Com__classmap, &text_);
        NULL_CALLS(calls, oid_to_tds, CS_FAIL, &oid_, &number_);
        NULL_CALLS(calls, copy, CS_FAIL, &convack_, &convack_);
        NULL_CALLS(calls, compare, CS_FALSE, &convack_, &convack_);
        calls.add(
            "comn_tds_to_oid", [this] { return comn_tds_to_oid(nullptr, 6, 2, nullptr); }, CS_FAIL);
        calls.add(
            "comn_init_convack", [this] { return Acknowledged().init(nullptr, nullptr); }, CS_FAIL);
        calls.add(
            "comn_dbg_print_convack", [this] { return comn_dbg_print_convack(nullptr, nullptr), 0; }, 0);
    }
    bool are_untouched() const { return number_ == -77 && text_ == name_ && is_zeroed(convack_); }

private:
    CsOID oid_ = {};
    CS_CHAR name_[8] = "charset";
    CS_CHAR *text_ = name_;
    CS_INT number_ = -77;
    CS_CONVACK convack_ = {};
};

TEST(OidUtilityDeathTest, MissingPointersAreReported) {
    support::NullCalls calls;
    const UtilityOperands operands(calls);
    calls.expect_reports("gidutil");
}

TEST(OidUtilityContracts, MissingPointersFailWhereAssertionsReturn) {
    support::NullCalls calls;
    const UtilityOperands operands(calls);
    DebugOutput output;
    calls.expect_answers([] {}, [&] { EXPECT_TRUE(operands.are_untouched()); });
    EXPECT_EQ(output.text(), "");
}

TEST(OidUtilityDeathTest, ClassOfANumberIsChecked) {
    CsOID *oid = nullptr;
    EXPECT_BOMB(comn_tds_to_oid(nullptr, -1, 2, &oid), "gidutil");
    EXPECT_BOMB(comn_tds_to_oid(nullptr, 12, 2, &oid), "gidutil");
    EXPECT_BOMB(comn_tds_to_oid(nullptr, CS_UNUSED, 2, &oid), "gidutil");
}

TEST(OidUtilityContracts, WrongClassOfANumberFailsWhereAssertionsReturn) {
    CsOID here = {};
    ReturningAssertions returning;
    for (const CS_INT id_class : {-1, 12, CS_UNUSED}) {
        CsOID *oid = &here;
        EXPECT_EQ(comn_tds_to_oid(nullptr, id_class, 2, &oid), CS_FAIL);
        EXPECT_EQ(oid, &here);
    }
    EXPECT_EQ(returning.count(), 3);
}

// The table is missing in both ways, or a name is.
TEST(OidUtilityDeathTest, MissingTableIsReportedByTheLookup) {
    CsCtxGlobals globals = {};
    CS_CONTEXT context = {};
    context.ctxglobals = &globals;
    CsOID *oid = nullptr;
    CS_INT number = 0;
    CS_CONVACK convack;
    LooseOid loose("\x06\x01\x2A");
    EXPECT_NULL_REPORT(comn_tds_to_oid(nullptr, 6, 2, &oid), "comgid");
    EXPECT_NULL_REPORT(comn_tds_to_oid(&context, 6, 2, &oid), "comgid");
    EXPECT_NULL_REPORT(comn_oid_to_tds(&context, loose.get(), &number), "comgid");
    EXPECT_NULL_REPORT(Acknowledged().init(&context, &convack), "comgid");
}

TEST_F(Convack, MissingTableOrNameLeavesTheRecordNullWhereAssertionsReturn) {
    CsCtxGlobals empty = {};
    CS_CONTEXT without = {};
    without.ctxglobals = &empty;
    ReturningAssertions returning;
    EXPECT_EQ(operands_.init(&without, &convack_), CS_FAIL);
    EXPECT_TRUE(is_zeroed(convack_));
    EXPECT_EQ(returning.count(), 1);
    std::memset(&convack_, 0xEE, sizeof convack_);
    EXPECT_EQ(comn_init_convack(&context_, &convack_, 3, 1, 0, 13, 10, nullptr, 4, nullptr, 0, nullptr, 0, nullptr, 0,
                                nullptr, 0, nullptr, 0),
              CS_FAIL);
    EXPECT_TRUE(is_zeroed(convack_));
    EXPECT_EQ(returning.count(), 2);
    CsOID *oid = &nothing_;
    EXPECT_EQ(comn_tds_to_oid(&without, 6, 2, &oid), CS_FAIL);
    EXPECT_EQ(oid, nullptr);
    CS_INT number = -77;
    EXPECT_EQ(comn_oid_to_tds(&without, &nothing_, &number), CS_FAIL);
    EXPECT_EQ(number, CS_UNUSED);
    EXPECT_EQ(returning.count(), 4);
}

} // namespace

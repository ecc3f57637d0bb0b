// The numbers and widths that cross the library's edge, written out once more.
#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace {

template <class T, size_t Size, bool Signed>
void expect_integer(const char *name) {
    EXPECT_TRUE(std::is_integral_v<T>) << name;
    EXPECT_EQ(sizeof(T), Size) << name;
    EXPECT_EQ(std::is_signed_v<T>, Signed) << name;
}
#define EXPECT_SIGNED(type, size) expect_integer<type, size, true>(#type)
#define EXPECT_UNSIGNED(type, size) expect_integer<type, size, false>(#type)

TEST(Types, ScalarsHaveTheirWidthAndSign) {
    EXPECT_SIGNED(CS_INT, 4);
    EXPECT_SIGNED(CS_RETCODE, 4);
    EXPECT_SIGNED(CS_BOOL, 4);
    EXPECT_SIGNED(CS_DATE, 4);
    EXPECT_SIGNED(CS_TIME, 4);
    EXPECT_SIGNED(CS_BLOB, 4);
    EXPECT_SIGNED(CS_VOIDDATA, 4);
    EXPECT_UNSIGNED(CS_UINT, 4);
    EXPECT_UNSIGNED(CS_MSGNUM, 4);
    EXPECT_SIGNED(CS_SMALLINT, 2);
    EXPECT_UNSIGNED(CS_USHORT, 2);
    EXPECT_UNSIGNED(CS_USMALLINT, 2);
    EXPECT_UNSIGNED(CS_UNICHAR, 2);
    EXPECT_UNSIGNED(CS_UNITEXT, 2);
    EXPECT_UNSIGNED(CS_TINYINT, 1);
    EXPECT_UNSIGNED(CS_BIT, 1);
    EXPECT_UNSIGNED(CS_BYTE, 1);
    EXPECT_UNSIGNED(CS_BINARY, 1);
    EXPECT_UNSIGNED(CS_LONGBINARY, 1);
    EXPECT_UNSIGNED(CS_LONGCHAR, 1);
    EXPECT_UNSIGNED(CS_TEXT, 1);
    EXPECT_UNSIGNED(CS_IMAGE, 1);
    EXPECT_UNSIGNED(CS_XML, 1);
    EXPECT_TRUE((std::is_same_v<CS_CHAR, char>));
    EXPECT_SIGNED(CS_BIGINT, 8);
    EXPECT_SIGNED(CS_LONG, 8);
    EXPECT_UNSIGNED(CS_UBIGINT, 8);
    EXPECT_UNSIGNED(CS_BIGDATETIME, 8);
    EXPECT_UNSIGNED(CS_BIGTIME, 8);
    EXPECT_TRUE((std::is_same_v<CS_REAL, float>));
    EXPECT_TRUE((std::is_same_v<CS_FLOAT, double>));
    EXPECT_TRUE(std::is_void_v<CS_VOID>);
}

TEST(Types, DatatypeIds) {
    const int ids[] = {
        CS_CHAR_TYPE,        CS_BINARY_TYPE,      CS_LONGCHAR_TYPE,    CS_LONGBINARY_TYPE,   CS_TEXT_TYPE,
        CS_IMAGE_TYPE,       CS_TINYINT_TYPE,     CS_SMALLINT_TYPE,    CS_INT_TYPE,          CS_REAL_TYPE,
        CS_FLOAT_TYPE,       CS_BIT_TYPE,         CS_DATETIME_TYPE,    CS_DATETIME4_TYPE,    CS_MONEY_TYPE,
        CS_MONEY4_TYPE,      CS_NUMERIC_TYPE,     CS_DECIMAL_TYPE,     CS_VARCHAR_TYPE,      CS_VARBINARY_TYPE,
        CS_LONG_TYPE,        CS_SENSITIVITY_TYPE, CS_BOUNDARY_TYPE,    CS_VOID_TYPE,         CS_USHORT_TYPE,
        CS_UNICHAR_TYPE,     CS_BLOB_TYPE,        CS_DATE_TYPE,        CS_TIME_TYPE,         CS_UNITEXT_TYPE,
        CS_BIGINT_TYPE,      CS_USMALLINT_TYPE,   CS_UINT_TYPE,        CS_UBIGINT_TYPE,      CS_XML_TYPE,
        CS_BIGDATETIME_TYPE, CS_BIGTIME_TYPE,     CS_TEXTLOCATOR_TYPE, CS_IMAGELOCATOR_TYPE, CS_UNITEXTLOCATOR_TYPE,
        CS_USER_TYPE,
    };
    for (int id = 0; id <= 40; ++id)
        EXPECT_EQ(ids[id], id);
}

TEST(Types, StatusCodes) {
    const struct {
        int status, number;
    } statuses[] = {
        {CS_SUCCEED, 1},       {CS_FAIL, 0},          {CS_MEM_ERROR, -1},      {CS_PENDING, -2},
        {CS_QUIET, -3},        {CS_BUSY, -4},         {CS_INTERRUPT, -5},      {CS_CANCELED, -202},
        {CS_ROW_FAIL, -203},   {CS_END_DATA, -204},   {CS_END_RESULTS, -205},  {CS_END_ITEM, -206},
        {CS_NOMSG, -207},      {CS_TIMED_OUT, -208},  {CS_PASSTHRU_EOM, -210}, {CS_PASSTHRU_MORE, -211},
        {CS_TRYING, -213},     {CS_EOVERFLOW, -101},  {CS_EUNDERFLOW, -102},   {CS_EPRECISION, -103},
        {CS_ESCALE, -104},     {CS_ESYNTAX, -105},    {CS_EFORMAT, -106},      {CS_EDOMAIN, -107},
        {CS_EDIVZERO, -108},   {CS_ETRUNCATED, -113}, {CS_EDATEFMT, -114},     {CS_EUNMAPPED, -115},
        {CS_ENOCONV, -116},    {CS_ECONVWARN, -117},  {CS_EINTL, -301},        {CS_ENOLOCFILE, -414},
        {CS_EBADCSNAME, -417},
    };
    for (const auto &row : statuses)
        EXPECT_EQ(row.status, row.number);
}

TEST(Types, FlagsSentinelsAndLevels) {
    EXPECT_EQ(CS_FORMAT_NULLTERM, 1);
    EXPECT_EQ(CS_FORMAT_ZEROPAD, 2);
    EXPECT_EQ(CS_FORMAT_BLANKPAD, 4);
    EXPECT_EQ(CS_FORMAT_ESCAPEQUOTE, 32);
    EXPECT_EQ(CS_VALUE_FROM_SOURCE, -2562);
    EXPECT_EQ(CS_NULLTERM, -9);
    EXPECT_EQ(CS_UNUSED, -99999);
    EXPECT_EQ(COM_TRACE_OFF, 1);
    EXPECT_EQ(COM_TRACE_ERRORS, 2);
    EXPECT_EQ(COM_TRACE_ALL, 3);
    EXPECT_EQ(CS_LOCATOR_MAGIC, -779);
    EXPECT_EQ(CS_NULLPAD_CHAR, 1);
    EXPECT_EQ(CS_NULLPAD_BINARY, 2);
    EXPECT_EQ(CS_NULLPAD_NONE, 3);
    EXPECT_EQ(CS_NULLPAD_UNICHAR, 4);
}

TEST(Types, RecordsHaveTheirSecondNamesAndTheThreadTableItsTenCallbacks) {
    EXPECT_TRUE((std::is_same_v<CsContext, CS_CONTEXT>));
    EXPECT_TRUE((std::is_same_v<CsLocale, CS_LOCALE>));
    EXPECT_EQ(sizeof(CS_THREAD), 10 * sizeof(void *));
    EXPECT_EQ(sizeof(CS_DATAFMT::name), 256u);
}

} // namespace

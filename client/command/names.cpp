// The datatypes and the statuses by name.
#include "names.h"

#include "text.h"

#include <algorithm>
#include <charconv>

namespace client {
namespace {

constexpr Datatype DATATYPES[TYPE_COUNT] = {
    {CS_CHAR_TYPE, "char", "char", Form::text, "text in the character set of its locale"},
    {CS_BINARY_TYPE, "binary", "bin", Form::bytes, "bytes"},
    {CS_LONGCHAR_TYPE, "longchar", "char", Form::text, "as char"},
    {CS_LONGBINARY_TYPE, "longbinary", "bin", Form::bytes, "as binary"},
    {CS_TEXT_TYPE, "text", "char", Form::text, "as char"},
    {CS_IMAGE_TYPE, "image", "bin", Form::bytes, "as binary"},
    {CS_TINYINT_TYPE, "tinyint", "i1", Form::unsigned_integer, "unsigned integer, 0 to 255"},
    {CS_SMALLINT_TYPE, "smallint", "i2", Form::signed_integer, "signed integer"},
    {CS_INT_TYPE, "int", "i4", Form::signed_integer, "signed integer"},
    {CS_REAL_TYPE, "real", "flt4", Form::single_float, "IEEE single"},
    {CS_FLOAT_TYPE, "float", "flt8", Form::double_float, "IEEE double"},
    {CS_BIT_TYPE, "bit", "bit", Form::unsigned_integer, "one byte, 0 or 1"},
    {CS_DATETIME_TYPE, "datetime", "date", Form::datetime, "int days since 1900-01-01, int ticks of 1/300 s"},
    {CS_DATETIME4_TYPE, "datetime4", "date4", Form::datetime4, "ushort days since 1900-01-01, ushort minutes"},
    {CS_MONEY_TYPE, "money", "money", Form::money, "count of ten-thousandths: high int, low uint"},
    {CS_MONEY4_TYPE, "money4", "mny4", Form::money4, "count of ten-thousandths: int"},
    {CS_NUMERIC_TYPE, "numeric", "num", Form::numeric, "precision, scale, sign byte, big-endian magnitude"},
    {CS_DECIMAL_TYPE, "decimal", "num", Form::numeric, "as numeric"},
    {CS_VARCHAR_TYPE, "varchar", "varchar", Form::varchar, "smallint length, 256 bytes of text"},
    {CS_VARBINARY_TYPE, "varbinary", "varbin", Form::varbinary, "smallint length, 256 bytes"},
    {CS_LONG_TYPE, "long", "i8", Form::signed_integer, "signed integer of 64 bits"},
    {CS_SENSITIVITY_TYPE, "sensitivity", "char", Form::text, "as char"},
    {CS_BOUNDARY_TYPE, "boundary", "char", Form::text, "as char"},
    {CS_VOID_TYPE, "void", "void", Form::nothing, "no value; source of a null substitution"},
    {CS_USHORT_TYPE, "ushort", "-", Form::unsigned_integer, "unsigned integer of 16 bits; converts to nothing"},
    {CS_UNICHAR_TYPE, "unichar", "unichar", Form::units, "UTF-16 units in machine order"},
    {CS_BLOB_TYPE, "blob", "-", Form::opaque, "bytes; converts to nothing"},
    {CS_DATE_TYPE, "date", "datea", Form::signed_integer, "int days since 1900-01-01"},
    {CS_TIME_TYPE, "time", "timea", Form::signed_integer, "int ticks of 1/300 s since midnight"},
    {CS_UNITEXT_TYPE, "unitext", "unichar", Form::units, "as unichar"},
    {CS_BIGINT_TYPE, "bigint", "i8", Form::signed_integer, "signed integer"},
    {CS_USMALLINT_TYPE, "usmallint", "ui2", Form::unsigned_integer, "unsigned integer"},
    {CS_UINT_TYPE, "uint", "ui4", Form::unsigned_integer, "unsigned integer"},
    {CS_UBIGINT_TYPE, "ubigint", "ui8", Form::unsigned_integer, "unsigned integer"},
    {CS_XML_TYPE, "xml", "char", Form::text, "as char"},
    {CS_BIGDATETIME_TYPE, "bigdatetime", "bigdatetime", Form::unsigned_integer, "ubigint microseconds since year 0"},
    {CS_BIGTIME_TYPE, "bigtime", "bigtime", Form::unsigned_integer, "ubigint microseconds since midnight"},
    {CS_TEXTLOCATOR_TYPE, "textlocator", "locator", Form::opaque, "CS_LOCATOR record"},
    {CS_IMAGELOCATOR_TYPE, "imagelocator", "locator", Form::opaque, "CS_LOCATOR record"},
    {CS_UNITEXTLOCATOR_TYPE, "unitextlocator", "locator", Form::opaque, "CS_LOCATOR record"},
};

struct Named {
    CS_INT value;
    std::string_view name;
};

#define NAMED(constant)                                                                                                \
    Named { constant, #constant }
constexpr Named STATUSES[] = {
    NAMED(CS_SUCCEED),    NAMED(CS_FAIL),       NAMED(CS_MEM_ERROR),    NAMED(CS_PENDING),       NAMED(CS_QUIET),
    NAMED(CS_BUSY),       NAMED(CS_INTERRUPT),  NAMED(CS_EOVERFLOW),    NAMED(CS_EUNDERFLOW),    NAMED(CS_EPRECISION),
    NAMED(CS_ESCALE),     NAMED(CS_ESYNTAX),    NAMED(CS_EFORMAT),      NAMED(CS_EDOMAIN),       NAMED(CS_EDIVZERO),
    NAMED(CS_ETRUNCATED), NAMED(CS_EDATEFMT),   NAMED(CS_EUNMAPPED),    NAMED(CS_ENOCONV),       NAMED(CS_ECONVWARN),
    NAMED(CS_CANCELED),   NAMED(CS_ROW_FAIL),   NAMED(CS_END_DATA),     NAMED(CS_END_RESULTS),   NAMED(CS_END_ITEM),
    NAMED(CS_NOMSG),      NAMED(CS_TIMED_OUT),  NAMED(CS_PASSTHRU_EOM), NAMED(CS_PASSTHRU_MORE), NAMED(CS_TRYING),
    NAMED(CS_EINTL),      NAMED(CS_ENOLOCFILE), NAMED(CS_EBADCSNAME),
};
#undef NAMED

constexpr Named FORMATS[] = {
    {CS_FORMAT_NULLTERM, "nullterm"},
    {CS_FORMAT_ZEROPAD, "zeropad"},
    {CS_FORMAT_BLANKPAD, "blankpad"},
};

// What other systems call a datatype: too far from our name for a slip of the fingers.
struct Alias {
    std::string_view word;
    std::string_view name;
};
constexpr Alias ALIASES[] = {
    {"double", "float"},          {"single", "real"},  {"integer", "int"},  {"string", "char"},
    {"boolean", "bit"},           {"bool", "bit"},     {"byte", "tinyint"}, {"short", "smallint"},
    {"timestamp", "bigdatetime"}, {"bytes", "binary"}, {"null", "void"},    {"smalldatetime", "datetime4"},
    {"smallmoney", "money4"},
};

// Letters that must be added, taken away, replaced or swapped with their neighbour to make one word of the other.
size_t distance(std::string_view a, std::string_view b) {
    // apart[i][j] is the distance of the first i letters of a from the first j of b.
    std::vector<std::vector<size_t>> apart(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i)
        for (size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                apart[i][j] = i + j;
                continue;
            }
            const size_t replaced = apart[i - 1][j - 1] + (a[i - 1] != b[j - 1]);
            apart[i][j] = std::min({replaced, apart[i - 1][j] + 1, apart[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                apart[i][j] = std::min(apart[i][j], apart[i - 2][j - 2] + 1);
        }
    return apart[a.size()][b.size()];
}

std::string unknown_datatype(std::string_view spelled, std::string_view name) {
    const std::string sentence = "no datatype " + quoted(spelled) + "; ";
    const std::string list = "`dlxcomn types` lists them";
    if (!name.empty() && name.find_first_not_of("-0123456789") == std::string_view::npos)
        return sentence + "ids run from 0 to " + std::to_string(TYPE_COUNT - 1) + ", " + list;
    for (const Alias &alias : ALIASES)
        if (alias.word == name)
            return sentence + "did you mean " + std::string(alias.name) + "? " + list;
    std::vector<std::string_view> names;
    for (const Datatype &type : DATATYPES)
        names.push_back(type.name);
    const std::vector<std::string_view> near = nearest(name, names);
    return sentence + (near.empty() ? list : "did you mean " + enumerate(near, "or") + "? " + list);
}

} // namespace

const Datatype &datatype(CS_INT id) { return DATATYPES[id]; }

Maybe<const Datatype *> find_datatype(std::string_view spelled) {
    std::string name = lowercase(spelled);
    if (name.starts_with("cs_"))
        name.erase(0, 3);
    for (const Datatype &type : DATATYPES)
        if (type.name == name)
            return &type;
    CS_INT id = 0;
    const char *end = spelled.data() + spelled.size();
    const auto [stop, error] = std::from_chars(spelled.data(), end, id);
    if (error == std::errc() && stop == end && id >= 0 && id < TYPE_COUNT)
        return &DATATYPES[id];
    return Maybe<const Datatype *>::failure(unknown_datatype(spelled, name));
}

std::string status_name(CS_RETCODE status) {
    for (const Named &named : STATUSES)
        if (named.value == status)
            return std::string(named.name);
    return std::to_string(status);
}

Maybe<CS_INT> parse_format(std::string_view list) {
    CS_INT bits = 0;
    for (size_t start = 0; start <= list.size();) {
        const size_t comma = std::min(list.find(',', start), list.size());
        const std::string_view word = list.substr(start, comma - start);
        start = comma + 1;
        const auto *found = std::find_if(std::begin(FORMATS), std::end(FORMATS),
                                         [word](const Named &format) { return format.name == word; });
        if (found == std::end(FORMATS))
            return Maybe<CS_INT>::failure("no format " + quoted(word) +
                                          "; --format takes nullterm, blankpad and zeropad, with commas between");
        bits |= found->value;
    }
    return bits;
}

std::vector<std::string_view> nearest(std::string_view wrong, const std::vector<std::string_view> &words) {
    constexpr size_t MOST = 3;
    // A third of the letters may be wrong; a word that begins or ends another one is near it too.
    const size_t limit = std::max<size_t>(1, wrong.size() / 3);
    std::vector<std::pair<size_t, std::string_view>> ranked;
    for (const std::string_view word : words) {
        const size_t apart = distance(wrong, word);
        const bool is_part = wrong.size() >= 3 && (word.find(wrong) == 0 || wrong.find(word) == 0);
        if (apart <= limit || is_part)
            ranked.emplace_back(apart, word);
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<std::string_view> result;
    for (size_t i = 0; i < ranked.size() && i < MOST; ++i)
        result.push_back(ranked[i].second);
    return result;
}

} // namespace client

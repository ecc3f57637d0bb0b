// Values of every datatype from what a person writes, and back.
#include "literals.h"

#include "text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace client {
namespace {

constexpr std::string_view NO_VALUE = "-";

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool all_digits(std::string_view text) { return std::all_of(text.begin(), text.end(), is_digit); }

// A sign, taken off the front of the text.
bool take_minus(std::string_view &text) {
    const bool minus = text.starts_with('-');
    if (minus || text.starts_with('+'))
        text.remove_prefix(1);
    return minus;
}

template <class T>
std::vector<CS_BYTE> bytes_of(const T &value) {
    std::vector<CS_BYTE> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

template <class T>
T value_of(const std::vector<CS_BYTE> &bytes) {
    T value = {};
    std::memcpy(&value, bytes.data(), std::min(sizeof value, bytes.size()));
    return value;
}

// ---- Integers ----

struct Range {
    CS_BIGINT lowest;
    CS_UBIGINT highest;
};

Range range_of(const Datatype &type) {
    const int bits = 8 * type.width(0);
    if (type.form == Form::signed_integer)
        return {std::numeric_limits<CS_BIGINT>::min() >> (64 - bits), ~CS_UBIGINT(0) >> (65 - bits)};
    return {0, ~CS_UBIGINT(0) >> (64 - bits)};
}

// The low bytes of a whole number within the range; none for anything else.
std::vector<CS_BYTE> read_integer(const Range &range, CS_INT width, std::string_view literal) {
    const bool minus = take_minus(literal);
    CS_UBIGINT magnitude = 0;
    const char *end = literal.data() + literal.size();
    const auto [stop, error] = std::from_chars(literal.data(), end, magnitude);
    const CS_UBIGINT limit = minus ? CS_UBIGINT(0) - static_cast<CS_UBIGINT>(range.lowest) : range.highest;
    if (error != std::errc() || stop != end || magnitude > limit)
        return {};
    std::vector<CS_BYTE> bytes = bytes_of(minus ? CS_UBIGINT(0) - magnitude : magnitude);
    bytes.resize(static_cast<size_t>(width)); // little-endian: the low bytes stand first
    return bytes;
}

std::string print_integer(const Datatype &type, const std::vector<CS_BYTE> &bytes) {
    const auto value = value_of<CS_UBIGINT>(bytes);
    if (type.form == Form::unsigned_integer)
        return std::to_string(value);
    const size_t unused = 64 - 8 * std::min<size_t>(bytes.size(), 8);
    return std::to_string(static_cast<CS_BIGINT>(value << unused) >> unused);
}

// ---- Floats ----

template <class Float>
std::vector<CS_BYTE> read_float(std::string_view literal) {
    const std::string text(literal);
    char *stop = nullptr;
    errno = 0;
    Float value = 0;
    if constexpr (sizeof(Float) == sizeof(CS_REAL))
        value = std::strtof(text.c_str(), &stop);
    else
        value = std::strtod(text.c_str(), &stop);
    // Too small a value is rounded like any other; too large a one is not the infinity that it becomes.
    const bool is_too_large = errno == ERANGE && (value > 1 || value < -1);
    if (text.empty() || stop != text.c_str() + text.size() || is_too_large)
        return {};
    return bytes_of(value);
}

template <class Float>
std::string print_float(const std::vector<CS_BYTE> &bytes) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value_of<Float>(bytes)).ptr;
    return std::string(text, end);
}

// ---- Decimal numbers ----

// A decimal number as its digits: `whole` before the point without leading zeros, `fraction` behind it.
struct Decimal {
    bool minus = false;
    std::string whole;
    std::string fraction;

    std::string digits() const { return whole + fraction; }
};

// Far beyond what any datatype holds, and small enough to write out.
constexpr int LARGEST_EXPONENT = 1000;

bool read_exponent(std::string_view text, int &exponent) {
    const bool minus = take_minus(text);
    if (text.empty() || !all_digits(text))
        return false;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (error != std::errc() || exponent > LARGEST_EXPONENT)
        exponent = LARGEST_EXPONENT;
    if (minus)
        exponent = -exponent;
    return true;
}

// Sign, digits with one point, an exponent: nothing is rounded, the point is moved.
bool read_decimal(std::string_view text, Decimal &decimal) {
    decimal.minus = take_minus(text);
    int exponent = 0;
    const size_t e = text.find_first_of("eE");
    if (e != std::string_view::npos) {
        if (!read_exponent(text.substr(e + 1), exponent))
            return false;
        text = text.substr(0, e);
    }
    const size_t dot = std::min(text.find('.'), text.size());
    std::string digits(text.substr(0, dot));
    if (dot < text.size())
        digits += text.substr(dot + 1);
    if (digits.empty() || !all_digits(digits))
        return false;

    const int point = static_cast<int>(dot) + exponent;
    if (point < 0)
        digits = std::string(static_cast<size_t>(-point), '0') + digits;
    const auto before = static_cast<size_t>(std::max(point, 0));
    digits.resize(std::max(digits.size(), before), '0');
    decimal.whole = digits.substr(0, before);
    decimal.fraction = digits.substr(before);
    decimal.whole.erase(0, std::min(decimal.whole.find_first_not_of('0'), decimal.whole.size()));
    return true;
}

constexpr size_t MONEY_PLACES = 4;

// The count of ten-thousandths.
std::vector<CS_BYTE> read_money(const Datatype &type, std::string_view literal) {
    Decimal decimal;
    if (!read_decimal(literal, decimal) || decimal.fraction.size() > MONEY_PLACES)
        return {};
    decimal.fraction.resize(MONEY_PLACES, '0');
    const CS_INT width = type.width(0);
    const Range range = {std::numeric_limits<CS_BIGINT>::min() >> (64 - 8 * width), ~CS_UBIGINT(0) >> (65 - 8 * width)};
    const std::vector<CS_BYTE> count =
        read_integer(range, width, std::string(decimal.minus ? 1 : 0, '-') + decimal.digits());
    if (type.form == Form::money4 || count.empty())
        return count;
    const auto whole = value_of<CS_UBIGINT>(count);
    return bytes_of(CS_MONEY{static_cast<CS_INT>(whole >> 32), static_cast<CS_UINT>(whole)});
}

std::string print_money(const Datatype &type, const std::vector<CS_BYTE> &bytes) {
    CS_BIGINT count = value_of<CS_MONEY4>(bytes).mny4;
    if (type.form == Form::money) {
        const auto money = value_of<CS_MONEY>(bytes);
        count = static_cast<CS_BIGINT>(CS_UBIGINT(static_cast<CS_UINT>(money.mnyhigh)) << 32 | money.mnylow);
    }
    const CS_UBIGINT magnitude = count < 0 ? CS_UBIGINT(0) - static_cast<CS_UBIGINT>(count) : CS_UBIGINT(count);
    constexpr CS_UBIGINT UNIT = 10000;
    const std::string fraction = std::to_string(magnitude % UNIT);
    return std::string(count < 0 ? 1 : 0, '-') + std::to_string(magnitude / UNIT) + '.' +
           std::string(MONEY_PLACES - fraction.size(), '0') + fraction;
}

// With the precision and scale that the literal shows: 0.50 has two digits, both behind the point.
std::vector<CS_BYTE> read_numeric(std::string_view literal) {
    Decimal decimal;
    if (!read_decimal(literal, decimal))
        return {};
    std::string text = decimal.digits();
    text.resize(std::max<size_t>(text.size(), 1), '0');
    if (text.size() > CS_MAX_PREC)
        return {};
    CS_NUMERIC numeric = {};
    numeric.precision = static_cast<CS_BYTE>(text.size());
    numeric.scale = static_cast<CS_BYTE>(decimal.fraction.size());
    const size_t point = text.size() - decimal.fraction.size();
    text = std::string(decimal.minus ? 1 : 0, '-') + text.substr(0, point) + '.' + text.substr(point);

    CS_BYTE *array = numeric.array;
    CS_INT length = comn_num_getlen(numeric.precision);
    if (com__subchartoexctnume(text.data(), static_cast<int>(text.size()), &array, &length, &numeric.precision,
                               &numeric.scale, 0) != NUME_OK)
        return {};
    return bytes_of(numeric);
}

std::string print_numeric(const std::vector<CS_BYTE> &bytes) {
    auto numeric = value_of<CS_NUMERIC>(bytes);
    if (numeric.precision < 1 || numeric.precision > CS_MAX_PREC || numeric.scale > CS_MAX_SCALE)
        return std::string(NO_VALUE);
    __CONSTANT record = {};
    record.len = comn_num_getlen(numeric.precision);
    record.prec = numeric.precision;
    record.scale = numeric.scale;
    record.value = numeric.array;
    char text[80]; // a sign, a zero, the point and 77 digits
    const int start = com__subexctnumetochar(&record, text, sizeof text);
    return start < 0 ? std::string(NO_VALUE) : std::string(text + start, text + sizeof text);
}

// ---- Two fields with a colon between: a day, and a time of the day ----

template <class Pair, class Field>
std::vector<CS_BYTE> read_pair(std::string_view literal) {
    const size_t colon = literal.find(':');
    if (colon == std::string_view::npos)
        return {};
    const Range range = {std::numeric_limits<Field>::min(), CS_UBIGINT(std::numeric_limits<Field>::max())};
    std::vector<CS_BYTE> bytes = read_integer(range, sizeof(Field), literal.substr(0, colon));
    const std::vector<CS_BYTE> second = read_integer(range, sizeof(Field), literal.substr(colon + 1));
    bytes.insert(bytes.end(), second.begin(), second.end());
    return bytes.size() == sizeof(Pair) ? bytes : std::vector<CS_BYTE>();
}

// ---- Bytes and text ----

int hex_value(char c) {
    int value = -1;
    std::from_chars(&c, &c + 1, value, 16);
    return value;
}

bool has_hex_prefix(std::string_view text) { return text.starts_with("0x") || text.starts_with("0X"); }

bool read_hexadecimal(std::string_view text, std::vector<CS_BYTE> &bytes) {
    if (!has_hex_prefix(text) || text.size() % 2 != 0)
        return false;
    for (size_t i = 2; i < text.size(); i += 2) {
        const int high = hex_value(text[i]);
        const int low = hex_value(text[i + 1]);
        if (high < 0 || low < 0)
            return false;
        bytes.push_back(static_cast<CS_BYTE>(high << 4 | low));
    }
    return true;
}

constexpr size_t VARIABLE_ROOM = sizeof(CS_VARCHAR::str);

// CS_VARCHAR and CS_VARBINARY have the same layout: a length and 256 bytes.
std::vector<CS_BYTE> variable_record(const std::vector<CS_BYTE> &content) {
    CS_VARBINARY record = {};
    record.len = static_cast<CS_SMALLINT>(content.size());
    std::copy(content.begin(), content.end(), record.array);
    return bytes_of(record);
}

std::vector<CS_BYTE> variable_content(const std::vector<CS_BYTE> &bytes) {
    const auto record = value_of<CS_VARBINARY>(bytes);
    const auto length = static_cast<size_t>(std::clamp<int>(record.len, 0, VARIABLE_ROOM));
    return {record.array, record.array + length};
}

std::string text_of(const std::vector<CS_BYTE> &bytes) { return std::string(bytes.begin(), bytes.end()); }

Maybe<Value> value_from(const Datatype &type, std::vector<CS_BYTE> bytes) {
    Value value;
    value.format.datatype = type.id;
    value.format.maxlength = static_cast<CS_INT>(bytes.size());
    if (type.is_numeric()) {
        value.format.precision = value_of<CS_NUMERIC>(bytes).precision;
        value.format.scale = value_of<CS_NUMERIC>(bytes).scale;
    }
    value.bytes = std::move(bytes);
    return value;
}

Maybe<Value> not_a_value(const Datatype &type, std::string_view literal) {
    return Maybe<Value>::failure(quoted(literal) + " is no " + std::string(type.name) + " value; it takes " +
                                 literal_form(type));
}

// The literal through the conversion that the matrix has from text.
Maybe<Value> read_through_matrix(CS_CONTEXT *context, const Datatype &type, CS_CONV_FUNC function,
                                 std::string_view literal) {
    std::vector<CS_BYTE> text(literal.begin(), literal.end());
    CS_DATAFMT from = {};
    from.datatype = CS_CHAR_TYPE;
    from.maxlength = static_cast<CS_INT>(text.size());
    text.push_back(0); // some readers look for the end of an exponent behind the text
    CS_DATAFMT to = {};
    to.datatype = type.id;
    to.precision = to.scale = CS_VALUE_FROM_SOURCE;
    const CS_INT room = 4 * from.maxlength; // text of any character set grows less than that
    to.maxlength = type.has_room() ? room : type.width(room);
    std::vector<CS_BYTE> bytes(static_cast<size_t>(to.maxlength) + sizeof(CS_VARCHAR));
    CS_INT length = 0;
    if (function(context, &from, text.data(), &to, bytes.data(), &length) != CS_SUCCEED)
        return not_a_value(type, literal);
    bytes.resize(static_cast<size_t>(type.has_room() ? std::clamp(length, 0, room) : to.maxlength));
    return value_from(type, std::move(bytes));
}

bool is_text(const Datatype &type) { return type.form == Form::text || type.form == Form::varchar; }

} // namespace

Maybe<Value> read_literal(CS_CONTEXT *context, const Datatype &type, std::string_view literal) {
    const bool has_own_form_only = is_text(type) || type.form == Form::nothing || type.form == Form::opaque;
    if (has_own_form_only || trimmed(literal).empty())
        return read_own_form(type, literal);
    const CS_CONV_FUNC function = com_conv_func(context, CS_CHAR_TYPE, type.id);
    return function != nullptr ? read_through_matrix(context, type, function, literal) : read_own_form(type, literal);
}

Maybe<Value> read_own_form(const Datatype &type, std::string_view literal) {
    const std::string_view text = trimmed(literal);
    std::vector<CS_BYTE> bytes;
    switch (type.form) {
    case Form::text:
        bytes.assign(literal.begin(), literal.end());
        break;
    case Form::varchar:
        if (literal.size() <= VARIABLE_ROOM)
            bytes = variable_record({literal.begin(), literal.end()});
        break;
    case Form::bytes:
        if (!read_hexadecimal(text, bytes))
            return not_a_value(type, literal);
        return value_from(type, std::move(bytes));
    case Form::varbinary:
        if (read_hexadecimal(text, bytes) && bytes.size() <= VARIABLE_ROOM)
            bytes = variable_record(bytes);
        else
            bytes.clear();
        break;
    case Form::units:
        for (const char c : literal) {
            if (static_cast<unsigned char>(c) >= 0x80)
                return not_a_value(type, literal);
            bytes.push_back(static_cast<CS_BYTE>(c));
            bytes.push_back(0);
        }
        break;
    case Form::signed_integer:
    case Form::unsigned_integer:
        bytes = read_integer(range_of(type), type.width(0), text);
        break;
    case Form::single_float:
        bytes = read_float<CS_REAL>(text);
        break;
    case Form::double_float:
        bytes = read_float<CS_FLOAT>(text);
        break;
    case Form::money:
    case Form::money4:
        bytes = read_money(type, text);
        break;
    case Form::numeric:
        bytes = read_numeric(text);
        break;
    case Form::datetime:
        bytes = read_pair<CS_DATETIME, CS_INT>(text);
        break;
    case Form::datetime4:
        bytes = read_pair<CS_DATETIME4, CS_USHORT>(text);
        break;
    case Form::nothing:
        if (lowercase(text) == "null")
            bytes.push_back(0); // an address, which no conversion reads
        break;
    case Form::opaque:
        break;
    }
    return bytes.empty() ? not_a_value(type, literal) : value_from(type, std::move(bytes));
}

std::string print_own_form(const Datatype &type, const std::vector<CS_BYTE> &bytes) {
    switch (type.form) {
    case Form::text:
        return quoted(text_of(bytes));
    case Form::varchar:
        return quoted(text_of(variable_content(bytes)));
    case Form::units: {
        std::vector<CS_UNICHAR> units;
        for (size_t i = 0; i + 1 < bytes.size(); i += sizeof(CS_UNICHAR))
            units.push_back(static_cast<CS_UNICHAR>(bytes[i] | bytes[i + 1] << 8));
        return quoted_units(units);
    }
    case Form::bytes:
    case Form::opaque:
        return "0x" + hexadecimal(bytes.data(), bytes.size());
    case Form::varbinary: {
        const std::vector<CS_BYTE> content = variable_content(bytes);
        return "0x" + hexadecimal(content.data(), content.size());
    }
    case Form::signed_integer:
    case Form::unsigned_integer:
        return print_integer(type, bytes);
    case Form::single_float:
        return print_float<CS_REAL>(bytes);
    case Form::double_float:
        return print_float<CS_FLOAT>(bytes);
    case Form::money:
    case Form::money4:
        return print_money(type, bytes);
    case Form::numeric:
        return print_numeric(bytes);
    case Form::datetime: {
        const auto value = value_of<CS_DATETIME>(bytes);
        return std::to_string(value.dtdays) + ":" + std::to_string(value.dttime);
    }
    case Form::datetime4: {
        const auto value = value_of<CS_DATETIME4>(bytes);
        return std::to_string(value.days) + ":" + std::to_string(value.minutes);
    }
    case Form::nothing:
        break;
    }
    return std::string(NO_VALUE);
}

Guess guess_datatype(std::string_view literal) {
    std::string_view text = trimmed(literal);
    if (has_hex_prefix(text))
        return {CS_BINARY_TYPE, "it begins with 0x"};
    Decimal decimal;
    if (read_decimal(text, decimal)) {
        if (text.find_first_of("eE") != std::string_view::npos)
            return {CS_FLOAT_TYPE, "it has an exponent"};
        if (text.find('.') != std::string_view::npos)
            return {CS_NUMERIC_TYPE, "it has a decimal point"};
        return read_own_form(datatype(CS_BIGINT_TYPE), text) ? Guess{CS_BIGINT_TYPE, "it is a whole number"}
                                                             : Guess{CS_NUMERIC_TYPE, "it is a large whole number"};
    }
    if (!read_float<CS_FLOAT>(text).empty())
        return {CS_FLOAT_TYPE, "it names a float"};
    return {CS_CHAR_TYPE, "it is no number"};
}

std::string literal_form(const Datatype &type) {
    switch (type.form) {
    case Form::text:
        return "one byte of text or more";
    case Form::varchar:
        return "text of at most 256 bytes";
    case Form::bytes:
        return "hexadecimal digits, two a byte, such as 0x0aff";
    case Form::varbinary:
        return "at most 256 bytes in hexadecimal, such as 0x0aff";
    case Form::units:
        return "ASCII text";
    case Form::signed_integer:
    case Form::unsigned_integer: {
        const Range range = range_of(type);
        return "a whole number from " + std::to_string(range.lowest) + " to " + std::to_string(range.highest) +
               (type.id == CS_BIT_TYPE ? " (above 1 it is a byte that no bit should hold)" : "");
    }
    case Form::single_float:
        return "a number up to 3.4028235e+38, such as -0.5, 6e23, inf or nan";
    case Form::double_float:
        return "a number up to 1.7976931348623157e+308, such as -0.5, 6e23, inf or nan";
    case Form::money:
        return "a number from -922337203685477.5808 to 922337203685477.5807 with at most four decimals";
    case Form::money4:
        return "a number from -214748.3648 to 214748.3647 with at most four decimals";
    case Form::numeric:
        return "a decimal number of at most 77 digits, such as -0.05 or 12e3";
    case Form::datetime:
        return "days since 1900-01-01, a colon and ticks of 1/300 second, such as 36524:12960000";
    case Form::datetime4:
        return "days since 1900-01-01, a colon and minutes, such as 36524:720";
    case Form::nothing:
        return "the word null";
    case Form::opaque:
        break;
    }
    return "no literal";
}

} // namespace client

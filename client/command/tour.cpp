// dlxcomn tour: what conversions and arithmetic do with values that do not fit. Each line is a call. Its chapters on
// text in the languages of the data home are in tour_of_home.cpp.
#include "command.h"

#include "conversion.h"
#include "owner.h"
#include "text.h"
#include "tour.h"

#include <cstring>

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn tour

Shows, a call a line, what the library does with values that do not fit: saturation, rounding,
truncation, and the status that tells of each. Then what it does in the languages and character sets
of the data home.
)";

// The format of a destination as far as a step asks for one.
struct Wanted {
    CS_INT precision = 0;
    CS_INT scale = 0;
    CS_INT room = 0;
    CS_INT format = 0;
};

// With `operation` an arithmetic call of two values of `type`; else a conversion of the first one.
struct Step {
    CS_INT type;
    const char *literal;
    char operation;
    const char *second;
    CS_INT to;
    Wanted wanted;
    const char *remark;
};

constexpr Step conversion(CS_INT from, const char *literal, CS_INT to, const char *remark, Wanted wanted = {}) {
    return {from, literal, 0, nullptr, to, wanted, remark};
}
constexpr Step numeric(const char *literal, char operation, const char *second, const char *remark) {
    return {CS_NUMERIC_TYPE, literal, operation, second, CS_NUMERIC_TYPE, {}, remark};
}
constexpr Step money(const char *literal, char operation, const char *second, const char *remark) {
    return {CS_MONEY_TYPE, literal, operation, second, CS_MONEY_TYPE, {}, remark};
}
constexpr Wanted digits(CS_INT precision, CS_INT scale) { return {precision, scale, 0, 0}; }
constexpr Wanted room(CS_INT bytes, CS_INT format = 0) { return {0, 0, bytes, format}; }

struct Section {
    const char *heading;
    std::vector<Step> steps;
};

std::vector<Section> sections() {
    return {
        {"A number out of range is stored as the nearest one in range, and the status says so.",
         {
             conversion(CS_INT_TYPE, "200", CS_TINYINT_TYPE, ""),
             conversion(CS_INT_TYPE, "70000", CS_USMALLINT_TYPE, ""),
             conversion(CS_INT_TYPE, "-1", CS_TINYINT_TYPE, "below the range"),
             conversion(CS_BIGINT_TYPE, "-1", CS_TINYINT_TYPE, "below, from a bigint"),
             conversion(CS_BIGINT_TYPE, "-3000000000", CS_INT_TYPE, ""),
             conversion(CS_UBIGINT_TYPE, "9223372036854775808", CS_BIGINT_TYPE, ""),
             conversion(CS_BIGINT_TYPE, "9223372036854775807", CS_FLOAT_TYPE, "capped: converts back"),
         }},
        {"A bit takes any number but zero for 1; a byte that is no bit is refused.",
         {
             conversion(CS_BIGINT_TYPE, "-12", CS_BIT_TYPE, ""),
             conversion(CS_FLOAT_TYPE, "nan", CS_BIT_TYPE, ""),
             conversion(CS_BIT_TYPE, "2", CS_INT_TYPE, "nothing is written"),
         }},
        {"As text, integers and floats that do not fit are one asterisk; numerics and bytes are cut.",
         {
             conversion(CS_INT_TYPE, "12345", CS_CHAR_TYPE, "", room(5)),
             conversion(CS_INT_TYPE, "12345", CS_CHAR_TYPE, "", room(4)),
             conversion(CS_INT_TYPE, "12345", CS_CHAR_TYPE, "blank padded", room(8, CS_FORMAT_BLANKPAD)),
             conversion(CS_INT_TYPE, "123", CS_CHAR_TYPE, "no room for the NUL", room(3, CS_FORMAT_NULLTERM)),
             conversion(CS_NUMERIC_TYPE, "123.45", CS_CHAR_TYPE, "", room(5)),
             conversion(CS_INT_TYPE, "258", CS_BINARY_TYPE, "memory order", room(4)),
             conversion(CS_INT_TYPE, "258", CS_BINARY_TYPE, "bytes are cut", room(1)),
         }},
        {"Floats are truncated, judged with their fraction, and shown with 17 digits.",
         {
             conversion(CS_FLOAT_TYPE, "-1.9", CS_INT_TYPE, ""),
             conversion(CS_FLOAT_TYPE, "255.5", CS_TINYINT_TYPE, ""),
             conversion(CS_FLOAT_TYPE, "1e300", CS_REAL_TYPE, ""),
             conversion(CS_FLOAT_TYPE, "0.25", CS_CHAR_TYPE, "no leading zero", room(24)),
             conversion(CS_REAL_TYPE, "0.1", CS_CHAR_TYPE, "", room(24)),
             conversion(CS_FLOAT_TYPE, "0.1", CS_NUMERIC_TYPE, "", digits(20, 18)),
         }},
        {"Numerics are exact to 77 digits. A smaller scale cuts digits, and the status says so.",
         {
             conversion(CS_NUMERIC_TYPE, "12.349", CS_NUMERIC_TYPE, "", digits(10, 2)),
             conversion(CS_NUMERIC_TYPE, "-1.9", CS_INT_TYPE, ""),
             conversion(CS_NUMERIC_TYPE, "2147483647.5", CS_INT_TYPE, ""),
             conversion(CS_NUMERIC_TYPE, "-0.5", CS_UINT_TYPE, ""),
             conversion(CS_INT_TYPE, "123", CS_NUMERIC_TYPE, "three digits for two", digits(2, 0)),
             conversion(CS_INT_TYPE, "123", CS_NUMERIC_TYPE, "", digits(78, 0)),
         }},
        {"Their arithmetic chooses the digits of its results. A quotient is cut, not rounded.",
         {
             numeric("99", '+', "1", ""),
             numeric("0.1", '+', "0.1", ""),
             numeric("12.5", '-', "0.25", ""),
             numeric("9999999999", '*', "9999999999", ""),
             numeric("1", '/', "3", ""),
             numeric("2", '/', "3", ""),
             numeric("1", '/', "0.00", ""),
         }},
        {"Money has four decimals. Products and floats are rounded to them, quotients are cut.",
         {
             conversion(CS_FLOAT_TYPE, "0.00005", CS_MONEY_TYPE, "rounded up"),
             conversion(CS_BIGINT_TYPE, "214749", CS_MONEY4_TYPE, ""),
             money("0.0125", '*', "0.0100", "exactly 0.000125"),
             money("0.0150", '*', "0.0100", "exactly 0.00015"),
             money("2.0000", '/', "3.0000", ""),
             money("922337203685477.5807", '+', "0.0001", "zero is stored"),
             money("0.0100", '*', "0.0050", "exactly 0.00005"),
         }},
    };
}

// ---- Calls ----

std::string destination_name(const Step &step) {
    const Datatype &type = datatype(step.to);
    std::string name(type.name);
    if (type.is_numeric())
        name += "(" + std::to_string(step.wanted.precision) + "," + std::to_string(step.wanted.scale) + ")";
    else if (type.has_room())
        name += "(" + std::to_string(step.wanted.room) + ")";
    return name;
}

void show_conversion(CS_CONTEXT *context, const Step &step) {
    const Datatype &from = datatype(step.type);
    const Datatype &to = datatype(step.to);
    const std::string what = std::string(from.name) + " " + step.literal + " -> " + destination_name(step);
    const Maybe<CS_CONV_FUNC> function = find_conversion(context, from, to);
    const Maybe<Value> value = read_own_form(from, step.literal);
    if (!function || !value) {
        complain(what + ": " + (function ? value.sentence() : function.sentence()));
        return;
    }
    CS_DATAFMT format = {};
    format.datatype = step.to;
    format.precision = step.wanted.precision;
    format.scale = step.wanted.scale;
    format.format = step.wanted.format;
    format.maxlength = to.width(step.wanted.room);
    const Result result = convert(context, *function, *value, format);
    print_step(what, result_text(context, to, result), result.status, step.remark);
}

// The operation on two values of one type, with the result's bytes.
template <class Type>
Result calculate(CS_RETCODE (*function)(Type *, Type *, Type *), const Value &first, const Value &second) {
    Type operands[2] = {};
    std::memcpy(&operands[0], first.bytes.data(), sizeof(Type));
    std::memcpy(&operands[1], second.bytes.data(), sizeof(Type));
    Type answer = {};
    Result result;
    result.status = function(&operands[0], &operands[1], &answer);
    result.written = result.status == CS_SUCCEED;
    result.bytes.resize(sizeof answer);
    std::memcpy(result.bytes.data(), &answer, sizeof answer);
    return result;
}

template <class Type>
struct Operation {
    char sign;
    CS_RETCODE (*function)(Type *, Type *, Type *);
};

constexpr Operation<CS_NUMERIC> NUMERIC_OPERATIONS[] = {
    {'+', comn_numadd}, {'-', comn_numsub}, {'*', comn_nummul}, {'/', comn_numdivide}};
constexpr Operation<CS_MONEY> MONEY_OPERATIONS[] = {
    {'+', comn_mnyadd}, {'-', comn_mnysub}, {'*', comn_mnymul}, {'/', comn_mnydivide}};

template <class Type, size_t COUNT>
Result calculate(const Operation<Type> (&operations)[COUNT], char sign, const Value &first, const Value &second) {
    for (const Operation<Type> &operation : operations)
        if (operation.sign == sign)
            return calculate(operation.function, first, second);
    return {};
}

void show_arithmetic(CS_CONTEXT *context, const Step &step) {
    const Datatype &type = datatype(step.type);
    const std::string what = std::string(type.name) + " " + step.literal + " " + step.operation + " " + step.second;
    const Maybe<Value> first = read_own_form(type, step.literal);
    const Maybe<Value> second = read_own_form(type, step.second);
    if (!first || !second) {
        complain(what + ": " + (first ? second.sentence() : first.sentence()));
        return;
    }
    const bool is_money = step.type == CS_MONEY_TYPE;
    const Result result = is_money ? calculate(MONEY_OPERATIONS, step.operation, *first, *second)
                                   : calculate(NUMERIC_OPERATIONS, step.operation, *first, *second);
    print_step(what, result_text(context, type, result), result.status, step.remark);
}

} // namespace

void print_step(std::string_view what, std::string_view result, CS_RETCODE status, std::string_view remark) {
    constexpr size_t WHAT_WIDTH = 38, RESULT_WIDTH = 22, STATUS_WIDTH = 13;
    std::string line = "  " + left(what, WHAT_WIDTH) + " " + left(result, RESULT_WIDTH) + " " +
                       left(status_name(status), STATUS_WIDTH) + " " + std::string(remark);
    line.erase(line.find_last_not_of(' ') + 1);
    print(line + "\n");
}

int run_tour(const Arguments &arguments) {
    std::vector<Option> options;
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "tour");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    if (!line->operands.empty())
        return misused("tour takes no argument, not " + quoted(line->operands.front()), "tour");

    Owner owner;
    CS_CONTEXT *context = owner.context();
    if (context == nullptr) {
        complain("no memory for a context");
        return FAILED;
    }
    bool is_first = true;
    for (const Section &section : sections()) {
        print(std::string(is_first ? "" : "\n") + section.heading + "\n");
        is_first = false;
        for (const Step &step : section.steps)
            step.operation != 0 ? show_arithmetic(context, step) : show_conversion(context, step);
    }
    return tour_of_home();
}

} // namespace client

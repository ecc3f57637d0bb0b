// dlxcomn convert: values from the command line or standard input, one line of output each.
#include "command.h"

#include "conversion.h"
#include "owner.h"
#include "text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace client {
namespace {

constexpr const char *HELP = R"(usage: dlxcomn convert --to TYPE [OPTION...] [VALUE...]

Converts each VALUE, or each line of standard input when no VALUE is given, and prints a line for
it: the result as text, the status, the length that the conversion told (destlen), and the bytes in
hexadecimal.

  --to TYPE        datatype of the result; `dlxcomn types` lists names and ids
  --from TYPE      datatype of the values. Without it each value is taken for what it looks like:
                     a whole number        bigint, or numeric if it is too large for that
                     with a decimal point  numeric, with the digits that it shows
                     with an exponent      float; so are inf and nan
                     with 0x in front      binary
                     anything else         char
  --precision N    digits of a numeric or decimal result; decimals of money as text. `source` asks
                   for the value's own (CS_VALUE_FROM_SOURCE), which few conversions accept
  --scale N        digits behind the point of a numeric or decimal result; or `source`
                     Without these two a result holds every value of an integer, bit or money
                     source, as many digits as a numeric source, and 60 digits before the point
                     and 17 behind it for a float.
  --length N       room of a text or binary result in bytes (default 256)
  --format LIST    finish of a text or binary result: nullterm, blankpad, zeropad, with commas

Values are written as follows; what the library itself converts from text, it reads.
  text             as it stands
  bytes            0x and hexadecimal digits
  numbers          decimal; money has four decimals at most, an integer none
  datetime         days since 1900-01-01, a colon, ticks of 1/300 second; datetime4 has minutes
  void             null
Behind `--` a VALUE may begin with dashes.

In the output text stands in quotes, with a NUL as \0 and bytes without a glyph as \xHH. A dash
stands where the conversion left nothing. Of a numeric, a varchar and a varbinary only the bytes in
use are shown.

Exit status: 0 all converted; 1 a conversion answered a failure status (the other values are still
done); 2 a value could not be read, or there is no such conversion or datatype.

  dlxcomn convert --to tinyint 42 300 -1
  dlxcomn convert --to numeric --precision 10 --scale 2 12.345
  seq 250 260 | dlxcomn convert --from int --to tinyint
)";

constexpr CS_INT DEFAULT_ROOM = 256;
constexpr CS_INT LARGEST_ROOM = 1 << 24;

struct Request {
    const Datatype *to = nullptr;
    const Datatype *from = nullptr; // null: guessed from each value
    std::optional<CS_INT> precision;
    std::optional<CS_INT> scale;
    CS_INT room = DEFAULT_ROOM;
    CS_INT format = 0;
    std::vector<std::string> values; // none: standard input
};

// Digits before and behind the point that hold every value of a source.
struct Shape {
    CS_INT whole;
    CS_INT fraction;
};

Shape shape_of(const Value &value) {
    const auto whole_numbers = [](CS_INT digits) { return Shape{digits, 0}; };
    switch (value.format.datatype) {
    case CS_NUMERIC_TYPE:
    case CS_DECIMAL_TYPE:
        return {value.format.precision - value.format.scale, value.format.scale};
    case CS_BIT_TYPE:
        return whole_numbers(1);
    case CS_TINYINT_TYPE:
        return whole_numbers(3);
    case CS_SMALLINT_TYPE:
    case CS_USMALLINT_TYPE:
        return whole_numbers(5);
    case CS_INT_TYPE:
    case CS_UINT_TYPE:
        return whole_numbers(10);
    case CS_BIGINT_TYPE:
    case CS_LONG_TYPE:
        return whole_numbers(19);
    case CS_UBIGINT_TYPE:
        return whole_numbers(20);
    case CS_MONEY4_TYPE:
        return {6, 4};
    case CS_MONEY_TYPE:
        return {15, 4};
    case CS_VOID_TYPE:
        return whole_numbers(18);
    case CS_REAL_TYPE:
    case CS_FLOAT_TYPE:
        return {60, 17};
    default:
        return {28, 10};
    }
}

CS_DATAFMT destination_of(const Request &request, const Value &value) {
    CS_DATAFMT format = {};
    format.datatype = request.to->id;
    format.maxlength = request.to->has_room() ? request.room : request.to->width(DEFAULT_ROOM);
    format.format = request.format;
    if (request.to->is_numeric()) {
        const Shape shape = shape_of(value);
        const CS_INT scale = request.scale.value_or(shape.fraction);
        const CS_INT decimals = scale == CS_VALUE_FROM_SOURCE ? shape.fraction : std::clamp(scale, 0, CS_MAX_SCALE);
        const CS_INT digits = std::clamp(shape.whole + decimals, 1, CS_MAX_PREC);
        format.precision = request.precision.value_or(digits);
        // A precision that was asked for leaves no room for more decimals than itself.
        const bool is_bounded = !request.scale && format.precision >= 0;
        format.scale = is_bounded ? std::min(scale, format.precision) : scale;
    } else {
        format.precision = request.precision.value_or(0);
        format.scale = request.scale.value_or(0);
    }
    return format;
}

// The exit code that one value's line leaves.
int convert_value(CS_CONTEXT *context, const Request &request, std::string_view literal) {
    const Guess guess = request.from != nullptr ? Guess{request.from->id, {}} : guess_datatype(literal);
    const Datatype &from = datatype(guess.id);
    const std::string taken = request.from != nullptr
                                  ? ""
                                  : "; " + quoted(literal) + " was taken for " + std::string(from.name) + " as " +
                                        std::string(guess.because) + ", --from says otherwise";
    const Maybe<CS_CONV_FUNC> function = find_conversion(context, from, *request.to);
    if (!function) {
        complain(function.sentence() + taken);
        return MISUSED;
    }
    const Maybe<Value> value = read_literal(context, from, literal);
    if (!value) {
        complain(value.sentence() + taken);
        return MISUSED;
    }

    const Result result = convert(context, *function, *value, destination_of(request, *value));
    const std::string length = result.destlen ? std::to_string(*result.destlen) : "-";
    const std::string bytes = result.written ? hexadecimal(result.bytes.data(), result.bytes.size()) : std::string("-");
    print(left(result_text(context, *request.to, result), 24) + "  " + left(status_name(result.status), 13) + "  " +
          right(length, 3) + "  " + bytes + "\n");
    if (result.broke_contract)
        complain("the library does not take " + quoted(literal) + " here: " + function_name(*function) +
                 " reported a broken contract, which ends a program that does not ask to go on");
    return result.status == CS_SUCCEED && !result.broke_contract ? DONE : FAILED;
}

int convert_lines(CS_CONTEXT *context, const Request &request) {
    int code = DONE;
    char *line = nullptr;
    size_t room = 0;
    ssize_t length = 0;
    errno = 0;
    while ((length = getline(&line, &room, stdin)) >= 0 && print("")) {
        std::string_view literal(line, static_cast<size_t>(length));
        if (literal.ends_with('\n'))
            literal.remove_suffix(1);
        if (literal.ends_with('\r'))
            literal.remove_suffix(1);
        code = std::max(code, convert_value(context, request, literal));
        errno = 0;
    }
    const int error = ferror(stdin) != 0 ? errno : 0;
    std::free(line);
    if (error != 0) {
        complain(std::string("cannot read standard input: ") + std::strerror(error));
        return MISUSED;
    }
    return code;
}

Maybe<CS_INT> parse_room(const std::string &text) {
    if (const std::optional<CS_INT> room = parse_number(text, 0, LARGEST_ROOM))
        return *room;
    return Maybe<CS_INT>::failure("--length takes a whole number from 0 to " + std::to_string(LARGEST_ROOM) + ", not " +
                                  quoted(text));
}

// Any number is handed on: that an impossible one is refused is the conversion's to show.
Maybe<CS_INT> parse_digits(const Option &option) {
    if (*option.value == "source")
        return CS_VALUE_FROM_SOURCE;
    if (const std::optional<CS_INT> digits = parse_number(*option.value, INT32_MIN, INT32_MAX))
        return *digits;
    return Maybe<CS_INT>::failure("--" + std::string(option.name) + " takes a whole number or `source`, not " +
                                  quoted(*option.value));
}

// Stores what was parsed; what was not stays in `wrong`.
template <class Parsed, class Place>
void take(const Maybe<Parsed> &parsed, Place &place, std::string &wrong) {
    if (parsed)
        place = *parsed;
    else
        wrong = parsed.sentence();
}

Maybe<Request> parse_request(const std::vector<Option> &options, std::vector<std::string> values) {
    Request request;
    request.values = std::move(values);
    std::string wrong;
    for (const Option &option : options) {
        if (!option.value || !wrong.empty())
            continue;
        if (option.name == "to")
            take(find_datatype(*option.value), request.to, wrong);
        else if (option.name == "from")
            take(find_datatype(*option.value), request.from, wrong);
        else if (option.name == "precision")
            take(parse_digits(option), request.precision, wrong);
        else if (option.name == "scale")
            take(parse_digits(option), request.scale, wrong);
        else if (option.name == "length")
            take(parse_room(*option.value), request.room, wrong);
        else if (option.name == "format")
            take(parse_format(*option.value), request.format, wrong);
    }
    if (!wrong.empty())
        return Maybe<Request>::failure(wrong);
    if (request.to == nullptr)
        return Maybe<Request>::failure("convert wants --to TYPE");
    return request;
}

} // namespace

int run_convert(const Arguments &arguments) {
    std::vector<Option> options = {{"to"}, {"from"}, {"precision"}, {"scale"}, {"length"}, {"format"}};
    const Maybe<CommandLine> line = parse_command_line(arguments, options);
    if (!line)
        return misused(line.sentence(), "convert");
    if (line->help) {
        print(HELP);
        return DONE;
    }
    const Maybe<Request> request = parse_request(options, line->operands);
    if (!request)
        return misused(request.sentence(), "convert");

    Owner owner;
    CS_CONTEXT *context = owner.context();
    if (context == nullptr) {
        complain("no memory for a context");
        return FAILED;
    }
    if (request->from != nullptr) { // said once, not for each value
        const Maybe<CS_CONV_FUNC> function = find_conversion(context, *request->from, *request->to);
        if (!function)
            return misused(function.sentence(), "convert");
    }
    const ReportsReturn reports_return;
    if (request->values.empty())
        return convert_lines(context, *request);
    int code = DONE;
    for (const std::string &literal : request->values)
        code = std::max(code, convert_value(context, *request, literal));
    return code;
}

} // namespace client

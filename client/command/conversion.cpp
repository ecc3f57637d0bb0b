// One conversion through the matrix, and all that a caller sees of it.
#include "conversion.h"

#include "text.h"

#include <algorithm>
#include <csignal>
#include <cstring>

#include <dlfcn.h>

namespace client {
namespace {

volatile std::sig_atomic_t reports = 0;

// A record, and what padding may write behind a short room.
constexpr size_t SLACK = 512;
constexpr CS_INT UNSET = -1;

// One call on a destination full of `filler`.
struct Call {
    CS_DATAFMT format;
    std::vector<CS_BYTE> bytes;
    CS_INT destlen = UNSET;
    CS_RETCODE status;

    Call(CS_CONTEXT *context, CS_CONV_FUNC function, const Value &value, const CS_DATAFMT &destination, CS_BYTE filler)
        : format(destination), bytes(static_cast<size_t>(destination.maxlength) + SLACK, filler) {
        Value source = value;
        status = function(context, &source.format, source.bytes.data(), &format, bytes.data(), &destlen);
    }
};

// Bytes that carry the value: those behind the digits of a numeric and behind the text of a variable-length
// record have no meaning.
size_t bytes_in_use(const Datatype &type, const Call &call) {
    const size_t told = call.destlen > 0 ? static_cast<size_t>(call.destlen) : 0;
    if (type.form == Form::numeric) {
        const CS_BYTE precision = call.bytes[0];
        const bool is_valid = precision >= 1 && precision <= CS_MAX_PREC;
        const CS_INT digits = is_valid ? comn_num_getlen(precision) : CS_MAX_NUMLEN;
        return std::min(told, offsetof(CS_NUMERIC, array) + static_cast<size_t>(digits));
    }
    if (type.form == Form::varchar || type.form == Form::varbinary) {
        CS_SMALLINT length = 0;
        std::memcpy(&length, call.bytes.data(), sizeof length);
        // The length counts even where destlen is left alone: that is how a bit goes to these types.
        return sizeof length + static_cast<size_t>(std::clamp<int>(length, 0, sizeof(CS_VARCHAR::str)));
    }
    return std::min(told, call.bytes.size());
}

// Whether a failure leaves a value that tells something: saturated, cut or marked as too long.
bool has_usable_value(const Datatype &type, CS_RETCODE status) {
    return !type.is_numeric() || status == CS_SUCCEED || status == CS_ETRUNCATED;
}

// Seventy-seven decimals with a sign are one character more than the conversion to text has room for.
bool is_too_long_for_matrix(const Datatype &type, const std::vector<CS_BYTE> &bytes) {
    return type.is_numeric() && bytes.size() > 2 && bytes[1] == CS_MAX_SCALE && bytes[2] != 0;
}

bool is_shown_as_it_is(const Datatype &type) {
    return type.has_room() || type.form == Form::varchar || type.form == Form::varbinary ||
           type.form == Form::nothing || type.form == Form::opaque;
}

std::optional<std::string> text_through_matrix(CS_CONTEXT *context, const Datatype &type,
                                               const std::vector<CS_BYTE> &bytes) {
    const CS_CONV_FUNC function = com_conv_func(context, type.id, CS_CHAR_TYPE);
    if (function == nullptr || is_too_long_for_matrix(type, bytes))
        return std::nullopt;
    Value value;
    value.format.datatype = type.id;
    value.format.maxlength = static_cast<CS_INT>(bytes.size());
    value.bytes.assign(bytes.size() + sizeof(CS_NUMERIC), 0); // a whole record, though only its bytes in use count
    std::copy(bytes.begin(), bytes.end(), value.bytes.begin());
    CS_DATAFMT to = {};
    to.datatype = CS_CHAR_TYPE;
    to.maxlength = 256;
    to.precision = 4; // money: all its decimals
    const Call call(context, function, value, to, 0);
    if (call.status != CS_SUCCEED || call.destlen < 0 || call.destlen > to.maxlength)
        return std::nullopt;
    return std::string(call.bytes.begin(), call.bytes.begin() + call.destlen);
}

} // namespace

Cell cell(CS_CONTEXT *context, CS_INT from, CS_INT to) {
    const CS_CONV_FUNC function = com_conv_func(context, from, to);
    if (function == nullptr)
        return Cell::empty;
    const bool is_bigint = from == CS_BIGINT_TYPE || from == CS_LONG_TYPE;
    const bool is_bigint_function = function == com_conv_func(context, CS_BIGINT_TYPE, to);
    return is_bigint_function && !is_bigint ? Cell::not_runnable : Cell::filled;
}

std::string function_name(CS_CONV_FUNC function) {
    Dl_info info = {};
    const bool found = dladdr(reinterpret_cast<void *>(function), &info) != 0 && info.dli_sname != nullptr;
    return found ? info.dli_sname : "(a function without a name)";
}

std::vector<const Datatype *> destinations(CS_CONTEXT *context, const Datatype &from) {
    std::vector<const Datatype *> result;
    for (CS_INT to = 0; to < TYPE_COUNT; ++to)
        if (cell(context, from.id, to) == Cell::filled)
            result.push_back(&datatype(to));
    return result;
}

Maybe<CS_CONV_FUNC> find_conversion(CS_CONTEXT *context, const Datatype &from, const Datatype &to) {
    const Cell found = cell(context, from.id, to.id);
    const CS_CONV_FUNC function = com_conv_func(context, from.id, to.id);
    if (found == Cell::filled)
        return function;
    const std::string source(from.name);
    std::string sentence = "no conversion from " + source + " to " + std::string(to.name) + "; ";
    if (found == Cell::not_runnable)
        sentence = "the conversion from " + source + " to " + std::string(to.name) +
                   " cannot run: " + function_name(function) + " takes bigint and long alone; ";
    std::vector<std::string_view> names;
    for (const Datatype *destination : destinations(context, from))
        names.push_back(destination->name);
    return Maybe<CS_CONV_FUNC>::failure(sentence + source + " converts to " +
                                        (names.empty() ? "no datatype" : enumerate(names, "and")));
}

Result convert(CS_CONTEXT *context, CS_CONV_FUNC function, const Value &value, const CS_DATAFMT &destination) {
    const Datatype &type = datatype(destination.datatype);
    const int reports_before = reports;
    const Call call(context, function, value, destination, 0x00);

    Result result;
    result.status = call.status;
    result.broke_contract = reports != reports_before;
    if (call.destlen != UNSET)
        result.destlen = call.destlen;
    const size_t count = bytes_in_use(type, call);
    result.bytes.assign(call.bytes.begin(), call.bytes.begin() + static_cast<ptrdiff_t>(count));
    if (!result.broke_contract && count != 0) {
        // What a second call on other bytes leaves different was not written at all.
        const Call again(context, function, value, destination, 0xFF);
        result.written = std::equal(result.bytes.begin(), result.bytes.end(), again.bytes.begin());
    }
    return result;
}

std::string result_text(CS_CONTEXT *context, const Datatype &type, const Result &result) {
    const bool is_empty_text = result.status == CS_SUCCEED && result.destlen == 0 && type.has_room();
    if (!is_empty_text && (!result.written || !has_usable_value(type, result.status)))
        return "-";
    if (!is_shown_as_it_is(type))
        if (const std::optional<std::string> text = text_through_matrix(context, type, result.bytes))
            return *text;
    return print_own_form(type, result.bytes);
}

ReportsReturn::ReportsReturn() : previous_(std::signal(SIGABRT, [](int) { reports = reports + 1; })) {
    com_toggle_abort(0);
}

ReportsReturn::~ReportsReturn() {
    com_toggle_abort(1);
    std::signal(SIGABRT, previous_);
}

} // namespace client

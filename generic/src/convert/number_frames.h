// The frames that every conversion from a number stands in: what is tested in front, and how a result goes to
// each kind of destination. What the value becomes is a kernel's business.
#ifndef DLX_CONVERT_NUMBER_FRAMES_H
#define DLX_CONVERT_NUMBER_FRAMES_H

#include "frame/conversion.h"
#include "kernel/range.h"

#include <cstddef>
#include <cstring>

namespace dlx {

// Returns a failure through the trace, which then shows the member.
inline CS_RETCODE failed(SourceLine member, CS_RETCODE status) {
    return com_errtrace(status, member.file, member.line);
}

// A core code of the range rules as the status of a call.
inline CS_RETCODE range_status(const Conversion &call, int code) {
    if (code == NUME_OK) [[likely]]
        return CS_SUCCEED;
    return failed(call.member, code == NUME_UNDERFLOW ? CS_EUNDERFLOW : CS_EOVERFLOW);
}

// A bit has bytes that are no value of its type, and so has a numeric. Their members look before they write anything.
template <class Source>
constexpr bool is_value(const typename Source::value_type &) {
    return true;
}
template <>
constexpr bool is_value<Bit>(const CS_BIT &value) {
    return value <= 1;
}

// To a destination of fixed width, whose length is set whether or not the value fits. `convert` takes the value,
// stores the result and answers the status.
template <class Source, class Destination, class Convert>
inline CS_RETCODE to_fixed(const Conversion &call, Convert convert) {
    if (!call.is_sound<Source, Destination>())
        return CS_FAIL;
    const auto value = call.source<Source>();
    if (!is_value<Source>(value))
        return failed(call.member, CS_EDOMAIN);
    *call.destlen = width_of<Destination>;
    return convert(value);
}

// A result of the range rules: the value or the bound in its place.
template <class Source, class Destination>
inline CS_RETCODE put_fitted(const Conversion &call, Fitted<typename Destination::value_type> fitted) {
    call.put<Destination>(fitted.value);
    return range_status(call, code_of_side<typename Source::value_type, typename Destination::value_type>(fitted.side));
}

// ---- Text -----------------------------------------------------------------------------------------------------

// The bytes that text may take; the NUL that CS_FORMAT_NULLTERM asks for has its own.
inline CS_INT text_room(const CS_DATAFMT &format) {
    return format.maxlength - ((format.format & CS_FORMAT_NULLTERM) != 0);
}

// Where the text of a number goes.
struct TextTarget {
    CS_DATAFMT *format;
    char *dest;
    CS_INT *destlen;
};

// The rare ways to finish text, kept out of line so that the everyday one needs no memory for its arguments.
[[gnu::cold, gnu::noinline]] inline CS_RETCODE pad_field(TextTarget target, CS_INT length, SourceLine member) {
    *target.destlen = length;
    const CS_RETCODE status = comn__padchar(length, target.format, target.dest, target.destlen);
    return status == CS_SUCCEED ? status : failed(member, status);
}

// A number is never cut: where its text does not fit, one asterisk stands for it, as in an overflowed field of a
// report. In a room of one byte or none not even that is written.
[[gnu::cold, gnu::noinline]] inline CS_RETCODE put_asterisk(TextTarget target, CS_INT length, SourceLine member) {
    const CS_INT room = target.format->maxlength;
    *target.destlen = room < length ? room : length;
    if (room > 1) {
        *target.dest = '*';
        *target.destlen = 1;
        static_cast<void>(comn__padchar(1, target.format, target.dest, target.destlen));
    }
    return failed(member, CS_EOVERFLOW);
}

// Finishes text that has been written and fits: fields are padded, a NUL alone is put behind it and counted.
inline CS_RETCODE pad_number(const TextTarget &target, CS_INT length, SourceLine member) {
    const CS_INT format = target.format->format;
    if ((format & (CS_FORMAT_ZEROPAD | CS_FORMAT_BLANKPAD)) != 0) [[unlikely]]
        return pad_field(target, length, member);
    if ((format & CS_FORMAT_NULLTERM) != 0)
        target.dest[length++] = '\0';
    *target.destlen = length;
    return CS_SUCCEED;
}

inline CS_RETCODE put_text(const TextTarget &target, const char *text, CS_INT length, SourceLine member) {
    if (length > text_room(*target.format)) [[unlikely]]
        return put_asterisk(target, length, member);
    std::memcpy(target.dest, text, static_cast<std::size_t>(length));
    return pad_number(target, length, member);
}

// The fields of a variable-length record, which need not be aligned. Bytes behind the text stay as they were.
inline char *varchar_text(const Conversion &call) { return static_cast<char *>(call.dest) + offsetof(CS_VARCHAR, str); }
inline void set_varchar_length(const Conversion &call, CS_INT length) {
    store(static_cast<char *>(call.dest) + offsetof(CS_VARCHAR, len), static_cast<CS_SMALLINT>(length));
}

// ---- Numerics -------------------------------------------------------------------------------------------------

// What stands in a descriptor whose CS_VALUE_FROM_SOURCE was taken: a precision or scale that no value has, so the
// converter chooses its own. It then chooses for an array of 10 bytes, which hold every 64-bit integer.
constexpr CS_INT CHOSEN_BY_CONVERTER = 255;
constexpr CS_INT CHOSEN_ARRAY_LENGTH = 10;

// A record that a value converter is to fill.
struct NumericTarget {
    CS_NUMERIC *record;
    CS_BYTE precision;
    CS_BYTE scale;
    int array_length;

    // Answers the converter's NUME_ code.
    template <class Value>
    int fill(int (*converter)(Value, CS_BYTE *, int, CS_BYTE *, CS_BYTE *), Value value) const {
        record->precision = precision;
        record->scale = scale;
        return converter(value, record->array, array_length, &record->precision, &record->scale);
    }
};

// To CS_NUMERIC and CS_DECIMAL. `convert` takes the value and the target, and answers the status.
//
// A scale has no lower bound: its low byte goes into the record. Where that byte is no scale either, which is so for
// CS_VALUE_FROM_SOURCE in a member that does not take it, the caller's code is wrong.
template <class Source, bool TAKES_FROM_SOURCE, class Convert>
inline CS_RETCODE to_numeric(const Conversion &call, Convert convert) {
    if (!call.is_sound<Source, Num>())
        return CS_FAIL;
    const auto value = call.source<Source>();
    if (!is_value<Source>(value))
        return failed(call.member, CS_EDOMAIN);

    CS_DATAFMT &format = *call.destfmt;
    const bool any_precision = TAKES_FROM_SOURCE && format.precision == CS_VALUE_FROM_SOURCE;
    const bool any_scale = TAKES_FROM_SOURCE && format.scale == CS_VALUE_FROM_SOURCE;
    const CS_INT precision = any_precision ? CHOSEN_BY_CONVERTER : format.precision;
    const CS_INT scale = any_scale ? CHOSEN_BY_CONVERTER : format.scale;
    const bool bad_precision = !any_precision && (precision < 1 || precision > CS_MAX_PREC);
    const bool bad_scale = !any_scale && scale > CS_MAX_SCALE;
    const bool can_scale = any_precision || static_cast<CS_BYTE>(scale) <= CS_MAX_SCALE;
    COM_REQUIRE_AT(call.member, bad_precision || bad_scale || can_scale, CS_FAIL);

    *call.destlen = width_of<Num>;
    if (any_precision)
        format.precision = precision;
    if (any_scale)
        format.scale = scale;
    if (bad_precision)
        return failed(call.member, CS_EPRECISION);
    if (bad_scale)
        return failed(call.member, CS_ESCALE);
    return convert(value, NumericTarget{static_cast<CS_NUMERIC *>(call.dest), static_cast<CS_BYTE>(precision),
                                        static_cast<CS_BYTE>(scale),
                                        any_precision ? CHOSEN_ARRAY_LENGTH : comn_num_getlen(precision)});
}

// ---- Bytes ----------------------------------------------------------------------------------------------------

// The members to the binary group test the ids and leave the pointers to the helper, which reports a null one in the
// usual order. A format that is not there has no id to test.
template <class Source, class Destination>
inline bool has_types_where_present(const Conversion &call) {
    COM_REQUIRE_AT(call.member, call.srcfmt == nullptr || Source::serves(call.srcfmt->datatype), false);
    COM_REQUIRE_AT(call.member, call.destfmt == nullptr || Destination::serves(call.destfmt->datatype), false);
    return true;
}

template <class Source>
inline CS_RETCODE number_to_bin(const Conversion &call) {
    if (!has_types_where_present<Source, Bin>(call))
        return CS_FAIL;
    return comn_fixedtobin(call.context, call.srcfmt, call.src, call.destfmt, call.dest, call.destlen,
                           width_of<Source>);
}

template <class Source>
inline CS_RETCODE number_to_varbin(const Conversion &call) {
    if (!has_types_where_present<Source, VarBin>(call))
        return CS_FAIL;
    return comn_fixedtovarbin(call.context, call.srcfmt, call.src, call.destfmt, call.dest, call.destlen,
                              width_of<Source>);
}

} // namespace dlx

#endif

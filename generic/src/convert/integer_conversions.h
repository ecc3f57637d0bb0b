// Conversions from the integers, and from a bit as far as it is one: a kernel for each kind of destination.
#ifndef DLX_CONVERT_INTEGER_CONVERSIONS_H
#define DLX_CONVERT_INTEGER_CONVERSIONS_H

#include "convert/number_frames.h"
#include "kernel/integer_text.h"

#include <type_traits>

namespace dlx {

// The integer that the numeric and money kernels take a source as: unsigned for the unsigned words, of which a
// CS_TINYINT is none.
template <class T>
using Widened = std::conditional_t<sizeof(T) == 8, T,
                                   std::conditional_t<std::is_unsigned_v<T> && (sizeof(T) > 1), CS_UINT, CS_INT>>;

template <class Source>
using WidenedSource = Widened<typename Source::value_type>;

// The entries of the numeric and money kernels, by integer.
template <class Integer>
struct IntegerEntries;
template <>
struct IntegerEntries<CS_INT> {
    static constexpr auto to_numeric = com__longtoexctnume;
    static constexpr auto to_money = com__inttomny;
    static constexpr auto to_money4 = com__inttomny4;
};
template <>
struct IntegerEntries<CS_UINT> {
    static constexpr auto to_numeric = com__ulongtoexctnume;
    static constexpr auto to_money = com__uinttomny;
    static constexpr auto to_money4 = com__uinttomny4;
};
template <>
struct IntegerEntries<CS_BIGINT> {
    static constexpr auto to_numeric = com__longlongtoexctnume;
    static constexpr auto to_money = com__int8tomny;
    static constexpr auto to_money4 = com__int8tomny4;
};
template <>
struct IntegerEntries<CS_UBIGINT> {
    static constexpr auto to_numeric = com__ulonglongtoexctnume;
    static constexpr auto to_money = com__uint8tomny;
    static constexpr auto to_money4 = com__uint8tomny4;
};

template <class Source, class Destination>
inline CS_RETCODE integer_to_integer(const Conversion &call) {
    return to_fixed<Source, Destination>(call, [&call](auto value) {
        return put_fitted<Source, Destination>(call, fit<typename Destination::value_type>(value));
    });
}

template <class Source>
inline CS_RETCODE integer_to_bit(const Conversion &call) {
    return to_fixed<Source, Bit>(call, [&call](auto value) {
        call.put<Bit>(value != 0);
        return CS_SUCCEED;
    });
}

template <class Source, class Destination>
inline CS_RETCODE integer_to_float(const Conversion &call) {
    return to_fixed<Source, Destination>(call, [&call](auto value) {
        call.put<Destination>(to_float<typename Destination::value_type>(value));
        return CS_SUCCEED;
    });
}

template <class Source, bool TAKES_FROM_SOURCE = false>
inline CS_RETCODE integer_to_num(const Conversion &call) {
    return to_numeric<Source, TAKES_FROM_SOURCE>(call, [&call](auto value, const NumericTarget &target) {
        using Entries = IntegerEntries<WidenedSource<Source>>;
        const int code = target.fill(Entries::to_numeric, WidenedSource<Source>(value));
        COM_REQUIRE_AT(call.member, code == NUME_OK || code == NUME_OVERFLOW, CS_RETCODE(CS_FAIL));
        return range_status(call, code);
    });
}

// To money. The money kernels store something in every case, so the record is made here and copied: a destination
// need not be aligned for it.
template <class Source, class Destination, class Entry>
inline CS_RETCODE integer_to_money_by(const Conversion &call, Entry entry) {
    return to_fixed<Source, Destination>(call, [&call, entry](auto source) {
        typename Destination::value_type money = {};
        WidenedSource<Source> value = source;
        const int code = entry(&money, &value);
        call.put<Destination>(money);
        return code == NUME_OVERFLOW ? failed(call.member, CS_EOVERFLOW) : CS_SUCCEED;
    });
}

template <class Source>
inline CS_RETCODE integer_to_money(const Conversion &call) {
    return integer_to_money_by<Source, Money>(call, IntegerEntries<WidenedSource<Source>>::to_money);
}

template <class Source>
inline CS_RETCODE integer_to_mny4(const Conversion &call) {
    return integer_to_money_by<Source, Mny4>(call, IntegerEntries<WidenedSource<Source>>::to_money4);
}

// The text is written in its place at once. Only a room that some value of the type would not fit asks for the length
// before.
template <class Source>
inline CS_RETCODE integer_to_char(const Conversion &call) {
    if (!call.is_sound<Source, Char>() || !call.has_room())
        return CS_FAIL;
    using Value = typename Source::value_type;
    const Value value = call.source<Source>();
    const TextTarget target = {call.destfmt, static_cast<char *>(call.dest), call.destlen};
    const CS_INT room = text_room(*target.format);
    if (room < integer_text_max<Value>) {
        const CS_INT length = integer_text_length(value);
        if (length > room) [[unlikely]]
            return put_asterisk(target, length, call.member);
    }
    const auto length = static_cast<CS_INT>(write_integer(value, target.dest) - target.dest);
    return pad_number(target, length, call.member);
}

// The NUL behind the text is not counted.
template <class Source>
inline CS_RETCODE integer_to_varchar(const Conversion &call) {
    if (!call.is_sound<Source, VarChar>())
        return CS_FAIL;
    static_assert(integer_text_max<typename Source::value_type> < sizeof(CS_VARCHAR::str));
    const auto value = call.source<Source>();
    *call.destlen = sizeof(CS_VARCHAR);
    char *text = varchar_text(call);
    char *end = write_integer(value, text);
    *end = '\0';
    set_varchar_length(call, static_cast<CS_INT>(end - text));
    return CS_SUCCEED;
}

} // namespace dlx

#endif

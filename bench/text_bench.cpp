// Integers and doubles as text: whole conversions through the library's contract (checks, room, terminator)
// against functions that only write digits.
#include "contest.h"
#include "data.h"
#include "owner.h"

#include <double-conversion/double-conversion.h>
#include <fmt/compile.h>
#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace bench {
namespace {

constexpr std::size_t ROOM = 64;

// The conversion `member` of the library, into text with a NUL.
template <class T, CS_INT TYPE, CS_CONVERSION *MEMBER>
class LibraryText {
public:
    explicit LibraryText(const std::vector<T> &values) : values_(values) {
        srcfmt_.datatype = TYPE;
        srcfmt_.maxlength = sizeof(T);
        destfmt_.datatype = CS_CHAR_TYPE;
        destfmt_.maxlength = ROOM;
        destfmt_.format = CS_FORMAT_NULLTERM;
    }
    void work(std::size_t i) { status_ = MEMBER(owner_.context(), &srcfmt_, &values_[i], &destfmt_, text_, &destlen_); }
    bool right(std::size_t i) const {
        const std::string expected = told_text(values_[i]);
        return status_ == CS_SUCCEED && destlen_ == static_cast<CS_INT>(expected.size()) + 1 && expected == text_;
    }

private:
    static std::string told_text(T value) {
        if constexpr (std::is_integral_v<T>) {
            return std::to_string(value);
        } else {
            char printed[ROOM];
            std::snprintf(printed, sizeof printed, "%.17g", value);
            std::string text = printed;
            if (text.starts_with("0."))
                text.erase(0, 1);
            return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
        }
    }

    client::Owner owner_;
    CS_DATAFMT srcfmt_ = {};
    CS_DATAFMT destfmt_ = {};
    std::vector<T> values_;
    char text_[ROOM];
    CS_INT destlen_ = 0;
    CS_RETCODE status_ = CS_FAIL;
};

// ---- Integers -----------------------------------------------------------------------------------------------

template <class T>
class SnprintfInteger {
public:
    explicit SnprintfInteger(const std::vector<T> &values) : values_(values) {}
    void work(std::size_t i) { length_ = std::snprintf(text_, sizeof text_, FORMAT, values_[i]); }
    bool right(std::size_t i) const { return std::to_string(values_[i]) == text_; }

private:
    static constexpr const char *FORMAT = sizeof(T) == 4 ? "%d" : "%ld";
    const std::vector<T> &values_;
    char text_[ROOM];
    int length_ = 0;
};

template <class T>
class FmtInteger {
public:
    explicit FmtInteger(const std::vector<T> &values) : values_(values) {}
    void work(std::size_t i) {
        fmt::format_int formatted(values_[i]);
        benchmark::DoNotOptimize(formatted.data());
        benchmark::DoNotOptimize(formatted.size());
    }
    bool right(std::size_t i) const {
        const fmt::format_int formatted(values_[i]);
        return std::to_string(values_[i]) == std::string_view(formatted.data(), formatted.size());
    }

private:
    const std::vector<T> &values_;
};

template <class T>
class ToCharsInteger {
public:
    explicit ToCharsInteger(const std::vector<T> &values) : values_(values) {}
    void work(std::size_t i) { end_ = std::to_chars(text_, text_ + sizeof text_, values_[i]).ptr; }
    bool right(std::size_t i) const {
        return std::to_string(values_[i]) == std::string_view(text_, static_cast<std::size_t>(end_ - text_));
    }

private:
    const std::vector<T> &values_;
    char text_[ROOM];
    char *end_ = text_;
};

template <class T, CS_INT TYPE, CS_CONVERSION *MEMBER>
void enter_integer_row(const std::string &row, const std::vector<T> &values) {
    enter<LibraryText<T, TYPE, MEMBER>>(row, LIBRARY, values);
    enter<SnprintfInteger<T>>(row, "snprintf", values);
    enter<FmtInteger<T>>(row, "fmt::format_int", values);
    enter<ToCharsInteger<T>>(row, "std::to_chars", values);
}

// ---- Doubles, 17 significant digits -------------------------------------------------------------------------

// Every peer writes the value in its own style; what they share is that it reads back as the same double.
class DoublePeer {
public:
    explicit DoublePeer(const std::vector<double> &values) : values_(values) {}
    bool right(std::size_t i) const {
        const std::string text(text_, static_cast<std::size_t>(length_));
        return std::strtod(text.c_str(), nullptr) == values_[i];
    }

protected:
    const std::vector<double> &values_;
    char text_[ROOM];
    std::ptrdiff_t length_ = 0;
};

class SnprintfDouble : public DoublePeer {
public:
    using DoublePeer::DoublePeer;
    void work(std::size_t i) { length_ = std::snprintf(text_, sizeof text_, "%.17g", values_[i]); }
};

class DoubleConversion : public DoublePeer {
public:
    using DoublePeer::DoublePeer;
    void work(std::size_t i) {
        double_conversion::StringBuilder builder(text_, sizeof text_);
        converter_.ToPrecision(values_[i], 17, &builder);
        length_ = builder.position();
        builder.Finalize();
    }

private:
    double_conversion::DoubleToStringConverter converter_{
        double_conversion::DoubleToStringConverter::EMIT_POSITIVE_EXPONENT_SIGN, "inf", "nan", 'e', -5, 17, 4, 0};
};

class FmtDouble : public DoublePeer {
public:
    using DoublePeer::DoublePeer;
    void work(std::size_t i) { length_ = fmt::format_to(text_, FMT_COMPILE("{:.17g}"), values_[i]) - text_; }
};

class ToCharsDouble : public DoublePeer {
public:
    using DoublePeer::DoublePeer;
    void work(std::size_t i) {
        length_ = std::to_chars(text_, text_ + sizeof text_, values_[i], std::chars_format::general, 17).ptr - text_;
    }
};

void enter_double_row(const std::string &row, const std::vector<double> &values) {
    enter<LibraryText<double, CS_FLOAT_TYPE, comn_flt8tochar>>(row, LIBRARY, values);
    enter<SnprintfDouble>(row, "snprintf", values);
    enter<DoubleConversion>(row, "double-conversion", values);
    enter<FmtDouble>(row, "fmt", values);
    enter<ToCharsDouble>(row, "std::to_chars", values);
}

} // namespace

void enter_text_rows() {
    static const std::vector<CS_INT> ints = mixed_integers<CS_INT>(1);
    static const std::vector<CS_BIGINT> bigints = mixed_integers<CS_BIGINT>(2);
    enter_integer_row<CS_INT, CS_INT_TYPE, comn_i4tochar>("comn_i4tochar", ints);
    enter_integer_row<CS_BIGINT, CS_BIGINT_TYPE, comn_i8tochar>("comn_i8tochar", bigints);

    static const std::vector<double> everyday = everyday_doubles(3);
    static const std::vector<double> short_decimals = short_doubles(4);
    static const std::vector<double> any = any_doubles(5);
    enter_double_row("comn_flt8tochar everyday", everyday);
    enter_double_row("comn_flt8tochar short decimals", short_decimals);
    enter_double_row("comn_flt8tochar any bits", any);
}

} // namespace bench

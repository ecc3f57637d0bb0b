// Numerics and text, both ways. The text that this library and pgtypes read and write has a sign and a point;
// integers have no point, so GMP and Boost get the same digits without it.
#include "peers.h"

#include <cstring>

namespace bench {
namespace {

// 80 bytes hold any numeric, and GMP's text with its NUL.
constexpr int TEXT_ROOM = 80;

struct Column {
    int digits;
    int scale;
    std::vector<Decimal> values;
    std::vector<std::string> texts;       // "-1234.56"
    std::vector<std::string> count_texts; // "-123456"

    Column(int d, int s, std::uint64_t seed) : digits(d), scale(s), values(decimals(d, s, seed)) {
        for (const Decimal &value : values) {
            texts.push_back(value.text());
            count_texts.push_back(value.count.get_str());
        }
    }
};

// ---- From text ----------------------------------------------------------------------------------------------

class LibraryFromText {
public:
    explicit LibraryFromText(const Column &column) : column_(column), texts_(column.texts) {}
    void work(std::size_t i) {
        result_.precision = static_cast<CS_BYTE>(column_.digits);
        result_.scale = static_cast<CS_BYTE>(column_.scale);
        CS_BYTE *dest = result_.array;
        CS_INT destlen = comn_num_getlen(column_.digits);
        code_ = com__subchartoexctnume(texts_[i].data(), static_cast<int>(texts_[i].size()), &dest, &destlen,
                                       &result_.precision, &result_.scale, 0);
    }
    bool right(std::size_t i) const {
        return code_ == NUME_OK && result_.scale == column_.scale && is_equal(from_numeric(result_), column_.values[i]);
    }

private:
    const Column &column_;
    std::vector<std::string> texts_;
    CS_NUMERIC result_ = {};
    int code_ = NUME_BADVALUE;
};

class PgtypesFromText {
public:
    explicit PgtypesFromText(const Column &column) : column_(column), texts_(column.texts) {}
    void work(std::size_t i) { result_.reset(PGTYPESnumeric_from_asc(texts_[i].data(), nullptr)); }
    bool right(std::size_t i) const { return result_ && is_equal(from_pgtypes(result_.get()), column_.values[i]); }

private:
    const Column &column_;
    std::vector<std::string> texts_;
    Pgtypes result_;
};

class GmpFromText {
public:
    explicit GmpFromText(const Column &column) : column_(column) {}
    void work(std::size_t i) { code_ = mpz_set_str(result_.get_mpz_t(), column_.count_texts[i].c_str(), 10); }
    bool right(std::size_t i) const { return code_ == 0 && result_ == column_.values[i].count; }

private:
    const Column &column_;
    mpz_class result_;
    int code_ = -1;
};

class BoostFromText {
public:
    explicit BoostFromText(const Column &column) : column_(column) {}
    void work(std::size_t i) { result_.assign(column_.count_texts[i].c_str()); }
    bool right(std::size_t i) const { return from_int512(result_) == column_.values[i].count; }

private:
    const Column &column_;
    Int512 result_;
};

// ---- To text ------------------------------------------------------------------------------------------------

class LibraryToText {
public:
    explicit LibraryToText(const Column &data)
        : texts_(data.texts),
          values_(column(data.values, [&](const Decimal &value) { return to_numeric(value, data.digits); })) {}
    void work(std::size_t i) {
        CS_NUMERIC &value = values_[i];
        __CONSTANT record;
        record.len = comn_num_getlen(value.precision);
        record.prec = value.precision;
        record.scale = value.scale;
        record.value = value.array;
        start_ = com__subexctnumetochar(&record, text_, TEXT_ROOM);
    }
    bool right(std::size_t i) const {
        return start_ >= 0 && std::string(text_ + start_, text_ + TEXT_ROOM) == texts_[i];
    }

private:
    const std::vector<std::string> &texts_;
    std::vector<CS_NUMERIC> values_;
    char text_[TEXT_ROOM];
    int start_ = -1;
};

class PgtypesToText {
public:
    explicit PgtypesToText(const Column &data) : data_(data), values_(column(data.values, to_pgtypes)) {}
    void work(std::size_t i) {
        PGTYPESchar_free(text_);
        text_ = PGTYPESnumeric_to_asc(values_[i].get(), data_.scale);
    }
    bool right(std::size_t i) const { return text_ != nullptr && text_ == data_.texts[i]; }
    ~PgtypesToText() { PGTYPESchar_free(text_); }

private:
    const Column &data_;
    std::vector<Pgtypes> values_;
    char *text_ = nullptr;
};

class GmpToText {
public:
    explicit GmpToText(const Column &data) : data_(data) {}
    void work(std::size_t i) { mpz_get_str(text_, 10, data_.values[i].count.get_mpz_t()); }
    bool right(std::size_t i) const { return text_ == data_.count_texts[i]; }

private:
    const Column &data_;
    char text_[TEXT_ROOM];
};

class BoostToText {
public:
    explicit BoostToText(const Column &data)
        : data_(data), values_(column(data.values, [](const Decimal &value) { return to_int512(value.count); })) {}
    void work(std::size_t i) { text_ = values_[i].str(); } // the only way there is: into a string of its own
    bool right(std::size_t i) const { return text_ == data_.count_texts[i]; }

private:
    const Column &data_;
    std::vector<Int512> values_;
    std::string text_;
};

} // namespace

void enter_numeric_text_rows() {
    static const Column columns[] = {{18, 4, 20}, {38, 10, 21}, {75, 20, 22}};
    for (const Column &column : columns) {
        const std::string row = "com__subchartoexctnume " + std::to_string(column.digits);
        enter<LibraryFromText>(row, LIBRARY, column);
        enter<PgtypesFromText>(row, "pgtypes", column);
        enter<GmpFromText>(row, "GMP", column);
        enter<BoostFromText>(row, "Boost int512_t", column);
    }
    for (const Column &column : columns) {
        const std::string row = "com__subexctnumetochar " + std::to_string(column.digits);
        enter<LibraryToText>(row, LIBRARY, column);
        enter<PgtypesToText>(row, "pgtypes", column);
        enter<GmpToText>(row, "GMP", column);
        enter<BoostToText>(row, "Boost int512_t", column);
    }
}

} // namespace bench

#include "decoder.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>

#include <iconv.h>

namespace home {
namespace {

class IconvDecoder : public Decoder {
public:
    explicit IconvDecoder(const char *name) : handle_(iconv_open("UTF-32LE", name)) {
        if (handle_ == reinterpret_cast<iconv_t>(-1))
            throw std::runtime_error(std::string("iconv does not have ") + name);
    }
    ~IconvDecoder() override { iconv_close(handle_); }

    std::optional<char32_t> character(std::string_view bytes) override {
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        char32_t text[4];
        char *to = reinterpret_cast<char *>(text);
        std::size_t room = sizeof text;
        char *from = const_cast<char *>(bytes.data());
        std::size_t left = bytes.size();
        if (iconv(handle_, &from, &left, &to, &room) != 0 || left != 0)
            return std::nullopt;
        // A character that might be combined with a next one is held back until now.
        if (iconv(handle_, nullptr, nullptr, &to, &room) != 0 || room != sizeof text - sizeof *text)
            return std::nullopt;
        return text[0];
    }

private:
    iconv_t handle_;
};

class IcuDecoder : public Decoder {
public:
    explicit IcuDecoder(const char *name) {
        UErrorCode error = U_ZERO_ERROR;
        converter_.reset(ucnv_open(name, &error));
        if (U_SUCCESS(error))
            ucnv_setToUCallBack(converter_.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        if (U_FAILURE(error))
            throw std::runtime_error(std::string("ICU does not have ") + name);
    }

    std::optional<char32_t> character(std::string_view bytes) override {
        ucnv_resetToUnicode(converter_.get());
        UErrorCode error = U_ZERO_ERROR;
        UChar text[4];
        const int32_t units = ucnv_toUChars(converter_.get(), text, std::size(text), bytes.data(),
                                            static_cast<int32_t>(bytes.size()), &error);
        if (U_FAILURE(error) || units == 0)
            return std::nullopt;
        int32_t at = 0;
        UChar32 character;
        U16_NEXT(text, at, units, character);
        return at == units ? std::optional<char32_t>(character) : std::nullopt;
    }

private:
    struct Close {
        void operator()(UConverter *converter) const { ucnv_close(converter); }
    };
    std::unique_ptr<UConverter, Close> converter_;
};

// TIS 620 with typographic signs, and with its marks once more in places that suit tall letters. Of these the plain
// marks are told.
class MacThaiDecoder : public Decoder {
public:
    std::optional<char32_t> character(std::string_view bytes) override {
        if (bytes.size() != 1)
            return std::nullopt;
        const int code = static_cast<unsigned char>(bytes[0]);
        if (code >= 0x80 && code <= 0xA0)
            return known(SIGNS[code - 0x80]);
        const auto *const other = std::ranges::find(OTHERS, code, &Other::code);
        return other != std::end(OTHERS) ? known(other->character) : thai_.character(bytes);
    }

private:
    static constexpr char32_t SIGNS[] = {0x00AB, 0x00BB, 0x2026, 0x0E48, 0x0E49, 0x0E4A, 0x0E4B, 0x0E4C, 0x0E48,
                                         0x0E49, 0x0E4A, 0x0E4B, 0x0E4C, 0x201C, 0x201D, 0x0E4D, 0,      0x2022,
                                         0x0E31, 0x0E47, 0x0E34, 0x0E35, 0x0E36, 0x0E37, 0x0E48, 0x0E49, 0x0E4A,
                                         0x0E4B, 0x0E4C, 0x2018, 0x2019, 0,      0x00A0};
    struct Other {
        int code;
        char32_t character;
    };
    static constexpr Other OTHERS[] = {{0xDB, 0x2060}, {0xDC, 0x200B}, {0xDD, 0x2013}, {0xDE, 0x2014},
                                       {0xEE, 0x2122}, {0xFA, 0x00AE}, {0xFB, 0x00A9}};

    static std::optional<char32_t> known(char32_t character) {
        return character != 0 ? std::optional(character) : std::nullopt;
    }

    IconvDecoder thai_{"TIS-620"};
};

} // namespace

std::unique_ptr<Decoder> decoder_of(const Set &set) {
    switch (set.source) {
    case Source::iconv:
        return std::make_unique<IconvDecoder>(set.source_name);
    case Source::icu:
        return std::make_unique<IcuDecoder>(set.source_name);
    case Source::mac_thai:
        return std::make_unique<MacThaiDecoder>();
    }
    throw std::logic_error("no such source");
}

} // namespace home

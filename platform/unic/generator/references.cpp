// What the C library and ICU know of a character set, a code or a character at a time.
#include "mapping.h"

#include <cerrno>

#include <iconv.h>
#include <unicode/ucnv.h>

namespace unic_tables {
namespace {

class IconvReference : public Reference {
public:
    IconvReference(iconv_t decoder, iconv_t encoder) : decoder_(decoder), encoder_(encoder) {}
    ~IconvReference() override {
        iconv_close(decoder_);
        iconv_close(encoder_);
    }

    Answer decode(const std::string &bytes) override {
        char32_t out[8] = {};
        iconv(decoder_, nullptr, nullptr, nullptr, nullptr);
        auto *in = const_cast<char *>(bytes.data());
        auto *to = reinterpret_cast<char *>(out);
        std::size_t in_left = bytes.size(), left = sizeof out;
        if (iconv(decoder_, &in, &in_left, &to, &left) != 0)
            return {errno == EINVAL ? Answer::BEGINNING : Answer::NOTHING, {}};
        // A character that could become part of another is held back until now.
        if (iconv(decoder_, nullptr, nullptr, &to, &left) != 0)
            return {};
        const std::size_t count = (sizeof out - left) / sizeof(char32_t);
        if (count > 2)
            fail("a code of more than two characters");
        return {count == 0 ? Answer::NOTHING : Answer::CHARACTERS, {out[0], out[1]}};
    }

    std::string encode(char32_t character) override {
        char out[16];
        iconv(encoder_, nullptr, nullptr, nullptr, nullptr);
        auto *in = reinterpret_cast<char *>(&character);
        char *to = out;
        std::size_t in_left = sizeof character, left = sizeof out;
        if (iconv(encoder_, &in, &in_left, &to, &left) != 0 || iconv(encoder_, nullptr, nullptr, &to, &left) != 0)
            return {};
        return {out, sizeof out - left};
    }

private:
    iconv_t decoder_, encoder_;
};

class IcuReference : public Reference {
public:
    explicit IcuReference(UConverter *converter) : converter_(converter) {
        UErrorCode error = U_ZERO_ERROR;
        ucnv_setToUCallBack(converter_, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFromUCallBack(converter_, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFallback(converter_, false);
        if (U_FAILURE(error))
            fail(u_errorName(error));
    }
    ~IcuReference() override { ucnv_close(converter_); }

    Answer decode(const std::string &bytes) override {
        ucnv_reset(converter_);
        char16_t out[8];
        char16_t *to = out;
        const char *in = bytes.data();
        UErrorCode error = U_ZERO_ERROR;
        ucnv_toUnicode(converter_, &to, out + 8, &in, in + bytes.size(), nullptr, true, &error);
        if (U_FAILURE(error))
            return {error == U_TRUNCATED_CHAR_FOUND ? Answer::BEGINNING : Answer::NOTHING, {}};
        Answer answer;
        int count = 0;
        for (const char16_t *p = out; p != to; ++count) {
            if (count == 2)
                fail("a code of more than two characters");
            char32_t c = *p++;
            if (c >= 0xD800 && c < 0xDC00)
                c = (c << 10) + *p++ - 0x35FDC00;
            answer.characters[static_cast<std::size_t>(count)] = c;
        }
        if (count != 0)
            answer.kind = Answer::CHARACTERS;
        return answer;
    }

    std::string encode(char32_t character) override {
        ucnv_reset(converter_);
        char16_t units[2] = {static_cast<char16_t>(character), 0};
        if (character > 0xFFFF) {
            units[0] = static_cast<char16_t>(0xD7C0 + (character >> 10));
            units[1] = static_cast<char16_t>(0xDC00 | (character & 0x3FF));
        }
        const char16_t *in = units;
        char out[16];
        char *to = out;
        UErrorCode error = U_ZERO_ERROR;
        ucnv_fromUnicode(converter_, &to, out + sizeof out, &in, units + (character > 0xFFFF ? 2 : 1), nullptr, true,
                         &error);
        return U_FAILURE(error) ? std::string() : std::string(out, to);
    }

private:
    UConverter *converter_;
};

} // namespace

std::unique_ptr<Reference> open_iconv(const std::string &name) {
    const auto none = reinterpret_cast<iconv_t>(-1);
    const iconv_t decoder = iconv_open("UTF-32LE", name.c_str());
    if (decoder == none)
        return nullptr;
    const iconv_t encoder = iconv_open(name.c_str(), "UTF-32LE");
    if (encoder == none) {
        iconv_close(decoder);
        return nullptr;
    }
    return std::make_unique<IconvReference>(decoder, encoder);
}

std::unique_ptr<Reference> open_icu(const std::string &name) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(name.c_str(), &error);
    return U_FAILURE(error) ? nullptr : std::make_unique<IcuReference>(converter);
}

} // namespace unic_tables

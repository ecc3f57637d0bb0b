// The doubling of quotes in a chosen set, text and room, against the naive version. Neither buffer has a byte
// to spare, so a character that the source's end cuts must not be read beyond it.
#include "character_set.h"
#include "support/naive_escape.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    fuzz::Input input(data, size);
    fuzz::ChosenSet set(input);
    const CS_BYTE quote = input.byte();
    const CS_BYTE format = input.byte();
    const std::size_t room = input.byte();
    const std::string text = input.rest();

    CS_DATAFMT srcfmt = {};
    srcfmt.maxlength = static_cast<CS_INT>(text.size());
    srcfmt.format = format;
    CS_DATAFMT destfmt = {};
    destfmt.maxlength = static_cast<CS_INT>(room);
    destfmt.format = format >> 4; // means nothing here
    fuzz::ExactBuffer src(text.size(), text);
    fuzz::ExactBuffer dest(room);
    CS_INT destlen = -5;
    const CS_RETCODE status = comn__escchar(src.get(), &srcfmt, dest.get(), &destfmt, &destlen, set.get(), quote);

    const support::naive::Escaped expected =
        support::naive::escchar(set.get(), text, (format & CS_FORMAT_NULLTERM) != 0, room, quote);
    FUZZ_CHECK(status == expected.status);
    FUZZ_CHECK(destlen == static_cast<CS_INT>(expected.bytes.size()));
    FUZZ_CHECK(dest.first(expected.bytes.size()) == expected.bytes);
    FUZZ_CHECK(dest.all().find_first_not_of('\xEE', expected.bytes.size()) == std::string::npos);
    FUZZ_CHECK(src.all() == text);
    return 0;
}

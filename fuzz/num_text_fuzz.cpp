// Numeric text at any length, precision, scale and flag against the rule restated on big integers; and what was read
// must write the text that the value has.
#include "input.h"
#include "support/numeric_text_reference.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    fuzz::Input input(data, size);
    support::TextCall call;
    call.destlen = input.byte() % 33;
    call.destlen += call.destlen != 0; // 0, which means 33, or 2 to 33
    call.precision = input.byte();
    call.scale = input.byte();
    call.flag = input.byte() % 3;
    const int behind = input.byte() % 4; // bytes that the length leaves out
    call.text = input.rest();
    call.len = static_cast<int>(call.text.size()) - behind; // can be negative

    bool intact = false;
    const support::TextResult actual = support::read_by_library(call, &intact);
    const support::TextResult expected = support::TextReference::read(call);
    if (!intact || actual != expected)
        std::fprintf(stderr, "%s\nlibrary   %s\nreference %s\n", support::describe(call).c_str(),
                     support::describe(actual).c_str(), support::describe(expected).c_str());
    FUZZ_CHECK(intact);
    FUZZ_CHECK(actual == expected);

    if (actual.code == NUME_OK) {
        mpz_class value = support::magnitude_of(actual.value.data(), actual.destlen);
        if (actual.value[0] != 0)
            value = -value;
        support::Record record(value, actual.scale, actual.destlen);
        const std::string plain = support::decimal_text(value, actual.scale);
        fuzz::ExactBuffer room(plain.size());
        FUZZ_CHECK(com__subexctnumetochar(&record, reinterpret_cast<char *>(room.get()),
                                          static_cast<int>(plain.size())) == 0);
        FUZZ_CHECK(room.all() == plain);
        FUZZ_CHECK(com__subexctnumetochar(&record, reinterpret_cast<char *>(room.get()),
                                          static_cast<int>(plain.size()) - 1) == -1);
    }
    return 0;
}

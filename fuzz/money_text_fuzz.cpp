// Money text in a chosen set, on a buffer without a spare byte, against the rules restated one by one; and what was
// read written again, at a room and in a style that the input chooses.
#include "character_set.h"
#include "support/money_text.h"

#include <limits>

using fuzz::ExactBuffer;

namespace {

void check_read(CS_ATTRIB *ca, const std::string &text) {
    const support::Answer told = support::told_read(text, ca);
    ExactBuffer exact(text.size(), text);
    auto *const chars = reinterpret_cast<char *>(exact.get());
    const int length = static_cast<int>(text.size());

    CS_MONEY value = support::money(support::UNWRITTEN);
    FUZZ_CHECK(com__mnyfromchar_mb(&value, chars, length, 0, ca) == told.code);
    FUZZ_CHECK(support::count_of(value) == told.count);

    constexpr CS_INT LOW = std::numeric_limits<CS_INT>::min(), HIGH = std::numeric_limits<CS_INT>::max();
    const bool fits = told.count >= LOW && told.count <= HIGH;
    CS_MONEY4 narrow = support::money4(-77);
    FUZZ_CHECK(com__mny4fromchar_mb(&narrow, chars, length, 0, ca) == (told.code != 0 ? told.code : !fits));
    FUZZ_CHECK(narrow.mny4 == (told.code != 0 ? 0 : told.count < LOW ? LOW : told.count > HIGH ? HIGH : told.count));
}

void check_write(std::int64_t count, int room, int style) {
    constexpr char GROUND = '#';
    const support::ToldText told = support::told_write(count, room, style, GROUND);
    ExactBuffer exact(static_cast<std::size_t>(room), static_cast<CS_BYTE>(GROUND));
    auto *const chars = reinterpret_cast<char *>(exact.get());
    CS_MONEY value = support::money(count);
    const char *const text = com__mnytochar(&value, chars, room, style);
    FUZZ_CHECK((text != nullptr) == told.start.has_value());
    FUZZ_CHECK(text == nullptr || text == chars + *told.start);
    FUZZ_CHECK(exact.all() == told.buffer);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    fuzz::Input input(data, size);
    fuzz::ChosenSet set(input);
    const int room = input.byte() % 32;
    const int style = input.byte() % 8 << 8 | input.byte() % 4;
    const std::string text = input.rest();
    check_read(set.get(), text);
    check_write(support::told_read(text, set.get()).count, room, style);
    return 0;
}

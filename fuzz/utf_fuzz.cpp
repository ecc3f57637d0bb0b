// The UTF routines on any text, in any room, with and without a pad and the check, against the naive versions. Source
// and destination have no spare byte, and lie at places that the input chooses.
#include "input.h"
#include "support/naive_utf.h"

#include <cstdint>

namespace naive = support::naive;

namespace {

using Pad = std::optional<std::string>;

// Memory whose last byte is the last of the address sanitizer's as well, at any place.
class PlacedBuffer {
public:
    PlacedBuffer(const std::string &content, std::size_t offset) : buffer_(content.size() + offset), offset_(offset) {
        std::memcpy(get(), content.data(), content.size());
    }
    CS_BYTE *get() { return buffer_.get() + offset_; }

private:
    fuzz::ExactBuffer buffer_;
    std::size_t offset_;
};

template <class Call>
void check(const naive::Utf &expected, const std::string &text, int room, Pad pad, std::size_t offset, Call call) {
    PlacedBuffer src(text, offset);
    PlacedBuffer dest(std::string(static_cast<std::size_t>(room), naive::UTF_GROUND), offset);
    naive::Utf found{-5, -5, -5, ""};
    found.flags = call(src.get(), static_cast<int>(text.size()), dest.get(), room, &found.sused, &found.dused,
                       pad ? pad->data() : nullptr);
    found.dest.assign(reinterpret_cast<char *>(dest.get()), static_cast<std::size_t>(room));
    FUZZ_CHECK(found == expected);
    FUZZ_CHECK(std::memcmp(src.get(), text.data(), text.size()) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    fuzz::Input input(data, size);
    const CS_BYTE choice = input.byte();
    const int chosen = input.byte() + 256 * (input.byte() % 4);
    const bool validity = (choice & 1) != 0;
    const std::size_t offset = choice >> 1 & 7;
    Pad unit, byte;
    if ((choice & 16) != 0) {
        const char first = static_cast<char>(input.byte()), second = static_cast<char>(input.byte());
        unit = {first, second};
        byte = std::string(1, first);
    }
    const std::string text = input.rest();
    // The room is any, or about what the text takes.
    const auto room = [&](int taken) { return (choice & 32) != 0 ? chosen : std::max(0, taken + chosen % 16 - 8); };

    const int large = static_cast<int>(text.size()) * 3;
    int dlen = room(naive::utf8_to_utf16(text, large, {}, validity).dused);
    check(naive::utf8_to_utf16(text, dlen, unit, validity), text, dlen, unit, offset, [&](auto... arguments) {
        return com__fou_utf8_to_utf16(arguments..., validity ? CS_TRUE : CS_FALSE);
    });
    dlen = room(naive::utf16_to_utf8(text, large, {}, validity).dused);
    check(naive::utf16_to_utf8(text, dlen, byte, validity), text, dlen, byte, offset, [&](auto... arguments) {
        return com__fou_utf16_to_utf8(arguments..., validity ? CS_TRUE : CS_FALSE);
    });
    dlen = room(static_cast<int>(text.size()));
    check(naive::utf16_to_utf16(text, dlen, unit), text, dlen, unit, offset, com__fou_utf16_to_utf16);

    // What comes over whole and without oddities comes back.
    naive::Utf wide = naive::utf8_to_utf16(text, large, {}, validity);
    if (wide.flags == 0) {
        wide.dest.resize(static_cast<std::size_t>(wide.dused));
        dlen = large + 4;
        check(naive::utf16_to_utf8(wide.dest, dlen, byte, validity), wide.dest, dlen, byte, offset,
              [&](auto... arguments) {
                  return com__fou_utf16_to_utf8(arguments..., validity ? CS_TRUE : CS_FALSE);
              });
    }
    return 0;
}

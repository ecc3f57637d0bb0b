// Text from one character set to another in pieces, with the result of a conversion in one go.
//
// A conversion of the engine takes a value: it ends at a NUL, begins in the first state of its set, and takes values of
// ASCII bytes as they are, whatever their set. A stream has none of this. So a stream goes the engine's way in two
// steps, by the tables that the engine takes: bytes to 16-bit text, and that to bytes. What a piece leaves unfinished
// (a character, a state, a character that may join the next one) waits for the next piece, and a NUL is a character.
#ifndef DLX_CLIENT_COMMAND_RECODER_H
#define DLX_CLIENT_COMMAND_RECODER_H

#include "command.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace client {

// A character set as the two steps need it.
struct RecodedSet {
    std::string name;
    std::int32_t cid = 0; // its number in the Unicode library
};

// Why the Unicode library cannot convert text of a set; empty where it can.
std::string table_trouble(const RecodedSet &set);

// What did not go smoothly.
struct Losses {
    std::uint64_t missing = 0;           // characters without a partner, which were replaced
    std::uint64_t malformed = 0;         // runs of bytes that are no character, which were replaced
    std::uint64_t first_malformed = 0;   // where the first of them begins, counted in bytes from 0
    std::optional<std::uint64_t> cut_at; // where the character begins in which the text ends

    bool any() const { return missing != 0 || malformed != 0 || cut_at.has_value(); }
};

class Decoder;
class Encoder;

class Recoder {
public:
    // Fails for a set without a table, or with one that is damaged.
    static Maybe<std::shared_ptr<Recoder>> open(const RecodedSet &from, const RecodedSet &to);
    ~Recoder();

    // Appends to `result` what can be said of the text up to here; all of it where the text ends with these bytes.
    void recode(std::string_view bytes, bool is_end, std::string *result);

    const Losses &losses() const { return losses_; }

private:
    Recoder() = default;

    bool is_copy_ = false; // text that stays in its set is not looked at
    std::unique_ptr<Decoder> decoder_;
    std::unique_ptr<Encoder> encoder_;
    std::u16string units_;
    Losses losses_;
};

} // namespace client

#endif

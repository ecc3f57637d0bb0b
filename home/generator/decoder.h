// Which character bytes of a set are.
#ifndef HOME_GENERATOR_DECODER_H
#define HOME_GENERATOR_DECODER_H

#include "sets.h"

#include <memory>
#include <optional>
#include <string_view>

namespace home {

class Decoder {
public:
    virtual ~Decoder() = default;

    // The character that all of `bytes` are from the initial state of the set on. Nothing for bytes that are none, are
    // more than one, or shift to another state.
    virtual std::optional<char32_t> character(std::string_view bytes) = 0;
};

// Throws std::runtime_error for a set that its source does not have.
std::unique_ptr<Decoder> decoder_of(const Set &set);

} // namespace home

#endif

// The state of a text in the standard compression scheme for Unicode (Unicode Technical Standard 6): where its windows
// lie, which one is in use, and whether it is written in bytes or in whole units.
#ifndef DLX_CLIENT_COMMAND_SCSU_H
#define DLX_CLIENT_COMMAND_SCSU_H

#include <cstddef>
#include <string>
#include <string_view>

namespace client {

struct ScsuRun {
    size_t text = 0;           // bytes of characters and tags that are whole
    size_t nul = 0;            // bytes of the U+0000 behind them, which ends a text of the library; 0 for none
    bool is_malformed = false; // they are a tag that lacks what it defines: no U+0000, but one end too
};

class ScsuState {
public:
    // Follows the text over the characters that are whole, up to its end or a U+0000, and over that. Half a surrogate
    // pair at the end is not whole.
    ScsuRun read(std::string_view text);
    // Follows one character or tag, which is at the front of the text, and answers its length; what is cut is all that
    // is left.
    size_t read_one(std::string_view text);

    // The tags that lead from the first state of a text to this one, and back to one like the first.
    std::string way_from_start() const;
    std::string way_to_start() const;

private:
    struct Token;
    Token token_at(std::string_view text) const;
    void take(std::string_view tag);

    static constexpr int WINDOWS = 8;

    std::string definitions_[WINDOWS]; // the tag that has defined a window; empty for where it lay at first
    int window_ = 0;
    bool is_units_ = false;
};

} // namespace client

#endif

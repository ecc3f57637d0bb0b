// A file or standard input, block by block.
#ifndef DLX_CLIENT_COMMAND_INPUT_H
#define DLX_CLIENT_COMMAND_INPUT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace client {

class Input {
public:
    // "-" is standard input.
    explicit Input(std::string name);
    ~Input();
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    // The next block, as soon as something is there; empty at the end, nothing where reading failed.
    std::optional<std::string_view> read();
    // All that is left.
    std::optional<std::string> read_all();

    // The sentence that tells what failed.
    const std::string &trouble() const { return trouble_; }

private:
    static constexpr size_t BLOCK = 64 * 1024;

    std::string name_;
    int file_ = -1;
    std::vector<char> block_;
    std::string trouble_;
};

} // namespace client

#endif

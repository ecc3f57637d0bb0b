#include "input.h"

#include "text.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace client {

Input::Input(std::string name) : name_(std::move(name)), block_(BLOCK) {
    file_ = name_ == "-" ? STDIN_FILENO : open(name_.c_str(), O_RDONLY | O_CLOEXEC);
    if (file_ < 0)
        trouble_ = "cannot open " + quoted(name_) + ": " + std::strerror(errno);
}

Input::~Input() {
    if (file_ > STDERR_FILENO)
        close(file_);
}

std::optional<std::string_view> Input::read() {
    if (file_ < 0)
        return std::nullopt;
    ssize_t count;
    do
        count = ::read(file_, block_.data(), block_.size());
    while (count < 0 && errno == EINTR);
    if (count < 0) {
        trouble_ = "cannot read " + (name_ == "-" ? "standard input" : quoted(name_)) + ": " + std::strerror(errno);
        return std::nullopt;
    }
    return std::string_view(block_.data(), static_cast<size_t>(count));
}

std::optional<std::string> Input::read_all() {
    std::string all;
    for (;;) {
        const std::optional<std::string_view> block = read();
        if (!block)
            return std::nullopt;
        if (block->empty())
            return all;
        all += *block;
    }
}

} // namespace client

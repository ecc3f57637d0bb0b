// An allocator pair of the list manager that fails on demand and looks at what is given back.
#ifndef TESTS_SUPPORT_WATCHED_MEMORY_H
#define TESTS_SUPPORT_WATCHED_MEMORY_H

#include <dlxcomn/list.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

namespace support {

class WatchedMemory {
public:
    enum Span { ONCE, LASTING };

    // A block as it was when it was given back.
    struct Released {
        const void *memory;
        std::vector<unsigned char> bytes;

        bool is_wiped(std::size_t from = 0) const {
            return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(std::min(from, bytes.size())), bytes.end(),
                               [](unsigned char byte) { return byte == 0; });
        }
        bool is_stamped() const {
            LM_NODE_STATE state;
            if (bytes.size() < sizeof state)
                return false;
            std::memcpy(&state, bytes.data(), sizeof state);
            return state == LM_RELEASED && is_wiped(sizeof state);
        }
    };

    WatchedMemory() = default;
    WatchedMemory(const WatchedMemory &) = delete;
    WatchedMemory &operator=(const WatchedMemory &) = delete;

    // From now on the n-th allocation (from 1; 0 is none) fails: that one alone, or it and every later one.
    void fail(int n, Span span) {
        asked_ = 0;
        failing_ = n;
        span_ = span;
    }
    void succeed() { fail(0, ONCE); }

    int asked() const { return asked_; }
    std::size_t held() const { return live_.size(); }
    // Blocks that were given back without being held.
    int strangers() const { return strangers_; }
    const std::vector<Released> &released() const { return released_; }
    void forget_released() { released_.clear(); }
    // Whether every block given back was a stamped record, or a name or table full of zeroes.
    bool all_wiped() const {
        return std::all_of(released_.begin(), released_.end(),
                           [](const Released &block) { return block.is_stamped() || block.is_wiped(); });
    }

    static CS_VOID *allocate(CS_VOID *user, CS_INT size) {
        auto &self = *static_cast<WatchedMemory *>(user);
        ++self.asked_;
        if (self.failing_ != 0 &&
            (self.span_ == ONCE ? self.asked_ == self.failing_ : self.asked_ >= self.failing_))
            return nullptr;
        void *memory = std::malloc(static_cast<std::size_t>(size));
        std::memset(memory, 0xCD, static_cast<std::size_t>(size)); // nothing may count on zeroes
        self.live_[memory] = static_cast<std::size_t>(size);
        return memory;
    }
    static void release(CS_VOID *user, CS_VOID *memory) {
        auto &self = *static_cast<WatchedMemory *>(user);
        const auto found = self.live_.find(memory);
        if (found == self.live_.end()) {
            ++self.strangers_;
            return;
        }
        const auto *bytes = static_cast<unsigned char *>(memory);
        self.released_.push_back({memory, {bytes, bytes + found->second}});
        self.live_.erase(found);
        std::free(memory);
    }

private:
    std::map<void *, std::size_t> live_;
    std::vector<Released> released_;
    int asked_ = 0;
    int failing_ = 0;
    Span span_ = ONCE;
    int strangers_ = 0;
};

} // namespace support

#endif

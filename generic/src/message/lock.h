// The lock of the messages of a language.
#ifndef DLX_MESSAGE_LOCK_H
#define DLX_MESSAGE_LOCK_H

#include <dlxcomn/thread.h>

namespace dlx {

// Holds the mutex of a record of messages; without a mutex nothing is held. The mutex is recursive, so what a lookup
// answers can be copied under the lock that the lookup took itself.
class MessageLock {
public:
    explicit MessageLock(CS_THRDRES *mutex)
        : mutex_(mutex), is_held_(mutex != nullptr && comn_take_mutex(mutex) == CS_SUCCEED) {}
    ~MessageLock() {
        if (is_held_)
            comn_release_mutex(mutex_);
    }
    MessageLock(const MessageLock &) = delete;
    MessageLock &operator=(const MessageLock &) = delete;

    bool is_held() const { return is_held_; }

private:
    CS_THRDRES *mutex_;
    bool is_held_;
};

} // namespace dlx

#endif

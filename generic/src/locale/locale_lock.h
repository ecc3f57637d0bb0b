// The one lock of localization, cmg_mtx of a context's globals.
#ifndef DLX_LOCALE_LOCALE_LOCK_H
#define DLX_LOCALE_LOCALE_LOCK_H

#include <dlxcomn/context.h>

namespace dlx {

// Held while it lives. Owners without threads have no callbacks, and nothing is locked.
class LocaleLock {
public:
    explicit LocaleLock(CS_CONTEXT *context)
        : callbacks_(context->ctxthread), mutex_(context->ctxglobals->cmg_mtx), status_(take()) {}
    ~LocaleLock() { release(); }
    LocaleLock(const LocaleLock &) = delete;
    LocaleLock &operator=(const LocaleLock &) = delete;

    CS_RETCODE status() const { return status_; }
    bool is_held() const { return status_ == CS_SUCCEED; }
    void release() {
        if (is_held() && callbacks_ != nullptr && callbacks_->release_mutex_fn != nullptr)
            callbacks_->release_mutex_fn(mutex_);
        status_ = CS_FAIL;
    }

private:
    CS_RETCODE take() const {
        return callbacks_ != nullptr && callbacks_->take_mutex_fn != nullptr ? callbacks_->take_mutex_fn(mutex_)
                                                                             : CS_SUCCEED;
    }

    const CS_THREAD *callbacks_;
    CS_THRDRES *mutex_;
    CS_RETCODE status_;
};

} // namespace dlx

#endif

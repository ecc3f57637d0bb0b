// A context with nothing in it: its maker calls the initialisers itself.
#ifndef TESTS_SUPPORT_BARE_CONTEXT_H
#define TESTS_SUPPORT_BARE_CONTEXT_H

#include <dlxcomn/dlxcomn.h>

namespace support {

class BareContext {
public:
    BareContext() = default;
    ~BareContext() {
        com_null_free(&context_);
        com_conv_free(&context_);
    }
    BareContext(const BareContext &) = delete;
    BareContext &operator=(const BareContext &) = delete;

    CS_CONTEXT *operator->() { return &context_; }
    operator CS_CONTEXT *() { return &context_; }

private:
    CS_CONTEXT context_ = {};
};

} // namespace support

#endif

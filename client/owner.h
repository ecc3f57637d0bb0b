// A sample owner of a context: what a client library does before it calls in, and after.
#ifndef DLX_CLIENT_OWNER_H
#define DLX_CLIENT_OWNER_H

#include <dlxcomn/dlxcomn.h>

#include <string>
#include <vector>

namespace client {

// One context with its own shared globals, thread callbacks, allocator and error callback. Its locale is the
// built-in iso_1 one, which needs no file. Not copied: the context points into the record.
class Owner {
public:
    Owner();
    ~Owner();
    Owner(const Owner &) = delete;
    Owner &operator=(const Owner &) = delete;

    // Null when there was no memory for the context's tables.
    CS_CONTEXT *context() { return ready_ ? &context_ : nullptr; }

private:
    CS_CONTEXT context_ = {};
    CsCtxGlobals globals_ = {};
    CsCharDesc charset_ = {};
    CsLocCache locale_data_ = {};
    CS_LOCALE locale_ = {};
    bool ready_ = false;
};

} // namespace client

#endif

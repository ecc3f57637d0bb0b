// The two assertion forms and the trace of a failure, as every source file uses them.
//
// A check names the line that it stands on, so it is a macro. It reports through the public entries and
// then returns `result` (nothing, in a void function): where com_toggle_abort(0) was called the report comes
// back, and the caller must go on without having touched anything.
#ifndef DLX_DIAG_CHECK_H
#define DLX_DIAG_CHECK_H

#include <dlxcomn/diag.h>

namespace dlx {

// A place in the sources, for a check that is made on behalf of another function.
struct SourceLine {
    const char *file;
    int line;
};

} // namespace dlx

#define COM_HERE (::dlx::SourceLine{__FILE__, __LINE__})

#define COM_REQUIRE_PTR_AT(where, pointer, ...)                          \
    do {                                                                 \
        if ((pointer) == nullptr) [[unlikely]] {                         \
            com_raise_invalid_null_pointer((where).file, (where).line); \
            return __VA_ARGS__;                                          \
        }                                                                \
    } while (0)

#define COM_REQUIRE_AT(where, condition, ...)          \
    do {                                               \
        if (!(condition)) [[unlikely]] {               \
            com_bomb((where).file, (where).line);     \
            return __VA_ARGS__;                        \
        }                                              \
    } while (0)

#define COM_REQUIRE_PTR(pointer, ...) COM_REQUIRE_PTR_AT(COM_HERE, pointer, __VA_ARGS__)
#define COM_REQUIRE(condition, ...) COM_REQUIRE_AT(COM_HERE, condition, __VA_ARGS__)

// Wraps a failure at the point where it is returned.
#define COM_TRACE_AT(where, status) com_errtrace((status), (where).file, (where).line)
#define COM_TRACE(status) COM_TRACE_AT(COM_HERE, status)

#endif

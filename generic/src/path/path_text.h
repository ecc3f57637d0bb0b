// A path while it is built: text in the caller's room, and the running length that a builder's fit tests are
// made on.
//
// The two are apart on purpose. Each builder has tests of its own, some count a part twice and some let a
// path through that fills the room, and applications have sizes that rely on the answers. Whatever the tests
// say, the text is cut to the room and terminated.
#ifndef DLX_PATH_PATH_TEXT_H
#define DLX_PATH_PATH_TEXT_H

#include <dlxcomn/path.h>
#include <dlxcomn/services.h>
#include <dlxintl/intl.h>

#include <cstddef>
#include <cstring>

namespace dlx {

class PathText {
public:
    PathText(CS_CHAR *room, CS_INT size) : room_(room), size_(size) {}

    // Begins with the home directory, given `size` bytes of the room. A negative code when it is not known.
    int begin_at_home(CS_INT size) {
        const int result = intl_home(room_, size);
        if (result >= 0)
            length_ = result;
        return result;
    }

    long length() const { return length_; }

    // The tests: whether `more` bytes end at the size or before it, or strictly before it.
    bool reaches(long more) const { return length_ + more <= size_; }
    bool stays_below(long more) const { return length_ + more < size_; }

    void append(const char *text) { intl_strlcat(room_, text, static_cast<std::size_t>(size_)); }
    void append_component(const char *name) {
        append("/");
        append(name);
    }
    void count(long bytes) { length_ += bytes; }

    // A component under one of the two tests. False, with nothing appended, when it is refused.
    bool add_reaching(const char *name) { return add(name, reaches(length_of(name) + 1)); }
    bool add_below(const char *name) { return add(name, stays_below(length_of(name) + 1)); }

    static long length_of(const char *text) { return static_cast<long>(std::strlen(text)); }

private:
    bool add(const char *name, bool fits) {
        if (!fits)
            return false;
        append_component(name);
        count(length_of(name) + 1);
        return true;
    }

    CS_CHAR *room_;
    CS_INT size_;
    long length_ = 0; // long: names of any length are added to it
};

} // namespace dlx

#endif

// How many random cases a test runs.
#ifndef TESTS_SUPPORT_CASES_H
#define TESTS_SUPPORT_CASES_H

namespace support {

// The thread sanitizer is some thirty times slower and looks for other faults than random cases find.
constexpr int cases(int count) {
#ifdef __SANITIZE_THREAD__
    return count / 10;
#else
    return count;
#endif
}

} // namespace support

#endif

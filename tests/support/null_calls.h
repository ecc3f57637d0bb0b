// Every call of a function with one of its operands missing, written once for both modes of an assertion.
#ifndef TESTS_SUPPORT_NULL_CALLS_H
#define TESTS_SUPPORT_NULL_CALLS_H

#include "support/assertions.h"

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

namespace support {

class NullCalls {
public:
    // `run` makes the call; `answer` is what it gives where assertions return.
    void add(const char *name, std::function<long()> run, long answer) { calls_.push_back({name, run, answer}); }

    // One call for each of one to three operands, that operand missing. A function without a result answers 0.
    template <class Function, class A>
    void add_each(const char *name, Function function, long answer, A *) {
        add(
            name, [=] { return result(function, nullptr); }, answer);
    }
    template <class Function, class A, class B>
    void add_each(const char *name, Function function, long answer, A *a, B *b) {
        add(
            name, [=] { return result(function, nullptr, b); }, answer);
        add(
            name, [=] { return result(function, a, nullptr); }, answer);
    }
    template <class Function, class A, class B, class C>
    void add_each(const char *name, Function function, long answer, A *a, B *b, C *c) {
        add(
            name, [=] { return result(function, nullptr, b, c); }, answer);
        add(
            name, [=] { return result(function, a, nullptr, c); }, answer);
        add(
            name, [=] { return result(function, a, b, nullptr); }, answer);
    }

    // Each call ends the process with the null report of `stem`.cpp.
    void expect_reports(const std::string &stem) const {
        for (const Call &call : calls_) {
            SCOPED_TRACE(call.name);
            EXPECT_DEATH(call.run(), "Invalid NULL pointer , file 'generic/src/" + stem + "\\.cpp' line [0-9]+");
        }
    }
    // Where assertions return, each call reports once and gives its answer. `prepare` runs before each, `check` after.
    void expect_answers(const std::function<void()> &prepare, const std::function<void()> &check) const {
        for (const Call &call : calls_) {
            SCOPED_TRACE(call.name);
            prepare();
            ReturningAssertions returning;
            const long answer = call.run();
            EXPECT_EQ(returning.count(), 1);
            EXPECT_EQ(answer, call.answer);
            check();
        }
    }

private:
    struct Call {
        const char *name;
        std::function<long()> run;
        long answer;
    };

    template <class Function, class... Operand>
    static long result(Function function, Operand... operands) {
        if constexpr (std::is_void_v<std::invoke_result_t<Function, Operand...>>)
            return function(operands...), 0;
        else
            return function(operands...);
    }

    std::vector<Call> calls_;
};

} // namespace support

#define NULL_CALLS(calls, function, answer, ...) calls.add_each(#function, function, answer, __VA_ARGS__)

#endif

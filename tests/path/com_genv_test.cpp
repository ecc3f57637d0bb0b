// com_getenv: a string of the caller's own, at most 255 bytes of the value.
#include "support/environment.h"
#include "support/failing_allocator.h"

#include <dlxcomn/services.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>

namespace {

using support::Variable;

CS_CHAR NAME[] = "DLX_TEST_VARIABLE";

std::optional<std::string> value_of(CS_CHAR *name) {
    CS_CHAR *copy = com_getenv(name);
    if (copy == nullptr)
        return std::nullopt;
    std::string result = copy;
    std::free(copy);
    return result;
}

TEST(ComGetenv, NullNameIsNullWithoutAReport) { EXPECT_EQ(com_getenv(nullptr), nullptr); }

TEST(ComGetenv, UnsetAndEmptyAreNull) {
    Variable variable(NAME);
    EXPECT_EQ(value_of(NAME), std::nullopt);
    variable.put("");
    EXPECT_EQ(value_of(NAME), std::nullopt);
}

TEST(ComGetenv, ValueUpTo255BytesIsWholeAndLongerOnesAreCut) {
    Variable variable(NAME);
    for (size_t length = 1; length <= 600; length += length < 250 || length > 260 ? 7 : 1) {
        const std::string value(length, 'v');
        variable.put(value);
        EXPECT_EQ(value_of(NAME), value.substr(0, 255)) << length;
    }
    for (const size_t length : {254, 255, 256, 257}) {
        variable.put(std::string(length, 'v'));
        EXPECT_EQ(value_of(NAME), std::string(std::min<size_t>(length, 255), 'v')) << length;
    }
}

TEST(ComGetenv, EachCallMakesAStringOfItsOwn) {
    const Variable variable(NAME, "value");
    CS_CHAR *first = com_getenv(NAME);
    CS_CHAR *second = com_getenv(NAME);
    EXPECT_NE(first, second);
    first[0] = 'V';
    EXPECT_STREQ(second, "value");
    EXPECT_STREQ(std::getenv(NAME), "value");
    std::free(first);
    std::free(second);
}

TEST(ComGetenv, WithoutMemoryIsNull) {
    const Variable variable(NAME, "value");
    for (const auto span : {support::FailingAllocator::ONCE, support::FailingAllocator::LASTING}) {
        const support::FailingAllocator failing(1, span);
        EXPECT_EQ(com_getenv(NAME), nullptr);
        EXPECT_EQ(failing.asked(), 1);
        EXPECT_EQ(failing.held(), 0);
    }
}

} // namespace

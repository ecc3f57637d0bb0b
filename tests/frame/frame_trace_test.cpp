// A failure of the frame leaves a line where it is returned, one for each level, when tracing is on.
#include "support/failing_allocator.h"

#include "support/assertions.h"
#include "support/bare_context.h"
#include "support/convert.h"
#include "support/debug_output.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using support::BareContext;
using support::DebugOutput;
using support::FailingAllocator;
using support::format_of;

// Traces what `call` does: "stem status, stem status, ..." of the lines in order.
template <class Call>
std::string traced(Call call) {
    DebugOutput output;
    com_errset(COM_TRACE_ERRORS);
    call();
    com_errset(COM_TRACE_OFF);
    std::string result;
    const std::string text = output.text();
    for (size_t at = 0; at < text.size();) {
        const std::string line = text.substr(at, text.find('\n', at) - at);
        const size_t stem = line.find(") file ") + 7;
        result += (result.empty() ? "" : ", ") + line.substr(stem, line.find(".cpp, line ") - stem) + " " +
                  line.substr(1, line.find(')') - 1);
        at += line.size() + 1;
    }
    return result;
}

constexpr const char *OVERFLOW_NUMBER = "4294967195";
constexpr const char *FORMAT_NUMBER = "4294967190";
constexpr const char *TRUNCATED_NUMBER = "4294967183";

class FrameTrace : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(com_conv_init(context), CS_SUCCEED);
        ASSERT_EQ(com_null_init(context), CS_SUCCEED);
    }
    void TearDown() override { com_null_reinstall(context, 100); }

    // Traces `call` with its first allocation failing.
    template <class Call>
    std::string traced_without_memory(Call call) {
        return traced([&] {
            std::fflush(Com_fp);
            FailingAllocator allocator(1);
            call();
        });
    }

    BareContext context;
    CS_BYTE bytes[16] = {};
    CS_INT length = 0;
};

TEST_F(FrameTrace, OutOfMemoryInEachFunctionThatAllocates) {
    BareContext own;
    EXPECT_EQ(traced_without_memory([&] { com_conv_init(own); }), "com_conv CS_MEM_ERROR");
    EXPECT_EQ(traced_without_memory([&] { com_null_init(own); }), "com_null CS_MEM_ERROR");
    EXPECT_EQ(traced_without_memory([&] { com_conv_install(context, 50, 2, comn_voidtovoid); }),
              "com_conv CS_MEM_ERROR");
    EXPECT_EQ(traced_without_memory([&] { com_null_set(context, 100, bytes, 3); }), "com_null CS_MEM_ERROR");
    EXPECT_EQ(traced_without_memory([&] { com_null_set(context, CS_INT_TYPE, bytes, 4); }), "com_null CS_MEM_ERROR");
}

TEST_F(FrameTrace, PaddingThatDoesNotFitOrContradictsItself) {
    CS_DATAFMT short_of_room = format_of(CS_CHAR_TYPE, 2, CS_FORMAT_NULLTERM);
    EXPECT_EQ(traced([&] { comn__padchar(4, &short_of_room, bytes, &length); }),
              std::string("com_pad ") + OVERFLOW_NUMBER);
    EXPECT_EQ(traced([&] { comn__padunichar(4, &short_of_room, bytes, &length); }),
              std::string("com_pad ") + OVERFLOW_NUMBER);
    CS_DATAFMT both = format_of(CS_CHAR_TYPE, 8, CS_FORMAT_ZEROPAD | CS_FORMAT_BLANKPAD);
    EXPECT_EQ(traced([&] { comn__padchar(4, &both, bytes, &length); }), std::string("com_pad ") + FORMAT_NUMBER);
    EXPECT_EQ(traced([&] { comn_voidtoany(context, nullptr, nullptr, &both, bytes, &length); }),
              std::string("com_pad ") + FORMAT_NUMBER);
}

TEST_F(FrameTrace, QuotesThatDoNotFit) {
    char text[] = "it's";
    CS_DATAFMT srcfmt = format_of(CS_CHAR_TYPE, 4);
    CS_DATAFMT destfmt = format_of(CS_CHAR_TYPE, 3);
    EXPECT_EQ(traced([&] { comn__escchar(text, &srcfmt, bytes, &destfmt, &length, nullptr, '\''); }),
              std::string("com_pad ") + TRUNCATED_NUMBER);
}

TEST_F(FrameTrace, SuccessLeavesNoLine) {
    EXPECT_EQ(traced([&] {
                  com_conv_install(context, 6, 7, comn_voidtovoid);
                  com_conv_default(context, 6, 7);
                  com_null_set(context, CS_INT_TYPE, bytes, 4);
                  com_null_reinstall(context, CS_INT_TYPE);
                  CS_DATAFMT destfmt = format_of(CS_CHAR_TYPE, 8, CS_FORMAT_NULLTERM);
                  com_null_get(context, &destfmt, bytes, 8, &length);
              }),
              "");
}

TEST_F(FrameTrace, ACellThatIsNotThereIsNoFailure) {
    EXPECT_EQ(traced([&] {
                  com_conv_func(context, 24, 26);
                  com_conv_func(context, -1, 0);
                  com_conv_func(context, 40, 0);
              }),
              "");
}

} // namespace

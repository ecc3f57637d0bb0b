// The texts of the localization codes.
#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>

namespace {

const std::string UNKNOWN = "unknown localization error";

TEST(IntlErrstr, EveryCodeHasATextOfItsOwn) {
    std::set<std::string> texts;
    for (int code = INTL_EBADDATE; code <= INTL_OK; ++code) {
        const char *text = intl_errstr(code);
        ASSERT_NE(text, nullptr) << code;
        EXPECT_NE(text, UNKNOWN) << code;
        EXPECT_GT(std::string(text).size(), 5u) << code;
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), static_cast<size_t>(INTL_OK - INTL_EBADDATE + 1));
}

TEST(IntlErrstr, CodesOfTheReaderSayWhatIsWrong) {
    EXPECT_STREQ(intl_errstr(INTL_ECANTOPEN), "the file cannot be opened");
    EXPECT_STREQ(intl_errstr(INTL_EREAD), "the file could not be read");
    EXPECT_STREQ(intl_errstr(INTL_ELINETOOLONG), "a line is longer than 1023 bytes");
    EXPECT_STREQ(intl_errstr(INTL_EBADSECTION), "a section line is not of the form [name]");
    EXPECT_STREQ(intl_errstr(INTL_ENOEQUALS), "an entry has no \"=\"");
    EXPECT_STREQ(intl_errstr(INTL_EUNTERMINATED), "a quoted value does not end with its quote");
    EXPECT_STREQ(intl_errstr(INTL_EBADESCAPE),
                 "a backslash is not followed by a character or by x and two hexadecimal digits");
}

TEST(IntlErrstr, AnyOtherNumberHasTheGeneralText) {
    for (const int code : {1, 2, 1000, INTL_EBADDATE - 1, -100, std::numeric_limits<int>::min(),
                           std::numeric_limits<int>::max()})
        EXPECT_EQ(intl_errstr(code), UNKNOWN) << code;
}

} // namespace

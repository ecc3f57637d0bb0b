// What the library says of itself.
#include "support/assertions.h"

#include <dlxcomn/services.h>

#include <gtest/gtest.h>

#include <cctype>
#include <sstream>
#include <string>
#include <vector>

namespace {

using support::ReturningAssertions;

TEST(ComVersion, Is16001AndADebugBuild) {
    CS_INT version = 0;
    CS_BOOL is_debug = 0;
    com_version(&version, &is_debug);
    EXPECT_EQ(version, 16001);
    EXPECT_EQ(is_debug, 1);
}

TEST(ComVersionDeathTest, NullAnswers) {
    CS_INT version;
    CS_BOOL is_debug;
    EXPECT_NULL_REPORT(com_version(nullptr, &is_debug), "com_vers");
    EXPECT_NULL_REPORT(com_version(&version, nullptr), "com_vers");
}

TEST(ComVersion, NullAnswersThatComeBackWriteNothing) {
    const ReturningAssertions assertions;
    CS_INT version = -7;
    CS_BOOL is_debug = 7;
    com_version(nullptr, &is_debug);
    com_version(&version, nullptr);
    EXPECT_EQ(assertions.count(), 2);
    EXPECT_EQ(version, -7);
    EXPECT_EQ(is_debug, 7);
}

TEST(ComVersion, BannerHasTenFields) {
    std::vector<std::string> fields;
    std::istringstream banner(comn__Vdate);
    for (std::string field; std::getline(banner, field, '/');)
        fields.push_back(field);
    ASSERT_EQ(fields.size(), 10u) << comn__Vdate;
    for (const std::string &field : fields)
        EXPECT_FALSE(field.empty()) << comn__Vdate;
    EXPECT_EQ(fields[3], "16.0.03.02") << "the driver's version, as com_get_driverversionsuffix has it";
    EXPECT_EQ(fields[4], "x86_64");
    EXPECT_EQ(fields[7], "64-bit");
    ASSERT_EQ(fields[9].size(), 10u) << "year, month and day";
    for (size_t i = 0; i < 10; ++i)
        EXPECT_EQ(i == 4 || i == 7 ? fields[9][i] == '-' : std::isdigit(fields[9][i]) != 0, true) << fields[9];
}

} // namespace

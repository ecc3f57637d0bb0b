// The environment and the home directory at every size of room, with and without the account.
#include "support/account.h"
#include "support/environment.h"

#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <optional>
#include <string>

namespace {

using support::Accounts;
using support::Variable;

constexpr char GUARD = '\x7E';

class IntlHome : public testing::Test {
protected:
    ~IntlHome() override { Accounts::clear(); }
    Variable variable_{"DALVEX"};
};

// Calls with every size from -1 to well past the value: true length, cut to the room, nothing behind it.
void expect_value_at_every_size(const std::function<int(char *, int)> &call, const std::string &value) {
    const int length = static_cast<int>(value.size());
    for (int size = -1; size <= length + 20; ++size) {
        std::string room(value.size() + 40, GUARD);
        ASSERT_EQ(call(room.data(), size), length) << size;
        std::string expected(room.size(), GUARD);
        if (size > 0) {
            const std::string held = value.substr(0, static_cast<size_t>(size) - 1);
            std::memcpy(expected.data(), held.c_str(), held.size() + 1);
        }
        ASSERT_EQ(room, expected) << size;
    }
}

TEST_F(IntlHome, IsTheVariable) {
    for (const std::string &home : {std::string("/opt/dalvex"), std::string("x"), std::string(5000, 'h')}) {
        variable_.put(home);
        Accounts::home = "/not/this";
        expect_value_at_every_size(intl_home, home);
    }
}

TEST_F(IntlHome, IsThatOfTheAccountWhenTheVariableIsUnset) {
    Accounts::home = "/home/of/the/account";
    expect_value_at_every_size(intl_home, "/home/of/the/account");
}

TEST_F(IntlHome, IsThatOfTheAccountWhenTheVariableIsEmpty) {
    variable_.put("");
    Accounts::home = "/home/of/the/account";
    expect_value_at_every_size(intl_home, "/home/of/the/account");
}

TEST_F(IntlHome, IsReadAnewAtEveryCall) {
    char buffer[64];
    variable_.put("/one");
    EXPECT_EQ(intl_home(buffer, sizeof buffer), 4);
    variable_.put("/two/three");
    EXPECT_EQ(intl_home(buffer, sizeof buffer), 10);
    EXPECT_STREQ(buffer, "/two/three");
    variable_.put({});
    Accounts::home = "/four";
    EXPECT_EQ(intl_home(buffer, sizeof buffer), 5);
    EXPECT_STREQ(buffer, "/four");
}

TEST_F(IntlHome, IsNotKnownWithoutVariableAndAccount) {
    char buffer[8] = "before";
    EXPECT_EQ(intl_home(buffer, sizeof buffer), INTL_ENOHOME);
    variable_.put("");
    EXPECT_EQ(intl_home(buffer, sizeof buffer), INTL_ENOHOME);
    EXPECT_STREQ(buffer, "before");
}

TEST_F(IntlHome, IsNotKnownFromAnotherAccount) {
    Accounts::home = "/home/of/another";
    Accounts::name = "dalvexer";
    char buffer[64];
    EXPECT_EQ(intl_home(buffer, sizeof buffer), INTL_ENOHOME);
    Accounts::name = "dalvex";
    EXPECT_EQ(intl_home(buffer, sizeof buffer), 16);
}

TEST_F(IntlHome, IsNotKnownFromAnAccountWithoutOne) {
    char buffer[64];
    Accounts::home = "";
    EXPECT_EQ(intl_home(buffer, sizeof buffer), INTL_ENOHOME);
    Accounts::home = "/x";
    Accounts::without_directory = true;
    EXPECT_EQ(intl_home(buffer, sizeof buffer), INTL_ENOHOME);
}

TEST_F(IntlHome, IsNotKnownWhenTheLookupFails) {
    char buffer[64];
    Accounts::home = "/x";
    Accounts::error = EIO;
    EXPECT_EQ(intl_home(buffer, sizeof buffer), INTL_ENOHOME);
}

TEST(IntlGetenv, ValueAtEverySize) {
    for (const std::string &value : {std::string("v"), std::string("a longer value"), std::string(3000, 'v')}) {
        const Variable variable("DLX_TEST_VARIABLE", value);
        expect_value_at_every_size([](char *room, int size) { return intlgetenv(room, size, "DLX_TEST_VARIABLE"); },
                                   value);
    }
}

TEST(IntlGetenv, UnsetAndEmptyAreBothZeroAndAnEmptyText) {
    for (const std::optional<std::string> &value : {std::optional<std::string>(), std::optional<std::string>("")}) {
        const Variable variable("DLX_TEST_VARIABLE", value);
        expect_value_at_every_size([](char *room, int size) { return intlgetenv(room, size, "DLX_TEST_VARIABLE"); },
                                   "");
    }
}

TEST(IntlGetenv, NameIsCompared) {
    const Variable variable("DLX_TEST_VARIABLE", "v");
    char buffer[8];
    EXPECT_EQ(intlgetenv(buffer, sizeof buffer, "DLX_TEST_VARIABL"), 0);
    EXPECT_EQ(intlgetenv(buffer, sizeof buffer, "dlx_test_variable"), 0);
}

} // namespace

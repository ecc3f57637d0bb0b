// What tests of paths share: the variables that paths depend on, unset; no account; an empty context.
#ifndef TESTS_PATH_PATH_FIXTURE_H
#define TESTS_PATH_PATH_FIXTURE_H

#include "support/account.h"
#include "support/environment.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

using Text = std::optional<std::string>;

constexpr char GUARD = '\x7E';

inline std::string letters(size_t count) {
    std::string result(count, 'a');
    for (size_t i = 0; i < count; ++i)
        result[i] = static_cast<char>('a' + i % 26);
    return result;
}
inline std::string home_of(size_t length) { return std::string("/").append(letters(length - 1)); }

inline CS_CHAR *chars(Text &text) { return text ? text->data() : nullptr; }
inline CS_CHAR *chars(std::string &text) { return text.data(); }

class PathFixture : public testing::Test {
protected:
    ~PathFixture() override {
        com_set_tclcfg(nullptr);
        support::Accounts::clear();
    }

    support::Variable home_{"DALVEX"};
    support::Variable ncs_{"DALVEX_NCS"};
    support::Variable ifile_{"DLXNCS_IFILE"};
    support::Variable new_tcl_{"DLXNCS_TCL_CFG"};
    support::Variable old_tcl_{"DALVEX_TCL_CFG"};
    CS_CONTEXT context_ = {};
};

#endif

// Environment variables of a test: set or unset while the object lives.
#ifndef TESTS_SUPPORT_ENVIRONMENT_H
#define TESTS_SUPPORT_ENVIRONMENT_H

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

class Variable {
public:
    // No value leaves it unset.
    explicit Variable(const char *name, const std::optional<std::string> &value = std::nullopt) : name_(name) {
        if (const char *before = std::getenv(name))
            before_ = before;
        put(value);
    }
    ~Variable() { put(before_); }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

    void put(const std::optional<std::string> &value) {
        if (value)
            setenv(name_, value->c_str(), 1);
        else
            unsetenv(name_);
    }

private:
    const char *name_;
    std::optional<std::string> before_;
};

} // namespace support

#endif

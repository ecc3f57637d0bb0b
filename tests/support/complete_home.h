// The data home that ships with the tables of the character sets, which are made at build time: in force while the
// object lives. A test may take parts away, or put others in their place.
#ifndef TESTS_SUPPORT_COMPLETE_HOME_H
#define TESTS_SUPPORT_COMPLETE_HOME_H

#include "support/temp_home.h"

#include <filesystem>
#include <string>

namespace support {

class CompleteHome : public TempHome {
public:
    CompleteHome() {
        const std::filesystem::path shipped = DLXCOMN_SOURCE_DIR "/home";
        make_directory("charsets");
        link(shipped / "config", "config");
        link(shipped / "locales", "locales");
        for (const auto &set : std::filesystem::directory_iterator(shipped / "charsets"))
            link(set.path(), "charsets/" + set.path().filename().string());
        link(DLXCOMN_BUILD_DIR "/home/charsets/unicode", "charsets/unicode");
    }

private:
    void link(const std::filesystem::path &to, const std::string &name) const {
        std::filesystem::create_symlink(to, path_of(name));
    }
};

} // namespace support

#endif

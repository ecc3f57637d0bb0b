// A home directory of a test's own, in force while the object lives.
#ifndef TESTS_SUPPORT_TEMP_HOME_H
#define TESTS_SUPPORT_TEMP_HOME_H

#include "support/environment.h"
#include "support/temp_directory.h"

#include <filesystem>
#include <string>

namespace support {

class TempHome {
public:
    TempHome() : home_("DALVEX", directory_.path()), ncs_("DALVEX_NCS") {}

    std::string path_of(const std::string &name) const { return directory_.path_of(name); }
    // Writes a file below it, with the directories on the way.
    void write(const std::string &name, const std::string &content) const {
        std::filesystem::create_directories(std::filesystem::path(path_of(name)).parent_path());
        write_file(path_of(name), content);
    }
    void make_directory(const std::string &name) const { std::filesystem::create_directories(path_of(name)); }
    void remove(const std::string &name) const { std::filesystem::remove_all(path_of(name)); }

    // The variables that lead to it.
    Variable &home() { return home_; }
    Variable &ncs() { return ncs_; }

private:
    TempDirectory directory_;
    Variable home_;
    Variable ncs_;
};

} // namespace support

#endif

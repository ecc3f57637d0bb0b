// A home directory of the process's own with one file in it, whose content every input replaces.
#ifndef FUZZ_HOME_H
#define FUZZ_HOME_H

#include "input.h"

#include <filesystem>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

class Home {
public:
    // In force from now on. The file lies in memory; only a link to it stands in the directory.
    explicit Home(const std::string &name) : file_(memfd_create("content", MFD_CLOEXEC)) {
        char pattern[] = "/tmp/dlxcomn_fuzz_XXXXXX";
        FUZZ_CHECK(file_ >= 0 && mkdtemp(pattern) != nullptr);
        path_ = pattern;
        const std::filesystem::path link = path_ + "/" + name;
        std::filesystem::create_directories(link.parent_path());
        std::filesystem::create_symlink("/proc/self/fd/" + std::to_string(file_), link);
        enter();
        unsetenv("DALVEX_NCS");
    }
    ~Home() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
        close(file_);
    }
    Home(const Home &) = delete;
    Home &operator=(const Home &) = delete;

    // In force again, where there is another one.
    void enter() const { setenv("DALVEX", path_.c_str(), 1); }
    // Takes a file or directory over from elsewhere.
    void link(const std::filesystem::path &to, const std::string &name) const {
        std::filesystem::create_symlink(to, path_ + "/" + name);
    }

    void put(const std::string &content) {
        FUZZ_CHECK(ftruncate(file_, 0) == 0);
        FUZZ_CHECK(pwrite(file_, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size()));
    }

private:
    int file_;
    std::string path_;
};

} // namespace fuzz

#endif

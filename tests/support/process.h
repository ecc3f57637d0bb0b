// A program run from a test: arguments and standard input in, both outputs and the exit status out.
#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace support {

struct ProcessOutcome {
    int exit_code = -1; // negative: the number of the signal that ended it
    std::string output;
    std::string errors;
};

// Unnamed files, so that neither side waits for the other.
class ScratchFile {
public:
    explicit ScratchFile(const std::string &content = "") : file_(std::tmpfile()) {
        std::fwrite(content.data(), 1, content.size(), file_);
        std::rewind(file_);
    }
    ~ScratchFile() { std::fclose(file_); }
    ScratchFile(const ScratchFile &) = delete;
    ScratchFile &operator=(const ScratchFile &) = delete;

    int descriptor() const { return fileno(file_); }
    std::string content() const {
        std::string result;
        char part[4096];
        std::rewind(file_);
        for (size_t count; (count = std::fread(part, 1, sizeof part, file_)) != 0;)
            result.append(part, count);
        return result;
    }

private:
    std::FILE *file_;
};

// Standard output goes to `output_path` where that is given.
inline ProcessOutcome run_process(std::vector<std::string> command, const std::string &input = "",
                                  const char *output_path = nullptr) {
    const ScratchFile in(input);
    const ScratchFile out;
    const ScratchFile err;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.descriptor(), STDIN_FILENO);
    if (output_path != nullptr)
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output_path, O_WRONLY, 0);
    else
        posix_spawn_file_actions_adddup2(&actions, out.descriptor(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err.descriptor(), STDERR_FILENO);

    std::vector<char *> arguments;
    for (std::string &word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    ProcessOutcome outcome;
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(error, 0) << command[0];
    if (error != 0)
        return outcome;
    int status = 0;
    waitpid(child, &status, 0);
    outcome.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    outcome.output = out.content();
    outcome.errors = err.content();
    return outcome;
}

} // namespace support

#endif

// What a piece of code does to a process of its own: how the process ends and what it wrote.
#ifndef TESTS_SUPPORT_CHILD_H
#define TESTS_SUPPORT_CHILD_H

#include <cstdio>
#include <cstdlib>
#include <string>

#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

// The whole content of an open file.
inline std::string content_of(int file) {
    std::string text;
    char buffer[4096];
    off_t offset = 0;
    for (ssize_t got; (got = pread(file, buffer, sizeof buffer, offset)) > 0; offset += got)
        text.append(buffer, static_cast<size_t>(got));
    return text;
}

struct Ending {
    int status = 0; // as waitpid tells it
    std::string out;
    std::string err;
    std::string notes; // what the code wrote to its `notes` descriptor

    bool exited(int code) const { return WIFEXITED(status) && WEXITSTATUS(status) == code; }
    bool killed(int signal) const { return WIFSIGNALED(status) && WTERMSIG(status) == signal; }
};

// Waits for a child to end, and ends it where it would take more than a minute.
inline int status_of_child(pid_t child) {
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
    pollfd ended = {handle, POLLIN, 0};
    if (poll(&ended, 1, 60'000) != 1)
        kill(child, SIGKILL);
    close(handle);
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

// Runs `code` in a child process. `code` is given a descriptor that outlives standard error, for notes. When
// it comes back the child leaves at once, without flushing anything.
template <class Code>
Ending in_child(Code code) {
    std::fflush(nullptr);
    FILE *files[3] = {std::tmpfile(), std::tmpfile(), std::tmpfile()};
    const pid_t child = fork();
    if (child < 0)
        std::abort(); // there is nothing to wait for, and -1 would mean every process
    if (child == 0) {
        dup2(fileno(files[0]), STDOUT_FILENO);
        dup2(fileno(files[1]), STDERR_FILENO);
        code(fileno(files[2]));
        _exit(0);
    }
    Ending ending;
    ending.status = status_of_child(child);
    ending.out = content_of(fileno(files[0]));
    ending.err = content_of(fileno(files[1]));
    ending.notes = content_of(fileno(files[2]));
    for (FILE *file : files)
        std::fclose(file);
    return ending;
}

// A note from code that may run in a signal handler or after standard error is gone.
inline void note(int notes, const std::string &text) {
    if (write(notes, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        _exit(99);
}

} // namespace support

// A check inside a child: where it fails the notes say so, and the test expects them to be empty.
#define CHILD_CHECK(notes, condition)                                                            \
    do {                                                                                         \
        if (!(condition))                                                                        \
            ::support::note(notes, "line " + std::to_string(__LINE__) + ": " #condition "\n"); \
    } while (0)

#endif

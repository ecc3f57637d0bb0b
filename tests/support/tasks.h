// What the system tells of this process's threads, and waits that end.
#ifndef TESTS_SUPPORT_TASKS_H
#define TESTS_SUPPORT_TASKS_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <thread>

#include <dirent.h>
#include <unistd.h>

namespace support {

// Far more than anything here takes, even under a sanitizer on a busy machine.
constexpr std::chrono::seconds PATIENCE(30);

// Whether `condition` comes true while there is patience.
template <class Condition>
bool eventually(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + PATIENCE;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    return true;
}

struct Task {
    char state = '?';          // S while it waits
    std::uint64_t blocked = 0; // signal n is bit n - 1
    std::uint64_t pending = 0; // those sent to the thread itself

    bool blocks(int signal) const { return (blocked >> (signal - 1) & 1) != 0; }
};

inline Task task_of(pid_t id) {
    Task task;
    std::ifstream status("/proc/self/task/" + std::to_string(id) + "/status");
    for (std::string word; status >> word;) {
        if (word == "State:")
            status >> task.state;
        else if (word == "SigBlk:" && status >> word)
            task.blocked = std::strtoull(word.c_str(), nullptr, 16);
        else if (word == "SigPnd:" && status >> word)
            task.pending = std::strtoull(word.c_str(), nullptr, 16);
    }
    return task;
}

using Tasks = std::map<pid_t, Task>;

inline Tasks all_tasks() {
    Tasks tasks;
    DIR *directory = opendir("/proc/self/task");
    while (const dirent *entry = readdir(directory))
        if (const int id = std::atoi(entry->d_name); id > 0)
            tasks[id] = task_of(id);
    closedir(directory);
    return tasks;
}

// Those that were not there in `before`.
inline Tasks tasks_since(const Tasks &before) {
    Tasks tasks = all_tasks();
    for (const auto &[id, task] : before)
        tasks.erase(id);
    return tasks;
}

// Whether a thread comes to wait for something.
inline bool sleeps(pid_t id) {
    return eventually([&] { return task_of(id).state == 'S'; });
}

// A thread that is known to the system by the time the constructor is through.
class Runner {
public:
    template <class Code>
    explicit Runner(Code code)
        : thread_([this, code] {
              id_ = gettid();
              code();
          }) {
        eventually([this] { return id_ != 0; });
    }
    ~Runner() {
        if (thread_.joinable())
            thread_.join();
    }
    pid_t id() const { return id_; }
    pthread_t handle() { return thread_.native_handle(); }
    void join() { thread_.join(); }

private:
    std::atomic<pid_t> id_ = 0;
    std::thread thread_;
};

} // namespace support

#endif

// Taking and giving back a recursive mutex that nobody else wants: once, three levels deep, and the inner levels
// alone.
#include "contest.h"

#include <dlxcomn/dlxcomn.h>

#include <prmon.h>

#include <mutex>

namespace bench {
namespace {

// ---- Contenders -----------------------------------------------------------------------------------------------
// Each has take() and release().

class Library {
public:
    Library() { comn_create_mutex(&mutex_); }
    ~Library() { comn_delete_mutex(mutex_); }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    void take() { comn_take_mutex(mutex_); }
    void release() { comn_release_mutex(mutex_); }

private:
    CS_THRDRES *mutex_ = nullptr;
};

class SystemRecursive {
public:
    SystemRecursive() {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&mutex_, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    ~SystemRecursive() { pthread_mutex_destroy(&mutex_); }
    SystemRecursive(const SystemRecursive &) = delete;
    SystemRecursive &operator=(const SystemRecursive &) = delete;

    void take() { pthread_mutex_lock(&mutex_); }
    void release() { pthread_mutex_unlock(&mutex_); }

private:
    pthread_mutex_t mutex_;
};

class StandardRecursive {
public:
    void take() { mutex_.lock(); }
    void release() { mutex_.unlock(); }

private:
    std::recursive_mutex mutex_;
};

class Monitor {
public:
    Monitor() : monitor_(PR_NewMonitor()) {}
    ~Monitor() { PR_DestroyMonitor(monitor_); }
    Monitor(const Monitor &) = delete;
    Monitor &operator=(const Monitor &) = delete;

    void take() { PR_EnterMonitor(monitor_); }
    void release() { PR_ExitMonitor(monitor_); }

private:
    PRMonitor *monitor_;
};

// ---- Work -----------------------------------------------------------------------------------------------------

struct Levels {
    int outer; // held all the time
    int inner; // taken and given back for each value
};

template <class Mutex>
class Nesting {
public:
    explicit Nesting(const Levels &levels) : levels_(levels) {
        for (int level = 0; level < levels_.outer; ++level)
            mutex_.take();
    }
    ~Nesting() {
        for (int level = 0; level < levels_.outer; ++level)
            mutex_.release();
    }
    Nesting(const Nesting &) = delete;
    Nesting &operator=(const Nesting &) = delete;

    void work(std::size_t) {
        for (int level = 0; level < levels_.inner; ++level)
            mutex_.take();
        ++guarded_;
        for (int level = 0; level < levels_.inner; ++level)
            mutex_.release();
    }
    bool right(std::size_t i) const { return guarded_ == i + 1; }

private:
    Levels levels_;
    Mutex mutex_;
    std::size_t guarded_ = 0;
};

void enter_row(const std::string &row, const Levels &levels) {
    enter<Nesting<Library>>(row, LIBRARY, levels);
    enter<Nesting<SystemRecursive>>(row, "pthread recursive", levels);
    enter<Nesting<StandardRecursive>>(row, "std::recursive_mutex", levels);
    enter<Nesting<Monitor>>(row, "NSPR", levels);
}

} // namespace

void enter_mutex_rows() {
    static const Levels depth_1 = {0, 1};
    static const Levels depth_3 = {0, 3};
    static const Levels inner = {1, 2};
    enter_row("mutex depth 1", depth_1);
    enter_row("mutex depth 3", depth_3);
    enter_row("mutex levels 2 and 3", inner);
}

} // namespace bench

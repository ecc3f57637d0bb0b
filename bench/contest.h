// One row of the table: contenders that do the same work on the same values.
//
// A contender is an object that is made from the row's data, outside the measured time. work(i) handles the
// i-th value, and right(i) tells whether the result it left behind is the right one. Every value is checked
// before the clock starts; a contender that fails has no time, only its complaint.
#ifndef BENCH_CONTEST_H
#define BENCH_CONTEST_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

namespace bench {

// Values in a batch: enough that their order is not learned by heart, few enough to stay in the cache.
constexpr std::size_t VALUES = 1024;

// The name of the column that the others are compared with.
constexpr const char *LIBRARY = "this library";

template <class Contender, class Data>
void measure(benchmark::State &state, const Data &data) {
    Contender contender(data);
    benchmark::DoNotOptimize(&contender); // its buffers are known outside: nothing written there is left out
    for (std::size_t i = 0; i < VALUES; ++i) {
        contender.work(i);
        if (!contender.right(i)) {
            state.SkipWithError(("wrong result for value " + std::to_string(i)).c_str());
            return;
        }
    }
    while (state.KeepRunningBatch(VALUES)) {
        for (std::size_t i = 0; i < VALUES; ++i) {
            contender.work(i);
            benchmark::ClobberMemory();
        }
    }
}

// Enters a contender in the row; data is read by all contenders of the row and lives as long as the process.
template <class Contender, class Data>
void enter(const std::string &row, const char *name, const Data &data) {
    benchmark::RegisterBenchmark((row + '/' + name).c_str(),
                                 [&data](benchmark::State &state) { measure<Contender>(state, data); });
}

// The rows of each file, in the order of the table.
void enter_text_rows();
void enter_numeric_text_rows();
void enter_numeric_rows();
void enter_money_rows();
void enter_date_rows();
void enter_dispatch_rows();
void enter_pool_rows();
void enter_list_rows();
void enter_locfile_rows();
void enter_mutex_rows();
void enter_utf_rows();
void enter_sort_rows();
void enter_locale_rows();
void enter_charset_rows();
void enter_message_rows();

} // namespace bench

#endif

// The benchmarks of all rows in one program, so that one run measures every contender on the same machine state.
#include "contest.h"

int main(int argc, char **argv) {
    benchmark::AddCustomContext("compiler", BENCH_COMPILER);
    bench::enter_text_rows();
    bench::enter_numeric_text_rows();
    bench::enter_numeric_rows();
    bench::enter_money_rows();
    bench::enter_date_rows();
    bench::enter_dispatch_rows();
    bench::enter_pool_rows();
    bench::enter_list_rows();
    bench::enter_locfile_rows();
    bench::enter_mutex_rows();
    bench::enter_utf_rows();
    bench::enter_sort_rows();
    bench::enter_locale_rows();
    bench::enter_charset_rows();
    bench::enter_message_rows();

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

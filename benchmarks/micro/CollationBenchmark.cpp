#include <benchmark/benchmark.h>

#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/text/ICUCollation.h"

namespace {

void sortNames(benchmark::State& state) {
    const LinuxEnvironment environment;
    const ICUCollation collation(environment);
    std::vector<std::string> names;
    for (std::int64_t number = 0; number < state.range(0); ++number) {
        names.push_back((number % 3 == 0 ? "Report " : "source") + std::to_string(number * 7919 % state.range(0)));
    }
    const std::vector<std::string_view> views(names.begin(), names.end());
    for (auto iteration : state) benchmark::DoNotOptimize(sortedOrder(collation, views));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(sortNames)->Arg(100)->Arg(10'000)->Arg(100'000);

} // namespace

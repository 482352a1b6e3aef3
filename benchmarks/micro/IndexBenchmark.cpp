#include <benchmark/benchmark.h>

#include "identity/EventNodeIDHint.h"
#include "identity/EventNodePathIndex.h"

namespace {

constexpr std::uint64_t filesInFolder = 10;

std::string pathOf(std::uint64_t number) {
    return "/project/folder" + std::to_string(number / filesInFolder) + "/file" + std::to_string(number);
}

EventNodePathIndex filledIndex(std::uint64_t count) {
    PathTree tree("/project");
    PathTree::Node folder = PathTree::none;
    const PathTree::Node root = tree.appendChild(PathTree::top, "", 1);
    for (std::uint64_t number = 0; number < count; ++number) {
        if (number % filesInFolder == 0) {
            folder = tree.appendChild(root, "folder" + std::to_string(number / filesInFolder), 0);
        }
        tree.appendChild(folder, "file" + std::to_string(number), number + 2);
    }
    return EventNodePathIndex(std::move(tree));
}

void indexTree(benchmark::State& state) {
    for (auto iteration : state) benchmark::DoNotOptimize(filledIndex(static_cast<std::uint64_t>(state.range(0))));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(indexTree)->Arg(10'000)->Arg(100'000)->Arg(500'000);

void findPath(benchmark::State& state) {
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const EventNodePathIndex index = filledIndex(count);
    std::uint64_t number = 0;
    for (auto iteration : state) {
        number = (number + 7919) % count;
        benchmark::DoNotOptimize(index.path(eventNodeIDHint(number + 2)));
    }
}
BENCHMARK(findPath)->Arg(10'000)->Arg(500'000);

void setAndRemove(benchmark::State& state) {
    const auto count = static_cast<std::uint64_t>(state.range(0));
    EventNodePathIndex index = filledIndex(count);
    std::uint64_t number = 0;
    for (auto iteration : state) {
        number = (number + 7919) % count;
        const std::string path = pathOf(number) + "-new";
        index.set(eventNodeIDHint(count + 2), path);
        index.removeAtOrWithin(path);
    }
}
BENCHMARK(setAndRemove)->Arg(10'000)->Arg(500'000);

void renameFolder(benchmark::State& state) {
    EventNodePathIndex index = filledIndex(static_cast<std::uint64_t>(state.range(0)));
    for (auto iteration : state) {
        index.remap("/project/folder1", "/project/renamed");
        index.remap("/project/renamed", "/project/folder1");
    }
}
BENCHMARK(renameFolder)->Arg(10'000)->Arg(500'000);

} // namespace

#include <benchmark/benchmark.h>

#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "watch/RefreshKeys.h"

namespace {

// An event in a folder that nobody has loaded, with so many others loaded.
void refreshKeysOfUnloadedFolder(benchmark::State& state) {
    const LinuxEnvironment environment;
    const LinuxFileManager fileManager(environment);
    ManagedWorkspace workspace("/project");
    workspace.loadedDirectoryPaths.insert("/project");
    for (std::int64_t number = 0; number < state.range(0); ++number) {
        workspace.loadedDirectoryPaths.insert("/project/folder" + std::to_string(number));
    }
    const WorkspaceWatchEvent event{
        .rootPath = "/project", .path = "/project/other/deep/below/file", .kind = WorkspaceWatchEventKind::itemCreated};
    for (auto iteration : state) benchmark::DoNotOptimize(refreshKeys(workspace, event, fileManager));
}
BENCHMARK(refreshKeysOfUnloadedFolder)->Arg(1)->Arg(1'000);

} // namespace

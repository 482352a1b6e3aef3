#include "workspace/MutationPayload.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "workspace/PathComponents.h"

namespace {

std::string_view sortedPath(const WorkspaceBrowserMutationPayload& mutation) {
    if (mutation.destinationPath) return *mutation.destinationPath;
    return mutation.sourcePath ? std::string_view(*mutation.sourcePath) : std::string_view();
}

} // namespace

WorkspaceBrowserMutationPayload workspaceMutationPayload(WorkspaceBrowserMutationPayload mutation,
                                                         const std::vector<std::string>& touchedPaths,
                                                         const FileManager& fileManager) {
    mutation.affectedDirectoryPaths = affectedDirectoryPaths(touchedPaths, mutation.rootPath, fileManager);
    return mutation;
}

std::vector<std::string> affectedDirectoryPaths(const std::vector<std::string>& touchedPaths,
                                                const std::string& rootPath, const FileManager& fileManager) {
    std::set<std::string> affected;
    for (const std::string& path : touchedPaths) {
        std::string directoryPath = fileManager.isDirectory(path) ? path : parentPath(path);
        if (isAtOrWithin(directoryPath, rootPath)) affected.insert(std::move(directoryPath));
    }
    return {affected.begin(), affected.end()};
}

std::vector<WorkspaceBrowserMutationPayload> workspaceMutationSort(
    std::vector<WorkspaceBrowserMutationPayload> mutations, const Collation& collation) {
    const auto isDeletion = [](const auto& mutation) { return !mutation.destinationPath; };
    if (std::ranges::any_of(mutations, isDeletion))
        std::stable_partition(mutations.begin(), mutations.end(), isDeletion);
    std::vector<std::string_view> paths;
    paths.reserve(mutations.size());
    for (const WorkspaceBrowserMutationPayload& mutation : mutations) paths.push_back(sortedPath(mutation));

    std::vector<WorkspaceBrowserMutationPayload> sorted;
    sorted.reserve(mutations.size());
    for (const std::size_t position : sortedOrder(collation, paths)) sorted.push_back(std::move(mutations[position]));
    return sorted;
}

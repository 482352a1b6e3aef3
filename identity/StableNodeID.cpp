#include "identity/StableNodeID.h"

#include "platform/PlatformError.h"
#include "workspace/WorkspacePathRules.h"

namespace {

FileAttributes attributesOf(const std::string& path, const FileManager& fileManager) {
    try {
        return fileManager.attributesOfItem(path, FollowLinks::no);
    } catch (const PlatformError&) {
        return {};
    }
}

std::string nodeIDFromKey(const std::string& path, const StableNodeKey& key, StableNodeIDTable& table,
                          const FileManager& fileManager) {
    return table.nodeID(path, key, [&](const std::string& other) { return fileManager.itemExists(other); });
}

std::string nodeIDFromNumbers(const std::string& path, std::optional<std::uint64_t> fileSystemNumber,
                              std::optional<std::uint64_t> fileNumber, StableNodeIDTable& table,
                              const FileManager& fileManager) {
    if (!fileNumber) return "path:" + path;
    return nodeIDFromKey(path, StableNodeKey(fileSystemNumber.value_or(0), *fileNumber), table, fileManager);
}

} // namespace

std::string stableNodeIDString(const FileIdentifier& identifier) {
    return StableNodeKey(identifier).nodeID();
}

std::string stableNodeID(std::string_view path, StableNodeIDTable& table, const FileIdentification& fileIdentification,
                         const FileManager& fileManager) {
    const std::string normalized = normalizedPath(path, fileManager);
    if (const auto identifier = fileIdentification.fileResourceIdentifier(normalized)) {
        return nodeIDFromKey(normalized, StableNodeKey(*identifier), table, fileManager);
    }
    const FileAttributes attributes = attributesOf(normalized, fileManager);
    return nodeIDFromNumbers(normalized, attributes.fileSystemNumber, attributes.fileNumber, table, fileManager);
}

std::string stableNodeID(const std::string& path, const IdentifiedEntry& entry, StableNodeIDTable& table,
                         const FileManager& fileManager) {
    if (entry.identifier) return nodeIDFromKey(path, StableNodeKey(*entry.identifier), table, fileManager);
    return nodeIDFromNumbers(path, entry.fileSystemNumber, entry.fileNumber, table, fileManager);
}

std::optional<std::string> eventNodeIDHint(std::string_view path, const FileManager& fileManager) {
    const auto fileNumber = attributesOf(normalizedPath(path, fileManager), fileManager).fileNumber;
    if (!fileNumber) return std::nullopt;
    return eventNodeIDHint(*fileNumber);
}

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "identity/EventNodeIDHint.h"
#include "identity/StableNodeIDTable.h"
#include "platform/FileIdentification.h"
#include "platform/FileIdentifier.h"
#include "platform/FileManager.h"

// The two names of an item that outlive its path: the stable node ID, which the client sees, and the cheaper event node
// ID hint, which is also what an event of the watch stream carries.

// "number:", "data:", "string:", "uuid:" or "object:" and the value.
std::string stableNodeIDString(const FileIdentifier& identifier);

// The ID of what is at the path; "path:" and the normalised path when nothing can be learnt about it.
std::string stableNodeID(std::string_view path, StableNodeIDTable& table, const FileIdentification& fileIdentification,
                         const FileManager& fileManager);

// The same of an entry that was met while its directory was listed. The path is in normal form.
std::string stableNodeID(const std::string& path, const IdentifiedEntry& entry, StableNodeIDTable& table,
                         const FileManager& fileManager);

// Absent when the item is gone. Links are not followed.
std::optional<std::string> eventNodeIDHint(std::string_view path, const FileManager& fileManager);

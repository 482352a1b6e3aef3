#pragma once

#include "platform/FileIdentification.h"
#include "platform/linux/files/FileKey.h"

class LinuxFileIdentification final : public FileIdentification {
public:
    std::optional<FileIdentifier> fileResourceIdentifier(const std::string& path) const override;

    // One system call for each entry where the file system is trusted with the numbers beside the names, else two.
    void forEachIdentifiedEntry(const std::string& directoryPath,
                                const std::function<void(const IdentifiedEntry&)>& visit) const override;

private:
    FileKeys keys{};
};

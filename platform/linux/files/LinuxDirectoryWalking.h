#pragma once

#include "platform/DirectoryWalking.h"

class LinuxDirectoryWalking final : public DirectoryWalking {
public:
    std::unique_ptr<DirectoryWalk> walk(const std::string& directoryPath, FollowLinks links) const override;
};

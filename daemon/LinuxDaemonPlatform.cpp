#include "daemon/LinuxDaemonPlatform.h"

#include <unistd.h>

#include "platform/SerialQueue.h"
#include "platform/SteadyClock.h"
#include "platform/linux/DescriptorOutput.h"
#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/RandomUUID.h"
#include "platform/linux/ThreadPriority.h"
#include "platform/linux/files/LinuxDirectoryWalking.h"
#include "platform/linux/files/LinuxFileIdentification.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/text/ICUCollation.h"
#include "platform/linux/text/ICUTextCoding.h"
#include "platform/linux/watch/LinuxEventStreamSource.h"

DaemonPlatform linuxDaemonPlatform() {
    auto environment = std::make_unique<LinuxEnvironment>();
    auto fileManager = std::make_unique<LinuxFileManager>(*environment);
    auto collation = std::make_unique<ICUCollation>(*environment);
    return {
        .environment = std::move(environment),
        .fileManager = std::move(fileManager),
        .fileIdentification = std::make_unique<LinuxFileIdentification>(),
        .directoryWalking = std::make_unique<LinuxDirectoryWalking>(),
        .textCoding = std::make_unique<ICUTextCoding>(),
        .collation = std::move(collation),
        .output = std::make_unique<DescriptorOutput>(STDOUT_FILENO, STDIN_FILENO),
        .errorOutput = std::make_unique<DescriptorOutput>(STDERR_FILENO, STDIN_FILENO),
        .clock = std::make_unique<SteadyClock>(),
        .eventStreamSource = std::make_unique<LinuxEventStreamSource>(),
        .queue = std::make_unique<SerialQueue>("com.marblefern.editor-document-daemon"),
        .workspaceIndexingQueue =
            std::make_unique<SerialQueue>("com.marblefern.editor-document-daemon.workspace-index", lowerThreadPriority),
        .watchQueue =
            std::make_unique<SerialQueue>("com.marblefern.editor-document-daemon.workspace-watch", keepTimeExactly),
        .makeUUID = makeRandomUUID,
    };
}

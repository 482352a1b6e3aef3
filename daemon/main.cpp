#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "daemon/EditorDocumentDaemon.h"
#include "daemon/LinuxDaemonPlatform.h"
#include "platform/linux/DescriptorLineInput.h"
#include "platform/linux/PipeSize.h"
#include "platform/linux/StandardDescriptors.h"

namespace {

constexpr int usageError = 64;
constexpr int systemError = 71;

// All threads start here, so that a lack of them later on cannot end a daemon that holds documents.
std::shared_ptr<EditorDocumentDaemon> daemonWithItsThreads() {
    try {
        return std::make_shared<EditorDocumentDaemon>(linuxDaemonPlatform());
    } catch (const std::system_error& error) {
        std::fprintf(stderr, "EditorDocumentDaemon: no thread can be started: %s\n", error.what());
        std::_Exit(systemError);
    }
}

} // namespace

int main(int argumentCount, char**) {
    fillStandardDescriptors();
    if (argumentCount > 1) {
        std::fputs("usage: marblefern EditorDocumentDaemon\n", stderr);
        return usageError;
    }
    // A reader that closes the other end is no reason to die, nor is a save beyond the limit on the size of files.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    enlargePipe(STDIN_FILENO);

    const auto daemon = daemonWithItsThreads();
    DescriptorLineInput input(STDIN_FILENO);
    daemon->run(input);

    // Nothing is waited for: every envelope was handed to the system when it was written.
    std::_Exit(EXIT_SUCCESS);
}

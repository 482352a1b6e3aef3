#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Clock.h"
#include "platform/Collation.h"
#include "platform/DirectoryWalking.h"
#include "platform/Environment.h"
#include "platform/EventStream.h"
#include "platform/FileIdentification.h"
#include "platform/FileManager.h"
#include "platform/Output.h"
#include "platform/Queue.h"
#include "platform/TextCoding.h"

// All that the daemon asks of the system. Another system, or a test, brings its own.
struct DaemonPlatform {
    std::unique_ptr<Environment> environment{};
    std::unique_ptr<FileManager> fileManager{};
    std::unique_ptr<FileIdentification> fileIdentification{};
    std::unique_ptr<DirectoryWalking> directoryWalking{};
    std::unique_ptr<TextCoding> textCoding{};
    std::unique_ptr<Collation> collation{};
    std::unique_ptr<Output> output{};
    std::unique_ptr<Output> errorOutput{};
    std::unique_ptr<Clock> clock{};
    std::unique_ptr<EventStreamSource> eventStreamSource{}; // without it nothing is watched
    std::unique_ptr<Queue> queue{};
    std::unique_ptr<Queue> workspaceIndexingQueue{};
    std::unique_ptr<Queue> watchQueue{};
    std::function<std::string()> makeUUID{};
};

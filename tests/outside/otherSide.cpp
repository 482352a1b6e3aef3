#include <iostream>

#include <platform/PlatformError.h>
#include <platform/linux/LinuxEnvironment.h>
#include <platform/linux/files/LinuxFileManager.h>
#include <shared/AutoWakeStateStore.h>
#include <shared/ConduitSharedPaths.h>
#include <shared/EditorDocumentDaemonEnvelope.h>
#include <shared/RecordCoding.h>

// What editor.cpp leaves out: it reads requests and answers with envelopes, as a stand-in for the daemon would, and
// counts them in the auto-wake state of the user.
int main() try {
    LinuxEnvironment environment;
    LinuxFileManager fileManager(environment);
    AutoWakeStateStore store(ConduitSharedPaths::autoWakeStateStoreURL(fileManager, environment), fileManager);
    for (std::string line; std::getline(std::cin, line);) {
        const auto request = decodeRecord<EditorDocumentDaemonRequest>(line);
        const auto count = store.update([&](AutoWakeStoreSnapshot& snapshot) {
            snapshot.events.push_back({.id = request.requestID, .createdAt = std::chrono::system_clock::now()});
            return snapshot.events.size();
        });
        std::cout << encodeRecord(EditorDocumentDaemonEnvelope{.requestID = request.requestID,
                                                               .success = true,
                                                               .message = std::to_string(count)})
                         .value()
                  << std::endl;
    }
} catch (const DecodingError& error) {
    std::cerr << error.localizedDescription << '\n';
    return 65;
} catch (const PlatformError& error) {
    std::cerr << error.domain << ' ' << error.code << '\n';
    return 74;
}

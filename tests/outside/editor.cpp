#include <iostream>

#include <shared/EditorDocumentDaemonClient.h>
#include <shared/RecordCoding.h>

int main(int, char* arguments[]) {
    using Command = EditorDocumentRequestCommand;
    EditorDocumentDaemonClient daemon;
    daemon.onEvent = [](const auto& event) { std::cout << encodeRecord(event).value() << std::endl; };

    daemon.ask({.command = Command::openWorkspace, .rootPath = arguments[1]});
    const auto opened = daemon.ask({.command = Command::open, .path = arguments[2]});
    if (!opened.snapshot) {
        std::cerr << opened.message.value_or("no text") << '\n';
        return 1;
    }
    daemon.ask({.command = Command::save,
                .documentID = opened.snapshot->documentID,
                .text = opened.snapshot->text + "All is well.\n",
                .expectedVersion = opened.snapshot->version});
    while (daemon.wait()) continue;
}

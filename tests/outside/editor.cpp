#include <iostream>
#include <string>

#include <shared/EditorDocumentDaemonEnvelope.h>
#include <shared/RecordCoding.h>

int main(int, char* arguments[]) {
    const EditorDocumentDaemonRequest request{
        .requestID = "1", .command = EditorDocumentRequestCommand::open, .path = arguments[1]};
    std::cout << encodeRecord(request).value() << std::endl;
    std::string line;
    std::getline(std::cin, line);
    const auto envelope = decodeRecord<EditorDocumentDaemonEnvelope>(line);
    std::cerr << (envelope.snapshot ? envelope.snapshot->text : envelope.message.value_or("no text")) << '\n';
}

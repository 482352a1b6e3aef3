#pragma once

#include <deque>
#include <string>
#include <vector>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "tests/process/DaemonProcess.h"

// A client of the executable that speaks in records. Waits up to the deadline of DaemonProcess.
class DaemonClient {
public:
    explicit DaemonClient(std::vector<std::string> environment = {}, const std::vector<std::string>& launcher = {});

    // The response to the request. Events that come before it wait for nextEvent().
    EditorDocumentDaemonEnvelope ask(EditorDocumentDaemonRequest request);

    // The same without waiting. Returns the ID under which the response will come.
    std::string send(EditorDocumentDaemonRequest request);

    // The next envelope that is no response.
    EditorDocumentDaemonEnvelope nextEvent();
    EditorDocumentDaemonEnvelope nextEnvelope();

    DaemonProcess process;

private:
    EditorDocumentDaemonEnvelope readEnvelope();

    std::deque<EditorDocumentDaemonEnvelope> waiting;
    int requestCount = 0;
};

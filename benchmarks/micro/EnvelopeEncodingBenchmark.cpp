#include <benchmark/benchmark.h>

#include "driver/SampleText.h"
#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/RecordCoding.h"

namespace {

EditorDocumentDaemonEnvelope refusal() {
    return {.kind = EditorDocumentEnvelopeKind::response,
            .requestID = "1234",
            .command = EditorDocumentRequestCommand::close,
            .success = false,
            .message = "Unknown document."};
}

EditorDocumentDaemonEnvelope listing(std::size_t count) {
    WorkspaceBrowserDirectoryPayload directory{.rootPath = "/home/you/project", .directoryPath = "/home/you/project"};
    for (std::size_t number = 0; number < count; ++number) {
        const std::string name = "source" + std::to_string(number) + ".cpp";
        directory.nodes.push_back({.nodeID = "data:AP4AAAAAAAABSD+oAJcRWvM=",
                                   .path = "/home/you/project/" + name,
                                   .parentPath = "/home/you/project",
                                   .name = name});
    }
    return {.kind = EditorDocumentEnvelopeKind::response, .workspaceDirectory = std::move(directory)};
}

void encode(benchmark::State& state, const EditorDocumentDaemonEnvelope& envelope) {
    std::size_t size = 0;
    for (auto iteration : state) {
        const auto line = encodeRecord(envelope);
        size += line->size();
        benchmark::DoNotOptimize(line->data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(size));
}

void encodeRefusal(benchmark::State& state) {
    encode(state, refusal());
}
BENCHMARK(encodeRefusal);

void encodeListing(benchmark::State& state) {
    encode(state, listing(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(encodeListing)->Arg(100)->Arg(10'000);

void encodeText(benchmark::State& state) {
    encode(state,
           {.snapshot = EditorDocumentSnapshotPayload{.text = sampleText(static_cast<std::size_t>(state.range(0)))}});
}
BENCHMARK(encodeText)->Arg(10'000)->Arg(8'388'608);

} // namespace

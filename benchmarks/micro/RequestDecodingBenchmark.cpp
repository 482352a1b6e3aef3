#include <benchmark/benchmark.h>

#include "driver/Requests.h"
#include "driver/SampleText.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "shared/RecordCoding.h"

namespace {

void decode(benchmark::State& state, std::string line) {
    const std::size_t size = line.size();
    line.append(decodingPadding, ' ');
    for (auto iteration : state) {
        auto request = decodeRecord<EditorDocumentDaemonRequest>(std::string_view(line).substr(0, size), line.size());
        benchmark::DoNotOptimize(request);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void decodeClose(benchmark::State& state) {
    decode(state, closeRequest());
}
BENCHMARK(decodeClose);

void decodeSave(benchmark::State& state) {
    decode(state, saveRequest("id", sampleText(static_cast<std::size_t>(state.range(0))), 1));
}
BENCHMARK(decodeSave)->Arg(10'000)->Arg(8'388'608);

} // namespace

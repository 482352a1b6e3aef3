#include "platform/linux/text/EncodingEvidence.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

constexpr std::size_t sampleSize = 64 * 1024;
constexpr std::size_t contextSize = 512;

bool isASCII(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

// The first lines that hold anything beyond ASCII; the others say nothing about the encoding. Of what stands before it
// in a line only the nearest part is taken: a line may be as long as the file.
std::string tellingLines(std::string_view data) {
    std::string sample;
    while (sample.size() < sampleSize) {
        const auto telling = std::ranges::find_if_not(data, isASCII);
        if (telling == data.end()) break;
        const auto index = static_cast<std::size_t>(telling - data.begin());
        const std::size_t start = std::max(data.rfind('\n', index) + 1, index - std::min(index, contextSize));
        const std::size_t end = std::min(data.find('\n', index), data.size() - 1) + 1;
        sample.append(data.substr(start, std::min(end - start, sampleSize - sample.size())));
        data.remove_prefix(end);
    }
    return sample;
}

std::bitset<256> byteValuesOf(std::string_view data) {
    std::array<bool, 256> seen{};
    for (const char byte : data) seen[static_cast<unsigned char>(byte)] = true;
    std::bitset<256> values;
    for (std::size_t byte = 0; byte < seen.size(); ++byte) values[byte] = seen[byte];
    return values;
}

// Both ends of the text count as line ends.
std::vector<BytePair> bytePairsOf(std::string_view sample) {
    std::vector<std::uint32_t> counts(0x10000);
    unsigned char previous = '\n';
    for (const char byte : sample) {
        const auto next = static_cast<unsigned char>(byte);
        ++counts[static_cast<std::size_t>(previous << 8 | next)];
        previous = next;
    }
    ++counts[static_cast<std::size_t>(previous << 8 | '\n')];
    std::vector<BytePair> pairs;
    for (std::size_t pair = 0; pair < counts.size(); ++pair) {
        if (counts[pair] == 0) continue;
        pairs.push_back({static_cast<unsigned char>(pair >> 8), static_cast<unsigned char>(pair & 0xFF),
                         static_cast<float>(counts[pair])});
    }
    return pairs;
}

} // namespace

EncodingEvidence encodingEvidence(std::string_view data) {
    EncodingEvidence evidence{.byteValues = byteValuesOf(data), .sample = tellingLines(data)};
    evidence.pairs = bytePairsOf(evidence.sample);
    return evidence;
}

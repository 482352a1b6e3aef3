// DetectionBenchmark FOLDER: the share of the samples in FOLDER that detectors decode to the right text.

#include <unicode/ucsdet.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/text/CharsetGuess.h"
#include "platform/linux/text/Converter.h"
#include "platform/linux/text/ICUTextCoding.h"

namespace {

using Decoder = std::function<std::optional<std::string>(const std::string& data)>;

struct Sample {
    std::string encoding{}, size{}, name{}, data{}, text{};
};

struct Score {
    int right{}, all{};
};

std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<Sample> samplesIn(const std::filesystem::path& folder) {
    std::vector<Sample> samples;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.path().extension() != ".data") continue;
        const std::string name = entry.path().stem();
        const std::string text = contentsOf(std::filesystem::path(entry.path()).replace_extension(".text"));
        samples.push_back({entry.path().parent_path().filename(), name.substr(0, name.find('-')), name,
                           contentsOf(entry.path()), text});
    }
    return samples;
}

// Other detectors name a character set only; a mark at the beginning is not held against them.
std::optional<std::string> decodedAs(const char* charset, const std::string& data) {
    const auto converter = Converter::named(charset);
    const auto wide = converter ? converter->decode(data, EndOfBytes::complete) : std::nullopt;
    const auto text = wide ? utf8FromUTF16(*wide) : std::nullopt;
    return text && text->starts_with("\xEF\xBB\xBF") ? std::optional(text->substr(3)) : text;
}

std::optional<std::string> decodedByUchardet(const std::string& data) {
    return decodedAs(charsetGuess(data).c_str(), data);
}

std::optional<std::string> decodedByICU(const std::string& data) {
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, decltype(&ucsdet_close)> detector(ucsdet_open(&error), &ucsdet_close);
    ucsdet_setText(detector.get(), data.data(), static_cast<std::int32_t>(data.size()), &error);
    const UCharsetMatch* match = ucsdet_detect(detector.get(), &error);
    return match ? decodedAs(ucsdet_getName(match, &error), data) : std::nullopt;
}

void print(const char* title, const Score& score) {
    std::printf("%s %5.1f", title, score.all == 0 ? 0.0 : 100.0 * score.right / score.all);
}

void measure(const char* title, const std::vector<Sample>& samples, const Decoder& decoder, bool namesMistakes) {
    std::map<std::string, std::map<std::string, Score>> scores;
    std::map<std::string, Score> totals;
    for (const Sample& sample : samples) {
        const bool right = decoder(sample.data) == sample.text;
        for (Score* score : {&scores[sample.encoding][sample.size], &scores[sample.encoding]["all"],
                             &totals[sample.size], &totals["all"]}) {
            ++score->all;
            score->right += right ? 1 : 0;
        }
        if (!right && namesMistakes) std::printf("mistake: %s/%s\n", sample.encoding.c_str(), sample.name.c_str());
    }
    scores["all"] = totals;
    std::printf("\n%s, %% right of %zu samples\n%-18s    200     2K    50K    all\n", title, samples.size(), "");
    for (auto& [encoding, bySize] : scores) {
        std::printf("%-18s", encoding.c_str());
        for (const char* size : {"200", "2K", "50K", "all"}) print(" ", bySize[size]);
        std::printf("\n");
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 2) return std::fputs("usage: DetectionBenchmark FOLDER [mistakes]\n", stderr), 2;
    const std::vector<Sample> samples = samplesIn(arguments[1]);
    const ICUTextCoding coding;
    const auto ours = [&](const std::string& data) -> std::optional<std::string> {
        auto detected = coding.detect(data);
        return detected ? std::optional(std::move(detected->text)) : std::nullopt;
    };
    measure("this program", samples, ours, argumentCount > 2);
    if (argumentCount > 2) return 0;
    measure("uchardet alone", samples, decodedByUchardet, false);
    measure("ICU alone", samples, decodedByICU, false);
}

#pragma once

#include <array>
#include <bitset>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/TextCoding.h"
#include "platform/linux/text/EncodingEvidence.h"
#include "platform/linux/text/LanguageModel.h"

// Tells encodings apart that came before Unicode: of all in which the data can be read, the one whose text takes the
// fewest bits in some language, with a head start for the encoding that uchardet names and for the usual ones.
class LegacyEncodingDetector {
public:
    LegacyEncodingDetector();

    // Expects data that is not UTF-8. Compressed and executable bytes are refused at a glance.
    std::optional<DetectedText> detect(std::string_view data) const;

private:
    struct SingleByteEncoding {
        std::uint64_t encodingRawValue{};
        float handicap{};
        std::bitset<256> byteValues{}; // those that texts can have
        std::array<Sign, 256> signs{};
    };

    struct Verdict {
        std::uint64_t encodingRawValue{};
        float bits{};
    };

    bool readsAlike(std::uint64_t leftEncoding, std::uint64_t rightEncoding, const std::bitset<256>& byteValues) const;
    const SingleByteEncoding* singleByteEncoding(std::uint64_t encodingRawValue) const;
    void giveVote(std::vector<Verdict>& verdicts, const EncodingEvidence& evidence) const;

    std::vector<float> plainBits(const std::vector<BytePair>& pairs) const;
    float bitsInBestLanguage(const std::vector<Neighbours>& text, const std::vector<float>& plainBits) const;
    std::vector<Verdict> verdicts(const EncodingEvidence& evidence) const;

    std::vector<LanguageModel> languages{};
    std::vector<SingleByteEncoding> singleByteEncodings{};
};

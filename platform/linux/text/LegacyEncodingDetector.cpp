#include "platform/linux/text/LegacyEncodingDetector.h"

#include <algorithm>
#include <limits>
#include <unordered_map>

#include "platform/linux/text/CharsetGuess.h"
#include "platform/linux/text/Converter.h"
#include "platform/linux/text/LegacyText.h"
#include "platform/linux/text/StringEncodings.h"

namespace {

struct Candidate {
    std::uint64_t encodingRawValue;
    float handicap; // bits
};

// Where texts read alike in several encodings the first one is taken, so what is usual stands before what is not.
constexpr Candidate singleByteCandidates[] = {
    {12, 0},         // windows-1252
    {0x8000020F, 1}, // ISO-8859-15
    {15, 1},         // windows-1250
    {9, 1},          // ISO-8859-2
    {11, 1},         // windows-1251
    {0x80000A02, 1}, // KOI8-R
    {0x80000A08, 1}, // KOI8-U
    {0x80000205, 3}, // ISO-8859-5
    {0x8000041B, 3}, // IBM866
    {0x80000007, 6}, // x-mac-cyrillic
    {13, 1},         // windows-1253
    {0x80000207, 1}, // ISO-8859-7
    {14, 1},         // windows-1254
    {0x80000209, 1}, // ISO-8859-9
    {0x80000505, 1}, // windows-1255
    {0x80000208, 1}, // ISO-8859-8
    {0x80000506, 1}, // windows-1256
    {0x80000206, 1}, // ISO-8859-6
    {0x80000507, 1}, // windows-1257
    {0x8000020D, 1}, // ISO-8859-13
    {0x80000204, 6}, // ISO-8859-4
    {0x8000041D, 1}, // windows-874
    {0x80000508, 4}, // windows-1258
    {30, 3},         // macintosh
    {0x8000001D, 6}, // x-mac-centraleurroman
    {0x80000410, 4}, // IBM850
    {0x80000400, 6}, // IBM437
    {0x80000412, 4}, // IBM852
    {0x80000203, 8}, // ISO-8859-3
};

constexpr Candidate multiByteCandidates[] = {
    {8, 0},          // Shift_JIS
    {3, 0},          // EUC-JP
    {0x80000632, 0}, // GB18030
    {0x80000A03, 0}, // Big5
    {0x80000940, 0}, // windows-949
    {0x80000A06, 4}, // Big5-HKSCS
    {0x80000931, 4}, // EUC-TW
};

constexpr float voteBits = 3;
constexpr float plainWeight = 0.5F, plainPairsAtMost = 60, foreignBits = 5;

std::vector<Neighbours> neighboursIn(const std::vector<BytePair>& pairs, const std::array<Sign, 256>& signs) {
    std::vector<Neighbours> result;
    result.reserve(pairs.size());
    for (const BytePair& pair : pairs) {
        if (!pair.isPlain()) result.push_back({signs[pair.first], signs[pair.second], pair.count});
    }
    return result;
}

std::vector<Neighbours> neighboursIn(std::u16string_view text) {
    std::unordered_map<std::uint32_t, float> counts;
    char16_t previous = u'\n';
    const auto count = [&](char16_t next) {
        if (previous >= 0x80 || next >= 0x80) ++counts[static_cast<std::uint32_t>(previous) << 16 | next];
        previous = next;
    };
    std::ranges::for_each(text, count);
    count(u'\n');
    std::vector<Neighbours> pairs;
    pairs.reserve(counts.size());
    for (const auto& [pair, times] : counts) {
        pairs.push_back({signOf(static_cast<char16_t>(pair >> 16)), signOf(static_cast<char16_t>(pair)), times});
    }
    return pairs;
}

std::optional<Sign> signOfByte(const Converter& converter, unsigned char byte) {
    const std::string_view bytes(reinterpret_cast<const char*>(&byte), 1);
    const auto text = converter.decode(bytes, EndOfBytes::complete);
    if (!text || text->size() != 1 || isForeignToText(text->front())) return std::nullopt;
    if (converter.encode(*text) != bytes) return std::nullopt;
    return signOf(text->front());
}

} // namespace

LegacyEncodingDetector::LegacyEncodingDetector() {
    for (const LanguageFrequencies& language : languageFrequencies()) languages.emplace_back(language);
    for (const Candidate& candidate : singleByteCandidates) {
        const auto converter = Converter::named(converterName(candidate.encodingRawValue).value());
        if (!converter) continue;
        SingleByteEncoding encoding{candidate.encodingRawValue, candidate.handicap};
        for (std::size_t byte = 0; byte < encoding.signs.size(); ++byte) {
            const auto sign = signOfByte(*converter, static_cast<unsigned char>(byte));
            encoding.byteValues[byte] = sign.has_value();
            encoding.signs[byte] = sign.value_or(Sign{});
        }
        singleByteEncodings.push_back(encoding);
    }
}

std::optional<DetectedText> LegacyEncodingDetector::detect(std::string_view data) const {
    const EncodingEvidence evidence = encodingEvidence(data);
    for (char16_t control = 0; control < 0x80; ++control) {
        if (evidence.byteValues[control] && isForeignToText(control)) return std::nullopt;
    }
    for (const Verdict& verdict : verdicts(evidence)) {
        if (auto text = legacyText(data, verdict.encodingRawValue)) return text;
    }
    return std::nullopt;
}

// What the plain part of the sample says of each language. Next to languages in other scripts it is foreign: they do
// a little worse than the likeliest language, by the share of what is foreign.
std::vector<float> LegacyEncodingDetector::plainBits(const std::vector<BytePair>& pairs) const {
    std::vector<Neighbours> text;
    float count = 0, tellingCount = 0;
    for (const BytePair& pair : pairs) {
        if (!pair.isPlain()) tellingCount += pair.count;
        const Neighbours neighbours{signOf(pair.first), signOf(pair.second), pair.count};
        if (!pair.isPlain() || (neighbours.first.folded == u' ' && neighbours.second.folded == u' ')) continue;
        text.push_back(neighbours);
        count += pair.count;
    }
    const float foreign = foreignBits * count / (count + tellingCount);
    const float weight = std::min(plainWeight, plainPairsAtMost / std::max(count, 1.0F));
    std::vector<float> result;
    float least = std::numeric_limits<float>::max();
    for (const LanguageModel& language : languages) {
        result.push_back(weight * language.plainBits(text));
        if (language.knowsPlainPairs()) least = std::min(least, result.back());
    }
    for (std::size_t index = 0; index < languages.size(); ++index) {
        if (!languages[index].knowsPlainPairs()) result[index] = least + foreign;
    }
    return result;
}

float LegacyEncodingDetector::bitsInBestLanguage(const std::vector<Neighbours>& text,
                                                 const std::vector<float>& plainBits) const {
    float best = std::numeric_limits<float>::max();
    for (std::size_t index = 0; index < languages.size(); ++index) {
        best = std::min(best, plainBits[index] + languages[index].bits(text, best - plainBits[index]));
    }
    return best + oddityBits(text);
}

// Every encoding in which the sample can be read, the likeliest first.
std::vector<LegacyEncodingDetector::Verdict> LegacyEncodingDetector::verdicts(const EncodingEvidence& evidence) const {
    std::vector<Verdict> result;
    const std::vector<float> plain = plainBits(evidence.pairs);
    for (const SingleByteEncoding& encoding : singleByteEncodings) {
        if ((evidence.byteValues & ~encoding.byteValues).any()) continue;
        const float bits = bitsInBestLanguage(neighboursIn(evidence.pairs, encoding.signs), plain);
        result.push_back({encoding.encodingRawValue, bits + encoding.handicap});
    }
    for (const Candidate& candidate : multiByteCandidates) {
        const auto converter = Converter::named(converterName(candidate.encodingRawValue).value());
        const auto text = converter ? converter->decode(evidence.sample, EndOfBytes::mayCutACharacter) : std::nullopt;
        if (!text) continue;
        result.push_back(
            {candidate.encodingRawValue, bitsInBestLanguage(neighboursIn(*text), plain) + candidate.handicap});
    }
    giveVote(result, evidence);
    std::ranges::stable_sort(result, {}, &Verdict::bits);
    return result;
}

// Encodings that read the sample just as the named one does share its vote, and then the most usual of them wins.
void LegacyEncodingDetector::giveVote(std::vector<Verdict>& verdicts, const EncodingEvidence& evidence) const {
    const std::string guess = charsetGuess(evidence.sample);
    const auto named = std::ranges::find_if(verdicts, [&](const Verdict& verdict) {
        return namesSameCharset(guess, converterName(verdict.encodingRawValue).value());
    });
    if (named == verdicts.end()) return;
    const std::uint64_t namedEncoding = named->encodingRawValue;
    for (Verdict& verdict : verdicts) {
        const bool isNamed = verdict.encodingRawValue == namedEncoding;
        if (isNamed || readsAlike(verdict.encodingRawValue, namedEncoding, evidence.byteValues)) {
            verdict.bits -= voteBits;
        }
    }
}

bool LegacyEncodingDetector::readsAlike(std::uint64_t leftEncoding, std::uint64_t rightEncoding,
                                        const std::bitset<256>& byteValues) const {
    const SingleByteEncoding* left = singleByteEncoding(leftEncoding);
    const SingleByteEncoding* right = singleByteEncoding(rightEncoding);
    if (!left || !right) return false;
    for (std::size_t byte = 0; byte < byteValues.size(); ++byte) {
        if (byteValues[byte] && left->signs[byte] != right->signs[byte]) return false;
    }
    return true;
}

const LegacyEncodingDetector::SingleByteEncoding* LegacyEncodingDetector::singleByteEncoding(
    std::uint64_t encodingRawValue) const {
    const auto found = std::ranges::find(singleByteEncodings, encodingRawValue, &SingleByteEncoding::encodingRawValue);
    return found == singleByteEncodings.end() ? nullptr : &*found;
}

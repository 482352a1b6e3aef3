#include "platform/linux/text/LanguageModel.h"

#include <bit>

namespace {

constexpr float unlistedPairBits = 2, unlistedPlainPairBits = 12;

// In a run of ideographs every one is counted twice, but what follows is not independent of what precedes.
constexpr float withoutPairs = 0.75F;

std::uint32_t letterKey(char16_t letter) {
    return letter;
}

std::uint32_t pairKey(char16_t first, char16_t second) {
    return static_cast<std::uint32_t>(first) << 16 | second;
}

std::size_t countedEntries(const LanguageFrequencies& frequencies) {
    std::size_t count = 0;
    for (const Frequency& frequency : frequencies.letters) count += frequency.entries.size();
    for (const Frequency& frequency : frequencies.pairs) count += frequency.entries.size() / 2;
    for (const Frequency& frequency : frequencies.plainPairs) count += frequency.entries.size() / 2;
    return count;
}

} // namespace

LanguageModel::LanguageModel(const LanguageFrequencies& frequencies)
    : hasPairs(!frequencies.pairs.empty()),
      hasPlainPairs(!frequencies.plainPairs.empty()),
      slots(std::bit_ceil(countedEntries(frequencies) * 2)) {
    for (const Frequency& frequency : frequencies.letters) {
        for (const char16_t letter : frequency.entries) insert(letterKey(letter), static_cast<float>(frequency.bits));
    }
    insertPairs(frequencies.pairs);
    insertPairs(frequencies.plainPairs);
}

float LanguageModel::plainBits(std::span<const Neighbours> text) const {
    float sum = 0;
    for (const Neighbours& pair : text) {
        const auto listed = listedBits(pairKey(pair.first.folded, pair.second.folded));
        sum += pair.count * listed.value_or(unlistedPlainPairBits);
    }
    return sum;
}

float LanguageModel::bits(std::span<const Neighbours> text, float limit) const {
    float sum = 0;
    for (const Neighbours& pair : text) {
        sum += pair.count * bits(pair);
        if (sum > limit) break;
    }
    return sum;
}

void LanguageModel::insert(std::uint32_t key, float bits) {
    slots[placeOf(key)] = {key, bits};
}

void LanguageModel::insertPairs(std::span<const Frequency> pairs) {
    for (const Frequency& frequency : pairs) {
        for (std::size_t index = 0; index + 1 < frequency.entries.size(); index += 2) {
            insert(pairKey(frequency.entries[index], frequency.entries[index + 1]), static_cast<float>(frequency.bits));
        }
    }
}

// The place of the key, or the free one where it would be.
std::size_t LanguageModel::placeOf(std::uint32_t key) const {
    const std::size_t mask = slots.size() - 1;
    std::size_t place = (key * 0x9E3779B1U >> 12) & mask;
    while (slots[place].key != 0 && slots[place].key != key) place = (place + 1) & mask;
    return place;
}

std::optional<float> LanguageModel::listedBits(std::uint32_t key) const {
    const Slot& slot = slots[placeOf(key)];
    return slot.key != 0 ? std::optional(slot.bits) : std::nullopt;
}

float LanguageModel::bits(const Neighbours& pair) const {
    if (!hasPairs) return (letterBits(pair.first) + letterBits(pair.second)) * withoutPairs;
    if (const auto listed = listedBits(pairKey(pair.first.folded, pair.second.folded))) return *listed;
    return letterBits(pair.first) + letterBits(pair.second) + unlistedPairBits;
}

float LanguageModel::letterBits(const Sign& sign) const {
    return listedBits(letterKey(sign.folded)).value_or(sign.strangeness);
}

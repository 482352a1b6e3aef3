#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/linux/text/LanguageFrequencies.h"
#include "platform/linux/text/Neighbours.h"

// How many bits a text takes in a language: the fewer, the likelier it is that somebody wrote it. Only neighbours of
// which at least one is beyond ASCII tell encodings apart, for the rest is the same in all of them; but the plain
// neighbours, both ASCII, tell which language it is.

class LanguageModel {
public:
    explicit LanguageModel(const LanguageFrequencies& frequencies);

    // Languages in other scripts have no opinion on ASCII.
    bool knowsPlainPairs() const { return hasPlainPairs; }
    float plainBits(std::span<const Neighbours> text) const;

    // Gives up as soon as the limit is exceeded.
    float bits(std::span<const Neighbours> text, float limit) const;

private:
    struct Slot {
        std::uint32_t key{};
        float bits{};
    };

    void insertPairs(std::span<const Frequency> pairs);
    void insert(std::uint32_t key, float bits);
    std::size_t placeOf(std::uint32_t key) const;
    std::optional<float> listedBits(std::uint32_t key) const;
    float bits(const Neighbours& pair) const;
    float letterBits(const Sign& sign) const;

    bool hasPairs{}, hasPlainPairs{};
    std::vector<Slot> slots{}; // hashed; a key of zero is a free place
};

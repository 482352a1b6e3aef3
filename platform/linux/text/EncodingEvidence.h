#pragma once

#include <bitset>
#include <string>
#include <string_view>
#include <vector>

// What the search for an encoding looks at: every byte value that occurs anywhere, and of the lines that hold anything
// beyond ASCII the first 64 kilobytes, with the neighbours in them.

struct BytePair {
    unsigned char first{}, second{};
    float count{};

    bool isPlain() const { return first < 0x80 && second < 0x80; }
};

struct EncodingEvidence {
    std::bitset<256> byteValues{};
    std::string sample{};
    std::vector<BytePair> pairs{}; // of the sample
};

EncodingEvidence encodingEvidence(std::string_view data);

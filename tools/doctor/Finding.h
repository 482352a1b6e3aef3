#pragma once

#include <string>
#include <vector>

// One thing that was looked at, in plain words.
struct Finding {
    enum class Verdict { fine, worthKnowing, wrong };

    Verdict verdict{};
    std::string text{};
    std::vector<std::string> details{}; // a line each
    std::vector<std::string> remedy{};  // what to type; empty where nothing is to be mended

    bool operator==(const Finding&) const = default;
};

struct Chapter {
    std::string title{};
    std::vector<Finding> findings{};
};

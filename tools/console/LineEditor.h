#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The one line on which commands are typed, edited by readline: its keys, history and completion, and the user's own
// settings for them. It draws nothing. There can be only one, since readline keeps its state for the whole process.
class LineEditor {
public:
    struct Hooks {
        std::function<void(const std::optional<std::string>& line)> takeLine{}; // absent: the user wants to leave
        std::function<std::vector<std::string>(std::string_view before, std::string_view word)> complete{};
        std::function<void(const std::vector<std::string>& candidates)> showCandidates{};
        std::function<void(int pages)> scrollLog{};
        std::function<void(int lines)> scrollTree{};
    };

    LineEditor(Hooks hooks, const std::string& historyPath);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    // To be called when a key can be read from standard input.
    void readKey();

    std::string_view text() const;
    std::size_t cursor() const; // in bytes
};

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// What the user edits texts with: $VISUAL, $EDITOR, or vi.
std::string editorCommand();

// Both wait for the command, and return its exit status as the shell itself tells it. The one gives it the terminal of
// this process, the other hands over what it says, line by line.
int runOnTerminal(const std::string& command);
int runForOutput(const std::string& command, const std::function<void(const std::string&)>& takeLine);

// A text in a file of its own, for an editor. It goes with the object unless it is kept.
class Draft {
public:
    Draft(const std::string& text, std::string_view extension);
    ~Draft();
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    const std::string& path() const { return filePath; }
    std::optional<std::string> text() const;
    void keep() { isKept = true; }
    void discard() { isKept = false; }

private:
    std::string folderPath{};
    std::string filePath{};
    bool isKept = false;
};

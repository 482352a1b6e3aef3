#pragma once

#include <optional>
#include <string_view>

// Lines of input. To be called on one thread only.
class LineInput {
public:
    virtual ~LineInput() = default;

    // Free bytes that stand behind every line, so that a parser may read past its end in wide steps.
    static constexpr std::size_t padding = 64;

    // The next line without its line feed; absent at the end of input. What follows the last line feed is a line too.
    // The view holds until the next call. Throws std::bad_alloc for a line that memory cannot hold, having passed it
    // over.
    virtual std::optional<std::string_view> nextLine() = 0;
};

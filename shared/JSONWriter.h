#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "shared/JSONLayout.h"

// Writes one JSON value into a string that grows. A value that JSON cannot say (a number that is not finite, text that
// is not UTF-8) is remembered, and makes what was written worthless.
class JSONWriter {
public:
    explicit JSONWriter(JSONLayout chosenLayout) : layout(chosenLayout) {}

    void beginObject() { beginContainer('{'); }
    void key(std::string_view name);     // the value must follow; names need no escapes
    void textKey(std::string_view text); // likewise, for any text
    void endObject() { endContainer('}'); }

    void beginArray() { beginContainer('['); }
    void element() { separate(); } // the value must follow
    void endArray() { endContainer(']'); }

    void string(std::string_view text);
    void wellFormedString(std::string_view text); // for what is known to be UTF-8
    void number(double value);
    void number(std::int64_t value);
    void number(std::uint64_t value);
    void boolean(bool value) { output += value ? "true" : "false"; }

    bool isValid() const { return !hasRefused; }
    std::string takeOutput() { return std::move(output); }

private:
    void beginContainer(char opening);
    void endContainer(char closing);
    void separate();
    void breakLine();
    bool isAtBeginningOfContainer() const { return output.ends_with('{') || output.ends_with('['); }

    JSONLayout layout;
    std::string output{};
    std::size_t depth = 0;
    bool hasRefused = false;
};

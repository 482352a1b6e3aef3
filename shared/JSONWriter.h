#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "shared/JSONLayout.h"

// Writes one JSON value. A value that JSON cannot say (a number that is not finite, text that is not UTF-8) is
// remembered, and makes what was written worthless.
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
    void plainString(std::string_view text);      // for what is known to be plain ASCII
    void number(double value);
    void number(std::int64_t value);
    void number(std::uint64_t value);
    void boolean(bool value) { put(value ? "true" : "false"); }

    bool isValid() const { return !hasRefused; }
    std::string takeOutput();

private:
    void beginContainer(char opening);
    void endContainer(char closing);
    void separate();
    void breakLine();
    void put(std::string_view bytes);
    void flush();

    JSONLayout layout;
    std::string output{};
    std::size_t depth = 0;
    bool isAtBeginningOfContainer = false;
    bool hasRefused = false;
    // Records are made of very short pieces, and a string that grows by each of them costs more than they do.
    std::size_t gathered = 0;
    std::array<char, 4096> piece;
};

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "shared/JSONLayout.h"

// Writes one JSON value. A value that JSON cannot say (a number that is not finite, text that is not UTF-8) is
// remembered, and makes what was written worthless.
class JSONWriter {
public:
    explicit JSONWriter(JSONLayout chosenLayout) : layout(chosenLayout) {}

    void beginObject() { beginContainer('{'); }
    // The value must follow. Names need no escapes. Where a name is known when this is compiled, its key costs a few
    // moves of eight bytes, provided that it is compiled into its place.
    [[gnu::always_inline]] void key(std::string_view name) {
        if (layout == JSONLayout::pretty) return prettyKey(name);
        char* end = room(name.size() + 4);
        if (!isAtBeginningOfContainer) *end++ = ',';
        *end++ = '"';
        std::memcpy(end, name.data(), name.size());
        end += name.size();
        *end++ = '"';
        *end++ = ':';
        gatheredUpTo(end);
        isAtBeginningOfContainer = false;
    }
    void textKey(std::string_view text); // likewise, for any text
    void endObject() { endContainer('}'); }

    void beginArray() { beginContainer('['); }
    void element() { separate(); } // the value must follow
    void endArray() { endContainer(']'); }

    void string(std::string_view text);
    void wellFormedString(std::string_view text); // for what is known to be UTF-8
    bool shortPlainString(std::string_view text); // false, with nothing written, unless it is short and plain ASCII
    void number(double value);
    void number(std::int64_t value);
    void number(std::uint64_t value);
    void boolean(bool value) { value ? put("true") : put("false"); }
    void name(std::string_view enumerator); // of an enumeration, which needs no escapes

    std::size_t size() const { return output.size() + gathered; } // so far
    void expect(std::size_t moreBytes) { output.reserve(size() + moreBytes + moreBytes / 8); }
    bool isValid() const { return !hasRefused; }
    std::string takeOutput();

private:
    void beginContainer(char opening) {
        put({&opening, 1});
        ++depth;
        isAtBeginningOfContainer = true;
    }
    void endContainer(char closing) {
        --depth;
        if (layout == JSONLayout::pretty) endPrettyContainer();
        put({&closing, 1});
        isAtBeginningOfContainer = false;
    }
    void separate() {
        if (!isAtBeginningOfContainer) put(",");
        if (layout == JSONLayout::pretty) breakLine();
        isAtBeginningOfContainer = false;
    }
    void prettyKey(std::string_view name);
    void endPrettyContainer();
    void breakLine();

    // For what is no longer than a piece.
    void put(std::string_view bytes) {
        char* end = room(bytes.size());
        std::memcpy(end, bytes.data(), bytes.size());
        gatheredUpTo(end + bytes.size());
    }
    char* room(std::size_t size) {
        if (size > piece.size() - gathered) flush();
        return piece.data() + gathered;
    }
    void gatheredUpTo(const char* end) { gathered = static_cast<std::size_t>(end - piece.data()); }
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

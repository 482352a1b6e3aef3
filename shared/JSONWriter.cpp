#include "shared/JSONWriter.h"

#include <cstring>
#include <utility>

#include "shared/JSONNumber.h"
#include "shared/JSONString.h"
#include "shared/UTF8.h"

void JSONWriter::key(std::string_view name) {
    separate();
    put("\"");
    put(name);
    put(layout == JSONLayout::pretty ? "\" : " : "\":");
}

void JSONWriter::textKey(std::string_view text) {
    separate();
    string(text);
    put(layout == JSONLayout::pretty ? " : " : ":");
}

void JSONWriter::string(std::string_view text) {
    if (!isWellFormedUTF8(text)) {
        hasRefused = true;
        return;
    }
    wellFormedString(text);
}

void JSONWriter::wellFormedString(std::string_view text) {
    put("\"");
    flush();
    appendEscaped(output, text);
    put("\"");
}

void JSONWriter::plainString(std::string_view text) {
    put("\"");
    put(text);
    put("\"");
}

void JSONWriter::number(double value) {
    flush();
    if (!appendNumber(output, value)) hasRefused = true;
}

void JSONWriter::number(std::int64_t value) {
    flush();
    appendNumber(output, value);
}
void JSONWriter::number(std::uint64_t value) {
    flush();
    appendNumber(output, value);
}

std::string JSONWriter::takeOutput() {
    flush();
    return std::move(output);
}

void JSONWriter::beginContainer(char opening) {
    put({&opening, 1});
    ++depth;
    isAtBeginningOfContainer = true;
}

void JSONWriter::endContainer(char closing) {
    --depth;
    if (layout == JSONLayout::pretty) {
        // An empty container takes up three lines, the middle one empty.
        if (isAtBeginningOfContainer) put("\n");
        breakLine();
    }
    put({&closing, 1});
    isAtBeginningOfContainer = false;
}

void JSONWriter::separate() {
    if (!isAtBeginningOfContainer) put(",");
    if (layout == JSONLayout::pretty) breakLine();
    isAtBeginningOfContainer = false;
}

void JSONWriter::breakLine() {
    put("\n");
    for (std::size_t level = 0; level < depth; ++level) put("  ");
}

void JSONWriter::put(std::string_view bytes) {
    if (bytes.size() > piece.size() - gathered) {
        flush();
        if (bytes.size() > piece.size()) {
            output += bytes;
            return;
        }
    }
    std::memcpy(piece.data() + gathered, bytes.data(), bytes.size());
    gathered += bytes.size();
}

void JSONWriter::flush() {
    output.append(piece.data(), gathered);
    gathered = 0;
}

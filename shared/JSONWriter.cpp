#include "shared/JSONWriter.h"

#include <utility>

#include "shared/JSONNumber.h"
#include "shared/JSONString.h"
#include "shared/UTF8.h"

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

bool JSONWriter::shortPlainString(std::string_view text) {
    constexpr std::size_t longest = 1024;
    if (text.size() > longest) return false;
    char* const begin = room(text.size() + 2);
    if (!copyPlainASCII(begin + 1, text)) return false;
    begin[0] = begin[1 + text.size()] = '"';
    gatheredUpTo(begin + text.size() + 2);
    return true;
}

void JSONWriter::name(std::string_view enumerator) {
    put("\"");
    put(enumerator);
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

void JSONWriter::prettyKey(std::string_view name) {
    separate();
    put("\"");
    put(name);
    put("\" : ");
}

// An empty container takes up three lines, the middle one empty.
void JSONWriter::endPrettyContainer() {
    if (isAtBeginningOfContainer) put("\n");
    breakLine();
}

void JSONWriter::breakLine() {
    put("\n");
    for (std::size_t level = 0; level < depth; ++level) put("  ");
}

void JSONWriter::flush() {
    output.append(piece.data(), gathered);
    gathered = 0;
}

#include "shared/JSONWriter.h"

#include "shared/JSONNumber.h"
#include "shared/JSONString.h"
#include "shared/UTF8.h"

void JSONWriter::key(std::string_view name) {
    separate();
    output += '"';
    output += name;
    output += layout == JSONLayout::pretty ? "\" : " : "\":";
}

void JSONWriter::textKey(std::string_view text) {
    separate();
    string(text);
    output += layout == JSONLayout::pretty ? " : " : ":";
}

void JSONWriter::string(std::string_view text) {
    if (!isWellFormedUTF8(text)) {
        hasRefused = true;
        return;
    }
    wellFormedString(text);
}

void JSONWriter::wellFormedString(std::string_view text) {
    output += '"';
    appendEscaped(output, text);
    output += '"';
}

void JSONWriter::number(double value) {
    if (!appendNumber(output, value)) hasRefused = true;
}

void JSONWriter::number(std::int64_t value) {
    appendNumber(output, value);
}
void JSONWriter::number(std::uint64_t value) {
    appendNumber(output, value);
}

void JSONWriter::beginContainer(char opening) {
    output += opening;
    ++depth;
}

void JSONWriter::endContainer(char closing) {
    const bool isEmpty = isAtBeginningOfContainer();
    --depth;
    if (layout == JSONLayout::pretty) {
        // An empty container takes up three lines, the middle one empty.
        if (isEmpty) output += '\n';
        breakLine();
    }
    output += closing;
}

void JSONWriter::separate() {
    if (!isAtBeginningOfContainer()) output += ',';
    if (layout == JSONLayout::pretty) breakLine();
}

void JSONWriter::breakLine() {
    output += '\n';
    output.append(2 * depth, ' ');
}

#include "driver/SampleText.h"

#include <random>

std::string sampleText(std::size_t byteCount) {
    constexpr std::string_view pieces[] = {
        "    ", "return ", "value", "(",  ")",          " = ", "const ", "\"text\"",     "{",
        "}",    "index",   ", ",    "\t", "// Größe\n", "\n",  ";\n",    "std::string ", "count"};
    std::mt19937 random(1);
    std::string text;
    text.reserve(byteCount + 32);
    while (text.size() < byteCount) text += pieces[random() % std::size(pieces)];
    // Cut where no character is cut in two.
    while (text.size() > byteCount || static_cast<unsigned char>(text.back()) >= 0x80) text.pop_back();
    text.append(byteCount - text.size(), ' ');
    return text;
}

std::string saveRequest(std::string_view documentID, std::string_view text, int expectedVersion) {
    std::string request = R"({"requestID":"1","command":"save","documentID":")";
    (request += documentID) += R"(","expectedVersion":)" + std::to_string(expectedVersion) + R"(,"text":")";
    for (const char character : text) {
        if (character == '\n') {
            request += "\\n";
        } else if (character == '\t') {
            request += "\\t";
        } else {
            if (character == '"' || character == '\\') request += '\\';
            request += character;
        }
    }
    return request += "\"}\n";
}

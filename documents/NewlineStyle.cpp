#include "documents/NewlineStyle.h"

#include <algorithm>

namespace {

std::string withLineFeeds(std::string text) {
    std::size_t read = text.find('\r');
    if (read == std::string::npos) return text;
    std::size_t written = read;
    for (; read < text.size(); ++read) {
        const bool isCarriageReturn = text[read] == '\r';
        if (isCarriageReturn && read + 1 < text.size() && text[read + 1] == '\n') ++read;
        text[written++] = isCarriageReturn ? '\n' : text[read];
    }
    text.resize(written);
    return text;
}

std::string withCarriageReturnLineFeeds(const std::string& text) {
    std::string result;
    result.reserve(text.size() + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
    std::size_t lineBegin = 0;
    for (std::size_t lineEnd; (lineEnd = text.find('\n', lineBegin)) != std::string::npos; lineBegin = lineEnd + 1) {
        result.append(text, lineBegin, lineEnd - lineBegin).append("\r\n");
    }
    result.append(text, lineBegin);
    return result;
}

} // namespace

EditorDocumentNewlineStyle detectNewlineStyle(std::string_view text) {
    if (text.find('\r') == std::string_view::npos) return EditorDocumentNewlineStyle::lf;
    if (text.find("\r\n") != std::string_view::npos) return EditorDocumentNewlineStyle::crlf;
    return EditorDocumentNewlineStyle::cr;
}

std::string convertingNewlines(std::string text, EditorDocumentNewlineStyle newlineStyle) {
    text = withLineFeeds(std::move(text));
    if (newlineStyle == EditorDocumentNewlineStyle::crlf) return withCarriageReturnLineFeeds(text);
    if (newlineStyle == EditorDocumentNewlineStyle::cr) std::replace(text.begin(), text.end(), '\n', '\r');
    return text;
}

#include "shared/JSONSyntax.h"

#include <algorithm>
#include <bitset>

#include "shared/JSONNumber.h"
#include "shared/JSONString.h"
#include "shared/UTF8.h"

namespace {

class JSONWalker {
public:
    JSONWalker(std::string_view walkedText, std::size_t start, std::size_t openContainers)
        : offset(start), text(walkedText), outerDepth(openContainers) {}

    // These throw a JSONFault.
    void walkValue();
    void expectEnd();
    void expectContinuation();

    std::size_t offset;

private:
    enum class Container : bool { array, object };

    void beginValue();
    void readKey();
    void readAfterValue();
    void open(Container container);
    void close();
    void readString();
    void readNumber();
    void readWord(std::string_view word);

    void skipWhitespace() { offset = std::min(text.find_first_not_of(" \t\n\r", offset), text.size()); }
    bool isAt(char character) const { return offset < text.size() && text[offset] == character; }
    bool accept(char character);
    bool isInObject() const { return depth > 0 && isObject[depth - 1]; }
    [[noreturn]] void fail(std::string_view description) const;

    std::string_view text;
    std::size_t outerDepth;
    std::size_t depth = 0;
    std::bitset<maximumJSONDepth> isObject{};
    bool isBeforeValue = true;
};

void JSONWalker::walkValue() {
    do {
        skipWhitespace();
        if (isBeforeValue) {
            beginValue();
        } else {
            readAfterValue();
        }
    } while (depth > 0 || isBeforeValue);
}

void JSONWalker::beginValue() {
    isBeforeValue = false;
    if (accept('{')) return open(Container::object);
    if (accept('[')) return open(Container::array);
    if (isAt('"')) return readString();
    if (isAt('t')) return readWord("true");
    if (isAt('f')) return readWord("false");
    if (isAt('n')) return readWord("null");
    readNumber();
}

void JSONWalker::open(Container container) {
    if (outerDepth + depth == maximumJSONDepth) {
        --offset;
        fail("objects and arrays are nested more than 512 deep");
    }
    isObject[depth++] = container == Container::object;
    skipWhitespace();
    if (isAt(container == Container::object ? '}' : ']')) return close();
    if (container == Container::object) readKey();
    isBeforeValue = true;
}

void JSONWalker::close() {
    ++offset;
    --depth;
}

void JSONWalker::readKey() {
    if (!isAt('"')) fail("a key in quotes is expected");
    readString();
    skipWhitespace();
    if (!accept(':')) fail("a colon is expected after a key");
}

void JSONWalker::readAfterValue() {
    if (isAt(isInObject() ? '}' : ']')) return close();
    if (!accept(',')) fail(isInObject() ? "a comma or “}” is expected" : "a comma or “]” is expected");
    skipWhitespace();
    if (isInObject()) readKey();
    isBeforeValue = true;
}

void JSONWalker::readString() {
    ++offset;
    for (;;) {
        offset += plainLength(text.substr(offset));
        if (accept('"')) return;
        if (offset == text.size()) fail("a string is not closed");
        if (!isAt('\\')) fail("a control character in a string must be escaped");
        const auto escape = readEscape(text.substr(offset));
        if (!escape) fail("an escape sequence is malformed or half a surrogate pair");
        offset += escape->length;
    }
}

void JSONWalker::readNumber() {
    if (!isAt('-') && !(offset < text.size() && '0' <= text[offset] && text[offset] <= '9'))
        fail("a value is expected");
    const std::size_t length = numberLength(text.substr(offset));
    if (length == 0) fail("a number is malformed");
    offset += length;
}

void JSONWalker::readWord(std::string_view word) {
    if (!text.substr(offset).starts_with(word)) fail("a value is expected");
    offset += word.size();
}

void JSONWalker::expectEnd() {
    skipWhitespace();
    if (offset < text.size()) fail("nothing may follow the message");
}

void JSONWalker::expectContinuation() {
    skipWhitespace();
    if (!isAt(',') && !isAt('}') && !isAt(']')) fail("a comma or a closing bracket is expected");
}

bool JSONWalker::accept(char character) {
    if (!isAt(character)) return false;
    ++offset;
    return true;
}

void JSONWalker::fail(std::string_view description) const {
    throw JSONFault{offset, offset < text.size() ? description : "the message ends too early"};
}

std::optional<JSONFault> findGrammarFault(std::string_view message) {
    JSONWalker walker{message, message.starts_with(utf8ByteOrderMark) ? utf8ByteOrderMark.size() : 0, 0};
    try {
        walker.walkValue();
        walker.expectEnd();
        return std::nullopt;
    } catch (const JSONFault& fault) {
        return fault;
    }
}

} // namespace

std::optional<JSONFault> findJSONFault(std::string_view message) {
    const auto grammarFault = findGrammarFault(message);
    const std::size_t utf8Length = wellFormedPrefixLength(message);
    if (utf8Length == message.size() || (grammarFault && grammarFault->offset <= utf8Length)) return grammarFault;
    return JSONFault{utf8Length, "a byte is not part of well-formed UTF-8"};
}

std::optional<std::size_t> endOfJSONValue(std::string_view text, std::size_t offset, std::size_t depth) {
    JSONWalker walker{text, offset, depth};
    try {
        walker.walkValue();
        const std::size_t end = walker.offset;
        walker.expectContinuation();
        return end;
    } catch (const JSONFault&) {
        return std::nullopt;
    }
}

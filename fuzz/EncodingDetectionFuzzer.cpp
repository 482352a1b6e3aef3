// Whatever bytes are taken for text come back byte for byte, and so does the text with its line ends if they are alike.

#include <string>

#include "documents/DocumentSaving.h"
#include "documents/NewlineStyle.h"
#include "fuzz/Require.h"
#include "platform/linux/text/ICUTextCoding.h"
#include "shared/UTF8.h"

namespace {

bool hasOnlyLineEndsOf(EditorDocumentNewlineStyle style, const std::string& text) {
    return convertingNewlines(text, style) == text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ICUTextCoding coding;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto detected = coding.detect(std::string(bytes));
    if (!detected) {
        require(!isWellFormedUTF8(bytes), "UTF-8 was refused");
        return 0;
    }
    require(isWellFormedUTF8(detected->text), "the text is not UTF-8");
    require(coding.encode(detected->text, detected->encodingRawValue, detected->byteOrderMark) == bytes,
            "the bytes do not come back");
    const DocumentTextFormat format{.encodingRawValue = detected->encodingRawValue,
                                    .byteOrderMark = detected->byteOrderMark,
                                    .newlineStyle = detectNewlineStyle(detected->text)};
    require(!hasOnlyLineEndsOf(format.newlineStyle, detected->text) ||
                encodedDocumentText(detected->text, format, coding) == bytes,
            "an unchanged save changes the file");
    // Any text a client may send is encoded or refused.
    coding.encode("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\n", detected->encodingRawValue, detected->byteOrderMark);
    return 0;
}

#include "platform/linux/text/CharsetGuess.h"

#include <uchardet/uchardet.h>
#include <unicode/ucnv.h>

#include <memory>

namespace {

// The names that ICU does not know.
std::string nameKnownToICU(std::string_view charset) {
    if (charset == "UHC") return "windows-949";
    if (charset == "MAC-CENTRALEUROPE") return "x-mac-centraleurroman";
    if (charset == "MAC-CYRILLIC") return "x-mac-cyrillic";
    return std::string(charset);
}

} // namespace

std::string charsetGuess(std::string_view sample) {
    const std::unique_ptr<uchardet, decltype(&uchardet_delete)> detector(uchardet_new(), &uchardet_delete);
    if (uchardet_handle_data(detector.get(), sample.data(), sample.size()) != 0) return {};
    uchardet_data_end(detector.get());
    return nameKnownToICU(uchardet_get_charset(detector.get()));
}

bool namesSameCharset(const std::string& guess, const char* converterName) {
    UErrorCode error = U_ZERO_ERROR;
    const char* guessed = ucnv_getAlias(guess.c_str(), 0, &error);
    const char* named = ucnv_getAlias(converterName, 0, &error);
    return guessed && named && std::string_view(guessed) == named;
}

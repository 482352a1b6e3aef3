#include "platform/linux/text/ICUCollation.h"

#include <unicode/ustring.h>

#include <new>
#include <utility>

namespace {

// No name or path is as long. Of a longer text the beginning is collated, and the rest decides between equals.
constexpr std::size_t collatedLength = 64 * 1024;

// A name such as "sv_SE.UTF-8@euro" without what follows the territory.
std::string localeName(const Environment& environment) {
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const std::string value = environment.value(variable).value_or("");
        if (!value.empty()) return value.substr(0, value.find_first_of(".@"));
    }
    return "";
}

std::u16string utf16WithReplacements(std::string_view bytes) {
    constexpr UChar32 replacementCharacter = 0xFFFD;
    std::u16string text(bytes.size(), u'\0');
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8WithSub(text.data(), static_cast<std::int32_t>(text.size()), &length, bytes.data(),
                         static_cast<std::int32_t>(bytes.size()), replacementCharacter, nullptr, &error);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// Ends with the only zero byte in it.
std::string collatorKey(const UCollator* collator, std::u16string_view text) {
    std::string key(text.size() * 2 + 16, '\0');
    while (true) {
        const auto length = static_cast<std::size_t>(
            ucol_getSortKey(collator, text.data(), static_cast<std::int32_t>(text.size()),
                            reinterpret_cast<std::uint8_t*>(key.data()), static_cast<std::int32_t>(key.size())));
        if (length == 0) throw std::bad_alloc();
        const bool isComplete = length <= key.size();
        key.resize(length);
        if (isComplete) return key;
    }
}

} // namespace

// Comparing by keys is more than a matter of speed: in many locales (Swedish, Spanish, Japanese) ICU's direct
// comparison goes round in circles where digits of several scripts meet, so that a sort would depend on the order of
// its input. The key's zero byte stops it from being a beginning of another one; hence the name behind it decides
// between equal keys only, whatever bytes it holds.
std::string ICUCollation::sortKey(std::string_view name) const {
    const UCollator* opened = openedCollator();
    if (!opened) return std::string(name);
    return collatorKey(opened, utf16WithReplacements(name.substr(0, collatedLength))).append(name);
}

// Tried once: if a failure went away later, the order would change under the lists already shown.
const UCollator* ICUCollation::openedCollator() const {
    if (!wasOpened) {
        collator = open(localeName(environment));
        if (!collator) collator = open("");
        wasOpened = true;
    }
    return collator.get();
}

// A name that ICU does not know, such as C or POSIX, gets the root order, for which the empty name stands. A null name
// would mean ICU's default, which under C puts all capitals first.
ICUCollation::OwnedCollator ICUCollation::open(const std::string& locale) {
    UErrorCode error = U_ZERO_ERROR;
    OwnedCollator opened(ucol_open(locale.c_str(), &error));
    ucol_setAttribute(opened.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
    ucol_setAttribute(opened.get(), UCOL_STRENGTH, UCOL_SECONDARY, &error);
    return U_SUCCESS(error) ? std::move(opened) : nullptr;
}

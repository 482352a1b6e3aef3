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

void putUTF16WithReplacements(std::string_view bytes, std::u16string& text) {
    constexpr UChar32 replacementCharacter = 0xFFFD;
    text.resize(bytes.size());
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8WithSub(text.data(), static_cast<std::int32_t>(text.size()), &length, bytes.data(),
                         static_cast<std::int32_t>(bytes.size()), replacementCharacter, nullptr, &error);
    text.resize(static_cast<std::size_t>(length));
}

// Ends with the only zero byte in it.
void appendCollatorKey(std::string& keys, const UCollator* collator, std::u16string_view text) {
    const std::size_t begin = keys.size();
    std::size_t room = text.size() * 2 + 16;
    while (true) {
        keys.resize(begin + room);
        const auto length = static_cast<std::size_t>(
            ucol_getSortKey(collator, text.data(), static_cast<std::int32_t>(text.size()),
                            reinterpret_cast<std::uint8_t*>(keys.data() + begin), static_cast<std::int32_t>(room)));
        if (length == 0) throw std::bad_alloc();
        if (length <= room) return keys.resize(begin + length);
        room = length;
    }
}

} // namespace

// Comparing by keys is more than a matter of speed: in many locales (Swedish, Spanish, Japanese) ICU's direct
// comparison goes round in circles where digits of several scripts meet, so that a sort would depend on the order of
// its input. The key's zero byte stops it from being a beginning of another one; hence the name behind it decides
// between equal keys only, whatever bytes it holds.
void ICUCollation::appendSortKey(std::string& keys, std::string_view name) const {
    const UCollator* opened = openedCollator();
    if (opened && !(asciiKeys && asciiKeys->append(keys, name))) {
        putUTF16WithReplacements(name.substr(0, collatedLength), wideName);
        appendCollatorKey(keys, opened, wideName);
    }
    keys += name;
}

ICUCollation::Locale ICUCollation::locale() const {
    const UCollator* opened = openedCollator();
    if (!opened) return {.wanted = localeName(environment)};
    UErrorCode error = U_ZERO_ERROR;
    const char* used = ucol_getLocaleByType(opened, ULOC_ACTUAL_LOCALE, &error);
    return {.wanted = localeName(environment), .used = U_SUCCESS(error) && used ? used : "root"};
}

// Tried once: if a failure went away later, the order would change under the lists already shown.
const UCollator* ICUCollation::openedCollator() const {
    if (!wasOpened) {
        collator = open(localeName(environment));
        if (!collator) collator = open("");
        if (collator) asciiKeys = ASCIISortKeys::of(collator.get());
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

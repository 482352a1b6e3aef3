#include "platform/linux/text/ASCIISortKeys.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t longestName = 255; // of one file
constexpr std::size_t longestNumber = 6; // digits
constexpr unsigned char firstCharacter = ' ', lastCharacter = '~';

// Behind the weights of the characters a key tells of their accents, of which these have none: so many times the same
// weight, in a short form.
constexpr char levelSeparator = '\x01';
constexpr std::size_t longestRow = 33;
constexpr char firstOfRows = '\x05', longestRowOfWeights = '\x25';

bool isDigit(unsigned char character) {
    return '0' <= character && character <= '9';
}

char* putEnd(char* end, std::size_t weightCount) {
    *end++ = levelSeparator;
    for (; weightCount > longestRow; weightCount -= longestRow) *end++ = longestRowOfWeights;
    *end++ = static_cast<char>(firstOfRows + weightCount - 1);
    *end++ = '\0';
    return end;
}

std::string keyByICU(const UCollator* collator, std::string_view name) {
    const std::u16string wide(name.begin(), name.end());
    std::array<std::uint8_t, 256> key;
    const auto length = ucol_getSortKey(collator, wide.data(), static_cast<std::int32_t>(wide.size()), key.data(),
                                        static_cast<std::int32_t>(key.size()));
    return {key.begin(), key.begin() + std::min<std::size_t>(static_cast<std::size_t>(length), key.size())};
}

} // namespace

std::optional<ASCIISortKeys> ASCIISortKeys::of(const UCollator* collator) {
    UErrorCode error = U_ZERO_ERROR;
    const char* locale = ucol_getLocaleByType(collator, ULOC_ACTUAL_LOCALE, &error);
    if (U_FAILURE(error) || !locale || std::string_view(locale) != "root") return std::nullopt;
    ASCIISortKeys keys;
    if (!keys.learn(collator) || !keys.agrees(collator)) return std::nullopt;
    return keys;
}

bool ASCIISortKeys::append(std::string& keys, std::string_view name) const {
    if (name.empty() || name.size() > longestName) return false;
    std::array<char, (longestName + 4) * sizeof(Weight::bytes)> key;
    char* end = key.data();
    std::size_t weightCount = 0;
    for (std::size_t position = 0; position < name.size(); ++weightCount) {
        const auto character = static_cast<unsigned char>(name[position++]);
        if (character < firstCharacter || character > lastCharacter) return false;
        Weight weight = weights[character];
        if (isDigit(character)) {
            std::uint32_t number = character - '0';
            std::size_t digits = number > 0;
            for (; position < name.size() && isDigit(static_cast<unsigned char>(name[position])); ++position) {
                number = 10 * number + static_cast<std::uint32_t>(name[position] - '0');
                digits += number > 0;
                if (digits > longestNumber) return false;
            }
            weight = weightOfNumber(weight.bytes[0], number);
        }
        std::memcpy(end, weight.bytes.data(), sizeof weight.bytes);
        end += weight.length;
    }
    end = putEnd(end, weightCount);
    keys.append(key.data(), static_cast<std::size_t>(end - key.data()));
    return true;
}

// Small numbers have two bytes, larger ones three and four. No byte is below 2.
ASCIISortKeys::Weight ASCIISortKeys::weightOfNumber(char firstByte, std::uint32_t number) {
    constexpr std::uint32_t lowest = 2, values = 254;
    constexpr std::uint32_t smallNumbers = 74, secondBytesOfMediumNumbers = 40;
    const auto byte = [](std::uint32_t value) { return static_cast<char>(lowest + value); };
    if (number < smallNumbers) return {{firstByte, byte(number)}, 2};
    number -= smallNumbers;
    if (number < secondBytesOfMediumNumbers * values) {
        return {{firstByte, byte(smallNumbers + number / values), byte(number % values)}, 3};
    }
    number -= secondBytesOfMediumNumbers * values;
    const std::uint32_t second = smallNumbers + secondBytesOfMediumNumbers + number / (values * values);
    return {{firstByte, byte(second), byte(number / values % values), byte(number % values)}, 4};
}

// A character that comes twice has its weight twice; otherwise ICU would be one that shortens some of them.
bool ASCIISortKeys::learn(const UCollator* collator) {
    for (unsigned char character = firstCharacter; character <= lastCharacter; ++character) {
        const std::string name(isDigit(character) ? 1 : 2, static_cast<char>(character));
        std::string key = keyByICU(collator, name);
        std::array<char, 3> expectedEnd;
        putEnd(expectedEnd.data(), name.size());
        if (!key.ends_with(std::string_view(expectedEnd.data(), expectedEnd.size()))) return false;
        key.resize((key.size() - expectedEnd.size()) / name.size());
        Weight& weight = weights[character];
        if (key.empty() || key.size() > weight.bytes.size()) return false;
        std::ranges::copy(key, weight.bytes.begin());
        weight.length = static_cast<std::uint32_t>(key.size());
    }
    return true;
}

bool ASCIISortKeys::agrees(const UCollator* collator) const {
    std::string everyCharacter;
    for (unsigned char character = firstCharacter; character <= lastCharacter; ++character) {
        everyCharacter += static_cast<char>(character);
    }
    for (const std::string_view sample : {std::string_view(everyCharacter).substr(0, '5' - firstCharacter),
                                          std::string_view(everyCharacter).substr('5' - firstCharacter),
                                          std::string_view("--_ a73b074.C 10233 10234 999999")}) {
        std::string key;
        if (!append(key, sample) || key != keyByICU(collator, sample)) return false;
    }
    return true;
}

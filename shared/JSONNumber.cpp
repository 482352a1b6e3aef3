#include "shared/JSONNumber.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

std::size_t digitsLength(std::string_view text) {
    return std::min(text.find_first_not_of("0123456789"), text.size());
}

struct NumberParts {
    bool isNegative{};
    std::string digits{};    // without zeros at either end, so that zero has none
    std::int64_t exponent{}; // of the last digit
};

// Far beyond every exponent that can still make a 64-bit integer, and small enough to be added to the length of a text.
constexpr std::int64_t exponentLimit = std::numeric_limits<std::int64_t>::max() / 4;

std::int64_t readExponent(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    std::int64_t exponent = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (result.ec == std::errc::result_out_of_range) return text.starts_with('-') ? -exponentLimit : exponentLimit;
    return std::clamp(exponent, -exponentLimit, exponentLimit);
}

NumberParts partsOf(std::string_view number) {
    NumberParts parts;
    parts.isNegative = number.starts_with('-');
    if (parts.isNegative) number.remove_prefix(1);
    const std::size_t exponentPosition = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, exponentPosition);
    if (exponentPosition < number.size()) parts.exponent = readExponent(number.substr(exponentPosition + 1));
    const std::size_t pointPosition = mantissa.find('.');
    parts.digits = mantissa.substr(0, pointPosition);
    if (pointPosition != std::string_view::npos) {
        const std::string_view fraction = mantissa.substr(pointPosition + 1);
        parts.digits += fraction;
        parts.exponent -= static_cast<std::int64_t>(fraction.size());
    }
    parts.digits.erase(0, std::min(parts.digits.find_first_not_of('0'), parts.digits.size()));
    const std::size_t significantLength = parts.digits.find_last_not_of('0') + 1;
    parts.exponent += static_cast<std::int64_t>(parts.digits.size() - significantLength);
    parts.digits.resize(significantLength);
    return parts;
}

std::optional<std::uint64_t> magnitudeOf(const NumberParts& parts) {
    constexpr std::int64_t longestDigits = std::numeric_limits<std::uint64_t>::digits10 + 1;
    if (parts.digits.empty()) return 0;
    if (parts.exponent < 0 || parts.exponent > longestDigits) return std::nullopt;
    const std::string digits = parts.digits + std::string(static_cast<std::size_t>(parts.exponent), '0');
    std::uint64_t magnitude = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude);
    if (result.ec != std::errc{}) return std::nullopt;
    return magnitude;
}

template <typename Number, typename... Format>
void appendCharacters(std::string& output, Number value, Format... format) {
    std::array<char, 32> characters;
    const auto result = std::to_chars(characters.data(), characters.data() + characters.size(), value, format...);
    output.append(characters.data(), result.ptr);
}

} // namespace

std::size_t numberLength(std::string_view text) {
    std::size_t length = text.starts_with('-') ? 1 : 0;
    const std::size_t wholeLength = text.substr(length).starts_with('0') ? 1 : digitsLength(text.substr(length));
    if (wholeLength == 0) return 0;
    length += wholeLength;
    if (text.substr(length).starts_with('.')) {
        const std::size_t fractionLength = digitsLength(text.substr(length + 1));
        if (fractionLength == 0) return 0;
        length += 1 + fractionLength;
    }
    if (const auto rest = text.substr(length); rest.starts_with('e') || rest.starts_with('E')) {
        const std::size_t signLength = rest.substr(1).starts_with('+') || rest.substr(1).starts_with('-') ? 1 : 0;
        const std::size_t exponentLength = digitsLength(rest.substr(1 + signLength));
        if (exponentLength == 0) return 0;
        length += 1 + signLength + exponentLength;
    }
    return length;
}

std::optional<std::int64_t> exactSignedInteger(std::string_view number) {
    const NumberParts parts = partsOf(number);
    const auto magnitude = magnitudeOf(parts);
    const std::uint64_t limit = std::uint64_t{1} << 63;
    if (!magnitude || *magnitude > limit || (*magnitude == limit && !parts.isNegative)) return std::nullopt;
    return static_cast<std::int64_t>(parts.isNegative ? 0 - *magnitude : *magnitude);
}

std::optional<std::uint64_t> exactUnsignedInteger(std::string_view number) {
    const NumberParts parts = partsOf(number);
    const auto magnitude = magnitudeOf(parts);
    if (parts.isNegative && magnitude != 0u) return std::nullopt;
    return magnitude;
}

std::optional<double> nearestDouble(std::string_view number) {
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc{}) return value;
    const NumberParts parts = partsOf(number);
    const bool isTiny = parts.exponent + static_cast<std::int64_t>(parts.digits.size()) < 0;
    if (!isTiny) return std::nullopt;
    return parts.isNegative ? -0.0 : 0.0;
}

bool appendNumber(std::string& output, double value) {
    constexpr double smallestPlain = 1e-4, largestPlain = 18014398509481984;
    if (!std::isfinite(value)) return false;
    const double magnitude = std::abs(value);
    const bool isPlain = magnitude == 0 || (smallestPlain <= magnitude && magnitude <= largestPlain);
    appendCharacters(output, value, isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    return true;
}

void appendNumber(std::string& output, std::int64_t value) {
    appendCharacters(output, value);
}
void appendNumber(std::string& output, std::uint64_t value) {
    appendCharacters(output, value);
}

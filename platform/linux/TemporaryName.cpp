#include "platform/linux/TemporaryName.h"

#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "platform/PlatformError.h"
#include "platform/linux/files/NamePrefix.h"

namespace {

constexpr std::string_view mark = ".edsave-";
constexpr std::string_view digits = "0123456789abcdef";
constexpr std::size_t digitCount = 16;
constexpr std::size_t targetLimit = 180; // keeps the whole well below the 255 bytes of a name

std::uint64_t randomNumber() {
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number) throw posixError(errno, "choose a temporary name");
    return number;
}

} // namespace

std::string temporaryName(std::string_view targetName) {
    std::string name = ".";
    name += namePrefix(targetName, targetLimit);
    name += mark;
    std::uint64_t number = randomNumber();
    for (std::size_t i = 0; i < digitCount; ++i, number >>= 4) name += digits[number & 15];
    return name;
}

bool isTemporarySaveName(std::string_view name) {
    const std::size_t endingSize = mark.size() + digitCount;
    if (name.size() <= 1 + endingSize || name.size() > 1 + targetLimit + endingSize || name[0] != '.') return false;
    const std::string_view ending = name.substr(name.size() - endingSize);
    return ending.starts_with(mark) &&
           std::ranges::all_of(ending.substr(mark.size()), [](char c) { return digits.find(c) != digits.npos; });
}

#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

// A wire enumeration has one table of names, next to it, in the order of its cases.

struct NoEnumerationNames {};

template <typename Enumeration>
inline constexpr auto enumerationNames = NoEnumerationNames{};

template <typename Type>
concept WireEnumeration =
    std::is_enum_v<Type> && !std::is_same_v<decltype(enumerationNames<Type>), const NoEnumerationNames>;

template <typename Enumeration, std::size_t count>
consteval auto namesInOrder(const std::pair<Enumeration, std::string_view> (&names)[count]) {
    return std::to_array(names);
}

template <WireEnumeration Enumeration>
constexpr std::string_view nameOf(Enumeration value) {
    for (const auto& [candidate, name] : enumerationNames<Enumeration>) {
        if (candidate == value) return name;
    }
    return {};
}

template <WireEnumeration Enumeration>
constexpr std::optional<Enumeration> enumerationNamed(std::string_view text) {
    for (const auto& [value, name] : enumerationNames<Enumeration>) {
        if (name == text) return value;
    }
    return std::nullopt;
}

#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

// A wire record is a plain aggregate whose fields are listed once, next to it, as recordFields<Record>. Encoding,
// decoding and equality walk that list. A field is optional on the wire exactly when its type is std::optional. Its
// value may be a string, a number, a Boolean, a date, an enumeration, another record, or a vector or map of these.

// What the strings of a field hold. Text is UTF-8 as it stands. File names, and texts that may quote one, are byte
// strings that travel in the reversible form of FileNameText.h.
enum class StringForm { text, fileName };

template <typename Record, typename Value>
struct RecordField {
    std::string_view name;
    Value Record::*member;
    StringForm form;
};

template <typename Record, typename Value>
consteval RecordField<Record, Value> field(std::string_view name, Value Record::*member) {
    return {name, member, StringForm::text};
}

template <typename Record, typename Value>
consteval RecordField<Record, Value> pathField(std::string_view name, Value Record::*member) {
    return {name, member, StringForm::fileName};
}

struct NoRecordFields {};

template <typename Record>
inline constexpr auto recordFields = NoRecordFields{};

template <typename Type>
concept WireRecord = !std::is_same_v<decltype(recordFields<Type>), const NoRecordFields>;

template <typename Type>
inline constexpr bool isOptional = false;
template <typename Type>
inline constexpr bool isOptional<std::optional<Type>> = true;

// Calls the visitor with each field of the record in the order of the list.
template <WireRecord Record, typename Visitor>
constexpr void forEachField(Visitor&& visitor) {
    std::apply([&](const auto&... fields) { (visitor(fields), ...); }, recordFields<Record>);
}

template <WireRecord Record>
inline constexpr std::size_t recordFieldCount = std::tuple_size_v<decltype(recordFields<Record>)>;

// Where in the list the field of that name is; the count of fields when there is none.
template <WireRecord Record>
constexpr std::size_t indexOfField(std::string_view name) {
    constexpr auto names =
        std::apply([](const auto&... fields) { return std::array{fields.name...}; }, recordFields<Record>);
    std::size_t index = 0;
    while (index < names.size() && names[index] != name) ++index;
    return index;
}

// Whether the list names every member in the order of declaration: the listed types initialise the record, and after
// them no member is left that one more pair of braces could initialise.
template <WireRecord Record>
consteval bool listsEveryMember() {
    return std::apply(
        []<typename... Values>(const RecordField<Record, Values>&...) {
            return requires {
                Record{std::declval<Values>()...};
            }
            &&!requires {
                Record{std::declval<Values>()..., {}};
            };
        },
        recordFields<Record>);
}

template <WireRecord Record>
constexpr bool operator==(const Record& left, const Record& right) {
    return std::apply([&](const auto&... fields) { return ((left.*fields.member == right.*fields.member) && ...); },
                      recordFields<Record>);
}

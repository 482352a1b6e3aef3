#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// JSON numbers, in both directions.

// The length of the number that the text begins with, by JSON's grammar; 0 when it begins with none or a malformed one.
std::size_t numberLength(std::string_view text);

// The value of a whole JSON number that is an integer, however it is written (3, 3.0, 30e-1). Absent when it has a
// fraction or does not fit.
std::optional<std::int64_t> exactSignedInteger(std::string_view number);
std::optional<std::uint64_t> exactUnsignedInteger(std::string_view number);

// Absent when the number is too large for a double; one that is too small is zero.
std::optional<double> nearestDouble(std::string_view number);

// Appends the shortest digits that read back as the same double, without the fraction of a whole number; plain notation
// for magnitudes from 1e-4 to 2^54, exponents outside. False, and nothing appended, for what is not finite.
bool appendNumber(std::string& output, double value);
void appendNumber(std::string& output, std::int64_t value);
void appendNumber(std::string& output, std::uint64_t value);

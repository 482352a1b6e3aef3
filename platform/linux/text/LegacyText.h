#pragma once

#include <optional>
#include <string_view>

#include "platform/TextCoding.h"

// Control characters, save those that texts have always held: TAB, LF, VT, FF, CR, BS and ESC.
bool isForeignToText(char16_t unit);

// The whole data read in an encoding without marks. Absent unless it decodes strictly, holds only characters that
// belong into a text, and encoding it again gives the same bytes.
std::optional<DetectedText> legacyText(std::string_view data, std::uint64_t encodingRawValue);

#pragma once

#include <optional>
#include <string_view>

#include "platform/TextCoding.h"

enum class AlsoUTF8 { no, yes };

// The text of UTF-16 or UTF-32 data without a byte order mark; absent unless exactly one byte order reads well. Data
// that is well-formed UTF-8, too, must look far more like wide characters than other data.
std::optional<DetectedText> unmarkedUnicodeText(std::string_view data, AlsoUTF8 alsoUTF8);

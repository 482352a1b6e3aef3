#pragma once

#include <string>
#include <string_view>

// File names are byte strings; the wire carries UTF-8. A name travels as it stands, except that every byte that is not
// part of well-formed UTF-8 becomes the one character U+10F800 + byte (U+10F880 to U+10F8FF). The bytes of such a
// character that really stands in a name are written the same way, so no two names share a text, and each comes back.

// Whether the name is its own text, as nearly every name is.
bool isItsOwnText(std::string_view fileName);

std::string textFromFileName(std::string_view fileName);

// Takes any well-formed UTF-8, also texts that textFromFileName never makes.
std::string fileNameFromText(std::string_view text);

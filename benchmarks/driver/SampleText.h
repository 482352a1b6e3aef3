#pragma once

#include <cstddef>
#include <string>

// Lines as they stand in source code, exactly so many bytes and always the same, with a word of another script here and
// there.
std::string sampleText(std::size_t byteCount);

// The request that saves it. It knows the escapes that the sample needs.
std::string saveRequest(std::string_view documentID, std::string_view text, int expectedVersion);

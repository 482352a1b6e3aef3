#pragma once

#include <optional>
#include <string>
#include <string_view>

// What is wrong with a line by a schema of schema/; absent when nothing is.
std::optional<std::string> violationOfRequestSchema(std::string_view line);
std::optional<std::string> violationOfEnvelopeSchema(std::string_view line);

// Fails the test unless the line is an envelope by the schema.
void expectEnvelopeOfTheSchema(std::string_view line);

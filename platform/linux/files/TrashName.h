#pragma once

#include <string>
#include <string_view>

// The name in the trash for the given try: "a.txt", then "a.2.txt", "a.3.txt". The stem is cut, without breaking a
// character, so that ".trashinfo" can be added to the result.
std::string trashName(std::string_view name, int attempt);

// The bytes of a path as a trash information file has them: all but ASCII letters, digits and "-_.~/" percent-encoded.
std::string percentEncoded(std::string_view path);

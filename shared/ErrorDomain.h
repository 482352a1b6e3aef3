#pragma once

#include <string_view>

// The domain of the errors that the daemon raises in its own name.
inline constexpr std::string_view daemonErrorDomain = "EditorDocumentDaemon";

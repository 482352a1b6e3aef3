#pragma once

#include <string>

#include "shared/EditorDocumentDaemonEnvelope.h"

// One line for people on what an envelope says. Paths are shortened to what lies below the root. File names stand as
// they are, so the line is to be made printable.
std::string summaryOf(const EditorDocumentDaemonEnvelope& envelope, const std::string& rootPath);

#pragma once

#include <string>

#include "shared/EditorDocumentDaemonEnvelope.h"

// An event in one short line, with all that it says but for the text of a document. Paths are relative to the root,
// which itself is ".":
//     updated document-1 v2 a.txt
//     children sub: deep/ b.txt
//     renamed a.txt > z.txt
// What is about another workspace than that of the root begins with its root path.
std::string toldEvent(const EditorDocumentDaemonEnvelope& event, const std::string& rootPath);

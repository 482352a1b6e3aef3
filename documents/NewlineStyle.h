#pragma once

#include <string>
#include <string_view>

#include "shared/EditorDocumentSnapshotPayload.h"

// A carriage return with a line feed anywhere makes a text "crlf", else any carriage return makes it "cr"; a text
// without either is "lf". Nothing is counted: of a mixed text the rarest line end can name the style.
EditorDocumentNewlineStyle detectNewlineStyle(std::string_view text);

// The text with every line end, of whatever style, in the given one.
std::string convertingNewlines(std::string text, EditorDocumentNewlineStyle newlineStyle);

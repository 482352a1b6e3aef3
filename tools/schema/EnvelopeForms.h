#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "shared/EditorDocumentDaemonEnvelope.h"

// Which fields an envelope carries follows from what it is. This is the one table of that.
struct EnvelopeForm {
    std::string_view name;
    EditorDocumentEnvelopeKind kind{};
    std::optional<EditorDocumentEventKind> event{};
    std::vector<EditorDocumentRequestCommand> commands{}; // none: an event, or a failure that names no request
    std::optional<bool> success{};
    std::vector<std::string_view> carries{};
    std::vector<std::string_view> mayCarry{};
};

const std::vector<EnvelopeForm>& envelopeForms();

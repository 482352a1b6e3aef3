#include "tools/schema/WireSchema.h"

#include "tools/schema/EnvelopeForms.h"
#include "tools/schema/SchemaWriter.h"

namespace {

void writeForm(SchemaWriter& schema, const EnvelopeForm& form) {
    schema.beginClosedObject();
    schema.literal("kind", {nameOf(form.kind)});
    if (form.event) schema.literal("event", {nameOf(*form.event)});
    if (!form.commands.empty()) {
        std::vector<std::string_view> names;
        for (const EditorDocumentRequestCommand command : form.commands) names.push_back(nameOf(command));
        schema.property("requestID", [&] { schema.type<EditorDocumentDaemonEnvelope>("requestID"); });
        schema.literal("command", names);
    }
    if (form.success) schema.literal("success", *form.success);
    for (const std::string_view name : form.carries) {
        schema.property(name, [&] { schema.type<EditorDocumentDaemonEnvelope>(name); });
    }
    for (const std::string_view name : form.mayCarry) {
        schema.optionalProperty(name, [&] { schema.type<EditorDocumentDaemonEnvelope>(name); });
    }
    schema.endObject();
}

} // namespace

std::string requestSchema() {
    SchemaWriter schema("EditorDocumentDaemonRequest", "One line from the client. Unknown keys are ignored.");
    schema.openRecord<EditorDocumentDaemonRequest>();
    schema.beginDefinitions();
    schema.fileNameDefinition();
    schema.define<EditorDocumentRequestCommand>();
    schema.endDefinitions();
    return schema.takeOutput();
}

std::string envelopeSchema() {
    SchemaWriter schema("EditorDocumentDaemonEnvelope",
                        "One line to the client: the response to a request, or an event.");
    std::vector<std::string_view> names;
    for (const EnvelopeForm& form : envelopeForms()) names.push_back(form.name);
    schema.oneOf(names);
    schema.beginDefinitions();
    for (const EnvelopeForm& form : envelopeForms()) {
        schema.definition(form.name, [&] { writeForm(schema, form); });
    }
    schema.fileNameDefinition();
    schema.define<EditorDocumentSnapshotPayload>();
    schema.define<EditorDocumentNewlineStyle>();
    schema.define<WorkspaceBrowserDirectoryPayload>();
    schema.define<WorkspaceBrowserNodePayload>();
    schema.define<WorkspaceBrowserMutationPayload>();
    schema.define<WorkspaceBrowserMutationOrigin>();
    schema.define<WorkspaceBrowserMutationKind>();
    schema.endDefinitions();
    return schema.takeOutput();
}

# What writes the schemas of the wire, and what the tests hold envelopes against.
add_storey(5 EditorDocumentSchema
    tools/schema/EnvelopeForms.cpp
    tools/schema/EnvelopeForms.h
    tools/schema/SchemaWriter.h
    tools/schema/WireSchema.cpp
    tools/schema/WireSchema.h
)
target_link_libraries(EditorDocumentSchema PUBLIC ConduitShared)

add_executable(MakeWireSchema tools/schema/main.cpp)
target_link_libraries(MakeWireSchema PRIVATE EditorDocumentSchema)

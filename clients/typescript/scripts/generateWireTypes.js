// Writes the types of the wire from the schemas, and knows just what these use: objects, lists, alternatives and
// references. Anything else ends it with an error, so that nothing is left out unseen.

import { readFileSync, writeFileSync } from "node:fs";

const schemaFolder = new URL("../../../schema/", import.meta.url);

function readSchema(name) {
    return JSON.parse(readFileSync(new URL(`${name}.schema.json`, schemaFolder), "utf8"));
}

function typeOf(schema, indent) {
    if (schema.$ref) return schema.$ref.replace("#/$defs/", "");
    if (schema.enum) return schema.enum.map((value) => JSON.stringify(value)).join(" | ");
    if (schema.oneOf) return schema.oneOf.map((choice) => `\n    | ${typeOf(choice, indent)}`).join("");
    if (schema.anyOf) return schema.anyOf.map((choice) => typeOf(choice, indent)).join(" | ");
    switch (schema.type) {
        case "string":
        case "number":
        case "boolean":
        case "null":
            return schema.type;
        case "integer":
            return "number";
        case "array":
            return `${typeOf(schema.items, indent)}[]`;
        case "object":
            return objectType(schema, indent);
        default:
            throw new Error(`a schema of unknown form: ${JSON.stringify(schema)}`);
    }
}

function objectType(schema, indent) {
    const inner = `${indent}    `;
    const fields = Object.entries(schema.properties).map(([name, field]) => {
        const mark = schema.required.includes(name) ? "" : "?";
        return `${inner}${name}${mark}: ${typeOf(field, inner)};\n`;
    });
    return `{\n${fields.join("")}${indent}}`;
}

function declaration(name, schema) {
    const comment = schema.description ? `/** ${schema.description} */\n` : "";
    return `${comment}export type ${name} = ${typeOf(schema, "")};\n`.replace("= \n", "=\n");
}

const declarations = new Map();
for (const schema of [readSchema("request"), readSchema("envelope")]) {
    declarations.set(schema.title, declaration(schema.title, schema));
    for (const [name, definition] of Object.entries(schema.$defs)) {
        const text = declaration(name, definition);
        if ((declarations.get(name) ?? text) !== text) throw new Error(`two definitions of ${name}`);
        declarations.set(name, text);
    }
}
const head = "// Made from the schemas by scripts/generateWireTypes.js; \"npm run generate\" makes it again.\n\n";
writeFileSync(process.argv[2], head + [...declarations.values()].join("\n"));

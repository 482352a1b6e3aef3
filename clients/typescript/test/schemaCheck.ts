import assert from "node:assert/strict";
import { readFileSync } from "node:fs";

/** The part of JSON Schema that the schemas use. */
interface Schema {
    $ref?: string;
    enum?: unknown[];
    oneOf?: Schema[];
    type?: string;
    properties?: Record<string, Schema>;
    required?: string[];
    additionalProperties?: boolean;
    items?: Schema;
    minimum?: number;
    maximum?: number;
    $defs?: Record<string, Schema>;
}

const url = new URL("../../../../schema/envelope.schema.json", import.meta.url);
const envelopeSchema = JSON.parse(readFileSync(url, "utf8")) as Schema;

/** Fails unless the value is an envelope by the schema. */
export function assertEnvelopeOfTheSchema(value: unknown): void {
    assert.ok(isValid(value, envelopeSchema), `no envelope by the schema: ${JSON.stringify(value).slice(0, 2000)}`);
}

function isValid(value: unknown, schema: Schema): boolean {
    if (schema.$ref) return isValid(value, envelopeSchema.$defs![schema.$ref.replace("#/$defs/", "")]!);
    if (schema.enum) return schema.enum.includes(value);
    if (schema.oneOf) return schema.oneOf.filter((choice) => isValid(value, choice)).length === 1;
    switch (schema.type) {
        case "object":
            return isValidObject(value as Record<string, unknown>, schema);
        case "array":
            return Array.isArray(value) && value.every((item) => isValid(item, schema.items!));
        case "integer":
            return Number.isInteger(value) && schema.minimum! <= (value as number) && (value as number) <= schema.maximum!;
        default:
            return typeof value === schema.type;
    }
}

function isValidObject(value: Record<string, unknown>, schema: Schema): boolean {
    if (typeof value !== "object" || value === null) return false;
    const fields = Object.entries(value);
    const isKnown = ([name, field]: [string, unknown]) => {
        const known = schema.properties![name];
        return known ? isValid(field, known) : schema.additionalProperties !== false;
    };
    return schema.required!.every((name) => name in value) && fields.every(isKnown);
}

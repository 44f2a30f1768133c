// Checks documents against their own JSON Schemas, with an independent validator.
"use strict";

const Ajv2020 = require("ajv/dist/2020");

// What of a document isn't as its "_schema" says, as texts. So for the documents that are embedded in it and have one.
function faultsOf(document) {
    const { _schema: schema } = document;
    const faults = schema === undefined ? ["has no schema"] : faultsBySchema(document, schema);
    const embedded = Object.values(document._embedded ?? {}).flat();
    return faults.concat(...embedded.filter((part) => "_schema" in part).map(faultsOf));
}

function faultsBySchema(document, schema) {
    // Elements of lists in documents may have schemas of their own, and those that a list could get later have none.
    const ajv = new Ajv2020({ strict: true, strictTuples: false, allowUnionTypes: true, allErrors: true });
    ajv.addVocabulary([...markedIn(schema)]);
    try {
        const validate = ajv.compile(closed(schema));
        return validate(document) ? [] : validate.errors.map((error) => `${error.instancePath} ${error.message}`);
    } catch (error) {
        return [`its schema: ${error.message}`];
    }
}

// The keywords that aren't those of JSON Schema.
function markedIn(value, found = new Set()) {
    if (value !== null && typeof value === "object") {
        for (const [name, part] of Object.entries(value)) {
            if (name.startsWith("x-")) {
                found.add(name);
            } else {
                markedIn(part, found);
            }
        }
    }
    return found;
}

// The schema without further members than those that it describes, links and embedded documents aside.
function closed(schema) {
    if (Array.isArray(schema)) {
        return schema.map(closed);
    }
    if (schema === null || typeof schema !== "object") {
        return schema;
    }
    const copy = {};
    for (const [name, part] of Object.entries(schema)) {
        copy[name] = name.startsWith("_") ? part : closed(part);
    }
    if (schema.type === "object" && "properties" in schema && !("additionalProperties" in schema)) {
        copy.additionalProperties = false;
    }
    return copy;
}

module.exports = { faultsOf };

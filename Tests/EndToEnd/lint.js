// Reads a description of an interface (OpenAPI) and prints what an independent linter has to say about it, a line each:
//   node lint.js URL
"use strict";

const { createConfig, lintFromString } = require("@redocly/openapi-core");

async function main(url) {
    const answer = await fetch(url);
    if (!answer.ok) {
        throw new Error(`${url} is answered with ${answer.status}`);
    }
    const config = await createConfig({
        extends: ["recommended-strict"],
        rules: { "info-license": "off" }, // the program has no license that it could name
    });
    const problems = await lintFromString({ source: await answer.text(), absoluteRef: "openapi.json", config });
    for (const { ruleId, message, location } of problems) {
        console.log(`${ruleId}: ${message} ${location[0]?.pointer ?? ""}`);
    }
}

main(process.argv[2]).catch((error) => {
    console.error(error);
    process.exit(1);
});

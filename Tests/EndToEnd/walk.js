// Follows each link and each embed from the entry on, with an independent client of hypertext, and prints what it found
// as JSON:
//   node walk.js ENTRY
// `documents` are the paths that were read, `commands` those that have POST but no document, `dead` the links to
// anything else, `filled` the number of embeds that were filled, `unlike` those of them that then have other members
// than the document itself, `plain` the paths of what is no hypertext, and `faults` what of the other documents isn't as
// their own JSON Schemas say.
"use strict";

const { Client, NeverCache } = require("ketting");
const { faultsOf } = require("./schemas.js");

class Walk {
    constructor(entry) {
        this.client = new Client(entry);
        // An embed that isn't filled is no document that a cache may keep.
        this.client.cache = new NeverCache();
        this.membersOf = new Map(); // by the address of a document
        this.commands = [];
        this.dead = [];
        this.filled = [];
        this.plain = [];
        this.faults = [];
    }

    async run() {
        const waiting = [{ from: "", relation: "entry", resource: this.client.go() }];
        const seen = new Set(waiting.map((target) => target.resource.uri));
        while (waiting.length > 0) {
            const target = waiting.shift();
            for (const next of await this.visit(target)) {
                if (!seen.has(next.resource.uri)) {
                    seen.add(next.resource.uri);
                    waiting.push(next);
                }
            }
        }
        const unlike = this.filled.filter(({ uri, members }) => this.membersOf.get(uri) !== members);
        return {
            documents: [...this.membersOf.keys()].map(pathOf),
            commands: this.commands.map(pathOf),
            dead: this.dead,
            filled: this.filled.length,
            unlike: unlike.map(({ uri }) => pathOf(uri)),
            plain: this.plain,
            faults: this.faults,
        };
    }

    // Returns the targets of the document's links.
    async visit({ from, relation, resource }) {
        try {
            const state = await resource.get();
            this.membersOf.set(resource.uri, namesOf(state.data));
            const relations = embeddedIn(state);
            await this.fill(resource, relations);
            await this.checkSchema(resource, relations);
            return targetsOf(state);
        } catch (error) {
            if (await hasPost(resource)) {
                this.commands.push(resource.uri);
            } else {
                this.dead.push({ from, relation, path: pathOf(resource.uri), reason: error.message });
            }
            return [];
        }
    }

    async fill(resource, relations) {
        if (relations.size > 0) {
            const whole = await resource.go(resource.uri + expanding(relations, "?")).get();
            this.filled.push(...whole.getEmbedded().map((part) => ({ uri: part.uri, members: namesOf(part.data) })));
        }
    }

    async checkSchema(resource, relations) {
        const uri = resource.uri + "?schema=2020-12" + expanding(relations, "&");
        const answer = await resource.go(uri).fetch({ headers: { Accept: "application/hal+json" } });
        const text = await answer.text(); // what isn't read would keep the program from ending
        if (answer.headers.get("Content-Type") !== "application/hal+json") {
            this.plain.push(pathOf(resource.uri));
            return;
        }
        const faults = faultsOf(JSON.parse(text));
        this.faults.push(...faults.map((fault) => `${pathOf(resource.uri)}: ${fault}`));
    }
}

// The relations of a document that others are embedded with.
function embeddedIn(state) {
    const embedded = new Set(state.getEmbedded().map((part) => part.uri));
    const links = state.links.getAll().filter((link) => embedded.has(state.client.go(link).uri));
    return new Set(links.map((link) => link.rel));
}

function expanding(relations, mark) {
    return relations.size === 0 ? "" : mark + "expand=" + [...relations].map(encodeURIComponent).join(",");
}

function targetsOf(state) {
    const links = state.links.getAll();
    const targets = [];
    for (const link of links) {
        const resources = link.templated ? expand(state, link, links) : [state.client.go(link)];
        for (const resource of resources) {
            targets.push({ from: state.uri, relation: link.rel, resource });
        }
    }
    return targets;
}

// A template of names is expanded with each name of the document that it explains, another one without values.
function expand(state, link, links) {
    if (link.rel !== "curies") {
        return [state.follow(link.rel, {})];
    }
    const prefix = link.name + ":";
    const names = links.map(({ rel }) => rel).filter((rel) => rel.startsWith(prefix));
    return names.map((rel) => state.follow("curies", { rel: rel.slice(prefix.length) }));
}

async function hasPost(resource) {
    const options = await resource.fetch({ method: "OPTIONS" });
    return options.ok && (options.headers.get("Allow") ?? "").split(", ").includes("POST");
}

function namesOf(members) {
    return Object.keys(members).sort().join(" ");
}

function pathOf(uri) {
    const { pathname, search } = new URL(uri);
    return pathname + search;
}

new Walk(process.argv[2])
    .run()
    .then((found) => console.log(JSON.stringify(found)))
    .catch((error) => {
        console.error(error);
        process.exit(1);
    });

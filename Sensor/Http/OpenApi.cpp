#include "Sensor/Http/OpenApi.h"

#include "Sensor/Http/HalDocument.h"
#include "Sensor/Http/IMediaResource.h"
#include "Sensor/Http/JsonSchema.h"
#include "Sensor/Http/MediaTypes.h"
#include "VorApi/Path.h"
#include "VorApi/ResourceRouter.h"
#include "VorApi/StreamResourceBase.h"
#include "VorApi/VorDataTree.h"

#include <cctype>
#include <cstddef>
#include <utility>

namespace Sensor::Http {

using VorApi::Path;

namespace {

using OrderedJson = nlohmann::ordered_json;

constexpr const char* PlainJson = "application/json";
constexpr const char* MergePatch = "application/merge-patch+json";
constexpr const char* ProblemJson = "application/problem+json";

/// In capital letters where words begin, such as "OpenapiJson" for "openapi.json".
std::string Capitalized(std::string_view step) {
    std::string text;
    bool begins = true;
    for (const char c : step) {
        const auto letter = static_cast<unsigned char>(c);
        if (std::isalnum(letter) == 0) {
            begins = true;
            continue;
        }
        text += static_cast<char>(begins ? std::toupper(letter) : letter);
        begins = false;
    }
    return text;
}

/// The steps of a route, but those of collections whose item follows: "/sensor/jobs/:job" is "SensorJob".
std::string NounOf(const std::string& route) {
    const auto steps = Path::Split(route);
    std::string noun;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const bool isCollection = i + 1 < steps.size() && Path::IsParameter(steps[i + 1]);
        noun += isCollection ? "" : Capitalized(steps[i]);
    }
    return noun.empty() ? "Entry" : noun;
}

std::string ListOf(const std::string& route) {
    return route.substr(0, route.rfind('/'));
}

OrderedJson Reference(const std::string& kind, const std::string& name) {
    return {{"$ref", "#/components/" + kind + "/" + name}};
}

OrderedJson ContentOf(const std::string& type, const OrderedJson& schema) {
    return {{type, {{"schema", schema}}}};
}

OrderedJson Text() {
    return {{"type", "string"}};
}

OrderedJson Parameter(const std::string& place, const std::string& name, const std::string& text,
                      const OrderedJson& schema) {
    return {{"name", name}, {"in", place}, {"description", text}, {"schema", schema}};
}

OrderedJson Query(const QueryDescription& query) {
    return Parameter("query", query.name, query.text, query.schema);
}

bool IsBytes(const ResourceDescription& description) {
    return !description.documents.empty() && description.documents.front().value("type", nlohmann::json()) == "binary";
}

/// What is at a path that nobody describes.
std::string NameOf(const std::string& name, const std::string& route) {
    return name.empty() ? "what is at " + OpenApi::TemplateOf(route) : name;
}

OrderedJson Components() {
    const OrderedJson refusal = {
        {"type", "object"},
        {"title", "Why a request was refused (RFC 9457)"},
        {"properties",
         {{"type", {{"type", "string"}, {"description", "A path with an explanation"}}},
          {"title", Text()},
          {"status", {{"type", "integer"}}},
          {"detail", {{"type", "string"}, {"description", "What is wrong with this request"}}},
          {"code", {{"type", "integer"}, {"description", "The status of the sensor's own"}}},
          {"errors",
           {{"type", "array"},
            {"description", "The places in a document that was refused"},
            {"items",
             {{"type", "object"},
              {"properties", {{"pointer", Text()}, {"text", Text()}, {"status", {{"type", "integer"}}}}},
              {"required", {"pointer", "text", "status"}}}}}}}},
        {"required", {"type", "title", "status", "detail"}}};
    const OrderedJson hypertext = {
        {"type", "object"},
        {"title", "A document with links"},
        {"properties",
         {{"_links", OrderedJson::parse(HalDocument::LinksSchema)},
          {"_embedded", OrderedJson::parse(HalDocument::EmbeddedSchema)},
          {JsonSchema::Key, {{"type", "object"}, {"title", "The schema, if it is asked for"}}}}},
        {"required", {"_links"}}};
    const OrderedJson problem = ContentOf(ProblemJson, Reference("schemas", "Refusal"));
    return {
        {"schemas", {{"Refusal", refusal}, {"Hypertext", hypertext}}},
        {"parameters",
         {{"Schema", Parameter("query", "schema",
                               "Adds the schema in `_schema`: `1` for the tree's own form, `2020-12` for JSON Schema.",
                               {{"type", "string"}, {"enum", {"0", "1", "2020-12"}}})},
          {"Expand", Parameter("query", "expand",
                               "Relations, with commas between them, whose embedded documents are filled.", Text())},
          {"IfMatch", Parameter("header", "If-Match",
                                "The `ETag` of the state that is to be changed; another one is refused.", Text())},
          {"IfNoneMatch", Parameter("header", "If-None-Match", "`*` refuses to replace what exists.", Text())},
          {"Prefer", Parameter("header", "Prefer", "`respond-async` asks for an answer before the end of an operation.",
                               Text())}}},
        {"responses",
         {{"Refusal", {{"description", "The request was refused."}, {"content", problem}}},
          {"Failure", {{"description", "The sensor couldn't do it."}, {"content", problem}}}}}};
}

} // namespace

OpenApi::OpenApi(const VorApi::ResourceRouter& router, const Describe& describe,
                 const std::map<std::string, std::string>& tags)
    : document({{"openapi", "3.1.0"},
                {"info",
                 {{"title", "vorsensor"},
                  {"version", VOR_VERSION},
                  {"description", "The sensor and its services as a tree of resources. A client finds each resource by "
                                  "links from the entry on."}}},
                {"servers", {{{"url", "/"}}}},
                {"security", Json::array()},
                {"tags", Json::array()},
                {"paths", Json::object()},
                {"components", Components()}})
    , tags(tags) {
    const ResourceMap map(router);
    for (const std::string& route : router.Routes()) {
        ResourceDescription description = describe(route);
        const auto steps = Path::Split(route);
        if (description.tag.empty()) {
            description.tag = steps.empty() ? "entry" : std::string(steps.front());
        }
        const VorApi::IResource& resource = router.Find(route).value().resource;
        const auto* const media = dynamic_cast<const IMediaResource*>(&resource);
        const std::string mediaType(media != nullptr ? media->MediaType() : IsBytes(description) ? OctetStream : "");
        const bool isStream = dynamic_cast<const VorApi::StreamResourceBase*>(&resource) != nullptr;
        AddPath({route, description, false, UniqueNoun(route), map.MethodsOfRoute(route), isStream, mediaType});
        if (!steps.empty() && Path::IsParameter(steps.back())) {
            const std::string list = ListOf(route);
            AddPath(
                {list, description, true, UniqueNoun(list), map.MethodsOfRoute(list), description.isListStream, ""});
        }
    }
}

std::string OpenApi::TemplateOf(std::string_view route) {
    std::string path;
    for (const std::string_view step : Path::Split(route)) {
        path += '/';
        path += Path::IsParameter(step) ? "{" + std::string(step.substr(1)) + "}" : std::string(step);
    }
    return path.empty() ? "/" : path;
}

void OpenApi::AddPath(const Place& place) {
    Json item = Json::object();
    for (const std::string_view step : Path::Split(place.route)) {
        if (Path::IsParameter(step)) {
            const std::string name(step.substr(1));
            Json parameter = Parameter("path", name, "The id of one; links have it.", Text());
            parameter["required"] = true;
            item["parameters"].push_back(std::move(parameter));
        }
    }
    if (place.methods.get) {
        item["get"] = Get(place);
    }
    if (place.methods.patch) {
        item["patch"] = Patch(place);
    }
    if (place.methods.post) {
        item["post"] = Post(place);
    }
    if (place.methods.put) {
        item["put"] = Put(place);
    }
    if (place.methods.remove) {
        item["delete"] = Delete(place);
    }
    document["paths"][TemplateOf(place.route)] = std::move(item);
    const std::string& tag = place.description.tag;
    if (listedTags.insert(tag).second) {
        const auto text = tags.find(tag);
        document["tags"].push_back(
            {{"name", tag}, {"description", text != tags.end() ? text->second : "What is below /" + tag + "."}});
    }
}

std::string OpenApi::UniqueNoun(const std::string& route) {
    std::string noun = NounOf(route);
    if (!nouns.insert(noun).second) {
        noun = Capitalized(route);
        nouns.insert(noun);
    }
    return noun;
}

OpenApi::Json OpenApi::Operation(const Place& place, const std::string& verb, const std::string& summary) {
    return {{"operationId", verb + place.noun},
            {"tags", {place.description.tag}},
            {"summary", summary},
            {"parameters", Json::array()},
            {"responses", {{"4XX", Reference("responses", "Refusal")}, {"5XX", Reference("responses", "Failure")}}}};
}

OpenApi::Json OpenApi::Get(const Place& place) {
    const ResourceDescription& description = place.description;
    const std::string name = NameOf(place.isList ? description.all : description.one, place.route);
    Json operation = Operation(place, place.isList ? "list" : "get", (place.isList ? "Lists " : "Reads ") + name);
    Json content = Json::object();
    if (!place.mediaType.empty()) {
        content[place.mediaType] = Json::object();
    } else {
        for (const char* const common : {"Schema", "Expand"}) {
            operation["parameters"].push_back(Reference("parameters", common));
        }
        content = ContentOf(std::string(HalJson), place.isList ? Reference("schemas", "Hypertext")
                                                               : DocumentSchema(place.noun, description.documents));
    }
    for (const QueryDescription& query : place.isList ? description.listQuery : description.query) {
        operation["parameters"].push_back(Query(query));
    }
    if (place.isStream) {
        content[std::string(EventStream)] = {{"schema", Text()}};
    }
    operation["responses"]["200"] = {{"description", "The document."}, {"content", std::move(content)}};
    return operation;
}

OpenApi::Json OpenApi::Patch(const Place& place) {
    const ResourceDescription& description = place.description;
    Json operation = Operation(place, "update", "Changes " + NameOf(description.one, place.route));
    operation["parameters"].push_back(Reference("parameters", "IfMatch"));
    Json schema = Component(place.noun + "Update", description.updates, true);
    if (schema.is_null()) {
        schema = {{"type", "object"}};
    }
    Json content = ContentOf(PlainJson, schema);
    content.update(ContentOf(MergePatch, schema));
    operation["requestBody"] = {
        {"description", "The members that are to be changed."}, {"required", true}, {"content", std::move(content)}};
    operation["responses"]["200"] = {
        {"description", "The document as it is then."},
        {"content", ContentOf(std::string(HalJson), DocumentSchema(place.noun, description.documents))}};
    operation["responses"]["204"] = {{"description", "It was changed, and can't be read at present."}};
    return operation;
}

OpenApi::Json OpenApi::Post(const Place& place) {
    const ResourceDescription& description = place.description;
    if (place.isList) {
        Json operation = Operation(place, "create", "Creates " + NameOf(description.one, place.route));
        operation["requestBody"] = {{"required", true}, {"content", ContentOf(PlainJson, {{"type", "object"}})}};
        operation["responses"]["201"] = {
            {"description", "What was created."},
            {"content", ContentOf(std::string(HalJson), Reference("schemas", "Hypertext"))}};
        return operation;
    }
    Json operation = Operation(place, "run", "Runs " + NameOf(description.one, place.route));
    for (const char* const common : {"IfMatch", "Prefer"}) {
        operation["parameters"].push_back(Reference("parameters", common));
    }
    const Json arguments = Component(place.noun + "Arguments", description.arguments, true);
    operation["requestBody"] = {
        {"description", "The arguments. One that is left out has its default."},
        {"content", ContentOf(PlainJson, arguments.is_null() ? Json{{"type", "object"}} : arguments)}};
    const Json result = ContentOf(std::string(HalJson), DocumentSchema(place.noun + "Result", description.results));
    operation["responses"]["200"] = {{"description", "The result."}, {"content", result}};
    operation["responses"]["202"] = {
        {"description", "It has begun, and goes on."},
        {"headers", {{"Location", {{"description", "Where its end can be read."}, {"schema", Text()}}}}},
        {"content", result}};
    return operation;
}

OpenApi::Json OpenApi::Put(const Place& place) {
    Json operation = Operation(place, "replace", "Replaces or creates " + NameOf(place.description.one, place.route));
    operation["parameters"].push_back(Reference("parameters", "IfNoneMatch"));
    operation["requestBody"] = {{"required", true}, {"content", {{std::string(OctetStream), Json::object()}}}};
    const Json document = ContentOf(std::string(HalJson), Reference("schemas", "Hypertext"));
    operation["responses"]["200"] = {{"description", "It was replaced."}, {"content", document}};
    operation["responses"]["201"] = {
        {"description", "It was created."},
        {"headers", {{"Location", {{"description", "What was created."}, {"schema", Text()}}}}},
        {"content", document}};
    return operation;
}

OpenApi::Json OpenApi::Delete(const Place& place) {
    Json operation = Operation(place, "delete", "Deletes " + NameOf(place.description.one, place.route));
    operation["parameters"].push_back(Reference("parameters", "IfMatch"));
    operation["responses"]["204"] = {{"description", "It was deleted."}};
    return operation;
}

OpenApi::Json OpenApi::DocumentSchema(const std::string& name, const std::vector<nlohmann::json>& schemas) {
    const Json hypertext = Reference("schemas", "Hypertext");
    const Json own = Component(name, schemas, false);
    return own.is_null() ? hypertext : Json{{"allOf", {hypertext, own}}};
}

OpenApi::Json OpenApi::Component(const std::string& name, const std::vector<nlohmann::json>& schemas, bool isUpdate) {
    if (schemas.empty()) {
        return nullptr;
    }
    Json& component = document["components"]["schemas"][name];
    if (component.is_null()) {
        Json all = Json::array();
        for (const nlohmann::json& schema : schemas) {
            std::string text;
            JsonSchema::Append(text, VorApi::VorDataTree::FromJson(schema),
                               isUpdate ? JsonSchema::Use::Update : JsonSchema::Use::Kind);
            all.push_back(Json::parse(text));
        }
        component = all.size() == 1 ? all.front() : Json{{"anyOf", std::move(all)}};
    }
    return Reference("schemas", name);
}

} // namespace Sensor::Http

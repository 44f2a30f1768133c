// JSON text for a tree of parameters of every kind. An accepted text must be written and read back equal, and a refused
// one must change nothing.

#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/JsonText.h"
#include "Vor/Logging.h"
#include "Vor/VorDataTreeSerializer.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorApi/VorDataTree.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;
using Vor::Params::Value;
using Vor::Properties::ByteVector;
using Vor::Properties::JsonSerializer;

enum class Mode { Unknown = -1, Off = 0, On = 1 };

struct Item : Vor::Params::Group {
    Item() {
        Register("name", name);
        Register("mode", mode);
        Register("tags", tags);
        mode.AddOption(Mode::Off, "Off");
        mode.AddOption(Mode::On, "On");
    }
    Value<std::string> name;
    Vor::Params::Enum<Mode> mode;
    Value<std::vector<std::string>> tags;
};

struct Row : Vor::Params::Group {
    Row() { Register("items", items); }
    Vor::Params::Array<Item> items;
};

struct Document : Vor::Params::Group {
    Document() {
        Register("flag", flag);
        Register("small", small);
        Register("medium", medium);
        Register("large", large);
        Register("signed", number);
        Register("text", text);
        Register("bytes", bytes);
        Register("texts", texts);
        Register("numbers", numbers);
        Register("mode", mode);
        Register("inner", inner);
        Register("rows", rows);
        small.EnableMaximum(true);
        small.SetMaximum(1000);
        number.EnableReadOnly();
        number.SetReadOnly(true);
        secret.SetWriteOnly(true);
        Register("secret", secret);
    }
    Value<bool> flag;
    Value<unsigned short> small;
    Value<unsigned int> medium;
    Value<unsigned long long> large;
    Value<long long> number;
    Value<std::string> text;
    Value<ByteVector> bytes;
    Value<std::vector<std::string>> texts;
    Value<std::vector<unsigned short>> numbers;
    Vor::Params::Enum<Mode> mode;
    Item inner;
    Vor::Params::Array<Row> rows;
    Value<std::string> secret;
};

void Require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

bool Accepts(const auto& call) {
    try {
        call();
        return true;
    } catch (const Vor::Exception& e) {
        Require(e.Status() == yERROR_PARAMETER, "a refused document has the status of a bad parameter");
        Require(e.HasText(), "a refused document has a reason");
        return false;
    }
}

void CheckAccepted(const Document& document, const json& written) {
    Document back;
    JsonSerializer::Deserialize(back, Vor::ParseJson(written.dump()));
    Require(JsonSerializer::Serialize(back) == written, "what was written reads back equal");

    Document copy;
    copy.CopyValues(document);
    Require(JsonSerializer::Serialize(copy) == written, "a copy is equal");
    Require(JsonSerializer::SerializeSchema(copy) == JsonSerializer::SerializeSchema(document),
            "the schema of a copy is equal");

    VorApi::VorDataTree tree;
    Vor::Properties::VorDataTreeSerializer::Serialize(document, tree);
    Require(tree.ToJson() == written, "the data tree holds the same");
    Require(json::parse(tree.Dump(false)) == written, "the dumped data tree holds the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Vor::Logging::SetMinimumLevel(Vor::LevelError);
    json parsed;
    try {
        parsed = Vor::ParseJson(reinterpret_cast<const char*>(data), size);
    } catch (const Vor::Exception& e) {
        Require(e.Status() == yERROR_FORMAT && e.HasText(), "a text that isn't JSON is a bad format, with a reason");
        return 0;
    }

    Document document;
    document.secret = "kept";
    const json before = JsonSerializer::Serialize(document);
    const bool readable = Accepts([&] { JsonSerializer::Deserialize(document, parsed); });
    if (!readable) {
        Require(JsonSerializer::Serialize(document) == before, "a refused document changes nothing");
        Document untouched;
        Require(!Accepts([&] { JsonSerializer::Validate(untouched, parsed); }), "what can't be read isn't valid");
        return 0;
    }
    Require(document.secret.Get() == "kept", "a write-only value is never read");
    document.secret = "";
    CheckAccepted(document, JsonSerializer::Serialize(document));
    Accepts([&] { JsonSerializer::Validate(document, parsed); });
    JsonSerializer::Validate(document, JsonSerializer::Serialize(document));
    return 0;
}

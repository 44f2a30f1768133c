#include "Sensor/Http/ObjectText.h"

#include <nlohmann/json.hpp>

namespace Sensor::Http {

ObjectText::ObjectText(std::string& out)
    : out(out)
    , begin(out.size()) {
    out += '{';
}

void ObjectText::AddName(const std::string& name) {
    if (out.size() > begin + 1) {
        out += ',';
    }
    out += Quoted(name);
    out += ':';
}

void ObjectText::Add(const std::string& name, const std::string& text) {
    AddName(name);
    out += Quoted(text);
}

void ObjectText::AddJson(const std::string& name, std::string_view json) {
    AddName(name);
    out += json;
}

void ObjectText::AddTree(const std::string& name, const VorApi::VorDataTree& tree) {
    AddName(name);
    tree.AppendTo(out, false);
}

void ObjectText::AddMembers(const VorApi::VorDataTree& tree) {
    if (tree.IsObject() && tree.Count() > 0) {
        const bool isFirst = out.size() == begin + 1;
        out.erase(out.size() - (isFirst ? 1 : 0));
        const std::size_t object = out.size();
        tree.AppendTo(out, false);
        out[object] = isFirst ? '{' : ',';
        out.pop_back();
    }
}

std::string Quoted(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace Sensor::Http

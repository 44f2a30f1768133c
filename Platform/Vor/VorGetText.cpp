#include "Vor/VorGetText.h"

#include <libintl.h>
#include <mutex>
#include <set>
#include <unordered_set>
#include <utility>

struct VorGetText::State {
    /// Guards the members below. No other lock is taken while it is held.
    mutable std::mutex mutex;
    std::unordered_set<std::string> texts;
    std::map<std::string, Translations> tables;
    std::set<Call> calls;
    std::string folder;
    std::set<std::string> boundDomains;

    std::string Translate(const Call& call) {
        if (const auto table = tables.find(call.catalogue); table != tables.end()) {
            if (const auto entry = table->second.find(call.text); entry != table->second.end()) {
                return entry->second;
            }
        }
        if (folder.empty() || call.text.empty()) {
            return call.text;
        }
        const std::string domain = call.domain + "." + call.catalogue;
        if (boundDomains.insert(domain).second) {
            bindtextdomain(domain.c_str(), folder.c_str());
            bind_textdomain_codeset(domain.c_str(), "UTF-8");
        }
        return dgettext(domain.c_str(), call.text.c_str());
    }
};

VorGetText::VorGetText()
    : state(std::make_unique<State>()) {}

VorGetText& VorGetText::GetInstance() {
    static VorGetText* const instance = new VorGetText;
    return *instance;
}

const char* VorGetText::DPGetText(const char* domain, const char* catalogue, const char* text) {
    const Call call{domain == nullptr ? "" : domain, catalogue == nullptr ? "" : catalogue,
                    text == nullptr ? "" : text};
    const std::lock_guard lock(state->mutex);
    state->calls.insert(call);
    return state->texts.insert(state->Translate(call)).first->c_str();
}

void VorGetText::SetLocaleFolder(const std::string& folder) {
    const std::lock_guard lock(state->mutex);
    state->folder = folder;
    state->boundDomains.clear();
}

void VorGetText::SetTranslations(const std::string& catalogue, Translations translations) {
    const std::lock_guard lock(state->mutex);
    if (translations.empty()) {
        state->tables.erase(catalogue);
    } else {
        state->tables[catalogue] = std::move(translations);
    }
}

std::vector<VorGetText::Call> VorGetText::Calls() const {
    const std::lock_guard lock(state->mutex);
    return {state->calls.begin(), state->calls.end()};
}

void VorGetText::ForgetCalls() {
    const std::lock_guard lock(state->mutex);
    state->calls.clear();
}

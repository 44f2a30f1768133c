#include "Vor/VorGetText.h"

#include <cstddef>
#include <functional>
#include <libintl.h>
#include <map>
#include <mutex>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

struct VorGetText::State {
    struct TextHash {
        using is_transparent = void; // NOLINT(readability-identifier-naming): the standard library looks for it
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    /// By text, of one domain and catalogue.
    using Answers = std::unordered_map<std::string, const char*, TextHash, std::equal_to<>>;

    /// Guards the members below. No other lock is taken while it is held.
    mutable std::mutex mutex;
    std::unordered_set<std::string> texts;
    std::map<std::string, Translations> tables;
    std::set<Call> calls;
    std::string folder;
    std::set<std::string> boundDomains;
    /// Of the calls in `calls`, which are repeated often. Without a folder of locales, an answer depends on the tables
    /// only.
    std::map<std::string, std::map<std::string, Answers, std::less<>>, std::less<>> answers;

    const char* FindAnswer(std::string_view domain, std::string_view catalogue, std::string_view text) const {
        const auto catalogues = answers.find(domain);
        if (catalogues == answers.end()) {
            return nullptr;
        }
        const auto texts = catalogues->second.find(catalogue);
        if (texts == catalogues->second.end()) {
            return nullptr;
        }
        const auto answer = texts->second.find(text);
        return answer == texts->second.end() ? nullptr : answer->second;
    }

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
    static VorGetText* const Instance = new VorGetText;
    return *Instance;
}

const char* VorGetText::DPGetText(const char* domain, const char* catalogue, const char* text) {
    const auto orEmpty = [](const char* given) { return given == nullptr ? "" : given; };
    const std::lock_guard lock(state->mutex);
    if (const char* const answer = state->FindAnswer(orEmpty(domain), orEmpty(catalogue), orEmpty(text))) {
        return answer;
    }
    const Call call{orEmpty(domain), orEmpty(catalogue), orEmpty(text)};
    state->calls.insert(call);
    const char* const answer = state->texts.insert(state->Translate(call)).first->c_str();
    if (state->folder.empty()) {
        state->answers[call.domain][call.catalogue].emplace(call.text, answer);
    }
    return answer;
}

void VorGetText::SetLocaleFolder(const std::string& folder) {
    const std::lock_guard lock(state->mutex);
    state->folder = folder;
    state->boundDomains.clear();
    state->answers.clear();
}

void VorGetText::SetTranslations(const std::string& catalogue, Translations translations) {
    const std::lock_guard lock(state->mutex);
    state->answers.clear();
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
    state->answers.clear();
}

#pragma once

#include <compare>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// Translation of the texts that users read. One for the process; usable from any thread and in the constructors and
/// destructors of static objects.
class VorGetText {
public:
    /// One text that was requested.
    struct Call {
        std::string domain;
        std::string catalogue;
        std::string text;
        auto operator<=>(const Call&) const = default;
    };
    /// Translations of one catalogue, by text.
    using Translations = std::map<std::string, std::string>;

    static VorGetText& GetInstance();

    /// The translation of `text`, or the text itself when there is none. What is returned stays valid and equal for the
    /// life of the process, whatever becomes of the argument; for equal texts the pointers are equal.
    const char* DPGetText(const char* domain, const char* catalogue, const char* text);

    /// From now on texts are looked up in FOLDER/LANGUAGE/LC_MESSAGES/DOMAIN.CATALOGUE.mo, in the language of the
    /// process' locale, which the caller sets. An empty folder ends it. Texts that were returned before don't change.
    void SetLocaleFolder(const std::string& folder);

    /// Translations of a catalogue that are used before those of the files. An empty map removes them.
    void SetTranslations(const std::string& catalogue, Translations translations);

    /// Each text that was requested since the start or since ForgetCalls, once, in ascending order.
    std::vector<Call> Calls() const;
    void ForgetCalls();

private:
    VorGetText();
    ~VorGetText() = delete;

    struct State;
    std::unique_ptr<State> state;
};

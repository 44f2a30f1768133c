#pragma once

#include "Vor/VorGetText.h"

#include <algorithm>
#include <string>

namespace Tests {

/// Whether the text was looked up in the catalogue since VorGetText::ForgetCalls.
inline bool WasTranslated(const std::string& catalogue, const std::string& text) {
    const auto calls = VorGetText::GetInstance().Calls();
    return std::find(calls.begin(), calls.end(), VorGetText::Call{"BE", catalogue, text}) != calls.end();
}

/// Translates one text of a catalogue during its lifetime.
class Translation {
public:
    Translation(const std::string& catalogue, const std::string& text, const std::string& translated)
        : catalogue(catalogue) {
        VorGetText::GetInstance().SetTranslations(catalogue, {{text, translated}});
    }
    ~Translation() { VorGetText::GetInstance().SetTranslations(catalogue, {}); }
    Translation(const Translation&) = delete;
    Translation& operator=(const Translation&) = delete;

private:
    std::string catalogue;
};

} // namespace Tests

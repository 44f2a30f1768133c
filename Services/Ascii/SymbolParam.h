#pragma once

#include "VorApi/Params/Value.h"

#include <string>

namespace Services::Ascii {

/// A parameter for the characters that structure a line. A value that `check` rejects is refused like a value outside
/// of its limits.
class SymbolParam : public Vor::Params::Value<std::string> {
public:
    using Check = bool (*)(const std::string& value);

    /// `requirement` is a text for the user, "%1$s must be ...", with static lifetime.
    SymbolParam(Check check, const char* requirement)
        : check(check)
        , requirement(requirement) {}

    SymbolParam& operator=(const std::string& value) override {
        ConditionalSet(value);
        return *this;
    }

    void CheckValidation(const std::string& value, bool log) const override {
        Value::CheckValidation(value, log);
        if (!check(value)) {
            FailValidation(log, requirement);
        }
    }

private:
    const Check check;
    const char* const requirement;
};

} // namespace Services::Ascii

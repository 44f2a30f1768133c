#pragma once

#include "VorApi/Params/Value.h"

#include <string>

namespace Services::Ascii {

/// A parameter that is a few characters in a line, of a set that keeps the line readable. Another value is refused, as
/// one outside its limits is.
class SymbolParam : public Vor::Params::Value<std::string> {
public:
    using Check = bool (*)(const std::string& value);

    /// `requirement` is a text for the user, "%1$s must be ...", and lives as long as the program.
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

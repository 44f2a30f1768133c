#pragma once

#include "Vor/Node.h"
#include "VorApi/Params/PropertyValue.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Vor {
class Exception;
}

namespace Vor::Params {

/// The keywords that values, groups and arrays can have. Each keyword is itself a value, registered in the parameter's
/// schema, which is built when a keyword other than "title", "sortOrder" and "readOnly" is enabled or somebody asks for
/// it. "used" and "visibility" both describe whether a parameter is of interest to a client, and exclude each
/// other.
class ParamsBase : private Properties::Internal::IKeywordSource {
public:
    const std::string& GetTitle() const { return nodes ? nodes->title.Get() : title; }
    void SetTitle(const std::string& text);

    unsigned int GetSortOrder() const { return nodes ? nodes->sortOrder.Get() : sortOrder; }
    void SetSortOrder(unsigned int order);

    /// Can't be disabled again.
    void EnableReadOnly();
    bool IsReadOnlyEnabled() const { return readOnlyEnabled; }
    bool GetReadOnly() const { return nodes ? nodes->readOnly.Get() : readOnly; }
    void SetReadOnly(bool value);

    /// Throws `yERROR_PARAMETER` if "visibility" is enabled.
    void EnableUsed();
    bool IsUsedEnabled() const { return usedEnabled; }
    bool GetUsed() const { return !used || used->Get(); }
    void SetUsed(bool value) { UsedNode().ConditionalSet(value); }

    /// Throws `yERROR_PARAMETER` if "used" is enabled.
    void EnableVisibility(bool enable);
    bool IsVisibilityEnabled() const { return visibilityEnabled; }
    unsigned int GetVisibility() const {
        return Present(visibility, "Must enable 'visibility' before using it.").Get();
    }
    void SetVisibility(unsigned int value) {
        Present(visibility, "Must enable 'visibility' before setting the value.").ConditionalSet(value);
    }

    void EnableMeta(bool enable);
    bool IsMetaEnabled() const { return metaEnabled; }
    const std::string& GetMeta() const { return Present(meta, "Must enable 'x-meta' before using it.").Get(); }
    void SetMeta(const std::string& text) {
        Present(meta, "Must enable 'x-meta' before setting the value.").ConditionalSet(text);
    }

    void EnableDescription(bool enable);
    bool IsDescriptionEnabled() const { return descriptionEnabled; }
    const std::string& GetDescription() const {
        return Present(description, "Must enable 'description' before using it.").Get();
    }
    void SetDescription(const std::string& text) {
        Present(description, "Must enable 'description' before setting the value.").ConditionalSet(text);
    }

    /// How often a parameter of the process got or lost an "actual". What is derived from values that have none is
    /// checked again when the number has changed.
    static unsigned long long ActualSwitches();

protected:
    explicit ParamsBase(Properties::Node& owner);
    ParamsBase(const ParamsBase&) = delete;
    ParamsBase& operator=(const ParamsBase&) = delete;
    ~ParamsBase();

    /// Remembers for the next read whether the parameter is read-only. Never fails.
    void CheckValidation(bool log) const;

    /// Throws the failure of a validation, and logs it if `log`.
    [[noreturn]] void FailValidation(bool log, const char* text) const;

    /// Appends the message of a failed validation. Another failure is logged.
    static void CollectFailure(const Exception& failure, std::vector<std::string>& errors);

    void CopyValues(const ParamsBase& other);

    /// Registers the keywords that `CopyValues` has copied.
    void RegisterCopied();

    /// Creates or frees an optional keyword.
    template <class Keyword>
    void Enable(std::unique_ptr<Keyword>& keyword, const char* key, bool enable) {
        if (enable) {
            if (!keyword) {
                keyword = std::make_unique<Keyword>();
            }
            owner.RegisterSchema(key, *keyword, false);
        } else if (keyword) {
            owner.DeregisterSchema(key);
            keyword.reset();
        }
    }

    /// Makes an optional keyword equal to that of another parameter.
    template <class Keyword>
    void CopyKeyword(std::unique_ptr<Keyword>& keyword, const char* key, const std::unique_ptr<Keyword>& other) {
        Enable(keyword, key, other != nullptr);
        if (other) {
            keyword->ConditionalSet(other->Get());
        }
    }

    static void CountActualSwitch();

    /// A "minimum" that is there from the start comes before "readOnly" in the schema.
    virtual void RegisterMinimum() {}
    virtual void VisitMinimum(const std::function<void(Properties::Internal::Name, const Properties::Node&)>&) const {}

    template <class Keyword>
    static Keyword& Present(const std::unique_ptr<Keyword>& keyword, const char* otherwise) {
        if (!keyword) {
            ThrowNotEnabled(otherwise);
        }
        return *keyword;
    }

    [[noreturn]] static void ThrowNotEnabled(const char* text);

    bool ReadOnlyPending() const { return readOnlyPending; }
    bool ClearReadOnlyPending() { return std::exchange(readOnlyPending, false); }

    bool readOnlyEnabled = false;
    bool usedEnabled = false;
    bool visibilityEnabled = false;
    bool metaEnabled = false;
    bool descriptionEnabled = false;

private:
    /// The keywords that each parameter has, as nodes.
    struct Nodes {
        explicit Nodes(const ParamsBase& values);

        Properties::Value<std::string> title;
        Properties::Value<unsigned int> sortOrder;
        Properties::Value<bool> readOnly;
    };

    void RegisterKeywords() override;
    void
    VisitKeywords(const std::function<void(Properties::Internal::Name, const Properties::Node&)>& visit) const override;
    Properties::Value<bool>& UsedNode();

    Properties::Node& owner;
    std::unique_ptr<Nodes> nodes; ///< created with the schema; until then, the next three members are the values
    std::string title;
    unsigned int sortOrder = 0;
    bool readOnly = false;
    mutable bool readOnlyPending = false;
    /// Created when first enabled or set.
    std::unique_ptr<Properties::Value<bool>> used;
    std::unique_ptr<Properties::Value<std::string>> meta;
    std::unique_ptr<Properties::Value<unsigned int>> visibility;
    std::unique_ptr<Properties::Value<std::string>> description;
};

} // namespace Vor::Params

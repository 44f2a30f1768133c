#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/ParamsBase.h"

#include <string>

namespace Vor::Params {

/// A structure with the keywords of a parameter.
class StructBase : public Properties::Structure, public ParamsBase {
public:
    /// An empty text means no "extendedType".
    explicit StructBase(const std::string& extendedType = std::string())
        : Structure(true)
        , ParamsBase(static_cast<Properties::Node&>(*this))
        , extendedType(extendedType) {
        if (!extendedType.empty()) {
            RegisterSchema("extendedType", this->extendedType);
        }
    }
    ~StructBase() override = default;

    /// Of an `other` that isn't a `StructBase`, only the children are copied.
    void CopyValues(const Properties::Node& other) override {
        Structure::CopyValues(other);
        if (const auto* const source = dynamic_cast<const StructBase*>(&other)) {
            ParamsBase::CopyValues(*source);
            RegisterCopied();
            extendedType.ConditionalSet(source->extendedType.Get());
            nextSortOrder = source->nextSortOrder;
        }
    }

protected:
    unsigned int NextSortOrder(unsigned int step) {
        const unsigned int order = nextSortOrder;
        nextSortOrder += step;
        return order;
    }

private:
    Properties::Value<std::string> extendedType;
    unsigned int nextSortOrder = 0;
};

/// A named set of parameters. A document class derives from it, has its parameters as members and registers them in its
/// constructor, which so declares the schema of the document.
class Group : public StructBase {
public:
    explicit Group(const std::string& extendedType = std::string())
        : StructBase(extendedType) {}

    void CopyValues(const Properties::Node& other) override { StructBase::CopyValues(other); }

    /// Makes `parameter` a member under the key `name`, with the group's next sort order. An empty title means
    /// the name.
    template <class P>
    void Register(const std::string& name, P& parameter, const std::string& title = std::string(),
                  unsigned int sortStep = 100) {
        Structure::Register(name, parameter);
        parameter.SetTitle(title.empty() ? name : title);
        parameter.SetSortOrder(NextSortOrder(sortStep));
    }
};

} // namespace Vor::Params

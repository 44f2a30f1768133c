#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/ParamsBase.h"

#include <memory>
#include <string>

namespace Vor::Params {

/// A structure with the keywords of a parameter.
class StructBase : public Properties::Structure, public ParamsBase {
public:
    /// An empty text means no "extendedType".
    explicit StructBase(const std::string& extendedType = std::string());
    ~StructBase() override;

    /// Of an `other` that isn't a `StructBase`, only the children are copied.
    void CopyValues(const Properties::Node& other) override;

protected:
    unsigned int NextSortOrder(unsigned int step);

private:
    std::unique_ptr<Properties::Value<std::string>> extendedType; ///< null: the empty text
    unsigned int nextSortOrder = 0;
};

/// A named set of parameters. A document class derives from it, has its parameters as members and registers them in its
/// constructor, which so declares the schema of the document.
class Group : public StructBase {
public:
    explicit Group(const std::string& extendedType = std::string());
    ~Group() override;

    void CopyValues(const Properties::Node& other) override;

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

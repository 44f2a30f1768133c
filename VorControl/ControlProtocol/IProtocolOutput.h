#pragma once

#include "VorApi/Params/Group.h"
#include "VorCommon/ICommandTarget.h"

#include <memory>
#include <string>
#include <vector>

namespace VorControl::ControlProtocol {

/// A list of data sources with an output id each, by which a service's clients ask for them. It is sorted by id, no id
/// and no source stands in it twice, and it has a greatest number of entries.
///
/// Every operation may be called on any thread and holds the map's reentrant lock for its own work. Failures are
/// Vor::Exception, which a request of another class than the map's own isn't: that is a bad cast. A lock that fails
/// throws its status.
class IProtocolOutput {
public:
    virtual ~IProtocolOutput() = default;

    /// Brackets a use of OutputMap(). EndLock ends the use even when brackets are nested.
    virtual void BeginLock() = 0;
    virtual void EndLock() = 0;
    /// The document of the map. Good until EndLock; throws yERROR_STATE outside of BeginLock and EndLock.
    virtual Vor::Params::Group& OutputMap() const = 0;

    /// The requests that Add, Remove, and AddAll and UpdateId take, with their defaults.
    virtual std::shared_ptr<Vor::Params::Group> CreateOutputMapItemArgs() = 0;
    virtual std::shared_ptr<Vor::Params::Group> CreateOutputMapItemRemoveArgs() = 0;
    virtual std::shared_ptr<Vor::Params::Group> CreateOutputsArgs() = 0;

    /// Throws yERROR_PARAMETER for an entry without id or source, or one whose id is taken where the request doesn't
    /// ask to shift; yERROR_ALREADY_EXISTS for a source that the map has; yERROR_FULL. Nothing has changed then.
    virtual void Add(const Vor::Params::Group& args) = 0;
    /// Adds the sources of the request's map and writes their ids into it. An entry that fails is logged and the rest
    /// goes on; in the end the failure is thrown, and what was added stays.
    virtual void AddAll(Vor::Params::Group& args) = 0;
    /// Throws yERROR_NOT_FOUND for an id that the map hasn't; the ids before it in the request are removed by then.
    virtual void Remove(const Vor::Params::Group& args) = 0;

    virtual unsigned long Count() const = 0;
    /// In order of the ids. Valid until the map changes. Throws yERROR_NOT_FOUND for Count() itself, and
    /// yERROR_PARAMETER beyond.
    virtual const Vor::Params::Group& At(unsigned long index) const = 0;
    virtual void Clear() = 0;
    /// In list order.
    virtual std::vector<std::string> DataSourceList() const = 0;
    /// Numbers the entries anew, without gaps, where ids are numbers.
    virtual void CompactId() = 0;
    /// The request's map has two entries: the entry with the id of the first one gets the id of the second one, into
    /// which its source is written. Throws yERROR_PARAMETER, yERROR_CONFLICT or yERROR_NOT_FOUND before any change; an
    /// entry that then can't be added under its new id is gone.
    virtual void UpdateId(Vor::Params::Group& args) = 0;

    /// The same operations by name.
    virtual VorCommon::ICommandTarget& CommandTarget() = 0;
};

} // namespace VorControl::ControlProtocol

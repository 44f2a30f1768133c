#pragma once

#include "VorApi/Params/Group.h"
#include "VorCommon/ICommandTarget.h"

#include <memory>
#include <string>
#include <vector>

namespace VorControl::ControlProtocol {

/// A list of data sources, each with the output id by which clients of a service request it. The list is sorted by id,
/// contains no id and no source twice, and has a maximum number of entries.
///
/// Every operation may be called on any thread and holds the map's reentrant lock while it works, except
/// CommandTarget() and those that make a request. A failure is thrown as a Vor::Exception, that of the lock too. A
/// request that isn't of the map's own class is a std::bad_cast. Handlers of the list and of its entries run under the
/// lock, and must not change the list; what one throws ends an operation halfway.
class IProtocolOutput {
public:
    virtual ~IProtocolOutput() = default;

    /// The beginning and the end of a use of OutputMap(). EndLock ends the use even when it is an inner one.
    virtual void BeginLock() = 0;
    virtual void EndLock() = 0;
    /// The document of the map. Valid until EndLock; throws yERROR_STATE outside of BeginLock and EndLock.
    virtual Vor::Params::Group& OutputMap() const = 0;

    /// A new request of Add, with its defaults.
    virtual std::shared_ptr<Vor::Params::Group> CreateOutputMapItemArgs() = 0;
    /// A new request of Remove, with its defaults.
    virtual std::shared_ptr<Vor::Params::Group> CreateOutputMapItemRemoveArgs() = 0;
    /// A new request of AddAll and UpdateId, with its defaults.
    virtual std::shared_ptr<Vor::Params::Group> CreateOutputsArgs() = 0;

    /// Throws yERROR_PARAMETER for an entry without id or source, and for an id that another entry has if the request
    /// doesn't allow to shift; yERROR_UNIMPLEMENTED for such an id if the map can't shift; yERROR_ALREADY_EXISTS for a
    /// source that the map has; yERROR_FULL. These change nothing.
    virtual void Add(const Vor::Params::Group& args) = 0;
    /// Adds the sources of the request's map. Writes the ids into it: numbers to all entries, names to those without
    /// one. A failing entry is logged, and the next ones are still added, except that a full map of numbers ends the
    /// request at once. Throws the status of one of the failures at the end; what was added stays.
    virtual void AddAll(Vor::Params::Group& args) = 0;
    /// Throws yERROR_NOT_FOUND for an id that isn't in the map; the ids before it in the request are removed then.
    virtual void Remove(const Vor::Params::Group& args) = 0;

    virtual unsigned long Count() const = 0;
    /// In order of the ids. Valid until the map changes. Throws yERROR_NOT_FOUND for an index equal to Count(), and
    /// yERROR_PARAMETER for a greater one.
    virtual const Vor::Params::Group& At(unsigned long index) const = 0;
    virtual void Clear() = 0;
    /// In list order.
    virtual std::vector<std::string> DataSourceList() const = 0;
    /// Renumbers the entries without gaps if ids are numbers.
    virtual void CompactId() = 0;
    /// The request's map has two entries: the first one has the present id of an entry, the second one its new id. The
    /// source of the entry is written into the second one. Equal ids change nothing. Throws yERROR_PARAMETER,
    /// yERROR_CONFLICT or yERROR_NOT_FOUND before any change of the map. An entry that can't be added with its new id
    /// after that is lost.
    virtual void UpdateId(Vor::Params::Group& args) = 0;

    /// The commands that change the map.
    virtual VorCommon::ICommandTarget& CommandTarget() = 0;
};

} // namespace VorControl::ControlProtocol

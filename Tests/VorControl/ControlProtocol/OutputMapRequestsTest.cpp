// Random requests on output maps, compared with simple models of the maps.

#include "Tests/Support/Failure.h"
#include "Tests/VorControl/ControlProtocol/OutputMapModel.h"
#include "Tests/VorControl/ControlProtocol/RandomRequests.h"
#include "Tests/VorControl/ControlProtocol/TestOutputs.h"

#include <ostream>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

using namespace Tests;
using namespace VorControl::ControlProtocol;

namespace {

enum class Action { Add, AddAll, Remove, RemoveList, RemoveBoth, Update, UpdateList, Compact, Clear };

constexpr const char* ActionNames[] = {"Add",    "AddAll",     "Remove",  "RemoveList", "RemoveBoth",
                                       "Update", "UpdateList", "Compact", "Clear"};

/// A request. Each action uses some of the members. Ids are numbers for both maps.
struct Request {
    Action action = Action::Add;
    int id = 0;
    int newId = 0;
    std::string source;
    bool autoShift = false;
    std::vector<int> ids;
    std::vector<std::string> sources;
};

std::ostream& operator<<(std::ostream& out, const Request& request) {
    out << ActionNames[static_cast<int>(request.action)] << "(" << request.id << " " << request.newId << " '"
        << request.source << "'" << (request.autoShift ? " shift" : "") << ", ids";
    for (const int id : request.ids) {
        out << " " << id;
    }
    out << ", sources";
    for (const auto& source : request.sources) {
        out << " '" << source << "'";
    }
    return out << ")";
}

rc::Gen<std::string> SourceGen() {
    return rc::gen::map(rc::gen::inRange(0, 40),
                        [](int number) { return number == 0 ? std::string() : "s" + std::to_string(number); });
}

/// Ids that are close to each other, so that entries overlap; with `atTheEnd` also the greatest numbers, which wrap.
rc::Gen<int> IdGen(bool atTheEnd) {
    if (atTheEnd) {
        return rc::gen::oneOf(rc::gen::inRange(0, 12), rc::gen::inRange(65524, NoId + 1));
    }
    return rc::gen::weightedOneOf<int>({{40, rc::gen::inRange(0, 30)}, {1, rc::gen::just(NoId)}});
}

rc::Gen<std::vector<Request>> RequestsGen(bool atTheEnd) {
    const auto action = rc::gen::weightedElement<Action>({{30, Action::Add},
                                                          {3, Action::AddAll},
                                                          {8, Action::Remove},
                                                          {3, Action::RemoveList},
                                                          {1, Action::RemoveBoth},
                                                          {16, Action::Update},
                                                          {2, Action::UpdateList},
                                                          {2, Action::Compact},
                                                          {1, Action::Clear}});
    const auto ids = rc::gen::resize(6, rc::gen::container<std::vector<int>>(IdGen(atTheEnd)));
    const auto sources = rc::gen::resize(6, rc::gen::container<std::vector<std::string>>(SourceGen()));
    const auto request = rc::gen::build<Request>(
        rc::gen::set(&Request::action, action), rc::gen::set(&Request::id, IdGen(atTheEnd)),
        rc::gen::set(&Request::newId, IdGen(atTheEnd)), rc::gen::set(&Request::source, SourceGen()),
        rc::gen::set(&Request::autoShift), rc::gen::set(&Request::ids, ids), rc::gen::set(&Request::sources, sources));
    return RequestListGen(request);
}

/// A map and its model, which get the same requests.
template <class Outputs, class OutputsArgs, class RemoveArgs, class Model>
class Pair {
    using Id = typename Outputs::Id;

public:
    Pair(Outputs& map, std::size_t maxCount)
        : map(map)
        , model(maxCount) {}

    void Do(const Request& request) {
        switch (request.action) {
        case Action::Add:
            Expect(model.Add(IdOf(request.id), request.source, request.autoShift),
                   [&] { map.AddOne(IdOf(request.id), request.source, request.autoShift); });
            break;
        case Action::AddAll:
            AddAll(request);
            break;
        case Action::Remove:
            Remove(IdOf(request.id), {});
            break;
        case Action::RemoveList:
            Remove(IdOf(NoId), IdsOf(request.ids));
            break;
        case Action::RemoveBoth:
            Remove(IdOf(request.id), IdsOf(request.ids));
            break;
        case Action::Update:
            Update({IdOf(request.id), IdOf(request.newId)}, request.autoShift);
            break;
        case Action::UpdateList:
            Update(IdsOf(request.ids), request.autoShift);
            break;
        case Action::Compact:
            model.Compact();
            map.CompactId();
            break;
        case Action::Clear:
            model.Clear();
            map.Clear();
            break;
        }
        Compare(IdOf(request.newId));
    }

private:
    static Id IdOf(int number) {
        if constexpr (std::is_same_v<Id, std::string>) {
            return number == NoId ? std::string() : "id" + std::to_string(number);
        } else {
            return static_cast<Id>(number);
        }
    }

    static std::vector<Id> IdsOf(const std::vector<int>& numbers) {
        std::vector<Id> ids;
        for (const int number : numbers) {
            ids.push_back(IdOf(number));
        }
        return ids;
    }

    template <class Call>
    void Expect(yStatus status, const Call& call) {
        const auto failure = FailureOf(call);
        RC_ASSERT((failure.has_value() ? failure->status : yOK) == status);
    }

    void AddAll(const Request& request) {
        std::vector<std::pair<Id, std::string>> entries;
        for (std::size_t i = 0; i < request.sources.size(); ++i) {
            entries.emplace_back(IdOf(i < request.ids.size() ? request.ids[i] : NoId), request.sources[i]);
        }
        OutputsArgs args;
        Outputs::Fill(args, entries);
        const yStatus expected = model.AddAll(entries);
        Expect(expected, [&] { map.AddAll(args); });
        for (unsigned long i = 0; i < args.map.Count(); ++i) {
            RC_ASSERT(args.map.At(i).outputId.Get() == entries[i].first);
        }
    }

    void Remove(const Id& id, const std::vector<Id>& ids) {
        RemoveArgs args;
        args.outputId = id;
        args.outputIdList = ids;
        Expect(model.Remove(id, ids), [&] { map.Remove(args); });
    }

    void Update(const std::vector<Id>& ids, bool autoShift) {
        OutputsArgs args;
        for (const auto& id : ids) {
            args.map.Emplace().outputId = id;
        }
        if constexpr (requires { args.autoShift; }) {
            args.autoShift = autoShift;
        }
        Expect(model.Update(ids, autoShift), [&] { map.UpdateId(args); });
    }

    void Compare(const Id& asked) {
        const auto expected = model.Entries();
        RC_ASSERT(map.List() == expected);
        RC_ASSERT(map.Count() == expected.size());
        std::vector<std::string> sources;
        for (const auto& entry : expected) {
            sources.push_back(entry.second);
        }
        RC_ASSERT(map.DataSourceList() == sources);
        typename std::remove_reference_t<decltype(std::declval<OutputsArgs>().map.At(0))> item;
        item.outputId = asked;
        RC_ASSERT(map.GetOverlappingState(item) == model.Has(asked));
    }

    Outputs& map;
    Model model;
};

template <class Model>
void CheckNumericMap(bool atTheEnd) {
    const SilentLog silentLog;
    const auto requests = *RequestsGen(atTheEnd);
    const auto maxCount = *rc::gen::element<unsigned short>(0, 1, 4, 12, 30);
    NumericOutputs map(maxCount, 0, 65534);
    Pair<NumericOutputs, StandardOutputsArgs, StandardOutputRemoveArgs, Model> pair(map, maxCount);
    for (const auto& request : requests) {
        pair.Do(request);
    }
}

} // namespace

RC_GTEST_PROP(OutputMapRequests, NumericMapDoesAsItsModel, ()) {
    CheckNumericMap<OutputMapModel<SortedEntries<unsigned short>>>(false);
}

RC_GTEST_PROP(OutputMapRequests, NumericMapDoesAsItsModelAtTheEndOfTheNumbers, ()) {
    CheckNumericMap<OutputMapModel<WrappingEntries>>(true);
}

RC_GTEST_PROP(OutputMapRequests, TextMapDoesAsItsModel, ()) {
    const SilentLog silentLog;
    const auto requests = *RequestsGen(false);
    const auto maxCount = *rc::gen::element<unsigned short>(0, 1, 4, 12, 30);
    TextOutputs map(maxCount);
    Pair<TextOutputs, TextIdStandardOutputsArgs, TextIdStandardOutputRemoveArgs,
         OutputMapModel<SortedEntries<std::string>>>
        pair(map, maxCount);
    for (const auto& request : requests) {
        pair.Do(request);
    }
}

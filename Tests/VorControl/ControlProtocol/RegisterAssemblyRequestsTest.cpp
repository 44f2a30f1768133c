// Random requests on two assemblies, compared with simple models of them.

#include "Tests/Support/Failure.h"
#include "Tests/VorControl/ControlProtocol/RandomRequests.h"
#include "Tests/VorControl/ControlProtocol/RegisterAssemblyModel.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"
#include "Vor/JsonSerializer.h"

#include <ostream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

using namespace Tests;

namespace Tests {

std::ostream& operator<<(std::ostream& out, const ModelBlock& block) {
    return out << "{" << block.type << " id " << block.id << " count " << block.count << " '" << block.source << "' '"
               << block.name << "' number " << block.number << "}";
}

} // namespace Tests

namespace {

constexpr int None = RegisterAssemblyModel::None;

enum class Action {
    Add,
    Update,
    Remove,
    RemoveAll,
    Compact,
    Copy,
    Default,
    SetId,
    SetIdByDocument,
    SetCount,
    SetActualId,
    SetActualCount,
    Handle,
};

constexpr const char* ActionNames[] = {"Add",         "Update",         "Remove", "RemoveAll",       "Compact",
                                       "Copy",        "Default",        "SetId",  "SetIdByDocument", "SetCount",
                                       "SetActualId", "SetActualCount", "Handle"};

/// The kinds of requests in a test.
struct Kind {
    bool isGlobal;
    bool isWithinRange;    ///< no block leaves the range, and each has a register
    bool isChangedOutside; ///< blocks are changed by others than the assembly
};

/// A request. Each action uses some of the members.
struct Request {
    Action action = Action::Add;
    bool onSecond = false;
    int id = 0;
    ModelBlock change;
    bool autoShift = false;
    std::vector<ModelBlock> entries;
    std::vector<int> ids;
};

std::ostream& operator<<(std::ostream& out, const Request& request) {
    out << ActionNames[static_cast<int>(request.action)] << "(" << (request.onSecond ? "second" : "first");
    switch (request.action) {
    case Action::Add:
        for (const auto& entry : request.entries) {
            out << " " << entry;
        }
        break;
    case Action::Remove:
        for (const int id : request.ids) {
            out << " " << id;
        }
        break;
    case Action::Update:
        out << " " << request.id << " " << request.change;
        break;
    case Action::Compact:
        out << " " << request.id;
        break;
    case Action::Copy:
    case Action::Default:
    case Action::RemoveAll:
        break;
    default:
        out << " block " << request.id << " " << request.change;
        break;
    }
    return out << (request.autoShift ? " shift)" : ")");
}

/// Ids that are close to each other, so that blocks overlap; also those at the end of a range, where blocks don't fit.
rc::Gen<int> IdGen(const Kind& kind) {
    const auto near = rc::gen::weightedOneOf<int>({{20, rc::gen::inRange(0, 60)}, {3, rc::gen::just(None)}});
    if (kind.isWithinRange) {
        return near;
    }
    return rc::gen::weightedOneOf<int>({{15, near},
                                        {2, rc::gen::inRange(95, 105)},
                                        {2, rc::gen::inRange(120, 132)},
                                        {2, rc::gen::inRange(65525, None + 1)}});
}

rc::Gen<ModelBlock> BlockGen(const Kind& kind, const rc::Gen<int>& count) {
    const auto text = [](const char* prefix) {
        return rc::gen::map(rc::gen::inRange(0, 8), [prefix](int number) {
            return number == 0 ? std::string() : prefix + std::to_string(number);
        });
    };
    const auto type = kind.isWithinRange
                          ? rc::gen::element<std::string>("one", "two", "seven", "sizable", "scan", "demanded", "few")
                          : rc::gen::element<std::string>("one", "two", "seven", "sizable", "scan", "demanded", "few",
                                                          "nothing", "unknown", "");
    return rc::gen::build<ModelBlock>(rc::gen::set(&ModelBlock::type, type),
                                      rc::gen::set(&ModelBlock::id, rc::gen::oneOf(rc::gen::just(None), IdGen(kind))),
                                      rc::gen::set(&ModelBlock::count, count),
                                      rc::gen::set(&ModelBlock::source, text("s")),
                                      rc::gen::set(&ModelBlock::name, text("n")));
}

template <class... Fields>
rc::Gen<Request> RequestGen(Action action, const Fields&... fields) {
    return rc::gen::build<Request>(rc::gen::set(&Request::action, rc::gen::just(action)),
                                   rc::gen::set(&Request::onSecond, rc::gen::element(false, false, false, true)),
                                   fields...);
}

rc::Gen<std::vector<Request>> RequestsGen(const Kind& kind) {
    // An add request is checked with the default of the one type that can have another count, which is 3.
    const int lowest = kind.isWithinRange ? 1 : 0;
    const auto added = rc::gen::oneOf(rc::gen::just(None), rc::gen::inRange(lowest, kind.isWithinRange ? 4 : 12));
    const auto updated = rc::gen::oneOf(rc::gen::just(None), rc::gen::inRange(lowest, 12));
    const auto id = rc::gen::set(&Request::id, IdGen(kind));
    const auto autoShift = rc::gen::set(&Request::autoShift);
    const auto change = rc::gen::set(&Request::change, BlockGen(kind, updated));
    const auto entries = rc::gen::set(
        &Request::entries, rc::gen::resize(3, rc::gen::container<std::vector<ModelBlock>>(BlockGen(kind, added))));
    const auto ids = rc::gen::set(&Request::ids, rc::gen::resize(5, rc::gen::container<std::vector<int>>(IdGen(kind))));
    const std::size_t outside = kind.isChangedOutside ? 3 : 0;
    return RequestListGen(
        rc::gen::weightedOneOf<Request>({{30, RequestGen(Action::Add, entries, autoShift)},
                                         {30, RequestGen(Action::Update, id, change, autoShift)},
                                         {12, RequestGen(Action::Remove, ids)},
                                         {1, RequestGen(Action::RemoveAll)},
                                         {3, RequestGen(Action::Compact, id)},
                                         {1, RequestGen(Action::Copy, autoShift)},
                                         {1, RequestGen(Action::Default)},
                                         {outside, RequestGen(Action::SetId, id, change)},
                                         {outside, RequestGen(Action::SetIdByDocument, id, change)},
                                         {outside, RequestGen(Action::SetCount, id, change)},
                                         {outside, RequestGen(Action::SetActualId, id, change, autoShift)},
                                         {outside, RequestGen(Action::SetActualCount, id, change, autoShift)},
                                         {outside, RequestGen(Action::Handle, id, change, ids)}}));
}

/// An assembly and its model, which get the same requests.
class Twins {
public:
    Twins(const Kind& kind, unsigned short least, unsigned short most, const std::vector<ModelType>& types)
        : kind(kind)
        , assembly(kind.isGlobal, least, most)
        , model(kind.isGlobal, least, most, types)
        , types(types) {
        for (const auto& type : types) {
            auto params = type.hasSource ? ScanTypeParams<BareScanBlock>(type.name) : TypeParams(type.name);
            params.defaultRegisterCount = static_cast<unsigned short>(type.registers);
            params.configurableRegisterCount = type.isSizable;
            params.minInstanceCount = static_cast<unsigned short>(type.least);
            params.maxInstanceCount = static_cast<unsigned short>(type.most);
            assembly.AddType(std::move(params));
        }
    }

    void Do(const Request& request, const Twins& second) {
        std::uint32_t code = 0;
        switch (request.action) {
        case Action::Add:
            Add(request);
            break;
        case Action::Update: {
            const Change change{Short(request.change.id), Short(request.change.count), request.change.source,
                                request.change.name};
            const auto expected = model.Update(request.id, request.change, request.autoShift);
            Expect(expected, code, [&] { code = assembly.UpdateOne(Short(request.id), change, request.autoShift); });
            break;
        }
        case Action::Remove: {
            const std::vector<unsigned short> ids(request.ids.begin(), request.ids.end());
            Expect(model.Remove(request.ids), code, [&] { code = assembly.RemoveIds(ids); });
            break;
        }
        case Action::RemoveAll:
            model.RemoveAll();
            assembly.RemoveAll();
            break;
        case Action::Compact:
            Expect(model.Compact(request.id), code, [&] { code = assembly.CompactFrom(Short(request.id)); });
            break;
        case Action::Copy:
            Expect({model.Copy(second.model), 0}, code, [&] { assembly.CopySupportedRegisterBlocks(second.assembly); });
            break;
        case Action::Default: {
            RegisterAssemblyModel::Blocks demanded{{"demanded", None, None, "", ""}};
            model.blocks.clear();
            Expect({model.Add(demanded, false).first, 0}, code,
                   [&] { assembly.InitDefaultRegisterBlocksForRegisterAssembly(); });
            break;
        }
        default:
            ChangeOutside(request);
            break;
        }
        Compare(request);
    }

private:
    static unsigned short Short(int value) { return static_cast<unsigned short>(value); }

    template <class Call>
    static void Expect(const RegisterAssemblyModel::Outcome& expected, const std::uint32_t& code, const Call& call) {
        const auto failure = FailureOf(call);
        RC_ASSERT((failure.has_value() ? failure->status : yOK) == expected.first);
        RC_ASSERT((failure.has_value() || static_cast<int>(code) == expected.second));
    }

    void Add(const Request& request) {
        AddBlockParams params;
        params.autoShift = request.autoShift;
        for (const auto& entry : request.entries) {
            auto& one = params.blocks.Emplace();
            one.type = entry.type;
            one.dataSource = entry.source;
            one.displayName = entry.name;
            one.outputId = Short(entry.id);
            one.registerCount = Short(entry.count);
        }
        auto entries = request.entries;
        std::uint32_t code = 0;
        const auto expected = model.Add(entries, request.autoShift);
        Expect(expected, code, [&] { code = assembly.Add(params); });
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const auto& one = params.blocks.At(i);
            RC_ASSERT((ModelBlock{one.type.Get(), one.outputId.Get(), one.registerCount.Get(), one.dataSource.Get(),
                                  one.displayName.Get()}) == entries[i]);
        }
    }

    void ChangeOutside(const Request& request) {
        if (model.blocks.empty()) {
            return;
        }
        const std::size_t position = static_cast<std::size_t>(request.id) % model.blocks.size();
        const auto block = assembly.Block(position);
        auto& expected = model.blocks[position];
        switch (request.action) {
        case Action::SetCount:
            expected.count = request.change.count;
            block->SetRegisterCount(Short(request.change.count));
            break;
        case Action::SetActualId:
            SetActual(*block, "outputId", request.autoShift, request.change.id, expected.actualId);
            break;
        case Action::SetActualCount:
            SetActual(*block, "registerCount", request.autoShift, request.change.count, expected.actualCount);
            break;
        case Action::Handle:
            Handle(request, *block, expected);
            break;
        case Action::SetId:
            model.SetId(position, request.change.id);
            block->SetOutputId(Short(request.change.id));
            break;
        default:
            model.SetId(position, request.change.id);
            Vor::Properties::JsonSerializer::Deserialize(*block, {{"outputId", request.change.id}});
            break;
        }
    }

    static Vor::Params::Value<unsigned short>& Parameter(const ProtocolRegisterBlock& block, const char* name) {
        return dynamic_cast<Vor::Params::Value<unsigned short>&>(block.At(name));
    }

    static void SetActual(const ProtocolRegisterBlock& block, const char* name, bool enable, int value,
                          std::optional<int>& expected) {
        auto& parameter = Parameter(block, name);
        parameter.EnableActual(enable);
        expected.reset();
        if (enable) {
            parameter.SetActual(Short(value));
            expected = value;
        }
    }

    /// Adds a handler that runs once, and moves the block of a place and renames that of an id.
    void Handle(const Request& request, const ProtocolRegisterBlock& block, ModelBlock& expected) {
        if (expected.handler.has_value() || request.ids.empty()) {
            return;
        }
        const std::size_t place = static_cast<std::size_t>(request.ids[0]) % model.blocks.size();
        expected.handler =
            ModelHandler{model.blocks[place].number, request.change.id, request.ids.back(), request.change.name};
        Parameter(block, "outputId")
            .AddChangeHandler([this, request, moved = std::weak_ptr(assembly.Block(place)),
                               done = false](Vor::Properties::Node&) mutable {
                if (std::exchange(done, true)) {
                    return;
                }
                if (const auto other = moved.lock()) {
                    other->SetOutputId(Short(request.change.id));
                }
                for (int i = 0; i < 2; ++i) {
                    FailureOf([&] {
                        assembly.UpdateOne(Short(request.ids.back()), Change{.displayName = request.change.name});
                    });
                }
            });
    }

    void Compare(const Request& request) {
        RegisterAssemblyModel::Blocks found;
        assembly.BeginLock();
        for (const auto& block : assembly.AddedRegisterBlocks()) {
            found.push_back({block->Type(), block->OutputId(), block->RegisterCount(),
                             block->HasDataSource() ? block->DataSource() : "", block->DisplayName()});
            RC_ASSERT(block->EndAddress() == model.End(found.back()));
        }
        for (const auto& info : assembly.SupportedRegisterBlockTypes()) {
            const int instances = model.Instances(info->Type());
            RC_ASSERT(info->AtMaxInstance() == (instances >= info->MaxInstanceCount()));
            RC_ASSERT(info->AtMinInstance() == (instances <= info->MinInstanceCount()));
        }
        assembly.EndLock();
        RegisterAssemblyModel::Blocks expected;
        for (const auto& block : model.blocks) {
            expected.push_back({block.type, block.Id(), block.Count(), block.source, block.name});
        }
        RC_ASSERT(found == expected);
        RC_ASSERT(assembly.OutputIdReadOnly() == model.hasNoChoiceOfId);
        RC_ASSERT(assembly.DataSourceList() == model.Sources());

        std::map<std::string, std::size_t> places;
        for (const auto& [source, block] : assembly.FindAddedScanOutputBlocksSortedByDataSource()) {
            std::size_t place = 0;
            while (assembly.Block(place) != block) {
                ++place;
            }
            places[source] = place;
        }
        RC_ASSERT(places == model.PlacesOfSources());
        RC_ASSERT(static_cast<int>(assembly.FindAddedBlocksOfTypes({request.change.type}).size()) ==
                  model.Instances(request.change.type));
        RC_ASSERT(!kind.isWithinRange || model.IsInOrder());
    }

    Kind kind;
    TestAssembly assembly;
    RegisterAssemblyModel model;
    std::vector<ModelType> types;
};

void CheckRequests(const Kind& kind, const Kind& secondKind) {
    const SilentLog silentLog;
    const auto requests = *RequestsGen(kind);
    const auto least = *rc::gen::element<unsigned short>(0, 1, 20);
    const auto most = *rc::gen::element<unsigned short>(70, 130, 400, 65534);
    std::vector<ModelType> types = {{"one", 1, false, false, 0, 65534},      {"two", 2, false, false, 0, 65534},
                                    {"sizable", 3, true, false, 0, 65534},   {"scan", 2, false, true, 0, 65534},
                                    {"demanded", 1, false, false, 1, 65534}, {"few", 2, false, false, 0, 3},
                                    {"nothing", 0, false, false, 0, 65534}};
    Twins second(secondKind, 0, 64, types);
    types.push_back({"seven", 7, false, false, 0, 65534});
    types.erase(types.begin());
    Twins first(kind, least, most, types);
    // Copies go one way: two assemblies must not copy each other.
    for (const auto& request : requests) {
        if (request.onSecond) {
            second.Do(request, second);
        } else {
            first.Do(request, request.autoShift ? first : second);
        }
    }
}

} // namespace

RC_GTEST_PROP(RegisterAssemblyRequests, GlobalAssemblyStaysInOrderWithinItsRange, ()) {
    CheckRequests({true, true, false}, {true, true, false});
}

RC_GTEST_PROP(RegisterAssemblyRequests, PlainAssemblyStaysInOrderWithinItsRange, ()) {
    CheckRequests({false, true, false}, {false, true, false});
}

RC_GTEST_PROP(RegisterAssemblyRequests, GlobalAssemblyDoesAsItsModel, ()) {
    CheckRequests({true, false, false}, {false, false, false});
}

RC_GTEST_PROP(RegisterAssemblyRequests, PlainAssemblyDoesAsItsModel, ()) {
    CheckRequests({false, false, false}, {true, false, false});
}

RC_GTEST_PROP(RegisterAssemblyRequests, GlobalAssemblyWithBlocksChangedFromOutside, ()) {
    CheckRequests({true, false, true}, {true, false, true});
}

RC_GTEST_PROP(RegisterAssemblyRequests, PlainAssemblyWithBlocksChangedFromOutside, ()) {
    CheckRequests({false, false, true}, {false, false, true});
}

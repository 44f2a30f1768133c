// The distribution of result sets from the hub to services that filter them, against loops written by hand for the
// same. A rate is the number of items that reach services in a second of the process's CPU time, including all threads.

#include "Bench/Measure.h"
#include "Vor/Logging.h"
#include "VorApi/Object.h"
#include "VorControl/Control/ControlScanResults.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvMeasureMsg.h"
#include "yApi/yArrayList.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t Rounds = 4;
/// Each set is published once a round, as by a sensor: none is shared anew while services release it.
constexpr std::size_t SetsPerRound = 256;

std::string SourceName(std::size_t i) {
    return "tool/" + std::to_string(i);
}

/// The data sources of each service, whose results pass.
using Maps = std::vector<std::vector<std::string>>;

/// Each service has all sources of the sets, so that every item passes.
Maps EqualMaps(std::size_t services, std::size_t items) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < items; ++i) {
        names.push_back(SourceName(i));
    }
    return Maps(services, names);
}

/// Each service lacks another source, and has one that isn't in the sets.
Maps DifferingMaps(std::size_t services, std::size_t items) {
    Maps maps = EqualMaps(services, std::max(services, items));
    for (std::size_t i = 0; i < services; ++i) {
        maps[i][i] = "other/" + std::to_string(i);
    }
    return maps;
}

/// The number of items of a published set that pass the map.
std::size_t PassingItems(const std::vector<std::string>& map, std::size_t items) {
    std::size_t passing = 0;
    for (std::size_t i = 0; i < items; ++i) {
        passing += static_cast<std::size_t>(std::ranges::count(map, SourceName(i)));
    }
    return passing;
}

/// The number of items of a published set that reach services.
std::size_t PassingItems(const Maps& maps, std::size_t items) {
    std::size_t passing = 0;
    for (const auto& map : maps) {
        passing += PassingItems(map, items);
    }
    return passing;
}

/// The number of services that a published set reaches.
std::size_t ReachedServices(const Maps& maps, std::size_t items) {
    return static_cast<std::size_t>(
        std::ranges::count_if(maps, [&](const auto& map) { return PassingItems(map, items) > 0; }));
}

void Check(yStatus status) {
    if (status != yOK) {
        throw std::runtime_error("status " + std::to_string(status));
    }
}

std::vector<Vor::Object> MakeSets(std::size_t items) {
    std::vector<Vor::Object> sets(SetsPerRound);
    for (auto& set : sets) {
        Check(ResultSet_Construct(set.Out()));
        for (std::size_t i = 0; i < items; ++i) {
            Vor::Object msg;
            Vor::Object msgInfo;
            Vor::Object info;
            Check(VvMeasureMsg_Construct(msg.Out(), static_cast<double>(i), 1));
            Check(yMsgInfo_Construct(msgInfo.Out(), msg.Release(), 0, 0));
            Check(ResultInfo_Construct(info.Out(), ResultInfo_TypeMeasurement, SourceName(i)));
            Check(ResultSet_Add(set.Get(), msgInfo.Release(), info.Release(), 0));
        }
    }
    return sets;
}

/// Counts down the result sets that the services receive. The publisher waits for the end without using CPU time.
class Countdown {
public:
    void Expect(std::size_t count) { left.store(count); }

    void Subtract(std::size_t count) {
        if (left.fetch_sub(count) == count) {
            const std::lock_guard guard(mutex);
            done.notify_all();
        }
    }

    void Wait() {
        std::unique_lock guard(mutex);
        done.wait(guard, [this] { return left.load() == 0; });
    }

private:
    std::atomic<std::size_t> left = 0;
    std::mutex mutex;
    std::condition_variable done;
};

/// The library. Each service filters by its map.
class Library {
public:
    Library(const Maps& maps, std::size_t items)
        : reachedServices(ReachedServices(maps, items))
        , passingItems(PassingItems(maps, items))
        , sets(MakeSets(items)) {
        for (std::size_t i = 0; i < maps.size(); ++i) {
            const auto id = "service" + std::to_string(i);
            results.AddResultHandler(
                id, [this](void* batch) { countdown.Subtract(yArrayList_Count(static_cast<yArrayList>(batch))); });
            results.UpdateOutputMap(id, maps[i]);
            results.SetForwardScanResultsToProtocol(id, true);
        }
    }

    void Round() {
        countdown.Expect(reachedServices * SetsPerRound);
        for (const auto& set : sets) {
            results.ProcessResultSet(set.Get());
        }
        countdown.Wait();
    }

    double Rate() {
        const double begin = Bench::ProcessCpuSeconds();
        for (std::size_t i = 0; i < Rounds; ++i) {
            Round();
        }
        const double passed = static_cast<double>(Rounds * SetsPerRound * passingItems);
        return passed / (Bench::ProcessCpuSeconds() - begin);
    }

    /// The mean number of allocations for a filtered set, in one round.
    double Allocations() {
        const auto begin = Bench::Allocations();
        Round();
        return static_cast<double>(Bench::Allocations() - begin) / static_cast<double>(SetsPerRound * reachedServices);
    }

private:
    const std::size_t reachedServices;
    const std::size_t passingItems;
    std::vector<Vor::Object> sets;
    Countdown countdown;
    VorControl::ControlScanResults results{nullptr, nullptr};
};

struct Message {
    double value;
    unsigned char decision;
};

struct Info {
    unsigned long id;
    std::string source;
};

struct Item {
    std::shared_ptr<const Message> message;
    std::shared_ptr<const Info> info;
};

std::vector<std::vector<Item>> MakePlainSets(std::size_t items) {
    std::vector<std::vector<Item>> sets(SetsPerRound);
    for (auto& set : sets) {
        for (std::size_t i = 0; i < items; ++i) {
            set.push_back({std::make_shared<Message>(Message{static_cast<double>(i), 1}),
                           std::make_shared<Info>(Info{ResultInfo_IdOfText(SourceName(i)), SourceName(i)})});
        }
    }
    return sets;
}

/// A loop written by hand over plain sets. `Service` is a filter and a queue of filtered items.
template <class Service>
class Loop {
public:
    Loop(const Maps& maps, std::size_t items)
        : passingItems(PassingItems(maps, items))
        , services(maps.size())
        , sets(MakePlainSets(items)) {
        for (std::size_t i = 0; i < maps.size(); ++i) {
            for (const auto& source : maps[i]) {
                services[i].Pass(source);
            }
        }
    }

    double Rate() {
        const double begin = Bench::ProcessCpuSeconds();
        for (std::size_t i = 0; i < Rounds; ++i) {
            Round();
        }
        const double passed = static_cast<double>(Rounds * SetsPerRound * passingItems);
        return passed / (Bench::ProcessCpuSeconds() - begin);
    }

private:
    const std::size_t passingItems;
    std::vector<Service> services;
    std::vector<std::vector<Item>> sets;

    void Round() {
        for (const auto& set : sets) {
            for (auto& service : services) {
                service.Filter(set);
            }
        }
        for (auto& service : services) {
            service.Consume();
        }
    }
};

/// For each item one lookup in a map and one reference to message and information; then the filtered items are appended
/// to a list under a mutex. The service removes the list and releases the references.
class MapAndShares {
public:
    void Pass(const std::string& source) { passing.emplace(ResultInfo_IdOfText(source), source); }

    void Filter(const std::vector<Item>& set) {
        std::vector<Item> filtered;
        filtered.reserve(set.size());
        for (const auto& item : set) {
            if (passing.find(item.info->id) != passing.end()) {
                filtered.push_back(item);
            }
        }
        if (filtered.empty()) {
            return;
        }
        const std::lock_guard guard(mutex);
        incoming.push_back(std::move(filtered));
    }

    void Consume() {
        {
            const std::lock_guard guard(mutex);
            taken.swap(incoming);
        }
        taken.clear();
    }

private:
    std::map<unsigned long, std::string> passing;
    std::mutex mutex;
    std::vector<std::vector<Item>> incoming;
    std::vector<std::vector<Item>> taken;
};

/// The minimum: a hash set instead of the map, plain pointers instead of references.
class HashAndPointers {
public:
    void Pass(const std::string& source) { passing.insert(ResultInfo_IdOfText(source)); }

    void Filter(const std::vector<Item>& set) {
        const std::lock_guard guard(mutex);
        for (const auto& item : set) {
            if (passing.contains(item.info->id)) {
                incoming.push_back(&item);
            }
        }
    }

    void Consume() {
        const std::lock_guard guard(mutex);
        Bench::Keep(incoming.data());
        incoming.clear();
    }

private:
    std::unordered_set<unsigned long> passing;
    std::mutex mutex;
    std::vector<const Item*> incoming;
};

std::string Label(std::size_t services, std::size_t items, const std::string& reference) {
    return std::to_string(services) + " services, " + std::to_string(items) + " items, against " + reference;
}

void MeasureDiffering(Bench::Report& report, std::size_t items, double atLeast) {
    constexpr std::size_t Services = 8;
    const Maps maps = DifferingMaps(Services, items);
    Library library(maps, items);
    Loop<MapAndShares> byHand(maps, items);
    const auto comparison = Bench::Compare(
        15, [&] { return library.Rate(); }, [&] { return byHand.Rate(); });
    report.AddRate("differing maps: " + Label(Services, items, "map, shares and a mutex"), comparison, "M items/s",
                   atLeast, 1e-6);
}

void Measure(Bench::Report& report, std::size_t services, std::size_t items, bool limited) {
    const Maps maps = EqualMaps(services, items);
    Library library(maps, items);
    {
        Loop<MapAndShares> byHand(maps, items);
        const auto comparison = Bench::Compare(
            7, [&] { return library.Rate(); }, [&] { return byHand.Rate(); });
        report.AddRate(Label(services, items, "map, shares and a mutex"), comparison, "M items/s",
                       limited ? std::optional(0.5) : std::nullopt, 1e-6);
    }
    if (limited) {
        Loop<HashAndPointers> bare(maps, items);
        const auto comparison = Bench::Compare(
            7, [&] { return library.Rate(); }, [&] { return bare.Rate(); });
        report.AddRate(Label(services, items, "hash set and plain pointers"), comparison, "M items/s", std::nullopt,
                       1e-6);
    }
    // A set of up to 16 items is one allocation, and each fourfold size one more. The 0.5 are for a list that grows.
    std::size_t chunks = 1;
    for (std::size_t room = 16; room < items; room *= 4) {
        ++chunks;
    }
    report.Note(std::to_string(items) + " items, allocations a set and service", library.Allocations(), "",
                static_cast<double>(chunks) + 0.5);
}

} // namespace

int main(int argc, char** argv) {
    Vor::Logging::SetMinimumLevel(Vor::LevelError);
    Bench::Report report("hub", argc, argv);
    MeasureDiffering(report, 1, 0.4);
    MeasureDiffering(report, 64, 0.7);
    Measure(report, 8, 64, true);
    if (!report.Has("--quick")) {
        Measure(report, 1, 64, false);
        Measure(report, 64, 64, false);
        Measure(report, 8, 1, false);
        Measure(report, 8, 1024, false);
    }
    return report.Finish();
}

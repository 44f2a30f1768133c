// The costs of editing output maps of many entries.

#include "Bench/Measure.h"
#include "VorControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <algorithm>
#include <cstdio>
#include <malloc.h>
#include <numeric>
#include <random>
#include <string>
#include <vector>

using namespace VorControl::ControlProtocol;

namespace {

constexpr std::size_t Few = 10000;
constexpr std::size_t Many = 60000;
/// Six times the entries, and the logarithm's share on top.
constexpr double Sixfold = 9.0;

struct Numeric {
    using Map = StandardProtocolOutputMap;
    using ItemArgs = StandardOutputItemArgs;
    using Args = StandardOutputsArgs;
    using RemoveArgs = StandardOutputRemoveArgs;
    static constexpr const char* Name = "numeric";
    static Map New() { return Map(65534, 0, 65534); }
    static unsigned short Id(std::size_t number) { return static_cast<unsigned short>(number); }
};

struct Text {
    using Map = TextIdStandardProtocolOutputMap;
    using ItemArgs = TextIdStandardOutputItemArgs;
    using Args = TextIdStandardOutputsArgs;
    using RemoveArgs = TextIdStandardOutputRemoveArgs;
    static constexpr const char* Name = "text";
    static Map New() { return Map(65534); }
    static std::string Id(std::size_t number) {
        char text[24];
        std::snprintf(text, sizeof(text), "profile/%06zu", number);
        return text;
    }
};

std::vector<std::size_t> Numbers(std::size_t count, bool shuffled) {
    std::vector<std::size_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0);
    if (shuffled) {
        std::shuffle(numbers.begin(), numbers.end(), std::mt19937(7));
    }
    return numbers;
}

template <class Call>
double Seconds(const Call& call) {
    const double start = Bench::ProcessCpuSeconds();
    call();
    return Bench::ProcessCpuSeconds() - start;
}

/// Adds sources without ids in one request.
template <class Kind>
double AddAll(typename Kind::Map& map, const std::vector<std::size_t>& numbers) {
    typename Kind::Args args;
    args.map.Resize(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        args.map.At(i).source = Text::Id(numbers[i]);
    }
    // Returns the memory of earlier runs to the system; it would be enough for few entries and not for many.
    malloc_trim(0);
    return Seconds([&] { map.AddAll(args); });
}

template <class Kind>
double AddAll(std::size_t count, bool shuffled) {
    auto map = Kind::New();
    return AddAll<Kind>(map, Numbers(count, shuffled));
}

/// Removes every entry in one request.
template <class Kind>
double RemoveAllByList(std::size_t count, bool shuffled) {
    auto map = Kind::New();
    AddAll<Kind>(map, Numbers(count, false));
    using Id = typename Kind::Map::Id;
    std::vector<Id> ids;
    for (const std::size_t number : Numbers(count, shuffled)) {
        ids.push_back(Kind::Id(number));
    }
    typename Kind::RemoveArgs args;
    args.outputIdList = ids;
    return Seconds([&] { map.Remove(args); });
}

template <class Kind, class Measure>
void Compare(Bench::Report& report, const std::string& label, int runs, const Measure& measure) {
    const auto comparison = Bench::Compare(
        runs, [&] { return measure(Many); }, [&] { return measure(Few); });
    report.Add(std::string(Kind::Name) + ", " + label + ", 60,000 against 10,000", comparison, "ms", Sixfold, 1e3);
}

/// Single requests on a map that has `count` entries.
template <class Kind>
void EditOne(Bench::Report& report, std::size_t count) {
    auto map = Kind::New();
    AddAll<Kind>(map, Numbers(count, false));
    const auto asked = Numbers(count, true);
    const std::size_t requests = 200;
    const auto label = [&](const char* request) {
        return std::string(Kind::Name) + ", " + request + " among " + std::to_string(count);
    };
    const auto note = [&](const char* request, double seconds) {
        report.Note(label(request), seconds * 1e6 / static_cast<double>(requests), "us");
    };

    typename Kind::ItemArgs item;
    note("find", Seconds([&] {
             for (std::size_t i = 0; i < requests; ++i) {
                 item.outputId = Kind::Id(asked[i]);
                 Bench::Keep(map.GetOverlappingState(item));
             }
         }));

    typename Kind::RemoveArgs remove;
    note("remove", Seconds([&] {
             for (std::size_t i = 0; i < requests; ++i) {
                 remove.outputId = Kind::Id(asked[i]);
                 map.Remove(remove);
             }
         }));

    note("add", Seconds([&] {
             for (std::size_t i = 0; i < requests; ++i) {
                 item.outputId = Kind::Id(asked[i]);
                 item.source = Text::Id(asked[i]);
                 map.Add(item);
             }
         }));

    // Each entry moves to the end.
    typename Kind::Args update;
    update.map.Resize(2);
    note("update", Seconds([&] {
             for (std::size_t i = 0; i < requests; ++i) {
                 update.map.At(0).outputId = Kind::Id(asked[i]);
                 update.map.At(1).outputId = Kind::Id(count + i);
                 map.UpdateId(update);
             }
         }));
}

template <class Kind>
void EditOne(Bench::Report& report) {
    for (const std::size_t count : {std::size_t{1000}, Few, Many}) {
        EditOne<Kind>(report, count);
    }
}

} // namespace

int main(int argc, char** argv) {
    Bench::Report report("Editing output maps", argc, argv);
    const int runs = report.Has("--quick") ? 1 : 5;
    Compare<Numeric>(report, "add all, ascending", runs, [](std::size_t n) { return AddAll<Numeric>(n, false); });
    Compare<Numeric>(report, "add all, shuffled", runs, [](std::size_t n) { return AddAll<Numeric>(n, true); });
    Compare<Text>(report, "add all, ascending", runs, [](std::size_t n) { return AddAll<Text>(n, false); });
    Compare<Text>(report, "add all, shuffled", runs, [](std::size_t n) { return AddAll<Text>(n, true); });
    Compare<Numeric>(report, "remove all by list, shuffled", runs,
                     [](std::size_t n) { return RemoveAllByList<Numeric>(n, true); });
    Compare<Text>(report, "remove all by list, shuffled", runs,
                  [](std::size_t n) { return RemoveAllByList<Text>(n, true); });
    EditOne<Numeric>(report);
    EditOne<Text>(report);
    return report.Finish();
}

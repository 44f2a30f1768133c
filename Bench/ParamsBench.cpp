// The costs of writing a document of parameters to JSON text, parsing, validating and reading it, against nlohmann/json
// used directly for the same; and the memory of a parameter.

#include "Bench/Measure.h"
#include "Vor/JsonSerializer.h"
#include "Vor/JsonText.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <cstdint>
#include <limits>
#include <malloc.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

constexpr std::size_t Kinds = 6;

enum class Mode { First, Second, Third };

std::string NameOf(std::size_t i) {
    return "parameter" + std::to_string(i);
}

/// Member i is of kind i modulo the number of kinds. Each round fills in other values than the one before.
struct PlainDocument {
    explicit PlainDocument(std::size_t count)
        : booleans(count)
        , shorts(count)
        , integers(count)
        , longs(count)
        , texts(count)
        , modes(count) {
        for (std::size_t i = 0; i < count; ++i) {
            names.push_back(NameOf(i));
        }
    }

    void Fill(unsigned int round) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            booleans[i] = round % 2 != 0;
            shorts[i] = static_cast<unsigned short>(i % 1000 + round);
            integers[i] = static_cast<unsigned int>(i * 1000 + round);
            longs[i] = -static_cast<long long>(i) - round;
            texts[i] = "text of parameter " + std::to_string(i + round);
            modes[i] = static_cast<Mode>((i + round) % 3);
        }
    }

    json Write() const {
        json out = json::object();
        for (std::size_t i = 0; i < names.size(); ++i) {
            switch (i % Kinds) {
            case 0:
                out[names[i]] = static_cast<bool>(booleans[i]);
                break;
            case 1:
                out[names[i]] = shorts[i];
                break;
            case 2:
                out[names[i]] = integers[i];
                break;
            case 3:
                out[names[i]] = longs[i];
                break;
            case 4:
                out[names[i]] = texts[i];
                break;
            default:
                out[names[i]] = static_cast<int>(modes[i]);
            }
        }
        return out;
    }

    void Read(const json& in) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            const auto found = in.find(names[i]);
            if (found == in.end()) {
                continue;
            }
            switch (i % Kinds) {
            case 0:
                booleans[i] = found->get<bool>();
                break;
            case 1:
                shorts[i] = static_cast<unsigned short>(Integer(*found, std::numeric_limits<unsigned short>::max()));
                break;
            case 2:
                integers[i] = static_cast<unsigned int>(Integer(*found, std::numeric_limits<unsigned int>::max()));
                break;
            case 3:
                if (!found->is_number_integer()) {
                    throw std::runtime_error("not an integer");
                }
                longs[i] = found->get<long long>();
                break;
            case 4:
                texts[i] = found->get<std::string>();
                break;
            default:
                modes[i] = static_cast<Mode>(Integer(*found, 2));
            }
        }
    }

    static std::uint64_t Integer(const json& in, std::uint64_t maximum) {
        if (!in.is_number_unsigned() || in.get<std::uint64_t>() > maximum) {
            throw std::runtime_error("not an integer of this range");
        }
        return in.get<std::uint64_t>();
    }

    std::vector<std::string> names;
    std::vector<bool> booleans;
    std::vector<unsigned short> shorts;
    std::vector<unsigned int> integers;
    std::vector<long long> longs;
    std::vector<std::string> texts;
    std::vector<Mode> modes;
};

class ParamsDocument : public Vor::Params::Group {
public:
    explicit ParamsDocument(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            switch (i % Kinds) {
            case 0:
                Add<Vor::Params::Value<bool>>(i);
                break;
            case 1:
                Add<Vor::Params::Value<unsigned short>>(i);
                break;
            case 2:
                Add<Vor::Params::Value<unsigned int>>(i);
                break;
            case 3:
                Add<Vor::Params::Value<long long>>(i);
                break;
            case 4:
                Add<Vor::Params::Value<std::string>>(i);
                break;
            default: {
                auto& mode = Add<Vor::Params::Enum<Mode>>(i);
                mode.AddOption(Mode::First, "first");
                mode.AddOption(Mode::Second, "second");
                mode.AddOption(Mode::Third, "third");
            }
            }
        }
    }

    void Fill(const PlainDocument& values) {
        for (std::size_t i = 0; i < members.size(); ++i) {
            switch (i % Kinds) {
            case 0:
                As<Vor::Params::Value<bool>>(i) = values.booleans[i];
                break;
            case 1:
                As<Vor::Params::Value<unsigned short>>(i) = values.shorts[i];
                break;
            case 2:
                As<Vor::Params::Value<unsigned int>>(i) = values.integers[i];
                break;
            case 3:
                As<Vor::Params::Value<long long>>(i) = values.longs[i];
                break;
            case 4:
                As<Vor::Params::Value<std::string>>(i) = values.texts[i];
                break;
            default:
                As<Vor::Params::Enum<Mode>>(i) = values.modes[i];
            }
        }
    }

private:
    template <class P>
    P& Add(std::size_t i) {
        auto parameter = std::make_unique<P>();
        P& added = *parameter;
        Register(NameOf(i), added);
        members.push_back(std::move(parameter));
        return added;
    }
    template <class P>
    P& As(std::size_t i) {
        return static_cast<P&>(*members[i]);
    }

    std::vector<std::unique_ptr<Vor::Properties::Node>> members;
};

/// Six read-only values with titles, as in a register block.
struct BlockDocument : Vor::Params::Group {
    BlockDocument() {
        Add("version", version, "Version");
        Add("type", type, "Type");
        Add("displayName", displayName, "Display Name");
        Add("registerCount", registerCount, "Number of Registers");
        Add("outputId", outputId, "Output Id");
        Add("dataSource", dataSource, "Data Source");
    }

    template <class P>
    void Add(const char* name, P& parameter, const char* title) {
        Register(name, parameter, title, 100);
        parameter.EnableReadOnly();
        parameter.SetReadOnly(true);
    }

    Vor::Params::Value<std::string> version;
    Vor::Params::Value<std::string> type;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<unsigned short> registerCount;
    Vor::Params::Value<unsigned short> outputId;
    Vor::Params::Value<std::string> dataSource;
};

/// Five values, as in the request for a block.
struct BlockRequest : Vor::Params::Group {
    BlockRequest() {
        Register("type", type);
        Register("displayName", displayName);
        Register("registerCount", registerCount);
        Register("outputId", outputId);
        Register("dataSource", dataSource);
    }

    Vor::Params::Value<std::string> type;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<unsigned short> registerCount;
    Vor::Params::Value<unsigned short> outputId;
    Vor::Params::Value<std::string> dataSource;
};

std::size_t HeapInUse() {
    return mallinfo2().uordblks;
}

template <class T>
double BytesEach(std::size_t count) {
    std::vector<std::unique_ptr<T>> made;
    made.reserve(count);
    const std::size_t before = HeapInUse();
    for (std::size_t i = 0; i < count; ++i) {
        made.push_back(std::make_unique<T>());
    }
    return static_cast<double>(HeapInUse() - before) / static_cast<double>(count);
}

double SecondsOf(int repeats, const auto& work) {
    const double start = Bench::ProcessCpuSeconds();
    for (int i = 0; i < repeats; ++i) {
        work();
    }
    return (Bench::ProcessCpuSeconds() - start) / repeats;
}

Bench::Comparison RoundTrip(std::size_t count, int pairs, int repeats) {
    PlainDocument source(count);
    PlainDocument plain(count);
    ParamsDocument written(count);
    ParamsDocument read(count);
    unsigned int round = 0;
    return Bench::Compare(
        pairs,
        [&] {
            double seconds = 0;
            for (int i = 0; i < repeats; ++i) {
                source.Fill(++round);
                written.Fill(source);
                seconds += SecondsOf(1, [&] {
                    const std::string text = Vor::Properties::JsonSerializer::Serialize(written).dump();
                    const json parsed = Vor::ParseJson(text);
                    Vor::Properties::JsonSerializer::Validate(read, parsed);
                    Vor::Properties::JsonSerializer::Deserialize(read, parsed);
                });
            }
            return seconds / repeats;
        },
        [&] {
            double seconds = 0;
            for (int i = 0; i < repeats; ++i) {
                source.Fill(++round);
                seconds += SecondsOf(1, [&] {
                    const std::string text = source.Write().dump();
                    const json parsed = json::parse(text);
                    plain.Read(parsed);
                });
            }
            return seconds / repeats;
        });
}

} // namespace

int main(int argc, char** argv) {
    Bench::Report report("params", argc, argv);
    const int pairs = report.Has("--quick") ? 5 : 15;
    const double limit = 5.0;
    const double toMicroseconds = 1e6;
    report.Add("write, parse, validate, read 10 parameters", RoundTrip(10, pairs, 200), "us", limit, toMicroseconds);
    report.Add("write, parse, validate, read 1000 parameters", RoundTrip(1000, pairs, 20), "us", limit, toMicroseconds);
    report.Add("write, parse, validate, read 10000 parameters", RoundTrip(10000, pairs, 2), "us", limit,
               toMicroseconds);

    report.Note("size of a node", sizeof(Vor::Properties::Node), "B");
    report.Note("size of a parameter, 16 bits", sizeof(Vor::Params::Value<unsigned short>), "B");
    report.Note("size of a parameter, text", sizeof(Vor::Params::Value<std::string>), "B");
    report.Note("size of a group", sizeof(Vor::Params::Group), "B");
    report.Note("memory of a parameter, 16 bits", BytesEach<Vor::Params::Value<unsigned short>>(10000), "B");
    report.Note("memory of a parameter, text", BytesEach<Vor::Params::Value<std::string>>(10000), "B");
    const double block = BytesEach<BlockDocument>(10000);
    const double request = BytesEach<BlockRequest>(10000);
    report.Note("memory of a block's six parameters", block, "B");
    report.Note("memory of a request's five parameters", request, "B");
    report.Note("memory of both", block + request, "B", 16.0 * 1024);
    return report.Finish();
}

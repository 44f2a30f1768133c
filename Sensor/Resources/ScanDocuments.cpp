#include "Sensor/Resources/ScanDocuments.h"

#include "Sensor/DataSources.h"
#include "Sensor/Resources/DescribedMembers.h"
#include "Sensor/Scan/ThinnedPoints.h"
#include "Sensor/VirtualSensor.h"
#include "Vor/Exception.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvStringMsg.h"
#include "yApi/yMsgInfo.h"
#include "yApi/yStamp.h"
#include "yApi/yTime.h"

#include <algorithm>
#include <cmath>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

using nlohmann::json;

namespace {

constexpr std::uint64_t NanosecondsPerMillisecond = 1'000'000;

/// JSON has no other numbers.
json NumberOf(double value) {
    return std::isfinite(value) ? json(value) : json();
}

/// Adds "value" and "decision", null for those that a message doesn't have.
void AddResult(json& document, void* message) {
    const bool isMeasured = yObject_Is(message, yType_VvMeasureMsg);
    document["value"] = isMeasured                               ? NumberOf(VvMeasureMsg_Value(message))
                        : yObject_Is(message, yType_VvStringMsg) ? json(VvStringMsg_Value(message))
                                                                 : json();
    document["decision"] = isMeasured ? json(VvMeasureMsg_Decision(message)) : json();
}

} // namespace

ScanDocuments::ScanDocuments(VirtualSensor& sensor)
    : sensor(sensor)
    , sources(SourcesOf(sensor))
    , history(sensor.Hub(), sources.size()) {}

std::vector<ScanDocuments::Source> ScanDocuments::SourcesOf(const VirtualSensor& sensor) {
    std::vector<Source> sources;
    for (const VorPipe::PipeOutput& output : DataSourcesOf(sensor.Input())) {
        sources.push_back({.name = output.name,
                           .displayName = output.displayName,
                           .unit = UnitOf(output.name).name,
                           .isMeasurement = output.format.type == VorPipe::PipeDataType::Measurement,
                           .isStamp = output.format.type == VorPipe::PipeDataType::Stamp});
    }
    return sources;
}

std::uint64_t ScanDocuments::Update() {
    if (const Vor::Object& set = history.LastSet(); set.Get() != last.Get()) {
        last = set;
        ++found;
    }
    return found;
}

json ScanDocuments::Last(std::size_t points) const {
    json document = {{"frame", nullptr},        {"time", nullptr},    {"encoder", nullptr}, {"age", nullptr},
                     {"values", json::array()}, {"x", json::array()}, {"z", json::array()}};
    void* const set = last.Get();
    if (set == nullptr) {
        return document;
    }
    const yStamp& stamp = *Scan::ScanHistory::StampOf(set);
    document["frame"] = stamp.frameIndex;
    document["time"] = stamp.time;
    document["encoder"] = stamp.encoder;
    const std::uint64_t published = yMsgInfo_Published(ResultItem_MsgInfo(ResultSet_At(set, 0)));
    document["age"] = (yTime_Monotonic() - published) / NanosecondsPerMillisecond;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        if (!sources[i].isStamp) {
            json value = {
                {"source", sources[i].name}, {"displayName", sources[i].displayName}, {"unit", sources[i].unit}};
            AddResult(value, yMsgInfo_Message(ResultItem_MsgInfo(ResultSet_At(set, i))));
            document["values"].push_back(std::move(value));
        }
    }
    const auto& frames = sensor.Input().frames;
    for (const Scan::Point& point : Scan::ThinnedPoints(frames[stamp.frameIndex % frames.size()].points, points)) {
        document["x"].push_back(NumberOf(point.x));
        document["z"].push_back(NumberOf(point.z));
    }
    return document;
}

json ScanDocuments::LastSchema() {
    const json value = DescribedObject({{"source", Described("string", "Data source")},
                                        {"displayName", Described("string", "Name")},
                                        {"unit", Described("string", "Unit")},
                                        {"value", Described({"number", "string", "null"}, "Value")},
                                        {"decision", Described(OrNull("integer"), "Decision, 1 inside its limits")}});
    return DescribedObject({{"frame", Described(OrNull("integer"), "Frame of the scan, from 0 on")},
                            {"time", DescribedWithUnit(OrNull("integer"), "Time since the start of the scan", "us")},
                            {"encoder", Described(OrNull("integer"), "Encoder")},
                            {"age", DescribedWithUnit(OrNull("integer"), "Time since the frame was published", "ms")},
                            {"values", DescribedList(value, "Values")},
                            {"x", DescribedList({{"type", OrNull("number")}}, "Points, x in mm")},
                            {"z", DescribedList({{"type", OrNull("number")}}, "Points, z in mm")}});
}

std::vector<std::size_t> ScanDocuments::MeasurementsOf(const std::vector<std::string>& names) const {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const bool isNamed = names.empty() || std::ranges::find(names, sources[i].name) != names.end();
        if (sources[i].isMeasurement && isNamed) {
            places.push_back(i);
        }
    }
    for (const std::string& name : names) {
        const auto isIt = [&](std::size_t place) { return sources[place].name == name; };
        if (std::ranges::none_of(places, isIt)) {
            Vor::Throw(yERROR_FORMAT, "The query has source=%s, and the name of a measurement was expected.", name);
        }
    }
    return places;
}

json ScanDocuments::History(std::size_t frames, const std::vector<std::string>& names) const {
    const std::vector<std::size_t> places = MeasurementsOf(names);
    const auto latest =
        history.Latest(std::min(frames, MaxHistoryValues / std::max<std::size_t>(places.size(), 1)), places);
    json document = {{"frames", json::array()}, {"times", json::array()}, {"columns", json::array()}};
    for (const Scan::ScanHistory::Frame& frame : latest) {
        document["frames"].push_back(frame.index);
        document["times"].push_back(frame.time);
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
        json values = json::array();
        json decisions = json::array();
        for (const Scan::ScanHistory::Frame& frame : latest) {
            const auto& [value, decision] = frame.samples[i];
            values.push_back(value ? NumberOf(*value) : json());
            decisions.push_back(value ? json(decision) : json());
        }
        document["columns"].push_back({{"source", sources[places[i]].name},
                                       {"displayName", sources[places[i]].displayName},
                                       {"unit", sources[places[i]].unit},
                                       {"values", std::move(values)},
                                       {"decisions", std::move(decisions)}});
    }
    return document;
}

json ScanDocuments::HistorySchema() {
    const json column =
        DescribedObject({{"source", Described("string", "Data source")},
                         {"displayName", Described("string", "Name")},
                         {"unit", Described("string", "Unit")},
                         {"values", DescribedList({{"type", OrNull("number")}}, "A value for each frame")},
                         {"decisions", DescribedList({{"type", OrNull("integer")}}, "A decision for each frame")}});
    return DescribedObject(
        {{"frames", DescribedList({{"type", "integer"}}, "Frames of the scan, the latest last")},
         {"times", DescribedList({{"type", "integer"}}, "Their times since the start of the scan, in us")},
         {"columns", DescribedList(column, "Values of each measurement")}});
}

} // namespace Sensor::Resources

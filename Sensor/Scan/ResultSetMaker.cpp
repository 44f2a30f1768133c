#include "Sensor/Scan/ResultSetMaker.h"

#include "Sensor/Scan/ProfileMeasurement.h"
#include "Vor/Exception.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvNullMsg.h"
#include "VorMsg/VvStampMsg.h"
#include "VorMsg/VvStringMsg.h"
#include "yApi/yTime.h"

#include <array>
#include <charconv>
#include <limits>
#include <string_view>
#include <utility>

namespace Sensor::Scan {

namespace {

constexpr std::array<std::string_view, 5> ProfileMeasurements = {"profile/max", "profile/min", "profile/mean",
                                                                 "profile/width", "profile/points"};
constexpr std::string_view ProfileText = "profile/text";
constexpr std::string_view ProfileStamp = "profile/stamp";
constexpr std::string_view ValuesFolder = "values/";
constexpr std::string_view ValuesStamp = "values/stamp";

std::uint16_t TypeOf(std::string_view source) {
    if (source == ProfileStamp || source == ValuesStamp) {
        return ResultInfo_TypeStamp;
    }
    return source == ProfileText ? ResultInfo_TypeString : ResultInfo_TypeMeasurement;
}

/// Appends a message, published at `now`, as a result of the source that `info` describes.
void Append(ResultSet set, std::uint64_t now, Vor::Object message, Vor::Object info) {
    Vor::Object record;
    Vor::ThrowIfFailed(yMsgInfo_Construct(record.Out(), message.Get(), 0, now));
    message.Release();
    Vor::ThrowIfFailed(ResultSet_Add(set, record.Get(), info.Get(), 0));
    record.Release();
    info.Release();
}

Vor::Object MeasureMessage(std::optional<double> value, const Limits& limits) {
    Vor::Object message;
    Vor::ThrowIfFailed(value ? VvMeasureMsg_Construct(message.Out(), *value, limits.Decide(*value))
                             : VvNullMsg_Construct(message.Out()));
    return message;
}

Vor::Object StampMessage(std::uint64_t frameIndex, std::uint64_t time) {
    yStamp stamp;
    stamp.frameIndex = frameIndex;
    stamp.time = time;
    stamp.encoder = static_cast<std::int64_t>(frameIndex) * ResultSetMaker::EncoderTicksPerFrame;
    Vor::Object message;
    Vor::ThrowIfFailed(VvStampMsg_Construct(message.Out(), stamp));
    return message;
}

/// `value` with three decimals, whatever the locale. A value that is rounded to 0 has no sign.
std::string Millimetres(double value) {
    std::array<char, std::numeric_limits<double>::max_exponent10 + 8> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, 3).ptr;
    const std::string text(digits.data(), end);
    return text == "-0.000" ? "0.000" : text;
}

Vor::Object TextMessage(std::uint64_t frameIndex, double max) {
    const std::string text = "frame " + std::to_string(frameIndex) + ": max " + Millimetres(max) + " mm";
    Vor::Object message;
    Vor::ThrowIfFailed(VvStringMsg_Construct(message.Out(), text));
    return message;
}

} // namespace

ResultSetMaker::ResultSetMaker(const Recording& recording)
    : kind(recording.kind) {
    for (std::string& name : DataSources(recording)) {
        Vor::Object info;
        Vor::ThrowIfFailed(ResultInfo_Construct(info.Out(), TypeOf(name), name));
        sources.push_back({std::move(name), std::move(info)});
    }
    limits = std::make_shared<const std::vector<Limits>>(sources.size());
}

std::vector<std::string> ResultSetMaker::DataSources(const Recording& recording) {
    std::vector<std::string> names;
    if (recording.kind == RecordingKind::Profiles) {
        names.assign(ProfileMeasurements.begin(), ProfileMeasurements.end());
        names.emplace_back(ProfileText);
        names.emplace_back(ProfileStamp);
        return names;
    }
    for (const std::string& name : recording.names) {
        names.push_back(std::string(ValuesFolder) + name);
    }
    names.emplace_back(ValuesStamp);
    return names;
}

void ResultSetMaker::SetLimits(std::vector<Limits> given) {
    if (given.size() != sources.size()) {
        Vor::Throw(yERROR_SIZE, "There are limits of %zu data sources, and of %zu were expected.", given.size(),
                   sources.size());
    }
    LimitTable table = std::make_shared<const std::vector<Limits>>(std::move(given));
    const std::lock_guard guard(limitsMutex);
    limits.swap(table);
}

ResultSetMaker::LimitTable ResultSetMaker::PresentLimits() const {
    const std::lock_guard guard(limitsMutex);
    return limits;
}

Vor::Object ResultSetMaker::Make(const Frame& frame, std::uint64_t frameIndex, std::uint64_t time) const {
    const std::uint64_t now = yTime_Monotonic();
    Vor::Object set;
    Vor::ThrowIfFailed(ResultSet_Construct(set.Out()));
    if (kind == RecordingKind::Profiles) {
        AddProfile(set.Get(), now, frame, frameIndex);
    } else {
        AddValues(set.Get(), now, frame);
    }
    Append(set.Get(), now, StampMessage(frameIndex, time), sources.back().info);
    return set;
}

void ResultSetMaker::AddProfile(void* set, std::uint64_t now, const Frame& frame, std::uint64_t frameIndex) const {
    const ProfileMeasurement measured = ProfileMeasurement::Of(frame.points);
    const std::array<std::optional<double>, ProfileMeasurements.size()> values = {
        measured.max, measured.min, measured.mean, measured.width, static_cast<double>(measured.count)};
    const LimitTable table = PresentLimits();
    for (std::size_t index = 0; index < values.size(); ++index) {
        Append(set, now, MeasureMessage(values[index], table->at(index)), sources[index].info);
    }
    Append(set, now, TextMessage(frameIndex, measured.max), sources[values.size()].info);
}

void ResultSetMaker::AddValues(void* set, std::uint64_t now, const Frame& frame) const {
    std::vector<std::optional<double>> values(sources.size() - 1);
    for (const NamedValue& named : frame.values) {
        values[named.name] = named.value;
    }
    const LimitTable table = PresentLimits();
    for (std::size_t index = 0; index < values.size(); ++index) {
        Append(set, now, MeasureMessage(values[index], table->at(index)), sources[index].info);
    }
}

} // namespace Sensor::Scan

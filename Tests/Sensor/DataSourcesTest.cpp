#include "Sensor/DataSources.h"

#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/Scan/RecordingParser.h"
#include "Sensor/Scan/ResultSetMaker.h"

#include <gtest/gtest.h>

namespace Sensor {
namespace {

using VorPipe::PipeDataType;

/// "NAME (OWNER / DISPLAY NAME) TYPE" of each data source.
std::vector<std::string> Described(const Scan::Recording& recording) {
    std::vector<std::string> lines;
    for (const VorPipe::PipeOutput& output : DataSourcesOf(recording)) {
        EXPECT_FALSE(output.format.arrayed) << output.name;
        const PipeDataType type = output.format.type;
        const char* const text = type == PipeDataType::Measurement ? "measurement"
                                 : type == PipeDataType::String    ? "string"
                                 : type == PipeDataType::Stamp     ? "stamp"
                                                                   : "none";
        lines.push_back(output.name + " (" + output.ownerName + " / " + output.displayName + ") " + text);
    }
    return lines;
}

TEST(DataSources, AProfileHasMeasurementsATextAndAStamp) {
    EXPECT_EQ(Described(Scan::GeneratePart()), (std::vector<std::string>{
                                                   "profile/max (Profile / Maximum Height) measurement",
                                                   "profile/min (Profile / Minimum Height) measurement",
                                                   "profile/mean (Profile / Mean Height) measurement",
                                                   "profile/width (Profile / Width) measurement",
                                                   "profile/points (Profile / Number of Points) measurement",
                                                   "profile/text (Profile / Text) string",
                                                   "profile/stamp (Profile / Stamp) stamp",
                                               }));
}

TEST(DataSources, NamedValuesBearTheirNames) {
    const Scan::Recording recording =
        Scan::RecordingParser::Parse("frame,name,value\n0,gap,1\n0,left/edge,1\n0,profile/max,1\n", "values.csv");
    EXPECT_EQ(Described(recording), (std::vector<std::string>{
                                        "values/gap (Values / gap) measurement",
                                        "values/left/edge (Values / left/edge) measurement",
                                        "values/profile/max (Values / profile/max) measurement",
                                        "values/stamp (Values / Stamp) stamp",
                                    }));
}

TEST(DataSources, HaveUnits) {
    EXPECT_STREQ(UnitOf("profile/width").name, "mm");
    EXPECT_EQ(UnitOf("profile/width").decimals, 3U);
    EXPECT_STREQ(UnitOf("profile/points").name, "");
    EXPECT_EQ(UnitOf("profile/points").decimals, 0U);
    EXPECT_STREQ(UnitOf("values/gap").name, "");
    EXPECT_EQ(UnitOf("values/gap").decimals, 3U);
}

TEST(DataSources, EachMeasurementHasATool) {
    EXPECT_EQ(ToolOf("profile/max"), "profile-max");
    EXPECT_EQ(ToolOf("profile/points"), "profile-points");
    EXPECT_EQ(ToolOf("values/left/edge"), "values-left/edge");
    for (const char* source : {"profile/text", "profile/stamp", "values/stamp"}) {
        EXPECT_EQ(ToolOf(source), "") << source;
    }
}

} // namespace
} // namespace Sensor

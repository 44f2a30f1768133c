#pragma once

#include "VorApi/Object.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvMeasureMsg.h"
#include "yApi/yArrayList.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Tests {

/// Appends a measurement of the given data source.
inline void AddMeasurement(void* set, const std::string& source, double value) {
    Vor::Object msg;
    Vor::Object msgInfo;
    Vor::Object info;
    ASSERT_EQ(VvMeasureMsg_Construct(msg.Out(), value, 1), yOK);
    ASSERT_EQ(yMsgInfo_Construct(msgInfo.Out(), msg.Get(), 0, 0), yOK);
    msg.Release();
    ASSERT_EQ(ResultInfo_Construct(info.Out(), ResultInfo_TypeMeasurement, source), yOK);
    ASSERT_EQ(ResultSet_Add(set, msgInfo.Release(), info.Release(), 0), yOK);
}

/// A set with one measurement for each data source, with the values 0, 1, 2 and so on.
inline Vor::Object MakeResultSet(const std::vector<std::string>& sources) {
    Vor::Object set;
    EXPECT_EQ(ResultSet_Construct(set.Out()), yOK);
    for (std::size_t i = 0; i < sources.size(); ++i) {
        AddMeasurement(set.Get(), sources[i], static_cast<double>(i));
    }
    return set;
}

inline std::vector<std::string> SourcesOf(void* set) {
    std::vector<std::string> sources;
    for (std::size_t i = 0; i < ResultSet_Count(set); ++i) {
        sources.emplace_back(ResultInfo_Source(ResultItem_ResultInfo(ResultSet_At(set, i))));
    }
    return sources;
}

/// The sets of a result handler's batch, each with a reference.
inline std::vector<Vor::Object> SetsOf(void* batch) {
    std::vector<Vor::Object> sets;
    const auto list = static_cast<yArrayList>(batch);
    for (std::size_t i = 0; i < yArrayList_Count(list); ++i) {
        sets.push_back(Vor::Object::Share(yArrayList_At(list, i)));
    }
    return sets;
}

} // namespace Tests

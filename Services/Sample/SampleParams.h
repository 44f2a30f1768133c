#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

namespace Services::Sample {

/// The settings of the service. The constructor declares their schema: keys, titles, limits, defaults. Registered
/// settings are saved and loaded with the job without further code.
class SampleParams : public Vor::Params::Group {
public:
    SampleParams() {
        Register("isBigEndian", isBigEndian, "Most Significant Byte First");
        Register("everyNth", everyNth, "Take Every Nth Result");
        Register("keepAtStop", keepAtStop, "Keep Values When Stopped");
        everyNth.SetMinimum(1);
        everyNth.EnableMaximum(true);
        everyNth.SetMaximum(1000);
        Reset();
    }

    void Reset() {
        isBigEndian = true;
        everyNth = 1;
        keepAtStop = false;
    }

    Vor::Params::Value<bool> isBigEndian;
    Vor::Params::Value<unsigned int> everyNth;
    Vor::Params::Value<bool> keepAtStop;
};

} // namespace Services::Sample

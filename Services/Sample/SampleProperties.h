#pragma once

#include "Vor/ByteVector.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/NonPersistentProperties.h"

namespace Services::Sample {

/// The properties of the service besides its status. They are never saved. Read and written under the properties lock.
class SampleProperties : public VorControl::ControlProtocol::NonPersistentProperties {
public:
    SampleProperties() {
        Register("registers", registers, "Registers");
        Register("resultCount", resultCount, "Number of Results");
        registers.EnableReadOnly();
        registers.SetReadOnly(true);
        resultCount.EnableReadOnly();
        resultCount.SetReadOnly(true);
    }

    Vor::Params::Value<Vor::Properties::ByteVector> registers;
    Vor::Params::Value<unsigned long long> resultCount;
};

} // namespace Services::Sample

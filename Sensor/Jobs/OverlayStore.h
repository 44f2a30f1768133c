#pragma once

#include "Sensor/Jobs/Overlay.h"
#include "VorCommon/IPersistStore.h"

namespace Sensor::Jobs {

/// Reads the files of services with the overlaid parameters instead of the stored ones, and writes them with the stored
/// ones, so that the settings of the command line don't change the job. A parameter whose value was changed meanwhile
/// is written as it is. Other files, and files that can't be parsed, pass through unchanged.
class OverlayStore : public VorCommon::IPersistStore {
public:
    /// Both must outlive this.
    OverlayStore(VorCommon::IPersistStore& store, const Overlay& overlay);

    VorCommon::PersistBuffer Read(const std::string& path) const override;
    void Write(const std::string& path, const void* bytes, std::size_t size) override;
    bool Exists(const std::string& path) const override;

private:
    nlohmann::json StoredParameters(const std::string& path) const;

    VorCommon::IPersistStore& store;
    const Overlay& overlay;
};

} // namespace Sensor::Jobs

#pragma once

#include "Sensor/Jobs/Overlay.h"
#include "VorCommon/IPersistStore.h"

namespace Sensor::Jobs {

/// Shows the files of services with the overlaid parameters in place of the stored ones, and writes them with the
/// stored ones again, so that a job isn't changed by what the user set on the command line. A parameter that has got
/// another value than the overlaid one meanwhile is written as it is. A file that isn't a service's is left alone, and
/// so is one that can't be read: its reader tells why.
class OverlayStore : public VorCommon::IPersistStore {
public:
    /// Both are borrowed.
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

#pragma once

#include "VorApi/Event.h"

#include <cstdint>

namespace VorCommon {
class IPersistRegistrar;
class IPlatformAttributes;
class IRuntimeCache;
class IUpdateGate;
class PersistManager;
class ProblemsManager;
} // namespace VorCommon

namespace VorCore {
class Core;
class ResultHub;
} // namespace VorCore

namespace VorPipe {
class PipeManager;
}

namespace VorRest {
class RequestProcessor;
}

namespace VorScan::Internal {
class ScanEngineManager;
}

namespace VorControl {

/// Everything that the control subsystem takes from the application. The application owns what the pointers name and
/// keeps it alive longer than the module. Never null: platformAttributes, runtimeCache, updateGate.
struct ControlModuleEnviron {
    VorCommon::IPlatformAttributes* platformAttributes = nullptr;
    VorCommon::IRuntimeCache* runtimeCache = nullptr;
    /// Memory allocator of the result pipe; null is the default one.
    void* pipeAllocator = nullptr;
    /// Null: nobody persists the services. Must not call back while it registers or announces.
    VorCommon::IPersistRegistrar* persistRegistrar = nullptr;
    VorCommon::ProblemsManager* problemsManager = nullptr;
    /// Null: there are no scan results.
    VorCore::ResultHub* resultHub = nullptr;
    VorCommon::IUpdateGate* updateGate = nullptr;
    VorScan::Internal::ScanEngineManager* scanEngineManager = nullptr;
    /// Each of the three events may be null, and is then never served.
    Vor::Event<>* livePreStartScanEvent = nullptr;
    Vor::Event<>* livePostStopScanEvent = nullptr;
    Vor::Event<>* factoryRestoreEvent = nullptr;
    VorCommon::PersistManager* persistManager = nullptr;
    VorPipe::PipeManager* pipeManager = nullptr;
    VorCore::Core* core = nullptr;
    VorRest::RequestProcessor* requestProcessor = nullptr;
    std::uint16_t controlChannelPort = 0;
    std::uint16_t vdpPort = 0;
    std::uint32_t localNodeId = 0;
};

} // namespace VorControl

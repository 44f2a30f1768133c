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

/// Everything that the control subsystem uses of the application. The application owns the objects, which outlive the
/// module. Never null: platformAttributes, runtimeCache, updateGate, requestProcessor.
struct ControlModuleEnviron {
    VorCommon::IPlatformAttributes* platformAttributes = nullptr;
    VorCommon::IRuntimeCache* runtimeCache = nullptr;
    /// Memory allocator of the result pipe; null is the default one.
    void* pipeAllocator = nullptr;
    /// Null: the services aren't persisted. Must not call the manager while it registers or announces.
    VorCommon::IPersistRegistrar* persistRegistrar = nullptr;
    VorCommon::ProblemsManager* problemsManager = nullptr;
    /// Null: there are no scan results.
    VorCore::ResultHub* resultHub = nullptr;
    VorCommon::IUpdateGate* updateGate = nullptr;
    VorScan::Internal::ScanEngineManager* scanEngineManager = nullptr;
    /// Each of the three events may be null: then nothing is subscribed to it.
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

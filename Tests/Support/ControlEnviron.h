#pragma once

#include "Tests/Support/FakeDataCache.h"
#include "Tests/Support/FakeScanEngineInterface.h"
#include "Tests/Support/FakeSystemInterface.h"
#include "Tests/Support/RecordingRegistrar.h"
#include "VorApi/Event.h"
#include "VorApi/ResourceRouter.h"
#include "VorCommon/PlatformAttributes.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/RuntimeCache.h"
#include "VorCommon/UpdateGate.h"
#include "VorControl/Control/ControlDeviceOperations.h"
#include "VorControl/Control/ControlHost.h"
#include "VorControl/Control/ControlModuleEnviron.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorControl/Control/ControlResourceAdaptor.h"
#include "VorControl/Control/ControlScanResults.h"
#include "VorControl/ControlProtocol/ControlProtocolEnviron.h"
#include "VorCore/ResultHub.h"
#include "VorRest/RequestProcessor.h"

#include <string>

namespace Tests {

/// The application's side of the control subsystem, with real platform objects.
class ControlEnviron {
public:
    VorControl::ControlModuleEnviron Record() {
        VorControl::ControlModuleEnviron record;
        record.platformAttributes = &platform;
        record.runtimeCache = &runtimeCache;
        record.persistRegistrar = &registrar;
        record.problemsManager = &problems;
        record.resultHub = &hub;
        record.updateGate = &gate;
        record.livePreStartScanEvent = &preStart;
        record.livePostStopScanEvent = &postStop;
        record.factoryRestoreEvent = &factoryRestore;
        record.requestProcessor = &requests;
        record.controlChannelPort = 3190;
        record.vdpPort = 3195;
        record.localNodeId = 4711;
        return record;
    }

    VorCommon::PlatformAttributes platform{VorCommon::PlatformKind::VirtualSensor};
    VorCommon::RuntimeCache runtimeCache;
    VorCommon::ProblemsManager problems;
    VorCommon::UpdateGate gate;
    VorCore::ResultHub hub;
    RecordingRegistrar registrar;
    VorApi::ResourceRouter router;
    VorRest::RequestProcessor requests{router};
    Vor::Event<> preStart;
    Vor::Event<> postStop;
    Vor::Event<> factoryRestore;
};

/// The host of an application. Its operations are real; system, scan engine and data cache are fakes.
class FakeHost {
public:
    FakeHost(ControlEnviron& application, VorControl::IControlScanResults& scanResults)
        : operations(system, scanEngine, application.runtimeCache)
        , resources(application.requests)
        , host(scanResults, operations, dataCache, resources, application.platform, application.runtimeCache,
               &application.problems, scanEngine, deviceOperations, 4711, 3190, 3195, nullptr) {}

    FakeSystemInterface system;
    FakeScanEngineInterface scanEngine;
    FakeDataCache dataCache;
    VorControl::ControlProtocolOperations operations;
    VorControl::ControlDeviceOperations deviceOperations{scanEngine};
    VorControl::ControlResourceAdaptor resources;
    VorControl::ControlHost host;
};

/// A host for tests of a service without a module. Operations need a main loop, such as a MainLoopThread.
class HostEnviron {
public:
    VorControl::ControlProtocol::ControlProtocolEnviron Record(const std::string& typeName,
                                                               const std::string& displayName) {
        VorControl::ControlProtocol::ControlProtocolEnviron record;
        record.typeName = typeName;
        record.displayName = displayName;
        record.controlHost = &host;
        return record;
    }

    ControlEnviron application;
    VorControl::ControlScanResults scanResults{&application.hub, nullptr};
    FakeHost fakes{application, scanResults};
    VorControl::ControlHost& host = fakes.host;
    FakeSystemInterface& system = fakes.system;
    FakeScanEngineInterface& scanEngine = fakes.scanEngine;
    FakeDataCache& dataCache = fakes.dataCache;
};

} // namespace Tests

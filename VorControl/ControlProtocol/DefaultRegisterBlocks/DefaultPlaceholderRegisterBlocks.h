#pragma once

#include "Vor/VorGetText.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"

/// Placeholders for scan data that has no layout in registers. A block names its data source, has no registers by
/// default, and its Serialize throws yERROR_UNIMPLEMENTED. A service that sends the data derives from it.
namespace VorControl::ControlProtocol {

class DefaultImageRegisterBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;
};

class DefaultSpotsRegisterBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;
};

class DefaultProfilePointCloudRegisterBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;
};

class DefaultUniformProfileRegisterBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;
};

class DefaultSurfacePointCloudRegisterBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;
};

class DefaultUniformSurfaceRegisterBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;
};

class DefaultImageRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Image");

    DefaultImageRegisterBlockInfo();
};

class DefaultSpotsRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Spots");

    DefaultSpotsRegisterBlockInfo();
};

class DefaultProfilePointCloudRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Profile Point Cloud");

    DefaultProfilePointCloudRegisterBlockInfo();
};

class DefaultUniformProfileRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Uniform Profile");

    DefaultUniformProfileRegisterBlockInfo();
};

class DefaultSurfacePointCloudRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Surface Point Cloud");

    DefaultSurfacePointCloudRegisterBlockInfo();
};

class DefaultUniformSurfaceRegisterBlockInfo : public ProtocolRegisterBlockInfo {
public:
    inline static const char* const DEFAULT_DISPLAY_NAME =
        VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", "Uniform Surface");

    DefaultUniformSurfaceRegisterBlockInfo();
};

} // namespace VorControl::ControlProtocol

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultPlaceholderRegisterBlocks.h"

#include "VorControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

#include <memory>

namespace VorControl::ControlProtocol {

namespace {

template <class Block>
RegisterBlockInfoParams PlaceholderParams(const char* type, const char* displayName, RegisterBlockCategory category) {
    return {.type = type,
            .displayName = displayName,
            .category = category,
            .defaultRegisterCount = 0,
            .bytesPerRegister = 1,
            .minInstanceCount = 0,
            .maxInstanceCount = 65534,
            .hasDataSource = true,
            .isProtocolBigEndian = true,
            .factory = std::make_shared<ProtocolRegisterBlockFactory<Block>>(),
            .configurableRegisterCount = false};
}

} // namespace

DefaultImageRegisterBlockInfo::DefaultImageRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          PlaceholderParams<DefaultImageRegisterBlock>("Image", DEFAULT_DISPLAY_NAME, RegisterBlockCategory::Image)) {}

DefaultSpotsRegisterBlockInfo::DefaultSpotsRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          PlaceholderParams<DefaultSpotsRegisterBlock>("Spots", DEFAULT_DISPLAY_NAME, RegisterBlockCategory::Spots)) {}

DefaultProfilePointCloudRegisterBlockInfo::DefaultProfilePointCloudRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(PlaceholderParams<DefaultProfilePointCloudRegisterBlock>(
          "ProfilePointCloud", DEFAULT_DISPLAY_NAME, RegisterBlockCategory::ProfilePointCloud)) {}

DefaultUniformProfileRegisterBlockInfo::DefaultUniformProfileRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(PlaceholderParams<DefaultUniformProfileRegisterBlock>(
          "UniformProfile", DEFAULT_DISPLAY_NAME, RegisterBlockCategory::UniformProfile)) {}

DefaultSurfacePointCloudRegisterBlockInfo::DefaultSurfacePointCloudRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(PlaceholderParams<DefaultSurfacePointCloudRegisterBlock>(
          "SurfacePointCloud", DEFAULT_DISPLAY_NAME, RegisterBlockCategory::SurfacePointCloud)) {}

DefaultUniformSurfaceRegisterBlockInfo::DefaultUniformSurfaceRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(PlaceholderParams<DefaultUniformSurfaceRegisterBlock>(
          "UniformSurface", DEFAULT_DISPLAY_NAME, RegisterBlockCategory::UniformSurface)) {}

} // namespace VorControl::ControlProtocol

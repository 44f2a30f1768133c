#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include "Vor/Exception.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorControl/ControlProtocol/Translate.h"

#include <utility>

namespace VorControl::ControlProtocol {

ProtocolRegisterBlockInfo::ProtocolRegisterBlockInfo(RegisterBlockInfoParams params)
    : Group("")
    , type(params.type)
    , displayName(params.displayName)
    , category(params.category)
    , defaultRegisterCount(params.defaultRegisterCount)
    , instanceCount(0)
    , minInstanceCount(params.minInstanceCount)
    , maxInstanceCount(params.maxInstanceCount)
    , hasDataSource(params.hasDataSource)
    , configurableRegisterCount(params.configurableRegisterCount)
    , deserializedInputSize(params.deserializedInputSize)
    , bytesPerRegister(params.bytesPerRegister)
    , isProtocolBigEndian(params.isProtocolBigEndian)
    , factory(std::move(params.factory)) {
    if (params.maxInstanceCount < params.minInstanceCount) {
        Vor::Throw(yERROR_PARAMETER);
    }
    RegisterFields();
    AddCategories();
}

ProtocolRegisterBlockInfo::~ProtocolRegisterBlockInfo() = default;

void ProtocolRegisterBlockInfo::RegisterFields() {
    Register("type", type, Translate("beApp.ctrl", "Type"), 100);
    Register("displayName", displayName, Translate("beApp.ctrl", "Display Name"), 100);
    Register("category", category, Translate("beApp.ctrl", "Block Category"), 100);
    Register("defaultRegisterCount", defaultRegisterCount, Translate("beApp.ctrl", "Default Number of Registers"), 100);
    Register("instanceCount", instanceCount, Translate("beApp.ctrl", "Number of Instances"), 100);
    Register("minInstanceCount", minInstanceCount, Translate("beApp.ctrl", "Minimum Number of Instances"), 100);
    Register("maxInstanceCount", maxInstanceCount, Translate("beApp.ctrl", "Maximum Number of Instances"), 100);
    Register("hasDataSource", hasDataSource, Translate("beApp.ctrl", "Register Block Has Scan Output Data Source"),
             100);
    Register("configurableRegisterCount", configurableRegisterCount,
             Translate("beApp.ctrl", "Register Block's Register Count is Editable."), 100);

    const auto makeReadOnly = [](auto&... parameters) {
        (parameters.EnableReadOnly(), ...);
        (parameters.SetReadOnly(true), ...);
    };
    makeReadOnly(type, displayName, category, defaultRegisterCount, instanceCount, minInstanceCount, maxInstanceCount,
                 hasDataSource, configurableRegisterCount);
}

void ProtocolRegisterBlockInfo::AddCategories() {
    using enum RegisterBlockCategory;
    const auto add = [this](RegisterBlockCategory value, const char* text) {
        category.AddOption(value, Translate("com.vorlab.ctrl", text));
    };
    add(Unknown, "Unknown");
    add(ControlInput, "Control Input");
    add(ControlOutput, "Control Output");
    add(System, "System");
    add(Scanner, "Scanner");
    add(Stamp, "Stamp");
    add(Measurement, "Measurement");
    add(Image, "Image");
    add(Spots, "Spots");
    add(String, "String");
    add(ProfilePointCloud, "Profile Point Cloud");
    add(UniformProfile, "Uniform Profile");
    add(SurfacePointCloud, "Surface Point Cloud");
    add(UniformSurface, "Uniform Surface");
    add(UserDataInput, "User Data Input");
}

const std::string& ProtocolRegisterBlockInfo::Type() const {
    return type.Get();
}

const std::string& ProtocolRegisterBlockInfo::DisplayName() const {
    return displayName.Get();
}

RegisterBlockCategory ProtocolRegisterBlockInfo::Category() const {
    return category.Get();
}

unsigned short ProtocolRegisterBlockInfo::DefaultRegisterCount() const {
    return defaultRegisterCount.Get();
}

unsigned short ProtocolRegisterBlockInfo::MinInstanceCount() const {
    return minInstanceCount.Get();
}

unsigned short ProtocolRegisterBlockInfo::MaxInstanceCount() const {
    return maxInstanceCount.Get();
}

bool ProtocolRegisterBlockInfo::IsRegisterCountConfigurable() const {
    return configurableRegisterCount.Get();
}

bool ProtocolRegisterBlockInfo::HasDataSource() const {
    return hasDataSource.Get();
}

void ProtocolRegisterBlockInfo::IncrementInstanceCount() {
    instanceCount.Set(static_cast<unsigned short>(instanceCount.Get() + 1));
}

void ProtocolRegisterBlockInfo::DecrementInstanceCount() {
    instanceCount.Set(static_cast<unsigned short>(instanceCount.Get() - 1));
}

void ProtocolRegisterBlockInfo::ResetInstanceCount() {
    instanceCount.Set(0);
}

bool ProtocolRegisterBlockInfo::AtMaxInstance() const {
    return MaxInstanceCount() <= instanceCount.Get();
}

bool ProtocolRegisterBlockInfo::AtMinInstance() const {
    return MinInstanceCount() >= instanceCount.Get();
}

std::shared_ptr<ProtocolRegisterBlock> ProtocolRegisterBlockInfo::ConstructBlock(const RegisterBlockParams& params) {
    return factory->Create(params, *this);
}

} // namespace VorControl::ControlProtocol

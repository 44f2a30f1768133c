#include "FixturePlugin.h"
#include "VorCommon/IDigitalOutputProvider.h"
#include "VorCommon/IProviderManager.h"

#include <typeinfo>

extern "C" const std::type_info* ProviderManagerType() {
    return &typeid(VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider>);
}

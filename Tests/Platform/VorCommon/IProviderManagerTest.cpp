#include "VorCommon/IProviderManager.h"

#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/FakeOutputDevice.h"
#include "VorCommon/IDigitalOutputProvider.h"

#include <dlfcn.h>
#include <map>
#include <memory>
#include <typeinfo>

#include <gtest/gtest.h>

namespace VorCommon {
namespace {

using OutputProviders = IProviderManager<IDigitalOutputProvider>;

TEST(IProviderManager, HasTheSameTypeInformationInAModuleThatIsLoadedWithLocalSymbols) {
    const std::unique_ptr<void, int (*)(void*)> module(
        dlopen(Tests::BuiltFile("test-plugins/ProviderManagerType.so").c_str(), RTLD_NOW | RTLD_LOCAL), dlclose);
    ASSERT_NE(module, nullptr) << dlerror();
    auto* const typeInModule =
        reinterpret_cast<const std::type_info* (*)()>(dlsym(module.get(), "ProviderManagerType"));
    ASSERT_NE(typeInModule, nullptr) << dlerror();
    EXPECT_EQ(typeInModule(), &typeid(OutputProviders));
}

TEST(IProviderManager, ARegistryEntryComesBackAsTheInterfaceThatItWasMadeFrom) {
    const std::shared_ptr<OutputProviders> made = std::make_shared<Tests::FakeOutputDevices>();
    const std::map<const std::type_info*, std::weak_ptr<void>> registry{{&typeid(OutputProviders), made}};
    const auto found = std::static_pointer_cast<OutputProviders>(registry.at(&typeid(OutputProviders)).lock());
    EXPECT_EQ(found, made);
    EXPECT_TRUE(found->Providers().empty());
}

} // namespace
} // namespace VorCommon

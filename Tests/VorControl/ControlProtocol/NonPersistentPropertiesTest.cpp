#include "VorControl/ControlProtocol/NonPersistentProperties.h"

#include "Vor/VorGetText.h"

#include <gtest/gtest.h>

using namespace VorControl::ControlProtocol;

namespace {

TEST(NonPersistentPropertiesTest, HasOneReadOnlyStatusThatIsStopped) {
    const NonPersistentProperties properties;
    ASSERT_EQ(properties.Members().size(), 1U);
    EXPECT_EQ(&properties.At("status"), &properties.Status());
    EXPECT_EQ(properties.Status().Get(), ProtocolStatus::Stopped);
    EXPECT_EQ(properties.Status().GetTitle(), "Status");
    EXPECT_EQ(properties.Status().GetSortOrder(), 100U);
    EXPECT_TRUE(properties.Status().IsReadOnlyEnabled());
    EXPECT_TRUE(properties.Status().GetReadOnly());
}

TEST(NonPersistentPropertiesTest, ListsTheSixStatusesWithTheirTexts) {
    const NonPersistentProperties properties;
    EXPECT_EQ(properties.Status().Options(),
              (std::vector<ProtocolStatus>{static_cast<ProtocolStatus>(0), static_cast<ProtocolStatus>(1),
                                           static_cast<ProtocolStatus>(2), static_cast<ProtocolStatus>(3),
                                           static_cast<ProtocolStatus>(4), static_cast<ProtocolStatus>(5)}));
    EXPECT_EQ(properties.Status().OptionTexts(), (std::vector<std::string>{"Running", "Stopped", "Starting", "Stopping",
                                                                           "Failed To Start", "Failed To Stop"}));
}

TEST(NonPersistentPropertiesTest, TheTextsAreTranslated) {
    VorGetText::GetInstance().SetTranslations("com.vorlab.ctrl", {{"Failed To Start", "Startet nicht"}});
    const NonPersistentProperties properties;
    VorGetText::GetInstance().SetTranslations("com.vorlab.ctrl", {});
    EXPECT_EQ(properties.Status().OptionTexts()[4], "Startet nicht");
}

TEST(NonPersistentPropertiesTest, AServicesOwnValuesSortBehindTheStatus) {
    class More : public NonPersistentProperties {
    public:
        More() { Register("address", address); }

        Vor::Params::Value<std::string> address;
    };
    const More properties;
    EXPECT_GT(properties.address.GetSortOrder(), properties.Status().GetSortOrder());
}

} // namespace

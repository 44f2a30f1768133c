#include "VorCommon/PlatformAttributes.h"

#include "VorScan/emptySPCollection.h"

#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

using VorCommon::IPlatformAttributes;
using VorCommon::PlatformAttributes;
using VorCommon::PlatformKind;

namespace {

std::vector<bool> Answers(const IPlatformAttributes& attributes) {
    return {attributes.IsPhysicalSensor(), attributes.IsPhysicalVorbox(),     attributes.IsVirtualSensor(),
            attributes.IsVirtualVorbox(),  attributes.IsVorsuiteServiceApp(), attributes.IsVorsuiteDaemon()};
}

} // namespace

TEST(PlatformAttributesTest, OfNoKindAllAreFalse) {
    EXPECT_EQ(Answers(PlatformAttributes()), std::vector<bool>(6, false));
}

TEST(PlatformAttributesTest, EachKindAnswersForItselfOnly) {
    const std::vector<PlatformKind> kinds{PlatformKind::PhysicalSensor,     PlatformKind::PhysicalVorbox,
                                          PlatformKind::VirtualSensor,      PlatformKind::VirtualVorbox,
                                          PlatformKind::VorsuiteServiceApp, PlatformKind::VorsuiteDaemon};
    PlatformAttributes attributes;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        attributes.SetKind(kinds[i]);
        std::vector<bool> expected(6, false);
        expected[i] = true;
        EXPECT_EQ(Answers(attributes), expected) << i;
    }
}

TEST(ServiceProviderCollectionTest, EmptyCollectionIsThereAndUnchangeable) {
    EXPECT_TRUE((std::is_same_v<decltype(VorScan::emptySPCollection), const VorCommon::ServiceProviderCollection>));
}

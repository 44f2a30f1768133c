#include "VorApi/ResourceRouter.h"

#include "Tests/Support/Failure.h"
#include "VorApi/ResourceBase.h"

#include <gtest/gtest.h>

using VorApi::ResourceRouter;
using Keys = VorApi::RequestInfo::Keys;

namespace {

class ResourceRouterTest : public testing::Test {
protected:
    VorApi::IResource* ResourceAt(std::string_view path) {
        const auto match = router.Find(path);
        return match ? &match->resource : nullptr;
    }
    Keys KeysAt(std::string_view path) {
        const auto match = router.Find(path);
        return match ? match->keys : Keys{{"no match", ""}};
    }

    VorApi::ResourceBase one;
    VorApi::ResourceBase two;
    ResourceRouter router;
};

TEST_F(ResourceRouterTest, FindsAResourceByFixedStepsAndParameters) {
    router.Register("/controls/:protocol/outputs", one);
    const auto match = router.Find("/controls/modbus/outputs");
    ASSERT_TRUE(match.has_value());
    EXPECT_EQ(&match->resource, &one);
    EXPECT_EQ(match->route, "/controls/:protocol/outputs");
    EXPECT_EQ(match->keys, (Keys{{"protocol", "modbus"}}));
    for (const char* const other : {"/controls/modbus", "/controls", "/controls/modbus/outputs/x", "/", "",
                                    "controls/modbus/outputs", "/controls//outputs", "/Controls/modbus/outputs"}) {
        EXPECT_EQ(ResourceAt(other), nullptr) << other;
    }
}

TEST_F(ResourceRouterTest, ARouteThatEndsWithAParameterAlsoMatchesWithoutIt) {
    router.Register("/controls/:protocol/commands/:command", one);
    EXPECT_EQ(KeysAt("/controls/a/commands/b"), (Keys{{"protocol", "a"}, {"command", "b"}}));
    EXPECT_EQ(KeysAt("/controls/a/commands"), (Keys{{"protocol", "a"}}));
    EXPECT_EQ(ResourceAt("/controls/a"), nullptr);
}

TEST_F(ResourceRouterTest, ASlashAtTheEndMakesNoDifference) {
    router.Register("/controls/:protocol", one);
    EXPECT_EQ(KeysAt("/controls/a/"), (Keys{{"protocol", "a"}}));
    EXPECT_EQ(KeysAt("/controls/"), Keys{});
    EXPECT_EQ(ResourceAt("/controls/a//"), nullptr);
}

TEST_F(ResourceRouterTest, TheRootIsARoute) {
    router.Register("/", one);
    EXPECT_EQ(ResourceAt("/"), &one);
    EXPECT_EQ(ResourceAt("/x"), nullptr);
}

TEST_F(ResourceRouterTest, ValuesAreDecoded) {
    router.Register("/x/:y", one);
    EXPECT_EQ(KeysAt("/x/a%2Fb%20c"), (Keys{{"y", "a/b c"}}));
    EXPECT_EQ(KeysAt("/%78/1"), (Keys{{"y", "1"}}));
    EXPECT_EQ(KeysAt("/x/.."), (Keys{{"y", ".."}}));
    EXPECT_EQ(Tests::StatusOf([&] { router.Find("/x/%zz"); }), yERROR_FORMAT);
}

TEST_F(ResourceRouterTest, OfSeveralRoutesTheWholeOneThenTheFirstIsTaken) {
    router.Register("/x/:y/:z", one);
    router.Register("/x/:y", two);
    EXPECT_EQ(ResourceAt("/x/1"), &two);
    EXPECT_EQ(ResourceAt("/x"), &two);
    router.Register("/x/fixed", one);
    EXPECT_EQ(ResourceAt("/x/fixed"), &two);
    EXPECT_EQ(router.Routes(), (std::vector<std::string>{"/x/:y/:z", "/x/:y", "/x/fixed"}));
}

TEST_F(ResourceRouterTest, HasEachResourceOnce) {
    router.Register("/x", two);
    router.Register("/y", one);
    router.Register("/z", two);
    EXPECT_EQ(router.Resources(), (std::vector<VorApi::IResource*>{&two, &one}));
}

TEST_F(ResourceRouterTest, ARouteIsRegisteredOnce) {
    router.Register("/x", one);
    EXPECT_FAILURE(router.Register("/x", two), yERROR_ALREADY_EXISTS, "The route /x is registered already.");
    EXPECT_EQ(ResourceAt("/x"), &one);
    EXPECT_FAILURE(router.Register("x", one), yERROR_PARAMETER, "The path 'x' doesn't begin with a slash.");
}

TEST_F(ResourceRouterTest, DeregisteringEndsTheRoute) {
    router.Register("/x", one);
    router.Register("/y", one);
    router.Deregister("/x", true);
    EXPECT_EQ(ResourceAt("/x"), nullptr);
    EXPECT_TRUE(router.Has(one));
    EXPECT_FALSE(router.Has(two));
    EXPECT_FAILURE(router.Deregister("/x", true), yERROR_NOT_FOUND, "The route /x isn't registered.");
    router.Deregister("/x", false);
    router.Deregister("/y", false);
    EXPECT_FALSE(router.Has(one));
}

} // namespace

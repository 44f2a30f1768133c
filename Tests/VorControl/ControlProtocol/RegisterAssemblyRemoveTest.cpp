#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"
#include "Vor/Logging.h"
#include "yApi/yFault.h"

#include <gtest/gtest.h>

using namespace Tests;

namespace {

using Places = std::vector<Placed>;
using Texts = std::vector<std::string>;

constexpr const char* NothingRemoved = "No data sources were removed.";
constexpr const char* AtMinimum = "Cannot remove data source with output id %1$u because the connection map cannot "
                                  "have fewer instances of this source than the current number.";

/// The entries of the user's log that a call makes.
template <class Call>
Texts LoggedBy(const Call& call) {
    const Vor::LogCapture log;
    call();
    Texts texts;
    for (const auto& record : log.Records()) {
        if (record.level == 0x8000000100000001) {
            EXPECT_EQ(record.title, "VorControl");
            EXPECT_EQ(record.format, "%1$s");
            texts.push_back(record.text);
        }
    }
    return texts;
}

/// A type with this minimum number of blocks.
void AddDemandedType(TestAssembly& assembly, unsigned short least) {
    auto params = TypeParams("demanded");
    params.minInstanceCount = least;
    assembly.AddType(std::move(params));
}

int InstanceCount(TestAssembly& assembly, std::size_t type) {
    assembly.BeginLock();
    const auto& info = *assembly.SupportedRegisterBlockTypes()[type];
    const int count = dynamic_cast<const Vor::Params::Value<unsigned short>&>(info.At("instanceCount")).Get();
    assembly.EndLock();
    return count;
}

} // namespace

TEST(RegisterAssemblyRemove, RequestMustBeARemoveRequest) {
    TestAssembly assembly(true);
    EXPECT_THROW(assembly.Remove(Vor::Params::Group("")), std::bad_cast);
    EXPECT_THROW(assembly.Remove(AddBlockParams()), std::bad_cast);
}

TEST(RegisterAssemblyRemove, EmptyRequestDoesNothing) {
    TestAssembly assembly(true);
    EXPECT_EQ(assembly.RemoveIds({}), 0U);
}

TEST(RegisterAssemblyRemove, LeavesAGap) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four"}, {"one"}, {"four"}, {"one"}});
    EXPECT_EQ(assembly.RemoveIds({9, 4}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{0, 3, "four name"}, {5, 8, "four name"}}));
    EXPECT_EQ(InstanceCount(assembly, 0), 0);
    EXPECT_EQ(InstanceCount(assembly, 1), 2);
}

TEST(RegisterAssemblyRemove, BadEntryIsLoggedAndTheOthersAreRemoved) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four"}, {"one"}});
    VorGetText::GetInstance().ForgetCalls();
    const auto texts = LoggedBy([&] { EXPECT_EQ(assembly.RemoveIds({3, 65535, 4, 4}), 0U); });
    EXPECT_EQ(texts, (Texts{"Cannot find a data source with output id 3.",
                            "Invalid output id 65535 in the request to remove data source. Please provide a valid "
                            "output id in the request.",
                            "Cannot find a data source with output id 4."}));
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Cannot find a data source with output id %1$u."));
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Invalid output id %1$u in the request to remove data source. Please "
                                            "provide a valid output id in the request."));
    EXPECT_TRUE(WasTranslated("control", "%1$s"));
    EXPECT_EQ(assembly.Places(), (Places{{0, 3, "four name"}}));
}

TEST(RegisterAssemblyRemove, NothingRemovedIsAFailure) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"one", 5}});
    VorGetText::GetInstance().ForgetCalls();
    const auto texts = LoggedBy([&] {
        EXPECT_FAILURE(assembly.RemoveIds({6, 65535}), yERROR_NOT_FOUND, NothingRemoved);
    });
    EXPECT_EQ(texts.size(), 2U);
    EXPECT_TRUE(WasTranslated("beApp.ctrl", NothingRemoved));
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 1U);
}

TEST(RegisterAssemblyRemove, TypeKeepsItsLeastNumber) {
    TestAssembly assembly(true);
    AddDemandedType(assembly, 2);
    assembly.AddEntries({{"demanded"}, {"demanded"}, {"demanded"}});
    VorGetText::GetInstance().ForgetCalls();
    const auto texts = LoggedBy([&] { EXPECT_EQ(assembly.RemoveIds({2, 1}), 0U); });
    EXPECT_EQ(texts, Texts{"Cannot remove data source with output id 1 because the connection map cannot have fewer "
                           "instances of this source than the current number."});
    EXPECT_TRUE(WasTranslated("beApp.ctrl", AtMinimum));
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 2U);
}

TEST(RegisterAssemblyRemove, EachEntryHasTheLockForItself) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"one"}, {"one"}, {"one"}});
    // An entry without an id doesn't enter the lock; the second one with an id fails to enter it.
    yFault_Set("yLock_Enter", -85, 1, 1);
    EXPECT_EQ(assembly.RemoveIds({65535, 0, 1, 2}), 0U);
    yFault_Clear();
    EXPECT_EQ(assembly.Places(), (Places{{1, 1, "one name"}}));
}

TEST(RegisterAssemblyRemove, RemovedBlockIsReleased) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"one"}});
    const std::weak_ptr<ProtocolRegisterBlock> block = assembly.Block(0);
    assembly.RemoveIds({0});
    EXPECT_TRUE(block.expired());
}

TEST(RegisterAssemblyRemove, FirstOfBlocksWithOneIdIsRemoved) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"one", 5, {}, "", "a"}, {"one", 6, {}, "", "b"}, {"one", 7, {}, "", "c"}});
    assembly.Block(1)->SetOutputId(5);
    assembly.RemoveIds({5});
    EXPECT_EQ(assembly.Places(), (Places{{5, 5, "b"}, {7, 7, "c"}}));
    assembly.RemoveIds({5, 7});
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 0U);
}

TEST(RegisterAssemblyRemoveAll, TakesEveryBlockThatNoTypeDemands) {
    TestAssembly assembly(true);
    AddDemandedType(assembly, 1);
    assembly.WithTypes().AddEntries({{"demanded", {}, {}, "", "a"},
                                     {"four"},
                                     {"demanded", {}, {}, "", "b"},
                                     {"one"},
                                     {"demanded", {}, {}, "", "c"}});
    assembly.RemoveAll();
    EXPECT_EQ(assembly.Places(), (Places{{7, 7, "c"}}));
    EXPECT_EQ(InstanceCount(assembly, 0), 1);
    EXPECT_EQ(InstanceCount(assembly, 2), 0);
    assembly.RemoveAll();
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 1U);
}

TEST(RegisterAssemblyRemoveAll, EmptyAssemblyStaysEmpty) {
    TestAssembly assembly(false);
    assembly.RemoveAll();
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 0U);
}

TEST(RegisterAssemblyRemoveAll, FailureEndsTheWalkAndIsLogged) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"one"}, {"four"}, {"one"}});
    assembly.BeginLock();
    auto& counter = dynamic_cast<Vor::Params::Value<unsigned short>&>(
        assembly.SupportedRegisterBlockTypes()[1]->At("instanceCount"));
    counter.AddChangeHandler([](Vor::Properties::Node&) { Vor::Throw(-86, "can't count"); });
    assembly.EndLock();
    EXPECT_EQ(LoggedBy([&] { assembly.RemoveAll(); }), Texts{"can't count"});
    EXPECT_EQ(assembly.Places(), (Places{{5, 5, "one name"}}));
}

TEST(RegisterAssemblyCompact, RequestMustBeACompactRequest) {
    TestAssembly assembly(true);
    EXPECT_THROW(assembly.Compact(Vor::Params::Group("")), std::bad_cast);
    EXPECT_THROW(assembly.Compact(RemoveBlockParams()), std::bad_cast);
}

TEST(RegisterAssemblyCompact, ClosesTheGapsFromTheStartOfTheAssembly) {
    TestAssembly plain(false, 100, 199);
    plain.WithTypes().AddEntries({{"four", 5}, {"one", 50}});
    EXPECT_EQ(plain.CompactFrom(65535), 0U);
    EXPECT_EQ(plain.Places(), (Places{{0, 0, "four name"}, {1, 1, "one name"}}));

    TestAssembly global(true, 100, 199);
    global.WithTypes().AddEntries({{"four", 120}, {"one", 150}, {"four", 190}});
    EXPECT_EQ(global.CompactFrom(65535), 0U);
    EXPECT_EQ(global.Places(), (Places{{100, 103, "four name"}, {104, 104, "one name"}, {105, 108, "four name"}}));
}

TEST(RegisterAssemblyCompact, EmptyAssemblyCompacts) {
    TestAssembly plain(false);
    EXPECT_EQ(plain.CompactFrom(65535), 0U);
    EXPECT_EQ(plain.CompactFrom(0), 0U);
    EXPECT_EQ(plain.CompactFrom(65534), 0U);
    TestAssembly global(true, 1, 9);
    EXPECT_EQ(global.CompactFrom(65535), 0U);
    EXPECT_EQ(global.CompactFrom(9), 0U);
}

TEST(RegisterAssemblyCompact, MovesBlocksUpToo) {
    TestAssembly assembly(true, 0, 20);
    assembly.WithTypes().AddEntries({{"four", 0}, {"four", 10}});
    EXPECT_EQ(assembly.CompactFrom(13), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{13, 16, "four name"}, {17, 20, "four name"}}));
}

TEST(RegisterAssemblyCompact, PlainAssemblyEndsAt65534) {
    TestAssembly assembly(false, 7, 100);
    assembly.WithTypes().AddEntries({{"one", 5}, {"one", 50}, {"one", 51}});
    const auto before = assembly.Places();
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(assembly.CompactFrom(65533), yERROR_FULL,
                   "Cannot compact data sources starting from output id [65533] because the resulting output ids would "
                   "lie outside the valid output id range [7, 65532].");
    EXPECT_TRUE(WasTranslated("beApp.ctrl",
                              "Cannot compact data sources starting from output id [%1$u] because the resulting output "
                              "ids would lie outside the valid output id range [%2$u, %3$u]."));
    EXPECT_EQ(assembly.Places(), before);
    EXPECT_EQ(assembly.CompactFrom(65532), 0U);
    EXPECT_EQ(assembly.Block(2)->OutputId(), 65534);
}

TEST(RegisterAssemblyCompact, StartOfAGlobalAssemblyLiesInItsRange) {
    TestAssembly assembly(true, 10, 20);
    assembly.WithTypes().AddEntries({{"four"}, {"four"}});
    const auto before = assembly.Places();
    VorGetText::GetInstance().ForgetCalls();
    for (const unsigned short start : {9, 21}) {
        EXPECT_FAILURE(assembly.CompactFrom(start), yERROR_PARAMETER,
                       "Cannot compact the data sources because the request's output id " + std::to_string(start) +
                           " would cause the resulting output ids to lie outside the valid output id range [10, 20].");
    }
    EXPECT_TRUE(WasTranslated("beApp.ctrl",
                              "Cannot compact the data sources because the request's output id %1$u would cause the "
                              "resulting output ids to lie outside the valid output id range [%2$u, %3$u]."));
    EXPECT_FAILURE(
        assembly.CompactFrom(14), yERROR_FULL,
        "Cannot compact data sources because resulting output id [14, 21] would lie outside the valid output "
        "id range [10, 20].");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Cannot compact data sources because resulting output id [%1$u, %2$u] "
                                            "would lie outside the valid output id range [%3$u, %4$u]."));
    EXPECT_EQ(assembly.Places(), before);
    EXPECT_EQ(assembly.CompactFrom(13), 0U);
    EXPECT_EQ(assembly.Block(1)->EndAddress(), 20);
}

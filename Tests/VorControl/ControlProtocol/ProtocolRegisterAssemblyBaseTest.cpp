#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/RandomRequests.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"

#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Tests;
using nlohmann::json;

namespace {

/// Fails, since this thread doesn't hold the lock.
void ExpectUnlocked(const ProtocolRegisterAssemblyBase& assembly) {
    EXPECT_TEXTLESS_FAILURE(assembly.EndLock(), yERROR_STATE);
}

} // namespace

TEST(RegisterAssembly, ConstructorStoresAttributesAndProperties) {
    TestAssembly assembly(true, 100, 199, "registerAssembly-0");
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(assembly.Attributes()),
              (json{{"isGlobalAddressSpaceUsed", true},
                    {"outputIdMin", 100},
                    {"outputIdMax", 199},
                    {"outputIdReadOnly", false}}));
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(assembly.Properties()),
              (json{{"version", "1.2"}, {"displayName", "shown"}, {"id", "registerAssembly-0"}}));
    EXPECT_STREQ(assembly.Id(), "registerAssembly-0");
    EXPECT_STREQ(assembly.DisplayName(), "shown");
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 0U);
    EXPECT_EQ(assembly.SupportedRegisterBlockTypesCount(), 0U);
}

TEST(RegisterAssembly, BadLimitsAreRefused) {
    constexpr const char* Format =
        "Minimum output id/address value %1$u and/or maximum output id/address value %2$u are invalid. Check the "
        "id/address field in the connection map.";
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(TestAssembly(true, 0, 65535), yERROR_PARAMETER,
                   "Minimum output id/address value 0 and/or maximum output id/address value 65535 are invalid. Check "
                   "the id/address field in the connection map.");
    EXPECT_FAILURE(TestAssembly(false, 6, 5), yERROR_PARAMETER,
                   "Minimum output id/address value 6 and/or maximum output id/address value 5 are invalid. Check the "
                   "id/address field in the connection map.");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", Format));
    EXPECT_NO_THROW(TestAssembly(true, 5, 5));
    EXPECT_NO_THROW(TestAssembly(true, 0, 65534));
}

TEST(RegisterAssembly, MissingIdIsRefusedAfterTheLimits) {
    constexpr const char* Text =
        "Invalid value for register assembly identifier. Check the id/address field in the connection map.";
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(TestAssembly(true, 0, 1, nullptr), yERROR_PARAMETER, Text);
    EXPECT_FAILURE(TestAssembly(true, 0, 1, ""), yERROR_PARAMETER, Text);
    EXPECT_TRUE(WasTranslated("beApp.ctrl", Text));
    const auto failure = FailureOf([] { TestAssembly(true, 2, 1, ""); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_NE(failure->text, Text);
}

TEST(RegisterAssembly, LockThatCantBeMadeIsThrown) {
    Faults faults;
    faults.Set("yLock_Construct", -77);
    EXPECT_TEXTLESS_FAILURE(TestAssembly(true), -77);
}

TEST(RegisterAssembly, FailingLockCallsAreThrown) {
    Faults faults;
    TestAssembly assembly(true);
    faults.Set("yLock_Enter", -78);
    EXPECT_TEXTLESS_FAILURE(assembly.BeginLock(), -78);
    faults.Set("yLock_Enter", -78);
    EXPECT_TEXTLESS_FAILURE(assembly.AddedRegisterBlocksCount(), -78);
    EXPECT_TEXTLESS_FAILURE(assembly.AddedRegisterBlocks(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(assembly.EndLock(), yERROR_STATE);
}

TEST(RegisterAssembly, ContainersCanBeWalkedOnlyBetweenBeginLockAndEndLock) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    EXPECT_TEXTLESS_FAILURE(assembly.AddedRegisterBlocks(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(assembly.SupportedRegisterBlockTypes(), yERROR_STATE);
    assembly.BeginLock();
    EXPECT_EQ(assembly.SupportedRegisterBlockTypes().size(), 4U);
    EXPECT_TRUE(assembly.AddedRegisterBlocks().empty());
    assembly.BeginLock();
    assembly.EndLock();
    EXPECT_TEXTLESS_FAILURE(assembly.AddedRegisterBlocks(), yERROR_STATE);
    assembly.EndLock();
    ExpectUnlocked(assembly);
}

TEST(RegisterAssembly, LockIsReentrant) {
    TestAssembly assembly(false);
    assembly.WithTypes();
    assembly.BeginLock();
    assembly.AddEntries({{"one"}});
    EXPECT_EQ(assembly.AddedRegisterBlocks().size(), 1U);
    assembly.EndLock();
}

TEST(RegisterAssembly, TypesAreKeptInOrderOfAdding) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    std::vector<std::string> types;
    assembly.BeginLock();
    for (const auto& info : assembly.SupportedRegisterBlockTypes()) {
        types.push_back(info->Type());
        EXPECT_TRUE(info->IsGlobalAddressSpaceUsed());
    }
    assembly.EndLock();
    EXPECT_EQ(types, (std::vector<std::string>{"one", "four", "flexible", "scan"}));
    EXPECT_EQ(assembly.SupportedRegisterBlockTypesCount(), 4U);

    TestAssembly plain(false);
    auto info = std::make_unique<ProtocolRegisterBlockInfo>(TypeParams("one"));
    info->SetIsGlobalAddressSpaceUsed(true);
    auto* const raw = info.get();
    plain.AddSupportedBlockType(std::move(info));
    EXPECT_FALSE(raw->IsGlobalAddressSpaceUsed());
}

TEST(RegisterAssembly, SecondTypeOfOneNameIsRefused) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    VorGetText::GetInstance().ForgetCalls();
    auto params = TypeParams("four");
    params.displayName = "Other Four";
    EXPECT_FAILURE(assembly.AddType(params), yERROR_ALREADY_EXISTS,
                   "This register block type Other Four is already supported.");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "This register block type %s is already supported."));
    EXPECT_EQ(assembly.SupportedRegisterBlockTypesCount(), 4U);
}

TEST(RegisterAssembly, ByteOrderChangesForAllTypesAndBlocksAtOnce) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four"}, {"one"}});
    assembly.ChangeBigEndianSupportedBlocks(false);
    EXPECT_FALSE(assembly.Block(0)->IsProtocolBigEndian());
    EXPECT_FALSE(assembly.Block(1)->IsProtocolBigEndian());
    assembly.ChangeBigEndianSupportedBlocks(true);
    assembly.BeginLock();
    for (const auto& info : assembly.SupportedRegisterBlockTypes()) {
        EXPECT_TRUE(info->IsProtocolBigEndian());
    }
    assembly.EndLock();
}

TEST(RegisterAssembly, ResetDropsAllBlocksWhateverTheirMinimum) {
    TestAssembly assembly(true);
    auto params = TypeParams("needed");
    params.minInstanceCount = 1;
    params.maxInstanceCount = 1;
    assembly.AddType(params);
    assembly.AddEntries({{"needed"}});
    assembly.ResetRegisterAssembly();
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 0U);
    EXPECT_EQ(assembly.AddEntries({{"needed"}}), 0U);
}

TEST(RegisterAssembly, DefaultsAreOneBlockOfEachTypeThatDemandsAnInstance) {
    TestAssembly assembly(true, 10, 99);
    const auto addType = [&](const char* type, unsigned short least) {
        auto params = TypeParams(type, 3);
        params.minInstanceCount = least;
        assembly.AddType(std::move(params));
    };
    addType("a", 1);
    addType("b", 0);
    addType("c", 2);
    assembly.InitDefaultRegisterBlocksForRegisterAssembly();
    const std::vector<Placed> expected{{10, 12, "a name"}, {13, 15, "c name"}};
    EXPECT_EQ(assembly.Places(), expected);

    assembly.AddEntries({{"b"}});
    assembly.InitDefaultRegisterBlocksForRegisterAssembly();
    EXPECT_EQ(assembly.Places(), expected);
}

TEST(RegisterAssembly, WithoutDemandingTypesTheDefaultIsEmpty) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"one"}});
    assembly.InitDefaultRegisterBlocksForRegisterAssembly();
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 0U);
}

TEST(RegisterAssembly, BlocksAreFoundByTypeInListOrder) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"four", 9}, {"one", 3}, {"scan", 5, {}, "s"}, {"four", 1}});
    const auto found = assembly.FindAddedBlocksOfTypes({"scan", "four", "other"});
    std::vector<int> ids;
    for (const auto& block : found) {
        ids.push_back(block->OutputId());
    }
    EXPECT_EQ(ids, (std::vector<int>{1, 5, 9}));
    EXPECT_TRUE(assembly.FindAddedBlocksOfTypes({}).empty());
}

TEST(RegisterAssembly, SharedDataSourceIsListedTwiceAndMappedToTheFirst) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"scan", 7, {}, "b"}, {"scan", 3, {}, "b"}, {"one", 1}, {"scan", 5, {}, "a"}});
    EXPECT_EQ(assembly.DataSourceList(), (std::vector<std::string>{"b", "a", "b"}));
    const auto map = assembly.FindAddedScanOutputBlocksSortedByDataSource();
    ASSERT_EQ(map.size(), 2U);
    EXPECT_EQ(map.at("a")->OutputId(), 5);
    EXPECT_EQ(map.at("b")->OutputId(), 3);
}

TEST(RegisterAssembly, DefaultDisplayNameIsTheTranslatedText) {
    EXPECT_STREQ(IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME, "Register Assembly 0");
}

TEST(RegisterAssemblyCopy, PacksTheSupportedBlocksWithDefaultSizes) {
    TestAssembly source(true);
    source.WithTypes();
    source.AddType(TypeParams("unknown here"));
    source.AddEntries({{"flexible", 50, 9, "", "first"},
                       {"unknown here", 70},
                       {"scan", 80, {}, "profile/max", "second"},
                       {"one", 90}});
    TestAssembly copy(true, 10, 99);
    copy.WithTypes().AddEntries({{"four"}});
    copy.CopySupportedRegisterBlocks(source);
    EXPECT_EQ(copy.Places(), (std::vector<Placed>{{10, 13, "first"}, {14, 15, "second"}, {16, 16, "one name"}}));
    EXPECT_EQ(copy.DataSourceList(), (std::vector<std::string>{"profile/max"}));
    EXPECT_EQ(source.AddedRegisterBlocksCount(), 4U);
    EXPECT_TEXTLESS_FAILURE(source.AddedRegisterBlocks(), yERROR_STATE);
}

TEST(RegisterAssemblyCopy, FailureUnlocksTheOther) {
    TestAssembly source(true);
    source.WithTypes().AddEntries({{"four"}, {"four"}});
    TestAssembly copy(true, 0, 5);
    copy.WithTypes();
    EXPECT_FAILURE(copy.CopySupportedRegisterBlocks(source), yERROR, "No data sources were added.");
    EXPECT_EQ(copy.AddedRegisterBlocksCount(), 1U);
    EXPECT_TEXTLESS_FAILURE(source.AddedRegisterBlocks(), yERROR_STATE);
    ExpectUnlocked(source);
    ExpectUnlocked(copy);
}

TEST(RegisterAssemblyCopy, OfItselfIsEmpty) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four"}});
    assembly.CopySupportedRegisterBlocks(assembly);
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 0U);
}

TEST(RegisterAssembly, RequestsOfAllKindsOnSeveralThreadsLeaveTheBlocksInOrder) {
    const SilentLog silentLog;
    TestAssembly assembly(true);
    assembly.WithTypes();
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&assembly, t] {
            for (int i = 0; i < 40; ++i) {
                // Fails if a request of another thread has removed the block.
                const auto id = static_cast<unsigned short>((7 * i + t) % 50);
                FailureOf([&] { assembly.AddEntries({{"flexible", id}, {"one", id}}, true); });
                FailureOf([&] { assembly.UpdateOne(id, {.outputId = 60, .displayName = "moved"}, true); });
                FailureOf([&] { assembly.RemoveIds({60, id}); });
                FailureOf([&] { assembly.CompactFrom(static_cast<unsigned short>(i % 5)); });
                if (i % 20 == t) {
                    assembly.RemoveAll();
                }
                int previousEnd = -1;
                for (const auto& [first, last, name] : assembly.Places()) {
                    EXPECT_LT(previousEnd, first);
                    previousEnd = last;
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(assembly.CompactFrom(0), 0U);
    const auto places = assembly.Places();
    EXPECT_TRUE(places.empty() || places.front().first == 0);
}

TEST(RegisterAssembly, EditsAndReadsOnSeveralThreadsDontMeet) {
    TestAssembly assembly(false);
    assembly.WithTypes();
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&assembly, t] {
            for (int i = 0; i < 50; ++i) {
                assembly.AddEntries({{"scan", static_cast<unsigned short>(3 * i + t), {}, "s"}});
                assembly.BeginLock();
                int previous = -1;
                for (const auto& block : assembly.AddedRegisterBlocks()) {
                    EXPECT_LT(previous, block->OutputId());
                    previous = block->OutputId();
                }
                assembly.EndLock();
                EXPECT_FALSE(assembly.DataSourceList().empty());
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 150U);
}

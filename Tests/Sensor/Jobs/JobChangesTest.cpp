#include "Sensor/Jobs/JobChanges.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Jobs {
namespace {

using Entries = VorCommon::ArchiveFile::Entries;
using Texts = std::vector<std::string>;

VorCommon::ArchiveFile::Content ContentOf(const std::string& text) {
    return std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end());
}

/// Changes as "ENTRY POINTER: BEFORE -> AFTER".
Texts Changes(const Entries& before, const Entries& after) {
    Texts texts;
    const JobChanges changes = JobChanges::Between(before, after);
    EXPECT_EQ(changes.count, changes.listed.size());
    for (const JobChanges::Change& change : changes.listed) {
        texts.push_back(change.entry + " " + change.pointer + ": " + change.before + " -> " + change.after);
    }
    return texts;
}

Texts Changes(const std::string& before, const std::string& after) {
    return Changes({{"a", ContentOf(before)}}, {{"a", ContentOf(after)}});
}

TEST(JobChangesTest, NothingDiffersBetweenEqualDocuments) {
    EXPECT_EQ(Changes(R"({"x":1,"y":[{"z":null}]})", R"({"x":1,"y":[{"z":null}]})"), Texts{});
    EXPECT_EQ(Changes(R"({"x":1,"y":2})", R"({ "y": 2.0, "x": 1 })"), Texts{}) << "order, spaces and kind of number";
    EXPECT_EQ(Changes(Entries{}, Entries{}), Texts{});
}

TEST(JobChangesTest, EachMemberThatDiffersIsAChange) {
    EXPECT_EQ(Changes(R"({"x":1,"y":{"z":"a","w":true},"u":[1,2,3]})", R"({"x":2,"y":{"z":"b","w":true},"u":[1,4,3]})"),
              (Texts{"a /u/1: 2 -> 4", "a /x: 1 -> 2", R"(a /y/z: "a" -> "b")"}));
    EXPECT_EQ(Changes(R"({"a/b":{"c~d":1}})", R"({"a/b":{"c~d":2}})"), Texts{"a /a~1b/c~0d: 1 -> 2"});
    EXPECT_EQ(Changes("1", "2"), Texts{"a : 1 -> 2"});
}

TEST(JobChangesTest, WhatIsAddedOrRemovedIsListedByItsMembers) {
    EXPECT_EQ(Changes(R"({"u":[{"x":1}]})", R"({"u":[{"x":1},{"x":2,"y":[]}]})"),
              (Texts{"a /u/1/x:  -> 2", "a /u/1/y:  -> []"}));
    EXPECT_EQ(Changes(R"({"u":{"x":{"y":1}},"v":0})", R"({"v":0})"), Texts{"a /u/x/y: 1 -> "});
    EXPECT_EQ(Changes({}, {{"a", ContentOf(R"({"x":1})")}}), Texts{"a /x:  -> 1"});
}

TEST(JobChangesTest, AnotherKindIsOneChange) {
    EXPECT_EQ(Changes(R"({"x":{"y":1}})", R"({"x":[1]})"), Texts{R"(a /x: {"y":1} -> [1])"});
    EXPECT_EQ(Changes(R"({"x":{"y":1}})", R"({"x":null})"), Texts{R"(a /x: {"y":1} -> null)"});
    EXPECT_EQ(Changes(R"({"x":[]})", R"({"x":[1]})"), Texts{"a /x/0:  -> 1"});
}

TEST(JobChangesTest, AnEntryThatIsNoJsonIsComparedAsAWhole) {
    EXPECT_EQ(Changes("\x01", "\x01"), Texts{});
    EXPECT_EQ(Changes("\x01", "\x02"), Texts{"a :  -> "});
    EXPECT_EQ(Changes("{}", "\x02"), Texts{"a :  -> "});
    EXPECT_EQ(Changes("\x02", "{}"), Texts{"a :  -> "});
}

TEST(JobChangesTest, EntriesOfTheFormerContentAloneStay) {
    EXPECT_EQ(Changes({{"a", ContentOf("1")}, {"b", ContentOf("1")}}, {{"a", ContentOf("1")}}), Texts{});
}

TEST(JobChangesTest, TheListIsLimitedAndTheCountIsNot) {
    std::string many = "[0";
    for (int i = 0; i < 2000; ++i) {
        many += ",0";
    }
    const JobChanges byCount = JobChanges::Between({{"a", ContentOf("[]")}}, {{"a", ContentOf(many + "]")}});
    EXPECT_EQ(byCount.listed.size(), JobChanges::MaxListed);
    EXPECT_EQ(byCount.count, 2001U);
    const std::string text(JobChanges::MaxTextSize / 2, 't');
    const JobChanges bySize =
        JobChanges::Between({}, {{"a", ContentOf("[\"" + text + "\",\"" + text + "\",\"" + text + "\"]")}});
    EXPECT_EQ(bySize.listed.size(), 1U);
    EXPECT_EQ(bySize.count, 3U);
}

} // namespace
} // namespace Sensor::Jobs

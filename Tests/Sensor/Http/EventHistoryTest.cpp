#include "Sensor/Http/EventHistory.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

using Kind = EventTopic::Kind;

const EventTopic AllNotices{Kind::Notice, "notice", ""};
const EventTopic State{Kind::State, "state", ""};

EventTopic NoticesOf(const std::string& path) {
    return {Kind::Notice, "notice:" + path, path};
}

class EventHistoryTest : public testing::Test {
protected:
    void AddNotice(const std::string& path, const std::string& data = "d") {
        history.Add({.kind = Kind::Notice, .path = path, .text = nullptr}, "notice", data);
    }

    /// The data of the events, "gap" when they aren't known.
    std::string Since(const std::string& id, const std::vector<EventTopic>& topics = {AllNotices, State}) const {
        const auto events = history.Since(id, topics, limits);
        std::string all;
        for (const EventStream::Text& text : events.value_or(std::vector<EventStream::Text>())) {
            const auto begin = text->find("data: ") + 6;
            all += text->substr(begin, text->size() - begin - 2) + " ";
        }
        return events ? all : "gap";
    }

    EventStream::Limits limits;
    EventHistory history{"b0", 4};
};

TEST_F(EventHistoryTest, AnEventHasTheIdOfItsRunAndItsNumber) {
    EXPECT_EQ(*history.Add({.kind = Kind::State, .path = "", .text = nullptr}, "state", "{}").text,
              "event: state\nid: b0:1\ndata: {}\n\n");
    EXPECT_EQ(*history.Add({.kind = Kind::Notice, .path = "/a", .text = nullptr}, "notice", "1").text,
              "event: notice\nid: b0:2\ndata: 1\n\n");
}

TEST_F(EventHistoryTest, HasWhatHappenedSinceAnId) {
    EXPECT_EQ(Since("b0:0"), "");
    AddNotice("/a", "1");
    AddNotice("/b", "2");
    EXPECT_EQ(Since("b0:0"), "1 2 ");
    EXPECT_EQ(Since("b0:1"), "2 ");
    EXPECT_EQ(Since("b0:2"), "");
}

TEST_F(EventHistoryTest, AnIdThatIsTooOldOrWasNeverGivenIsAGap) {
    for (const char* data : {"1", "2", "3", "4", "5"}) {
        AddNotice("/a", data);
    }
    EXPECT_EQ(Since("b0:1"), "2 3 4 5 ");
    for (const char* id : {"b0:0", "b0:6", "b1:3", "b0", "b0:", "b0:x", "b0:3x", "b0:-1", "b03", ":3", "", "b0:3:4",
                           "b0:99999999999999999999999"}) {
        EXPECT_EQ(Since(id), "gap") << id;
    }
}

TEST_F(EventHistoryTest, MoreThanMayWaitIsAGap) {
    AddNotice("/a", "1");
    AddNotice("/a", "2");
    AddNotice("/b", "3");
    limits.events = 2;
    EXPECT_EQ(Since("b0:0"), "gap");
    EXPECT_EQ(Since("b0:1"), "2 3 ");
    EXPECT_EQ(Since("b0:0", {NoticesOf("/a")}), "1 2 ");
    limits = {.bytes = 80};
    EXPECT_EQ(Since("b0:1"), "2 3 ");
    EXPECT_EQ(Since("b0:0"), "gap");
}

TEST_F(EventHistoryTest, AnEventIsForThoseWhoseTopicsCoverIt) {
    const NumberedEvent notice{.kind = Kind::Notice, .path = "/controls/a/outputs", .text = nullptr};
    EXPECT_TRUE(notice.IsFor({AllNotices}));
    EXPECT_TRUE(notice.IsFor({State, NoticesOf("/controls/a")}));
    EXPECT_TRUE(notice.IsFor({NoticesOf("/controls/a/outputs")}));
    EXPECT_FALSE(notice.IsFor({State}));
    EXPECT_FALSE(notice.IsFor({}));
    EXPECT_FALSE(notice.IsFor({NoticesOf("/controls/a/outputs/x"), NoticesOf("/controls/b"), NoticesOf("/control")}));
    EXPECT_FALSE(notice.IsFor({NoticesOf("/controls/a/out")}));
    const NumberedEvent state{.kind = Kind::State, .path = "", .text = nullptr};
    EXPECT_TRUE(state.IsFor({State}));
    EXPECT_FALSE(state.IsFor({AllNotices}));
}

TEST_F(EventHistoryTest, AReloadIsForAllBelowItsPath) {
    const NumberedEvent reload{.kind = Kind::Notice, .path = "/controls", .isReload = true, .text = nullptr};
    EXPECT_TRUE(reload.IsFor({NoticesOf("/controls/a/outputs")}));
    EXPECT_TRUE(reload.IsFor({NoticesOf("/controls")}));
    EXPECT_TRUE(reload.IsFor({AllNotices}));
    EXPECT_FALSE(reload.IsFor({NoticesOf("/controlTypes")}));
}

} // namespace
} // namespace Sensor::Http

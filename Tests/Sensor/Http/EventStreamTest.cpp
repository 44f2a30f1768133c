#include "Sensor/Http/EventStream.h"

#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

EventStream::Text Text(const std::string& text) {
    return std::make_shared<const std::string>(text);
}

std::string Read(EventStream& stream) {
    std::string out = "<";
    stream.Read(out);
    return out + ">";
}

TEST(EventStream, GivesWhatWaitsInItsOrder) {
    EventStream stream({});
    EXPECT_EQ(Read(stream), "<>");
    stream.Push(Text("a"));
    stream.Push(Text("b"));
    EXPECT_EQ(Read(stream), "<ab>");
    EXPECT_EQ(Read(stream), "<>");
    EXPECT_FALSE(stream.Ended());
}

TEST(EventStream, AnEventWithAKeyReplacesTheOneThatWaits) {
    EventStream stream({});
    stream.Push(Text("x1"), "x");
    stream.Push(Text("n1"));
    stream.Push(Text("y1"), "y");
    stream.Push(Text("x2"), "x");
    stream.Push(Text("n2"));
    EXPECT_EQ(Read(stream), "<x2n1y1n2>");
    stream.Push(Text("x3"), "x");
    EXPECT_EQ(Read(stream), "<x3>");
}

TEST(EventStream, ABigReadIsDoneInPieces) {
    EventStream stream({});
    stream.Push(Text(std::string(65536, 'a')));
    stream.Push(Text("b"), "key");
    EXPECT_EQ(Read(stream).size(), 65538U);
    stream.Push(Text("c"), "key");
    EXPECT_EQ(Read(stream), "<c>");
}

TEST(EventStream, AReaderThatLeavesTooManyEventsIsCutOff) {
    EventStream stream({.events = 3});
    for (const char* event : {"1", "2", "3"}) {
        stream.Push(Text(event));
    }
    EXPECT_FALSE(stream.IsCut());
    stream.Push(Text("k"), "k");
    EXPECT_TRUE(stream.Ended());
    EXPECT_TRUE(stream.IsCut());
    EXPECT_EQ(Read(stream), "<>");
    stream.Push(Text("late"));
    EXPECT_EQ(Read(stream), "<>");
}

TEST(EventStream, AReaderThatLeavesTooManyBytesIsCutOff) {
    EventStream stream({.bytes = 10});
    stream.Push(Text("12345"), "k");
    stream.Push(Text("1234567890"), "k");
    EXPECT_FALSE(stream.Ended());
    EXPECT_EQ(Read(stream), "<1234567890>");
    stream.Push(Text("1234567890"));
    EXPECT_FALSE(stream.Ended());
    stream.Push(Text("1"));
    EXPECT_TRUE(stream.Ended());
    EXPECT_TRUE(stream.IsCut());
}

TEST(EventStream, EndsBehindWhatWaits) {
    EventStream stream({});
    stream.Push(Text("a"));
    stream.End();
    EXPECT_FALSE(stream.Ended());
    EXPECT_EQ(Read(stream), "<a>");
    EXPECT_TRUE(stream.Ended());
    EXPECT_FALSE(stream.IsCut());
}

TEST(EventStream, IsReadOnOneThreadAndFilledOnAnother) {
    constexpr int Count = 20000;
    EventStream stream({.events = Count});
    std::thread filler([&] {
        for (int i = 0; i < Count; ++i) {
            stream.Push(Text("."));
        }
        stream.End();
    });
    std::string all;
    while (!stream.Ended()) {
        stream.Read(all);
    }
    filler.join();
    EXPECT_EQ(all.size(), static_cast<std::size_t>(Count));
}

} // namespace
} // namespace Sensor::Http

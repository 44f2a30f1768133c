#include "VorPipe/PipeManager.h"

#include "Tests/Support/Failure.h"

#include <atomic>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

namespace VorPipe {
namespace {

PipeOutput Measurement(const std::string& name, const std::string& displayName = "Value") {
    return {name, "Tool", displayName, {PipeDataType::Measurement, false}};
}

/// Notes the events of a manager in order, as "created a".
class EventLog {
public:
    explicit EventLog(PipeManager& manager)
        : manager(manager)
        , created(manager.OutputCreatedEvent().AddListener([this](const std::string& name) { Note("created", name); }))
        , deleted(manager.OutputDeletedEvent().AddListener([this](const std::string& name) { Note("deleted", name); }))
        , updated(
              manager.OutputUpdatedEvent().AddListener([this](const std::string& name) { Note("updated", name); })) {}
    ~EventLog() {
        manager.OutputCreatedEvent().RemoveListener(created);
        manager.OutputDeletedEvent().RemoveListener(deleted);
        manager.OutputUpdatedEvent().RemoveListener(updated);
    }

    std::vector<std::string> lines;

private:
    void Note(const std::string& what, const std::string& name) { lines.push_back(what + " " + name); }

    PipeManager& manager;
    Vor::LockedEvent<std::string>::CallbackId created;
    Vor::LockedEvent<std::string>::CallbackId deleted;
    Vor::LockedEvent<std::string>::CallbackId updated;
};

TEST(PipeManager, ListsWhatWasAdded) {
    PipeManager manager;
    EventLog log(manager);
    manager.Add({"b", "Tool", "Text", {PipeDataType::String, true}});
    manager.Add(Measurement("a"));
    EXPECT_EQ(manager.List(), (std::vector<std::string>{"a", "b"}));
    const PipeOutput output = manager.Output("b");
    EXPECT_EQ(output.name, "b");
    EXPECT_EQ(output.ownerName, "Tool");
    EXPECT_EQ(output.displayName, "Text");
    EXPECT_EQ(output.format.type, PipeDataType::String);
    EXPECT_TRUE(output.format.arrayed);
    EXPECT_EQ(log.lines, (std::vector<std::string>{"created b", "created a"}));
}

TEST(PipeManager, RefusesANameThatIsInUse) {
    PipeManager manager;
    manager.Add(Measurement("a", "First"));
    EventLog log(manager);
    EXPECT_FAILURE(manager.Add(Measurement("a", "Second")), yERROR_ALREADY_EXISTS,
                   "There is a data source 'a' already.");
    EXPECT_EQ(manager.Output("a").displayName, "First");
    EXPECT_TRUE(log.lines.empty());
}

TEST(PipeManager, RaisesTheUpdatedEventAfterTheUpdate) {
    PipeManager manager;
    manager.Add(Measurement("a", "First"));
    std::string seen;
    auto id = manager.OutputUpdatedEvent().AddListener(
        [&](const std::string& name) { seen = manager.Output(name).displayName; });
    manager.Update(Measurement("a", "Second"));
    EXPECT_EQ(seen, "Second");
    manager.OutputUpdatedEvent().RemoveListener(id);
}

TEST(PipeManager, ADeletedOutputIsStillKnownToTheHandlersOfItsDeletion) {
    PipeManager manager;
    manager.Add(Measurement("a", "First"));
    std::string seen;
    auto id = manager.OutputDeletedEvent().AddListener(
        [&](const std::string& name) { seen = manager.Output(name).displayName; });
    manager.Remove("a");
    EXPECT_EQ(seen, "First");
    EXPECT_TRUE(manager.List().empty());
    EXPECT_FAILURE(manager.Output("a"), yERROR_NOT_FOUND, "There is no data source 'a'.");
    manager.OutputDeletedEvent().RemoveListener(id);
}

TEST(PipeManager, AHandlerThatThrowsDoesntKeepADeletedOutput) {
    PipeManager manager;
    manager.Add(Measurement("a"));
    auto id = manager.OutputDeletedEvent().AddListener([](const std::string&) { throw std::runtime_error("broken"); });
    EXPECT_THROW(manager.Remove("a"), std::runtime_error);
    EXPECT_TRUE(manager.List().empty());
    manager.OutputDeletedEvent().RemoveListener(id);
}

TEST(PipeManager, RefusesUnknownNamesWithoutAnEvent) {
    PipeManager manager;
    EventLog log(manager);
    EXPECT_FAILURE(manager.Update(Measurement("a")), yERROR_NOT_FOUND, "There is no data source 'a'.");
    EXPECT_FAILURE(manager.Remove("a"), yERROR_NOT_FOUND, "There is no data source 'a'.");
    EXPECT_FAILURE(manager.Output("a"), yERROR_NOT_FOUND, "There is no data source 'a'.");
    EXPECT_TRUE(manager.List().empty());
    EXPECT_TRUE(log.lines.empty());
}

TEST(PipeManager, IsReadOnAnotherThreadWhileOutputsComeAndGo) {
    PipeManager manager;
    manager.Add(Measurement("stays"));
    std::atomic<bool> done{false};
    std::atomic<std::size_t> wrong{0};
    std::thread reader([&] {
        while (!done) {
            if (manager.Output("stays").ownerName != "Tool" || manager.List().back() != "stays") {
                ++wrong;
            }
        }
    });
    for (int round = 0; round < 200; ++round) {
        manager.Add(Measurement("a"));
        manager.Update(Measurement("stays"));
        manager.Remove("a");
    }
    done = true;
    reader.join();
    EXPECT_EQ(wrong, 0U);
}

} // namespace
} // namespace VorPipe

#pragma once

#include "Services/Ascii/LineFormat.h"
#include "Services/Ascii/PushQueue.h"
#include "Services/Ascii/Request.h"
#include "Services/Ascii/ValueText.h"
#include "VorApi/Object.h"
#include "VorMsg/ResultSet.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Services::Ascii {

/// What clients can ask for: a block of the assembly, by its number, or an entry of the output map, by its name.
struct OutputDefinition {
    std::string id; ///< of a block its number, in decimal
    bool isBlock = false;
    ValueKind kind = ValueKind::Any;
    std::string dataSource;
};

/// The outputs with their last values, and the clients to whom each frame is told. What is read at once belongs to one
/// frame. Any thread.
class Outputs {
public:
    /// The longest answer, and the longest line of a frame.
    static constexpr std::size_t MaxLineSize = std::size_t{32} * 1024;

    /// Takes the outputs as they are now. One whose data source had a value keeps it.
    void Replace(const std::vector<OutputDefinition>& definitions);
    /// Writes values in another way from now on.
    void SetFormat(const LineFormat& next);
    /// Forgets all values, and begins anew to count frames.
    void Reset();

    /// Takes the results of one frame and tells it to all subscribers. Returns whether there was any line to tell.
    /// Allocates nothing, once the lines have reached their size.
    bool Process(ResultSet set);

    /// Appends the fields of outputs, each behind a delimiter. Without any id it takes all blocks or, if there are
    /// none, all entries of the map. Throws yERROR_NOT_FOUND for an output that there isn't, and yERROR_SIZE when the
    /// line would be longer than MaxLineSize.
    void AppendValues(std::string& line, const std::vector<Argument>& ids);
    /// Appends the last stamp among the outputs. Throws yERROR_NOT_FOUND when no output is a stamp.
    void AppendStamp(std::string& line);
    /// Appends of each output its id, and its data source. Throws yERROR_SIZE as AppendValues does.
    void AppendList(std::string& line) const;

    /// Tells each frame to a queue, as long as somebody else holds it. Throws what AppendValues throws. An output that
    /// is taken away later has no value.
    void Subscribe(const std::shared_ptr<PushQueue>& queue, const std::vector<Argument>& ids);
    void Unsubscribe(const PushQueue* queue);
    /// Lines that had no room in their queue.
    std::uint64_t Dropped() const;

private:
    struct Source {
        Vor::Object lastItem;
        std::uint64_t version = 0; ///< changes with the item
    };
    struct Column {
        OutputDefinition definition;
        std::size_t source;
        std::string text; ///< of the item of `version`
        std::uint64_t version;
    };
    struct Subscription {
        std::weak_ptr<PushQueue> queue;
        std::vector<Argument> ids;
        std::vector<std::optional<std::size_t>> columns;
    };

    /// All of these expect the caller to hold the mutex.
    std::optional<std::size_t> Find(const Argument& id) const;
    std::vector<std::optional<std::size_t>> Resolve(const std::vector<Argument>& ids) const;
    const std::string& TextOf(Column& column);
    void AppendColumns(std::string& line, const std::vector<std::optional<std::size_t>>& chosen);
    bool PushFrame();

    /// Guards the members below. Nothing is locked under it but the queues; it is held for the writing of a frame.
    mutable std::mutex mutex;
    LineFormat format;
    std::vector<Column> columns;
    std::unordered_map<std::string, std::size_t> blocks; ///< the columns by their ids
    std::unordered_map<std::string, std::size_t> names;
    std::vector<Source> sources;
    std::unordered_map<unsigned long, std::size_t> sourcesById; ///< by numeric id
    std::vector<Subscription> subscriptions;
    std::uint64_t frames = 0;
    std::uint64_t version = 0;
    std::uint64_t dropped = 0;
    std::string line;
};

} // namespace Services::Ascii

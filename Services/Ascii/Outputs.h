#pragma once

#include "Services/Ascii/LineFormat.h"
#include "Services/Ascii/PushQueue.h"
#include "Services/Ascii/Request.h"
#include "Services/Ascii/ValueText.h"
#include "Services/Common/Registers/LatestResults.h"
#include "Services/Common/ServiceCounters.h"
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

/// What clients can request: a block of the assembly, by its number, or an entry of the output map, by its name.
struct OutputDefinition {
    std::string id; ///< the name, or the decimal number of a block
    bool isBlock = false;
    ValueKind kind = ValueKind::Any;
    std::string dataSource;
};

/// The outputs with their last values, and the queues of the clients to whom each frame is sent. The values that one
/// call reads belong to one frame. For any thread.
class Outputs {
public:
    /// The lines for which a queue had no room are counted as dropped.
    explicit Outputs(Common::ServiceCounters& counters)
        : counters(counters) {}

    /// The longest answer, and the longest line of a frame.
    static constexpr std::size_t MaxLineSize = std::size_t{32} * 1024;

    /// Replaces all outputs. The last values of their data sources stay.
    void Replace(const std::vector<OutputDefinition>& definitions);
    /// Sets the format for the values from now on.
    void SetFormat(const LineFormat& next);
    /// Removes all values, and sets the count of frames to 0.
    void Reset();

    /// Stores the results of one frame and adds its line to the queue of each subscriber. Returns whether a line was
    /// added. Allocates nothing, once the lines have reached their size.
    bool Process(ResultSet set);

    /// Appends the fields of outputs, each after a delimiter. Without ids these are all blocks or, if there are none,
    /// all entries of the map. Throws yERROR_NOT_FOUND for an unknown output, and yERROR_SIZE when the line would be
    /// longer than MaxLineSize.
    void AppendValues(std::string& line, const std::vector<Argument>& ids);
    /// Appends the last stamp among the outputs. Throws yERROR_NOT_FOUND when no output is a stamp.
    void AppendStamp(std::string& line);
    /// Appends id and data source of each output. Throws yERROR_SIZE as AppendValues does.
    void AppendList(std::string& line) const;

    /// Adds a line for each frame to a queue, until Unsubscribe or until nobody else holds the queue. Throws what
    /// AppendValues throws. An output that is removed later has no value in these lines.
    void Subscribe(const std::shared_ptr<PushQueue>& queue, const std::vector<Argument>& ids);
    void Unsubscribe(const PushQueue* queue);

private:
    struct Column {
        OutputDefinition definition;
        std::size_t source; ///< its place in `latest`
        std::string text;   ///< the fields of the result of `version`
        std::uint64_t version;
    };
    struct Subscription {
        std::weak_ptr<PushQueue> queue;
        std::vector<Argument> ids;
        std::vector<std::optional<std::size_t>> columns;
    };

    /// The caller of these holds the mutex.
    std::optional<std::size_t> Find(const Argument& id) const;
    std::vector<std::optional<std::size_t>> Resolve(const std::vector<Argument>& ids) const;
    const std::string& TextOf(Column& column);
    void AppendColumns(std::string& line, const std::vector<std::optional<std::size_t>>& chosen);
    bool PushFrame();

    Common::ServiceCounters& counters;
    /// Guards the members below, while a frame is stored and written. Only the mutexes of the queues are locked under
    /// it.
    mutable std::mutex mutex;
    LineFormat format;
    std::vector<Column> columns;
    std::unordered_map<std::string, std::size_t> blocks; ///< the columns by their ids
    std::unordered_map<std::string, std::size_t> names;
    Common::LatestResults latest;
    std::vector<std::uint64_t> versions; ///< of the data sources in `latest`: change with their results
    std::vector<Subscription> subscriptions;
    std::uint64_t frames = 0;
    std::uint64_t version = 0;
    std::string line;
};

} // namespace Services::Ascii

#include "Services/Ascii/Outputs.h"

#include "Vor/Exception.h"
#include "VorMsg/ResultInfo.h"
#include "VorMsg/ResultItem.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace Services::Ascii {

namespace {

void CheckSize(const std::string& line) {
    if (line.size() > Outputs::MaxLineSize) {
        Vor::Throw(yERROR_SIZE, "the line would be longer than %u bytes; name fewer outputs",
                   static_cast<unsigned>(Outputs::MaxLineSize));
    }
}

bool IsStamp(ResultItem item) {
    return item != nullptr && ResultInfo_Type(ResultItem_ResultInfo(item)) == ResultInfo_TypeStamp;
}

} // namespace

void Outputs::Replace(const std::vector<OutputDefinition>& definitions) {
    const std::lock_guard lock(mutex);
    std::vector<std::string> dataSources;
    dataSources.reserve(definitions.size());
    for (const OutputDefinition& definition : definitions) {
        dataSources.push_back(definition.dataSource);
    }
    const std::vector<std::size_t> places = latest.Replace(dataSources);
    versions.assign(latest.Count(), ++version);
    columns.clear();
    blocks.clear();
    names.clear();
    for (std::size_t i = 0; i < definitions.size(); ++i) {
        (definitions[i].isBlock ? blocks : names).try_emplace(definitions[i].id, i);
        columns.push_back({definitions[i], places[i], {}, 0});
    }
    for (Subscription& subscription : subscriptions) {
        subscription.columns = Resolve(subscription.ids);
    }
}

void Outputs::SetFormat(const LineFormat& next) {
    const std::lock_guard lock(mutex);
    format = next;
    for (Column& column : columns) {
        column.version = 0;
    }
}

void Outputs::Reset() {
    const std::lock_guard lock(mutex);
    latest.Forget();
    versions.assign(latest.Count(), ++version);
    frames = 0;
}

bool Outputs::Process(ResultSet set) {
    const std::lock_guard lock(mutex);
    ++frames;
    ++version;
    latest.Store(set, [this](std::size_t source, ResultItem) { versions[source] = version; });
    return PushFrame();
}

bool Outputs::PushFrame() {
    bool pushed = false;
    for (std::size_t i = 0; i < subscriptions.size();) {
        const auto queue = subscriptions[i].queue.lock();
        if (queue == nullptr) {
            subscriptions.erase(subscriptions.begin() + static_cast<std::ptrdiff_t>(i));
            continue;
        }
        line = "DATA";
        line += format.delimiter;
        std::array<char, 24> digits;
        line.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), frames).ptr);
        AppendColumns(line, subscriptions[i].columns);
        line += format.terminator;
        if (line.size() <= MaxLineSize && queue->Add(line)) {
            pushed = true;
        } else {
            counters.linesDropped.fetch_add(1, std::memory_order_relaxed);
        }
        ++i;
    }
    return pushed;
}

void Outputs::AppendValues(std::string& answer, const std::vector<Argument>& ids) {
    const std::lock_guard lock(mutex);
    const auto chosen = Resolve(ids);
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (!chosen[i]) {
            Vor::Throw(yERROR_NOT_FOUND, "there is no output %s", ids[i].text);
        }
    }
    AppendColumns(answer, chosen);
    CheckSize(answer);
}

void Outputs::AppendStamp(std::string& answer) {
    const std::lock_guard lock(mutex);
    Column* stamp = nullptr;
    for (Column& column : columns) {
        if (column.definition.kind == ValueKind::Stamp ||
            (column.definition.kind == ValueKind::Any && IsStamp(latest.At(column.source)))) {
            stamp = &column;
            break;
        }
    }
    if (stamp == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND, "no output is a stamp");
    }
    answer += format.delimiter;
    answer += TextOf(*stamp);
}

void Outputs::AppendList(std::string& answer) const {
    const std::lock_guard lock(mutex);
    for (const Column& column : columns) {
        answer += format.delimiter;
        if (column.definition.isBlock) {
            answer += column.definition.id;
        } else {
            AppendQuoted(answer, column.definition.id);
        }
        answer += format.delimiter;
        AppendQuoted(answer, column.definition.dataSource);
        CheckSize(answer);
    }
}

void Outputs::Subscribe(const std::shared_ptr<PushQueue>& queue, const std::vector<Argument>& ids) {
    std::string probe;
    AppendValues(probe, ids);
    const std::lock_guard lock(mutex);
    subscriptions.push_back({queue, ids, Resolve(ids)});
}

void Outputs::Unsubscribe(const PushQueue* queue) {
    const std::lock_guard lock(mutex);
    std::erase_if(subscriptions, [&](const Subscription& each) { return each.queue.lock().get() == queue; });
}

// A number without quotation marks is a block's if there is such a block; everything else is a name.
std::optional<std::size_t> Outputs::Find(const Argument& id) const {
    if (!id.isQuoted) {
        const auto block = blocks.find(id.text);
        if (block != blocks.end()) {
            return block->second;
        }
    }
    const auto name = names.find(id.text);
    return name == names.end() ? std::nullopt : std::optional(name->second);
}

std::vector<std::optional<std::size_t>> Outputs::Resolve(const std::vector<Argument>& ids) const {
    std::vector<std::optional<std::size_t>> chosen;
    if (ids.empty()) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (columns[i].definition.isBlock || blocks.empty()) {
                chosen.emplace_back(i);
            }
        }
        return chosen;
    }
    for (const Argument& id : ids) {
        chosen.push_back(Find(id));
    }
    return chosen;
}

const std::string& Outputs::TextOf(Column& column) {
    if (column.version != versions[column.source]) {
        column.text.clear();
        AppendValue(column.text, format, column.definition.kind, latest.At(column.source));
        column.version = versions[column.source];
    }
    return column.text;
}

// Stops as soon as the line is longer than MaxLineSize.
void Outputs::AppendColumns(std::string& answer, const std::vector<std::optional<std::size_t>>& chosen) {
    for (const auto& place : chosen) {
        if (answer.size() > MaxLineSize) {
            return;
        }
        answer += format.delimiter;
        answer += place ? TextOf(columns[*place]) : format.invalidText;
    }
}

} // namespace Services::Ascii

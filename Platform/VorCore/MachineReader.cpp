#include "VorCore/MachineReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <utility>

namespace VorCore {

namespace fs = std::filesystem;

namespace {

using VorCommon::CommonMetrics::LinkState;

/// The kernel's number of a loopback interface's type, ARPHRD_LOOPBACK.
constexpr long long LoopbackType = 772;

/// The first word of a file; empty when it can't be read.
std::string ReadWord(const fs::path& path) {
    std::ifstream file(path);
    std::string word;
    file >> word;
    return word;
}

/// The number at the beginning of a file; 0 when it can't be read.
long long ReadNumber(const fs::path& path) {
    std::ifstream file(path);
    long long number = 0;
    return file >> number ? number : 0;
}

/// Sizes of /proc/meminfo in bytes by name.
std::map<std::string, unsigned long long> ReadMemoryInfo(const fs::path& path) {
    std::map<std::string, unsigned long long> sizes;
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::string name;
        unsigned long long kilobytes = 0;
        if (fields >> name >> kilobytes && !name.empty()) {
            name.pop_back(); // the colon
            sizes[name] = kilobytes * 1024;
        }
    }
    return sizes;
}

LinkState LinkStateOf(const fs::path& interface) {
    const std::string state = ReadWord(interface / "operstate");
    // A driver that doesn't report its state may still report whether there is a carrier.
    const bool up = state == "up" || (state == "unknown" && ReadNumber(interface / "carrier") == 1);
    return up ? LinkState::Up : LinkState::Down;
}

/// The device of the nearest folder, from `folder` upwards, that exists, and where that device is mounted.
std::optional<std::pair<dev_t, fs::path>> VolumeOf(const std::string& folder) {
    std::error_code error;
    fs::path path = fs::weakly_canonical(fs::absolute(folder, error), error);
    struct stat status {};
    while (stat(path.c_str(), &status) != 0) {
        if (!path.has_relative_path()) {
            return std::nullopt;
        }
        path = path.parent_path();
    }
    const dev_t device = status.st_dev;
    while (path.has_relative_path() && stat(path.parent_path().c_str(), &status) == 0 && status.st_dev == device) {
        path = path.parent_path();
    }
    return std::pair(device, path);
}

} // namespace

MachineReader::MachineReader(std::vector<std::string> storageFolders, fs::path root)
    : storageFolders(std::move(storageFolders))
    , root(std::move(root)) {}

void MachineReader::Read(CoreMetrics::CoreMetricsGroup& metrics) {
    ReadUpTime(metrics);
    ReadProcessors(metrics);
    ReadMemory(metrics);
    ReadNetwork(metrics);
    ReadStorage(metrics);
}

void MachineReader::ReadUpTime(CoreMetrics::CoreMetricsGroup& metrics) const {
    metrics.upTime = static_cast<unsigned long long>(std::max(0LL, ReadNumber(root / "proc/uptime")));
}

void MachineReader::ReadProcessors(CoreMetrics::CoreMetricsGroup& metrics) {
    // User, nice, system, idle, waiting for I/O, interrupts, soft interrupts, stolen. Guests are part of user and nice.
    constexpr std::size_t FieldCount = 8;
    constexpr std::size_t IdleField = 3;
    constexpr std::size_t WaitField = 4;

    ProcessorTime now;
    unsigned long long count = 0;
    std::ifstream file(root / "proc/stat");
    std::string line;
    while (std::getline(file, line) && line.starts_with("cpu")) {
        std::istringstream fields(line);
        std::string name;
        fields >> name;
        if (name != "cpu") {
            ++count;
            continue;
        }
        unsigned long long ticks = 0;
        for (std::size_t field = 0; field < FieldCount && fields >> ticks; ++field) {
            now.total += ticks;
            if (field != IdleField && field != WaitField) {
                now.busy += ticks;
            }
        }
    }
    metrics.cpuCount = count;
    if (!readBefore || now.total == 0) {
        metrics.cpuUsage = 0ULL;
    } else if (now.total > previous.total) {
        // The kernel's count of waiting time may decrease, so the busy time may grow by more than the total.
        const unsigned long long busy = now.busy > previous.busy ? now.busy - previous.busy : 0;
        metrics.cpuUsage = std::min(100ULL, busy * 100 / (now.total - previous.total));
    }
    previous = now;
    readBefore = true;
}

void MachineReader::ReadMemory(CoreMetrics::CoreMetricsGroup& metrics) const {
    const auto sizes = ReadMemoryInfo(root / "proc/meminfo");
    const auto sizeOf = [&](const char* name) {
        const auto found = sizes.find(name);
        return found == sizes.end() ? 0ULL : found->second;
    };
    const unsigned long long capacity = sizeOf("MemTotal");
    const unsigned long long available = std::min(capacity, sizeOf("MemAvailable"));
    metrics.memoryCapacity = capacity;
    metrics.memoryUsed = capacity - available;
    metrics.memoryAvailable = available;
}

void MachineReader::ReadNetwork(CoreMetrics::CoreMetricsGroup& metrics) const {
    std::set<fs::path> interfaces;
    std::error_code error;
    for (fs::directory_iterator entry(root / "sys/class/net", error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        if (ReadNumber(entry->path() / "type") != LoopbackType && fs::is_directory(entry->path(), error)) {
            interfaces.insert(entry->path());
        }
    }
    metrics.networkInterfaces.Resize(interfaces.size());
    unsigned long index = 0;
    for (const fs::path& interface : interfaces) {
        auto& item = metrics.networkInterfaces.At(index++);
        item.name = interface.filename().string();
        item.linkState = LinkStateOf(interface);
        // Megabits a second; -1 when the link is down.
        item.linkSpeed = static_cast<unsigned long long>(std::max(0LL, ReadNumber(interface / "speed"))) * 1'000'000;
    }
}

void MachineReader::ReadStorage(CoreMetrics::CoreMetricsGroup& metrics) const {
    std::set<dev_t> seen;
    unsigned long count = 0;
    for (const std::string& folder : storageFolders) {
        const auto volume = VolumeOf(folder);
        struct statvfs figures {};
        if (!volume || !seen.insert(volume->first).second || statvfs(volume->second.c_str(), &figures) != 0) {
            continue;
        }
        metrics.storageVolumes.Resize(std::max(metrics.storageVolumes.Count(), count + 1));
        auto& item = metrics.storageVolumes.At(count++);
        const unsigned long long unit = figures.f_frsize;
        item.name = volume->second.string();
        item.capacity = unit * figures.f_blocks;
        item.used = unit * (figures.f_blocks - figures.f_bfree);
        item.available = unit * figures.f_bavail;
    }
    metrics.storageVolumes.Resize(count);
}

} // namespace VorCore

#pragma once

#include "VorCore/CoreMetrics/CoreMetricsGroup.h"

#include <filesystem>
#include <string>
#include <vector>

namespace VorCore {

/// Reads the figures of a Linux machine. One that the machine doesn't report is 0. For one thread at a time.
class MachineReader {
public:
    /// `root` is the folder that contains proc and sys.
    explicit MachineReader(std::vector<std::string> storageFolders, std::filesystem::path root = "/");

    /// Sets every member. The usage of the processors is that since the previous call, 0 at first. Network interfaces
    /// come in order of their names, without loopback; storage volumes in order of the folders, each once.
    void Read(CoreMetrics::CoreMetricsGroup& metrics);

private:
    void ReadUpTime(CoreMetrics::CoreMetricsGroup& metrics) const;
    void ReadProcessors(CoreMetrics::CoreMetricsGroup& metrics);
    void ReadMemory(CoreMetrics::CoreMetricsGroup& metrics) const;
    void ReadNetwork(CoreMetrics::CoreMetricsGroup& metrics) const;
    void ReadStorage(CoreMetrics::CoreMetricsGroup& metrics) const;

    /// Processor time since the machine started, in ticks of all processors.
    struct ProcessorTime {
        unsigned long long busy = 0;
        unsigned long long total = 0;
    };

    const std::vector<std::string> storageFolders;
    const std::filesystem::path root;
    ProcessorTime previous;  ///< at the last call of Read
    bool readBefore = false; ///< `previous` is set
};

} // namespace VorCore

#pragma once

#include "Vor/Exception.h"
#include "VorCommon/IPersistStore.h"
#include "yApi/yStatus.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Tests {

/// The files of a domain in memory. Read returns buffers with an offset, and with other bytes after the file's.
class MemoryStore : public VorCommon::IPersistStore {
public:
    VorCommon::PersistBuffer Read(const std::string& path) const override {
        reads.push_back(path);
        Vor::ThrowIfFailed(readStatus);
        const auto found = files.find(path);
        if (found == files.end()) {
            Vor::Throw(yERROR_NOT_FOUND);
        }
        const std::string before = "not this";
        const auto bytes = std::make_shared<const std::string>(before + found->second + "nor this");
        VorCommon::PersistBuffer buffer;
        buffer.pointer = reinterpret_cast<const unsigned char*>(bytes->data());
        buffer.offset = before.size();
        buffer.size = found->second.size();
        buffer.owner = bytes;
        return buffer;
    }

    void Write(const std::string& path, const void* bytes, std::size_t size) override {
        Vor::ThrowIfFailed(writeStatus);
        files[path].assign(static_cast<const char*>(bytes), size);
        writes.push_back(path);
    }

    bool Exists(const std::string& path) const override { return files.count(path) != 0; }

    std::map<std::string, std::string> files;
    mutable std::vector<std::string> reads;
    std::vector<std::string> writes;
    yStatus readStatus = yOK;
    yStatus writeStatus = yOK;
};

} // namespace Tests

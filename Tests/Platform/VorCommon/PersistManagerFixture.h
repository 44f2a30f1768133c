#pragma once

#include "Tests/Platform/VorCommon/ArchiveContent.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/Exception.h"
#include "VorCommon/ArchiveFile.h"
#include "VorCommon/IPersistHandler.h"
#include "VorCommon/PersistManager.h"
#include "VorCommon/RuntimeCache.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Tests {

using VorCommon::ArchiveFile;
using VorCommon::IPersistHandler;
using VorCommon::IPersistStore;
using VorCommon::PersistDomain;
using VorCommon::PersistDomain_Name;
using VorCommon::PersistManager;

using Names = std::vector<std::string>;

inline void Put(IPersistStore& store, const std::string& path, const std::string& content) {
    store.Write(path, content.data(), content.size());
}

inline std::string Get(const IPersistStore& store, const std::string& path) {
    const VorCommon::PersistBuffer buffer = store.Read(path);
    return {reinterpret_cast<const char*>(buffer.pointer) + buffer.offset, buffer.size};
}

inline std::string Entry(const std::string& file, const std::string& name) {
    const ArchiveFile::Entries entries = ArchiveFile(file).Read();
    const auto found = entries.find(name);
    return found == entries.end() ? "(none)" : std::string(found->second->begin(), found->second->end());
}

/// Records its calls in a list that handlers may share, and calls the functions that a test has set.
class Handler : public IPersistHandler {
public:
    Handler(const char* name, Names& calls)
        : name(name)
        , calls(calls) {}

    const char* Component() override { return name; }

    void InitPersistDomain(PersistDomain domain, IPersistStore& store) override {
        Note("init", domain);
        if (onInit) {
            onInit(domain, store);
        }
    }

    void LoadPersistDomain(PersistDomain domain, const IPersistStore& store) override {
        Note("load", domain);
        if (onLoad) {
            onLoad(domain, store);
        }
    }

    void SavePersistDomain(PersistDomain domain, IPersistStore& store) override {
        Note("save", domain);
        if (onSave) {
            onSave(domain, store);
        }
    }

    std::function<void(PersistDomain, IPersistStore&)> onInit;
    std::function<void(PersistDomain, const IPersistStore&)> onLoad;
    std::function<void(PersistDomain, IPersistStore&)> onSave;

private:
    void Note(const std::string& action, PersistDomain domain) {
        calls.push_back(std::string(name) + " " + action + " " + PersistDomain_Name(domain));
    }

    const char* name;
    Names& calls;
};

/// A manager of the job "part" in a folder of its own, with the handler `first`.
class PersistManagerTest : public testing::Test {
protected:
    ~PersistManagerTest() override { yFault_Clear(); }

    void Start() {
        manager = std::make_unique<PersistManager>(environ);
        jobId = manager->Register(first, "");
    }

    void MakeFiles() {
        ArchiveFile(jobPath).Write({{"setting", Bytes("stored")}});
        ArchiveFile(workspacePath).Write({{"setting", Bytes("stored")}});
    }

    Tests::TempFolder folder;
    const std::string jobPath = folder.File("jobs/part.vrjob");
    const std::string workspacePath = folder.File("workspace.vrdata");
    VorCommon::RuntimeCache cache;
    PersistManager::Environ environ{.dataFolder = folder.Path().string(), .job = "part", .runtimeCache = &cache};
    Names calls;
    Handler first{"first", calls};
    Handler second{"second", calls};
    unsigned long long jobId = 0;
    std::unique_ptr<PersistManager> manager;
};

} // namespace Tests

#pragma once

#include "VorCommon/IPersistHandler.h"
#include "VorCommon/IPersistRegistrar.h"

#include <functional>
#include <string>
#include <vector>

namespace Tests {

/// Records its calls. A hook runs before its call and may throw.
class RecordingRegistrar : public VorCommon::IPersistRegistrar {
public:
    struct Announcement {
        VorCommon::IPersistHandler* handler;
        VorCommon::PersistDomain domain;
        int flag;
    };

    unsigned long long Register(VorCommon::IPersistHandler& newHandler, const std::string& newText) override {
        if (onRegister) {
            onRegister();
        }
        handler = &newHandler;
        text = newText;
        ++registerCount;
        return 17;
    }

    void Deregister(unsigned long long id) override {
        if (onDeregister) {
            onDeregister();
        }
        deregistered.push_back(id);
        handler = nullptr;
    }

    void Announce(VorCommon::IPersistHandler& from, VorCommon::PersistDomain domain, int flag) override {
        announcements.push_back({&from, domain, flag});
    }

    VorCommon::IPersistHandler* handler = nullptr;
    std::string text = "not registered";
    int registerCount = 0;
    std::vector<unsigned long long> deregistered;
    std::vector<Announcement> announcements;
    std::function<void()> onRegister;
    std::function<void()> onDeregister;
};

} // namespace Tests

#pragma once

#include "FakeControlInstance.h"
#include "Tests/Support/MemoryStore.h"
#include "Tests/Support/Translations.h"
#include "Vor/Logging.h"
#include "VorCommon/PersistDomain.h"
#include "VorControl/Persistence/PersistControl.h"
#include "yApi/yFault.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace Tests {

/// A service "fake" with a store.
class PersistControlFixture : public testing::Test {
protected:
    ~PersistControlFixture() override { yFault_Clear(); }

    void Load(const std::string& content, VorCommon::PersistDomain domain = VorCommon::PersistDomain::Job) {
        store.files[FakeControlInstance::Path] = content;
        control.Load(instance, domain, store);
    }

    void ExpectForUser(std::uint64_t level, const std::string& text, const std::string& format) const {
        EXPECT_EQ(log.Count(level, text), 1U) << text;
        EXPECT_TRUE(WasTranslated("beApp.ctrl", format)) << format;
        for (const Vor::LogRecord& record : log.Records()) {
            if (record.text == text && record.level == level) {
                EXPECT_EQ(record.title, "VorControl");
            }
        }
    }

    Vor::LogCapture log;
    MemoryStore store;
    FakeControlInstance instance;
    VorControl::PersistControl control;
};

} // namespace Tests

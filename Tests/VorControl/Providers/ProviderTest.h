#pragma once

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/DomainService.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Vor/Logging.h"
#include "yApi/yFault.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {

/// A service "Display" with its provider, for which a test registers what it keeps.
class ProviderTest : public testing::Test {
protected:
    using Json = nlohmann::json;
    using Result = VorControl::Persistence::PersistLoadResult;
    using Domain = VorCommon::PersistDomain;
    using Calls = std::vector<std::string>;

    ProviderTest() { log.Clear(); }
    ~ProviderTest() override { yFault_Clear(); }

    Result Load(const std::string& section, Domain domain = Domain::Job) {
        return provider.Load(domain, Json::parse(section));
    }
    Json Save(Domain domain = Domain::Job) {
        Json section;
        provider.Save(domain, section);
        return section;
    }

    /// `format` is the text that is translated.
    void ExpectForUser(std::uint64_t level, const std::string& text, const std::string& format) const {
        EXPECT_EQ(log.Count(level, text), 1U) << text;
        EXPECT_TRUE(WasTranslated("VorControl", format)) << format;
        EXPECT_TRUE(WasTranslated("control", "ControlPersistProvider"));
        for (const Vor::LogRecord& record : log.Records()) {
            if (record.text == text && record.level == level) {
                EXPECT_EQ(record.title, "ControlPersistProvider");
            }
        }
    }
    std::size_t UserEntries() const {
        return log.CountLevel(Vor::UserInfo) + log.CountLevel(Vor::UserWarning) + log.CountLevel(Vor::UserError);
    }
    /// The entry at error level, with the exception after it.
    void ExpectThrown(const std::string& text, const std::string& exception) const {
        const auto records = log.Records();
        for (std::size_t i = 0; i + 1 < records.size(); ++i) {
            if (records[i].level == Vor::LevelError && records[i].text == text) {
                EXPECT_NE(records[i + 1].text.find(exception), std::string::npos) << records[i + 1].text;
                return;
            }
        }
        ADD_FAILURE() << "missing: " << text;
    }

    Vor::LogCapture log;
    HostEnviron environ;
    DomainService service{environ.Record("type", "Display")};
    VorControl::Providers::ControlPersistenceProvider& provider = *service.provider;
};

} // namespace Tests

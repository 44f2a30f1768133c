#include "VorControl/ControlProtocol/ProtocolStatus.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/TestService.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "yApi/yStatus.h"

#include <exception>
#include <stdexcept>

#include <gtest/gtest.h>

using Tests::TestService;
using VorControl::ControlProtocol::NonPersistentProperties;
using VorControl::ControlProtocol::ProtocolStatus;

namespace {

class ProtocolStatusTest : public testing::Test {
protected:
    Tests::HostEnviron environ;
    TestService service{environ.Record("type", "Display")};
    Vor::LogCapture log;
};

TEST_F(ProtocolStatusTest, AnUpdateNeedsNoLockAndTellsSubscribersOfChangesOnly) {
    service.NonPersistentPropertiesBeginLock();
    auto& properties = dynamic_cast<NonPersistentProperties&>(service.Properties());
    service.NonPersistentPropertiesEndLock();
    int told = 0;
    properties.Status().AddChangeHandler([&](Vor::Properties::Node&) { ++told; });
    service.UpdateProtocolStatus(ProtocolStatus::Starting);
    EXPECT_EQ(service.GetProtocolStatus(), ProtocolStatus::Starting);
    EXPECT_EQ(told, 1);
    service.UpdateProtocolStatus(ProtocolStatus::Starting);
    EXPECT_EQ(told, 1);
    service.UpdateProtocolStatus(ProtocolStatus::Running);
    EXPECT_EQ(told, 2);
}

TEST_F(ProtocolStatusTest, AFailureIsLoggedSetsTheStatusAndGoesOnNestedWithItsStatusAndText) {
    try {
        try {
            Vor::Throw(-42, "port %d in use", 502);
        } catch (const std::exception& e) {
            service.UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStart);
        }
        FAIL();
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), -42);
        EXPECT_STREQ(e.what(), "port 502 in use");
        try {
            std::rethrow_if_nested(e);
            FAIL();
        } catch (const Vor::Exception& nested) {
            EXPECT_EQ(nested.Status(), -42);
            EXPECT_STREQ(nested.what(), "port 502 in use");
        }
    }
    EXPECT_EQ(service.GetProtocolStatus(), ProtocolStatus::FailedToStart);
    const auto records = log.Records();
    ASSERT_GE(records.size(), 2U);
    EXPECT_EQ(records[0].text, "EXCEPTION THROWN: ");
    EXPECT_EQ(records[0].level, Vor::LevelError);
    EXPECT_NE(records[1].text.find("port 502 in use"), std::string::npos);
}

TEST_F(ProtocolStatusTest, AnotherStandardExceptionBecomesOneWithStatusZero) {
    try {
        try {
            throw std::runtime_error("100% broken %s");
        } catch (const std::exception& e) {
            service.UpdateStatusAndRethrow(e, ProtocolStatus::FailedToStop);
        }
        FAIL();
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), 0);
        EXPECT_STREQ(e.what(), "100% broken %s");
        EXPECT_THROW(std::rethrow_if_nested(e), std::runtime_error);
    }
    EXPECT_EQ(service.GetProtocolStatus(), ProtocolStatus::FailedToStop);
}

TEST_F(ProtocolStatusTest, AnythingElseBeingHandledPassesAsItIs) {
    const std::runtime_error told("told");
    try {
        try {
            throw 42;
        } catch (...) {
            service.UpdateStatusAndRethrow(told, ProtocolStatus::FailedToStart);
        }
        FAIL();
    } catch (int value) {
        EXPECT_EQ(value, 42);
    }
    EXPECT_EQ(service.GetProtocolStatus(), ProtocolStatus::FailedToStart);
}

} // namespace

#include "Sensor/Jobs/ServiceSetting.h"

#include "Sensor/StartError.h"

#include <gtest/gtest.h>

namespace Sensor::Jobs {
namespace {

TEST(ServiceSetting, HasServiceParameterAndValue) {
    const ServiceSetting setting = ServiceSetting::Parse("modbus.port=1502", "--set");
    EXPECT_EQ(setting.serviceId, "modbus");
    EXPECT_EQ(setting.parameter, "port");
    EXPECT_EQ(setting.value, "1502");
    EXPECT_EQ(setting.option, "--set modbus.port=1502");
}

TEST(ServiceSetting, TheValueMayHoldDotsAndEqualsSigns) {
    const ServiceSetting setting = ServiceSetting::Parse("modbus.address=127.0.0.1=x", "--set");
    EXPECT_EQ(setting.parameter, "address");
    EXPECT_EQ(setting.value, "127.0.0.1=x");
}

TEST(ServiceSetting, TheValueMayBeEmpty) {
    EXPECT_EQ(ServiceSetting::Parse("modbus.address=", "--set").value, "");
}

TEST(ServiceSetting, RefusesWhatLacksAPart) {
    for (const char* text : {"", "modbus", "modbus.port", "port=1", ".port=1", "modbus.=1", "=", ".="}) {
        try {
            ServiceSetting::Parse(text, "--set");
            FAIL() << text;
        } catch (const StartError& error) {
            EXPECT_EQ(error.what(), std::string("--set ") + text + ": expected SERVICE.PARAMETER=VALUE.");
        }
    }
}

} // namespace
} // namespace Sensor::Jobs

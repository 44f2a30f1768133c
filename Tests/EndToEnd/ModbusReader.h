#pragma once

#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <modbus/modbus.h>

namespace Tests {

/// A client that uses the C library of the protocol.
class ModbusReader {
public:
    explicit ModbusReader(std::uint16_t port)
        : context(modbus_new_tcp("127.0.0.1", port)) {
        modbus_set_response_timeout(context, 10, 0);
        EXPECT_EQ(modbus_connect(context), 0) << modbus_strerror(errno);
    }
    ~ModbusReader() {
        modbus_close(context);
        modbus_free(context);
    }
    ModbusReader(const ModbusReader&) = delete;
    ModbusReader& operator=(const ModbusReader&) = delete;

    /// Empty when the server answers with an exception, which is in errno.
    std::vector<std::uint16_t> Read(int address, int count, bool input = false) {
        std::vector<std::uint16_t> registers(static_cast<std::size_t>(count));
        const int read = input ? modbus_read_input_registers(context, address, count, registers.data())
                               : modbus_read_registers(context, address, count, registers.data());
        registers.resize(read < 0 ? 0 : static_cast<std::size_t>(read));
        return registers;
    }

    modbus_t* Context() { return context; }

private:
    modbus_t* context;
};

inline std::int64_t Signed32(const std::vector<std::uint16_t>& registers, std::size_t at) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(registers.at(at)) << 16 | registers.at(at + 1));
}

inline std::uint64_t Unsigned64(const std::vector<std::uint16_t>& registers, std::size_t at) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value = value << 16 | registers.at(at + i);
    }
    return value;
}

/// The text in `count` registers, two characters a register, up to the first zero.
inline std::string Text(const std::vector<std::uint16_t>& registers, std::size_t at, std::size_t count) {
    std::string text;
    for (std::size_t i = at; i < at + count; ++i) {
        text += static_cast<char>(registers.at(i) >> 8);
        text += static_cast<char>(registers.at(i) & 0xFF);
    }
    return text.substr(0, text.find('\0'));
}

} // namespace Tests

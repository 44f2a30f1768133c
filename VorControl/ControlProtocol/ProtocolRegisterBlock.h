#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/RegisterBlockParams.h"

#include <algorithm>
#include <string>
#include <type_traits>

namespace VorControl::ControlProtocol {

/// A run of registers of one type, and the document that describes and persists it. Derived classes convert commands,
/// states and scan output to bytes and back with the protected primitives. Byte order, register width and the invalid
/// value are handled in these primitives only.
///
/// A block has no lock: the lock of its assembly guards the fields. Serialize and Deserialize run on the caller's
/// thread and read the register count and the type information without a lock. Call them between BeginLock and EndLock
/// of the assembly if it may change meanwhile.
class ProtocolRegisterBlock : public Vor::Params::Group {
public:
    /// Keeps a reference to `info`, which must outlive the block. Throws yERROR_PARAMETER when a global address space
    /// is used and no output id is given.
    ProtocolRegisterBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info);
    ~ProtocolRegisterBlock() override;

    /// Writes the block's bytes from a record that the derived class defines. Sizes are in bytes.
    /// Throws yERROR_UNIMPLEMENTED when the type doesn't write.
    virtual void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                           unsigned long long sourceSize);
    /// Reads the block's bytes into a record that the derived class defines. Sizes are in bytes.
    /// Throws yERROR_UNIMPLEMENTED when the type doesn't read.
    virtual void Deserialize(void* destination, unsigned long long destinationSize, const void* source,
                             unsigned long long sourceSize);
    /// Both throw yERROR_UNIMPLEMENTED when the type has no data source.
    virtual void SetDataSource(const std::string& dataSource);
    virtual const std::string& DataSource() const;

    const std::string& DisplayName() const;
    const std::string& Type() const;
    unsigned short OutputId() const { return outputId.Get(); }
    unsigned short RegisterCount() const { return registerCount.Get(); }
    void SetDisplayName(const std::string& name);
    void SetOutputId(unsigned short id);
    void SetRegisterCount(unsigned short count);

    RegisterBlockCategory Category() const { return info.Category(); }
    bool IsRegisterCountConfigurable() const { return info.IsRegisterCountConfigurable(); }
    bool IsOutputIdConfigurable() const;
    unsigned char BytesPerRegister() const { return info.BytesPerRegister(); }
    unsigned short DeserializedInputSize() const { return info.DeserializedInputSize(); }
    bool HasDataSource() const { return info.HasDataSource(); }
    bool IsProtocolBigEndian() const { return info.IsProtocolBigEndian(); }
    void IncrementInstanceCount() { info.IncrementInstanceCount(); }
    void DecrementInstanceCount() { info.DecrementInstanceCount(); }
    bool AtMaxInstance() const { return info.AtMaxInstance(); }
    bool AtMinInstance() const { return info.AtMinInstance(); }

    /// In a global address space the address of the last register, in 16 bits; for a block without registers it is one
    /// below the output id. Without a global address space the output id.
    unsigned short EndAddress() const;
    /// Bytes that Serialize writes: registers times bytes per register, cut to 16 bits.
    unsigned short SerializedOutputSize() const {
        return static_cast<unsigned short>(RegisterCount() * BytesPerRegister());
    }

protected:
    // Offsets are in bytes for each register width. Each primitive throws yERROR_PARAMETER unless a register has one
    // or two bytes. None of them checks the size of the buffer.

    /// Writes the value in the protocol's byte order. A value narrower than a register fills a whole register.
    template <class T>
    void SerializeValue(unsigned char* buffer, unsigned long long offset, T value, bool isSigned) const;
    /// Most significant register first, and within a register of two bytes the low byte first:
    /// 0x11223344 is 11 22 33 44 in registers of one byte and 22 11 44 33 in registers of two.
    template <class T>
    void Serialize_BE(unsigned char* buffer, unsigned long long offset, T value) const;
    /// Least significant byte first for each register width.
    template <class T>
    void Serialize_LE(unsigned char* buffer, unsigned long long offset, T value) const;
    /// Text in reading order, cut to the field or followed by zeros. It may have no terminator.
    void SerializeString(unsigned char* buffer, unsigned long long offset, const char* text,
                         unsigned long long textLength, unsigned long long fieldLength) const;
    /// "No data" for a field of 1, 2, 4 or 8 bytes: the smallest signed or the greatest unsigned value. A field of
    /// one byte in big endian registers of two isn't written.
    void SerializeInvalidValue(unsigned char* buffer, unsigned long long offset, unsigned long long numOfBytes,
                               bool isSigned) const;

    /// The byte order doesn't depend on the register width, so in registers of two bytes Deserialize16_BE doesn't read
    /// what Serialize_BE writes.
    void Deserialize16(unsigned short& value, const unsigned char* buffer, unsigned long long offset) const;
    void Deserialize16_BE(unsigned short& value, const unsigned char* buffer, unsigned long long offset) const;
    void Deserialize16_LE(unsigned short& value, const unsigned char* buffer, unsigned long long offset) const;

    /// value * scale as a 32-bit integer, which is valid only when both flags are zero.
    static void Convert64fTo32s(double value, double scale, int& result, int& firstFlag, int& secondFlag);
    /// Appends ".vrjob" to a terminated file name unless the name ends with its first ".vrjob". The capacity includes
    /// the terminator. Throws yERROR_PARAMETER for an empty name, or the status when it doesn't fit.
    static void FormatFullJobFileName(char* fileName, unsigned long long capacity);

private:
    friend class RegisterBlockIndex;

    void RequireRegisterWidth(const char* function, const char* catalogue = "beApp.ctrl") const {
        if (BytesPerRegister() != 1 && BytesPerRegister() != 2) {
            ThrowRegisterWidth(function, catalogue);
        }
    }
    [[noreturn]] void ThrowRegisterWidth(const char* function, const char* catalogue) const;
    static void LogValueSize(unsigned long long numOfBytes);
    template <unsigned int Width, class T>
    static void StoreRegisters(unsigned char* destination, T value);

    ProtocolRegisterBlockInfo& info;
    Vor::Params::Value<std::string> version;
    Vor::Params::Value<std::string> type;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<unsigned short> registerCount;
    Vor::Params::Value<unsigned short> outputId;
};

template <unsigned int Width, class T>
void ProtocolRegisterBlock::StoreRegisters(unsigned char* destination, T value) {
    constexpr unsigned int Size = sizeof(T);
    for (unsigned int r = 0; r < Size / Width; ++r) {
        for (unsigned int b = 0; b < Width; ++b) {
            destination[Width * (r + 1) - 1 - b] =
                static_cast<unsigned char>(value >> 8 * (Size - 1 - b - Width * r) & 0xFF);
        }
    }
}

template <class T>
void ProtocolRegisterBlock::Serialize_BE(unsigned char* buffer, unsigned long long offset, T value) const {
    RequireRegisterWidth("Serialize_BE");
    if (BytesPerRegister() == 1) {
        StoreRegisters<1>(buffer + offset, value);
    } else {
        StoreRegisters<2>(buffer + offset, value);
    }
}

template <class T>
void ProtocolRegisterBlock::Serialize_LE(unsigned char* buffer, unsigned long long offset, T value) const {
    RequireRegisterWidth("Serialize_LE");
    for (unsigned int i = 0; i < sizeof(T); ++i) {
        buffer[offset + i] = static_cast<unsigned char>(value >> 8 * i & 0xFF);
    }
}

template <class T>
void ProtocolRegisterBlock::SerializeValue(unsigned char* buffer, unsigned long long offset, T value,
                                           bool isSigned) const {
    RequireRegisterWidth("SerializeValue");
    const auto store = [&]<class Signed>(Signed widened) {
        const auto write = [&](auto instance) {
            if (IsProtocolBigEndian()) {
                Serialize_BE(buffer, offset, instance);
            } else {
                Serialize_LE(buffer, offset, instance);
            }
        };
        if (isSigned) {
            write(widened);
        } else {
            write(static_cast<std::make_unsigned_t<Signed>>(widened));
        }
    };
    switch (const auto numOfBytes = std::max<unsigned long long>(sizeof(T), BytesPerRegister()); numOfBytes) {
    case 1:
        return store(static_cast<signed char>(value));
    case 2:
        if constexpr (sizeof(T) == 1) {
            return store(static_cast<short>(static_cast<unsigned char>(value)));
        }
        return store(static_cast<short>(value));
    case 4:
        return store(static_cast<int>(value));
    case 8:
        return store(static_cast<long long>(value));
    default:
        return LogValueSize(numOfBytes);
    }
}

} // namespace VorControl::ControlProtocol

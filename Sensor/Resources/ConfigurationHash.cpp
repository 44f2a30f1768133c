#include "Sensor/Resources/ConfigurationHash.h"

#include "Vor/TreeWriter.h"
#include "VorControl/Control/ControlDevicePort.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"

#include <functional>
#include <string>
#include <string_view>

namespace Sensor::Resources {

namespace {

/// The hash of a sequence of numbers and texts. A large map is hashed after each edit, so it takes eight bytes at once.
class Hash {
public:
    /// What follows is of this kind.
    void AddKind(char kind) { Mix(static_cast<unsigned char>(kind)); }
    void AddNumber(char kind, std::uint64_t number) {
        AddKind(kind);
        Mix(number);
    }
    void AddText(char kind, std::string_view text) {
        AddNumber(kind, text.size());
        Mix(std::hash<std::string_view>()(text));
    }

    std::uint64_t Value() const { return value; }

private:
    // A step of SplitMix64 (Steele, Lea, Flood: Fast Splittable Pseudorandom Number Generators, 2014).
    void Mix(std::uint64_t number) {
        value = (value ^ number) + 0x9e3779b97f4a7c15U;
        value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9U;
        value = (value ^ (value >> 27)) * 0x94d049bb133111ebU;
        value ^= value >> 31;
    }

    std::uint64_t value = 0;
};

/// A document of which nothing remains but its hash.
class HashPlace {
public:
    HashPlace() = default;
    explicit HashPlace(Hash& hash)
        : hash(&hash) {}

    void MakeObject() { hash->AddKind('{'); }
    void StartArray() { hash->AddKind('['); }
    HashPlace Member(const std::string& name) {
        hash->AddText('m', name);
        return *this;
    }
    HashPlace Append() {
        hash->AddKind(',');
        return *this;
    }

    void Set(bool value) { hash->AddNumber('b', value); }
    void Set(std::uint64_t value) { hash->AddNumber('u', value); }
    void Set(std::int64_t value) { hash->AddNumber('i', static_cast<std::uint64_t>(value)); }
    void Set(const char* value) { hash->AddText('t', value); }
    void Set(const std::string& value) { hash->AddText('t', value); }
    void Set(const Vor::Properties::ByteVector& value) {
        hash->AddText('y', {reinterpret_cast<const char*>(value.Data()), value.Size()});
    }

private:
    Hash* hash = nullptr;
};

void Add(Hash& hash, const Vor::Properties::Node& node) {
    Vor::Properties::Internal::TreeWriter<HashPlace>().Write(node, HashPlace(hash));
}

void Add(Hash& hash, VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly) {
    Add(hash, assembly.Attributes());
    Add(hash, assembly.Properties());
    for (const auto& block : assembly.AddedRegisterBlocks()) {
        Add(hash, *block);
    }
}

} // namespace

std::uint64_t HashOf(const Vor::Properties::Node& node) {
    Hash hash;
    Add(hash, node);
    return hash.Value();
}

std::uint64_t HashOf(VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly) {
    Hash hash;
    Add(hash, assembly);
    return hash.Value();
}

std::uint64_t HashOf(const VorControl::IControlDeviceManager& devices) {
    Hash hash;
    for (const auto& [id, device] : devices.SelectedDevices()) {
        for (const std::string* const text : {&id, &device.displayName, &device.engineId, &device.providerId}) {
            hash.AddText('d', *text);
        }
        const auto provider = device.device.lock();
        for (const auto& [portId, port] : device.ports) {
            hash.AddText('p', portId);
            const auto parameters = provider != nullptr ? provider->PortParams(port->PortNumber()) : nullptr;
            if (parameters != nullptr) {
                Add(hash, *parameters);
            }
            const auto assembly = port->RegisterAssembly();
            const VorControl::ControlProtocol::AssemblyLock lock(*assembly);
            Add(hash, *assembly);
        }
    }
    return hash.Value();
}

} // namespace Sensor::Resources

#include "Sensor/Resources/ConfigurationHash.h"

#include "Vor/TreeWriter.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"

#include <cstddef>
#include <string>

namespace Sensor::Resources {

namespace {

/// The hash FNV-1a (RFC 9923) of a sequence of bytes.
class Hash {
public:
    void Add(const void* bytes, std::size_t size) {
        const auto* const begin = static_cast<const unsigned char*>(bytes);
        for (std::size_t i = 0; i < size; ++i) {
            value = (value ^ begin[i]) * 0x100000001b3U;
        }
    }
    /// What follows is of this kind.
    void AddKind(char kind) { Add(&kind, 1); }
    template <class T>
    void AddNumber(char kind, T number) {
        AddKind(kind);
        Add(&number, sizeof number);
    }
    void AddText(char kind, const std::string& text) {
        AddNumber(kind, text.size());
        Add(text.data(), text.size());
    }

    std::uint64_t Value() const { return value; }

private:
    std::uint64_t value = 0xcbf29ce484222325U;
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
    void Set(std::int64_t value) { hash->AddNumber('i', value); }
    void Set(const char* value) { hash->AddText('t', value); }
    void Set(const std::string& value) { hash->AddText('t', value); }
    void Set(const Vor::Properties::ByteVector& value) {
        hash->AddNumber('y', value.Size());
        hash->Add(value.Data(), value.Size());
    }

private:
    Hash* hash = nullptr;
};

void Add(Hash& hash, const Vor::Properties::Node& node) {
    Vor::Properties::Internal::TreeWriter<HashPlace>().Write(node, HashPlace(hash));
}

} // namespace

std::uint64_t HashOf(const Vor::Properties::Node& node) {
    Hash hash;
    Add(hash, node);
    return hash.Value();
}

std::uint64_t HashOf(VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly) {
    Hash hash;
    Add(hash, assembly.Attributes());
    Add(hash, assembly.Properties());
    for (const auto& block : assembly.AddedRegisterBlocks()) {
        Add(hash, *block);
    }
    return hash.Value();
}

} // namespace Sensor::Resources

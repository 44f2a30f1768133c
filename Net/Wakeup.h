#pragma once

namespace Net {

/// Wakes the network thread of a server when sessions have something to send. For any thread. It allocates nothing,
/// never waits, and may be used while no server waits for it.
class Wakeup {
public:
    /// Throws a Vor::Exception when the system has no more descriptors.
    Wakeup();
    ~Wakeup();
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    void Set();
    void Clear();

    /// Readable from Set until Clear.
    int Descriptor() const { return descriptor; }

private:
    const int descriptor;
};

} // namespace Net

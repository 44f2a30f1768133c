#pragma once

namespace Services::Common {

/// Tells the network thread of a server that sessions have something to send. Any thread; allocates nothing, never
/// waits, and may be used while no server listens to it.
class Wakeup {
public:
    /// Throws Vor::Exception when the system has no more descriptors.
    Wakeup();
    ~Wakeup();
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    void Set();
    void Clear();

    /// Becomes readable with Set, until Clear.
    int Descriptor() const { return descriptor; }

private:
    const int descriptor;
};

} // namespace Services::Common

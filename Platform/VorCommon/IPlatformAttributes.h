#pragma once

namespace VorCommon {

/// The kind of this platform. None or several may be true. Called on any thread.
class IPlatformAttributes {
public:
    virtual bool IsPhysicalSensor() const = 0;
    virtual bool IsPhysicalVorbox() const = 0;
    virtual bool IsVirtualSensor() const = 0;
    virtual bool IsVirtualVorbox() const = 0;
    virtual bool IsVorsuiteServiceApp() const = 0;
    virtual bool IsVorsuiteDaemon() const = 0;

protected:
    ~IPlatformAttributes() = default;
};

} // namespace VorCommon

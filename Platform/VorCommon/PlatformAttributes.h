#pragma once

#include "VorCommon/IPlatformAttributes.h"

namespace VorCommon {

enum class PlatformKind {
    None,
    PhysicalSensor,
    PhysicalVorbox,
    VirtualSensor,
    VirtualVorbox,
    VorsuiteServiceApp,
    VorsuiteDaemon
};

/// A platform of one kind, or of none, for applications. The kind is set before others read it.
class PlatformAttributes final : public IPlatformAttributes {
public:
    explicit PlatformAttributes(PlatformKind kind = PlatformKind::None)
        : kind(kind) {}

    PlatformKind Kind() const { return kind; }
    void SetKind(PlatformKind value) { kind = value; }

    bool IsPhysicalSensor() const override { return kind == PlatformKind::PhysicalSensor; }
    bool IsPhysicalVorbox() const override { return kind == PlatformKind::PhysicalVorbox; }
    bool IsVirtualSensor() const override { return kind == PlatformKind::VirtualSensor; }
    bool IsVirtualVorbox() const override { return kind == PlatformKind::VirtualVorbox; }
    bool IsVorsuiteServiceApp() const override { return kind == PlatformKind::VorsuiteServiceApp; }
    bool IsVorsuiteDaemon() const override { return kind == PlatformKind::VorsuiteDaemon; }

private:
    PlatformKind kind;
};

} // namespace VorCommon

#pragma once

#include "Sensor/Resources/PacedStreams.h"
#include "VorApi/DocumentResourceBase.h"

#include <cstddef>
#include <cstdint>

namespace Sensor::Io {
class OutputDevices;
}

namespace Sensor::Resources {

/// The devices with digital outputs, as a document and as a stream, with so many of the latest "edges" of each port as
/// a client asks for.
class IoResource : public VorApi::DocumentResourceBase, public PacedStreams {
public:
    /// The devices outlive this.
    explicit IoResource(const Io::OutputDevices& devices);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}
    std::uint64_t Newest() override;
    nlohmann::json NewestDocument(std::size_t edges) override;

private:
    const Io::OutputDevices& devices;
};

} // namespace Sensor::Resources

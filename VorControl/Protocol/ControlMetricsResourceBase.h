#pragma once

#include "VorApi/DocumentResourceBase.h"
#include "VorApi/StreamResourceBase.h"
#include "VorControl/Control/IControlMetrics.h"

#include <functional>
#include <map>

namespace VorControl::Protocol {

/// Figures as a document, and as a stream with a message each time that they are reported. It has no lock: requests and
/// reports run on the main loop.
class ControlMetricsResourceBase : public VorApi::StreamResourceBase, public VorApi::DocumentResourceBase {
public:
    using Reporter = VorCommon::IMetricsReporter<const ControlMetricsKey&>;

    /// The reporter outlives it.
    explicit ControlMetricsResourceBase(Reporter& reporter);

    unsigned int StartStream(const VorApi::RequestInfoEx& request, VorApi::IStreamReceiver& receiver) override;
    void StopStream(unsigned int id) override;
    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    VorApi::StreamResourceBase* StreamableProvider() override;

protected:
    static constexpr const char* MissingProtocol = "Missing control protocol name in request";

    void RequireDocument(const VorApi::RequestInfoEx& request) override;
    /// What the figures of a request are about.
    virtual ControlMetricsKey PopulateMetricsKey(const VorApi::RequestInfoEx& request) const = 0;
    virtual ControlMetricsKey PopulateMetricsKey(const VorApi::RequestInfo& request) const = 0;
    /// Aborts the streams about what `isVictim` accepts.
    void AbortStreams(const std::function<bool(const ControlMetricsKey&)>& isVictim);

private:
    struct StreamRecord {
        ControlMetricsKey key;
        Reporter::ReportEvent::CallbackId handler;
        VorApi::IStreamReceiver* receiver;
    };

    static void OnData(VorApi::IStreamReceiver* receiver, const VorCommon::IMetricsSource& source);

    Reporter& reporter;
    unsigned int nextStreamId = 0;
    std::map<unsigned int, StreamRecord> streams;
};

} // namespace VorControl::Protocol

#include "VorControl/Protocol/ControlMetricsResourceBase.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/Protocol/MetricsDocument.h"
#include "yApi/yStatus.h"

#include <utility>
#include <vector>

namespace VorControl::Protocol {

ControlMetricsResourceBase::ControlMetricsResourceBase(Reporter& reporter)
    : reporter(reporter) {}

unsigned int ControlMetricsResourceBase::StartStream(const VorApi::RequestInfoEx& request,
                                                     VorApi::IStreamReceiver& receiver) {
    const ControlMetricsKey key = PopulateMetricsKey(request);
    auto handler = reporter.AddReportHandler(
        [target = &receiver](const VorCommon::IMetricsSource& source) { OnData(target, source); }, key);
    streams.emplace(nextStreamId, StreamRecord{key, std::move(handler), &receiver});
    return nextStreamId++;
}

void ControlMetricsResourceBase::StopStream(unsigned int id) {
    const auto stream = streams.extract(id);
    if (stream.empty()) {
        Vor::Throw(yERROR_PARAMETER);
    }
    try {
        reporter.RemoveReportHandler(stream.mapped().handler, stream.mapped().key);
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the reporter has forgotten the key, so it is done
    }
}

void ControlMetricsResourceBase::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&,
                                          VorApi::VorDataTree& data) {
    MetricsToVorDataTree(reporter.LastReport(PopulateMetricsKey(request)).GetMetrics(), request.WantsSchema(), data);
}

void ControlMetricsResourceBase::RequireDocument(const VorApi::RequestInfoEx& request) {
    reporter.LastReport(PopulateMetricsKey(request)).GetMetrics();
}

VorApi::StreamResourceBase* ControlMetricsResourceBase::StreamableProvider() {
    return this;
}

// A receiver stops its stream, and the others may go with it.
void ControlMetricsResourceBase::AbortStreams(const std::function<bool(const ControlMetricsKey&)>& isVictim) {
    std::vector<unsigned int> victims;
    for (const auto& [id, stream] : streams) {
        if (isVictim(stream.key)) {
            Vor::LogInfo("Stopping stream %s, id %u", stream.receiver->Description(), id);
            victims.push_back(id);
        }
    }
    for (const unsigned int id : victims) {
        if (const auto stream = streams.find(id); stream != streams.end()) {
            stream->second.receiver->Abort();
        }
    }
}

void ControlMetricsResourceBase::OnData(VorApi::IStreamReceiver* receiver, const VorCommon::IMetricsSource& source) {
    try {
        const VorApi::VorDataTree message;
        MetricsToVorDataTree(source.GetMetrics(), false, message);
        receiver->Send(message);
    } catch (const Vor::Exception&) { // NOLINT(bugprone-empty-catch): one message is lost, the stream goes on
    }
}

} // namespace VorControl::Protocol

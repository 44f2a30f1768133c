#include "VorControl/Control/ControlResourceAdaptor.h"

#include "Vor/AsyncRunner.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/AtScopeEnd.h"
#include "VorApi/VorDataTree.h"
#include "VorRest/RequestProcessor.h"
#include "yApi/yStatus.h"

#include <utility>

namespace VorControl {

namespace {

/// Between a path and the member of its document that is read.
constexpr const char* VOR_CONTROL_PATH_FRAGMENT = "#/";

} // namespace

/// Shared by the caller and the main loop, which may end the read after the caller has gone.
struct ControlResourceAdaptor::Result {
    yStatus status = yOK;
    std::string text;
};

ControlResourceAdaptor::ControlResourceAdaptor(VorRest::RequestProcessor& processor)
    : requestProcessor(processor)
    , asyncRunner(std::make_unique<Vor::AsyncRunner>()) {}

ControlResourceAdaptor::~ControlResourceAdaptor() {
    asyncRunner.reset();
}

bool ControlResourceAdaptor::OperationBegin() {
    std::uint32_t expected = 0;
    return readInProgress.compare_exchange_strong(expected, 1);
}

std::uint32_t ControlResourceAdaptor::OperationFinish() {
    return readInProgress.exchange(0);
}

void ControlResourceAdaptor::Read(const std::string& path, std::string& out, unsigned long long timeout) {
    if (!OperationBegin() && !OperationBegin()) {
        Vor::Throw(yERROR_BUSY, "Cannot read resource data. Another read operation is already in progress.");
    }
    const auto result = std::make_shared<Result>();
    yStatus status = yOK;
    try {
        asyncRunner->RunAndWait([this, path, result] { ReadOnMainLoop(path, *result); }, timeout);
        status = result->status;
    } catch (const Vor::Exception& e) {
        Vor::LogWarning("Failed to read resource data due to (%s)", e.what());
        status = yERROR_COMMAND;
    }
    if (status != yOK) {
        Vor::Throw(status, "Failed to read resource.");
    }
    out = std::move(result->text);
}

void ControlResourceAdaptor::ReadOnMainLoop(const std::string& path, Result& result) {
    const Vor::AtScopeEnd finish([this] {
        if (OperationFinish() != 1) {
            Vor::LogWarning(
                "Failed to update the read operation state which may affect any subsequent read operations.");
        }
    });
    try {
        result.text = Dump(path);
    } catch (const Vor::Exception& e) {
        Vor::LogWarning("Exception processing reading resource path due to (%s)", e.what());
        result.status = yERROR_NOT_FOUND;
    }
}

std::string ControlResourceAdaptor::Dump(const std::string& path) const {
    const std::size_t separator = path.find(VOR_CONTROL_PATH_FRAGMENT);
    const std::string fragment = separator == std::string::npos ? "" : path.substr(separator + 2);
    const VorApi::VorDataTree tree = requestProcessor.Read(path.substr(0, separator), VorApi::VorDataTree(), "");
    return fragment.empty() ? tree.Dump(false) : tree[fragment].Dump(false);
}

} // namespace VorControl

#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include "VorApi/LogThrown.h"

namespace VorControl::ControlProtocol {

template class ProtocolOutputBase<TextIdStandardOutputs, TextIdStandardOutputItem, TextIdStandardOutputsArgs,
                                  TextIdStandardOutputItemArgs, TextIdStandardOutputRemoveArgs>;

void TextIdStandardProtocolOutputMap::AddAll(Vor::Params::Group& args) {
    auto& request = dynamic_cast<TextIdStandardOutputsArgs&>(args);
    if (request.map.Count() == 0) {
        return;
    }
    const Vor::Locker locker(lock.Get());
    auto sources = AllSources();
    yStatus status = yOK;
    const auto logFailure = [&](const std::exception& exception, const std::string& source, yStatus failure) {
        Vor::LogThrown(exception, "Error adding data source <%s>", source);
        status = status == yOK ? failure : status;
    };
    for (unsigned long i = 0; i < request.map.Count(); ++i) {
        auto& item = request.map.At(i);
        if (item.outputId.Get().empty()) {
            item.outputId = item.source.Get();
        }
        try {
            Add_Helper(item, false, &sources);
        } catch (const Vor::Exception& exception) {
            logFailure(exception, item.source.Get(), exception.Status());
        } catch (const std::exception& exception) {
            logFailure(exception, item.source.Get(), yERROR_PARAMETER);
        }
    }
    if (status != yOK) {
        Vor::Throw(status, Translate("beApp.ctrl", "One or more sources could not be added to the connection map. Logs "
                                                   "may have additional information."));
    }
}

} // namespace VorControl::ControlProtocol

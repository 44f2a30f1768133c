#include "VorCommon/CommonMetrics/NetworkIfMetrics.h"

namespace VorCommon::CommonMetrics {

NetworkIfMetrics::NetworkIfMetrics() {
    linkState.AddOption(LinkState::Down, "Down");
    linkState.AddOption(LinkState::Up, "Up");
    linkSpeed.EnableUnits(true);
    linkSpeed.SetUnits("bit/s");
    Register("name", name, "Name");
    Register("linkState", linkState, "Link State");
    Register("linkSpeed", linkSpeed, "Link Speed");
}

} // namespace VorCommon::CommonMetrics

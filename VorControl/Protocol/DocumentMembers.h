#pragma once

#include "VorApi/Params/Group.h"
#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::Protocol {

/// A title of a document in the user's language.
inline const char* Title(const char* text) {
    return ControlProtocol::Translate("com.vorlab.ctrl", text);
}

/// Makes a parameter, whose title is translated, a member of a group that clients can't change.
template <class P>
void RegisterReadOnly(Vor::Params::Group& group, const char* name, P& parameter, const char* title) {
    group.Register(name, parameter, Title(title));
    parameter.EnableReadOnly();
    parameter.SetReadOnly(true);
}

} // namespace VorControl::Protocol

#pragma once

#include "VorApi/Params/Group.h"
#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::Protocol {

/// A title of a document in the user's language.
inline const char* Title(const char* text) {
    return ControlProtocol::Translate("com.vorlab.ctrl", text);
}

/// Makes a parameter a member of a group that clients can't change. Without a title it has the name as its title.
template <class P>
void RegisterReadOnly(Vor::Params::Group& group, const char* name, P& parameter, const char* title = "") {
    group.Register(name, parameter, title);
    parameter.EnableReadOnly();
    parameter.SetReadOnly(true);
}

} // namespace VorControl::Protocol

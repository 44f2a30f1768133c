#include "VorApi/Params/PropertyValue.h"

#include "Vor/Exception.h"
#include "Vor/INodeVisitor.h"

namespace Vor::Properties::Internal {

void ValueBase::Accept(INodeVisitor& visitor) {
    visitor.Visit(*this);
}

void ValueBase::Accept(INodeVisitorConst& visitor) const {
    visitor.Visit(*this);
}

NodeType::NodeType(Name text)
    : text(text) {
    Node::SetWriteOnly(true);
}

void NodeType::CopyValues(const Node& other) {
    text = dynamic_cast<const NodeType&>(other).text;
    CopySchema(other);
}

void NodeType::SetWriteOnly(bool writeOnly) {
    if (!writeOnly) {
        Throw(yERROR_WRITE_ONLY);
    }
}

void NodeType::ReadValue(IValueReader& /*reader*/, Vor::Event<>& /*updateEnd*/) {
    Throw(yERROR_UNIMPLEMENTED);
}

void NodeType::WriteValue(IValueWriter& writer) const {
    writer.WriteText(text.Text());
}

void NodeType::ValidateValue(IValueReader& /*reader*/) const {}

ListItems::ListItems(const char* itemType)
    : Structure(true)
    , type(itemType) {
    Register(Key(), type);
}

Name ListItems::Key() {
    static const Name TypeKey("type");
    return TypeKey;
}

} // namespace Vor::Properties::Internal

namespace Vor::Properties {

template class Internal::ValueWrapper<bool>;
template class Internal::ValueWrapper<unsigned short>;
template class Internal::ValueWrapper<unsigned int>;
template class Internal::ValueWrapper<unsigned long long>;
template class Internal::ValueWrapper<long long>;
template class Internal::ValueWrapper<std::string>;
template class Internal::ValueWrapper<std::vector<std::string>>;
template class Internal::ValueWrapper<std::vector<unsigned short>>;
template class Value<bool>;
template class Value<unsigned short>;
template class Value<unsigned int>;
template class Value<unsigned long long>;
template class Value<long long>;
template class Value<std::string>;
template class Value<std::vector<std::string>>;
template class Value<std::vector<unsigned short>>;

} // namespace Vor::Properties

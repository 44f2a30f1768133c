#include "Vor/ArrayBase.h"

#include "Vor/INodeVisitor.h"

namespace Vor::Properties::Internal {

void ArrayBase::Accept(INodeVisitor& visitor) {
    visitor.Visit(*this);
}

void ArrayBase::Accept(INodeVisitorConst& visitor) const {
    visitor.Visit(*this);
}

} // namespace Vor::Properties::Internal

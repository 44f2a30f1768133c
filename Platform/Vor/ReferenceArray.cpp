#include "Vor/ReferenceArray.h"

#include "Vor/Exception.h"
#include "Vor/INodeVisitor.h"
#include "Vor/Structure.h"

namespace Vor::Properties::Internal {

void ReferenceArray::CopyValues(const Node&) {}

void ReferenceArray::Accept(INodeVisitor& visitor) {
    visitor.Visit(*this);
}

void ReferenceArray::Accept(INodeVisitorConst& visitor) const {
    visitor.Visit(*this);
}

void ReferenceArray::Add(Structure* schema) {
    schemas.push_back(schema);
}

void ReferenceArray::Pop() {
    if (!schemas.empty()) {
        schemas.pop_back();
    }
}

void ReferenceArray::Clear() {
    schemas.clear();
}

void ReferenceArray::Remove(unsigned long index) {
    if (index >= schemas.size()) {
        Throw(yERROR_NOT_FOUND);
    }
    schemas.erase(schemas.begin() + static_cast<std::ptrdiff_t>(index));
}

Structure& ReferenceArray::At(unsigned long index) const {
    if (index >= schemas.size()) {
        Throw(yERROR_NOT_FOUND);
    }
    return *schemas[index];
}

} // namespace Vor::Properties::Internal

#include "Vor/DocumentErrors.h"

#include <utility>

namespace Vor {

DocumentException::DocumentException(const Exception& first, std::vector<DocumentError> errors)
    : Exception(first)
    , errors(std::make_shared<const std::vector<DocumentError>>(std::move(errors))) {}

void DocumentErrors::Add(std::string pointer, const Exception& error) {
    if (IsFull()) {
        return;
    }
    if (!first) {
        first = error;
    }
    errors.push_back({std::move(pointer), error.what(), error.Status()});
}

void DocumentErrors::ThrowIfAny() const {
    if (first) {
        throw DocumentException(*first, errors);
    }
}

} // namespace Vor

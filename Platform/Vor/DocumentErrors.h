#pragma once

#include "Vor/Exception.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Vor {

/// One value of a document that is refused.
struct DocumentError {
    std::string pointer; ///< where it is (RFC 6901)
    std::string text;
    yStatus status = yERROR;
};

/// The failure of a document's validation. Status and text are those of the first error.
class DocumentException : public Exception {
public:
    DocumentException(const Exception& first, std::vector<DocumentError> errors);

    /// In the order of the check, at least one.
    const std::vector<DocumentError>& Errors() const { return *errors; }

private:
    std::shared_ptr<const std::vector<DocumentError>> errors;
};

/// Collects what is wrong in a document, up to `MaxErrors`.
class DocumentErrors {
public:
    static constexpr std::size_t MaxErrors = 100;

    /// Ignored when it is full.
    void Add(std::string pointer, const Exception& error);
    bool IsFull() const { return errors.size() >= MaxErrors; }
    /// Throws a DocumentException.
    void ThrowIfAny() const;

private:
    std::optional<Exception> first;
    std::vector<DocumentError> errors;
};

} // namespace Vor

#pragma once

#include <string>

#include "platform/hresult.h"
#include "support/errors.h"

namespace mvn {

/// A failed HRESULT on its way to an entry point that returns it. Not shared between threads: even
/// what() writes.
class COMException : public MorvaneException {
public:
    explicit COMException(HRESULT result) : MorvaneException(std::string()), result_(result) {}

    /// The description, composed afresh; it holds until the next call. When there is no memory to
    /// compose it, a constant text instead.
    const char* what() const noexcept override;

    /// Composes description and message: "Morvane Error " (a code of the ErrorTable) or "COM Error "
    /// (any other), the code in lower-case hexadecimal, ": " and the message, which is the table's text
    /// or errorText(). Throws std::bad_alloc.
    virtual void FormatDescription() const;

    HRESULT result() const noexcept { return result_; }

private:
    HRESULT result_;
    mutable std::string description_;
    mutable std::string message_;
};

}  // namespace mvn

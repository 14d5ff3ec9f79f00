#include "support/com_exception.h"

#include "support/error_table.h"
#include "support/error_text.h"
#include "support/string_format.h"

namespace mvn {

const char* COMException::what() const noexcept {
    try {
        FormatDescription();
        return description_.c_str();
    } catch (...) {
        return "COM Error (its description could not be composed)";
    }
}

void COMException::FormatDescription() const {
    const char* const own = ErrorTable::find(result_);
    const char* const kind = own != nullptr ? "Morvane Error" : "COM Error";
    message_ = own != nullptr ? own : errorText(result_);
    description_ = stringFormat("%s %x: ", kind, static_cast<unsigned>(result_)) + message_;
}

}  // namespace mvn

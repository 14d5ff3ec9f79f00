#pragma once

#include <stdexcept>
#include <string>

#include "platform/hresult.h"

namespace mvrtpfec {

/// The filter graph could not be built or run.
class GraphError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws GraphError for a failed result: "ACTION: COM Error CODE: TEXT".
void requireGraph(HRESULT result, const std::string& action);

}  // namespace mvrtpfec

#include "host/graph/graph_error.h"

#include "support/com_exception.h"

namespace mvrtpfec {

void requireGraph(HRESULT result, const std::string& action) {
    if (FAILED(result)) throw GraphError(action + ": " + mvn::COMException(result).what());
}

}  // namespace mvrtpfec

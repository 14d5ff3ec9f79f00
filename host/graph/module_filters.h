#pragma once

#include "framework/base/com_ptr.h"
#include "host/graph/matrix_config.h"
#include "platform/media_filters.h"

namespace mvrtpfec {

// The module's filters, known to the host by their interfaces alone. Both throw GraphError.

/// Configured with the matrix. The runtime's `rand` gives the first FEC sequence numbers: here and when the
/// graph starts, so both belong on one thread, in this order.
CComPtr<IBaseFilter> createSenderFilter(const MatrixConfig& matrix);

CComPtr<IBaseFilter> createReceiverFilter();

}  // namespace mvrtpfec

#pragma once

#include <filesystem>
#include <memory>

#include "framework/base/com_ptr.h"
#include "host/graph/matrix_config.h"
#include "platform/graph/media_filters.h"
#include "platform/module/loaded_module.h"

namespace mvrtpfec {

/// Makes the module's filters, which the host knows by their interfaces alone. It may hold the module loaded,
/// so it outlives the filters and all that is theirs. One thread; everything throws GraphError.
class ModuleFilters {
public:
    /// From the file `module` or, without a name, as the system has them registered, else from MVRtpFec.ax in
    /// the program's folder or in ../lib/mvrtpfec from there.
    explicit ModuleFilters(const std::filesystem::path& module = {});

    /// Configured with the matrix. The runtime's `rand` gives the first FEC sequence numbers: here and when
    /// the graph starts, so both belong on one thread, in this order.
    CComPtr<IBaseFilter> createSender(const MatrixConfig& matrix);
    CComPtr<IBaseFilter> createReceiver();

private:
    CComPtr<IBaseFilter> create(REFCLSID classId, const char* failure);
    HRESULT createByFactory(REFCLSID classId, void** filter) const;

    std::unique_ptr<const platform::LoadedModule> module_;
};

}  // namespace mvrtpfec

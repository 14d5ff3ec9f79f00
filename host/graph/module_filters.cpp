#include "host/graph/module_filters.h"

#include <string>
#include <system_error>

#include "host/graph/graph_error.h"
#include "mvrtpfec/rtp_fec_filter.h"
#include "mvrtpfec/rtp_fec_in.h"
#include "platform/component/component_runtime.h"
#include "platform/files/utf8_path.h"
#include "platform/process/process.h"

namespace mvrtpfec {

namespace fs = std::filesystem;

namespace {

constexpr auto moduleName = "MVRtpFec.ax";

std::unique_ptr<const platform::LoadedModule> load(const fs::path& file) {
    try {
        return std::make_unique<const platform::LoadedModule>(file);
    } catch (const std::exception& error) {
        throw GraphError("the module " + platform::utf8From(file) + " can't be loaded: " + error.what());
    }
}

/// Where packages put it, and where it is built.
fs::path findModule() {
    const fs::path folder = platform::programPath().parent_path();
    std::error_code error;
    for (const fs::path& file : {folder / moduleName, folder.parent_path() / "lib" / "mvrtpfec" / moduleName})
        if (fs::is_regular_file(file, error)) return file;
    throw GraphError(std::string("the module ") + moduleName + " is neither registered nor in " +
                     platform::utf8From(folder) + ": name it with --module");
}

}  // namespace

ModuleFilters::ModuleFilters(const fs::path& module) {
    if (!module.empty()) module_ = load(module);
}

HRESULT ModuleFilters::createByFactory(REFCLSID classId, void** filter) const {
    void* found = nullptr;
    const HRESULT result = module_->getClassObject(classId, IID_IClassFactory, &found);
    if (FAILED(result)) return result;
    CComPtr<IClassFactory> factory;
    factory.Attach(static_cast<IClassFactory*>(found));
    return factory->CreateInstance(nullptr, IID_IBaseFilter, filter);
}

CComPtr<IBaseFilter> ModuleFilters::create(REFCLSID classId, const char* failure) {
    void* filter = nullptr;
    HRESULT result = REGDB_E_CLASSNOTREG;
    if (!module_) result = platform::createComponent(classId, IID_IBaseFilter, &filter);
    if (!module_ && result == REGDB_E_CLASSNOTREG) module_ = load(findModule());
    if (module_) result = createByFactory(classId, &filter);
    requireGraph(result, failure);
    CComPtr<IBaseFilter> owned;
    owned.Attach(static_cast<IBaseFilter*>(filter));
    return owned;
}

CComPtr<IBaseFilter> ModuleFilters::createSender(const MatrixConfig& matrix) {
    auto filter = create(CLSID_RtpFecFilter, "the sender filter can't be created");
    const auto config = queryFor<IFECoverRTPConfig>(filter, IID_IFECoverRTPConfig);
    if (!config) throw GraphError("the sender filter can't be configured");
    constexpr auto refusal = "the sender filter refuses this matrix";
    requireGraph(config->SetMode(matrix.mode), refusal);
    requireGraph(config->SetColumns(matrix.columns), refusal);
    requireGraph(config->SetRows(matrix.rows), refusal);
    return filter;
}

CComPtr<IBaseFilter> ModuleFilters::createReceiver() {
    return create(CLSID_RtpFecIn, "the receiver filter can't be created");
}

}  // namespace mvrtpfec

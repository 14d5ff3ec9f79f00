#include "host/graph/module_filters.h"

#include "host/graph/filter_graph.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"

namespace mvrtpfec {

namespace {

using Creation = CUnknown* (*)(IUnknown* outer, HRESULT* result);

CComPtr<IBaseFilter> create(Creation creation, const char* failure) {
    HRESULT result = S_OK;
    CUnknown* object = creation(nullptr, &result);
    requireGraph(object == nullptr && SUCCEEDED(result) ? E_OUTOFMEMORY : result, failure);
    object->NonDelegatingAddRef();
    void* filter = nullptr;
    result = object->NonDelegatingQueryInterface(IID_IBaseFilter, &filter);
    object->NonDelegatingRelease();
    requireGraph(result, failure);
    CComPtr<IBaseFilter> owned;
    owned.Attach(static_cast<IBaseFilter*>(filter));
    return owned;
}

}  // namespace

CComPtr<IBaseFilter> createSenderFilter(const MatrixConfig& matrix) {
    auto filter = create(CRtpFecFilter::CreateInstance, "the sender filter can't be created");
    const auto config = queryFor<IFECoverRTPConfig>(filter, IID_IFECoverRTPConfig);
    if (!config) throw GraphError("the sender filter can't be configured");
    constexpr auto refusal = "the sender filter refuses this matrix";
    requireGraph(config->SetMode(matrix.mode), refusal);
    requireGraph(config->SetColumns(matrix.columns), refusal);
    requireGraph(config->SetRows(matrix.rows), refusal);
    return filter;
}

CComPtr<IBaseFilter> createReceiverFilter() {
    return create(CRtpFecIn::CreateInstance, "the receiver filter can't be created");
}

}  // namespace mvrtpfec

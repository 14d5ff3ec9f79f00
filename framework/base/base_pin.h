#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "framework/base/critical_section.h"
#include "framework/base/media_type.h"
#include "framework/base/unknown.h"
#include "platform/graph/media_filters.h"
#include "platform/threads/light_mutex.h"

namespace mvrtpfec {

class CBaseFilter;

/// A pin: its connection, the agreement on a media type that precedes it, and the segment that streams.
///
/// A pin lives inside its filter, which owns it; references to the pin are references to the filter.
///
/// Two locks. `m_pLock`, the filter lock, is held by everything that changes the connection and by the
/// virtual operations that this calls. The leaf lock guards what describes the connection and is never held
/// while calling out, so that streaming threads can read it while another thread changes it.
class CBasePin : public CUnknown, public IPin, public IQualityControl {
public:
    /// `filter` and `lock` outlive the pin and are not used before the constructors are done. `result` is
    /// left as it is; derived classes put their failures there. `name` is copied. Throws std::bad_alloc.
    CBasePin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name,
             PIN_DIRECTION direction);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

    /// Without a type, or with one that leaves its major or format type open, the first type is taken that
    /// agrees with it and that both pins accept, of the receiver's list and then of this pin's (the other way
    /// round with m_bTryMyTypesFirst). VFW_E_NO_ACCEPTABLE_TYPES. After a failure both pins are unconnected.
    STDMETHODIMP Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    /// S_FALSE when it wasn't connected, VFW_E_NOT_STOPPED when the filter is active.
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** pin) override;
    /// VFW_E_NOT_CONNECTED gives an empty type.
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    STDMETHODIMP QueryPinInfo(PIN_INFO* info) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) override;
    /// The pin's name, in task memory.
    STDMETHODIMP QueryId(LPWSTR* id) override;
    /// S_OK or S_FALSE.
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** types) override;
    STDMETHODIMP QueryInternalConnections(IPin** pins, ULONG* count) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    STDMETHODIMP Notify(IBaseFilter* self, Quality message) override;
    /// The sink is not referenced.
    STDMETHODIMP SetSink(IQualityControl* sink) override;

    /// State changes of the filter, called with the filter lock held and on connected pins alone.
    virtual HRESULT Active() { return S_OK; }
    virtual HRESULT Inactive();
    virtual HRESULT Run(REFERENCE_TIME) { return S_OK; }

    /// Whether another pin can be the other end at all: here, that its direction is the opposite one.
    virtual HRESULT CheckConnect(IPin* pin);
    /// Gives back what CheckConnect and CompleteConnect took. Also called after failures of either, so it may
    /// find nothing to do.
    virtual HRESULT BreakConnect() { return S_OK; }
    /// The last step of a connection. A failure undoes it.
    virtual HRESULT CompleteConnect(IPin*) { return S_OK; }
    /// S_OK accepts; any other code, S_FALSE too, refuses. Any thread, any lock.
    virtual HRESULT CheckMediaType(const CMediaType* type) = 0;
    virtual HRESULT SetMediaType(const CMediaType* type);
    /// The type at a position of the pin's list of preferred types. VFW_S_NO_MORE_ITEMS, or a failure.
    virtual HRESULT GetMediaType(int position, CMediaType* type);
    /// Changes whenever the list of types does.
    virtual LONG GetMediaTypeVersion() { return typeVersion_; }
    void IncrementTypeVersion() noexcept { ++typeVersion_; }

    LPCWSTR Name() const noexcept { return name_.c_str(); }
    bool IsConnected() const noexcept { return isConnected_; }
    /// The other end, empty when there is none.
    CComPtr<IPin> GetConnected() const noexcept { return copied(connected_); }
    bool IsStopped() const noexcept;
    /// The type last set, a copy. Throws std::bad_alloc.
    CMediaType CurrentMediaType() const;
    REFERENCE_TIME CurrentStartTime() const noexcept { return copied(segment_).start; }
    REFERENCE_TIME CurrentStopTime() const noexcept { return copied(segment_).stop; }
    double CurrentRate() const noexcept { return copied(segment_).rate; }
    /// Whether the pin may be connected while its filter is active.
    bool CanReconnectWhenActive() const noexcept { return m_bCanReconnectWhenActive; }
    void SetReconnectWhenActive(bool can) noexcept { m_bCanReconnectWhenActive = can; }

protected:
    /// A copy of a field that the leaf lock guards.
    template <class Field>
    Field copied(const Field& field) const noexcept {
        const std::lock_guard lock(leafLock_);
        return field;
    }
    /// Puts a value in such a field and gives the previous one back, to be released without the lock.
    template <class Field>
    Field exchanged(Field& field, Field value) const noexcept {
        const std::lock_guard lock(leafLock_);
        return std::exchange(field, std::move(value));
    }

    /// Makes `pin` the other end, or nobody; the previous other end is the result. For derived classes that
    /// accept connections in ways of their own. The filter lock must be held.
    CComPtr<IPin> ExchangeConnected(CComPtr<IPin> pin) noexcept {
        const std::lock_guard lock(leafLock_);
        isConnected_ = pin != nullptr;
        return std::exchange(connected_, std::move(pin));
    }
    /// Whether `pin` is (an interface of) the other end.
    bool IsConnectedTo(IPin* pin) const noexcept;
    /// Disconnect in any state of the filter. The filter lock must be held.
    HRESULT DisconnectInternal();

    HRESULT AgreeMediaType(IPin* receiver, const CMediaType* wanted);
    HRESULT TryMediaTypes(IPin* receiver, const CMediaType* wanted, IEnumMediaTypes* types);
    HRESULT AttemptConnection(IPin* receiver, const CMediaType* type);
    /// CheckMediaType, with everything that says no more than "refused" turned into VFW_E_TYPE_NOT_ACCEPTED.
    HRESULT CheckOfferedType(const CMediaType* type);

    /// Sends a quality message to the sink, or to the other end; VFW_E_NOT_FOUND when neither takes it.
    HRESULT PassNotify(Quality message);

    CBaseFilter* const m_pFilter;
    CCritSec* const m_pLock;
    std::atomic<bool> m_bRunTimeError{false};
    std::atomic<bool> m_bCanReconnectWhenActive{false};
    bool m_bTryMyTypesFirst = false;  ///< set before the pin is used

private:
    struct Segment {
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = INT64_MAX;
        double rate = 1.0;
    };

    HRESULT checkReadyToConnect() const;
    HRESULT connectTo(IPin* receiver, const CMediaType& type);
    HRESULT acceptFrom(IPin* connector, const CMediaType& type);
    void undoConnection() noexcept;

    const std::basic_string<WCHAR> name_;
    const PIN_DIRECTION direction_;
    std::atomic<LONG> typeVersion_{1};

    mutable platform::LightMutex leafLock_;
    CComPtr<IPin> connected_;
    std::atomic<bool> isConnected_{false};    ///< whether there is one; read without the lock for each sample
    std::shared_ptr<const CMediaType> type_;  ///< never changed, only replaced; null until one is set
    Segment segment_;
    IQualityControl* qualitySink_ = nullptr;
};

}  // namespace mvrtpfec

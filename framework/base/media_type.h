#pragma once

#include "platform/graph/media_type.h"

namespace mvrtpfec {

/// Copies a media type: the format block into task memory of its own, a reference on its unknown. `target`
/// holds nothing yet. E_OUTOFMEMORY leaves it empty.
HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source) noexcept;
/// Releases what a media type holds, not the record itself.
void FreeMediaType(AM_MEDIA_TYPE& type) noexcept;
/// The same with the record in task memory. CreateMediaType gives null when there is none left.
AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* source) noexcept;
void DeleteMediaType(AM_MEDIA_TYPE* type) noexcept;

/// An AM_MEDIA_TYPE that owns what it holds. Fresh, it has null types, one-byte fixed-size samples and no
/// format.
class CMediaType : public AM_MEDIA_TYPE {
public:
    CMediaType() noexcept;
    CMediaType(REFGUID majorType, REFGUID subType) noexcept;
    /// Throws std::bad_alloc.
    explicit CMediaType(const AM_MEDIA_TYPE& other);
    CMediaType(const CMediaType& other) : CMediaType(static_cast<const AM_MEDIA_TYPE&>(other)) {}
    CMediaType(CMediaType&& other) noexcept;
    CMediaType& operator=(CMediaType other) noexcept;
    ~CMediaType() { FreeMediaType(*this); }

    /// E_OUTOFMEMORY leaves this as it was.
    HRESULT Set(const AM_MEDIA_TYPE& other) noexcept;
    void ResetFormatBuffer() noexcept;

    bool IsValid() const noexcept { return !(majortype == GUID_NULL); }
    bool operator==(const CMediaType& other) const noexcept;

    /// True when the major type or the format type is open (null).
    bool IsPartiallySpecified() const noexcept;
    /// Whether this agrees with a type that may leave fields open (null).
    bool MatchesPartial(const CMediaType& partial) const noexcept;
};

}  // namespace mvrtpfec

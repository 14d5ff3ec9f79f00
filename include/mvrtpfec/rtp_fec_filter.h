#pragma once

#include <cstdint>

#include <unknwn.h>

namespace mvrtpfec {

/// The sender filter, "Morvane FEC over RTP Filter".
inline constexpr CLSID CLSID_RtpFecFilter{
    0x3EDB9832, 0xD645, 0x4FB0, {0xB9, 0x87, 0xA0, 0x20, 0x69, 0xF4, 0x0F, 0x20}};

inline constexpr IID IID_IFECoverRTPConfig{
    0x3CE696D4, 0xD945, 0x4370, {0xA4, 0xFC, 0xC1, 0x89, 0xFE, 0x8E, 0x84, 0xEC}};

/// The FEC matrix of the sender filter. Each value is taken while the filter is stopped, only when it is in
/// its range, and counts from the next pause on; otherwise E_FAIL, and the old value stays. Whether the
/// three go together is found out by Pause, which fails with E_FAIL when they don't: rows 4 to 20, columns 1
/// to 20 (4 to 20 for row and column FEC together), rows x columns at most 100.
struct IFECoverRTPConfig : IUnknown {
    /// Packets in a row, 0 to 20. 0 goes with mode 0 alone.
    virtual HRESULT STDMETHODCALLTYPE SetColumns(std::int32_t columns) = 0;
    /// Packets in a column, 4 to 20.
    virtual HRESULT STDMETHODCALLTYPE SetRows(std::int32_t rows) = 0;
    /// 0 none, 1 row FEC on "FECA", 2 column FEC on "FECA", 3 column FEC on "FECA" and row FEC on "FECB".
    virtual HRESULT STDMETHODCALLTYPE SetMode(std::int32_t mode) = 0;

protected:
    ~IFECoverRTPConfig() = default;
};

}  // namespace mvrtpfec

#pragma once

#include <cstdint>
#include <memory>

#include "core/fec_packet.h"
#include "core/media_packet_store.h"
#include "core/rtp_packet.h"

namespace mvrtpfec {

/// Rebuilds media packet `missing`, a member of the FEC packet's group, from the FEC packet and the
/// group's other packets in the store. Gives none when another one is absent, when the result is no
/// valid packet, and when it can't be done within bounds: a group of offset 0 names one number many
/// times and rebuilds nothing, and a stored packet that would be written past the end of a buffer as long
/// as the FEC packet was never protected by it.
///
/// The group is walked in plain numbers: one that crosses 65535 is not walked at all, and what comes
/// out is the FEC packet's own parity, valid or not. The SSRC is that of the last packet combined.
std::unique_ptr<RtpPacket> RecoverPacket(std::uint16_t missing, ConstRtpPacketView fec,
                                         const ProtectedRange& range, const CMediaPacketStore& store);

}  // namespace mvrtpfec

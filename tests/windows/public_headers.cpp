// Compiled with nothing but the system's headers beside the public ones, as in a host that has no more of us.

#include <mvrtpfec/log_perf.h>
#include <mvrtpfec/rtp_fec_filter.h>
#include <mvrtpfec/rtp_fec_in.h>
#include <mvrtpfec/rtp_media_type.h>

static_assert(sizeof(mvrtpfec::IFECoverRTPConfig) == sizeof(void*));

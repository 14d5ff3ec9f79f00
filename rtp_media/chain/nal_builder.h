#pragma once

#include <memory>

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

struct IMediaData;

/// Cuts the media samples of one elementary stream into units, whatever way the stream was cut into samples.
/// Driven by one thread; units go to the listener in the same call. A sample whose bytes can't be had is
/// passed over.
class NALBuilder : NonCopyable {
public:
    virtual ~NALBuilder() = default;

    /// Not owned; null drops the units.
    virtual void setListener(NALListener* listener) { listener_ = listener; }

    /// Takes one sample in, and a counted reference to it for as long as it's needed.
    virtual void input(IMediaData* sample) = 0;

    /// Gives out the open unit, if any, and ends the stream.
    virtual void flush() = 0;

    virtual void emit(std::unique_ptr<NAL> unit) {
        if (listener_ != nullptr) listener_->onNAL(std::move(unit));
    }

    virtual void endOfStream() {
        if (listener_ != nullptr) listener_->onEndOfStream();
    }

private:
    NALListener* listener_ = nullptr;
};

/// The parser for a stream of this type; null when there is none.
std::unique_ptr<NALBuilder> createNALBuilder(StreamType type);

}  // namespace mvrtpfec

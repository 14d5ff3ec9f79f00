#include "rtp_media/audio/mpeg4_audio_exception.h"

#include "support/string_format.h"

namespace mvrtpfec {

std::string notImplementedText(int line) {
    return mvn::stringFormat("mpeg4_audio(%d): not implemented", line);
}

void throwNotImplemented(int line) {
    throw Mpeg4AudioException(notImplementedText(line));
}

}  // namespace mvrtpfec

#include "support/text.h"

#include <algorithm>

#include "support/string_format.h"
#include "support/text_emitter.h"
#include "support/text_parser.h"

namespace mvn {
namespace {

constexpr std::uint32_t lastCodePoint = 0x10FFFF;

bool isInvalid(std::uint32_t codePoint) {
    return codePoint == 0 || codePoint > lastCodePoint || isSurrogate(codePoint);
}

/// The codec that a factory made for the encoding, if it made one.
template <class Codec>
std::unique_ptr<Codec> supported(std::unique_ptr<Codec> codec, TextEncoding encoding) {
    if (codec == nullptr)
        throw TextException(stringFormat("unsupported text encoding [%u]", static_cast<unsigned>(encoding)));
    return codec;
}

}  // namespace

Text::Text(const std::uint8_t* bytes, std::size_t count, TextEncoding source, TextEncoding target)
    : encoding_(target) {
    const auto parser = supported(CreateTextParser(source), source);
    const auto emitter = supported(CreateTextEmitter(target), target);
    CodePoints codePoints;
    parser->parse(codePoints, {bytes, count}, false);
    if (std::any_of(codePoints.begin(), codePoints.end(), isInvalid))
        throw TextException("invalid Unicode codepoint");
    emitter->emit(bytes_, codePoints);
}

}  // namespace mvn

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/shared/packets.h"

namespace mvrtpfec {

struct Matrix {
    int mode, columns, rows;
};

/// One that can be built; small ones more often, since more of their groups lie in a stream.
Matrix drawMatrix(Random& random, int leastMode);

/// What a random stream of media and FEC packets is like. Probabilities are per packet.
struct StreamPlan {
    std::uint16_t firstNumber = 0;
    std::size_t mediaPackets = 200;
    std::size_t matrixChanges = 0;
    std::size_t usualLength = 40;
    double otherLength = 0;  ///< of another length than the usual
    double loss = 0;
    double burst = 0;  ///< beginnings of bursts of up to 12 losses
    double repeat = 0;
    double late = 0;  ///< sent up to 30 packets later
    double oddHeader = 0;
    double brokenFec = 0;  ///< FEC packets with a field changed
    double invented = 0;   ///< FEC packets made up, between the others
};

/// `hostile` streams have odd headers, broken and invented packets too.
StreamPlan drawPlan(Random& random, bool hostile);

/// The packets as they arrive, columns, rows and modes drawn anew at each matrix change.
std::vector<Bytes> makeStream(Random& random, const StreamPlan& plan);

/// Media with FEC packets over groups of any shape a header can name, those that lie wholly in what has
/// been sent being what they claim.
std::vector<Bytes> makeOddGroupStream(Random& random);

}  // namespace mvrtpfec

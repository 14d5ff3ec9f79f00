#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "core/fec_packet.h"
#include "host/graph/matrix_config.h"

namespace mvrtpfec {

/// The media packets that one FEC packet protects, by place in the stream.
struct FecGroup {
    FecKind kind = FecKind::row;
    std::uint64_t first = 0;
    std::uint64_t last = 0;      ///< the FEC packet follows it
    unsigned step = 1;           ///< from one to the next
    std::uint64_t fecIndex = 0;  ///< of the FEC packet among those of its kind, counted from 0
};

/// Which groups the composer puts the packets of a stream into, columns staggered as it has them.
class StaggeredMatrix {
public:
    explicit StaggeredMatrix(const MatrixConfig& matrix);

    std::optional<FecGroup> rowOf(std::uint64_t place) const;
    /// None for what a column lets pass before it starts.
    std::optional<FecGroup> columnOf(std::uint64_t place) const;
    /// FEC packets of a kind that have left after so many matrices.
    std::uint64_t fecBefore(std::uint64_t matrices, FecKind kind) const;

    std::uint64_t columns() const { return columns_; }
    std::uint64_t packets() const { return columns_ * rows_; }

private:
    std::uint64_t startRow(std::uint64_t column) const { return (rows_ - column % rows_) % rows_; }

    FecMode mode_;
    std::uint64_t columns_;
    std::uint64_t rows_;
    /// Columns that start in rows before this one.
    std::array<std::uint64_t, 20> before_{};
};

}  // namespace mvrtpfec

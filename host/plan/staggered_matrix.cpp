#include "host/plan/staggered_matrix.h"

namespace mvrtpfec {

StaggeredMatrix::StaggeredMatrix(const MatrixConfig& matrix)
    : mode_(matrix.mode),
      columns_(static_cast<std::uint64_t>(matrix.columns)),
      rows_(static_cast<std::uint64_t>(matrix.rows)) {
    for (std::uint64_t column = 0; column < columns_; ++column)
        for (std::uint64_t row = startRow(column) + 1; row < rows_; ++row) ++before_.at(row);
}

std::optional<FecGroup> StaggeredMatrix::rowOf(std::uint64_t place) const {
    if (mode_ == fecColumn) return std::nullopt;
    const std::uint64_t row = place / columns_;
    return FecGroup{FecKind::row, row * columns_, row * columns_ + columns_ - 1, 1, row};
}

std::optional<FecGroup> StaggeredMatrix::columnOf(std::uint64_t place) const {
    const std::uint64_t row = place / columns_;
    const std::uint64_t column = place % columns_;
    const std::uint64_t start = startRow(column);
    if (mode_ == fecRow || row < start) return std::nullopt;
    const std::uint64_t turn = (row - start) / rows_;
    const std::uint64_t first = (start + turn * rows_) * columns_ + column;
    // One for each column in a turn; of columns that start together, D apart, the left one is first.
    const std::uint64_t fecIndex = turn * columns_ + before_.at(start) + column / rows_;
    return FecGroup{FecKind::column, first, first + (rows_ - 1) * columns_, static_cast<unsigned>(columns_),
                    fecIndex};
}

std::uint64_t StaggeredMatrix::fecBefore(std::uint64_t matrices, FecKind kind) const {
    if (kind == FecKind::row) return matrices * rows_;
    // In the first one only columns without a late start come to their end.
    return matrices == 0 ? 0 : (matrices - 1) * columns_ + before_[1];
}

}  // namespace mvrtpfec

#pragma once

#include <cstdint>
#include <span>

namespace mvn {

/// The system's own error codes, HRESULTs of facility 0x025 (0x8025xxxx), and their messages. The
/// numbering has gaps on purpose. The table is a constant of the module: it is there before the first
/// constructor of a static object runs, lives as long as the module, and any thread may read it.
class ErrorTable {
public:
    struct Row {
        constexpr Row(std::uint32_t bits, const char* text)
            : code(static_cast<std::int32_t>(bits)), message(text) {}

        std::int32_t code;
        const char* message;
    };

    /// All rows in ascending order of their codes.
    static std::span<const Row> rows() noexcept;
    /// The message for a code; null for one that has no row.
    static const char* find(std::int32_t code) noexcept;
};

}  // namespace mvn
